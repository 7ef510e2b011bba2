#include "models/delayed_clock.h"

#include <algorithm>
#include <cmath>

#include "base/halt.h"

double delayed_clock::begin(double time) const {
    // The same expression for every time of a period, so that its slot is found by it.
    double k = std::floor((time - t0) / period());
    if (t0 + (k + 1) * period() - time < 1e-10) k += 1;
    return t0 + k * period();
}

edge_list delayed_clock::pulse(edge_store& s, double begins, double angle) const {
    return pulse_edges(s, low, high, begins + angle / 360.0 * period(), dt1, dt2, t1 - dt1, 0.0);
}

double delayed_clock::held_angle(double begins, double angle) const {
    const int k = held.find(unit, begins);
    return k < 0 ? angle : held.slots[static_cast<std::size_t>(k)].angle;
}

void delayed_clock::clear() const {
    for (delay_angles::slot& s : held.slots)
        if (s.unit == unit) s = {};
}

void delayed_clock::take(double angle, double time) const {
    const double now = begin(time);
    for (delay_angles::slot& s : held.slots) {
        if (s.unit != unit || s.period == now) continue;
        if (s.period > now || s.period + s.angle / 360.0 * period() + t1 + dt2 <= time) s = {};
    }
    if (held.find(unit, now) >= 0) return;
    const int k = held.free_slot();
    if (k < 0) halt({"clock_delay_2: empty location not found (1). Halting..."});
    held.slots[static_cast<std::size_t>(k)] = {unit, now, angle};
}

double delayed_clock::value(double angle, double time, double& slope) const {
    edge_store corners;
    const double now = begin(time);
    const edge_list own = pulse(corners, now, held_angle(now, angle));
    double y = edge_value(own, time);
    slope = held.find(unit, now) < 0 ? -edge_slope(own, time) * period() / 360.0 : 0.0;
    for (const delay_angles::slot& s : held.slots) {
        if (s.unit != unit || s.period >= now) continue;
        const double other = edge_value(pulse(corners, s.period, s.angle), time);
        if (std::fabs(other - low) <= std::fabs(y - low)) continue;
        y = other;
        slope = 0.0;
    }
    return y;
}

void delayed_clock::next_break(double angle, double time, double& nextbreak) const {
    edge_store corners;
    const double now = begin(time), eps = std::min(dt1, dt2) / 100.0;
    double next = std::min(now + period(), edge_next(pulse(corners, now, held_angle(now, angle)), time, eps));
    for (const delay_angles::slot& s : held.slots)
        if (s.unit == unit && s.period < now)
            next = std::min(next, edge_next(pulse(corners, s.period, s.angle), time, eps));
    if (next > time) nextbreak = next;
}
