// Rows of a transient: a time and ten values, through the writer that the time loop calls.
//   bench_rows     values per second, the time counted as one
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

#include "block_fixture.h"
#include "output/row_writers.h"

namespace {
using std::size_t;

// Voltages of ten outputs, moved on by each point; the numbers have all their digits.
struct row_source {
    block_run r;
    double t = 0.0;

    explicit row_source(const std::string& file, const std::string& control)
        : r(prepared(solve_block("solve_type trns\nmethod: back_euler=yes t_end=1000 delt_const=1u\n" +
                                 out_block("filename " + file + " limit_lines=2000000000 " + control)))) {
        read_block(r);
        open_out_files(r.slv, r.c);
    }
    void point() {
        t += 1e-6;
        double x = 1.0 + t;
        for (double& v : r.c.ebeu.val_nd) v = x *= -0.37;
        for (double& i : r.c.ebeu.cur_nd) i = x *= 0.0123;
        write_trns(r.slv, r.c, rows_analog, t);
    }
};
const char* const ten = "variables: vout vin iv ir vout vin iv ir p2 vout\n";

// What memory and disk add to the bare numbers is the difference of the two.
void rows_to(benchmark::State& state, const char* path) {
    row_source source(path, std::string("\n") + ten);
    for (auto _ : state) source.point();
    state.SetItemsProcessed(11 * state.iterations());
}
BENCHMARK_CAPTURE(rows_to, nowhere, "/dev/null");
BENCHMARK_CAPTURE(rows_to, file, "bench_rows.dat")->Iterations(400000);

void fourier_points(benchmark::State& state) {
    row_source source("/dev/null", std::string("fourier=yes\n") + ten + "control: n_fourier=10\n");
    for (auto _ : state) source.point();
    state.SetItemsProcessed(10 * state.iterations());
}
BENCHMARK(fourier_points);
}  // namespace

BENCHMARK_MAIN();
