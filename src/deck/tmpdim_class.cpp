#include "deck/tmpdim_class.h"

#include "run/halt.h"
#include "run/text_file.h"

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
        if (!assigned[k]) halt({line(all[k].word, " not assigned? Halting...")});
    return t;
}
