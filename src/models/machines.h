// machines.h -- rotating machines: slopes of their states, currents, torque. SI units; motor convention: a torque te >
// 0 drives, a load tl > 0 brakes. Speed wm and angle th are those of the shaft; electrical ones are pairs times as
// much.
#pragma once
#include "models/frames.h"

// Of the speed: j dwm/dt = te - tl - b_f wm.
struct shaft {
    double pairs, j, b_f;  // pole pairs; kg m^2; N m s
    double slope(double te, double tl, double wm) const { return (te - tl - b_f * wm) / j; }
};

// ---- brushless DC machine with trapezoidal back-emf (Pillay and Krishnan, IEEE Transactions on Industry Applications
// 25, 1989, part II) ----

// The shape of a phase's back-emf over its electrical angle, and its slope: rises through 0 at 0, is 1 from 30 to 150
// degrees, falls through 0 at 180, is -1 from 210 to 330.
struct shape_value {
    double f, df;
};
shape_value trapezoid(double th);

// Three star-connected windings with isolated neutral: v_k - v_n = rs i_k + ls di_k/dt + e_k, e_k = lam pairs wm f_k.
// ls: self less mutual inductance, H; lam: V s.
struct brushless_machine {
    double rs, ls, lam;
    shaft mech;
    struct flux_shape {
        shape_value a, b, c;
    };
    flux_shape shape_at(double th) const;  // b and c are a third of a turn behind and ahead
    double torque(const flux_shape& s, double ia, double ib) const {
        return mech.pairs * lam * (s.a.f * ia + s.b.f * ib - s.c.f * (ia + ib));
    }
    // Of ia, ib, wm, th at the voltages v of the terminals, against any point.
    void slopes(const phases& v, double tl, const double* state, double* slope) const;
};

// ---- induction machine (Krause, Wasynczuk and Sudhoff, Analysis of Electric Machinery, chapter 4) ----

// In a frame that turns at the electrical speed w, all referred to the stator, with fluxes as states:
//   dfd/dt = vd - rs id + w fq, dfq/dt = vq - rs iq - w fd of the stator; of the rotor the same without voltage, with w
//   less the electrical speed of the shaft; te = 3/2 pairs (fds iqs - fqs ids).
struct induction_machine {
    double rs, rr, lls, lm, llr;  // ohm, H
    shaft mech;
    // ls lr - lm^2, H^2: 0 of a machine without leakage
    double determinant() const { return (lls + lm) * (llr + lm) - lm * lm; }
    struct fluxes {
        double ds, qs, dr, qr;  // V s
    };
    struct currents {
        double ds, qs, dr, qr;  // A
    };
    currents currents_of(const fluxes& f) const;
    double torque(const fluxes& f, const currents& i) const { return 1.5 * mech.pairs * (f.ds * i.qs - f.qs * i.ds); }
    // Of ds, qs, dr, qr, wm, th; v: voltages of the stator as the frame sees them.
    void slopes(double vd, double vq, double w, double tl, const double* state, double* slope) const;
};

// ---- machines whose rotor has an axis, in the frame of the rotor: d along its north pole, q a quarter turn ahead ----

// Permanent magnets: ld did/dt = vd - rs id + we lq iq, lq diq/dt = vq - rs iq - we (ld id + lam), te = 3/2 pairs (lam
// iq
// + (ld - lq) id iq), we = pairs wm. (Krause, Wasynczuk and Sudhoff, chapter on brushless machines)
struct magnet_machine {
    double rs, ld, lq, lam;  // ohm; H; V s
    shaft mech;
};

// A field winding, a damper in each axis, and fluxes as states: dfd/dt = vd - rs id + we fq, dfq/dt = vq - rs iq - we
// fd of the stator; of the rotor df/dt = v - r i; te = 3/2 pairs (fd iq - fq id). All are referred to the stator. At
// the terminals the field has v/n_f and 3/2 n_f i, by which power stays power. (Krause, Wasynczuk and Sudhoff, chapter
// 5)
struct wound_field_machine {
    double rs, rfd, rkd, rkq, n_f;
    const double *gd, *gq;  // inverse inductances as triangles, 1/H: of stator, field and damper in d; of two in q
    shaft mech;
};

// Separately excited: la dia/dt = va - ra ia - k ifd wm, lf difd/dt = vf - rf ifd, te = k ifd ia. (Krause, Wasynczuk
// and Sudhoff, chapter 3)
struct dc_machine {
    double ra, la, rf, lf, k;  // ohm, H
    shaft mech;
};
