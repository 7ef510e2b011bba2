// explicit_user.h -- explicit blocks of formulas that are built into the program.
#pragma once
#include "models/block_functions.h"
#include "models/explicit_functions.h"

// All that a block with n_x inputs and n_y outputs behind them does, up to 12 of each.
inline void x_user(int n_given, int n_x, int n_y, const int* iparm, const double* rparm, double* vr, double* fh,
                   xbes1_class* jac, const flags_class* flags) {
    if (flags->init_guess) {
        for (int i = 0; i < n_y; ++i) vr[n_x + i] = 0.0;
    } else if (flags->evaluate) {
        user_function(n_given, flags->time_given_x, n_x, vr, n_y, vr + n_x, nullptr, iparm, rparm);
    } else if (flags->matrix_alg) {
        double y[max_user_ports], dydx[max_user_ports * max_user_ports];
        user_function(n_given, flags->time_given_x, n_x, vr, n_y, y, dydx, iparm, rparm);
        for (int i = 0; i < n_y; ++i) {
            fh[i] = vr[n_x + i] - y[i];
            for (int j = 0; j < n_x; ++j) jac->dhdvr[i][j] = -dydx[i * n_x + j];
            jac->dhdvr[i][n_x + i] = 1.0;
        }
    }
}
