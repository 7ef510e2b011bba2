#include "deck/circuit_file.h"

#include <gtest/gtest.h>

#include "deck/deck_dumps.h"
#include "halt_throws.h"
#include "temp_folder.h"

namespace {

circuit_file deck(std::string_view text) { return circuit_file_of(file_chr_of(text)); }

// A deck with these statements in its circuit block.
circuit_file circuit(const std::string& block) {
    return deck("title: t\nbegin_circuit\n" + block + "\nend_circuit\nend_cf\n");
}

const char* const whole_deck =
    "# a comment before the title\n"
    "title: two-resistor divider\n"  // 0
    "greal r1=1k\n"                  // 1
    "begin_circuit\n"                // 2
    "output ebes ect\n"              // 3
    "refnode 0\n"                    // 4
    "outvar: vout=v_of_R2\n"         // 5
    "end_circuit\n"                  // 6
    "stray text\n"                   // 7
    "begin_solve\n"                  // 8
    "solve_type dc\n"                // 9
    "end_solve\n"                    // 10
    "begin_solve\n"                  // 11
    "# no type\n"
    "end_solve\n"  // 12
    "end_cf\n"     // 13
    "title: anything\n";

}  // namespace

TEST(circuit_file, finds_the_sections_of_a_deck) {
    const circuit_file cf = deck(whole_deck);
    EXPECT_EQ(cf.n_begin_cct, 2);
    EXPECT_EQ(cf.n_end_cct, 6);
    EXPECT_EQ(cf.n_solve, 2);
    EXPECT_EQ(cf.n_begin_solve, (std::vector<int>{8, 11}));
    EXPECT_EQ(cf.n_end_solve, (std::vector<int>{10, 12}));
    EXPECT_EQ(cf.n_end_cf, 13);
    EXPECT_EQ(cf.n_dc, 1);
    EXPECT_EQ(cf.used.size(), 14u);
    EXPECT_TRUE(cf.output.ebes && cf.output.ect);
    EXPECT_FALSE(cf.output.gbes || cf.output.xcem);
    EXPECT_EQ(cf.ref_node, "0");
    EXPECT_EQ(cf.x_ref_node, "");
}

TEST(circuit_file, halts_on_a_missing_section) {
    struct row {
        const char *text, *expected;
    };
    const char* const no_end_cf = "circuit_file: end_cf not found. Halting...\n";
    const char* const no_title = "circuit_file: title: not found. Halting...\n";
    const char* const no_circuit = "circuit_file: begin_circuit not found. Halting...\n";
    const char* const no_end_solve = "circuit_file: end_solve not found. Halting...\n";
    const row rows[] = {
        {"", no_end_cf},
        {"title: t\nbegin_circuit\nend_circuit\n", no_end_cf},
        {"title: t\nx end_cf\n", no_end_cf},
        {"begin_circuit\n", no_end_cf},  // told before the title
        {"begin_circuit\nend_circuit\nend_cf\n", no_title},
        {"title t\nend_cf\n", no_title},
        {"end_cf\n", no_title},
        {"title:\nend_cf\n", no_circuit},
        {"title:\nend_circuit\nend_cf\n", no_circuit},
        {"title:\nbegin_circuit\nend_cf\nend_circuit\n", no_circuit},
        {"title:\nend_circuit\nbegin_circuit\nend_cf\n", no_circuit},
        {"title:\nbegin_circuit\nend_circuit\nbegin_solve\nend_cf\nend_solve\n", no_end_solve},
    };
    for (const row& r : rows) EXPECT_HALT(deck(r.text), r.expected);
}

TEST(circuit_file, accepts_a_title_without_words) {
    EXPECT_EQ(deck("title:\nbegin_circuit\nend_circuit\nend_cf").n_solve, 0);
}

TEST(circuit_file, counts_the_solve_blocks_of_each_type) {
    std::string text = "title:\nbegin_circuit\nend_circuit\n";
    for (const char* type : {"dc", "trns", "trns", "ac", "ssw", "startup", "startup", "startup", "other"})
        text += std::string("begin_solve\nsolve_type ") + type + "\nsolve_type dc\nend_solve\n";
    const circuit_file cf = deck(text + "begin_solve\nend_solve\nend_cf\n");
    EXPECT_EQ(cf.n_solve, 10);
    EXPECT_EQ(cf.n_dc, 1);
    EXPECT_EQ(cf.n_trns, 2);
    EXPECT_EQ(cf.n_ac, 1);
    EXPECT_EQ(cf.n_ssw, 1);
    EXPECT_EQ(cf.n_startup, 3);
}

TEST(circuit_file, drops_solve_blocks_beyond_the_twentieth) {
    const std::string head = "title:\nbegin_circuit\nend_circuit\n";
    const circuit_file cf = deck(head + repeated("begin_solve\nsolve_type dc\nend_solve\n", 23) + "end_cf\n");
    EXPECT_EQ(cf.n_solve, 20);
    EXPECT_EQ(cf.n_dc, 20);
    EXPECT_EQ(cf.n_end_solve.size(), 20u);
    EXPECT_HALT(deck(head + repeated("begin_solve\nend_solve\n", 20) + "begin_solve\nend_cf\n"),
                "circuit_file: end_solve not found. Halting...\n");
}

TEST(output_statement, sets_the_flag_of_each_of_its_words_and_no_other) {
    const char* const words_of_a_deck[] = {"input",  "glbl",   "ebes", "hebes", "hebes_ac", "dbes",  "gbes", "xbes",
                                           "ebac",   "gbac",   "xbac", "eels",  "heels",    "dels",  "gels", "xels",
                                           "gmes",   "ecem",   "dcem", "gcem",  "gmem",     "ect",   "gct",  "dct",
                                           "xct",    "ebce",   "gbce", "xbce",  "ov",       "kcl",   "smat", "debug",
                                           "error1", "error2", "ssw",  "x_kcl", "x_bvd",    "x_smat"};
    ASSERT_EQ(std::size(words_of_a_deck), output_words().size());
    for (const char* word : words_of_a_deck) {
        const circuit_file cf = circuit(std::string("output ") + word);
        for (const output_word& w : output_words()) EXPECT_EQ(cf.output.*w.flag, w.word == word) << word;
        EXPECT_FALSE(cf.output.xcem);
    }
}

TEST(output_statement, adds_to_those_before_it_and_may_be_empty) {
    const circuit_file cf = circuit("output ebes\noutput\noutput ov ebes");
    EXPECT_TRUE(cf.output.ebes && cf.output.ov);
}

TEST(output_statement, refuses_unknown_and_repeated_words) {
    for (const auto& [block, word] : {std::pair{"output ebes nodes ov", "nodes"},
                                      {"output xcem", "xcem"},
                                      {"output ov ebes ov", "ov"},
                                      {"output output", "output"},
                                      {"output heels_ac", "heels_ac"},
                                      {"output Ov", "Ov"}})
        EXPECT_HALT(circuit(block), "circuit_file: check output statement in the circuit block.\n  The word <" +
                                        std::string(word) + "> is not recognised.\n  Halting...\n");
}

TEST(output_statement, is_claimed_up_to_the_fiftieth) {
    const circuit_file cf = circuit(repeated("output ov\n", 50) + "output nonsense\n");
    EXPECT_EQ(cf.first_unclaimed(cf.n_begin_cct, cf.n_end_cct), cf.n_begin_cct + 51);
    EXPECT_EQ(cf.first_unclaimed(cf.n_begin_cct, cf.n_begin_cct + 51), -1);
}

TEST(output_statement, outside_the_circuit_block_is_not_read) {
    EXPECT_FALSE(deck("title:\noutput ov\nbegin_circuit\nend_circuit\noutput junk\nend_cf").output.ov);
}

TEST(ground_words, are_those_of_placeholders_without_the_reference) {
    const circuit_file cf = circuit(
        "refnode 0\nrefnode other\n"
        "eelement name=a type=ground_dummy c=g1\n"
        "eelement name=b type=ground_dummy c=0\n"
        "eelement name=c type=r p=x n=0\n"
        "eelement name=d type=ground_dummy c=g2\n"
        "eelement name=e type=ground_dummy c=g1\n"
        "xelement name=f type=ground_dummy c=g3\n"
        "x_refnode xg\n"
        "xelement type=e_ground_dummy c=xg\n"
        "xelement type=e_ground_dummy c=y\n"
        "eelement type=e_ground_dummy c=z\n");
    EXPECT_EQ(cf.ref_node, "0");
    EXPECT_EQ(cf.ground_dummy, (std::vector<std::string>{"g1", "g2"}));
    EXPECT_EQ(cf.x_ref_node, "xg");
    EXPECT_EQ(cf.x_ground_dummy, (std::vector<std::string>{"y"}));
}

TEST(ground_words, are_not_looked_for_without_a_reference) {
    const circuit_file cf = circuit("eelement name=a type=ground_dummy c=g\neelement name=b\nxelement z\n");
    EXPECT_EQ(cf.ref_node, "");
    EXPECT_TRUE(cf.ground_dummy.empty());
    EXPECT_TRUE(cf.x_ground_dummy.empty());
}

TEST(ground_words, halt_on_placeholders_without_type_or_node) {
    EXPECT_HALT(circuit("refnode 0\neelement name=a p=type"),
                "circuit_file (ece ground_dummy): type not found. Halting..\n");
    EXPECT_HALT(circuit("refnode 0\neelement type=ground_dummy p=c"),
                "circuit_file (ece ground_dummy): c not found. Halting..\n");
    EXPECT_HALT(circuit("x_refnode 0\nxelement name=a"),
                "circuit_file (xce ground_dummy): type not found. Halting..\n");
    EXPECT_HALT(circuit("x_refnode 0\nxelement type=e_ground_dummy"),
                "circuit_file (xce ground_dummy): c not found. Halting..\n");
    EXPECT_HALT(circuit("refnode 0\neelement name=a type"),
                "pick_word_1: index_word is too large! Halting..\n  chr_in = eelementnameatype\n  index_word = 4\n");
    EXPECT_HALT(circuit("refnode"), "get_word: word_given is too large! Halting..\n");
}

TEST(ground_words, are_looked_for_within_the_limits_of_a_circuit_line) {
    EXPECT_HALT(circuit("refnode 0\neelement type=r " + repeated("p=x ", 249)),
                "file_line_to_chrarr_1: n_words_1 is too large!\n");
    EXPECT_HALT(circuit("refnode 0\neelement type=r p=" + std::string(10000, 'x')),
                "file_line_to_chrarr_1: n_chr_1 is too large!\n");
    EXPECT_EQ(circuit("refnode 0\neelement " + repeated("type=r ", 249) + "x").ref_node, "0");
}

TEST(first_unclaimed, looks_strictly_between_its_ends) {
    circuit_file cf = deck(whole_deck);
    EXPECT_EQ(cf.first_unclaimed(2, 6), 4);
    cf.mark(4);
    EXPECT_EQ(cf.first_unclaimed(2, 6), 5);
    cf.mark(5);
    EXPECT_EQ(cf.first_unclaimed(2, 6), -1);
    EXPECT_EQ(cf.first_unclaimed(8, 9), -1);
}

TEST(read_circuit_file, reads_from_a_file) {
    const temp_folder here;
    write_file("cct.in", whole_deck);
    EXPECT_EQ(read_circuit_file("cct.in").n_end_cf, 13);
    EXPECT_HALT(read_circuit_file("none.in"), "file_chr: file none.in does not exist. Halting...\n");
}

TEST(write_input_dat, writes_the_section_numbers) {
    const temp_folder here;
    write_file("input.dat", "old\nold\nold\nold\nold\nold\nold\nold\nold\nold\n");
    write_input_dat(deck(whole_deck));
    EXPECT_EQ(read_file("input.dat"),
              "circuit_file\nn_end_cf = 13\nn_begin_cct = 2\nn_end_cct = 6\nn_solve = 2\n"
              "  i = 0, n_end_solve=10, n_begin_solve=8\n  i = 1, n_end_solve=12, n_begin_solve=11\n");
}
