#include "deck/file_chr.h"

#include <algorithm>

#include "base/halt.h"
#include "base/text_file.h"

namespace {

// max_lines counts physical lines, comments and what follows the end included.
file_chr statements_of(const text_file& file, int max_lines) {
    if (file.lines.size() > static_cast<std::size_t>(std::max(max_lines, 0)))
        halt({"filr_chr: file end not reached. Halting.."});
    file_chr f;
    for (std::size_t i = 0; i < file.lines.size(); ++i) {
        const std::string_view whole = file.lines[i];
        std::string_view s = whole;
        s.remove_prefix(std::min(s.find_first_not_of(' '), s.size()));
        if (s.empty() || s[0] == '#' || check_blank_line(s)) continue;
        if (s[0] != '+') {
            if (!f.all.empty()) f.line_to_word.push_back(f.all.size());
        } else if (f.all.empty()) {
            halt({"count_file_1: cannot have + in the first line! Halting..."});
        } else {
            s.remove_prefix(1);
        }
        for_each_word(s, [&](std::string_view word) {
            f.all.add(word);
            f.place.push_back({static_cast<int>(i), static_cast<int>(word.data() - whole.data())});
        });
    }
    if (!f.all.empty()) f.line_to_word.push_back(f.all.size());
    return f;
}

bool has_line(const file_chr& f, int i_line) { return i_line >= 0 && i_line < f.n_lines(); }

words copy_line(const file_chr& f, int i_line) {
    words w;
    for (int j = 0; j < f.n_words(i_line); ++j) w.add(f.word(i_line, j));
    return w;
}

}  // namespace

file_chr read_file_chr(const std::string& path, int max_lines) {
    return statements_of(open_text_file(path, "file_chr"), max_lines);
}

file_chr file_chr_of(std::string_view text, int max_lines) { return statements_of(text_file_of(text), max_lines); }

std::string file_get_word(const file_chr& f, int i_line, int i_word) {
    if (!has_line(f, i_line)) halt({"get_word: line_given is too large! Halting.."});
    if (i_word < 0 || i_word >= f.n_words(i_line)) halt({"get_word: word_given is too large! Halting.."});
    return std::string(f.word(i_line, i_word));
}

double file_chr_to_double(const file_chr& f, int i_line, int i_word) {
    return chr_to_double(file_get_word(f, i_line, i_word));
}

int file_find_string_1(const file_chr& f, int i_line, std::string_view w, int flag_eo) {
    return find_word_EO_1(file_line_to_chrarr(f, i_line), w, flag_eo);
}

bool file_find_string_2(const file_chr& f, int i_line, std::string_view w) {
    if (!has_line(f, i_line)) halt({"file_find_string_2: line_given is too large! Halting.."});
    return f.begins(i_line, w);
}

int file_find_string_3(const file_chr& f, int start, std::string_view w) {
    return file_find_string_4(f, start, f.n_lines(), w);
}

int file_find_string_4(const file_chr& f, int start, int end, std::string_view w) {
    for (int i = std::max(start, 0); i < std::min(end, f.n_lines()); ++i)
        if (f.begins(i, w)) return i;
    return -1;
}

bool file_find_string_5(const file_chr& f, int i_line, std::string_view w, std::vector<char>& marks) {
    const int j = file_find_string_1(f, i_line, w, all_words);
    if (j == -1) return false;
    marks[static_cast<std::size_t>(j)] = 1;
    return true;
}

int file_count_lines_1(const file_chr& f, int start, int end, std::string_view w) {
    int n = 0;
    for (int i = std::max(start, 0); i < std::min(end, f.n_lines()); ++i) n += f.begins(i, w) ? 1 : 0;
    return n;
}

words file_line_to_chrarr(const file_chr& f, int i_line) {
    if (!has_line(f, i_line)) halt({"file_line_to_chrarr: i_line is too large!"});
    return copy_line(f, i_line);
}

words file_line_to_chrarr_1(const file_chr& f, int i_line, int max_chr, int max_words) {
    if (!has_line(f, i_line)) halt({"file_line_to_chrarr_1: i_line is too large!"});
    std::size_t n_chr = 0;
    for (int j = 0; j < f.n_words(i_line); ++j) n_chr += f.word(i_line, j).size();
    if (n_chr > static_cast<std::size_t>(max_chr)) halt({"file_line_to_chrarr_1: n_chr_1 is too large!"});
    if (f.n_words(i_line) > max_words) halt({"file_line_to_chrarr_1: n_words_1 is too large!"});
    return copy_line(f, i_line);
}
