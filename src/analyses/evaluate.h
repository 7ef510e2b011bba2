// evaluate.h -- gathers the arguments of units and calls their models.
#pragma once
#include <tuple>

#include "analyses/run_state.h"
#include "base/at.h"

// Node values to terminals and sensed nodes, branch currents to sensed branches, general variables to their readers.
void ebce_form_arrays(run_state& r);
// General variables to the blocks' own copies.
void gbce_form_arrays(run_state& r);
void form_arrays(run_state& r);  // both

// What units of a family see of unknowns: each copy from where it stands.
template <class Rows>
void gather(run_state& r, const unit_family<Rows>& f) {
    const auto copy = [&](const auto& row) {
        auto& to = f.units.*row.copy;
        const auto* value = table_of(r.c, row.value).data();
        const int* index = numbers_of(f.units.*row.index).data();
        const std::size_t n = to.size();
        for (std::size_t k = 0; k < n; ++k) to[k] = value[index[k]];
    };
    std::apply([&](const auto&... row) { (copy(row), ...); }, Rows::copies);
}

// Raises switches of flags_class while it lives.
template <class... Switch>
class raised {
public:
    explicit raised(Switch&... s) : switches_(s...) { set(1); }
    ~raised() { set(0); }
    raised(const raised&) = delete;
    raised& operator=(const raised&) = delete;

private:
    void set(int on) {
        std::apply([on](auto&... s) { ((s = on), ...); }, switches_);
    }
    std::tuple<Switch&...> switches_;
};

// The units of some runs, for functions and, if with_derivatives, for derivatives.
template <class Rows>
void call_runs(run_state& r, const unit_family<Rows>& f, const std::vector<unit_run<typename Rows::call>>& runs,
               bool with_derivatives) {
    r.flags.jacobian = with_derivatives ? 1 : 0;
    for (const auto& run : runs) {
        if (run.function) {
            run.function(run, with_derivatives, &r.flags, &r.dp, &r.math_cnst);
            continue;
        }
        get_unit(r, f, run.unit);
        if (with_derivatives) run.jac.fetch(run.jac.out);
    }
    r.flags.jacobian = 0;
}
// The held units of a transient, and the curved ones unless what they answered stands.
void call_held(run_state& r, bool with_derivatives);
void call_curved(run_state& r, bool with_derivatives);

// What a unit sees of the unknowns that it shares with others, and back; the reference is never written.
template <class Rows>
void gather_unit(const unit_family<Rows>& f, int u) {
    constexpr auto s = Rows::shared;
    const row_table<int>& index = f.units.*s.index;
    for (int k = index.first[at(u)]; k < index.first[at(u) + 1]; ++k)
        (f.units.*s.copy)[at(k)] = (f.units.*s.value)[at(index.data[at(k)])];
}
template <class Rows>
void scatter_unit(const unit_family<Rows>& f, int u, bool next_iterate = false) {
    constexpr auto s = Rows::shared;
    const row_table<int>& index = f.units.*s.index;
    const std::vector<double>& from = f.units.*(next_iterate ? s.copy_new : s.copy);
    std::vector<double>& to = f.units.*(next_iterate ? s.value_new : s.value);
    const int ref = s.ref_of(f.units);
    for (int k = index.first[at(u)]; k < index.first[at(u) + 1]; ++k)
        if (index.data[at(k)] != ref) to[at(index.data[at(k)])] = from[at(k)];
}

// Every unit, with one switch on: for its once-only parameters, behind those that composites compute; for the
// parameters that outputs read.
void one_time_parms(run_state& r);
void ov_prm(run_state& r);
// Of units of the runs, for local variables and such.
void move_values(const value_moves& m, const double* from, double* to);
