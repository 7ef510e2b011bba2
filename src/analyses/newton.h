// newton.h -- Newton's iteration, and the single solve of a linear circuit.
#pragma once
#include <string_view>

#include "analyses/run_state.h"

// What differs between the Newton solves: a plain point of an analysis, and a step of gmin stepping.
struct newton_limits {
    int itmax = 0;        // iterations
    bool damped = false;  // multiply the step by dmp_k while iter_newton <= dmp_max
    double dmp_k = 1.0;
    int dmp_max = 0;
    bool line_search = false;
    bool fix_order = false;      // at iteration 0 choose the elimination order on the values of that Jacobian
    bool hold_factors = false;   // solve with the factors that stand, after iteration 0 has made some
    bool dump = false;           // wrt_debug_smat applies to this solve
    std::string_view who = "";   // of console texts
    std::string_view tail = "";  // of debug files: "dc_newt"
};

// Damping, iteration limit and line search that the block chose for its next solve.
newton_limits newton_limits_of(run_state& r, std::string_view who, std::string_view tail);
newton_limits gmin_limits(const solve_class& slv, std::string_view who);

// Solves F(x) = 0 from the present svec. l_converged tells the result; the caller decides what a failure means, and
// what to do behind a converged solve.
void newton(run_state& r, const newton_limits& limits);

// One assembly and one solve; exact for a circuit whose units are all linear. A solution that is infinite or not a
// number stops the run.
void solve_linear(run_state& r, bool fix_order, bool dump, std::string_view who, std::string_view tail);

// Settings by which dc and start-up solve a point; the order is fixed at the first point of a sweep.
void solve_newton_dc(run_state& r);
void solve_linear_dc(run_state& r);
bool first_point(const solve_class& slv);
