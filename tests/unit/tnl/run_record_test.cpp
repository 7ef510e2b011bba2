#include "tnl/common/run_record.h"

#include <gtest/gtest.h>

#include "temp_folder.h"
#include "tnl/common/exit_status.h"
#include "tnl/results/open_run.h"
#include "tnl/run/run_folder.h"

namespace {

using namespace cli;

run_record sample() {
    run_record r;
    r.deck = "/a/deck.in";
    r.state = "complete";
    r.seconds = 0.25;
    r.options = {"-o", "there"};
    r.places = {{"deck.in", 4, 7, "eelement name=R1"}};
    r.warnings = {{"the solution leaves a residual", "mend it", {{"deck.in", 4, 9, "eelement name=R1"}}}};
    r.files = {{"out.dat", "trns", {{"time", "s"}, {"vout", "V"}}, 3, 1}, {"sol.dat", "solution", {}, 0, 0}};
    return r;
}

TEST(run_record, what_is_written_is_read) {
    const run_record r = record_of_json(to_json(sample()));
    EXPECT_EQ(to_json(r), to_json(sample()));
    EXPECT_EQ(r.files[0].columns[1].unit, "V");
    EXPECT_EQ(r.places[0].column, 7);
    EXPECT_EQ(r.warnings[0].advice, "mend it");
    EXPECT_EQ(r.warnings[0].places[0].column, 9);
}

TEST(run_record, fields_that_are_missing_are_empty_and_a_broken_text_is_refused) {
    EXPECT_EQ(record_of_json("{}").state, "");
    EXPECT_THROW(record_of_json("{"), file_error);
    EXPECT_THROW(record_of_json("{\"status\": \"x\"}"), file_error);
}

TEST(run_record, the_hash_is_that_of_the_published_tables) {  // Fowler, Noll, Vo: test vectors of FNV-1a, 64 bits
    EXPECT_EQ(hash_of(""), "fnv1a64:cbf29ce484222325");
    EXPECT_EQ(hash_of("a"), "fnv1a64:af63dc4c8601ec8c");
    EXPECT_EQ(hash_of("foobar"), "fnv1a64:85944171f73967e8");
}

struct run_on_disk {
    temp_folder inside;
    std::string deck = std::string("deck.in"), results = deck + ".run";
    run_on_disk() {
        std::filesystem::create_directories(results);
        cli::write_file(deck, "title: t\n");
        cli::write_file(results + "/out.dat", "0 1\n1 2\n2 4\n");
    }
};

TEST(open_run, a_folder_its_deck_and_its_row_file_are_the_same_run) {
    const run_on_disk disk;
    cli::write_file(disk.results + "/run.json", to_json(sample()));
    for (const std::string& name : {disk.results, disk.deck, disk.results + "/out.dat"}) {
        const opened_run run = open_run(name);
        ASSERT_FALSE(run.record.files.empty());
        const result_table t = load_table(run, run.record.files[0]);
        EXPECT_EQ(t.columns[1].name, "vout");
        EXPECT_EQ(t.at(2, 1), 4);
        EXPECT_FALSE(run.unfinished);
    }
}

TEST(open_run, a_run_that_was_cut_is_found_in_its_partial_folder) {
    const run_on_disk disk;
    const std::string partial = disk.results + "/" + partial_name;
    std::filesystem::create_directories(partial);
    run_record cut = sample();
    cut.state = "running";
    cli::write_file(partial + "/run.json", to_json(cut));
    cli::write_file(partial + "/out.dat", "0 1\n1 ");
    const opened_run run = open_run(disk.results);
    EXPECT_TRUE(run.unfinished);
    EXPECT_EQ(load_table(run, run.record.files[0]).n_rows(), 1u);
}

TEST(open_run, a_later_run_that_was_cut_is_named_beside_the_results_that_stand) {
    const run_on_disk disk;
    cli::write_file(disk.results + "/run.json", to_json(sample()));
    EXPECT_EQ(open_run(disk.deck).later, "");
    std::filesystem::create_directories(disk.results + "/.partial");
    run_record cut = sample();
    cut.state = "running";
    cli::write_file(disk.results + "/.partial/run.json", to_json(cut));
    EXPECT_EQ(open_run(disk.deck).later, disk.results + "/.partial");
    EXPECT_FALSE(open_run(disk.deck).unfinished);
}

TEST(open_run, a_lone_row_file_has_numbered_columns_and_nothing_is_a_fault) {
    const temp_folder inside;
    cli::write_file("x.dat", "1 2\n");
    const opened_run run = open_run(std::string("x.dat"));
    EXPECT_EQ(load_table(run, run.record.files[0]).columns[1].name, "c2");
    EXPECT_THROW(open_run(std::string(".")), file_error);
    EXPECT_THROW(open_run(std::string("none")), file_error);
}

}  // namespace
