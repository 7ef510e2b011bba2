// From text to an allocated system: a deck of 4900 element lines, and the installed libraries.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <sstream>

#include "analyses/run_state.h"
#include "circuit_from_text.h"
#include "measure.h"
#include "run/driver.h"

namespace {
constexpr int n_element = 4900;

// A long ladder of mixed elements with parameters, models and globals.
std::string long_deck() {
    std::ostringstream deck;
    deck << "title: many elements\ngreal ra=1k rb=$((ra)*(2))\nbegin_circuit\nrefnode 0\n"
            "emodel name=dm type=diode is=1e-14\neelement name=V1 type=vsrcdc p=node_0 n=0 vdc=5\n";
    for (int i = 1; i < n_element; ++i) {
        const int k = i / 2;
        if (i % 2 == 1)
            deck << "eelement name=Rs" << i << " type=r p=node_" << k << " n=node_" << k + 1 << " r=ra\n";
        else if (i % 4 == 2)
            deck << "eelement name=Rp" << i << " type=r p=node_" << k << " n=0 r=10k tc1=1m\n";
        else
            deck << "eelement name=D" << i << " type=diode p=node_" << k << " n=0 model=dm vd_ig=0.5\n";
    }
    deck << "outvar: v=nodev_of_node_3 i=i_of_Rs9\nend_circuit\nbegin_solve\nsolve_type dc\nbegin_output\n"
            "filename out.dat\nvariables: v i\nend_output\nend_solve\nend_cf\n";
    return deck.str();
}

void print_table() {
    const std::string deck = long_deck();
    const libraries& lib = installed_libraries();
    circuit c;
    const double read_ms = 1e-3 * median_us([&] { c.cf = circuit_file_of(file_chr_of(deck)); }, 9);
    const double libraries_ms = 1e-3 * median_us([&] { libraries_of(installed_texts()); }, 9);
    const double statements_ms = 1e-3 * median_us([&] { c = circuit_of(deck, lib); }, 9) - read_ms;
    const auto elaborated = [&] {
        circuit fresh = circuit_of(deck, lib);
        elaborate(fresh);
        benchmark::DoNotOptimize(fresh.ebeu.n());
    };
    const auto prepared = [&] {
        circuit fresh = circuit_of(deck, lib);
        run_state r(fresh);
        prepare_circuit(r);
    };
    const double to_elaborated = 1e-3 * median_us(elaborated, 9), to_prepared = 1e-3 * median_us(prepared, 9);
    std::printf("A deck of %d element lines, %zu bytes; %d elements and %d composites in the libraries. Medians.\n\n",
                n_element, deck.size(), lib.ebes.n(), lib.eels.n());
    std::printf("| stage | ms |\n|---|---|\n");
    std::printf("| read the deck | %.2f |\n", read_ms);
    std::printf("| read the libraries | %.2f |\n", libraries_ms);
    std::printf("| globals, models, output variables | %.2f |\n", statements_ms);
    std::printf("| elaborate | %.2f |\n", to_elaborated - statements_ms - read_ms);
    std::printf("| classify, bind models, allocate | %.2f |\n", to_prepared - to_elaborated);
    std::printf("| all | %.2f |\n", to_prepared + libraries_ms);
}
}  // namespace

int main(int argc, char** argv) {
    if (argc == 1) {
        print_table();
        return 0;
    }
    const std::string deck = long_deck();
    benchmark::RegisterBenchmark("elaborate/deck", [&](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(circuit_file_of(file_chr_of(deck)).n_end_cf);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("elaborate/libraries", [](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(libraries_of(installed_texts()).ebes.n());
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("elaborate/circuit", [&](benchmark::State& state) {
        for (auto _ : state) {
            circuit c = circuit_of(deck, installed_libraries());
            elaborate(c);
        }
    })->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
