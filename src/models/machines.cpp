#include "models/machines.h"

#include <cmath>
#include <numbers>

shape_value trapezoid(double th) {
    constexpr double turn = 2.0 * std::numbers::pi, ramp = 6.0 / std::numbers::pi;
    const double x = std::remainder(th, turn);  // -pi .. pi, and odd in it
    const double to_zero = std::fabs(x) > 0.5 * std::numbers::pi ? std::numbers::pi - std::fabs(x) : std::fabs(x);
    if (to_zero * ramp >= 1.0) return {x < 0.0 ? -1.0 : 1.0, 0.0};
    const double f = to_zero * ramp;
    return {x < 0.0 ? -f : f, std::fabs(x) > 0.5 * std::numbers::pi ? -ramp : ramp};
}

brushless_machine::flux_shape brushless_machine::shape_at(double th) const {
    constexpr double third = 2.0 * std::numbers::pi / 3.0;
    const double e = mech.pairs * th;
    return {trapezoid(e), trapezoid(e - third), trapezoid(e + third)};
}

void brushless_machine::slopes(const phases& v, double tl, const double* state, double* slope) const {
    const double ia = state[0], ib = state[1], wm = state[2], th = state[3];
    const flux_shape s = shape_at(th);
    const double k = lam * mech.pairs * wm, ea = k * s.a.f, eb = k * s.b.f, ec = k * s.c.f;
    // The currents add up to 0, so the neutral is the mean of what is left.
    const double vn = ((v.a - ea) + (v.b - eb) + (v.c - ec)) / 3.0;
    slope[0] = (v.a - vn - ea - rs * ia) / ls;
    slope[1] = (v.b - vn - eb - rs * ib) / ls;
    slope[2] = mech.slope(torque(s, ia, ib), tl, wm);
    slope[3] = wm;
}

induction_machine::currents induction_machine::currents_of(const fluxes& f) const {
    const double by_det = 1.0 / determinant(), ls = lls + lm, lr = llr + lm;
    return {(lr * f.ds - lm * f.dr) * by_det, (lr * f.qs - lm * f.qr) * by_det, (ls * f.dr - lm * f.ds) * by_det,
            (ls * f.qr - lm * f.qs) * by_det};
}

void induction_machine::slopes(double vd, double vq, double w, double tl, const double* state, double* slope) const {
    const fluxes f = {state[0], state[1], state[2], state[3]};
    const double wm = state[4], w_slip = w - mech.pairs * wm;
    const currents i = currents_of(f);
    slope[0] = vd - rs * i.ds + w * f.qs;
    slope[1] = vq - rs * i.qs - w * f.ds;
    slope[2] = -rr * i.dr + w_slip * f.qr;
    slope[3] = -rr * i.qr - w_slip * f.dr;
    slope[4] = mech.slope(torque(f, i), tl, wm);
    slope[5] = wm;
}
