#include <gtest/gtest.h>

#include <cmath>

#include "halt_throws.h"
#include "output/assign_ov.h"
#include "output/fourier.h"
#include "output/parms_file.h"
#include "time_fixture.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

double& general(circuit& c, const char* name) { return c.gbeu.val_vr[at(c.cct.gct.to_eu[at(c.cct.gct.find(name))])]; }

// A file of vout with these control words.
std::string vout_file(const std::string& name, const std::string& control = "", const std::string& options = "") {
    return out_block("filename " + name + " " + options + "\nvariables: vout\n" +
                     (control.empty() ? "" : "control: " + control + "\n"));
}

// Writes the points of a run, where vout is 10 t.
void write_points(block_run& r, const std::vector<double>& times, int mode = rows_analog) {
    for (double t : times) {
        vout(r.c) = 10 * t;
        write_trns(r.slv, r.c, mode, t);
    }
}

std::vector<double> times_of(const std::string& path) {
    std::istringstream in(read_file(path));
    std::vector<double> list;
    for (double t, v; in >> t >> v;) list.push_back(t);
    return list;
}

// The times of the rows of one file with these control words.
std::vector<double> rows_at(const std::string& control, const std::vector<double>& times) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + vout_file("a.dat", control));
    open_out_files(r.slv, r.c);
    write_points(r, times);
    close_out_files(r.slv);
    return times_of("a.dat");
}
using list = std::vector<double>;
const list tenths = {0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1};
}  // namespace

TEST(write_trns, puts_the_time_before_the_values) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + out_block("filename a.dat\nvariables: gw vout mid rb\n"));
    open_out_files(r.slv, r.c);
    general(r.c, "w") = -3;
    vout(r.c) = 20.0 / 3.0;
    write_trns(r.slv, r.c, rows_analog, 0.0);
    general(r.c, "w") = 1e-100;
    write_trns(r.slv, r.c, rows_analog, 0.25);
    close_out_files(r.slv);
    EXPECT_EQ(read_file("a.dat"),
              " 0.000000e+00 -3.000000e+00  6.666667e+00  0.000000e+00  2.000000e+03 \n"
              " 2.500000e-01 1.000000e-100  6.666667e+00  0.000000e+00  2.000000e+03 \n");
}

TEST(write_trns, reads_variables_auxiliaries_and_parameters_of_general_units) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + out_block("filename a.dat\nvariables: gu gw mid aux navg tau gain\n"));
    ASSERT_EQ(r.c.gbeu.n(), 4);  // two in each instance
    // Connections x, y of each unit in turn: u m1, m1 v, v m2, m2 w.
    for (int u = 0; u < 4; ++u) r.c.gbeu.val_vr[at(r.c.gbeu.vr.row(u)[0])] = 10 + u;
    r.c.gbeu.val_vr[at(r.c.gbeu.vr.row(3)[1])] = 14;
    for (int u = 0; u < 4; ++u) r.c.gbeu.aux[at(r.c.gbeu.first_aux[at(u)])] = 20 + u;
    open_out_files(r.slv, r.c);
    write_trns(r.slv, r.c, rows_analog, 0.5);
    close_out_files(r.slv);
    EXPECT_EQ(read_file("a.dat"),
              " 5.000000e-01  1.000000e+01  1.400000e+01  1.300000e+01  2.300000e+01  9.000000e+00  1.000000e+01"
              "  5.000000e+00 \n");
}

TEST(write_trns, writes_general_variables_behind_the_nodes_in_a_file_of_all_nodes) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + out_block("filename a.dat\nvariables: all_nodes\n") +
                              out_block("filename b.dat\nvariables: all_outvars\n"));
    r.c.ebeu.val_nd.assign(at(r.c.ebeu.n_nd), 0.0);
    vout(r.c) = 2;
    general(r.c, "u") = 3;
    general(r.c, "v") = 4;
    general(r.c, "w") = 5;
    open_out_files(r.slv, r.c);
    write_trns(r.slv, r.c, rows_analog, 1.0);
    close_out_files(r.slv);
    EXPECT_EQ(read_file("a.dat"),
              " 1.000000e+00  0.000000e+00  2.000000e+00  3.000000e+00  4.000000e+00  5.000000e+00 \n");
    EXPECT_EQ(read_file("b.dat"),  // vout iv ir p2 r2 np vin, gu gw mid aux navg tau gain
              " 1.000000e+00  2.000000e+00  0.000000e+00  0.000000e+00  0.000000e+00  2.000000e+03  3.000000e+00"
              "  0.000000e+00  3.000000e+00  5.000000e+00  0.000000e+00  0.000000e+00  9.000000e+00  1.000000e+01"
              "  5.000000e+00 \n");
}

TEST(write_trns, writes_every_point_of_the_span_and_both_its_ends) {
    EXPECT_EQ(rows_at("", tenths), tenths);
    EXPECT_EQ(rows_at("out_tstart=0.3 out_tend=0.5", tenths), (list{0.3, 0.4, 0.5}));
    EXPECT_EQ(rows_at("out_tstart=0.9", tenths), (list{0.9, 1}));
    EXPECT_EQ(rows_at("out_tend=0.05", tenths), (list{0}));
}

TEST(write_trns, takes_the_last_point_within_the_time_tolerance_only) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + vout_file("a.dat"));  // time_epsilon 1e-13
    open_out_files(r.slv, r.c);
    write_points(r, {1.0, 1.0 + 0.5e-13, 1.0 + 2e-13, 1.1});
    close_out_files(r.slv);
    EXPECT_EQ(times_of("a.dat").size(), 2u);
}

TEST(write_trns, leaves_a_file_without_points_in_its_span_empty) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + vout_file("late.dat", "out_tstart=2 out_tend=3") +
                              vout_file("never.dat", "out_tstart=0.9 out_tend=0.1"));
    open_out_files(r.slv, r.c);
    write_points(r, tenths);
    close_out_files(r.slv);
    for (const char* path : {"late.dat", "never.dat"}) {
        EXPECT_TRUE(std::filesystem::exists(path));
        EXPECT_EQ(read_file(path), "");
    }
}

TEST(fixed_interval, takes_the_first_point_past_each_interval_and_drifts_with_the_steps) {
    EXPECT_EQ(rows_at("fixed_interval=0.25", tenths), (list{0, 0.3, 0.6, 0.9}))
        << "0.3 stands for 0.25, and the next interval runs from 0.3";
    EXPECT_EQ(rows_at("fixed_interval=0.25 out_tstart=0.35", tenths), (list{0.4, 0.7, 1}));
    EXPECT_EQ(rows_at("fixed_interval=0.25 out_tend=0.5", tenths), (list{0, 0.3}));
    EXPECT_EQ(rows_at("fixed_interval=5", tenths), (list{0}));
}

TEST(fixed_interval, has_no_tolerance) {
    const double next = 0.1 + 0.2;  // one unit in the last place above 0.3
    ASSERT_GT(next, 0.3);
    EXPECT_EQ(rows_at("fixed_interval=0.2", {0.1, 0.3, 0.4}), (list{0.1, 0.4}));
}

TEST(fixed_interval, of_nothing_takes_every_point) {
    EXPECT_EQ(rows_at("fixed_interval=0", tenths), tenths);
    EXPECT_EQ(rows_at("fixed_interval=-1", tenths), tenths);
}

TEST(fixed_interval, starts_anew_when_the_files_of_a_block_are_opened) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + vout_file("a.dat", "fixed_interval=0.25"));
    for (int run = 0; run < 2; ++run) {
        open_out_files(r.slv, r.c);
        write_points(r, tenths);
        close_out_files(r.slv);
        EXPECT_EQ(times_of("a.dat"), (list{0, 0.3, 0.6, 0.9}));
    }
}

TEST(write_trns, counts_rows_and_not_points_against_limit_lines) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + vout_file("a.dat") +
                              vout_file("b.dat", "fixed_interval=0.25 out_tend=0.6", "limit_lines=3") +
                              vout_file("c.dat", "", "limit_lines=10"));
    open_out_files(r.slv, r.c);
    write_points(r, list(tenths.begin(), tenths.end() - 1));
    EXPECT_HALT(write_trns(r.slv, r.c, rows_analog, 1.0),
                "write_trns: limit_lines is exceeded.\n  index_solve = 0, i_file = 2\n  Halting...\n");
    EXPECT_EQ(times_of("c.dat").size(), 10u) << "what was computed before the stop is on the disk";
    EXPECT_EQ(times_of("b.dat").size(), 3u);
}

TEST(write_trns, stops_a_transient_longer_than_the_default_limit) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + vout_file("a.dat"));
    open_out_files(r.slv, r.c);
    const auto points = [&](int n) {
        for (int i = 0; i < n; ++i) write_trns(r.slv, r.c, rows_analog, 1e-5 * i);
    };
    EXPECT_FALSE(run_and_listen([&] { points(100000); }).stopped);
    EXPECT_TRUE(run_and_listen([&] { points(1); }).stopped);
}

TEST(write_trns, writes_two_rows_for_two_calls_at_one_time) { EXPECT_EQ(rows_at("", {0.5, 0.5}), (list{0.5, 0.5})); }

TEST(write_trns, serves_the_data_types_that_the_mode_names) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + vout_file("a.dat"));
    open_out_files(r.slv, r.c);
    write_points(r, {0.1}, rows_digital);
    write_points(r, {0.2}, rows_all);
    write_points(r, {0.3}, rows_analog);
    close_out_files(r.slv);
    EXPECT_EQ(times_of("a.dat"), (list{0.2, 0.3}));
}

// No deck has digital variables yet, so the type is set by hand; reading one is then refused.
TEST(write_trns, asks_for_levels_in_digital_files_only) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + vout_file("a.dat"));
    r.slv.out.files[0].data_type = out_digital;
    open_out_files(r.slv, r.c);
    write_trns(r.slv, r.c, rows_analog, 0.1);
    const char* const text = "assign_ov_dgtl: check output variables (digital)\n   Halting...\n";
    EXPECT_HALT(write_trns(r.slv, r.c, rows_digital, 0.1), text);
    EXPECT_HALT(write_trns(r.slv, r.c, rows_all, 0.1), text);
    EXPECT_HALT(write_dc(r.slv, r.c, r.flags), text);
    close_out_files(r.slv);
    EXPECT_EQ(read_file("a.dat"), "");
}

TEST(put_levels, lays_traces_apart_by_an_offset_or_writes_integers) {
    const temp_folder folder;
    row_file file;
    file.open("a.dat", false);
    for (double offset : {2.0, 0.0, -0.5}) {
        put_levels(file, {1, 0, -1, 1}, offset);
        file.end_row();
    }
    file.close();
    EXPECT_EQ(read_file("a.dat"),
              " 1.000000e+00  2.000000e+00  3.000000e+00  7.000000e+00 \n  1   0  -1   1 \n"
              " 1.000000e+00 -5.000000e-01 -2.000000e+00 -5.000000e-01 \n");
}

TEST(write_trns, refuses_phases_magnitudes_and_kinds_that_an_analog_row_cannot_hold) {
    const temp_folder folder;
    const char* const not_mapped =
        "write_trns: Check output variables.\n  Some output variables has not been\n"
        "  mapped to any system variable.\n  Halting...\n";
    for (const char* variables : {"mag_of_vout", "vout phase_of_gw"}) {
        block_run r = with_blocks(trns_cards + out_block(line("filename a.dat\nvariables: ", variables, "\n")));
        open_out_files(r.slv, r.c);
        EXPECT_HALT(write_trns(r.slv, r.c, rows_analog, 0.0), not_mapped);
    }
    block_run r = with_blocks(trns_cards + vout_file("a.dat") + vout_file("f.dat", "", "fourier=yes"));
    for (int i_file : {0, 1})
        for (int kind : {int{ov_dvar}, int{ov_dstate}, int{ov_pwr_elec_ac}, int{ov_none}}) {
            r.slv.out.files[at(i_file)].vars[0].kind = kind;
            open_out_files(r.slv, r.c);
            EXPECT_HALT(write_trns(r.slv, r.c, rows_analog, 0.0), not_mapped);
            r.slv.out.files[at(i_file)].vars[0].kind = ov_nodev;
        }
}

TEST(write_trns, leaves_files_of_other_contents_alone) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + out_block("filename s.dat\nvariables: solution\n") +
                              out_block("filename p.dat limit_lines=0\nvariables: parms\n") + vout_file("pp.dat"));
    r.slv.out.files[2].postproc = true;
    open_out_files(r.slv, r.c);
    write_points(r, tenths);
    close_out_files(r.slv);
    EXPECT_EQ(read_file("s.dat") + read_file("p.dat") + read_file("pp.dat"), "");
}

TEST(write_parms, lists_general_instances_behind_electrical_ones) {
    const temp_folder folder;
    block_run r = with_blocks(trns_cards + out_block("filename p.dat\nvariables: parms\n"));
    open_out_files(r.slv, r.c);
    write_parms(r.slv, r.c);
    close_out_files(r.slv);
    const std::string text = read_file("p.dat");
    const std::size_t general_part = text.find("gelement");
    ASSERT_NE(general_part, std::string::npos);
    EXPECT_EQ(text.find("eelement", general_part + 8), std::string::npos);
    EXPECT_EQ(text.substr(general_part),
              "gelement G1, gels_name = two_lags\nrparms:\n j = 0, name = k, value = 3.000000e+00\n"
              " j = 1, name = k2, value = 6.000000e+00\nsparms:\n j = 0, name = mode, value = slow\n"
              "iparms:\n j = 0, name = n_avg, value = 7\n"
              "gelement G2, gels_name = two_lags\nrparms:\n j = 0, name = k, value = 5.000000e+00\n"
              " j = 1, name = k2, value = 1.000000e+01\nsparms:\n j = 0, name = mode, value = other\n"
              "iparms:\n j = 0, name = n_avg, value = 9\n");
}
