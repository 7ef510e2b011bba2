#include "models/jfet.h"

#include "base/math_cnst_class.h"

namespace {
constexpr double t_ref = 300.15;  // K

double silicon_gap(double temp) { return 1.16 - 7.02e-4 * temp * temp / (temp + 1108); }  // eV

// What the junction potential loses on the way from the reference to temp, V.
double potential_shift(double vt, double vt_ref, double temp) {
    return 2 * vt * (1.5 * std::log(temp / t_ref) + silicon_gap(t_ref) / (2 * vt_ref) - silicon_gap(temp) / (2 * vt));
}
}  // namespace

bool adjust_to_temperature(double is, double pb, double m, double tnom, double temp, const math_cnst_class& math_cnst,
                           jfet_temperature& t) {
    constexpr double eg = 1.11;
    const auto thermal = [&](double kelvin) { return math_cnst.boltzmann * kelvin / math_cnst.q; };
    t.vt = thermal(temp);
    t.is_t = is * std::exp(eg / thermal(tnom) - eg / t.vt);
    t.pb_t = pb;
    t.factor = 1;
    if (temp == tnom) return true;
    const double vt_ref = thermal(t_ref);
    const double pb_ref = (pb + potential_shift(thermal(tnom), vt_ref, tnom)) / (tnom / t_ref);
    t.pb_t = temp / t_ref * pb_ref - potential_shift(t.vt, vt_ref, temp);
    const auto growth = [&](double at, double kelvin) {
        return 1 + m * (4e-4 * (kelvin - t_ref) - (at - pb_ref) / pb_ref);
    };
    t.factor = growth(t.pb_t, temp) / growth(pb, tnom);
    t.pb_t = std::max(t.pb_t, std::min(pb, 0.1));
    if (t.factor >= 0) return true;
    t.factor = 1;
    return false;
}
