// Mixed composites: what their calls become.
#include <gtest/gtest.h>

#include <sstream>

#include "library/composite/library_dumps.h"
#include "mixed_texts.h"

namespace {

template <class T>
std::vector<T> row(const row_table<T>& table, int i) {
    return {table.row(i), table.row(i) + table.size(i)};
}
using ints = std::vector<int>;
using doubles = std::vector<double>;

// A call of each domain, with parameters of all sorts.
const std::string full =
    gme({"gme name=full allow_ac=yes", "mainnodes_anlg: a b", "auxnodes_anlg: m", "stparms_anlg: ua=1",
         "igparms_anlg: ga=2", "main_var: x", "aux_var: z", "iparms: n=3", "sparms: t=text", "rparms: r=4",
         "rparms_derived: r2=$((r)*(2))", "mainnodes_dgtl: d", "auxnodes_dgtl: q", "stparms_dgtl: ud=5",
         "igparms_dgtl: gd=6", "outvar_anlg: vm=nodev_of_m z=var_of_z v=v_of_ra w=w_of_ra k=k_of_l",
         "outvar_dgtl: q=dvar_of_q s=st_of_c", "outvar_ac: vm_ac=nodev_of_m z_ac=var_of_z i_ac=i_ac_of_ra"},
        "callece r name=ra p=a n=m r=r2 k=7 mode=n label=t\n"
        "calldce gate name=c a=d y=q x=m td=r st=ud y_ig=gd\n"
        "callgce lag name=l x=x y=z k=r y0=ua y_ig=ga\n"
        "callece src p=m n=b u0=ua\n");

TEST(gmes_class, a_call_of_each_domain_is_a_row_of_the_flat_list) {
    const gmes_class lib = read_mixed_text(full);
    EXPECT_EQ(lib.n(), 1);
    EXPECT_EQ(lib.flag.allow_ac, ints{1});
    const element_table& be = lib.be;
    ASSERT_EQ(be.n_be(0), 4);
    EXPECT_EQ(be.library, (ints{lib_eels, lib_dels, lib_gels, lib_eels}));
    EXPECT_EQ(be.i_be, (ints{0, 0, 0, 1}));
    EXPECT_EQ(be.name, (std::vector<std::string>{"ra", "c", "l", "src.3"}));
    // Main names first, then internal ones.
    EXPECT_EQ(row(be.node, 0), (ints{0, 2}));
    EXPECT_EQ(row(be.node, 3), (ints{2, 1}));
    EXPECT_EQ(row(be.dgtl, 1), (ints{0, 1}));
    EXPECT_EQ(row(be.in, 1), (ints{2}));
    EXPECT_EQ(row(be.in_flag, 1), (ints{-1}));
    EXPECT_EQ(row(be.vr, 2), (ints{0, 1}));
    for (const row_table<int>* table : {&be.node, &be.dgtl, &be.vr, &be.in, &be.ib, &be.iprm, &be.sv_flag})
        EXPECT_EQ(table->n_rows(), 4);
}

TEST(gmes_class, a_value_links_to_a_parameter_or_is_fixed_or_left_at_the_callees_default) {
    const element_table be = read_mixed_text(full).be;
    EXPECT_EQ(row(be.rprm_flag, 0), (ints{1, -1}));  // r=r2, k=7
    EXPECT_EQ(row(be.rprm, 0)[1], 7);
    EXPECT_EQ(row(be.iprm_flag, 0), (ints{0}));
    EXPECT_EQ(row(be.sprm_flag, 0), (ints{0}));
    EXPECT_EQ(row(be.rprm_flag, 1), (ints{0}));
    EXPECT_EQ(row(be.iprm_flag, 1), (ints{left_at_default}));
    EXPECT_EQ(row(be.iprm, 1), (ints{1}));
    EXPECT_EQ(row(be.ig_flag, 3), (ints{left_at_default}));
    EXPECT_EQ(row(be.ig, 3), (doubles{0.5}));
}

TEST(gmes_class, start_values_of_digital_calls_are_those_of_the_digital_lists) {
    const gmes_class lib = read_mixed_text(full);
    // Behind the analog ones in one list.
    EXPECT_EQ(lib.list.sv.word(0, 0), "ua");
    EXPECT_EQ(lib.list.sv.word(0, 1), "ud");
    EXPECT_EQ(lib.n_sv, ints{1});
    EXPECT_EQ(row(lib.be.sv_flag, 1), ints{1});
    EXPECT_EQ(row(lib.be.ig_flag, 1), ints{1});
    EXPECT_EQ(row(lib.be.sv_flag, 2), ints{0});
    EXPECT_EQ(row(lib.be.sv_flag, 3), ints{0});
    EXPECT_EQ(row(lib.be.sv, 1), doubles{5});
    // Each domain knows its own list alone: the other's word is no number.
    for (const std::string call : {"calldce gate a=d y=d x=a st=ua\n", "callgce lag x=x y=x y0=ud\n"}) {
        const std::string text =
            gme({"mainnodes_anlg: a", "main_var: x", "mainnodes_dgtl: d", "stparms_anlg: ua=1", "stparms_dgtl: ud=1"},
                call);
        EXPECT_ANY_THROW(read_mixed_text(text)) << call;
    }
}

TEST(gmes_class, outputs_are_those_of_names_or_of_calls) {
    const gmes_class lib = read_mixed_text(full);
    EXPECT_EQ(lib.ov.kind, (ints{ov_nodev, ov_var, ov_rparm_ebe, ov_pwr_elec, ov_rparm_gbe}));
    EXPECT_EQ(lib.ov.be, (ints{-1, -1, 0, 0, 2}));
    EXPECT_EQ(lib.ov.index, (ints{2, 1, 1, -1, 0}));
    EXPECT_EQ(lib.ovd.kind, (ints{ov_dvar, ov_dstate}));
    EXPECT_EQ(lib.ovd.be, (ints{-1, 1}));
    EXPECT_EQ(lib.ovd.index[0], 1);
    EXPECT_EQ(lib.ovac.kind, (ints{ov_nodev_ac, ov_var_ac, ov_cur_ac}));
    EXPECT_EQ(lib.ovac.be, (ints{-1, -1, 0}));
}

TEST(gmes_class, a_model_line_gives_whole_and_real_numbers_and_words_of_the_call_beat_it) {
    const element_table be = read_mixed_text(gme({"mainnodes_anlg: a b", "rparms: r=4"},
                                                 "ecemodel name=m type=r r=r k=8 mode=9 label=no unknown=1\n"
                                                 "callece r model=m p=a n=b\ncallece r model=m p=a n=b r=5\n"))
                                 .be;
    EXPECT_EQ(row(be.rprm_flag, 0), (ints{0, -1}));
    EXPECT_EQ(row(be.rprm, 0), (doubles{4, 8}));
    EXPECT_EQ(row(be.iprm, 0), ints{9});
    EXPECT_EQ(row(be.sprm, 0), std::vector<std::string>{"none"});
    EXPECT_EQ(row(be.rprm_flag, 1), (ints{-1, -1}));
    EXPECT_EQ(row(be.rprm, 1), (doubles{5, 8}));
}

TEST(gmes_class, a_branch_is_a_call_before_or_behind_the_one_that_senses_it) {
    const element_table be =
        read_mixed_text(gme({"mainnodes_anlg: a b"},
                            "callece sense p=a n=b cp=a cn=b br=late\ncallece src name=early p=a n=b\n"
                            "callece sense p=a n=b cp=a cn=b br=early\ncallece src name=late p=a n=b\n"))
            .be;
    EXPECT_EQ(row(be.ib, 0), ints{3});
    EXPECT_EQ(row(be.ib, 2), ints{1});
}

TEST(gmes_class, the_calls_of_a_nested_composite_are_copied_with_its_internal_names) {
    const std::string half = gme(
        {"gme name=half", "mainnodes_anlg: a b", "auxnodes_anlg: m", "main_var: x", "aux_var: z", "mainnodes_dgtl: d",
         "auxnodes_dgtl: q", "rparms: r=4 k=2", "stparms_anlg: ua=1", "stparms_dgtl: ud=1",
         "outvar_anlg: vm=nodev_of_m z=var_of_z v=v_of_ra", "outvar_dgtl: q=dvar_of_q s=st_of_c",
         "outvar_ac: vm=nodev_of_m"},
        "callece r name=ra p=a n=m r=r k=9\ncallece src name=s p=m n=b u0=ua\ncallece sense p=a n=b cp=m cn=b br=s\n"
        "callgce lag x=x y=z k=k\ncalldce gate name=c a=d y=q x=m st=ud\n");
    const gmes_class lib = read_mixed_text(
        half +
        gme({"mainnodes_anlg: p n", "auxnodes_anlg: own", "main_var: u", "mainnodes_dgtl: e", "rparms: rr=5",
             "stparms_anlg: ua1=0 ua2=3", "stparms_dgtl: ud1=0 ud2=1", "outvar_anlg: v1=vm_of_h v2=v_of_h z1=z_of_h",
             "outvar_dgtl: q1=q_of_h s1=s_of_h", "outvar_ac: v1=vm_of_h"},
            "callece r name=rx p=p n=own\ncallgme half name=h a=own b=n x=u d=e r=rr ua=ua2 ud=ud2\n"
            "callgme half a=p b=n x=u d=e\n"));
    const element_table& be = lib.be;
    ASSERT_EQ(be.n_be(1), 11);
    const int first = be.first_be[1] + 1, second = first + 5;
    EXPECT_EQ(be.name[static_cast<std::size_t>(first)], "h.ra");
    EXPECT_EQ(be.name[static_cast<std::size_t>(first) + 2], "h.sense.2");
    EXPECT_EQ(be.name[static_cast<std::size_t>(second)], "half.6.ra");
    EXPECT_EQ(be.nested[static_cast<std::size_t>(first) - 1], 0);
    EXPECT_EQ(be.nested[static_cast<std::size_t>(first)], 1);
    // Nodes p n own, then an m of each copy; variables u, then two z; digital e, then two q.
    EXPECT_EQ(row(be.node, first), (ints{2, 3}));
    EXPECT_EQ(row(be.node, second), (ints{0, 4}));
    EXPECT_EQ(row(be.in, first + 2), (ints{3, 1}));
    EXPECT_EQ(row(be.vr, first + 3), (ints{0, 1}));
    EXPECT_EQ(row(be.vr, second + 3), (ints{0, 2}));
    EXPECT_EQ(row(be.dgtl, second + 4), (ints{0, 2}));
    EXPECT_EQ(row(be.in, second + 4), (ints{4}));
    // The sensed branch is the copy's own source.
    EXPECT_EQ(row(be.ib, first + 2), (ints{2}));
    EXPECT_EQ(row(be.ib, second + 2), (ints{7}));
    // Linked to the caller's parameter, fixed by the callee, fixed at the callee's default.
    EXPECT_EQ(row(be.rprm_flag, first), (ints{0, -1}));
    EXPECT_EQ(row(be.rprm, first), (doubles{5, 9}));
    EXPECT_EQ(row(be.rprm_flag, second), (ints{-1, -1}));
    EXPECT_EQ(row(be.rprm, second), (doubles{4, 9}));
    EXPECT_EQ(row(be.sv_flag, first + 1), ints{1});
    EXPECT_EQ(row(be.sv, first + 1), doubles{3});
    EXPECT_EQ(row(be.sv_flag, first + 4), ints{3});
    EXPECT_EQ(row(be.sv, first + 4), doubles{1});
    EXPECT_EQ(row(be.sv_flag, second + 4), ints{-1});
    // Outputs of names go to the caller's numbers, those of calls to the copied rows.
    const auto at = [](const output_table& t, int j) { return static_cast<std::size_t>(t.at(1, j)); };
    EXPECT_EQ(lib.ov.be[at(lib.ov, 0)], -1);
    EXPECT_EQ(lib.ov.index[at(lib.ov, 0)], 3);
    EXPECT_EQ(lib.ov.be[at(lib.ov, 1)], 1);
    EXPECT_EQ(lib.ov.kind[at(lib.ov, 1)], ov_rparm_ebe);
    EXPECT_EQ(lib.ov.index[at(lib.ov, 2)], 1);
    EXPECT_EQ(lib.ovd.index[at(lib.ovd, 0)], 1);
    EXPECT_EQ(lib.ovd.be[at(lib.ovd, 1)], 5);
    EXPECT_EQ(lib.ovac.index[at(lib.ovac, 0)], 3);
}

TEST(gmes_class, an_empty_library_and_an_empty_composite_are_good) {
    EXPECT_EQ(read_mixed_text("").n(), 0);
    EXPECT_EQ(read_mixed_text(gme({})).be.n_be(0), 0);
}

TEST(gmes_dump, it_tells_totals_and_the_called_composites_of_each_domain) {
    std::ostringstream out;
    write_composite_dump(out, "gmes", read_mixed_text(full));
    const std::string text = out.str();
    std::string totals;
    for (const char* total :
         {"gmes_class\nn = 1\n", "n_ttliprm = 1\n",     "n_ttlsprm = 1\n",     "n_ttlrprm = 2\n",
          "n_ttlsva = 1\n",      "n_ttliga = 1\n",      "n_ttlsvd = 1\n",      "n_ttligd = 1\n",
          "n_ttlova = 5\n",      "n_ttlovd = 2\n",      "n_ttlmnda = 2\n",     "n_ttlmndd = 1\n",
          "n_ttlmvr = 1\n",      "n_ttlnda_one = 3\n",  "n_ttlndd_one = 2\n",  "n_ttlvr_one = 2\n",
          "n_ece_ttl = 2\n",     "n_ece_ttlnd = 4\n",   "n_ece_ttlsv = 1\n",   "n_ece_ttlig = 1\n",
          "n_ece_ttlin = 0\n",   "n_ece_ttlib = 0\n",   "n_ece_ttldgtl = 0\n", "n_ece_ttlvr = 0\n",
          "n_ece_ttliprm = 1\n", "n_ece_ttlsprm = 1\n", "n_ece_ttlrprm = 4\n", "n_dce_ttl = 1\n",
          "n_dce_ttlnd = 2\n",   "n_dce_ttlanlg = 1\n", "n_dce_ttliprm = 1\n", "n_dce_ttlsprm = 0\n",
          "n_dce_ttlrprm = 1\n", "n_dce_ttlsv = 1\n",   "n_dce_ttlig = 1\n",   "n_gce_ttl = 1\n",
          "n_gce_ttlvr = 2\n",   "n_gce_ttlsv = 1\n",   "n_gce_ttlig = 1\n",   "n_gce_ttliprm = 0\n",
          "n_gce_ttlsprm = 0\n", "n_gce_ttlrprm = 1\n"})
        totals += total;
    EXPECT_EQ(text.substr(0, totals.size()), totals);
    EXPECT_NE(text.find("  i = 0, name = full, nnda = 2, ttlnda = 3, nndd = 1, ttlndd = 2, nvr = 1, ttlvr = 2, "
                        "n_ece = 2, n_dce = 1, n_gce = 1, flag_allow_ac = 1\n"),
              std::string::npos);
    EXPECT_NE(text.find("    i_gmesece = 1, i_eels = 1, name = src.3\n"), std::string::npos);
    EXPECT_NE(text.find("    i_gmesdce = 0, i_dels = 0, name = c\n"), std::string::npos);
    EXPECT_NE(text.find("    i_gmesgce = 0, i_gels = 0, name = l\n"), std::string::npos);
}

}  // namespace
