// unit_family.h -- a family of units as an analysis calls it: its tables, calls, and units put together in runs.
#pragma once
#include <algorithm>
#include <vector>

#include "analyses/slices.h"
#include "base/at.h"
#include "models/registration.h"

// Units of a family by what a transient must call where; other analyses call them all. The calls of pure and of curved
// units have no side effect, and may stand in any order; the others are called in the order of the units.
//   held      pure and timeless, and wanted at accepted points: for a derivative, or since an output shows a current.
//             They stand while the variables do: an accepted point is the first iterate of the next step.
//   accepted  other pure ones that are wanted at accepted points; of blocks all pure ones
//   left_out  other pure ones; their currents are found at the end of the block
//   curved    timeless ones whose derivatives change. What they answer stands while the variables do: an accepted point
//             calls them with derivatives, which the first iterate of the next step takes.
//   changing  all others; they are called at accepted points, for their histories. Of small signals those whose model
//             asks for the frequency; the others are held.
template <class Call>
struct family_runs {
    using run = unit_run<Call>;
    std::vector<run> held, accepted, left_out, curved, changing;
    std::vector<run> with_ddt;           // again those of the rest that own a function with a derivative
    std::vector<std::vector<int>> from;  // [templates] places in the jac store that some unit adds
    std::vector<int> shown;              // units whose output slots, of small signals currents, are in some file
};

template <class Rows>
struct unit_family {
    static constexpr int elements = Rows::elements;
    static constexpr auto slots = Rows::slots;
    using call_type = typename Rows::call;
    typename Rows::units& units;
    const basic_library& lib;
    std::vector<typename Rows::jac> jac{};  // [templates, at least 1]
    std::vector<call_type> call{};          // [units]
    family_runs<call_type> runs{};          // of the present plan

    int n() const { return units.unit.n; }
    int entry(int u) const { return units.unit.i_lib[at(u)]; }  // template of a unit
    bool has(std::vector<int> entry_flags::*word, int u) const { return (lib.flag.*word)[at(entry(u))] != 0; }
};

// Whether a unit goes on with a run: then its steps are those from the last unit to this one.
template <class Rows>
bool joins(const unit_family<Rows>& f, unit_run<typename Rows::call>& run, int u) {
    const auto& call = f.call[at(u)];
    if (!run.function || call.function != run.first.function || f.entry(u) != f.entry(run.unit)) return false;
    const int last = run.unit_at(run.n - 1);
    const run_steps<typename Rows::call> step{u - last, Rows::call::arguments::between(f.call[at(last)], call)};
    if (run.n > 1 && step != run.step) return false;
    run.step = step;
    ++run.n;
    return true;
}

// Units as runs, in the given order. Without the template's own function of runs, as for a model that was put in its
// place, and where alone(u), units are called singly.
template <class Rows, class Alone>
std::vector<unit_run<typename Rows::call>> make_runs(const unit_family<Rows>& f, const std::vector<int>& units,
                                                     Alone alone) {
    std::vector<unit_run<typename Rows::call>> runs;
    for (const int u : units) {
        const bool single = alone(u);
        if (!single && !runs.empty() && joins(f, runs.back(), u)) continue;
        unit_run<typename Rows::call> run;
        run.first = f.call[at(u)];
        const auto* model = find_registration<typename Rows::call>(f.lib.list.entry[f.entry(u)]);
        if (!single && run.first.function && model && model->function == run.first.function) run.function = model->run;
        run.unit = u;
        run.n = 1;
        runs.push_back(run);
    }
    return runs;
}

// For each template the places of its jac store that some unit adds, ascending.
inline std::vector<std::vector<int>> used_places(const slot_table& slot, const unit_core& unit, int n_template) {
    std::vector<std::vector<int>> from(at(std::max(n_template, 1)));
    for (int u = 0; u < unit.n; ++u)
        for (int k = slot.first_jac[at(u)]; k < slot.first_jac[at(u) + 1]; ++k)
            from[at(unit.i_lib[at(u)])].push_back(slot.from_jac[at(k)]);
    for (std::vector<int>& f : from) {
        std::sort(f.begin(), f.end());
        f.erase(std::unique(f.begin(), f.end()), f.end());
    }
    return from;
}

// The runs whose derivatives are fetched, in the order of the calls.
template <class Rows, class F>
void for_fetched_runs(unit_family<Rows>& f, F each) {
    for (auto* runs : {&f.runs.held, &f.runs.accepted, &f.runs.left_out, &f.runs.curved, &f.runs.changing})
        for (auto& run : *runs) each(run);
}

// Gives the units of runs their places in an array d of derivatives, behind the n_d that are given away.
template <class Rows>
std::vector<int> place_derivatives(unit_family<Rows>& f, int& n_d) {
    std::vector<int> first_d(at(f.n()), 0);
    for_fetched_runs(f, [&](const auto& run) {
        for (int i = 0; i < run.n; ++i) {
            first_d[at(run.unit_at(i))] = n_d;
            n_d += static_cast<int>(f.runs.from[at(f.entry(run.unit))].size());
        }
    });
    return first_d;
}

// Where derivative `from_jac` of unit u stands in d.
template <class Rows>
int place_of_derivative(const unit_family<Rows>& f, const std::vector<int>& first_d, int u, int from_jac) {
    const std::vector<int>& from = f.runs.from[at(f.entry(u))];
    return first_d[at(u)] + static_cast<int>(std::lower_bound(from.begin(), from.end(), from_jac) - from.begin());
}

template <class Rows, class T>
void bind_derivatives(unit_family<Rows>& f, const std::vector<int>& first_d, T* d) {
    for_fetched_runs(f, [&](auto& run) {
        const int s = f.entry(run.unit);
        const std::vector<int>& from = f.runs.from[at(s)];
        run.jac = {f.jac[at(s)].store.data(), from.data(), static_cast<int>(from.size()), d + first_d[at(run.unit)]};
    });
}
