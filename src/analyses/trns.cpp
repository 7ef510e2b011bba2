#include "analyses/trns.h"

#include <algorithm>
#include <cmath>

#include "analyses/evaluate.h"
#include "analyses/plan.h"
#include "analyses/rparm_passes.h"
#include "analyses/residual.h"
#include "analyses/solution_vector.h"
#include "analyses/step_control.h"
#include "analyses/trns_solve.h"
#include "output/row_writers.h"
#include "output/solution_file.h"
#include "run/halt.h"
#include "run/signals.h"

namespace {
constexpr int mode_analog = 5;

// ---- levels: the present point, the accepted one before it, and the one before that -----------------------------------

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
void keep_point_1(run_state& r) {
    r.mat.svec_old_1 = r.mat.svec;
    r.mat.locv_old_1 = r.c.ebeu.locv;
}
void keep_point_2(mat_class& m) {
    m.svec_old_2 = m.svec_old_1;
    m.locv_old_2 = m.locv_old_1;
}

// Back to the accepted point before, or to the one before that: the functions of the units are of another point.
void restore_point(run_state& r, const std::vector<double>& svec, const std::vector<double>& locv) {
    r.mat.svec = svec;
    r.c.ebeu.locv = locv;
    r.formed.of_held = -1;
    dcmp_solvec(r);
}

// ---- one solve ---------------------------------------------------------------------------------------------------------

// Nothing is solved in a circuit without equations: time moves on.
void solve_step(run_state& r) {
    solve_class& slv = r.slv;
    if (slv.flag_linear)
        solve_linear_trns(r);
    else if (slv.flag_nonlinear)
        solve_newton_trns(r);
    else
        slv.l_converged = 1;
}

// Static functions at the present point, by the values that the blocks and units have now.
void evaluate_functions(run_state& r) {
    ebce_form_arrays(r);
    find_ebe_cur_trns(r, false);
    find_block_functions(r);
}

void set_time_next(run_state& r, double t) {
    r.slv.time_next = t;
    r.flags.time_given = t;
}

// A step that is too small for the digits of the time would be repeated for ever, and so would one that is no number.
void check_progress(const solve_class& slv) {
    if (slv.time_present + slv.delt > slv.time_present) return;
    halt({"solve_trns: the time does not go on with", "  this step.", line("  time_present=", slv.time_present),
          line("  delt=", slv.delt), line("  iter_trns_1=", slv.iter_trns_1), "  Halting..."});
}

bool starts_from_nothing(const solve_class& slv) { return !slv.init_file && !slv.init_previous; }

// A solve failed for good: gmin stepping if the block has it, else the run ends.
void gmin_or_halt(run_state& r) {
    if (!r.slv.gmin_step) halt({"  Halting..."});
    say("  calling gmin_step_trns_1...");
    gmin_step_trns_1(r);
    find_currents_trns(r);
}

// The currents are those of the last solution, the other values those of the failed iterate.
void write_solution_if_asked(run_state& r) {
    if (r.slv.i_file_solution >= 0) write_solution(r.slv, r.c, r.flags);
}

// ---- methods with one solve a step ----------------------------------------------------------------------------------------

void plain_step(run_state& r) {
    solve_class& slv = r.slv;
    mat_class& mat = r.mat;
    for (;;) {
        check_progress(slv);
        set_time_next(r, slv.time_present + slv.delt);
        if (slv.flag_trz) {
            if (slv.flag_linear) {
                // The functions belong to the accepted point and its time.
                r.flags.time_given = slv.time_present;
                evaluate_functions(r);
                r.flags.time_given = slv.time_next;
            }
            keep_functions_1(mat);
        }
        find_trns_constants(slv);
        if (slv.flag_nonlinear && slv.iter_trns_anlg == 0 && slv.gmin_step && slv.gmin_init && starts_from_nothing(slv))
            gmin_step_trns_1(r);
        solve_step(r);
        if (slv.flag_linear || !slv.flag_nonlinear) return;
        if (slv.l_converged) {
            if (slv.flag_auto && slv.delt != slv.delt_max)
                slv.delt = std::min(slv.delt_max, slv.delt * slv.fctr_stepinc);
            return;
        }
        if (!slv.flag_auto) {
            write_solution_if_asked(r);
            say("solve_trns: N-R iterations did not converge.");
            say(line("  iter_trns_anlg=", slv.iter_trns_anlg));
            say(line("  time (4)=", slv.time_next));
            gmin_or_halt(r);
            return;
        }
        if (slv.delt == slv.delt_min) {
            say("solve_trns: no convergence even with");
            say("  the smallest time step.");
            say(line("iter_trns_1=", slv.iter_trns_1, ", time (3)=", slv.time_next));
            gmin_or_halt(r);
            return;
        }
        if (++slv.iter_stepred > slv.itmax_stepred) {
            say("solve_trns: iter_stepred has exceeded");
            say("  itmax_stepred.");
            say(line("  iter_stepred=", slv.iter_stepred));
            say(line("  itmax_stepred=", slv.itmax_stepred));
            gmin_or_halt(r);
        }
        slv.delt = std::max(slv.delt_min, slv.delt * slv.fctr_stepred);
        restore_point(r, mat.svec_old_1, mat.locv_old_1);
        if (slv.flag_trz) restore_functions_1(mat);
    }
}

// ---- TR-BDF2 -----------------------------------------------------------------------------------------------------------------

struct trbdf2_counts {
    int iter_tr = 0, iter_bdf2 = 0, number_reject = 0;
    int rejected_at_min = 0;  // rejected tries of the smallest step in a row
};

[[noreturn]] void no_smaller_step(const solve_class& slv, const trbdf2_counts& n, bool in_bdf2) {
    halt({in_bdf2 ? "solve_trns: no convergence (in bdf2) even with" : "solve_trns: no convergence even with",
          "  the smallest time step.", line("  iter_tr=", n.iter_tr),
          in_bdf2 ? line("  iter_bdf2=", n.iter_bdf2) : line("  iter_trbdf2=", slv.iter_trbdf2),
          line("  number_reject=", n.number_reject), line("  iter_trns_1=", slv.iter_trns_1)});
}

// A try that is rejected leaves the histories of units, so the same step again need not fail the same way; but it may.
void count_rejected(const solve_class& slv, trbdf2_counts& n, double h) {
    if (h > slv.delt_min)
        n.rejected_at_min = 0;
    else if (++n.rejected_at_min > slv.itmax_trbdf2)
        no_smaller_step(slv, n, false);
}

void solve_stage(run_state& r) {
    solve_step(r);
    if (r.slv.flag_linear) evaluate_functions(r);
}

void trbdf2_step(run_state& r) {
    solve_class& slv = r.slv;
    mat_class& mat = r.mat;
    trbdf2_counts count;
    for (;;) {
        ++slv.iter_trbdf2;
        if (slv.iter_stepred > slv.itmax_trbdf2)
            halt({"solve_trns: iter_trbdf2 has exceeded itmax_trbdf2", line("  iter_trbdf2=", slv.iter_trbdf2),
                  line("  itmax_trbdf2=", slv.itmax_trbdf2), line("  number_reject=", count.number_reject),
                  line("  time_given=", r.flags.time_given), "  Halting..."});
        ++count.number_reject;
        check_progress(slv);
        const double h = slv.delt, t = slv.time_present;
        slv.delt = h * slv.trbdf2_gamma;
        set_time_next(r, t + h * slv.trbdf2_gamma);
        slv.flag_trz = 1;
        slv.flag_bdf2 = 0;
        keep_functions_1(mat);
        find_trns_constants(slv);
        ++count.iter_tr;
        solve_stage(r);
        if (!slv.l_converged) {
            if (h == slv.delt_min) no_smaller_step(slv, count, false);
            slv.delt = std::max(slv.delt_min, h * slv.fctr_stepred);
            restore_point(r, mat.svec_old_1, mat.locv_old_1);
            restore_functions_1(mat);
            continue;
        }
        keep_point_2(mat);
        keep_point_1(r);
        keep_functions_2(mat);
        keep_functions_1(mat);
        slv.flag_trz = 0;
        slv.flag_bdf2 = 1;
        set_time_next(r, t + h);
        slv.delt = h;
        find_trns_constants(slv);
        ++count.iter_bdf2;
        solve_stage(r);
        bool accepted = false;
        if (slv.l_converged) {
            accepted = trzbdf2_1(r);
            slv.delt = std::min(slv.delt_max, std::max(slv.delt_min, slv.delt_new));
            if (accepted) return;
            count_rejected(slv, count, h);
        } else {
            if (slv.delt == slv.delt_min) no_smaller_step(slv, count, true);
            slv.delt = std::max(slv.delt_min, h * slv.fctr_stepred);
        }
        mat.svec_old_1 = mat.svec_old_2;
        mat.locv_old_1 = mat.locv_old_2;
        restore_point(r, mat.svec_old_1, mat.locv_old_1);
        restore_functions_2(mat);
    }
}

// ---- the loop ------------------------------------------------------------------------------------------------------------------

void define_method_flags(run_state& r) {
    solve_class& slv = r.slv;
    slv.flag_trz = slv.trapezoidal || slv.trapezoidal_auto || slv.trbdf2;
    slv.flag_be = slv.back_euler || slv.back_euler_auto;
    slv.flag_auto = slv.back_euler_auto || slv.trapezoidal_auto;
    slv.flag_bdf2 = slv.flag_gear_fixed = slv.flag_gear_var = 0;
    if (r.c.cct.flag_lmttstep && slv.gear2_fixed)
        halt({"solve_trns: cannot use gear2 when", "  step size may be limited", "  by the elements. Halting..."});
}

void prepare_first_step(run_state& r) {
    solve_class& slv = r.slv;
    slv.delt = slv.delt_const;
    set_time_next(r, slv.time_present);
    if (!slv.constant_step && r.c.cct.flag_lmttstep) {
        find_nextbreak(r);
        check_tnext1(r);
        check_tnext2(r);
    }
    keep_point_1(r);
    if (slv.flag_trz) {
        r.flags.trns_first = 1;
        set_time_next(r, slv.time_present);
        find_trns_constants(slv);
        find_functions_trns(r);
        r.flags.trns_first = 0;
    }
}

// Lines come at pass 0, then every n_wrtiterno passes.
class progress {
public:
    explicit progress(const solve_class& slv) : slv_(slv) {}
    void tell() {
        const int pass = slv_.iter_trns;
        if (pass == 0) {
            say("Transient simulation starts...");
            say(slv_.write_time ? line("iter_trns=", pass, " time=", slv_.time_present) : line("i=", pass));
        } else if (count_ == slv_.n_wrtiterno) {
            say(slv_.write_time ? line("iter_trns_1=", pass, ", time=", slv_.time_present) : line("i=", pass));
            count_ = 0;
        }
        ++count_;
    }

private:
    const solve_class& slv_;
    int count_ = 0;
};

void begin_analog_step(run_state& r) {
    solve_class& slv = r.slv;
    if (slv.iter_trns_1 != 0 && r.c.cct.flag_modulo) gbce_modulo(r);
    if (slv.gear2) slv.delt_old_2 = slv.delt_old_1;
    if (slv.gear2_fixed && std::fabs(slv.delt - slv.delt_old_1) > 1.01 * slv.time_epsilon)
        halt({"solve_trns:", "   cannot use gear2 when step", "   size may be changed", "  Halting..."});
    slv.delt_old_1 = slv.delt;
    slv.iter_trns_1 = ++slv.iter_trns_anlg;
    const bool first = slv.iter_trns_anlg == 0;
    r.flags.trns_first = first ? 1 : 0;
    if (slv.gear2 || slv.gear2_fixed) {
        slv.flag_be = first;
        slv.flag_gear_fixed = !first && slv.gear2_fixed;
        slv.flag_gear_var = !first && slv.gear2;
    }
    slv.iter_stepred = slv.iter_trbdf2 = 0;
}

void next_step_size(run_state& r) {
    solve_class& slv = r.slv;
    const bool keeps_const = slv.back_euler || slv.trapezoidal || slv.gear2_fixed || slv.gear2;
    slv.delt = std::max(slv.delt_min, keeps_const ? slv.delt_const : slv.delt);
    if (r.c.cct.flag_lmttstep) {
        check_tnext1(r);
        check_tnext2(r);
    }
    if (r.flags.t_end <= slv.time_present + slv.delt)
        slv.delt = std::max(slv.delt_min, (r.flags.t_end - slv.time_present) + slv.time_epsilon);
}

void write_row(run_state& r) {
    ov_prm_of_files(r);
    write_trns(r.slv, r.c, mode_analog, r.slv.time_present);
}
}  // namespace

void solve_trns(run_state& r) {
    solve_class& slv = r.slv;
    r.flags.init_flags();
    make_plan(r);
    r.formed.kept = true;
    define_method_flags(r);
    slv.time_present = r.flags.t_start;
    r.flags.time_epsilon = slv.time_epsilon;
    set_time_next(r, slv.time_present);
    write_row(r);
    prepare_first_step(r);
    slv.iter_trns_anlg = slv.iter_trns_dgtl = slv.iter_trns_1 = slv.iter_trns_x = -1;
    r.flags.iter_trns_1 = -1;
    slv.delt_old_1 = slv.delt;
    if (slv.itmax_trns > 0) check_rparm_sources(r.c);
    progress lines(slv);
    for (slv.iter_trns = 0; slv.iter_trns < slv.itmax_trns; ++slv.iter_trns) {
        heed_signals();
        r.flags.iter_trns = slv.iter_trns;
        if (r.c.cct.flag_setrparm) set_rparm_2(r);
        if (r.c.cct.flag_getrparm) get_rparm_2(r);
        lines.tell();
        begin_analog_step(r);
        r.flags.iter_trns_1 = slv.iter_trns_1;
        if (slv.trbdf2)
            trbdf2_step(r);
        else
            plain_step(r);
        slv.time_present = slv.time_next;
        r.flags.time_present = slv.time_present;
        if (slv.iter_trns_anlg == 0) tell_residual(r);
        write_row(r);
        const bool ends = r.flags.t_end <= slv.time_present + slv.time_epsilon;
        if (ends || slv.iter_trns == slv.itmax_trns - 1) {
            if (!keeps_all_currents(r)) find_left_out_currents(r);
            find_waiting_currents(r);
        }
        if (ends) {
            r.formed = formed_arguments{};
            r.flags.init_flags();
            return;
        }
        if (slv.gear2_fixed || slv.gear2) keep_point_2(r.mat);
        keep_point_1(r);
        next_step_size(r);
    }
    r.formed = formed_arguments{};
    say("warning: time_end not reached");
    say("  in transient simulation.");
    say("  Increase itmax_trns in the method card.");
    r.flags.init_flags();
}
