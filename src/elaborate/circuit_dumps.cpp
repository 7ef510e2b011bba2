#include "elaborate/circuit_dumps.h"

#include <fstream>

#include "base/at.h"
#include "deck/deck_dumps.h"

namespace {
// How the fields of a domain are called: "ect" at the level of names, "eelu" of instances, "ebeu" and "ebau" of units.
struct domain {
    const char* file;
    std::string ct, lu, eu, au;  // au empty: the family has no small-signal units
    std::string item;            // "nd" or "vr"
    bool has_reference;
};
const domain ect = {"ect.dat", "ect", "eelu", "ebeu", "ebau", "nd", true};
const domain gct = {"gct.dat", "gct", "gelu", "gbeu", "gbau", "vr", false};
const domain dct = {"dct.dat", "dct", "delu", "dbeu", "", "nd", false};
const domain xct = {"xct.dat", "xct", "xelu", "xbeu", "xbau", "vr", true};

struct field {
    std::string label;
    int value;
};
void write_row(std::ostream& out, int i, const std::string& name, const std::vector<field>& fields) {
    out << "  i = " << i;
    if (!name.empty()) out << ", name = " << name;
    for (const field& f : fields) out << ", " << f.label << " = " << f.value;
    out << '\n';
}
int of(const std::vector<int>& map, int i) { return i < static_cast<int>(map.size()) ? map[at(i)] : -1; }

// Counts and the reference at each level, then the maps: of names, of instances, of units.
void write_name_table(std::ostream& out, const domain& d, const name_table& t) {
    const bool ac = !d.au.empty();
    const auto count = [&](const std::string& level, int n) {
        out << "n_" << level << '_' << d.item << " = " << n << '\n';
    };
    const auto reference = [&](const std::string& level, int k) { out << level << "_ref_node = " << k << '\n'; };
    const auto map = [&](const std::string& from, const std::string& to) { return from + "_to_" + to + "_" + d.item; };
    out << "cct_class\n";
    count(d.ct, t.n());
    count(d.lu, t.n_lu);
    count(d.eu, t.n_eu);
    if (ac) count(d.au, t.n_au);
    if (d.has_reference) {
        reference(d.ct, t.ref);
        reference(d.lu, t.ref);
        reference(d.eu, t.eu_ref);
        if (ac) reference(d.au, t.au_ref);
    }
    for (int i = 0; i < t.n(); ++i) {
        std::vector<field> row = {{map(d.ct, d.lu), i}, {map(d.ct, d.eu), t.to_eu[at(i)]}};
        if (ac) row.push_back({map(d.ct, d.au), t.to_au[at(i)]});
        write_row(out, i, t.name[at(i)], row);
    }
    for (int i = 0; i < t.n_lu; ++i) {
        std::vector<field> row = {{map(d.lu, d.ct), i < t.n() ? i : -1}, {map(d.lu, d.eu), of(t.lu_to_eu, i)}};
        if (ac) row.push_back({map(d.lu, d.au), of(t.lu_to_au, i)});
        write_row(out, i, "", row);
    }
    for (int i = 0; i < t.n_eu; ++i) write_row(out, i, "", {{map(d.eu, d.ct), of(t.eu_to, i)}});
    if (ac)
        for (int i = 0; i < t.n_au; ++i) write_row(out, i, "", {{map(d.au, d.ct), of(t.au_to, i)}});
}

template <class T>
int total(const row_table<T>& rows) {
    return static_cast<int>(rows.data.size());
}

// What all units of a family have together: numbers of the family, with those of the parameters that any unit has
// behind the first `before` of them.
void write_totals(std::ostream& out, const char* class_name, const unit_core& u, std::size_t before,
                  std::vector<field> totals) {
    const field parameters[] = {
        {"n_ttliprm", total(u.iprm)}, {"n_ttlsprm", total(u.sprm)}, {"n_ttlrprm", total(u.rprm)}};
    totals.insert(totals.begin() + static_cast<std::ptrdiff_t>(before), std::begin(parameters), std::end(parameters));
    out << class_name << "_class\n";
    for (const field& f : totals) out << f.label << " = " << f.value << '\n';
}

void write_ebeu_totals(std::ostream& out, const ebeu_class& u) {
    write_totals(out, "ebeu", u.unit, 5,
                 {{"n", u.n()},
                  {"n_ttlaux", u.n_ttlaux()},
                  {"n_ttlauxs", u.n_ttlauxs()},
                  {"n_ttllocv", u.n_ttllocv()},
                  {"n_ttldgtl", total(u.dgtl)},
                  {"n_ttlvr", total(u.vr)},
                  {"n_ttlxvr", total(u.xvr)},
                  {"n_ttlsv", total(u.unit.sv)},
                  {"n_ttlig", total(u.unit.ig)},
                  {"n_ttlnd", u.n_ttlnd()},
                  {"n_ttlin", total(u.in)},
                  {"n_ttlib", total(u.ib)},
                  {"n_ttlnd_kcl", u.n_ttlnd_kcl},
                  {"n_nd", u.n_nd},
                  {"n_gd", static_cast<int>(u.ground_units.size())}});
}
void write_ebau_totals(std::ostream& out, const ebau_class& u) {
    write_totals(out, "ebau", u.unit, 2,
                 {{"n", u.n()},
                  {"n_ttlaux", u.first_aux.empty() ? 0 : u.first_aux.back()},
                  {"n_ttlvr", total(u.vr)},
                  {"n_ttlnd", total(u.nd)},
                  {"n_ttlin", total(u.in)},
                  {"n_ttlib", total(u.ib)},
                  {"n_nd", u.n_nd}});
}
void write_gbeu_totals(std::ostream& out, const gbeu_class& u) {
    write_totals(out, "gbeu", u.unit, 2,
                 {{"n", u.n()},
                  {"n_ttlaux", u.n_ttlaux()},
                  {"n_ttlvr", total(u.vr)},
                  {"n_ttlxvr", total(u.xvr)},
                  {"n_ttlsv", total(u.unit.sv)},
                  {"n_ttlig", total(u.unit.ig)},
                  {"n_vr", u.n_vr}});
}

std::ofstream open_table(const domain& d, const name_table& t) {
    std::ofstream out(d.file);
    out.precision(10);
    write_name_table(out, d, t);
    return out;
}
}  // namespace

void write_circuit_dumps(const circuit& c) {
    const output_flags& on = c.cf.output;
    if (on.ov) write_ov_dat(c.ov);
    if (on.ect) {
        std::ofstream out = open_table(ect, c.cct.ect);
        write_ebeu_totals(out, c.ebeu);
        write_ebau_totals(out, c.ebau);
    }
    if (on.gct) {
        std::ofstream out = open_table(gct, c.cct.gct);
        write_gbeu_totals(out, c.gbeu);
    }
    if (on.dct) open_table(dct, c.cct.dct);
    if (on.xct) open_table(xct, c.cct.xct);
}
