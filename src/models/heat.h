// heat.h -- losses of switches, and the temperatures that they lead to.
#pragma once

struct flags_class;
struct gbes1_class;

// ---- losses

// What a data sheet says of the energies of one switching, J: at n currents i, A, ascending, those of switching on and
// off, and e_rr of a diode that blocks after i_rr; all at the blocking voltage v_ref, V, with whose power k_v they
// grow.
struct loss_sheet {
    int n;
    const double* i;
    const double* e_on;
    const double* e_off;
    double e_rr, i_rr, v_ref, k_v;
    double v_th;   // V, a switch blocks above it
    double t_avg;  // s, over which the mean power is taken; 0: since the beginning
};
// Straight lines between the points, from 0 at no current to the first, and on through the last two.
double switching_energy(const double* i, const double* e, int n, double current);

// Energies of a switch up to the last accepted point, as they stand in a unit's parameters: conduction, switching on,
// switching off, recovery, J; how often it has switched; the mean power, W; the sum, J, where the present span begins,
// or with t_avg 0 the time, s; time, voltage and current of that point. Behind them the same at the point before, for a
// step that is repeated.
struct loss_account {
    enum slot { cond, on, off, rr, count, mean, base, time, volt, amp, n_slots };
    double* s;  // [2 * n_slots]
    void clear() const;
    // Voltage and current at an accepted point. Between two points both are straight lines; where the switch changes,
    // it has been the new one since the point before. True: the mean has changed at the end of its span.
    bool take(const loss_sheet& sheet, double v, double i, double t) const;
    double energy() const { return s[cond] + s[on] + s[off] + s[rr]; }
};
// The next end of a span of t_avg, s.
double next_span(double t_avg, double t);

// ---- temperatures

// Four stages between a junction and surroundings of t_amb, K. Variables: power x, W, and temperature y, K, of the
// junction; unknowns z [4], K: in a Foster chain the differences over its stages, of r, K/W, and tau, s; in a Cauer
// chain the rises above t_amb of its n nodes, with c, J/K, each and r to the next one. Rows: y, then z; in start-up z
// is 0.
constexpr int n_thermal = 4;
void foster_rows(const double* r, const double* tau, double t_amb, const double* vr, const double* z, double* f,
                 gbes1_class* jac, const flags_class* flags);
void cauer_rows(int n, const double* r, const double* c, double t_amb, const double* vr, const double* z, double* f,
                gbes1_class* jac, const flags_class* flags);
