// Statements that reach from one file of a deck into another, and what stands behind its end.
#include <gtest/gtest.h>

#include "origin_of.h"
#include "temp_folder.h"
#include "tnl/common/exit_status.h"
#include "tnl/deck/deck_source.h"
#include "tnl/deck/own_composites.h"

using namespace cli;

namespace {

deck_source source_of(const std::string& deck) {
    ::write_file("deck.in", deck);
    return read_deck_source("deck.in");
}

TEST(deck_files, a_plus_behind_an_include_continues_the_last_statement_of_that_file) {
    const temp_folder inside;
    ::write_file("plain.in", "greal a=1\n");
    EXPECT_EQ(source_of("title: t\ninclude plain.in\n+ b=2\nbegin_circuit\n").text,
              "title: t\ngreal a=1\n+ b=2\nbegin_circuit\n");
    // A model of such a file waits for the circuit, and so does what continues it.
    ::write_file("mm.lib", "emodel name=big type=r\n");
    const deck_source held = source_of("title: t\ninclude mm.lib\n# more\n\n+ r=3k\n+ x=1\nbegin_circuit\nrefnode 0\n");
    EXPECT_EQ(held.text, "title: t\n# more\n\nbegin_circuit\nemodel name=big type=r\n+ r=3k\n+ x=1\nrefnode 0\n");
    EXPECT_EQ(origin_of(held, 5), "mm.lib:1");
    EXPECT_EQ(origin_of(held, 6), "deck.in:5");
}

TEST(deck_files, a_plus_at_the_begin_of_a_file_continues_the_statement_before_the_include) {
    const temp_folder inside;
    ::write_file("more.lib", "+ r=3k\n");
    ::write_file("mm.lib", "emodel name=big type=r\ninclude more.lib\n");
    EXPECT_EQ(source_of("title: t\ninclude mm.lib\nbegin_circuit\n").text,
              "title: t\nbegin_circuit\nemodel name=big type=r\n+ r=3k\n");
}

TEST(deck_files, a_plus_behind_the_include_of_an_entry_continues_the_entry) {
    const temp_folder inside;
    ::write_file("one.lib", "ece name=a\nendece\n");
    const deck_source s = source_of("title: t\ninclude one.lib\n+ b\nbegin_circuit\n");
    EXPECT_EQ(s.text, "title: t\nbegin_circuit\n");
    ASSERT_EQ(s.blocks.size(), 1u);
    EXPECT_EQ(s.blocks[0].lines.size(), 3u);
}

TEST(deck_files, an_entry_that_is_not_ended_ends_with_its_file) {
    const temp_folder inside;
    ::write_file("open.lib", "ece name=a\nmainnodes: p n\n");
    const deck_source s = source_of("title: t\ninclude open.lib\nrefnode 0\n");
    EXPECT_EQ(s.text, "title: t\nrefnode 0\n");
    ASSERT_EQ(s.blocks.size(), 1u);
    EXPECT_FALSE(s.blocks[0].ended);
}

TEST(deck_files, what_stands_behind_the_end_stays_as_it_is) {
    const temp_folder inside;
    const std::string behind = "ece is a word of mine\ninclude notes.txt\nemodel  # and so on\n\nendece\n";
    const deck_source s = source_of("title: t # cut\nbegin_circuit\nend_circuit\nend_cf\n" + behind);
    EXPECT_EQ(s.text, "title: t\nbegin_circuit\nend_circuit\nend_cf\n" + behind);
    EXPECT_TRUE(s.blocks.empty());
    EXPECT_EQ(origin_of(s, 6), "deck.in:6");
    EXPECT_TRUE(own_composites_of(s).faults.empty());
}

TEST(deck_files, a_deck_may_have_all_the_lines_that_are_told_and_not_one_more) {
    const std::string most = repeated("#\n", 2000000);
    EXPECT_EQ(deck_source_of(most, "d.in").origin.size(), 2000000u);
    EXPECT_EQ(deck_source_of(most.substr(0, most.size() - 1), "d.in").origin.size(), 2000000u);
    EXPECT_THROW(deck_source_of(most + "#", "d.in"), deck_error);
}

}  // namespace
