// shot.h -- one period of a search for the periodic steady state.
#pragma once
#include "analyses/run_state.h"

// States, derivatives and work space for the present system. Halts on a state that stands in two rows.
void set_ssw(run_state& r);

// What goes along with a shot.
enum class shot {
    search,    // the derivatives of the end by the start, into map; dx/dt at the start where the period is unknown
    map_only,  // the same by a first step of backward Euler, whose map is one of the states alone, whatever the rule
    last       // rows, and a look at whether the circuit repeats itself; no derivatives
};

// Integrates from the states in svec at t_start over slv.method.ssw_period, and halts where a step does not converge.
// False: itmax_trns has cut it before its end.
bool solve_ssw_1(run_state& r, shot kind);
