#include "deck/tmpdim_class.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "halt_throws.h"
#include "temp_folder.h"

namespace {

const char* const keywords[] = {"M_ECT_ND_TMP",     "M_GCT_VR_TMP", "M_DCT_ND_TMP", "M_XCT_VR_TMP",     "MNZ_EBCE",
                                "MNZ_GBCE",         "MNZ_XBCE",     "MNZ_EBCE_AC",  "MNZ_GBCE_AC",      "MNZ_XBCE_AC",
                                "F_MNZ_W",          "M_MATTTLOP2",  "M_MATTTLOP3",  "M_AVERAGE_MV_GBE", "M_RMS_MV_GBE",
                                "M_AVERAGE_MV_XBE", "M_RMS_MV_XBE"};

// All keywords with values 100, 101, ... in this order, but for one that is left out.
std::string all_keywords(const std::string& left_out = "") {
    std::string text;
    int value = 100;
    for (const char* word : keywords) {
        if (word != left_out) text += std::string(word) + " " + std::to_string(value) + "\n";
        ++value;
    }
    return text;
}

tmpdim_class tmpdim(const std::string& text) {
    write_file("tmpdim.in", text);
    return read_tmpdim("tmpdim.in");
}

}  // namespace

TEST(tmpdim_class, assigns_every_keyword) {
    const temp_folder here;
    const tmpdim_class t = tmpdim("# sizes\n\n" + all_keywords());
    EXPECT_EQ(t.m_ect_nd_tmp, 100);
    EXPECT_EQ(t.m_gct_vr_tmp, 101);
    EXPECT_EQ(t.m_dct_nd_tmp, 102);
    EXPECT_EQ(t.m_xct_vr_tmp, 103);
    EXPECT_EQ(t.mnz_ebce, 104);
    EXPECT_EQ(t.mnz_gbce, 105);
    EXPECT_EQ(t.mnz_xbce, 106);
    EXPECT_EQ(t.mnz_ebce_ac, 107);
    EXPECT_EQ(t.mnz_gbce_ac, 108);
    EXPECT_EQ(t.mnz_xbce_ac, 109);
    EXPECT_EQ(t.f_mnz_w, 110);
    EXPECT_EQ(t.m_matttlop2, 111);
    EXPECT_EQ(t.m_matttlop3, 112);
    EXPECT_EQ(t.m_average_mv_gbe, 113);
    EXPECT_EQ(t.m_rms_mv_gbe, 114);
    EXPECT_EQ(t.m_average_mv_xbe, 115);
    EXPECT_EQ(t.m_rms_mv_xbe, 116);
}

TEST(tmpdim_class, takes_the_last_of_two_values) {
    const temp_folder here;
    EXPECT_EQ(tmpdim(all_keywords() + "F_MNZ_W = 7\nF_MNZ_W\n+ -1\n").f_mnz_w, -1);
}

TEST(tmpdim_class, needs_every_keyword) {
    const temp_folder here;
    for (const char* word : keywords)
        EXPECT_HALT(tmpdim(all_keywords(word)), std::string(word) + " not assigned? Halting...\n");
    EXPECT_HALT(tmpdim(""), "M_ECT_ND_TMP not assigned? Halting...\n");
}

TEST(tmpdim_class, halts_on_faults_of_a_line) {
    const temp_folder here;
    const std::string two_words = "tmpdim_class: number of words must be 2.\n   Halting...\n";
    EXPECT_HALT(tmpdim("F_MNZ_W\n"), two_words);
    EXPECT_HALT(tmpdim("F_MNZ_W 1 2\n"), two_words);
    EXPECT_HALT(tmpdim("m_mnz 1\n"), "tmpdim_class: wrong keyword.\n   string is: m_mnz\n   Halting...\n");
    EXPECT_HALT(tmpdim("F_MNZ_W 1.5\n"),
                "check integer string: <1.5>\n  (brackets are not part of the string)\n  Halting...\n");
    EXPECT_HALT(read_tmpdim("none.in"), "tmpdim_class: file none.in does not exist. Halting...\n");
}

TEST(tmpdim_class, accepts_the_generous_values_of_its_own_table) {
    const temp_folder here;
    std::string text;
    for (const tmpdim_word& w : tmpdim_words()) text += std::string(w.word) + " " + std::to_string(w.generous) + "\n";
    const tmpdim_class t = tmpdim(text);
    for (const tmpdim_word& w : tmpdim_words()) EXPECT_EQ(t.*w.member, w.generous);
    const auto needed =
        std::count_if(tmpdim_words().begin(), tmpdim_words().end(), [](const auto& w) { return w.needed; });
    EXPECT_EQ(static_cast<std::size_t>(needed), std::size(keywords));
    EXPECT_EQ(tmpdim_words().size(), std::size(keywords) + 1);
}

TEST(tmpdim_class, knows_how_many_lines_a_deck_may_have) {
    const temp_folder here;
    EXPECT_EQ(tmpdim(all_keywords()).m_deck_lines, -1);
    EXPECT_EQ(tmpdim(all_keywords() + "M_DECK_LINES 12345\n").m_deck_lines, 12345);
}

TEST(deck_line_limit, is_5000_unless_the_file_says_otherwise_and_faults_of_the_file_are_left_to_its_reader) {
    const temp_folder here;
    EXPECT_EQ(deck_line_limit("none.in"), 5000);
    const auto limit = [](const std::string& text) {
        write_file("tmpdim.in", text);
        return deck_line_limit("tmpdim.in");
    };
    EXPECT_EQ(limit(""), 5000);
    EXPECT_EQ(limit("F_MNZ_W 4\n"), 5000);
    EXPECT_EQ(limit("# M_DECK_LINES 7\n  M_DECK_LINES = 6000\nF_MNZ_W 4\n"), 6000);
    EXPECT_EQ(limit("M_DECK_LINES 6000\nM_DECK_LINES 100\n"), 100);
    EXPECT_EQ(limit("M_DECK_LINES\n\n# none\n+ 20000\nF_MNZ_W 4\n"), 20000);
    for (const std::string broken : {"M_DECK_LINES\n", "M_DECK_LINES many\n", "+ M_DECK_LINES\n", "M_DECK_LINES 7 8\n"})
        EXPECT_EQ(limit(broken), 5000) << broken;
}
