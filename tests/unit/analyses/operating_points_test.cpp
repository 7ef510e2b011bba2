// operating_points_test.cpp -- circuits solved from nothing with default settings, against operating points that
// ngspice has found (tests/op_reference/*.cir and numbers.txt) or that follow from a closed form.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <map>

#include "dc_fixture.h"

namespace {
const std::string tests_folder = std::string(TARNEL_EXAMPLES) + "/../tests/";

// Volts of each node of each circuit.
using voltages = std::vector<std::pair<std::string, double>>;
const std::map<std::string, voltages>& reference() {
    static const std::map<std::string, voltages> all = [] {
        std::map<std::string, voltages> read;
        std::ifstream in(tests_folder + "op_reference/numbers.txt");
        for (std::string one; std::getline(in, one);) {
            if (one[0] == '#') continue;
            std::istringstream words(one);
            std::string name, node;
            double volts = 0;
            words >> name >> node >> volts;
            read[name].emplace_back(node, volts);
        }
        return read;
    }();
    return all;
}
std::vector<std::string> circuits() {
    std::vector<std::string> names;
    for (const auto& [name, unused] : reference()) names.push_back(name);
    return names;
}

int count_of(const std::string& text, const std::string& part) {
    int n = 0;
    for (std::size_t k = text.find(part); k != std::string::npos; k = text.find(part, k + 1)) ++n;
    return n;
}

// The installed elements with the composites that the circuits use alone.
const libraries& parts() {
    static const libraries lib = [] {
        library_texts used;
        used.ebes = installed_text("ebes.aux");
        used.ebac = installed_text("ebac.aux");
        const std::string all = installed_text("eels.aux");
        for (const std::string type :
             {"r", "vsrcdc", "isrcac", "diode_spice_1", "bjt_spice_5", "mos_level1", "jfet_spice_1"}) {
            const std::size_t from = all.find("ece name=" + type + " ");
            const std::string end = "endece\n";
            used.eels += all.substr(from, all.find(end, from) + end.size() - from);
        }
        return libraries_of(used);
    }();
    return lib;
}

// A deck solved, with what its last block took.
struct solved {
    temp_folder folder;
    circuit c;
    run_state r{c};
    std::string text;  // of the last block
    bool stopped = false;
    int solves = 0, unknowns = 0;

    // method: words of the last block.
    explicit solved(std::string deck, const std::string& method = "") {
        const std::string type = "solve_type dc\n";
        deck.insert(deck.rfind(type) + type.size(), method.empty() ? "" : "method: " + method + "\n");
        const int n_blocks = count_of(deck, type);
        listen([&] {
            c = circuit_of(deck, parts());
            prepare_circuit(r);
        });
        for (int k = 0; k < n_blocks && !stopped; ++k) {
            listen([&] {
                read_block(r, k);
                run_block(r);
            });
        }
        solves = r.flags.n_solve_lin;
        unknowns = r.mat.n_svec;
    }

    void listen(const std::function<void()>& f) {
        const console_run heard = run_and_listen(f);
        text = heard.text;
        stopped = heard.stopped;
    }
    double node(const std::string& name) const {
        const int k = c.cct.ect.find(name);
        return c.ebeu.val_nd[static_cast<std::size_t>(c.cct.ect.to_eu[static_cast<std::size_t>(k)])];
    }
    // The largest sum of the terminal currents at a node, A.
    double residual() const {
        std::vector<double> sum(static_cast<std::size_t>(c.ebeu.n_nd), 0.0);
        for (std::size_t t = 0; t < c.ebeu.cur_nd.size(); ++t)
            sum[static_cast<std::size_t>(c.ebeu.nd.data[t])] += c.ebeu.cur_nd[t];
        double largest = 0.0;
        for (int n = 0; n < c.ebeu.n_nd; ++n)
            if (n != c.ebeu.ref_nd) largest = std::max(largest, std::fabs(sum[static_cast<std::size_t>(n)]));
        return largest;
    }
    int transistors() const {
        int n = 0;
        for (const char* name : {"bjt_spice_5", "mos_level1", "jfet_spice_1"}) n += units_of(name);
        return n;
    }
    int units_of(const std::string& type) const {
        const std::vector<int>& entries = c.ebeu.unit.i_lib;
        return static_cast<int>(std::count(entries.begin(), entries.end(), c.lib.ebes.list.find(type)));
    }
};

// The largest deviation, V.
double deviation(const solved& s, const voltages& expected) {
    double largest = 0;
    for (const auto& [node, volts] : expected) largest = std::max(largest, std::fabs(s.node(node) - volts));
    return largest;
}

// A row of docs/convergence.md.
void tell(const std::string& name, const std::string& deck, const solved& s, const voltages& expected) {
    const solved plain(deck, "gmin_step=no");
    std::cout << "| " << name << " | " << s.transistors() << " | " << s.units_of("diode_spice_1") << " | " << s.unknowns
              << " | " << (plain.stopped ? "fails after " : "") << plain.solves << " | "
              << (plain.stopped ? std::to_string(s.solves - plain.solves) : "")
              << (count_of(s.text, "shunt_step_dc:") > 0 ? ", with shunts" : "") << " | " << std::setprecision(1)
              << std::scientific << s.residual() << " | " << deviation(s, expected) << std::defaultfloat << " |\n";
}

// With default settings, and once more until the currents balance.
void expect_found(const std::string& name, const std::string& deck, const voltages& expected) {
    const solved usual(deck);
    ASSERT_FALSE(usual.stopped) << usual.text;
    for (const auto& [node, volts] : expected)
        EXPECT_NEAR(usual.node(node), volts, 1e-3 * std::max(1.0, std::fabs(volts))) << node;
    const solved close(deck, "chk_rhs2=yes norm_2=1e-11");
    ASSERT_FALSE(close.stopped) << close.text;
    EXPECT_LT(close.residual(), 1e-9);
    for (const auto& [node, volts] : expected)
        EXPECT_NEAR(close.node(node), volts, 2e-5 * std::max(1.0, std::fabs(volts))) << node;
    tell(name, deck, usual, expected);
}

class operating_points : public testing::TestWithParam<std::string> {};

// CMOS inverters, each the load of the one before and the first that of the last.
constexpr double ring_supply = 5;
std::string ring(int n_stages) {
    std::string deck =
        "title: ring\nbegin_circuit\nrefnode 0\n"
        "emodel name=n type=mos_level1 pol=1 vt0=1 kp=50u gamma=0.4 lambda=0.02 phi=0.6 w=10u l=1u\n"
        "emodel name=p type=mos_level1 pol=-1 vt0=-1 kp=25u gamma=0.4 lambda=0.03 phi=0.6 w=20u l=1u\n"
        "eelement name=vdd type=vsrcdc p=vdd n=0 vdc=5\n";
    for (int k = 0; k < n_stages; ++k) {
        const std::string in = " g=n" + std::to_string((k + n_stages - 1) % n_stages), at = std::to_string(k);
        deck += "eelement name=mn" + at + " type=mos_level1 model=n d=n" + at + in + " s=0 b=0\n";
        deck += "eelement name=mp" + at + " type=mos_level1 model=p d=n" + at + in + " s=vdd b=vdd\n";
    }
    return deck + "end_circuit\nbegin_solve\nsolve_type dc\nend_solve\nend_cf\n";
}
// Where input and output of the inverter are equal: both channels are saturated. By bisection; the junctions' leakage
// of picoamperes is left out.
double threshold() {
    const auto surplus = [](double v) {
        const double n = 0.5 * 500e-6 * (v - 1) * (v - 1) * (1 + 0.02 * v), u = ring_supply - v;
        return n - 0.5 * 500e-6 * (u - 1) * (u - 1) * (1 + 0.03 * u);
    };
    double low = 1, high = ring_supply - 1;
    for (int k = 0; k < 200; ++k) {
        const double v = 0.5 * (low + high);
        (surplus(v) > 0 ? high : low) = v;
    }
    return low;
}

class rings_of_inverters : public testing::TestWithParam<int> {};
}  // namespace

TEST_P(operating_points, are_found_from_nothing_where_the_reference_has_them) {
    const std::string name = GetParam();
    expect_found(name, read_file(tests_folder + "op_circuits/" + name + ".in"), reference().at(name));
}
INSTANTIATE_TEST_SUITE_P(of, operating_points, testing::ValuesIn(circuits()),
                         [](const auto& row) { return row.param; });

TEST_P(rings_of_inverters, rest_with_all_nodes_at_the_threshold) {
    const int n = GetParam();
    voltages expected;
    for (int k = 0; k < n; ++k) expected.emplace_back("n" + std::to_string(k), threshold());
    expect_found("ring of " + std::to_string(n), ring(n), expected);
}
INSTANTIATE_TEST_SUITE_P(of, rings_of_inverters, testing::Values(11, 51, 201),
                         [](const auto& row) { return std::to_string(row.param) + "_stages"; });

// With one iteration of Newton's and none to spare, stepping alone must find the points.
TEST(shunt_step_dc, solves_the_amplifier_that_gmin_stepping_does_not) {
    const std::string deck = read_file(tests_folder + "op_circuits/opamp_follower.in");
    const solved s(deck, "itmax_newton_first=1");
    ASSERT_FALSE(s.stopped) << s.text;
    EXPECT_EQ(count_of(s.text, "gmin_step_dc_1:\n   N-R iterations did not converge.\n"), 1) << s.text;
    EXPECT_EQ(count_of(s.text, "shunt_step_dc: found in "), 1) << s.text;
    EXPECT_EQ(s.r.shunts.g, 0);
    for (const auto& [node, volts] : reference().at("opamp_follower"))
        EXPECT_NEAR(s.node(node), volts, 1e-3 * std::max(1.0, std::fabs(volts))) << node;
}

TEST(gmin_step_dc_1, solves_all_others_where_newton_may_not) {
    for (const auto& [name, expected] : reference()) {
        if (name == "opamp_follower" || name.ends_with("_a") || name.ends_with("_b")) continue;  // two states: either
        const solved s(read_file(tests_folder + "op_circuits/" + name + ".in"), "itmax_newton_first=1");
        ASSERT_FALSE(s.stopped) << name << '\n' << s.text;
        EXPECT_EQ(count_of(s.text, "shunt_step_dc"), 0) << name;
        for (const auto& [node, volts] : expected)
            EXPECT_NEAR(s.node(node), volts, 1e-3 * std::max(1.0, std::fabs(volts))) << name << ' ' << node;
    }
}
