#include "deck/tmpdim_class.h"

#include <charconv>

#include "base/halt.h"
#include "base/text_file.h"
#include "deck/file_chr.h"

const std::vector<tmpdim_word>& tmpdim_words() {
    using t = tmpdim_class;
    static const std::vector<tmpdim_word> all = {
        {"M_ECT_ND_TMP", &t::m_ect_nd_tmp, 1000000},
        {"M_GCT_VR_TMP", &t::m_gct_vr_tmp, 1000000},
        {"M_DCT_ND_TMP", &t::m_dct_nd_tmp, 1000000},
        {"M_XCT_VR_TMP", &t::m_xct_vr_tmp, 1000000},
        {"MNZ_EBCE", &t::mnz_ebce, 10000000},
        {"MNZ_GBCE", &t::mnz_gbce, 10000000},
        {"MNZ_XBCE", &t::mnz_xbce, 10000000},
        {"MNZ_EBCE_AC", &t::mnz_ebce_ac, 10000000},
        {"MNZ_GBCE_AC", &t::mnz_gbce_ac, 10000000},
        {"MNZ_XBCE_AC", &t::mnz_xbce_ac, 10000000},
        {"F_MNZ_W", &t::f_mnz_w, 100},
        {"M_MATTTLOP2", &t::m_matttlop2, 1000000000},
        {"M_MATTTLOP3", &t::m_matttlop3, 1000000000},
        {"M_AVERAGE_MV_GBE", &t::m_average_mv_gbe, 10000},
        {"M_RMS_MV_GBE", &t::m_rms_mv_gbe, 10000},
        {"M_AVERAGE_MV_XBE", &t::m_average_mv_xbe, 10000},
        {"M_RMS_MV_XBE", &t::m_rms_mv_xbe, 10000},
        {deck_lines_word, &t::m_deck_lines, usual_deck_lines, false},
    };
    return all;
}

tmpdim_class generous_tmpdim() {
    tmpdim_class t;
    for (const tmpdim_word& w : tmpdim_words()) t.*w.member = w.generous;
    return t;
}

tmpdim_class read_tmpdim(const std::string& path) {
    text_file file = open_text_file(path, "tmpdim_class");
    const std::vector<tmpdim_word>& all = tmpdim_words();
    tmpdim_class t;
    std::vector<char> assigned(all.size(), 0);
    words w;
    while (next_line(file, w)) {
        if (w.size() != 2) halt({"tmpdim_class: number of words must be 2.", "   Halting..."});
        std::size_t k = 0;
        while (k < all.size() && all[k].word != w[0]) ++k;
        if (k == all.size()) halt({"tmpdim_class: wrong keyword.", line("   string is: ", w[0]), "   Halting..."});
        t.*all[k].member = chr_to_int(w[1]);
        assigned[k] = 1;
    }
    for (std::size_t k = 0; k < all.size(); ++k)
        if (!assigned[k] && all[k].needed) halt({line(all[k].word, " not assigned? Halting...")});
    return t;
}

int deck_line_limit(const std::string& path) {
    int limit = usual_deck_lines;
    text_file file;
    if (!read_text_file(path, file)) return limit;
    words w;
    const auto take = [&] {
        if (w.size() != 2 || w[0] != deck_lines_word) return;
        int value = 0;
        if (std::from_chars(w[1].data(), w[1].data() + w[1].size(), value).ec == std::errc{}) limit = value;
    };
    for (const std::string& line : file.lines) {
        const std::size_t begin = line.find_first_not_of(" \t");
        if (begin == std::string::npos || line[begin] == '#') continue;
        const bool continues = line[begin] == '+';
        if (!continues) {
            take();
            w.clear();
        }
        add_words(std::string_view(line).substr(begin + (continues ? 1 : 0)), w);
    }
    take();
    return limit;
}
