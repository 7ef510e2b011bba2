#include "base/numeric.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "base/at.h"
#include "base/halt.h"

// ---- comparison and limits ----

int compare_double_gt(double a, double b) { return a > b; }
int compare_double_ge(double a, double b) { return a >= b; }
int compare_double_lt(double a, double b) { return a < b; }
int compare_double_le(double a, double b) { return a <= b; }
int compare_double_eq(double a, double b) { return a == b; }
int compare_double_eq_1(double a, double b, double tolerance) { return std::fabs(a - b) <= tolerance; }

// A value beyond the range of int becomes its nearest end, a NaN 0.
int round_1(double x) {
    constexpr double low = std::numeric_limits<int>::min(), high = std::numeric_limits<int>::max();
    if (std::isnan(x)) return 0;
    return static_cast<int>(std::clamp(x >= 0 ? x + 0.5 : x - 0.5, low, high));
}

double power_int(double x, int n) {
    if (n < 0) halt({line("power_int: n = ", n, " is not allowed. Halting...")});
    double y = 1;
    for (int i = 0; i < n; ++i) y *= x;
    return y;
}

void limit_x(double x, double low, double high, double& y, double& dy) {
    y = limit_x_1(x, low, high);
    dy = x > high || x < low ? 0.0 : 1.0;
}

double limit_x_1(double x, double low, double high) { return x > high ? high : x < low ? low : x; }

void min_x(double x, double b, double& y, double& dy) {
    y = x < b ? x : b;
    dy = x < b ? 1.0 : 0.0;
}

void max_x(double x, double b, double& y, double& dy) {
    y = x > b ? x : b;
    dy = x > b ? 1.0 : 0.0;
}

// ---- capped exponentials ----

void exp_cap_4(double a, double x, double& y, double& dy, double cap) {
    const double u = a * x;
    if (u <= cap) {
        y = std::exp(u);
        dy = a * y;
        return;
    }
    const double e = std::exp(cap);
    dy = a * e;
    y = e + (u - cap) * e;
}

void exp_cap_5(double x, double& y, double& dy, double vt, double cap) {
    int n_limit = 0;
    exp_cap_5a(x, y, dy, vt, cap, n_limit);
}

void exp_cap_5a(double x, double& y, double& dy, double vt, double cap, int& n_limit) {
    const double u = cap * vt;
    if (x <= u) {
        y = std::exp(x / vt);
        dy = y / vt;
        return;
    }
    dy = std::exp(cap) / u;
    y = dy * x;
    ++n_limit;
}

double exp_lmt(double x, double cap) {
    double y, dy;
    exp_lmt_1(x, y, dy, cap);
    return y;
}

// Beyond 150 the square of the exponential comes near the end of the range, while y is 1 to the last bit from 20 on.
void tanh_1(double x, double& y, double& dy) {
    if (std::fabs(x) > 150) {
        y = x > 0 ? 1.0 : -1.0;
        dy = 4 * std::exp(-2 * std::fabs(x));
        return;
    }
    const double e = std::exp(x >= 0 ? 2 * x : -2 * x);
    y = x >= 0 ? (e - 1) / (e + 1) : (1 - e) / (1 + e);
    dy = 4 * e / ((1 + e) * (1 + e));
}

void tanh_2(double x, double x0, double k, double& y, double& dy) {
    double t, dt;
    tanh_1((x - x0) * k, t, dt);
    y = 0.5 * (1 + t);
    dy = 0.5 * k * dt;
}

// ---- grids ----

std::vector<double> divide_linear(double x0, double x1, int n_div) {
    if (n_div < 1) halt({line("divide_linear: n_div=", n_div, " is not allowed.")});
    std::vector<double> out(at(n_div) + 1);
    for (int i = 0; i <= n_div; ++i) out[at(i)] = i == n_div ? x1 : x0 + i * (x1 - x0) / n_div;
    return out;
}

std::vector<double> divide_log(double x0, double x1, int n_div) {
    if (!(x0 > 0 && x1 > 0))
        halt({"divide_log: check x_start and x_end", line("divide_log: x_start=", x0), line("divide_log: x_end=", x1)});
    if (n_div < 1) halt({line("divide_log: n_div=", n_div, " is not allowed.")});
    std::vector<double> out(at(n_div) + 1);
    const double a = std::log(x0), b = std::log(x1);
    for (int i = 0; i <= n_div; ++i) out[at(i)] = i == 0 ? x0 : i == n_div ? x1 : std::exp(a + i * (b - a) / n_div);
    return out;
}

double interp_linear(double a, double b, int i, int n) {
    if (i == 0) return a;
    if (i == n - 1) return b;
    return a + i * (b - a) / (n - 1);
}

double interp_log(double a, double b, int i, int n) {
    if (!(a > 0 && b > 0))
        halt({"interp_log: check x_start and x_end", line("interp_log: x_start=", a), line("interp_log: x_end=", b)});
    if (i == 0) return a;
    if (i == n - 1) return b;
    return std::exp(interp_linear(std::log(a), std::log(b), i, n));
}

void interp_linear_1(double x, double x1, double x2, double y1, double y2, double& y) {
    if (std::fabs(x1 - x2) < 1e-15) halt({line("interp_linear_1: x1 = ", x1, ", x2 = ", x2)});
    y = y1 + (x - x1) * (y2 - y1) / (x2 - x1);
}

// ---- norms ----

void norm_2_avg(int n, const double* v, double& r) {
    double sum = 0;
    for (int i = 0; i < n; ++i) sum += v[i] * v[i];
    r = n > 0 ? std::sqrt(sum / n) : 0.0;
}

namespace {
// The larger of a norm and a magnitude; NaN, once met, stays.
double larger(double norm, double magnitude) { return magnitude > norm || std::isnan(magnitude) ? magnitude : norm; }
}  // namespace

void norm_inf(int n, const double* v, double& r) {
    r = 0;
    for (int i = 0; i < n; ++i) r = larger(r, std::fabs(v[i]));
}

double norm_abs_diff_double(int n, const double* a, const double* b) {
    double r = 0;
    for (int i = 0; i < n; ++i) r = larger(r, std::fabs(a[i] - b[i]));
    return r;
}

int norm_abs_diff_int(int n, const int* a, const int* b) {
    int r = 0;
    for (int i = 0; i < n; ++i) r = std::max(r, std::abs(a[i] - b[i]));
    return r;
}

void diff_double_1(int n, const double* a, const double* b, double* c) {
    for (int i = 0; i < n; ++i) c[i] = a[i] - b[i];
}

// ---- sweep grids ----

int indx_to_ijk_nttl(int k, const int* m) {
    if (k <= 0) halt({line("indx_to_ijk_nttl: k = ", k, " is not allowed. Halting...")});
    long long total = 1;
    for (int i = 0; i < k; ++i) {
        total *= std::max(m[i], 0);
        if (total > std::numeric_limits<int>::max())
            halt({line("indx_to_ijk_nttl: too many grid points, i=", i, ", m[i]=", m[i], ". Halting...")});
    }
    return static_cast<int>(total);
}

void indx_to_ijk(int k, const int* m, int i, int* ijk) {
    if (k <= 0) halt({line("indx_to_ijk: k = ", k, " is not allowed. Halting...")});
    for (int d = k - 1; d >= 0; --d) {
        if (m[d] < 1) halt({line("indx_to_ijk: m[", d, "] = ", m[d], " is not allowed. Halting...")});
        ijk[d] = i % m[d];
        i /= m[d];
    }
}

void ijk_to_indx(int k, const int* m, int& i, const int* ijk) {
    if (k <= 0) halt({line("ijk_to_indx: k = ", k, " is not allowed. Halting...")});
    int flat = 0;
    for (int d = 0; d < k; ++d) {
        if (ijk[d] < 0 || ijk[d] >= m[d])
            halt({line("ijk_to_indx: i=", d), line("  i_in[i]=", ijk[d]), line("  m[i]=", m[d])});
        flat = flat * m[d] + ijk[d];
    }
    i = flat;
}

std::vector<int> ijk_init_vec(int k, const int* m) {
    const int n = indx_to_ijk_nttl(k, m);
    std::vector<int> parent(at(n));
    std::vector<int> ijk(at(k), 0);
    for (int i = 0; i < n; ++i) {
        indx_to_ijk(k, m, i, ijk.data());
        parent[at(i)] = i - 1;
        if (ijk.back() != 0 || i == 0) continue;
        int d = k - 1;
        while (ijk[at(d)] == 0) --d;
        --ijk[at(d)];
        ijk_to_indx(k, m, parent[at(i)], ijk.data());
    }
    return parent;
}

double rand_DoubleRange(double a, double b) { return a + (b - a) * (std::rand() / static_cast<double>(RAND_MAX)); }

void check_array_for_nan_1(int n, const double* v, const char* message) {
    for (int i = 0; i < n; ++i)
        if (std::isnan(v[i]))
            halt({line("check_array_for_nan: NaN found. i = ", i),
                  "   message from calling routine:", line("   ", message)});
}

bool check_array_for_nan_2(int n, const double* v) {
    return std::any_of(v, v + n, [](double x) { return std::isnan(x); });
}
