#include "base/flags_class.h"
#include "base/halt.h"
#include "library/basic/ebes1_class.h"
#include "models/model_functions.h"

switch_curve switch_constants(const char* file, double r_on, double r_off, double v_on) {
    if (v_on < 0) halt({line(file, ": v_on < 0 ?!")});
    if (r_on == 0) halt({line(file, ": ron  =  0 ?!")});
    const double g_on = 1 / r_on;
    return {g_on, 1 / r_off, v_on, v_on / 0.9999, 0.0001 * g_on};
}

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

void diode_constants(const char* element, double r_on, double r_off, double v_on, double* c) {
    if (r_on < 1.0e-9 || r_off < 1.0e-9 || r_off - r_on <= 0.0) halt({line(element, ": r too small!")});
    c[0] = 1.0 / r_on;
    c[1] = 1.0 / r_off;
    c[2] = r_off * v_on / (r_off - r_on);
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

void source_branch(double u, const double* v, const double* aux, const double* auxs, double* f, ebes1_class* jac,
                   const flags_class* flags, int first_s) {
    const bool startup = flags->startup;
    const int row = startup ? first_s : 0;
    if (flags->function) {
        const double i = startup ? auxs[0] : aux[0];
        f[row] = i;
        f[row + 1] = -i;
        f[row + 2] = v[0] - v[1] - u;
    }
    if (flags->jacobian) {
        double** const dfdi = startup ? jac->dfdauxs : jac->dfdaux;
        dfdi[row][0] = 1;
        dfdi[row + 1][0] = -1;
        jac->dfdv[row + 2][0] = 1;
        jac->dfdv[row + 2][1] = -1;
    }
}

void series_branch(double g, const double* v, const double* aux, const double* auxs, double* f, ebes1_class* jac,
                   const flags_class* flags) {
    const bool startup = flags->startup;
    const int row = startup ? 3 : 0;
    const double per_i = 1 / std::fmax(g, 1.0), per_v = g * per_i;
    source_branch(0.0, v, aux, auxs, f, jac, flags);
    if (flags->function) f[row + 2] = per_v * (v[0] - v[1]) - per_i * f[row];
    if (flags->jacobian) {
        (startup ? jac->dfdauxs : jac->dfdaux)[row + 2][0] = -per_i;
        jac->dfdv[row + 2][0] = per_v;
        jac->dfdv[row + 2][1] = -per_v;
    }
}
