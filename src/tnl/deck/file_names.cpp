#include "tnl/deck/file_names.h"

#include <algorithm>

namespace cli {

namespace fs = std::filesystem;

bool stays_inside(const fs::path& name) {
    if (name.empty() || name.is_absolute()) return false;
    return std::none_of(name.begin(), name.end(), [](const fs::path& part) { return part == ".."; });
}

fs::path default_run_folder(const std::string& deck) { return (deck == "-" ? "stdin" : deck) + ".run"; }

std::string fault_of_output_name(const fs::path& name, const fs::path& folder, bool force) {
    fs::path inside = name.lexically_normal();
    if (name.is_absolute()) {
        std::error_code error;
        const fs::path whole = fs::weakly_canonical(name, error);
        inside = (error ? inside : whole).lexically_relative(fs::weakly_canonical(fs::absolute(folder), error));
        if (!stays_inside(inside))
            return force ? "" : "an output file outside the folder of the run, which only --force writes";
    } else if (!stays_inside(name)) {
        return "an output file outside the folder of the run";
    }
    for (const std::string_view own : {record_name, partial_name, aux_name, dimensions_name})
        if (*inside.begin() == own) return "an output file in the place of one that the run keeps for itself";
    return "";
}

void check_output_names(const deck_view& deck, const fs::path& folder, bool force) {
    for (const written_file& file : written_files(deck))
        if (const std::string why = fault_of_output_name(file.path, folder, force); !why.empty())
            throw deck_error(why + ": " + file.path + "\n" + place_with_caret(deck, file.i_statement, 1));
}

// Any value of a statement may name a file; those count that stand behind a word that speaks of one, or have a path.
void check_input_names(const deck_view& deck) {
    const file_chr& f = deck.statements;
    const fs::path home = deck.path == "-" ? fs::path() : fs::path(deck.path).parent_path();
    for (int i = 0; i < f.n_lines(); ++i)
        for (int j = 1; j < f.n_words(i); ++j) {
            const std::string_view word = f.word(i, j), key = f.word(i, j - 1);
            const bool named = key.find("file") != std::string_view::npos || f.begins(i, "gstring");
            if (!named && word.find('/') == std::string_view::npos) continue;
            if (f.begins(i, "filename") && j == 1) continue;  // written, not read
            const fs::path path(word);
            const std::string what = other_than_file(path.is_absolute() ? path : home / path);
            if (!what.empty() && what != "a folder")
                throw deck_error("cannot read " + path.string() + ": it is " + what + "\n" +
                                 place_with_caret(deck, i, j));
        }
}

}  // namespace cli
