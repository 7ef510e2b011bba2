// plan.h -- which units are called where, and where what they give is added; made once for a system.
#pragma once
#include "analyses/run_state.h"

// For the present system and the outputs of the present block.
void make_plan(run_state& r);
