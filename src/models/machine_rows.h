// machine_rows.h -- machines as electrical elements: their equations at a point with all derivatives, and the rows that
// come of them in each analysis.
#pragma once
#include <algorithm>

#include "base/flags_class.h"
#include "library/basic/ebac1_class.h"
#include "library/basic/ebes1_class.h"
#include "models/machines.h"

// Currents into the terminals, slopes of the states, torque; each by the states, slopes also by the voltages of the
// terminals. State number speed is that of the shaft, rad/s; the load acts on it alone.
template <int terminals, int states, int speed_state>
struct machine_point {
    static constexpr int n_t = terminals, n_s = states, speed = speed_state;
    double current[n_t] = {}, current_by[n_t][n_s] = {};
    double slope[n_s] = {}, slope_by[n_s][n_s] = {}, slope_by_v[n_s][n_t] = {};
    double torque = 0.0, torque_by[n_s] = {};

    // Of the speed, from the torque.
    void turn(const shaft& mech, double tl, double wm) {
        slope[speed] = mech.slope(torque, tl, wm);
        for (int s = 0; s < n_s; ++s) slope_by[speed][s] = torque_by[s] / mech.j;
        slope_by[speed][speed] -= mech.b_f / mech.j;
        if constexpr (speed + 1 < n_s) {  // the angle
            slope[speed + 1] = wm;
            slope_by[speed + 1][speed] = 1.0;
        }
    }
};

// Terminals a b c, states as in machines.h: fluxes in the stationary frame; ia ib; id iq; each with wm and th.
machine_point<3, 6, 4> point_of(const induction_machine& m, const double* v, const double* x, double tl);
machine_point<3, 4, 2> point_of(const brushless_machine& m, const double* v, const double* x, double tl);
machine_point<3, 4, 2> point_of(const magnet_machine& m, const double* v, const double* x, double tl);
// Terminals a b c fp fn, states fds fqs ffd fkd fkq wm th.
machine_point<5, 7, 5> point_of(const wound_field_machine& m, const double* v, const double* x, double tl);
// Terminals ap an fp fn, states ia ifd wm.
machine_point<4, 3, 2> point_of(const dc_machine& m, const double* v, const double* x, double tl);

// The states are the unknowns; variables of blocks are the load tl, and as outputs the speed and, of n_out = 2, the
// torque. Rows: terminals, states, outputs; in start-up the same again, where the states are held at stparm.
template <int n_out, class Machine>
void machine_rows(const Machine& m, const double* stparm, double* v, double* aux, const double* auxs, const double* vr,
                  double* f, ebes1_class* jac, const flags_class* flags) {
    using point = decltype(point_of(m, v, aux, 0.0));
    constexpr int n_t = point::n_t, n_s = point::n_s, speed = point::speed;
    if (flags->init_guess) {
        std::fill_n(v, n_t, 0.0);
        std::fill_n(aux, n_s, 0.0);
    }
    const bool startup = flags->startup;
    if (!startup && !flags->dc && !flags->trns) return;
    const double* const x = startup ? auxs : aux;
    double** const by_x = startup ? jac->dfdauxs : jac->dfdaux;
    const point p = point_of(m, v, x, vr[0]);
    const int at_terminal = startup ? n_t + n_s + n_out : 0, at_state = at_terminal + n_t, at_out = at_state + n_s;
    if (startup) std::copy_n(auxs, n_s, aux);
    if (flags->function) {
        std::copy_n(p.current, n_t, f + at_terminal);
        for (int s = 0; s < n_s; ++s) f[at_state + s] = startup ? auxs[s] - stparm[s] : p.slope[s];
        f[at_out] = vr[1] - x[speed];
        if (n_out > 1) f[at_out + 1] = vr[2] - p.torque;
    }
    if (!flags->jacobian) return;
    for (int t = 0; t < n_t; ++t) std::copy_n(p.current_by[t], n_s, by_x[at_terminal + t]);
    for (int s = 0; s < n_s; ++s) {
        if (startup) {
            by_x[at_state + s][s] = 1.0;
            continue;
        }
        std::copy_n(p.slope_by[s], n_s, by_x[at_state + s]);
        std::copy_n(p.slope_by_v[s], n_t, jac->dfdv[at_state + s]);
    }
    if (!startup) jac->dfdvr[at_state + speed][0] = -1.0 / m.mech.j;
    jac->dfdvr[at_out][1] = 1.0;
    by_x[at_out][speed] = -1.0;
    if (n_out > 1) {
        jac->dfdvr[at_out + 1][2] = 1.0;
        for (int s = 0; s < n_s; ++s) by_x[at_out + 1][s] = -p.torque_by[s];
    }
}

// Small signals of a DC machine, from the derivatives at the bias point. ebe_jac null: without current and speed.
void dc_machine_small_signals(double freq, const std::complex<double>* v, const std::complex<double>* aux,
                              const std::complex<double>* vr, std::complex<double>* f, ebac1_class* jac,
                              const ebes1_class* ebe_jac, const flags_class* flags);
