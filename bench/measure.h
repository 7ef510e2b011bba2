// measure.h -- medians of processor time, for the tables that the programs print.
#pragma once
#include <algorithm>
#include <ctime>
#include <vector>

// Median over batches of the processor time of one call, in microseconds. Batches take some milliseconds each.
template <class F>
double median_us(F call, int n_batch = 25) {
    const auto batch_us = [&](int n) {
        const std::clock_t start = std::clock();
        for (int i = 0; i < n; ++i) call();
        return 1e6 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / n;
    };
    batch_us(1);
    const double once = std::max(batch_us(1), 0.05);
    const int n_call = std::max(1, static_cast<int>(4000 / once));
    std::vector<double> t(static_cast<std::size_t>(n_batch));
    for (double& x : t) x = batch_us(n_call);
    std::nth_element(t.begin(), t.begin() + n_batch / 2, t.end());
    return t[static_cast<std::size_t>(n_batch / 2)];
}
