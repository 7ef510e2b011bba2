#include "tnl/common/text.h"

#include <gtest/gtest.h>

namespace {

using namespace cli;

TEST(text, is_lowered_in_ascii_letters_alone) { EXPECT_EQ(lower("Az_9\xc3\x84"), "az_9\xc3\x84"); }

TEST(text, is_trimmed_at_both_ends) {
    EXPECT_EQ(trimmed(" \ta b\r"), "a b");
    EXPECT_EQ(trimmed(" \t"), "");
}

TEST(text, in_quotes_is_one_word_of_a_shell) { EXPECT_EQ(shell_quoted("it's $x"), "'it'\\''s $x'"); }

TEST(text, is_replaced_everywhere_and_not_within_what_came_in) {
    EXPECT_EQ(replaced("a-b-", "-", "--"), "a--b--");
    EXPECT_EQ(replaced("", "-", "x"), "");
}

TEST(text, gets_backslashes_and_loses_line_ends) { EXPECT_EQ(with_backslashes("a[1]\nb\\", "[]\\"), "a\\[1\\] b\\\\"); }

TEST(text, is_split_into_pieces_that_are_not_empty) {
    EXPECT_EQ(split(" a  b ", ' '), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(split("", ' ').empty());
}

}  // namespace
