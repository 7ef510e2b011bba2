// basic_forms.cpp -- the tables of the families of basic elements; a further family is a further set of rows.
#include "library/basic_form.h"

using L = library_lists;

// ---- what sources name ----

namespace {
constexpr code_list declared_lists[] = {
    {"int", "ni_", &L::iprm},   {"char*", "nstr_", &L::sprm}, {"double", "nr_", &L::rprm},  {"double", "na_", &L::aux},
    {"int", "ndg_", &L::dgtl},  {"double", "nvr_", &L::vr},   {"double", "nxvr_", &L::xvr}, {"double", "nst_", &L::sv},
    {"double", "nig_", &L::ig}, {"double", "nlv_", &L::locv}, {"double", "nas_", &L::auxs},
};
constexpr code_list numbered_lists[] = {
    {nullptr, "nnd_", &L::node}, {nullptr, "nin_", &L::ind_node}, {nullptr, "nib_", &L::ind_branch},
    {nullptr, "ni_", &L::iprm},  {nullptr, "nstr_", &L::sprm},    {nullptr, "nr_", &L::rprm},
    {nullptr, "nst_", &L::sv},   {nullptr, "nig_", &L::ig},       {nullptr, "na_", &L::aux},
    {nullptr, "ndg_", &L::dgtl}, {nullptr, "nvr_", &L::vr},       {nullptr, "nxvr_", &L::xvr},
    {nullptr, "nas_", &L::auxs}, {nullptr, "nlv_", &L::locv},
};
// Digital elements name their nodes by two lists, and their start-up values are integers.
constexpr code_list digital_declared[] = {
    {"int", "ni_", &L::iprm},   {"char*", "nstr_", &L::sprm}, {"double", "nr_", &L::rprm},
    {"double", "na_", &L::aux}, {"int", "nst_", &L::sv},      {"int", "nig_", &L::ig},
};
constexpr code_list digital_numbered[] = {
    {nullptr, "nin_", &L::ind_node}, {nullptr, "ni_", &L::iprm}, {nullptr, "nstr_", &L::sprm},
    {nullptr, "nr_", &L::rprm},      {nullptr, "nst_", &L::sv},  {nullptr, "nig_", &L::ig},
    {nullptr, "na_", &L::aux},
};
}  // namespace

// ---- electrical ----

namespace {
constexpr flag_word ebes_flags[] = {
    {"limit_tstep", &entry_flags::limit_tstep},   {"save_history", &entry_flags::save_history},
    {"limit_newton", &entry_flags::limit_newton}, {"calc_acp", &entry_flags::calc_acp},
    {"startup_sprt", &entry_flags::startup_sprt}, {"allow_ssw", &entry_flags::allow_ssw},
    {"gmin_step", &entry_flags::gmin_step},       {"pure", &entry_flags::pure},
    {"timeless", &entry_flags::timeless},
};
constexpr list_line ebes_lines[] = {
    {"nodes:", "nd", &L::node, 500, 10000},
    {"ind_nodes:", "in", &L::ind_node, 50, 1000},
    {"ind_branches:", "ib", &L::ind_branch, 50, 1000},
    {"iparms:", "iprm", &L::iprm, 500, 10000},
    {"sparms:", "sprm", &L::sprm, 100, 2000},
    {"rparms:", "rprm", &L::rprm, 2500, 50000},
    {"local_var:", "locv", &L::locv, 200, 4000},
    {"aux_var:", "aux", &L::aux, 200, 4000},
    {"aux_var_startup:", "auxs", &L::auxs, 100, 2000},
    {"digital_nodes:", "dgtl", &L::dgtl, 50, 1000},
    {"main_var:", "vr", &L::vr, 200, 4000},
    {"xvar:", "xvr", &L::xvr, 50, 1000},
    {"stparms:", "sv", &L::sv, 100, 2000},
    {"igparms:", "ig", &L::ig, 40, 800},
};

constexpr variable_list vr_then_aux[] = {{kind_vr, &L::vr}, {kind_aux, &L::aux}};
constexpr variable_list vr_then_auxs[] = {{kind_vr, &L::vr}, {kind_auxs, &L::auxs}};
constexpr bracket_word electrical_brackets[] = {
    {"v", {kind_v, &L::node}}, {"volt", {kind_vind, &L::ind_node}}, {"cur", {kind_curind, &L::ind_branch}}};
constexpr function_words ebes_terminal = {vr_then_aux, electrical_brackets,     ddt_rule::local_variable,
                                          "",          "function declarations", ""};
constexpr function_words ebes_startup = {vr_then_auxs, electrical_brackets, ddt_rule::refused,
                                         "startup",    "startup functions", " (startup)"};
constexpr function_words ebes_local = {vr_then_aux, electrical_brackets, ddt_rule::refused,
                                       "locvar",    "locvar functions",  ""};
constexpr function_words ebes_general = {vr_then_aux, electrical_brackets, ddt_rule::any_variable, "", nullptr, ""};

constexpr variable_list ebes_kinds[] = {
    {kind_v, &L::node}, {kind_locv, &L::locv}, {kind_vind, &L::ind_node}, {kind_curind, &L::ind_branch},
    {kind_vr, &L::vr},  {kind_aux, &L::aux},   {kind_auxs, &L::auxs},
};

constexpr argument ebe_arguments[] = {
    {"const int", "i_ebeu"},
    {"int*", "iparm"},
    {"char**", "sparm"},
    {"double*", "rparm"},
    {"double*", "stparm"},
    {"double*", "igparm"},
    {"double*", "v"},
    {"double*", "vind"},
    {"double*", "curind"},
    {"double*", "aux"},
    {"double*", "vr"},
    {"double*", "xvr"},
    {"double*", "auxs"},
    {"double*", "locv"},
    {"double*", "v_new"},
    {"double*", "aux_new"},
    {"double*", "auxs_new"},
    {"int*", "dvar"},
    {"double*", "f"},
    {"ebes1_class*", "jac"},
    {"flags_class*", "flags"},
    {"dp_class*", "dp"},
    {"math_cnst_class*", "math_cnst"},
};
constexpr function_form ebes_functions[] = {
    {"no_functions", &basic_library::func, true, &ebes_terminal, &ebes_startup, &ebes_local, &ebes_general}};
}  // namespace

constexpr basic_form ebes_form = {
    .lib = library_forms[lib_ebes],
    .function_word = "ebe",
    .no_end = "end_dc",
    .too_many_functions = "ebes_class: n_ttlf > M_EBESTTLF. Halting...",
    .max_entries = 150,
    .jacobian_entry = "  ebes name is: ",
    .flags = ebes_flags,
    .lines = ebes_lines,
    .functions = ebes_functions,
    .map_kinds = ebes_kinds,
    .declared = declared_lists,
    .numbered = numbered_lists,
    .arguments = ebe_arguments,
};

// ---- small-signal forms of electrical elements ----

namespace {
constexpr flag_word ebac_flags[] = {{"noise_source", &entry_flags::noise_source}};
constexpr list_line ebac_lines[] = {
    {"nodes:", "nd", &L::node, 200, 4000},
    {"ind_nodes:", "in", &L::ind_node, 20, 400},
    {"ind_branches:", "ib", &L::ind_branch, 20, 400},
    {"iparms:", "iprm", &L::iprm, 500, 10000},
    {"sparms:", "sprm", &L::sprm, 100, 2000},
    {"rparms:", "rprm", &L::rprm, 1000, 20000},
    {"aux_var:", "aux", &L::aux, 100, 2000},
    {"main_var:", "vr", &L::vr, 50, 1000},
};
constexpr function_words ebac_words = {vr_then_aux, electrical_brackets,     ddt_rule::no_word,
                                       "",          "function declarations", ""};
constexpr variable_list ebac_kinds[] = {
    {kind_v, &L::node}, {kind_vind, &L::ind_node}, {kind_curind, &L::ind_branch},
    {kind_vr, &L::vr},  {kind_aux, &L::aux},
};
constexpr argument ebe_ac_arguments[] = {
    {"const int", "i_ebau"},
    {"int*", "iparm"},
    {"char**", "sparm"},
    {"double", "freq"},
    {"double*", "rparm"},
    {"std::complex<double>*", "v"},
    {"std::complex<double>*", "vind"},
    {"std::complex<double>*", "curind"},
    {"std::complex<double>*", "aux"},
    {"std::complex<double>*", "vr"},
    {"std::complex<double>*", "f"},
    {"ebac1_class*", "jac"},
    {"ebes1_class*", "ebe_jac"},
    {"flags_class*", "flags"},
    {"dp_class*", "dp"},
    {"math_cnst_class*", "math_cnst"},
};
constexpr function_form ebac_functions[] = {
    {"no_functions", &basic_library::func, true, &ebac_words, nullptr, nullptr, &ebac_words}};
}  // namespace

constexpr basic_form ebac_form = {
    .lib = library_forms[lib_ebac],
    .function_word = "ebe (ac)",
    .no_end = "endebe_ac",
    .too_many_functions = "ebac_class: n_ttlf > M_EBACTTLF. Halting...",
    .max_entries = 100,
    .flags = ebac_flags,
    .lines = ebac_lines,
    .functions = ebac_functions,
    .map_kinds = ebac_kinds,
    .has_prototypes = false,
    .declared = declared_lists,
    .numbered = numbered_lists,
    .arguments = ebe_ac_arguments,
};

// ---- general blocks ----

namespace {
constexpr flag_word gbes_flags[] = {
    {"limit_tstep", &entry_flags::limit_tstep},   {"save_history", &entry_flags::save_history},
    {"limit_newton", &entry_flags::limit_newton}, {"calc_acp", &entry_flags::calc_acp},
    {"limit_modulo", &entry_flags::limit_modulo}, {"allow_reset", &entry_flags::allow_reset},
    {"set_rparm_1", &entry_flags::set_rparm_1},   {"get_rparm_1", &entry_flags::get_rparm_1},
    {"allow_ssw", &entry_flags::allow_ssw},       {"pure", &entry_flags::pure},
};
constexpr list_line gbes_lines[] = {
    {"main_vars:", "vr", &L::vr, 600, 12000}, {"iparms:", "iprm", &L::iprm, 500, 10000},
    {"sparms:", "sprm", &L::sprm, 100, 2000}, {"rparms:", "rprm", &L::rprm, 1500, 30000},
    {"aux_vars:", "aux", &L::aux, 100, 2000}, {"xvar:", "xvr", &L::xvr, 200, 4000},
    {"stparms:", "sv", &L::sv, 100, 2000},    {"igparms:", "ig", &L::ig, 40, 800},
};
constexpr variable_list block_variables[] = {{kind_vr, &L::vr}, {kind_gaux, &L::aux}};
constexpr function_words gbes_words = {block_variables, {}, ddt_rule::any_variable, "", nullptr, ""};
constexpr argument gbe_arguments[] = {
    {"const int", "i_gbeu"}, {"int*", "iparm"},         {"char**", "sparm"},    {"double*", "rparm"},
    {"double*", "stparm"},   {"double*", "igparm"},     {"double*", "vr"},      {"double*", "xvr"},
    {"double*", "aux"},      {"double*", "vr_new"},     {"double*", "aux_new"}, {"double*", "f"},
    {"gbes1_class*", "jac"}, {"flags_class*", "flags"}, {"dp_class*", "dp"},    {"math_cnst_class*", "math_cnst"},
};
constexpr function_form gbes_functions[] = {
    {"no_functions", &basic_library::func, false, nullptr, nullptr, nullptr, &gbes_words}};
}  // namespace

constexpr basic_form gbes_form = {
    .lib = library_forms[lib_gbes],
    .rule = line_rule::guard_lines,
    .function_word = "gbe",
    .no_end = "end_dc",
    .too_many_functions = "gbes_class: n_ttlf > M_GBESTTLF. Halting...",
    .max_entries = 250,
    .jacobian_entry = "  gbe name is ",
    .flags = gbes_flags,
    .lines = gbes_lines,
    .functions = gbes_functions,
    .map_kinds = block_variables,
    .declared = declared_lists,
    .numbered = numbered_lists,
    .arguments = gbe_arguments,
};

// ---- small-signal forms of general blocks ----

namespace {
constexpr list_line gbac_lines[] = {
    {"main_vars:", "vr", &L::vr, 200, 4000},  {"iparms:", "iprm", &L::iprm, 500, 10000},
    {"sparms:", "sprm", &L::sprm, 100, 2000}, {"rparms:", "rprm", &L::rprm, 1000, 20000},
    {"aux_vars:", "aux", &L::aux, 100, 2000},
};
constexpr function_words gbac_words = {block_variables, {}, ddt_rule::no_word, "", "function declarations", ""};
constexpr argument gbe_ac_arguments[] = {
    {"const int", "i_gbau"},
    {"int*", "iparm"},
    {"char**", "sparm"},
    {"double", "freq"},
    {"double*", "rparm"},
    {"std::complex<double>*", "vr"},
    {"std::complex<double>*", "aux"},
    {"std::complex<double>*", "f"},
    {"gbac1_class*", "jac"},
    {"flags_class*", "flags"},
    {"dp_class*", "dp"},
    {"math_cnst_class*", "math_cnst"},
};
constexpr function_form gbac_functions[] = {
    {"no_functions", &basic_library::func, false, nullptr, nullptr, nullptr, &gbac_words}};
}  // namespace

constexpr basic_form gbac_form = {
    .lib = library_forms[lib_gbac],
    .function_word = "gbe (ac)",
    .no_end = "endgbe_ac",
    .too_many_functions = "gbac_class: n_ttlf > M_GBACTTLF. Halting...",
    .max_entries = 100,
    .flags = ebac_flags,
    .lines = gbac_lines,
    .functions = gbac_functions,
    .map_kinds = block_variables,
    .has_prototypes = false,
    .declared = declared_lists,
    .numbered = numbered_lists,
    .arguments = gbe_ac_arguments,
};

// ---- digital elements: no functions and no derivatives, outputs from inputs ----

namespace {
constexpr list_line dbes_lines[] = {
    {"input_nodes:", "nd", &L::dgtl, 200, 4000},
    {"output_nodes:", "nd", &L::dgtl, 200, 4000, &L::n_input},
    {"analog_nodes:", "anlg", &L::ind_node, 50, 1000, nullptr, "ebe"},
    {"iparms:", "iprm", &L::iprm, 500, 10000},
    {"sparms:", "sprm", &L::sprm, 100, 2000},
    {"rparms:", "rprm", &L::rprm, 1000, 20000},
    {"n_logical", "lprm", &L::n_logical, 10000, 0},
    {"stparms:", "sv", &L::sv, 100, 2000},
    {"igparms:", "ig", &L::ig, 40, 800},
    {"aux_var:", "aux", &L::aux, 100, 2000},
};
constexpr argument dbe_arguments[] = {
    {"const int", "i_dbeu"},
    {"int*", "iparm"},
    {"char**", "sparm"},
    {"double*", "rparm"},
    {"int*", "stparm"},
    {"int*", "igparm"},
    {"int*", "lparm"},
    {"int*", "stbl_in"},
    {"int*", "stbl_out"},
    {"int*", "val_in"},
    {"int*", "val_out"},
    {"int*", "val_in_old"},
    {"double*", "val_anlg"},
    {"int&", "dstate"},
    {"int&", "stbl"},
    {"double&", "t_next"},
    {"flags_class*", "flags"},
    {"dp_class*", "dp"},
    {"math_cnst_class*", "math_cnst"},
};
}  // namespace

constexpr basic_form dbes_form = {
    .lib = library_forms[lib_dbes],
    .function_word = "dbe",
    .no_end = "enddbe",
    .too_many_functions = "",
    .max_entries = 100,
    .lines = dbes_lines,
    .has_prototypes = false,
    .whole_start_values = true,
    .has_runs = false,
    .declared = digital_declared,
    .numbered = digital_numbered,
    .arguments = dbe_arguments,
};
