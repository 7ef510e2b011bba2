// event_passes.h -- digital events and analog steps in turn under one clock, in a transient.
#pragma once
#include "analyses/events.h"
#include "analyses/run_state.h"

// Each side has a time of its own. A pass of the loop over time is an analog step or a digital event; an event that
// lies within the coming step ends that step just short of itself.
class event_passes {
public:
    // Sets the clock to the start of the block, and makes the pending events ready.
    explicit event_passes(run_state& r);

    bool on() const { return digital_; }
    bool alone() const { return digital_ && !mixed_; }
    // The first analog step is known.
    void start(const run_state& r);

    enum class pass { analog_step, digital_event, end };
    // What the coming pass is; delt may become shorter. A digital one has been made when this returns: the units that
    // are due have fired, with a row of old values before them and one of new values behind. At the end of the run the
    // last digital rows are written.
    pass choose(run_state& r, event_control& events);
    // Behind an accepted analog step, with delt that of the next one: units with analog inputs react.
    void accept(run_state& r);

private:
    void write_rows(run_state& r, int mode, double t);
    pass end(run_state& r);
    pass fire(run_state& r, event_control& events, double t);

    bool digital_, mixed_;
    int mode_before_, mode_behind_;                                 // of the rows of an event
    double t_far_ = 0.0;                                            // s, stands for no event
    double time_anlg_ = 0.0, time_dgtl_ = 0.0, t_next_anlg_ = 0.0;  // s
};
