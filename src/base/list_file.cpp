#include "base/list_file.h"

#include <unordered_map>

#include "base/halt.h"
#include "base/text_file.h"

namespace {

using positions = std::unordered_map<std::string, int>;  // name -> 0-based number of the non-blank line

words read_names(const std::string& path, positions& position) {
    const text_file file = open_text_file(path, "make_chrarray_5");
    words names;
    for (const std::string& text : file.lines) {
        const std::string_view word = word_first_1(text);
        if (word.empty()) continue;
        const std::size_t dot = word.find('.');
        if (dot == std::string_view::npos)
            halt({"make_chrarray_5: wrong format in the input file?", "  . (dot) not found. Check input file.",
                  line("  input file is: ", path), "  Halting..."});
        const std::string_view name = word.substr(dot + 1);
        if (!position.try_emplace(std::string(name), names.size()).second)
            halt({line("make_chrarray_5: in file ", path, ","), line("  ", name, " is appearing more than once!")});
        names.add(name);
    }
    return names;
}

}  // namespace

words list_names(const std::string& list_path) {
    positions position;
    return read_names(list_path, position);
}

std::vector<int> make_chrarray_5(const std::string& list_path, const words& names) {
    positions position;
    read_names(list_path, position);
    std::vector<int> index;
    for (int i = 0; i < names.size(); ++i) {
        const auto found = position.find(names.str(i));
        if (found == position.end())
            halt({line("make_chrarray_5: ", names[i], " not found in input file."), line("  word_r is: ", names[i]),
                  "  Halting..."});
        index.push_back(found->second);
    }
    return index;
}
