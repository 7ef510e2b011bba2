#include <climits>

#include "analyses/layout_dumps.h"
#include "analyses/mat_class.h"
#include "base/halt.h"
#include "sparse/pattern.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

// What a function of an electrical template is in an analysis: a part of a node's row, a row of its own, or nothing.
struct function_part {
    enum { none, node_row, own_row } row = none;
    int terminal = -1;  // node_row: whose node
};

function_part part_of(const function_table& t, int k, int j, analysis kind) {
    if (kind == analysis::startup) {
        if (t.startup_kcl[at(k)]) return {function_part::node_row, t.startup_kcl_row[at(k)]};
        if (t.startup_gnrl[at(k)]) return {function_part::own_row, -1};
        return {};
    }
    if (t.flag_kcl[at(k)]) return {function_part::node_row, j};
    if (t.flag_gnrl[at(k)]) return {function_part::own_row, -1};
    return {};
}

// The first word of its (function, variable) cell. A variable that stands twice on a line is added once.
bool first_of_cell(const function_table& t, int k, int term) {
    for (int d = t.first_fvar[at(k)]; d < term; ++d)
        if (t.var_flag[at(d)] == t.var_flag[at(term)] && t.var_number[at(d)] == t.var_number[at(term)]) return false;
    return true;
}

int own_rows(const circuit& c, analysis kind) {
    const function_table& t = c.lib.ebes.func;
    int n = 0;
    for (int s : c.ebeu.unit.i_lib)
        for (int j = 0; j < t.n_func(s); ++j)
            n += part_of(t, t.first_f[at(s)] + j, j, kind).row == function_part::own_row;
    return n;
}

// Builds the system; also run once without slots, to count.
class layout {
public:
    layout(mat_class& mat, const circuit& c) : mat_(mat), c_(c), te_(c.lib.ebes.func), tg_(c.lib.gbes.func) {}

    void lay_electrical(const std::vector<ebes1_class>* ebes1) {
        mat_.ebce_row_of_node.assign(at(c_.ebeu.n_nd), -1);
        mat_.ebce_row_of_func.assign(at(c_.ebeu.unit.n_ttlf()), -1);
        mat_.nrow_ebce = (c_.ebeu.n() > 0 ? c_.ebeu.n_nd - 1 : 0) + own_rows(c_, mat_.kind);
        for (int u = 0; u < c_.ebeu.n(); ++u) {
            const int s = c_.ebeu.unit.i_lib[at(u)];
            const ebes1_class* jac = ebes1 ? &(*ebes1)[at(s)] : nullptr;
            for (int j = 0; j < te_.n_func(s); ++j) lay_function(u, te_.first_f[at(s)], j, jac);
            close_unit(mat_.ebe);
            mat_.kcl_ddt.first.push_back(mat_.kcl_ddt.n());
            mat_.first_locv.push_back(static_cast<int>(mat_.locv.from.size()));
        }
    }

    void lay_blocks(const std::vector<gbes1_class>* gbes1) {
        int row = mat_.nrow_ebce;
        for (int u = 0; u < c_.gbeu.n(); ++u) {
            const int s = c_.gbeu.unit.i_lib[at(u)];
            for (int j = 0; j < tg_.n_func(s); ++j, ++row) {
                const int k = tg_.first_f[at(s)] + j;
                for (int d = tg_.first_fvar[at(k)]; d < tg_.first_fvar[at(k) + 1]; ++d) {
                    if (!first_of_cell(tg_, k, d)) continue;
                    const int kind = tg_.var_flag[at(d)], index = tg_.var_number[at(d)];
                    const int slot = pattern_.add(row, column_of_block_term(mat_, c_, u, kind, index));
                    if (gbes1) add_jac(mat_.gbe, slot, (*gbes1)[at(s)].offset(kind, j, index), 0);
                }
                mat_.gbe.to_own.push_back(row);
                mat_.gbe.from_own.push_back(c_.gbeu.unit.first_func[at(u)] + j);
                if (mat_.kind == analysis::trns && tg_.flag_ddt[at(k)]) {
                    const int col =
                        column_of_block_term(mat_, c_, u, tg_.ddt_var_flag[at(k)], tg_.ddt_var_number[at(k)]);
                    add_state(row, col, c_.gbeu.unit.first_func[at(u)] + j, true);
                }
            }
            close_unit(mat_.gbe);
        }
        n_row_ = row;
    }

    int nnz() const { return pattern_.nnz(); }
    int n_row() const { return n_row_; }
    knuth<double> finish() const { return pattern_.finish<double>(n_row_, mat_.n_svec); }

private:
    void lay_function(int u, int first_k, int j, const ebes1_class* jac) {
        const int k = first_k + j, flat_f = c_.ebeu.unit.first_func[at(u)] + j;
        if (te_.flag_locvar[at(k)]) {
            mat_.locv.from.push_back(flat_f);
            mat_.locv.to.push_back(c_.ebeu.first_locv[at(u)] + te_.i_locvar[at(k)]);
        }
        const function_part part = part_of(te_, k, j, mat_.kind);
        if (part.row == function_part::none) return;
        const bool with_ddt = mat_.kind == analysis::trns && te_.flag_ddt[at(k)];
        int row = -1;
        if (part.row == function_part::own_row) {
            row = row_next_++;
        } else {
            const int node = c_.ebeu.nd.row(u)[part.terminal];
            if (node != c_.ebeu.ref_nd) {
                if (mat_.ebce_row_of_node[at(node)] < 0) mat_.ebce_row_of_node[at(node)] = row_next_++;
                row = mat_.ebce_row_of_node[at(node)];
            }
        }
        mat_.ebce_row_of_func[at(flat_f)] = row;
        int derivative = -1;
        if (with_ddt && part.row == function_part::node_row) {
            derivative = mat_.kcl_ddt.n();
            mat_.kcl_ddt.f.push_back(flat_f);
            mat_.kcl_ddt.z.push_back(c_.ebeu.first_locv[at(u)] + te_.ddt_var_number[at(k)]);
            mat_.kcl_ddt.terminal.push_back(c_.ebeu.nd.first[at(u)] + j);
            mat_.kcl_ddt.row.push_back(row);
        }
        if (row < 0) return;
        lay_terms(u, k, j, row, 0, jac);
        if (derivative >= 0) {
            // The row also depends on what its local variable depends on, times the constant of the method.
            const int defining = te_.kcl_locvar_func[at(k)];
            lay_terms(u, first_k + defining, defining, row, 1, jac);
        }
        if (part.row == function_part::node_row) {
            mat_.ebe.to_row.push_back(row);
            mat_.ebe.from_f.push_back(flat_f);
            mat_.ebe.ddt.push_back(derivative);
        } else {
            mat_.ebe.to_own.push_back(row);
            mat_.ebe.from_own.push_back(flat_f);
            if (with_ddt)
                add_state(row, column_of_term(mat_, c_, u, te_.ddt_var_flag[at(k)], te_.ddt_var_number[at(k)]), flat_f,
                          false);
        }
    }

    void lay_terms(int u, int k, int j, int row, std::uint8_t scale, const ebes1_class* jac) {
        for (int d = te_.first_fvar[at(k)]; d < te_.first_fvar[at(k) + 1]; ++d) {
            if (!first_of_cell(te_, k, d)) continue;
            const int kind = te_.var_flag[at(d)], index = te_.var_number[at(d)];
            const int col = column_of_term(mat_, c_, u, kind, index);
            if (col < 0) continue;
            const int slot = pattern_.add(row, col);
            if (jac) add_jac(mat_.ebe, slot, jac->offset(kind, j, index), scale);
        }
    }

    static void add_jac(slot_table& t, int slot, int from, std::uint8_t scale) {
        t.to_val.push_back(slot);
        t.from_jac.push_back(from);
        t.scale.push_back(scale);
    }

    void add_state(int row, int col, int flat_f, bool is_block) {
        mat_.state.row.push_back(row);
        mat_.state.col.push_back(col);
        mat_.state.slot.push_back(col < 0 ? -1 : pattern_.add(row, col));
        mat_.state.f.push_back(flat_f);
        mat_.state.is_block.push_back(is_block ? 1 : 0);
    }

    static void close_unit(slot_table& t) { t.first_jac.push_back(static_cast<int>(t.to_val.size())); }

    mat_class& mat_;
    const circuit& c_;
    const function_table &te_, &tg_;
    pattern_builder pattern_;
    int row_next_ = 0, n_row_ = 0;
};

void clear_tables(mat_class& mat) {
    mat.ebe = slot_table{};
    mat.gbe = slot_table{};
    mat.kcl_ddt = kcl_derivatives{};
    mat.state = state_rows{};
    mat.first_locv = {0};
    mat.locv = value_moves{};
}

// Entries that sum the currents of terminals into the rows of nodes, in a system that has the currents as unknowns.
int currents_in_rows_of_nodes(const circuit& c) {
    int n = 0;
    for (int u = 0; u < c.ebeu.n(); ++u) {
        if (c.lib.ebes.flag.ground_dummy[at(c.ebeu.unit.i_lib[at(u)])]) continue;
        for (int j = 0; j < c.ebeu.nd.size(u); ++j) n += c.ebeu.nd.row(u)[j] != c.ebeu.ref_nd;
    }
    return n;
}

int limited_product(int a, int b) {
    const long long p = static_cast<long long>(a) * b;
    return p > INT_MAX ? INT_MAX : p < 0 ? 0 : static_cast<int>(p);
}

}  // namespace

void allocate_system(mat_class& mat, const circuit& c) {
    mat.mnz_ebce = c.tmpdim.mnz_ebce;
    mat.mnz_gbce = c.tmpdim.mnz_gbce;
    const long long mnz_kcl = currents_in_rows_of_nodes(c);
    const long long mnz_m = mnz_kcl + mat.mnz_ebce + (c.gbeu.n() > 0 ? mat.mnz_gbce : 0);
    mat.e.names = real_names;
    mat.e.limits.mnz_w = limited_product(mnz_m > INT_MAX ? INT_MAX : static_cast<int>(mnz_m), c.tmpdim.f_mnz_w);
    mat.e.limits.m_matttlop1 = mat.e.limits.mnz_w;
    mat.e.limits.m_matttlop2 = c.tmpdim.m_matttlop2;
    mat.e.limits.m_matttlop3 = c.tmpdim.m_matttlop3;
    define_offs_solvec(mat, c, analysis::dc);
    clear_tables(mat);
    layout count(mat, c);
    count.lay_electrical(nullptr);
    const int nnz_ebce = count.nnz();
    if (nnz_ebce > mat.mnz_ebce) halt({"mat_class::ebce_mat_1_allocate:", "  nnz_ebce is too large. Halting..."});
    count.lay_blocks(nullptr);
    if (c.gbeu.n() > 0 && count.nnz() - nnz_ebce > mat.mnz_gbce)
        halt({"mat_class::gbce_mat_1_allocate:", "  nnz_gbce is too large. Halting..."});
}

void set_mat(mat_class& mat, const circuit& c, const std::vector<ebes1_class>& ebes1,
             const std::vector<gbes1_class>& gbes1) {
    clear_tables(mat);
    ++mat.layout;
    layout lay(mat, c);
    lay.lay_electrical(&ebes1);
    const int nnz_ebce = lay.nnz();
    // A transient and a start-up have entries that the first count did not see.
    if (nnz_ebce > mat.mnz_ebce)
        halt({line("ebce_mat_1_",
                   mat.kind == analysis::startup ? "startup"
                   : mat.kind == analysis::dc    ? "dc"
                                                 : "trns",
                   ": nnz_ebce is too large. Halting...")});
    lay.lay_blocks(&gbes1);
    if (c.gbeu.n() > 0 && lay.nnz() - nnz_ebce > mat.mnz_gbce) halt({"gbce_mat_1: nnz_gbce is too large. Halting..."});
    const int n_row = lay.n_row();
    if (n_row != mat.n_svec)
        halt({"mat::set_mat_2: system matrix is not square!", line("  nrow_m = ", n_row),
              line("  ncol_m = ", mat.n_svec), "  Halting..."});
    say(line("mat::set_mat_2: system matrix size is ", n_row, " x ", mat.n_svec));
    mat.m = lay.finish();
    check_knuth(mat.m, "set_mat_2: something wrong?");
    mat.val_m.assign(at(mat.m.nnz()), 0.0);
    mat.rhs_m.assign(at(n_row), 0.0);
    kcl_derivatives& k = mat.kcl_ddt;
    for (auto* v : {&k.total, &k.total_1, &k.total_2, &k.still, &k.still_1, &k.still_2, &k.rate})
        v->assign(at(k.n()), 0.0);
    for (auto* v : {&mat.state.f_now, &mat.state.f_1, &mat.state.f_2}) v->assign(at(mat.state.n()), 0.0);
    write_layout_dumps(mat, c);
}
