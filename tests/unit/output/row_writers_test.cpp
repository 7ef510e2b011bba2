#include "output/row_writers.h"

#include <gtest/gtest.h>

#include "block_fixture.h"
#include "halt_throws.h"
#include "output/assign_ov.h"
#include "settings/directives.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }
const std::string dc = "solve_type dc\n";

// The divider at 10 V with R1 = 1k, R2 = 2k: 10/3 mA through both resistors and the source, 20/3 V in the middle.
void put_solution(circuit& c) {
    const double i = 10.0 / 3000.0;
    auto node = [&](const char* name) -> double& {
        return c.ebeu.val_nd[at(c.cct.ect.to_eu[at(c.cct.ect.find(name))])];
    };
    c.ebeu.val_nd.assign(at(c.ebeu.n_nd), 0.0);
    node("in") = 10.0;
    node("out") = 20.0 / 3.0;
    c.ebeu.aux.assign(at(c.ebeu.n_ttlaux()), -i);
    c.ebeu.cur_nd = {-i, i, i, -i, i, -i};  // terminals of V1, R1, R2
}

block_run solved(const std::string& cards) {
    block_run r = read_cards(cards);
    put_solution(r.c);
    return r;
}

// All rows of file 0 after one point.
std::string one_row(const std::string& variables, const std::string& more_cards = "") {
    block_run r = solved(dc + out_block("filename a.dat\nvariables: " + variables + "\n") + more_cards);
    open_out_files(r.slv, r.c);
    write_dc(r.slv, r.c, r.flags);
    close_out_files(r.slv);
    return read_file("a.dat");
}

const char* const not_mapped =
    "write_dc: Check output variables.\n  Some output variables has not been\n  mapped to any system variable.\n"
    "  Halting...\n";
}  // namespace

TEST(write_dc, writes_voltages_currents_powers_and_parameters_in_the_order_of_the_deck) {
    const temp_folder folder;
    EXPECT_EQ(one_row("vout iv ir p2 r2 np"),
              " 6.666667e+00 -3.333333e-03  3.333333e-03  2.222222e-02  2.000000e+03  3.000000e+00 \n");
}

TEST(write_dc, writes_globals_and_swept_values_as_they_stand) {
    const temp_folder folder;
    EXPECT_EQ(one_row("rb r_of_R2 glbl_of_half vdc_of_V1",
                      "vary_parm r_of_R2 type table 5 6\nvary_parm glbl_of_half type table 1 2\n"
                      "vary_parm_sync vdc_of_V1 type table 3 4\n"),
              " 2.000000e+03  2.000000e+03  5.000000e-01  1.000000e+01 \n")
        << "no point of the sweep was applied";
}

TEST(write_dc, writes_each_swept_value_beside_its_row) {
    const temp_folder folder;
    block_run r =
        solved(dc + "vary_parm r_of_R2 type table 5 6\n" + out_block("filename a.dat\nvariables: r_of_R2 r2\n"));
    open_out_files(r.slv, r.c);
    for (int i = 0; i < r.slv.task.n_sweep; ++i) {
        vary_parm(r.slv, r.c, i);
        write_dc(r.slv, r.c, r.flags);
    }
    close_out_files(r.slv);
    EXPECT_EQ(read_file("a.dat"), " 5.000000e+00  5.000000e+00 \n 6.000000e+00  6.000000e+00 \n");
}

TEST(write_dc, writes_all_nodes_and_all_outvars) {
    const temp_folder folder;
    EXPECT_EQ(one_row("all_nodes"), " 1.000000e+01  6.666667e+00 \n");
    EXPECT_EQ(one_row("all_outvars"),
              " 6.666667e+00 -3.333333e-03  3.333333e-03  2.222222e-02  2.000000e+03  3.000000e+00  1.000000e+01 \n");
}

TEST(write_dc, reads_instance_parameters_of_every_family) {
    block_run r = read_cards(dc);
    const auto one_parameter = [](instance_core& inst, double x) {
        inst.rprm.clear();
        inst.rprm.add(x);
        inst.rprm.close_row();
    };
    one_parameter(r.c.gelu, 5.0);
    one_parameter(r.c.delu, 6.0);
    one_parameter(r.c.xelu, 7.0);
    double value = 0;
    for (auto [kind, expected] : {std::pair{ov_rparm_gelu, 5.0}, {ov_rparm_delu, 6.0}, {ov_rparm_xelu, 7.0}}) {
        EXPECT_TRUE(assign_ov(r.slv, r.c, {"", prefix_none, 0, kind, 0, 0}, value));
        EXPECT_EQ(value, expected);
    }
    const int u = r.c.eelu.first_unit[2];  // R2
    EXPECT_TRUE(assign_ov(r.slv, r.c, {"", prefix_none, 0, ov_rparm_ebe, r.c.ebeu.unit.rprm.first[at(u)], 2}, value));
    EXPECT_EQ(value, 2000.0);
}

TEST(write_dc, refuses_phases_magnitudes_and_digital_kinds) {
    const temp_folder folder;
    EXPECT_HALT(one_row("mag_of_vout"), not_mapped);
    EXPECT_HALT(one_row("vout phase_of_vout"), not_mapped);
    block_run r = solved(dc + out_block("filename a.dat\nvariables: vout\n"));
    for (int kind : {int{ov_dvar}, int{ov_dstate}, int{ov_pwr_elec_ac}, int{ov_none}}) {
        r.slv.out.files[0].vars[0].kind = kind;
        open_out_files(r.slv, r.c);
        EXPECT_HALT(write_dc(r.slv, r.c, r.flags), not_mapped);
    }
}

TEST(assign_ov, tells_when_a_word_and_a_kind_do_not_fit) {
    const block_run r = read_cards(dc);
    double value;
    for (int kind : {ov_nodev_ac, ov_aux_ac, ov_cur_ac, ov_var_ac, ov_xvar_ac})
        EXPECT_HALT(assign_ov(r.slv, r.c, {"", prefix_none, 0, kind, 0, -1}, value),
                    "assign_ov: check output variables.\n   perhaps missing phase or mag?\n");
    for (int prefix : {prefix_phase, prefix_mag})
        EXPECT_HALT(assign_ov(r.slv, r.c, {"", prefix, 0, ov_nodev, 2, -1}, value),
                    "assign_ov: check output variables.\n   perhaps phase or mag is given for\n   a dc variable?\n"
                    "   ov_flag = 1, ov_indx = 2\n");
}

TEST(assign_ov, refuses_swept_values_in_ac) {
    const block_run r = read_cards("solve_type ac\nset_freq 1\n");
    double value;
    EXPECT_HALT(assign_ov(r.slv, r.c, {"", prefix_vary}, value), "assign_ov: outvar of type varprm is not allowed.\n");
    EXPECT_HALT(assign_ov(r.slv, r.c, {"", prefix_vary_sync}, value),
                "assign_ov: outvar of type varprmsync is not allowed.\n");
}

TEST(limit_lines, lets_exactly_that_many_rows_pass) {
    const temp_folder folder;
    block_run r = solved(dc + out_block("filename a.dat\nvariables: vout\n") +
                         out_block("filename b.dat limit_lines=2\nvariables: vout\n"));
    open_out_files(r.slv, r.c);
    write_dc(r.slv, r.c, r.flags);
    write_dc(r.slv, r.c, r.flags);
    EXPECT_HALT(write_dc(r.slv, r.c, r.flags),
                "write_dc: limit_lines is exceeded.\n  index_solve = 0, i_file = 1\n  Halting...\n");
    const std::string row = " 6.666667e+00 \n";
    EXPECT_EQ(read_file("b.dat"), row + row) << "what was computed before the stop is on the disk";
    EXPECT_EQ(read_file("a.dat"), row + row + row);
}

TEST(limit_lines, of_nothing_stops_at_the_first_row) {
    const temp_folder folder;
    block_run r = solved(dc + out_block("filename a.dat limit_lines=0\nvariables: vout\n"));
    open_out_files(r.slv, r.c);
    EXPECT_TRUE(run_and_listen([&] { write_dc(r.slv, r.c, r.flags); }).stopped);
}

TEST(open_out_files, counts_the_lines_of_a_file_that_it_continues) {
    const temp_folder folder;
    write_file("a.dat", "1\n2\n3\n");
    block_run r = solved(dc + out_block("filename a.dat append=yes limit_lines=4\nvariables: vout\n"));
    open_out_files(r.slv, r.c);
    EXPECT_EQ(r.slv.out.files[0].n_lines, 3);
    write_dc(r.slv, r.c, r.flags);
    EXPECT_TRUE(run_and_listen([&] { write_dc(r.slv, r.c, r.flags); }).stopped);
    EXPECT_EQ(read_file("a.dat"), "1\n2\n3\n 6.666667e+00 \n");
}

TEST(open_out_files, halts_when_a_file_to_continue_is_missing) {
    const temp_folder folder;
    block_run r = solved(dc + out_block("filename none.dat append=yes\nvariables: vout\n"));
    EXPECT_HALT(open_out_files(r.slv, r.c), "file_count_lines: file none.dat does not exist. Halting...\n");
}

TEST(write_dc, leaves_files_of_other_contents_alone) {
    const temp_folder folder;
    block_run r = solved(dc + out_block("filename s.dat\nvariables: solution\n") +
                         out_block("filename p.dat limit_lines=0\nvariables: parms\n"));
    open_out_files(r.slv, r.c);
    write_dc(r.slv, r.c, r.flags);
    close_out_files(r.slv);
    EXPECT_EQ(read_file("s.dat") + read_file("p.dat"), "");
}
