#include "output/solution_file.h"

#include <gtest/gtest.h>

#include "block_fixture.h"
#include "halt_throws.h"
#include "output/parms_file.h"
#include "output/row_writers.h"

namespace {
const std::string cards = "solve_type dc\n" + out_block("filename s.dat limit_lines=2\nvariables: solution\n") +
                          out_block("filename p.dat\nvariables: parms\n");

void fill(std::vector<double>& values, double first) {
    for (std::size_t k = 0; k < values.size(); ++k) values[k] = first + 0.125 * static_cast<double>(k);
}
void fill_all(ebeu_class& u) {
    fill(u.val_nd, 1);
    fill(u.cur_nd, -2);
    fill(u.aux, 3e-9);
    fill(u.auxs, 4e100);
    fill(u.locv, 5);
}
void write_s_dat(block_run& r) {
    open_out_files(r.slv, r.c);
    write_solution(r.slv, r.c, r.flags);
    close_out_files(r.slv);
}
}  // namespace

TEST(write_solution, writes_all_fifteen_titles_with_one_number_a_line) {
    const temp_folder folder;
    block_run r = read_cards(cards);
    r.c.ebeu.val_nd = {10, 0, -2.5};
    r.c.ebeu.cur_nd = {1e-3};
    r.c.ebeu.aux = {-1e-3};
    r.c.ebeu.auxs = {0};
    r.c.ebeu.locv = {};
    write_s_dat(r);
    EXPECT_EQ(read_file("s.dat"),
              "ebeu->val_nd:\n 1.000000e+01\n 0.000000e+00\n-2.500000e+00\nebeu->cur_nd:\n 1.000000e-03\n"
              "ebeu->aux1d:\n-1.000000e-03\nebeu->auxs1d:\n 0.000000e+00\nebeu->locv1d:\ngbeu->val_vr:\n"
              "gbeu->aux1d:\nxbeu->val_vr:\nxbeu->val_aux1d:\nxbeu->val_bev1d:\nxbeu->val_cur1d:\ndbeu->val_nd:\n"
              "dbeu->state:\ndbeu->stable:\ndbeu->tschdl_rel:\n");
}

TEST(read_solution, gives_back_what_was_written) {
    const temp_folder folder;
    block_run r = read_cards(cards);
    fill_all(r.c.ebeu);
    write_s_dat(r);
    const ebeu_class& u = r.c.ebeu;
    const std::vector<std::vector<double>> written = {u.val_nd, u.cur_nd, u.aux, u.auxs, u.locv};
    ASSERT_FALSE(u.val_nd.empty() || u.cur_nd.empty() || u.aux.empty() || u.auxs.empty());

    block_run again = read_cards("solve_type dc\ninitial_sol file filename s.dat\n");
    read_solution(again.slv, again.c, again.flags);
    const ebeu_class& v = again.c.ebeu;
    const std::vector<std::vector<double>> read = {v.val_nd, v.cur_nd, v.aux, v.auxs, v.locv};
    ASSERT_EQ(written.size(), read.size());
    for (std::size_t k = 0; k < written.size(); ++k) {
        ASSERT_EQ(written[k].size(), read[k].size());
        for (std::size_t i = 0; i < read[k].size(); ++i)
            EXPECT_NEAR(read[k][i], written[k][i], 1e-6 * std::abs(written[k][i]));
    }
}

TEST(read_solution, does_not_look_at_titles_or_lines) {
    const temp_folder folder;
    block_run r = read_cards(cards);
    r.slv.task.init_sol_path = "free.dat";
    r.c.ebeu.val_nd.assign(2, 0.0);
    r.c.ebeu.cur_nd.assign(1, 0.0);
    r.c.ebeu.aux.clear();
    r.c.ebeu.auxs.clear();
    r.c.ebeu.locv.clear();
    write_file("free.dat", "one 1 2\n\n two 3 c\nd e f g h i j k l m n o");
    read_solution(r.slv, r.c, r.flags);
    EXPECT_EQ(r.c.ebeu.val_nd, (std::vector<double>{1, 2}));
    EXPECT_EQ(r.c.ebeu.cur_nd, (std::vector<double>{3}));
}

TEST(read_solution, halts_on_a_missing_a_short_and_a_spoilt_file) {
    const temp_folder folder;
    block_run r = read_cards(cards);
    r.slv.task.init_sol_path = "none.dat";
    EXPECT_HALT(read_solution(r.slv, r.c, r.flags),
                "cct_class::read_solution: file none.dat does not exist. Halting...\n");
    fill_all(r.c.ebeu);
    write_s_dat(r);
    r.slv.task.init_sol_path = "s.dat";
    const std::string whole = read_file("s.dat");
    for (std::size_t n : {std::size_t{0}, std::size_t{10}, whole.size() / 3, whole.size() / 2}) {
        write_file("s.dat", whole.substr(0, n));
        EXPECT_TRUE(run_and_listen([&] { read_solution(r.slv, r.c, r.flags); }).stopped) << n;
    }
    write_file("s.dat", "title\n");
    EXPECT_HALT(read_solution(r.slv, r.c, r.flags),
                "cct_class::read_solution: file s.dat ends early.\n"
                "   It must come from the same circuit. Halting...\n");
    write_file("s.dat", "title\nnumber\n");
    EXPECT_TRUE(run_and_listen([&] { read_solution(r.slv, r.c, r.flags); }).stopped);
    write_file("s.dat", "title\nnan\n");
    EXPECT_HALT(read_solution(r.slv, r.c, r.flags),
                "check double string: <nan>\n  (brackets are not part of the string)\n  value = nan\n  Halting...\n");
}

TEST(write_solution, counts_one_line_a_call_under_its_own_name) {
    const temp_folder folder;
    block_run r = read_cards(cards);
    open_out_files(r.slv, r.c);
    write_solution(r.slv, r.c, r.flags);
    write_solution(r.slv, r.c, r.flags);
    EXPECT_HALT(write_solution(r.slv, r.c, r.flags),
                "write_solution: limit_lines is exceeded.\n  index_solve = 0, i_file = 0\n  Halting...\n");
}

TEST(write_parms, lists_every_parameter_of_every_instance) {
    const temp_folder folder;
    block_run r = read_cards(cards);
    open_out_files(r.slv, r.c);
    write_parms(r.slv, r.c);
    close_out_files(r.slv);
    EXPECT_EQ(read_file("p.dat"),
              "eelement V1, eels_name = vs\nrparms:\n j = 0, name = vdc, value = 1.000000e+01\n"
              "sparms:\n j = 0, name = model_file, value = none\niparms:\n"
              "eelement R1, eels_name = r\nrparms:\n j = 0, name = r, value = 1.000000e+03\n"
              " j = 1, name = r2, value = 2.000000e+03\nsparms:\n j = 0, name = tag, value = plain\n"
              "iparms:\n j = 0, name = n_par, value = 1\n"
              "eelement R2, eels_name = r\nrparms:\n j = 0, name = r, value = 2.000000e+03\n"
              " j = 1, name = r2, value = 4.000000e+03\nsparms:\n j = 0, name = tag, value = plain\n"
              "iparms:\n j = 0, name = n_par, value = 3\n");
}
