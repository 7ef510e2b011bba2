// Variables of blocks: each is written by one block or meter, and read by others.
#include "tnl/check/check_uses.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

constexpr std::size_t most_orphans = 5;  // that an advice names

}  // namespace

void check_variables(checked_deck& d) {
    const used_names used = names_used(d, &element_type::var);
    std::set<std::string> asked_for;
    const file_chr& f = d.text();
    for (int i = d.sections.circuit.begin; i < d.sections.circuit.end; ++i)
        if (is_outvar(f, i))
            for (int j = 2; j < f.n_words(i); j += 2)
                for (const std::string_view quantity : {"var_of_", "var_ac_of_"})
                    if (f.word(i, j).starts_with(quantity))
                        asked_for.insert(std::string(f.word(i, j).substr(quantity.size())));

    const auto element = [&](const name_use& u) -> const deck_element& {
        return d.elements[static_cast<std::size_t>(u.element)];
    };
    std::vector<std::string> written, unread;
    for (const auto& [name, list] : used.of) {
        bool writes = false, reads = asked_for.count(name) > 0;
        for (const name_use& u : list) (u.writes ? writes : reads) = true;
        if (writes) written.push_back(name);
        if (!reads) unread.push_back(name);
    }
    for (const auto& [name, list] : used.of) {
        const name_use* writer = nullptr;
        bool has_block = false, is_read = asked_for.count(name) > 0;
        for (const name_use& u : list) {
            const int library = element(u).library;
            has_block = has_block || library == lib_gels || library == lib_gmes;
            if (!u.writes) {
                is_read = true;
                continue;
            }
            if (writer != nullptr)
                d.report.error(
                    "written-twice", u.at,
                    "variable " + name + " is written by " + element(*writer).name + " and by " + element(u).name,
                    "a variable has one block or meter that drives it");
            else
                writer = &u;
        }
        if (writer == nullptr && !used.unsure) {
            // A variable that is written and read by nobody may be the one that is meant.
            std::string orphans;
            for (const std::string& other : unread)
                if (has(written, other)) orphans += (orphans.empty() ? "" : " ") + other;
            d.report.error("not-written", list.front().at,
                           "no block or meter writes the variable " + name + near_text(written, name),
                           orphans.empty() || unread.size() > most_orphans
                               ? "is the name misspelt? A block type=const gives a variable a fixed value"
                               : "is the name misspelt? Written, but read by nobody: " + orphans);
        } else if (writer != nullptr && !has_block && !used.unsure) {
            d.report.error("no-block", writer->at,
                           "variable " + name + " stands in electrical elements alone; a block must read or write it",
                           "add a block that passes it on: gelement type=linear_1");
        } else if (!is_read && !used.unsure && !has_lost_outvars(d)) {
            d.report.warning("not-read", writer->at,
                             "nobody reads the variable " + name +
                                 near_text(
                                     [&] {
                                         std::vector<std::string> orphans;
                                         for (const auto& [other, l] : used.of) {
                                             bool any = false;
                                             for (const name_use& u : l) any = any || u.writes;
                                             if (!any) orphans.push_back(other);
                                         }
                                         return orphans;
                                     }(),
                                     name));
        }
    }
}

}  // namespace cli
