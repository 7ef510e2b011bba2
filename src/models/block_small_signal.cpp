#include "base/flags_class.h"
#include "library/basic/gbac1_class.h"
#include "library/basic/gbes1_class.h"
#include "library/basic/xbac1_class.h"
#include "models/block_functions.h"

using number = std::complex<double>;

ac_row::ac_row(int row, const number* vr, const number* aux, number* f, number** dfdvr, number** dfdaux,
               const gbes1_class* bias, const flags_class* flags)
    : row_(row),
      vr_(vr),
      aux_(aux),
      f_(flags->function ? &f[row] : nullptr),
      dfdvr_(flags->jacobian ? dfdvr : nullptr),
      dfdaux_(flags->jacobian ? dfdaux : nullptr),
      bias_(bias) {
    if (f_) *f_ = 0.0;
}
ac_row::ac_row(int row, const number* vr, const number* aux, number* f, gbac1_class* jac, const flags_class* flags)
    : ac_row(row, vr, aux, f, jac->dfdvr, jac->dfdaux, jac->bias, flags) {}
ac_row::ac_row(int row, const number* vr, const number* aux, number* f, xbac1_class* jac, const flags_class* flags)
    : ac_row(row, vr, aux, f, jac->dfdvr, jac->dfdaux, nullptr, flags) {}

void ac_row::variable(int k, number c) const {
    if (f_) *f_ += c * vr_[k];
    if (dfdvr_) dfdvr_[row_][k] = c;
}
void ac_row::unknown(int k, number c) const {
    if (f_) *f_ += c * aux_[k];
    if (dfdaux_) dfdaux_[row_][k] = c;
}
void ac_row::variable_at_bias(int k) const { variable(k, bias_ ? bias_->dfdvr[row_][k] : 0.0); }
void ac_row::unknown_at_bias(int k) const { unknown(k, bias_ ? bias_->dfdaux[row_][k] : 0.0); }

template <class Jac>
void linear_row(int row, std::initializer_list<number> coefficient, const number* vr, number* f, Jac* jac,
                const flags_class* flags) {
    const ac_row r(row, vr, nullptr, f, jac, flags);
    int k = 0;
    for (const number& c : coefficient) r.variable(k++, c);
}

template <class Jac>
void transfer_row(number num, number den, const number* vr, number* f, Jac* jac, const flags_class* flags) {
    linear_row(0, {-num, den}, vr, f, jac, flags);
}

template <class Jac>
void source_row(double amplitude, double angle, const number* vr, number* f, Jac* jac, const flags_class* flags) {
    linear_row(0, {1.0}, vr, f, jac, flags);
    if (flags->function) f[0] -= std::polar(amplitude, angle);
}

template void linear_row(int, std::initializer_list<number>, const number*, number*, gbac1_class*, const flags_class*);
template void linear_row(int, std::initializer_list<number>, const number*, number*, xbac1_class*, const flags_class*);
template void transfer_row(number, number, const number*, number*, gbac1_class*, const flags_class*);
template void transfer_row(number, number, const number*, number*, xbac1_class*, const flags_class*);
template void source_row(double, double, const number*, number*, gbac1_class*, const flags_class*);
template void source_row(double, double, const number*, number*, xbac1_class*, const flags_class*);

number polynomial_at(int n, const double* a, double freq) {
    number sum = 0.0;
    for (int k = n; k >= 0; --k) sum = number{a[k] - freq * sum.imag(), freq * sum.real()};
    return sum;
}

number delays_at(int n, const double* a, double turn) {
    const number delay = std::polar(1.0, -turn);
    number sum = 0.0;
    for (int k = n; k >= 0; --k) sum = a[k] + delay * sum;
    return sum;
}

void bias_rows(int n_x, int n_y, const number* vr, number* f, gbac1_class* jac, const flags_class* flags) {
    for (int j = 0; j < n_y; ++j) {
        const ac_row r(j, vr, nullptr, f, jac, flags);
        r.variable(n_x + j, 1.0);
        for (int k = 0; k < n_x; ++k) r.variable_at_bias(k);
    }
}
