// Libraries of explicit blocks and of their composites: what differs from those of the other families.
#include <gtest/gtest.h>

#include "halt_throws.h"
#include "library/basic/basic_reader.h"
#include "library/basic/xbes1_class.h"
#include "library/composite/composite_reader.h"
#include "library_texts.h"

namespace {
const lines xbe_header = {"xbe name=x evaluate=yes",
                          "Jacobian: constant",
                          "input_vars:",
                          "output_vars:",
                          "cct_nodes:",
                          "be_v:",
                          "iparms:",
                          "sparms:",
                          "rparms:",
                          "igparms:",
                          "aux_vars:",
                          "gvars:"};
// The functions stand in three parts, each behind its count.
std::string counted(const std::string& word, const lines& functions) {
    std::string text = word + " " + std::to_string(functions.size()) + "\n";
    for (const std::string& f : functions) text += f + "\n";
    return text;
}
std::string xbe(const lines& replaced, const lines& f = {}, const lines& g = {}, const lines& h = {}) {
    return edited(xbe_header, replaced) + counted("n_functions", f) + counted("n_matrix_ddt", g) +
           counted("n_matrix_alg", h) + "C: compiled\nendxbe\n";
}
xbes_class read_xbe_text(const std::string& text) { return read_basic(text, xbes_form); }

const lines branch = {"input_vars: p n", "output_vars: i", "cct_nodes: p n", "be_v: vb=p-n"};
const lines star = {"input_vars: a b c", "output_vars: y", "cct_nodes: a b c", "be_v: va=a"};
const std::string small_xbes =
    xbe({"xbe name=gain evaluate=yes", "input_vars: x", "output_vars: y", "rparms: k=1"}, {}, {}, {"h_1 y x"}) +
    xbe({"xbe name=lag integrate=yes", "input_vars: x", "output_vars: y", "igparms: y0=0", "aux_vars: z", "gvars: u"},
        {"f_1 d_dt(y) x u", "f_2 d_dt(z) y"}, {"g_1 d_dt(y) x", "g_2 d_dt(z) y"});

const lines xce_header = {"xce name=x", "begin_dc", "main_vars:", "aux_vars:", "gvars:",          "outvar:",
                          "bias:",      "iparms:",  "sparms:",    "rparms:",   "rparms_derived:", "stparms:"};
std::string xce(const lines& replaced, const std::string& body, const std::string& igparms = "") {
    return edited(xce_header, replaced) + igparms + body + "end_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nend_ac\nendxce\n";
}
xels_class read_xce_text(const std::string& text) {
    const xbes_class basic = read_xbe_text(small_xbes);
    text_file file = text_file_of(text);
    xels_class lib;
    read_composites(file, xels_form, basic, {}, lib);
    return lib;
}
using ints = std::vector<int>;
}  // namespace

TEST(xbes_class, has_inputs_then_outputs_in_one_list_and_three_tables_of_functions) {
    const xbes_class lib = read_xbe_text(small_xbes);
    ASSERT_EQ(lib.n(), 2);
    EXPECT_EQ(lib.list.n_input, (ints{1, 1}));
    EXPECT_EQ(lib.list.xvr.count(1), 2);
    EXPECT_EQ(lib.list.xvr.word(1, 1), "y");
    EXPECT_EQ(lib.list.vr.word(1, 0), "u");
    EXPECT_EQ(lib.func.n_func(0), 0);
    EXPECT_EQ(lib.func.n_func(1), 2);
    EXPECT_EQ(lib.func_g.n_func(1), 2);
    EXPECT_EQ(lib.func_h.n_func(0), 1);
    EXPECT_EQ(lib.func_h.n_func(1), 0);
    EXPECT_EQ(lib.func.ddt_var_flag, (ints{kind_xvr, kind_xaux}));
    EXPECT_EQ(lib.func.ddt_var_number, (ints{1, 0}));
    EXPECT_EQ(lib.func.var_flag, (ints{kind_xvr, kind_xvr, kind_vr, kind_xaux, kind_xvr}));
    EXPECT_EQ(lib.flag.evaluate, (ints{1, 0}));
    EXPECT_EQ(lib.flag.integrate, (ints{0, 1}));
}

TEST(xbes_class, knows_its_flag_words_and_that_blocks_stand_beside_circuits_unless_they_say_no) {
    const xbes_class lib = read_xbe_text(xbe({"xbe name=a evaluate=yes"}) + xbe({"xbe name=b delay=yes reset=yes"}) +
                                         xbe({"xbe name=c delay=yes allow_reset=yes allow_xmixed=no"}) +
                                         xbe({"xbe name=d integrate=yes evaluate=yes limit_modulo=yes"}));
    EXPECT_EQ(lib.flag.allow_reset, (ints{0, 1, 1, 0}));
    EXPECT_EQ(lib.flag.allow_xmixed, (ints{1, 1, 0, 1}));
    EXPECT_EQ(lib.flag.limit_modulo, (ints{0, 0, 0, 1}));
    EXPECT_EQ(lib.flag.evaluate, (ints{1, 0, 0, 1})) << "two kinds pass";
}

TEST(xbes_class, has_the_branches_of_a_network) {
    const xbes_class lib = read_xbe_text(xbe(branch, {}, {}, {"h_1 current vb", "h_2 i current"}) +
                                         xbe(star, {}, {}, {"h_1 cur(b) va", "h_2 y cur(c)"}));
    EXPECT_EQ(lib.list.cct.count(0), 2);
    EXPECT_EQ(lib.list.bev.word(0, 0), "vb");
    EXPECT_EQ(lib.list.bev_plus, (ints{0, 0}));
    EXPECT_EQ(lib.list.bev_minus, (ints{1, -1})) << "one node alone is measured against the reference";
    EXPECT_EQ(lib.list.cur.count(0), 1);
    EXPECT_EQ(lib.list.cur.count(1), 3);
    EXPECT_EQ(lib.func_h.var_flag,
              (ints{kind_xcur, kind_bev, kind_xvr, kind_xcur, kind_xcur, kind_bev, kind_xvr, kind_xcur}));
    EXPECT_EQ(lib.func_h.var_number, (ints{0, 0, 2, 0, 1, 0, 3, 2}));
    // Derivatives of the algebraic rows are those that the solver reads.
    xbes1_class jac;
    jac.initialise(lib, 0);
    jac.dhdcur[1][0] = 7.0;
    EXPECT_EQ(jac.store[static_cast<std::size_t>(jac.offset(kind_xcur, 1, 0))], 7.0);
}

TEST(xbes_messages, a_missing_line_names_the_keyword_found_and_the_one_wanted) {
    for (std::size_t i = 2; i < xbe_header.size(); ++i) {
        const std::string wanted = xbe_header[i];
        const std::string found = i + 1 < xbe_header.size() ? xbe_header[i + 1] : "n_functions";
        EXPECT_HALT(read_xbe_text(edited(xbe_header, {}, wanted) + counted("n_functions", {})),
                    wrong_keyword(found, wanted, "expect " + wanted + " here, check xbe library"));
    }
    EXPECT_HALT(read_xbe_text("block\n"), wrong_keyword("block", "xbe", "xbes_class: xbe not found. Debug 1."));
}

TEST(xbes_messages, a_block_says_what_kind_it_is) {
    EXPECT_HALT(read_xbe_text(xbe({"xbe name=odd"})),
                "xbes_class: xbes type must be one of \nintegrate/evaluate/delay\n  Check this element: odd\n"
                "  Halting...\n");
    EXPECT_HALT(read_xbe_text(xbe({"xbe name=odd delay=no"})),
                "xbes_class: xbes type must be one of \nintegrate/evaluate/delay\n  Check this element: odd\n"
                "  Halting...\n");
}

TEST(xbes_messages, faults_of_a_network) {
    const struct {
        lines replaced;
        std::string console;
    } faults[] = {
        {{"be_v: vb"}, "xbes_class: k_rem is not zero (bev). Halting...\n"},
        {{"input_vars: p n", "cct_nodes: p"}, "xbes_class: n_cctnd = 1 ?\n"},
        {{"input_vars: p", "cct_nodes: p n"}, "xbes_class: ncctnd > nipvr ?\n  ncctnd[nm1]=2\n  nipvr[nm1]=1\n"},
        {{"input_vars: p n", "cct_nodes: n p"}, "Check the order of cct nodes in x.xbe\n"},
        {{"input_vars: p n", "cct_nodes: p n", "be_v: vb=q-n"}, "xbes_class: node in bev not found (1).\n"},
        {{"input_vars: p n", "cct_nodes: p n", "be_v: vb=p-q"}, "xbes_class: node in bev not found (2).\n"},
        {{"input_vars: p n", "cct_nodes: p n", "be_v: vb=q"}, "xbes_class: node in bev not found (3).\n"},
    };
    for (const auto& f : faults) EXPECT_HALT(read_xbe_text(xbe(f.replaced)), f.console);
}

TEST(xbes_messages, words_of_functions) {
    const lines block = {"input_vars: x", "output_vars: y", "aux_vars: z"};
    const auto slope = [&](const std::string& f) { return xbe(block, {f}); };
    const auto row = [&](const lines& head, const std::string& h) { return xbe(head, {}, {}, {h}); };
    const std::string function_part = " in xbe library.\n   (function part)\n   Halting...\n";
    EXPECT_HALT(read_xbe_text(slope("f_1 d_dt(y) q")), "read_xbes: check q" + function_part);
    EXPECT_HALT(read_xbe_text(slope("f_1 d_dt(x)")), "read_xbes: check d_dt(x)" + function_part);
    EXPECT_HALT(read_xbe_text(slope("f_1 ddt(y) x")),
                "read_xbes: check ddt(y) in xbe library.\n   did not find keyword d_dt\n   Halting...\n");
    EXPECT_HALT(read_xbe_text(row(block, "h_1 y q")), "read_xbes: check q" + function_part);
    EXPECT_HALT(read_xbe_text(row(block, "h_1 d_dt(y)")),
                "read_xbes: check d_dt(y) in xbe library.\n   d_dt is not allwed in h functions\n   Halting...\n");
    const std::string no_current =
        "xbes_class: keyword current cannot be used.\n   when number of nodes is not equal to "
        "2.\n   expected cur(xx) but did not find it.\n   Halting...\n";
    EXPECT_HALT(read_xbe_text(row(star, "h_1 y current")), no_current);
    EXPECT_HALT(read_xbe_text(row(block, "h_1 y current")), no_current);
    EXPECT_HALT(read_xbe_text(row(branch, "h_1 i cur(n)")),
                "xbes_class: cur(xx) cannot be used.\n   when number of nodes <= 2.\n"
                "   Check xbe library. Halting...\n");
    EXPECT_HALT(read_xbe_text(row(star, "h_1 y cur(d)")), "xbes_class: node in cur(xx) not found.\n");
    EXPECT_HALT(read_xbe_text(xbe(block, {"g_1 d_dt(y)"})), "xbes_class: expected f_ (1). Halting...\n  s2 = g_1\n");
    EXPECT_HALT(read_xbe_text(xbe(block, {}, {"f_1 d_dt(y)"})),
                "xbes_class: expected g_ (1). Halting...\n  s2 = f_1\n");
    EXPECT_HALT(read_xbe_text(xbe(block, {}, {}, {"f_1 y"})), "xbes_class: expected h_ (1). Halting...\n  s2 = f_1\n");
}

TEST(xbes_messages, limits_of_the_library) {
    EXPECT_HALT(read_xbe_text(xbe({"input_vars: " + many("n", 501)})),
                too_many(501, 500, "xbes_class: n_ttlvr is too large!"));
    EXPECT_HALT(read_xbe_text(xbe({"gvars: " + many("n", 201)})),
                too_many(201, 200, "xbes_class: n_ttlgvr is too large!"));
    EXPECT_HALT(read_xbe_text(xbe({"cct_nodes: " + many("n", 501)})),
                too_many(501, 500, "xbes_class: n_ttlcctnd is too large!"));
    lines rows(600, "h_1 y y y y y y y y y");
    EXPECT_HALT(read_xbe_text(xbe({"output_vars: y"}, {}, {}, rows)),
                "xbes_class: n_ttlfhvar is too large. Halting...\n");
}

TEST(xels_class, start_words_feed_the_first_guesses_of_the_blocks) {
    const std::string lag = "xbe type=lag x=x y=y u=u y0=y0\n";
    const lines head = {"main_vars: x y", "gvars: u", "outvar: y=xvar_of_y", "stparms: y0=2"};
    const xels_class lib = read_xce_text(xce(head, lag));
    ASSERT_EQ(lib.list.ig.count(0), 1);
    EXPECT_EQ(lib.list.ig.value(0, 0), 2);
    EXPECT_EQ(lib.be.ig_flag.row(0)[0], 0);
    EXPECT_EQ(lib.ov.kind, (ints{ov_xvar}));
    // A line of its own goes on behind it.
    const xels_class more = read_xce_text(xce(head, "xbe type=lag x=x y=y u=u y0=w\n", "igparms: w=3\n"));
    ASSERT_EQ(more.list.ig.count(0), 2);
    EXPECT_EQ(more.list.ig.value(0, 1), 3);
    EXPECT_EQ(more.be.ig_flag.row(0)[0], 1);
}

TEST(xels_messages, faults_of_a_composite) {
    EXPECT_HALT(read_xce_text(edited(xce_header, {}, "stparms:") + "end_dc\n"),
                wrong_keyword("end_dc", "stparms:", "expect stparms here, check cce library"));
    EXPECT_HALT(read_xce_text(xce({"main_vars: x y z"}, "xbe type=gain x=x y=y\n")),
                "xels_class: a var not assigned? check xce library\n  xels name is x\n  var number is 2\n");
    EXPECT_HALT(read_xce_text(xce({"main_vars: x y"}, "xbe type=gain x=x y=q\n")),
                not_in_list("q", "xels_class: aux var not found, check xce library"));
}
