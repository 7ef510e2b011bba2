#include "models/power_switches.h"

#include <algorithm>

#include "base/flags_class.h"
#include "library/basic/ebes1_class.h"
#include "models/model_functions.h"

void channel_current(double v_on, const double* c, bool both_ways, bool on, double v, double& i, double& g) {
    if (!on) {
        g = c[1];
        i = g * v;
    } else if (both_ways && v < 0.0) {
        diode_current(v_on, c, -v, i, g);
        i = -i;
    } else {
        diode_current(v_on, c, v, i, g);
    }
}

namespace {
enum gate_slot { gate_on, gate_waits, gate_t_on, gate_t_last, gate_before };
}

void delayed_gate::clear() const {
    std::fill(s, s + gate_before + 3, 0.0);
    s[gate_t_last] = -1e300;
}

void delayed_gate::set(bool closed) const {
    s[gate_on] = closed ? 1.0 : 0.0;
    s[gate_waits] = 0.0;
}

bool delayed_gate::take(bool command, double time, bool& by_delay) const {
    if (time < s[gate_t_last])
        std::copy(s + gate_before, s + gate_before + 3, s);
    else
        std::copy(s, s + 3, s + gate_before);
    s[gate_t_last] = time;
    const bool was_on = on();
    by_delay = false;
    if (!command) {
        set(false);
    } else if (!was_on) {
        // A moment further away than the delay is one of an earlier run.
        if (!(s[gate_waits] > 0.5) || s[gate_t_on] > time + t_delay) {
            s[gate_waits] = 1.0;
            s[gate_t_on] = time + t_delay;
        }
        if (time >= s[gate_t_on] - 1e-6 * t_delay) {
            by_delay = t_delay > 0.0;
            set(true);
        }
    }
    return on() != was_on;
}

void delayed_gate::next_break(flags_class* flags) const {
    if (s[gate_waits] > 0.5 && s[gate_t_on] > flags->time_given) flags->time_nextbreak = s[gate_t_on];
}

void bridge_rows(const six_switches& b, const double* v, double* f, ebes1_class* jac, const flags_class* flags) {
    // Switch k + 1 from terminal `from` to terminal `to`.
    struct place {
        int from, to;
    };
    enum terminal { dp, dn, a, n_terminals = 5 };
    constexpr place places[] = {{dp, a}, {a + 2, dn}, {dp, a + 1}, {a, dn}, {dp, a + 2}, {a + 1, dn}};
    if (flags->function) std::fill(f, f + n_terminals, 0.0);
    if (flags->jacobian)
        for (int j = 0; j < n_terminals; ++j) std::fill(jac->dfdv[j], jac->dfdv[j] + n_terminals, 0.0);
    for (int k = 0; k < 6; ++k) {
        const auto [from, to] = places[k];
        const double u = v[from] - v[to];
        double i, g, i_diode, g_diode;
        switch_current(*b.curve, b.on[k] > 0.5, u, i, g);
        diode_current(b.v_diode, b.diode, -u, i_diode, g_diode);
        i -= i_diode;
        g += g_diode;
        if (flags->function) {
            f[from] += i;
            f[to] -= i;
        }
        if (flags->jacobian) {
            jac->dfdv[from][from] += g;
            jac->dfdv[from][to] -= g;
            jac->dfdv[to][from] -= g;
            jac->dfdv[to][to] += g;
        }
    }
}

void averaged_cell(double g, double d, double slope, const double* v, double* f, ebes1_class* jac,
                   const flags_class* flags) {
    const double share[3] = {1.0, -d, d - 1.0};  // of the current, and of the voltages in that of terminal 0
    const double by_d[3] = {0.0, -slope, slope};
    double u = 0.0, u_by_d = 0.0;
    for (int k = 0; k < 3; ++k) {
        u += share[k] * v[k];
        u_by_d += by_d[k] * v[k];
    }
    for (int j = 0; j < 3; ++j) {
        if (flags->function) f[j] = share[j] * (g * u);
        if (!flags->jacobian) continue;
        for (int k = 0; k < 3; ++k) jac->dfdv[j][k] = share[j] * g * share[k];
        jac->dfdvr[j][0] = g * (share[j] * u_by_d + by_d[j] * u);
    }
}

void held_share(double x, double least, double& d, double& slope) {
    d = std::clamp(x, least, 1.0 - least);
    slope = d == x ? 1.0 : 0.0;
}
