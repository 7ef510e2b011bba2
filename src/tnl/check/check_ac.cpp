// Small-signal blocks: what the simulator solves without a word although it is seldom meant.
#include <algorithm>

#include "settings/solve_class.h"
#include "tnl/check/check_solves.h"

namespace cli {

namespace {

// The parameter by which a small-signal form says that it is a source.
constexpr std::string_view amplitude = "a_ac";

// Whether some parameter of the instance gets a value that the deck does not show: from a directive, or computed.
bool may_change(const checked_deck& d, const std::string& name, const std::set<std::string>& written) {
    const auto is_of_it = [&](const std::string& item) {
        return item.starts_with("glbl_of_") || item.ends_with("_of_" + name);
    };
    const auto at = d.element_of.find(name);
    const element_type* type =
        at == d.element_of.end() ? nullptr : d.elements[static_cast<std::size_t>(at->second)].type;
    return type == nullptr || !type->derived.empty() || std::any_of(written.begin(), written.end(), is_of_it);
}

struct sources {
    std::vector<std::string> off;  // instances with an amplitude of 0
    bool is_any_on = false;
};

void find_sources(const checked_deck& d, const unit_core& unit, const library_lists& forms,
                  const instance_core& instances, const std::set<std::string>& written, sources& found) {
    for (int u = 0; u < unit.n && !found.is_any_on; ++u) {
        const auto i = static_cast<std::size_t>(u);
        const int j = forms.rprm.find(unit.i_lib[i], amplitude);
        if (j < 0) continue;
        const std::string& name = instances.name[static_cast<std::size_t>(unit.i_inst[i])];
        found.is_any_on = unit.rprm.row(u)[j] != 0 || may_change(d, name, written);
        if (!has(found.off, name)) found.off.push_back(name);
    }
}

// Without a source that is on, all amplitudes are 0.
void check_source(checked_deck& d, const solve_section& s, const std::set<std::string>& written) {
    sources found;
    find_sources(d, d.c.ebau.unit, d.c.lib.ebac.list, d.c.eelu, written, found);
    find_sources(d, d.c.gbau.unit, d.c.lib.gbac.list, d.c.gelu, written, found);
    if (found.is_any_on) return;
    std::string advice = "eelement name=... type=vsrcac a_ac=1 ...";
    if (!found.off.empty()) {
        advice = "a_ac=1 behind one of";
        for (std::size_t i = 0; i < std::min<std::size_t>(found.off.size(), 8); ++i) advice += " " + found.off[i];
    }
    d.report.warning("no-ac-source", {s.type_line, 1}, "no source is on in small signals: all magnitudes will be 0",
                     advice);
}

// Every element needs a small-signal half; one that only processes results has none to give.
void check_halves(checked_deck& d) {
    for (const family f : {fam_e, fam_g, fam_x, fam_gm}) {
        const composite_library& lib = d.c.lib.composites(f);
        const instance_core& instances = d.c.instances(f);
        for (std::size_t i = 0; i < instances.i_lib.size(); ++i) {
            const int e = instances.i_lib[i];
            const auto k = static_cast<std::size_t>(e);
            if (f == fam_g && (lib.flag.postprocessor[k] || lib.flag.postprocessor_ac[k])) continue;
            if (lib.flag.allow_ac[k] && (f == fam_gm || lib.beac.n_be(e) > 0)) continue;
            d.report.error("no-ac-half", {instances.statement[i], 0},
                           "an ac block cannot stand with " + instances.name[i] + " (" +
                               std::string(lib.list.entry[e]) + "), which has no small-signal form");
        }
    }
}

// What of a small signal the files of the block hold.
void check_parts(checked_deck& d, const solve_class& slv) {
    std::set<std::string> magnitudes;
    const auto variables_of = [&](const out_file& file, auto take) {
        for (int i = file.statement; i >= 0 && i < d.text().n_lines() && !d.text().begins(i, "end_output"); ++i)
            for (int j = 1; d.text().begins(i, "variables:") && j < d.text().n_words(i); ++j) take(i, j, d.word(i, j));
    };
    for (const out_file& file : slv.out.files)
        variables_of(file, [&](int, int, const std::string& word) {
            if (word.starts_with("mag_of_")) magnitudes.insert(word.substr(7));
        });
    for (const out_file& file : slv.out.files)
        variables_of(file, [&](int i, int j, const std::string& word) {
            if (word.starts_with("phase_of_") && magnitudes.count(word.substr(9)) == 0)
                d.report.warning("phase-alone", {i, j},
                                 word + " stands in the block's files without mag_of_" + word.substr(9),
                                 "variables: mag_of_" + word.substr(9) + " " + word);
        });
}

}  // namespace

void check_small_signals(checked_deck& d, const solve_section& s, const solve_class& slv,
                         const std::set<std::string>& written, bool after_solution) {
    if (d.is_built && s.type_line >= 0) {
        check_halves(d);
        check_source(d, s, written);
    }
    if (d.is_built && !d.c.cct.flag_linear && !after_solution && !slv.task.init_file)
        d.report.warning("no-bias", {s.type_line, 1},
                         "no block before this one finds a bias: small signals are those around zero",
                         "put a block with solve_type dc before it");
    check_parts(d, slv);
}

}  // namespace cli
