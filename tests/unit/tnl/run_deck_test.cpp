#include "tnl/run_deck.h"

#include <gtest/gtest.h>

#include <csignal>

#include "temp_folder.h"
#include "tnl/run_folder.h"

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
    for (const std::string_view list : list_files)
        EXPECT_TRUE(fs::exists(fs::path("deck.in.run/.tnlaux") / list)) << list;
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
    const installation where = tree("true");
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
