// Composites of general blocks: what differs from electrical ones.
#include <gtest/gtest.h>

#include <sstream>

#include "block_texts.h"
#include "halt_throws.h"
#include "library/composite/library_dumps.h"
#include "temp_folder.h"

namespace {

template <class T>
std::vector<T> row(const row_table<T>& table, int i) {
    return {table.row(i), table.row(i) + table.size(i)};
}

// x -> filter -> m -> gain -> y
const std::string chain =
    gce({"gce name=chain allow_ac=yes", "mainvars: x y", "auxvars: m", "xvars: xx",
         "outvar: y=var_of_y m=var_of_m z=w_of_f k=k_of_g md=mode_of_g", "bias: b=b_of_f", "stparms: s0=3",
         "igparms: s_ig=4", "iparms: md0=5", "sparms: lab=zz", "rparms: k0=6", "rparms_derived: k2=$((k0)*(2))"},
        "gbe type=filter name=f x=x y=m a=k2 z0=s0 z_ig=s_ig\n"
        "gbe type=gain name=g x=m y=y k=k0 mode=md0 label=lab\n"
        "gbe type=from_x y=m xx=xx\n",
        {"outvar_ac: ya=var_of_y ma=var_of_m"},
        "gbe_ac type=filter name=fa x=x y=m a=k0 ac_parm_be=f\nacparm_map: 1 1\n"
        "gbe_ac type=gain x=m y=y\n");

TEST(gels_class, entries_of_a_form_without_code_and_small_signal_lines_end_behind_their_dc_half) {
    composite_form form = gels_form;
    form.has_code = false;
    form.ac_lines = {};
    const std::string one = edited(gce_header, {"mainvars: x y"}) + "gbe type=gain x=x y=y\nend_dc\nendgce\n";
    text_file file = text_file_of(one + one);
    gels_class lib;
    read_composites(file, form, read_basic(small_gbes, gbes_form), {}, lib);
    ASSERT_EQ(lib.n(), 2);
    EXPECT_EQ(lib.be.n_be(1), 1);
    EXPECT_EQ(lib.beac.n_be(1), 0);
    EXPECT_EQ(lib.ovac.count(1), 0);
}

TEST(gels_class, gives_every_block_its_variables_in_the_composites_numbers) {
    const gels_class lib = read_gce_text(chain);
    ASSERT_EQ(lib.n(), 1);
    ASSERT_EQ(lib.be.n_be(0), 3);
    EXPECT_EQ(lib.be.i_be, (std::vector<int>{1, 0, 2}));
    EXPECT_EQ(row(lib.be.vr, 0), (std::vector<int>{0, 2}));
    EXPECT_EQ(row(lib.be.vr, 1), (std::vector<int>{2, 1}));
    EXPECT_EQ(row(lib.be.vr, 2), (std::vector<int>{2}));
    EXPECT_EQ(row(lib.be.xvr, 2), (std::vector<int>{0}));
    EXPECT_EQ(lib.auxnode.count(0), 1);
    EXPECT_EQ(row(lib.be.rprm_flag, 0), (std::vector<int>{1, -1}));
    EXPECT_EQ(row(lib.be.rprm_flag, 1), (std::vector<int>{0, -1}));
    EXPECT_EQ(row(lib.be.sv_flag, 0), (std::vector<int>{0}));
    EXPECT_EQ(row(lib.be.ig_flag, 0), (std::vector<int>{0}));
    EXPECT_EQ(row(lib.be.iprm_flag, 1), (std::vector<int>{0}));
    EXPECT_EQ(row(lib.be.sprm_flag, 1), (std::vector<int>{0}));
    double rprm[] = {6, 0};
    eval_rprm_1(lib, 0, rprm);
    EXPECT_EQ(rprm[1], 12);
}

TEST(gels_class, has_output_kinds_of_blocks_numbered_over_their_lists) {
    const gels_class lib = read_gce_text(chain);
    EXPECT_EQ(lib.ov.kind, (std::vector<int>{ov_var, ov_var, ov_gaux, ov_rparm_gbe, ov_iparm_gbe}));
    EXPECT_EQ(lib.ov.index, (std::vector<int>{1, 2, 1, 2, 0}));
    EXPECT_EQ(lib.ov.be, (std::vector<int>{-1, -1, 0, 1, 1}));
    EXPECT_EQ(lib.bias.kind, (std::vector<int>{ov_rparm_gbe}));
    EXPECT_EQ(lib.bias.index, (std::vector<int>{1}));
}

TEST(gels_class, reads_a_small_signal_half_with_one_header_line) {
    const gels_class lib = read_gce_text(chain);
    EXPECT_EQ(lib.beac.n_be(0), 2);
    EXPECT_EQ(lib.beac.i_be, (std::vector<int>{1, 0}));
    EXPECT_EQ(lib.ovac.kind, (std::vector<int>{ov_var_ac, ov_var_ac}));
    EXPECT_EQ(lib.ovac.index, (std::vector<int>{1, 2}));
    EXPECT_EQ(lib.beac.acprm_be, (std::vector<int>{0, -1}));
    EXPECT_EQ(lib.beac.iprm.row(0)[0], 0);
    EXPECT_EQ(row(lib.beac.acparm_map, 0), (std::vector<int>{-1, 0}));
}

TEST(gels_class, expands_calls_with_fresh_internal_variables) {
    const std::string callee = gce({"gce name=two", "mainvars: a b", "auxvars: c", "outvar: oc=var_of_c ow=w_of_f",
                                    "rparms: ka=1", "stparms: s=2"},
                                   "gbe type=gain x=a y=c k=ka\ngbe type=filter name=f x=c y=b z0=s\n");
    const gels_class lib =
        read_gce_text(callee + gce({"gce name=four", "mainvars: p q", "auxvars: m",
                                    "outvar: c2=oc_of_second w2=ow_of_second", "rparms: kk=9"},
                                   "callgce two name=first a=p b=m ka=kk\ncallgce two name=second a=m b=q s=8\n"));
    ASSERT_EQ(lib.be.n_be(1), 4);
    const int first = lib.be.first_be[1];
    EXPECT_EQ(row(lib.be.vr, first), (std::vector<int>{0, 3}));
    EXPECT_EQ(row(lib.be.vr, first + 1), (std::vector<int>{3, 2}));
    EXPECT_EQ(row(lib.be.vr, first + 2), (std::vector<int>{2, 4}));
    EXPECT_EQ(row(lib.be.vr, first + 3), (std::vector<int>{4, 1}));
    EXPECT_EQ(lib.be.rprm_flag.row(first)[0], 0);
    EXPECT_EQ(lib.be.rprm_flag.row(first + 2)[0], -1);
    EXPECT_EQ(lib.be.rprm.row(first + 2)[0], 1);
    EXPECT_EQ(lib.be.sv.row(first + 3)[0], 8);
    EXPECT_EQ(std::vector<int>(lib.ov.kind.begin() + 2, lib.ov.kind.end()), (std::vector<int>{ov_var, ov_gaux}));
    EXPECT_EQ(std::vector<int>(lib.ov.index.begin() + 2, lib.ov.index.end()), (std::vector<int>{4, 3}));
}

TEST(gels_class, outputs_of_post_processing_are_its_results_in_order) {
    const auto of = [](const std::string& flags, const std::string& word) {
        return read_gce_text(
            gce({"gce name=c " + flags, "mainvars: x", "outvar: a=" + word + "_of_w b=" + word + "_of_any"},
                "gbe type=watch name=w x=x\n"));
    };
    const gels_class trns = of("postprocessor=yes", "postproc"), ac = of("postprocessor_ac=yes", "postproc_ac");
    EXPECT_EQ(trns.ov.kind, (std::vector<int>{ov_postproc, ov_postproc}));
    EXPECT_EQ(trns.ov.index, (std::vector<int>{0, 1}));
    EXPECT_EQ(ac.ov.kind, (std::vector<int>{ov_postproc_ac, ov_postproc_ac}));
    EXPECT_EQ(ac.flag.postprocessor_ac, (std::vector<int>{1}));
    EXPECT_HALT(of("", "postproc"), not_in_list("postproc", "gels_gbe: expect auxvar name here."));
}

TEST(gels_class, keeps_the_number_of_a_result_when_it_is_called) {
    const std::string calc =
        gce({"gce name=calc postprocessor=yes", "mainvars: x", "outvar: a=postproc_of_w b=postproc_of_w"},
            "gbe type=watch name=w x=x\n");
    const gels_class lib = read_gce_text(calc + gce({"gce name=y", "mainvars: u v", "outvar: r=b_of_c"},
                                                    "callgce calc name=c x=u\ngbe type=watch x=v\n"));
    EXPECT_EQ(lib.ov.kind[2], ov_postproc);
    EXPECT_EQ(lib.ov.index[2], 1);
}

TEST(gels_messages, a_missing_line_names_itself_without_its_colon) {
    for (std::size_t i = 1; i < gce_header.size(); ++i) {
        const std::string wanted = gce_header[i];
        const std::string found = i + 1 < gce_header.size() ? gce_header[i + 1] : "end_dc";
        const std::string bare = wanted.back() == ':' ? wanted.substr(0, wanted.size() - 1) : wanted;
        EXPECT_HALT(read_gce_text(edited(gce_header, {}, wanted) + edited(gce_middle, {}) + "end_ac\nendgce\n"),
                    wrong_keyword(found, wanted, "expect " + bare + " here, check gce library"));
    }
    EXPECT_HALT(read_gce_text(edited(gce_header, {}) + edited(gce_middle, {}, "outvar_ac:") + "end_ac\nendgce\n"),
                wrong_keyword("end_ac", "outvar_ac:", "expect outvar_ac: here, check gce library"));
}

TEST(gels_messages, faults_of_an_entry) {
    const lines xy = {"mainvars: x y"};
    const std::string gain = "gbe type=gain name=g x=x y=y\n";
    const auto body = [&](const std::string& statements) { return gce(xy, gain + statements); };
    const std::string derived = gce({"gce name=d", "rparms: a=1", "rparms_derived: b=$((a)+(1))"});
    const struct {
        std::string text, console;
    } faults[] = {
        {"stray\n", wrong_keyword("stray", "gce", "gels_class: gce not found. Debug 1.")},
        {gce({"outvar: a"}), "gels_class: k_rem is not zero (ov). Halting...\n"},
        {gce({"bias: a"}), "gels_class: k_rem is not zero (bias). Halting...\n"},
        {gce({"rparms: a"}), "gels_class: k_rem is not zero (rprm). Halting...\n"},
        {gce({"rparms_derived: a"}), "gels_class: k_rem is not zero (rprm_derived).\n   Halting...\n"},
        {gce({"outvar: a b"}),
         "find_sub_word: _of_ was not found.\nMessage from calling routine:\n_of_ not found (ov), check gce library\n"},
        {gce({"outvar: a nodev_of_x", "mainvars: x"}, "gbe type=watch name=x x=x\n"),
         not_in_list("nodev", "gels_gbe: expect auxvar name here.")},
        {gce({"outvar: a pwr_elec_of_x", "mainvars: x"}, "gbe type=watch x=x\n"),
         "gels_class: some outvar is not assigned?\n  i_ov = 0\n  Check gce library. Halting..\n"},
        {gce({"outvar: a cur(x)_of_g", "mainvars: x y"}, gain),
         not_in_list("cur(x)", "gels_gbe: expect auxvar name here.")},
        {gce({"outvar: a var_of_q", "mainvars: x y"}, gain),
         not_in_list("q", "gels_class: outvar node name not found")},
        {gce({"bias: a k_of_q", "mainvars: x y"}, gain),
         "gels_class: some bias variable is not assigned?\n  i_ov = 0\n  Check gce library. Halting..\n"},
        {gce({"mainvars: x y z"}, gain),
         "gels_class: a var not assigned? check gce library\n  gels name is x\n  var number is 2\n"},
        {gce({"mainvars: x y", "auxvars: m n"}, gain + "gbe type=watch x=m\n"),
         "gels_class: a var not assigned? check gce library\n  gels name is x\n  var number is 3\n"},
        {body("gbe x=x y=y\n"), "gels_gbe: type not found. Halting..\n"},
        {body("gbe type=none x=x y=y\n"), not_in_list("none", "gels_gbe: gbes_name not found")},
        {body("gbe type=gain x=x\n"), not_in_list("y", "gels_gbe: gbes_vr_name not found.", "find_word_EO_2")},
        {body("gbe type=gain x=x y=q\n"), not_in_list("q", "gels_class: aux var not found, check gce library")},
        {body("gbe type=from_x y=x\n"), not_in_list("xx", "gels_gbe: gbes_xvr_name not found.", "find_word_EO_2")},
        {body("gbe type=from_x y=x xx=x\n"), not_in_list("x", "gels_gbe: gels_xvr_name not found.")},
        {body("gbe type=gain x=x y=y kk=2\n"),
         "gels_gbe: some word has not been ticked.\n    word: kk\n    Calling gce is x\n    Halting...\n"},
        {body("gbe model=m x=x y=y\n"), not_in_list("m", "gels_gbe: model name not found (gmgbe).")},
        {gce(xy, "gbemodel name=m type=gain k=2\n" + gain + "gbe model=m type=filter x=x y=y\n"),
         "gels_gbe: model_type does not match gbe type.\n  model_type=gain\n  gbe type=filter\n  Halting...\n"},
        {gce(xy, "gbemodel name=m type=gain\n"),
         "gels_class: nw_s1=5 is too small.\n  Check gbemodel (DC) statement. Halting...\n"},
        {gce(xy, "gcemodel name=m type=gain\n"),
         "gels_class: nw_s1=5 is too small.\n  Check gcemodel statement (DC). Halting...\n"},
        {gce(xy, "gbemodel name=m type=gain k=2 q\n"), "gels_class: k_rem is not zero (gmgbe, DC). Halting...\n"},
        {gce(xy, "gcemodel name=m type=gain k=2 q\n"), "gels_class: k_rem is not zero (gmgce, DC). Halting...\n"},
        {gce({"gce name=b"}, "callgce later\n") + gce({"gce name=later"}),
         not_in_list("later", "gels_gels: gels_name not found")},
        {gce({"gce name=a", "mainvars: x y"}, gain) + gce(xy, gain + "callgce a x=x\n"),
         not_in_list("y", "gels_gels: gels2 vr name not found.", "find_word_EO_2")},
        {gce({"gce name=a", "mainvars: x y"}, gain) + gce(xy, gain + "callgce a x=x y=q\n"),
         not_in_list("q", "gels_class: aux var not found, check gce library")},
        {derived + gce({}, "callgce d\n"),
         "gels_gels: gels2 cannot have derived rparms.\n  gels2_name=d\n  Halting...\n"},
        {gce(xy, gain, {}, "gbe_ac type=none x=x y=y\n"), not_in_list("none", "gels_gbe_ac: gbes_name not found")},
        {gce(xy, gain, {}, "gbe_ac type=gain x=x y=y q=1\n"),
         "gels_gbe_ac: some word has not been ticked.\n    word: q\n    Halting...\n"},
        {gce(xy, gain, {"outvar_ac: a=z_of_f"}, "gbe_ac type=filter name=f x=x y=y\n"),
         not_in_list("z", "gels_gbe_ac: expect auxvar name here.")},
        {gce(xy, gain, {"outvar_ac: a=z_of_f"}),
         "gels_class: some outvar (ac) is not assigned?\n  Check gce library. Halting..\n"},
        {gce({"gce name=a", "mainvars: x y"}, gain) + gce(xy, gain + "callgce a x=x y=y\n", {}, "callgce a x=x y=y\n"),
         "gels_gels_ac: AC not allowed by one of the gelements.\n    element type is a\n    Halting...\n"},
        {edited(gce_header, {}) + edited(gce_middle, {}) + "end_ac\nstray\n",
         wrong_keyword("stray", "endgce", "gels_class: expect endgce here.")},
    };
    for (const auto& f : faults) {
        SCOPED_TRACE(f.text);
        EXPECT_HALT(read_gce_text(f.text), f.console);
    }
}

TEST(gels_messages, show_the_parts_of_a_derived_parameter_that_fails) {
    EXPECT_HALT(read_gce_text(gce({"rparms_derived: a b"})),
                "gels_class: sa=b flag_3=0\ngels_class: sc=\n"
                "gels_class: check this string: b\n  An expression was expected here. Halting...\n");
    EXPECT_HALT(read_gce_text(gce({"rparms_derived: a=$(tan(1))"})),
                "gels_class: sa=$(tan(1)) flag_3=1\ngels_class: sc=tan\n"
                "gels_class: unknown function in\n   derived rparms.\n   string is $(tan(1))\n");
    EXPECT_HALT(read_gce_text(gce({"rparms_derived: a=$((1)%(2))"})),
                "gels_class: sa=$((1)%(2)) flag_3=0\ngels_class: sc=%\n"
                "gels_class: unknown operation in\n   derived rparms.\n   string is $((1)%(2))\n");
}

TEST(gels_messages, model_lines_alone_are_counted) {
    std::string twenty;
    for (int i = 0; i < 20; ++i) twenty += "gbemodel name=m" + std::to_string(i) + " type=gain k=2\n";
    const std::string gain = "gbe type=gain x=x y=y\n";
    EXPECT_EQ(read_gce_text(gce({"mainvars: x y"}, twenty + gain)).n(), 1);
    EXPECT_HALT(read_gce_text(gce({"mainvars: x y"}, twenty + "gbemodel name=m type=gain k=2\n" + gain)),
                too_many(21, 20, "gels_class: gmgbe is too large (DC)."));
}

TEST(gels_class, takes_more_than_an_electrical_library_may_hold) {
    std::string entries;
    for (int i = 0; i < 60; ++i) entries += gce({"mainvars: x y"}, repeated("gbe type=gain x=x y=y\n", 10));
    const gels_class lib = read_gce_text(entries);
    EXPECT_EQ(lib.n(), 60);
    EXPECT_EQ(lib.be.first_be.back(), 600);
}

TEST(gels_class, stops_when_calls_double_at_every_level) {
    std::string text = gce({"gce name=c0", "mainvars: x y"}, "gbe type=gain x=x y=y\n");
    for (int i = 1; i < 40; ++i) {
        const std::string call = "callgce c" + std::to_string(i - 1) + " x=x y=y\n";
        text += gce({"gce name=c" + std::to_string(i), "mainvars: x y"}, call + call);
    }
    const console_run heard = run_and_listen([&] { read_gce_text(text); });
    EXPECT_TRUE(heard.stopped);
    EXPECT_NE(heard.text.find("gels_class: n_be_ttl is too large."), std::string::npos) << heard.text;
}

TEST(gels_dump, shows_blocks_with_the_names_of_their_family) {
    std::ostringstream out;
    write_composite_dump(out, "gels", read_gce_text(chain));
    const std::string text = out.str();
    for (const char* part : {"i = 0, name = chain, n_be = 3, n_beac = 2, n_vr = 2, n_ttlvr_old = 3",
                             "i_gelsbe = 1, i_gbes = 0", "i_gelsbe_ac = 0, i_gbac = 1, beac_acprm_be = 0",
                             "ov_name = m, ov_flag = 6, ov_be = -1, ov_var = 2", "beac_vr: ", "flag_postprocessor = 0"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
}

}  // namespace
