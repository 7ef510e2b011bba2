#include "analyses/mat_class.h"

#include "base/at.h"
#include "base/halt.h"

namespace {
// Aux words that are unknowns: all but those of units that have equations of their own for start-up.
void number_aux(mat_class& mat, const circuit& c) {
    mat.aux_of_unknown.clear();
    mat.column_of_aux.assign(at(c.ebeu.n_ttlaux()), -1);
    for (int u = 0; u < c.ebeu.n(); ++u) {
        if (mat.kind == analysis::startup && c.lib.ebes.flag.startup_sprt[at(c.ebeu.unit.i_lib[at(u)])]) continue;
        for (int k = c.ebeu.first_aux[at(u)]; k < c.ebeu.first_aux[at(u) + 1]; ++k) {
            mat.column_of_aux[at(k)] = mat.offs.eaux + static_cast<int>(mat.aux_of_unknown.size());
            mat.aux_of_unknown.push_back(k);
        }
    }
}

// Currents of all terminals but those of units that only name the reference.
void number_currents(mat_class& mat, const circuit& c) {
    mat.terminal_of_unknown.clear();
    mat.column_of_terminal.assign(c.ebeu.nd.data.size(), -1);
    if (mat.kind != analysis::ssw) return;
    for (int u = 0; u < c.ebeu.n(); ++u) {
        if (c.lib.ebes.flag.ground_dummy[at(c.ebeu.unit.i_lib[at(u)])]) continue;
        for (int k = c.ebeu.nd.first[at(u)]; k < c.ebeu.nd.first[at(u) + 1]; ++k) {
            mat.column_of_terminal[at(k)] = mat.offs.cur + static_cast<int>(mat.terminal_of_unknown.size());
            mat.terminal_of_unknown.push_back(k);
        }
    }
}

[[noreturn]] void unknown_kind(const char* routine, int kind) {
    halt({line("mat_class::", routine, ": var_flag not identified."), line("   var_flag = ", kind), "   Halting..."});
}
}  // namespace

void define_offs_solvec(mat_class& mat, const circuit& c, analysis kind) {
    mat.kind = kind;
    mat.offs.nodev = 0;
    mat.offs.cur = c.ebeu.n() > 0 ? c.ebeu.n_nd - 1 : 0;
    number_currents(mat, c);
    mat.offs.eauxs = mat.offs.cur + static_cast<int>(mat.terminal_of_unknown.size());
    mat.offs.eaux = mat.offs.eauxs + (kind == analysis::startup ? c.ebeu.n_ttlauxs() : 0);
    number_aux(mat, c);
    mat.offs.locv = mat.offs.eaux + static_cast<int>(mat.aux_of_unknown.size());
    mat.offs.gvar = mat.offs.locv + (kind == analysis::ssw ? c.ebeu.n_ttllocv() : 0);
    mat.offs.gaux = mat.offs.gvar + c.gbeu.n_vr;
    mat.n_svec = mat.offs.gaux + c.gbeu.n_ttlaux();
    mat.svec_flag.clear();
    for (const auto& [end, flag] :
         {std::pair{mat.offs.cur, kind_v}, std::pair{mat.offs.eauxs, kind_cur}, std::pair{mat.offs.eaux, kind_auxs},
          std::pair{mat.offs.locv, kind_aux}, std::pair{mat.offs.gvar, kind_locv}, std::pair{mat.offs.gaux, kind_vr},
          std::pair{mat.n_svec, kind_gaux}})
        mat.svec_flag.resize(at(end), flag);
    for (auto* v : {&mat.svec, &mat.delsvec, &mat.svec_old, &mat.svec_ls, &mat.delsvec_ls, &mat.tol_spice,
                    &mat.del_spice, &mat.svec_old_1, &mat.svec_old_2, &mat.svec_prev, &mat.rhs_m})
        v->assign(at(mat.n_svec), 0.0);
    mat.locv_old_1.assign(at(c.ebeu.n_ttllocv()), 0.0);
    mat.locv_old_2.assign(at(c.ebeu.n_ttllocv()), 0.0);
}

int terminal_of_function(const function_table& t, int k, int j, analysis kind) {
    if (kind == analysis::startup) return t.startup_kcl[at(k)] ? t.startup_kcl_row[at(k)] : -1;
    return t.flag_kcl[at(k)] ? j : -1;
}

int column_of_term(const mat_class& mat, const circuit& c, int u, int kind, int index) {
    auto node_column = [&](int node) {
        const int ref = c.ebeu.ref_nd;
        return node == ref ? -1 : mat.offs.nodev + (node > ref ? node - 1 : node);
    };
    switch (kind) {
        case kind_v:
            return node_column(c.ebeu.nd.row(u)[index]);
        case kind_vind:
            return node_column(c.ebeu.in.row(u)[index]);
        case kind_aux:
            return mat.column_of_aux[at(c.ebeu.first_aux[at(u)] + index)];
        case kind_auxs:
            return mat.kind == analysis::startup ? mat.offs.eauxs + c.ebeu.first_auxs[at(u)] + index : -1;
        case kind_curind: {
            const int auxs = c.ebeu.ib_auxs.row(u)[index];
            if (mat.kind == analysis::startup && auxs >= 0) return mat.offs.eauxs + auxs;
            return mat.column_of_aux[at(c.ebeu.ib_aux.row(u)[index])];
        }
        case kind_vr:
            return mat.offs.gvar + c.ebeu.vr_gbeu[at(c.ebeu.vr.first[at(u)] + index)];
        case kind_locv:
            return mat.kind == analysis::ssw ? mat.offs.locv + c.ebeu.first_locv[at(u)] + index : -1;
        default:
            unknown_kind("ebeu_mat_1", kind);
    }
}

int column_of_block_term(const mat_class& mat, const circuit& c, int u, int kind, int index) {
    if (kind == kind_vr) return mat.offs.gvar + c.gbeu.vr.row(u)[index];
    if (kind == kind_gaux) return mat.offs.gaux + c.gbeu.first_aux[at(u)] + index;
    unknown_kind("gbeu_mat_1", kind);
}
