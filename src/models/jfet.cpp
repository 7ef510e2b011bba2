#include "models/jfet.h"

#include "models/silicon.h"

bool adjust_to_temperature(double is, double pb, double m, double tnom, double temp, const math_cnst_class& math_cnst,
                           jfet_temperature& t) {
    constexpr double eg = 1.11;
    const auto thermal = [&](double kelvin) { return math_cnst.boltzmann * kelvin / math_cnst.q; };
    t.vt = thermal(temp);
    t.is_t = is * std::exp(eg / thermal(tnom) - eg / t.vt);
    const silicon si{math_cnst, temp, tnom};
    t.pb_t = si.potential(pb);
    t.factor = si.capacitance_factor(pb, t.pb_t, m);
    if (temp != tnom) t.pb_t = std::max(t.pb_t, std::min(pb, 0.1));
    if (t.factor >= 0) return true;
    t.factor = 1;
    return false;
}
