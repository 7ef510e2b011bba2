#include <algorithm>
#include <climits>

#include "analyses/ac_system.h"
#include "analyses/layout_dumps.h"
#include "base/at.h"
#include "base/halt.h"
#include "sparse/pattern.h"

namespace {
[[noreturn]] void unknown_kind(const char* table, int kind) {
    halt({line(table, "_class::mat_1: var_flag not identified."), line("   var_flag = ", kind), "   Halting..."});
}

[[noreturn]] void unit_fault(const char* what) { halt({"ebau_class:set_values_1", what, "   Halting.."}); }

// What a small-signal unit reads must have an amplitude: an instance without a small-signal half gives none.
void check_links(const circuit& c) {
    const ebau_class& u = c.ebau;
    if (u.n() > 0 && u.ref_nd < 0) halt({"cct_class: reference node not found."});
    for (const int node : u.in.data)
        if (node < 0) unit_fault("   An independent node not assigned?");
    for (const int branch : u.ib.data) {
        if (branch < 0) unit_fault("  ind. branch must have a single ebe_ac.");
        if (u.first_aux[at(branch) + 1] == u.first_aux[at(branch)])
            unit_fault("  ind. branch has no auxiliary variable.");
    }
    for (std::size_t k = 0; k < u.vr_gbau.size(); ++k)
        if (u.vr_gbau[k] < 0)
            halt({"ect_to_ebeu_nd: i_eelu_nd = -1", line("   for i_ect_nd = ", u.vr.data[k]),
                  "cct_class: problem in assigning gct_to_gbeu_ac"});
}

void define_offs_solvec_ac(ac_system& s, const circuit& c) {
    s.offs.nodev = 0;
    s.offs.eauxs = s.offs.eaux = c.ebau.n() > 0 ? c.ebau.n_nd - 1 : 0;
    s.offs.gvar = s.offs.eaux + c.ebau.n_ttlaux();
    s.offs.gaux = s.offs.gvar + c.gbau.n_vr;
    s.n_svec = s.offs.gaux + c.gbau.n_ttlaux();
    s.svec.assign(at(s.n_svec), 0.0);
}

// Lays the rows of units. jac: the template's tables of derivatives.
class ac_layout {
public:
    ac_layout(ac_system& s, const circuit& c) : s_(s), c_(c) {}

    void lay_electrical(const std::vector<ebac1_class>& jac) {
        const ebau_class& units = c_.ebau;
        const function_table& t = c_.lib.ebac.func;
        std::vector<int> row_of_node(at(units.n_nd), -1);
        s_.ebce_row_of_func.assign(at(units.unit.n_ttlf()), -1);
        int row_next = 0;
        for (int u = 0; u < units.n(); ++u) {
            const int e = units.unit.i_lib[at(u)];
            for (int j = 0; j < t.n_func(e); ++j) {
                const int k = t.first_f[at(e)] + j, f = units.unit.first_func[at(u)] + j;
                int& row = s_.ebce_row_of_func[at(f)];
                if (t.flag_kcl[at(k)]) {
                    const int node = units.nd.row(u)[j];
                    if (node == units.ref_nd) continue;
                    if (row_of_node[at(node)] < 0) row_of_node[at(node)] = row_next++;
                    row = row_of_node[at(node)];
                    s_.ebe.to_row.push_back(row);
                    s_.ebe.from_f.push_back(f);
                } else {
                    row = row_next++;
                    ++n_own_;
                    s_.ebe.to_own.push_back(row);
                    s_.ebe.from_own.push_back(f);
                }
                lay_terms(t, k, j, row, column_of_ac_term, u, s_.ebe, jac[at(e)]);
            }
            s_.ebe.first_jac.push_back(static_cast<int>(s_.ebe.to_val.size()));
        }
        s_.nrow_ebce = (units.n() > 0 ? units.n_nd - 1 : 0) + n_own_;
    }

    void lay_blocks(const std::vector<gbac1_class>& jac) {
        const gbau_class& units = c_.gbau;
        const function_table& t = c_.lib.gbac.func;
        n_row_ = s_.nrow_ebce;
        for (int u = 0; u < units.n(); ++u) {
            const int e = units.unit.i_lib[at(u)];
            for (int j = 0; j < t.n_func(e); ++j) {
                s_.gbe.to_own.push_back(n_row_);
                s_.gbe.from_own.push_back(units.unit.first_func[at(u)] + j);
                lay_terms(t, t.first_f[at(e)] + j, j, n_row_++, column_of_ac_block_term, u, s_.gbe, jac[at(e)]);
            }
            s_.gbe.first_jac.push_back(static_cast<int>(s_.gbe.to_val.size()));
        }
    }

    int nnz() const { return pattern_.nnz(); }
    int n_row() const { return n_row_; }
    knuth<complex_value> finish() const { return pattern_.finish<complex_value>(n_row_, s_.n_svec); }

private:
    void lay_terms(const function_table& t, int k, int j, int row, decltype(&column_of_ac_term) column, int u,
                   slot_table& slots, const jac_tables<complex_value>& jac) {
        for (int d = t.first_fvar[at(k)]; d < t.first_fvar[at(k) + 1]; ++d) {
            if (!first_of_cell(t, k, d)) continue;
            const int kind = t.var_flag[at(d)], index = t.var_number[at(d)];
            const int col = column(s_, c_, u, kind, index);
            if (col < 0) continue;
            slots.to_val.push_back(pattern_.add(row, col));
            slots.from_jac.push_back(jac.offset(kind, j, index));
            slots.scale.push_back(0);
        }
    }

    ac_system& s_;
    const circuit& c_;
    pattern_builder pattern_;
    int n_own_ = 0, n_row_ = 0;
};

void set_limits(elimination_limits& limits, const tmpdim_class& t, bool with_blocks) {
    const long long mnz_w = (static_cast<long long>(t.mnz_ebce_ac) + (with_blocks ? t.mnz_gbce_ac : 0)) * t.f_mnz_w;
    limits.mnz_w = limits.m_matttlop1 = static_cast<int>(std::clamp(mnz_w, 0LL, static_cast<long long>(INT_MAX)));
    limits.m_matttlop2 = t.m_matttlop2;
    limits.m_matttlop3 = t.m_matttlop3;
}
}  // namespace

int column_of_ac_term(const ac_system& s, const circuit& c, int u, int kind, int index) {
    const ebau_class& units = c.ebau;
    const auto node_column = [&](int node) {
        return node == units.ref_nd ? -1 : s.offs.nodev + (node > units.ref_nd ? node - 1 : node);
    };
    switch (kind) {
        case kind_v:
            return node_column(units.nd.row(u)[index]);
        case kind_vind:
            return node_column(units.in.row(u)[index]);
        case kind_aux:
            return s.offs.eaux + units.first_aux[at(u)] + index;
        case kind_curind:
            return s.offs.eaux + units.first_aux[at(units.ib.row(u)[index])];
        case kind_vr:
            return s.offs.gvar + units.vr_gbau[at(units.vr.first[at(u)] + index)];
        default:
            unknown_kind("ebau", kind);
    }
}

int column_of_ac_block_term(const ac_system& s, const circuit& c, int u, int kind, int index) {
    if (kind == kind_vr) return s.offs.gvar + c.gbau.vr.row(u)[index];
    if (kind == kind_gaux) return s.offs.gaux + c.gbau.first_aux[at(u)] + index;
    unknown_kind("gbau", kind);
}

void set_mat_ac(ac_system& s, const circuit& c, const std::vector<ebac1_class>& ebac1,
                const std::vector<gbac1_class>& gbac1) {
    check_links(c);
    define_offs_solvec_ac(s, c);
    s.ebe = s.gbe = slot_table{};
    set_limits(s.e.limits, c.tmpdim, c.gbau.n() > 0);
    ac_layout lay(s, c);
    lay.lay_electrical(ebac1);
    const int nnz_ebce = lay.nnz();
    if (nnz_ebce > c.tmpdim.mnz_ebce_ac) halt({"ebce_mat_1_ac: nnz_ebce_c is too large. Halting..."});
    lay.lay_blocks(gbac1);
    if (c.gbau.n() > 0 && lay.nnz() - nnz_ebce > c.tmpdim.mnz_gbce_ac)
        halt({"gbce_mat_1_ac: nnz_gbce_c is too large. Halting..."});
    const int n_row = lay.n_row();
    if (n_row != s.n_svec)
        halt({"set_mat_2_ac: system matrix is not square!", line("  nrow_m = ", n_row), line("  ncol_m = ", s.n_svec),
              "  Halting..."});
    say(line("set_mat_2_ac: system matrix size is ", n_row, " x ", s.n_svec));
    s.m = lay.finish();
    check_knuth(s.m, "set_mat_2_ac: something wrong?");
    s.row_first = {0};
    s.slot_of_row.clear();
    s.column_of_row.clear();
    for (int i = 0; i < n_row; ++i) {
        for (int k = s.m.srow[at(i)]; k >= 0; k = s.m.prow[at(k)]) {
            s.slot_of_row.push_back(k);
            s.column_of_row.push_back(s.m.col[at(k)]);
        }
        s.row_first.push_back(static_cast<int>(s.slot_of_row.size()));
    }
    s.val_m.assign(at(s.m.nnz()), 0.0);
    s.rhs_m.assign(at(n_row), 0.0);
    write_ac_layout_dumps(s, c);
}
