#include "tnl/run/run_deck.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <csignal>

#include "temp_folder.h"
#include "tnl/run/run_folder.h"

using namespace cli;
namespace fs = std::filesystem;

namespace {

// A tree with a simulator that is the given shell script.
installation tree(const std::string& script) {
    fs::create_directories("built/bin");
    fs::create_directories("built/share");
    ::write_file("built/share/eels.aux", "ece name=r\nsparms: table=none\nebe type=r\nendece\n");
    ::write_file("built/share/ebes.aux", "ebe name=r\nendebe\n");
    ::write_file("built/share/ece_all.lst", ".r\n");
    fs::remove("built/bin/tarnel");
    ::write_file("built/bin/tarnel", "#!/bin/sh\n" + script + "\n");
    fs::permissions("built/bin/tarnel", fs::perms::owner_all);
    return {"built/bin/tarnel", "built/share"};
}

constexpr const char* deck =
    "title: t\nbegin_circuit\neelement name=R1 type=r p=a n=0 table=points.txt\nend_circuit\n"
    "begin_solve\nsolve_type dc\nbegin_output\nfilename out.dat\nvariables: v\nend_output\nend_solve\nend_cf\n";

struct heard_run {
    run_result run;
    std::string text;
};
heard_run listen(const run_options& options, const installation& where) {
    testing::internal::CaptureStdout();
    heard_run heard;
    try {
        heard.run = run_deck(options, where);
    } catch (...) {
        testing::internal::GetCapturedStdout();
        throw;
    }
    heard.text = testing::internal::GetCapturedStdout();
    return heard;
}

}  // namespace

TEST(run_deck, keeps_and_shows_what_the_simulator_doubts) {
    const temp_folder here;
    const installation where = tree(
        "echo 'solve_dc: the solution leaves a residual of 0.25 at node a'; echo '   consider chk_rhs2=yes "
        "norm_2=1e-9'; echo ' 1 ' >out.dat");
    ::write_file("deck.in", deck);
    ::write_file("points.txt", "0 1\n");
    for (const bool quiet : {false, true}) {
        const heard_run heard = listen({"deck.in", "", quiet}, where);
        ASSERT_EQ(heard.run.status, 0);
        ASSERT_EQ(heard.run.record.warnings.size(), 1u);
        EXPECT_EQ(heard.run.record.warnings[0].message, "the solution leaves a residual of 0.25 A at node a");
        EXPECT_EQ(heard.run.record.warnings[0].places[0].line, 3);
        EXPECT_EQ(heard.run.findings.find("  deck.in:3:27: warning: the solution leaves a residual"), 0u)
            << heard.run.findings;
        EXPECT_NE(cli::read_file("deck.in.run/run.json").find("\"warnings\": [\n    {\n      \"advice\": \"consider"),
                  std::string::npos)
            << cli::read_file("deck.in.run/run.json");
    }
}

TEST(run_deck, makes_a_complete_working_folder) {
    const temp_folder here;
    const installation where = tree("cat .tnlaux/cct.in >/dev/null && echo ' 1 ' >out.dat");
    ::write_file("deck.in", deck);
    ::write_file("points.txt", "0 1\n");
    const heard_run heard = listen({"deck.in", "", false}, where);
    EXPECT_EQ(heard.run.status, 0);
    EXPECT_EQ(heard.run.folder, "deck.in.run");
    EXPECT_EQ(::read_file("deck.in.run/.tnlaux/cct.in"), deck);
    EXPECT_EQ(::read_file("deck.in.run/.tnlaux/eels.aux"), "ece name=r\nsparms: table=none\nebe type=r\nendece\n");
    EXPECT_EQ(::read_file("deck.in.run/.tnlaux/ece_all.lst"), ".r\n");
    EXPECT_EQ(::read_file("deck.in.run/points.txt"), "0 1\n");
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 1 \n");
    for (const library_form& form : library_forms)
        EXPECT_TRUE(fs::exists(fs::path("deck.in.run/.tnlaux") / form.file)) << form.file;
    for (const int listed : listed_libraries)
        EXPECT_TRUE(fs::exists(fs::path("deck.in.run/.tnlaux") / library_forms[listed].list)) << listed;
    EXPECT_NE(::read_file("deck.in.run/tmpdim.in").find("M_RMS_MV_XBE "), std::string::npos);
}

TEST(run_deck, passes_text_and_status_of_the_simulator_on) {
    const temp_folder here;
    const installation where = tree("printf 'one\\ntwo'; exit 7");
    ::write_file("deck.in", deck);
    const heard_run heard = listen({"deck.in", "", false}, where);
    EXPECT_TRUE(heard.text.starts_with("one\ntwo\n  deck.in:3:")) << heard.text;
    EXPECT_EQ(heard.run.status, 7);
}

TEST(run_deck, a_signal_that_ends_the_simulator_is_128_and_its_number) {
    const temp_folder here;
    const installation where = tree("kill -9 $$");
    ::write_file("deck.in", deck);
    const heard_run heard = listen({"deck.in", "", false}, where);
    EXPECT_EQ(heard.run.status, 128 + SIGKILL);
    EXPECT_EQ(heard.text, "  the simulator was ended by signal 9 (Killed)\n");
}

TEST(run_deck, a_stop_is_followed_by_the_place_in_the_deck) {
    const temp_folder here;
    const installation where = tree("echo '   eelement name is R1'; echo '   Halting...'; exit 1");
    fs::create_directory("sub");
    ::write_file("sub/deck.in", deck);
    const heard_run heard = listen({"sub/deck.in", "", false}, where);
    EXPECT_TRUE(
        heard.text.starts_with("   eelement name is R1\n   Halting...\n"
                               "  sub/deck.in:3:25: error: r has no terminal or parameter p\n"
                               "    eelement name=R1 type=r p=a n=0 table=points.txt\n"
                               "                            ^\n"))
        << heard.text;
}

TEST(run_deck, the_next_run_of_the_deck_replaces_the_results_and_keeps_what_others_put_there) {
    const temp_folder here;
    ::write_file("deck.in", deck);
    listen({"deck.in", "", false}, tree("echo 1 >out.dat; echo 2 >dump.dat"));
    ::write_file("deck.in.run/notes.txt", "mine");
    listen({"deck.in", "", false}, tree("echo 3 >out.dat"));
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), "3\n");
    EXPECT_FALSE(fs::exists("deck.in.run/dump.dat"));
    EXPECT_EQ(::read_file("deck.in.run/notes.txt"), "mine");
    listen({"deck.in", "", false}, tree("true"));
    EXPECT_FALSE(fs::exists("deck.in.run/out.dat"));
    EXPECT_EQ(::read_file("deck.in.run/notes.txt"), "mine");
}

TEST(run_deck, a_folder_that_is_not_a_run_of_this_deck_is_refused_untouched) {
    const temp_folder here;
    const installation where = tree("true");
    ::write_file("deck.in", deck);
    ::write_file("other.in", deck);
    fs::create_directory("precious");
    ::write_file("precious/thesis.txt", "text");
    EXPECT_THROW(listen({"deck.in", "precious", false}, where), file_error);
    EXPECT_EQ(::read_file("precious/thesis.txt"), "text");
    EXPECT_FALSE(fs::exists("precious/.tnlaux"));
    listen({"other.in", "results", false}, where);
    EXPECT_THROW(listen({"deck.in", "results", false}, where), file_error);
    ::write_file("a_file", "text");
    EXPECT_THROW(listen({"deck.in", "a_file", false}, where), file_error);
    EXPECT_EQ(::read_file("a_file"), "text");
}

TEST(run_deck, an_empty_folder_and_a_deep_one_are_taken) {
    const temp_folder here;
    const installation where = tree("echo ' 1 ' >out.dat");
    ::write_file("deck.in", deck);
    fs::create_directory("empty");
    EXPECT_EQ(listen({"deck.in", "empty", false}, where).run.status, 0);
    EXPECT_EQ(listen({"deck.in", "a/b/c", false}, where).run.status, 0);
    EXPECT_TRUE(fs::exists("a/b/c/.tnlaux/cct.in"));
}

TEST(run_deck, a_file_named_by_the_record_cannot_lead_out_of_the_folder) {
    const temp_folder here;
    const installation where = tree("true");
    ::write_file("deck.in", deck);
    ::write_file("outside.txt", "text");
    listen({"deck.in", "", false}, where);
    run_record record = read_record("deck.in.run/run.json");
    record.other_files.push_back("../outside.txt");
    record.other_files.push_back(fs::absolute("outside.txt").string());
    ::write_file("deck.in.run/run.json", to_json(record));
    listen({"deck.in", "", false}, where);
    EXPECT_EQ(::read_file("outside.txt"), "text");
}

TEST(run_deck, decks_that_cannot_be_read_are_told_by_name) {
    const temp_folder here;
    const installation where = tree("true");
    fs::create_directory("folder");
    try {
        listen({"nosuch.in", "", false}, where);
        FAIL();
    } catch (const file_error& e) {
        EXPECT_STREQ(e.what(), "cannot read nosuch.in: No such file or directory");
    }
    EXPECT_THROW(listen({"folder", "", false}, where), file_error);
    EXPECT_FALSE(fs::exists("nosuch.in.run"));
}

TEST(run_deck, a_deck_that_the_reader_refuses_still_reaches_the_simulator) {
    const temp_folder here;
    const installation where = tree("cat .tnlaux/cct.in; exit 1");
    for (const std::string& text : {std::string("+ x\n"), std::string(), std::string("\0\xff\n\n=", 5)}) {
        ::write_file("deck.in", text);
        const heard_run heard = listen({"deck.in", "", false}, where);
        EXPECT_EQ(heard.run.status, 1);
        EXPECT_TRUE(heard.text.starts_with(text));
    }
}

TEST(run_deck, a_missing_simulator_is_told) {
    const temp_folder here;
    const installation where = tree("true");
    ::write_file("deck.in", deck);
    fs::remove("built/bin/tarnel");
    EXPECT_THROW(listen({"deck.in", "", false}, where), file_error);
    ::write_file("built/bin/tarnel", "no program");
    EXPECT_THROW(listen({"deck.in", "", false}, where), file_error);
}

// ---- the record, and what stands under final names when

namespace {

constexpr const char* deck_in_time =
    "title: a run in time\nbegin_circuit\neelement name=R1 type=r p=a n=0\noutvar: v=nodev_of_a\nend_circuit\n"
    "begin_solve\nsolve_type trns\nmethod: t_end=1\nbegin_output\nfilename out.dat\nvariables: v\n"
    "end_output\nend_solve\nend_cf\n";

std::string why_refused(const run_options& options, const installation& where) {
    try {
        listen(options, where);
    } catch (const command_error& e) {
        return std::to_string(e.status) + ": " + e.what();
    }
    return "not refused";
}

}  // namespace

TEST(run_deck, a_record_stands_beside_the_rows) {
    const temp_folder here;
    const installation where = tree("printf ' 0 1 \\n 0.5 2 \\n' >out.dat; echo x >dump.dat");
    ::write_file("deck.in", deck_in_time);
    run_options options{"deck.in"};
    options.words = {"deck.in", "--quiet"};
    const run_result run = listen(options, where).run;
    const run_record record = read_record("deck.in.run/run.json");
    EXPECT_EQ(record.state, "complete");
    EXPECT_EQ(record.status, 0);
    EXPECT_EQ(record.title, "a run in time");
    EXPECT_EQ(record.deck, fs::canonical("deck.in"));
    EXPECT_EQ(record.deck_hash, hash_of(deck_in_time));
    EXPECT_EQ(record.library_hash, hash_of("ebe name=r\nendebe\nece name=r\nsparms: table=none\nebe type=r\nendece\n"));
    EXPECT_EQ(record.options, options.words);
    EXPECT_GE(record.seconds, 0);
    ASSERT_EQ(record.files.size(), 1u);
    EXPECT_EQ(record.files[0].path, "out.dat");
    EXPECT_EQ(record.files[0].kind, "trns");
    EXPECT_EQ(record.files[0].rows, 2);
    EXPECT_EQ(record.files[0].curves, 1);
    ASSERT_EQ(record.files[0].columns.size(), 2u);
    EXPECT_EQ(record.files[0].columns[0].unit, "s");
    EXPECT_EQ(record.files[0].columns[1].name, "v");
    EXPECT_EQ(record.files[0].columns[1].unit, "V");
    EXPECT_EQ(run.t_last, 0.5);
    for (const std::string& file : record.other_files) EXPECT_TRUE(fs::exists("deck.in.run/" + file)) << file;
    EXPECT_EQ(std::count(record.other_files.begin(), record.other_files.end(), "dump.dat"), 1);
    EXPECT_FALSE(fs::exists("deck.in.run/.partial"));
}

TEST(run_deck, columns_that_the_rows_do_not_have_are_not_named) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    const run_result run = listen({"deck.in"}, tree("echo ' 0 1 2 ' >out.dat")).run;
    EXPECT_TRUE(run.record.files.at(0).columns.empty());
    EXPECT_EQ(run.record.files.at(0).rows, 1);
}

TEST(run_deck, while_a_run_goes_on_the_earlier_results_stand_and_its_record_says_running) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    listen({"deck.in"}, tree("echo ' 0 1 ' >out.dat"));
    listen({"deck.in"}, tree("cp ../out.dat ../run.json ../..; cp run.json ../../now.json; echo ' 0 2 ' >out.dat"));
    EXPECT_EQ(::read_file("out.dat"), " 0 1 \n");
    EXPECT_EQ(read_record("run.json").state, "complete");
    const run_record now = read_record("now.json");
    EXPECT_EQ(now.state, "running");
    ASSERT_EQ(now.files.size(), 1u);
    EXPECT_EQ(now.files[0].columns.size(), 2u);
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0 2 \n");
}

TEST(run_deck, a_simulator_that_is_killed_leaves_its_rows_aside_and_the_earlier_results) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    listen({"deck.in"}, tree("echo ' 0 1 ' >out.dat"));
    const run_result run = listen({"deck.in"}, tree("printf ' 0 2 \\n 0.25 2 \\n 0.5' >out.dat; kill -9 $$")).run;
    EXPECT_TRUE(run.kept);
    EXPECT_EQ(run.status, 137);
    EXPECT_EQ(run.t_last, 0.25);
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0 1 \n");
    EXPECT_EQ(read_record("deck.in.run/run.json").state, "complete");
    EXPECT_EQ(::read_file("deck.in.run/.partial/out.dat"), " 0 2 \n 0.25 2 \n 0.5");
    const run_record record = read_record("deck.in.run/.partial/run.json");
    EXPECT_EQ(record.state, "signal");
    EXPECT_EQ(record.signal, SIGKILL);
    EXPECT_EQ(record.files.at(0).rows, 2);
    listen({"deck.in"}, tree("echo ' 0 3 ' >out.dat"));
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0 3 \n");
    EXPECT_FALSE(fs::exists("deck.in.run/.partial"));
}

TEST(run_deck, a_front_end_that_is_killed_at_any_step_of_its_end_is_made_up_for_by_the_next_run) {
    // The states that a kill can leave: some files have their places, others have not, the old record is gone.
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    listen({"deck.in"}, tree("echo ' 0 1 ' >out.dat; echo x >dump.dat"));
    run_record record = read_record("deck.in.run/run.json");
    fs::create_directory("deck.in.run/.partial");
    fs::rename("deck.in.run/run.json", "deck.in.run/.partial/run.json");
    ::write_file("deck.in.run/notes.txt", "mine");
    listen({"deck.in"}, tree("echo ' 0 3 ' >out.dat"));
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0 3 \n");
    EXPECT_FALSE(fs::exists("deck.in.run/dump.dat"));
    EXPECT_EQ(::read_file("deck.in.run/notes.txt"), "mine");
}

TEST(run_deck, a_run_that_was_killed_in_its_first_moments_is_no_obstacle) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    for (const char* left : {"", "run.json.new"}) {
        fs::create_directories("deck.in.run/.partial");
        if (*left) ::write_file(std::string("deck.in.run/.partial/") + left, "{");
        EXPECT_EQ(listen({"deck.in"}, tree("echo ' 1 ' >out.dat")).run.status, 0);
        fs::remove_all("deck.in.run");
    }
    fs::create_directories("deck.in.run/.partial");
    ::write_file("deck.in.run/.partial/thesis.txt", "text");
    EXPECT_NE(why_refused({"deck.in"}, tree("true")), "not refused");
    EXPECT_EQ(::read_file("deck.in.run/.partial/thesis.txt"), "text");
}

TEST(run_deck, a_file_that_the_simulator_cannot_write_is_status_5_and_keeps_the_earlier_results) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    listen({"deck.in"}, tree("echo ' 0 1 ' >out.dat"));
    const heard_run heard = listen({"deck.in"}, tree("echo ' 0 2 ' >out.dat\n"
                                                     "echo 'row_file: output file out.dat could not be written.'\n"
                                                     "echo '  Halting...'; exit 1"));
    EXPECT_EQ(heard.run.status, 5);
    EXPECT_TRUE(heard.run.kept);
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0 1 \n");
    EXPECT_EQ(::read_file("deck.in.run/.partial/out.dat"), " 0 2 \n");
}

TEST(run_deck, a_stop_is_in_the_record_with_its_message_and_places) {
    const temp_folder here;
    ::write_file("deck.in", deck);
    const run_result run = listen({"deck.in"}, tree("echo 'mat::set_mat_2: system matrix size is 3 x 3'\n"
                                                    "echo '   eelement name is R1'; echo '   Halting...'; exit 1"))
                               .run;
    const run_record record = read_record("deck.in.run/run.json");
    EXPECT_EQ(record.state, "stopped");
    EXPECT_EQ(record.status, 1);
    EXPECT_EQ(record.message, "   eelement name is R1\n   Halting...\n");
    ASSERT_FALSE(record.places.empty());
    EXPECT_EQ(record.places[0].file, "deck.in");
    EXPECT_EQ(record.places[0].line, 3);
    EXPECT_TRUE(record.files.empty()) << "none was written";
}

TEST(run_deck, a_run_whose_time_is_over_is_asked_to_end_and_keeps_its_rows) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    run_options options{"deck.in"};
    options.time_limit = 2;  // the time before the simulator counts, on a busy machine too
    const run_result run = listen(options, tree("echo ' 0.25 1 ' >out.dat; exec sleep 100")).run;
    EXPECT_EQ(run.status, limit_reached);
    EXPECT_EQ(run.record.state, "limit");
    EXPECT_EQ(run.t_last, 0.25);
    EXPECT_FALSE(run.kept);
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0.25 1 \n");
}

TEST(run_deck, rows_that_were_cut_do_not_replace_those_of_a_run_that_came_to_its_end) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    listen({"deck.in"}, tree("echo ' 1 1 ' >out.dat"));
    run_options options{"deck.in"};
    options.time_limit = 2;  // the time before the simulator counts, on a busy machine too
    for (int twice = 0; twice < 2; ++twice) {
        const run_result run = listen(options, tree("echo ' 0.25 1 ' >out.dat; exec sleep 100")).run;
        EXPECT_EQ(run.status, limit_reached);
        EXPECT_TRUE(run.kept);
        EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 1 1 \n");
        EXPECT_EQ(read_record("deck.in.run/run.json").state, "complete");
        EXPECT_EQ(::read_file("deck.in.run/.partial/out.dat"), " 0.25 1 \n");
        EXPECT_EQ(read_record("deck.in.run/.partial/run.json").state, "limit");
    }
    EXPECT_EQ(listen({"deck.in"}, tree("echo ' 1 2 ' >out.dat")).run.status, 0);
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 1 2 \n");
    EXPECT_FALSE(fs::exists("deck.in.run/.partial"));
}

TEST(run_deck, a_run_that_ends_within_its_time_does_not_hear_of_the_limit) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    run_options options{"deck.in"};
    options.time_limit = 1000;
    EXPECT_EQ(listen(options, tree("true")).run.record.state, "complete");
}

TEST(run_deck, a_signal_is_passed_on_and_the_rows_are_kept) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    for (const auto& [name, number] :
         {std::pair("INT", SIGINT), std::pair("TERM", SIGTERM), std::pair("HUP", SIGHUP)}) {
        const installation where = tree("echo ' 0 1 ' >out.dat; kill -" + std::string(name) + " $PPID; exec sleep 100");
        const run_result run = listen({"deck.in"}, where).run;
        EXPECT_EQ(run.status, 128 + number);
        EXPECT_EQ(run.record.state, "signal");
        EXPECT_EQ(run.record.signal, number);
        EXPECT_FALSE(run.kept);
        EXPECT_EQ(read_record("deck.in.run/run.json").status, 128 + number);
        EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0 1 \n");
    }
}

TEST(run_deck, a_simulator_that_ends_well_in_spite_of_a_signal_has_run_well) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    const run_result run =
        listen({"deck.in"}, tree("echo ' 0 1 ' >out.dat; trap '' TERM; kill -TERM $PPID; exit 0")).run;
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.record.state, "complete");
}

TEST(run_deck, silent_and_quiet_runs_print_nothing_but_quiet_ones_tell_a_stop) {
    const temp_folder here;
    ::write_file("deck.in", deck);
    run_options silent{"deck.in"}, quiet{"deck.in"};
    silent.silent = quiet.quiet = true;
    EXPECT_EQ(listen(silent, tree("echo text")).text, "");
    EXPECT_EQ(listen(quiet, tree("echo text")).text, "");
    EXPECT_EQ(listen(silent, tree("echo text; exit 1")).text, "");
    EXPECT_TRUE(listen(quiet, tree("echo text; exit 1")).text.starts_with("text\n  deck.in:3:"));
}

TEST(run_deck, the_results_of_another_deck_are_replaced_with_force_and_nothing_else_is) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    ::write_file("other.in", deck_in_time);
    listen({"other.in", "results"}, tree("echo ' 0 1 ' >out.dat; echo x >dump.dat"));
    ::write_file("results/notes.txt", "mine");
    run_options options{"deck.in", "results"};
    EXPECT_EQ(why_refused(options, tree("true")), "5: cannot use results: it holds the results of " +
                                                      fs::canonical("other.in").string() +
                                                      "; choose another with -o, or replace them with --force");
    options.force = true;
    listen(options, tree("echo ' 0 2 ' >out.dat"));
    EXPECT_EQ(::read_file("results/out.dat"), " 0 2 \n");
    EXPECT_FALSE(fs::exists("results/dump.dat"));
    EXPECT_EQ(::read_file("results/notes.txt"), "mine");
    EXPECT_EQ(read_record("results/run.json").deck, fs::canonical("deck.in"));

    fs::create_directory("precious");
    ::write_file("precious/thesis.txt", "text");
    options.folder = "precious";
    EXPECT_EQ(why_refused(options, tree("true")),
              "5: cannot use precious: it holds other files, and none of a run; choose another folder with -o");
    EXPECT_EQ(::read_file("precious/thesis.txt"), "text");
}

TEST(run_deck, what_stands_in_the_place_of_a_row_file_is_not_touched) {
    const temp_folder here;
    const installation where = tree("echo ' 0 1 ' >out.dat");
    ::write_file("deck.in", deck_in_time);
    ::write_file("empty.in", "title: t\n");
    listen({"deck.in"}, tree("true"));
    ::write_file("deck.in.run/out.dat", "mine");
    run_options options{"deck.in"};
    options.force = true;
    EXPECT_EQ(why_refused(options, where),
              "5: cannot write deck.in.run/out.dat: it exists and is not from a run of this deck; move it away");
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), "mine");
    fs::remove("deck.in.run/out.dat");
    fs::create_directory("deck.in.run/out.dat");
    EXPECT_EQ(why_refused(options, where), "5: cannot write deck.in.run/out.dat: it is a folder");
    fs::remove("deck.in.run/out.dat");
    fs::create_symlink("/dev/full", "deck.in.run/out.dat");
    EXPECT_EQ(why_refused(options, where), "5: cannot write deck.in.run/out.dat: it is a device");
}

TEST(run_deck, output_files_stay_in_the_folder_unless_a_whole_path_is_forced) {
    const temp_folder here;
    const auto with_file = [](const std::string& name) {
        std::string text = deck_in_time;
        return text.replace(text.find("out.dat"), 7, name);
    };
    for (const char* name :
         {"../out.dat", "sub/../../out.dat", "run.json", ".partial/x", ".tnlaux/cct.in", "./tmpdim.in"}) {
        ::write_file("deck.in", with_file(name));
        EXPECT_TRUE(why_refused({"deck.in"}, tree("true")).starts_with("3: an output file ")) << name;
        EXPECT_FALSE(fs::exists("deck.in.run")) << name;
    }
    ::write_file("deck.in", with_file("sub/folder/out.dat"));
    const run_result run = listen({"deck.in"}, tree("echo ' 0 1 ' >sub/folder/out.dat")).run;
    EXPECT_EQ(::read_file("deck.in.run/sub/folder/out.dat"), " 0 1 \n");
    EXPECT_EQ(run.record.files.at(0).path, "sub/folder/out.dat");

    const std::string whole = fs::absolute("elsewhere.dat").string();
    ::write_file("other.in", with_file(whole));
    ::write_file(whole, "mine");
    run_options options{"other.in"};
    const std::string refused = "3: an output file outside the folder of the run, which only --force writes: " + whole;
    for (const bool exists : {true, false}) {
        EXPECT_EQ(why_refused(options, tree("true")).substr(0, refused.size()), refused);
        EXPECT_EQ(fs::exists(whole), exists);
        if (exists) {
            EXPECT_EQ(::read_file(whole), "mine");
        }
        fs::remove(whole);
    }
    ::write_file(whole, "mine");
    options.force = true;
    const run_result forced = listen(options, tree("echo ' 0 1 ' >" + whole)).run;
    EXPECT_EQ(forced.record.files.at(0).rows, 1);
    EXPECT_EQ(forced.findings.find("outside the folder"), std::string::npos) << "what was asked for is no finding";
    options.force = false;
    EXPECT_EQ(why_refused(options, tree("true")).substr(0, refused.size()), refused) << "each time anew";
    EXPECT_EQ(::read_file(whole), " 0 1 \n");
}

TEST(run_deck, a_whole_path_into_the_folder_of_the_run_needs_no_force) {
    const temp_folder here;
    const auto deck_with = [](const std::string& name) {
        std::string text = deck_in_time;
        ::write_file("deck.in", text.replace(text.find("out.dat"), 7, name));
    };
    const std::string folder = fs::absolute("deck.in.run").string();
    deck_with(folder + "/out.dat");
    const installation writes = tree("echo ' 0 1 ' >$(sed -n 's/^filename //p' .tnlaux/cct.in)");
    EXPECT_EQ(listen({"deck.in"}, writes).run.status, 0);
    EXPECT_EQ(::read_file("deck.in.run/out.dat"), " 0 1 \n");
    for (const char* name : {"/run.json", "/.partial/out.dat", "/sub/../.tnlaux/cct.in", "/../out.dat"}) {
        deck_with(folder + name);
        EXPECT_TRUE(why_refused({"deck.in"}, tree("true")).starts_with("3: an output file ")) << name;
    }
    fs::create_directory_symlink(fs::absolute("."), folder + "/way_out");
    deck_with(folder + "/way_out/out.dat");
    EXPECT_TRUE(why_refused({"deck.in"}, tree("true")).starts_with("3: an output file outside ")) << "by a link";
}

TEST(run_deck, a_run_that_completes_without_rows_for_an_error_of_the_deck_is_a_fault_of_the_deck) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);  // its element type lacks much
    const run_result with_rows = listen({"deck.in"}, tree("echo ' 0 1 ' >out.dat")).run;
    EXPECT_EQ(with_rows.status, 0);
    EXPECT_NE(with_rows.findings, "");
    for (const char* rows : {"true", ": >out.dat"}) {
        const run_result run = listen({"deck.in"}, tree(rows)).run;
        EXPECT_EQ(run.status, deck_fault) << rows;
        EXPECT_EQ(run.record.state, "complete");
        EXPECT_EQ(read_record("deck.in.run/run.json").status, deck_fault);
    }
}

TEST(run_deck, a_folder_in_which_a_run_goes_on_is_refused) {
    const temp_folder here;
    ::write_file("deck.in", deck_in_time);
    listen({"deck.in"}, tree("true"));
    const int other = ::open("deck.in.run", O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    EXPECT_EQ(why_refused({"deck.in"}, tree("true")), "5: cannot use deck.in.run: another run goes on in it");
    ::close(other);
    EXPECT_EQ(listen({"deck.in"}, tree("echo ' 0 1 ' >out.dat")).run.status, 0);
}

TEST(run_deck, a_data_file_that_somebody_has_put_into_the_folder_is_read_and_stays) {
    const temp_folder here;
    ::write_file("deck.in", deck);
    ::write_file("points.txt", "of the deck");
    listen({"deck.in"}, tree("true"));
    fs::remove("points.txt");
    fs::remove("deck.in.run/points.txt");
    listen({"deck.in"}, tree("true"));
    ::write_file("deck.in.run/points.txt", "of the user");
    for (int twice = 0; twice < 2; ++twice) {
        listen({"deck.in"}, tree("cp points.txt out.dat"));
        EXPECT_EQ(::read_file("deck.in.run/out.dat"), "of the user");
        EXPECT_EQ(::read_file("deck.in.run/points.txt"), "of the user");
    }
}
