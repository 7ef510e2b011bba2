// runs.h -- rows of units that one call serves.
#pragma once
#include "models/calls.h"

// Derivatives of the units of a run. They share the store of their template, from which each unit's are fetched behind
// its call.
template <class T>
struct run_derivatives {
    const T* store = nullptr;
    const int* from = nullptr;  // [n] places in the store that count
    int n = 0;
    T* out = nullptr;  // [units of the run][n]

    T* fetch(T* to) const {
        for (int k = 0; k < n; ++k) to[k] = store[from[k]];
        return to + n;
    }
};

// From one unit of a run to the next.
template <class Call>
struct run_steps {
    std::ptrdiff_t unit = 0;
    typename Call::arguments::steps argument{};
    bool operator==(const run_steps&) const = default;
};

// Units of one template at equal distances in all tables. A single unit is a run, too.
template <class Call>
struct unit_run {
    using run_function = void (*)(const unit_run&, bool with_derivatives, flags_class*, dp_class*, math_cnst_class*);
    run_function function = nullptr;  // null: the units are called singly
    int unit = 0, n = 0;              // the first unit; how many
    Call first;
    run_steps<Call> step;
    run_derivatives<typename Call::number> jac;

    int unit_at(int i) const { return unit + static_cast<int>(step.unit) * i; }
};

// Calls a model for all units of a run.
template <class Call, model_function<Call> model>
void call_run(const unit_run<Call>& run, bool with_derivatives, flags_class* flags, dp_class* dp,
              math_cnst_class* math_cnst) {
    const run_steps<Call> step = run.step;
    std::ptrdiff_t unit = run.unit;
    Call c = run.first;
    auto* out = run.jac.out;
    for (int i = run.n; i > 0; --i) {
        Call::arguments::call(model, static_cast<int>(unit), c, flags, dp, math_cnst);
        if (with_derivatives) out = run.jac.fetch(out);
        unit += step.unit;
        Call::arguments::advance(c, step.argument);
    }
}

// The same for explicit blocks with n variables, which each gathers from those of all blocks; those from `first` on it
// writes back. Units of a run that read what others of it write would see it late or early, so there are none.
template <model_function<xbe_call> model, int n, int first>
void call_blocks(const unit_run<xbe_call>& run, bool, flags_class* flags, dp_class* dp, math_cnst_class* math_cnst) {
    const run_steps<xbe_call> step = run.step;
    std::ptrdiff_t unit = run.unit;
    xbe_call c = run.first;
    double* const all = c.all;
    const int* index = c.index;
    constexpr std::size_t at_vr = 4;  // of the arguments: its steps are those of the index
    for (int i = run.n; i > 0; --i) {
        double vr[n > 0 ? n : 1];
#pragma GCC unroll 8
        for (int j = 0; j < n; ++j) vr[j] = all[index[j]];
        c.vr = vr;
        xbe_call::arguments::call(model, static_cast<int>(unit), c, flags, dp, math_cnst);
#pragma GCC unroll 8
        for (int j = first; j < n; ++j) all[index[j]] = vr[j];
        index += step.argument[at_vr];
        unit += step.unit;
        xbe_call::arguments::advance(c, step.argument);
    }
}

// As registrations name them.
template <model_function<ebe_call> model>
constexpr auto run_ebe = call_run<ebe_call, model>;
template <model_function<gbe_call> model>
constexpr auto run_gbe = call_run<gbe_call, model>;
template <model_function<ebe_ac_call> model>
constexpr auto run_ebe_ac = call_run<ebe_ac_call, model>;
template <model_function<gbe_ac_call> model>
constexpr auto run_gbe_ac = call_run<gbe_ac_call, model>;
template <model_function<xbe_call> model, int n, int first>
constexpr auto run_xbe = call_blocks<model, n, first>;
template <model_function<xbe_ac_call> model>
constexpr auto run_xbe_ac = call_run<xbe_ac_call, model>;
