#include "tnl/cli/example_decks.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "temp_folder.h"
#include "tnl/common/exit_status.h"
#include "tnl/deck/deck_view.h"

namespace {

namespace fs = std::filesystem;
using namespace cli;

// share/examples with one example of each form.
void make_examples() {
    fs::create_directories("share/examples/filter");
    fs::create_directories("share/examples/wave");
    fs::create_directories("share/examples/no_deck");
    write_file("share/examples/filter/deck.in", "title: t\nend_cf\n");
    write_file("share/examples/filter/story.md", "\n# A filter\n\nIt filters.\n");
    write_file("share/examples/wave/deck.in", "title: a wave from a file\nend_cf\n");
    write_file("share/examples/wave/points.txt", "0 1\n1 2\n");
    write_file("share/examples/alone.in", "title: two words\nend_cf\n");
}

TEST(examples, are_folders_with_a_deck_and_single_decks_by_name) {
    const temp_folder here;
    make_examples();
    const std::vector<example_deck> all = read_examples("share");
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0].name, "alone");
    EXPECT_EQ(all[0].title, "two words");
    EXPECT_EQ(all[1].name, "filter");
    EXPECT_EQ(all[1].title, "A filter");
    EXPECT_TRUE(all[1].data.empty());
    EXPECT_EQ(all[2].title, "a wave from a file");
    ASSERT_EQ(all[2].data.size(), 1U);
    EXPECT_EQ(all[2].data[0].filename(), "points.txt");
    EXPECT_TRUE(read_examples("nosuch").empty());
}

TEST(new_deck, is_a_file_of_the_name_with_in_added_once) {
    const temp_folder here;
    EXPECT_EQ(write_new_deck("first", nullptr), "first.in");
    EXPECT_EQ(write_new_deck("second.in", nullptr), "second.in");
    EXPECT_EQ(read_file("first.in"), starting_deck());
    EXPECT_EQ(read_file("second.in"), starting_deck());
}

TEST(new_deck, never_replaces_what_exists) {
    const temp_folder here;
    write_file("mine.in", "precious");
    EXPECT_THROW(write_new_deck("mine", nullptr), file_error);
    EXPECT_EQ(read_file("mine.in"), "precious");
    fs::create_symlink("nowhere", "link.in");
    EXPECT_THROW(write_new_deck("link", nullptr), file_error);
    EXPECT_FALSE(fs::exists("nowhere"));
    make_examples();
    fs::create_directory("folder");
    const std::vector<example_deck> all = read_examples("share");
    EXPECT_THROW(write_new_deck("folder", &all[2]), file_error);
    EXPECT_TRUE(fs::is_empty("folder"));
    EXPECT_THROW(write_new_deck("nosuch/deck", nullptr), file_error);
}

TEST(new_deck, from_an_example_with_data_files_is_a_folder_with_them) {
    const temp_folder here;
    make_examples();
    const std::vector<example_deck> all = read_examples("share");
    EXPECT_EQ(write_new_deck("copy", &all[2]), "copy/deck.in");
    EXPECT_EQ(read_file("copy/points.txt"), "0 1\n1 2\n");
    EXPECT_EQ(write_new_deck("plain", &all[1]), "plain.in");
    EXPECT_THROW(write_new_deck("other.in", &all[2]), usage_error);
    EXPECT_FALSE(fs::exists("other.in"));
}

TEST(new_deck, needs_a_name_that_a_file_can_have) {
    const temp_folder here;
    for (const char* name : {"", ".in", "x/", "..", ".", "-x", "x/.in"})
        EXPECT_THROW(write_new_deck(name, nullptr), usage_error) << name;
    EXPECT_TRUE(fs::is_empty("."));
}

}  // namespace
