// frames.h -- three phases, the stationary frame, and frames that turn.
#pragma once
#include <cmath>

struct phases {
    double a, b, c;
};

// ---- the stationary frame ----

// Amplitudes stay (Clarke 1943): alpha = (2 a - b - c)/3, beta = (b - c)/sqrt 3. Phases A cos(th), A cos(th - 2 pi/3),
// A cos(th + 2 pi/3) give A cos(th), A sin(th).
struct stationary {
    double alpha, beta;
};
constexpr double one_by_root_3 = 0.5773502691896258, half_root_3 = 0.8660254037844386;
inline stationary to_stationary(const phases& x) {
    return {(2.0 * x.a - x.b - x.c) / 3.0, (x.b - x.c) * one_by_root_3};
}
// Phases without zero component.
inline phases to_phases(const stationary& x) {
    return {x.alpha, -0.5 * x.alpha + half_root_3 * x.beta, -0.5 * x.alpha - half_root_3 * x.beta};
}

// ---- turning frames ----

// Phases a, b, c seen from an axis at the electrical angle th, rad; amplitudes stay (Park 1929).
struct frame {
    double cos_a, cos_b, cos_c, sin_a, sin_b, sin_c;  // of th, th - 2 pi/3, th + 2 pi/3
};
inline frame frame_at(double th) {
    constexpr double third = 2.0943951023931953;  // 2 pi/3
    return {std::cos(th), std::cos(th - third), std::cos(th + third),
            std::sin(th), std::sin(th - third), std::sin(th + third)};
}

// Of a frame that turns by itself, rad: at the frequency f_hz, and phi degrees at the time t0.
inline double turning_angle(double f_hz, double t0, double phi, double time) {
    return 6.283185307179586 * f_hz * (time - t0) + phi * 0.017453292519943295;
}

// What a phase has of d and q, from the cosine and sine of its angle to the axis.
inline double phase_value(double d, double q, double cos_x, double sin_x) { return d * cos_x - q * sin_x; }

// What the frame sees: 2/3 of the sums of phase times cosine and phase times sine. The direct component is sum_cos, the
// quadrature component -sum_sin; by the angle they change with -sum_sin and -sum_cos.
struct seen {
    double sum_cos, sum_sin;
};
inline seen seen_from(const frame& at, const phases& x) {
    const double r = 2.0 / 3.0;
    return {r * (x.a * at.cos_a + x.b * at.cos_b + x.c * at.cos_c),
            r * (x.a * at.sin_a + x.b * at.sin_b + x.c * at.sin_c)};
}
// The same of the stationary frame, with the cosine and sine of the angle: d and q.
struct turning {
    double d, q;
};
inline turning turned(const stationary& x, double cos_th, double sin_th) {
    return {x.alpha * cos_th + x.beta * sin_th, x.beta * cos_th - x.alpha * sin_th};
}
// d and q of three phases from the cosine and the sine of the angle, with their slopes by a, b, c, cosine and sine.
struct dq_of_phases {
    double d, q, by_d[5], by_q[5];
};
inline dq_of_phases seen_with(const phases& x, double co, double si) {
    const stationary s = to_stationary(x);
    const turning t = turned(s, co, si);
    const double co_3 = co / 3.0, si_3 = si / 3.0, co_r = co * one_by_root_3, si_r = si * one_by_root_3;
    return {t.d,
            t.q,
            {2.0 * co_3, si_r - co_3, -si_r - co_3, s.alpha, s.beta},
            {-2.0 * si_3, co_r + si_3, si_3 - co_r, s.beta, -s.alpha}};
}
inline stationary turned_back(const turning& x, double cos_th, double sin_th) {
    return {x.d * cos_th - x.q * sin_th, x.d * sin_th + x.q * cos_th};
}
