// What holds for every explicit block of this build.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

#include "base/list_file.h"
#include "explicit_unit.h"

namespace {

std::vector<std::string> explicit_names() {
    std::vector<std::string> all;
    for (int e = 0; e < installed_xbes().n(); ++e) all.push_back(installed_xbes().list.entry.str(e));
    return all;
}

// Blocks that stop the run at times before 0.
bool begins_at_0(const std::string& name) { return name == "clock_pwl20"; }

void randomise(explicit_unit& u, std::mt19937& rng) {
    std::uniform_real_distribution<double> number(-0.8, 0.8);
    for (std::vector<double>* a : {&u.x.vr, &u.x.vr_new, &u.x.gvr, &u.x.aux, &u.x.aux_new, &u.x.bev, &u.x.cur, &u.x.f,
                                   &u.x.fg, &u.x.fh, &u.x.igparm})
        for (double& x : *a) x = number(rng);
    u.flags.time_given_x = number(rng);
    if (begins_at_0(u.name)) u.flags.time_given_x = std::abs(u.flags.time_given_x);
}

// A prepared unit at a random point, with some accepted points behind it.
explicit_unit unit_in_use(const std::string& name, std::mt19937& rng) {
    explicit_unit u(name);
    u.flags.t_start = -2.5;
    u.prepare();
    u.flags.time_given_x = -2.5;
    u.guess();
    for (int i = 0; i < 3; ++i) {
        u.flags.iter_trns_x = i;
        randomise(u, rng);
        u.accept(-2 + 0.3 * i);
    }
    u.flags.iter_trns_x = 5;
    randomise(u, rng);
    std::fill(u.jac.store.begin(), u.jac.store.end(), 0.0);
    return u;
}

TEST(explicit_registration, every_name_has_an_entry_and_every_entry_a_function) {
    ASSERT_EQ(n_xbe_registrations, installed_xbes().n());
    for (const std::string& name : explicit_names()) EXPECT_NE(find_model<xbe_call>(name), nullptr) << name;
    for (int i = 0; i < n_xbe_registrations; ++i)
        EXPECT_GE(installed_xbes().list.find(xbe_registrations[i].name), 0) << xbe_registrations[i].name;
    EXPECT_EQ(find_model<xbe_call>("no_such_block"), nullptr);
}

TEST(explicit_registration, the_list_file_holds_every_entry) {
    EXPECT_EQ(make_chrarray_5(std::string(TARNEL_SHARE) + "/xbe_all.lst", installed_xbes().list.entry).size(),
              static_cast<std::size_t>(installed_xbes().n()));
}

class every_explicit_block : public ::testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(, every_explicit_block, ::testing::ValuesIn(explicit_names()),
                         [](const auto& block) { return block.param; });

TEST_P(every_explicit_block, changes_nothing_when_no_flag_is_on) {
    std::mt19937 rng(1);
    explicit_unit u = unit_in_use(GetParam(), rng);
    std::fill(u.jac.store.begin(), u.jac.store.end(), 3.0);
    const explicit_numbers before = u.x;
    const std::vector<double> jac_before = u.jac.store;
    const double nextbreak = u.flags.time_nextbreak_x;
    u.flags.init_flags();
    u.call();
    EXPECT_EQ(u.x, before);
    EXPECT_EQ(u.jac.store, jac_before);
    EXPECT_EQ(u.flags.time_nextbreak_x, nextbreak);
}

// Outputs of an evaluated block, slopes of an integrating one; neither inputs nor what the block remembers. So blocks
// are evaluated any number of times. Members of a network are never evaluated without the matrix.
TEST_P(every_explicit_block, writes_its_outputs_or_slopes_in_an_evaluation_and_nothing_else) {
    std::mt19937 rng(2);
    explicit_unit u = unit_in_use(GetParam(), rng);
    const std::vector<double> jac_before = u.jac.store;
    explicit_numbers before = u.x;
    u.evaluate();
    const bool integrates = !u.is(u.lib.flag.evaluate) && u.is(u.lib.flag.integrate);
    if (integrates) {
        before.f = u.x.f;
    } else {
        for (int j = u.n_inputs(); j < u.n_inputs() + u.n_outputs(); ++j)
            before.vr[static_cast<std::size_t>(j)] = u.x.vr[static_cast<std::size_t>(j)];
    }
    EXPECT_EQ(u.x, before);
    u.evaluate();
    EXPECT_EQ(u.x, before);
    EXPECT_EQ(u.jac.store, jac_before);
    for (const double f : u.x.f) EXPECT_TRUE(std::isfinite(f));
    for (const double v : u.x.vr) EXPECT_TRUE(std::isfinite(v));
}

TEST_P(every_explicit_block, has_the_same_slopes_with_and_without_the_matrix) {
    std::mt19937 rng(3);
    explicit_unit u = unit_in_use(GetParam(), rng);
    if (!u.is(u.lib.flag.integrate)) {
        EXPECT_EQ(u.lib.func.n_func(u.e), 0);
        EXPECT_EQ(u.lib.func_g.n_func(u.e), 0);
        return;
    }
    ASSERT_EQ(u.lib.func.n_func(u.e), u.lib.func_g.n_func(u.e));
    u.evaluate();
    explicit_numbers before = u.x;
    u.slopes();
    for (int j = 0; j < u.lib.func.n_func(u.e); ++j)
        EXPECT_EQ(u.x.fg[static_cast<std::size_t>(j)], u.x.f[static_cast<std::size_t>(j)]);
    before.fg = u.x.fg;
    EXPECT_EQ(u.x, before);
    // Every slope is written.
    for (double& f : u.x.fg) f = 12345.5;
    u.slopes();
    for (int j = 0; j < u.lib.func.n_func(u.e); ++j) EXPECT_NE(u.x.fg[static_cast<std::size_t>(j)], 12345.5);
}

TEST_P(every_explicit_block, has_rows_that_its_evaluated_outputs_solve) {
    std::mt19937 rng(4);
    for (int trial = 0; trial < 20; ++trial) {
        explicit_unit u = unit_in_use(GetParam(), rng);
        if (u.lib.list.cct.count(u.e) > 0 || u.is(u.lib.flag.integrate)) return;
        ASSERT_EQ(u.lib.func_h.n_func(u.e), u.n_outputs());
        u.evaluate();
        explicit_numbers before = u.x;
        u.algebra();
        for (int j = 0; j < u.n_outputs(); ++j) EXPECT_EQ(u.x.fh[static_cast<std::size_t>(j)], 0.0);
        before.fh = u.x.fh;
        EXPECT_EQ(u.x, before);
    }
}

struct group {
    std::vector<double> explicit_numbers::*x;
    double** table;
    int n;
    int kind;
};
std::vector<group> groups(const explicit_unit& u) {
    const library_lists& l = u.lib.list;
    return {{&explicit_numbers::vr, u.jac.dhdvr, l.xvr.count(u.e), kind_xvr},
            {&explicit_numbers::gvr, u.jac.dhdgvr, l.vr.count(u.e), kind_vr},
            {&explicit_numbers::aux, u.jac.dhdaux, l.aux.count(u.e), kind_xaux},
            {&explicit_numbers::bev, u.jac.dhdbev, l.bev.count(u.e), kind_bev},
            {&explicit_numbers::cur, u.jac.dhdcur, l.cur.count(u.e), kind_xcur}};
}

// Every partial derivative, declared or not, against the central difference of the rows. Levels, limits and knees are
// met with probability 0. The single-precision product of user functions is a straight line: there a wide step.
TEST_P(every_explicit_block, has_the_derivatives_of_its_rows) {
    std::mt19937 rng(5);
    const double h = GetParam().starts_with("user_function") ? 0.25 : 1e-6;
    for (int trial = 0; trial < 40; ++trial) {
        explicit_unit u = unit_in_use(GetParam(), rng);
        if (h > 0.1) u.r("r1") = 1.5;
        u.algebra();
        const std::vector<double> jac = u.jac.store;  // each call writes it anew
        for (const group& g : groups(u))
            for (int k = 0; k < g.n; ++k) {
                const auto rows_at = [&](double dx) {
                    const explicit_numbers kept = u.x;
                    (u.x.*g.x)[static_cast<std::size_t>(k)] += dx;
                    u.algebra();
                    const std::vector<double> rows = u.x.fh;
                    u.x = kept;
                    return rows;
                };
                const std::vector<double> above = rows_at(h), below = rows_at(-h);
                for (int j = 0; j < u.lib.func_h.n_func(u.e); ++j) {
                    const auto jj = static_cast<std::size_t>(j);
                    const double difference = (above[jj] - below[jj]) / (2 * h);
                    const double rounding = 1e-15 * std::max(std::abs(above[jj]), std::abs(below[jj])) / h;
                    EXPECT_NEAR(jac[static_cast<std::size_t>(&g.table[j][k] - u.jac.store.data())], difference,
                                2e-6 * std::max(1e-3, std::abs(difference)) + rounding)
                        << "row " << j << ", kind " << g.kind << ", variable " << k;
                }
            }
    }
}

// All cells that the lines of the entry declare, and no others but zeros: what another unit left must not show.
TEST_P(every_explicit_block, writes_every_declared_derivative_and_no_other) {
    std::mt19937 rng(6);
    explicit_unit u = unit_in_use(GetParam(), rng);
    const function_table& t = u.lib.func_h;
    for (int j = 0; j < t.n_func(u.e); ++j) {
        const auto row = static_cast<std::size_t>(t.first_f[static_cast<std::size_t>(u.e)] + j);
        std::set<std::pair<int, int>> declared;
        for (int d = t.first_fvar[row]; d < t.first_fvar[row + 1]; ++d)
            EXPECT_TRUE(
                declared.emplace(t.var_flag[static_cast<std::size_t>(d)], t.var_number[static_cast<std::size_t>(d)])
                    .second)
                << "a variable twice in row " << j;
        const double untouched = 12345.5;
        std::fill(u.jac.store.begin(), u.jac.store.end(), untouched);
        u.algebra();
        for (const group& g : groups(u))
            for (int k = 0; k < g.n; ++k)
                EXPECT_EQ(g.table[j][k] != untouched, declared.contains({g.kind, k}))
                    << "row " << j << ", kind " << g.kind << ", variable " << k;
    }
}

TEST_P(every_explicit_block, answers_a_first_guess_without_rows_or_derivatives) {
    explicit_unit u(GetParam());
    u.prepare();
    std::fill(u.jac.store.begin(), u.jac.store.end(), 2.0);
    const explicit_numbers before = u.x;
    const std::vector<double> jac = u.jac.store;
    u.guess();
    EXPECT_EQ(u.x.f, before.f);
    EXPECT_EQ(u.x.fg, before.fg);
    EXPECT_EQ(u.x.fh, before.fh);
    EXPECT_EQ(u.jac.store, jac);
}

// First guesses of states, each of its own parameter.
TEST_P(every_explicit_block, begins_with_its_first_guesses) {
    explicit_unit u(GetParam());
    u.prepare();
    for (int j = 0; j < u.lib.list.ig.count(u.e); ++j) u.x.igparm[static_cast<std::size_t>(j)] = 7.5 + j;
    u.guess();
    std::multiset<double> all(u.x.vr.begin(), u.x.vr.end());
    all.insert(u.x.aux.begin(), u.x.aux.end());
    for (int j = 0; j < u.lib.list.ig.count(u.e); ++j) EXPECT_EQ(all.count(7.5 + j), 1u) << "igparm " << j;
}

TEST_P(every_explicit_block, keeps_its_history_when_parameters_are_prepared_again) {
    std::mt19937 rng(7);
    explicit_unit u = unit_in_use(GetParam(), rng);
    u.evaluate();
    const explicit_numbers before = u.x;
    u.prepare();
    EXPECT_EQ(u.x, before);
    u.evaluate();
    EXPECT_EQ(u.x, before);
}

TEST_P(every_explicit_block, names_a_next_break_that_lies_ahead_and_only_if_it_limits_the_step) {
    std::mt19937 rng(8);
    std::uniform_real_distribution<double> number(-0.01, 0.01);
    explicit_unit u = unit_in_use(GetParam(), rng);
    const bool limits = u.is(u.lib.flag.limit_tstep);
    for (int trial = 0; trial < 200; ++trial) {
        // also times on whole milliseconds, where clocks have corners and samplers samples
        const double random = begins_at_0(GetParam()) ? std::abs(number(rng)) : number(rng);
        const double time = trial % 2 ? random : 1e-3 * (trial / 2);
        const double next = u.next_break(time);
        if (limits) {
            EXPECT_GT(next, time) << "at " << time;
        } else {
            EXPECT_EQ(next, 1e9);
        }
    }
}

TEST_P(every_explicit_block, stands_accepted_points_at_falling_times) {
    std::mt19937 rng(9);
    for (const double last : {-1.0, 0.29, 0.3, 0.35}) {
        explicit_unit u = unit_in_use(GetParam(), rng);
        for (const double time : {0.1, 0.2, 0.3, last, 0.4}) {
            randomise(u, rng);
            u.accept(time);
        }
        u.flags.time_given_x = 0.45;
        u.evaluate();
        u.algebra();
        u.slopes();
        for (const std::vector<double>* a : {&u.x.vr, &u.x.f, &u.x.fg, &u.x.fh})
            for (const double v : *a) EXPECT_TRUE(std::isfinite(v));
        EXPECT_GT(u.next_break(0.45), 0.45);
    }
}

// Each output of an integrating block, and each auxiliary variable, stands in one d_dt(); outputs that are none in a
// row of the matrix.
TEST_P(every_explicit_block, has_one_row_for_each_variable_that_it_makes) {
    const explicit_unit u(GetParam());
    const library_lists& l = u.lib.list;
    std::multiset<std::pair<int, int>> states;
    const function_table& g = u.lib.func_g;
    for (int k = g.first_f[static_cast<std::size_t>(u.e)]; k < g.first_f[static_cast<std::size_t>(u.e) + 1]; ++k) {
        const auto kk = static_cast<std::size_t>(k);
        EXPECT_TRUE(g.flag_ddt[kk]);
        states.emplace(g.ddt_var_flag[kk], g.ddt_var_number[kk]);
    }
    for (const auto& s : states) EXPECT_EQ(states.count(s), 1u);
    const int n_made = u.n_outputs() + l.aux.count(u.e) + l.cur.count(u.e);
    EXPECT_EQ(static_cast<int>(states.size()) + u.lib.func_h.n_func(u.e), n_made);
    if (u.is(u.lib.flag.integrate) && l.cct.count(u.e) == 0) {
        EXPECT_EQ(static_cast<int>(states.size()), n_made) << "an output without a slope is never written";
    }
}

// A Jacobian that is said to be constant is that of the parameters alone.
TEST_P(every_explicit_block, has_constant_derivatives_if_it_says_so) {
    const auto e = static_cast<std::size_t>(installed_xbes().list.find(GetParam()));
    if (!installed_xbes().flag.jac_const[e]) return;
    std::mt19937 rng(10);
    std::vector<double> first;
    for (int trial = 0; trial < 5; ++trial) {
        explicit_unit u = unit_in_use(GetParam(), rng);
        u.algebra();
        if (trial == 0) first = u.jac.store;
        EXPECT_EQ(u.jac.store, first);
    }
}

}  // namespace
