// text_file.h -- a text file in memory, read as logical lines.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "base/words.h"

// The physical lines of a file and a reading position. One trailing '\r' of each line is dropped.
struct text_file {
    std::string path;
    std::vector<std::string> lines;  // [number of physical lines]
    std::size_t at = 0;              // the next line to read

    bool at_end() const { return at >= lines.size(); }
};

// A device may have no end, and a pipe nobody who writes into it.
bool is_endless(const std::string& path);

// Reads the whole file; false if it cannot be opened or is a directory.
bool read_text_file(const std::string& path, text_file& file);
// The same, halting with "<who>: file <path> does not exist. Halting...".
text_file open_text_file(const std::string& path, const std::string& who);
text_file text_file_of(std::string_view text);

// The three line readers. All skip blank lines and lines that begin with '#'; all but plain_lines join a line that
// begins with '+' to the one before it, past comments and blank lines between them.
enum class line_rule {
    joined_lines,  // leading blanks are removed first
    guard_lines,   // leading blanks count; "#ifndef", "#define", "#endif" are lines, so source guards survive
    plain_lines,   // no continuation
};

// The next logical line's words; false at the end of the file. Halts when one call passes over more than 5000 lines, or
// when the first line begins with '+'.
bool next_line(text_file& file, words& w, line_rule rule = line_rule::joined_lines);

int file_count_lines(const std::string& path);  // lines of an existing file; a missing one halts
