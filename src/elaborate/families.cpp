#include "elaborate/families.h"

namespace {
constexpr std::string_view no_words[1] = {""};
constexpr std::string_view placeholders_e[] = {"connector_e", "ground_dummy"};
constexpr std::string_view placeholders_d[] = {"connector_d"};
constexpr std::string_view placeholders_g[] = {"connector_g"};
constexpr std::string_view placeholders_x[] = {"connector_x", "e_ground_dummy"};
constexpr std::string_view flags_eg[] = {"compute_acp", "compute_noisep", "write_parms"};
constexpr std::string_view flags_x[] = {"compute_acp", "write_parms"};
constexpr std::string_view flags_gm[] = {"write_parms"};

constexpr bound_list bound_e[] = {
    {&library_lists::node, &cct_class::ect, &instance_core::nd, "node name", "set_values_1 (eelu)",
     &composite_library::auxnode},
    {&library_lists::ind_node, &cct_class::ect, &instance_core::in, "node name", "assign_elu_nodes"},
    {&library_lists::dgtl, &cct_class::dct, &instance_core::dgtl, "node name", "assign_elu_nodes"},
    {&library_lists::vr, &cct_class::gct, &instance_core::vr, "node name", "assign_elu_nodes"},
    {&library_lists::xvr, &cct_class::xct, &instance_core::xvr, "node name", "assign_elu_nodes"},
};
constexpr bound_list bound_d[] = {
    {&library_lists::dgtl, &cct_class::dct, &instance_core::dgtl, "node name", "set_values_1 (delu)",
     &composite_library::auxnode},
    {&library_lists::ind_node, &cct_class::ect, &instance_core::in, "node name", "assign_elu_nodes"},
};
constexpr bound_list bound_g[] = {
    {&library_lists::vr, &cct_class::gct, &instance_core::vr, "var name", "set_values_1 (gelu)",
     &composite_library::auxnode},
    {&library_lists::xvr, &cct_class::xct, &instance_core::xvr, "var name", "assign_elu_nodes"},
};
constexpr bound_list bound_x[] = {
    {&library_lists::xvr, &cct_class::xct, &instance_core::xvr, "var name", "set_values_1 (xelu)",
     &composite_library::auxnode},
    {&library_lists::vr, &cct_class::gct, &instance_core::vr, "var name", "assign_elu_nodes"},
};
constexpr bound_list bound_gm[] = {
    {&library_lists::node, &cct_class::ect, &instance_core::nd, "nda name", "set_values_1 (gmeu)",
     &composite_library::auxnode},
    {&library_lists::vr, &cct_class::gct, &instance_core::vr, "vr name", "assign_elu_nodes", &composite_library::auxvr},
    {&library_lists::dgtl, &cct_class::dct, &instance_core::dgtl, "ndd name", "assign_elu_nodes",
     &composite_library::auxdgtl},
};

unit_core& ebe_units(circuit& c) { return c.ebeu.unit; }
unit_core& ebac_units(circuit& c) { return c.ebau.unit; }
unit_core& gbe_units(circuit& c) { return c.gbeu.unit; }
unit_core& gbac_units(circuit& c) { return c.gbau.unit; }
constexpr unit_table units_e[] = {
    {&composite_library::be, &libraries::ebes, &instance_core::first_unit, ebe_units, true},
    {&composite_library::beac, &libraries::ebac, &instance_core::first_unit_ac, ebac_units, false},
};
unit_core& dbe_units(circuit& c) { return c.dbeu.unit; }
constexpr unit_table units_d[] = {
    {&composite_library::be, &libraries::dbes, &instance_core::first_unit, dbe_units, true},
};
constexpr unit_table units_g[] = {
    {&composite_library::be, &libraries::gbes, &instance_core::first_unit, gbe_units, true},
    {&composite_library::beac, &libraries::gbac, &instance_core::first_unit_ac, gbac_units, false},
};
unit_core& xbe_units(circuit& c) { return c.xbeu.unit; }
unit_core& xbac_units(circuit& c) { return c.xbau.unit; }
constexpr unit_table units_x[] = {
    {&composite_library::be, &libraries::xbes, &instance_core::first_unit, xbe_units, true},
    {&composite_library::beac, &libraries::xbac, &instance_core::first_unit_ac, xbac_units, false},
};
std::span<const std::string_view> none() { return std::span(no_words, 0); }
}  // namespace

const family_form family_forms[n_family] = {
    {fam_e, library_forms[lib_eels], &libraries::eels, &circuit::eelu, &circuit::ecem, placeholders_e, flags_eg,
     bound_e, ov_rparm_eelu, units_e},
    {fam_d, library_forms[lib_dels], &libraries::dels, &circuit::delu, &circuit::dcem, placeholders_d, none(), bound_d,
     ov_rparm_delu, units_d},
    {fam_g, library_forms[lib_gels], &libraries::gels, &circuit::gelu, &circuit::gcem, placeholders_g, flags_eg,
     bound_g, ov_rparm_gelu, units_g},
    {fam_x, library_forms[lib_xels], &libraries::xels, &circuit::xelu, &circuit::xcem, placeholders_x, flags_x, bound_x,
     ov_rparm_xelu, units_x},
    {fam_gm, library_forms[lib_gmes], &libraries::gmes, &circuit::gmeu, &circuit::gmem, none(), flags_gm, bound_gm,
     ov_none},
};

const family_form* family_of_keyword(std::string_view keyword) {
    for (const family_form& form : family_forms)
        if (form.lib.statement == keyword) return &form;
    return nullptr;
}

const family_form& family_of_library(int library) {
    for (const family_form& form : family_forms)
        if (number_of(form.lib) == library) return form;
    return family_forms[fam_e];
}

bool is_placeholder(const family_form& form, std::string_view type) {
    for (std::string_view p : form.placeholders)
        if (p == type) return true;
    return false;
}

const composite_library& libraries::composites(int fam) const { return this->*family_forms[fam].composites; }
instance_core& circuit::instances(int fam) { return this->*family_forms[fam].instances; }
const instance_core& circuit::instances(int fam) const { return this->*family_forms[fam].instances; }
const model_class& circuit::models(int fam) const { return this->*family_forms[fam].models; }

void read_models_of_deck(circuit& c) {
    for (const family fam : {fam_e, fam_g, fam_d, fam_gm, fam_x}) {
        const family_form& form = family_forms[fam];
        c.*form.models = read_models(c.cf, c.gprm, c.lib.*form.composites, form.lib);
    }
}
