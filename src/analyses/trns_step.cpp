#include "analyses/trns_step.h"

#include <algorithm>

#include "analyses/accepted_point.h"
#include "analyses/integration.h"
#include "analyses/levels.h"
#include "analyses/trbdf2.h"
#include "analyses/trns_solve.h"
#include "base/halt.h"
#include "output/solution_file.h"

namespace {
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
            !slv.method.trbdf2 && starts_from_nothing(slv))
            gmin_step_trns_1(r);
        solve_step(r);
        if (slv.now.l_converged && events.cut(r, slv.now.time_present, slv.now.time_next)) {
            restore_1(r, slv.now.flag_trz != 0);
            return false;
        }
        if (slv.now.l_converged && events.by_back_euler()) leave_functions(r);
        if (slv.now.flag_linear || !slv.now.flag_nonlinear) return true;
        if (slv.now.l_converged) {
            if (slv.now.flag_auto && slv.now.delt != slv.method.delt_max)
                slv.now.delt = std::min(slv.method.delt_max, slv.now.delt * slv.method.fctr_stepinc);
            return true;
        }
        // A step about an event may be shortened under any rule that has the sizes; TR-BDF2 has them.
        if (!slv.now.flag_auto && !slv.method.trbdf2) {
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
        restore_1(r, slv.now.flag_trz != 0);
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
