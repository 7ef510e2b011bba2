// levels.h -- the present point, the accepted one before it, and the one before that.
#pragma once
#include "analyses/run_state.h"

// The point that a step starts from is kept as the accepted one, the accepted one before it as the second.
void keep_point_1(run_state& r);  // present -> 1
void keep_point_2(mat_class& m);  // 1 -> 2

// The same for function values. Levels are exchanged: what comes into the present one, or into 1, is overwritten before
// it is read.
void keep_functions_1(mat_class& m);
void keep_functions_2(mat_class& m);

// Back to the accepted point before, whose functions are those of its level.
void restore_1(run_state& r, bool with_functions = true);
// Back to the one before that, which becomes the accepted point before.
void restore_2(run_state& r);
