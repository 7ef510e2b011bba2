#include "settings/postproc_plan.h"

#include <algorithm>

#include "base/at.h"
#include "base/halt.h"

namespace {
// Output variables any of which shows what is wanted, and the prefix of the column.
struct column_word {
    std::vector<int> ovs;
    int prefix;
};

int find_column(const out_file& file, const column_word& w) {  // -1: none
    for (std::size_t j = 0; j < file.vars.size(); ++j)
        if (file.vars[j].prefix == w.prefix && std::find(w.ovs.begin(), w.ovs.end(), file.vars[j].i_ov) != w.ovs.end())
            return static_cast<int>(j) + 1;
    return -1;
}

bool can_be_measured(const out_file& file) {
    return file.content == out_rows && file.data_type == out_analog && !file.fourier && !file.nyquist &&
           !file.postproc && !file.postproc_ac;
}

// The columns in the first file that shows all of them; none when no file does.
std::vector<file_column> in_one_file(const solve_class& slv, const std::vector<column_word>& words) {
    for (std::size_t i = 0; i < slv.out.files.size(); ++i) {
        if (!can_be_measured(slv.out.files[i])) continue;
        std::vector<file_column> found;
        for (const column_word& w : words) found.push_back({static_cast<int>(i), find_column(slv.out.files[i], w)});
        if (std::none_of(found.begin(), found.end(), [](const file_column& f) { return f.column < 0; })) return found;
    }
    return {};
}

[[noreturn]] void not_found(bool ac, const char* word, const std::string& name, const char* where) {
    halt({line(postproc_routine(ac), ": could not find ", word, name, where)});
}
constexpr const char* in_outvars = " in the outvar statement. Halting...";
constexpr const char* in_files = " in any output file. Halting...";

// Output variables that show this general variable of the deck.
std::vector<int> outvars_of(const circuit& c, int variable, bool ac) {
    const name_table& gct = c.cct.gct;
    const int kind = ac ? ov_var_ac : ov_var, at_unit = (ac ? gct.lu_to_au : gct.lu_to_eu)[at(variable)];
    std::vector<int> ovs;
    for (int k = 0; k < c.ov.n_ov(); ++k)
        if (c.ov.kind[at(k)] == kind && c.ov.index[at(k)] == at_unit) ovs.push_back(k);
    const std::string name = variable < gct.n() ? gct.name[at(variable)] : "(inside of a mixed composite)";
    if (ovs.empty()) not_found(ac, ac ? "var_ac_of_" : "var_of_", name, in_outvars);
    return ovs;
}

using variables = std::vector<int>;  // gct

std::vector<file_column> columns_over_time(const solve_class& slv, const circuit& c, const variables& measured) {
    std::vector<column_word> words;
    for (const int v : measured) words.push_back({outvars_of(c, v, false), prefix_none});
    std::vector<file_column> found = in_one_file(slv, words);
    for (std::size_t j = 0; j < words.size() && found.size() < words.size(); ++j) {
        const std::vector<file_column> one = in_one_file(slv, {words[j]});
        if (one.empty()) not_found(false, "var_of_", c.cct.gct.name[at(measured[j])], in_files);
        found.push_back(one[0]);
    }
    return found;
}

std::vector<file_column> columns_in_small_signals(const solve_class& slv, const circuit& c, const variables& measured) {
    std::vector<file_column> found;
    for (const int v : measured) {
        const std::vector<int> ovs = outvars_of(c, v, true);
        const std::vector<file_column> both = in_one_file(slv, {{ovs, prefix_mag}, {ovs, prefix_phase}});
        if (both.empty()) {
            const bool has_mag = !in_one_file(slv, {{ovs, prefix_mag}}).empty();
            not_found(true, has_mag ? "phase_of_" : "mag_of_", c.ov.name[at(ovs[0])], in_files);
        }
        found.insert(found.end(), both.begin(), both.end());
    }
    return found;
}
}  // namespace

postproc_plan plan_postproc(const solve_class& slv, const circuit& c, int i_file) {
    const out_file& file = slv.out.files[at(i_file)];
    const bool ac = file.postproc_ac;
    const char* me = postproc_routine(ac);
    if (file.append) halt({line(me, ": append not allowed. Halting...")});
    if (!ac && file.out_tstart == file.out_tend) halt({line(me, ": t_start = t_end? Halting...")});
    if (ac && slv.task.n_freq != 1)
        halt({line(me, ": postproc_ac is allowed for a single frequency only"), "Halting..."});
    postproc_plan plan;
    for (const out_var& v : file.vars) {
        if (v.kind != (ac ? ov_postproc_ac : ov_postproc) || v.prefix != prefix_none)
            halt({line(me, ": cct_ov_flag != ", ac ? "IGL_POSTPROC_AC" : "IGL_POSTPROC", "? Halting...")});
        plan.results.push_back({v.instance, c.ov.index[at(v.i_ov)]});
        if (plan.columns.contains(v.instance)) continue;
        const int* x = c.gelu.vr.row(v.instance);
        const variables measured(x, x + std::min(c.gelu.vr.size(v.instance), most_postproc_x));
        plan.columns[v.instance] =
            ac ? columns_in_small_signals(slv, c, measured) : columns_over_time(slv, c, measured);
    }
    return plan;
}

// Composites of these names may be the deck's own.
const postproc_type& type_of_result(const circuit& c, const postproc_plan::result& r, bool ac) {
    const char* me = postproc_routine(ac);
    const std::string name = c.lib.gels.list.entry.str(c.gelu.i_lib[at(r.instance)]);
    const int n_x = c.gelu.vr.size(r.instance);
    for (const postproc_type& t : postproc_types) {
        if (t.name != name || t.ac != ac) continue;
        if (n_x < t.n_x)
            halt({line(me, ": gels name = ", name, " needs ", t.n_x, " main variables and has ", n_x), "  Halting..."});
        if (r.index >= t.n_results)
            halt({line(me, ": gels name = ", name, " has no more than ", t.n_results, " results"), "  Halting..."});
        return t;
    }
    halt({line(me, ": gels name = ", name, "? Halting...")});
}
