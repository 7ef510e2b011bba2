// power_switches.h -- switches that conduct both ways and their gates, the six-switch bridge, averaged cells.
#pragma once

struct ebes1_class;
struct flags_class;
struct switch_curve;

// ---- the channel

// On: i = (v - v_on)/r_on beyond the knee, g_off v below it; with both_ways the same for currents from n to p, and with
// v_on 0 a plain resistor. c: as diode_constants fills it. Off: i = g_off v.
void channel_current(double v_on, const double* c, bool both_ways, bool on, double v, double& i, double& g);

// A thyristor with the holding current i_h, A, at an accepted point: whether it conducts from now on.
inline bool latches_on(bool on, bool fired, double v, double i, double i_h) {
    return (fired && v > 0.0) || (on && i >= i_h);
}

// ---- the gate

// A gate that closes its switch t_delay, s, after its command has come, and opens it with the end of the command. It
// stands in a unit's parameters: on, waits, t_on, the time of the last accepted point, and the first three as they were
// at the point before. A time that does not lie ahead is that of a step that is repeated, and begins with those.
struct delayed_gate {
    double* s;  // [7]
    double t_delay;
    bool on() const { return s[0] > 0.5; }
    void clear() const;
    void set(bool closed) const;  // at once, as in DC and start-up
    // At an accepted point. True: the switch is another one from here on; by_delay: since the delay is over.
    bool take(bool command, double time, bool& by_delay) const;
    // The end of the delay, if one is running.
    void next_break(flags_class* flags) const;
};

// ---- the bridge of six switches with diodes

// Terminals dp dn a b c. Switches in the order of firing: 1 3 5 from dp to a b c, 4 6 2 from a b c to dn; the diode of
// each conducts the other way. Diodes: c as diode_constants fills it. on: above 0.5 of those that are closed, [6].
struct six_switches {
    switch_curve* curve;
    double v_diode;
    const double* diode;
    const double* on;
};
void bridge_rows(const six_switches& b, const double* v, double* f, ebes1_class* jac, const flags_class* flags);

// ---- averaged cells

// What a change-over switch does in the mean over its periods when it joins terminal 0 through g, S, to terminal 1 for
// the share d of the time, 0 .. 1, and else to terminal 2: the mean voltage of terminal 0 is
// d v(1) + (1 - d) v(2) + i(0)/g, and its current divides by the same shares. slope: of d by variable 0 of the unit.
void averaged_cell(double g, double d, double slope, const double* v, double* f, ebes1_class* jac,
                   const flags_class* flags);
// A share by a variable x, held within least .. 1 - least; slope 0 where it is held.
void held_share(double x, double least, double& d, double& slope);
