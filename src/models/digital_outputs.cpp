#include "models/digital_outputs.h"

#include <algorithm>

#include "base/numeric.h"

namespace {
constexpr int pending = 1;
constexpr int max_outputs = 4;

enum level { low, high, unknown };

level level_of(const digital_unit& u, int k) { return u.stbl_in[k] != 1 ? unknown : u.val_in[k] == 1 ? high : low; }

// The number of the selected one; -1: not known.
int selected(const digital_unit& u, int s0) {
    const level a = level_of(u, s0), b = level_of(u, s0 + 1);
    return a == unknown || b == unknown ? -1 : a + 2 * b;
}

void put(const digital_unit& u, int k, level y) { y == unknown ? u.put_unknown(k) : u.put(k, y == high); }

bool gives(const digital_unit& u, int k, level y) { return y == unknown ? u.stbl_out[k] != 1 : u.gives(k, y == high); }

// To unknown as in gates: from 1 as a fall, from 0 as a rise.
double delay_to(const digital_unit& u, int k, level y) {
    const bool falls = y == unknown ? u.val_out[k] == 1 : y == low;
    return u.rparm[falls ? 0 : 1];
}

void run_selector(const selector_form& form, const level* y, const digital_unit& u) {
    const flags_class* flags = u.flags;
    if (flags->process) {
        if (u.dstate != pending) digital_stop(form.wrong_state);
        for (int k = 0; k < form.n_out; ++k) put(u, k, y[k]);
        u.rest();
        return;
    }
    if (flags->schedule) {
        bool changes = false;
        double delay = 0.0;
        for (int k = 0; k < form.n_out; ++k) {
            if (gives(u, k, y[k])) continue;
            changes = true;
            delay = std::max(delay, delay_to(u, k, y[k]));
        }
        changes ? u.arm(pending, delay) : u.rest();
        return;
    }
    if (flags->dc) digital_stop(form.no_dc);
    if (flags->one_time_parms) check_delays(u, form.name);
    if (!flags->startup && !flags->init_guess) return;
    const int state = flags->init_guess ? pending : u.stparm[0];
    if (state != 0 && state != pending) digital_stop(form.wrong_state);
    for (int k = 0; k < form.n_out; ++k) put(u, k, state == pending ? low : y[k]);
    state == pending ? u.arm(pending, u.rparm[1]) : u.rest();
}
}  // namespace

void run_multiplexer(const selector_form& form, const digital_unit& u) {
    const int s = selected(u, 4);
    const level y = s < 0 ? unknown : level_of(u, s);
    run_selector(form, &y, u);
}

void run_demultiplexer(const selector_form& form, const digital_unit& u) {
    const int s = selected(u, 1);
    level y[max_outputs];
    for (int k = 0; k < max_outputs; ++k) y[k] = s < 0 ? unknown : k == s ? level_of(u, 0) : low;
    run_selector(form, y, u);
}

int nearest_code(double v, double v_full, int n_bits) {
    double rest = v / v_full * (power_int(2.0, n_bits) - 1) + 0.5;  // code n from n - 0.5 steps on
    int code = 0;
    for (int k = n_bits - 1; k >= 0; --k) {
        const double weight = power_int(2.0, k);
        if (!(rest > weight)) continue;
        rest -= weight;
        code += 1 << k;
    }
    return code;
}

void run_adc(int code, int n_bits, double td, const digital_unit& u) {
    const flags_class* flags = u.flags;
    const auto put_code = [&](int x) {
        for (int k = 0; k < n_bits; ++k) u.put(k, (x >> k) % 2 != 0);
        u.rest();
    };
    if (flags->process) {
        put_code(u.lparm[0]);
    } else if (flags->schedule) {
        bool changes = false;
        for (int k = 0; k < n_bits; ++k) changes |= !u.gives(k, (code >> k) % 2 != 0);
        if (!changes) return u.rest();
        u.lparm[0] = code;
        u.arm(pending, td);
    } else if (flags->dc || flags->startup || flags->init_guess) {
        put_code(code);
    }
}

void run_decimal(const char* name, int n_bits, const digital_unit& u) {
    const flags_class* flags = u.flags;
    int x = 0;
    for (int k = 0; k < n_bits; ++k) x += u.is_1(k) ? 1 << k : 0;
    if (flags->process || flags->startup) {
        u.rparm[0] = x;
        u.rest();
    } else if (flags->schedule) {
        u.rparm[0] == x ? u.rest() : u.arm(pending, u.rparm[1]);
    } else if (flags->dc) {
        digital_stop(std::string(name) + ": dc not allowed");
    } else if (flags->one_time_parms) {
        check_delays(u, name, 1, 1);
    } else if (flags->init_guess) {
        u.rparm[0] = x;
        u.arm(pending, u.rparm[1]);
    }
}
