#include "models/digital_counters.h"

#include <algorithm>

#include "base/halt.h"

namespace {
constexpr int clk = 0, reset = 1, up = 2;

int whole(const counter_form& form) { return (1 << form.n_bits) - 1; }

void stop(const counter_form& form, const char* text) { halt({line(form.name, ": ", text, ". Halting...")}); }

int number_put_out(const counter_form& form, const digital_unit& u) {
    int x = 0;
    for (int k = 0; k < form.n_bits; ++k) x += u.val_out[k] == 1 ? 1 << k : 0;
    return x;
}

void put_number(const counter_form& form, const digital_unit& u, int x) {
    for (int k = 0; k < form.n_bits; ++k) u.put(k, (x >> k) % 2 != 0);
}

void plan_number(const counter_form& form, const digital_unit& u, int x, double delay) {
    for (int k = 0; k < form.n_bits; ++k) u.lparm[k] = (x >> k) % 2;
    u.arm(1, delay);
}

int next_number(const counter_form& form, const digital_unit& u, int x) {
    if (u.is_1(reset)) return form.first;
    if (!u.rises(clk)) return x;
    if (u.is_1(up)) return x >= form.last ? form.first : x + 1;
    return x <= form.first ? form.last : x - 1;
}

double delay_between(const digital_unit& u, int from, int to) {
    return std::max((from & ~to) != 0 ? u.rparm[0] : 0.0, (to & ~from) != 0 ? u.rparm[1] : 0.0);
}
}  // namespace

void run_counter(const counter_form& form, int start, const digital_unit& u) {
    const flags_class* flags = u.flags;
    if (flags->process) {
        const bool cleared = u.is_1(reset);
        for (int k = 0; k < form.n_bits; ++k) u.put(k, cleared ? (form.first >> k) % 2 != 0 : u.lparm[k] == 1);
        u.rest();
        return;
    }
    if (flags->schedule) {
        const int now = number_put_out(form, u), next = next_number(form, u, now);
        next == now ? u.rest() : plan_number(form, u, next, delay_between(u, now, next));
        return;
    }
    if (flags->dc) digital_stop(std::string(form.name) + ": dc not allowed");
    if (flags->one_time_parms) check_delays(u, form.name);
    if (!flags->startup && !flags->init_guess) return;
    if (start < 0 || start > whole(form)) stop(form, "the first number does not fit into the bits");
    put_number(form, u, start);
    flags->startup ? u.rest() : plan_number(form, u, start, 0.0);
}

void run_bounded_counter(const counter_form& form, int start, const digital_unit& u) {
    const flags_class* flags = u.flags;
    if (flags->one_time_parms) {
        if (form.first < 0) stop(form, "state_begin must be gt 0");
        if (form.first >= form.last) stop(form, "state_begin must be lt state_end");
        if (form.last > whole(form))
            stop(form, form.n_bits == 4 ? "state_end must be lt 15" : "state_end must be lt 255");
    }
    if (flags->startup || flags->init_guess) {
        if (start < form.first) stop(form, "q_sv must be gt state_begin");
        if (start > form.last) stop(form, "q_sv must be lt state_end");
    }
    run_counter(form, start, u);
}
