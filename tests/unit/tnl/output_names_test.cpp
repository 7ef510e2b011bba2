// Which files of the user's a run may change: its own results, and those only when they are complete.
#include <gtest/gtest.h>

#include "temp_folder.h"
#include "tnl/run/run_deck.h"
#include "tnl/run/run_folder.h"

using namespace cli;
namespace fs = std::filesystem;

namespace {

// A tree whose simulator does what the shell script says; `$name` is the deck's file.
installation tree(const std::string& script) {
    fs::create_directories("built/bin");
    fs::create_directories("built/share");
    ::write_file("built/share/eels.aux", "ece name=r\nsparms: table=none\nebe type=r\nendece\n");
    ::write_file("built/share/ebes.aux", "ebe name=r\nendebe\n");
    fs::remove("built/bin/tarnel");
    ::write_file("built/bin/tarnel",
                 "#!/bin/sh\nname=$(sed -n 's/^filename \\([^ ]*\\).*/\\1/p' .tnlaux/cct.in)\n" + script + "\n");
    fs::permissions("built/bin/tarnel", fs::perms::owner_all);
    return {"built/bin/tarnel", "built/share"};
}

void write_deck(const std::string& filename, const std::string& initial_sol = "initialize") {
    ::write_file("deck.in",
                 "title: t\nbegin_circuit\neelement name=R1 type=r p=a n=0\nend_circuit\nbegin_solve\n"
                 "solve_type trns\ninitial_sol " +
                     initial_sol + "\nbegin_output\nfilename " + filename +
                     "\nvariables: v\nend_output\nend_solve\nend_cf\n");
}

run_result silent_run(const std::string& script, bool force = false) {
    run_options options{"deck.in"};
    options.silent = true;
    options.force = force;
    return run_deck(options, tree(script));
}

std::string why_refused() {
    try {
        silent_run("true");
    } catch (const command_error& e) {
        return std::string(e.what()).substr(0, std::string_view(e.what()).find(':'));
    }
    return {};
}

}  // namespace

TEST(output_names, rows_of_a_whole_path_into_the_folder_are_written_aside) {
    const temp_folder here;
    const std::string whole = fs::absolute("deck.in.run/out.dat").string();
    for (const bool force : {false, true}) {
        write_deck(whole);
        const run_result first = silent_run("echo ' 0 1 ' >$name", force);
        EXPECT_EQ(first.record.state, "complete");
        ASSERT_EQ(first.record.files.size(), 1u);
        EXPECT_EQ(first.record.files[0].path, "out.dat");
        EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0 1 \n");
        // A later one that is killed in the middle.
        silent_run("echo ' 0 2 ' >$name; kill -s KILL $$", force);
        EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0 1 \n");
        EXPECT_EQ(read_record("deck.in.run/run.json").state, "complete");
    }
}

TEST(output_names, a_whole_path_is_the_same_file_wherever_the_deck_speaks_of_it) {
    const temp_folder here;
    const std::string whole = fs::absolute("deck.in.run/sol.dat").string();
    write_deck(whole, "file name=" + whole);
    const run_result run = silent_run("grep -c '=sol.dat$' .tnlaux/cct.in >$name; grep -c /sol .tnlaux/cct.in >>$name");
    EXPECT_EQ(::read_file("deck.in.run/sol.dat"), "1\n0\n");
    EXPECT_EQ(place_in_files(run.deck, 6, 3).text, "initial_sol file name=" + whole) << "places show what is written";
}

TEST(output_names, a_large_file_that_the_deck_goes_on_behind_is_not_changed_in_its_place) {
    const temp_folder here;
    ::write_file("big.dat", " 0 1 \n");
    fs::resize_file("big.dat", 65u << 20);
    write_deck("./big.dat append=yes", "file big.dat");
    silent_run("echo ' 0 2 ' >>$name");
    EXPECT_EQ(fs::file_size("big.dat"), 65u << 20);
    EXPECT_EQ(fs::file_size("deck.in.run/big.dat"), (65u << 20) + 6);
}

TEST(output_names, no_file_stands_in_the_place_of_a_record_that_is_being_written) {
    const temp_folder here;
    for (const char* name : {"run.json.new", "./run.json.new"}) {
        write_deck(name);
        EXPECT_EQ(why_refused(), "an output file in the place of one that the run keeps for itself") << name;
    }
    write_deck("run.json.news");
    EXPECT_EQ(why_refused(), "");
}

TEST(output_names, no_link_in_the_folder_leads_out_of_it) {
    const temp_folder here;
    fs::create_directory("else");
    write_deck("out.dat");
    silent_run("echo ' 0 1 ' >$name");
    fs::create_directory_symlink("../else", "deck.in.run/sub");
    fs::create_directory_symlink(".", "deck.in.run/self");
    for (const char* name : {"sub/out.dat", "./sub/below/out.dat"}) {
        write_deck(name);
        EXPECT_EQ(why_refused(), "an output file outside the folder of the run") << name;
    }
    write_deck("self/run.json");
    EXPECT_EQ(why_refused(), "an output file in the place of one that the run keeps for itself");
    EXPECT_TRUE(fs::is_empty("else"));
}

TEST(output_names, results_that_a_later_link_hides_are_not_removed_behind_it) {
    const temp_folder here;
    write_deck("sub/out.dat");
    silent_run("echo ' 0 1 ' >$name");
    fs::remove_all("deck.in.run/sub");
    fs::create_directory("else");
    ::write_file("else/out.dat", "mine");
    fs::create_directory_symlink("../else", "deck.in.run/sub");
    write_deck("out.dat");
    silent_run("echo ' 0 2 ' >$name");
    EXPECT_EQ(::read_file("else/out.dat"), "mine");
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0 2 \n");
}
