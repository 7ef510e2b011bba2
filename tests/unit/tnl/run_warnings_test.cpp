#include "tnl/run/run_warnings.h"

#include <gtest/gtest.h>

using namespace cli;

namespace {
const char* const deck_of_a_diode =
    "title: t\nbegin_circuit\neelement name=k type=r p=in n=a r=1k\neelement name=D1 type=diode\n+ p=a n=k\n"
    "eelement name=X1 type=pair p=k n=0\nend_circuit\nend_cf\n";
const std::string residual = "solve_dc: the solution leaves a residual of 0.25 at node ";
const std::string advice = "   consider chk_rhs2=yes norm_2=1e-9\n";

std::vector<record_warning> heard(const std::string& text, std::size_t piece = 1000) {
    run_listener listener;
    for (std::size_t at = 0; at < text.size(); at += piece) listener.take(std::string_view(text).substr(at, piece));
    return listener.warnings(view_deck("deck.in", deck_of_a_diode));
}
}  // namespace

TEST(run_listener, hears_a_residual_with_its_advice_in_whatever_pieces_the_text_comes) {
    const std::string text = "mat::set_mat_2: system matrix size is 4 x 4\n" + residual + "k\n" + advice +
                             "mat::set_mat_2: system matrix size is 4 x 4\n" + residual + "a\n" + advice +
                             "TARNEL: Program completed.\n";
    for (const std::size_t piece : {1u, 7u, 64u, 10000u}) {
        const std::vector<record_warning> w = heard(text, piece);
        ASSERT_EQ(w.size(), 2u) << piece;
        EXPECT_EQ(w[0].message, "the solution leaves a residual of 0.25 A at node k");
        EXPECT_EQ(w[1].message, "the solution leaves a residual of 0.25 A at node a");
        EXPECT_EQ(w[1].advice, "consider chk_rhs2=yes norm_2=1e-9; later points of its block were not looked at");
    }
}

TEST(run_listener, hears_nothing_in_a_text_without_one) {
    EXPECT_TRUE(heard("solve_dc: N-R did not converge.\n   Halting...\n" + advice).empty());
}

TEST(run_listener, places_a_node_at_the_first_element_that_connects_it) {
    const std::vector<record_warning> w = heard(residual + "k\n" + advice);
    ASSERT_EQ(w[0].places.size(), 1u);
    EXPECT_EQ(w[0].places[0].line, 5) << "not at the resistor of that name";
    EXPECT_EQ(w[0].places[0].column, 9);
}

TEST(run_listener, places_a_node_inside_of_a_composite_at_its_instance) {
    for (const std::string node : {"m of X1", "(internal node 3) of X1"}) {
        const std::vector<record_warning> w = heard(residual + node + "\n" + advice);
        ASSERT_EQ(w[0].places.size(), 1u);
        EXPECT_EQ(w[0].places[0].line, 6);
    }
    EXPECT_TRUE(heard(residual + "(internal node 3)\n" + advice)[0].places.empty());
}

TEST(run_listener, keeps_what_periodic_blocks_came_to) {
    run_listener listener;
    listener.take(
        "solve_ssw: ssw_iter_newton=0, rhs_ssw_norm=1.5e-03\nsolve_ssw: ssw_iter_newton=1, rhs_ssw_norm=2e-12\n"
        "solve_ssw: calling solve_ssw_1 for one more trns step\nsolve_ssw: period=0.25\n"
        "solve_ssw: unstable, largest multiplier=1.25\n  multiplier: re=1 im=0\n  multiplier: re=-1.25 im=0.5\n"
        "solve_ssw ends, slv->ssw_iter_newton=1\n"
        "solve_ssw: ssw_iter_newton=0, rhs_ssw_norm=7\nsolve_ssw: convergence not reached.\n"
        "solve_ssw ends, slv->ssw_iter_newton=1\n");
    ASSERT_EQ(listener.periods().size(), 2u);
    const record_period& p = listener.periods()[0];
    EXPECT_EQ(p.shots, 2);
    EXPECT_TRUE(p.converged);
    EXPECT_EQ(p.difference, 2e-12);
    EXPECT_EQ(p.period, 0.25);
    EXPECT_EQ(p.stability, "unstable");
    EXPECT_EQ(p.largest, 1.25);
    ASSERT_EQ(p.multipliers.size(), 2u);
    EXPECT_EQ(p.multipliers[1].re, -1.25);
    EXPECT_EQ(p.multipliers[1].im, 0.5);
    EXPECT_FALSE(listener.periods()[1].converged);
    EXPECT_EQ(listener.periods()[1].stability, "");
}

TEST(run_listener, places_the_doubts_of_periodic_blocks_at_their_types) {
    const deck_view deck =
        view_deck("deck.in",
                  "title: t\nbegin_circuit\nend_circuit\nbegin_solve\nsolve_type dc\nend_solve\n"
                  "begin_solve\nsolve_type ssw\nend_solve\nbegin_solve\nsolve_type ssw\nend_solve\nend_cf\n");
    run_listener listener;
    listener.take(
        "solve_ssw: ssw_iter_newton=0, rhs_ssw_norm=7\n"
        "solve_ssw: the circuit does not repeat itself behind the period 3e-05,\n"
        "   at first at time=2.11e-06: a source or clock has another period.\nsolve_ssw ends, slv->ssw_iter_newton=1\n"
        "solve_ssw: ssw_iter_newton=0, rhs_ssw_norm=7\nsolve_ssw: convergence not reached.\nsolve_ssw ends, "
        "slv->ssw_iter_newton=1\n");
    const std::vector<record_warning> w = listener.warnings(deck);
    ASSERT_EQ(w.size(), 2u);
    EXPECT_EQ(w[0].message,
              "periodic block 1: a source or clock has a period that does not fit in that of the search, 3e-05 s");
    EXPECT_EQ(w[0].places[0].line, 8);
    EXPECT_EQ(w[1].message,
              "periodic block 2: no steady state was found in 1 shots; its rows are those of one more period");
    EXPECT_EQ(w[1].places[0].line, 11);
}

TEST(warning_text, shows_place_line_caret_and_advice) {
    const deck_view deck = view_deck("deck.in", deck_of_a_diode);
    EXPECT_EQ(warning_text(deck, heard(residual + "in\n" + advice), "  "),
              "  deck.in:3:26: warning: the solution leaves a residual of 0.25 A at node in\n"
              "    eelement name=k type=r p=in n=a r=1k\n"
              "                             ^\n"
              "    advice: consider chk_rhs2=yes norm_2=1e-9; later points of its block were not looked at\n");
    EXPECT_EQ(warning_text(deck, heard(residual + "(internal node 3)\n" + advice), ""),
              "deck.in:8:1: warning: the solution leaves a residual of 0.25 A at node (internal node 3)\n"
              "  advice: consider chk_rhs2=yes norm_2=1e-9; later points of its block were not looked at\n");
}
