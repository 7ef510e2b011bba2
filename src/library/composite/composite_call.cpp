// composite_call.cpp -- a call of another composite: its flat element list is copied, with nodes and parameters
// translated to those of the caller.
#include "library/check_limit.h"
#include "library/composite/composite_entry.h"

namespace {

// A name of the callee as the caller connects it: a number of the caller and how it is meant (as in element_table).
struct connection {
    int value = -1;
    int flag = -1;
};

struct call_in_work {
    int i_callee = -1;
    const model_line* model = nullptr;
    std::string name;
    int first_be = 0;                            // position of its first element in the caller's list of this half
    int first_be_dc = 0;                         // the same in the DC half
    int first_internal = 0;                      // node of the caller for the callee's first internal node
    std::vector<int> node_map;                   // [nodes of the callee] node of the caller
    std::vector<std::vector<connection>> bound;  // [bound lines][words of the callee's list]
};

call_in_work read_head(const entry_in_work& entry, const half_in_work& half, statement_keys& keys) {
    const composite_form& form = entry.form;
    const std::string& routine = half.call_routine;
    call_in_work call;
    const std::string type = pick_word_1(keys.w, 1);
    const int found = entry.lib.list.find(type);
    call.i_callee = found < entry.e ? found : -1;
    if (call.i_callee < 0) word_not_found("find_word_3", type, line(routine, ": ", form.lib.name, "_name not found"));
    if (half.ac && !entry.lib.flag.allow_ac[static_cast<std::size_t>(call.i_callee)])
        halt({line(routine, ": AC not allowed by one of the ", form.lib.begin[0], "elements."),
              line("    element type is ", type), "    Halting..."});
    if (const int i = keys.find("model"); i >= 0) {
        call.model = half.call_models.find(keys.w[i]);
        if (!call.model)
            word_not_found("find_word_3", keys.w[i],
                           line(routine, ": model name not found (", form.model_tag, form.lib.begin, ")."));
        if (call.model->type != type)
            halt({line(routine, ": model_type does not match ", form.lib.name, "2 type."),
                  line("  model_type=", call.model->type), line("  ", form.lib.name, "2 type=", type), "  Halting..."});
    }
    if (entry.lib.n_rprm_derived(call.i_callee) > 0)
        halt({line(routine, ": ", form.lib.name, "2 cannot have derived rparms."),
              line("  ", form.lib.name, "2_name=", type), "  Halting..."});
    if (const int i = keys.find("name"); i >= 0) call.name = keys.w.str(i);
    return call;
}

// The call of the DC half that a call of the AC half belongs to: that of the same name, or without a name the one with
// the same number among the calls of this composite.
const made_call& paired_call(const entry_in_work& entry, const half_in_work& half, const call_in_work& call) {
    int n_skip = 0;
    for (const int i : half.calls) n_skip += i == call.i_callee;
    for (const made_call& c : entry.calls) {
        if (c.i_lib != call.i_callee) continue;
        if (call.name.empty() ? n_skip-- == 0 : c.name == call.name) return c;
    }
    word_not_found("find_word_3", call.name.empty() ? entry.lib.list.entry[call.i_callee] : call.name,
                   line(half.call_routine, ": name not found"));
}

// New internal nodes of the caller for those of the callee.
int add_internal_nodes(entry_in_work& entry, const std::string& routine, int n) {
    const int first = entry.n_main + entry.n_internal;
    entry.n_internal += n;
    for (int i = 0; i < n; ++i) entry.lib.auxnode.pool.add("");
    entry.lib.auxnode.first.back() = entry.lib.auxnode.pool.size();
    check_limit(entry.n_internal, entry.form.limit.max_internal, routine, ": nend is too large!");
    check_limit(entry.n_main + entry.n_internal, entry.form.limit.max_nodes, routine, ": ttlnd_old is too large!");
    entry.node_touched.resize(static_cast<std::size_t>(entry.n_main + entry.n_internal), 0);
    return first;
}

connection connect(const entry_in_work& entry, const half_in_work& half, const bound_line& b, std::string_view word) {
    connection c;
    if (b.how == binding::sensed_branch) {
        if (const named_element* n = find_named(half.branches, word))
            c.value = n->be;
        else
            c.value = c.flag = half.ib.find(entry.e, word);
    } else {
        c.value = b.has_internal ? entry.find_node(word) : (entry.lib.list.*b.list).find(entry.e, word);
        if (c.value < 0 && b.how == binding::sensed_node) c.value = c.flag = half.in.find(entry.e, word);
    }
    if (c.value < 0) word_not_found("find_word_3", word, composite_message(half.call_routine, b.no_call_value));
    return c;
}

void connect_all(entry_in_work& entry, const half_in_work& half, call_in_work& call, statement_keys& keys) {
    for (const bound_line& b : entry.form.bound) {
        std::vector<connection>& list = call.bound.emplace_back();
        const word_list& dc_names = entry.lib.list.*b.list;
        const word_list& names = b.how == binding::sensed_node     ? half.in
                                 : b.how == binding::sensed_branch ? half.ib
                                                                   : dc_names;
        if (!half.ac || b.in_ac)
            for (int j = 0; j < names.count(call.i_callee); ++j)
                list.push_back(connect(
                    entry, half, b,
                    keys.value(names.word(call.i_callee, j), composite_message(half.call_routine, b.no_call_key))));
        // A call of the AC half may repeat the words that only the DC half needs.
        if (half.ac)
            for (int j = 0; j < dc_names.count(call.i_callee); ++j) keys.find(dc_names.word(call.i_callee, j));
    }
    const int n_internal = entry.lib.auxnode.count(call.i_callee);
    if (half.ac) {
        const made_call& dc = paired_call(entry, half, call);
        call.first_internal = dc.first_internal;
        call.first_be_dc = dc.first_be;
    } else {
        call.first_internal = add_internal_nodes(entry, half.call_routine, n_internal);
        call.first_be_dc = call.first_be;
    }
    for (std::size_t i = 0; i < entry.form.bound.size(); ++i)
        if (entry.form.bound[i].list == entry.form.main_list)
            for (const connection& c : call.bound[i]) call.node_map.push_back(c.value);
    for (int k = 0; k < n_internal; ++k) call.node_map.push_back(call.first_internal + k);
}

// One row of connections of a callee's element, as the caller's.
void copy_bound(entry_in_work& entry, half_in_work& half, const call_in_work& call, std::size_t i_bound, int row) {
    const bound_line& b = entry.form.bound[i_bound];
    row_table<int>& to = half.be.*b.row;
    for (int j = 0; j < to.size(row); ++j) {
        connection c{to.row(row)[j], b.flag ? (half.be.*b.flag).row(row)[j] : -1};
        if (c.flag >= 0)
            c = call.bound[i_bound][static_cast<std::size_t>(c.flag)];
        else if (b.how == binding::sensed_branch)
            c.value += c.flag == -1 ? call.first_be : 0;
        else if (b.has_internal)
            c.value = call.node_map[static_cast<std::size_t>(c.value)];
        else
            c = call.bound[i_bound][static_cast<std::size_t>(c.value)];
        if (b.has_internal && c.flag < 0 && !half.ac) entry.touch(c.value);
        to.add(c.value);
        if (b.flag) (half.be.*b.flag).add(c.flag);
    }
    to.close_row();
    if (b.flag) (half.be.*b.flag).close_row();
}

// The callee's parameters of one group as this call sets them.
template <class T>
struct set_parameters {
    std::vector<T> value;
    std::vector<int> flag;

    void keep(row_table<T>& values, row_table<int>& flags) const {
        for (const T& v : value) values.add(v);
        values.close_row();
        for (const int f : flag) flags.add(f);
        flags.close_row();
    }
};
template <class T>
set_parameters<T> set_group(const entry_in_work& entry, const parameter_group<T>& g, const call_in_work& call,
                            statement_keys& keys) {
    const pair_list<T>& list = entry.lib.list.*g.list;
    set_parameters<T> set;
    for (int j = 0; j < list.count(call.i_callee); ++j) set.value.push_back(list.value(call.i_callee, j));
    set.flag.assign(set.value.size(), -1);
    apply_words(entry, g, list.name, call.i_callee, call.model, keys, set.value.data(), set.flag.data());
    return set;
}

template <class T>
void copy_group(half_in_work& half, const parameter_group<T>& g, const set_parameters<T>& set, int row) {
    row_table<T>& value = half.be.*g.value;
    row_table<int>& flag = half.be.*g.flag;
    for (int j = 0; j < value.size(row); ++j) {
        const int link = flag.row(row)[j];
        const T fixed = value.row(row)[j];
        value.add(link < 0 ? fixed : set.value[static_cast<std::size_t>(link)]);
        flag.add(link < 0 ? -1 : set.flag[static_cast<std::size_t>(link)]);
    }
    value.close_row();
    flag.close_row();
}

// What only elements of the AC half have: the element whose operating point they use, and the parameters fed from the
// composite's. A parameter of the callee that this call fixes feeds a fixed value.
void copy_ac_row(half_in_work& half, const call_in_work& call, const set_parameters<double>& rprm, int row, int to) {
    element_table& be = half.be;
    const auto from = static_cast<std::size_t>(row);
    const int acprm_be = be.acprm_be[from] < 0 ? -1 : be.acprm_be[from] + call.first_be_dc;
    be.acprm_be.push_back(acprm_be);
    if (const int j = half.basic.list.iprm.find(be.i_be[from], operating_point_word); j >= 0)
        be.iprm.row(to)[j] = acprm_be;
    for (int j = 0; j < be.acparm_map.size(row); ++j) {
        int source = be.acparm_map.row(row)[j];
        if (source >= 0) {
            const auto k = static_cast<std::size_t>(source);
            source = rprm.flag[k];
            if (source < 0) {
                be.rprm.row(to)[j] = rprm.value[k];
                be.rprm_flag.row(to)[j] = -1;
            }
        }
        be.acparm_map.add(source);
    }
    be.acparm_map.close_row();
}

}  // namespace

void read_call(entry_in_work& entry, half_in_work& half, const words& w) {
    const composite_form& form = entry.form;
    element_table& be = half.be;
    statement_keys keys(w, 2);
    call_in_work call = read_head(entry, half, keys);
    call.first_be = static_cast<int>(be.i_be.size()) - be.first_be.back();
    connect_all(entry, half, call, keys);

    const int first_row = be.first_be[static_cast<std::size_t>(call.i_callee)], n = be.n_be(call.i_callee);
    if (call.first_be + n > form.limit.max_elements_entry)
        halt({line(half.call_routine, ": n_be", half.ac ? "ac" : "", "[i_", form.lib.name,
                   "] is too large! Halting..")});
    const running_offsets before = half.next;
    for (int row = first_row; row < first_row + n; ++row) {
        const auto r = static_cast<std::size_t>(row);
        const int i_basic = be.i_be[r];
        be.i_be.push_back(i_basic);
        be.name.push_back(std::string(be.name[r]));
        for (std::size_t i = 0; i < form.bound.size(); ++i) copy_bound(entry, half, call, i, row);
        half.next.aux += half.basic.list.aux.count(i_basic);
        half.next.iprm += half.basic.list.iprm.count(i_basic);
        half.next.rprm += half.basic.list.rprm.count(i_basic);
        half.next.node += half.basic.list.node.count(i_basic);
    }
    call_table& calls = half.call;
    calls.i_lib.push_back(call.i_callee);
    calls.name.push_back(call.name);
    calls.first_be.push_back(call.first_be);
    calls.first_be_dc.push_back(call.first_be_dc);
    set_parameters<double> rprm;
    for_each_group([&](const auto& g) {
        auto set = set_group(entry, g, call, keys);
        for (int row = first_row; row < first_row + n; ++row) copy_group(half, g, set, row);
        if constexpr (std::is_same_v<decltype(set), set_parameters<int>>) set.keep(calls.iprm, calls.iprm_flag);
        if constexpr (std::is_same_v<decltype(set), set_parameters<std::string>>) set.keep(calls.sprm, calls.sprm_flag);
        if constexpr (std::is_same_v<decltype(set), set_parameters<double>>)
            if (g.list == &library_lists::rprm) {
                set.keep(calls.rprm, calls.rprm_flag);
                rprm = std::move(set);
            }
    });
    if (half.ac) {
        const int first_copy = be.iprm.n_rows() - n;
        for (int k = 0; k < n; ++k) copy_ac_row(half, call, rprm, first_row + k, first_copy + k);
    }
    check_element_totals(entry, half, half.call_routine);
    check_ticks(entry, keys, half.call_routine, true);

    const running_offsets after = half.next;
    half.next = before;
    if (!call.name.empty()) {
        find_outputs_at_call(half, half.ov, half.open_ov, call.name, half.ov, call.i_callee, call.first_be,
                             call.node_map, line(half.call_routine, ": outvar name not found."));
        if (!half.ac)
            find_outputs_at_call(half, entry.lib.bias, half.open_bias, call.name, entry.lib.bias, call.i_callee,
                                 call.first_be, call.node_map, line(half.call_routine, ": bias name not found."));
    }
    half.next = after;
    if (!half.ac) entry.calls.push_back({call.name, call.i_callee, call.first_be, call.first_internal});
    half.calls.push_back(call.i_callee);
    half.after_element = false;
}
