// events.h -- event_restart: where the circuit jumps, a rule of second order ends its step and starts anew.
#pragma once
#include <vector>

#include "analyses/run_state.h"

// Steps about the jumps of a circuit, while a rule of second order heeds them (the word event_restart).
//
// A unit tells at a converged point that a state of it has changed, and at which share of the step. The step is then
// cut short of that share and solved again, until the change comes in a step of the smallest size. Behind it the
// circuit is let come to rest by steps of that size, for units that answer to others; then one step of usual size
// follows. All these are made by backward Euler, which knows nothing of the rates before the jump. A source that jumps
// at a break is crossed by a step of the smallest size as well. Under TR-BDF2, whose error test resumes behind them,
// two steps of 10 and 100 times the smallest size stand for the one of usual size: they let modes die that are faster
// than any step, and that its estimate of the error would see for long. gear2_fixed, whose step cannot change, makes
// the next step by backward Euler and no more. A run begins as behind an event under TR-BDF2, and where it starts from
// nothing.
//
// Nothing is allocated behind the constructor.
class event_control {
public:
    explicit event_control(const run_state& r);

    bool on() const { return on_; }
    // The coming try, which may have been cut, is one of backward Euler.
    bool by_back_euler() const { return be_; }

    // At an accepted point, before the first try of the next step.
    void begin_step(run_state& r);
    // Behind a converged solve from one time to another, s, of the present try, at its end or at the end of a stage:
    // true if the try is to be made again with the shorter delt that stands now. Histories are those of begin_step
    // then.
    bool cut(run_state& r, double from, double t, bool ends = true);
    // A step that the error test rejects at its smallest size spans a jump that no unit tells of, as where a diode
    // turns off: it is made by backward Euler. Gives true.
    bool take_as_event(run_state& r);
    // Such steps since the last one that the error test has passed.
    int n_crossed() const { return n_crossed_; }
    // Behind a try that failed.
    void restore_histories(run_state& r);
    // At the point just accepted.
    void accept(const run_state& r);
    // delt of the next step, as the rule wants it, becomes what events ask for. Gives whether breaks may shorten it.
    bool choose_step(run_state& r);
    // The same behind the breaks.
    void take_break(run_state& r);
    // A digital level that electrical units see has changed: the coming step, which begins before it, crosses a jump.
    void jump();

private:
    struct values {
        double* real;
        int* whole;
        int n_real, n_whole;
    };
    int rests() const { return error_test_ ? 2 : 1; }
    void add_history(double* real, int n_real, int* whole, int n_whole);

    bool on_ = false;
    bool sizes_ = false;                           // steps may be cut
    bool keeps_const_ = false;                     // the rule's step is delt_const
    bool error_test_ = false;                      // TR-BDF2
    double smallest_ = 0.0;                        // s
    enum { usual, smallest, rest } size_ = usual;  // of the present step
    bool be_ = false, event_ = false, was_cut_ = false;
    int n_small_ = 0;        // steps of the smallest size in a row
    int n_rests_ = 0;        // steps by backward Euler that are due behind these
    int n_cuts_ = 0;         // of the present step
    int n_crossed_ = 0;      // steps taken as events
    int n_near_ = 0;         // cuts and steps of the smallest size until near_end_
    double near_end_ = 0.0;  // s
    double usual_ = 0.0;     // s, the step that the rule goes on with
    double t_known_ = 0.0;   // s, an event has come by then; not ahead: none is known
    double t_jump_ = 0.0;    // s, a source jumps there; not ahead: no jump is near

    std::vector<values> history_;
    std::vector<double> kept_real_;
    std::vector<int> kept_whole_;
};
