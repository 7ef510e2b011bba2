// composite_outputs.cpp -- output and bias words of composites: left_of_right, where right names a node, an element or
// a called composite.
#include "base/halt.h"
#include "library/composite/composite_entry.h"

namespace {
// Outputs of a composite that runs over finished rows are its results in order; a word that names the small-signal ones
// matters only where a composite has both.
int result_kind(const composite_flags& flag, int e, std::string_view left) {
    const auto i = static_cast<std::size_t>(e);
    if (flag.postprocessor_ac[i] && (left == "postproc_ac" || !flag.postprocessor[i])) return ov_postproc_ac;
    return flag.postprocessor[i] ? ov_postproc : ov_none;
}
}  // namespace

void read_outputs(entry_in_work& entry, const words& w, const header_line& l, output_table& table,
                  const output_kinds& kinds, std::vector<open_output>& open) {
    const composite_form& form = entry.form;
    if (w.size() % 2 == 0) halt({line(form.lib.class_name, ": k_rem is not zero (", l.tag, "). Halting...")});
    for (int i = 1; i < w.size(); i += 2) {
        table.name.pool.add(w[i]);
        int kind = ov_none, index = -1;
        const cut_word cut =
            extract_l_r_1(w[i + 1], "_of_", line("_of_ not found (", l.tag, "), ", entry.library_words()));
        if (const int result = result_kind(entry.lib.flag, entry.e, cut.left); result != ov_none) {
            kind = result;
            index = (i - 1) / 2;
        } else if (form.has_power && cut.left == "pwr_elec") {
            kind = ov_pwr_elec;
        } else if (form.has_power && cut.left == "pwr_elec_ac") {
            kind = ov_pwr_elec_ac;
        } else if (cut.left == form.node_word) {
            kind = kinds.node;
            index = entry.find_node(cut.right);
            if (index < 0)
                word_not_found("find_word_3", cut.right, line(form.lib.class_name, ": outvar node name not found"));
        } else {
            open.push_back({static_cast<int>(table.kind.size()), cut.left, cut.right});
        }
        table.kind.push_back(kind);
        table.be.push_back(-1);
        table.index.push_back(index);
    }
    table.name.close_entry();
}

namespace {

void assign(output_table& table, int at, int kind, int be, int index) {
    const auto i = static_cast<std::size_t>(at);
    table.kind[i] = kind;
    table.be[i] = be;
    table.index[i] = index;
}

// Runs over the open outputs of this name; those that `find` assigned are open no more.
template <class F>
void settle(std::vector<open_output>& open, std::string_view name, F find) {
    std::erase_if(open, [&](const open_output& o) {
        if (o.right != name) return false;
        find(o);
        return true;
    });
}

}  // namespace

void find_outputs_at_element(half_in_work& half, output_table& table, std::vector<open_output>& open,
                             std::string_view name, int i_basic, int be) {
    const library_lists& list = half.basic.list;
    const std::string& routine = half.element_routine;
    settle(open, name, [&](const open_output& o) {
        if (const cut_word current = extract_brckt_2(o.left); current.found && half.kinds.current >= 0) {
            if (current.left != "cur")
                word_not_found("find_word_3", current.left, line(routine, ": expect cur in outvar statement."));
            const int j = list.node.find(i_basic, current.right);
            if (j < 0) word_not_found("find_word_3", current.right, line(routine, ": node in cur(node) not found."));
            assign(table, o.at, half.kinds.current, be, half.next.node + j);
            return;
        }
        if (const int j = list.iprm.find(i_basic, o.left); j >= 0 && half.kinds.iparm >= 0)
            return assign(table, o.at, half.kinds.iparm, be, half.next.iprm + j);
        if (const int j = list.rprm.find(i_basic, o.left); j >= 0 && half.kinds.rparm >= 0)
            return assign(table, o.at, half.kinds.rparm, be, half.next.rprm + j);
        if (half.kinds.state >= 0 && o.left == "dstate") return assign(table, o.at, half.kinds.state, be, be);
        const int j = list.aux.find(i_basic, o.left);
        if (j < 0 || half.kinds.aux < 0)
            word_not_found("find_word_3", o.left, line(routine, ": expect auxvar name here."));
        assign(table, o.at, half.kinds.aux, be, half.next.aux + j);
    });
}

void find_outputs_at_call(half_in_work& half, output_table& table, std::vector<open_output>& open,
                          std::string_view name, const output_table& callee, int i_callee, int first_be,
                          const std::vector<int>& node_map, const std::string& not_found) {
    settle(open, name, [&](const open_output& o) {
        const int j = callee.name.find(i_callee, o.left);
        if (j < 0) word_not_found("find_word_3", o.left, not_found);
        const auto from = static_cast<std::size_t>(callee.at(i_callee, j));
        const int kind = callee.kind[from], be = callee.be[from], index = callee.index[from];
        if (kind == half.kinds.node) return assign(table, o.at, kind, -1, node_map[static_cast<std::size_t>(index)]);
        if (be < 0) return assign(table, o.at, kind, -1, index);
        int offset = half.next.aux;
        if (kind == half.kinds.state) offset = first_be;
        if (kind == half.kinds.current) offset = half.next.node;
        if (kind == half.kinds.iparm) offset = half.next.iprm;
        if (kind == half.kinds.rparm) offset = half.next.rprm;
        assign(table, o.at, kind, first_be + be, offset + index);
    });
}
