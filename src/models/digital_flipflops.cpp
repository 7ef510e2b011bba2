#include "models/digital_flipflops.h"

#include <iostream>

namespace {
constexpr int rise = 1, fall = 2;  // what is pending

void put_state(const digital_unit& u, bool q) {
    u.put(0, q);
    u.put(1, !q);
}

// Whether set or reset, alone, is 1; q then is the state that they force.
bool is_forced(const flip_flop_form& form, const digital_unit& u, bool& q) {
    const bool set = form.set >= 0 && u.is_1(form.set), reset = form.reset >= 0 && u.is_1(form.reset);
    if (set && reset) digital_stop(form.both);
    if (set || reset) q = set;
    return set || reset;
}

bool after_edge(const flip_flop_form& form, const digital_unit& u, bool q) {
    const bool a = u.is_1(form.a);
    if (form.b < 0) return a;
    const bool b = u.is_1(form.b);
    if (a && b && form.refuses_both) digital_stop(form.both);
    return a && b ? !q : a || (q && !b);
}

void arm(const digital_unit& u, bool q) {
    u.lparm[0] = q;
    u.arm(q ? rise : fall, u.rparm[q ? 1 : 0]);
}

void begin(const flip_flop_form& form, const digital_unit& u) {
    const flags_class* flags = u.flags;
    if (flags->dc) digital_stop(form.no_dc[0], form.no_dc[1]);
    if (flags->one_time_parms) check_delays(u, form.name);
    if (flags->startup) {
        const int state = u.stparm[0];
        if (state < 0 || state > fall) digital_stop(form.wrong_state);
        if (state == 0) {
            u.rest();
            put_state(u, u.stparm[1] == 1);
        } else {
            arm(u, state == rise);
            put_state(u, state == fall);
        }
    }
    if (flags->init_guess) {
        const bool q = u.stparm[1] == 1;
        put_state(u, q);
        u.lparm[0] = q;
        u.arm(q ? rise : fall, 0.0);
    }
}
}  // namespace

void run_flip_flop(const flip_flop_form& form, const digital_unit& u) {
    const flags_class* flags = u.flags;
    if (flags->process) {
        bool q = u.dstate == rise;  // as lparm[0] has it, which a run from a solution file does not know
        if (u.dstate != rise && u.dstate != fall) digital_stop(form.wrong_state);
        is_forced(form, u, q);
        put_state(u, q);
        u.rest();
        if (form.trace && flags->flag_debug_int) std::cout << form.trace << u.val_out[0] << '\n';
        return;
    }
    if (flags->schedule) {
        bool q = u.val_out[0] == 1;
        if (!is_forced(form, u, q) && form.clk >= 0 && (form.falling_edge ? u.falls(form.clk) : u.rises(form.clk)))
            q = after_edge(form, u, q);
        u.gives(0, q) ? u.rest() : arm(u, q);
        return;
    }
    begin(form, u);
}
