// direct_torque.h -- direct torque control of a machine on a bridge of six switches (Takahashi and Noguchi, A New
// Quick-Response and High-Efficiency Control Strategy of an Induction Motor, IEEE Transactions on Industry Applications
// IA-22, 1986).
#pragma once

struct flags_class;

// The voltage vector, 0 to 7, that a table chooses. flux: 1 raises it, 0 lowers it; torque: 1 raises it, 0 keeps it,
// -1 lowers it; sector: 1 to 6, where the flux points, the first from -30 to 30 degrees of phase a's axis.
int user_f_dtc_1(int flux, int torque, int sector);
int flux_sector(double th);  // of a flux at the angle th, rad
// Whether a leg, 0 to 2, is at the upper rail: vector 1 is along phase a, each next one 60 degrees ahead, 0 and 7 have
// no voltage.
bool leg_is_high(int vector, int leg);

// A control's levels as they stand in a unit's parameters: flux, torque, and the vector, which holds from one accepted
// point to the next; no_vector: there was no point yet.
struct direct_torque {
    static constexpr double no_vector = -1.0;
    double* s;  // [3]
    void begin(int flux, int torque) const;
    // At an accepted point.
    void take(int flux, int torque, double th, flags_class* flags) const;
    int flux() const { return static_cast<int>(s[0]); }
    int torque() const { return static_cast<int>(s[1]); }
    // While the equations are solved; the levels count in start-up and before the first point.
    int vector(int flux, int torque, double th, const flags_class* flags) const;
};

// Comparators of reference less actual value, with memory. The two levels of the flux, and the two or three of the
// torque, change where the error passes band_f (V s) or band_t (N m) on either side; the third, 0, is taken where the
// error comes back to 0.
struct torque_comparators {
    double band_f, band_t;
    bool three_levels;
    int flux(double error, int now) const;
    int torque(double error, int now) const;
};
