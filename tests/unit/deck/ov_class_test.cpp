#include "deck/ov_class.h"

#include <gtest/gtest.h>

#include "deck/deck_dumps.h"
#include "halt_throws.h"
#include "temp_folder.h"

namespace {

using strings = std::vector<std::string>;

struct read_deck {
    circuit_file cf;
    ov_class ov;
};
read_deck outvars(const std::string& statements) {
    read_deck d;
    d.cf = circuit_file_of(file_chr_of("title: t\ngreal g=1\noutvar: early=v_of_x\nbegin_circuit\n" + statements +
                                       "\nend_circuit\nend_cf\n"));
    d.ov = read_ov(d.cf, read_gprm(d.cf));
    return d;
}

}  // namespace

TEST(ov_class, reads_pairs_of_a_name_and_a_quantity_of_an_element) {
    const read_deck d = outvars("outvar: vout=nodev_of_out i1=i_of_R1\nrefnode 0\noutvar: p=x_of_a_of_b");
    EXPECT_EQ(d.ov.name, (strings{"vout", "i1", "p"}));
    EXPECT_EQ(d.ov.left, (strings{"nodev", "i", "x"}));
    EXPECT_EQ(d.ov.right, (strings{"out", "R1", "a_of_b"}));  // cut at the first _of_
    EXPECT_EQ(d.ov.statement, (std::vector<int>{4, 4, 6}));
    EXPECT_EQ(d.ov.n_ov(), 3);
    EXPECT_EQ(d.ov.kind, std::vector<int>(3, ov_none));
    EXPECT_EQ(d.ov.usage, std::vector<int>(3, 0));
    EXPECT_EQ(d.ov.find("i1"), 1);
    EXPECT_EQ(d.ov.find("early"), -1);
}

TEST(ov_class, claims_its_statements_and_no_others) {
    const read_deck d = outvars("outvar: a=v_of_x\nrefnode 0\noutvar: b=v_of_y");
    EXPECT_TRUE(d.cf.used[4]);
    EXPECT_FALSE(d.cf.used[5]);
    EXPECT_TRUE(d.cf.used[6]);
    EXPECT_FALSE(d.cf.used[2]);
}

TEST(ov_class, ignores_an_odd_last_word) {
    EXPECT_EQ(outvars("outvar: a=v_of_x b").ov.name, strings{"a"});
    EXPECT_EQ(outvars("outvar:").ov.n_ov(), 0);
}

TEST(ov_class, warns_of_a_clash_with_a_greal_and_goes_on) {
    read_deck d;
    const console_run heard = run_and_listen([&] { d = outvars("outvar: g=v_of_x b=v_of_y"); });
    EXPECT_FALSE(heard.stopped);
    EXPECT_EQ(heard.text,
              "ov_class: an outvar name is clashing\n   with a global (real) parameter name.\n   outvar name is g\n");
    EXPECT_EQ(d.ov.name, (strings{"g", "b"}));
}

TEST(ov_class, halts_without_of) {
    EXPECT_HALT(outvars("outvar: a=vofx"),
                "find_sub_word: _of_ was not found.\nMessage from calling routine:\n"
                "ov_class: _of_ not found, check circuit file\n");
}

TEST(write_ov_dat, writes_one_row_a_variable) {
    const temp_folder here;
    write_ov_dat(outvars("outvar: a=v_of_x").ov);
    EXPECT_EQ(read_file("ov.dat"),
              "ov_class\nn_ov = 1\n"
              "  i = 0, name = a, left = v, right = x, kind = -1, index = -1, instance = -1, unit = -1, usage = 0\n");
}

TEST(dumps, halt_when_their_file_cannot_be_written) {
    const temp_folder here;
    std::filesystem::create_directory("ov.dat");
    EXPECT_HALT(write_ov_dat(ov_class{}), "ov_class: file ov.dat could not be opened. Halting...\n");
}
