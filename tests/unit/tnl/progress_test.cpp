#include "tnl/run/progress.h"

#include <gtest/gtest.h>

using namespace cli;

namespace {
const std::string start = "Transient simulation starts...\niter_trns=0 time=0\n";
time_block to(double t_end) { return {0, t_end, {}}; }
progress bar_of(std::vector<time_block> blocks, int columns = 100) {
    return {std::move(blocks), progress_form::bar, columns, "deck.in"};
}
progress lines_of(std::vector<time_block> blocks) { return {std::move(blocks), progress_form::lines, 80, "deck.in"}; }
}  // namespace

TEST(short_number, has_four_digits_and_the_scale_letter_of_decks) {
    EXPECT_EQ(short_number(0), "0");
    EXPECT_EQ(short_number(3.2e-3), "3.2m");
    EXPECT_EQ(short_number(0.01), "10m");
    EXPECT_EQ(short_number(12.3456), "12.35");
    EXPECT_EQ(short_number(99999), "100k");
    EXPECT_EQ(short_number(999.96), "1k");
    EXPECT_EQ(short_number(-2.5e-7), "-250n");
    EXPECT_EQ(short_number(1e30), "1e+30");
    EXPECT_EQ(short_number(2e-15), "2f");
}

TEST(time_blocks, are_the_blocks_in_time_with_their_ends_and_files) {
    const deck_view deck =
        view_deck("deck.in",
                  "title: t\nbegin_circuit\nend_circuit\nbegin_solve\nsolve_type startup\nend_solve\n"
                  "begin_solve\nsolve_type trns\nmethod: back_euler=yes t_end=30m\nmethod: t_start=1m\n"
                  "begin_output\nfilename a.dat\nvariables: v\nend_output\nend_solve\n"
                  "begin_solve\nsolve_type trns\nmethod: t_end=T\nend_solve\nend_cf\n");
    const std::vector<time_block> blocks = time_blocks(deck);
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_EQ(blocks[0].t_start, 1e-3);
    EXPECT_EQ(blocks[0].t_end, 30e-3);
    EXPECT_EQ(blocks[0].files, std::vector<std::string>{"a.dat"});
    EXPECT_FALSE(blocks[1].t_end);
}

TEST(progress, a_bar_shows_where_the_run_is_how_fast_and_how_long_it_will_take) {
    progress p = bar_of({to(10e-3)});
    p.take(start + "iter_trns_1=1000, time=0.005\n", 2);
    // 5 ms in 2 s; the other half takes 2 s more.
    EXPECT_EQ(p.draw(2), "\r[###############---------------]  50 %  t=5m of 10m  2.5m/s  2.0 s left\x1b[K");
}

TEST(progress, a_bar_takes_the_simulators_lines_about_it_off_its_text_and_nothing_else) {
    progress p = bar_of({to(1)});
    EXPECT_EQ(p.take("one\n" + start + "iter_trns_1=1000, time=0.5\ni=2000\ni=x\ntwo", 1),
              "one\nTransient simulation starts...\ni=x\n");
    EXPECT_EQ(p.take(" three\niter_trns_1=3000, ti", 1.1), "two three\n");
    EXPECT_EQ(p.take("me=0.75\n", 1.2), "");
    EXPECT_EQ(p.rest(), "");
    p.take("an end without a line end", 1.3);
    EXPECT_EQ(p.rest(), "an end without a line end");
}

TEST(progress, a_bar_is_drawn_at_most_ten_times_a_second_and_not_for_short_runs) {
    progress p = bar_of({to(1)});
    EXPECT_EQ(p.draw(0.01), "");
    EXPECT_EQ(p.wipe(), "");
    EXPECT_EQ(p.draw(0.05), "\rdeck.in ...\x1b[K");
    EXPECT_EQ(p.draw(0.1), "");
    EXPECT_NE(p.draw(0.16), "");
    EXPECT_EQ(p.wipe(), "\r\x1b[K");
    EXPECT_EQ(p.wipe(), "");
    EXPECT_NE(p.draw(0.17), "") << "text came between";
}

TEST(progress, a_bar_fits_the_terminal) {
    for (const int columns : {1, 5, 20, 40, 60, 200}) {
        progress p = bar_of({to(10e-3), to(1)}, columns);
        p.take(start + "iter_trns_1=1000, time=0.00377\n", 2);
        std::string drawn = p.draw(2);
        ASSERT_GE(drawn.size(), 4u);
        drawn = drawn.substr(1, drawn.size() - 4);  // without "\r" and "\x1b[K"
        EXPECT_LT(static_cast<int>(drawn.size()), std::max(columns, 1)) << columns;
    }
}

TEST(progress, elsewhere_there_is_a_line_per_tenth_from_the_first_second_on) {
    progress p = lines_of({to(10e-3)});
    EXPECT_EQ(p.take("text\n" + start, 0.01), "text\n" + start) << "and the text is untouched";
    EXPECT_EQ(p.draw(0.05), "tnl: deck.in runs\n");
    p.take("iter_trns_1=1000, time=0.0012\n", 0.5);
    EXPECT_EQ(p.draw(0.5), "");
    p.take("iter_trns_1=1000, time=0.0035\n", 1.5);
    EXPECT_EQ(p.draw(1.5), "tnl: 30 %  t=3.5m of 10m  2.8 s left\n");  // 1.5 s / 0.35 - 1.5 s
    EXPECT_EQ(p.draw(1.6), "");
    p.take("iter_trns_1=1000, time=0.0039\n", 2);
    EXPECT_EQ(p.draw(2), "");
    p.take("iter_trns_1=1000, time=0.0041\n", 2.1);
    EXPECT_EQ(p.draw(2.1), "tnl: 40 %  t=4.1m of 10m  3.0 s left\n");
    p.take("iter_trns_1=1000, time=0.01\n", 5);
    EXPECT_EQ(p.draw(5), "") << "the end is told by the rows";
}

TEST(progress, several_blocks_are_counted) {
    progress p = lines_of({to(1), to(2)});
    p.draw(0.1);
    p.take(start + "iter_trns_1=5, time=0.9\n" + start + "iter_trns_1=5, time=1\n", 3);
    EXPECT_EQ(p.draw(3), "tnl: 50 %  t=1 of 2, block 2 of 2\n");
    p.take(start + "iter_trns_1=5, time=1\n", 4);  // more than the deck has
    EXPECT_EQ(p.draw(4), "");
}

TEST(progress, rows_on_the_disk_tell_the_time_of_a_block_without_lines) {
    progress p = lines_of({to(1)});
    EXPECT_EQ(p.block(), nullptr);
    p.draw(0.1);
    p.take(start, 0.5);
    ASSERT_NE(p.block(), nullptr);
    p.note_time(0.25, 2);
    p.note_time(-1, 2);
    EXPECT_EQ(p.draw(2), "tnl: 20 %  t=250m of 1  6.0 s left\n");
}

TEST(progress, without_a_known_end_only_the_time_is_told) {
    progress p = bar_of({{0, {}, {}}});
    p.take(start + "iter_trns_1=5, time=0.5\n", 1);
    EXPECT_EQ(p.draw(1), "\rt=500m  500m/s\x1b[K");
    progress q = lines_of({});
    q.draw(0.1);
    q.take(start + "iter_trns_1=5, time=0.5\n", 2);
    EXPECT_EQ(q.draw(2), "");
}

TEST(progress, lines_that_only_look_like_progress_change_nothing) {
    progress p = bar_of({to(1)});
    p.take(start, 1);
    const std::string text = "iter_trns_1=5, time (3)=0.7\niter_trns_1=5, time=x\n  iter_trns_1=5, time=0.8\n";
    EXPECT_EQ(p.take(text, 1), text);
    EXPECT_NE(p.draw(1).find("  0 %"), std::string::npos);
}
