#include <gtest/gtest.h>

#include <random>

#include "block_fixture.h"
#include "halt_throws.h"
#include "settings/solve_words.h"

// Sanitizers watch this test: whatever stands in a block, it is read or refused.
TEST(set_values, reads_or_refuses_every_heap_of_known_words) {
    std::vector<std::string> words = {
        "vout", "iv",  "ra", "rb",  "r_of_R1", "glbl_of_ra",  "mag_of_vout", "_of_",        "1",     "-1",    "0",
        "1k",   "yes", "no", "nan", "inf",     "99999999999", "2147483647",  "-2147483648", "1e308", "a.dat", "x"};
    for (std::string_view w : solve_block_words()) words.emplace_back(w);
    const char* const firsts[] = {"solve_type", "method:",        "initial_sol", "begin_output", "filename",
                                  "variables:", "control:",       "end_output",  "set_parm",     "set_igparm",
                                  "vary_parm",  "vary_parm_sync", "set_freq",    "vary_freq",    "set_dgtl"};
    const char* const sweeps[] = {"from 1 to 2 type linear n_points ", "from 1 to 2 type linear div ", "type table ",
                                  "from 1m to 1k type log n_points ", "type auto p_begin 0 p_end 1 step "};
    std::mt19937 rng(1);
    auto any = [&](const auto& list) { return list[rng() % std::size(list)]; };
    int n_read = 0;
    for (int trial = 0; trial < 400; ++trial) {
        const char* const types[] = {"dc", "ac", "trns", "startup", "ssw"};
        std::string cards = std::string("solve_type ") + any(types) + "\n";
        for (int k = static_cast<int>(rng() % 5); k > 0; --k) {
            cards += any(firsts);
            if (rng() % 3 == 0) cards += std::string(" r_of_R2 ") + any(sweeps);
            for (int n = static_cast<int>(rng() % 5); n > 0; --n) cards += " " + any(words);
            cards += "\n";
        }
        block_run r = prepared(solve_block(cards));
        n_read += !run_and_listen([&] { read_block(r); }).stopped;
    }
    EXPECT_GT(n_read, 20) << "most of these blocks were refused too early to test anything";
}
