// batteries.h -- sources of chemical and light energy: open-circuit voltage of a cell, current of a solar module.
#pragma once
#include <cmath>

#include "base/numeric.h"

constexpr double energy_exponent_cap = 50.0;  // exponentials go on as their tangent beyond it

// Voltage of n cells in a row by the state of charge s, 0 to 1, and its slope (Chen and Rincon-Mora, IEEE Trans. Energy
// Conversion 21, 2006, eq. 2): e0 + e1 s + e2 s^2 + e3 s^3 - ed exp(-kd s). e: e0 e1 e2 e3 ed, V, and kd.
inline void open_circuit_voltage(const double* e, double n, double s, double& u, double& du) {
    double y, dy;
    exp_lmt_1(-e[5] * s, y, dy, energy_exponent_cap);
    u = n * (e[0] + s * (e[1] + s * (e[2] + s * e[3])) - e[4] * y);
    du = n * (e[1] + s * (2 * e[2] + 3 * s * e[3]) + e[4] * e[5] * dy);
}

// A module of solar cells at its irradiation and temperature. i_ph: current of the light, A; n_kt: voltage in which the
// exponential grows e times, V; e_oc: exp(v/n_kt) - 1 at open circuit.
struct solar_point {
    double i_ph, n_kt, v_oc, e_oc;
};
// g in W/m^2, temperatures in degrees Celsius, alpha in A/K at 1000 W/m^2, beta in V/K; n_em for all cells together.
// 273 and 8.66e-5 V/K are this module's numbers for 0 degrees and k/q, in all places alike.
struct solar_data {
    double g, t_a, noct, t_ref, isc, voc, n_em, alpha, beta;

    solar_point point() const {
        const double t_c = (noct - 20) / 800 * g + t_a, dt = t_c - t_ref;
        solar_point p;
        p.i_ph = g * (isc / 1000) + alpha / 1000 * g * dt;
        p.n_kt = n_em * (t_c + 273) * 8.66e-5;
        p.v_oc = std::log(p.i_ph / isc) * p.n_kt + (voc + beta * dt);
        double dy;
        exp_lmt_1(p.v_oc / p.n_kt, p.e_oc, dy, energy_exponent_cap);
        p.e_oc -= 1;
        return p;
    }
};
// Current into the + terminal, negative while the module delivers, and its slope; gmin, S, stands across it.
inline void solar_current(double i_ph, double n_kt, double e_oc, double gmin, double v, double& i, double& di) {
    double y, dy;
    exp_lmt_1(v / n_kt, y, dy, energy_exponent_cap);
    i = i_ph * ((y - 1) / e_oc) + gmin * v - i_ph;
    di = i_ph * dy / (n_kt * e_oc) + gmin;
}
