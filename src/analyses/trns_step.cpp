#include "analyses/trns_step.h"

#include <algorithm>
#include <cmath>

#include "analyses/evaluate.h"
#include "analyses/solution_vector.h"
#include "analyses/step_control.h"
#include "analyses/trns_solve.h"
#include "base/halt.h"
#include "output/solution_file.h"

void keep_point_1(run_state& r) {
    r.mat.svec_old_1 = r.mat.svec;
    r.mat.locv_old_1 = r.c.ebeu.locv;
}
void keep_point_2(mat_class& m) {
    m.svec_old_2 = m.svec_old_1;
    m.locv_old_2 = m.locv_old_1;
}

void set_time_next(run_state& r, double t) {
    r.slv.now.time_next = t;
    r.flags.time_given = t;
}

namespace {
// ---- levels: the present point, the accepted one before it, and the one before that

// Levels are exchanged: what comes into the present one, or into 1, is overwritten before it is read.
void keep_functions_1(mat_class& m) {  // present -> 1
    m.kcl_ddt.total_1.swap(m.kcl_ddt.total);
    m.kcl_ddt.still_1.swap(m.kcl_ddt.still);
    m.state.f_1 = m.state.f_now;
}
void keep_functions_2(mat_class& m) {  // 1 -> 2
    m.kcl_ddt.total_2.swap(m.kcl_ddt.total_1);
    m.kcl_ddt.still_2.swap(m.kcl_ddt.still_1);
    m.state.f_2 = m.state.f_1;
}
void restore_functions_1(mat_class& m) {  // 1 -> present
    m.kcl_ddt.total = m.kcl_ddt.total_1;
    m.kcl_ddt.still = m.kcl_ddt.still_1;
    m.state.f_now = m.state.f_1;
}
void restore_functions_2(mat_class& m) {  // 2 -> present
    m.kcl_ddt.total = m.kcl_ddt.total_2;
    m.kcl_ddt.still = m.kcl_ddt.still_2;
    m.state.f_now = m.state.f_2;
}
// Back to the accepted point before, or to the one before that: the functions of the units are of another point.
void restore_point(run_state& r, const std::vector<double>& svec, const std::vector<double>& locv) {
    r.mat.svec = svec;
    r.c.ebeu.locv = locv;
    r.formed.of_held = -1;
    dcmp_solvec(r);
}

// ---- one solve

// The residual of a state's row is the error of the state over the step. Steps about events are so short that the
// rounding of a state alone can fail a test of residuals that other steps pass: while this lives, the same error of a
// state does.
class residuals_of_short_step {
public:
    explicit residuals_of_short_step(run_state& r)
        : slv_(r.slv), norm_2_(slv_.method.norm_2), norm_inf_(slv_.method.norm_inf) {
        if (!r.flags.event_restart || !(slv_.now.delt < slv_.method.delt_const)) return;
        slv_.method.norm_2 *= slv_.method.delt_const / slv_.now.delt;
        slv_.method.norm_inf *= slv_.method.delt_const / slv_.now.delt;
    }
    ~residuals_of_short_step() {
        slv_.method.norm_2 = norm_2_;
        slv_.method.norm_inf = norm_inf_;
    }
    residuals_of_short_step(const residuals_of_short_step&) = delete;
    residuals_of_short_step& operator=(const residuals_of_short_step&) = delete;

private:
    solve_class& slv_;
    double norm_2_, norm_inf_;
};

// Nothing is solved in a circuit without equations: time moves on.
void solve_step(run_state& r) {
    solve_class& slv = r.slv;
    const residuals_of_short_step heeded(r);
    if (slv.now.flag_linear)
        solve_linear_trns(r);
    else if (slv.now.flag_nonlinear)
        solve_newton_trns(r);
    else
        slv.now.l_converged = 1;
}

// Static functions at the present point, by the values that the blocks and units have now.
void evaluate_functions(run_state& r) {
    ebce_form_arrays(r);
    find_ebe_cur_trns(r, false);
    find_block_functions(r);
}

// A step that is too small for the digits of the time would be repeated for ever, and so would one that is no number.
void check_progress(const solve_class& slv) {
    if (slv.now.time_present + slv.now.delt > slv.now.time_present) return;
    halt({"solve_trns: the time does not go on with", "  this step.", line("  time_present=", slv.now.time_present),
          line("  delt=", slv.now.delt), line("  iter_trns_1=", slv.now.iter_trns_1), "  Halting..."});
}

bool starts_from_nothing(const solve_class& slv) { return !slv.task.init_file && !slv.task.init_previous; }

// A solve failed for good: gmin stepping if the block has it, else the run ends.
void gmin_or_halt(run_state& r) {
    if (!r.slv.method.gmin_step) halt({"  Halting..."});
    say("  calling gmin_step_trns_1...");
    gmin_step_trns_1(r);
    find_currents_trns(r);
}

// The currents are those of the last solution, the other values those of the failed iterate.
void write_solution_if_asked(run_state& r) {
    if (r.slv.out.i_file_solution >= 0) write_solution(r.slv, r.c, r.flags);
}

// ---- methods with one solve a step

// Flags of the coming try.
void use_rule(solve_class& slv, bool back_euler) {
    const bool gear = slv.method.gear2 || slv.method.gear2_fixed;
    slv.now.flag_trz = !back_euler && (slv.method.trapezoidal || slv.method.trapezoidal_auto || slv.method.trbdf2);
    slv.now.flag_be = back_euler || (gear && slv.now.iter_trns_anlg == 0);
    slv.now.flag_gear_fixed = slv.method.gear2_fixed && !slv.now.flag_be;
    slv.now.flag_gear_var = slv.method.gear2 && !slv.now.flag_be;
    slv.now.flag_bdf2 = 0;
}

// A step of backward Euler leaves what a rule that knows old currents and rates goes on from.
void leave_functions(run_state& r) {
    const solve_class& slv = r.slv;
    if (!slv.method.trapezoidal && !slv.method.trapezoidal_auto && !slv.method.trbdf2) return;
    find_waiting_currents(r);
    if (slv.method.trbdf2 && slv.now.flag_linear) evaluate_functions(r);
}

// False: an event has cut the step, and it is to be tried again.
bool plain_step(run_state& r, event_control& events) {
    solve_class& slv = r.slv;
    mat_class& mat = r.mat;
    for (;;) {
        check_progress(slv);
        set_time_next(r, slv.now.time_present + slv.now.delt);
        if (slv.now.flag_trz) {
            if (slv.now.flag_linear) {
                // The functions belong to the accepted point and its time.
                r.flags.time_given = slv.now.time_present;
                evaluate_functions(r);
                r.flags.time_given = slv.now.time_next;
            }
            keep_functions_1(mat);
        }
        find_trns_constants(slv);
        if (slv.now.flag_nonlinear && slv.now.iter_trns_anlg == 0 && slv.method.gmin_step && slv.method.gmin_init &&
            starts_from_nothing(slv))
            gmin_step_trns_1(r);
        solve_step(r);
        if (slv.now.l_converged && events.cut(r, slv.now.time_present, slv.now.time_next)) {
            restore_point(r, mat.svec_old_1, mat.locv_old_1);
            if (slv.now.flag_trz) restore_functions_1(mat);
            return false;
        }
        if (slv.now.l_converged && events.by_back_euler()) leave_functions(r);
        if (slv.now.flag_linear || !slv.now.flag_nonlinear) return true;
        if (slv.now.l_converged) {
            if (slv.now.flag_auto && slv.now.delt != slv.method.delt_max)
                slv.now.delt = std::min(slv.method.delt_max, slv.now.delt * slv.method.fctr_stepinc);
            return true;
        }
        if (!slv.now.flag_auto) {
            write_solution_if_asked(r);
            say("solve_trns: N-R iterations did not converge.");
            say(line("  iter_trns_anlg=", slv.now.iter_trns_anlg));
            say(line("  time (4)=", slv.now.time_next));
            gmin_or_halt(r);
            return true;
        }
        if (slv.now.delt == slv.method.delt_min) {
            say("solve_trns: no convergence even with");
            say("  the smallest time step.");
            say(line("iter_trns_1=", slv.now.iter_trns_1, ", time (3)=", slv.now.time_next));
            gmin_or_halt(r);
            return true;
        }
        if (++slv.now.iter_stepred > slv.method.itmax_stepred) {
            say("solve_trns: iter_stepred has exceeded");
            say("  itmax_stepred.");
            say(line("  iter_stepred=", slv.now.iter_stepred));
            say(line("  itmax_stepred=", slv.method.itmax_stepred));
            gmin_or_halt(r);
        }
        slv.now.delt = std::max(slv.method.delt_min, slv.now.delt * slv.method.fctr_stepred);
        restore_point(r, mat.svec_old_1, mat.locv_old_1);
        if (slv.now.flag_trz) restore_functions_1(mat);
        events.restore_histories(r);
    }
}

// ---- TR-BDF2

struct trbdf2_counts {
    int iter_tr = 0, iter_bdf2 = 0, number_reject = 0;
    int rejected_at_min = 0;  // rejected tries of the smallest step in a row
};

[[noreturn]] void no_smaller_step(const solve_class& slv, const trbdf2_counts& n, bool in_bdf2) {
    halt({in_bdf2 ? "solve_trns: no convergence (in bdf2) even with" : "solve_trns: no convergence even with",
          "  the smallest time step.", line("  iter_tr=", n.iter_tr),
          in_bdf2 ? line("  iter_bdf2=", n.iter_bdf2) : line("  iter_trbdf2=", slv.now.iter_trbdf2),
          line("  number_reject=", n.number_reject), line("  iter_trns_1=", slv.now.iter_trns_1)});
}

// A try that is rejected leaves the histories of units, so the same step again need not fail the same way; but it may.
void count_rejected(const solve_class& slv, trbdf2_counts& n, double h) {
    if (h > slv.method.delt_min)
        n.rejected_at_min = 0;
    else if (++n.rejected_at_min > slv.method.itmax_trbdf2)
        no_smaller_step(slv, n, false);
}

void solve_stage(run_state& r) {
    solve_step(r);
    if (r.slv.now.flag_linear) evaluate_functions(r);
}

bool trbdf2_step(run_state& r, event_control& events) {
    solve_class& slv = r.slv;
    mat_class& mat = r.mat;
    trbdf2_counts count;
    for (;;) {
        ++slv.now.iter_trbdf2;
        if (slv.now.iter_stepred > slv.method.itmax_trbdf2)
            halt({"solve_trns: iter_trbdf2 has exceeded itmax_trbdf2", line("  iter_trbdf2=", slv.now.iter_trbdf2),
                  line("  itmax_trbdf2=", slv.method.itmax_trbdf2), line("  number_reject=", count.number_reject),
                  line("  time_given=", r.flags.time_given), "  Halting..."});
        ++count.number_reject;
        check_progress(slv);
        const double h = slv.now.delt, t = slv.now.time_present;
        slv.now.delt = h * slv.method.trbdf2_gamma;
        set_time_next(r, t + h * slv.method.trbdf2_gamma);
        slv.now.flag_trz = 1;
        slv.now.flag_bdf2 = 0;
        keep_functions_1(mat);
        find_trns_constants(slv);
        ++count.iter_tr;
        solve_stage(r);
        if (!slv.now.l_converged) {
            if (h == slv.method.delt_min) no_smaller_step(slv, count, false);
            slv.now.delt = std::max(slv.method.delt_min, h * slv.method.fctr_stepred);
            restore_point(r, mat.svec_old_1, mat.locv_old_1);
            restore_functions_1(mat);
            events.restore_histories(r);
            continue;
        }
        if (events.cut(r, t, slv.now.time_next, false)) {
            restore_point(r, mat.svec_old_1, mat.locv_old_1);
            restore_functions_1(mat);
            return false;
        }
        keep_point_2(mat);
        keep_point_1(r);
        keep_functions_2(mat);
        keep_functions_1(mat);
        slv.now.flag_trz = 0;
        slv.now.flag_bdf2 = 1;
        set_time_next(r, t + h);
        slv.now.delt = h;
        find_trns_constants(slv);
        ++count.iter_bdf2;
        solve_stage(r);
        bool is_cut = false;
        if (slv.now.l_converged && events.cut(r, t + h * slv.method.trbdf2_gamma, slv.now.time_next)) {
            is_cut = true;
        } else if (slv.now.l_converged) {
            const bool accepted = trzbdf2_1(r);
            slv.now.delt = std::min(slv.method.delt_max, std::max(slv.method.delt_min, slv.now.delt_new));
            if (accepted) return true;
            if (events.on() && h <= slv.method.delt_min)
                is_cut = events.take_as_event(r);
            else
                count_rejected(slv, count, h);
        } else {
            if (slv.now.delt == slv.method.delt_min) no_smaller_step(slv, count, true);
            slv.now.delt = std::max(slv.method.delt_min, h * slv.method.fctr_stepred);
        }
        mat.svec_old_1 = mat.svec_old_2;
        mat.locv_old_1 = mat.locv_old_2;
        restore_point(r, mat.svec_old_1, mat.locv_old_1);
        restore_functions_2(mat);
        if (is_cut) return false;
        events.restore_histories(r);
    }
}
}  // namespace

void take_step(run_state& r, event_control& events) {
    const bool trbdf2 = r.slv.method.trbdf2 != 0;
    for (;;) {
        if (events.on()) use_rule(r.slv, events.by_back_euler());
        if (trbdf2 && !events.by_back_euler() ? trbdf2_step(r, events) : plain_step(r, events)) return;
    }
}
