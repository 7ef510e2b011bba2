#include "analyses/event_passes.h"

#include <algorithm>

#include "analyses/accepted_point.h"
#include "analyses/trns_solve.h"
#include "output/row_writers.h"

namespace {
bool has_fixed_interval(const solve_class& slv) {
    return std::any_of(slv.out.files.begin(), slv.out.files.end(),
                       [](const out_file& file) { return file.flag_fixed_interval; });
}
}  // namespace

// Where there are only digital units, files of analog kind show their parameters, at every event.
event_passes::event_passes(run_state& r)
    : digital_(r.c.cct.flag_solve_digital),
      mixed_(r.c.cct.flag_mixed),
      mode_before_(mixed_ && !has_fixed_interval(r.slv) ? rows_digital : rows_all),
      mode_behind_(mixed_ ? rows_digital : rows_all) {
    if (!digital_) return;
    t_far_ = r.flags.t_end + (r.flags.t_end - r.flags.t_start);
    time_anlg_ = time_dgtl_ = r.flags.t_start;
    assign_dbeu_anlg(r);
    begin_events(r);
    write_rows(r, mode_behind_, r.flags.t_start);
}

void event_passes::start(const run_state& r) { t_next_anlg_ = r.flags.t_start + r.slv.now.delt; }

void event_passes::write_rows(run_state& r, int mode, double t) {
    if (mode == rows_all) ov_prm_of_files(r);
    write_trns(r.slv, r.c, mode, t);
}

event_passes::pass event_passes::end(run_state& r) {
    r.slv.now.time_present = r.flags.time_present = r.flags.t_end;
    write_rows(r, mode_behind_, r.flags.t_end);
    return pass::end;
}

event_passes::pass event_passes::choose(run_state& r, event_control& events) {
    solve_class& slv = r.slv;
    if (!mixed_) return fire(r, events, next_event(r, t_far_));
    const double t_end = r.flags.t_end, epsilon = slv.method.time_epsilon;
    if (t_end <= time_dgtl_ + epsilon || t_end <= time_anlg_ + epsilon) return end(r);
    const double t_next_dgtl = next_event(r, t_far_);
    if (t_next_dgtl < t_next_anlg_) {
        const double ahead = t_next_dgtl - slv.now.time_present;
        if (!(ahead > slv.method.delt_min)) return fire(r, events, t_next_dgtl);
        slv.now.delt = ahead - 0.5 * slv.method.delt_min;
    }
    slv.now.time_present = r.flags.time_present = time_anlg_;
    return pass::analog_step;
}

event_passes::pass event_passes::fire(run_state& r, event_control& events, double t) {
    solve_class& slv = r.slv;
    slv.now.iter_trns_1 = r.flags.iter_trns_1 = ++slv.now.iter_trns_dgtl;
    r.flags.trns_first = slv.now.iter_trns_dgtl == 0 ? 1 : 0;
    set_time_next(r, t);
    write_rows(r, mode_before_, t);
    if (!mixed_ && t >= r.flags.t_end) return end(r);
    assign_dbeu_anlg(r);
    const bool analog = dbe_process(r, t);
    write_rows(r, mode_behind_, t);
    dbe_schedule(r);
    time_dgtl_ = slv.now.time_present = r.flags.time_present = t;
    if (!r.c.cct.flag_dac || !mixed_) return pass::digital_event;
    // The analog side is to see the levels soon.
    const double soon = t + slv.method.delt_min;
    if (const double delt = slv.now.delt - (t_next_anlg_ - soon); soon < t_next_anlg_ && delt > slv.method.delt_min) {
        slv.now.delt = delt;
        t_next_anlg_ = soon;
    }
    if (analog) {
        r.formed.forget_variables();
        events.jump();
    }
    return pass::digital_event;
}

void event_passes::accept(run_state& r) {
    time_anlg_ = r.slv.now.time_present;
    t_next_anlg_ = time_anlg_ + r.slv.now.delt;
    if (!r.c.cct.flag_adc) return;
    r.flags.time_given = time_anlg_;
    dbe_schedule_anlg(r);
}
