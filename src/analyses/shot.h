// shot.h -- one period of a search for the periodic steady state.
#pragma once
#include "analyses/run_state.h"

// States, derivatives and work space for the present system. Halts on a state that stands in two rows.
void set_ssw(run_state& r);

// Integrates from the states in svec at t_start over slv.method.ssw_period, and halts where a step does not converge.
// last 0: the derivatives of the end by the start go along, into map; with an unknown period dxdt_ssw and the state
// that moves fastest are found at the start. No rows.
// last 1: rows, no derivatives.
void solve_ssw_1(run_state& r, bool last);
