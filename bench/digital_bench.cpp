// A gate that toggles: chains, trees and counters, the search for the next event, the firing unit and the scheduling of
// those that read it. No file takes rows.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <sstream>

#include "analyses/dc.h"
#include "analyses/digital.h"
#include "analyses/evaluate.h"
#include "circuit_from_text.h"
#include "measure.h"
#include "run/driver.h"

namespace {
// Inverters in a row behind a clock; an edge has gone through all of them before the next one comes.
std::string chain(int n) {
    std::ostringstream deck;
    deck << "delement name=K type=clock y=n0 t1=" << n << "n t2=" << n << "n\n";
    for (int i = 0; i < n; ++i)
        deck << "delement name=G" << i << " type=not a=n" << i << " y=n" << i + 1 << " td_fall=0.9n td_rise=0.9n\n";
    return deck.str();
}
// Inverters that each drive two: a level of the tree toggles at one time.
std::string tree(int n) {
    std::ostringstream deck;
    deck << "delement name=K type=clock y=n0 t1=50n t2=50n\n";
    for (int i = 1; i <= n; ++i)
        deck << "delement name=G" << i << " type=not a=n" << (i - 1) / 2 << " y=n" << i << " td_fall=1n td_rise=1n\n";
    return deck.str();
}
// Counters of 8 bits that each count the first bit of the one before.
std::string counters(int n) {
    std::ostringstream deck;
    deck << "delement name=K type=clock y=c0 t1=5n t2=5n\ndelement name=L type=clock y=up t1=1 t2=1\n"
            "delement name=Z type=clock y=r t1=1 t2=1 pol=0\n";
    for (int i = 0; i < n; ++i) {
        deck << "delement name=C" << i << " type=counter_8 clk=c" << i << " r=r up=up";
        for (int k = 0; k < 8; ++k)
            deck << " q" << k << "=" << (k == 0 ? "c" : "q" + std::to_string(k) + "_") << (k == 0 ? i + 1 : i);
        deck << '\n';
    }
    return deck.str();
}

struct digital_case {
    circuit c;
    run_state r{c};
    long n_toggles = 0;

    explicit digital_case(const std::string& circuit_block)
        : c(circuit_of("title: gates\nbegin_circuit\n" + circuit_block +
                           "end_circuit\nbegin_solve\nsolve_type trns\nmethod: t_start=0 t_end=1\nend_solve\nend_cf\n",
                       installed_libraries(), 200000)) {
        prepare_circuit(r);
        read_block(r, 0);
        define_offs_solvec(r.mat, c, analysis::trns);
        one_time_parms(r);
        init_sol(r);
        begin_events(r);
        advance(4 * c.dbeu.n() + 1000);  // first guesses have gone through
    }
    void advance(long more) {
        for (const long end = n_toggles + more; n_toggles < end;) {
            const double t = next_event(r, 1e30);
            r.flags.time_given = t;
            dbe_process(r, t);
            n_toggles += static_cast<long>(r.digital.changed.size());
            dbe_schedule(r);
        }
    }
};

struct shape {
    const char* name;
    std::string (*circuit)(int n);
    int n;
};
constexpr shape shapes[] = {{"chain", chain, 1000}, {"chain", chain, 100000},  {"tree", tree, 1000},
                            {"tree", tree, 100000}, {"counters", counters, 1}, {"counters", counters, 100}};

void toggles(benchmark::State& state) {
    const shape& s = shapes[state.range(0)];
    digital_case b(s.circuit(s.n));
    const long before = b.n_toggles;
    for (auto _ : state) b.advance(1000);
    state.SetItemsProcessed(b.n_toggles - before);
    state.SetLabel(std::string(s.name) + ' ' + std::to_string(s.n));
}
BENCHMARK(toggles)->DenseRange(0, static_cast<int>(std::size(shapes)) - 1);

void print_table() {
    std::printf("| circuit | units | ns per toggle |\n|---|---|---|\n");
    for (const shape& s : shapes) {
        const auto b = std::make_unique<digital_case>(s.circuit(s.n));
        const int n = std::max(1000, 2 * s.n);
        const double us = median_us([&] { b->advance(n); }, 9);
        std::printf("| %s | %d | %.1f |\n", s.name, b->c.dbeu.n(), 1e3 * us / n);
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
