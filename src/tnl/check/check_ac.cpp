// Small-signal blocks: what the simulator solves without a word although it is seldom meant. Columns of small signals
// in blocks of all kinds.
#include <algorithm>

#include "settings/solve_class.h"
#include "tnl/check/check_solves.h"
#include "tnl/check/check_stops.h"

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
    find_sources(d, d.c.xbau.unit, d.c.lib.xbac.list, d.c.xelu, written, found);
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

// The words of variables: that name a column, with the column.
template <class F>
void for_columns(const checked_deck& d, const out_file& file, F f) {
    if (file.content != out_rows || file.all_nodes || file.all_outvars) return;
    int i = file.statement;
    while (i >= 0 && i < d.text().n_lines() && !d.text().begins(i, "end_output") && !d.text().begins(i, "variables:"))
        ++i;
    if (i < 0 || i >= d.text().n_lines() || !d.text().begins(i, "variables:")) return;
    for (int j = 1; j < d.text().n_words(i); ++j)
        for (const out_var& v : file.vars)
            if (v.name == d.text().word(i, j)) {
                f(deck_word{i, j}, v);
                break;
            }
}

// Whether a parameter of an instance goes to its small-signal half, or to an element that a form takes its slopes from.
bool acts_in_ac(const circuit& c, const parm_item& item) {
    const composite_library& lib = c.lib.composites(item.family);
    const int e = c.instances(item.family).i_lib[static_cast<std::size_t>(item.instance)];
    const auto k = static_cast<std::size_t>(e);
    if (lib.n_rprm_derived(e) > 0 || lib.flag.compute_acp[k] || lib.computes_rparms[k] ||
        lib.call.first[k + 1] > lib.call.first[k])
        return true;
    const auto reads = [&](const element_table& be, int b) {
        const int* link = be.rprm_flag.row(b);
        return std::find(link, link + be.rprm_flag.size(b), item.index) != link + be.rprm_flag.size(b);
    };
    for (int b = lib.beac.first_be[k]; b < lib.beac.first_be[k + 1]; ++b) {
        const int bias = lib.beac.acprm_be[static_cast<std::size_t>(b)];
        if (reads(lib.beac, b) || (bias >= 0 && reads(lib.be, lib.be.first_be[k] + bias))) return true;
    }
    return false;
}

// A sweep does not solve the bias again.
void check_swept(checked_deck& d, const solve_section& s, const solve_class& slv) {
    for (const std::vector<vary_statement>* list : {&slv.task.vary, &slv.task.vary_sync})
        for (const vary_statement& v : *list) {
            const parm_item& item = v.item;
            if (item.where != parm_item::real_value || (item.family != fam_e && item.family != fam_g)) continue;
            if (item.instance < 0 || acts_in_ac(d.c, item)) continue;
            d.report.warning("no-effect", find_in_block(d, s.range.begin, item.word),
                             item.word + " changes nothing in small signals: the bias stays that of the block before",
                             "a dc block and an ac block for each value, with set_parm in the dc block");
        }
}

bool is_amplitude(int kind) { return is_small_signal(kind) && kind != ov_pwr_elec_ac; }

// Which magnitudes and phases the files of the block hold.
void check_parts(checked_deck& d, const solve_class& slv) {
    std::set<std::string> magnitudes;
    for (const out_file& file : slv.out.files)
        for_columns(d, file, [&](deck_word, const out_var& v) {
            if (v.prefix == prefix_mag) magnitudes.insert(v.name.substr(7));
        });
    for (const out_file& file : slv.out.files)
        for_columns(d, file, [&](deck_word at, const out_var& v) {
            if (v.prefix != prefix_phase || (d.is_built && !is_amplitude(v.kind))) return;
            const std::string of = v.name.substr(9);
            if (magnitudes.count(of) == 0)
                d.report.warning("phase-alone", at, v.name + " stands in the block's files without mag_of_" + of,
                                 "variables: mag_of_" + of + " " + v.name);
        });
}

// ---- columns that stop the run at its first row

class column_checks {
public:
    column_checks(checked_deck& d, const solve_section& s, const out_file& file)
        : d_(d), block_(block_named(s.type)), is_ac_(s.type == "ac"), file_(file) {}

    void run() {
        for_columns(d_, file_, [&](deck_word at, const out_var& v) { is_ac_ ? in_ac(at, v) : elsewhere(at, v); });
        if (is_ac_ && d_.is_built && (file_.all_nodes || file_.all_outvars)) all_of_ac();
    }

private:
    void tell(deck_word at, const std::string& message, const std::string& advice) {
        d_.report.error("output-kind", at, message, advice);
    }
    // An outvar whose kind is known: what it names is there.
    bool is_known(const out_var& v) const {
        return d_.is_built && v.i_ov >= 0 && v.prefix <= prefix_mag && v.kind != ov_none;
    }
    std::string outvar(const out_var& v) const { return d_.c.ov.name[place(v)]; }
    std::string quantity(const out_var& v) const { return d_.c.ov.left[place(v)] + "_of_" + d_.c.ov.right[place(v)]; }
    static std::size_t place(const out_var& v) { return static_cast<std::size_t>(v.i_ov); }

    // The same quantity in small signals, or in time; empty if there is none.
    std::string counterpart(const out_var& v) const {
        const std::string left = d_.c.ov.left[place(v)], right = d_.c.ov.right[place(v)];
        const bool is_ac = left.ends_with("_ac");
        const std::string other = is_ac ? left.substr(0, left.size() - 3) : left + "_ac",
                          in_time = is_ac ? other : left;
        bool is_there = in_time == "nodev" || in_time == "var" || in_time == "xvar" || in_time == "pwr_elec";
        if (const auto at = d_.element_of.find(right); !is_there && at != d_.element_of.end()) {
            const element_type* type = d_.elements[static_cast<std::size_t>(at->second)].type;
            is_there = type != nullptr && has(type->outvar, other);
        }
        return is_there ? other + "_of_" + right : "";
    }

    void in_ac(deck_word at, const out_var& v) {
        if (v.prefix == prefix_vary || v.prefix == prefix_vary_sync)
            tell(at, "files of an ac block do not show the items of sweeps: " + v.name,
                 v.name.starts_with("glbl_of_") ? "the name of the constant alone: " + v.name.substr(8)
                                                : "sweep a constant instead, greal NAME=..., with vary_parm "
                                                  "glbl_of_NAME, and name it: variables: NAME ...");
        if (!is_known(v)) return;
        const std::string name = outvar(v), parts = "mag_of_" + name + " phase_of_" + name;
        if (v.kind == ov_pwr_elec_ac) {
            if (v.prefix != prefix_none) tell(at, "a power has no magnitude and no phase", "variables: " + name);
        } else if (is_amplitude(v.kind)) {
            if (v.prefix == prefix_none && !file_.nyquist)
                tell(at, name + " (" + quantity(v) + ") is an amplitude: it needs mag_of_ or phase_of_ before it",
                     "variables: " + parts);
        } else if (const std::string other = counterpart(v); !other.empty()) {
            const std::string new_name = name + "_ac", alone = other.starts_with("pwr_elec_ac_of_") ? new_name : "";
            tell(at, name + " (" + quantity(v) + ") is no amplitude, and an ac block shows these alone",
                 "outvar: " + new_name + "=" + other + ", and here " +
                     (alone.empty() ? "mag_of_" + new_name + " phase_of_" + new_name : alone));
        } else {
            tell(at, name + " (" + quantity(v) + ") is no amplitude, and an ac block shows these alone",
                 "leave it out; of parameters, a greal can stand here by its name");
        }
    }

    void elsewhere(deck_word at, const out_var& v) {
        const bool has_prefix = v.prefix == prefix_mag || v.prefix == prefix_phase;
        if (!is_known(v) || (has_prefix && file_.fourier)) return;
        const std::string name = outvar(v);
        if (is_small_signal(v.kind)) {
            const std::string other = counterpart(v);
            tell(at, name + " (" + quantity(v) + ") is a small signal, which " + block_ + " does not have",
                 (other.empty() ? "" : "outvar: NAME=" + other + " and NAME here, or ") +
                     "an output block of an ac block");
        } else if (has_prefix) {
            tell(
                at,
                v.name.substr(0, v.name.find("_of_")) + "_of_ is for small signals, which " + block_ + " does not have",
                "variables: " + name);
        }
    }

    void all_of_ac() {
        const std::string word = file_.all_nodes ? "all_nodes" : "all_outvars";
        const deck_word at = find_in_block(d_, file_.statement, word);
        const std::string advice = "outvar: NAME=nodev_ac_of_NODE, and variables: mag_of_NAME phase_of_NAME";
        if (file_.vars.empty())
            d_.report.warning("no-rows", at, word + " finds nothing to show in an ac block but the frequency", advice);
        else
            tell(at, word + " shows values that are no amplitudes, and an ac block shows these alone", advice);
    }

    checked_deck& d_;
    const std::string block_;
    const bool is_ac_;
    const out_file& file_;
};

}  // namespace

void check_small_signals(checked_deck& d, const solve_section& s, const solve_class& slv,
                         const std::set<std::string>& written, bool after_solution) {
    if (d.is_built && s.type_line >= 0) {
        check_halves(d);
        check_source(d, s, written);
        check_swept(d, s, slv);
    }
    if (d.is_built && !d.c.cct.flag_linear && !after_solution)
        d.report.warning("no-bias", {s.type_line, 1},
                         "no block before this one finds a bias: small signals are those around zero",
                         "put a block with solve_type dc before it");
    check_parts(d, slv);
}

void check_columns(checked_deck& d, const solve_section& s, const solve_class& slv) {
    if (!s.is_known_type) return;
    for (const out_file& file : slv.out.files)
        if (!file.postproc && !file.postproc_ac) column_checks(d, s, file).run();
}

}  // namespace cli
