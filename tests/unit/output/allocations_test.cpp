// Counts what the time loop's writer takes from the heap. The counting operators serve the whole test program.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "time_fixture.h"

namespace {
long n_allocations = 0;
}

[[gnu::noinline]] void* operator new(std::size_t n) {
    ++n_allocations;
    if (void* p = std::malloc(n > 0 ? n : 1)) return p;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* p) noexcept { std::free(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept { std::free(p); }

TEST(write_trns, allocates_nothing) {
    const temp_folder folder;
    const std::string all = "variables: vout iv p2 r2 gw mid aux navg tau gain rb\n";
    block_run r = with_blocks(
        trns_cards + out_block("filename a.dat\n" + all) +
        out_block("filename b.dat\n" + all + "control: fixed_interval=0.01\n") +
        out_block(
            "filename f.dat fourier=yes\nvariables: vout gw\ncontrol: n_fourier=9 out_tstart=0.1 out_tend=0.9\n"));
    open_out_files(r.slv, r.c);
    const long before = n_allocations;
    for (int i = 0; i <= 2000; ++i) write_trns(r.slv, r.c, rows_all, 1.0 / 2000 * i);
    EXPECT_EQ(n_allocations, before);
    EXPECT_GT(r.slv.out.files[2].sums.now, fourier_sums::summing) << "both ends of the span were passed";
    EXPECT_GT(before, 0);
}
