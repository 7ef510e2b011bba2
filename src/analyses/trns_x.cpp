#include "analyses/trns_x.h"

#include <algorithm>
#include <cmath>

#include "analyses/explicit_step.h"
#include "analyses/rparm_passes.h"
#include "analyses/run_state.h"
#include "base/at.h"
#include "base/halt.h"
#include "base/signals.h"
#include "output/row_writers.h"
#include "output/solution_file.h"
#include "settings/directives.h"

namespace {

void write_trns_x(run_state& r) { write_trns(r.slv, r.c, rows_analog, r.slv.now.time_x); }

// Lines come at pass 0, then every n_wrtiterno passes.
void write_iter_x(const solve_class& slv) {
    const int pass = slv.now.iter_trns;
    if (pass != 0 && (slv.method.n_wrtiterno <= 0 || pass % slv.method.n_wrtiterno != 0)) return;
    say(slv.method.x_write_time ? line("iter_trns_x=", pass, " time=", slv.now.time_x) : line("i=", pass));
}

// The states at the end of a step, with all that follows from them.
void settle_step(run_state& r, const explicit_rule& rule, double h, double t) {
    form_new_states(r.explicits, rule, h);
    evaluate_explicit(r, t);
    if (!r.explicits.resetting.empty()) xbe_reset(r);
}

void find_first_break(run_state& r) {
    if (r.explicits.limiting.empty()) return;
    xbe_find_nextbreak(r);
    check_tnext1_x(r);
    check_tnext2_x(r);
}

void end_at(run_state& r) {
    solve_state& now = r.slv.now;
    if (r.flags.t_end <= now.time_x + now.delta_t_x)
        now.delta_t_x = std::max(r.slv.method.delt_min_x, (r.flags.t_end - now.time_x) + r.slv.method.time_epsilon_x);
}

void shorten_to_breaks(run_state& r) {
    if (r.explicits.limiting.empty()) return;
    check_tnext1_x(r);
    check_tnext2_x(r);
}

bool has_ended(const run_state& r) { return r.flags.t_end <= r.slv.now.time_x + r.slv.method.time_epsilon_x; }

// A step that is too long for a fast state doubles and redoubles it until it is no number any more; no rows are written
// of such a point.
void check_finite(const run_state& r, const explicit_rule& rule) {
    double sum = 0.0;  // 0 times a finite number is 0
    for (const double* x : r.explicits.state) sum += 0.0 * *x;
    if (sum == 0.0) return;
    const xbeu_class& x = r.c.xbeu;
    int i = 0;
    while (i + 1 < static_cast<int>(x.val_vr.size()) && std::isfinite(x.val_vr[at(i)])) ++i;
    const name_table& names = r.c.cct.xct;
    const int k = i < static_cast<int>(names.eu_to.size()) ? names.eu_to[at(i)] : -1;
    halt({line("solve_trns_x_", rule.name, ": NaN found!"), line("  time=", r.slv.now.time_x + r.slv.now.delta_t_x),
          line("  Check variable ", k >= 0 ? names.name[at(k)] : "(internal)", ", and whether the step is too long."),
          "  Halting..."});
}

// One pass of a rule of fixed steps. True: the end is reached.
bool fixed_pass(run_state& r, const explicit_rule& rule, bool first_is_known) {
    solve_state& now = r.slv.now;
    const double t = now.time_x + now.delta_t_x;
    keep_old_states(r.explicits);
    take_stages(r, rule, now.delta_t_x, first_is_known);
    settle_step(r, rule, now.delta_t_x, t);
    check_finite(r, rule);
    now.time_x = t;
    write_trns_x(r);
    if (has_ended(r)) {
        say(line("solve_trns_x_", rule.name, " ends"));
        return true;
    }
    now.delta_t_x = std::max(r.slv.method.delt_min_x, r.slv.method.delt_const_x);
    shorten_to_breaks(r);
    end_at(r);
    if (!r.explicits.keeping.empty()) xbe_save_history(r);
    return false;
}

// The next step of an adaptive rule.
void choose_step(run_state& r, const explicit_rule& rule, double norm) {
    solve_state& now = r.slv.now;
    const method_settings& m = r.slv.method;
    const double s = rule.safety * std::pow(m.*rule.tolerance / norm, rule.power);
    const double least = m.*rule.smallest_factor, most = m.*rule.largest_factor;
    now.delta_t_x *= s < least ? least : s >= most ? most : s;
    now.delta_t_x = std::min(now.delta_t_x, m.delt_max_x);
    if (now.delta_t_x < m.delt_min_x)
        now.delta_t_x = m.delt_min_x;
    else if (now.delta_t_x > m.delt_min_x)
        shorten_to_breaks(r);
    end_at(r);
    if (!r.explicits.keeping.empty()) xbe_save_history(r);
}

struct counts {
    int accept = 0, reject = 0;
};

[[noreturn]] void tolerance_not_met(const run_state& r, const explicit_rule& rule, double norm) {
    halt({line("solve_trns_x_", rule.name, ":"), "  tolerance not met even with", "  the smallest time step.",
          line("  ", rule.name, "_norm2=", norm, ",  ", rule.name, "_tolr=", r.slv.method.*rule.tolerance),
          line("  delta_t_x=", r.slv.now.delta_t_x, ",  delt_min_x=", r.slv.method.delt_min_x), "  Halting..."});
}

// One pass of an adaptive rule: a step that is accepted, or tried in vain. Gives whether the end is reached.
bool adaptive_pass(run_state& r, const explicit_rule& rule, counts& n, bool first_is_known) {
    solve_state& now = r.slv.now;
    explicit_class& e = r.explicits;
    take_stages(r, rule, now.delta_t_x, first_is_known);
    const double norm = norm_of_step(e, rule, now.delta_t_x);
    if (!(norm <= r.slv.method.*rule.tolerance)) {
        if (now.delta_t_x == r.slv.method.delt_min_x) tolerance_not_met(r, rule, norm);
        ++n.reject;
        // Histories are taken once more, of the point that stands.
        if (!e.keeping.empty()) {
            restore_old_states(e);
            evaluate_explicit(r, now.time_x);
        }
    } else {
        const double t = now.time_x + now.delta_t_x;
        ++n.accept;
        settle_step(r, rule, now.delta_t_x, t);
        now.time_x = t;
        keep_old_states(e);
        write_trns_x(r);
        if (has_ended(r)) {
            say(line("solve_trns_x_", rule.name, ": ", rule.name, "_n_accept=", n.accept));
            say(line("solve_trns_x_", rule.name, ": ", rule.name, "_n_reject=", n.reject));
            return true;
        }
    }
    choose_step(r, rule, norm);
    return false;
}

void begin_pass(run_state& r) {
    solve_state& now = r.slv.now;
    heed_signals();
    r.flags.iter_trns = r.flags.iter_trns_x = now.iter_trns;
    if (r.c.cct.flag_setrparm) set_rparm_2(r);
    if (r.c.cct.flag_getrparm) get_rparm_2(r);
    write_iter_x(r.slv);
    if (!r.explicits.modulo.empty()) xbce_modulo(r);
}
}  // namespace

void init_sol_x(run_state& r) {
    if (r.slv.task.init_previous) {
        if (!r.slv.flag_prev_solution_exists)
            halt({"init_sol: previous solution does not exist?", "   check initial_sol statement. Halting..."});
        return;
    }
    guess_explicit(r);
    if (r.slv.task.init_file) read_solution(r.slv, r.c, r.flags);
}

void guess_explicit(run_state& r) {
    if (!r.slv.task.init_file) set_ig_x(r.slv, r.c);
    init_guess_explicit(r);
}

void solve_trns_x(run_state& r) {
    solve_class& slv = r.slv;
    say("solve_trns_x starts...");
    r.flags.init_flags();
    const explicit_rule& rule = *rule_of(slv.method);
    prepare_explicit(r);
    slv.now.time_x = r.flags.t_start;
    slv.now.delta_t_x = slv.method.delt_const_x;
    slv.now.iter_trns_1 = r.flags.iter_trns_1 = r.flags.iter_trns_x = -1;
    evaluate_explicit(r, slv.now.time_x);
    keep_old_states(r.explicits);
    write_trns_x(r);
    find_first_break(r);
    const bool moves = moves_between_steps(r);
    // A try in vain leaves the slopes of its last stage behind, so those of the first are found anew.
    bool known = !moves;
    counts n;
    if (slv.method.itmax_trns > 0) check_rparm_sources(r.c);
    for (slv.now.iter_trns = 0; slv.now.iter_trns < slv.method.itmax_trns; ++slv.now.iter_trns) {
        begin_pass(r);
        const int n_reject = n.reject;
        const bool ends = rule.adaptive ? adaptive_pass(r, rule, n, known) : fixed_pass(r, rule, known);
        known = !moves && n.reject == n_reject;
        if (!ends) continue;
        r.flags.init_flags();
        say("solve_trns_x ends");
        return;
    }
    say(line("solve_trns_x_", rule.name, ":"));
    say("  warning: time_end not reached");
    say("  in transient simulation.");
    say("  Increase itmax_trns in the method card.");
    r.flags.init_flags();
    say("solve_trns_x ends");
}

void start_explicit_side(run_state& r) {
    solve_state& now = r.slv.now;
    prepare_explicit(r);
    now.time_x = r.flags.t_start;
    now.time_next_x = r.flags.t_start + r.slv.method.delt_const_x;
    now.iter_trns_x = r.flags.iter_trns_x = -1;
    assign_xbeu_gvr(r);
    evaluate_explicit(r, now.time_x);
    assign_xvr(r);
}

bool solve_trns_x_onestep(run_state& r) {
    solve_class& slv = r.slv;
    solve_state& now = slv.now;
    r.flags.iter_trns_x = ++now.iter_trns_x;
    if (!(now.time_next_x - slv.method.time_epsilon <= now.time_present + now.delt)) return false;
    say(line("solve_trns: slv->time_next_x = ", now.time_next_x));
    assign_xbeu_gvr(r);
    explicit_class& e = r.explicits;
    if (!e.modulo.empty()) xbce_modulo(r);
    const explicit_rule& rule = *rule_of(slv.method);
    keep_old_states(e);
    take_stages(r, rule, slv.method.delt_const_x, false);
    settle_step(r, rule, slv.method.delt_const_x, now.time_next_x);
    if (!e.keeping.empty()) xbe_save_history(r);
    assign_xvr(r);
    now.time_x = now.time_next_x;
    now.time_next_x += slv.method.delt_const_x;
    return true;
}
