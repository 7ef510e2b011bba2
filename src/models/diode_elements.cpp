#include "models/diode_elements.h"

#include <algorithm>
#include <cmath>

#include "base/halt.h"
#include "base/math_cnst_class.h"
#include "models/voltage_limits.h"

namespace {

struct last_voltage {
    double v_crit, v, known;  // V, V, 1 or 0
};

// Breakdown is limited by what the voltage is beyond bv.
double limited_voltage(const junction_diode& d, double v, const last_voltage& last, flags_class* flags) {
    const double vte = d.n_em * d.vt;
    const bool reverse = v < std::min(0.0, 10 * vte - d.bv), trace = flags->flag_debug_int != 0;
    if (trace)
        say(line("diode_spice_3a.ebe: vd (", reverse ? "reverse" : "fwd", ") before limiting: ", v, ", vd_old=", last.v,
                 ", vte_tmpr=", vte, ", vcrit_tmpr=", last.v_crit));
    double at = reverse ? -(v + d.bv) : v;
    int changed = 0;
    pnlimit_ngspice(at, reverse ? -(last.v + d.bv) : last.v, vte, last.v_crit, changed);
    flags->n_limit += changed;
    if (changed) v = reverse ? -(at + d.bv) : at;
    if (trace && !reverse) say(line("diode_spice_3a.ebe: vd (fwd) after limiting: ", v));
    return v;
}

void evaluate(diode_form form, const junction_diode& d, double* rparm, const double* v, double* f, double** dfdv,
              flags_class* flags) {
    const double vd = v[0] - v[1];
    const bool limiting = form == diode_form::limited && flags->jacobian && !flags->ac && junction_in_range(v);
    double at = vd;
    if (limiting) {
        last_voltage last{rparm[25], rparm[26], rparm[27]};
        if (flags->newton_first || last.known == 0) last.v = vd;
        at = limited_voltage(d, vd, last, flags);
        rparm[26] = at;
        rparm[27] = 1;
    }
    double id, gd, qd, cd;
    int uncounted = 0;
    junction_current_counted(d, form == diode_form::limited, at, flags->gmin,
                             flags->jacobian ? flags->n_limit : uncounted, id, gd);
    junction_charge(d, at, id - flags->gmin * at, gd - flags->gmin, qd, cd);
    if (!junction_in_range(v) || !std::isfinite(id + gd + qd + cd)) {
        if (!junction_ran_away(d, v, id, gd, qd, cd)) halt({line("vd=", vd, ", Halting...")});
    } else {
        id += gd * (vd - at);
        qd += cd * (vd - at);
    }
    if (limiting && flags->flag_debug_int != 0) say(line("diode_spice_3a.ebe: cd=", id, ", gd=", gd));
    diode_rows(id, gd, qd, cd, f, dfdv, flags);
}

}  // namespace

void counted_diode(diode_form form, const int* iparm, double* rparm, double* v, double* f, double** dfdv,
                   flags_class* flags, const math_cnst_class& math_cnst) {
    junction_diode d;
    if (flags->one_time_parms) {
        diode_as_given(d, iparm, rparm);
        adjust_to_temperature(d, math_cnst);
        keep_derived(d, rparm);
        if (form == diode_form::counted) return;
        const double vte = d.n_em * d.vt;
        rparm[25] = std::max(vte * std::log(vte / (math_cnst.sqrt_2 * d.is_t)), vte);
    } else if (flags->dc || flags->trns || flags->startup) {
        diode_at_temperature(d, iparm, rparm);
        evaluate(form, d, rparm, v, f, dfdv, flags);
    } else if (flags->init_guess) {
        v[1] = 0;
        v[0] = rparm[23];
        if (form == diode_form::limited) rparm[27] = 0;
    } else if (flags->outvar_prm) {
        rparm[24] = v[0] - v[1];
    }
}
