#include "base/flags_class.h"
#include "library/basic/ebac1_class.h"
#include "library/basic/ebes1_class.h"
#include "models/model_functions.h"

void branch_voltage(std::complex<double> u, const std::complex<double>* v, const std::complex<double>* aux,
                    std::complex<double>* f, ebac1_class* jac, const flags_class* flags) {
    if (flags->function) {
        f[0] = aux[0];
        f[1] = -aux[0];
        f[2] = v[0] - v[1] - u;
    }
    if (flags->jacobian) {
        jac->dfdaux[0][0] = 1;
        jac->dfdaux[1][0] = -1;
        jac->dfdv[2][0] = 1;
        jac->dfdv[2][1] = -1;
    }
}

void bias_admittance(int n_nd, bool charges, double freq, const std::complex<double>* v, std::complex<double>* f,
                     ebac1_class* jac, const ebes1_class* ebe_jac, const flags_class* flags) {
    for (int j = 0; j < n_nd; ++j) {
        std::complex<double> current = 0;
        for (int k = 0; k < n_nd; ++k) {
            std::complex<double> y = 0;
            if (ebe_jac) y = {ebe_jac->dfdv[j][k], charges ? freq * ebe_jac->dfdv[n_nd + j][k] : 0.0};
            current += y * v[k];
            if (flags->jacobian) jac->dfdv[j][k] = y;
        }
        if (flags->function) f[j] = current;
    }
}
