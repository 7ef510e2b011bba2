// The linear solver beside KLU, in one program on the same systems: ladders, random circuits with a few hubs, grids,
// meshes, full matrices, and the systems of decks.
//   bench_sparse                                       two tables: beside KLU; beside the floors of the machine
//   bench_sparse FAMILY | deck | floors                the first table for one family of systems, decks; the second one
//   bench_sparse --one-replay FAMILY N literal|fast    one refactor and solve, in a function of that name, to count
//   bench_sparse --benchmark_...                       the cases one by one, as a Google Benchmark
#include <benchmark/benchmark.h>
#include <klu.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "measure.h"
#include "sparse/elimination.h"
#include "sparse/literal.h"
#include "sparse_cases.h"
#include "sparse_floors.h"

namespace {

using std::size_t;

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
    void again() { run(c.val[turn].data(), 1, 0, 1, 3); }  // the values of the last call
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

// Those of one family, of decks, or all.
void for_all_cases(std::string_view family, const std::function<void(const std::string&, const bench_case&)>& run) {
    for (const case_family& f : families)
        if (family.empty() || family == f.name)
            for (const int n : f.sizes) run(f.name, f.make(n));
    if (!family.empty() && family != "deck") return;
    for (const std::string& name : deck_names) run("deck " + name, deck_case(name));
}

// Time of n_cols right-hand sides at once by standing factors.
constexpr int n_cols = 8;
double columns_us(our_solver& s) {
    std::vector<double> rhs, sol(s.c.rhs.size() * n_cols);
    for (int k = 0; k < n_cols; ++k) rhs.insert(rhs.end(), s.c.rhs.begin(), s.c.rhs.end());
    return median_us([&] { solve_columns(s.e, n_cols, rhs.data(), sol.data()); }, 9);
}
double columns_us(klu_solver& s) {
    std::vector<double> rhs, sol;
    for (int k = 0; k < n_cols; ++k) rhs.insert(rhs.end(), s.c.rhs.begin(), s.c.rhs.end());
    return median_us(
        [&] {
            sol = rhs;
            klu_solve(s.symbolic, s.numeric, s.c.m.n_row, n_cols, sol.data(), &s.common);
        },
        9);
}

// Medians of ours and KLU's, taken by turns, so that a busy machine slows both.
struct two_times {
    double ours, klu;
};
template <class A, class B>
two_times measure(A ours, B klu) {
    std::vector<two_times> t;
    for (int k = 0; k < 5; ++k) t.push_back({median_us(ours, 5), median_us(klu, 5)});
    std::sort(t.begin(), t.end(), [](auto& x, auto& y) { return x.ours / x.klu < y.ours / y.klu; });
    return t[2];
}

void print_beside_klu(std::string_view family) {
    std::printf(
        "Microseconds; ratio: ours / KLU; again: same values once more, 8 columns: right-hand sides at once.\n"
        "flops: of a refactor; ns/flop: refactor and solve; apart: relative difference of the solutions.\n\n"
        "| system | n | first | KLU | ratio | refactor | KLU | solve | KLU | both | KLU | ratio | again | 8 columns "
        "| KLU | fill | KLU | flops | KLU | ns/flop | KLU | apart |\n"
        "|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|---|\n");
    for_all_cases(family, [](const std::string& name, const bench_case& c) {
        our_solver a(c);
        klu_solver b(c);
        const double apart = disagreement(a, b);
        const two_times first = measure([&] { a.first(); }, [&] { b.first(); });
        const two_times refactor = measure([&] { a.refactor(); }, [&] { b.refactor(); });
        const two_times solve = measure([&] { a.solve(); }, [&] { b.solve(); });
        const two_times both = measure([&] { a.both(); }, [&] { b.both(); });
        const double again = median_us([&] { a.again(); }, 9);
        const double a_flops = a.flops() + 2 * a.fill(), b_flops = b.flops() + 2 * b.fill();
        std::printf(
            "| %s | %d | %.4g | %.4g | %.2f | %.4g | %.4g | %.4g | %.4g | %.4g | %.4g | %.2f | %.4g | %.4g | %.4g | "
            "%.0f | %.0f | %.0f | %.0f | %.3f | %.3f | %.0e |\n",
            name.c_str(), c.m.n_row, first.ours, first.klu, first.ours / first.klu, refactor.ours, refactor.klu,
            solve.ours, solve.klu, both.ours, both.klu, both.ours / both.klu, again, columns_us(a), columns_us(b),
            a.fill(), b.fill(), a.flops(), b.flops(), 1e3 * both.ours / a_flops, 1e3 * both.klu / b_flops, apart);
        std::fflush(stdout);
    });
}

void print_beside_floors() {
    const machine_speed speed = measure_machine();
    std::printf(
        "\nThis machine: quotient %.2f ns, product %.2f ns, difference %.2f ns, each waiting for the last; "
        "products and differences\nby pairs, none waiting: %.3f ns per flop. Copy speed is that within a block of "
        "the replay's size.\n\n"
        "| system | n | flops | bytes | copy, byte/ns | floors: flops, us | bytes, us | chain, us | refactor and "
        "solve, "
        "us | times the highest floor |\n|---|---|---|---|---|---|---|---|---|---|\n",
        speed.divide_ns, speed.multiply_ns, speed.subtract_ns, speed.flop_ns);
    for_all_cases("", [&](const std::string& name, const bench_case& c) {
        our_solver s(c);
        const replay_floor f = floor_of(s.e, c.m.nnz(), speed);
        const double copy = copy_speed(f.bytes), took = median_us([&] { s.both(); }, 9);
        const double by_flops = 1e-3 * f.flops * speed.flop_ns, by_bytes = 1e-3 * f.bytes / copy;
        std::printf("| %s | %d | %.0f | %.0f | %.0f | %.4g | %.4g | %.4g | %.4g | %.1f |\n", name.c_str(), c.m.n_row,
                    f.flops, f.bytes, copy, by_flops, by_bytes, 1e-3 * f.chain_ns, took,
                    took / std::max({by_flops, by_bytes, 1e-3 * f.chain_ns}));
        std::fflush(stdout);
    });
}

// ---- one replay, for counting instructions
[[gnu::noinline]] void one_replay(our_solver& s) { s.both(); }
[[gnu::noinline]] int one_replay(elimination<double>& e, const bench_case& c) {
    e.rhs_w = c.rhs;
    return literal_gauss_2(e, c.m.nnz(), c.val[1].data(), 3, false);
}

int count_one_replay(std::string_view name, int n, std::string_view form) {
    const auto f = std::find_if(families.begin(), families.end(), [&](auto& x) { return x.name == name; });
    if (f == families.end() || n < 1 || (form != "literal" && form != "fast")) {
        std::printf("bench_sparse --one-replay ladder|circuit|grid|mesh|full N literal|fast\n");
        return 1;
    }
    const bench_case c = f->make(n);
    if (form == "fast") {
        our_solver s(c);
        s.both();  // so that no symbol is looked up later
        one_replay(s);
        return 0;
    }
    elimination<double> e;
    literal_gauss(e, c.m, c.val[0].data(), pivot_rule::by_values);
    e.rhs_w = c.rhs;
    literal_gauss_2(e, c.m.nnz(), c.val[0].data(), 3, false);
    return one_replay(e, c);
}

template <class S>
void run_benchmark(benchmark::State& state, const case_family& f, void (S::*call)()) {
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
    for (const case_family& f : families)
        for (const auto& c : calls) {
            auto* b = benchmark::RegisterBenchmark(
                (std::string(f.name) + "/" + c.what + "/" + who).c_str(),
                [&f, call = c.call](benchmark::State& s) { run_benchmark<S>(s, f, call); });
            for (const int n : f.sizes) b->Arg(n);
        }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 1) {
        print_beside_klu("");
        print_beside_floors();
        return 0;
    }
    if (argc == 2 && argv[1][0] != '-') {
        if (std::string_view(argv[1]) == "floors")
            print_beside_floors();
        else
            print_beside_klu(argv[1]);
        return 0;
    }
    if (argc == 5 && std::string_view(argv[1]) == "--one-replay")
        return count_one_replay(argv[2], std::atoi(argv[3]), argv[4]);
    register_solver<our_solver>("ours");
    register_solver<klu_solver>("klu");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
