// mixed_calls.cpp -- what a mixed composite is made of: calls of composites of other libraries.
#include "base/halt.h"
#include "library/composite/mixed_entry.h"

int mixed_entry::find(mixed_place place, std::string_view word) const {
    const mixed_names names = names_at(lib, place);
    if (const int i = names.main->find(e, word); i >= 0) return i;
    const int i = names.internal->find(e, word);
    return i < 0 ? -1 : names.main->count(e) + i;
}

namespace {

const model_line* find_model(const mixed_entry& entry, const mixed_domain& domain, std::string_view type,
                             statement_keys& keys) {
    const int i = keys.find("model");
    if (i < 0) return nullptr;
    const auto k = static_cast<std::size_t>(&domain - mixed_domains.data());
    const model_line* model = entry.models[k].find(keys.w[i]);
    if (!model)
        word_not_found("find_word_3", keys.w[i],
                       line(domain.routine, ": model name not found (gmm", domain.lib.begin, ")."));
    if (model->type != type)
        halt({line(domain.routine, ": model_type does not match ", domain.type_word, " type."),
              line("  model_type=", model->type), line("  ", domain.type_word, " type=", type), "  Halting..."});
    return model;
}

// Explicit variables have no place in a mixed composite.
void refuse_xvars(const mixed_domain& domain, const composite_library& callees, int i) {
    if (callees.list.xvr.count(i) == 0) return;
    halt({line(domain.routine, ": i_", domain.lib.name, "=", i, ", nxvr=", callees.list.xvr.count(i)),
          line("  xvars are not allowed for ", domain.lib.begin, " coming from gme")});
}

}  // namespace

mixed_call read_mixed_call(mixed_entry& entry, const mixed_domain& domain, statement_keys& keys) {
    const composite_library& callees = domain.callees ? *(entry.callees.*domain.callees) : entry.lib;
    const std::string type = pick_word_1(keys.w, 1);
    int i_callee = callees.find(type);
    if (domain.callees == nullptr && i_callee >= entry.e) i_callee = -1;
    if (i_callee < 0)
        word_not_found("find_word_3", type, line(domain.routine, ": ", domain.lib.name, "_name not found"));
    mixed_call call{domain, callees, i_callee, find_model(entry, domain, type, keys), {}, {}};
    if (domain.callees) refuse_xvars(domain, callees, i_callee);
    if (const int i = keys.find("name"); i >= 0) call.name = keys.w.str(i);
    for (const mixed_bound& b : domain.bound) {
        std::vector<int>& number = call.number.emplace_back();
        const word_list& words_of_callee = callees.list.*b.list;
        for (int j = 0; j < words_of_callee.count(i_callee); ++j) {
            const std::string_view word = keys.value(words_of_callee.word(i_callee, j), domain.routine, ": ", b.no_key);
            const int i = b.place == mixed_place::branch ? -1 : entry.find(b.place, word);
            if (b.place == mixed_place::branch)
                entry.sensed.push_back({std::string(word), entry.lib.be.ib.data.size() + number.size()});
            else if (i < 0)
                word_not_found("find_word_3", word, line(domain.routine, ": ", b.no_value));
            number.push_back(i);
        }
    }
    return call;
}

void check_mixed_ticks(const mixed_entry& entry, const mixed_domain& domain, const statement_keys& keys) {
    const int i = keys.first_unticked();
    if (i < 0) return;
    const std::string first = line(domain.routine, ": some word has not been ticked.");
    const std::string word = line("    word: ", keys.w[i]);
    if (domain.tells_entry) halt({first, word, line("    Calling gme is ", entry.name), "    Halting..."});
    halt({first, word});
}

void read_single_call(mixed_entry& entry, const mixed_domain& domain, const words& w) {
    statement_keys keys(w, 2);
    const mixed_call call = read_mixed_call(entry, domain, keys);
    element_table& be = entry.lib.be;
    const int position = entry.n_calls();
    be.i_be.push_back(call.i_callee);
    be.library.push_back(number_of(domain.lib));
    be.nested.push_back(0);
    be.name.push_back(call.name.empty() ? line(call.callees.list.entry[call.i_callee], ".", position) : call.name);
    for (std::size_t k = 0; k < domain.bound.size(); ++k) {
        row_table<int>& row = be.*domain.bound[k].row;
        for (const int number : call.number[k]) row.add(number);
    }
    for (row_table<int>* row : {&be.node, &be.dgtl, &be.vr, &be.in, &be.ib}) row->close_row();
    fill_flags(be);
    for_each_mixed_group([&](const auto& g) {
        const auto set = read_mixed_values(entry, call, g, keys);
        for (const auto& v : set.value) (be.*g.value).add(v);
        for (const int f : set.flag) (be.*g.flag).add(f);
        (be.*g.value).close_row();
        (be.*g.flag).close_row();
    });
    check_mixed_ticks(entry, domain, keys);

    if (number_of(domain.lib) == lib_eels && !call.name.empty() && !find_named(entry.branches, call.name)) {
        if (static_cast<int>(entry.branches.size()) >= max_mixed_branches)
            halt({line(domain.routine, ": nbr is too large! Halting..")});
        entry.branches.push_back({call.name, position});
    }
    for (std::size_t k = 0; k < mixed_output_lines.size(); ++k)
        serve_outputs(entry, k, call,
                      [&](output_table& own, std::size_t to, std::size_t from, const output_table& offered) {
                          own.kind[to] = offered.kind[from];
                          own.be[to] = position;
                          own.index[to] = offered.index[from];
                      });
}
