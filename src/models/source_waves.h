// source_waves.h -- waves of sources that have no corners to stop at, and constants that they derive.
#pragma once
#include <cmath>

// constant + a sin(w t + phi); t in s, w in rad/s, phi in rad.
inline double sine_wave(double constant, double a, double w, double phi, double t) {
    return constant + a * std::sin(w * t + phi);
}

// 0 until t_1, y from t_2 on, straight between; y at all times unless t_1 < t_2. Times in s.
inline double ramp_wave(double y, double t_1, double t_2, double t) {
    if (!(t_1 < t_2 && t < t_2)) return y;
    return t <= t_1 ? 0.0 : y * (t - t_1) / (t_2 - t_1);
}

// ---- constants of machines ----

// N*m at the synchronous speed of a machine with this number of poles; power in W.
inline double shaft_torque(double power, double f_hz, double poles) {
    return power / (6.283185307179586 * f_hz * 2.0 / poles);
}
// Base values of the per-unit system of a machine with three phases: 1 peak phase voltage, 2 peak current, 3 impedance,
// 4 flux linkage, 5 torque, 6 inductance. power in VA, v_rated effective between phases, V.
inline double base_value(int n_base, double power, double v_rated, double f_hz, double poles) {
    const double v = v_rated * std::sqrt(2.0 / 3.0), i = 2.0 / 3.0 * power / v, w = 6.283185307179586 * f_hz;
    switch (n_base) {
        case 1:
            return v;
        case 2:
            return i;
        case 3:
            return v / i;
        case 4:
            return v / w;
        case 5:
            return shaft_torque(power, f_hz, poles);
        default:
            return v / i / w;
    }
}
