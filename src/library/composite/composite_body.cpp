// composite_body.cpp -- an element statement of a composite: one row more in every table of the flat element list.
#include "base/halt.h"
#include "library/check_limit.h"
#include "library/composite/composite_entry.h"
#include "library/list_lines.h"

int entry_in_work::find_node(std::string_view word) const {
    for (int j = 0; j < n_main; ++j)
        if ((lib.list.*form.main_list).word(e, j) == word) return j;
    const int first = lib.auxnode.first[static_cast<std::size_t>(e)];
    for (int j = 0; j < n_internal_named; ++j)
        if (lib.auxnode.pool[first + j] == word) return n_main + j;
    return -1;
}

const named_element* find_named(const std::vector<named_element>& list, std::string_view name) {
    for (const named_element& n : list)
        if (n.name == name) return &n;
    return nullptr;
}

std::string composite_message(const std::string& routine, const char* text) {
    return std::string_view(text).find("_class: ") != std::string_view::npos ? text : line(routine, ": ", text);
}

void check_element_totals(const entry_in_work& entry, const half_in_work& half, const std::string& routine) {
    if (half.ac) return;
    for (const bound_line& b : entry.form.bound)
        check_limit(static_cast<int>((half.be.*b.row).data.size()), b.max_total, routine, ": ", b.total,
                    " is too large!");
    for_each_group([&](const auto& g) {
        check_limit(static_cast<int>((half.be.*g.value).data.size()), entry.form.limit.*g.max, routine, ": ", g.total,
                    " too large");
    });
}

void check_ticks(const entry_in_work& entry, const statement_keys& keys, const std::string& routine, bool tell_entry) {
    const int i = keys.first_unticked();
    if (i < 0) return;
    const std::string first = line(routine, ": some word has not been ticked.");
    const std::string word = line("    word: ", keys.w[i]);
    if (tell_entry)
        halt({first, word, line("    Calling ", entry.form.lib.begin, " is ", entry.name), "    Halting..."});
    halt({first, word, "    Halting..."});
}

namespace {

// What a statement is: its entry of the basic library, its model line, its name.
struct element_head {
    int i_basic = -1;
    const model_line* model = nullptr;
    std::string name;
};

element_head read_head(const entry_in_work& entry, const half_in_work& half, statement_keys& keys) {
    const std::string& routine = half.element_routine;
    element_head head;
    std::string type;
    const int i_type = keys.find("type");
    if (i_type >= 0) type = keys.w.str(i_type);
    if (const int i = keys.find("model"); i >= 0) {
        head.model = half.element_models.find(keys.w[i]);
        if (!head.model)
            word_not_found(
                "find_word_3", keys.w[i],
                line(routine, ": model name not found (", entry.form.model_tag, entry.form.basic.begin, ")."));
        if (i_type >= 0 && type != head.model->type)
            halt({line(routine, ": model_type does not match ", entry.form.basic.begin, " type."),
                  line("  model_type=", head.model->type), line("  ", entry.form.basic.begin, " type=", type),
                  "  Halting..."});
        type = head.model->type;
    } else if (i_type < 0) {
        halt({line(routine, ": type not found. Halting..")});
    }
    head.i_basic = half.basic.list.find(type);
    if (head.i_basic < 0)
        word_not_found("find_word_3", type, line(routine, ": ", entry.form.basic.name, "_name not found"));
    if (const int i = keys.find("name"); i >= 0) head.name = keys.w.str(i);
    return head;
}

// A reference to another element of this composite: one that stands earlier, a name of the composite's own list, or one
// that is still to come.
void bind_branch(entry_in_work& entry, half_in_work& half, std::string_view word) {
    row_table<int>&ib = half.be.ib, &flag = half.be.ib_flag;
    if (const named_element* n = find_named(half.branches, word)) {
        ib.add(n->be);
        flag.add(-1);
        return;
    }
    const int own = half.ib.find(entry.e, word);
    ib.add(own);
    flag.add(own >= 0 ? own : -2);
    if (own >= 0) return;
    check_limit(++half.n_forward, entry.form.limit.max_forward, half.element_routine, ": indbr_temp_nw is too large!");
    half.forward.push_back({std::string(word), ib.data.size() - 1});
}

void bind_words(entry_in_work& entry, half_in_work& half, const bound_line& b, int i_basic, statement_keys& keys) {
    const std::string& routine = half.element_routine;
    const word_list& names = half.basic.list.*b.list;
    for (int j = 0; j < names.count(i_basic); ++j) {
        const std::string_view word = keys.value(names.word(i_basic, j), composite_message(routine, b.no_key));
        if (b.how == binding::sensed_branch) {
            bind_branch(entry, half, word);
            continue;
        }
        int i = b.has_internal ? entry.find_node(word) : (entry.lib.list.*b.list).find(entry.e, word);
        if (b.has_internal && i >= 0 && !half.ac) entry.touch(i);
        if (b.how == binding::sensed_node) {
            const int own = i >= 0 ? -1 : half.in.find(entry.e, word);
            (half.be.*b.flag).add(own);
            if (i < 0) i = own;
        }
        if (i < 0) word_not_found("find_word_3", word, composite_message(routine, b.no_value));
        (half.be.*b.row).add(i);
    }
    (half.be.*b.row).close_row();
    if (b.flag) (half.be.*b.flag).close_row();
}

// Two-terminal elements can be named by sensed branches, also by those that stand earlier.
void register_branch(const entry_in_work& entry, half_in_work& half, const std::string& name, int be) {
    if (find_named(half.branches, name)) return;
    if (static_cast<int>(half.branches.size()) >= entry.form.limit.max_branches)
        halt({line(half.element_routine, ": nbr", half.ac ? "ac" : "", " is too large! Halting..")});
    half.branches.push_back({name, be});
    std::erase_if(half.forward, [&](const half_in_work::forward_branch& f) {
        if (f.name != name) return false;
        half.be.ib.data[f.at] = be;
        half.be.ib_flag.data[f.at] = -1;
        return true;
    });
}

// A small-signal form can take its values from the operating point of an element of the DC half.
void bind_operating_point(half_in_work& half, const std::vector<named_element>& dc_elements, int i_basic,
                          statement_keys& keys) {
    int be = -1;
    const int j = half.basic.list.iprm.find(i_basic, operating_point_word);
    if (j >= 0)
        if (const int i = keys.find(operating_point_word); i >= 0) {
            const named_element* n = find_named(dc_elements, keys.w[i]);
            if (!n) word_not_found("find_word_3", keys.w[i], line(half.element_routine, ": ac_parm_be not found"));
            be = n->be;
            half.be.iprm.row(half.be.iprm.n_rows() - 1)[j] = be;
            half.be.iprm_flag.row(half.be.iprm.n_rows() - 1)[j] = -1;
        }
    half.be.acprm_be.push_back(be);
}

}  // namespace

void read_element(entry_in_work& entry, half_in_work& half, const words& w) {
    const composite_form& form = entry.form;
    statement_keys keys(w, 1);
    const element_head head = read_head(entry, half, keys);
    element_table& be = half.be;
    const int position = static_cast<int>(be.i_be.size()) - be.first_be.back();
    if (position >= form.limit.max_elements_entry)
        halt({line(half.element_routine, ": n_be", half.ac ? "ac" : "", "[i_", form.lib.name,
                   "] is too large! Halting..")});
    be.i_be.push_back(head.i_basic);
    be.name.push_back(head.name);
    for (const bound_line& b : form.bound) bind_words(entry, half, b, head.i_basic, keys);
    if (!head.name.empty()) {
        if (!find_named(half.elements, head.name)) half.elements.push_back({head.name, position});
        if (half.basic.list.node.count(head.i_basic) == 2) register_branch(entry, half, head.name, position);
    }

    const library_lists& list = half.basic.list;
    for_each_group([&](const auto& g) {
        auto& value = be.*g.value;
        row_table<int>& flag = be.*g.flag;
        for (int j = 0; j < (list.*g.list).count(head.i_basic); ++j) {
            value.add((list.*g.list).value(head.i_basic, j));
            flag.add(-1);
        }
        value.close_row();
        flag.close_row();
    });
    const int row = be.iprm.n_rows() - 1;
    if (half.ac) bind_operating_point(half, entry.dc_elements, head.i_basic, keys);
    for_each_group([&](const auto& g) {
        apply_words(entry, g, (list.*g.list).name, head.i_basic, head.model, keys, (be.*g.value).row(row),
                    (be.*g.flag).row(row));
    });
    if (half.ac) {
        for (int j = 0; j < list.rprm.count(head.i_basic); ++j) be.acparm_map.add(-1);
        be.acparm_map.close_row();
    }
    check_element_totals(entry, half, half.element_routine);
    check_ticks(entry, keys, half.element_routine, !half.ac);

    if (!head.name.empty()) {
        find_outputs_at_element(half, half.ov, half.open_ov, head.name, head.i_basic, position);
        if (!half.ac) find_outputs_at_element(half, entry.lib.bias, half.open_bias, head.name, head.i_basic, position);
    }
    half.next.aux += list.aux.count(head.i_basic);
    half.next.iprm += list.iprm.count(head.i_basic);
    half.next.rprm += list.rprm.count(head.i_basic);
    half.next.node += list.node.count(head.i_basic);
    half.after_element = true;
}

void read_acparm_map(entry_in_work& entry, half_in_work& half, const words& w) {
    const auto out_of_range = [&](const char* what, int value) {
        halt({line(entry.form.lib.class_name, ": acparm_map: ", what, " = ", value, " is out of range."),
              line("  ", entry.form.lib.name, " name is ", entry.name), "  Halting..."});
    };
    if (!half.after_element)
        halt({line(entry.form.lib.class_name, ": acparm_map: must stand behind an ", entry.form.basic.begin,
                   "_ac statement."),
              line("  ", entry.form.lib.name, " name is ", entry.name), "  Halting..."});
    const int row = half.be.acparm_map.n_rows() - 1;
    for (int i = 1; i < w.size(); i += 2) {
        const int a = chr_to_int(w[i]), b = chr_to_int(pick_word_1(w, i + 1));
        if (a < 0 || a >= half.be.acparm_map.size(row)) out_of_range("element parameter", a);
        if (b < 1 || b > entry.lib.list.rprm.count(entry.e)) out_of_range("composite parameter", b);
        half.be.acparm_map.row(row)[a] = b - 1;
    }
}
