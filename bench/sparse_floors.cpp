#include "sparse_floors.h"

#include <algorithm>
#include <cstring>

#include "measure.h"

namespace {

using std::size_t;
typedef double pair_of_doubles __attribute__((vector_size(16)));

volatile double sink;

// Nanoseconds of one of n_step operations that next() performs one behind the other on a value.
template <class F>
double chain_ns(F next) {
    constexpr int n_step = 1000;
    const double us = median_us([&] {
        double x = 1.37;
        for (int i = 0; i < n_step; ++i) x = next(x);
        sink = x;
    });
    return 1e3 * us / n_step;
}

double independent_flop_ns() {
    constexpr int n_sum = 12, n_step = 200;
    volatile double given = 0.999;
    const pair_of_doubles l = {given, given};
    const double us = median_us([&] {
        pair_of_doubles sum[n_sum] = {};
        pair_of_doubles u = {given, given};
        for (int i = 0; i < n_step; ++i) {
            for (pair_of_doubles& t : sum) t = t - l * u;
            asm("" : "+x"(u));  // the products are not known to be those of the last round
        }
        double all = 0;
        for (const pair_of_doubles& s : sum) all += s[0] + s[1];
        sink = all;
    });
    return 1e3 * us / (4.0 * n_sum * n_step);
}

}  // namespace

machine_speed measure_machine() {
    machine_speed s;
    volatile double given = 0.73;
    const double f = given;
    s.divide_ns = chain_ns([](double x) { return 1 / x; });
    s.subtract_ns = chain_ns([f](double x) { return f - x; });
    s.multiply_ns = chain_ns([f](double x) { return f - x * f; }) - s.subtract_ns;
    s.flop_ns = independent_flop_ns();
    return s;
}

double copy_speed(double block_bytes) {
    const size_t n = std::max<size_t>(64, static_cast<size_t>(block_bytes / 2));
    std::vector<char> from(n, 1), to(n);
    const double us = median_us([&] {
        std::memcpy(to.data(), from.data(), n);
        asm volatile("" ::"r"(to.data()) : "memory");
    });
    return 2.0 * static_cast<double>(n) / (1e3 * us);
}

replay_floor floor_of(const elimination<double>& e, int nnz_m, const machine_speed& speed) {
    const factors<double>& f = e.compact;
    const size_t n = static_cast<size_t>(f.n), n_entry = f.col.size();
    replay_floor floor;
    const double n_op = e.n_matttlop2, n_solve = static_cast<double>(n_entry - n);
    floor.flops = 2 * n_op + e.n_matttlop1 + static_cast<double>(n) + 2 * n_solve + static_cast<double>(n);
    floor.bytes = 8.0 * nnz_m + 8.0 * static_cast<double>(n_entry) + 4 * n_op + 16.0 * static_cast<double>(n);

    // When each factor, forward value and unknown is there at the earliest.
    std::vector<double> at(n_entry, 0), y(n, 0), x(n, 0);
    const double div = speed.divide_ns, mul = speed.multiply_ns, sub = speed.subtract_ns;
    std::vector<std::vector<std::pair<size_t, size_t>>> low(n);  // row and entry below each pivot
    const auto index = [](int i) { return static_cast<size_t>(i); };
    for (size_t p = 0; p < n; ++p)
        for (size_t k = index(f.first[p]); k < index(f.diag[p]); ++k) low[index(f.col[k])].emplace_back(p, k);
    for (size_t i = 0; i < n; ++i) {
        const size_t d = index(f.diag[i]), end = index(f.first[i + 1]);
        for (size_t u = d + 1; u < end; ++u) at[u] = std::max(at[u], at[d] + div) + mul;
        y[i] = std::max(y[i], at[d]) + div;
        for (const auto& [row, l] : low[i]) {
            size_t target = l + 1;
            for (size_t u = d + 1; u < end; ++u, ++target) {
                while (f.col[target] != f.col[u]) ++target;
                at[target] = std::max(at[target], std::max(at[l], at[u]) + mul) + sub;
            }
            y[row] = std::max(y[row], std::max(at[l], y[i]) + mul) + sub;
        }
    }
    for (size_t p = n; p-- > 0;) {
        x[p] = y[p];
        for (size_t u = index(f.diag[p]) + 1; u < index(f.first[p + 1]); ++u)
            x[p] = std::max(x[p], std::max(x[index(f.col[u])], at[u]) + mul) + sub;
        floor.chain_ns = std::max(floor.chain_ns, x[p]);
    }
    return floor;
}
