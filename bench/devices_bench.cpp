// Circuits of semiconductors: time of a Newton iteration, beside ngspice on the same circuit where it is installed.
// Usage: bench_devices [NAME [TIMES]]; by default the table. A name alone is run so many times over, for a profiler.
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "base/halt.h"
#include "process_run.h"
#include "transient_run.h"

namespace fs = std::filesystem;

namespace {
// The same circuit twice; nodes and names are equal. Steps are fixed for us, and not above the same for the other.
struct twin {
    std::string name, text;
    std::string ours;       // statements of elements
    std::string reference;  // cards of elements and models
    std::string step, t_end, node;
};

twin diode_ladder(int n, const char* t_end) {
    twin t = {line("diodes", n), line("diode ladder with charge, ", n, " nodes"), {}, {}, "1u", t_end, "n1"};
    std::ostringstream ours, reference;
    ours << "eelement name=V1 type=vsrcac a=10 f_hz=1k p=n0 n=0\n";
    reference << "V1 n0 0 SIN(0 10 1k)\n.model dd D(is=1e-14 cjo=10p vj=1 m=0.5 tt=5n)\n";
    for (int k = 1; k <= n; ++k) {
        ours << "eelement name=R" << k << " type=r p=n" << k - 1 << " n=n" << k << " r=10\neelement name=D" << k
             << " type=diode_spice_1 p=n" << k << " n=0 is=1e-14 cj0=10p vj=1 m=0.5 tt=5n\n";
        reference << 'R' << k << " n" << k - 1 << " n" << k << " 10\nD" << k << " n" << k << " 0 dd\n";
    }
    t.ours = ours.str();
    t.reference = reference.str();
    return t;
}

// CMOS inverters in a ring, each with 20 fF at its output; a pulse of current starts it.
twin ring(int n, const char* t_end) {
    twin t = {line("ring", n), line("ring oscillator of ", n, " stages, level 1"), {}, {}, "20p", t_end, "n1"};
    std::ostringstream ours, reference;
    ours << "eelement name=VD type=vsrcdc p=d n=0 vdc=3\n"
            "eelement name=IK type=ipulse p=0 n=n1 i1=0 i2=100u td=0 tr=10p tf=10p pw=200p per=1\n";
    reference << "VD d 0 3\nIK 0 n1 PULSE(0 100u 0 10p 10p 200p 1)\n"
                 ".model mn NMOS(level=1 vto=0.7 kp=100u gamma=0.5 phi=0.7 lambda=0.03 tox=15n cgso=0.3n cgdo=0.3n)\n"
                 ".model mp PMOS(level=1 vto=-0.8 kp=40u gamma=0.5 phi=0.7 lambda=0.04 tox=15n cgso=0.3n cgdo=0.3n)\n";
    const std::string common = " gamma=0.5 phi=0.7 tox=15n cgso=0.3n cgdo=0.3n l=1u";
    for (int k = 1; k <= n; ++k) {
        const int next = k % n + 1;
        ours << "eelement name=MN" << k << " type=mos_level1 d=n" << next << " g=n" << k
             << " s=0 b=0 vt0=0.7 kp=100u lambda=0.03 w=4u" << common << "\neelement name=MP" << k
             << " type=mos_level1 pol=-1 d=n" << next << " g=n" << k << " s=d b=d vt0=-0.8 kp=40u lambda=0.04 w=10u"
             << common << "\neelement name=C" << k << " type=c p=n" << next << " n=0 c=20f\n";
        reference << "MN" << k << " n" << next << " n" << k << " 0 0 mn W=4u L=1u\nMP" << k << " n" << next << " n" << k
                  << " d d mp W=10u L=1u\nC" << k << " n" << next << " 0 20f\n";
    }
    t.ours = ours.str();
    t.reference = reference.str();
    return t;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

// The amplifier of twenty bipolar transistors among the operating points of the tests, with charges and a compensation,
// as a follower of a sine.
twin amplifier() {
    const fs::path tests = fs::path(TARNEL_EXAMPLES).parent_path() / "tests";
    const std::string deck = read_file(tests / "op_circuits/opamp_follower.in");
    const std::string cards = read_file(tests / "op_reference/opamp_follower.cir");
    twin t = {"amplifier", "follower of 20 bipolar transistors", {}, {}, "1u", "5m", "out"};
    const std::size_t from = deck.find("emodel"), to = deck.find("outvar:");
    t.ours = replaced(deck.substr(from, to - from), "vaf=", "cje=1p cjc=0.5p tf=0.3n vaf=");
    t.ours = replaced(t.ours, "type=vsrcdc p=inp n=0 vdc=1", "type=vsrcac p=inp n=0 a=1 f_hz=1k") +
             "eelement name=cc type=c p=c4 n=o17 c=30p\n";
    t.reference = replaced(cards.substr(0, cards.find(".options")), "vaf=", "cje=1p cjc=0.5p tf=0.3n vaf=");
    t.reference = replaced(t.reference, "vin inp 0 1\n", "vin inp 0 SIN(0 1 1k)\ncc c4 o17 30p\n");
    return t;
}

std::vector<twin> twins() {
    return {diode_ladder(100, "10m"), diode_ladder(1000, "1m"), ring(11, "100n"),
            ring(51, "50n"),          ring(201, "20n"),         amplifier()};
}

std::string deck_of(const twin& t) {
    return "title: " + t.name + "\nbegin_circuit\nrefnode 0\n" + t.ours + "outvar: v=nodev_of_" + t.node +
           "\nend_circuit\n" + transient("trapezoidal=yes delt_const=" + t.step, t.t_end, "v");
}

double children_us() {
    rusage use{};
    getrusage(RUSAGE_CHILDREN, &use);
    return 1e6 * static_cast<double>(use.ru_utime.tv_sec) + static_cast<double>(use.ru_utime.tv_usec);
}

// User time of ngspice as a process up to t_end, and what it counts.
measured reference_run(const twin& t, const std::string& t_end, const fs::path& scratch) {
    const fs::path deck = scratch / "reference.cir";
    write_file(deck, t.text + '\n' + t.reference + ".options acct method=trap\n.tran " + t.step + ' ' + t_end + " 0 " +
                         t.step + " uic\n.save v(" + t.node + ")\n.end\n");
    const double start = children_us();
    FILE* const out =
        popen(("ngspice -b -r " + (scratch / "out.raw").string() + ' ' + deck.string() + " 2>/dev/null").c_str(), "r");
    if (!out) return {};
    measured m;
    char text[512];
    while (std::fgets(text, sizeof text, out)) {
        double x = 0;
        if (std::sscanf(text, "Transient iterations = %lf", &x) == 1) m.n_iteration = static_cast<int>(x);
        if (std::sscanf(text, "Accepted timepoints = %lf", &x) == 1) m.n_step = static_cast<int>(x);
    }
    if (pclose(out) != 0) return {};
    m.us = children_us() - start;
    return m;
}

// Its transient alone: a whole run less one of a single step.
measured reference_of(const twin& t, const fs::path& scratch, int n_run) {
    measured best;
    for (int i = 0; i < n_run; ++i) {
        measured m = reference_run(t, t.t_end, scratch);
        const measured start = reference_run(t, t.step, scratch);
        if (m.n_iteration == 0) return {};
        m.us -= start.us;
        m.n_iteration -= start.n_iteration;
        m.n_step -= start.n_step;
        if (i == 0 || m.us < best.us) best = m;
    }
    return best;
}

void print_table(const fs::path& scratch) {
    std::printf(
        "User time of transients per Newton iteration, us; behind it ngspice's.\n\n"
        "| circuit | unknowns | iterations a step | us | ngspice, iterations a step | us | ratio |\n"
        "|---|---|---|---|---|---|---|\n");
    for (const twin& t : twins()) {
        const measured ours = quickest(deck_of(t), installed_libraries(deck_of(t)), 3),
                       other = reference_of(t, scratch, 3);
        const double us = ours.us / ours.n_iteration;
        std::printf("| %s | %d | %.2f | %.2f | ", t.text.c_str(), ours.n_unknown,
                    static_cast<double>(ours.n_iteration) / ours.n_step, us);
        if (other.n_iteration > 0)
            std::printf("%.2f | %.2f | %.2f |\n", static_cast<double>(other.n_iteration) / other.n_step,
                        other.us / other.n_iteration, us / (other.us / other.n_iteration));
        else
            std::printf("- | - | - |\n");
        std::fflush(stdout);
    }
}
}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 && argv[1][0] != '-' ? argv[1] : "";
    const fs::path scratch = temporary_folder();
    fs::current_path(scratch);
    std::cout.setstate(std::ios::badbit);  // the engine tells its progress; tables go through printf
    if (what.empty()) print_table(scratch);
    for (const twin& t : twins())
        if (t.name == what) {
            const measured m =
                quickest(deck_of(t), installed_libraries(deck_of(t)), argc > 2 ? std::max(1, std::atoi(argv[2])) : 1);
            std::printf("%s: %d steps, %d iterations, %.3f us per iteration\n", what.c_str(), m.n_step, m.n_iteration,
                        m.us / m.n_iteration);
        }
    fs::current_path("/");
    fs::remove_all(scratch);
}
