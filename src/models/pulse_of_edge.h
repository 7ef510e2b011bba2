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

    bool is_on(double time) const { return on > 0.5 && t_stop - time > 1e-9 * width; }
    void clear() const { x_last = t_stop = on = 0.0; }
    // At an accepted point with the control x. A pulse that begins ahead of it was of a step that is taken back.
    void take(double x, flags_class* flags) const {
        const double time = flags->time_given;
        const bool was_on = on > 0.5;
        if (was_on && t_stop > time + width * (1.0 + 1e-9)) on = 0.0;
        if (was_on && !is_on(time)) {
            if (on > 0.5) flags->tell_event(-1.0, 0.0, true);  // ends here, its last point is low already
            on = 0.0;
        }
        // The first point of a run has none before it.
        if (flags->iter_trns_1 > 0 && edge.comes(x_last, x) && (again || on < 0.5)) {
            if (on < 0.5) flags->tell_event(-1.0, 0.0, false);
            on = 1.0;
            t_stop = time + width;
        }
        x_last = x;
    }
    // The end of the pulse is a break.
    void next_break(double time, double& nextbreak) const {
        if (is_on(time)) nextbreak = t_stop;
    }
};
