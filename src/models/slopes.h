// slopes.h -- a number with its slopes in three variables, for formulas too long to differentiate by hand.
#pragma once
#include <cmath>

struct slopes {
    double x, d[3];
};
// The value x whose slopes are those of a, k-fold.
inline slopes chained(double x, double k, const slopes& a) { return {x, {k * a.d[0], k * a.d[1], k * a.d[2]}}; }
inline slopes operator*(double k, const slopes& a) { return chained(k * a.x, k, a); }
inline slopes operator+(const slopes& a, double b) { return chained(a.x + b, 1, a); }
inline slopes operator-(const slopes& a) { return chained(-a.x, -1, a); }
inline slopes operator+(const slopes& a, const slopes& b) {
    return {a.x + b.x, {a.d[0] + b.d[0], a.d[1] + b.d[1], a.d[2] + b.d[2]}};
}
inline slopes operator-(const slopes& a, const slopes& b) {
    return {a.x - b.x, {a.d[0] - b.d[0], a.d[1] - b.d[1], a.d[2] - b.d[2]}};
}
inline slopes operator*(const slopes& a, const slopes& b) {
    return {a.x * b.x, {a.d[0] * b.x + a.x * b.d[0], a.d[1] * b.x + a.x * b.d[1], a.d[2] * b.x + a.x * b.d[2]}};
}
inline slopes inverse(const slopes& a) {
    const double r = 1 / a.x;
    return chained(r, -r * r, a);
}
inline slopes operator/(const slopes& a, const slopes& b) { return a * inverse(b); }
inline slopes sqrt(const slopes& a) {
    const double r = std::sqrt(a.x);
    return chained(r, 0.5 / r, a);
}
