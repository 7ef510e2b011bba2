// digital_gates.h -- gates: one output that follows a truth function of all inputs after a delay.
#pragma once
#include "models/digital_unit.h"

// rparm[0], rparm[1]: delays to a falling and to a rising output; stparm[0]: the state that a start-up begins in.
struct gate_form {
    const char* name;
    int n_in;
    bool keeps_plan = false;  // delivers what was planned, whatever the inputs are by then
};

// What is pending: a rise, a fall, or a way to unknown; from where.
namespace gate_state {
enum code { none, rise, rise_from_unknown, fall, fall_from_unknown, lost_from_0, lost_from_1 };
}

// Where the calls begin: dc is refused, start-up takes the state of stparm, a first guess is a change under way.
void begin_gate(const gate_form& form, const digital_unit& u, bool known, bool value);

// truth(const int* val_in) gives the output for known inputs. The output is known when all inputs are, also beside one
// that would decide it alone.
template <class Truth>
inline void run_gate(const gate_form& form, const digital_unit& u, Truth truth) {
    const flags_class* flags = u.flags;
    bool known = true;
    for (int k = 0; k < form.n_in; ++k) known = known && u.stbl_in[k] == 1;
    const bool value = truth(u.val_in);
    if (flags->process) {
        const bool plan = form.keeps_plan;
        if (plan ? u.dstate > gate_state::fall_from_unknown : !known)
            u.put_unknown(0);
        else
            u.put(0, plan ? u.dstate < gate_state::fall : value);
        u.rest();
        return;
    }
    if (flags->schedule) {
        const double fall = u.rparm[0], rise = u.rparm[1];
        const bool known_out = u.stbl_out[0] == 1, out = u.val_out[0] == 1;
        if (known_out == known && (!known_out || out == value))
            u.rest();
        else if (!known)
            u.arm(out ? gate_state::lost_from_1 : gate_state::lost_from_0, out ? fall : rise);
        else if (!known_out)
            u.arm(value ? gate_state::rise_from_unknown : gate_state::fall_from_unknown, value ? rise : fall);
        else
            u.arm(value ? gate_state::rise : gate_state::fall, value ? rise : fall);
        return;
    }
    begin_gate(form, u, known, value);
}
