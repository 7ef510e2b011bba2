#include "analyses/solution_vector.h"

#include <algorithm>
#include <cmath>

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

// What an iterate spreads into: the tables of present values, or those of the next iterate.
struct value_tables {
    std::vector<double>&val_nd, &aux, &auxs, &vr, &gaux;
};
value_tables present(circuit& c) { return {c.ebeu.val_nd, c.ebeu.aux, c.ebeu.auxs, c.gbeu.val_vr, c.gbeu.aux}; }

void spread(const mat_class& mat, const circuit& c, const value_tables& t) {
    const double* x = mat.svec.data();
    const int ref = c.ebeu.ref_nd, n = c.ebeu.n_nd;
    if (n > 0) {
        std::copy(x + mat.offs.nodev, x + mat.offs.nodev + ref, t.val_nd.begin());
        t.val_nd[at(ref)] = 0.0;
        std::copy(x + mat.offs.nodev + ref, x + mat.offs.nodev + n - 1, t.val_nd.begin() + ref + 1);
    }
    std::copy(x + mat.offs.eauxs, x + mat.offs.eaux, t.auxs.begin());
    for (std::size_t i = 0; i < mat.aux_of_unknown.size(); ++i)
        t.aux[at(mat.aux_of_unknown[i])] = x[at(mat.offs.eaux) + i];
    std::copy(x + mat.offs.gvar, x + mat.offs.gaux, t.vr.begin());
    std::copy(x + mat.offs.gaux, x + mat.n_svec, t.gaux.begin());
}

void collect(mat_class& mat, const circuit& c, const value_tables& t) {
    double* x = mat.svec.data();
    const int ref = c.ebeu.ref_nd;
    if (c.ebeu.n_nd > 0) {
        std::copy(t.val_nd.begin(), t.val_nd.begin() + ref, x + mat.offs.nodev);
        std::copy(t.val_nd.begin() + ref + 1, t.val_nd.end(), x + mat.offs.nodev + ref);
    }
    std::copy(t.auxs.begin(), t.auxs.begin() + (mat.offs.eaux - mat.offs.eauxs), x + mat.offs.eauxs);
    for (std::size_t i = 0; i < mat.aux_of_unknown.size(); ++i)
        x[at(mat.offs.eaux) + i] = t.aux[at(mat.aux_of_unknown[i])];
    std::copy(t.vr.begin(), t.vr.end(), x + mat.offs.gvar);
    std::copy(t.gaux.begin(), t.gaux.end(), x + mat.offs.gaux);
}

void to_terminals(const ebeu_class& u, const std::vector<double>& val_nd, std::vector<double>& nodev) {
    for (std::size_t k = 0; k < nodev.size(); ++k) nodev[k] = val_nd[at(u.nd.data[k])];
}

// Limits are computed from the common unlimited iterate; on a shared node or variable the last unit wins.
void limit_electrical(run_state& r) {
    ebeu_class& u = r.c.ebeu;
    const std::vector<int>& limits = r.c.lib.ebes.flag.limit_newton;
    for (int k = 0; k < u.n(); ++k)
        if (limits[at(u.unit.i_lib[at(k)])]) get_ebe(r, k);
    for (int k = 0; k < u.n(); ++k)
        if (limits[at(u.unit.i_lib[at(k)])])
            for (int s = u.nd.first[at(k)]; s < u.nd.first[at(k) + 1]; ++s)
                u.val_nd_new[at(u.nd.data[at(s)])] = u.nd.data[at(s)] == u.ref_nd ? 0.0 : u.nodev_new[at(s)];
}

void limit_blocks(run_state& r) {
    gbeu_class& g = r.c.gbeu;
    const std::vector<int>& limits = r.c.lib.gbes.flag.limit_newton;
    for (std::size_t s = 0; s < g.vr_in.size(); ++s) {
        g.vr_in[s] = g.val_vr[at(g.vr.data[s])];
        g.vr_in_new[s] = g.val_vr_new[at(g.vr.data[s])];
    }
    for (int k = 0; k < g.n(); ++k)
        if (limits[at(g.unit.i_lib[at(k)])]) get_gbe(r, k);
    for (int k = 0; k < g.n(); ++k)
        if (limits[at(g.unit.i_lib[at(k)])])
            for (int s = g.vr.first[at(k)]; s < g.vr.first[at(k) + 1]; ++s)
                g.val_vr_new[at(g.vr.data[at(s)])] = g.vr_in_new[at(s)];
}
}  // namespace

void clear_solvec(run_state& r) {
    ebeu_class& u = r.c.ebeu;
    gbeu_class& g = r.c.gbeu;
    for (auto* v : {&u.val_nd, &u.aux, &u.auxs, &u.locv, &u.cur_nd, &g.val_vr, &g.aux, &r.mat.svec})
        std::fill(v->begin(), v->end(), 0.0);
    r.formed.of_held = -1;
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
    r.formed.valid = false;
    to_terminals(u, u.val_nd, u.nodev);
    for (std::size_t i = 0; i < n; ++i) mat.svec[i] += mat.delsvec[i];
    std::copy(u.aux.begin(), u.aux.end(), u.aux_new.begin());
    std::copy(u.auxs.begin(), u.auxs.end(), u.auxs_new.begin());
    const value_tables next{u.val_nd_new, u.aux_new, u.auxs_new, g.val_vr_new, g.aux_new};
    spread(mat, r.c, next);
    to_terminals(u, u.val_nd_new, u.nodev_new);
    r.flags.limit_newton = 1;
    limit_electrical(r);
    limit_blocks(r);
    r.flags.limit_newton = 0;
    collect(mat, r.c, next);
}

bool has_nan(const std::vector<double>& v) {
    return std::any_of(v.begin(), v.end(), [](double x) { return std::isnan(x); });
}

bool is_finite(const std::vector<double>& v) {
    return std::all_of(v.begin(), v.end(), [](double x) { return std::isfinite(x); });
}
