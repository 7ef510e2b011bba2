#include "deck/file_chr.h"

#include <gtest/gtest.h>

#include "halt_throws.h"
#include "temp_folder.h"

namespace {

std::string statements(const file_chr& f) {
    std::string all;
    for (int i = 0; i < f.n_lines(); ++i) all += joined(file_line_to_chrarr(f, i)) + "|";
    return all;
}

}  // namespace

TEST(file_chr, makes_statements_of_lines_and_their_continuations) {
    struct row {
        const char *text, *expected;
    };
    const row rows[] = {
        {"", ""},
        {"# a\n\n = \t\n", ""},
        {"a b=c\nd", "a b c|d|"},
        {"a\n+ b\n+c\n", "a b c|"},
        {"a\n# x\n\n==\n   + b\nc", "a b|c|"},
        {"a\n+\nb\n", "a|b|"},                // '+' alone adds nothing
        {"a\n++b\n", "a +b|"},                // one '+' is dropped
        {"a # b\nc + d\n", "a # b|c + d|"},   // '#' and '+' elsewhere are characters
        {"   # a\n   b", "b|"},               // leading blanks are removed,
        {"a\n\t# b\n\t+ c\n", "a|# b|+ c|"},  // tabs are not
        {"a\r\n+ b\r\n\r\n", "a b|"},
        {"end_cf\nafter", "end_cf|after|"},
    };
    for (const row& r : rows) EXPECT_EQ(statements(file_chr_of(r.text)), r.expected) << r.text;
}

TEST(file_chr, knows_line_and_column_of_each_word) {
    const file_chr f = file_chr_of("  a =bc\n# x\n + d\te\nf\n");
    const auto where = [&](int i, int j) { return std::pair(f.where(i, j).line, f.where(i, j).column); };
    EXPECT_EQ(where(0, 0), std::pair(0, 2));
    EXPECT_EQ(where(0, 1), std::pair(0, 5));
    EXPECT_EQ(where(0, 2), std::pair(2, 3));
    EXPECT_EQ(where(0, 3), std::pair(2, 5));
    EXPECT_EQ(where(1, 0), std::pair(3, 0));
    EXPECT_EQ(where(0, 4), where(0, 0)) << "a word that the statement has not";
    EXPECT_EQ(where(1, -1), where(1, 0));
}

TEST(file_chr, remembers_where_a_statement_begins) {
    const file_chr f = file_chr_of("# x\na\n+ b\n\nc\n");
    EXPECT_EQ(f.where(0, 0).line, 1);
    EXPECT_EQ(f.where(1, 0).line, 4);
    EXPECT_EQ(f.line_to_word, (std::vector<int>{0, 2, 3}));
    EXPECT_EQ(f.n_words(0), 2);
    EXPECT_TRUE(f.begins(1, "c"));
    EXPECT_FALSE(f.begins(1, "cc"));
}

TEST(file_chr, halts_when_the_first_kept_line_begins_with_plus) {
    for (const char* text : {"+ a", "# x\n\n+", "   +a\nb"})
        EXPECT_HALT(file_chr_of(text), "count_file_1: cannot have + in the first line! Halting...\n");
}

TEST(file_chr, takes_5000_lines_and_halts_at_the_next) {
    EXPECT_EQ(file_chr_of(repeated("a\n", 5000)).n_lines(), 5000);
    EXPECT_EQ(file_chr_of("a\n" + repeated("+ b\n", 4999)).n_words(0), 5000);
    for (const std::string& text : {repeated("a\n", 5001), "a\n" + repeated("+ b\n", 5000), repeated("#\n", 5001),
                                    repeated("a\n", 5000) + "+", "+\n" + repeated("a\n", 5000)})
        EXPECT_HALT(file_chr_of(text), "filr_chr: file end not reached. Halting..\n");
}

TEST(file_chr, takes_as_many_lines_as_it_is_told) {
    const char* const text = "filr_chr: file end not reached. Halting..\n";
    EXPECT_EQ(file_chr_of(repeated("a\n", 7000), 7000).n_lines(), 7000);
    EXPECT_HALT(file_chr_of(repeated("a\n", 7001), 7000), text);
    EXPECT_HALT(file_chr_of("a\nb\n", 1), text);
    EXPECT_HALT(file_chr_of("a\n", -1), text);
}

TEST(file_chr, takes_long_lines_and_any_bytes) {
    const std::string million(1000000, 'x');
    EXPECT_EQ(file_chr_of(million + " " + million).word(0, 1), million);
    const std::string bytes("a\0b \xff\n\x80 c", 9);
    const file_chr f = file_chr_of(bytes);
    EXPECT_EQ(f.word(0, 0), std::string("a\0b", 3));
    EXPECT_EQ(f.word(1, 0), "\x80");
}

TEST(read_file_chr, tells_a_missing_file_and_a_folder) {
    const temp_folder here;
    write_file("cct.in", "a\n+b\n");
    EXPECT_EQ(statements(read_file_chr("cct.in")), "a b|");
    EXPECT_HALT(read_file_chr("none.in"), "file_chr: file none.in does not exist. Halting...\n");
    EXPECT_HALT(read_file_chr("."), "file_chr: file . does not exist. Halting...\n");
}

TEST(file_get_word, halts_beyond_the_file_and_beyond_the_statement) {
    const file_chr f = file_chr_of("a b\nc 1.5k");
    EXPECT_EQ(file_get_word(f, 1, 0), "c");
    EXPECT_EQ(file_chr_to_double(f, 1, 1), 1500.0);
    for (const int i : {2, -1}) EXPECT_HALT(file_get_word(f, i, 0), "get_word: line_given is too large! Halting..\n");
    for (const int j : {2, -1}) EXPECT_HALT(file_get_word(f, 0, j), "get_word: word_given is too large! Halting..\n");
}

TEST(file_find_string, searches_within_one_statement) {
    const file_chr f = file_chr_of("k type name type\nname x");
    EXPECT_EQ(file_find_string_1(f, 0, "type", odd_words), 1);
    EXPECT_EQ(file_find_string_1(f, 0, "type", all_words), 1);
    EXPECT_EQ(file_find_string_1(f, 0, "type", even_words), -1);
    EXPECT_TRUE(file_find_string_2(f, 0, "k"));
    EXPECT_FALSE(file_find_string_2(f, 0, "type"));
    EXPECT_HALT(file_find_string_2(f, 2, "k"), "file_find_string_2: line_given is too large! Halting..\n");
}

TEST(file_find_string, searches_first_words_of_a_range_without_its_end) {
    const file_chr f = file_chr_of("a\nb a\na\nb");
    EXPECT_EQ(file_find_string_3(f, 0, "b"), 1);
    EXPECT_EQ(file_find_string_3(f, 2, "b"), 3);
    EXPECT_EQ(file_find_string_3(f, 0, "c"), -1);
    EXPECT_EQ(file_find_string_4(f, 1, 3, "a"), 2);
    EXPECT_EQ(file_find_string_4(f, 1, 2, "a"), -1);
    EXPECT_EQ(file_find_string_4(f, 3, 3, "b"), -1);
    EXPECT_EQ(file_find_string_4(f, 3, 1, "b"), -1);
    EXPECT_EQ(file_find_string_4(f, -5, 99, "b"), 1);
    EXPECT_EQ(file_count_lines_1(f, 0, 4, "b"), 2);
    EXPECT_EQ(file_count_lines_1(f, 0, 3, "b"), 1);
}

TEST(file_find_string_5, marks_the_first_occurrence_only) {
    const file_chr f = file_chr_of("output a b a");
    std::vector<char> marks(4, 0);
    EXPECT_TRUE(file_find_string_5(f, 0, "a", marks));
    EXPECT_FALSE(file_find_string_5(f, 0, "c", marks));
    EXPECT_EQ(marks, (std::vector<char>{0, 1, 0, 0}));
}

TEST(file_line_to_chrarr_1, accepts_exactly_its_limits_and_tests_characters_first) {
    const file_chr f = file_chr_of("abc def");
    EXPECT_EQ(joined(file_line_to_chrarr_1(f, 0, 6, 2)), "abc def");
    EXPECT_HALT(file_line_to_chrarr_1(f, 0, 5, 2), "file_line_to_chrarr_1: n_chr_1 is too large!\n");
    EXPECT_HALT(file_line_to_chrarr_1(f, 0, 6, 1), "file_line_to_chrarr_1: n_words_1 is too large!\n");
    EXPECT_HALT(file_line_to_chrarr_1(f, 0, 5, 1), "file_line_to_chrarr_1: n_chr_1 is too large!\n");
    EXPECT_HALT(file_line_to_chrarr_1(f, 1, 6, 2), "file_line_to_chrarr_1: i_line is too large!\n");
    EXPECT_HALT(file_line_to_chrarr(f, -1), "file_line_to_chrarr: i_line is too large!\n");
}
