#include "elaborate/outputs.h"

#include <algorithm>

#include "base/at.h"
#include "base/halt.h"
#include "elaborate/families.h"

namespace {
// A left word that names something of the deck itself.
struct global_word {
    std::string_view word;
    int kind;
    name_table cct_class::*names;
    std::vector<int> name_table::*to_unit;
    std::string_view domain, what;  // of the message
};
constexpr global_word global_words[] = {
    {"nodev", ov_nodev, &cct_class::ect, &name_table::to_eu, "ect", "node"},
    {"dvar", ov_dvar, &cct_class::dct, &name_table::to_eu, "dct", "node"},
    {"nodev_ac", ov_nodev_ac, &cct_class::ect, &name_table::to_au, "ect", "node"},
    {"var", ov_var, &cct_class::gct, &name_table::to_eu, "gct", "var"},
    {"xvar", ov_xvar, &cct_class::xct, &name_table::to_eu, "xct", "var"},
    {"var_ac", ov_var_ac, &cct_class::gct, &name_table::to_au, "gct", "var"},
    {"xvar_ac", ov_xvar_ac, &cct_class::xct, &name_table::to_au, "xct", "var"},
};

[[noreturn]] void name_not_found(const global_word& g, const std::string& name) {
    const std::string first = line("cct_class: ", g.domain, " ", g.what, " name not found.");
    const std::string last = line("   Check outvars of type ", g.word, "_of_xxx.");
    if (g.what == "var") halt({first, line("   var name is: ", name), last});
    halt({first, last});
}

// The flat index of an output of instance i of the electrical family: the composite's running index behind the first
// one of the instance.
int electrical_index(const circuit& c, int kind, int i, int index) {
    const int u = c.eelu.first_unit[at(i)], ua = c.eelu.first_unit_ac[at(i)];
    const name_table& ect = c.cct.ect;
    switch (kind) {
        case ov_nodev:
            return ect.lu_to_eu[at(c.eelu.nd.row(i)[index])];
        case ov_nodev_ac:
            return ect.lu_to_au[at(c.eelu.nd.row(i)[index])];
        case ov_aux:
            return c.ebeu.first_aux[at(u)] + index;
        case ov_cur:
            return c.ebeu.nd.first[at(u)] + index;
        case ov_iparm_ebe:
            return c.ebeu.unit.iprm.first[at(u)] + index;
        case ov_rparm_ebe:
            return c.ebeu.unit.rprm.first[at(u)] + index;
        case ov_aux_ac:
            return c.ebau.first_aux[at(ua)] + index;
        case ov_cur_ac:
            return c.ebau.nd.first[at(ua)] + index;
        default:
            return index;
    }
}

int general_index(const circuit& c, int kind, int i, int index) {
    const int u = c.gelu.first_unit[at(i)];
    switch (kind) {
        case ov_var:
            return c.cct.gct.lu_to_eu[at(c.gelu.vr.row(i)[index])];
        case ov_var_ac:
            return c.cct.gct.lu_to_au[at(c.gelu.vr.row(i)[index])];
        case ov_gaux:
            return c.gbeu.first_aux[at(u)] + index;
        case ov_iparm_gbe:
            return c.gbeu.unit.iprm.first[at(u)] + index;
        case ov_rparm_gbe:
            return c.gbeu.unit.rprm.first[at(u)] + index;
        default:
            return index;
    }
}

int digital_index(const circuit& c, int kind, int i, int index) {
    switch (kind) {
        case ov_dvar:
            return c.cct.dct.lu_to_eu[at(c.delu.dgtl.row(i)[index])];
        case ov_dstate:
            return c.delu.first_unit[at(i)] + index;
        default:
            return index;
    }
}

int explicit_index(const circuit& c, int kind, int i, int index) {
    const int u = c.xelu.first_unit[at(i)];
    switch (kind) {
        case ov_xvar:
            return c.cct.xct.lu_to_eu[at(c.xelu.xvr.row(i)[index])];
        case ov_xvar_ac:
            return c.cct.xct.lu_to_au[at(c.xelu.xvr.row(i)[index])];
        case ov_xaux:
            return c.xbeu.first_aux[at(u)] + index;
        case ov_iparm_xbe:
            return c.xbeu.unit.iprm.first[at(u)] + index;
        case ov_rparm_xbe:
            return c.xbeu.unit.rprm.first[at(u)] + index;
        case ov_rparm_xelu:
            return index;
        default:
            halt({"xbeu.set_values_1:", "   check output variables (explicit).", "   Halting..."});
    }
}

// Outputs of names of a mixed instance; those that its calls serve are outputs of the calls' instances.
int mixed_index(const circuit& c, int kind, int i, int index) {
    const gmeu_class& m = c.gmeu;
    switch (kind) {
        case ov_nodev:
            return c.cct.ect.lu_to_eu[at(m.nd.row(i)[index])];
        case ov_nodev_ac:
            return c.cct.ect.lu_to_au[at(m.nd.row(i)[index])];
        case ov_dvar:
            return c.cct.dct.lu_to_eu[at(m.dgtl.row(i)[index])];
        case ov_var:
            return c.cct.gct.lu_to_eu[at(m.vr.row(i)[index])];
        default:
            return c.cct.gct.lu_to_au[at(m.vr.row(i)[index])];
    }
}

int unit_of(const std::vector<int>& first, int index) {
    const auto it = std::upper_bound(first.begin(), first.end(), index);
    if (it == first.begin() || it == first.end()) return -1;
    return static_cast<int>(it - first.begin()) - 1;
}
}  // namespace

void resolve_outputs(circuit& c) {
    ov_class& ov = c.ov;
    const auto resolve = [&](std::size_t k) {
        if (ov.instance[k] >= 0) {
            if (ov.family[k] == fam_e) ov.index[k] = electrical_index(c, ov.kind[k], ov.instance[k], ov.index[k]);
            if (ov.family[k] == fam_gm) {
                ov.index[k] = mixed_index(c, ov.kind[k], ov.instance[k], ov.index[k]);
                if (ov.index[k] < 0 && !is_small_signal(ov.kind[k]))
                    halt({"gmeu_class: outvar of a name that no call is connected to", line("   name is ", ov.left[k]),
                          "   Halting..."});
            }
            if (ov.family[k] == fam_g) ov.index[k] = general_index(c, ov.kind[k], ov.instance[k], ov.index[k]);
            if (ov.family[k] == fam_d) ov.index[k] = digital_index(c, ov.kind[k], ov.instance[k], ov.index[k]);
            if (ov.family[k] == fam_x) ov.index[k] = explicit_index(c, ov.kind[k], ov.instance[k], ov.index[k]);
            return;
        }
        for (const global_word& g : global_words) {
            if (ov.left[k] != g.word) continue;
            const name_table& names = c.cct.*(g.names);
            const int number = names.find(ov.right[k]);
            if (number < 0) name_not_found(g, ov.right[k]);
            const int at_unit = (names.*(g.to_unit))[at(number)];
            if (at_unit < 0) name_not_found(g, ov.right[k]);
            ov.kind[k] = g.kind;
            ov.index[k] = at_unit;
        }
        if (ov.kind[k] == ov_none) halt({"cct_class: cct_ov_flag = IGL_CLEAR", line("   for i_ov = ", k)});
    };
    for (std::size_t k = 0; k < ov.name.size(); ++k) reading(ov.statement[k], [&] { resolve(k); });
}

void resolve_parameter_outputs(circuit& c) {
    struct parameter_kind {
        int kind;
        const std::vector<int>& first;
        const char* name;
        const char* unit;
    };
    const parameter_kind kinds[] = {
        {ov_iparm_ebe, c.ebeu.unit.iprm.first, "igl_iparmebe", "i_ebeu"},
        {ov_rparm_ebe, c.ebeu.unit.rprm.first, "igl_rparmebe", "i_ebeu"},
        {ov_iparm_gbe, c.gbeu.unit.iprm.first, "igl_iparmgbe", "i_gbeu"},
        {ov_rparm_gbe, c.gbeu.unit.rprm.first, "igl_rparmgbe", "i_gbeu"},
        {ov_iparm_xbe, c.xbeu.unit.iprm.first, "igl_iparmxbe", "i_xbeu"},
        {ov_rparm_xbe, c.xbeu.unit.rprm.first, "igl_rparmxbe", "i_xbeu"},
    };
    ov_class& ov = c.ov;
    for (std::size_t k = 0; k < ov.name.size(); ++k)
        for (const parameter_kind& p : kinds) {
            if (ov.kind[k] != p.kind) continue;
            ov.unit[k] = unit_of(p.first, ov.index[k]);
            if (ov.unit[k] < 0) halt({line("cct_class: (", p.name, ") ", p.unit, " not found? Halting...")});
        }
}
