#include "library/code_section.h"

#include "base/halt.h"

namespace {
constexpr int max_lines = 5000;
}

void skip_code(text_file& file, const basic_form& form) {
    const std::string_view keyword = form.lib.begin, end = form.lib.end;
    for (int i = 0; i < max_lines && !file.at_end(); ++i) {
        const std::string_view word = word_first_1(file.lines[file.at++]);
        if (word == end) return;
        if (word == keyword)
            halt({line(form.lib.class_name, ": ", keyword, " of next ", keyword, " before ", end, " of current ",
                       keyword, "? Halting...")});
    }
    halt({line(form.lib.class_name, ": ", form.no_end, " not found. Halting...")});
}

bool pass_lines(text_file& file, std::string_view end, std::string_view other_end, std::string* take) {
    for (int i = 0; i < max_lines && !file.at_end(); ++i) {
        const std::string& text = file.lines[file.at++];
        const std::string_view word = word_first_1(text);
        if (word == end || word == other_end) return true;
        if (take && !word.empty() && !word.starts_with("//")) *take += text + '\n';
    }
    return false;
}
