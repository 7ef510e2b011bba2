#include "base/text_file.h"

#include <gtest/gtest.h>

#include "halt_throws.h"
#include "temp_folder.h"

namespace {

// All logical lines of a text, words joined by blanks, lines ended by '|'.
std::string logical_lines(std::string_view text, line_rule rule) {
    text_file file = text_file_of(text);
    std::string all;
    words w;
    while (next_line(file, w, rule)) all += joined(w) + "|";
    return all;
}

struct row {
    const char* text;
    const char* expected;
};

const char* const no_start = "next_line: a new line cannot start with +. Halting...\n";
const char* const no_end = "next_line: eof not reached in MAXLINES? Halting...\n";

}  // namespace

TEST(text_file, has_lines_without_their_ends) {
    EXPECT_EQ(text_file_of("").lines.size(), 0u);
    EXPECT_EQ(text_file_of("a").lines, (std::vector<std::string>{"a"}));
    EXPECT_EQ(text_file_of("a\r\n\r\nb\r\r\nc").lines, (std::vector<std::string>{"a", "", "b\r", "c"}));
    EXPECT_EQ(text_file_of("a\n\n").lines, (std::vector<std::string>{"a", ""}));
}

TEST(next_line, joins_continuations_past_comments_and_blank_lines) {
    const row rows[] = {
        {"", ""},
        {"\n# c\n  =\t\n", ""},
        {"a b\nc", "a b|c|"},
        {"a\n+b\n+ c\nd\n", "a b c|d|"},
        {"a\n\n# c\n =\n  + b\n", "a b|"},
        {"a\n# c\n\nb\n", "a|b|"},
        {"a\n+\n+ b", "a b|"},              // '+' alone adds nothing
        {"a\n++b", "a +b|"},                // one '+' is dropped
        {"  a=1 # b + c", "a 1 # b + c|"},  // no trailing comments
        {"  # c\n  a", "a|"},               // blanks before '#' do not count
        {"\t# c\n\t+ d", "# c|+ d|"},       // tabs do
        {"a\r\n+b\r\n", "a b|"},
    };
    for (const row& r : rows) EXPECT_EQ(logical_lines(r.text, line_rule::joined_lines), r.expected) << r.text;
}

TEST(next_line, keeps_guards_and_leading_blanks_in_source_files) {
    const row rows[] = {
        {"#ifndef X\n#define X\n# c\n#include <a>\na\n#endif\n", "#ifndef X|#define X|a|#endif|"},
        {" # c\n + d\n+ e", "# c|+ d e|"},
        {"a\n#define X\n+ b", "a|#define X b|"},
    };
    for (const row& r : rows) EXPECT_EQ(logical_lines(r.text, line_rule::guard_lines), r.expected) << r.text;
}

TEST(next_line, takes_plain_lines_one_by_one) {
    EXPECT_EQ(logical_lines("# t x\n\n+1 2\n  +3 4\n =\n5", line_rule::plain_lines), "+1 2|+3 4|5|");
}

TEST(next_line, halts_when_a_first_line_begins_with_plus) {
    for (const char* text : {"+a", "\n# c\n+a\n", "  +"})
        EXPECT_HALT(logical_lines(text, line_rule::joined_lines), no_start);
    EXPECT_HALT(logical_lines("+a", line_rule::guard_lines), no_start);
}

// What follows a line may be source text, where comments and blank lines count.
TEST(next_line, leaves_the_position_right_behind_the_line) {
    text_file file = text_file_of("C:\n\n#include <a>\nx\n");
    words w;
    ASSERT_TRUE(next_line(file, w, line_rule::guard_lines));
    EXPECT_EQ(file.at, 1u);
}

TEST(next_line, passes_over_5000_lines_in_a_call_and_no_more) {
    for (const char* skipped : {"# c\n", "\n"}) {
        EXPECT_EQ(logical_lines(repeated(skipped, 4999) + "a", line_rule::joined_lines), "a|");
        EXPECT_HALT(logical_lines(repeated(skipped, 5000) + "a", line_rule::joined_lines), no_end);
        EXPECT_HALT(logical_lines(repeated(skipped, 5001), line_rule::guard_lines), no_end);
        EXPECT_HALT(logical_lines(repeated(skipped, 5001), line_rule::plain_lines),
                    "next_line_1: eof not reached in MAXLINES? Halting...\n");
    }
    EXPECT_EQ(logical_lines("a\n" + repeated("+\n", 4998) + "+b", line_rule::joined_lines), "a b|");
    EXPECT_HALT(logical_lines("a\n" + repeated("+\n", 4999) + "+b", line_rule::joined_lines), no_end);
    // Each call counts anew.
    EXPECT_EQ(logical_lines(repeated("# c\n", 4000) + "a\n" + repeated("# c\n", 4000) + "b", line_rule::joined_lines),
              "a|b|");
    EXPECT_EQ(logical_lines(repeated("a\n", 12000), line_rule::joined_lines).size(), 24000u);
}

TEST(next_line, takes_long_lines_and_any_bytes) {
    const std::string million(1000000, 'x');
    EXPECT_EQ(logical_lines(million + " y", line_rule::joined_lines), million + " y|");
    const std::string bytes("a\0b \xff\x01", 6);
    EXPECT_EQ(logical_lines(bytes, line_rule::joined_lines), std::string("a\0b \xff\x01|", 7));
}

TEST(read_text_file, tells_a_missing_file_and_a_folder) {
    const temp_folder here;
    text_file file;
    write_file("a.txt", "x\ny");
    EXPECT_TRUE(read_text_file("a.txt", file));
    EXPECT_EQ(file.path, "a.txt");
    EXPECT_EQ(file.lines.size(), 2u);
    EXPECT_FALSE(read_text_file("none.txt", file));
    EXPECT_FALSE(read_text_file(".", file));
    EXPECT_FALSE(read_text_file("", file));
    EXPECT_HALT(open_text_file("none.txt", "gbes_class"), "gbes_class: file none.txt does not exist. Halting...\n");
    EXPECT_HALT(open_text_file(".", "gbes_class"), "gbes_class: file . does not exist. Halting...\n");
}

TEST(file_count_lines, counts_a_last_line_without_its_end) {
    const temp_folder here;
    for (const auto& [text, n] : {std::pair{"", 0}, {"\n", 1}, {"a", 1}, {"a\n", 1}, {"a\n\nb", 3}}) {
        write_file("a.txt", text);
        EXPECT_EQ(file_count_lines("a.txt"), n) << text;
    }
    EXPECT_HALT(file_count_lines("none.txt"), "file_count_lines: file none.txt does not exist. Halting...\n");
    EXPECT_HALT(file_count_lines("."), "file_count_lines: file . does not exist. Halting...\n");
}
