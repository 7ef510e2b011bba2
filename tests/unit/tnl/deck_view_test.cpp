#include "tnl/deck/deck_view.h"

#include <gtest/gtest.h>

namespace {

using namespace cli;

const deck_view deck = view_deck("d.in",
                                 "title: t\n"
                                 "begin_circuit\n"
                                 "eelement name=R1 type=r # a load\n"
                                 "# between\n"
                                 "  + p=a n=b   # from a to b\n"
                                 "+ r = 1k\n"
                                 "end_circuit\n");

TEST(deck_view, a_word_is_placed_in_the_line_that_holds_it) {
    const auto place = [](int i_word) {
        const record_place p = place_in_files(deck, 2, i_word);
        return p.file + ":" + std::to_string(p.line) + ":" + std::to_string(p.column);
    };
    EXPECT_EQ(place(0), "d.in:3:1");
    EXPECT_EQ(place(4), "d.in:3:23");
    EXPECT_EQ(place(6), "d.in:5:7");   // a
    EXPECT_EQ(place(10), "d.in:6:7");  // 1k
    EXPECT_EQ(place(99), "d.in:3:1");
}

TEST(deck_view, the_caret_stands_under_the_word) {
    EXPECT_EQ(place_with_caret(deck, 2, 10), "d.in:6:7:\n  + r = 1k\n        ^");
    EXPECT_EQ(place_with_caret(deck, 0), "d.in:1:1:\n  title: t\n  ^");
}

TEST(deck_view, a_statement_of_several_lines_is_shown_by_its_first_as_the_user_wrote_it) {
    EXPECT_EQ(place_with_caret(deck, 2), "d.in:3:1:\n  eelement name=R1 type=r # a load\n  ^");
}

TEST(deck_view, a_long_line_is_shown_around_the_word) {
    const deck_view long_deck = view_deck("d", "title: " + std::string(300, 'x') + " here\n");
    const std::string text = place_with_caret(long_deck, 0, 2);
    EXPECT_NE(text.find("x here"), std::string::npos);
    const std::size_t line = text.find('\n') + 1, end = text.find('\n', line);
    EXPECT_EQ(text[line + (text.size() - 1 - (end + 1))], 'h');
}

}  // namespace
