// numeric.h -- numeric helpers that models and solvers share.
#pragma once
#include <cmath>
#include <vector>

// ---- comparison and limits; each returns 1 or 0
int compare_double_gt(double a, double b);
int compare_double_ge(double a, double b);
int compare_double_lt(double a, double b);
int compare_double_le(double a, double b);
int compare_double_eq(double a, double b);
int compare_double_eq_1(double a, double b, double tolerance);  // |a - b| <= tolerance

// The same on ints, and logic on flags.
inline int compare_int_gt(int a, int b) { return a > b; }
inline int compare_int_ge(int a, int b) { return a >= b; }
inline int compare_int_lt(int a, int b) { return a < b; }
inline int compare_int_le(int a, int b) { return a <= b; }
inline int compare_int_eq(int a, int b) { return a == b; }
inline int not_2(int a) { return a == 0; }
inline int and_2a(int a, int b) { return a != 0 && b != 0; }
inline int or_2a(int a, int b) { return a != 0 || b != 0; }
inline int xor_2a(int a, int b) { return (a != 0) != (b != 0); }

int round_1(double x);                                                   // half away from zero
double power_int(double x, int n);                                       // by multiplication; n below 0 halts
void limit_x(double x, double low, double high, double& y, double& dy);  // dy is 1 inside the limits, both included
double limit_x_1(double x, double low, double high);
void min_x(double x, double b, double& y, double& dy);  // dy 1 if y is x; b wins a tie
void max_x(double x, double b, double& y, double& dy);

// ---- exponentials that go on as a straight line beyond a cap

// Value y and slope dy of exp(x/vt); beyond cap * vt the tangent (exp_cap_1) or the chord through the origin
// (exp_cap_5). The forms with n_limit add 1 to it on the line.
inline void exp_cap_1a(double x, double& y, double& dy, double vt, double cap, int& n_limit) {
    if (x <= cap * vt) {
        y = std::exp(x / vt);
        dy = y / vt;
        return;
    }
    const double e = std::exp(cap);
    dy = e / vt;
    y = e + dy * (x - cap * vt);
    ++n_limit;
}
inline void exp_cap_1(double x, double& y, double& dy, double vt, double cap) {
    int n_limit = 0;
    exp_cap_1a(x, y, dy, vt, cap, n_limit);
}
void exp_cap_4(double a, double x, double& y, double& dy, double cap);  // of exp(a x), cap on a x
void exp_cap_5(double x, double& y, double& dy, double vt, double cap);
void exp_cap_5a(double x, double& y, double& dy, double vt, double cap, int& n_limit);
double exp_lmt(double x, double cap);
inline void exp_lmt_1(double x, double& y, double& dy, double cap) {
    if (x <= cap) {
        y = dy = std::exp(x);
        return;
    }
    dy = std::exp(cap);
    y = (x - cap) * dy + dy;
}

void tanh_1(double x, double& y, double& dy);                       // without overflow
void tanh_2(double x, double x0, double k, double& y, double& dy);  // smooth step from 0 to 1 at x0

// ---- grids
std::vector<double> divide_linear(double x0, double x1, int n_div);  // n_div + 1 points
std::vector<double> divide_log(double x0, double x1, int n_div);
double interp_linear(double a, double b, int i, int n);  // point i of n, the ends exact
double interp_log(double a, double b, int i, int n);
void interp_linear_1(double x, double x1, double x2, double y1, double y2, double& y);

// ---- norms
void norm_2_avg(int n, const double* v, double& r);  // root of the mean of squares, summed left to right; 0 for n = 0
void norm_inf(int n, const double* v, double& r);
double norm_abs_diff_double(int n, const double* a, const double* b);  // largest |a - b|
int norm_abs_diff_int(int n, const int* a, const int* b);
void diff_double_1(int n, const double* a, const double* b, double* c);  // c = a - b

// ---- sweep grids; the last index varies fastest
int indx_to_ijk_nttl(int k, const int* m);
void indx_to_ijk(int k, const int* m, int i, int* ijk);
void ijk_to_indx(int k, const int* m, int& i, const int* ijk);
// For a grid point whose last index is 0, the point that its solution starts from: the highest-numbered index that is
// above 0 goes down by one and those behind it to 0. Every other point starts from the one before it; point 0: -1.
std::vector<int> ijk_init_vec(int k, const int* m);

double rand_DoubleRange(double a, double b);
void check_array_for_nan_1(int n, const double* v, const char* message);  // halts
bool check_array_for_nan_2(int n, const double* v);
