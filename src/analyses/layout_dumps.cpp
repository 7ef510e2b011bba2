#include "analyses/layout_dumps.h"

#include <fstream>

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
knuth<double> rows_of(const knuth<double>& m, int from, int to) {
    knuth<double> part;
    knuth_zero(part, to - from, m.n_col);
    for (int i = from; i < to; ++i)
        for (int k = m.srow[at(i)]; k >= 0; k = m.prow[at(k)]) knuth_addentry(part, i - from, m.col[at(k)], 0.0);
    return part;
}

const char* electrical_pattern(analysis kind) {
    return kind == analysis::dc ? "ebce1_dc.dat" : kind == analysis::startup ? "ebce1_strt.dat" : "ebce1_trns.dat";
}
}  // namespace

void write_layout_dumps(const mat_class& mat, const circuit& c) {
    if (c.cf.output.ebce) {
        std::ofstream out("ebce.dat");
        out << "mat_class\n";
        for (int u = 0; u < c.ebeu.n(); ++u) {
            const int s = c.ebeu.unit.i_lib[at(u)];
            out << "i_ebeu = " << u << ", i_ebes = " << s << '\n';
            write_terms(
                out, c.lib.ebes.func, s,
                [&](int j) { return mat.ebce_row_of_func[at(c.ebeu.unit.first_func[at(u)] + j)]; },
                [&](int kind, int index) { return column_of_term(mat, c, u, kind, index); });
        }
        mat_write_knuthij1(rows_of(mat.m, 0, mat.nrow_ebce), electrical_pattern(mat.kind));
    }
    if (c.cf.output.gbce) {
        std::ofstream out("gbce.dat");
        out << "mat_class\n";
        int first_row = mat.nrow_ebce;
        for (int u = 0; u < c.gbeu.n(); ++u) {
            const int s = c.gbeu.unit.i_lib[at(u)];
            out << "i_gbeu = " << u << ", i_gbes = " << s << '\n';
            write_terms(
                out, c.lib.gbes.func, s, [&](int j) { return first_row + j; },
                [&](int kind, int index) { return column_of_block_term(mat, c, u, kind, index); });
            first_row += c.lib.gbes.func.n_func(s);
        }
        mat_write_knuthij1(rows_of(mat.m, mat.nrow_ebce, mat.m.n_row), "gbce1.dat");
    }
    if (c.cf.output.smat) mat_write_knuthij1(mat.m, "smat.dat");
}
