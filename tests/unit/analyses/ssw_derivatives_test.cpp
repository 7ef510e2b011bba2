// The derivatives of a period's end by its start, element by element, against differences of whole shots: a state or a
// derivative that the periodic system misses shows here.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "analyses/shot.h"
#include "dc_fixture.h"
#include "output/row_writers.h"

namespace {
// Driven through lags, so that states are in front of the element as well as behind it.
std::string driver(const std::string& var, int k) {
    std::ostringstream out;
    out << "gelement name=SRC" << k << " type=srcac y=s" << k << " a=" << 0.4 + 0.1 * k
        << " f_hz=" << 1000 * (k % 3 + 1) << " phi=" << 20 * k << " dc=" << 0.6 + 0.05 * k << "\ngelement name=LAG" << k
        << " type=lag_1 x=s" << k << " y=" << var << " tau=" << 1e-4 * (k + 1) << '\n';
    return out.str();
}
std::string load(const std::string& var, int k) {
    std::ostringstream out;
    out << "gelement name=OUT" << k << " type=lag_1 x=" << var << " y=o" << k << " tau=" << 2e-4 * (k + 1) << '\n';
    return out.str();
}
// A node on a source of its own, with a capacitor.
std::string feed(const std::string& node, int k) {
    std::ostringstream out;
    out << "eelement name=V" << k << " type=vsrcac p=f" << k << " n=0 a=" << 2 + 0.5 * k
        << " f_hz=" << 1000 * (k % 2 + 1) << " phi=" << 30 * k << " vdc=" << 1.5 - k << "\neelement name=R" << k
        << " type=r p=f" << k << " n=" << node << " r=" << 100 + 20 * k << "\neelement name=C" << k
        << " type=c p=" << node << " n=0 c=" << 1e-6 * (k + 1) << '\n';
    return out.str();
}

// Tables for the blocks that read a file, and what names them.
void write_tables() {
    const auto write = [](const char* name, const char* text) { std::ofstream(name) << text; };
    write("pairs.txt", "-10 -3\n0 0\n0.5 1\n1 1.5\n10 4\n");
    write("times.txt", "2\n0.3m\n0.7m\n");
    write("more_times.txt", "3\n0.1m\n0.2m\n0.4m\n");
    write("three.txt", "3 3\n0\n1\n3\n0\n-1\n-2\n5\n6\n8\n");
    write("two.txt", "2 2\n0\n1\n3\n7\n");
    write("eight.txt", "2 2 2\n0\n1\n3\n7\n2\n4\n9\n1\n");
    write("sixteen.txt", "2 2 2 2\n0\n1\n3\n7\n2\n4\n9\n1\n5\n1\n3\n2\n2\n8\n9\n4\n");
}
const std::map<std::string, std::string, std::less<>> more_words = {{"pwl_file", " file=pairs.txt"},
                                                                    {"pwl_file_xy_1", " file=pairs.txt"},
                                                                    {"src_table_1", " file=pairs.txt"},
                                                                    {"pwm_file_1", " file=times.txt per=1m"},
                                                                    {"pwm_file_2", " file=more_times.txt per=1m"},
                                                                    {"lut_file_1_to_3", " file=three.txt"},
                                                                    {"lut_file_2_to_1", " file=two.txt"},
                                                                    {"lut_file_3_to_1", " file=eight.txt"},
                                                                    {"lut_file_4_to_1", " file=sixteen.txt"},
                                                                    {"solar_module", " isc=5m"},
                                                                    {"solar_module_1b", " isc=5m"},
                                                                    {"mos_level1", " vt0=0.4 kp=1m rd=1 rs=1"},
                                                                    {"mos_level3", " vt0=0.4 kp=1m rd=1 rs=1"}};

// The deck of one instance; the first n_driven variables have a source.
std::string deck_of(const composite_library& lib, int e, const char* statement, int n_driven, const std::string& rule) {
    std::ostringstream circuit, words;
    int n_node = 0;
    const auto add_nodes = [&](const word_list& list) {
        for (int j = 0; j < list.count(e); ++j) {
            const std::string node = "n" + std::to_string(n_node);
            words << ' ' << list.word(e, j) << '=' << node;
            circuit << feed(node, n_node++);
        }
    };
    if (std::string(statement) == "eelement") {
        add_nodes(lib.list.node);
        add_nodes(lib.list.ind_node);
        for (int j = 0; j < lib.list.ind_branch.count(e); ++j) words << ' ' << lib.list.ind_branch.word(e, j) << "=LB";
        if (lib.list.ind_branch.count(e) > 0) circuit << "eelement name=LB type=l p=n0 n=0 l=0.1\n";
    }
    for (int j = 0; j < lib.list.vr.count(e); ++j) {
        const std::string var = "y" + std::to_string(j);
        words << ' ' << lib.list.vr.word(e, j) << '=' << var;
        circuit << (j < n_driven ? driver(var, j) : load(var, j));
    }
    circuit << statement << " name=X type=" << lib.list.entry[e] << words.str();
    const auto more = more_words.find(lib.list.entry[e]);
    circuit << (more == more_words.end() ? "" : more->second) << '\n';
    const bool electrical = n_node > 0;
    return "title: one\nbegin_circuit\n" + std::string(electrical ? "refnode 0\n" : "") + circuit.str() +
           "end_circuit\nbegin_solve\nsolve_type ssw\nmethod: ssw_period=1m ssw_ndiv=50 "
           "ssw_itmax_newton=0 "
           "chk_spice=no chk_rhs2=yes norm_2=1e-8 " +
           rule + "=yes\nend_solve\nend_cf\n";
}

double usual_size(int kind) { return kind == kind_locv ? 1e-6 : kind == kind_aux ? 1e-2 : 1.0; }

std::vector<double> end_of_shot(run_state& r, const std::vector<double>& start) {
    r.mat.svec = start;
    solve_ssw_1(r, shot::search);
    std::vector<double> end;
    for (const int x : r.ssw.statevar_indx) end.push_back(r.mat.svec[at(x)]);
    return end;
}

// The largest difference of derivative and difference quotient, both in usual sizes of the states, against the largest
// derivative of the same start value.
double worst_derivative(run_state& r) {
    std::vector<double> start = r.mat.svec;
    const int n = r.ssw.n_statevar();
    // Away from 0, where a flux has no direction.
    for (const int x : r.ssw.statevar_indx) start[at(x)] += 0.3 * usual_size(r.mat.svec_flag[at(x)]);
    end_of_shot(r, start);
    const std::vector<double> map = r.ssw.map;
    const auto size = [&](int i) { return usual_size(r.mat.svec_flag[at(r.ssw.statevar_indx[at(i)])]); };
    double worst = 0.0;
    for (int j = 0; j < n; ++j) {
        const double d = 1e-5 * size(j);
        std::vector<double> above = start, below = start;
        above[at(r.ssw.statevar_indx[at(j)])] += d;
        below[at(r.ssw.statevar_indx[at(j)])] -= d;
        const std::vector<double> up = end_of_shot(r, above), down = end_of_shot(r, below);
        double largest = 1e-3, off = 0.0;
        for (int i = 0; i < n; ++i) {
            const double by = size(j) / size(i), quotient = (up[at(i)] - down[at(i)]) / (2 * d) * by;
            largest = std::max(largest, std::fabs(quotient));
            off = std::max(off, std::fabs(map[at(i) * at(n) + at(j)] * by - quotient));
        }
        worst = std::max(worst, off / largest);
    }
    return worst;
}

// "": right; else why the element was not looked at, or how far it is off.
std::string look_at(const composite_library& lib, int e, const char* statement, const std::string& rule) {
    const temp_folder folder;
    write_tables();
    std::string last;
    for (int n_driven = lib.list.vr.count(e); n_driven >= 0; --n_driven) {
        const std::string deck = deck_of(lib, e, statement, n_driven, rule);
        circuit c = circuit_of(deck, installed_libraries(deck));
        run_state r(c);
        double worst = 0.0;
        const console_run heard = run_and_listen([&] {
            prepare_circuit(r);
            read_block(r, 0);
            run_block(r);
            worst = worst_derivative(r);
        });
        if (!heard.stopped) return worst < 1e-4 ? "" : "off by " + std::to_string(worst);
        last = heard.text;
        if (last.find("not square") == std::string::npos && last.find("valmax") == std::string::npos &&
            last.find("singular") == std::string::npos)
            break;
    }
    return last;
}

// Their corners move with an input: what the instants of steps do to a shot is no derivative of its equations.
bool fires(const std::string& name) { return name == "clock_thyr" || name == "clock_thyr_1"; }

// Elements that cannot stand here: digital or explicit ones, ones that hold something, and, as faults, all that are
// off. Those in `seen` are not looked at again.
std::set<std::string> left_out(const composite_library& lib, const char* statement, const std::string& rule,
                               std::set<std::string>& seen) {
    std::set<std::string> names;
    for (int e = 0; e < lib.n(); ++e) {
        const std::string name(lib.list.entry[e]);
        if (!seen.insert(name).second) continue;
        const std::string found = lib.list.dgtl.count(e) > 0  ? "digital"
                                  : lib.list.xvr.count(e) > 0 ? "explicit"
                                                              : look_at(lib, e, statement, rule);
        if (found.empty()) continue;
        if (found.find("not allowed") == std::string::npos && found.find("off by") != std::string::npos && !fires(name))
            ADD_FAILURE() << name << " is " << found;
        names.insert(name);
    }
    return names;
}

// Words that name entries of a library's text that are not among those seen; few, as the pools of their parameters are
// limited, too.
std::string not_seen(const std::string& library, const std::set<std::string>& seen) {
    std::string named;
    std::istringstream lines(library);
    int n = 0;
    for (std::string line; n < 20 && std::getline(lines, line);) {
        if (!line.starts_with("ece name=")) continue;
        const std::string name = line.substr(9, line.find(' ', 9) - 9);
        if (seen.contains(name)) continue;
        named += "type=" + name + '\n';
        ++n;
    }
    return named;
}
}  // namespace

class periodic_derivatives : public ::testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(by, periodic_derivatives, ::testing::Values("back_euler", "trapezoidal"));

// What these hold from step to step is no state of the system; a block that sets parameters acts between steps.
TEST_P(periodic_derivatives, of_all_electrical_elements_are_those_of_whole_shots) {
    // One library has no room for all: each takes those that the ones before left out.
    std::set<std::string> all, seen;
    for (std::string named;;) {
        const eels_class& some = installed_libraries(named).eels;
        all.merge(left_out(some, "eelement", GetParam(), seen));
        named = not_seen(installed_text("eels.aux"), seen);
        if (named.empty()) break;
    }
    EXPECT_EQ(all, (std::set<std::string>{"cmprtr_1", "cmprtr_2", "dac1", "dac1a", "dac4", "dac8", "ground_dummy_1",
                                          "igbt_switch_d", "mosfet_switch_d", "sampler2", "spdt1", "switch_bi_d",
                                          "switch_d", "thyristor_g", "thyristor_g_2", "vsrc_x"}));
}

TEST_P(periodic_derivatives, of_all_blocks_are_those_of_whole_shots) {
    std::set<std::string> seen;
    EXPECT_EQ(
        left_out(installed_libraries().gels, "gelement", GetParam(), seen),
        (std::set<std::string>{
            "average",        "average_1",      "average_mv",      "clock_delay_2",  "clock_thyr",  "clock_thyr_1",
            "cmprtr_1",       "cmprtr_1a",      "cmprtr_1b",       "cmprtr_1c",      "cmprtr_2",    "cmprtr_hyst_1",
            "cmprtr_hyst_2",  "cmprtr_hyst_2b", "d_filter_z0_p1",  "d_filter_z0_p2", "d_filter_z1", "d_filter_z1_p1",
            "d_filter_z2_p2", "delay_2",        "delay_onestep",   "dtc_1",          "dtc_2",       "dtc_3",
            "dtc_4",          "get_rparm",      "intgrtr_reset_1", "loss_meter",     "monostable",  "monostable_1",
            "monostable_1a",  "peak_detector",  "pwm_3ph",         "pwm_carrier",    "rms",         "rms_3ph_1",
            "rms_mv",         "sampler1",       "sampler2",        "sampler3",       "set_rparm",   "xtog"}));
}
