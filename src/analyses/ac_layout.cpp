#include <algorithm>
#include <climits>

#include "analyses/ac_class.h"
#include "analyses/layout_dumps.h"
#include "base/at.h"
#include "base/halt.h"
#include "sparse/pattern.h"

namespace {
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

void define_offs_solvec_ac(ac_class& ac) {
    ac_system& s = ac.s;
    const ebau_class& e = ac.ebe.units;
    s.offs.nodev = 0;
    s.offs.eauxs = s.offs.eaux = e.n() > 0 ? e.n_nd - 1 : 0;
    s.n_svec = s.offs.eaux + e.n_ttlaux();
    for_ac_blocks(ac, [&s]<class Rows>(const unit_family<Rows>& f) {
        s.offs.*Rows::unknowns.var = s.n_svec;
        s.offs.*Rows::unknowns.aux = s.n_svec + f.units.n_vr;
        s.n_svec += f.units.n_vr + f.units.n_ttlaux();
    });
    s.svec.assign(at(s.n_svec), 0.0);
}

// Lays the rows of units, electrical ones first.
class ac_layout {
public:
    explicit ac_layout(ac_system& s) : s_(s) {}

    void lay_electrical(const unit_family<electrical_ac_family>& f) {
        const ebau_class& units = f.units;
        const function_table& t = f.lib.func;
        std::vector<int> row_of_node(at(units.n_nd), -1);
        s_.ebce_row_of_func.assign(at(units.unit.n_ttlf()), -1);
        int row_next = 0, n_own = 0;
        for (int u = 0; u < units.n(); ++u) {
            const int e = f.entry(u);
            for (int j = 0; j < t.n_func(e); ++j) {
                const int flat = units.unit.first_func[at(u)] + j;
                int& row = s_.ebce_row_of_func[at(flat)];
                if (t.flag_kcl[at(t.first_f[at(e)] + j)]) {
                    const int node = units.nd.row(u)[j];
                    if (node == units.ref_nd) continue;
                    if (row_of_node[at(node)] < 0) row_of_node[at(node)] = row_next++;
                    row = row_of_node[at(node)];
                    s_.ebe.to_row.push_back(row);
                    s_.ebe.from_f.push_back(flat);
                } else {
                    row = row_next++;
                    ++n_own;
                    s_.ebe.to_own.push_back(row);
                    s_.ebe.from_own.push_back(flat);
                }
                lay_terms(f, u, j, row);
            }
            s_.ebe.first_jac.push_back(static_cast<int>(s_.ebe.to_val.size()));
        }
        n_row_ = s_.nrow_ebce = (units.n() > 0 ? units.n_nd - 1 : 0) + n_own;
    }

    template <class Rows>
    void lay_blocks(const unit_family<Rows>& f) {
        slot_table& slots = s_.*Rows::slots;
        for (int u = 0; u < f.n(); ++u) {
            for (int j = 0; j < f.lib.func.n_func(f.entry(u)); ++j) {
                slots.to_own.push_back(n_row_);
                slots.from_own.push_back(f.units.unit.first_func[at(u)] + j);
                lay_terms(f, u, j, n_row_++);
            }
            slots.first_jac.push_back(static_cast<int>(slots.to_val.size()));
        }
    }

    int nnz() const { return pattern_.nnz(); }
    int n_row() const { return n_row_; }
    knuth<complex_value> finish() const { return pattern_.finish<complex_value>(n_row_, s_.n_svec); }

private:
    // The terms of function j of unit u.
    template <class Rows>
    void lay_terms(const unit_family<Rows>& f, int u, int j, int row) {
        const function_table& t = f.lib.func;
        const int e = f.entry(u), k = t.first_f[at(e)] + j;
        slot_table& slots = s_.*Rows::slots;
        for (int d = t.first_fvar[at(k)]; d < t.first_fvar[at(k) + 1]; ++d) {
            if (!first_of_cell(t, k, d)) continue;
            const int kind = t.var_flag[at(d)], index = t.var_number[at(d)];
            const int col = column_of_ac_term(s_, f, u, kind, index);
            if (col < 0) continue;
            slots.to_val.push_back(pattern_.add(row, col));
            slots.from_jac.push_back(f.jac[at(e)].offset(kind, j, index));
            slots.scale.push_back(as_it_is);
        }
    }

    ac_system& s_;
    pattern_builder pattern_;
    int n_row_ = 0;
};

void set_limits(ac_class& ac, const tmpdim_class& t) {
    elimination_limits& limits = ac.s.e.limits;
    long long mnz = t.mnz_ebce_ac;
    for_ac_blocks(ac, [&]<class Rows>(const unit_family<Rows>& f) {
        if (f.n() > 0) mnz += t.*Rows::unknowns.limit;
    });
    const long long mnz_w = mnz * t.f_mnz_w;
    limits.mnz_w = limits.m_matttlop1 = static_cast<int>(std::clamp(mnz_w, 0LL, static_cast<long long>(INT_MAX)));
    limits.m_matttlop2 = t.m_matttlop2;
    limits.m_matttlop3 = t.m_matttlop3;
}

void check_limit(int nnz, int limit, const char* rows) {
    if (nnz > limit) halt({line(rows, "_mat_1_ac: nnz_", rows, "_c is too large. Halting...")});
}
}  // namespace

void unknown_ac_kind(const char* units, int kind) {
    halt({line(units, "_class::mat_1: var_flag not identified."), line("   var_flag = ", kind), "   Halting..."});
}

int column_of_ac_term(const ac_system& s, const unit_family<electrical_ac_family>& f, int u, int kind, int index) {
    const ebau_class& units = f.units;
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
            unknown_ac_kind("ebau", kind);
    }
}

void set_mat_ac(ac_class& ac, const circuit& c) {
    ac_system& s = ac.s;
    check_links(c);
    define_offs_solvec_ac(ac);
    s.ebe = s.gbe = s.xbe = slot_table{};
    set_limits(ac, c.tmpdim);
    ac_layout lay(s);
    lay.lay_electrical(ac.ebe);
    check_limit(lay.nnz(), c.tmpdim.mnz_ebce_ac, "ebce");
    for_ac_blocks(ac, [&]<class Rows>(const unit_family<Rows>& f) {
        const int before = lay.nnz();
        lay.lay_blocks(f);
        if (f.n() > 0) check_limit(lay.nnz() - before, c.tmpdim.*Rows::unknowns.limit, Rows::unknowns.rows);
    });
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
    s.rest.assign(at(n_row), 0.0);
    s.step.assign(at(n_row), 0.0);
    write_ac_layout_dumps(ac, c);
}
