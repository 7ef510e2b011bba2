// integration.h -- the rules by which a transient takes derivatives by time.
#pragma once
#include "analyses/run_state.h"

// A rule: dx/dt as a sum of x at the present point and at the two accepted ones before it. The tables that the last two
// walk are those of the present system.
struct integration_rule {
    int solve_state::*on;                  // the rule of the present try; the first row that is on decides
    void (*find_constants)(solve_class&);  // from the step sizes
    double solve_state::*factor;           // of x at the present point, 1/s
    void (*find_rates)(run_state&);
    void (*add_terms)(run_state&, bool only_function);
};

// Constants of all rules that are on, from delt; with gear2 also from delt_old_2, the step before it.
void find_trns_constants(solve_class& slv);

// The factor of dx/dt by x of the present rule, 1/s; 0 if none is on.
double method_constant(const solve_class& slv);
// dz/dt of all KCL derivatives by the present rule.
void find_rates(run_state& r);
// Adds the derivative terms of state rows to rhs_m; only_function: under the trapezoidal rule without the row's old
// function value.
void add_trns_terms(run_state& r, bool only_function);
