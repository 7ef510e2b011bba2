#include "tnl/deck/file_names.h"

#include <algorithm>

namespace cli {

namespace fs = std::filesystem;

namespace {

// Relative to the folder, behind all links but one that stands in the place of the file itself: that one is replaced.
fs::path place_in_folder(const fs::path& name, const fs::path& folder) {
    std::error_code error;
    const fs::path home = fs::weakly_canonical(fs::absolute(folder), error), whole = home / name;
    fs::path parent = fs::weakly_canonical(whole.parent_path(), error);
    if (error) parent = whole.parent_path().lexically_normal();
    return (parent / whole.filename()).lexically_relative(home);
}

// Every word of the text that is this one.
void replace_word(std::string& text, const std::string& word, const std::string& other) {
    constexpr std::string_view separators = " \t=\n";
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at)) {
        const std::size_t end = at + word.size();
        const bool begins = at == 0 || text[at - 1] == '+' || separators.find(text[at - 1]) != std::string_view::npos;
        const bool whole = begins && (end == text.size() || separators.find(text[end]) != std::string_view::npos);
        if (whole) text.replace(at, word.size(), other);
        at += whole ? other.size() : word.size();
    }
}

// Whether the simulator may read a file of this name. What an element does with its words is not known here: those
// count that stand behind a word that speaks of a file, or have a path.
bool may_be_read(const file_chr& f, int i, int j) {
    const std::string_view first = f.word(i, 0), word = f.word(i, j), key = f.word(i, j - 1);
    if (first == "gstring") return j % 2 == 0;
    if (first == "initial_sol") return j == 3;
    if (first == "filename") {
        bool appends = false;
        for (int k = 2; k + 1 < f.n_words(i); k += 2)
            appends = appends || (f.word(i, k) == "append" && f.word(i, k + 1) == "yes");
        return j == 1 && appends && fs::path(word).is_relative();
    }
    if (j % 2 != 0 || key == "name" || key == "type" || key == "model") return false;
    return (find_library(&library_form::statement, first) >= 0 || find_library(&library_form::model, first) >= 0) &&
           (key.find("file") != std::string_view::npos || word.find('/') != std::string_view::npos);
}

}  // namespace

bool stays_inside(const fs::path& name) {
    if (name.empty() || name.is_absolute()) return false;
    return std::none_of(name.begin(), name.end(), [](const fs::path& part) { return part == ".."; });
}

fs::path default_run_folder(const std::string& deck) { return (deck == "-" ? "stdin" : deck) + ".run"; }

bool leads_inside(const fs::path& name, const fs::path& folder) {
    return stays_inside(name) && stays_inside(place_in_folder(name, folder));
}

std::string fault_of_output_name(const fs::path& name, const fs::path& folder, bool force) {
    const fs::path inside = place_in_folder(name, folder);
    if (!stays_inside(inside) || (name.is_relative() && !stays_inside(name))) {
        if (name.is_relative()) return "an output file outside the folder of the run";
        return force ? "" : "an output file outside the folder of the run, which only --force writes";
    }
    for (const std::string& own : {std::string(record_name), new_record_name(), std::string(partial_name),
                                   std::string(aux_name), std::string(dimensions_name)})
        if (*inside.begin() == own) return "an output file in the place of one that the run keeps for itself";
    return "";
}

void check_output_names(const deck_view& deck, const fs::path& folder, bool force) {
    for (const written_file& file : written_files(deck))
        if (const std::string why = fault_of_output_name(file.path, folder, force); !why.empty())
            throw deck_error(why + ": " + file.path + "\n" + place_with_caret(deck, file.i_statement, 1));
}

void name_inside(deck_view& deck, const fs::path& folder) {
    bool any = false;
    for (const written_file& file : written_files(deck)) {
        const fs::path inside = place_in_folder(file.path, folder);
        if (fs::path(file.path).is_relative() || !stays_inside(inside)) continue;
        replace_word(deck.source.text, file.path, inside.string());
        any = true;
    }
    if (any) deck.statements = file_chr_of(deck.source.text, any_number_of_lines);
}

std::vector<unreadable_input> unreadable_inputs(const deck_view& deck) {
    std::vector<unreadable_input> list;
    const file_chr& f = deck.statements;
    const fs::path home = deck.path == "-" ? fs::path() : fs::path(deck.path).parent_path();
    for (int i = 0; i < f.n_lines(); ++i)
        for (int j = 1; j < f.n_words(i); ++j) {
            if (!may_be_read(f, i, j)) continue;
            const fs::path path(f.word(i, j));
            const std::string what = other_than_file(path.is_absolute() ? path : home / path);
            if (!what.empty() && what != "a folder")
                list.push_back({i, j, "cannot read " + path.string() + ": it is " + what});
        }
    return list;
}

void check_input_names(const deck_view& deck) {
    for (const unreadable_input& u : unreadable_inputs(deck))
        throw deck_error(u.why + "\n" + place_with_caret(deck, u.statement, u.word));
}

}  // namespace cli
