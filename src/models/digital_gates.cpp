#include "models/digital_gates.h"

namespace {
void start(const gate_form& form, const digital_unit& u, int state, bool known, bool value) {
    switch (state) {
        case gate_state::none:
            u.rest();
            known ? u.put(0, value) : u.put_unknown(0);
            return;
        case gate_state::rise:
            u.arm(state, u.rparm[1]);
            u.put(0, false);
            return;
        case gate_state::fall:
            u.arm(state, u.rparm[0]);
            u.put(0, true);
            return;
        default:
            digital_stop(std::string(form.name) + ": wrong condition in start-up");
    }
}
}  // namespace

void begin_gate(const gate_form& form, const digital_unit& u, bool known, bool value) {
    if (u.flags->dc) digital_stop(std::string(form.name) + ".dbe: dc not allowed.", "  Halting...");
    if (u.flags->one_time_parms) check_delays(u, form.name);
    if (u.flags->startup) start(form, u, u.stparm[0], known, value);
    // An inverter begins with its output at 1 on the way to 0.
    if (u.flags->init_guess) start(form, u, form.keeps_plan ? gate_state::fall : gate_state::rise, known, value);
}
