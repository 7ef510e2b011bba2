// Libraries of digital elements and of their composites: what differs from those of the other families.
#include <gtest/gtest.h>

#include <sstream>

#include "halt_throws.h"
#include "library/basic/basic_reader.h"
#include "library/composite/composite_reader.h"
#include "library/composite/library_dumps.h"
#include "library_texts.h"

namespace {
const lines dbe_header = {"dbe name=x", "input_nodes:", "output_nodes:", "analog_nodes:", "iparms:", "sparms:",
                          "rparms:",    "n_logical 0",  "stparms:",      "igparms:",      "aux_var:"};
std::string dbe(const lines& replaced, const std::string& code = "C: compiled\nenddbe\n") {
    return edited(dbe_header, replaced) + code;
}
dbes_class read_dbe_text(const std::string& text) { return read_basic(text, dbes_form); }

const lines dce_header = {"dce name=x", "mainnodes:", "auxnodes:",       "analog_nodes:", "outvar:", "iparms:",
                          "sparms:",    "rparms:",    "rparms_derived:", "stparms:",      "igparms:"};
std::string dce(const lines& replaced, const std::string& body = "") {
    return edited(dce_header, replaced) + body + "enddce\n";
}

const std::string small_dbes = dbe({"input_nodes: a b", "output_nodes: y", "dbe name=gate", "rparms: t0=1 t1=2",
                                    "n_logical 3", "stparms: st=1", "igparms: g0=2"}) +
                               dbe({"dbe name=source", "output_nodes: y yb", "iparms: pol=1", "sparms: label=none"}) +
                               dbe({"dbe name=adc", "output_nodes: y", "analog_nodes: x", "rparms: v=5"});

dels_class read_dce_text(const std::string& text) {
    const dbes_class basic = read_dbe_text(small_dbes);
    text_file file = text_file_of(text);
    dels_class lib;
    read_composites(file, dels_form, basic, basic, lib);
    return lib;
}
template <class T>
std::vector<T> row(const row_table<T>& table, int i) {
    return {table.row(i), table.row(i) + table.size(i)};
}
using ints = std::vector<int>;

TEST(dbes_class, has_inputs_then_outputs_in_one_list_and_start_values_that_are_integers) {
    const dbes_class lib = read_dbe_text(small_dbes);
    ASSERT_EQ(lib.n(), 3);
    EXPECT_EQ(lib.list.dgtl.count(0), 3);
    EXPECT_EQ(lib.list.dgtl.word(0, 2), "y");
    EXPECT_EQ(lib.list.n_input, (ints{2, 0, 0}));
    EXPECT_EQ(lib.list.dgtl.count(1), 2);
    EXPECT_EQ(lib.list.dgtl.word(1, 1), "yb");
    EXPECT_EQ(lib.list.n_logical, (ints{3, 0, 0}));
    EXPECT_EQ(lib.list.ind_node.word(2, 0), "x");
    EXPECT_EQ(lib.list.sv.value(0, 0), 1);
    EXPECT_EQ(lib.list.ig.value(0, 0), 2);
    EXPECT_EQ(lib.list.rprm.value(0, 1), 2);
    EXPECT_EQ(lib.func.n_func(2), 0);
}

TEST(dbes_messages, a_missing_line_names_the_keyword_found_and_the_one_wanted) {
    for (std::size_t i = 1; i < dbe_header.size(); ++i) {
        const auto word = [](const std::string& l) { return l.substr(0, l.find(' ')); };
        const std::string wanted = word(dbe_header[i]);
        const std::string found = i + 1 < dbe_header.size() ? word(dbe_header[i + 1]) : "C:";
        const std::string library = wanted == "analog_nodes:" ? "ebe" : "dbe";
        EXPECT_HALT(read_dbe_text(edited(dbe_header, {}, wanted) + "C: compiled\nenddbe\n"),
                    wrong_keyword(found, wanted, "expect " + wanted + " here, check " + library + " library"));
    }
    EXPECT_HALT(read_dbe_text("gate\n"), wrong_keyword("gate", "dbe", "dbes_class: dbe not found. Debug 1."));
    EXPECT_HALT(read_dbe_text("dbe gate\n"), wrong_keyword("gate", "name", "expect name here, check dbe library"));
    EXPECT_HALT(read_dbe_text(edited(dbe_header, {}) + "X:\n"),
                "check_word_3:\n   word_out is: X:\n   given words are: fortran: C:\n   message from calling routine:\n"
                "   expect fortran:/C: here, check dbe library\n   Halting...\n");
}

TEST(dbes_messages, faults_of_an_entry) {
    const struct {
        std::string text, console;
    } faults[] = {
        {dbe({"iparms: a"}), "dbes_class: k_rem is not zero (iprm). Halting...\n"},
        {dbe({"rparms: a"}), "dbes_class: k_rem is not zero (rprm). Halting...\n"},
        {dbe({"stparms: a"}), "dbes_class: k_rem is not zero (sv). Halting...\n"},
        {dbe({"igparms: a"}), "dbes_class: k_rem is not zero (ig). Halting...\n"},
        {dbe({}, "C: compiled\n"), "dbes_class: enddbe not found. Halting...\n"},
        {dbe({}, "C:\ndbe name=y\n"), "dbes_class: dbe of next dbe before enddbe of current dbe? Halting...\n"},
        {dbe({"input_nodes: " + many("n", 201)}), too_many(201, 200, "dbes_class: n_ttlnd is too large!")},
        {dbe({"input_nodes: " + many("n", 100), "output_nodes: " + many("m", 101)}),
         too_many(201, 200, "dbes_class: n_ttlnd is too large!")},
        {dbe({"analog_nodes: " + many("n", 51)}), too_many(51, 50, "dbes_class: n_ttlanlg is too large!")},
        {dbe({"aux_var: " + many("n", 101)}), too_many(101, 100, "dbes_class: n_ttlaux is too large!")},
        {dbe({"input_nodes: " + long_word(4001)}), too_many(4001, 4000, "dbes_class: n_ttlndchr is too large!")},
    };
    for (const auto& f : faults) EXPECT_HALT(read_dbe_text(f.text), f.console);
    // A start-up value that is no integer is refused as any such integer.
    const console_run iparm = run_and_listen([&] { read_dbe_text(dbe({"iparms: a=1.5"})); });
    ASSERT_TRUE(iparm.stopped);
    EXPECT_HALT(read_dbe_text(dbe({"stparms: a=1.5"})), iparm.text);
    EXPECT_HALT(read_dbe_text(dbe({"igparms: a=1.5"})), iparm.text);
}

TEST(dels_class, expands_to_elements_with_nodes_in_the_composites_numbers) {
    const dels_class lib = read_dce_text(
        dce({"dce name=pair", "mainnodes: a b y", "auxnodes: m", "analog_nodes: v",
             "outvar: y=dvar_of_y m=dvar_of_m s=dstate_of_g2", "rparms: td=3 td2=6", "stparms: s0=0", "igparms: g=1"},
            "dbemodel name=slow type=gate t0=7 t1=8\n"
            "dbe type=gate name=g1 a=a b=b y=m t0=td2 st=s0\ndbe model=slow name=g2 a=m b=a y=y g0=g\n"
            "dbe type=adc x=v y=b\n") +
        dce({"dce name=two", "mainnodes: p q", "auxnodes: r", "analog_nodes: w", "outvar: s=s_of_c y=y_of_c"},
            "dbe type=source y=p yb=q\ncalldce pair name=c a=p b=r y=q v=w s0=2\n"));
    EXPECT_EQ(lib.be.i_be, (ints{0, 0, 2, 1, 0, 0, 2}));
    EXPECT_EQ(row(lib.be.dgtl, 0), (ints{0, 1, 3}));
    EXPECT_EQ(row(lib.be.dgtl, 1), (ints{3, 0, 2}));
    EXPECT_EQ(row(lib.be.dgtl, 2), (ints{1}));
    EXPECT_EQ(row(lib.be.in, 2), (ints{0}));
    EXPECT_EQ(row(lib.be.rprm_flag, 0), (ints{1, -1}));
    EXPECT_EQ(row(lib.be.rprm, 1), (std::vector<double>{7, 8}));
    EXPECT_EQ(row(lib.be.sv_flag, 0), (ints{0}));
    EXPECT_EQ(row(lib.be.ig_flag, 1), (ints{0}));
    EXPECT_EQ(lib.ov.kind, (ints{ov_dvar, ov_dvar, ov_dstate, ov_dstate, ov_dvar}));
    EXPECT_EQ(lib.ov.index, (ints{2, 3, 1, 2, 1}))
        << "the state of the second element, behind the source in the caller";
    // p q r, and behind them the internal node of the callee
    EXPECT_EQ(row(lib.be.dgtl, 4), (ints{0, 2, 3}));
    EXPECT_EQ(row(lib.be.dgtl, 5), (ints{3, 0, 1}));
    EXPECT_EQ(row(lib.be.dgtl, 6), (ints{2}));
    EXPECT_EQ(row(lib.be.sv, 4), (std::vector<double>{2}));
}

TEST(dels_messages, faults_of_an_entry) {
    const std::string gate = "dbe type=gate name=g a=a b=a y=y\n";
    const lines nodes = {"mainnodes: a y"};
    const auto with = [&](const std::string& body, lines more = {}) {
        more.insert(more.end(), nodes.begin(), nodes.end());
        return dce(more, body);
    };
    const struct {
        std::string text, console;
    } faults[] = {
        {dce({"mainnodes: a y z"}, gate),
         "dels_class: a node not assigned? check dce library\n  dels name is x\n  node number is 2\n"},
        {with("dbe type=gate a=a b=q y=y\n"), not_in_list("q", "dels_class: aux node not found, check dce library")},
        {with("dbe type=gate a=a y=y\n"), not_in_list("b", "dels_dbe: dbes_node_name not found.", "find_word_EO_2")},
        {with("dbe type=none a=a y=y\n"), not_in_list("none", "dels_dbe: dbes_name not found")},
        {with(gate + "calldce later a=a\n"), not_in_list("later", "dels_dels_1: dels_name not found")},
        {with("dbemodel name=m type=gate t0=1 t1\n" + gate), "dels_class: k_rem is not zero (dmdbe, DC). Halting...\n"},
        {with("dcemodel name=m type=gate t0=1 t1\n" + gate), "dels_class: k_rem is not zero (dmdce, DC). Halting...\n"},
        {with("dbemodel name=m type=gate\n" + gate),
         "dels_class: nw_s1=5 is too small.\n  Check dbemodel statement. Halting...\n"},
        {with("dcemodel name=m type=gate\n" + gate),
         "dels_class: nw_s1=5 is too small.\n  Check dcemodel statement  Halting...\n"},
        {with(gate, {"outvar: z=dvar_of_q"}), not_in_list("q", "dels_class: outvar node name not found")},
        {with(gate, {"outvar: z=dvar_of_y w"}), "dels_class: k_rem is not zero (ov). Halting...\n"},
        {with(gate, {"outvar: z=dstate_of_h"}),
         "dels_class: some outvar is not assigned?\n  i_ov = 0\n  Check dce library. Halting..\n"},
        {edited(dce_header, nodes) + gate + "end_dc\n", "dels_class: enddce not found. Halting...\n"},
    };
    for (const auto& f : faults) EXPECT_HALT(read_dce_text(f.text), f.console);
}

TEST(dels_messages, a_missing_line_names_the_keyword_found_and_the_one_wanted) {
    for (std::size_t i = 1; i < dce_header.size(); ++i) {
        const std::string found = i + 1 < dce_header.size() ? dce_header[i + 1] : "enddce";
        const std::string text = dce_header[i].substr(0, dce_header[i].size() - 1);
        EXPECT_HALT(read_dce_text(edited(dce_header, {}, dce_header[i]) + "enddce\n"),
                    wrong_keyword(found, dce_header[i], "expect " + text + " here, check dce library"));
    }
}

TEST(dels_class, dump_reports_totals_of_elements) {
    const dels_class lib =
        read_dce_text(dce({"mainnodes: a y", "stparms: s=0"}, "dbe type=gate name=g a=a b=a y=y st=s\n"));
    std::ostringstream out;
    write_composite_dump(out, "dels", lib);
    for (const char* line : {"n_ttlanlg = 0\n", "n_be_ttlnd = 3\n", "n_be_ttlanlg = 0\n", "n_be_ttlsv = 1\n",
                             "n_be_ttlig = 1\n", "i_delsbe = 0, i_dbes = 0"})
        EXPECT_NE(out.str().find(line), std::string::npos) << line << out.str();
}
}  // namespace
