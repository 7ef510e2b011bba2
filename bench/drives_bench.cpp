// Drives and converters with control: user time of a step, and how much of its time a drive runs through in a second.
// Usage: bench_drives [NAME [TIMES]]; by default the table. A name alone is run so many times over, for a profiler.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include "process_run.h"
#include "transient_run.h"

namespace fs = std::filesystem;

namespace {
struct drive {
    const char *name, *text, *method, *t_end, *variable;
};
constexpr drive drives[] = {
    {"pmsm_vector", "vector control of a permanent-magnet machine", "trapezoidal=yes delt_const=10u", "0.2", "w"},
    {"induction_start", "induction machine on the mains", "trapezoidal=yes delt_const=20u", "1", "rpm"},
    {"induction_inverter", "induction machine on an inverter, 2.5 kHz", "trapezoidal=yes delt_const=4u", "0.2", "w"},
    {"brushless_six_step", "brushless machine in six steps", "trapezoidal=yes delt_const=5u", "0.1", "w"},
    {"active_front_end", "active rectifier with control, 10 kHz", "trapezoidal=yes delt_const=1u", "0.05", "vd"},
    {"solar_tracker", "solar module, boost converter, tracker, 20 kHz", "trapezoidal=yes delt_const=2u", "0.1", "v"},
};

std::string deck_of(const drive& d) { return example_transient(d.name, d.method, d.t_end, d.variable); }

void print_table() {
    std::printf(
        "| drive | unknowns | step, us | user time of a step, us | iterations a step | simulated s in 1 s |\n"
        "|---|---|---|---|---|---|\n");
    for (const drive& d : drives) {
        const std::string deck = deck_of(d);
        const measured m = quickest(deck, installed_libraries(deck), 3);
        const double t_end = std::atof(d.t_end);
        std::printf("| %s | %d | %.2f | %.2f | %.2f | %.3f |\n", d.text, m.n_unknown, 1e6 * t_end / m.n_step,
                    m.us / m.n_step, static_cast<double>(m.n_iteration) / m.n_step, 1e6 * t_end / m.us);
        std::fflush(stdout);
    }
}
}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 && argv[1][0] != '-' ? argv[1] : "";
    const fs::path scratch = temporary_folder();
    fs::current_path(scratch);
    std::cout.setstate(std::ios::badbit);  // the engine tells its progress; tables go through printf
    if (what.empty()) print_table();
    for (const drive& d : drives)
        if (d.name == what) {
            const measured m =
                quickest(deck_of(d), installed_libraries(deck_of(d)), argc > 2 ? std::max(1, std::atoi(argv[2])) : 1);
            std::printf("%s: %d steps, %.3f us a step\n", what.c_str(), m.n_step, m.us / m.n_step);
        }
    fs::current_path("/");
    fs::remove_all(scratch);
}
