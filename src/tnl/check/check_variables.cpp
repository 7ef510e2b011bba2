// Variables of blocks: each is written by one block or meter, and read by others.
#include <algorithm>
#include <set>

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
    const auto is_asked_for = [&](const std::string& name, const std::vector<name_use>& list) {
        return asked_for.count(name) > 0 ||
               std::any_of(list.begin(), list.end(), [](const name_use& u) { return !u.writes; });
    };
    // Elements with an output that somebody reads: their other ones may be of no use.
    std::set<int> useful;
    for (const auto& [name, list] : used.of)
        for (const name_use& u : list)
            if (u.writes && is_asked_for(name, list)) useful.insert(u.element);
    std::vector<std::string> written, orphans_of_all, never_written;
    for (const auto& [name, list] : used.of) {
        const auto writer = std::find_if(list.begin(), list.end(), [](const name_use& u) { return u.writes; });
        if (writer == list.end()) {
            never_written.push_back(name);
            continue;
        }
        written.push_back(name);
        if (!is_asked_for(name, list) && !useful.contains(writer->element)) orphans_of_all.push_back(name);
    }
    for (const auto& [name, list] : used.of) {
        const name_use* writer = nullptr;
        bool has_block = false;
        for (const name_use& u : list) {
            const int library = element(u).library;
            has_block = has_block || library == lib_gels || library == lib_gmes;
            if (!u.writes) continue;
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
            for (const std::string& other : orphans_of_all) orphans += (orphans.empty() ? "" : " ") + other;
            d.report.error("not-written", list.front().at,
                           "no block or meter writes the variable " + name + near_text(written, name),
                           orphans.empty() || orphans_of_all.size() > most_orphans
                               ? "is the name misspelt? A block type=const gives a variable a fixed value"
                               : "is the name misspelt? Written, but read by nobody: " + orphans);
        } else if (writer != nullptr && !has_block && !used.unsure) {
            d.report.error("no-block", writer->at,
                           "variable " + name + " stands in electrical elements alone; a block must read or write it",
                           "add a block that passes it on: gelement type=linear_1");
        } else if (has(orphans_of_all, name) && !used.unsure && !has_lost_outvars(d)) {
            d.report.warning("not-read", writer->at,
                             "nobody reads the variable " + name + near_text(never_written, name));
        }
    }
}

}  // namespace cli
