// digital_unit.h -- one digital unit in a call: its inputs, its outputs, and the event that it leaves pending.
#pragma once
#include <string>

#include "base/flags_class.h"

// The arguments of a digital model, in their order. A unit is at rest (stbl 1), or an event is pending (stbl 0) that
// fires at t_next, s; dstate says which, 0 for none. An input or output is 0, 1, or unknown.
struct digital_unit {
    const int* iparm;
    double* rparm;
    const int *stparm, *igparm;
    int* lparm;  // what the unit keeps between calls
    const int* stbl_in;
    int* stbl_out;
    const int* val_in;  // meaningless where stbl_in is 0
    int* val_out;
    const int* val_in_old;   // before this event; 0 where that was unknown
    const double* val_anlg;  // V
    int &dstate, &stbl;
    double& t_next;
    const flags_class* flags;

    bool is_1(int k) const { return stbl_in[k] == 1 && val_in[k] == 1; }
    bool rises(int k) const { return is_1(k) && val_in_old[k] != 1; }
    bool falls(int k) const { return stbl_in[k] == 1 && val_in[k] != 1 && val_in_old[k] == 1; }

    bool gives(int k, bool level) const { return stbl_out[k] == 1 && (val_out[k] == 1) == level; }
    void put(int k, bool level) const {
        stbl_out[k] = 1;
        val_out[k] = level ? 1 : 0;
    }
    void put_unknown(int k) const { stbl_out[k] = 0; }

    void rest() const {
        stbl = 1;
        dstate = 0;
    }
    void arm(int state, double delay) const {
        stbl = 0;
        dstate = state;
        t_next = flags->time_given + delay;
    }
};

// Halts with the line and, where it is not empty, the second one.
[[noreturn]] void digital_stop(const std::string& text, const char* second = "");
// Parameters 0 and 1 (of converters one alone, at `first`) are delays, s: not below 0, or the run stops.
void check_delays(const digital_unit& u, const char* name, int first = 0, int n = 2);
