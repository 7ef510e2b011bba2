#include "analyses/solution_vector.h"

#include <algorithm>
#include <cmath>

#include "analyses/evaluate.h"
#include "base/at.h"

namespace {
// What an iterate spreads into: the tables of present values, or those of the next iterate.
struct value_tables {
    std::vector<double>&val_nd, &aux, &auxs, &vr, &gaux, &cur, &locv;
};
value_tables present(circuit& c) {
    return {c.ebeu.val_nd, c.ebeu.aux, c.ebeu.auxs, c.gbeu.val_vr, c.gbeu.aux, c.ebeu.cur_nd, c.ebeu.locv};
}

// Between svec and the tables: move(x, values, n) for each piece of n unknowns that stand together in both. The
// reference node is none of them.
template <class Move>
void for_pieces(double* x, const mat_class& mat, const circuit& c, const value_tables& t, Move move) {
    const svec_offsets& o = mat.offs;
    const int ref = c.ebeu.ref_nd, n_nd = c.ebeu.n_nd;
    if (n_nd > 0) {
        move(x + o.nodev, t.val_nd.data(), ref);
        move(x + o.nodev + ref, t.val_nd.data() + ref + 1, n_nd - 1 - ref);
    }
    const std::size_t n_cur = mat.terminal_of_unknown.size();
    for (std::size_t i = 0; i < n_cur; ++i) move(x + o.cur + i, t.cur.data() + mat.terminal_of_unknown[i], 1);
    move(x + o.eauxs, t.auxs.data(), o.eaux - o.eauxs);
    const std::size_t n_aux = mat.aux_of_unknown.size();
    for (std::size_t i = 0; i < n_aux; ++i) move(x + o.eaux + i, t.aux.data() + mat.aux_of_unknown[i], 1);
    move(x + o.locv, t.locv.data(), o.gvar - o.locv);
    move(x + o.gvar, t.vr.data(), o.gaux - o.gvar);
    move(x + o.gaux, t.gaux.data(), mat.n_svec - o.gaux);
}

void spread(mat_class& mat, const circuit& c, const value_tables& t) {
    for_pieces(mat.svec.data(), mat, c, t, [](const double* x, double* value, int n) { std::copy_n(x, n, value); });
    if (c.ebeu.n_nd > 0) t.val_nd[at(c.ebeu.ref_nd)] = 0.0;
}

void collect(mat_class& mat, const circuit& c, const value_tables& t) {
    for_pieces(mat.svec.data(), mat, c, t, [](double* x, const double* value, int n) { std::copy_n(value, n, x); });
}

// The units of a family that limit Newton steps may pull the next iterate back. Limits are computed from the common
// unlimited iterate; on a shared node or variable the last unit wins.
template <class Rows>
void limit(run_state& r, const unit_family<Rows>& f) {
    constexpr auto s = Rows::shared;
    const std::vector<int>& index = (f.units.*s.index).data;
    for (std::size_t k = 0; k < index.size(); ++k) {
        (f.units.*s.copy)[k] = (f.units.*s.value)[at(index[k])];
        (f.units.*s.copy_new)[k] = (f.units.*s.value_new)[at(index[k])];
    }
    for (int u = 0; u < f.n(); ++u)
        if (f.has(&entry_flags::limit_newton, u)) get_unit(r, f, u);
    for (int u = 0; u < f.n(); ++u)
        if (f.has(&entry_flags::limit_newton, u)) scatter_unit(f, u, true);
}
}  // namespace

void clear_solvec(run_state& r) {
    ebeu_class& u = r.c.ebeu;
    gbeu_class& g = r.c.gbeu;
    for (auto* v : {&u.val_nd, &u.aux, &u.auxs, &u.locv, &u.cur_nd, &g.val_vr, &g.aux, &r.mat.svec})
        std::fill(v->begin(), v->end(), 0.0);
    r.formed.forget_calls();
}

void form_solvec(run_state& r) { collect(r.mat, r.c, present(r.c)); }
void dcmp_solvec(run_state& r) { spread(r.mat, r.c, present(r.c)); }

void update_sol_1(run_state& r) {
    mat_class& mat = r.mat;
    const std::size_t n = at(mat.n_svec);
    if (!r.c.cct.flag_lmtnewt) {
        for (std::size_t i = 0; i < n; ++i) mat.svec[i] += mat.delsvec[i];
        return;
    }
    ebeu_class& u = r.c.ebeu;
    gbeu_class& g = r.c.gbeu;
    spread(mat, r.c, present(r.c));
    r.formed.forget_variables();
    for (std::size_t i = 0; i < n; ++i) mat.svec[i] += mat.delsvec[i];
    std::copy(u.aux.begin(), u.aux.end(), u.aux_new.begin());
    std::copy(u.auxs.begin(), u.auxs.end(), u.auxs_new.begin());
    const value_tables next{u.val_nd_new, u.aux_new, u.auxs_new, g.val_vr_new, g.aux_new, u.cur_nd, u.locv};
    spread(mat, r.c, next);
    r.flags.limit_newton = 1;
    for_families(r, [&](auto& f) { limit(r, f); });
    r.flags.limit_newton = 0;
    collect(mat, r.c, next);
}

bool has_nan(const std::vector<double>& v) {
    return std::any_of(v.begin(), v.end(), [](double x) { return std::isnan(x); });
}

bool is_finite(const std::vector<double>& v) {
    return std::all_of(v.begin(), v.end(), [](double x) { return std::isfinite(x); });
}
