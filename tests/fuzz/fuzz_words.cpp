#include <cstdlib>

#include "base/list_file.h"
#include "base/text_file.h"
#include "deck/tmpdim_class.h"
#include "targets.h"

namespace {
void read_lines(std::string_view text) {
    for (const line_rule rule : {line_rule::joined_lines, line_rule::guard_lines, line_rule::plain_lines})
        runs_through([&] {
            text_file file = text_file_of(text);
            words w;
            while (next_line(file, w, rule)) {
                check_word_repeat_1({w.str(0), w.str(w.size() - 1), joined(w)}, "repeated");
                for (int i = 0; i < w.size(); ++i) find_word_EO_1(w, w[i], odd_words + i % 3);
            }
        });
}
}  // namespace

bool fuzz_words(std::string_view text) {
    read_lines(text);
    const std::string path = file_of(text);
    if (!runs_through([&] { file_count_lines(path); })) std::abort();
    // A file is a list or a table of sizes: it is good when one of them takes it.
    const bool is_list = runs_through([&] { make_chrarray_5(path, list_names(path)); });
    const bool is_sizes = runs_through([&] { read_tmpdim(path); });
    return is_list || is_sizes;
}
