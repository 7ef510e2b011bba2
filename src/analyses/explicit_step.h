// explicit_step.h -- steps of Runge-Kutta rules over the states of explicit blocks.
#pragma once
#include <string_view>

#include "analyses/explicit.h"
#include "settings/method_settings.h"

// A rule by its published table. Stage i stands at t + c[i] h with the states old + h sum(a[i][j] k[j]); the new states
// are old + (h scale) sum(b[j] k[j]); error: weights of the difference of two orders, none in rules of fixed steps.
struct explicit_rule {
    static constexpr int most = explicit_class::max_stages;
    std::string_view name;  // of its loop
    truefalse method_settings::*word;
    int n_stages;
    double c[most];
    double a[most][most];
    double scale;
    double b[most];
    bool adaptive = false;
    double error[most] = {};
    // Of adaptive rules: the words of their tolerance, the factors of a step, and s = safety (tolerance / norm)^power.
    double method_settings::*tolerance = nullptr;
    double method_settings::*smallest_factor = nullptr;
    double method_settings::*largest_factor = nullptr;
    double safety = 0.0, power = 0.0;
};
// The rule that the present block names; null: none.
const explicit_rule* rule_of(const method_settings& m);

// The present states become the old ones.
void keep_old_states(explicit_class& e);
// And back.
void restore_old_states(explicit_class& e);
// The slopes of all stages from the old states on, which are put back first. first_is_known: those of the first stage
// are what the last evaluation gave.
void take_stages(run_state& r, const explicit_rule& rule, double h, bool first_is_known);
// The new states, of the stages' slopes.
void form_new_states(explicit_class& e, const explicit_rule& rule, double h);
// The error of the step: the root of the sum of squares over all states.
double norm_of_step(explicit_class& e, const explicit_rule& rule, double h);

// Whether something besides the states moves between the end of a step and the beginning of the next, so that the
// first slopes are to be found anew.
bool moves_between_steps(const run_state& r);
