#include "analyses/events.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "analyses/step_control.h"
#include "base/at.h"

namespace {
constexpr int max_cuts = 60;  // of one step; halving alone needs 13 from delt_const to the default delt_min
constexpr int max_small = 8;  // units in a chain, each answering to the one before
constexpr int max_near =
    80;  // cuts and small steps within delt_const: a relay that slides along its threshold has no end
constexpr double never = -std::numeric_limits<double>::infinity();
}  // namespace

event_control::event_control(const run_state& r) {
    const solve_class& slv = r.slv;
    error_test_ = slv.method.trbdf2 != 0;
    on_ = slv.method.event_restart && (slv.method.trapezoidal || slv.method.trapezoidal_auto || slv.method.gear2 ||
                                       slv.method.gear2_fixed || error_test_);
    if (!on_) return;
    sizes_ = !slv.method.gear2_fixed;
    keeps_const_ = slv.method.trapezoidal || slv.method.gear2;
    const double digits = 256 * std::numeric_limits<double>::epsilon();
    smallest_ = std::max({slv.method.delt_min, 1e-6 * slv.method.delt_const,
                          digits * std::max(std::fabs(r.flags.t_start), std::fabs(r.flags.t_end))});
    t_known_ = t_jump_ = near_end_ = never;
    usual_ = slv.method.delt_const;
    // The currents at the start are not known, or the circuit may be far from rest in a time that no step resolves.
    event_ = error_test_;
    n_rests_ = error_test_ || (!slv.task.init_previous && !slv.task.init_file) ? rests() : 0;
    if (!sizes_) return;
    for_families(r, [&](const auto& f) {
        const unit_core& unit = f.units.unit;
        for (int u = 0; u < f.n(); ++u) {
            if (!f.has(&entry_flags::save_history, u) && !f.has(&entry_flags::allow_reset, u)) continue;
            const auto& call = f.call[at(u)];
            add_history(call.rparm, unit.rprm.size(u), call.iparm, unit.iprm.size(u));
            add_history(call.stparm, unit.sv.size(u), nullptr, 0);
        }
    });
}

void event_control::add_history(double* real, int n_real, int* whole, int n_whole) {
    if (n_real + n_whole == 0) return;
    history_.push_back({real, whole, n_real, n_whole});
    kept_real_.resize(kept_real_.size() + at(n_real));
    kept_whole_.resize(kept_whole_.size() + at(n_whole));
}

void event_control::begin_step(run_state& r) {
    n_cuts_ = 0;
    was_cut_ = false;
    r.flags.forget_events();
    double* real = kept_real_.data();
    int* whole = kept_whole_.data();
    for (const values& h : history_) {
        real = std::copy_n(h.real, h.n_real, real);
        whole = std::copy_n(h.whole, h.n_whole, whole);
    }
}

void event_control::restore_histories(run_state& r) {
    r.flags.forget_events();
    const double* real = kept_real_.data();
    const int* whole = kept_whole_.data();
    for (const values& h : history_) {
        std::copy_n(real, h.n_real, h.real);
        std::copy_n(whole, h.n_whole, h.whole);
        real += h.n_real;
        whole += h.n_whole;
    }
}

bool event_control::cut(run_state& r, double from, double t, bool ends) {
    flags_class& flags = r.flags;
    solve_class& slv = r.slv;
    const double h = t - slv.now.time_present, d = smallest_;
    if (!sizes_ || !flags.event || h <= 2 * d || n_cuts_ == max_cuts || n_near_ >= max_near) return false;
    const double came = from + flags.event_share * (t - from);
    if (ends && !flags.event_acts && t - came <= d) return false;
    ++n_cuts_;
    ++n_near_;
    was_cut_ = true;
    t_known_ = t;
    slv.now.delt = std::max(d, std::min(came - slv.now.time_present - 0.5 * d, h - d));
    slv.now.delt_old_1 = slv.now.delt;
    if (slv.now.delt <= 2 * d) {
        size_ = smallest;
        be_ = true;
    }
    restore_histories(r);
    return true;
}

bool event_control::take_as_event(run_state& r) {
    ++n_crossed_;
    restore_histories(r);
    r.slv.now.delt = n_near_ < max_near ? smallest_ : std::max(smallest_, 0.1 * r.slv.method.delt_const);
    n_near_ += max_small;
    size_ = smallest;
    return be_ = true;
}

void event_control::accept(const run_state& r) {
    event_ = r.flags.event != 0;
    if (event_ || r.slv.now.time_present >= t_known_) t_known_ = never;
    if (event_ || r.flags.event_reset || size_ == smallest) n_rests_ = error_test_ && n_near_ >= max_near ? 0 : rests();
    if (size_ != smallest)
        n_small_ = 0;
    else
        ++n_near_;
    if (!(r.slv.now.time_present < near_end_)) {
        near_end_ = r.slv.now.time_present + r.slv.method.delt_const;
        n_near_ = 0;
    }
    if (!be_) n_crossed_ = 0;
    if (size_ == usual && !was_cut_) usual_ = r.slv.now.delt;
}

bool event_control::choose_step(run_state& r) {
    solve_class& slv = r.slv;
    const double t = slv.now.time_present;
    const bool jump_is_near = t_jump_ - t > 0.01 * smallest_ && t_jump_ - t <= 1.5 * smallest_;
    if (!sizes_) {
        size_ = usual;
    } else if (jump_is_near || (event_ && n_small_ < max_small && n_near_ < max_near)) {
        size_ = smallest;
        slv.now.delt = jump_is_near ? t_jump_ - t : smallest_;
        ++n_small_;
        be_ = true;
        return false;
    } else {
        if (error_test_ && n_rests_ > 0) usual_ = std::min(usual_, slv.method.delt_const);
        size_ = error_test_ && n_rests_ > 0 ? rest : usual;
        slv.now.delt = keeps_const_ ? slv.method.delt_const : usual_;
        if (size_ == rest) slv.now.delt = std::min(slv.now.delt, smallest_ * (n_rests_ == 2 ? 10 : 100));
        if (t_known_ > t) slv.now.delt = std::min(slv.now.delt, std::max(smallest_, t_known_ - t));
    }
    be_ = n_rests_ > 0;
    if (be_) --n_rests_;
    return true;
}

void event_control::jump() {
    if (!on_) return;
    be_ = true;
    n_rests_ = std::max(n_rests_, rests());
    if (sizes_) size_ = smallest;
}

void event_control::take_break(run_state& r) {
    if (!sizes_) return;
    const double chosen = r.slv.now.delt;
    if (r.c.cct.flag_lmttstep) check_tnext1(r, 0.01 * smallest_);
    t_jump_ = shorten_to_breaks(r, smallest_);
    const bool event_is_near = t_known_ > r.slv.now.time_present && t_known_ - r.slv.now.time_present <= 2 * smallest_;
    if (r.slv.now.delt > 2 * smallest_ || (r.slv.now.delt == chosen && !event_is_near)) return;
    size_ = smallest;
    be_ = true;
}
