#include "tnl/view/view_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>

#include "temp_folder.h"
#include "tnl/common/exit_status.h"

namespace {

using namespace cli;
namespace fs = std::filesystem;
using nlohmann::json;

void append_text(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary | std::ios::app) << text;
}

void write_record(const fs::path& folder, const std::string& state, const std::vector<record_file>& files) {
    run_record record;
    record.state = state;
    record.files = files;
    fs::create_directories(folder);
    ::write_file((folder / record_name).string(), to_json(record));
}

const std::vector<record_file> one_file{{"w.dat", "trns", {{"time", "s"}, {"v", "V"}}, 0, 0}};

// A list asks for a look at the folders, in the background: a test that goes on to change them waits for its end.
json listed(view_store& store) {
    json list = json::parse(store.list());
    store.wait_until_read();
    return list;
}

json first_file(view_store& store, std::size_t run = 0) { return listed(store)["runs"][run]["files"][0]; }

TEST(view_store, adds_columns_that_are_made_row_by_row) {
    const temp_folder inside;
    write_record("r.run", "complete", one_file);
    ::write_file("r.run/w.dat", "0 1\n1 2\n\n0 5\n");
    view_store store({"r.run"});
    store.wait_until_read();
    store.add_column("d = 2*v - 1");
    store.add_column("d = 2*v - 1");  // once
    store.wait_until_read();
    json file = first_file(store);
    ASSERT_EQ(file["columns"].size(), 3u);
    EXPECT_EQ(file["columns"][2]["name"], "d");
    EXPECT_EQ(file["columns"][2]["unit"], "V");
    EXPECT_EQ(file["columns"][2]["size"], 9);
    EXPECT_EQ(file["rows"], 3);
    EXPECT_EQ(file["curves"], 2);
    append_text("r.run/w.dat", "1 7\n");
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["columns"][2]["size"], 13);
    const view_file_ptr held = store.want_file(0, "w.dat");
    EXPECT_EQ(
        std::vector<double>(held->source.rows.columns[2].values.begin(), held->source.rows.columns[2].values.end()),
        (std::vector<double>{1, 3, 9, 13}));
    for (const char* text : {"avg(v)", "nosuch + 1", "v +", "v < 1", "1 + 1"})
        EXPECT_THROW(store.add_column(text), usage_error) << text;
}

TEST(view_store, a_run_that_lacks_what_a_made_column_needs_keeps_its_others) {
    const temp_folder inside;
    write_record("r.run", "complete", {{"w.dat", "trns", {{"time", "s"}, {"v", "V"}, {"i", "A"}}, 0, 0}});
    ::write_file("r.run/w.dat", "0 1 5\n1 2 6\n");
    view_store store({"r.run"});
    store.wait_until_read();
    store.add_column("d = 2*i");
    store.add_column("e = 2*v");
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["problem"], "");
    // The deck runs again without i.
    write_record("r.run", "complete", one_file);
    fs::remove("r.run/w.dat");
    ::write_file("r.run/w.dat", "0 3\n1 4\n2 5\n");
    store.wait_until_read();
    json file = first_file(store);
    EXPECT_EQ(file["rows"], 3);
    ASSERT_EQ(file["columns"].size(), 4u);
    EXPECT_EQ(file["columns"][1]["size"], 5);
    EXPECT_EQ(file["columns"][2]["name"], "d");
    EXPECT_EQ(file["columns"][2]["size"], 0);
    EXPECT_EQ(file["columns"][3]["size"], 10);
    EXPECT_EQ(file["problem"], "d: no column i in " + (fs::path("r.run") / "w.dat").string());
    const view_file_ptr held = store.want_file(0, "w.dat");
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(std::isnan(held->source.rows.columns[2].values[i])) << i;
    // And again with it.
    write_record("r.run", "complete", {{"w.dat", "trns", {{"time", "s"}, {"v", "V"}, {"i", "A"}}, 0, 0}});
    fs::remove("r.run/w.dat");
    ::write_file("r.run/w.dat", "0 1 7\n");
    store.wait_until_read();
    file = first_file(store);
    EXPECT_EQ(file["problem"], "");
    EXPECT_EQ(file["columns"][3]["size"], 14);
}

TEST(view_store, makes_columns_again_when_the_record_comes_after_its_file) {
    const temp_folder inside;
    write_record("r.run", "complete", {{"w.dat", "trns", {{"time", "s"}, {"i", "A"}, {"v", "V"}}, 0, 0}});
    ::write_file("r.run/w.dat", "0 1 5\n");
    view_store store({"r.run"});
    store.add_column("d = 2*v");
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["columns"][3]["size"], 10);
    write_record("r.run", "complete", {{"w.dat", "trns", {{"time", "s"}, {"v", "V"}, {"i", "A"}}, 0, 0}});
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["columns"][3]["size"], 2);
}

TEST(view_store, leaves_out_a_guess_that_lies_apart) {
    const temp_folder inside;
    std::vector<record_file> files = one_file;
    files[0].begins_with_guess = true;
    write_record("r.run", "complete", files);
    ::write_file("r.run/w.dat", "0 0\n1 12\n2 12\n3 12\n");
    view_store store({"r.run"});
    store.want_file(0, "w.dat");
    store.wait_until_read();
    const view_file_ptr held = store.want_file(0, "w.dat");
    EXPECT_TRUE(std::isnan(held->source.rows.columns[1].values[0]));
    EXPECT_EQ(held->source.rows.columns[1].values[1], 12);
    EXPECT_EQ(first_file(store)["columns"][1]["size"], 12);
}

TEST(view_store, gives_levels_of_digital_files_without_their_offset) {
    const temp_folder inside;
    std::vector<record_file> files{{"w.dat", "trns", {{"time", "s"}, {"a", "", true}, {"b", "", true}}, 0, 0}};
    files[0].digital = true;
    files[0].offset = 2;
    write_record("r.run", "complete", files);
    ::write_file("r.run/w.dat", "0 0 4\n1 0 4\n1 1 3\n");
    view_store store({"r.run"});
    store.want_file(0, "w.dat");
    store.wait_until_read();
    const view_file_ptr held = store.want_file(0, "w.dat");
    EXPECT_EQ(held->source.rows.columns[2].values[0], 2);
    EXPECT_EQ(held->source.rows.columns[2].values[2], 1);
    const json file = first_file(store);
    EXPECT_EQ(file["digital"], true);
    EXPECT_FALSE(file["columns"][0].contains("level"));
    EXPECT_EQ(file["columns"][2]["level"], true);
    EXPECT_EQ(file["columns"][2]["size"], 2);
}

TEST(row_source, takes_what_was_appended_and_leaves_a_line_without_its_end) {
    const temp_folder inside;
    ::write_file("w.dat", "1 2\n3 4\n5 ");
    row_source source;
    ASSERT_TRUE(look_at(source, "w.dat"));
    EXPECT_EQ(next_lines(source, 1000), "1 2\n3 4\n");
    EXPECT_FALSE(look_at(source, "w.dat"));
    append_text("w.dat", "6\n7 8");
    ASSERT_TRUE(look_at(source, "w.dat"));
    EXPECT_EQ(next_lines(source, 1000), "5 6\n");
    append_text("w.dat", "\n");
    ASSERT_TRUE(look_at(source, "w.dat"));
    EXPECT_EQ(next_lines(source, 1000), "7 8\n");
}

TEST(row_source, small_pieces_give_the_same_lines) {
    const temp_folder inside;
    ::write_file("w.dat", "12 34\n\n56 78\n");
    row_source source;
    std::string all;
    while (look_at(source, "w.dat")) all += next_lines(source, 4);
    EXPECT_EQ(all, "12 34\n\n56 78\n");
}

TEST(row_source, another_file_of_the_name_and_a_shorter_one_are_read_from_their_begin) {
    const temp_folder inside;
    ::write_file("w.dat", "1 2\n3 4\n");
    row_source source;
    look_at(source, "w.dat");
    next_lines(source, 1000);
    ::write_file("new.dat", "9 9\n8 8\n7 7\n");
    fs::rename("new.dat", "w.dat");
    ASSERT_TRUE(look_at(source, "w.dat"));
    EXPECT_EQ(next_lines(source, 1000), "9 9\n8 8\n7 7\n");
    ::write_file("w.dat", "5 5\n");
    ASSERT_TRUE(look_at(source, "w.dat"));
    EXPECT_EQ(next_lines(source, 1000), "5 5\n");
}

TEST(row_source, a_pipe_or_folder_in_place_of_the_file_is_refused_without_waiting) {
    const temp_folder inside;
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    fs::create_directory("folder");
    for (const char* name : {"pipe", "folder"}) {
        row_source source;
        EXPECT_FALSE(look_at(source, name));
        EXPECT_EQ(source.problem, std::string("cannot read ") + name + ": it is no file");
    }
}

TEST(view_store, reads_the_head_of_a_file_until_it_is_wanted) {
    const temp_folder inside;
    write_record("a.run", "complete", one_file);
    ::write_file("a.run/w.dat", repeated("1 2\n", 50000));
    view_store store({"a.run"});
    store.wait_until_read();
    EXPECT_LT(first_file(store)["bytes_read"], 100000);
    ASSERT_NE(store.want_file(0, "w.dat"), nullptr);
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["rows"], 50000);
    EXPECT_EQ(first_file(store)["columns"][1], (json{{"name", "v"}, {"unit", "V"}, {"size", 2.0}}));
}

TEST(view_store, follows_a_run_from_its_partial_folder_to_its_end_and_to_the_next_run) {
    const temp_folder inside;
    write_record("a.run/.partial", "running", one_file);
    ::write_file("a.run/.partial/w.dat", "0 1\n1 2\n2 ");
    view_store store({"a.run"});
    store.want_file(0, "w.dat");
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["rows"], 2);
    EXPECT_EQ(listed(store)["runs"][0]["unfinished"], true);

    append_text("a.run/.partial/w.dat", "3\n3 4\n");
    write_record("a.run", "complete", one_file);
    fs::rename("a.run/.partial/w.dat", "a.run/w.dat");
    fs::remove_all("a.run/.partial");
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["rows"], 4);
    EXPECT_EQ(listed(store)["runs"][0]["state"], "complete");
    const view_file_ptr file = store.want_file(0, "w.dat");
    EXPECT_EQ(file->source.rows.curves.size(), 1u);

    fs::remove_all("a.run");
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["rows"], 4);  // what was read stays
    EXPECT_NE(listed(store)["runs"][0]["problem"], "");
    write_record("a.run", "complete", one_file);
    ::write_file("a.run/w.dat", "0 9\n");
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["rows"], 1);
    EXPECT_EQ(listed(store)["runs"][0]["problem"], "");
}

TEST(view_store, a_new_run_comes_before_the_results_of_the_old_one) {
    const temp_folder inside;
    write_record("a.run", "complete", one_file);
    ::write_file("a.run/w.dat", "0 1\n1 1\n2 1\n");
    view_store store({"a"});
    store.want_file(0, "w.dat");
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["rows"], 3);
    write_record("a.run/.partial", "running", one_file);
    ::write_file("a.run/.partial/w.dat", "0 2\n");
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["rows"], 1);
    fs::rename("a.run/.partial/w.dat", "a.run/w.dat");
    fs::remove_all("a.run/.partial");
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["rows"], 1);
    EXPECT_EQ(listed(store)["runs"][0]["state"], "complete");
}

TEST(view_store, a_run_that_was_cut_does_not_give_way_to_the_results_that_it_has_left_in_place) {
    const temp_folder inside;
    write_record("a.run", "complete", one_file);
    ::write_file("a.run/w.dat", "0 1\n1 1\n2 1\n");
    write_record("a.run/.partial", "running", one_file);
    ::write_file("a.run/.partial/w.dat", "0 2\n");
    view_store store({"a"});
    store.want_file(0, "w.dat");
    write_record("a.run/.partial", "signal", one_file);
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["rows"], 1);
    EXPECT_EQ(listed(store)["runs"][0]["state"], "signal");
}

TEST(view_store, files_outside_of_the_run_are_not_followed_whatever_the_record_says) {
    const temp_folder inside;
    ::write_file("secret.dat", "1 2\n");
    fs::create_directories("a.run/sub");
    ::write_file("a.run/sub/in.dat", "1 2\n");
    fs::create_symlink("../secret.dat", "a.run/link.dat");
    fs::create_directory_symlink("..", "a.run/up");
    std::vector<record_file> files;
    for (const std::string& path :
         {std::string("../secret.dat"), fs::absolute("secret.dat").string(), std::string("sub/../../secret.dat"),
          std::string("link.dat"), std::string("up/secret.dat"), std::string(""), std::string("sub/in.dat")})
        files.push_back({path, "trns", {}, 0, 0});
    write_record("a.run", "complete", files);
    view_store store({"a.run"});
    store.wait_until_read();
    const json list = listed(store)["runs"][0]["files"];
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0]["path"], "sub/in.dat");
    EXPECT_EQ(store.want_file(0, "../secret.dat"), nullptr);
    EXPECT_EQ(store.want_file(1, "sub/in.dat"), nullptr);
}

TEST(view_store, a_file_with_a_fault_says_so_and_others_go_on) {
    const temp_folder inside;
    ::write_file("a.dat", "1 2\n3 x\n");
    ::write_file("b.dat", "1 2\n");
    view_store store({"a.dat", "b.dat"});
    store.wait_until_read();
    EXPECT_EQ(first_file(store)["problem"], "./a.dat:2: not a row of numbers");
    EXPECT_EQ(first_file(store, 1)["rows"], 1);
    EXPECT_EQ(first_file(store, 1)["columns"][0]["name"], "c1");
}

TEST(view_store, runs_of_the_same_name_are_told_apart_by_their_paths) {
    const temp_folder inside;
    write_record("one/a.run", "complete", {});
    write_record("two/a.run", "complete", {});
    write_record("b.run", "complete", {});
    view_store store({"one/a.run", "two/a.run/", "b.run/"});
    const json runs = listed(store)["runs"];
    EXPECT_EQ(runs[0]["name"], "one/a.run");
    EXPECT_EQ(runs[1]["name"], "two/a.run/");
    EXPECT_EQ(runs[2]["name"], "b");
    EXPECT_THROW(view_store({"b.run", "nosuch"}), file_error);
}

}  // namespace
