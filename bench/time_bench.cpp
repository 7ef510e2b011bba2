// Transients: user time of an accepted step and of a Newton iteration, and memory over long runs.
// Usage: bench_time [cases | memory | NAME [TIMES]]; by default cases, then memory. A name alone is run so many times
// over, for a profiler.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/halt.h"
#include "circuit_from_text.h"
#include "process_run.h"
#include "transient_run.h"

namespace fs = std::filesystem;

namespace {
std::string buck(const std::string& t_end) {
    return example_transient("buck_open", "back_euler=yes delt_const=0.1u", t_end, "vout");
}

// Resistors in a row, and something from each node behind one to the reference.
std::string ladder(int n_node, const std::string& shunt, const std::string& method, const std::string& t_end) {
    std::ostringstream deck;
    deck << "title: ladder\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcac a=10 f_hz=50 p=n0 n=0\n";
    for (int i = 0; i < n_node; ++i)
        deck << "eelement name=R" << i << " type=r p=n" << i << " n=n" << i + 1 << " r=1\n"
             << "eelement name=X" << i << ' ' << shunt << " p=n" << i + 1 << " n=0\n";
    deck << "outvar: v=nodev_of_n" << n_node << "\nend_circuit\n" << transient(method, t_end, "v");
    return deck.str();
}

// Ten nodes of an RC ladder as one composite, as a deck has few lines.
constexpr int n_section = 10;
std::string section_entry() {
    std::ostringstream out;
    out << "ece name=section\nbegin_dc\nmainnodes: p n g\nauxnodes:";
    for (int i = 1; i < n_section; ++i) out << " m" << i;
    out << "\noutvar:\nbias:\nstparms:\nigparms:\nind_nodes:\nind_branches:\ndigital_nodes:\nmain_var:\nxvar:\n"
           "iparms:\nsparms:\nrparms: r=1 c=1u\nrparms_derived:\n";
    const auto node = [](int i) {
        return i == 0 ? std::string("p") : i == n_section ? std::string("n") : "m" + std::to_string(i);
    };
    for (int i = 0; i < n_section; ++i)
        out << "ebe type=r name=r" << i << " p=" << node(i) << " n=" << node(i + 1) << " r=r\n"
            << "ebe type=c name=c" << i << " p=" << node(i + 1) << " n=g c=c\n";
    out << "end_dc\nC: compiled\nbegin_ac\noutvar_ac:\nind_nodes_ac:\nind_branches_ac:\nend_ac\nendece\n";
    return out.str();
}

// Seven nodes of a row of a grid with what joins them to their left and upper neighbours; `last` goes from the last one
// to the reference.
constexpr int n_strip = 7;
std::string strip_entry(const std::string& name, const std::string& last) {
    std::ostringstream out;
    out << "ece name=" << name << "\nbegin_dc\nmainnodes: w g";
    for (int i = 0; i < n_strip; ++i) out << " d" << i << " u" << i;
    out << "\nauxnodes:\noutvar:\nbias:\nstparms:\nigparms:\nind_nodes:\nind_branches:\ndigital_nodes:\nmain_var:\n"
           "xvar:\niparms:\nsparms:\nrparms: r=1k c=1u\nrparms_derived:\n";
    for (int i = 0; i < n_strip; ++i)
        out << "ebe type=r name=rw" << i << " p=" << (i > 0 ? "d" + std::to_string(i - 1) : "w") << " n=d" << i
            << " r=r\nebe type=r name=ru" << i << " p=u" << i << " n=d" << i << " r=r\nebe type=c name=c" << i << " p=d"
            << i << " n=g c=c\n";
    out << last << "end_dc\nC: compiled\nbegin_ac\noutvar_ac:\nind_nodes_ac:\nind_branches_ac:\nend_ac\nendece\n";
    return out.str();
}

// The installed ones, the section and the strips.
const libraries& all_libraries() {
    static const libraries lib = [] {
        library_texts texts = installed_texts();
        texts.eels +=
            section_entry() + strip_entry("strip", "") + strip_entry("strip_d", "ebe type=diode name=d p=d6 n=g\n");
        return libraries_of(texts);
    }();
    return lib;
}

// About 4 million nodes times steps.
std::string rc_ladder(int n_node, const std::string& method) {
    std::ostringstream deck;
    deck << "title: ladder\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc vdc=1 p=n0 n=0\n";
    for (int i = 0; i < n_node / n_section; ++i)
        deck << "eelement name=X" << i << " type=section p=n" << i << " n=n" << i + 1 << " g=0\n";
    deck << "outvar: v=nodev_of_n" << n_node / n_section << "\nend_circuit\n"
         << transient(method + "=yes delt_const=1u", std::to_string(std::max(800, 4000000 / n_node)) + "u", "v");
    return deck.str();
}

// side x side nodes; a sine comes in on the left by a resistor for each row, the upper edge goes to the reference.
std::string rc_grid(int side, const std::string& strip, const std::string& source, const std::string& t_end) {
    std::ostringstream deck;
    deck << "title: grid\nbegin_circuit\nrefnode 0\neelement name=V1 " << source << " p=in n=0\n";
    const auto node = [](int i, int j) {
        return i < 0 ? std::string("0") : j < 0 ? std::string("in") : line("n", i, "_", j);
    };
    for (int i = 0; i < side; ++i)
        for (int j = 0; j < side; j += n_strip) {
            deck << "eelement name=X" << i << '_' << j << " type=" << strip << " w=" << node(i, j - 1) << " g=0";
            for (int k = 0; k < n_strip; ++k)
                deck << " d" << k << '=' << node(i, j + k) << " u" << k << '=' << node(i - 1, j + k);
            deck << '\n';
        }
    deck << "outvar: v=nodev_of_" << node(side / 2, side / 2) << "\nend_circuit\n"
         << transient("back_euler=yes delt_const=1m", t_end, "v");
    return deck.str();
}

std::string diode_ladder(const std::string& diode, int n_node, int n_step) {
    return ladder(n_node, diode, "back_euler=yes delt_const=20u", std::to_string(20 * n_step) + "u");
}

struct time_case {
    std::string name;
    std::string text;  // in the table
    int n_node;        // of a ladder; 0: a converter
    std::function<std::string()> deck;
};
const std::vector<time_case> cases = {
    {"buck", "buck, switch_g1 and diode_r", 0, [] { return buck("40m"); }},
    {"rectifier", "three-phase rectifier", 0,
     [] { return example_transient("rectifier_3ph", "back_euler=yes delt_const=10u", "2", "vdc"); }},
    {"inverter", "inverter, sine-triangle", 0,
     [] { return example_transient("inverter_spwm", "back_euler=yes delt_const=2u", "0.2", "vout"); }},
    {"rc10", "RC ladder, back_euler", 10, [] { return rc_ladder(10, "back_euler"); }},
    {"rc100", "RC ladder, back_euler", 100, [] { return rc_ladder(100, "back_euler"); }},
    {"rc1000", "RC ladder, back_euler", 1000, [] { return rc_ladder(1000, "back_euler"); }},
    {"rc5000", "RC ladder, back_euler", 5000, [] { return rc_ladder(5000, "back_euler"); }},
    {"grid35", "RC grid 35 x 35, back_euler", 1225, [] { return rc_grid(35, "strip", "type=vsrcdc vdc=1", "2"); }},
    {"grid70", "RC grid 70 x 70, back_euler", 4900, [] { return rc_grid(70, "strip", "type=vsrcdc vdc=1", "0.5"); }},
    {"dgrid35", "the same, 35 x 35, with diodes", 1225,
     [] { return rc_grid(35, "strip_d", "type=vsrcac a=10 f_hz=5", "0.2"); }},
    {"dgrid70", "the same, 70 x 70, with diodes", 4900,
     [] { return rc_grid(70, "strip_d", "type=vsrcac a=10 f_hz=5", "0.1"); }},
    {"trz10", "RC ladder, trapezoidal", 10, [] { return rc_ladder(10, "trapezoidal"); }},
    {"trz100", "RC ladder, trapezoidal", 100, [] { return rc_ladder(100, "trapezoidal"); }},
    {"trz1000", "RC ladder, trapezoidal", 1000, [] { return rc_ladder(1000, "trapezoidal"); }},
    {"trz5000", "RC ladder, trapezoidal", 5000, [] { return rc_ladder(5000, "trapezoidal"); }},
    {"diodes", "diode ladder, two slopes", 201, [] { return diode_ladder("type=diode_r r_on=0.1", 201, 5000); }},
    {"junctions", "diode ladder, exponential", 201, [] { return diode_ladder("type=diode", 201, 5000); }},
    {"diodes1000", "diode ladder, two slopes", 1000, [] { return diode_ladder("type=diode_r r_on=0.1", 1000, 1000); }},
};

void print_cases() {
    std::printf(
        "User time of transients.\n\n| circuit | nodes | unknowns | steps | iterations a step | us per step | us per "
        "iteration | ns per node and step | ns per node and iteration |\n|---|---|---|---|---|---|---|---|---|\n");
    for (const time_case& t : cases) {
        const measured m = quickest(t.deck(), all_libraries(), 3);
        const double step = m.us / m.n_step, iteration = m.us / m.n_iteration;
        std::printf("| %s | ", t.text.c_str());
        if (t.n_node > 0)
            std::printf("%d", t.n_node);
        else
            std::printf("-");
        std::printf(" | %d | %d | %.2f | %.3f | %.3f | ", m.n_unknown, m.n_step,
                    static_cast<double>(m.n_iteration) / m.n_step, step, iteration);
        if (t.n_node > 0)
            std::printf("%.1f | %.1f |\n", 1e3 * step / t.n_node, 1e3 * iteration / t.n_node);
        else
            std::printf("- | - |\n");
        std::fflush(stdout);
    }
}

void print_memory(const fs::path& scratch) {
    const std::string tarnel = (program_folder() / "tarnel").string();
    std::printf("\nThe buck converter as a process.\n\n| run | s | peak MB |\n|---|---|---|\n");
    const struct {
        const char *text, *t_end;
    } lengths[] = {{"1 million steps of 0.1 us", "0.1"}, {"10 million steps of 0.1 us", "1"}};
    for (const auto& length : lengths) {
        const process_run p = run_once(tarnel, installed_folder(scratch, length.t_end, buck(length.t_end)));
        std::printf("| %s | %.1f | %.2f |\n", length.text, p.cpu_ms / 1e3, p.peak_mb);
        std::fflush(stdout);
    }
}
}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 && !std::string_view(argv[1]).starts_with("--") ? argv[1] : "";
    const fs::path scratch = temporary_folder();
    fs::current_path(scratch);
    std::cout.setstate(std::ios::badbit);  // the engine tells its progress; tables go through printf
    if (what.empty() || what == "cases") print_cases();
    if (what.empty() || what == "memory") print_memory(scratch);
    for (const time_case& t : cases)
        if (t.name == what) {
            const measured m = quickest(t.deck(), all_libraries(), argc > 2 ? std::max(1, std::atoi(argv[2])) : 1);
            std::printf("%s: %d steps, %d iterations, %.3f us per step\n", what.c_str(), m.n_step, m.n_iteration,
                        m.us / m.n_step);
        }
    fs::current_path("/");
    fs::remove_all(scratch);
}
