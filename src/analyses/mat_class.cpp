#include "analyses/mat_class.h"

#include <climits>

#include "run/halt.h"
#include "sparse/knuth_write.h"
#include "sparse/pattern.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

int n_node_unknowns(const circuit& c) { return c.ebeu.n() > 0 ? c.ebeu.n_nd - 1 : 0; }

// Functions with a row of their own, of all units.
int n_own_rows(const circuit& c) {
    int n = 0;
    for (int s : c.ebeu.unit.i_lib)
        for (int k = c.lib.ebes.func.first_f[at(s)]; k < c.lib.ebes.func.first_f[at(s) + 1]; ++k)
            n += c.lib.ebes.func.flag_gnrl[at(k)];
    return n;
}

// The first word of its (function, variable) cell. A variable that stands twice on a line is added once.
bool first_of_cell(const function_table& t, int k, int term) {
    for (int d = t.first_fvar[at(k)]; d < term; ++d)
        if (t.var_flag[at(d)] == t.var_flag[at(term)] && t.var_number[at(d)] == t.var_number[at(term)]) return false;
    return true;
}

int limited_product(int a, int b) {
    const long long p = static_cast<long long>(a) * b;
    return p > INT_MAX ? INT_MAX : p < 0 ? 0 : static_cast<int>(p);
}

// Walks every term of every function that has a row in dc, in unit order: term(row, u, j, k, d) for each active cell,
// func(row, u, j, k) behind the terms of a function. Gives the number of rows begun.
template <class Term, class Func>
int walk_dc(const circuit& c, std::vector<int>& row_of_node, const Term& term, const Func& func) {
    const function_table& t = c.lib.ebes.func;
    int row_next = 0;
    row_of_node.assign(at(c.ebeu.n_nd), -1);
    for (int u = 0; u < c.ebeu.n(); ++u) {
        const int s = c.ebeu.unit.i_lib[at(u)];
        for (int k = t.first_f[at(s)]; k < t.first_f[at(s) + 1]; ++k) {
            const int j = k - t.first_f[at(s)];
            int row = -1;
            if (t.flag_kcl[at(k)]) {
                const int node = c.ebeu.nd.row(u)[j];
                if (node == c.ebeu.ref_nd) continue;
                if (row_of_node[at(node)] < 0) row_of_node[at(node)] = row_next++;
                row = row_of_node[at(node)];
            } else if (t.flag_gnrl[at(k)]) {
                row = row_next++;
            } else {
                continue;
            }
            for (int d = t.first_fvar[at(k)]; d < t.first_fvar[at(k) + 1]; ++d)
                if (first_of_cell(t, k, d)) term(row, u, j, k, d);
            func(row, u, j, k);
        }
    }
    return row_next;
}
}  // namespace

void define_offs_solvec_dc(mat_class& mat, const circuit& c) {
    const int n_nodes = n_node_unknowns(c);
    mat.offs.nodev = 0;
    mat.offs.eaux = n_nodes;
    mat.offs.gvar = mat.offs.gaux = n_nodes + c.ebeu.n_ttlaux();
    mat.n_svec = mat.offs.gaux;
    mat.svec_flag.assign(at(mat.n_svec), kind_v);
    for (int i = mat.offs.eaux; i < mat.offs.gvar; ++i) mat.svec_flag[at(i)] = kind_aux;
    for (auto* v : {&mat.svec, &mat.delsvec, &mat.svec_old, &mat.svec_ls, &mat.delsvec_ls, &mat.tol_spice,
                    &mat.del_spice, &mat.svec_prev, &mat.rhs_m})
        v->resize(at(mat.n_svec), 0.0);
}

int column_of_term(const mat_class& mat, const circuit& c, int u, int kind, int index) {
    auto node_column = [&](int node) {
        const int ref = c.ebeu.ref_nd;
        return node == ref ? -1 : mat.offs.nodev + (node > ref ? node - 1 : node);
    };
    switch (kind) {
        case kind_v: return node_column(c.ebeu.nd.row(u)[index]);
        case kind_vind: return node_column(c.ebeu.in.row(u)[index]);
        case kind_aux: return mat.offs.eaux + c.ebeu.first_aux[at(u)] + index;
        case kind_curind: return mat.offs.eaux + c.ebeu.ib_aux.row(u)[index];
        case kind_locv: return -1;
        default:
            halt({"mat_class::ebeu_mat_1: var_flag not identified.", line("   var_flag = ", kind), "   Halting..."});
    }
}

void allocate_system(mat_class& mat, const circuit& c) {
    mat.mnz_ebce = c.tmpdim.mnz_ebce;
    mat.mnz_m = mat.mnz_ebce + (c.gbeu.n() > 0 ? c.tmpdim.mnz_gbce : 0);
    mat.e.names = real_names;
    mat.e.limits.mnz_w = limited_product(mat.mnz_m, c.tmpdim.f_mnz_w);
    mat.e.limits.m_matttlop1 = mat.e.limits.mnz_w;
    mat.e.limits.m_matttlop2 = c.tmpdim.m_matttlop2;
    mat.e.limits.m_matttlop3 = c.tmpdim.m_matttlop3;
    define_offs_solvec_dc(mat, c);
    pattern_builder pattern;
    walk_dc(
        c, mat.ebce_row_of_node,
        [&](int row, int u, int, int, int d) {
            const function_table& t = c.lib.ebes.func;
            const int col = column_of_term(mat, c, u, t.var_flag[at(d)], t.var_number[at(d)]);
            if (col >= 0) pattern.add(row, col);
        },
        [](int, int, int, int) {});
    if (c.ebeu.n() > 0 && pattern.nnz() > mat.mnz_ebce)
        halt({"mat_class::ebce_mat_1_allocate:", "  nnz_ebce is too large. Halting..."});
}

void set_mat_dc(mat_class& mat, const circuit& c, const std::vector<ebes1_class>& ebes1) {
    const function_table& t = c.lib.ebes.func;
    pattern_builder pattern;
    mat.ebe = slot_table{};
    slot_table& slot = mat.ebe;
    mat.ebce_row_of_func.assign(at(c.ebeu.unit.n_ttlf()), -1);
    // Slots close when the walk reaches the next unit.
    auto close_units_before = [&](int u) {
        while (static_cast<int>(slot.first_jac.size()) <= u) {
            slot.first_jac.push_back(static_cast<int>(slot.to_val.size()));
            slot.first_sum.push_back(static_cast<int>(slot.to_row.size()));
            slot.first_own.push_back(static_cast<int>(slot.to_own.size()));
        }
    };
    walk_dc(
        c, mat.ebce_row_of_node,
        [&](int row, int u, int j, int, int d) {
            close_units_before(u);
            const int kind = t.var_flag[at(d)], index = t.var_number[at(d)];
            const int col = column_of_term(mat, c, u, kind, index);
            if (col < 0) return;
            slot.to_val.push_back(pattern.add(row, col));
            slot.from_jac.push_back(ebes1[at(c.ebeu.unit.i_lib[at(u)])].offset(kind, j, index));
        },
        [&](int row, int u, int j, int k) {
            close_units_before(u);
            mat.ebce_row_of_func[at(c.ebeu.unit.first_func[at(u)] + j)] = row;
            (t.flag_kcl[at(k)] ? slot.to_row : slot.to_own).push_back(row);
            (t.flag_kcl[at(k)] ? slot.from_f : slot.from_own).push_back(j);
        });
    close_units_before(c.ebeu.n());

    const int n_row = n_node_unknowns(c) + n_own_rows(c);
    if (n_row != mat.n_svec)
        halt({"mat::set_mat_2: system matrix is not square!", line("  nrow_m = ", n_row),
              line("  ncol_m = ", mat.n_svec), "  Halting..."});
    say(line("mat::set_mat_2: system matrix size is ", n_row, " x ", mat.n_svec));
    mat.m = pattern.finish<double>(n_row, mat.n_svec);
    check_knuth(mat.m, "set_mat_2: something wrong?");
    mat.val_m.assign(at(mat.m.nnz()), 0.0);
    mat.rhs_m.assign(at(n_row), 0.0);
    if (c.cf.output.ebce) mat_write_knuthij1(mat.m, "ebce1_dc.dat");
    if (c.cf.output.smat) mat_write_knuthij1(mat.m, "smat.dat");
}
