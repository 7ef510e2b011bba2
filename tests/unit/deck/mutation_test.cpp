// Damaged input is read or refused with a text; it never crashes. The sanitizer build makes this test sharp.
#include <gtest/gtest.h>

#include <random>

#include "base/list_file.h"
#include "deck/circuit_file.h"
#include "deck/gprm_class.h"
#include "deck/ov_class.h"
#include "deck/tmpdim_class.h"
#include "halt_throws.h"
#include "temp_folder.h"

namespace {

const std::string_view pieces[] = {"title:",
                                   "begin_circuit",
                                   "end_circuit",
                                   "begin_solve",
                                   "end_solve",
                                   "end_cf",
                                   "output",
                                   "refnode",
                                   "x_refnode",
                                   "eelement",
                                   "xelement",
                                   "type",
                                   "ground_dummy",
                                   "c",
                                   "outvar:",
                                   "_of_",
                                   "greal",
                                   "ginteger",
                                   "gstring",
                                   "$(",
                                   "(",
                                   ")",
                                   "exp",
                                   "+",
                                   "*",
                                   "#",
                                   "=",
                                   " ",
                                   "\n",
                                   "\t",
                                   "\r\n",
                                   "1e999",
                                   "-",
                                   "99999999999",
                                   "1k",
                                   "a",
                                   ".",
                                   "\xff",
                                   std::string_view("\0", 1),
                                   "solve_type",
                                   "dc",
                                   "ov",
                                   "F_MNZ_W",
                                   "0x1p",
                                   "nan"};

// Some pieces put in, some stretches cut out or doubled.
std::string damaged(std::string text, std::mt19937& rng) {
    for (unsigned k = 1 + rng() % 6; k > 0; --k) {
        const std::size_t at = rng() % (text.size() + 1), n = rng() % 12;
        const unsigned what = rng() % 4;
        if (what == 0) text.erase(at, n);
        if (what == 1) text.insert(at, text.substr(rng() % (text.size() + 1), n));
        if (what >= 2) text.insert(at, pieces[rng() % std::size(pieces)]);
    }
    return text;
}

}  // namespace

TEST(damaged_decks, are_read_or_refused_with_a_text) {
    const std::string deck =
        "title: t\ngreal a=1k b=$((a)*(2m)) c=$(exp(b))\nginteger n=3\ngstring s=x\nbegin_circuit\noutput ov glbl\n"
        "refnode 0\nx_refnode 0\neelement name=g type=ground_dummy c=1\nxelement type=e_ground_dummy c=2\n"
        "outvar: v=v_of_x\n+ w=i_of_y\nend_circuit\nbegin_solve\nsolve_type dc\nend_solve\nend_cf\n";
    std::mt19937 rng(13);
    int n_read = 0, n_refused = 0;
    for (int trial = 0; trial < 4000; ++trial) {
        const std::string text = damaged(deck, rng);
        const console_run heard = run_and_listen([&] {
            circuit_file cf = circuit_file_of(file_chr_of(text));
            ASSERT_LE(cf.n_end_cf, cf.text.n_lines());
            const gprm_class gprm = read_gprm(cf);
            ASSERT_EQ(gprm.greal.size(), gprm.dependents.size());
            const ov_class ov = read_ov(cf, gprm);
            cf.first_unclaimed(cf.n_begin_cct, cf.n_end_cct);
        });
        ++(heard.stopped ? n_refused : n_read);
        EXPECT_FALSE(heard.stopped && heard.text.empty()) << text;
    }
    EXPECT_GT(n_read, 500);
    EXPECT_GT(n_refused, 500);
}

TEST(damaged_files_beside_the_deck, are_read_or_refused_with_a_text) {
    const temp_folder here;
    std::string sizes;
    for (const tmpdim_word& w : tmpdim_words()) sizes += std::string(w.word) + " 10\n";
    std::mt19937 rng(17);
    for (int trial = 0; trial < 500; ++trial) {
        write_file("tmpdim.in", damaged(sizes, rng));
        write_file("f.lst", damaged(".r\n.c\nebe.l\n", rng));
        const console_run tmpdim = run_and_listen([] { read_tmpdim("tmpdim.in"); });
        EXPECT_EQ(tmpdim.stopped, !tmpdim.text.empty());
        const console_run list = run_and_listen([] { make_chrarray_5("f.lst", {"l", "r"}); });
        EXPECT_EQ(list.stopped, !list.text.empty());
    }
}
