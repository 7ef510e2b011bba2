#include "analyses/solution_vector.h"

#include <algorithm>
#include <cmath>

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

// svec -> node values and auxiliary unknowns; the reference node stays 0.
void spread(const mat_class& mat, const circuit& c, std::vector<double>& val_nd, std::vector<double>& aux) {
    const double* x = mat.svec.data() + mat.offs.nodev;
    const int ref = c.ebeu.ref_nd, n = c.ebeu.n_nd;
    if (n > 0) {
        std::copy(x, x + ref, val_nd.begin());
        val_nd[at(ref)] = 0.0;
        std::copy(x + ref, x + n - 1, val_nd.begin() + ref + 1);
    }
    const double* a = mat.svec.data() + mat.offs.eaux;
    std::copy(a, a + aux.size(), aux.begin());
}

void collect(mat_class& mat, const circuit& c, const std::vector<double>& val_nd, const std::vector<double>& aux) {
    double* x = mat.svec.data() + mat.offs.nodev;
    const int ref = c.ebeu.ref_nd;
    if (c.ebeu.n_nd > 0) {
        std::copy(val_nd.begin(), val_nd.begin() + ref, x);
        std::copy(val_nd.begin() + ref + 1, val_nd.end(), x + ref);
    }
    std::copy(aux.begin(), aux.end(), mat.svec.begin() + mat.offs.eaux);
}

void to_terminals(const ebeu_class& u, const std::vector<double>& val_nd, std::vector<double>& nodev) {
    for (std::size_t k = 0; k < nodev.size(); ++k) nodev[k] = val_nd[at(u.nd.data[k])];
}
}  // namespace

void clear_solvec(run_state& r) {
    ebeu_class& u = r.c.ebeu;
    for (auto* v : {&u.val_nd, &u.aux, &u.auxs, &u.locv, &u.cur_nd, &r.mat.svec}) std::fill(v->begin(), v->end(), 0.0);
}

void form_solvec(run_state& r) { collect(r.mat, r.c, r.c.ebeu.val_nd, r.c.ebeu.aux); }
void dcmp_solvec(run_state& r) { spread(r.mat, r.c, r.c.ebeu.val_nd, r.c.ebeu.aux); }

void update_sol_1(run_state& r) {
    mat_class& mat = r.mat;
    const std::size_t n = at(mat.n_svec);
    if (!r.c.cct.flag_lmtnewt) {
        for (std::size_t i = 0; i < n; ++i) mat.svec[i] += mat.delsvec[i];
        return;
    }
    ebeu_class& u = r.c.ebeu;
    spread(mat, r.c, u.val_nd, u.aux);
    to_terminals(u, u.val_nd, u.nodev);
    for (std::size_t i = 0; i < n; ++i) mat.svec[i] += mat.delsvec[i];
    spread(mat, r.c, u.val_nd_new, u.aux_new);
    to_terminals(u, u.val_nd_new, u.nodev_new);
    u.auxs_new = u.auxs;
    const std::vector<int>& limits = r.c.lib.ebes.flag.limit_newton;
    r.flags.limit_newton = 1;
    for (int k = 0; k < u.n(); ++k)
        if (limits[at(u.unit.i_lib[at(k)])]) get_ebe(r, k);
    r.flags.limit_newton = 0;
    // Limits were computed from the common unlimited iterate; on a shared node the last unit wins.
    for (int k = 0; k < u.n(); ++k)
        if (limits[at(u.unit.i_lib[at(k)])])
            for (int s = u.nd.first[at(k)]; s < u.nd.first[at(k) + 1]; ++s)
                u.val_nd_new[at(u.nd.data[at(s)])] = u.nd.data[at(s)] == u.ref_nd ? 0.0 : u.nodev_new[at(s)];
    collect(mat, r.c, u.val_nd_new, u.aux_new);
}

bool has_nan(const std::vector<double>& v) {
    return std::any_of(v.begin(), v.end(), [](double x) { return std::isnan(x); });
}
