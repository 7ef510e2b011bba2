// block_functions.h -- functions that several general blocks share.
#pragma once
#include <complex>
#include <initializer_list>

struct flags_class;
struct gbac1_class;
struct xbac1_class;
struct gbes1_class;

// ---- rows ----

// The three analyses in which a block fills its functions.
bool is_solving(const flags_class* flags);

// Function `row` of a block whose variable `out` has the value g: f = vr[out] - g. slope[k] is dg by variable k;
// variables behind those of the list do not count. Function and Jacobian each only if asked.
void output_row(int row, int out, double g, std::initializer_list<double> slope, const double* vr, double* f,
                gbes1_class* jac, const flags_class* flags);

// The row of a first-order state y: dy/dt = (by_x x + by_y y) / by; in start-up y is held at y0. x and y are the
// variables 0 and 1 of the block.
struct first_order {
    double by_x, by_y, by;
};
void state_row(const first_order& w, double y0, const double* vr, double* f, gbes1_class* jac,
               const flags_class* flags);

// ---- levels ----

struct level_pair {
    double low, high;
    double of(bool on) const { return on ? high : low; }
    bool is_high(double x) const { return x > 0.5 * (high + low); }
};

// Time at which y, known at (t0, y0) and t1 > t0, y1, reaches 0 on a straight line, less dt_guard and at least 2
// dt_guard ahead of t_now; with no crossing in view t_now + dt_default. All in s.
void get_t_next(double t1, double t0, double y1, double y0, double t_now, double dt_guard, double dt_default,
                double& t_next);

// The last two accepted samples of a signal, as they stand in a unit's parameters: value and time of the newest, then
// those of the older.
struct sample_pair {
    double* s;  // [4]
    void clear() const { s[0] = s[1] = s[2] = s[3] = 0.0; }
    // A time that does not lie ahead takes the newest sample's place: the step that gave that one was rejected.
    void take(double x, double time) const;
    // The next break after `time` of whoever waits for the level; before there are two samples, so up to step 1,
    // dt_default ahead.
    double next_break(double level, double dt_guard, double dt_default, double time, int step) const;
    // In the transient of general blocks.
    double next_break(double level, double dt_guard, double dt_default, const flags_class* flags) const;
};

// ---- averages over time ----

// The running mean of a quantity q, as it stands in a unit's parameters: its integral, the time of the last accepted
// point, the time that the integral covers. per, s: the integral begins anew when it covers a period; 0: never.
struct running_mean {
    double* s;          // [3]
    double per, t_min;  // s; the mean divides by t_min at least
    void clear(double time) const;
    void take(double q, double time) const;
    // The mean up to `time` with q since the last accepted point, and its slope by q.
    void mean(double q, double time, double& y, double& dy) const;
};

// ---- linear filters ----

// (a[0] + a[1] s + ... + a[n] s^n) / (b[0] + ... + b[n] s^n) with states z[0] .. z[n - 1] (observer form, Kailath
// 1980), brought to the size of y by a time T:
//   y = d x + z[0], z[i]' = z[i + 1] / T + T^i (c[k] x - (b[k] / b[n]) z[0]), k = n - 1 - i,
//   d = a[n] / b[n], c[k] = (a[k] - b[k] d) / b[n]
struct filter_form {
    int n;
    const double* a;  // [n + 1]
    const double* b;  // [n + 1], b[n] not 0
    double* c;        // filled by filter_constants: [n], and from second order on T, s, behind them
};
void filter_constants(const filter_form& w);
// The time T of the coefficients b [n + 1], b[n] not 0, s.
double time_of(int n, const double* b);
// Rows 0 (y) and 1 .. n (states) of a block with the variables x, y and the unknowns z; z0 [n] are held in start-up.
void filter_rows(const filter_form& w, const double* vr, const double* z, const double* z0, double* f, gbes1_class* jac,
                 const flags_class* flags);

// The filters of second order about w0, rad/s: k (low + band p/q + high p^2)/(1 + p/q + p^2) with p = s/w0.
struct second_order {
    double a[3], b[3];
};
second_order second_order_filter(double k, double w0, double q, double low, double band, double high);

// a[0] + a[1] s + ... + a[n] s^n, n 1 or 2, a[n] not 0: rows 0 .. n of a block with the variables x and y and the
// unknowns z, of which z[0] is x itself and z[i]' = z[i + 1]/scale, scale in s. In start-up x is at rest.
void derivative_rows(int n, const double* a, double scale, const double* vr, const double* z, double* f,
                     gbes1_class* jac, const flags_class* flags);

// Rows 0 (y) and 1 (state z) of a first-order filter with the variables x and y, whose output is held within limits:
// dz/dt = (by_x x + by_y z)/by, and y = z from low to high. z0 is held in start-up.
void held_filter_rows(const first_order& w, double low, double high, const double* vr, const double* z, double z0,
                      double* f, gbes1_class* jac, const flags_class* flags);

// ---- samples and the past ----

struct sampled_filter;
// What a discrete filter does as a block with the variables x and y, in all modes but one_time_parms. In DC x has
// stood for long.
void run_sampled_filter(const sampled_filter& w, const double* vr, double* f, gbes1_class* jac, flags_class* flags);

// When a run began: at t_start, or where it is not in a transient yet, now. s
double begin_of_run(const flags_class* flags);

// A value from one accepted point to the next, as it stands in a unit's parameters: the newest, its time, and the one
// before. Points come from steps that may be rejected, and those do not count.
struct kept_value {
    double* s;  // [3]
    void clear(double x, double time) const;
    // What was kept at the last point that was accepted.
    double accepted(const flags_class* flags) const;
    void take(double x, const flags_class* flags) const;

private:
    bool is_accepted(const flags_class* flags) const;
};

// The largest value since the period began, as it stands in a unit's parameters: the value, and the period's number.
struct running_peak {
    double* s;          // [2]
    double per, begin;  // s; the first period begins there; per 0: it never ends
    void clear() const;
    void take(double x, double time) const;
    double with(double x, double time) const;
};

// ---- formulas of user blocks ----

constexpr int max_user_ports = 12;  // inputs of a block, and outputs

// Outputs y [n_y] of formula n_given at the inputs x [n_x] and the time t, s; outputs beyond those of the formula are
// 0. dydx [n_y * n_x], row by row, or null. Halts for a formula that does not exist or needs more inputs or outputs.
void user_function(int n_given, double t, int n_x, const double* x, int n_y, double* y, double* dydx, const int* iparm,
                   const double* rparm);
// The rows of a block with n_x inputs and n_y outputs behind them.
void user_rows(int n_given, int n_x, int n_y, const int* iparm, const double* rparm, const double* vr, double* f,
               gbes1_class* jac, const flags_class* flags);

// ---- small-signal forms ----

// One row of a small-signal form: a sum of terms, each with its derivative; function and Jacobian each only if asked.
class ac_row {
public:
    ac_row(int row, const std::complex<double>* vr, const std::complex<double>* aux, std::complex<double>* f,
           gbac1_class* jac, const flags_class* flags);
    ac_row(int row, const std::complex<double>* vr, const std::complex<double>* aux, std::complex<double>* f,
           xbac1_class* jac, const flags_class* flags);  // without a bias
    void variable(int k, std::complex<double> c) const;  // c times variable k
    void unknown(int k, std::complex<double> c) const;   // c times auxiliary unknown k
    // With the derivative of the same row of the large-signal form at the bias point; 0 if there is none.
    void variable_at_bias(int k) const;
    void unknown_at_bias(int k) const;

private:
    ac_row(int row, const std::complex<double>* vr, const std::complex<double>* aux, std::complex<double>* f,
           std::complex<double>** dfdvr, std::complex<double>** dfdaux, const gbes1_class* bias,
           const flags_class* flags);

    int row_;
    const std::complex<double>*vr_, *aux_;
    std::complex<double>* f_;                 // null: not asked
    std::complex<double>**dfdvr_, **dfdaux_;  // likewise
    const gbes1_class* bias_;                 // null: there is none
};

// The functions below are there for general blocks (gbac1_class) and for explicit ones (xbac1_class).

// Function `row` of a linear block: the sum of coefficient[k] times variable k.
template <class Jac>
void linear_row(int row, std::initializer_list<std::complex<double>> coefficient, const std::complex<double>* vr,
                std::complex<double>* f, Jac* jac, const flags_class* flags);
// The row of a block with the variables x and y: den y = num x.
template <class Jac>
void transfer_row(std::complex<double> num, std::complex<double> den, const std::complex<double>* vr,
                  std::complex<double>* f, Jac* jac, const flags_class* flags);
// The row of a source with the variable y, of an amplitude at an angle, rad.
template <class Jac>
void source_row(double amplitude, double angle, const std::complex<double>* vr, std::complex<double>* f, Jac* jac,
                const flags_class* flags);
// a[0] + a[1] s + ... + a[n] s^n at s = i freq; freq in rad/s.
std::complex<double> polynomial_at(int n, const double* a, double freq);
// a[0] + a[1]/z + ... + a[n]/z^n at z = exp(i turn): of samples that a wave of frequency w meets at a distance T, turn
// is w T, rad.
std::complex<double> delays_at(int n, const double* a, double turn);
// The rows of a block with n_x inputs and n_y outputs behind them, which follow their inputs by the slopes of the
// large- signal form at the bias point; without a bias they stand still.
void bias_rows(int n_x, int n_y, const std::complex<double>* vr, std::complex<double>* f, gbac1_class* jac,
               const flags_class* flags);
