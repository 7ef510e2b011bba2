#include "elaborate/instance_outputs.h"

#include "base/at.h"
#include "base/halt.h"

namespace {
bool is_global_request(std::string_view left) {
    return left == "nodev" || left == "dvar" || left == "nodev_ac" || left == "var" || left == "xvar" ||
           left == "var_ac" || left == "xvar_ac";
}

// The first of its lines that has the word decides: analog, digital, small-signal. False if none has it.
bool match_mixed_output(circuit& c, int i_lib, int i, std::string_view left, std::size_t o) {
    const composite_library& lib = c.lib.gmes;
    for (const output_table* table : {&lib.ov, &lib.ovd, &lib.ovac}) {
        const int j = table->name.find(i_lib, left);
        if (j < 0) continue;
        const std::size_t k = at(table->at(i_lib, j));
        c.ov.kind[o] = table->kind[k];
        c.ov.index[o] = table->index[k];
        if (const int call = table->be[k]; call >= 0) {
            c.ov.family[o] = family_of_library(lib.be.library[at(lib.be.first_be[at(i_lib)] + call)]).number;
            c.ov.instance[o] = c.gmeu.part.row(i)[call];
        }
        return true;
    }
    return false;
}
}  // namespace

output_index index_outputs(const ov_class& ov) {
    output_index outputs;
    for (std::size_t k = 0; k < ov.right.size(); ++k) outputs[ov.right[k]].push_back(static_cast<int>(k));
    return outputs;
}

void match_outputs(circuit& c, const family_form& form, int i_lib, int i, std::string_view name,
                   const output_index& outputs) {
    const auto wanted = outputs.find(name);
    if (wanted == outputs.end()) return;
    const composite_library& lib = c.lib.*(form.composites);
    instance_core& inst = c.*(form.instances);
    ov_class& ov = c.ov;
    const bool has_power = form.number == fam_e;
    const auto not_found = [&](const std::string& left) {
        halt({line(form.lib.instances, "_class: outvar not found"), line("   name is ", left), "   Halting..."});
    };
    const auto match = [&](std::size_t o) {
        const std::string& left = ov.left[o];
        ov.family[o] = form.number;
        ov.instance[o] = i;
        if (form.number == fam_gm) {
            if (!match_mixed_output(c, i_lib, i, left, o)) not_found(left);
        } else if (has_power && left == "pwr_elec") {
            ov.kind[o] = ov_pwr_elec;
            inst.flag_pwr_elec.back() = 1;
        } else if (has_power && left == "pwr_elec_ac") {
            ov.kind[o] = ov_pwr_elec_ac;
            inst.flag_pwr_elec_ac.back() = 1;
        } else if (const int j = lib.ov.name.find(i_lib, left); j >= 0) {
            const std::size_t at = static_cast<std::size_t>(lib.ov.at(i_lib, j));
            ov.kind[o] = lib.ov.kind[at];
            ov.index[o] = lib.ov.index[at];
            if (ov.kind[o] == ov_pwr_elec) inst.flag_pwr_elec.back() = 1;
            if (ov.kind[o] == ov_pwr_elec_ac) inst.flag_pwr_elec_ac.back() = 1;
        } else if (const int ja = lib.ovac.name.find(i_lib, left); ja >= 0) {
            const std::size_t at = static_cast<std::size_t>(lib.ovac.at(i_lib, ja));
            ov.kind[o] = lib.ovac.kind[at];
            ov.index[o] = lib.ovac.index[at];
        } else if (const int jr = lib.list.rprm.find(i_lib, left); jr >= 0 && form.kind_rparm != ov_none) {
            ov.kind[o] = form.kind_rparm;
            ov.index[o] = jr;
        } else {
            not_found(left);
        }
    };
    for (int k : wanted->second)
        if (const std::size_t o = static_cast<std::size_t>(k); ov.kind[o] == ov_none && !is_global_request(ov.left[o]))
            reading(ov.statement[o], [&] { match(o); });
}
