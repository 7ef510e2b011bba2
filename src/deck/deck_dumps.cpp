#include "deck/deck_dumps.h"

#include <fstream>

#include "base/at.h"
#include "base/halt.h"

namespace {

std::ofstream open_dump(const char* file, const char* class_name) {
    std::ofstream out(file, std::ios::trunc);
    if (!out) halt({line(class_name, ": file ", file, " could not be opened. Halting...")});
    out.precision(10);
    out << class_name << '\n';
    return out;
}

void write_operand(std::ofstream& out, const char* label, const operand& a, const gprm_class& gprm) {
    if (a.from == operand::literal) out << label << a.value;
    if (a.from == operand::parameter) out << label << gprm.greal_name[at(a.index)];
}

}  // namespace

void write_input_dat(const circuit_file& cf) {
    std::ofstream out = open_dump("input.dat", "circuit_file");
    out << "n_end_cf = " << cf.n_end_cf << '\n';
    out << "n_begin_cct = " << cf.n_begin_cct << '\n';
    out << "n_end_cct = " << cf.n_end_cct << '\n';
    out << "n_solve = " << cf.n_solve << '\n';
    for (int i = 0; i < cf.n_solve; ++i)
        out << "  i = " << i << ", n_end_solve=" << cf.n_end_solve[at(i)]
            << ", n_begin_solve=" << cf.n_begin_solve[at(i)] << '\n';
}

void write_glbl_dat(const gprm_class& gprm) {
    std::ofstream out = open_dump("glbl.dat", "gprm_class");
    out << "n_gint = " << gprm.gint.size() << '\n';
    for (std::size_t i = 0; i < gprm.gint.size(); ++i)
        out << "  i = " << i << ", name = " << gprm.gint_name[i] << ", value = " << gprm.gint[i] << '\n';
    out << "n_gstr = " << gprm.gstr.size() << '\n';
    for (std::size_t i = 0; i < gprm.gstr.size(); ++i)
        out << "  i = " << i << ", name = " << gprm.gstr_name[i] << ", value = " << gprm.gstr[i] << '\n';
    out << "n_greal = " << gprm.greal.size() << '\n';
    out << "n_expr = " << gprm.n_expr << '\n';
    out << "flag_expr = " << gprm.flag_expr << '\n';
    for (std::size_t i = 0; i < gprm.greal.size(); ++i) {
        const expression& e = gprm.expr[i];
        out << "  i = " << i << ", name = " << gprm.greal_name[i] << ", base = " << gprm.greal_base[i]
            << ", value = " << gprm.greal[i] << ", operation = " << e.operation << ", n_arg = " << e.n_arg;
        write_operand(out, ", arg1 = ", e.arg1, gprm);
        write_operand(out, ", arg2 = ", e.arg2, gprm);
        out << ", dependents =";
        for (const int d : gprm.dependents[i]) out << ' ' << d;
        out << '\n';
    }
}

void write_ov_dat(const ov_class& ov) {
    std::ofstream out = open_dump("ov.dat", "ov_class");
    out << "n_ov = " << ov.n_ov() << '\n';
    for (std::size_t i = 0; i < ov.name.size(); ++i)
        out << "  i = " << i << ", name = " << ov.name[i] << ", left = " << ov.left[i] << ", right = " << ov.right[i]
            << ", kind = " << ov.kind[i] << ", index = " << ov.index[i] << ", instance = " << ov.instance[i]
            << ", unit = " << ov.unit[i] << ", usage = " << ov.usage[i] << '\n';
}
