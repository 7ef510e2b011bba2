// mixed_nested.cpp -- a call of another mixed composite: its flat list of calls is copied, with names and parameters
// translated to those of the caller.
#include "base/halt.h"
#include "library/composite/mixed_entry.h"

namespace {

// The callee's names of each place as the caller's, with new internal ones behind the caller's own.
struct name_maps {
    std::vector<int> analog, digital, variable;

    std::vector<int>& at(mixed_place place) {
        return place == mixed_place::analog ? analog : place == mixed_place::digital ? digital : variable;
    }
    const std::vector<int>& of_output(int kind) const {
        return kind == ov_dvar ? digital : kind == ov_nodev || kind == ov_nodev_ac ? analog : variable;
    }
};

name_maps map_names(mixed_entry& entry, const mixed_call& call) {
    composite_library& lib = entry.lib;
    name_maps maps;
    for (std::size_t k = 0; k < call.domain.bound.size(); ++k) {
        const mixed_place place = call.domain.bound[k].place;
        maps.at(place) = call.number[k];
        word_list& internal = place == mixed_place::analog    ? lib.auxnode
                              : place == mixed_place::digital ? lib.auxdgtl
                                                              : lib.auxvr;
        const int n = internal.count(call.i_callee);
        const int first = names_at(lib, place).main->count(entry.e) + internal.count(entry.e);
        for (int i = 0; i < n; ++i) {
            internal.pool.add("");
            maps.at(place).push_back(first + i);
        }
        internal.first.back() = internal.pool.size();
    }
    return maps;
}

template <class T>
void copy_values(row_table<T>& value, row_table<int>& flag, int row, const mixed_values<T>& set) {
    for (int j = 0; j < flag.size(row); ++j) {
        const int link = flag.row(row)[j];
        const T fixed = value.row(row)[j];
        value.add(link < 0 ? fixed : set.value[static_cast<std::size_t>(link)]);
        // What the callee hands down is given, even where it stands at the callee's own default.
        flag.add(link < 0 ? link : std::max(-1, set.flag[static_cast<std::size_t>(link)]));
    }
    value.close_row();
    flag.close_row();
}

void copy_numbers(row_table<int>& table, int row, const std::vector<int>& map) {
    for (int j = 0; j < table.size(row); ++j) table.add(map[static_cast<std::size_t>(table.row(row)[j])]);
    table.close_row();
}

}  // namespace

void read_nested_call(mixed_entry& entry, const words& w) {
    const mixed_domain& domain = mixed_domains.back();
    composite_library& lib = entry.lib;
    element_table& be = lib.be;
    statement_keys keys(w, 2);
    const mixed_call call = read_mixed_call(entry, domain, keys);
    if (lib.n_rprm_derived(call.i_callee) > 0)
        halt({line(domain.routine, ": gmes2 cannot have derived rparms."),
              line("  gmes2_name=", lib.list.entry[call.i_callee]), "  Halting..."});
    name_maps maps = map_names(entry, call);

    const int position = entry.n_calls(), first = be.first_be[word_list::at(call.i_callee)], n = be.n_be(call.i_callee);
    const std::string path = call.name.empty() ? line(lib.list.entry[call.i_callee], ".", position) : call.name;
    for (int row = first; row < first + n; ++row) {
        const auto r = static_cast<std::size_t>(row);
        be.i_be.push_back(int(be.i_be[r]));
        be.library.push_back(int(be.library[r]));
        be.nested.push_back(1);
        be.name.push_back(line(path, ".", be.name[r]));
        copy_numbers(be.node, row, maps.analog);
        copy_numbers(be.in, row, maps.analog);
        copy_numbers(be.dgtl, row, maps.digital);
        copy_numbers(be.vr, row, maps.variable);
        for (int j = 0; j < be.ib.size(row); ++j) be.ib.add(be.ib.row(row)[j] + position);
        be.ib.close_row();
        fill_flags(be);
    }
    for_each_mixed_group([&](const auto& g) {
        const auto set = read_mixed_values(entry, call, g, keys);
        for (int row = first; row < first + n; ++row) copy_values(be.*g.value, be.*g.flag, row, set);
    });
    check_mixed_ticks(entry, domain, keys);

    for (std::size_t k = 0; k < mixed_output_lines.size(); ++k)
        serve_outputs(entry, k, call,
                      [&](output_table& own, std::size_t to, std::size_t from, const output_table& offered) {
                          const int kind = offered.kind[from], of_call = offered.be[from], index = offered.index[from];
                          own.kind[to] = kind;
                          own.be[to] = of_call < 0 ? -1 : position + of_call;
                          own.index[to] = of_call < 0 ? maps.of_output(kind)[word_list::at(index)] : index;
                      });
}
