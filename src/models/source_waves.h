// source_waves.h -- waves of sources that have no corners to stop at.
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
