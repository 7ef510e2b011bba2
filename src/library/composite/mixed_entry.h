// mixed_entry.h -- one mixed composite while it is being read.
#pragma once
#include <array>
#include <string>
#include <vector>

#include "library/composite/composite_entry.h"
#include "library/composite/mixed_form.h"

struct mixed_entry {
    const mixed_callees& callees;
    composite_library& lib;
    int e;
    std::string name;
    std::array<model_lines, 4> models{};             // [mixed_domains]
    std::array<std::vector<open_output>, 3> open{};  // [mixed_output_lines] what no call has served yet
    std::vector<named_element> branches{};           // calls of elements that have a name
    struct sensed_call {
        std::string name;
        std::size_t at;  // in lib.be.ib.data
    };
    std::vector<sensed_call> sensed{};  // looked up when all calls are known: the call may come later

    int n_calls() const { return static_cast<int>(lib.be.i_be.size()) - lib.be.first_be.back(); }
    // Number of a name of this composite: main ones, then internal ones; -1.
    int find(mixed_place place, std::string_view word) const;
};

// A call of a composite of one domain, as far as all domains are alike.
struct mixed_call {
    const mixed_domain& domain;
    const composite_library& callees;
    int i_callee;
    const model_line* model;
    std::string name;                      // "" if none is given
    std::vector<std::vector<int>> number;  // [bound lists][words of the callee's list] name of this composite;
                                           // of sensed branches -1
};
mixed_call read_mixed_call(mixed_entry& entry, const mixed_domain& domain, statement_keys& keys);
void check_mixed_ticks(const mixed_entry& entry, const mixed_domain& domain, const statement_keys& keys);

// A group of parameters that a call can set. n_analog: of start values and first guesses those that serve analog calls,
// which stand before the digital ones; of other groups absent, as they serve all.
template <class T>
struct mixed_group {
    pair_list<T> library_lists::*list;  // of the callee and of the mixed composite
    row_table<T> element_table::*value;
    row_table<int> element_table::*flag;
    bool from_model;
    std::vector<int> composite_library::*n_analog = nullptr;
};
template <class F>
void for_each_mixed_group(F f) {
    using L = library_lists;
    using E = element_table;
    f(mixed_group<int>{&L::iprm, &E::iprm, &E::iprm_flag, true});
    f(mixed_group<std::string>{&L::sprm, &E::sprm, &E::sprm_flag, false});
    f(mixed_group<double>{&L::rprm, &E::rprm, &E::rprm_flag, true});
    f(mixed_group<double>{&L::sv, &E::sv, &E::sv_flag, false, &composite_library::n_sv});
    f(mixed_group<double>{&L::ig, &E::ig, &E::ig_flag, false, &composite_library::n_ig});
}

// The callee's list of parameters as the call sets it. flag: left_at_default, -1 for a value of the call, or the
// position in the mixed composite's list that gives it.
template <class T>
struct mixed_values {
    std::vector<T> value;
    std::vector<int> flag;
};
template <class T>
mixed_values<T> read_mixed_values(const mixed_entry& entry, const mixed_call& call, const mixed_group<T>& g,
                                  statement_keys& keys) {
    const std::string_view class_name = library_forms[lib_gmes].class_name;
    const pair_list<T>&list = call.callees.list.*g.list, &own = entry.lib.list.*g.list;
    // What the callee computes cannot be set.
    int n = list.count(call.i_callee), first_digital = n;
    if constexpr (std::is_same_v<T, double>) {
        if (g.list == &library_lists::rprm) n = call.callees.n_rprm_plain(call.i_callee);
        if (g.n_analog) first_digital = first_whole(call.domain.lib, call.callees, g.list, call.i_callee);
    }
    mixed_values<T> set;
    for (int j = 0; j < list.count(call.i_callee); ++j) {
        T value = list.value(call.i_callee, j);
        int flag = left_at_default;
        const bool digital = j >= first_digital;
        const auto apply = [&](std::string_view word) {
            int link = own.find(entry.e, word);
            if (link >= 0 && g.n_analog && (link >= (entry.lib.*g.n_analog)[word_list::at(entry.e)]) != digital)
                link = -1;
            link_or_literal(own, entry.e, link, class_name, word, digital, value, flag);
        };
        if (j < n) {
            const std::string_view key = list.word(call.i_callee, j);
            if (call.model && g.from_model)
                if (const int i = find_word_1(call.model->key, key); i >= 0) apply(call.model->value[i]);
            if (const int i = keys.find(key); i >= 0) apply(keys.w[i]);
        }
        set.value.push_back(std::move(value));
        set.flag.push_back(flag);
    }
    return set;
}

// Sensed nodes and branches of the newest row are all names of this composite.
inline void fill_flags(element_table& be) {
    for (const auto& [numbers, flags] : {std::pair{&be.in, &be.in_flag}, std::pair{&be.ib, &be.ib_flag}}) {
        flags->data.resize(numbers->data.size(), -1);
        flags->close_row();
    }
}

// A call of a composite of another library: one row more in every table of the flat list.
void read_single_call(mixed_entry& entry, const mixed_domain& domain, const words& w);
// A call of another mixed composite: its rows are copied.
void read_nested_call(mixed_entry& entry, const words& w);

// Assigns the open outputs of one line whose right word is the name of the call; assign(row of the table, its place in
// the callee's table) does one.
template <class F>
void serve_outputs(mixed_entry& entry, std::size_t i_line, const mixed_call& call, F assign) {
    const mixed_outputs& out = mixed_output_lines[i_line];
    const output_table* offered = callee_outputs(call.callees, out, call.domain);
    if (call.name.empty() || offered == nullptr) return;
    std::erase_if(entry.open[i_line], [&](const open_output& o) {
        if (o.right != call.name) return false;
        const int j = offered->name.find(call.i_callee, o.left);
        if (j < 0)
            word_not_found("find_word_3", o.left,
                           line(call.domain.routine, ": outvar (", out.line, ") name not found."));
        assign(own_outputs(entry.lib, out), static_cast<std::size_t>(o.at),
               static_cast<std::size_t>(offered->at(call.i_callee, j)), *offered);
        return true;
    });
}
