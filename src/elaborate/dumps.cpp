#include "elaborate/dumps.h"

#include <fstream>

#include "deck/dumps.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

void write_name_table(const char* file_name, const char* domain, const char* item, const name_table& t) {
    std::ofstream out(file_name);
    out << "cct_class\n"
        << "n_" << domain << '_' << item << " = " << t.n() << '\n'
        << "n_lu = " << t.n_lu << '\n'
        << "n_eu = " << t.n_eu << '\n'
        << "n_au = " << t.n_au << '\n'
        << "ref = " << t.ref << ", eu_ref = " << t.eu_ref << ", au_ref = " << t.au_ref << '\n';
    for (int i = 0; i < t.n(); ++i)
        out << "  i = " << i << ", name = " << t.name[at(i)] << ", eu = " << t.to_eu[at(i)]
            << ", au = " << t.to_au[at(i)] << '\n';
}

}  // namespace

void write_circuit_dumps(const circuit& c) {
    const output_flags& on = c.cf.output;
    if (on.ov) write_ov_dat(c.ov);
    if (on.ect) write_name_table("ect.dat", "ect", "nd", c.cct.ect);
    if (on.gct) write_name_table("gct.dat", "gct", "vr", c.cct.gct);
    if (on.dct) write_name_table("dct.dat", "dct", "nd", c.cct.dct);
    if (on.xct) write_name_table("xct.dat", "xct", "vr", c.cct.xct);
}
