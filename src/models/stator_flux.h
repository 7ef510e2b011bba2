// stator_flux.h -- the flux of a machine's stator and its torque, calculated from voltages and currents.
#pragma once
#include <complex>

struct flags_class;
struct gbac1_class;
struct gbes1_class;

// In a frame that turns at the electrical speed w: dfd/dt = vd - rs id + w fq, dfq/dt = vq - rs iq - w fd; te = 3/4
// poles (fd iq - fq id). (Krause, Wasynczuk and Sudhoff, Analysis of Electric Machinery.)
struct stator_flux {
    double rs, poles;  // ohm
    // Rows of a block with the variables vd vq id iq, then w if the frame turns, then fd fq, the flux's size and
    // angle, rad, and te. Start-up holds the flux at start[0], start[1], V s.
    void rows(bool turns, const double* start, const double* vr, double* f, gbes1_class* jac,
              const flags_class* flags) const;
};
// The same rows in small signals, freq in rad/s: all slopes are those of the bias point.
void stator_flux_ac_rows(bool turns, double freq, const std::complex<double>* vr, std::complex<double>* f,
                         gbac1_class* jac, const flags_class* flags);
