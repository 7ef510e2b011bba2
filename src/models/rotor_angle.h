// rotor_angle.h -- what commutates a machine by the angle of its rotor. Angles in degrees.
#pragma once
#include <cmath>

constexpr double degrees_of_rad = 57.29577951308232;

// From 0 up to, not with, the pitch.
inline double folded(double angle, double pitch) {
    const double a = angle - pitch * std::floor(angle / pitch);
    return a < pitch ? a : 0.0;
}

// The back-emf of a phase of a brushless machine with concentrated windings, from -1 to 1: rises through 0 at 0, flat
// from 30 to 150 and from 210 to 330, straight between. slope: by degrees.
inline double trapezoid(double angle, double& slope) {
    const double a = folded(angle + 90.0, 360.0);  // 0: in the middle of the lower side
    const double x = std::fabs(a - 180.0);         // a triangle: 180 there, 0 in the middle of the upper side
    slope = 0.0;
    if (x <= 60.0) return 1.0;
    if (x >= 120.0) return -1.0;
    slope = a < 180.0 ? 1.0 / 30.0 : -1.0 / 30.0;
    return (90.0 - x) / 30.0;
}

// The upper switch of a phase conducts along the upper flat part of its back-emf, the lower one along the lower part.
inline bool six_step_upper(double angle) { return folded(angle - 30.0, 360.0) < 120.0; }
inline bool six_step_lower(double angle) { return six_step_upper(angle - 180.0); }

// Whether the angle lies in a window, on counted and off not, that comes again each pitch.
inline bool in_window(double angle, double on, double off, double pitch) {
    return folded(angle - on, pitch) < off - on;
}
