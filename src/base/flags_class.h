// flags_class.h -- what the evaluator asks of a model, and what models see of the run.
#pragma once
#include <array>
#include <vector>

#include "base/enum1.h"

// The switches that stand around a model call. A solver raises one, calls, and clears it; models only read.
// switch_number gives each its place in the saved copy; members stand in memory order.
struct flags_class {
    static constexpr int n_flags = 32;
    std::array<int, n_flags> saved{};

    // first group; dc and ac together: the bias point of small signals, with the states that elements have stored
    int dc = 0, trns = 0, startup = 0, ac = 0, ssw = 0, ssw_init = 0, init_guess = 0, dc_first = 0, trns_first = 0,
        startup_first = 0, limit_newton = 0, newton_first = 0, one_time_parms = 0, save_history = 0, nexttime = 0,
        pwr_elec = 0, pwr_elec_ac = 0, function = 0, jacobian = 0, process = 0, schedule = 0, outvar_prm = 0,
        vary_parm = 0, set_parm = 0, acparms = 0, rparms = 0, reset = 0;
    // second group; x_matrix survives init_flags
    int evaluate = 0, reset_x = 0, x_matrix = 0, matrix_ddt = 0, matrix_alg = 0;

    double t_start = 0.0;  // s, of the present block
    double t_end = 1.0;    // s

    // what models read besides the switches
    double time_given = 0.0;        // s, the time of this evaluation
    double time_given_x = 0.0;      // s, the same on the explicit side
    double time_nextbreak = 0.0;    // s, a model's answer under nexttime
    double time_nextbreak_x = 0.0;  // s, the same on the explicit side
    double time_present = 0.0;      // s, the last accepted point
    double time_epsilon = 1e-13;    // s
    double delt = 0.0;              // s, the present step
    double gmin = 1e-12;            // S, the conductance across a junction
    int n_limit = 0;                // exponentials capped in this evaluation
    int iter_trns = 0;              // pass of the time loop
    int iter_trns_1 = -1;           // steps of the transient so far; 0 in the first
    int iter_trns_x = -1;           // steps of the explicit side so far; 0 in the first
    int flag_debug_int = 0;
    int n_solve_lin = 0;  // linear solves of the block

    // Events, under save_history: a model whose output jumps by what it stores tells it. Under nexttime a source tells
    // whether its wave jumps at the break.
    int event_restart = 0;     // the method word, while a rule of second order heeds it
    int event = 0;             // a stored state has changed
    int event_acts = 0;        // one of them jumped within the step already, not behind it
    int event_reset = 0;       // variables of a block were set anew
    double event_share = 1.0;  // share of the step at which the first of them came
    int break_jumps = 0;       // 1: with time_nextbreak, the wave jumps there
    // A state changed as a quantity went from `before` to `now` through 0 in the step; half the step where it did not,
    // or where before is not known (NaN or 0).
    void tell_event(double before, double now, bool acts);
    void forget_events();

    // Library number -> position in the list file of all names. -1: not in use.
    std::vector<int> map_global_ebe, map_global_sse, map_global_gbe, map_global_ssg, map_global_dbe, map_global_xbe,
        map_global_ssx, map_global_ece, map_global_gce, map_global_xce;

    void init_flags();            // clears all switches but x_matrix
    void save_flags();            // all 32 switches to the saved copy
    void retrieve_flags();        // and back
    void write_all_true() const;  // prints the first switch that is on
};
