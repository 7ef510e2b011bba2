#include "output/parms_file.h"

#include "base/at.h"

namespace {
struct parms_family {
    int number;
    std::string_view keyword, library;
};
constexpr parms_family parms_families[] = {
    {fam_e, "eelement", "eels_name"},
    {fam_g, "gelement", "gels_name"},
    {fam_d, "delement", "dels_name"},
};

void put_value(row_file& out, double x) { out.put_plain(x); }
void put_value(row_file& out, int x) { out.put_int(x); }
void put_value(row_file& out, const std::string& text) { out.put_text(text); }

template <class T>
void put_list(row_file& out, std::string_view title, const pair_list<T>& list, int entry, const row_table<T>& values,
              int i) {
    out.put_text(title);
    out.end_row();
    for (int j = 0; j < list.count(entry); ++j) {
        out.put_text(line(" j = ", j, ", name = ", list.word(entry, j), ", value = "));
        put_value(out, values.row(i)[j]);
        out.end_row();
    }
}
}  // namespace

void write_parms(solve_class& slv, const circuit& c) {
    row_file& out = *slv.out.files[at(slv.out.i_file_parms)].stream;
    for (const parms_family& f : parms_families) {
        const instance_core& inst = c.instances(f.number);
        const library_lists& list = c.lib.composites(f.number).list;
        for (int i = 0; i < inst.n; ++i) {
            const int entry = inst.i_lib[at(i)];
            out.put_text(line(f.keyword, " ", inst.name[at(i)], ", ", f.library, " = ", list.entry[entry], "\n"));
            put_list(out, "rparms:", list.rprm, entry, inst.rprm, i);
            put_list(out, "sparms:", list.sprm, entry, inst.sprm, i);
            put_list(out, "iparms:", list.iprm, entry, inst.iprm, i);
        }
    }
}
