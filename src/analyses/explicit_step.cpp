#include "analyses/explicit_step.h"

#include <algorithm>
#include <cmath>

#include "analyses/run_state.h"
#include "base/at.h"

namespace {
using M = method_settings;

constexpr explicit_rule rules[] = {
    {"feuler", &M::forward_euler, 1, {0.0}, {}, 1.0, {1.0}},
    {"rk4",
     &M::RK4,
     4,
     {0.0, 0.5, 0.5, 1.0},
     {{}, {0.5}, {0.0, 0.5}, {0.0, 0.0, 1.0}},
     1.0 / 6.0,
     {1.0, 2.0, 2.0, 1.0}},
    // Fehlberg 1969; the fourth order is accepted.
    {"rkf45",
     &M::RKF45,
     6,
     {0.0, 1.0 / 4.0, 3.0 / 8.0, 12.0 / 13.0, 1.0, 1.0 / 2.0},
     {{},
      {1.0 / 4.0},
      {3.0 / 32.0, 9.0 / 32.0},
      {1932.0 / 2197.0, -7200.0 / 2197.0, 7296.0 / 2197.0},
      {439.0 / 216.0, -8.0, 3680.0 / 513.0, -845.0 / 4104.0},
      {-8.0 / 27.0, 2.0, -3544.0 / 2565.0, 1859.0 / 4104.0, -11.0 / 40.0}},
     1.0,
     {25.0 / 216.0, 0.0, 1408.0 / 2565.0, 2197.0 / 4104.0, -1.0 / 5.0, 0.0},
     true,
     {1.0 / 360.0, 0.0, -128.0 / 4275.0, -2197.0 / 75240.0, 1.0 / 50.0, 2.0 / 55.0},
     &M::rkf45_tolr,
     &M::rkf45_fctr_min,
     &M::rkf45_fctr_max,
     0.87,
     0.2},
    // Bogacki and Shampine 1989; the third order is accepted.
    {"bs23",
     &M::BS23,
     4,
     {0.0, 1.0 / 2.0, 3.0 / 4.0, 1.0},
     {{}, {1.0 / 2.0}, {0.0, 3.0 / 4.0}, {2.0 / 9.0, 1.0 / 3.0, 4.0 / 9.0}},
     1.0,
     {2.0 / 9.0, 1.0 / 3.0, 4.0 / 9.0, 0.0},
     true,
     {-5.0 / 72.0, 1.0 / 12.0, 1.0 / 9.0, -1.0 / 8.0},
     &M::bs23_tolr,
     &M::bs23_fctr_min,
     &M::bs23_fctr_max,
     0.7937,
     0.3333333},
    {"meuler", &M::modified_euler, 2, {0.0, 1.0}, {{}, {1.0}}, 0.5, {1.0, 1.0}},
    {"heun", &M::Heun, 2, {0.0, 2.0 / 3.0}, {{}, {2.0 / 3.0}}, 1.0, {1.0 / 4.0, 3.0 / 4.0}},
};

// sum = the weighted slopes of the first n stages, in their order; weights of 0 are left out.
void sum_slopes(explicit_class& e, const double* weight, int n, double* sum) {
    const std::size_t n_states = e.state.size();
    bool first = true;
    for (int j = 0; j < n; ++j) {
        const double w = weight[j];
        if (w == 0.0) continue;
        const double* k = e.k[at(j)].data();
        if (first)
            for (std::size_t i = 0; i < n_states; ++i) sum[i] = w * k[i];
        else
            for (std::size_t i = 0; i < n_states; ++i) sum[i] += w * k[i];
        first = false;
    }
}

void set_states(explicit_class& e, const double* weight, int n, double h) {
    double* sum = e.sum.data();
    sum_slopes(e, weight, n, sum);
    const std::size_t n_states = e.state.size();
    const double* old = e.old.data();
    if (double* x = e.first_state)
        for (std::size_t i = 0; i < n_states; ++i) x[i] = old[i] + h * sum[i];
    else
        for (std::size_t i = 0; i < n_states; ++i) *e.state[i] = old[i] + h * sum[i];
}

void take_slopes(explicit_class& e, int stage) {
    double* k = e.k[at(stage)].data();
    const std::size_t n = e.slope.size();
    if (e.first_slope)
        std::copy_n(e.first_slope, n, k);
    else
        for (std::size_t i = 0; i < n; ++i) k[i] = *e.slope[i];
}
}  // namespace

const explicit_rule* rule_of(const method_settings& m) {
    for (const explicit_rule& rule : rules)
        if (m.*rule.word) return &rule;
    return nullptr;
}

void keep_old_states(explicit_class& e) {
    if (e.first_state)
        std::copy_n(e.first_state, e.old.size(), e.old.begin());
    else
        for (std::size_t i = 0; i < e.state.size(); ++i) e.old[i] = *e.state[i];
}

void restore_old_states(explicit_class& e) {
    if (e.first_state)
        std::copy(e.old.begin(), e.old.end(), e.first_state);
    else
        for (std::size_t i = 0; i < e.state.size(); ++i) *e.state[i] = e.old[i];
}

void take_stages(run_state& r, const explicit_rule& rule, double h, bool first_is_known) {
    explicit_class& e = r.explicits;
    const double t = r.slv.now.time_x;
    restore_old_states(e);
    if (!first_is_known) evaluate_explicit(r, t);
    take_slopes(e, 0);
    for (int stage = 1; stage < rule.n_stages; ++stage) {
        set_states(e, rule.a[stage], stage, h);
        evaluate_explicit(r, t + rule.c[stage] * h);
        take_slopes(e, stage);
    }
}

void form_new_states(explicit_class& e, const explicit_rule& rule, double h) {
    set_states(e, rule.b, rule.n_stages, h * rule.scale);
}

double norm_of_step(explicit_class& e, const explicit_rule& rule, double h) {
    double* sum = e.sum.data();
    sum_slopes(e, rule.error, rule.n_stages, sum);
    double norm = 0.0;
    for (std::size_t i = 0; i < e.state.size(); ++i) norm += (h * sum[i]) * (h * sum[i]);
    return std::sqrt(norm);
}

bool moves_between_steps(const run_state& r) {
    const explicit_class& e = r.explicits;
    return e.network || !e.keeping.empty() || !e.resetting.empty() || !e.modulo.empty() || r.c.cct.flag_setrparm ||
           r.c.cct.flag_getrparm || r.c.cct.flag_x_mixed;
}
