// file_chr.h -- a text file in memory as numbered statements of words.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "base/words.h"

struct word_place {
    int line = 0, column = 0;  // of the file and in the line, from 0
};

// A statement is a logical line: a physical line and the lines that continue it with '+'. All words of the file stand
// in one word array; statement i holds words line_to_word[i] up to line_to_word[i + 1] - 1.
struct file_chr {
    words all;
    std::vector<int> line_to_word{0};  // [n_lines + 1]
    std::vector<word_place> place;     // [all.size()]

    // Where a word stands; the statement's first one for a word that it has not.
    word_place where(int i, int j) const { return place[at(line_to_word[at(i)] + (j > 0 && j < n_words(i) ? j : 0))]; }
    int n_lines() const { return static_cast<int>(line_to_word.size()) - 1; }
    int n_words(int i) const { return line_to_word[at(i) + 1] - line_to_word[at(i)]; }
    std::string_view word(int i, int j) const { return all[line_to_word[at(i)] + j]; }
    bool begins(int i, std::string_view w) const { return n_words(i) > 0 && word(i, 0) == w; }
    static std::size_t at(int i) { return static_cast<std::size_t>(i); }
};

inline constexpr int usual_deck_lines = 5000;  // that a deck may have unless M_DECK_LINES of tmpdim.in says otherwise

// Reads the file in one pass. Halts when it cannot be opened, has more than max_lines lines, or begins with a '+'.
file_chr read_file_chr(const std::string& path, int max_lines = usual_deck_lines);
file_chr file_chr_of(std::string_view text, int max_lines = usual_deck_lines);  // the same for a text in memory

// Word i of a statement; a number beyond the file or the statement halts.
std::string file_get_word(const file_chr& f, int i_line, int i_word);

double file_chr_to_double(const file_chr& f, int i_line, int i_word);

// Position of a word within a statement, looked for on the positions of evenodd; -1 if absent.
int file_find_string_1(const file_chr& f, int i_line, std::string_view w, int flag_eo);
bool file_find_string_2(const file_chr& f, int i_line, std::string_view w);  // is it the statement's first word?
int file_find_string_3(const file_chr& f, int start, std::string_view w);    // first statement that begins with it; -1
// Statement of [start, end) whose first word is w; -1 if none.
int file_find_string_4(const file_chr& f, int start, int end, std::string_view w);
int file_count_lines_1(const file_chr& f, int start, int end, std::string_view w);

// Finds a word anywhere in the statement and marks its first occurrence; false if it is absent.
bool file_find_string_5(const file_chr& f, int i_line, std::string_view w, std::vector<char>& marks);

words file_line_to_chrarr(const file_chr& f, int i_line);
// One statement as a word array, within the limits of its reader: characters are tested before words.
words file_line_to_chrarr_1(const file_chr& f, int i_line, int max_chr, int max_words);
inline words circuit_line(const file_chr& f, int i_line) { return file_line_to_chrarr_1(f, i_line, 10000, 500); }
inline words solve_line(const file_chr& f, int i_line) { return file_line_to_chrarr_1(f, i_line, 2000, 100); }
