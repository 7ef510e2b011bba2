#include "library/entry_counts.h"

#include "base/halt.h"

std::vector<int> entry_counts(const basic_form& form, const basic_library& lib, int e) {
    std::vector<int> counts;
    for (const list_line& l : form.lines) {
        counts.push_back(std::visit(
            [&](auto list) {
                if constexpr (requires { (lib.list.*list).count(e); })
                    return (lib.list.*list).count(e);
                else
                    return (lib.list.*list)[static_cast<std::size_t>(e)];
            },
            l.member));
        if (!l.goes_on_behind) continue;
        const int n_before = (lib.list.*l.goes_on_behind)[static_cast<std::size_t>(e)];
        counts.back() -= n_before;
        counts[counts.size() - 2] = n_before;
    }
    for (const function_form& f : form.functions) counts.push_back((lib.*f.table).n_func(e));
    if (form.functions.empty()) counts.push_back(0);
    return counts;
}

void check_entry_counts(const basic_form& form, const basic_library& lib, int e, std::span<const int> model) {
    const std::vector<int> counts = entry_counts(form, lib, e);
    for (std::size_t k = 0; k < counts.size(); ++k)
        if (counts[k] < model[k])
            halt({line(form.lib.class_name, ": entry ", lib.list.entry[e], " is smaller than its model."),
                  line("   ",
                       k < form.lines.size()    ? form.lines[k].keyword
                       : form.functions.empty() ? ""
                                                : form.functions[k - form.lines.size()].count,
                       " has ", counts[k], ", the model uses ", model[k], "."),
                  "   Halting..."});
}
