#include "analyses/ssw.h"

#include <algorithm>
#include <cmath>

#include "analyses/convergence.h"
#include "analyses/plan.h"
#include "analyses/rparm_passes.h"
#include "analyses/shot.h"
#include "analyses/solution_vector.h"
#include "analyses/unknown_names.h"
#include "base/at.h"
#include "base/halt.h"
#include "base/numeric.h"
#include "settings/output_block.h"
#include "sparse/dense.h"
#include "sparse/eigenvalues.h"

namespace {
constexpr int most_for_multipliers = 300;  // states; the work grows with the third power

void check_states(const run_state& r) {
    const int n = r.ssw.n_statevar();
    if (n == 0) halt({"solve_ssw: n_statevar = 0?!", "  Halting..."});
    if (n < 2 && !r.slv.method.ssw_known_period)
        halt({"solve_ssw: n_statevar < 2", "   is not allowed when period is not known.", "   Halting..."});
}

void take_states(run_state& r) {
    for (int i = 0; i < r.ssw.n_statevar(); ++i) r.ssw.x_ssw[at(i)] = r.mat.svec[at(r.ssw.statevar_indx[at(i)])];
}
void put_states(run_state& r) {
    for (int i = 0; i < r.ssw.n_statevar(); ++i) r.mat.svec[at(r.ssw.statevar_indx[at(i)])] = r.ssw.x_ssw[at(i)];
}

// I less the map. With an unknown period, the column of the state that stands still is that of the period.
void form_ssw_mat(run_state& r) {
    ssw_class& s = r.ssw;
    const int n = s.n_statevar();
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            const std::size_t k = at(i) * at(n) + at(j);
            const bool period = !r.slv.method.ssw_known_period && j == s.i_statevar_period;
            s.ssw_mat[k] = period ? -s.dxdt_ssw[at(i)] : (i == j ? 1.0 : 0.0) - s.map[k];
        }
}

void print_system(const ssw_class& s) {
    const int n = s.n_statevar();
    say("solve_ssw: ssw_mat is");
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) say(line("  i=", i, "  j=", j, "  ssw_mat=", s.ssw_mat[at(i) * at(n) + at(j)]));
    for (int i = 0; i < n; ++i) say(line("  i=", i, " rhs_ssw=", s.rhs_ssw[at(i)]));
}

// Each entry of the end against that of the shot before. Where a part k alone of the last correction was taken, the
// change is k of what it is by a whole one.
bool spice_test_passes(const run_state& r) {
    const mat_class& mat = r.mat;
    const bool damped = r.slv.method.ssw_dmp && r.ssw.ssw_iter_newton - 1 <= r.slv.method.ssw_dmp_newt_max;
    const double part = damped ? r.slv.method.ssw_dmp_k : 1.0;
    bool passes = true;
    for (int i = 0; i < mat.n_svec; ++i) {
        if (!(mat.del_spice[at(i)] <= r.slv.method.norm_large)) halt({"solve_ssw: spice norm too large. Halting..."});
        passes &= mat.del_spice[at(i)] <= part * mat.tol_spice[at(i)];
    }
    return passes;
}

bool converged(run_state& r) {
    const solve_class& slv = r.slv;
    const bool first = r.ssw.ssw_iter_newton == 0;
    const bool by_rhs = r.ssw.rhs_ssw_norm < slv.method.ssw_norm;
    if (!slv.method.ssw_chk_spice) return by_rhs;
    if (first) return slv.method.ssw_chk_rhs2 && by_rhs;
    r.mat.svec_old = r.ssw.svec_shot;
    compute_norm_spice(r.mat, slv);
    return spice_test_passes(r) && (by_rhs || !slv.method.ssw_chk_rhs2);
}

// A state that keeps what it starts with, whatever that is: the map has the eigenvalue 1, and no start is better than
// another. The one that keeps most of itself is told.
void check_determined(const run_state& r) {
    const ssw_class& s = r.ssw;
    const int n = s.n_statevar();
    if (!r.slv.method.ssw_known_period || n > most_for_multipliers) return;
    const auto found = eigenvalues(s.map, n);
    if (std::none_of(found.begin(), found.end(), [](const auto& x) { return std::abs(x - 1.0) < 1e-10; })) return;
    const auto lost = [&](int i) { return std::fabs(s.ssw_mat[at(i) * at(n) + at(i)]); };
    int state = 0;
    for (int i = 1; i < n; ++i)
        if (lost(i) < lost(state)) state = i;
    halt({"solve_ssw: a period leaves some state as it was,", "   so that the circuit has no steady state of its own.",
          line("   Check ", name_of_unknown(r.c, r.mat, s.statevar_indx[at(state)])), "   Halting..."});
}

void correct_start(run_state& r, int marker) {
    solve_class& slv = r.slv;
    ssw_class& s = r.ssw;
    const int n = s.n_statevar();
    check_determined(r);
    // x + d = end + map d, so that I less the map times d is the end less the start.
    std::vector<double> miss = s.rhs_ssw;
    for (double& x : miss) x = -x;
    mat_solve(n, s.ssw_mat.data(), s.inverse.data(), miss.data(), s.delx_ssw.data(), s.p1.data(), s.p2.data(),
              s.p3.data());
    if (slv.method.ssw_dmp && s.ssw_iter_newton <= slv.method.ssw_dmp_newt_max)
        for (double& d : s.delx_ssw) d *= slv.method.ssw_dmp_k;
    for (int i = 0; i < n; ++i) {
        if (slv.method.ssw_known_period || i != s.i_statevar_period) {
            s.x_ssw[at(i)] = s.x_ssw_old[at(i)] + s.delx_ssw[at(i)];
            continue;
        }
        slv.method.ssw_period += s.delx_ssw[at(i)];
        if (!(slv.method.ssw_period >= 5.0 * slv.method.delt_const))
            halt({"solve_ssw: period too small.", line("  period=", slv.method.ssw_period)});
        if (s.ssw_iter_newton >= 1 && i == marker) s.x_ssw[at(i)] = s.x_ssw_old[at(i)];
    }
}

// The other unknowns begin a shot where they are expected to end it: at the end of the last one, moved by what its
// derivatives say to the change of the states. The trapezoidal rule takes its first rates from them.
void move_others(run_state& r) {
    const ssw_class& s = r.ssw;
    const std::size_t n_svec = at(r.mat.n_svec);
    for (int j = 0; j < s.n_statevar(); ++j) {
        const double change = s.x_ssw[at(j)] - s.x_ssw_old[at(j)];
        const double* column = s.sens_ssw.data() + at(j) * n_svec;
        for (std::size_t i = 0; i < n_svec; ++i) r.mat.svec[i] += column[i] * change;
    }
}

// ---- multipliers ----

// The trapezoidal rule begins with rates that are no states, so that its derivatives by these alone are not those of a
// map of states.
void find_map(run_state& r) {
    if (!r.slv.method.trapezoidal && !r.slv.method.trapezoidal_auto) return;
    const std::vector<double> end = r.mat.svec;
    solve_ssw_1(r, shot::map_only);
    r.mat.svec = end;
}

// Eigenvalues of the map. A period that is unknown is that of an oscillation, which comes back to itself: of its
// multipliers the one nearest to 1 stands for the phase and does not count.
void tell_multipliers(const run_state& r) {
    const ssw_class& s = r.ssw;
    const int n = s.n_statevar();
    if (n > most_for_multipliers) return;
    auto found = eigenvalues(s.map, n);
    if (found.empty()) return;
    const auto all = found;
    if (!r.slv.method.ssw_known_period) {
        const auto nearer = [](const auto& x, const auto& y) { return std::abs(x - 1.0) < std::abs(y - 1.0); };
        found.erase(std::min_element(found.begin(), found.end(), nearer));
    }
    const double largest = std::abs(found.front());
    say(line("solve_ssw: ", largest < 1.0 ? "stable" : "unstable", ", largest multiplier=", largest));
    for (const auto& x : all) say(line("  multiplier: re=", x.real(), " im=", x.imag()));
}
}  // namespace

void solve_ssw(run_state& r) {
    solve_class& slv = r.slv;
    ssw_class& s = r.ssw;
    make_plan(r);
    r.formed.keep();
    set_ssw(r);
    check_states(r);
    check_rparm_sources(r.c);
    take_states(r);
    bool found = false;
    for (s.ssw_iter_newton = 0; s.ssw_iter_newton < slv.method.ssw_itmax_newton; ++s.ssw_iter_newton) {
        s.x_ssw_old = s.x_ssw;
        put_states(r);
        const int marker = s.i_statevar_period;
        const bool is_whole = solve_ssw_1(r, shot::search);
        take_states(r);
        form_ssw_mat(r);
        for (int i = 0; i < s.n_statevar(); ++i) s.rhs_ssw[at(i)] = s.x_ssw_old[at(i)] - s.x_ssw[at(i)];
        norm_2_avg(s.n_statevar(), s.rhs_ssw.data(), s.rhs_ssw_norm);
        say(line("solve_ssw: ssw_iter_newton=", s.ssw_iter_newton, ", rhs_ssw_norm=", s.rhs_ssw_norm));
        if (r.c.cf.output.ssw) print_system(s);
        found = is_whole && converged(r);
        if (found || !is_whole) break;  // a longer search would be cut as well
        correct_start(r, marker);
        s.svec_shot = r.mat.svec;
        move_others(r);
    }
    if (!found) {
        say("solve_ssw: convergence not reached.");
        say("  This is a warning only.");
    }
    if (found) find_map(r);
    say("solve_ssw: calling solve_ssw_1 for one more trns step");
    if (!slv.method.ssw_known_period) end_files_at(slv, r.flags.t_start + slv.method.ssw_period);
    solve_ssw_1(r, shot::last);
    if (!slv.method.ssw_known_period) say(line("solve_ssw: period=", slv.method.ssw_period));
    if (found) tell_multipliers(r);
    say(line("solve_ssw ends, slv->ssw_iter_newton=", s.ssw_iter_newton));
    r.formed.forget();
}
