// explicit_forms.cpp -- the tables of explicit blocks and of their small-signal forms.
#include "base/halt.h"
#include "library/basic_form.h"

using L = library_lists;

namespace {

// What is vr to an explicit block are its own variables.
constexpr code_list explicit_declared[] = {
    {"int", "ni_", &L::iprm},    {"char*", "nstr_", &L::sprm}, {"double", "nr_", &L::rprm}, {"double", "na_", &L::aux},
    {"double", "nvr_", &L::xvr}, {"double", "ngvr_", &L::vr},  {"double", "nig_", &L::ig},
};
constexpr code_list explicit_numbered[] = {
    {nullptr, "ni_", &L::iprm}, {nullptr, "nstr_", &L::sprm}, {nullptr, "nr_", &L::rprm}, {nullptr, "nig_", &L::ig},
    {nullptr, "na_", &L::aux},  {nullptr, "nvr_", &L::xvr},   {nullptr, "ngvr_", &L::vr}, {nullptr, "nbev_", &L::bev},
};

constexpr flag_word xbes_flags[] = {
    {"evaluate", &entry_flags::evaluate},
    {"integrate", &entry_flags::integrate},
    {"delay", &entry_flags::delay},
    {"limit_tstep", &entry_flags::limit_tstep},
    {"save_history", &entry_flags::save_history},
    {"limit_modulo", &entry_flags::limit_modulo},
    {"set_rparm_1", &entry_flags::set_rparm_1},
    {"get_rparm_1", &entry_flags::get_rparm_1},
    {"reset", &entry_flags::allow_reset},
    {"allow_reset", &entry_flags::allow_reset},
    {"allow_xmixed", &entry_flags::allow_xmixed},
};
constexpr list_line xbes_lines[] = {
    {"input_vars:", "vr", &L::xvr, 500, 10000},   {"output_vars:", "vr", &L::xvr, 500, 10000, &L::n_input},
    {"cct_nodes:", "cctnd", &L::cct, 500, 10000}, {"be_v:", "bev", &L::be_v, 500, 10000},
    {"iparms:", "iprm", &L::iprm, 500, 10000},    {"sparms:", "sprm", &L::sprm, 100, 2000},
    {"rparms:", "rprm", &L::rprm, 1000, 20000},   {"igparms:", "ig", &L::ig, 40, 800},
    {"aux_vars:", "aux", &L::aux, 100, 2000},     {"gvars:", "gvr", &L::vr, 200, 4000},
};

constexpr variable_list slope_variables[] = {{kind_xvr, &L::xvr}, {kind_xaux, &L::aux}, {kind_vr, &L::vr}};
constexpr variable_list row_variables[] = {
    {kind_xvr, &L::xvr}, {kind_xaux, &L::aux}, {kind_bev, &L::bev}, {kind_vr, &L::vr}};
constexpr variable_list state_variables[] = {{kind_xvr, &L::xvr}, {kind_xaux, &L::aux}};
constexpr function_words slope_words = {slope_variables, {}, ddt_rule::state_variable, "",
                                        nullptr,         "", state_variables};
constexpr function_words row_words = {row_variables, {}, ddt_rule::not_allowed, "", nullptr, "", {}, true};
constexpr function_form xbes_functions[] = {
    {"n_functions", &basic_library::func, false, nullptr, nullptr, nullptr, &slope_words, "nf_", 'f', 1, "",
     "xbes_class: n_ttlf > M_XBESTTLF. Halting..."},
    {"n_matrix_ddt", &basic_library::func_g, false, nullptr, nullptr, nullptr, &slope_words, "ng_", 'g', 1, "g",
     "xbes_class: n_ttlfg > M_XBESTTLFG. Halting..."},
    {"n_matrix_alg", &basic_library::func_h, false, nullptr, nullptr, nullptr, &row_words, "nh_", 'h', 1, "h",
     "xbes_class: n_ttlfh > M_XBESTTLFH. Halting..."},
};
constexpr argument xbe_arguments[] = {
    {"const int", "i_xbeu"},
    {"int*", "iparm"},
    {"char**", "sparm"},
    {"double*", "rparm"},
    {"double*", "igparm"},
    {"double*", "vr"},
    {"double*", "vr_new"},
    {"double*", "gvr"},
    {"double*", "aux"},
    {"double*", "aux_new"},
    {"double*", "bev"},
    {"double*", "cur"},
    {"double*", "f"},
    {"double*", "fg"},
    {"double*", "fh"},
    {"xbes1_class*", "jac"},
    {"flags_class*", "flags"},
    {"dp_class*", "dp"},
    {"math_cnst_class*", "math_cnst"},
};

// One of the three says what the block is; the first that does counts.
void check_kind(const basic_library& lib, int e) {
    const auto i = static_cast<std::size_t>(e);
    if (!lib.flag.evaluate[i] && !lib.flag.integrate[i] && !lib.flag.delay[i])
        halt({"xbes_class: xbes type must be one of ", "integrate/evaluate/delay",
              line("  Check this element: ", lib.list.entry[e]), "  Halting..."});
}

// Node of a branch voltage.
int node_of(const L& list, int e, std::string_view word, int which) {
    const int i = list.cct.find(e, word);
    if (i < 0) halt({line("xbes_class: node in bev not found (", which, ").")});
    return i;
}

// The nodes of a network lead the inputs; voltages and currents of its branches get their names.
void close_network(basic_library& lib, int e) {
    L& list = lib.list;
    const int n = list.cct.count(e), n_input = list.n_input[static_cast<std::size_t>(e)];
    if (n == 1) halt({"xbes_class: n_cctnd = 1 ?"});
    if (n > n_input) halt({"xbes_class: ncctnd > nipvr ?", line("  ncctnd[nm1]=", n), line("  nipvr[nm1]=", n_input)});
    for (int j = 0; j < n; ++j)
        if (list.cct.word(e, j) != list.xvr.word(e, j))
            halt({line("Check the order of cct nodes in ", list.entry[e], ".xbe")});
    for (int j = 0; j < list.be_v.count(e); ++j) {
        const std::string& ends = list.be_v.value(e, j);
        const std::size_t minus = ends.find('-');
        const bool single = minus == std::string::npos;
        list.bev.pool.add(list.be_v.word(e, j));
        list.bev_plus.push_back(node_of(list, e, ends.substr(0, minus), single ? 3 : 1));
        list.bev_minus.push_back(single ? -1 : node_of(list, e, ends.substr(minus + 1), 2));
    }
    list.bev.close_entry();
    if (n == 2) list.cur.pool.add("current");
    for (int j = 0; n > 2 && j < n; ++j) list.cur.pool.add(list.cct.word(e, j));
    list.cur.close_entry();
}

constexpr list_line xbac_lines[] = {
    {"main_vars:", "vr", &L::xvr, 200, 4000}, {"iparms:", "iprm", &L::iprm, 500, 10000},
    {"sparms:", "sprm", &L::sprm, 100, 2000}, {"rparms:", "rprm", &L::rprm, 1000, 20000},
    {"aux_vars:", "aux", &L::aux, 100, 2000},
};
constexpr function_words xbac_words = {state_variables, {}, ddt_rule::no_word, "", "function declarations", ""};
constexpr function_form xbac_functions[] = {
    {"no_functions", &basic_library::func, false, nullptr, nullptr, nullptr, &xbac_words}};
constexpr flag_word xbac_flags[] = {{"noise_source", &entry_flags::noise_source}};
constexpr argument xbe_ac_arguments[] = {
    {"const int", "i_xbau"},
    {"int*", "iparm"},
    {"char**", "sparm"},
    {"double", "freq"},
    {"double*", "rparm"},
    {"std::complex<double>*", "vr"},
    {"std::complex<double>*", "aux"},
    {"std::complex<double>*", "f"},
    {"xbac1_class*", "jac"},
    {"flags_class*", "flags"},
    {"dp_class*", "dp"},
    {"math_cnst_class*", "math_cnst"},
};
}  // namespace

constexpr basic_form xbes_form = {
    .lib = library_forms[lib_xbes],
    .rule = line_rule::guard_lines,
    .function_word = "xbe",
    .no_end = "endxbe",
    .too_many_functions = "",
    .max_entries = 200,
    .jacobian_entry = "  xbe name is ",
    .flags = xbes_flags,
    .lines = xbes_lines,
    .functions = xbes_functions,
    .map_kinds = slope_variables,
    .has_runs = true,
    .declared = explicit_declared,
    .numbered = explicit_numbered,
    .check_flags = check_kind,
    .close_lists = close_network,
    .arguments = xbe_arguments,
};

constexpr basic_form xbac_form = {
    .lib = library_forms[lib_xbac],
    .function_word = "xbe (ac)",
    .no_end = "endxbe_ac",
    .too_many_functions = "xbac_class: n_ttlf > M_XBACTTLF. Halting...",
    .max_entries = 100,
    .flags = xbac_flags,
    .lines = xbac_lines,
    .functions = xbac_functions,
    .map_kinds = state_variables,
    .has_prototypes = false,
    .declared = explicit_declared,
    .numbered = explicit_numbered,
    .arguments = xbe_ac_arguments,
};

const basic_form* basic_form_of(int library) {
    for (const basic_form* form : {&ebes_form, &gbes_form, &ebac_form, &gbac_form, &dbes_form, &xbes_form, &xbac_form})
        if (&form->lib == &library_forms[library]) return form;
    return nullptr;
}
