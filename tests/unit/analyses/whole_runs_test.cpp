// Whole runs in a working folder with the installed libraries.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "dc_fixture.h"

namespace {
namespace fs = std::filesystem;

std::string output(const std::string& file, const std::string& variables) {
    return "begin_output\nfilename " + file + "\nvariables: " + variables + "\nend_output\n";
}
std::string deck(const std::string& circuit_block, const std::string& cards, const std::string& before = "") {
    return "title: test\n" + before + "begin_circuit\nrefnode 0\n" + circuit_block +
           "end_circuit\nbegin_solve\nsolve_type dc\n" + cards + "end_solve\nend_cf\n";
}
const std::string divider =
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=10\neelement name=R1 type=r p=in n=a r=1k\n"
    "eelement name=R2 type=r p=a n=0 r=3k\noutvar: v=nodev_of_a\n";
const std::string diode_loop =
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=5\neelement name=R1 type=r p=in n=a r=1k\n"
    "eelement name=D1 type=diode p=a n=0\noutvar: v=nodev_of_a\n";
const std::string size_line = "mat::set_mat_2: system matrix size is 3 x 3\n";
}  // namespace

// ---- looking inside

TEST(output_statement, all_words_at_once_write_their_files) {
    const temp_folder folder;
    const console_run heard = run_here(deck(
        "output input glbl ebes hebes hebes_ac dbes gbes xbes ebac gbac xbac eels heels dels gels xels gmes ecem dcem\n"
        "output gcem gmem ect gct dct xct ebce gbce xbce ov kcl smat error1 error2 ssw x_kcl x_bvd x_smat\n" +
            divider,
        output("v.dat", "v"), "greal ra=1\nginteger n=1\ngstring s=text\n"));
    EXPECT_EQ(heard.text, size_line + "TARNEL: Program completed.\n");
    for (const char* word : {"input", "glbl", "ebes",  "hebes", "hebes_ac", "dbes", "gbes", "xbes",    "ebac", "gbac",
                             "xbac",  "eels", "heels", "dels",  "gels",     "xels", "gmes", "ecem",    "dcem", "gcem",
                             "gmem",  "ect",  "gct",   "dct",   "xct",      "ov",   "smat", "ebce1_dc"})
        EXPECT_TRUE(fs::exists(std::string(word) + ".dat")) << word;
    EXPECT_EQ(read_file("v.dat"), " 7.500000e+00 \n");
    const std::string ect = read_file("ect.dat");
    for (const char* row : {"n_ect_nd = 3\n", "  i = 0, name = in, ", "  i = 1, name = 0, ", "  i = 2, name = a, "})
        EXPECT_NE(ect.find(row), std::string::npos) << row;
}

TEST(output_statement, circuit_tables_have_every_level_and_the_totals_of_the_units) {
    const temp_folder folder;
    // A composite of two resistors has a node of its own behind the names; ground words share the reference.
    const std::string block = "output ect gct dct xct\n" + divider +
                              "eelement type=ground_dummy c=gnd\neelement name=R3 type=r p=a n=gnd\neelement name=D1 "
                              "type=diode_spice_1 p=a n=0\n"
                              "gelement name=K type=const y=x k=2\ngelement name=M type=multscl x=x y=y\n";
    const console_run heard = run_here(deck(block, output("v.dat", "v")));
    ASSERT_FALSE(heard.stopped) << heard.text;
    EXPECT_EQ(read_file("ect.dat"),
              "cct_class\nn_ect_nd = 4\nn_eelu_nd = 4\nn_ebeu_nd = 3\nn_ebau_nd = 3\n"
              "ect_ref_node = 1\neelu_ref_node = 1\nebeu_ref_node = 1\nebau_ref_node = 1\n"
              "  i = 0, name = in, ect_to_eelu_nd = 0, ect_to_ebeu_nd = 0, ect_to_ebau_nd = 0\n"
              "  i = 1, name = 0, ect_to_eelu_nd = 1, ect_to_ebeu_nd = 1, ect_to_ebau_nd = 1\n"
              "  i = 2, name = a, ect_to_eelu_nd = 2, ect_to_ebeu_nd = 2, ect_to_ebau_nd = 2\n"
              "  i = 3, name = gnd, ect_to_eelu_nd = 3, ect_to_ebeu_nd = 1, ect_to_ebau_nd = 1\n"
              "  i = 0, eelu_to_ect_nd = 0, eelu_to_ebeu_nd = 0, eelu_to_ebau_nd = 0\n"
              "  i = 1, eelu_to_ect_nd = 1, eelu_to_ebeu_nd = 1, eelu_to_ebau_nd = 1\n"
              "  i = 2, eelu_to_ect_nd = 2, eelu_to_ebeu_nd = 2, eelu_to_ebau_nd = 2\n"
              "  i = 3, eelu_to_ect_nd = 3, eelu_to_ebeu_nd = 1, eelu_to_ebau_nd = 1\n"
              "  i = 0, ebeu_to_ect_nd = 0\n  i = 1, ebeu_to_ect_nd = 1\n  i = 2, ebeu_to_ect_nd = 2\n"
              "  i = 0, ebau_to_ect_nd = 0\n  i = 1, ebau_to_ect_nd = 1\n  i = 2, ebau_to_ect_nd = 2\n"
              // vsrcdc: 5 rparms, 1 aux, 1 auxs, 1 igparm; r: 7 rparms; diode_spice_1: 25 rparms, 2 iparms, 2 charges
              "ebeu_class\nn = 5\nn_ttlaux = 1\nn_ttlauxs = 1\nn_ttllocv = 2\nn_ttldgtl = 0\nn_ttliprm = 2\n"
              "n_ttlsprm = 0\nn_ttlrprm = 51\nn_ttlvr = 0\nn_ttlxvr = 0\nn_ttlsv = 0\nn_ttlig = 1\nn_ttlnd = 10\n"
              "n_ttlin = 0\nn_ttlib = 0\nn_ttlnd_kcl = 10\nn_nd = 3\nn_gd = 0\n"
              "ebau_class\nn = 5\nn_ttlaux = 1\nn_ttliprm = 1\nn_ttlsprm = 0\nn_ttlrprm = 23\nn_ttlvr = 0\n"
              "n_ttlnd = 10\nn_ttlin = 0\nn_ttlib = 0\nn_nd = 3\n");
    EXPECT_EQ(read_file("gct.dat"),
              "cct_class\nn_gct_vr = 2\nn_gelu_vr = 2\nn_gbeu_vr = 2\nn_gbau_vr = 2\n"
              "  i = 0, name = x, gct_to_gelu_vr = 0, gct_to_gbeu_vr = 0, gct_to_gbau_vr = 0\n"
              "  i = 1, name = y, gct_to_gelu_vr = 1, gct_to_gbeu_vr = 1, gct_to_gbau_vr = 1\n"
              "  i = 0, gelu_to_gct_vr = 0, gelu_to_gbeu_vr = 0, gelu_to_gbau_vr = 0\n"
              "  i = 1, gelu_to_gct_vr = 1, gelu_to_gbeu_vr = 1, gelu_to_gbau_vr = 1\n"
              "  i = 0, gbeu_to_gct_vr = 0\n  i = 1, gbeu_to_gct_vr = 1\n"
              "  i = 0, gbau_to_gct_vr = 0\n  i = 1, gbau_to_gct_vr = 1\n"
              "gbeu_class\nn = 2\nn_ttlaux = 0\nn_ttliprm = 0\nn_ttlsprm = 0\nn_ttlrprm = 2\nn_ttlvr = 3\n"
              "n_ttlxvr = 0\nn_ttlsv = 0\nn_ttlig = 0\nn_vr = 2\n");
    EXPECT_EQ(read_file("dct.dat"), "cct_class\nn_dct_nd = 0\nn_delu_nd = 0\nn_dbeu_nd = 0\n");
    EXPECT_EQ(read_file("xct.dat"),
              "cct_class\nn_xct_vr = 0\nn_xelu_vr = 0\nn_xbeu_vr = 0\nn_xbau_vr = 0\n"
              "xct_ref_node = -1\nxelu_ref_node = -1\nxbeu_ref_node = -1\nxbau_ref_node = -1\n");
}

TEST(element_names, are_unique_over_all_kinds_of_element) {
    const temp_folder folder;
    const console_run heard = run_here(deck(divider + "gelement name=R2 type=const y=x k=1\n", output("v.dat", "v")));
    EXPECT_TRUE(heard.stopped);
    EXPECT_TRUE(heard.text.starts_with("check_word_repeat_2: \n   The string <R2> is repeated.\n")) << heard.text;
    EXPECT_NE(heard.text.find("   cct_class\n"), std::string::npos) << heard.text;
}

TEST(output_statement, tables_are_written_without_a_solve_block_and_before_a_stray_line_is_seen) {
    for (const std::string stray : {"", "resistor R9\n"}) {
        const temp_folder folder;
        const console_run heard = run_here("title: test\nbegin_circuit\nrefnode 0\noutput input ect ov\n" + divider +
                                           stray + "end_circuit\nend_cf\n");
        EXPECT_EQ(heard.stopped, !stray.empty());
        EXPECT_EQ(heard.text, stray.empty() ? "TARNEL: Program completed.\n"
                                            : "ccmain: illegal statement in circuit section?\n"
                                              "  Check line starting with: resistor\n");
        for (const char* file : {"input.dat", "ect.dat", "ov.dat"}) EXPECT_TRUE(fs::exists(file)) << file;
    }
}

TEST(output_statement, debug_tells_where_the_run_is) {
    const temp_folder folder;
    EXPECT_EQ(run_here(deck("output debug\n" + divider, "")).text,
              "main: index_solve = 0\nmain: calling slv.set_values\nmain: slv.set_values done\n"
              "main: one_time_parms done\n" +
                  size_line + "TARNEL: Program completed.\n");
}

TEST(wrt_debug_smat, stops_a_linear_solve_behind_its_step) {
    const temp_folder folder;
    const console_run heard = run_here(deck(divider, "method: wrt_debug_smat=yes\n" + output("v.dat", "v")));
    EXPECT_TRUE(heard.stopped);
    EXPECT_EQ(heard.text, size_line + "stopped as wrt_debug_smat asks, behind writing delx_dc.dat\n");
    EXPECT_TRUE(fs::exists("mat_dc.dat"));
    EXPECT_TRUE(fs::exists("rhs_dc.dat"));
    // The source's guess stands at 10 V already; node a goes to 7.5 V, the current of the source to -2.5 mA.
    std::istringstream step(read_file("delx_dc.dat"));
    std::string title;
    double in = 1, a = 1, i = 1;
    std::getline(step, title);
    step >> in >> a >> i;
    EXPECT_EQ(title, "solve_linear_dc: delsvec");
    EXPECT_EQ(in, 0);
    EXPECT_DOUBLE_EQ(a, 7.5);
    EXPECT_DOUBLE_EQ(i, -0.0025);
    EXPECT_EQ(read_file("v.dat"), "");
}

TEST(wrt_debug_smat, stops_newton_at_the_iteration_asked_for_and_keeps_the_iterate) {
    const temp_folder folder;
    const console_run heard = run_here(deck(diode_loop, "method: wrt_debug_smat=yes iter_debug_newton=2\n" +
                                                            output("s.dat", "solution") + output("v.dat", "v")));
    EXPECT_TRUE(heard.stopped);
    const std::string told = "solve_newton_dc: flag_wrt_debug_smat = T\n";
    EXPECT_EQ(heard.text, size_line + told + told + "solve_newton_dc: writing to smat_dc_newt.dat, iter_newton = 1\n" +
                              "stopped as wrt_debug_smat asks, behind writing delx_dc_newt.dat\n");
    for (const char* file : {"mat_dc_newt.dat", "rhs_dc_newt.dat", "svec_dc_newt.dat"}) EXPECT_TRUE(fs::exists(file));
    EXPECT_EQ(read_file("delx_dc_newt.dat").substr(0, 25), "solve_newton_dc: delsvec\n");
    EXPECT_EQ(read_file("s.dat").substr(0, 14), "ebeu->val_nd:\n");
}

TEST(wrt_debug_smat, an_iteration_that_is_never_reached_stops_nothing) {
    const temp_folder folder;
    const console_run heard = run_here(deck(diode_loop, "method: wrt_debug_smat=yes\n" + output("v.dat", "v")));
    EXPECT_FALSE(heard.stopped);
    EXPECT_NE(read_file("v.dat"), "");
}

TEST(debug_gauss, the_lists_of_the_elimination_are_printed) {
    const temp_folder folder;
    const std::string quiet = run_here(deck(divider, output("v.dat", "v"))).text;
    const std::string first = run_here(deck(divider, "method: debug_gauss_1=yes\n")).text;
    const std::string second = run_here(deck(divider, "method: debug_gauss_2=yes\n")).text;
    EXPECT_GT(first.size(), quiet.size());
    EXPECT_GT(second.size(), quiet.size());
    EXPECT_NE(first, second);
}

// ---- the same circuit in other words

namespace {
struct element {
    std::string head, pins[4];  // head: type and parameters; pins: words behind p=, n=, cp=, cn=
    std::string name, branch;   // branch: element whose current is sensed
};
struct network {
    std::vector<element> elements;
    int n_nodes = 0;  // n0 is the reference
};

std::string node(int k) { return "n" + std::to_string(k); }

// A spanning tree of resistors keeps every node determined; what comes on top is mild enough for Newton to converge
// from nothing, and lets currents flow everywhere, so that no printed value is mere rounding.
network random_network(std::mt19937& rng) {
    auto uniform = [&](double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); };
    auto pick = [&](int a, int b) { return std::uniform_int_distribution<int>(a, b)(rng); };
    network net;
    net.n_nodes = pick(5, 14);
    auto add = [&](const std::string& head, int p, int n, int cp = -1, int cn = -1) {
        element e;
        e.head = head;
        e.pins[0] = node(p);
        e.pins[1] = node(n);
        if (cp >= 0) e.pins[2] = node(cp);
        if (cn >= 0) e.pins[3] = node(cn);
        e.name = "X" + std::to_string(net.elements.size());
        net.elements.push_back(e);
    };
    auto other = [&](int k) { return (k + pick(1, net.n_nodes - 1)) % net.n_nodes; };
    add("vsrcdc vdc=" + std::to_string(uniform(2, 9)), 1, 0);
    for (int k = 2; k < net.n_nodes; ++k) add("r r=" + std::to_string(uniform(50, 2000)), k, pick(0, k - 1));
    const int more = pick(3, 10);
    for (int i = 0; i < more; ++i) {
        const int p = pick(1, net.n_nodes - 1), n = other(p), cp = pick(1, net.n_nodes - 1);
        switch (pick(0, 4)) {
            case 0:
                add("r r=" + std::to_string(uniform(50, 2000)), p, n);
                break;
            case 1:
                add("diode is=1e-9", p, n);
                break;
            case 2:
                add("vccs gm=" + std::to_string(uniform(1e-5, 2e-4)), p, n, cp, 0);
                break;
            case 3:
                add("cccs k=" + std::to_string(uniform(-0.2, 0.2)), p, n);
                net.elements.back().branch = "X0";  // the source
                break;
            default:
                add("isrcac idc=" + std::to_string(uniform(1e-4, 3e-3)), p, n);
                break;
        }
    }
    add("vcvs k=" + std::to_string(uniform(0.1, 0.6)), net.n_nodes, 0, 1, 0);
    add("r r=330", net.n_nodes, pick(1, net.n_nodes - 1));
    ++net.n_nodes;
    return net;
}

std::string statement(const element& e, const std::string& prefix = "") {
    static const char* const keys[] = {" p=", " n=", " cp=", " cn="};
    std::string text = "eelement name=" + e.name + " type=" + prefix + e.head;
    for (int k = 0; k < 4; ++k)
        if (!e.pins[k].empty()) text += keys[k] + e.pins[k];
    if (!e.branch.empty()) text += " br=" + e.branch;
    return text + "\n";
}

// The rows of all node voltages in the order of n1, n2, ..., as printed.
std::vector<double> printed(const std::string& elements, int n_nodes, const std::vector<std::string>& name_of) {
    std::string outvars = "outvar:", list;
    for (int k = 1; k < n_nodes; ++k) {
        const std::string word = "v" + std::to_string(k);
        outvars += " " + word + "=nodev_of_" + name_of[static_cast<std::size_t>(k)];
        list += " " + word;
    }
    const console_run heard = run_and_listen([&] {
        write_file(".tnlaux/cct.in",
                   "title: random\nbegin_circuit\nrefnode " + name_of[0] + "\n" + elements + outvars +
                       "\nend_circuit\nbegin_solve\nsolve_type dc\nmethod: chk_only_rhs2=yes norm_2=1e-14\n" +
                       output("rows.dat", list) + "end_solve\nend_cf\n");
        run_tarnel();
    });
    EXPECT_FALSE(heard.stopped) << heard.text;
    std::istringstream in(read_file("rows.dat"));
    std::vector<double> row;
    for (double x; in >> x;) row.push_back(x);
    EXPECT_EQ(row.size(), static_cast<std::size_t>(n_nodes - 1));
    return row;
}

// Equal to one unit of the seventh digit.
void expect_same_digits(const std::vector<double>& a, const std::vector<double>& b, const std::string& what) {
    ASSERT_EQ(a.size(), b.size()) << what;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double unit = a[i] == 0 ? 0 : std::pow(10, std::floor(std::log10(std::fabs(a[i]))) - 6);
        EXPECT_LE(std::fabs(a[i] - b[i]), 1.001 * unit) << what << ": " << a[i] << " and " << b[i];
    }
}

// Composites whose only content is a call of the element: the same circuit one level deeper.
std::string wrappers() {
    auto one = [](const std::string& name, const std::string& sensed, const std::string& parms,
                  const std::string& branch = "") {
        std::string pass, values;
        std::istringstream in(parms);
        for (std::string p; in >> p;) {
            pass += " " + p + "=" + p;
            values += " " + p + "=7";
        }
        std::string senses;
        std::istringstream nodes(sensed);
        for (std::string s; nodes >> s;) senses += " " + s + "=" + s;
        if (!branch.empty()) senses += " " + branch + "=" + branch;
        return "ece name=w_" + name +
               "\nbegin_dc\nmainnodes: p n\nauxnodes:\noutvar:\nbias:\nstparms:\nigparms:\n"
               "ind_nodes: " +
               sensed + "\nind_branches: " + branch +
               "\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\n"
               "rparms:" +
               values + "\nrparms_derived:\ncallece " + name + " name=inner p=p n=n" + senses + pass +
               "\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nind_nodes_ac:\nind_branches_ac:\nend_ac\nendece\n";
    };
    return one("vsrcdc", "", "vdc") + one("r", "", "r") + one("diode", "", "is") + one("vccs", "cp cn", "gm") +
           one("vcvs", "cp cn", "k") + one("cccs", "", "k", "br") + one("isrcac", "", "idc");
}

struct random_networks : testing::Test {
    temp_folder folder;
    std::mt19937 rng{20};
    network net;
    std::vector<std::string> plain_names;
    std::vector<double> plain;

    random_networks() { fill_working_folder(".", "", more_entries("eels.aux", "ece_all.lst", wrappers())); }
    std::string statements(const std::string& prefix = "") const {
        std::string text;
        for (const element& e : net.elements) text += statement(e, prefix);
        return text;
    }
    void next() {
        net = random_network(rng);
        plain_names.clear();
        for (int k = 0; k < net.n_nodes; ++k) plain_names.push_back(node(k));
        plain = printed(statements(), net.n_nodes, plain_names);
    }
};
constexpr int n_networks = 25;
}  // namespace

TEST_F(random_networks, the_order_of_element_lines_does_not_matter) {
    for (int trial = 0; trial < n_networks; ++trial) {
        next();
        std::shuffle(net.elements.begin(), net.elements.end(), rng);
        expect_same_digits(plain, printed(statements(), net.n_nodes, plain_names), statements());
    }
}

TEST_F(random_networks, the_names_of_nodes_do_not_matter) {
    for (int trial = 0; trial < n_networks; ++trial) {
        next();
        // Names change hands, too: a node gets the old name of another, or a new one.
        std::vector<std::string> names = plain_names;
        std::shuffle(names.begin(), names.end(), rng);
        for (std::string& name : names)
            if (rng() % 2) name = "_" + name + "_of_";
        for (element& e : net.elements)
            for (std::string& pin : e.pins)
                if (!pin.empty()) pin = names[static_cast<std::size_t>(std::stoi(pin.substr(1)))];
        expect_same_digits(plain, printed(statements(), net.n_nodes, names), statements());
    }
}

TEST_F(random_networks, elements_inside_composites_are_the_same_elements) {
    for (int trial = 0; trial < n_networks; ++trial) {
        next();
        expect_same_digits(plain, printed(statements("w_"), net.n_nodes, plain_names), statements());
    }
}

TEST_F(random_networks, the_order_of_libraries_and_lists_does_not_matter) {
    auto reversed = [](const std::string& text, const std::string& end) {
        std::vector<std::string> entries(1);
        std::istringstream in(text);
        for (std::string l; std::getline(in, l);) {
            entries.back() += l + '\n';
            if (l == end || end.empty()) entries.emplace_back();
        }
        std::string all;
        for (auto e = entries.rbegin(); e != entries.rend(); ++e) all += *e;
        return all;
    };
    next();
    write_file(".tnlaux/ebes.aux", reversed(installed_text("ebes.aux"), "endebe"));
    write_file(".tnlaux/ebac.aux", reversed(installed_text("ebac.aux"), "endebe_ac"));
    for (const char* list : {"ebe_all.lst", "ece_all.lst", "sse_all.lst"})
        write_file(std::string(".tnlaux/") + list, reversed(read_file(std::string(".tnlaux/") + list), ""));
    expect_same_digits(plain, printed(statements(), net.n_nodes, plain_names), statements());
}
