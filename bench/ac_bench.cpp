// One frequency of small signals: a ladder of resistors in the row and a capacitor at each node.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <sstream>

#include "analyses/ac.h"
#include "circuit_from_text.h"
#include "measure.h"
#include "output/row_writers.h"
#include "run/driver.h"

namespace {
std::string ladder(int n) {
    std::ostringstream deck;
    deck << "title: RC ladder\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcac p=n0 n=0 a_ac=1\n";
    for (int i = 0; i < n; ++i) {
        deck << "eelement name=R" << i << " type=r p=n" << i << " n=n" << i + 1 << " r=100\n";
        deck << "eelement name=C" << i << " type=c p=n" << i + 1 << " n=0 c=1n\n";
    }
    deck
        << "outvar: v=nodev_ac_of_n" << n
        << "\nend_circuit\nbegin_solve\nsolve_type ac\nvary_freq from 1 to 1M type log n_points 61\nbegin_output\n"
           "filename /dev/null limit_lines=1000000000\nvariables: mag_of_v phase_of_v\nend_output\nend_solve\nend_cf\n";
    return deck.str();
}

// Every call takes another frequency than the last one.
struct ladder_case {
    circuit c;
    run_state r{c};

    explicit ladder_case(int n) : c(circuit_of(ladder(n), installed_libraries())) {
        prepare_circuit(r);
        read_block(r, 0);
        open_out_files(r.slv, c);
        set_mat_1_ac(r);
        calc_acparms(r);
        r.slv.now.i_sweep = 0;
        take_bias(r);
        r.slv.now.i_freq = 0;
        r.slv.now.freq = r.slv.task.freq_array[0];
        solve_ac(r);
    }
    void one_frequency() {
        r.slv.now.i_freq = r.slv.now.i_freq % 60 + 1;
        r.slv.now.freq = r.slv.task.freq_array[static_cast<std::size_t>(r.slv.now.i_freq)];
        solve_ac(r);
        write_ac(r.slv, c, r.flags);
    }
};

void frequency(benchmark::State& state) {
    ladder_case b(static_cast<int>(state.range(0)));
    for (auto _ : state) b.one_frequency();
}
BENCHMARK(frequency)->Arg(100)->Arg(1000);

void print_table() {
    std::printf("One frequency of an RC ladder, its row in the file included.\n\n");
    std::printf("| nodes | us | ns per node |\n|---|---|---|\n");
    for (const int n : {10, 100, 1000, 10000}) {
        const auto b = std::make_unique<ladder_case>(n);
        const double us = median_us([&] { b->one_frequency(); });
        std::printf("| %d | %.2f | %.1f |\n", n, us, 1e3 * us / n);
    }
}
}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        print_table();
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
