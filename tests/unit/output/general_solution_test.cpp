#include <gtest/gtest.h>

#include "halt_throws.h"
#include "output/solution_file.h"
#include "time_fixture.h"

namespace {
const std::string cards = trns_cards + out_block("filename s.dat\nvariables: solution\n");

// u, v, w and the internal variable of each instance; one auxiliary a unit.
void fill(gbeu_class& u) {
    for (std::size_t k = 0; k < u.val_vr.size(); ++k) u.val_vr[k] = 1.0 + 0.5 * static_cast<double>(k);
    for (std::size_t k = 0; k < u.aux.size(); ++k) u.aux[k] = -1e3 * static_cast<double>(k);
}
void write_s_dat(block_run& r) {
    open_out_files(r.slv, r.c);
    write_solution(r.slv, r.c, r.flags);
    close_out_files(r.slv);
}
}  // namespace

TEST(write_solution, writes_variables_and_auxiliaries_of_general_units_under_their_titles) {
    const temp_folder folder;
    block_run r = with_blocks(cards);
    ASSERT_EQ(r.c.gbeu.val_vr.size(), 5u);
    ASSERT_EQ(r.c.gbeu.aux.size(), 4u);
    fill(r.c.gbeu);
    write_s_dat(r);
    const std::string text = read_file("s.dat");
    const std::size_t begin = text.find("gbeu->val_vr:");
    ASSERT_NE(begin, std::string::npos);
    EXPECT_EQ(text.substr(begin),
              "gbeu->val_vr:\n 1.000000e+00\n 1.500000e+00\n 2.000000e+00\n 2.500000e+00\n 3.000000e+00\n"
              "gbeu->aux1d:\n-0.000000e+00\n-1.000000e+03\n-2.000000e+03\n-3.000000e+03\n"
              "xbeu->val_vr:\nxbeu->val_aux1d:\nxbeu->val_bev1d:\nxbeu->val_cur1d:\ndbeu->val_nd:\n"
              "dbeu->state:\ndbeu->stable:\ndbeu->tschdl_rel:\n");
}

TEST(read_solution, gives_general_units_back_what_was_written) {
    const temp_folder folder;
    block_run r = with_blocks(cards);
    fill(r.c.gbeu);
    r.c.ebeu.val_nd.assign(r.c.ebeu.val_nd.size(), 7.0);
    write_s_dat(r);
    block_run again = with_blocks(trns_cards + "initial_sol file filename s.dat\n");
    read_solution(again.slv, again.c, again.flags);
    EXPECT_EQ(again.c.gbeu.val_vr, r.c.gbeu.val_vr);
    EXPECT_EQ(again.c.gbeu.aux, r.c.gbeu.aux);
    EXPECT_EQ(again.c.ebeu.val_nd, r.c.ebeu.val_nd);
}

TEST(read_solution, halts_when_a_file_of_a_circuit_without_blocks_is_read_into_one_with_them) {
    const temp_folder folder;
    block_run plain = read_cards("solve_type dc\n" + out_block("filename s.dat\nvariables: solution\n"));
    write_s_dat(plain);
    block_run r = with_blocks(trns_cards + "initial_sol file filename s.dat\n");
    EXPECT_TRUE(run_and_listen([&] { read_solution(r.slv, r.c, r.flags); }).stopped);
}
