// ssw.h -- the periodic steady state by shooting (Aprille and Trick 1972).
#pragma once
#include "analyses/run_state.h"

// Finds the states that come again behind a period, then writes that period's rows. Newton's method on the states: each
// shot integrates a period by the transient's rules, and with it the derivatives of all unknowns by the start values
// (Skelboe 1980). Where the period is unknown it takes the place of the state that moves fastest at the start. Shots
// that do not come to an end are a warning. Behind them the multipliers are told, the eigenvalues of the map from one
// period to the next.
//
// svec and the tables of present values are those of the period's end.
void solve_ssw(run_state& r);
