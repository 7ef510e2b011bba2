#include <climits>

#include "analyses/layout_dumps.h"
#include "analyses/slices.h"
#include "base/at.h"
#include "base/halt.h"
#include "sparse/pattern.h"

namespace {
bool has_own_row(const function_table& t, int k, analysis kind) {
    if (kind == analysis::ssw) return t.flag_gnrl[at(k)] || t.flag_kcl[at(k)] || t.flag_locvar[at(k)];
    return (kind == analysis::startup ? t.startup_gnrl : t.flag_gnrl)[at(k)] != 0;
}

int own_rows(const circuit& c, analysis kind) {
    const function_table& t = c.lib.ebes.func;
    int n = 0;
    for (int s : c.ebeu.unit.i_lib)
        for (int j = 0; j < t.n_func(s); ++j) n += has_own_row(t, t.first_f[at(s)] + j, kind);
    return n;
}

// A unit whose functions are laid: what its family has for it. jac is null where slots are only counted.
struct laid_unit {
    int u;
    const function_table& t;
    const unit_core& unit;
    slot_table& slots;
    decltype(&column_of_term) column;
    const jac_tables<double>* jac;

    int n_func() const { return t.n_func(unit.i_lib[at(u)]); }
    int first_k() const { return t.first_f[at(unit.i_lib[at(u)])]; }
    int flat(int j) const { return unit.first_func[at(u)] + j; }
};

// Builds the system; also run once without slots, to count.
class layout {
public:
    layout(mat_class& mat, const circuit& c) : mat_(mat), c_(c) {}

    void lay_electrical(const std::vector<ebes1_class>* jac) {
        mat_.ebce_row_of_node.assign(at(c_.ebeu.n_nd), -1);
        mat_.ebce_row_of_func.assign(at(c_.ebeu.unit.n_ttlf()), -1);
        const bool periodic = mat_.kind == analysis::ssw;
        const int n_nodes = c_.ebeu.n() > 0 ? c_.ebeu.n_nd - 1 : 0;
        if (periodic) sum_currents();
        mat_.nrow_kcl = row_next_ = periodic ? n_nodes : 0;
        mat_.nrow_ebce = (periodic ? 0 : n_nodes) + own_rows(c_, mat_.kind);
        for_units<electrical_family>(c_.ebeu.unit, c_.lib.ebes, jac, [this](const laid_unit& w) {
            for (int j = 0; j < w.n_func(); ++j) lay_function(w, j);
            mat_.kcl_ddt.first.push_back(mat_.kcl_ddt.n());
            mat_.first_locv.push_back(static_cast<int>(mat_.locv.from.size()));
        });
    }

    void lay_blocks(const std::vector<gbes1_class>* jac) {
        row_next_ = mat_.nrow_kcl + mat_.nrow_ebce;
        for_units<general_family>(c_.gbeu.unit, c_.lib.gbes, jac, [this](const laid_unit& w) {
            for (int j = 0; j < w.n_func(); ++j) lay_own_row(w, j, row_next_++, true);
        });
        n_row_ = row_next_;
    }

    int nnz() const { return pattern_.nnz(); }
    int nnz_kcl() const { return static_cast<int>(mat_.periodic.current.size()); }
    int n_row() const { return n_row_; }
    knuth<double> finish() const { return pattern_.finish<double>(n_row_, mat_.n_svec); }

private:
    template <class Family, class F>
    void for_units(const unit_core& unit, const basic_library& lib, const std::vector<typename Family::jac>* jac, F f) {
        slot_table& slots = mat_.*Family::slots;
        for (int u = 0; u < unit.n; ++u) {
            f(laid_unit{u, lib.func, unit, slots, Family::column, jac ? &(*jac)[at(unit.i_lib[at(u)])] : nullptr});
            slots.first_jac.push_back(static_cast<int>(slots.to_val.size()));
        }
    }

    // The rows of nodes of the periodic system, each in the place of its node among the unknowns.
    void sum_currents() {
        const int ref = c_.ebeu.ref_nd;
        for (const int k : mat_.terminal_of_unknown) {
            const int node = c_.ebeu.nd.data[at(k)], col = mat_.column_of_terminal[at(k)];
            if (node == ref) continue;
            const int row = node > ref ? node - 1 : node;
            mat_.periodic.node_row.push_back(row);
            mat_.periodic.current.push_back(col);
            mat_.periodic.current_slot.push_back(pattern_.add(row, col));
        }
    }

    // A function of an electrical unit: a part of a node's row, a row of its own, or nothing.
    void lay_function(const laid_unit& w, int j) {
        const int k = w.first_k() + j;
        if (mat_.kind == analysis::ssw) return lay_periodic(w, j);
        if (w.t.flag_locvar[at(k)]) {
            mat_.locv.from.push_back(w.flat(j));
            mat_.locv.to.push_back(c_.ebeu.first_locv[at(w.u)] + w.t.i_locvar[at(k)]);
        }
        int& row = mat_.ebce_row_of_func[at(w.flat(j))];
        if (const int terminal = terminal_of_function(w.t, k, j, mat_.kind); terminal >= 0)
            row = lay_node_row(w, j, terminal);
        else if (has_own_row(w.t, k, mat_.kind))
            lay_own_row(w, j, row = row_next_++, false);
    }

    // A current and a local variable have a row that defines them, at the reference node, too.
    void lay_periodic(const laid_unit& w, int j) {
        const int k = w.first_k() + j;
        int& row = mat_.ebce_row_of_func[at(w.flat(j))];
        if (w.t.flag_gnrl[at(k)]) return lay_own_row(w, j, row = row_next_++, false);
        if (!has_own_row(w.t, k, mat_.kind)) return;
        row = row_next_++;
        const int x = w.t.flag_kcl[at(k)] ? mat_.column_of_terminal[at(c_.ebeu.nd.first[at(w.u)] + j)]
                                          : mat_.offs.locv + c_.ebeu.first_locv[at(w.u)] + w.t.i_locvar[at(k)];
        mat_.periodic.row.push_back(row);
        mat_.periodic.x.push_back(x);
        mat_.periodic.f.push_back(w.flat(j));
        mat_.periodic.x_slot.push_back(pattern_.add(row, x));
        lay_terms(w, j, row, negated);
        if (w.t.flag_kcl[at(k)] && w.t.flag_ddt[at(k)]) lay_state(w, j, row, false);
    }

    // Gives the row; -1: that of the reference node.
    int lay_node_row(const laid_unit& w, int j, int terminal) {
        const int k = w.first_k() + j, node = c_.ebeu.nd.row(w.u)[terminal];
        int row = -1;
        if (node != c_.ebeu.ref_nd) {
            if (mat_.ebce_row_of_node[at(node)] < 0) mat_.ebce_row_of_node[at(node)] = row_next_++;
            row = mat_.ebce_row_of_node[at(node)];
        }
        int derivative = -1;
        if (mat_.kind == analysis::trns && w.t.flag_ddt[at(k)]) {
            derivative = mat_.kcl_ddt.n();
            mat_.kcl_ddt.f.push_back(w.flat(j));
            mat_.kcl_ddt.z.push_back(c_.ebeu.first_locv[at(w.u)] + w.t.ddt_var_number[at(k)]);
            mat_.kcl_ddt.terminal.push_back(c_.ebeu.nd.first[at(w.u)] + j);
            mat_.kcl_ddt.row.push_back(row);
        }
        if (row < 0) return row;
        lay_terms(w, j, row, as_it_is);
        // The row also depends on what its local variable depends on, times the constant of the method.
        if (derivative >= 0) lay_terms(w, w.t.kcl_locvar_func[at(k)], row, by_constant);
        w.slots.to_row.push_back(row);
        w.slots.from_f.push_back(w.flat(j));
        w.slots.ddt.push_back(derivative);
        return row;
    }

    void lay_own_row(const laid_unit& w, int j, int row, bool is_block) {
        const int k = w.first_k() + j;
        lay_terms(w, j, row, as_it_is);
        w.slots.to_own.push_back(row);
        w.slots.from_own.push_back(w.flat(j));
        if (in_time(mat_.kind) && w.t.flag_ddt[at(k)]) lay_state(w, j, row, is_block);
    }

    // The row is that of a derivative.
    void lay_state(const laid_unit& w, int j, int row, bool is_block) {
        const int k = w.first_k() + j;
        const int col = w.column(mat_, c_, w.u, w.t.ddt_var_flag[at(k)], w.t.ddt_var_number[at(k)]);
        mat_.state.row.push_back(row);
        mat_.state.col.push_back(col);
        mat_.state.slot.push_back(col < 0 ? -1 : pattern_.add(row, col));
        mat_.state.f.push_back(w.flat(j));
        mat_.state.is_block.push_back(is_block ? 1 : 0);
    }

    void lay_terms(const laid_unit& w, int j, int row, entry_scale scale) {
        const int k = w.first_k() + j;
        for (int d = w.t.first_fvar[at(k)]; d < w.t.first_fvar[at(k) + 1]; ++d) {
            if (!first_of_cell(w.t, k, d)) continue;
            const int kind = w.t.var_flag[at(d)], index = w.t.var_number[at(d)];
            const int col = w.column(mat_, c_, w.u, kind, index);
            if (col < 0) continue;
            const int slot = pattern_.add(row, col);
            if (!w.jac) continue;
            w.slots.to_val.push_back(slot);
            w.slots.from_jac.push_back(w.jac->offset(kind, j, index));
            w.slots.scale.push_back(scale);
        }
    }

    mat_class& mat_;
    const circuit& c_;
    pattern_builder pattern_;
    int row_next_ = 0, n_row_ = 0;
};

void clear_tables(mat_class& mat) {
    mat.ebe = slot_table{};
    mat.gbe = slot_table{};
    mat.kcl_ddt = kcl_derivatives{};
    mat.state = state_rows{};
    mat.periodic = periodic_rows{};
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

bool first_of_cell(const function_table& t, int k, int term) {
    for (int d = t.first_fvar[at(k)]; d < term; ++d)
        if (t.var_flag[at(d)] == t.var_flag[at(term)] && t.var_number[at(d)] == t.var_number[at(term)]) return false;
    return true;
}

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
    const int nnz_ebce = lay.nnz() - lay.nnz_kcl();
    // Other analyses than dc have entries that the first count did not see.
    if (nnz_ebce > mat.mnz_ebce) {
        constexpr const char* names[] = {"dc", "startup", "trns", "ssw"};
        halt({line("ebce_mat_1_", names[static_cast<int>(mat.kind)], ": nnz_ebce is too large. Halting...")});
    }
    lay.lay_blocks(&gbes1);
    if (c.gbeu.n() > 0 && lay.nnz() - lay.nnz_kcl() - nnz_ebce > mat.mnz_gbce)
        halt({"gbce_mat_1: nnz_gbce is too large. Halting..."});
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
