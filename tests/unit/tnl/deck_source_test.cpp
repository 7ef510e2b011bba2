#include "tnl/deck/deck_source.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "origin_of.h"
#include "temp_folder.h"
#include "tnl/common/exit_status.h"
#include "tnl/run/run_folder.h"

namespace {

using namespace cli;

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

std::string fault_of(const std::string& deck) {
    try {
        read_deck_source(deck);
    } catch (const command_error& e) {
        return e.what();
    }
    return {};
}

TEST(deck_source, files_that_include_the_next_one_twice_come_to_an_end) {
    const temp_folder inside;
    for (int level = 0; level < 45; ++level) {
        const std::string next = "include " + std::to_string(level + 1) + ".in\n";
        cli::write_file(std::to_string(level) + ".in", next + next);
    }
    cli::write_file("45.in", "r\n");
    EXPECT_NE(fault_of("0.in").find(": a deck includes at most 10000 files, each time that one is named counted"),
              std::string::npos);
}

TEST(deck_source, what_is_no_regular_file_is_not_waited_for) {
    const temp_folder inside;
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    cli::write_file("deck.in", "a\ninclude pipe\n");
    EXPECT_EQ(fault_of("deck.in"), "deck.in:2: cannot read pipe: it is a pipe");
    EXPECT_EQ(fault_of("pipe"), "cannot read pipe: it is a pipe");
    EXPECT_EQ(fault_of("/dev/zero"), "cannot read /dev/zero: it is a device");
    EXPECT_EQ(fault_of("."), "cannot read .: it is a folder");
}

TEST(deck_source, lines_and_bytes_are_counted_over_all_files) {
    const temp_folder inside;
    cli::write_file("part.in", std::string(most_deck_lines / 2, '\n'));
    cli::write_file("deck.in", "a\ninclude part.in\ninclude part.in\n");
    EXPECT_EQ(fault_of("deck.in"), "deck.in:3: a deck has at most 2000000 lines with all that it includes");
    cli::write_file("part.in", std::string(most_deck_bytes / 2, 'x') + "\n");
    EXPECT_EQ(fault_of("deck.in"), "deck.in:3: a deck has at most 64 MB with all that it includes");
    cli::write_file("part.in", std::string(most_deck_bytes + 1, 'x'));
    EXPECT_EQ(fault_of("deck.in"), "deck.in:2: cannot read part.in: it has more than 64 MB, the most that is read");
}

}  // namespace
