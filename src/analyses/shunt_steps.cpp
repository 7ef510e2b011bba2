#include "analyses/shunt_steps.h"

#include <algorithm>
#include <cmath>

#include "analyses/newton.h"
#include "analyses/solution_vector.h"
#include "base/halt.h"

namespace {
constexpr double first_shunt = 1.0;      // S
constexpr double last_shunt = 1e-13;     // S
constexpr double first_ratio = 10.0;     // of two steps
constexpr double least_ratio = 1.00001;  // a step that fails by less is given up
constexpr int few_iterations = 10;       // a larger ratio is tried behind a step that took less
constexpr int too_many_iterations = 60;  // of one step

// Nodes whose row has an entry at the node itself: the voltage of any other is held by sources.
void find_nodes(run_state& r) {
    node_shunts& s = r.shunts;
    const int n_nd = r.c.ebeu.n_nd, ref = r.c.ebeu.ref_nd;
    s.row.clear();
    s.column.clear();
    s.slot.clear();
    for (int node = 0; node < n_nd; ++node) {
        const int row = r.mat.ebce_row_of_node[at(node)];
        const int column = r.mat.offs.nodev + (ref >= 0 && node > ref ? node - 1 : node);
        const int slot = node == ref || row < 0 ? -1 : knuth_check_ij(r.mat.m, row, column);
        if (slot < 0) continue;
        s.row.push_back(row);
        s.column.push_back(column);
        s.slot.push_back(slot);
    }
}

bool solves_with(run_state& r, double shunt, newton_limits& limits) {
    r.shunts.g = shunt;
    newton(r, limits);
    r.shunts.g = 0.0;
    return r.slv.now.l_converged;
}
}  // namespace

void add_shunts(run_state& r, bool only_function) {
    const node_shunts& s = r.shunts;
    for (std::size_t k = 0; k < s.row.size(); ++k) {
        r.mat.rhs_m[at(s.row[k])] += s.g * r.mat.svec[at(s.column[k])];
        if (!only_function) r.mat.val_m[at(s.slot[k])] += s.g;
    }
}

void shunt_step_dc(run_state& r) {
    find_nodes(r);
    r.slv.now.l_converged = 0;
    if (r.shunts.row.empty()) return;
    newton_limits limits = gmin_limits(r.slv, "shunt_step_dc");
    limits.itmax = std::min(limits.itmax, too_many_iterations);
    limits.damped = false;
    limits.fix_order = true;
    clear_solvec(r);
    form_solvec(r);
    std::vector<double> found = r.mat.svec;
    double shunt = first_shunt, ratio = first_ratio, reached = first_ratio * first_shunt;
    // As many iterations as gmin stepping may take.
    double left = static_cast<double>(r.slv.method.gmin_npoints) * r.slv.method.gmin_itmax_newton;
    for (int step = 0; left > 0 && ratio > least_ratio; ++step) {
        const bool solved = solves_with(r, shunt, limits);
        left -= r.slv.now.iter_newton + 1;
        if (solved) {
            if (shunt == 0.0) {
                say(line("shunt_step_dc: found in ", step + 1, " steps"));
                return;
            }
            found = r.mat.svec;
            reached = shunt;
            if (r.slv.now.iter_newton < few_iterations) ratio = std::min(ratio * std::sqrt(ratio), 1e3);
        } else {
            if (step == 0) return;
            r.mat.svec = found;
            dcmp_solvec(r);
            ratio = std::sqrt(std::sqrt(ratio));
        }
        shunt = reached / ratio < last_shunt ? 0.0 : reached / ratio;
    }
    r.slv.now.l_converged = 0;
}
