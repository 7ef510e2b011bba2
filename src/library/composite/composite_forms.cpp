// composite_forms.cpp -- the tables of the families of composites; a further family is a further set of rows.
#include "library/composite/composite_form.h"

using L = library_lists;
using C = composite_library;

namespace {

constexpr header_line eels_dc_lines[] = {
    {"begin_dc", "begin_dc", special_line::mark, "", "", 0, 0, 0},
    {"mainnodes:", "mainnodes", &L::node, "nd", "", 0, 0, 0},
    {"auxnodes:", "auxnodes", &C::auxnode, "nd", "nend", 50, 0, 0},
    {"outvar:", "outvar", &C::ov, "ov", "n_ov", 50, 500, 25000},
    {"bias:", "bias", &C::bias, "bias", "n_bias", 50, 300, 6000},
    {"stparms:", "stparms", &L::sv, "sv", "", 0, 100, 2000},
    {"igparms:", "igparms", &L::ig, "ig", "", 0, 40, 800},
    {"ind_nodes:", "ind_nodes", &L::ind_node, "in", "", 0, 40, 800},
    {"ind_branches:", "ind_branches", &L::ind_branch, "ib", "", 0, 20, 400},
    {"digital_nodes:", "digital_nodes", &L::dgtl, "dgtl", "n_dgtl", 50, 0, 800},
    {"main_var:", "main_var", &L::vr, "vr", "n_vr", 50, 0, 800},
    {"xvar:", "xvar", &L::xvr, "xvr", "n_xvr", 50, 0, 800},
    {"iparms:", "iparms", &L::iprm, "iprm", "", 0, 200, 4000},
    {"sparms:", "sparms", &L::sprm, "sprm", "", 0, 100, 2000},
    {"rparms:", "rparms", &L::rprm, "rprm", "", 0, 2000, 40000},
    {"rparms_derived:", "rparms_derived", special_line::derived, "rprm", "", 0, 2000, 40000},
};
constexpr header_line eels_ac_lines[] = {
    {"begin_ac", "begin_ac", special_line::mark, "", "", 0, 0, 0},
    {"outvar_ac:", "outvar_ac:", &C::ovac, "ovac", "", 0, 500, 25000},
    {"ind_nodes_ac:", "ind_nodes_ac:", &C::inac, "inac", "", 0, 40, 800},
    {"ind_branches_ac:", "ind_branches_ac:", &C::ibac, "ibac", "", 0, 20, 400},
};

using E = element_table;
constexpr bound_line eels_bound[] = {
    {binding::plain, &L::node, true, true, &E::node, nullptr, "n_be_ttlnd", 500, "ebes_node_name not found.",
     "aux node not found.", "eels2 node name not found.", "aux node not found, check ece library"},
    {binding::plain, &L::dgtl, false, false, &E::dgtl, nullptr, "n_be_ttldgtl", 100, "ebes_dgtl_name not found.",
     "eels_dgtl_name not found.", "eels2 dgtl name not found.", "dgtl name not found."},
    {binding::plain, &L::vr, false, true, &E::vr, nullptr, "n_be_ttlvr", 100, "ebes_vr_name not found.",
     "eels_vr_name not found.", "eels2 vr name not found.", "vr name not found."},
    {binding::plain, &L::xvr, false, false, &E::xvr, nullptr, "n_be_ttlxvr", 100, "ebes_xvr_name not found.",
     "eels_xvr_name not found.", "eels2 xvr name not found.", "xvr name not found."},
    {binding::sensed_node, &L::ind_node, true, true, &E::in, &E::in_flag, "n_be_ttlin", 100, "ebes_in_name not found.",
     "eels node name not found.", "ind. node name not found.", "eels1nd_name not found (check ind nodes)."},
    {binding::sensed_branch, &L::ind_branch, false, true, &E::ib, &E::ib_flag, "n_be_ttlib", 100,
     "ebes_ib_name not found.", "", "ind. branch name not found.", "eels1_brname not found (check ind branches)."},
};

// Composites of blocks have no numbers of their own but for model lines, which have texts.
constexpr header_line gels_dc_lines[] = {
    {"begin_dc", "begin_dc", special_line::mark, "", "", 0, 0, 0},
    {"mainvars:", "mainvars", &L::vr, "vr", "", 0, 0, 0},
    {"auxvars:", "auxvars", &C::auxnode, "vr", "", 0, 0, 0},
    {"xvars:", "xvars", &L::xvr, "xvr", "", 0, 0, 0},
    {"outvar:", "outvar", &C::ov, "ov", "", 0, 0, 0},
    {"bias:", "bias", &C::bias, "bias", "", 0, 0, 0},
    {"stparms:", "stparms", &L::sv, "sv", "", 0, 0, 0},
    {"igparms:", "igparms", &L::ig, "ig", "", 0, 0, 0},
    {"iparms:", "iparms", &L::iprm, "iprm", "", 0, 0, 0},
    {"sparms:", "sparms", &L::sprm, "sprm", "", 0, 0, 0},
    {"rparms:", "rparms", &L::rprm, "rprm", "", 0, 0, 0},
    {"rparms_derived:", "rparms_derived", special_line::derived, "rprm", "", 0, 0, 0},
};
constexpr header_line gels_ac_lines[] = {
    {"begin_ac", "begin_ac", special_line::mark, "", "", 0, 0, 0},
    {"outvar_ac:", "outvar_ac:", &C::ovac, "ovac", "", 0, 0, 0},
};
constexpr bound_line gels_bound[] = {
    {binding::plain, &L::vr, true, true, &E::vr, nullptr, "n_be_ttlvr", no_limit, "gbes_vr_name not found.",
     "gels_class: aux var not found, check gce library", "gels2 vr name not found.",
     "gels_class: aux var not found, check gce library"},
    {binding::plain, &L::xvr, false, false, &E::xvr, nullptr, "n_be_ttlxvr", no_limit, "gbes_xvr_name not found.",
     "gels_xvr_name not found.", "gels2 xvr name not found.", "xvr name not found."},
};

}  // namespace

constexpr composite_form eels_form = {
    .lib = library_forms[lib_eels],
    .basic = library_forms[lib_ebes],
    .basic_ac = library_forms[lib_ebac],
    .model_tag = "em",
    .has_power = true,
    .may_postprocess = false,
    .tells_operands = false,
    .node_word = "nodev",
    .node_name = "node",
    .main_list = &L::node,
    .dc_lines = eels_dc_lines,
    .ac_lines = eels_ac_lines,
    .bound = eels_bound,
    .limit = {.max_entries = 50,
              .max_internal = 50,
              .max_nodes = 300,
              .max_node_chars = 4000,
              .max_elements = 300,
              .max_elements_ac = 300,
              .max_elements_entry = 500,
              .max_models = 20,
              .max_model_chars = 4000,
              .max_branches = 200,
              .max_forward = 20,
              .max_iprm = 500,
              .max_sprm = 200,
              .max_rprm = 2000,
              .max_sv = 500,
              .max_ig = 500},
    .dc_kinds = {ov_nodev, ov_aux, ov_cur, ov_iparm_ebe, ov_rparm_ebe},
    .ac_kinds = {ov_nodev_ac, ov_aux_ac, ov_cur_ac, -1, -1},
};

constexpr composite_form gels_form = {
    .lib = library_forms[lib_gels],
    .basic = library_forms[lib_gbes],
    .basic_ac = library_forms[lib_gbac],
    .model_tag = "gm",
    .has_power = false,
    .may_postprocess = true,
    .tells_operands = true,
    .node_word = "var",
    .node_name = "var",
    .main_list = &L::vr,
    .dc_lines = gels_dc_lines,
    .ac_lines = gels_ac_lines,
    .bound = gels_bound,
    .limit = {.max_entries = no_limit,
              .max_internal = no_limit,
              .max_nodes = no_limit,
              .max_node_chars = no_limit,
              .max_elements = 100000,  // guards against calls that double at each level
              .max_elements_ac = 100000,
              .max_elements_entry = no_limit,
              .max_models = 20,
              .max_model_chars = 4000,
              .max_branches = no_limit,
              .max_forward = no_limit,
              .max_iprm = no_limit,
              .max_sprm = no_limit,
              .max_rprm = no_limit,
              .max_sv = no_limit,
              .max_ig = no_limit},
    .dc_kinds = {ov_var, ov_gaux, -1, ov_iparm_gbe, ov_rparm_gbe},
    .ac_kinds = {ov_var_ac, -1, -1, -1, -1},
};

// Composites of digital elements: no halves, no limits but those of model lines.
namespace {
constexpr header_line dels_lines[] = {
    {"mainnodes:", "mainnodes", &L::dgtl, "nd", "", 0, 0, 0},
    {"auxnodes:", "auxnodes", &C::auxnode, "nd", "", 0, 0, 0},
    {"analog_nodes:", "analog_nodes", &L::ind_node, "anlg", "", 0, 0, 0},
    {"outvar:", "outvar", &C::ov, "ov", "", 0, 0, 0},
    {"iparms:", "iparms", &L::iprm, "iprm", "", 0, 0, 0},
    {"sparms:", "sparms", &L::sprm, "sprm", "", 0, 0, 0},
    {"rparms:", "rparms", &L::rprm, "rprm", "", 0, 0, 0},
    {"rparms_derived:", "rparms_derived", special_line::derived, "rprm", "", 0, 0, 0},
    {"stparms:", "stparms", &L::sv, "sv", "", 0, 0, 0},
    {"igparms:", "igparms", &L::ig, "ig", "", 0, 0, 0},
};
constexpr bound_line dels_bound[] = {
    {binding::plain, &L::dgtl, true, false, &E::dgtl, nullptr, "n_be_ttlnd", no_limit, "dbes_node_name not found.",
     "dels_class: aux node not found, check dce library", "dels2 node name not found.",
     "dels_class: aux node not found, check dce library"},
    {binding::plain, &L::ind_node, false, false, &E::in, nullptr, "n_be_ttlanlg", no_limit, "dbes_anlg_name not found.",
     "dels_anlg_name not found.", "dels2 anlg name not found.", "anlg name not found."},
};
}  // namespace

constexpr composite_form dels_form = {
    .lib = library_forms[lib_dels],
    .basic = library_forms[lib_dbes],
    .basic_ac = library_forms[lib_dbes],
    .model_tag = "dm",
    .has_power = false,
    .may_postprocess = false,
    .tells_operands = false,
    .node_word = "dvar",
    .node_name = "node",
    .main_list = &L::dgtl,
    .has_code = false,
    .has_halves = false,
    .whole_start_values = true,
    .dc_lines = dels_lines,
    .ac_lines = {},
    .bound = dels_bound,
    .limit = gels_form.limit,
    .dc_kinds = {ov_dvar, -1, -1, -1, -1, ov_dstate},
    .ac_kinds = {-1, -1, -1, -1, -1},
};

// Composites of explicit blocks. What starts a transient are the first guesses of the blocks, so the start-up words of
// a composite feed these.
namespace {
constexpr header_line xels_dc_lines[] = {
    {"begin_dc", "begin_dc", special_line::mark, "", "", 0, 0, 0},
    {"main_vars:", "main_vars", &L::xvr, "vr", "", 0, 0, 0},
    {"aux_vars:", "aux_vars", &C::auxnode, "vr", "", 0, 0, 0},
    {"gvars:", "gvars", &L::vr, "gvr", "", 0, 0, 0},
    {"outvar:", "outvar", &C::ov, "ov", "", 0, 0, 0},
    {"bias:", "bias", &C::bias, "bias", "", 0, 0, 0},
    {"iparms:", "iparms", &L::iprm, "iprm", "", 0, 0, 0},
    {"sparms:", "sparms", &L::sprm, "sprm", "", 0, 0, 0},
    {"rparms:", "rparms", &L::rprm, "rprm", "", 0, 0, 0},
    {"rparms_derived:", "rparms_derived", special_line::derived, "rprm", "", 0, 0, 0},
    {"stparms:", "stparms", &L::ig, "sv", "", 0, 0, 0, "cce"},
    {"igparms:", "igparms", &L::ig, "ig", "", 0, 0, 0, nullptr, true},
};
constexpr bound_line xels_bound[] = {
    {binding::plain, &L::xvr, true, true, &E::xvr, nullptr, "n_be_ttlvr", no_limit, "xbes_vr_name not found.",
     "xels_class: aux var not found, check xce library", "xels2 vr name not found.",
     "xels_class: aux var not found, check xce library"},
    {binding::plain, &L::vr, false, false, &E::vr, nullptr, "n_be_ttlgvr", no_limit, "xbes_gvr_name not found.",
     "xels_gvr_name not found.", "xels2 gvr name not found.", "gvr name not found."},
};
}  // namespace

constexpr composite_form xels_form = {
    .lib = library_forms[lib_xels],
    .basic = library_forms[lib_xbes],
    .basic_ac = library_forms[lib_xbac],
    .model_tag = "xm",
    .has_power = false,
    .may_postprocess = false,
    .tells_operands = true,
    .node_word = "xvar",
    .node_name = "var",
    .main_list = &L::xvr,
    .dc_lines = xels_dc_lines,
    .ac_lines = gels_ac_lines,
    .bound = xels_bound,
    .limit = gels_form.limit,
    .dc_kinds = {ov_xvar, ov_xaux, -1, ov_iparm_xbe, ov_rparm_xbe},
    .ac_kinds = {ov_xvar_ac, -1, -1, -1, -1},
};

const composite_form* composite_form_of(int library) {
    for (const composite_form* form : {&eels_form, &gels_form, &dels_form, &xels_form})
        if (&form->lib == &library_forms[library]) return form;
    return nullptr;
}

int first_whole(const library_form& composites, const composite_library& lib, pair_list<double> library_lists::*list,
                int e) {
    const composite_form* form = composite_form_of(number_of(composites));
    if (form != nullptr && form->whole_start_values) return 0;
    if (number_of(composites) != lib_gmes) return (lib.list.*list).count(e);
    return (list == &L::sv ? lib.n_sv : lib.n_ig)[word_list::at(e)];
}
