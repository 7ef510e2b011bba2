// diode_elements.h -- what the elements of the junction diode share: where their parameters stand, and the element
// whose capped exponentials count.
#pragma once
#include "base/flags_class.h"
#include "models/junctions.h"

// Parameters in rparm: as a deck gives them, and what adjust_to_temperature derived, which keep_derived stored behind.
inline __attribute__((always_inline)) void diode_as_given(junction_diode& d, const int* iparm, const double* rparm) {
    d.bv_cont = iparm[1] != 0;
    d.area = rparm[0];
    d.bv = rparm[1];
    d.layer.c_0 = rparm[2];
    d.eg = rparm[3];
    d.layer.fc = rparm[4];
    d.ibv = rparm[5];
    d.is = rparm[6];
    d.layer.m = rparm[7];
    d.n_em = rparm[8];
    d.tnom = rparm[9];
    d.tt = rparm[10];
    d.layer.vj = rparm[11];
    d.xti = rparm[12];
    d.temp = rparm[13];
    d.i_max = rparm[21];
}
inline void keep_derived(const junction_diode& d, double* rparm) {
    rparm[14] = d.vt;
    rparm[15] = d.vt_nom;
    rparm[16] = d.layer.f1;
    rparm[17] = d.layer.f2;
    rparm[18] = d.layer.f3;
    rparm[19] = d.bv;
    rparm[20] = d.is_t;
    rparm[22] = d.x_max;
}
inline __attribute__((always_inline)) void diode_at_temperature(junction_diode& d, const int* iparm,
                                                                const double* rparm) {
    diode_as_given(d, iparm, rparm);
    d.vt = rparm[14];
    d.vt_nom = rparm[15];
    d.layer.f1 = rparm[16];
    d.layer.f2 = rparm[17];
    d.layer.f3 = rparm[18];
    d.is_t = rparm[20];
    d.x_max = rparm[22];
}

// Functions p, n and their charges; derivatives.
inline void diode_rows(double id, double gd, double qd, double cd, double* f, double** dfdv, const flags_class* flags) {
    if (flags->jacobian) {
        dfdv[0][0] = dfdv[1][1] = gd;
        dfdv[0][1] = dfdv[1][0] = -gd;
        dfdv[2][0] = dfdv[3][1] = cd;
        dfdv[2][1] = dfdv[3][0] = -cd;
    }
    if (flags->function) {
        f[0] = id;
        f[1] = -id;
        f[2] = qd;
        f[3] = -qd;
    }
}

// What an element with counted exponentials answers under each flag. Form limited: on passes with derivatives, but at
// the bias point of small signals, the voltage is first limited against that of the last such pass, and functions go
// on from there in a straight line; rparm[25] is the critical voltage, rparm[26] the last voltage, rparm[27] tells
// whether there is one. Halts as the plain diode where voltages in range give no number.
enum class diode_form { counted, limited };
void counted_diode(diode_form form, const int* iparm, double* rparm, double* v, double* f, double** dfdv,
                   flags_class* flags, const math_cnst_class& math_cnst);
