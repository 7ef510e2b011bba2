#include "tnl/results/run_tables.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "temp_folder.h"
#include "tnl/common/exit_status.h"

namespace {

using namespace cli;

// A run with two tables; both have time and vout, one has i1, the other w2.
class run_with_two_tables : public testing::Test {
protected:
    run_with_two_tables() {
        std::filesystem::create_directory("d.run");
        run_record record;
        record.state = "complete";
        record.files = {{"a.dat", "trns", {{"time", "s"}, {"vout", "V"}, {"i1", "A"}}, 2, 1},
                        {"b.dat", "trns", {{"time", "s"}, {"vout", "V"}, {"w2", ""}}, 3, 2},
                        {"state.dat", "solution", {}, 0, 0}};
        write_file("d.run/run.json", to_json(record));
        write_file("d.run/a.dat", "0 1 2\n1 2 3\n");
        write_file("d.run/b.dat", "0 5 6\n\n1 7 8\n2 9 9\n");
    }
    temp_folder here_;
};

std::string fault_of(const std::function<void()>& f) {
    try {
        f();
    } catch (const command_error& e) {
        return std::to_string(e.status) + " " + e.what();
    }
    return "";
}

TEST_F(run_with_two_tables, the_one_that_holds_the_columns_is_found) {
    run_tables t("d", "");
    EXPECT_EQ(t.with_columns({"i1", "time"}).path, "d.run/a.dat");
    EXPECT_EQ(t.with_columns({"w2"}).path, "d.run/b.dat");
    EXPECT_EQ(run_tables("d.run", "b.dat").with_columns({"vout"}).path, "d.run/b.dat");
    EXPECT_EQ(run_tables("d.run/a.dat", "").with_columns({"3"}).columns[2].name, "i1");
}

TEST_F(run_with_two_tables, of_several_the_finest_is_taken_and_told) {
    run_tables t("d", "");
    EXPECT_EQ(t.with_columns({"vout"}).path, "d.run/b.dat");
    EXPECT_EQ(t.note(), "tnl: vout: taken is b.dat; --file takes also a.dat\n");
    EXPECT_EQ(run_tables("d", "").with_columns({}).path, "d.run/b.dat");
}

TEST_F(run_with_two_tables, a_run_that_was_cut_is_known_whether_or_not_earlier_results_stand_before_it) {
    EXPECT_EQ(run_tables("d", "").cut(), "");
    std::filesystem::copy("d.run", "d.run/.partial");
    EXPECT_EQ(run_tables("d", "").cut(), "the last run did not come to its end; its rows are in d.run/.partial");
    std::filesystem::remove("d.run/run.json");
    EXPECT_EQ(run_tables("d.run/a.dat", "").cut(), "") << "of rows alone nothing is known";
    run_record record = read_record("d.run/.partial/run.json");
    for (const char* state : {"running", "limit", "signal", "stopped"}) {
        record.state = state;
        write_file("d.run/.partial/run.json", to_json(record));
        EXPECT_NE(run_tables("d", "").cut(), "") << state;
    }
}

TEST_F(run_with_two_tables, what_stands_in_none_is_told) {
    run_tables t("d", "");
    EXPECT_EQ(fault_of([&] { t.with_columns({"i1", "w2"}); }), "2 no table of the run holds all of i1, w2");
    EXPECT_EQ(fault_of([&] { t.with_columns({"vout1"}); }),
              "2 no column vout1 in the tables of the run; near names: vout; it has i1, time, vout, w2");
    EXPECT_EQ(fault_of([&] { run_tables("d", "a.dat").with_columns({"i"}); }),
              "2 no column i in d.run/a.dat; near names: i1; it has time, vout, i1");
    EXPECT_EQ(fault_of([&] { run_tables("d", "c.dat"); }), "2 d has no table c.dat; it has a.dat, b.dat");
}

TEST_F(run_with_two_tables, files_without_rows_are_told) {
    write_file("d.run/a.dat", "");
    EXPECT_EQ(fault_of([&] { run_tables("d", "").with_columns({"i1"}); }), "5 d.run/a.dat has no rows");
    std::filesystem::remove("d.run/a.dat");
    EXPECT_EQ(fault_of([&] { run_tables("d", "").with_columns({"i1"}); }).substr(0, 26), "5 cannot read d.run/a.dat:");
}

TEST_F(run_with_two_tables, curves_are_counted_from_one) {
    run_tables t("d", "b.dat");
    const result_table& table = t.with_columns({});
    EXPECT_EQ(curves_of(table, 0).end, 2u);
    EXPECT_EQ(curves_of(table, 2).first, 1u);
    EXPECT_EQ(fault_of([&] { curves_of(table, 3); }), "2 d.run/b.dat has 2 curves; there is no curve 3");
}

}  // namespace
