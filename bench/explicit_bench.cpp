// A step of a block diagram under RK4, without rows; elaboration and order of evaluation of large diagrams.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <sstream>

#include "analyses/evaluate.h"
#include "analyses/explicit_step.h"
#include "circuit_from_text.h"
#include "measure.h"
#include "run/driver.h"

namespace {
constexpr int n_states = 50;

// y[i]' = y[i-1] - y[i] behind a constant: the state of each is the input of the next.
std::string lags(int n) {
    std::ostringstream deck;
    deck << "xelement name=K type=const y=y0 k=1\n";
    for (int i = 0; i < n; ++i)
        deck << "xelement name=F" << i << " type=filter_z0_p1 x=y" << i << " y=y" << i + 1 << '\n';
    return deck.str();
}
std::string integrators(int n) {
    std::ostringstream deck;
    deck << "xelement name=K type=const y=y0 k=1\n";
    for (int i = 0; i < n; ++i) deck << "xelement name=I" << i << " type=intgrtr x=y" << i << " y=y" << i + 1 << '\n';
    return deck.str();
}
// Loops of a sum, a gain and an integrator, each behind the one before.
std::string loops(int n) {
    std::ostringstream deck;
    deck << "xelement name=K type=const y=y0 k=1\n";
    for (int i = 0; i < n; ++i)
        deck << "xelement name=S" << i << " type=sum_2 x1=y" << i << " x2=y" << i + 1 << " y=e" << i
             << " k1=1 k2=-1\nxelement name=G" << i << " type=multscl x=e" << i << " y=u" << i
             << " k=2\nxelement name=I" << i << " type=intgrtr x=u" << i << " y=y" << i + 1 << '\n';
    return deck.str();
}

std::string deck_of(const std::string& circuit_block) {
    return "title: diagram\nbegin_circuit\n" + circuit_block +
           "end_circuit\nbegin_solve\nsolve_type trns\nmethod: RK4=yes t_start=0 t_end=1 delt_const_x=1m\n"
           "end_solve\nend_cf\n";
}

struct diagram {
    circuit c;
    run_state r{c};

    explicit diagram(const std::string& circuit_block)
        : c(circuit_of(deck_of(circuit_block), installed_libraries(), 200000)) {
        prepare_circuit(r);
        read_block(r, 0);
        one_time_parms(r);
        init_guess_explicit(r);
        prepare_explicit(r);
        evaluate_explicit(r, 0.0);
    }
    void step() {
        const explicit_rule& rule = *rule_of(r.slv.method);
        constexpr double h = 1e-3;
        const double t = r.slv.now.time_x + h;
        keep_old_states(r.explicits);
        take_stages(r, rule, h, true);
        form_new_states(r.explicits, rule, h);
        evaluate_explicit(r, t);
        r.slv.now.time_x = t;
    }
};

// The same chain of lags as a loop in this file.
struct plain_chain {
    double y[n_states + 1] = {1.0}, old[n_states + 1] = {}, k[4][n_states + 1] = {};
    void slopes(double* f) const {
        for (int i = 1; i <= n_states; ++i) f[i] = y[i - 1] - y[i];
    }
    void set(double h, const double* f) {
        for (int i = 1; i <= n_states; ++i) y[i] = old[i] + h * f[i];
    }
    void step(double h) {
        for (int i = 1; i <= n_states; ++i) old[i] = y[i];
        slopes(k[0]);
        set(h / 2, k[0]);
        slopes(k[1]);
        set(h / 2, k[1]);
        slopes(k[2]);
        set(h, k[2]);
        slopes(k[3]);
        for (int i = 1; i <= n_states; ++i) y[i] = old[i] + h / 6 * (k[0][i] + 2 * k[1][i] + 2 * k[2][i] + k[3][i]);
    }
};

struct shape {
    const char* name;
    std::string (*circuit)(int n);
    int n;
};
constexpr shape shapes[] = {
    {"lags", lags, n_states}, {"integrators", integrators, n_states}, {"loops", loops, n_states}};

void steps(benchmark::State& state) {
    const shape& s = shapes[state.range(0)];
    diagram d(s.circuit(s.n));
    for (auto _ : state) d.step();
    state.SetLabel(std::string(s.name) + ' ' + std::to_string(s.n) + " states");
}
BENCHMARK(steps)->DenseRange(0, static_cast<int>(std::size(shapes)) - 1);

void plain_steps(benchmark::State& state) {
    plain_chain p;
    for (auto _ : state) {
        p.step(1e-3);
        benchmark::DoNotOptimize(p.y[n_states]);
    }
    state.SetLabel("lags 50 states, a loop of C++");
}
BENCHMARK(plain_steps);

void elaboration(benchmark::State& state) {
    const std::string deck = loops(3333);
    for (auto _ : state) diagram d(deck);
    state.SetLabel("10000 blocks, from the text of the deck to the first values");
}
BENCHMARK(elaboration)->Unit(benchmark::kMillisecond);

void print_table() {
    constexpr int n = 20000;
    std::printf("| diagram | blocks | ns per step of RK4 |\n|---|---|---|\n");
    for (const shape& s : shapes) {
        diagram d(s.circuit(s.n));
        const double us = median_us(
            [&] {
                for (int i = 0; i < n; ++i) d.step();
            },
            9);
        std::printf("| %s | %d | %.0f |\n", s.name, d.c.xbeu.n(), 1e3 * us / n);
    }
    plain_chain p;
    const double us = median_us(
        [&] {
            for (int i = 0; i < n; ++i) {
                p.step(1e-3);
                benchmark::DoNotOptimize(p.y[n_states]);
            }
        },
        9);
    std::printf("| lags, a loop of C++ | %d | %.0f |\n", n_states, 1e3 * us / n);
    const std::string deck = loops(3333);
    const double ms = median_us([&] { diagram d(deck); }, 5) / 1e3;
    std::printf("\nElaboration and order of 10,000 blocks: %.0f ms\n", ms);
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
