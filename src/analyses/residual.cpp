#include "analyses/residual.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "analyses/unknown_names.h"
#include "base/at.h"
#include "base/halt.h"

namespace {
constexpr double bad_part = 1e-3;     // of the largest terminal current
constexpr double bad_current = 1e-9;  // A
// Sums of a few dozen products that each err by half a unit in the last place.
constexpr double rounding = 32 * std::numeric_limits<double>::epsilon();

// What rounding can make of a node's row: its entries times the values at both ends of the step. Entries are those of
// the last assembly, which is near enough for a bound.
double rounding_of_row(const mat_class& mat, int node) {
    const int row = mat.ebce_row_of_node[at(node)];
    double sum = 0.0;
    for (int k = row < 0 ? -1 : mat.m.srow[at(row)]; k >= 0; k = mat.m.prow[at(k)]) {
        const std::size_t q = at(mat.m.col[at(k)]);
        double x = std::fabs(mat.svec[q]);
        if (mat.kind == analysis::trns) x = std::max(x, std::fabs(mat.svec_old_1[q]));
        sum += std::fabs(mat.val_m[at(k)]) * x;
    }
    return rounding * sum;
}
}  // namespace

void find_residual(run_state& r) {
    residual_watch& w = r.residual;
    const ebeu_class& e = r.c.ebeu;
    w.node = -1;
    w.value = 0.0;
    if (w.told || e.n() == 0) return;
    w.sum.assign(at(e.n_nd), 0.0);
    w.largest.assign(at(e.n_nd), 0.0);
    for (std::size_t t = 0; t < e.cur_nd.size(); ++t) {
        const std::size_t n = at(e.nd.data[t]);
        w.sum[n] += e.cur_nd[t];
        w.largest[n] = std::max(w.largest[n], std::fabs(e.cur_nd[t]));
    }
    for (int n = 0; n < e.n_nd; ++n) {
        const double residual = std::fabs(w.sum[at(n)]);
        if (n == e.ref_nd || !(residual > bad_current && residual > bad_part * w.largest[at(n)])) continue;
        if (residual <= w.value || residual <= rounding_of_row(r.mat, n)) continue;
        w.node = n;
        w.value = residual;
    }
}

void tell_residual(run_state& r) {
    residual_watch& w = r.residual;
    if (w.told || w.node < 0) return;
    w.told = true;
    say(line("solve_dc: the solution leaves a residual of ", w.value, " at node ", name_of_node(r.c, w.node)));
    say("   consider chk_rhs2=yes norm_2=1e-9");
}
