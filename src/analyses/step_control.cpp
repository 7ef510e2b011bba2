#include "analyses/step_control.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "analyses/evaluate.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

bool has(const std::vector<int>& flag, const unit_core& unit, int u) { return flag[at(unit.i_lib[at(u)])] != 0; }

// Electrical units, then blocks: f(units, template flags, their answers so far, query of a unit).
template <class F>
void for_limiting_families(run_state& r, F f) {
    const auto asked = [&r](auto& units, auto get) {
        return [&r, &units, get](int u) {
            r.flags.break_jumps = 0;
            get(r, u);
            units.time_nextbreak[at(u)] = r.flags.time_nextbreak;
            units.break_jumps[at(u)] = static_cast<char>(r.flags.break_jumps);
        };
    };
    f(r.c.ebeu.unit, r.c.lib.ebes.flag, r.c.ebeu, asked(r.c.ebeu, get_ebe));
    f(r.c.gbeu.unit, r.c.lib.gbes.flag, r.c.gbeu, asked(r.c.gbeu, get_gbe));
}
}  // namespace

void find_nextbreak(run_state& r) {
    ebce_form_arrays(r);
    gbce_form_arrays(r);
    r.flags.nexttime = 1;
    for_limiting_families(r, [&r](const unit_core& unit, const entry_flags& flag, auto& units, auto ask) {
        std::fill(units.time_nextbreak.begin(), units.time_nextbreak.end(), r.flags.t_end);
        std::fill(units.break_jumps.begin(), units.break_jumps.end(), char{0});
        for (int u = 0; u < unit.n; ++u) {
            if (!has(flag.limit_tstep, unit, u)) continue;
            r.flags.time_nextbreak = units.time_nextbreak[at(u)];
            ask(u);
        }
    });
    r.flags.nexttime = 0;
}

void check_tnext1(run_state& r, double passed) {
    const double t_lim = r.slv.now.time_present + r.slv.now.delt;
    r.flags.time_given = r.slv.now.time_present;
    ebce_form_arrays(r);
    gbce_form_arrays(r);
    r.flags.nexttime = 1;
    for_limiting_families(r, [&](const unit_core& unit, const entry_flags& flag, auto& units, auto ask) {
        for (int u = 0; u < unit.n; ++u) {
            // A unit without limit_tstep would not be heard.
            if (!has(flag.limit_tstep, unit, u)) continue;
            if (!has(flag.save_history, unit, u) && units.time_nextbreak[at(u)] - r.slv.now.time_present > passed)
                continue;
            if (t_lim < units.time_nextbreak[at(u)] && !has(flag.save_history, unit, u)) continue;
            r.flags.time_nextbreak = r.flags.t_end;
            ask(u);
        }
    });
    r.flags.nexttime = 0;
}

void check_tnext2(run_state& r) {
    solve_class& slv = r.slv;
    if (slv.now.delt == slv.method.delt_min) return;
    double t_lim = slv.now.time_present + slv.now.delt;
    for_limiting_families(r, [&](const unit_core& unit, const entry_flags& flag, const auto& units, auto) {
        for (int u = 0; u < unit.n; ++u) {
            const double t = units.time_nextbreak[at(u)];
            if (!has(flag.limit_tstep, unit, u) || t_lim < t) continue;
            if (t - slv.now.time_present >= slv.method.delt_min - 1e-15) t_lim = t;
        }
    });
    slv.now.delt = t_lim - slv.now.time_present;
}

double shorten_to_breaks(run_state& r, double smallest) {
    solve_class& slv = r.slv;
    double t_jump = std::numeric_limits<double>::infinity();
    for_limiting_families(r, [&](const unit_core& unit, const entry_flags& flag, const auto& units, auto) {
        for (int u = 0; u < unit.n; ++u) {
            const double ahead = units.time_nextbreak[at(u)] - slv.now.time_present;
            if (!has(flag.limit_tstep, unit, u) || !(ahead > 0.01 * smallest)) continue;
            const bool jumps = units.break_jumps[at(u)] != 0;
            if (jumps) t_jump = std::min(t_jump, units.time_nextbreak[at(u)]);
            slv.now.delt =
                std::min(slv.now.delt, jumps && ahead > 2 * smallest ? ahead - smallest : std::max(ahead, smallest));
        }
    });
    return t_jump;
}

double trbdf2_constant(double g) { return (4 * g - 3 * g * g - 2) / (12 * (2 - g)); }

bool trzbdf2_1(run_state& r) {
    solve_class& slv = r.slv;
    const double g = slv.method.trbdf2_gamma;
    double sum = 0.0;
    auto add = [&](double d0, double d1, double d2) {
        const double e = (1 / g) * d2 - (1 / g) * (1 / (1 - g)) * d1 + (1 / (1 - g)) * d0;
        sum += e * e;
    };
    const kcl_derivatives& k = r.mat.kcl_ddt;
    for (int d = 0; d < k.n(); ++d)
        if (k.row[at(d)] >= 0)
            add(k.total[at(d)] - k.still[at(d)], k.total_1[at(d)] - k.still_1[at(d)],
                k.total_2[at(d)] - k.still_2[at(d)]);
    const state_rows& s = r.mat.state;
    for (int i = 0; i < s.n(); ++i) add(s.f_now[at(i)], s.f_1[at(i)], s.f_2[at(i)]);
    const double norm = std::sqrt(sum);
    const double ratio = norm * (2 * std::fabs(trbdf2_constant(g)) * slv.now.delt) / slv.method.trbdf2_tolr;
    const double h_est = slv.now.delt * std::pow(ratio, -0.333333333);
    if (!(ratio < 2.0)) {  // a ratio that is no number tells nothing of the step
        slv.now.delt_new = 0.9 * h_est;
        return false;
    }
    slv.now.delt_new = std::min(0.9 * h_est, 2 * slv.now.delt);
    return true;
}
