// scientific.h -- the commonest number form of row files, written fast.
#pragma once

inline constexpr int scientific_width = 13;

// The bytes of printf's "%13.6e" of x into `to`, for magnitudes from 1e-39 to 1e40 and zeros: always scientific_width
// of them. False, and nothing written, for other numbers and where the rounding is too close a call (ties, mostly).
bool put_scientific(double x, char* to);
