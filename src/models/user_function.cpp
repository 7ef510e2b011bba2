#include <algorithm>
#include <cmath>

#include "base/flags_class.h"
#include "base/halt.h"
#include "library/basic/gbes1_class.h"
#include "models/block_functions.h"

namespace {

// One formula in the making: partial(i, j) is dy_i/dx_j, dropped where nobody asked for it.
struct formula_call {
    double t;
    const double* x;
    double* y;
    double* dydx;
    int n_x;
    const int* iparm;
    const double* rparm;
    void partial(int i, int j, double d) const {
        if (dydx) dydx[i * n_x + j] = d;
    }
};

// The product is taken in single precision: results of existing circuits depend on it.
void line_in_single_precision(const formula_call& c) {
    const float factor = c.iparm[0] ? 2.0f : 0.5f;
    const float product = factor * static_cast<float>(c.rparm[0]) * static_cast<float>(c.x[0]);
    c.y[0] = static_cast<double>(product) + c.rparm[1];
    c.partial(0, 0, static_cast<double>(factor) * c.rparm[0]);
}

void direct_product(const formula_call& c) {
    const double k = c.rparm[0] * c.rparm[1] / (c.rparm[2] / 2.0);
    c.y[0] = k * c.x[0] * c.x[1];
    c.partial(0, 0, k * c.x[1]);
    c.partial(0, 1, k * c.x[0]);
}

void shared_product(const formula_call& c) {
    const double k1 = c.rparm[0] * c.rparm[1] / (c.rparm[2] / 2.0);
    const double k2 = (1.0 - c.rparm[0]) * c.rparm[1] / (c.rparm[2] / 2.0);
    c.y[0] = k1 * c.x[0] * c.x[1] + k2 * c.x[0] * c.x[2];
    c.partial(0, 0, k1 * c.x[1] + k2 * c.x[2]);
    c.partial(0, 1, k1 * c.x[0]);
    c.partial(0, 2, k2 * c.x[0]);
}

void slip(const formula_call& c) {
    const bool at_rest = std::fabs(c.x[1]) < 0.01;
    const double s = at_rest ? 1.0 : c.x[0] / (c.rparm[0] * c.x[1]);
    c.y[0] = s + 0.5 * c.iparm[0] * c.x[2];
    c.partial(0, 0, at_rest ? 0.0 : 1.0 / (c.rparm[0] * c.x[1]));
    c.partial(0, 1, at_rest ? 0.0 : -s / c.x[1]);
    c.partial(0, 2, 0.5 * c.iparm[0]);
}

void switched_pair(const formula_call& c) {
    const bool later = c.rparm[0] < c.t;
    c.y[0] = later ? 0.0 : c.x[0];
    c.y[1] = later ? c.x[1] : 0.0;
    c.partial(0, 0, later ? 0.0 : 1.0);
    c.partial(1, 1, later ? 1.0 : 0.0);
}

struct formula {
    int n_x, n_y;  // at least
    void (*evaluate)(const formula_call&);
};
constexpr formula formulas[] = {{1, 1, line_in_single_precision},
                                {2, 1, direct_product},
                                {3, 1, shared_product},
                                {3, 1, slip},
                                {2, 2, switched_pair}};
constexpr int n_formulas = 5, n_reserved = 10;

}  // namespace

void user_function(int n_given, double t, int n_x, const double* x, int n_y, double* y, double* dydx, const int* iparm,
                   const double* rparm) {
    if (n_given > n_formulas && n_given <= n_reserved)
        halt({line("user_function: n_given=", n_given, " is not implemented. Halting..")});
    if (n_given < 1 || n_given > n_formulas) halt({"user_function: Check n_given. Halting..."});
    const formula& chosen = formulas[n_given - 1];
    if (n_x < chosen.n_x || n_y < chosen.n_y) halt({"user_function: Check n_given. Halting..."});
    std::fill(y, y + n_y, 0.0);
    if (dydx) std::fill(dydx, dydx + n_y * n_x, 0.0);
    chosen.evaluate({t, x, y, dydx, n_x, iparm, rparm});
}

void user_rows(int n_given, int n_x, int n_y, const int* iparm, const double* rparm, const double* vr, double* f,
               gbes1_class* jac, const flags_class* flags) {
    double y[max_user_ports], dydx[max_user_ports * max_user_ports];
    user_function(n_given, flags->time_given, n_x, vr, n_y, y, dydx, iparm, rparm);
    for (int i = 0; i < n_y; ++i) {
        if (flags->function) f[i] = vr[n_x + i] - y[i];
        if (!flags->jacobian) continue;
        jac->dfdvr[i][n_x + i] = 1.0;
        for (int j = 0; j < n_x; ++j) jac->dfdvr[i][j] = -dydx[i * n_x + j];
    }
}
