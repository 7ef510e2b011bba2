// Composites expanded to flat element lists.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "halt_throws.h"
#include "library/composite/library_dumps.h"
#include "library_texts.h"

namespace {

template <class T>
std::vector<T> row(const row_table<T>& table, int i) {
    return {table.row(i), table.row(i) + table.size(i)};
}
std::vector<std::string> names(const words& w) {
    std::vector<std::string> all;
    for (int i = 0; i < w.size(); ++i) all.push_back(w.str(i));
    return all;
}

// Two resistors in a row from a to b with an inner node m, and a source across them.
const std::string divider = ece(
    {"ece name=divider allow_ac=yes", "mainnodes: a b", "auxnodes: m",
     "outvar: vm=nodev_of_m i=cur(n)_of_rb u=u_of_s is=i_of_s md=mode_of_ra p=pwr_elec_of_all", "bias: vo=v_o_of_rb",
     "stparms: u0=7", "igparms: g0=8", "iparms: m0=5", "sparms: lab=zz", "rparms: r=3 2=9", "rparms_derived:"},
    "ebe type=r name=ra p=a n=m r=r mode=m0 label=lab\n"
    "ebe type=r name=rb p=m n=b r=2 k=4\n"
    "ebe type=src name=s p=a n=b u=2.5 u0=u0 v_ig=g0\n",
    {"outvar_ac: ia=cur(p)_of_rb va=nodev_of_m ib=i_of_d"},
    "ebe_ac type=r name=ra p=a n=m r=r\n"
    "ebe_ac type=r name=rb p=m n=b\n"
    "ebe_ac type=bias name=d p=m n=b ac_parm_be=rb\nacparm_map: 0 2\nacparm_map: 1 1\n");

TEST(eels_class, gives_every_element_its_nodes_in_the_composites_numbers) {
    const eels_class lib = read_composite_text(divider);
    ASSERT_EQ(lib.n(), 1);
    EXPECT_EQ(lib.n_nd(0), 2);
    EXPECT_EQ(lib.n_ttlnd(0), 3);
    ASSERT_EQ(lib.be.n_be(0), 3);
    EXPECT_EQ(lib.be.i_be, (std::vector<int>{0, 0, 1}));
    EXPECT_EQ(row(lib.be.node, 0), (std::vector<int>{0, 2}));
    EXPECT_EQ(row(lib.be.node, 1), (std::vector<int>{2, 1}));
    EXPECT_EQ(row(lib.be.node, 2), (std::vector<int>{0, 1}));
}

TEST(eels_class, passes_over_flag_words_of_blocks_like_over_any_unknown_one) {
    const eels_class lib = read_composite_text(
        ece({"ece name=x postprocessor=yes nothing=yes allow_ac=yes", "mainnodes: a b", "outvar: u=nodev_of_a"},
            "ebe type=r name=ra p=a n=b\n") +
        ece({"ece name=y postprocessor_ac", "mainnodes: a b", "outvar: u=v_o_of_ra"}, "ebe type=r name=ra p=a n=b\n"));
    EXPECT_EQ(lib.flag.postprocessor, (std::vector<int>{0, 0}));
    EXPECT_EQ(lib.flag.postprocessor_ac, (std::vector<int>{0, 0}));
    EXPECT_EQ(lib.flag.allow_ac, (std::vector<int>{1, 0}));
    EXPECT_EQ(lib.ov.kind, (std::vector<int>{ov_nodev, ov_rparm_ebe}));
}

TEST(eels_class, links_a_parameter_to_the_name_of_one_of_its_own_even_if_it_reads_as_a_number) {
    const eels_class lib = read_composite_text(divider);
    EXPECT_EQ(row(lib.be.rprm_flag, 0), (std::vector<int>{0, -1, -1}));
    EXPECT_EQ(row(lib.be.rprm_flag, 1), (std::vector<int>{1, -1, -1}));  // r=2 is the parameter named 2
    EXPECT_EQ(lib.be.rprm.row(1)[2], 4.0);
    EXPECT_EQ(lib.be.rprm.row(0)[2], 1.0);  // the element's default
    EXPECT_EQ(row(lib.be.rprm_flag, 2), (std::vector<int>{-1, -1}));
    EXPECT_EQ(lib.be.rprm.row(2)[0], 2.5);
    EXPECT_EQ(row(lib.be.iprm_flag, 0), (std::vector<int>{0}));
    EXPECT_EQ(row(lib.be.iprm_flag, 1), (std::vector<int>{-1}));
    EXPECT_EQ(lib.be.iprm.row(1)[0], 2);
    EXPECT_EQ(row(lib.be.sprm_flag, 0), (std::vector<int>{0}));
    EXPECT_EQ(row(lib.be.sv_flag, 2), (std::vector<int>{0}));
    EXPECT_EQ(row(lib.be.ig_flag, 2), (std::vector<int>{0}));
}

TEST(eels_class, numbers_outputs_over_the_concatenated_lists_of_its_elements) {
    const eels_class lib = read_composite_text(divider);
    EXPECT_EQ(lib.ov.kind, (std::vector<int>{ov_nodev, ov_cur, ov_rparm_ebe, ov_aux, ov_iparm_ebe, ov_pwr_elec}));
    EXPECT_EQ(lib.ov.be, (std::vector<int>{-1, 1, 2, 2, 0, -1}));
    EXPECT_EQ(lib.ov.index, (std::vector<int>{2, 3, 6, 0, 0, -1}));
    EXPECT_EQ(lib.bias.kind, (std::vector<int>{ov_rparm_ebe}));
    EXPECT_EQ(lib.bias.index, (std::vector<int>{4}));
    EXPECT_EQ(lib.bias.be, (std::vector<int>{1}));
}

TEST(eels_class, the_small_signal_half_has_kinds_and_numbers_of_its_own) {
    const eels_class lib = read_composite_text(divider);
    EXPECT_EQ(lib.beac.n_be(0), 3);
    EXPECT_EQ(lib.beac.i_be, (std::vector<int>{0, 0, 1}));
    EXPECT_EQ(lib.ovac.kind, (std::vector<int>{ov_cur_ac, ov_nodev_ac, ov_aux_ac}));
    EXPECT_EQ(lib.ovac.index, (std::vector<int>{2, 2, 0}));
    EXPECT_EQ(lib.ovac.be, (std::vector<int>{1, -1, 2}));
    EXPECT_EQ(lib.beac.acprm_be, (std::vector<int>{-1, -1, 1}));
    EXPECT_EQ(lib.beac.iprm.row(2)[0], 1);
    EXPECT_EQ(row(lib.beac.acparm_map, 2), (std::vector<int>{1, 0}));
    EXPECT_EQ(row(lib.beac.acparm_map, 0), (std::vector<int>{-1, -1}));
    EXPECT_EQ(lib.flag.allow_ac, (std::vector<int>{1}));
}

TEST(eels_class, a_call_copies_the_callees_elements_with_nodes_parameters_and_outputs_translated) {
    const eels_class lib =
        read_composite_text(divider + ece({"ece name=top allow_ac=yes", "mainnodes: x y", "auxnodes: z",
                                           "outvar: o1=vm_of_d2 o2=i_of_d2 o3=is_of_d2 o4=md_of_d2 o5=p_of_d2",
                                           "bias: b=vo_of_d2", "rparms: rr=1 q=2"},
                                          "ebe type=src name=s0 p=x n=z\n"
                                          "callece divider name=d1 a=x b=z r=rr 2=11\n"
                                          "callece divider name=d2 a=z b=y r=6\n",
                                          {"outvar_ac: oa=va_of_d2 ob=ia_of_d2"},
                                          "callece divider name=d2 a=z b=y r=q\ncallece divider name=d1 a=x b=z\n"));
    ASSERT_EQ(lib.n(), 2);
    EXPECT_EQ(lib.be.n_be(1), 7);
    EXPECT_EQ(lib.n_ttlnd(1), 5);
    const int e = lib.be.first_be[1];
    EXPECT_EQ(row(lib.be.node, e + 1), (std::vector<int>{0, 3}));  // ra of d1: x to its own m
    EXPECT_EQ(row(lib.be.node, e + 2), (std::vector<int>{3, 2}));
    EXPECT_EQ(row(lib.be.node, e + 4), (std::vector<int>{2, 4}));  // ra of d2: z to its own m
    EXPECT_EQ(row(lib.be.node, e + 6), (std::vector<int>{2, 1}));
    EXPECT_EQ(lib.be.rprm_flag.row(e + 1)[0], 0);  // r=rr links to the caller
    EXPECT_EQ(lib.be.rprm_flag.row(e + 2)[0], -1);
    EXPECT_EQ(lib.be.rprm.row(e + 2)[0], 11.0);  // 2=11 is fixed
    EXPECT_EQ(lib.be.rprm_flag.row(e + 4)[0], -1);
    EXPECT_EQ(lib.be.rprm.row(e + 4)[0], 6.0);
    EXPECT_EQ(lib.be.rprm.row(e + 5)[0], 9.0);  // the callee's default
    EXPECT_EQ(lib.be.iprm.row(e + 1)[0], 5);
    EXPECT_EQ(lib.be.iprm_flag.row(e + 1)[0], -1);
    EXPECT_EQ(lib.be.sprm.row(e + 1)[0], "zz");
    EXPECT_EQ(lib.be.sv.row(e + 3)[0], 7.0);
    EXPECT_EQ(lib.be.ig.row(e + 3)[0], 8.0);

    // Before d2 stand s0 (2 terminals, 2 rparms, 1 aux, 0 iparms) and d1 (6 terminals, 8 rparms, 1 aux, 2 iparms).
    const auto at = [&](int j) { return static_cast<std::size_t>(lib.ov.at(1, j)); };
    EXPECT_EQ(lib.ov.kind[at(0)], ov_nodev);
    EXPECT_EQ(lib.ov.index[at(0)], 4);
    EXPECT_EQ(lib.ov.index[at(1)], 8 + 3);
    EXPECT_EQ(lib.ov.be[at(1)], 4 + 1);
    EXPECT_EQ(lib.ov.index[at(2)], 2 + 0);
    EXPECT_EQ(lib.ov.index[at(3)], 2 + 0);
    EXPECT_EQ(lib.ov.kind[at(4)], ov_pwr_elec);
    EXPECT_EQ(lib.bias.index[1], 10 + 4);

    // The calls of the small-signal half stand in another order and find their own call by name.
    const int a = lib.beac.first_be[1];
    EXPECT_EQ(row(lib.beac.node, a), (std::vector<int>{2, 4}));
    EXPECT_EQ(row(lib.beac.node, a + 3), (std::vector<int>{0, 3}));
    EXPECT_EQ(lib.beac.acprm_be[static_cast<std::size_t>(a + 2)], 4 + 1);
    EXPECT_EQ(lib.beac.iprm.row(a + 2)[0], 4 + 1);
    EXPECT_EQ(lib.beac.acprm_be[static_cast<std::size_t>(a + 5)], 1 + 1);
    EXPECT_EQ(row(lib.beac.acparm_map, a + 2), (std::vector<int>{-1, 1}));  // 0 <- "2", fixed at 9; 1 <- r <- q
    EXPECT_EQ(lib.beac.rprm.row(a + 2)[0], 9.0);
    EXPECT_EQ(lib.beac.rprm_flag.row(a)[0], 1);
    const auto ac = [&](int j) { return static_cast<std::size_t>(lib.ovac.at(1, j)); };
    EXPECT_EQ(lib.ovac.index[ac(0)], 4);
    EXPECT_EQ(lib.ovac.kind[ac(0)], ov_nodev_ac);
    EXPECT_EQ(lib.ovac.index[ac(1)], 2);
}

TEST(eels_class, unnamed_calls_of_the_small_signal_half_pair_by_their_order) {
    const eels_class lib = read_composite_text(divider + ece({"ece name=top", "mainnodes: x y"},
                                                             "callece divider a=x b=y\ncallece divider a=y b=x\n", {},
                                                             "callece divider a=x b=y\ncallece divider a=y b=x\n"));
    const int a = lib.beac.first_be[1];
    EXPECT_EQ(row(lib.beac.node, a), (std::vector<int>{0, 2}));
    EXPECT_EQ(row(lib.beac.node, a + 3), (std::vector<int>{1, 3}));
}

TEST(eels_class, internal_nodes_of_a_callee_have_no_name_in_the_caller) {
    EXPECT_HALT(read_composite_text(
                    divider + ece({"ece name=top", "mainnodes: x y"}, "callece divider a=x b=y\nebe type=r p=m n=y\n")),
                not_in_list("m", "eels_ebe: aux node not found."));
}

TEST(eels_class, a_sensed_branch_is_an_element_before_or_after_or_a_name_of_the_composite) {
    const eels_class lib = read_composite_text(ece({"mainnodes: a b", "ind_nodes: far", "ind_branches: out"},
                                                   "ebe type=src name=s1 p=a n=b\n"
                                                   "ebe type=sense p=a n=b cp=a cn=far br=s1\n"
                                                   "ebe type=sense p=a n=b cp=far cn=b br=s2\n"
                                                   "ebe type=sense p=a n=b cp=a cn=b br=out\n"
                                                   "ebe type=sense p=a n=b cp=a cn=b br=never\n"
                                                   "ebe type=src name=s2 p=a n=b\n"
                                                   "ebe type=src name=s1 p=a n=b\n"));
    EXPECT_EQ(row(lib.be.ib, 1), (std::vector<int>{0}));  // the first of two elements of one name
    EXPECT_EQ(row(lib.be.ib_flag, 1), (std::vector<int>{-1}));
    EXPECT_EQ(row(lib.be.ib, 2), (std::vector<int>{5}));
    EXPECT_EQ(row(lib.be.ib_flag, 2), (std::vector<int>{-1}));
    EXPECT_EQ(row(lib.be.ib, 3), (std::vector<int>{0}));
    EXPECT_EQ(row(lib.be.ib_flag, 3), (std::vector<int>{0}));
    EXPECT_EQ(row(lib.be.ib_flag, 4), (std::vector<int>{-2}));
    EXPECT_EQ(row(lib.be.in, 1), (std::vector<int>{0, 0}));
    EXPECT_EQ(row(lib.be.in_flag, 1), (std::vector<int>{-1, 0}));
}

TEST(eels_class, sensed_names_of_a_callee_are_connected_by_its_call) {
    const std::string probe = ece({"ece name=probe", "mainnodes: a", "ind_nodes: u w", "ind_branches: br"},
                                  "ebe type=src name=own p=a n=a\n"
                                  "ebe type=sense p=a n=a cp=u cn=w br=br\n"
                                  "ebe type=sense p=a n=a cp=u cn=a br=own\n");
    const eels_class lib =
        read_composite_text(probe + ece({"ece name=top", "mainnodes: x y", "ind_nodes: far"},
                                        "ebe type=src name=s p=x n=y\ncallece probe a=x u=y w=far br=s\n"));
    const int e = lib.be.first_be[1];
    EXPECT_EQ(row(lib.be.in, e + 2), (std::vector<int>{1, 0}));
    EXPECT_EQ(row(lib.be.in_flag, e + 2), (std::vector<int>{-1, 0}));
    EXPECT_EQ(row(lib.be.ib, e + 2), (std::vector<int>{0}));
    EXPECT_EQ(row(lib.be.ib, e + 3), (std::vector<int>{1}));  // the callee's own element, now the caller's second
    EXPECT_EQ(row(lib.be.ib_flag, e + 3), (std::vector<int>{-1}));
}

TEST(eels_class, digital_nodes_and_variables_are_connected_by_element_and_call) {
    const std::string inner =
        ece({"ece name=inner", "mainnodes: a", "digital_nodes: d0 d1", "main_var: v0 v1", "xvar: x0"},
            "ebe type=mix a=a s=d1 g=v1 xg=x0\n");
    const eels_class lib = read_composite_text(
        inner + ece({"ece name=top", "mainnodes: a", "digital_nodes: k l m", "main_var: k l m", "xvar: k l m"},
                    "callece inner a=a d0=k d1=m v0=k v1=l x0=m\n"));
    EXPECT_EQ(row(lib.be.dgtl, 0), (std::vector<int>{1}));
    EXPECT_EQ(row(lib.be.dgtl, 1), (std::vector<int>{2}));
    EXPECT_EQ(row(lib.be.vr, 1), (std::vector<int>{1}));
    EXPECT_EQ(row(lib.be.xvr, 1), (std::vector<int>{2}));
}

TEST(eels_class, model_lines_give_parameters_that_the_statements_own_words_beat) {
    const eels_class lib = read_composite_text(ece({"mainnodes: a b", "iparms: im=9", "rparms: rm=1 other=2"},
                                                   "ebemodel name=m1 type=r r=50 k=rm mode=im nothing=5\n"
                                                   "ebe model=m1 p=a n=b\n"
                                                   "ebe model=m1 type=r p=a n=b r=60\n"
                                                   "ebe type=r p=a n=b\n"));
    EXPECT_EQ(row(lib.be.rprm, 0)[0], 50.0);
    EXPECT_EQ(row(lib.be.rprm_flag, 0), (std::vector<int>{-1, -1, 0}));
    EXPECT_EQ(row(lib.be.iprm_flag, 0), (std::vector<int>{0}));
    EXPECT_EQ(row(lib.be.rprm, 1)[0], 60.0);
    EXPECT_EQ(row(lib.be.rprm, 2)[0], 1.0);
}

TEST(eels_class, a_model_line_of_a_call_gives_the_callees_parameters) {
    const eels_class lib = read_composite_text(divider + ece({"ece name=top", "mainnodes: x y"},
                                                             "ecemodel name=m type=divider r=77 m0=3\n"
                                                             "callece divider model=m a=x b=y\n"
                                                             "callece divider model=m a=x b=y r=78\n"));
    const int e = lib.be.first_be[1];
    EXPECT_EQ(lib.be.rprm.row(e)[0], 77.0);
    EXPECT_EQ(lib.be.iprm.row(e)[0], 3);
    EXPECT_EQ(lib.be.rprm.row(e + 3)[0], 78.0);
}

TEST(eels_class, a_node_may_be_called_like_a_key) {
    const eels_class lib = read_composite_text(ece({"mainnodes: type n"}, "ebe type=r p=type n=n\n"));
    EXPECT_EQ(row(lib.be.node, 0), (std::vector<int>{0, 1}));
}

TEST(eels_class, a_composite_without_nodes_and_elements_is_allowed) {
    const eels_class lib = read_composite_text(ece({}));
    EXPECT_EQ(lib.be.n_be(0), 0);
    EXPECT_EQ(lib.beac.n_be(0), 0);
}

TEST(eels_class, a_sensed_node_counts_as_connected) {
    EXPECT_EQ(
        read_composite_text(ece({"mainnodes: a b c", "ind_branches: z"}, "ebe type=sense p=a n=b cp=c cn=a br=z\n"))
            .n(),
        1);
}

TEST(eels_class, code_sections_are_skipped_in_both_forms) {
    std::string with_compiled = ece({"ece name=y"});
    with_compiled.replace(with_compiled.find("C:\nendC\n"), 8, "fortran: compiled\n");
    std::string with_text = ece({"ece name=z"});
    with_text.replace(with_text.find("C:\nendC\n"), 8, "C:\nece name=no\ncallece nobody\nendfortran\n");
    EXPECT_EQ(read_composite_text(with_compiled + with_text).n(), 2);
}

// ---- derived parameters

TEST(eels_class, derived_parameters_stand_behind_the_plain_ones_and_use_earlier_ones) {
    const eels_class lib =
        read_composite_text(ece({"rparms: a=3 b=2",
                                 "rparms_derived: s=$((a)+(b)) d=$((s)-(1k)) t=$((a)*(s)) q=$((t)/(b)) "
                                 "p=$((b)**(a)) e=$(exp(b)) si=$(sin(a)) co=$(cos(q))"}));
    ASSERT_EQ(lib.n_rprm_plain(0), 2);
    ASSERT_EQ(lib.n_rprm_derived(0), 8);
    EXPECT_EQ(names(lib.list.rprm.name.pool),
              (std::vector<std::string>{"a", "b", "s", "d", "t", "q", "p", "e", "si", "co"}));
    for (int j = 2; j < 10; ++j) EXPECT_EQ(lib.list.rprm.value(0, j), 0.0);
    double r[10] = {3, 2};
    eval_rprm_1(lib, 0, r);
    EXPECT_EQ(r[2], 5.0);
    EXPECT_EQ(r[3], -995.0);
    EXPECT_EQ(r[4], 15.0);
    EXPECT_EQ(r[5], 7.5);
    EXPECT_EQ(r[6], 8.0);
    EXPECT_DOUBLE_EQ(r[7], std::exp(2.0));
    EXPECT_DOUBLE_EQ(r[8], std::sin(3.0));
    EXPECT_DOUBLE_EQ(r[9], std::cos(7.5));
}

TEST(eels_class, an_element_can_link_to_a_derived_parameter) {
    const eels_class lib = read_composite_text(
        ece({"mainnodes: a b", "rparms: x=2", "rparms_derived: y=$((x)*(x))"}, "ebe type=r p=a n=b r=y\n"));
    EXPECT_EQ(lib.be.rprm_flag.row(0)[0], 1);
    EXPECT_EQ(lib.list.rprm.count(0), 2);
}

TEST(eels_class, remembers_whether_any_composite_computes_its_parameters) {
    EXPECT_FALSE(read_composite_text(divider).any_compute_rparms);
    EXPECT_TRUE(read_composite_text(ece({"ece name=x compute_rparms=yes"})).any_compute_rparms);
}

TEST(eels_class, rows_of_all_tables_keep_step) {
    const eels_class lib =
        read_composite_text(divider + ece({"ece name=top allow_ac=yes", "mainnodes: x y"}, "callece divider a=x b=y\n",
                                          {}, "callece divider a=x b=y\n"));
    for (const element_table* t : {&lib.be, &lib.beac}) {
        const int n = static_cast<int>(t->i_be.size());
        EXPECT_EQ(t->first_be.back(), n);
        EXPECT_EQ(static_cast<int>(t->name.size()), n);
        for (const row_table<int>* r :
             {&t->node, &t->dgtl, &t->vr, &t->xvr, &t->in, &t->in_flag, &t->ib, &t->ib_flag, &t->iprm, &t->iprm_flag,
              &t->sprm_flag, &t->rprm_flag, &t->sv_flag, &t->ig_flag})
            EXPECT_EQ(r->n_rows(), n);
        for (const row_table<double>* r : {&t->rprm, &t->sv, &t->ig}) EXPECT_EQ(r->n_rows(), n);
    }
    EXPECT_EQ(lib.beac.acparm_map.n_rows(), 6);
    EXPECT_EQ(lib.beac.acprm_be.size(), 6u);
    EXPECT_EQ(lib.auxnode.first.size(), 3u);
    EXPECT_EQ(lib.inac.first.size(), 3u);
}

// A leaf with a function, a middle that calls it twice between elements of its own, a top that calls the middle.
std::string nested_library() {
    return ece({"ece name=leaf allow_ac=yes compute_rparms=yes", "mainnodes: a b", "iparms: m=2", "sparms: s=x",
                "rparms: r=1 k=2"},
               "ebe type=r name=r p=a n=b r=r k=k\n", {}, "ebe_ac type=r name=r p=a n=b r=r k=k\n") +
           ece({"ece name=middle allow_ac=yes", "mainnodes: a b", "auxnodes: c d", "iparms: n=3", "sparms: t=y",
                "rparms: q=5 z=6"},
               "ecemodel name=big type=leaf r=70 m=9\nebe type=r p=a n=c\ncallece leaf name=one a=c b=d r=z m=n s=t\n"
               "ebe type=r p=c n=d\ncallece leaf a=d b=b k=8 model=big\n",
               {}, "callece leaf name=one a=c b=d k=q\ncallece leaf a=d b=b r=q\n") +
           ece({"ece name=top allow_ac=yes", "mainnodes: a b", "rparms: w=4"}, "callece middle name=m a=a b=b z=w\n",
               {}, "callece middle name=m a=a b=b\n") +
           ece({"ece name=plain", "mainnodes: a b"}, "ebe type=r p=a n=b\n");
}

TEST(call_table, keeps_what_every_call_gives_its_callee) {
    const eels_class lib = read_composite_text(nested_library());
    const call_table& t = lib.call;
    EXPECT_EQ(t.first, (std::vector<int>{0, 0, 2, 3, 3}));
    EXPECT_EQ(t.i_lib, (std::vector<int>{0, 0, 1}));
    EXPECT_EQ(t.name, (std::vector<std::string>{"one", "", "m"}));
    EXPECT_EQ(t.first_be, (std::vector<int>{1, 3, 0}));
    EXPECT_EQ(t.first_be_dc, t.first_be);
    EXPECT_EQ(row(t.rprm_flag, 0), (std::vector<int>{1, -1}));
    EXPECT_EQ(row(t.rprm, 0), (std::vector<double>{6, 2}));
    EXPECT_EQ(row(t.iprm_flag, 0), (std::vector<int>{0}));
    EXPECT_EQ(row(t.sprm_flag, 0), (std::vector<int>{0}));
    EXPECT_EQ(row(t.rprm_flag, 1), (std::vector<int>{-1, -1}));
    EXPECT_EQ(row(t.rprm, 1), (std::vector<double>{70, 8}));  // the model's value, the call's own
    EXPECT_EQ(row(t.iprm, 1), (std::vector<int>{9}));
    EXPECT_EQ(row(t.rprm_flag, 2), (std::vector<int>{-1, 0}));
    // The small-signal half says itself what it gives, and finds its callees' places in the other half.
    EXPECT_EQ(lib.callac.first, (std::vector<int>{0, 0, 2, 3, 3}));
    EXPECT_EQ(lib.callac.first_be, (std::vector<int>{0, 1, 0}));
    EXPECT_EQ(lib.callac.first_be_dc, (std::vector<int>{1, 3, 0}));
    EXPECT_EQ(row(lib.callac.rprm_flag, 0), (std::vector<int>{-1, 0}));
    EXPECT_EQ(row(lib.callac.rprm_flag, 1), (std::vector<int>{0, -1}));
}

TEST(assign_compute_rparms, a_caller_inherits_the_need_at_any_depth) {
    const eels_class lib = read_composite_text(nested_library());
    EXPECT_EQ(lib.flag.compute_rparms, (std::vector<int>{1, 0, 0, 0}));
    EXPECT_EQ(lib.computes_rparms, (std::vector<int>{1, 1, 1, 0}));
}

TEST(heels_dump, shows_the_tree_of_composites_with_what_they_inherit) {
    std::ostringstream out;
    write_heels_dump(out, "heels", read_composite_text(nested_library()), read_basic(small_ebes));
    EXPECT_EQ(out.str(),
              "heels_class\nn = 4\n"
              "  i = 0, name = leaf, n_rprm = 2, flag_compute_rparms = 1, n_be = 1, n_ce = 0, n_children = 1\n"
              "    rprm r = 1\n    rprm k = 2\n    child_kind = 1, child_index = 0, name = r\n"
              "  i = 1, name = middle, n_rprm = 2, flag_compute_rparms = 1, n_be = 2, n_ce = 2, n_children = 4\n"
              "    rprm q = 5\n    rprm z = 6\n    child_kind = 1, child_index = 0, name = r\n"
              "    child_kind = 2, child_index = 0, name = leaf\n    child_kind = 1, child_index = 1, name = r\n"
              "    child_kind = 2, child_index = 1, name = leaf\n"
              "  i = 2, name = top, n_rprm = 1, flag_compute_rparms = 1, n_be = 0, n_ce = 1, n_children = 1\n"
              "    rprm w = 4\n    child_kind = 2, child_index = 0, name = middle\n"
              "  i = 3, name = plain, n_rprm = 0, flag_compute_rparms = 0, n_be = 1, n_ce = 0, n_children = 1\n"
              "    child_kind = 1, child_index = 0, name = r\n");
}

TEST(eels_class, acparm_map_through_calls_ends_at_the_top_or_at_a_fixed_value) {
    const std::string library =
        ece({"ece name=leaf allow_ac=yes", "mainnodes: a b", "rparms: x=3 y=4"}, "ebe type=r name=d p=a n=b\n", {},
            "ebe_ac type=bias p=a n=b ac_parm_be=d\nacparm_map: 0 2\nacparm_map: 1 1\n") +
        ece({"ece name=middle allow_ac=yes", "mainnodes: a b", "rparms: u=5 v=6"}, "callece leaf a=a b=b x=u y=v\n", {},
            "callece leaf a=a b=b x=u y=v\n") +
        ece({"ece name=top allow_ac=yes", "mainnodes: a b", "rparms: o=7 w=8"}, "callece middle a=a b=b v=w\n", {},
            "callece middle a=a b=b v=w u=9\n");
    const eels_class lib = read_composite_text(library);
    EXPECT_EQ(row(lib.beac.acparm_map, 0), (std::vector<int>{1, 0}));
    EXPECT_EQ(row(lib.beac.acparm_map, 1), (std::vector<int>{1, 0}));   // y <- v, x <- u
    EXPECT_EQ(row(lib.beac.acparm_map, 2), (std::vector<int>{1, -1}));  // y <- v <- w; x <- u, fixed by the call
    EXPECT_EQ(lib.beac.rprm.row(2)[1], 9.0);
}

}  // namespace
