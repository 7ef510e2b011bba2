#include "library/composite/mixed_form.h"

using L = library_lists;
using C = composite_library;
using E = element_table;

namespace {

constexpr header_line line_of(const char* keyword, header_member member, const char* tag) {
    return {keyword, keyword, member, tag, "", 0, 0, 0};
}
constexpr header_line gmes_header[] = {
    line_of("mainnodes_anlg:", &L::node, "mnda"),
    line_of("auxnodes_anlg:", &C::auxnode, "nda"),
    line_of("stparms_anlg:", &L::sv, "sva"),
    line_of("igparms_anlg:", &L::ig, "iga"),
    line_of("main_var:", &L::vr, "mvr"),
    line_of("aux_var:", &C::auxvr, "vr"),
    line_of("iparms:", &L::iprm, "iprm"),
    line_of("sparms:", &L::sprm, "sprm"),
    line_of("rparms:", &L::rprm, "rprm"),
    line_of("rparms_derived:", special_line::derived, "rprm"),
    line_of("mainnodes_dgtl:", &L::dgtl, "mndd"),
    line_of("auxnodes_dgtl:", &C::auxdgtl, "ndd"),
    line_of("stparms_dgtl:", special_line::digital_starts, "svd"),
    line_of("igparms_dgtl:", special_line::digital_guesses, "igd"),
    line_of("outvar_anlg:", &C::ov, "ova"),
    line_of("outvar_dgtl:", &C::ovd, "ovd"),
    line_of("outvar_ac:", &C::ovac, "ovac"),
};

constexpr mixed_output_word analog_words[] = {{"nodev", ov_nodev, mixed_place::analog},
                                              {"var", ov_var, mixed_place::variable}};
constexpr mixed_output_word digital_words[] = {{"dvar", ov_dvar, mixed_place::digital}};
constexpr mixed_output_word ac_words[] = {{"nodev", ov_nodev_ac, mixed_place::analog},
                                          {"var", ov_var_ac, mixed_place::variable}};
constexpr mixed_outputs output_lines[] = {
    {"ova", "analog", false, false, analog_words},
    {"ovd", "digital", true, false, digital_words},
    {"ovac", "ac", false, true, ac_words},
};

constexpr mixed_bound bound_ece[] = {
    {&L::node, mixed_place::analog, &E::node, "eels_node_name not found.", "aux node not found."},
    {&L::dgtl, mixed_place::digital, &E::dgtl, "eels_dgtl_name not found.", "aux node (digital) not found."},
    {&L::vr, mixed_place::variable, &E::vr, "eels_vr_name not found.", "aux vr not found."},
    {&L::ind_node, mixed_place::analog, &E::in, "eels_in_name not found.", "ind. node of an eels not found."},
    {&L::ind_branch, mixed_place::branch, &E::ib, "eels_ib_name not found.", "ind. branch of an eels not found."},
};
constexpr mixed_bound bound_dce[] = {
    {&L::dgtl, mixed_place::digital, &E::dgtl, "dels_node_name not found.", "aux node (digital) not found."},
    {&L::ind_node, mixed_place::analog, &E::in, "dels_anlg_name not found.", "aux node not found."},
};
constexpr mixed_bound bound_gce[] = {
    {&L::vr, mixed_place::variable, &E::vr, "gels_vr_name not found.", "aux vr not found."},
};
constexpr mixed_bound bound_gme[] = {
    {&L::node, mixed_place::analog, nullptr, "gmes2 analog node name not found.",
     "aux node (analog) not found, check gme library"},
    {&L::dgtl, mixed_place::digital, nullptr, "gmes2 digital node name not found.",
     "aux node (digital) not found, check gme library"},
    {&L::vr, mixed_place::variable, nullptr, "gmes2 var name not found.", "aux var not found, check gme library"},
};

constexpr mixed_domain domains[] = {
    {library_forms[lib_dels], &mixed_callees::dels, "gmes_dce", "dce", bound_dce, true, false},
    {library_forms[lib_eels], &mixed_callees::eels, "gmes_ece", "ece", bound_ece, false, false},
    {library_forms[lib_gels], &mixed_callees::gels, "gmes_gce", "gce", bound_gce, false, false},
    {library_forms[lib_gmes], nullptr, "gmes_gmes", "gmes2", bound_gme, false, true},
};

}  // namespace

const std::span<const header_line> gmes_lines = gmes_header;
const std::span<const mixed_domain> mixed_domains = domains;
const std::span<const mixed_outputs> mixed_output_lines = output_lines;

output_table& own_outputs(composite_library& lib, const mixed_outputs& line) {
    return line.digital ? lib.ovd : line.small_signal ? lib.ovac : lib.ov;
}

const output_table* callee_outputs(const composite_library& lib, const mixed_outputs& line,
                                   const mixed_domain& domain) {
    if (domain.callees == nullptr) return line.digital ? &lib.ovd : line.small_signal ? &lib.ovac : &lib.ov;
    if (line.digital != domain.digital) return nullptr;
    return line.small_signal ? &lib.ovac : &lib.ov;
}

mixed_names names_at(const composite_library& lib, mixed_place place) {
    switch (place) {
        case mixed_place::analog:
            return {&lib.list.node, &lib.auxnode};
        case mixed_place::digital:
            return {&lib.list.dgtl, &lib.auxdgtl};
        default:
            return {&lib.list.vr, &lib.auxvr};
    }
}
