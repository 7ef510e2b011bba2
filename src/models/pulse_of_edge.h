// pulse_of_edge.h -- monostables: an edge of a control signal starts a pulse of a given length.
#pragma once
#include <cmath>

#include "base/flags_class.h"
#include "models/control_edges.h"

// As it stands in a unit's parameters. Edges are seen from one accepted point to the next; the pulse acts behind the
// point that starts it.
struct pulse_of_edge {
    control_edge edge;
    double width;                  // s
    bool again;                    // an edge within the pulse starts it anew
    double &x_last, &t_stop, &on;  // last accepted control, end of the pulse, 1 while it lasts

    // At its end it is over, whatever the rounding of the time.
    bool is_on(double time) const { return on > 0.5 && t_stop - time > 1e-9 * width + 1e-15 * std::fabs(t_stop); }
    void clear() const { x_last = t_stop = on = 0.0; }
    // At an accepted point with the control x. A pulse that begins ahead of it was of a step that is taken back.
    void take(double x, flags_class* flags) const {
        const double time = flags->time_given;
        if (on > 0.5 && t_stop > time + width * (1.0 + 1e-9)) on = 0.0;
        if (!is_on(time)) on = 0.0;
        // The first point of a run has none before it.
        if (flags->iter_trns_1 > 0 && edge.comes(x_last, x) && (again || on < 0.5)) {
            if (on < 0.5) flags->tell_event(x_last - edge.level, x - edge.level, false);
            on = 1.0;
            t_stop = time + width;
        }
        x_last = x;
    }
    // The end of the pulse is a break, where it jumps.
    void next_break(flags_class* flags) const {
        if (!is_on(flags->time_given)) return;
        flags->time_nextbreak = t_stop;
        flags->break_jumps = flags->event_restart ? 1 : 0;
    }
};
