#include "analyses/explicit_network.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "analyses/evaluate.h"
#include "analyses/run_state.h"
#include "base/at.h"
#include "base/halt.h"
#include "base/numeric.h"
#include "base/signals.h"
#include "sparse/elimination.h"
#include "sparse/pattern.h"

// Unknowns: variables of the blocks less the reference, auxiliary variables, branch voltages, branch currents. Rows:
// the sum of the currents at each node of a network but the reference; each branch voltage by its nodes; for each
// function with a derivative its state, which is held; the algebraic rows of the blocks.
struct explicit_network {
    // A derivative that a model leaves, and the entry that it is added to.
    struct placed {
        int from, to;
    };
    int n = 0;
    std::vector<double> x, dx, x_before;  // [n]
    std::vector<int> flag;                // [n] kind of unknown (var_kind)
    std::vector<double*> place;           // [n] where each unknown stands
    knuth<double> m;
    std::vector<double> val, fixed;  // [nnz] entries; those that no model gives
    std::vector<double> f;           // [n] rows, then minus them
    std::vector<int> first{0};       // [units + 1] derivatives of each unit
    std::vector<placed> derivative;
    std::vector<int> first_row;  // [units + 1] the first algebraic row of each unit
    // The rows that no model gives: sums of unknowns.
    struct term {
        int column;
        double factor;
    };
    std::vector<int> first_term{0};  // [linear rows + 1]; they are the first rows of the system
    std::vector<term> terms;
    std::vector<double> constant;  // [linear rows] what the row is less: held states
    int first_state = 0;           // row of state 0
    elimination<double> e;
    bool has_order = false;

    int n_linear() const { return static_cast<int>(first_term.size()) - 1; }
};

explicit_class::explicit_class() = default;
explicit_class::~explicit_class() = default;

namespace {

// Numbers the unknowns, and lays the rows.
class network_layout {
public:
    network_layout(run_state& r, explicit_network& w) : r_(r), x_(r.c.xbeu), lib_(r.c.lib.xbes), w_(w) {}

    void number_unknowns() {
        vr_.assign(at(x_.n_vr), -1);
        for (int v = 0; v < x_.n_vr; ++v)
            if (v != x_.ref_vr) vr_[at(v)] = add(kind_xvr, &x_.val_vr[at(v)]);
        aux_ = add_all(kind_xaux, x_.aux);
        bev_ = add_all(kind_bev, x_.bev);
        cur_ = add_all(kind_xcur, x_.cur);
        w_.n = static_cast<int>(w_.place.size());
    }

    void lay() {
        lay_nodes();
        lay_voltages();
        lay_states();
        int row = w_.n_linear();
        for (int u = 0; u < x_.n(); ++u) {
            w_.first_row.push_back(row);
            lay_block(u, row);
            row += x_.first_h[at(u) + 1] - x_.first_h[at(u)];
            w_.first.push_back(static_cast<int>(w_.derivative.size()));
        }
        w_.first_row.push_back(row);
        if (row != w_.n)
            halt({"x_set_mat_2: system matrix is not square!", line("  nrow_m = ", row), line("  ncol_m = ", w_.n),
                  "  Halting..."});
        say(line("mat::x_set_mat_2: system matrix size is ", row, " x ", w_.n));
        w_.m = pattern_.finish<double>(w_.n, w_.n);
        check_knuth(w_.m, "x_set_mat_2: something wrong?");
        w_.fixed.assign(at(w_.m.nnz()), 0.0);
        for (int i = 0; i < w_.n_linear(); ++i)
            for (int k = w_.first_term[at(i)]; k < w_.first_term[at(i) + 1]; ++k)
                w_.fixed[at(pattern_.find(i, w_.terms[at(k)].column))] += w_.terms[at(k)].factor;
    }

private:
    int add(int kind, double* place) {
        w_.flag.push_back(kind);
        w_.place.push_back(place);
        return static_cast<int>(w_.place.size()) - 1;
    }
    int add_all(int kind, std::vector<double>& values) {
        const int first = static_cast<int>(w_.place.size());
        for (double& v : values) add(kind, &v);
        return first;
    }
    void add_term(int column, double factor) {
        if (column < 0) return;  // the reference is 0
        pattern_.add(w_.n_linear(), column);
        w_.terms.push_back({column, factor});
    }
    void close_row() {
        w_.first_term.push_back(static_cast<int>(w_.terms.size()));
        w_.constant.push_back(0.0);
    }

    // Currents flow from the node into the block.
    void lay_nodes() {
        std::vector<std::vector<explicit_network::term>> sum(at(x_.n_vr));
        std::vector<char> is_node(at(x_.n_vr), 0);
        for (int u = 0; u < x_.n(); ++u) {
            const int n_node = lib_.list.cct.count(x_.unit.i_lib[at(u)]), cur = cur_ + x_.first_cur[at(u)];
            for (int j = 0; j < n_node; ++j) {
                const int v = x_.vr.row(u)[j];
                is_node[at(v)] = 1;
                sum[at(v)].push_back(n_node == 2 ? explicit_network::term{cur, j == 0 ? 1.0 : -1.0}
                                                 : explicit_network::term{cur + j, 1.0});
            }
        }
        for (int v = 0; v < x_.n_vr; ++v) {
            if (!is_node[at(v)] || v == x_.ref_vr) continue;
            for (const auto& t : sum[at(v)]) add_term(t.column, t.factor);
            close_row();
        }
    }

    void lay_voltages() {
        for (int u = 0; u < x_.n(); ++u) {
            const int s = x_.unit.i_lib[at(u)];
            for (int j = 0; j < lib_.list.bev.count(s); ++j) {
                const std::size_t k = at(lib_.list.bev.first[at(s)] + j);
                add_term(bev_ + x_.first_bev[at(u)] + j, 1.0);
                add_term(vr_[at(x_.vr.row(u)[lib_.list.bev_plus[k]])], -1.0);
                if (lib_.list.bev_minus[k] >= 0) add_term(vr_[at(x_.vr.row(u)[lib_.list.bev_minus[k]])], 1.0);
                close_row();
            }
        }
    }

    void lay_states() {
        w_.first_state = w_.n_linear();
        std::unordered_map<const double*, int> column_of;
        for (int i = 0; i < w_.n; ++i) column_of.emplace(w_.place[at(i)], i);
        for (const double* state : r_.explicits.state) {
            const auto found = column_of.find(state);
            add_term(found == column_of.end() ? -1 : found->second, 1.0);
            close_row();
        }
    }

    int column(int u, int kind, int index) const {
        switch (kind) {
            case kind_xvr:
                return vr_[at(x_.vr.row(u)[index])];
            case kind_xaux:
                return aux_ + x_.first_aux[at(u)] + index;
            case kind_bev:
                return bev_ + x_.first_bev[at(u)] + index;
            case kind_xcur:
                return cur_ + x_.first_cur[at(u)] + index;
            default:
                return -1;  // a general variable stands as it is
        }
    }

    void lay_block(int u, int row) {
        const int s = x_.unit.i_lib[at(u)];
        const function_table& t = lib_.func_h;
        const xbes1_class& jac = r_.xbe.jac[at(s)];
        for (int j = 0; j < t.n_func(s); ++j) {
            const int k = t.first_f[at(s)] + j;
            for (int d = t.first_fvar[at(k)]; d < t.first_fvar[at(k) + 1]; ++d) {
                if (!first_of_cell(t, k, d)) continue;
                const int kind = t.var_flag[at(d)], index = t.var_number[at(d)], col = column(u, kind, index);
                if (col >= 0) w_.derivative.push_back({jac.offset(kind, j, index), pattern_.add(row + j, col)});
            }
        }
    }

    run_state& r_;
    xbeu_class& x_;
    const basic_library& lib_;
    explicit_network& w_;
    pattern_builder pattern_;
    std::vector<int> vr_;  // [n_vr] column; -1: the reference
    int aux_ = 0, bev_ = 0, cur_ = 0;
};

// What blocks see of their variables.
void gather_all(run_state& r) {
    xbeu_class& x = r.c.xbeu;
    for (std::size_t k = 0; k < x.vr.data.size(); ++k) x.vr_in[k] = x.val_vr[at(x.vr.data[k])];
}

// Rows and entries at the present unknowns.
void assemble(run_state& r) {
    explicit_network& w = *r.explicits.network;
    for (int i = 0; i < w.n; ++i) *w.place[at(i)] = w.x[at(i)];
    gather_all(r);
    for (int i = 0; i < w.n_linear(); ++i) {
        double sum = -w.constant[at(i)];
        for (int k = w.first_term[at(i)]; k < w.first_term[at(i) + 1]; ++k)
            sum += w.terms[at(k)].factor * w.x[at(w.terms[at(k)].column)];
        w.f[at(i)] = sum;
    }
    std::copy(w.fixed.begin(), w.fixed.end(), w.val.begin());
    r.flags.matrix_alg = 1;
    for (int u = 0; u < r.xbe.n(); ++u) {
        get_unit(r, r.xbe, u);
        const double* store = r.xbe.jac[at(r.xbe.entry(u))].store.data();
        for (int k = w.first[at(u)]; k < w.first[at(u) + 1]; ++k)
            w.val[at(w.derivative[at(k)].to)] += store[w.derivative[at(k)].from];
        for (int i = w.first_row[at(u)]; i < w.first_row[at(u) + 1]; ++i)
            w.f[at(i)] = r.c.xbeu.fh[at(r.c.xbeu.first_h[at(u)] + i - w.first_row[at(u)])];
    }
    r.flags.matrix_alg = 0;
}

void solve_for_step(run_state& r) {
    explicit_network& w = *r.explicits.network;
    for (double& v : w.f) v = -v;
    if (!w.has_order)
        solve_jac(w.e, w.m, w.val.data(), w.f.data(), 1, 1, 2, 1, 3);
    else
        solve_jac(w.e, w.m, w.val.data(), w.f.data(), 1, 0, 0, 1, 3);
    w.has_order = true;
    ++r.flags.n_solve_lin;
    std::copy(w.e.sol_w.begin(), w.e.sol_w.end(), w.dx.begin());
}

struct newton_settings {
    int itmax, dmp, dmp_max;
    double dmp_k;
};
newton_settings x_get_dmp(const method_settings& m, bool first) {
    if (first) return {m.x_itmax_newton_first, m.x_dmp_first, m.x_dmp_newt_max_first, m.x_dmp_k_first};
    return {m.x_itmax_newton, m.x_dmp, m.x_dmp_newt_max, m.x_dmp_k};
}

[[noreturn]] void no_convergence(const run_state& r) {
    halt({"x_solve_newton: no convergence, halting...", line("x_solve_newton: time=", r.flags.time_given_x)});
}

// The change of every unknown is within its tolerance.
bool spice_test_passes(const run_state& r, int iter) {
    const explicit_network& w = *r.explicits.network;
    const method_settings& m = r.slv.method;
    if (iter == 0) return false;
    for (int i = 0; i < w.n; ++i) {
        const double abstol = w.flag[at(i)] == kind_xaux   ? m.x_norm_spice_xaux
                              : w.flag[at(i)] == kind_xcur ? m.x_norm_spice_cur
                                                           : m.x_norm_spice_nodev;
        const double now = w.x[at(i)], before = w.x_before[at(i)], change = std::fabs(now - before);
        if (!(change <= m.x_norm_large)) {
            say("x_check_convergence: spice norm too large.");
            no_convergence(r);
        }
        if (!(change <= std::fmax(std::fabs(now), std::fabs(before)) * m.x_norm_spice_rel + abstol)) return false;
    }
    return true;
}

// f holds minus the rows at the iterate before the step, as norms of residuals always do here.
bool has_converged(run_state& r, int iter) {
    const explicit_network& w = *r.explicits.network;
    const method_settings& m = r.slv.method;
    double norm = 0.0;
    norm_2_avg(w.n, w.f.data(), norm);
    if (m.x_write_rhs2) say(line(iter, " x_norm_rhs_2=", norm));
    if (m.x_chk_rhs2) {
        if (iter >= 1 && !(norm <= m.x_norm_large)) {
            say("x_check_convergence: norm too large.");
            say(line("   slv->x_norm_rhs_2=", norm));
            no_convergence(r);
        }
        if (!(norm <= m.x_norm_2)) return false;
    }
    return !m.x_chk_spice || spice_test_passes(r, iter);
}

void add_step(explicit_network& w) {
    for (int i = 0; i < w.n; ++i) w.x[at(i)] += w.dx[at(i)];
}

bool is_finite(const explicit_network& w) {
    return std::all_of(w.x.begin(), w.x.end(), [](double v) { return std::isfinite(v); });
}

void x_solve_linear(run_state& r) {
    explicit_network& w = *r.explicits.network;
    assemble(r);
    solve_for_step(r);
    add_step(w);
    if (!is_finite(w)) halt({"x_solve_linear: NaN found!", "   Halting..."});
}

void x_solve_newton(run_state& r) {
    explicit_network& w = *r.explicits.network;
    const newton_settings s = x_get_dmp(r.slv.method, !w.has_order);
    for (int iter = 0; iter < s.itmax; ++iter) {
        heed_signals();
        assemble(r);
        solve_for_step(r);
        w.x_before = w.x;
        if (s.dmp && iter <= s.dmp_max)
            for (double& v : w.dx) v *= s.dmp_k;
        add_step(w);
        if (!is_finite(w)) no_convergence(r);
        if (has_converged(r, iter)) return;
    }
    no_convergence(r);
}
}  // namespace

void prepare_network(run_state& r) {
    r.explicits.network.reset();
    if (!r.flags.x_matrix) return;
    r.explicits.network = std::make_unique<explicit_network>();
    explicit_network& w = *r.explicits.network;
    network_layout layout(r, w);
    layout.number_unknowns();
    layout.lay();
    for (auto* v : {&w.x, &w.dx, &w.x_before, &w.f}) v->assign(at(w.n), 0.0);
    w.val.assign(at(w.m.nnz()), 0.0);
    w.e.names = explicit_names;
    w.e.limits = r.mat.e.limits;
    w.e.zero_piv = r.slv.method.zero_piv;
    w.e.gauss_epsln = r.slv.method.gauss_epsln;
}

void solve_network(run_state& r) {
    explicit_network& w = *r.explicits.network;
    explicit_class& e = r.explicits;
    for (int i = 0; i < e.n_states(); ++i) w.constant[at(w.first_state + i)] = *e.state[at(i)];
    for (int i = 0; i < w.n; ++i) w.x[at(i)] = *w.place[at(i)];
    if (r.c.xbeu.ref_vr >= 0) r.c.xbeu.val_vr[at(r.c.xbeu.ref_vr)] = 0.0;
    if (r.slv.now.flag_x_linear)
        x_solve_linear(r);
    else
        x_solve_newton(r);
    for (int i = 0; i < w.n; ++i) *w.place[at(i)] = w.x[at(i)];
    gather_all(r);
    const raised on(r.flags.matrix_ddt);
    for (int u = 0; u < r.xbe.n(); ++u) get_unit(r, r.xbe, u);
}
