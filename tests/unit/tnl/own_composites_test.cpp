#include "tnl/deck/own_composites.h"

#include <gtest/gtest.h>

#include "origin_of.h"
#include "temp_folder.h"
#include "tnl/check/check_deck.h"
#include "tnl/common/exit_status.h"
#include "tnl/deck/deck_view.h"
#include "tnl/deck/installed.h"

namespace {

using namespace cli;

const installed_libraries& installed() {
    static const installed_libraries all = read_installed(TARNEL_SHARE);
    return all;
}

const std::string divider =
    "ece name=divider\n"
    "mainnodes: a m b\n"
    "rparms: r=1k\n"
    "callece r p=a n=m r=r\n"
    "callece r p=m n=b r=r\n"
    "endece\n";

// A deck around one element and the text of composites in front of the circuit.
std::string deck_with(const std::string& composites, const std::string& element) {
    return "title: t\n" + composites + "begin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc p=in n=0 vdc=1\n" +
           element + "outvar: v=nodev_of_in\nend_circuit\nbegin_solve\nsolve_type dc\nbegin_output\nfilename o.dat\n" +
           "variables: v\nend_output\nend_solve\nend_cf\n";
}

// "file:line:column code" of each fault; warnings with a '~' before.
std::string faults_of(const std::string& text) {
    const check_report report = check_deck(view_deck("d.in", text), installed());
    std::string out;
    for (const check_fault& f : report.faults) {
        const record_place p = place_of_fault(report, f);
        out += (out.empty() ? "" : ", ") + std::string(f.is_error ? "" : "~") + p.file + ":" + std::to_string(p.line) +
               ":" + std::to_string(p.column) + " " + f.code;
    }
    return out;
}
const std::string load = "eelement name=R9 type=r p=x n=0\n";
const std::string use = "eelement name=D1 type=divider a=in m=x b=0\n" + load;
std::string faults_with(const std::string& from, const std::string& to) {
    std::string changed = divider;
    changed.replace(changed.find(from), from.size(), to);
    return faults_of(deck_with(changed, use));
}

TEST(own_composites, are_cut_out_of_the_deck_and_completed) {
    const deck_source s = deck_source_of("title: t\n" + divider + "begin_circuit\n", "d.in");
    EXPECT_EQ(s.text, "title: t\nbegin_circuit\n");
    EXPECT_EQ(origin_of(s, 2), "d.in:8");
    const own_composites own = own_composites_of(s);
    ASSERT_EQ(own.entries.size(), 1u);
    EXPECT_TRUE(own.faults.empty());
    EXPECT_EQ(own.entries[0].entry.name, "divider");
    EXPECT_EQ(own.entries[0].entry.text,
              "ece name divider\nbegin_dc\nmainnodes: a m b\nauxnodes:\noutvar:\nbias:\nstparms:\nigparms:\n"
              "ind_nodes:\nind_branches:\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\nrparms: r 1k\n"
              "rparms_derived:\ncallece r p a n m r r\ncallece r p m n b r r\nend_dc\nC:\nendC\nbegin_ac\n"
              "outvar_ac:\nind_nodes_ac:\nind_branches_ac:\nend_ac\nendece\n");
}

TEST(own_composites, of_blocks_are_completed_with_the_lines_of_their_family) {
    const own_composites own = own_composites_of(
        deck_source_of("gce name=twice\ncallgce multscl x=x y=y k=2\nmainvars: x y\nendgce\n", "d.in"));
    ASSERT_EQ(own.entries.size(), 1u);
    EXPECT_EQ(own.entries[0].entry.text,
              "gce name twice\nbegin_dc\nmainvars: x y\nauxvars:\nxvars:\noutvar:\nbias:\nstparms:\nigparms:\niparms:\n"
              "sparms:\nrparms:\nrparms_derived:\ncallgce multscl x x y y k 2\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\n"
              "end_ac\nendgce\n");
}

TEST(own_composites, lists_may_stand_in_several_lines_with_comments_between) {
    const own_composites own = own_composites_of(deck_source_of(
        "ece name=d\n#: Two words\nmainnodes: a   # first\n# more\n+ b\nmainnodes: c\nendece\n", "d.in"));
    ASSERT_EQ(own.entries.size(), 1u);
    EXPECT_NE(own.entries[0].entry.text.find("\nmainnodes: a b c\n"), std::string::npos);
    EXPECT_NE(own.entries[0].entry.text.find("ece name d\n#: Two words\n"), std::string::npos);
    const own_line& line = own.entries[0].lines[1];
    ASSERT_EQ(line.w.size(), 3);
    EXPECT_EQ(line.at[2].line, 4);
    EXPECT_EQ(line.at[2].column, 2);
}

TEST(own_composites, small_signal_lines_go_to_their_half) {
    const own_composites own =
        own_composites_of(deck_source_of("ece name=d allow_ac=yes\nmainnodes: p n\ncallece r p=p "
                                         "n=n\nbegin_ac\ncallece r p=p n=n\noutvar_ac: i=i_ac_of_x\n"
                                         "end_ac\nendece\n",
                                         "d.in"));
    ASSERT_TRUE(own.faults.empty());
    EXPECT_NE(own.entries[0].entry.text.find("callece r p p n n\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac: i i_ac_of_x\n"
                                             "ind_nodes_ac:\nind_branches_ac:\ncallece r p p n n\nend_ac\nendece\n"),
              std::string::npos);
}

TEST(own_composites, join_the_libraries_and_their_lists_in_the_order_of_calls) {
    const std::string caller = "ece name=four\nmainnodes: a m b\ncallece divider a=a m=m b=b\nendece\n";
    const deck_view deck = view_deck("d.in", deck_with(caller + divider, "eelement name=D1 type=four a=in m=x b=0\n"));
    const installed_libraries all = with_own(installed(), deck.own);
    EXPECT_TRUE(("\n" + all.list[0]).find("\n.four\n") != std::string::npos);
    const deck_needs needs = needs_of(deck, all);
    EXPECT_TRUE(needs.unknown.empty());
    const int eels = find_library(&library_form::file, "eels.aux");
    std::string names;
    for (const int e : needs.entries[eels]) names += all.library[eels].entries[static_cast<std::size_t>(e)].name + " ";
    EXPECT_EQ(names, "vsrcdc r divider four ");
}

TEST(own_composites, models_of_a_file_that_stands_before_the_circuit_are_put_into_it) {
    const temp_folder here;
    ::write_file("parts.lib", "emodel name=big type=r\n# of a kilo\n+ r=1k\n" + divider);
    ::write_file("d.in", "title: t\ninclude parts.lib\ngreal a=1\nbegin_circuit\nrefnode 0\n");
    const deck_source s = read_deck_source("d.in");
    EXPECT_EQ(s.text, "title: t\n# of a kilo\ngreal a=1\nbegin_circuit\nemodel name=big type=r\n+ r=1k\nrefnode 0\n");
    EXPECT_EQ(origin_of(s, 5), "parts.lib:1");
    EXPECT_EQ(origin_of(s, 6), "parts.lib:3");
    EXPECT_EQ(origin_of(s, 7), "d.in:5");
}

TEST(own_composites, that_cannot_be_are_told_with_their_place) {
    const auto fault = [](const std::string& text) {
        const deck_source s = deck_source_of("title: t\n" + text + "begin_circuit\nend_circuit\n", "d.in");
        EXPECT_NE(s.text.find("begin_circuit\nend_circuit\n"), std::string::npos) << text;
        const own_composites own = own_composites_of(s);
        if (own.faults.empty()) return std::string();
        const record_place p = place_of(s, own.faults[0].at);
        return std::to_string(p.line) + ":" + std::to_string(p.column) + " " + own.faults[0].message;
    };
    EXPECT_EQ(fault("ece name=a\nmainnodes: p n\n"), "2:1 this ece has no endece");
    EXPECT_EQ(fault("ece name=a\ngce name=b\nendgce\n"), "2:1 this ece has no endece");
    EXPECT_EQ(fault("ece a\nendece\n"), "2:1 a composite needs its name");
    EXPECT_EQ(fault(" ebe name=a\nnodes: p n\nC:\n f = 1;\nendebe\n"),
              "2:2 a basic element (ebe) cannot be brought by a deck: its function is compiled");
    EXPECT_EQ(fault("dce name=a\nenddce\n"), "");
    EXPECT_EQ(fault("xce name=a\nendxce\n"), "");
    EXPECT_EQ(fault("gme name=a\nmainnodes: a\nendgme\n"), "3:1 no line of this gme begins with mainnodes:");
    EXPECT_EQ(fault("ece name=a\nend_dc\nC:\nint x;\nendC\nendece\n"),
              "5:1 a composite of a deck has no code of its own: nobody compiles it");
    EXPECT_EQ(fault("ece name=a\nC: compiled\nendece\n"),
              "3:4 a composite of a deck has no code of its own: nobody compiles it");
    EXPECT_EQ(fault("ece name=a\nC:\n# nothing\nendC\nendece\n"), "");
    EXPECT_EQ(fault("ece name=a compute_rparms=yes\nendece\n"),
              "2:12 compute_rparms needs a function that is compiled with the program");
    EXPECT_EQ(fault("ece name=a\nendece\nece name=a\nendece\n"), "4:10 the ece a is there already: d.in:2");
    EXPECT_EQ(fault("ece name=a\ninclude b\nendece\n"), "3:1 no line of this ece begins with include");
    EXPECT_EQ(fault("ece name=a\nendece\n+ b\n"), "4:3 nothing stands behind endece");
    EXPECT_EQ(fault("ece name=a\ncallece b\nendece\nece name=b\ncallece c\nendece\nece name=c\ncallece b\nendece\n"),
              "9:9 a composite cannot contain itself: b calls c calls b");
    EXPECT_EQ(fault("ece name=a\ncallece a\nendece\n"), "3:9 a composite cannot contain itself: a calls a");
}

TEST(own_composites, without_number_are_refused) {
    std::string many;
    for (int i = 0; i < 1100; ++i)
        many += "ece name=e" + std::to_string(i) + "\ncallece e" + std::to_string(i + 1) + "\nendece\n";
    const own_composites own = own_composites_of(deck_source_of(many, "d.in"));
    EXPECT_EQ(own.entries.size(), 1000u);
    ASSERT_EQ(own.faults.size(), 1u);
    EXPECT_EQ(own.faults[0].message, "a deck has at most 1000 composites of its own");
}

TEST(check_composites, finds_nothing_in_a_good_one) {
    EXPECT_EQ(faults_of(deck_with(divider, use)), "");
    EXPECT_EQ(faults_of(divider), "");  // a file of composites alone
}

TEST(check_composites, names_line_and_column_of_what_is_wrong) {
    EXPECT_EQ(faults_with("callece r p=a", "callece rr p=a"), "d.in:5:9 unknown-type");
    EXPECT_EQ(faults_with("callece r p=a", "ebe type=rr p=a"), "d.in:5:10 unknown-type");
    EXPECT_EQ(faults_with("callece r p=a", "ebe p=a"), "d.in:5:1 no-type");
    EXPECT_EQ(faults_with("n=m r=r", "n=m q=r"), "d.in:5:19 unknown-word");
    EXPECT_EQ(faults_with("n=m r=r", "n=m r"), "d.in:5:19 no-value");
    EXPECT_EQ(faults_with("n=m r=r", "n=m r=r r=r"), "d.in:5:23 given-twice");
    EXPECT_EQ(faults_with("n=m r=r", "n=mm r=r"), "d.in:5:17 unknown-node");
    EXPECT_EQ(faults_with("n=b", "n=0"), "d.in:6:17 unknown-node");
    EXPECT_EQ(faults_with("p=m n=b", "p=m"), "d.in:6:1 missing-terminal");
    EXPECT_EQ(faults_with("n=m r=r", "n=m r=rr"), "d.in:5:21 bad-number");
    EXPECT_EQ(faults_with("rparms: r=1k\n", "rparms: r=1k\nauxnodes: z\n"), "d.in:5:11 unconnected");
    EXPECT_EQ(faults_with("rparms: r=1k\n", "rparms: r=1k\noutvar: v=v_in_m\n"), "d.in:5:11 unknown-output");
    EXPECT_EQ(faults_with("rparms: r=1k\n", "rparms: r=1k\noutvar: v=nodev_of_z\n"), "d.in:5:11 unknown-output");
    EXPECT_EQ(faults_with("rparms: r=1k\n", "rparms: r=1k\noutvar: v=v_of_r1\n"), "d.in:5:11 unknown-output");
    EXPECT_EQ(faults_with("callece r p=a", "outvar: v=vv_of_r1\ncallece r name=r1 p=a"), "d.in:5:11 unknown-output");
}

TEST(check_composites, names_what_stands_there_twice_and_what_nobody_reads) {
    EXPECT_EQ(faults_with("rparms: r=1k", "rparms: r=1k r=2k"), "d.in:4:14 named-twice");
    EXPECT_EQ(faults_with("rparms: r=1k", "rparms: r=1k\nrparms: r=2k"), "d.in:5:9 named-twice");
    EXPECT_EQ(faults_with("rparms: r=1k", "rparms: r=1k q=1k"), "") << "a value may be that of another parameter";
    EXPECT_EQ(faults_with("rparms: r=1k", "rparms: r=1k\noutvar: v=nodev_of_a v=nodev_of_b"), "d.in:5:22 named-twice");
    EXPECT_EQ(faults_with("mainnodes: a m b", "mainnodes: a m b m"), "d.in:3:18 named-twice");
    EXPECT_EQ(faults_with("callece r p=a n=m r=r\ncallece r", "callece r name=z p=a n=m r=r\ncallece r name=z"),
              "d.in:6:16 named-twice");
    EXPECT_EQ(faults_with("callece r p=a n=m r=r\ncallece r", "callece r name=y p=a n=m r=r\ncallece r name=z"), "");
    EXPECT_EQ(faults_with("name=divider", "name=divider allow_ca=yes"), "d.in:2:18 unknown-word");
    EXPECT_EQ(faults_with("name=divider", "name=divider allow_ac=no"), "");
    EXPECT_EQ(faults_with("name=divider", "name=divider allow_ac"), "d.in:2:18 no-value");
    EXPECT_EQ(faults_with("name=divider", "name=divider allow_ac=no allow_ac=no"), "d.in:2:30 given-twice");
    EXPECT_EQ(faults_of("gce name=g foo=bar\nmainvars: x y\nrparms: kp=2 kp=3\n"
                        "callgce multscl name=z x=x y=y k=kp\noutvar: i=var_of_x i=var_of_y\nendgce\n"),
              "d.in:1:12 unknown-word, d.in:3:14 named-twice, d.in:5:20 named-twice");
}

TEST(check_composites, tells_what_only_the_reader_of_libraries_finds) {
    EXPECT_EQ(faults_with("rparms: r=1k", "rparms: r=1k 2"), "d.in:2:1 refused");
    EXPECT_EQ(faults_with("rparms: r=1k", "rparms: r=1kk"), "d.in:4:11 refused");
    // Of two composites the one at fault alone is told, used or not.
    const std::string caller = "ece name=four\nmainnodes: a m b\ncallece divider a=a m=m b=b\nendece\n";
    std::string bad = divider;
    bad.replace(bad.find("1k"), 2, "1kk");
    EXPECT_EQ(faults_of(deck_with(caller + bad, "")), "d.in:8:11 refused");
}

TEST(check_composites, reads_no_more_of_them_than_it_can_tell_of) {
    const auto report_of = [](int n) {
        std::string many;
        for (int i = 0; i < n; ++i)
            many +=
                "ece name=e" + std::to_string(i) + "\nmainnodes: p n\nrparms: r=1kk\ncallece r p=p n=n r=r\nendece\n";
        return check_deck(view_deck("d.in", many), installed());
    };
    const check_report few = report_of(50), many = report_of(300);
    EXPECT_EQ(few.count.at("refused"), 50);
    EXPECT_EQ(few.n_warnings(), 0);
    EXPECT_EQ(many.count.at("refused"), 50) << "each is a reading of its own";
    ASSERT_EQ(many.n_warnings(), 1);
    EXPECT_NE(report_text(many).find("warning: so many composites are refused that this one and further ones"),
              std::string::npos);
}

TEST(check_composites, knows_their_words_in_the_deck_and_the_loops_that_they_make) {
    EXPECT_EQ(faults_of(deck_with(divider, "eelement name=D1 type=divide a=in m=x b=0\n")), "d.in:11:23 unknown-type");
    EXPECT_EQ(faults_of(deck_with(divider, "eelement name=D1 type=divider a=in m=x b=0 q=1\n" + load)),
              "d.in:11:44 unknown-word");
    const std::string source = "ece name=source\nmainnodes: p n\ncallece vsrcdc p=p n=n vdc=2\nendece\n";
    EXPECT_EQ(faults_of(deck_with(source, "eelement name=S1 type=source p=in n=0\n")), "d.in:9:1 voltage-loop");
}

TEST(check_composites, takes_no_word_of_theirs_for_that_of_an_element_inside) {
    const std::string scaled =
        "ece name=scaled\nmainnodes: a b\nrparms: r=1\ncallece r p=a n=b r=1k k_scale=r\nendece\n";
    EXPECT_EQ(faults_of(deck_with(scaled, "eelement name=D1 type=scaled a=in b=0 r=1e-10\n")), "");
}

TEST(check_composites, warns_of_one_that_takes_the_place_of_an_installed_element) {
    std::string own = divider;
    own.replace(own.find("divider"), 7, "r_pot");
    EXPECT_EQ(faults_of(deck_with(own, "eelement name=D1 type=r_pot a=in m=x b=0\n" + load)),
              "~d.in:2:10 hides-installed");
}

TEST(check_composites, calls_that_double_at_each_level_come_to_an_end) {
    std::string tower = "ece name=c0\nmainnodes: p n\ncallece r p=p n=n\nendece\n";
    for (int i = 1; i < 40; ++i) {
        const std::string call = "callece c" + std::to_string(i - 1) + " p=p n=n\n";
        tower += "ece name=c" + std::to_string(i) + "\nmainnodes: p n\n" + call + call + "endece\n";
    }
    const std::string found = faults_of(deck_with(tower, "eelement name=T type=c39 p=in n=0\n"));
    EXPECT_NE(found.find(" refused"), std::string::npos);
}

// Mixed composites, one that calls the other; their lines stand in the order of the file.
const std::string mixed =
    "gme name=pair\n"
    "mainnodes_anlg: a b\n"
    "auxnodes_anlg: m\n"
    "rparms: r=1k\n"
    "outvar_anlg: vm=nodev_of_m v=v_of_r1\n"
    "callece r name=r1 p=a n=m r=r\n"
    "callece r name=r2 p=m n=b r=r\n"
    "endgme\n"
    "gme name=with_logic\n"
    "outvar_dgtl: y=dvar_of_y\n"
    "mainnodes_dgtl: x\n"
    "auxnodes_dgtl: y\n"
    "mainnodes_anlg: a b\n"
    "callgme pair name=p a=a b=b r=2k\n"
    "calldce not name=n a=x y=y\n"
    "endgme\n";
std::string in_time(std::string deck) {  // logic has no dc
    const std::string dc = "solve_type dc\n";
    return deck.replace(deck.find(dc), dc.size(),
                        "solve_type trns\ninitial_sol initialize\nmethod: back_euler=yes delt_const=1n t_end=20n\n");
}
std::string mixed_faults(const std::string& from, const std::string& to) {
    std::string changed = mixed;
    if (!from.empty()) changed.replace(changed.find(from), from.size(), to);
    return faults_of(in_time(deck_with(changed,
                                       "gmelement name=X type=with_logic a=in b=0 x=d\n"
                                       "delement name=C type=clock y=d\n")));
}

TEST(own_composites, of_several_domains_are_completed_and_checked_in_their_lines) {
    const deck_source s = deck_source_of("title: t\n" + mixed + "begin_circuit\n", "d.in");
    const own_composites own = own_composites_of(s);
    ASSERT_EQ(own.entries.size(), 2u);
    EXPECT_EQ(own.entries[1].entry.text,
              "gme name with_logic\nmainnodes_anlg: a b\nauxnodes_anlg:\nstparms_anlg:\nigparms_anlg:\nmain_var:\n"
              "aux_var:\niparms:\nsparms:\nrparms:\nrparms_derived:\nmainnodes_dgtl: x\nauxnodes_dgtl: y\n"
              "stparms_dgtl:\nigparms_dgtl:\noutvar_anlg:\noutvar_dgtl: y dvar_of_y\noutvar_ac:\n"
              "callgme pair name p a a b b r 2k\ncalldce not name n a x y y\nendgme\n");
    EXPECT_EQ(mixed_faults("", ""), "");
    EXPECT_EQ(mixed_faults("n=m r=r", "n=q r=r"), "d.in:7:25 unknown-node");
    EXPECT_EQ(mixed_faults("n=m r=r", "r=r"), "d.in:7:1 missing-terminal");
    EXPECT_EQ(mixed_faults("n=m r=r", "n=m rr=r"), "d.in:7:27 unknown-word");
    EXPECT_EQ(mixed_faults("n=m r=r", "n=m r=q"), "d.in:7:29 bad-number");
    EXPECT_EQ(mixed_faults("a=x y=y", "a=x y=a"), "d.in:16:26 unknown-node");
    EXPECT_EQ(mixed_faults("calldce not", "calldce nott"), "d.in:16:9 unknown-type");
    EXPECT_EQ(mixed_faults("callgme pair", "callgme par"), "d.in:15:9 unknown-type");
    EXPECT_EQ(mixed_faults("vm=nodev_of_m", "vm=nodev_of_q"), "d.in:6:17 unknown-output");
    EXPECT_EQ(mixed_faults("v=v_of_r1", "v=v_of_r3"), "d.in:6:30 unknown-output");
    EXPECT_EQ(mixed_faults("y=dvar_of_y", "y=dvar_of_a"), "d.in:11:16 unknown-output");
    EXPECT_EQ(mixed_faults("callgme pair name=p a=a b=b r=2k", "callgme with_logic name=p a=a b=b x=x"),
              "d.in:15:9 ring");
}

TEST(own_composites, of_several_domains_have_their_statements_checked) {
    const auto faults = [](const std::string& statement, const std::string& output = "") {
        return faults_of(in_time(deck_with(mixed, statement + (output.empty() ? "" : "outvar: o=" + output + "\n"))));
    };
    const std::string good = "gmelement name=X type=pair a=in b=0\n";
    EXPECT_EQ(faults(good), "");
    EXPECT_EQ(faults("gmelement name=X type=pai a=in b=0\n"), "d.in:21:23 unknown-type");
    EXPECT_EQ(faults("gmelement name=X type=pair a=in\n"), "d.in:21:1 missing-terminal");
    EXPECT_EQ(faults("gmelement name=X type=pair a=in b=0 rr=1\n"), "d.in:21:37 unknown-word");
    EXPECT_EQ(faults("gmelement name=X type=pair a=in b=0 r=one\n"), "d.in:21:39 bad-number");
    for (const char* output : {"vm_of_X", "v_of_X.r1", "pwr_elec_of_X.r2"}) EXPECT_EQ(faults(good, output), "");
    EXPECT_EQ(faults(good, "vn_of_X"), "d.in:22:11 unknown-output");
    EXPECT_EQ(faults(good, "v_of_X.r3"), "d.in:22:11 unknown-output");
    EXPECT_EQ(faults(good, "w_of_X.r1"), "d.in:22:11 unknown-output");
    EXPECT_EQ(faults("gmelement name=X type=with_logic a=in b=0 x=d\ndelement name=C type=clock y=d\n", "v_of_X.p.r1"),
              "d.in:23:11 unknown-output");
}

}  // namespace
