// The linear solver beside KLU on the systems of circuits: a ladder, a grid, random circuits with a few hubs.
//   bench_sparse                   the table, medians in microseconds
//   bench_sparse --benchmark_...   the same cases one by one, as a Google Benchmark
#include <benchmark/benchmark.h>
#include <klu.h>

#include <algorithm>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#include "sparse/elimination.h"
#include "sparse/pattern.h"

namespace {

using std::size_t;

// A matrix with two sets of values, so that no call meets those of the call before; the same in compressed columns.
struct bench_case {
    knuth<double> m;
    std::vector<double> val[2], rhs;
    std::vector<int> cc_cn, cc_row;
    std::vector<double> cc_val[2];
};

class stamper {
public:
    explicit stamper(int n) : n_(n), rng_(static_cast<unsigned>(n)) {}
    void entry(int i, int j, double x) {
        if (i < 0 || j < 0) return;
        const size_t slot = static_cast<size_t>(pattern_.add(i, j));
        if (slot == val_.size()) val_.push_back(0);
        val_[slot] += x;
    }
    // A branch between two nodes, -1 being the reference.
    void conductance(int i, int j) {
        const double g = std::pow(10.0, std::uniform_real_distribution<double>(-4, 0)(rng_));
        entry(i, i, g);
        entry(j, j, g);
        entry(i, j, -g);
        entry(j, i, -g);
    }
    // A source from node i to node j, with the unknown k for its current.
    void source(int i, int j, int k) {
        for (const auto& [node, x] : {std::pair{i, 1.0}, std::pair{j, -1.0}}) {
            entry(node, k, x);
            entry(k, node, x);
        }
    }
    int pick(int n) { return static_cast<int>(rng_() % static_cast<unsigned>(n)); }
    bench_case finish() {
        bench_case c;
        c.m = pattern_.finish<double>(n_, n_);
        c.val[0] = c.val[1] = val_;
        for (size_t k = 0; k < val_.size(); ++k)  // time steps and devices change the diagonal
            if (c.m.row[k] == c.m.col[k]) c.val[1][k] *= 1.25;
        c.rhs.resize(static_cast<size_t>(n_));
        for (double& x : c.rhs) x = std::uniform_real_distribution<double>(-1, 1)(rng_);
        for (int s = 0; s < 2; ++s) {
            c.m.val = c.val[s];
            knuth_to_col_compressed(c.m, c.cc_cn, c.cc_row, c.cc_val[s], false);
        }
        return c;
    }

private:
    int n_;
    std::mt19937 rng_;
    pattern_builder pattern_;
    std::vector<double> val_;
};

// A source at one end, a series branch and a shunt at each node.
bench_case ladder(int n) {
    stamper s(n);
    s.source(0, -1, n - 1);
    for (int i = 0; i < n - 1; ++i) {
        s.conductance(i, -1);
        if (i > 0) s.conductance(i - 1, i);
    }
    return s.finish();
}

bench_case grid(int n) {
    const int side = static_cast<int>(std::lround(std::sqrt(n)));
    stamper s(side * side);
    for (int i = 0; i < side; ++i)
        for (int j = 0; j < side; ++j) {
            const int p = i * side + j;
            s.conductance(p, -1);
            if (j > 0) s.conductance(p - 1, p);
            if (i > 0) s.conductance(p - side, p);
        }
    return s.finish();
}

// Branches between near nodes, a few far ones, two hubs that every twentieth node meets, one source in ten unknowns.
bench_case circuit(int n) {
    stamper s(n);
    const int n_source = n / 10, n_node = n - n_source;
    for (int i = 0; i < n_node; ++i) {
        s.conductance(i, -1);
        if (i > 0) s.conductance(i, i - 1 - s.pick(std::min(i, 4)));
        if (i > 20 && s.pick(3) == 0) s.conductance(i, i - 5 - s.pick(15));
        if (i > 0 && s.pick(40) == 0) s.conductance(i, s.pick(i));
        if (i > 1 && s.pick(20) == 0) s.conductance(i, s.pick(2));
    }
    for (int k = 0; k < n_source; ++k) s.source(9 * k, k % 3 ? -1 : 9 * k + 3, n_node + k);
    return s.finish();
}

// Largest n: beyond it the last pivots of a grid stand in a dense block where the pivot search ends (counts of 5000).
struct family {
    const char* name;
    bench_case (*make)(int n);
    int m_size;
};
constexpr family families[] = {{"ladder", ladder, 10000}, {"circuit", circuit, 10000}, {"grid", grid, 1000}};

struct our_solver {
    const bench_case& c;
    elimination<double> e;
    int turn = 0;
    explicit our_solver(const bench_case& given) : c(given) { first(); }
    const double* next() { return c.val[turn ^= 1].data(); }
    void run(const double* val, int l_rhs, int mode_1, int l_replay, int mode_2) {
        solve_jac(e, c.m, val, c.rhs.data(), l_rhs, 0, mode_1, l_replay, mode_2);
    }
    void first() { run(c.val[0].data(), 0, 2, 0, 0); }
    void refactor() { run(next(), 0, 0, 1, 1); }
    void solve() { run(c.val[turn].data(), 1, 0, 1, 2); }
    void both() { run(next(), 1, 0, 1, 3); }
    double fill() const { return static_cast<double>(e.row_w.size()); }
    double flops() const { return 2.0 * e.n_matttlop2 + e.n_matttlop1 + e.n; }
};

struct klu_solver {
    const bench_case& c;
    klu_common common;
    klu_symbolic* symbolic = nullptr;
    klu_numeric* numeric = nullptr;
    std::vector<double> x;
    int turn = 0;
    explicit klu_solver(const bench_case& given) : c(given), x(given.rhs) {
        klu_defaults(&common);
        common.scale = -1;  // no row scaling and no checks: its fastest form
        first();
    }
    ~klu_solver() { release(); }
    klu_solver(const klu_solver&) = delete;
    klu_solver& operator=(const klu_solver&) = delete;
    void release() {
        klu_free_symbolic(&symbolic, &common);
        klu_free_numeric(&numeric, &common);
    }
    int* cn() const { return const_cast<int*>(c.cc_cn.data()); }
    int* row() const { return const_cast<int*>(c.cc_row.data()); }
    double* values() const { return const_cast<double*>(c.cc_val[turn].data()); }
    void first() {
        release();
        turn = 0;
        symbolic = klu_analyze(c.m.n_row, cn(), row(), &common);
        numeric = klu_factor(cn(), row(), values(), symbolic, &common);
    }
    void refactor() {
        turn ^= 1;
        klu_refactor(cn(), row(), values(), symbolic, numeric, &common);
    }
    void solve() {
        x = c.rhs;
        klu_solve(symbolic, numeric, c.m.n_row, 1, x.data(), &common);
    }
    void both() {
        refactor();
        solve();
    }
    double fill() const { return static_cast<double>(numeric->lnz + numeric->unz + numeric->nzoff - c.m.n_row); }
    double flops() {
        klu_flops(symbolic, numeric, &common);
        return common.flops;
    }
};

// Median over batches of the processor time of one call, microseconds.
template <class F>
double median_us(F call) {
    const auto batch_us = [&](int n) {
        const std::clock_t start = std::clock();
        for (int i = 0; i < n; ++i) call();
        return 1e6 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / n;
    };
    batch_us(1);
    const double once = std::max(batch_us(1), 0.05);
    const int n_call = std::max(1, static_cast<int>(2000 / once)), n_batch = once > 1e5 ? 3 : 15;
    if (once < 1e5) batch_us(n_call);
    std::vector<double> t(static_cast<size_t>(n_batch));
    for (double& x : t) x = batch_us(n_call);
    std::nth_element(t.begin(), t.begin() + n_batch / 2, t.end());
    return t[static_cast<size_t>(n_batch / 2)];
}

// Largest difference of the two solutions against the largest value.
double disagreement(our_solver& a, klu_solver& b) {
    a.both();
    while (a.turn != 1) a.both();
    b.turn = 0;
    b.both();
    double largest = 0, difference = 0;
    for (size_t i = 0; i < b.x.size(); ++i) {
        largest = std::max(largest, std::fabs(b.x[i]));
        difference = std::max(difference, std::fabs(b.x[i] - a.e.sol_w[i]));
    }
    return difference / largest;
}

// Least traffic of one refactor and solve: each value of the system and its slot, each factor written and read again
// twice, each operation's target, right-hand side and solution. Bytes.
double least_bytes(const our_solver& s) {
    return 12.0 * s.c.m.nnz() + 4.0 * s.fill() + 8.0 * 4 * s.fill() + 4.0 * s.e.n_matttlop2 + 8.0 * 6 * s.e.n;
}

void print_table() {
    std::printf("Microseconds, medians; ratio: ours / KLU; apart: relative difference of the solutions.\n\n");
    std::printf(
        "| family | n | first ours | KLU | ratio | refactor ours | KLU | solve ours | KLU | both ours | KLU | ratio "
        "| fill ours | KLU | flops ours | KLU | flop/byte | ns/flop | apart |\n");
    std::printf("|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|\n");
    for (const family& f : families)
        for (const int n : {10, 30, 100, 300, 1000, 3000, 10000}) {
            if (n > f.m_size) break;
            const bench_case c = f.make(n);
            our_solver a(c);
            klu_solver b(c);
            const double apart = disagreement(a, b);
            const double first_a = median_us([&] { a.first(); }), first_b = median_us([&] { b.first(); });
            const double refactor_a = median_us([&] { a.refactor(); }), refactor_b = median_us([&] { b.refactor(); });
            const double solve_a = median_us([&] { a.solve(); }), solve_b = median_us([&] { b.solve(); });
            const double both_a = median_us([&] { a.both(); }), both_b = median_us([&] { b.both(); });
            const double all_flops = a.flops() + 2.0 * a.fill();
            std::printf(
                "| %s | %d | %.4g | %.4g | %.2f | %.4g | %.4g | %.4g | %.4g | %.4g | %.4g | %.2f | %.0f | %.0f | "
                "%.0f | %.0f | %.2f | %.2f | %.0e |%s\n",
                f.name, c.m.n_row, first_a, first_b, first_a / first_b, refactor_a, refactor_b, solve_a, solve_b,
                both_a, both_b, both_a / both_b, a.fill(), b.fill(), a.flops(), b.flops(), all_flops / least_bytes(a),
                1e3 * both_a / all_flops, apart, a.e.compact_holds ? "" : " plain lists");
            std::fflush(stdout);
        }
}

template <class S>
void run_benchmark(benchmark::State& state, const family& f, void (S::*call)()) {
    const bench_case c = f.make(static_cast<int>(state.range(0)));
    S solver(c);
    for (auto _ : state) (solver.*call)();
}

template <class S>
void register_solver(const std::string& who) {
    struct {
        const char* what;
        void (S::*call)();
    } const calls[] = {
        {"first", &S::first}, {"refactor", &S::refactor}, {"solve", &S::solve}, {"refactor_solve", &S::both}};
    for (const family& f : families)
        for (const auto& c : calls)
            benchmark::RegisterBenchmark((std::string(f.name) + "/" + c.what + "/" + who).c_str(),
                                         [&f, call = c.call](benchmark::State& s) { run_benchmark<S>(s, f, call); })
                ->Arg(30)
                ->Arg(300)
                ->Arg(std::min(3000, f.m_size));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 1) {
        print_table();
        return 0;
    }
    register_solver<our_solver>("ours");
    register_solver<klu_solver>("klu");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
