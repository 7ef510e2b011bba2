#include "tnl/deck/installed.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "tnl/common/near_words.h"

namespace cli {

namespace {

std::string text_of(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    if (in && in.peek() != std::ifstream::traits_type::eof()) text << in.rdbuf();
    return text.str();
}

// Walks the uses of one entry after another; what is written behind all that it calls is callee first.
struct follow {
    const installed_libraries& libraries;
    deck_needs& needs;
    std::map<entry_name, std::vector<std::string>> text_words;  // of what was visited: its string parameters

    // False if no such entry is installed.
    bool visit(const entry_name& entry) {
        const installed_library& library = libraries.library[entry.library];
        const auto at = library.position.find(entry.name);
        if (at == library.position.end()) return false;
        const auto [texts, is_new] = text_words.try_emplace(entry);
        if (!is_new) return true;
        const entry_lines lines =
            lines_of(library.entries[static_cast<std::size_t>(at->second)], library_forms[entry.library]);
        if (!library_forms[entry.library].statement.empty())
            for (const entry_name& used : used_by(lines)) visit(used);
        for (const name_and_value& parameter : pairs_of(lines, "sparms:")) {
            texts->second.push_back(parameter.name);
            if (parameter.value != "none") needs.files.push_back(parameter.value);
        }
        needs.entries[entry.library].push_back(at->second);
        return true;
    }
};

}  // namespace

installed_libraries read_installed(const std::filesystem::path& share) {
    installed_libraries all;
    for (int i = 0; i < n_libraries; ++i) {
        installed_library& library = all.library[i];
        library.entries = split_library(text_of(share / library_forms[i].file), library_forms[i]);
        for (std::size_t e = 0; e < library.entries.size(); ++e)
            library.position.try_emplace(library.entries[e].name, static_cast<int>(e));
    }
    for (std::size_t i = 0; i < std::size(listed_libraries); ++i)
        all.list[i] = text_of(share / library_forms[listed_libraries[i]].list);
    return all;
}

installed_libraries with_own(installed_libraries libraries, const own_composites& own) {
    for (const own_entry& e : own.entries) {
        installed_library& library = libraries.library[e.library];
        library.position[e.entry.name] = static_cast<int>(library.entries.size());
        library.entries.push_back(e.entry);
        for (std::size_t i = 0; i < std::size(listed_libraries); ++i) {
            const std::string line = "." + e.entry.name + "\n";
            if (listed_libraries[i] != e.library) continue;
            if (("\n" + libraries.list[i]).find("\n" + line) == std::string::npos) libraries.list[i] += line;
        }
    }
    libraries.with_own = true;
    return libraries;
}

deck_needs needs_of(const entry_name& entry, const installed_libraries& libraries) {
    deck_needs needs;
    follow{libraries, needs, {}}.visit(entry);
    return needs;
}

deck_needs needs_of(const deck_view& deck, const installed_libraries& libraries) {
    return needs_of(deck, libraries, circuit_range(deck));
}

deck_needs needs_of(const deck_view& deck, const installed_libraries& libraries, statement_range circuit) {
    deck_needs needs;
    follow walk{libraries, needs, {}};
    const file_chr& f = deck.statements;
    for (int i = 0; i < f.n_lines(); ++i) {
        const std::string_view word = f.n_words(i) > 0 ? f.word(i, 0) : std::string_view();
        for (int j = 2; j < f.n_words(i) && word == "gstring"; j += 2) needs.files.emplace_back(f.word(i, j));
        if (word == "initial_sol" && f.n_words(i) > 3 && f.word(i, 1) == "file") needs.files.emplace_back(f.word(i, 3));
        if (word == "filename" && f.n_words(i) > 1 && value_of(deck, i, "append", 2) == "yes")
            needs.files.emplace_back(f.word(i, 1));
        if (i < circuit.begin || i >= circuit.end) continue;
        const int element = find_library(&library_form::statement, word);
        const int model = find_library(&library_form::model, word);
        if (element < 0 && model < 0) continue;
        const std::string type = value_of(deck, i, "type");
        if (type.empty() || (element >= 0 && is_placeholder(type))) continue;
        const int library = element >= 0 ? element : model;
        if (!walk.visit({library, type})) needs.unknown.push_back({i, library, type});
        for (const std::string& key : walk.text_words[{library, type}])
            if (const std::string value = value_of(deck, i, key); !value.empty()) needs.files.push_back(value);
    }
    return needs;
}

std::vector<std::string> near_names(const std::vector<std::string>& known, std::string_view name) {
    constexpr std::size_t longest = 64;  // no name of an element is; the time grows with the product of two lengths
    if (name.size() > longest) return {};
    std::vector<std::pair<int, std::string>> near;
    for (const std::string& other : known) {
        if (other.size() > longest) continue;
        const int distance = edit_distance(name, other);
        const bool within = std::min(name.size(), other.size()) > 2 &&
                            (other.find(name) != std::string::npos || name.find(other) != std::string::npos);
        if (distance <= std::max(1, static_cast<int>(name.size()) / 3) || within) near.emplace_back(distance, other);
    }
    std::sort(near.begin(), near.end());
    if (near.size() > 5) near.resize(5);
    std::vector<std::string> names;
    names.reserve(near.size());
    for (const auto& [distance, entry] : near) names.push_back(entry);
    return names;
}

std::vector<std::string> near_names(const installed_library& library, std::string_view name) {
    std::vector<std::string> known;
    known.reserve(library.entries.size());
    for (const library_entry& entry : library.entries) known.push_back(entry.name);
    return near_names(known, name);
}

}  // namespace cli
