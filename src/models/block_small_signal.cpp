#include "base/flags_class.h"
#include "library/basic/gbac1_class.h"
#include "library/basic/gbes1_class.h"
#include "models/block_functions.h"

using number = std::complex<double>;

ac_row::ac_row(int row, const number* vr, const number* aux, number* f, gbac1_class* jac, const flags_class* flags)
    : row_(row),
      vr_(vr),
      aux_(aux),
      f_(flags->function ? &f[row] : nullptr),
      jac_(jac),
      fills_jac_(flags->jacobian != 0) {
    if (f_) *f_ = 0.0;
}

void ac_row::variable(int k, number c) const {
    if (f_) *f_ += c * vr_[k];
    if (fills_jac_) jac_->dfdvr[row_][k] = c;
}
void ac_row::unknown(int k, number c) const {
    if (f_) *f_ += c * aux_[k];
    if (fills_jac_) jac_->dfdaux[row_][k] = c;
}
void ac_row::variable_at_bias(int k) const { variable(k, jac_->bias ? jac_->bias->dfdvr[row_][k] : 0.0); }
void ac_row::unknown_at_bias(int k) const { unknown(k, jac_->bias ? jac_->bias->dfdaux[row_][k] : 0.0); }

void linear_row(int row, std::initializer_list<number> coefficient, const number* vr, number* f, gbac1_class* jac,
                const flags_class* flags) {
    const ac_row r(row, vr, nullptr, f, jac, flags);
    int k = 0;
    for (const number& c : coefficient) r.variable(k++, c);
}

void transfer_row(number num, number den, const number* vr, number* f, gbac1_class* jac, const flags_class* flags) {
    linear_row(0, {-num, den}, vr, f, jac, flags);
}

number polynomial_at(int n, const double* a, double freq) {
    number sum = 0.0;
    for (int k = n; k >= 0; --k) sum = number{a[k] - freq * sum.imag(), freq * sum.real()};
    return sum;
}

void bias_rows(int n_x, int n_y, const number* vr, number* f, gbac1_class* jac, const flags_class* flags) {
    for (int j = 0; j < n_y; ++j) {
        const ac_row r(j, vr, nullptr, f, jac, flags);
        r.variable(n_x + j, 1.0);
        for (int k = 0; k < n_x; ++k) r.variable_at_bias(k);
    }
}
