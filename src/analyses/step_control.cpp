#include "analyses/step_control.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "analyses/evaluate.h"
#include "base/at.h"

namespace {
// Units that limit the step; others would not be heard: each(family, unit).
template <class F>
void for_limiting_units(run_state& r, F each) {
    for_families(r, [&](auto& f) {
        for (int u = 0; u < f.n(); ++u)
            if (f.has(&entry_flags::limit_tstep, u)) each(f, u);
    });
}

// answer: what stands if the model gives none.
template <class Rows>
void ask(run_state& r, const unit_family<Rows>& f, int u, double answer) {
    r.flags.time_nextbreak = answer;
    r.flags.break_jumps = 0;
    get_unit(r, f, u);
    f.units.time_nextbreak[at(u)] = r.flags.time_nextbreak;
    f.units.break_jumps[at(u)] = static_cast<char>(r.flags.break_jumps);
}
}  // namespace

void find_nextbreak(run_state& r) {
    form_arrays(r);
    const raised on(r.flags.nexttime);
    for_families(r, [&r](auto& f) {
        std::fill(f.units.time_nextbreak.begin(), f.units.time_nextbreak.end(), r.flags.t_end);
        std::fill(f.units.break_jumps.begin(), f.units.break_jumps.end(), char{0});
    });
    for_limiting_units(r, [&r](auto& f, int u) { ask(r, f, u, r.flags.t_end); });
}

void find_nextbreak_of(run_state& r, int fam, int instance) {
    const std::vector<int>& first = r.c.instances(fam).first_unit;
    r.flags.time_given = r.slv.now.time_present;
    form_arrays(r);
    const raised on(r.flags.nexttime);
    for_families(r, [&](auto& f) {
        if (f.elements != fam) return;
        for (int u = first[at(instance)]; u < first[at(instance) + 1]; ++u)
            if (f.has(&entry_flags::limit_tstep, u)) ask(r, f, u, r.flags.t_end);
    });
}

void check_tnext1(run_state& r, double passed) {
    const double t_lim = r.slv.now.time_present + r.slv.now.delt;
    r.flags.time_given = r.slv.now.time_present;
    form_arrays(r);
    const raised on(r.flags.nexttime);
    for_limiting_units(r, [&](auto& f, int u) {
        const double t = f.units.time_nextbreak[at(u)];
        const bool stays = t - r.slv.now.time_present > passed || t_lim < t;
        if (stays && !f.has(&entry_flags::save_history, u)) return;
        ask(r, f, u, r.flags.t_end);
        // No step ends at a break as near as this, and the one behind it must not be passed over.
        const double near = f.units.time_nextbreak[at(u)];
        if (near - r.slv.now.time_present > std::min(passed, r.slv.method.delt_min - 1e-15)) return;
        r.flags.time_given = near;
        ask(r, f, u, r.flags.t_end);
        r.flags.time_given = r.slv.now.time_present;
    });
}

void check_tnext2(run_state& r) {
    solve_class& slv = r.slv;
    if (slv.now.delt == slv.method.delt_min) return;
    double t_lim = slv.now.time_present + slv.now.delt;
    for_limiting_units(r, [&](const auto& f, int u) {
        const double t = f.units.time_nextbreak[at(u)];
        if (!(t_lim < t) && t - slv.now.time_present >= slv.method.delt_min - 1e-15) t_lim = t;
    });
    slv.now.delt = t_lim - slv.now.time_present;
}

double shorten_to_breaks(run_state& r, double smallest) {
    solve_class& slv = r.slv;
    double t_jump = std::numeric_limits<double>::infinity();
    for_limiting_units(r, [&](const auto& f, int u) {
        const double t = f.units.time_nextbreak[at(u)], ahead = t - slv.now.time_present;
        if (!(ahead > 0.01 * smallest)) return;
        const bool jumps = f.units.break_jumps[at(u)] != 0;
        if (jumps) t_jump = std::min(t_jump, t);
        slv.now.delt =
            std::min(slv.now.delt, jumps && ahead > 2 * smallest ? ahead - smallest : std::max(ahead, smallest));
    });
    return t_jump;
}
