// newton.h -- Newton's iteration, and the single solve of a linear circuit.
#pragma once
#include "analyses/run_state.h"

// What differs between the Newton solves of dc: a plain point, and a step of gmin stepping.
struct newton_limits {
    int itmax = 0;         // iterations
    bool damped = false;   // multiply the step by dmp_k while iter_newton <= dmp_max
    double dmp_k = 1.0;
    int dmp_max = 0;
    bool line_search = false;
    bool fix_order = false;   // at iteration 0 choose the elimination order on the values of that Jacobian
    const char* who = "";     // of console texts
};

// Solves F(x) = 0 from the present svec. l_converged tells the result; the caller decides what a failure means.
void newton_dc(run_state& r, const newton_limits& limits);

// Newton with the settings of the block. The order of elimination is fixed at the first point of a sweep.
void solve_newton_dc(run_state& r);
// One assembly and one solve; exact for a circuit whose units are all linear.
void solve_linear_dc(run_state& r);
