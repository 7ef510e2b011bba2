#include "tnl/deck_source.h"

#include <gtest/gtest.h>

#include "temp_folder.h"
#include "tnl/exit_status.h"
#include "tnl/run_folder.h"

namespace {

using namespace cli;

// "file:line" of the simulator's line, counted from 1.
std::string origin_of(const deck_source& source, int i_line) {
    const deck_source::place& p = source.origin[static_cast<std::size_t>(i_line - 1)];
    return source.files[static_cast<std::size_t>(p.file)].path + ":" + std::to_string(p.line + 1);
}

TEST(deck_source, comments_at_line_ends_are_cut_and_lines_keep_their_numbers) {
    const deck_source s = deck_source_of("title: a\r\n# whole line\nr=1k  # one\nname=a#b\n  # indented\n", "d.in");
    EXPECT_EQ(s.text, "title: a\n# whole line\nr=1k\nname=a#b\n  # indented\n");
    EXPECT_EQ(origin_of(s, 3), "d.in:3");
    EXPECT_EQ(s.files[0].lines[2], "r=1k  # one");
}

TEST(deck_source, included_lines_stand_in_place_of_the_statement_and_know_their_file) {
    const temp_folder inside;
    std::filesystem::create_directories("sub");
    cli::write_file("sub/load.in", "l1\ninclude more.in\n");
    cli::write_file("sub/more.in", "m1\n");
    const std::string deck = std::string("deck.in");
    cli::write_file(deck, "a\ninclude sub/load.in # the load\nb\n");
    const deck_source s = read_deck_source(deck);
    EXPECT_EQ(s.text, "a\nl1\nm1\nb\n");
    EXPECT_EQ(origin_of(s, 2), std::string("sub/load.in") + ":1");
    EXPECT_EQ(origin_of(s, 3), std::string("sub/more.in") + ":1");
    EXPECT_EQ(origin_of(s, 4), deck + ":3");
}

TEST(deck_source, an_include_that_cannot_be_is_told_with_its_place) {
    const temp_folder inside;
    const std::string deck = std::string("deck.in");
    const auto fault = [&](const char* text) {
        cli::write_file(deck, text);
        try {
            read_deck_source(deck);
        } catch (const deck_error& e) {
            return std::string(e.what());
        }
        return std::string();
    };
    EXPECT_EQ(fault("a\ninclude\n"), deck + ":2: include needs one file name");
    EXPECT_EQ(fault("include none.in\n"),
              deck + ":1: cannot read " + std::string("none.in") + ": No such file or directory");
    EXPECT_EQ(fault("a\n\ninclude deck.in\n"), deck + ":3: " + deck + " includes itself");
}

}  // namespace
