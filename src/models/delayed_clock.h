// delayed_clock.h -- a clock whose pulses are late by an angle that each period takes at its beginning.
#pragma once
#include "models/delay_angles.h"
#include "models/edges.h"

struct flags_class;

// Periods begin at t0 and each t1 + t2 from there, also before. The pulse of a period begins `angle` degrees of it
// later: a rise within dt1, high for the rest of t1, a fall within dt2. Where pulses of two periods meet, the one that
// is farther from low counts. All times in s.
struct delayed_clock {
    double t1, t2, dt1, dt2, t0, low, high;
    delay_angles& held;  // of all units; each period has its angle there until its pulse is over
    int unit;            // running index among them

    double period() const { return t1 + t2; }
    double begin(double time) const;  // of the period that holds this time; 1e-10 s before the next one count as that
    // The pulse of the period that begins then.
    edge_list pulse(edge_store& s, double begins, double angle) const;

    void clear() const;
    // At an accepted point: the period begins with this angle unless it has one; pulses that are over are forgotten,
    // and so are periods that lie ahead, which a step had that is taken back. Halts when no slot is free.
    void take(double angle, double time) const;
    // The value with this angle for a period that has none yet, and its slope by that angle, else 0.
    double value(double angle, double time, double& slope) const;
    void next_break(double angle, double time, double& nextbreak) const;

private:
    double held_angle(double begins, double angle) const;
};
