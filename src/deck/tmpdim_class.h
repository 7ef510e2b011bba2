// tmpdim_class.h -- the size limits of a run, from a file beside the deck.
#pragma once
#include <string>
#include <string_view>
#include <vector>

struct tmpdim_class {
    int m_ect_nd_tmp = -1, m_gct_vr_tmp = -1, m_dct_nd_tmp = -1, m_xct_vr_tmp = -1;
    int mnz_ebce = -1, mnz_gbce = -1, mnz_xbce = -1, mnz_ebce_ac = -1, mnz_gbce_ac = -1, mnz_xbce_ac = -1;
    int f_mnz_w = -1;
    int m_matttlop2 = -1, m_matttlop3 = -1;
    int m_deck_lines = -1;  // physical lines of the deck; -1: not given
    int m_average_mv_gbe = -1, m_rms_mv_gbe = -1, m_average_mv_xbe = -1, m_rms_mv_xbe = -1;
};

// One row per keyword, in the order in which a missing one is reported. `generous` is what the front end writes.
struct tmpdim_word {
    std::string_view word;
    int tmpdim_class::*member;
    int generous;
    bool needed = true;  // false: it may be left out
};
inline constexpr std::string_view deck_lines_word = "M_DECK_LINES";
const std::vector<tmpdim_word>& tmpdim_words();

tmpdim_class generous_tmpdim();
tmpdim_class read_tmpdim(const std::string& path);

// How many lines a deck may have: M_DECK_LINES of the file, or the usual number. The deck is read first and its faults
// show first, so a file that is missing or broken is none here; read_tmpdim will tell.
int deck_line_limit(const std::string& path);
