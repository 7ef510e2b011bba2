#include "models/digital_clocks.h"

#include <cmath>
#include <cstdint>

namespace {
bool refused_or_ended(const source_form& form, const digital_unit& u) {
    if (u.flags->dc) digital_stop(form.no_dc, "  Halting...");
    if (u.flags->schedule) digital_stop(form.no_schedule);
    return !(u.flags->startup || u.flags->init_guess || u.flags->process);
}

// dstate stays as it is: a clock counts nothing.
void arm_at(const digital_unit& u, double t) {
    u.stbl = 0;
    u.t_next = t;
}
}  // namespace

void run_clock(const source_form& form, const clock_phases& phases, double& period, const digital_unit& u) {
    if (refused_or_ended(form, u)) return;
    const double now = u.flags->time_given;
    if (u.flags->process) {
        // The level tells the phase, also in a run that begins from a solution file, which has levels alone.
        const bool was_first = (u.val_out[0] == 1) == phases.polarity;
        u.put(0, u.val_out[0] != 1);
        arm_at(u, now + (was_first ? phases.second : phases.first));
        u.lparm[0] = !was_first;
        return;
    }
    period = phases.first + phases.second;
    const double m = std::fmod(now - phases.origin, period);  // below 0 before the origin, and so in the first phase
    u.lparm[0] = m <= phases.first;
    u.put(0, (u.lparm[0] == 1) == phases.polarity);
    arm_at(u, now + (u.lparm[0] ? phases.first : period) - m);
}

// splitmix64 (Steele, Lea and Flood 2014), at place n of the sequence that the seed begins.
double random_share(unsigned seed, unsigned n) {
    std::uint64_t z = (static_cast<std::uint64_t>(seed) << 32 | n) + 0x9e3779b97f4a7c15u;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    z ^= z >> 31;
    return static_cast<double>(z >> 11) * 0x1p-53;
}

void run_random_clock(const source_form& form, const clock_phases& phases, unsigned seed, const digital_unit& u) {
    if (refused_or_ended(form, u)) return;
    if (u.flags->process) {
        u.put(0, u.val_out[0] != 1);
        u.lparm[0] = !u.lparm[0];
    } else {
        u.put(0, phases.polarity);
        u.lparm[0] = 1;
        u.lparm[1] = 0;
    }
    const double share = random_share(seed, static_cast<unsigned>(u.lparm[1]++));
    arm_at(u, u.flags->time_given + share * (u.lparm[0] ? phases.first : phases.second));
}

void run_edges(const source_form& form, bool first, int n, const double* t, const digital_unit& u) {
    if (refused_or_ended(form, u)) return;
    if (u.flags->process) {
        ++u.dstate;
    } else {
        u.dstate = 0;
        while (u.dstate < n && t[u.dstate] < u.flags->time_given) ++u.dstate;
    }
    u.put(0, (u.dstate % 2 != 0) != first);
    if (u.dstate < n)
        arm_at(u, t[u.dstate]);
    else
        u.stbl = 1;
}
