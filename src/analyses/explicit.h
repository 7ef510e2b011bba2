// explicit.h -- explicit blocks at one point of time: their values, the slopes of their states, their histories.
#pragma once
#include <array>
#include <memory>
#include <vector>

#include "models/runs.h"

struct run_state;
struct explicit_network;

// What a run keeps of its explicit blocks besides their tables. Filled by prepare_explicit; nothing is taken from the
// heap behind it.
struct explicit_class {
    explicit_class();
    ~explicit_class();

    // In the order of their calls: sources, delays, the passes; then the integrators.
    std::vector<unit_run<xbe_call>> outputs, slopes;
    std::vector<int> limiting, keeping, resetting;  // units with limit_tstep, save_history, reset
    // A state that its block has limits for: where it stands, and its range [low, high).
    struct modulo_range {
        double* value;
        const double* limits;  // [2]
        int state;             // its number; -1: no state
    };
    std::vector<modulo_range> modulo;

    // States: where each stands, and where its block leaves its slope.
    std::vector<double*> state;           // [states]
    std::vector<const double*> slope;     // [states]
    double* first_state = nullptr;        // of states that stand one behind the other; null: they do not
    const double* first_slope = nullptr;  // the same of slopes
    std::vector<double> old;              // [states] values at the beginning of the step
    static constexpr int max_stages = 6;
    std::array<std::vector<double>, max_stages> k;  // [stage][states] slopes
    std::vector<double> sum;                        // [states] work space

    std::unique_ptr<explicit_network> network;  // null: blocks are evaluated one after another

    int n_states() const { return static_cast<int>(state.size()); }
};

// The calls of the present block of the deck, in order, as units stand now. With flags->x_matrix blocks are solved
// together, else one after another. Models must be bound.
void prepare_explicit(run_state& r);

// All blocks at the time t, s, with the states as they stand: outputs, then slopes.
void evaluate_explicit(run_state& r, double t);

// First values of all blocks, from their first guesses; tables are cleared before.
void init_guess_explicit(run_state& r);
// Derived constants of all blocks; the caller has raised flags.one_time_parms.
void one_time_parms_explicit(run_state& r);

// ---- at accepted points ----
void xbe_save_history(run_state& r);
// Blocks that begin anew write their states.
void xbe_reset(run_state& r);
// States beyond the range of their blocks come back into it, in the present point and in the old one.
void xbce_modulo(run_state& r);

// ---- breaks ----
// All blocks that limit the step tell their next break.
void xbe_find_nextbreak(run_state& r);
// Those whose break is passed by, or hangs on their history, tell it again.
void check_tnext1_x(run_state& r);
// The step ahead ends at the earliest break that is delt_min_x ahead or more.
void check_tnext2_x(run_state& r);

// ---- beside a circuit ----
// General variables to the blocks that read them; explicit variables to the units of a circuit that read them.
void assign_xbeu_gvr(run_state& r);
void assign_xvr(run_state& r);
