#include "analyses/layout_dumps.h"

#include <fstream>
#include <string>

#include "base/at.h"
#include "sparse/knuth_write.h"

namespace {
// One line a term; row and col of function j of unit u come from the caller.
template <class Row, class Col>
void write_terms(std::ostream& out, const function_table& t, int s, const Row& row, const Col& col) {
    for (int j = 0; j < t.n_func(s); ++j) {
        const int k = t.first_f[at(s)] + j;
        for (int d = t.first_fvar[at(k)]; d < t.first_fvar[at(k) + 1]; ++d)
            out << "  f = " << j << ", var_flag = " << t.var_flag[at(d)] << ", var_number = " << t.var_number[at(d)]
                << ", row = " << row(j) << ", col = " << col(t.var_flag[at(d)], t.var_number[at(d)]) << '\n';
    }
}

// The rows [from, to) of the system as a matrix of their own.
template <class T>
knuth<T> rows_of(const knuth<T>& m, int from, int to) {
    knuth<T> part;
    knuth_zero(part, to - from, m.n_col);
    for (int i = from; i < to; ++i)
        for (int k = m.srow[at(i)]; k >= 0; k = m.prow[at(k)]) knuth_addentry(part, i - from, m.col[at(k)], T(0));
    return part;
}

const char* electrical_pattern(analysis kind) {
    constexpr const char* names[] = {"ebce1_dc.dat", "ebce1_strt.dat", "ebce1_trns.dat", "ebce1_ssw.dat"};
    return names[static_cast<int>(kind)];
}

// The terms of all units of a family: row of flat function f, column of a term of unit u.
template <class Row, class Col>
void write_units(const std::string& file, const char* units, const char* templates, const unit_core& unit,
                 const basic_library& lib, const Row& row, const Col& col) {
    std::ofstream out(file);
    out << "mat_class\n";
    for (int u = 0; u < unit.n; ++u) {
        const int s = unit.i_lib[at(u)];
        out << "i_" << units << " = " << u << ", i_" << templates << " = " << s << '\n';
        write_terms(
            out, lib.func, s, [&](int j) { return row(unit.first_func[at(u)] + j); },
            [&](int kind, int index) { return col(u, kind, index); });
    }
}
}  // namespace

void write_layout_dumps(const mat_class& mat, const circuit& c) {
    const int end_ebce = mat.nrow_kcl + mat.nrow_ebce;
    if (c.cf.output.kcl && mat.kind == analysis::ssw) mat_write_knuthij1(rows_of(mat.m, 0, mat.nrow_kcl), "kcl.dat");
    if (c.cf.output.ebce) {
        write_units(
            "ebce.dat", "ebeu", "ebes", c.ebeu.unit, c.lib.ebes, [&](int f) { return mat.ebce_row_of_func[at(f)]; },
            [&](int u, int kind, int index) { return column_of_term(mat, c, u, kind, index); });
        mat_write_knuthij1(rows_of(mat.m, mat.nrow_kcl, end_ebce), electrical_pattern(mat.kind));
    }
    if (c.cf.output.gbce) {
        write_units(
            "gbce.dat", "gbeu", "gbes", c.gbeu.unit, c.lib.gbes, [&](int f) { return end_ebce + f; },
            [&](int u, int kind, int index) { return column_of_block_term(mat, c, u, kind, index); });
        mat_write_knuthij1(rows_of(mat.m, end_ebce, mat.m.n_row), "gbce1.dat");
    }
    if (c.cf.output.smat) mat_write_knuthij1(mat.m, "smat.dat");
}

void write_ac_layout_dumps(const ac_class& ac, const circuit& c) {
    const ac_system& s = ac.s;
    const auto write = [&](const auto& f, const std::string& rows, const char* units, const char* templates,
                           const auto& row, int first_row, int end_row) {
        write_units(rows + "_c.dat", units, templates, f.units.unit, f.lib, row,
                    [&](int u, int kind, int index) { return column_of_ac_term(s, f, u, kind, index); });
        mat_write_knuthij1(rows_of(s.m, first_row, end_row), rows + "1_c.dat");
    };
    if (c.cf.output.ebce)
        write(
            ac.ebe, "ebce", "ebau", "ebac", [&](int f) { return s.ebce_row_of_func[at(f)]; }, 0, s.nrow_ebce);
    int first = s.nrow_ebce;
    for_ac_blocks(ac, [&]<class Rows>(const unit_family<Rows>& f) {
        constexpr ac_block_unknowns x = Rows::unknowns;
        const int end = first + f.units.unit.n_ttlf();
        if (c.cf.output.*x.dump)
            write(
                f, x.rows, x.units, x.templates, [first](int k) { return first + k; }, first, end);
        first = end;
    });
    if (c.cf.output.smat) mat_write_knuthij1(s.m, "smat_c.dat");
}
