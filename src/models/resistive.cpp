#include "library/ebes1_class.h"
#include "models/model_functions.h"
#include "run/flags_class.h"

void switch_current(const switch_curve& s, bool on, double v, double& i, double& g) {
    if (!on) {
        g = s.g_off;
        i = g * v;
    } else if (v >= s.v_knee) {
        g = s.g_on;
        i = g * (v - s.v_on);
    } else {
        g = s.g_knee;
        i = g * v;
    }
}

void two_terminal_branch(double i, double g, double* f, ebes1_class* jac, const flags_class* flags) {
    if (flags->function) {
        f[0] = i;
        f[1] = -i;
    }
    if (flags->jacobian) {
        jac->dfdv[0][0] = g;
        jac->dfdv[0][1] = -g;
        jac->dfdv[1][0] = -g;
        jac->dfdv[1][1] = g;
    }
}
