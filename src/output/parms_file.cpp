#include "output/parms_file.h"

#include "base/at.h"
#include "elaborate/families.h"

namespace {
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
    for (const family fam : {fam_e, fam_g, fam_d}) {
        const library_form& words = family_forms[fam].lib;
        const instance_core& inst = c.instances(fam);
        const library_lists& list = c.lib.composites(fam).list;
        for (int i = 0; i < inst.n; ++i) {
            const int entry = inst.i_lib[at(i)];
            out.put_text(
                line(words.statement, " ", inst.name[at(i)], ", ", words.name, "_name = ", list.entry[entry], "\n"));
            put_list(out, "rparms:", list.rprm, entry, inst.rprm, i);
            put_list(out, "sparms:", list.sprm, entry, inst.sprm, i);
            put_list(out, "iparms:", list.iprm, entry, inst.iprm, i);
        }
    }
}
