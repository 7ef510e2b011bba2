// digital.h -- digital elements: a unit waits for its time, fires, and the units that read what it changed may arm
// themselves in turn.
#pragma once
#include <cstdint>
#include <vector>

#include "analyses/event_queue.h"
#include "models/calls.h"

struct run_state;
struct dbeu_class;

// What a run keeps of the digital side beside the tables of dbeu_class. Levels are 0, 1, or 2 for unknown.
struct digital_class {
    struct node_levels {
        std::int8_t now = 2;    // as units have put it out; dbeu.dvar takes it when the event is over
        std::int8_t old = 2;    // before the present event
        std::int8_t moved = 0;  // listed in `moved`
        std::int8_t feeds_analog = 0;
    };
    std::vector<dbe_call> call;                    // [units]
    std::vector<node_levels> node;                 // [n_nd]
    std::vector<int> moved;                        // nodes whose level may differ from dbeu.dvar
    std::vector<int> changed;                      // nodes whose dbeu.dvar the present event has changed
    std::vector<int> with_analog;                  // units that read analog nodes
    std::vector<int> stbl_in, val_in, val_in_old;  // inputs of the unit that is called
    event_queue pending;
    unit_set due, to_schedule;
    // A parameter of an instance that some file shows, and that of the unit behind it: places in the tables.
    struct shown_parameter {
        int unit, instance;
    };
    std::vector<shown_parameter> shown;
};

// The model of every unit with its parameters alone.
void call_digital_models(run_state& r);
// Every unit, with the switches that are on: outputs go to the nodes at once, so that later units see them.
// dbeu.dvar is old before and has all outputs behind.
void call_all_digital(run_state& r);
// First guesses: all levels unknown, nothing kept, then every model under init_guess.
void dbe_init_guess(run_state& r);
// Behind a solution file, which has levels of nodes alone: what units have put out is what stands there.
void take_levels_as_outputs(dbeu_class& units);
// Where nothing was solved before that file was read: whether a unit has an event pending whose outcome it keeps in
// numbers that the file has not.
bool forgets_plans(const dbeu_class& units);
// The levels that the block sets.
void set_dgtl(run_state& r);
// Passes over all units under startup until no level changes; the first from nothing begins with unknown levels, and
// with those that the block sets. Halts after n_pass_dgtl of them.
void digital_passes(run_state& r, bool from_nothing);

// Levels and pending events of the tables become those of the event engine; before the first event of a transient.
void begin_events(run_state& r);
// The time of the next event, t_far if none is pending.
double next_event(run_state& r, double t_far);
// Fires all units that are due at time t, in their order. Gives whether an electrical unit sees a level that changed.
bool dbe_process(run_state& r, double t);
// Lets the units react that read what the event has changed, unless they are pending.
void dbe_schedule(run_state& r);
// Lets units with analog inputs react, at flags.time_given.
void dbe_schedule_anlg(run_state& r);
// Analog nodes to the units that read them.
void assign_dbeu_anlg(run_state& r);

// Parameters that models of digital units wrote, to the instances whose outputs show them; which these are.
void plan_digital_outputs(run_state& r);
void show_digital_parameters(run_state& r);
