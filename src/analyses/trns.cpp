#include "analyses/trns.h"

#include <algorithm>
#include <cmath>

#include "analyses/accepted_point.h"
#include "analyses/event_passes.h"
#include "analyses/events.h"
#include "analyses/integration.h"
#include "analyses/levels.h"
#include "analyses/plan.h"
#include "analyses/residual.h"
#include "analyses/rparm_passes.h"
#include "analyses/step_control.h"
#include "analyses/trns_solve.h"
#include "analyses/trns_step.h"
#include "analyses/trns_x.h"
#include "base/halt.h"
#include "base/signals.h"

namespace {
void define_method_flags(run_state& r) {
    solve_class& slv = r.slv;
    slv.now.flag_trz = slv.method.trapezoidal || slv.method.trapezoidal_auto || slv.method.trbdf2;
    slv.now.flag_be = slv.method.back_euler || slv.method.back_euler_auto;
    slv.now.flag_auto = slv.method.back_euler_auto || slv.method.trapezoidal_auto;
    slv.now.flag_bdf2 = slv.now.flag_gear_fixed = slv.now.flag_gear_var = 0;
    if (r.c.cct.flag_lmttstep && slv.method.gear2_fixed)
        halt({"solve_trns: cannot use gear2 when", "  step size may be limited", "  by the elements. Halting..."});
}

void prepare_first_step(run_state& r, event_control& events) {
    solve_class& slv = r.slv;
    slv.now.delt = slv.method.delt_const;
    set_time_next(r, slv.now.time_present);
    const bool breaks = !slv.method.constant_step && r.c.cct.flag_lmttstep;
    if (breaks) find_nextbreak(r);
    if (events.on()) {
        if (events.choose_step(r) && breaks) events.take_break(r);
    } else if (breaks) {
        check_tnext1(r);
        check_tnext2(r);
    }
    keep_point_1(r);
    if (slv.now.flag_trz) {
        r.flags.trns_first = 1;
        set_time_next(r, slv.now.time_present);
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
        const int pass = slv_.now.iter_trns;
        if (pass == 0) {
            say("Transient simulation starts...");
            say(slv_.method.write_time ? line("iter_trns=", pass, " time=", slv_.now.time_present) : line("i=", pass));
        } else if (count_ == slv_.method.n_wrtiterno) {
            say(slv_.method.write_time ? line("iter_trns_1=", pass, ", time=", slv_.now.time_present)
                                       : line("i=", pass));
            count_ = 0;
        }
        ++count_;
    }

private:
    const solve_class& slv_;
    int count_ = 0;
};

void begin_analog_step(run_state& r, event_control& events) {
    solve_class& slv = r.slv;
    // What circuits read of the explicit side jumps with its steps.
    if (r.c.cct.flag_x_mixed && solve_trns_x_onestep(r)) {
        r.formed.forget_variables();
        events.jump();
    }
    if (slv.now.iter_trns_1 != 0 && r.c.cct.flag_modulo) gbce_modulo(r);
    if (slv.method.gear2) slv.now.delt_old_2 = slv.now.delt_old_1;
    if (slv.method.gear2_fixed && std::fabs(slv.now.delt - slv.now.delt_old_1) > 1.01 * slv.method.time_epsilon)
        halt({"solve_trns:", "   cannot use gear2 when step", "   size may be changed", "  Halting..."});
    slv.now.delt_old_1 = slv.now.delt;
    slv.now.iter_trns_1 = ++slv.now.iter_trns_anlg;
    const bool first = slv.now.iter_trns_anlg == 0;
    r.flags.trns_first = first ? 1 : 0;
    if (slv.method.gear2 || slv.method.gear2_fixed) {
        slv.now.flag_be = first;
        slv.now.flag_gear_fixed = !first && slv.method.gear2_fixed;
        slv.now.flag_gear_var = !first && slv.method.gear2;
    }
    slv.now.iter_stepred = slv.now.iter_trbdf2 = 0;
}

void next_step_size(run_state& r, event_control& events) {
    solve_class& slv = r.slv;
    const bool keeps_const =
        slv.method.back_euler || slv.method.trapezoidal || slv.method.gear2_fixed || slv.method.gear2;
    slv.now.delt = std::max(slv.method.delt_min, keeps_const ? slv.method.delt_const : slv.now.delt);
    if (!events.on()) {
        if (r.c.cct.flag_lmttstep) {
            check_tnext1(r);
            check_tnext2(r);
        }
    } else if (events.choose_step(r)) {
        events.take_break(r);
    }
    if (r.flags.t_end <= slv.now.time_present + slv.now.delt)
        slv.now.delt = std::max(slv.method.delt_min, (r.flags.t_end - slv.now.time_present) + slv.method.time_epsilon);
}

// Currents that accepted points leave out, where something may read those of this one.
void find_all_currents(run_state& r) {
    if (!keeps_all_currents(r)) find_left_out_currents(r);
    find_waiting_currents(r);
}

void end_run(run_state& r) {
    r.formed.forget();
    r.flags.event_restart = 0;
    r.flags.iter_trns_1 = -1;
    r.flags.init_flags();
}

void prepare_analog(run_state& r) {
    make_plan(r);
    r.formed.keep();
    define_method_flags(r);
}

// An analog step, from its first try to its row. Gives whether it has reached the end.
bool analog_step(run_state& r, event_control& events) {
    solve_class& slv = r.slv;
    begin_analog_step(r, events);
    r.flags.iter_trns_1 = slv.now.iter_trns_1;
    if (events.on()) events.begin_step(r);
    take_step(r, events);
    slv.now.time_present = slv.now.time_next;
    if (events.on()) events.accept(r);
    r.flags.time_present = slv.now.time_present;
    if (slv.now.iter_trns_anlg == 0) tell_residual(r);
    write_analog_row(r);
    const bool ends = r.flags.t_end <= slv.now.time_present + slv.method.time_epsilon;
    // Digital passes may be the last ones of a run that is cut, so that any step may be the last one of the analog
    // side.
    const bool may_be_last = r.c.cct.flag_mixed && keeps_all_currents(r);
    if (ends || may_be_last || slv.now.iter_trns == slv.method.itmax_trns - 1) find_all_currents(r);
    return ends;
}
}  // namespace

void solve_trns(run_state& r) {
    solve_class& slv = r.slv;
    const bool analog = r.c.cct.flag_solve_analog;
    r.flags.init_flags();
    r.flags.time_epsilon = slv.method.time_epsilon;
    slv.now.time_present = r.flags.time_present = r.flags.t_start;
    set_time_next(r, slv.now.time_present);
    if (r.c.cct.flag_x_mixed) start_explicit_side(r);
    if (analog) {
        prepare_analog(r);
        write_analog_row(r);
    }
    event_passes digital(r);
    event_control events(r);
    r.flags.event_restart = events.on() ? 1 : 0;
    if (analog) prepare_first_step(r, events);
    slv.now.iter_trns_anlg = slv.now.iter_trns_dgtl = slv.now.iter_trns_1 = slv.now.iter_trns_x = -1;
    r.flags.iter_trns_1 = -1;
    slv.now.delt_old_1 = slv.now.delt;
    digital.start(r);
    if (slv.method.itmax_trns > 0) check_rparm_sources(r.c);
    progress lines(slv);
    for (slv.now.iter_trns = 0; slv.now.iter_trns < slv.method.itmax_trns; ++slv.now.iter_trns) {
        heed_signals();
        r.flags.iter_trns = slv.now.iter_trns;
        if (r.c.cct.flag_setrparm && set_rparm_2(r) && events.on()) events.take_break(r);
        if (r.c.cct.flag_getrparm) get_rparm_2(r);
        lines.tell();
        const event_passes::pass now = digital.on() ? digital.choose(r, events) : event_passes::pass::analog_step;
        if (now == event_passes::pass::end) return end_run(r);
        if (now == event_passes::pass::digital_event) continue;
        const bool ends = analog_step(r, events);
        if (ends && !digital.on()) return end_run(r);
        if (slv.method.gear2_fixed || slv.method.gear2) keep_point_2(r.mat);
        keep_point_1(r);
        next_step_size(r, events);
        if (digital.on()) digital.accept(r);
    }
    say("warning: time_end not reached");
    say("  in transient simulation.");
    say("  Increase itmax_trns in the method card.");
    end_run(r);
}
