#include "base/at.h"
#include "base/checks.h"
#include "base/halt.h"
#include "elaborate/evaluation_order.h"
#include "elaborate/families.h"
#include "elaborate/flatten.h"
#include "elaborate/instance_values.h"
#include "elaborate/names.h"
#include "elaborate/outputs.h"

namespace {
// The last statement of this keyword; -1 if there is none. A reference added at the end of the block overrides.
int last_statement(const circuit_file& cf, std::string_view keyword) {
    for (int i = cf.n_end_cct - 1; i > cf.n_begin_cct; --i)
        if (cf.text.begins(i, keyword)) return i;
    return -1;
}

// Flattening replaces ground words by the reference, so it is looked up before; faults show in their own turn.
void find_reference(const circuit& c, std::string_view keyword, const std::vector<std::string>& ground_words,
                    name_table& names) {
    names.is_ground.assign(at(names.n()), 0);
    const int i = last_statement(c.cf, keyword);
    if (i >= 0 && c.cf.text.n_words(i) > 1) names.ref = names.find(c.cf.text.word(i, 1));
    for (const std::string& w : ground_words)
        if (const int k = names.find(w); k >= 0 && k != names.ref) names.is_ground[at(k)] = 1;
}

// Global numbers to unit level and back. Every name must have reached a unit (small-signal units need not reach all).
void map_names(name_table& names, const char* problem) {
    auto to_unit = [&](const std::vector<int>& lu_to, int n_unit, std::vector<int>& to, std::vector<int>& back) {
        to.assign(at(names.n()), -1);
        back.assign(at(n_unit), -1);
        for (int k = names.n() - 1; k >= 0; --k) {
            to[at(k)] = k < static_cast<int>(lu_to.size()) ? lu_to[at(k)] : -1;
            if (to[at(k)] >= 0 && !names.is_ground[at(k)]) back[at(to[at(k)])] = k;
        }
    };
    to_unit(names.lu_to_eu, names.n_eu, names.to_eu, names.eu_to);
    to_unit(names.lu_to_au, names.n_au, names.to_au, names.au_to);
    for (int k = 0; k < names.n(); ++k)
        if (names.to_eu[at(k)] < 0) halt({"ect_to_ebeu_nd: i_eelu_nd = -1", line("   for i_ect_nd = ", k), problem});
}

// Looks at every reference statement in turn, so each must name something of its domain.
void check_reference(circuit& c, std::string_view keyword, name_table& names) {
    for (int i = c.cf.n_begin_cct + 1; i < c.cf.n_end_cct; ++i) {
        if (!c.cf.text.begins(i, keyword)) continue;
        c.cf.mark(i);
        reading(i, [&] {
            const words w = circuit_line(c.cf.text, i);
            const std::string node = pick_word_1(w, 1);
            names.ref = names.find(node);
            if (names.ref < 0)
                word_not_found("find_word_3", node, line("cct_class: something wrong with ", keyword, " statement."));
        });
    }
    if (names.ref >= 0) {
        names.eu_ref = names.to_eu[at(names.ref)];
        names.au_ref = names.to_au[at(names.ref)];
    }
}

// Rows beside the parameters, whose values come at run time.
void make_run_time_rows(instance_core& inst, const composite_library& lib) {
    inst.rprm_ac = inst.rprm;
    inst.outvar.clear();
    inst.bias.clear();
    for (int e : inst.i_lib) {
        inst.outvar.data.insert(inst.outvar.data.end(), at(lib.ov.count(e)), 0.0);
        inst.outvar.close_row();
        inst.bias.data.insert(inst.bias.data.end(), at(lib.bias.count(e)), 0.0);
        inst.bias.close_row();
    }
}
}  // namespace

void bind_statements(circuit& c) {
    std::vector<element_statement> statements = find_element_statements(c.cf);
    number_names(c, statements);
    set_instance_values(c, statements);
    check_instance_names(c);
    find_reference(c, "refnode", c.cf.ground_dummy, c.cct.ect);
    find_reference(c, "x_refnode", c.cf.x_ground_dummy, c.cct.xct);
    c.cct.gct.is_ground.assign(at(c.cct.gct.n()), 0);
    c.cct.dct.is_ground.assign(at(c.cct.dct.n()), 0);
}

void build_units(circuit& c) {
    flatten_ebeu(c);
    flatten_ebau(c);
    flatten_gbeu(c);
    flatten_gbau(c);
    flatten_dbeu(c);
    flatten_xbeu(c);
    find_evaluation_order(c);
    flatten_xbau(c);
    map_names(c.cct.ect, "cct_class: problem in assigning ect_to_ebeu");
    map_names(c.cct.gct, "cct_class: problem in assigning gct_to_gbeu");
    link_general_variables(c);
    map_names(c.cct.dct, "cct_class: problem in assigning dct_to_dbeu");
    map_names(c.cct.xct, "cct_class: problem in assigning xct_to_xbeu");
    link_domains(c);
    resolve_outputs(c);
    check_ebeu(c, "cct_class: check ebeu nodes.");
    check_nodes_1(c.gbeu.n_vr, c.gbeu.vr.data, "cct_class: check gbeu vars.");
    check_nodes_1(c.dbeu.n_nd, c.dbeu.nd.data, "cct_class: check dbeu nodes.");
    check_nodes_1(c.xbeu.n_vr, c.xbeu.vr.data, "cct_class: check xbeu vars.");
    resolve_parameter_outputs(c);

    check_reference(c, "refnode", c.cct.ect);
    if (c.cct.ect.n() > 0 && c.cct.ect.ref < 0) halt({"cct_class: reference node not found."});
    if (c.ebeu.n() > 0 && c.cct.ect.eu_ref < 0) halt({"cct_class: reference node not found."});
    c.ebeu.ref_nd = c.cct.ect.eu_ref;
    c.ebau.ref_nd = c.cct.ect.au_ref;
    check_reference(c, "x_refnode", c.cct.xct);
    if (c.cct.flag_x_cct && c.cct.xct.ref < 0) halt({"cct_class: x-reference node not found."});
    c.xbeu.ref_vr = c.cct.xct.eu_ref;
    if (c.xelu.n > 0 && c.delu.n > 0)
        halt({"cct_class: cannot have xelements and", "  delements in the circuit simultaneously.", "  Halting..."});
    for (family fam : {fam_e, fam_g, fam_d, fam_x}) make_run_time_rows(c.instances(fam), c.lib.composites(fam));
    check_expressions(c);
}

void elaborate(circuit& c) {
    bind_statements(c);
    build_units(c);
}
