// Whatever is done to a library's text, its reader reads it or halts.
#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "halt_throws.h"
#include "library/composite/library_dumps.h"
#include "library_texts.h"

namespace {

// Words and lines that mean something, to be put where they do not belong.
const std::vector<std::string> scraps = {"ebe",       "ece",        "callece",      "endebe",      "endece",
                                         "end_dc",    "C:",         "endC",         "begin_ac",    "ebe_ac",
                                         "name",      "type",       "model",        "a",           "b",
                                         "p",         "n",          "in",           "r",           "=",
                                         "+",         "#",          "-1",           "2147483647",  "99999999999",
                                         "1e999",     "nan",        "f_",           "f_p",         "startup",
                                         "local_var", "d_dt(q)",    "d_dt(",        "v(",          "v()",
                                         "v(p)",      "$((a)+(b))", "$(exp(a))",    "$(",          "_of_",
                                         "x_of_r1",   "nodev_of_a", "cur(p)_of_r1", "acparm_map:", "no_functions",
                                         "compiled"};

std::string damaged(const std::string& text, std::mt19937& rng) {
    std::vector<std::string> all;
    std::istringstream in(text);
    for (std::string l; std::getline(in, l);) all.push_back(l);
    const auto any = [&](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(rng); };
    for (std::size_t k = 0, n = 1 + any(3); k < n && !all.empty(); ++k) {
        std::string& l = all[any(all.size())];
        switch (any(6)) {
            case 0:
                all.erase(all.begin() + static_cast<std::ptrdiff_t>(any(all.size())));
                break;
            case 1:
                all.insert(all.begin() + static_cast<std::ptrdiff_t>(any(all.size())), all[any(all.size())]);
                break;
            case 2:
                std::swap(l, all[any(all.size())]);
                break;
            case 3:
                l += ' ' + scraps[any(scraps.size())];
                break;
            case 4: {
                const std::size_t at = l.find(' ', any(l.size() + 1));
                l = l.substr(0, at) + ' ' + scraps[any(scraps.size())] + (at < l.size() ? l.substr(at) : "");
                break;
            }
            default:
                if (!l.empty()) l[any(l.size())] = static_cast<char>(any(256));
        }
    }
    std::string joined;
    for (const std::string& l : all) joined += l + '\n';
    return joined;
}

TEST(damaged_text, of_a_basic_library_is_read_or_halts) {
    std::mt19937 rng(11);
    const std::string charges = ebe({"nodes: p n", "local_var: q", "aux_var: a", "no_functions 4"},
                                    "f_p d_dt(q)\nf_n d_dt(q)\nf_q local_var q v(p)\nf_a d_dt(a) a\n",
                                    "C:\nprototypes:\nvariables:\nsource:\nendC\nendebe\n");
    int n_read = 0;
    for (int trial = 0; trial < 3000; ++trial) {
        const std::string text = damaged(small_ebes + charges, rng);
        basic_library lib;
        glue_text glue;
        const console_run run = run_and_listen([&] {
            text_file file = text_file_of(text);
            read_library_text(file, ebes_form, trial % 2 ? &glue : nullptr, lib);
            std::ostringstream out;
            write_basic_dump(out, "ebes", lib);
        });
        n_read += !run.stopped;
        EXPECT_EQ(run.stopped, !run.text.empty());
    }
    EXPECT_GT(n_read, 100);
    EXPECT_LT(n_read, 2900);
}

TEST(damaged_text, of_a_composite_library_is_read_or_halts) {
    std::mt19937 rng(12);
    const std::string text =
        ece({"ece name=in allow_ac=yes", "mainnodes: a b", "auxnodes: m", "outvar: o=r_of_r1 w=nodev_of_m",
             "rparms: r=1 a2=2", "ind_nodes: u", "ind_branches: q"},
            "ebemodel name=m type=r r=5\nebe type=r name=r1 p=a n=m r=r\nebe model=m p=m n=b\n"
            "ebe type=sense p=a n=b cp=u cn=m br=late\nebe type=src name=late p=a n=b\n",
            {"outvar_ac: i=cur(p)_of_r1"},
            "ebe_ac type=r name=r1 p=a n=m\nebe_ac type=bias p=a n=b ac_parm_be=r1\nacparm_map: 0 1\n") +
        ece({"ece name=top", "mainnodes: a b", "outvar: x=o_of_c y=w_of_c", "rparms: k=1",
             "rparms_derived: d=$((k)+(k))"},
            "ebe type=src name=s p=a n=b\ncallece in name=c a=a b=b u=a q=s r=d\n", {},
            "callece in name=c a=a b=b r=k\n");
    const ebes_class basic = read_basic(small_ebes);
    const ebac_class basic_ac = read_basic(small_ebac, ebac_form);
    int n_read = 0;
    for (int trial = 0; trial < 3000; ++trial) {
        const std::string broken = trial == 0 ? text : damaged(text, rng);
        const console_run run = run_and_listen([&] {
            composite_library lib;
            text_file file = text_file_of(broken);
            read_composites(file, eels_form, basic, basic_ac, lib);
            for (int e = 0; e < lib.n(); ++e) {
                std::vector<double> row(static_cast<std::size_t>(lib.list.rprm.count(e)) + 1);
                eval_rprm_1(lib, e, row.data());
            }
            std::ostringstream out;
            write_composite_dump(out, "eels", lib);
            write_heels_dump(out, "heels", lib, basic);
        });
        if (trial == 0) {
            EXPECT_EQ(run.text, "");
        }
        n_read += !run.stopped;
    }
    EXPECT_GT(n_read, 100);
    EXPECT_LT(n_read, 2900);
}

}  // namespace
