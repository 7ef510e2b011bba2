// What holds for every general block of this build.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

#include "base/list_file.h"
#include "block_unit.h"

// The generated dispatch: by the number in the library, and through the list of names.
void get_gbe_by_number(const int i_gbes, const int i_gbeu, int* iparm, char** sparm, double* rparm, double* stparm,
                       double* igparm, double* vr, double* xvr, double* aux, double* vr_new, double* aux_new, double* f,
                       gbes1_class* jac, flags_class* flags, dp_class* dp, math_cnst_class* math_cnst);
void get_gbe_by_list(const int i_element, const int i_gbeu, int* iparm, char** sparm, double* rparm, double* stparm,
                     double* igparm, double* vr, double* xvr, double* aux, double* vr_new, double* aux_new, double* f,
                     gbes1_class* jac, flags_class* flags, dp_class* dp, math_cnst_class* math_cnst);

namespace {

std::vector<std::string> block_names() {
    std::vector<std::string> all;
    for (int e = 0; e < installed_gbes().n(); ++e) all.push_back(installed_gbes().list.entry.str(e));
    return all;
}

using mode = int flags_class::*;
constexpr mode modes[] = {&flags_class::dc, &flags_class::trns, &flags_class::startup};

// Blocks that stop a DC run with a text of their own.
bool refused(const std::string& name, mode m) {
    return m == &flags_class::dc &&
           std::set<std::string>{"calculator_1", "calculator_2",    "delay_2", "dtc_1",    "dtc_2",
                                 "dtc_3",        "intgrtr_reset_1", "pll_1a",  "sampler1", "syncmc_delta"}
               .contains(name);
}

void randomise(block_unit& u, std::mt19937& rng) {
    std::uniform_real_distribution<double> number(-0.8, 0.8);
    for (std::vector<double>* a :
         {&u.x.vr, &u.x.xvr, &u.x.aux, &u.x.vr_new, &u.x.aux_new, &u.x.f, &u.x.stparm, &u.x.igparm})
        for (double& x : *a) x = number(rng);
    // A divisor that is not held, away from the multiples at which the rest jumps.
    if (u.name == "fmod") u.vr("x2") = 1 + std::abs(u.vr("x2"));
    u.flags.time_given = number(rng);
    if (u.name == "clock_pwl20") u.flags.time_given += 1;  // halts at times below 0
}

// A prepared unit at a random point, with some accepted points behind it.
block_unit unit_in_use(const std::string& name, std::mt19937& rng) {
    block_unit u(name);
    u.prepare();
    u.flags.time_given = -2;
    u.guess();
    for (int i = 0; i < 3; ++i) {
        u.flags.iter_trns_1 = i;
        randomise(u, rng);
        u.accept(-2 + 0.3 * i);
    }
    randomise(u, rng);
    std::fill(u.jac.store.begin(), u.jac.store.end(), 0.0);
    return u;
}

TEST(block_registration, every_name_has_an_entry_and_every_entry_a_function) {
    ASSERT_EQ(n_gbe_registrations, installed_gbes().n());
    for (const std::string& name : block_names()) EXPECT_NE(find_model<gbe_call>(name), nullptr) << name;
    for (int i = 0; i < n_gbe_registrations; ++i)
        EXPECT_GE(installed_gbes().list.find(gbe_registrations[i].name), 0) << gbe_registrations[i].name;
    ASSERT_EQ(n_gbe_ac_registrations, installed_gbac().n());
    for (int e = 0; e < installed_gbac().n(); ++e)
        EXPECT_NE(find_model<gbe_ac_call>(installed_gbac().list.entry[e]), nullptr) << installed_gbac().list.entry[e];
    for (int i = 0; i < n_gbe_ac_registrations; ++i)
        EXPECT_GE(installed_gbac().list.find(gbe_ac_registrations[i].name), 0) << gbe_ac_registrations[i].name;
    EXPECT_EQ(find_model<gbe_call>("no_such_block"), nullptr);
    EXPECT_EQ(find_model<gbe_ac_call>("no_such_block"), nullptr);
}

TEST(block_registration, the_list_files_hold_every_entry) {
    const std::string share = TARNEL_SHARE;
    EXPECT_EQ(make_chrarray_5(share + "/gbe_all.lst", installed_gbes().list.entry).size(),
              static_cast<std::size_t>(installed_gbes().n()));
    EXPECT_EQ(make_chrarray_5(share + "/ssg_all.lst", installed_gbac().list.entry).size(),
              static_cast<std::size_t>(installed_gbac().n()));
}

class every_block : public ::testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(, every_block, ::testing::ValuesIn(block_names()),
                         [](const auto& block) { return block.param; });

TEST_P(every_block, changes_nothing_when_no_flag_is_on) {
    std::mt19937 rng(1);
    block_unit u = unit_in_use(GetParam(), rng);
    std::fill(u.jac.store.begin(), u.jac.store.end(), 3.0);
    const block_numbers before = u.x;
    const std::vector<double> jac_before = u.jac.store;
    const double nextbreak = u.flags.time_nextbreak;
    u.flags.init_flags();
    u.call();
    EXPECT_EQ(u.x, before);
    EXPECT_EQ(u.jac.store, jac_before);
    EXPECT_EQ(u.flags.time_nextbreak, nextbreak);
}

TEST_P(every_block, fills_functions_and_derivatives_each_only_when_asked) {
    std::mt19937 rng(2);
    for (const mode m : modes) {
        if (refused(GetParam(), m)) continue;
        block_unit u = unit_in_use(GetParam(), rng);
        const std::vector<double> f_before = u.x.f, jac_before = u.jac.store;
        u.call(m, &flags_class::function);
        EXPECT_EQ(u.jac.store, jac_before);
        const std::vector<double> f_alone = u.x.f;
        u.x.f = f_before;
        u.call(m, &flags_class::jacobian);
        EXPECT_EQ(u.x.f, f_before);
        const std::vector<double> jac_alone = u.jac.store;
        std::fill(u.jac.store.begin(), u.jac.store.end(), 0.0);
        u.call(m, &flags_class::function, &flags_class::jacobian);
        EXPECT_EQ(u.x.f, f_alone);
        EXPECT_EQ(u.jac.store, jac_alone);
    }
}

// An evaluation may neither move what the block remembers nor its variables: units are evaluated in any order, any
// number of times.
TEST_P(every_block, keeps_its_variables_parameters_and_history_in_an_evaluation) {
    std::mt19937 rng(3);
    for (const mode m : modes) {
        if (refused(GetParam(), m)) continue;
        block_unit u = unit_in_use(GetParam(), rng);
        block_numbers before = u.x;
        u.call(m, &flags_class::function, &flags_class::jacobian);
        before.f = u.x.f;
        EXPECT_EQ(u.x, before);
        u.call(m, &flags_class::function, &flags_class::jacobian);
        EXPECT_EQ(u.x, before);
    }
}

struct group {
    std::vector<double> block_numbers::*x;
    double** table;
    int n;
};
std::vector<group> groups(const block_unit& u) {
    return {{&block_numbers::vr, u.jac.dfdvr, u.jac.n_vr}, {&block_numbers::aux, u.jac.dfdaux, u.jac.n_aux}};
}

// Every partial derivative, declared or not, against the central difference of the functions. Levels, limits and knees
// are met with probability 0. The single-precision product of user functions is a straight line, and so is zero_2_b,
// whose terms are a million times its output: there a wide step.
TEST_P(every_block, has_the_derivatives_of_its_functions) {
    std::mt19937 rng(4);
    const double h = GetParam().starts_with("user_function") || GetParam() == "zero_2_b" ? 0.25 : 1e-6;
    for (int trial = 0; trial < 60; ++trial) {
        const mode m = modes[trial % 3];
        if (refused(GetParam(), m)) continue;
        block_unit u = unit_in_use(GetParam(), rng);
        if (GetParam().starts_with("user_function")) u.r("r1") = 1.5;
        u.call(m, &flags_class::jacobian);
        for (const group& g : groups(u))
            for (int k = 0; k < g.n; ++k) {
                const auto f_at = [&](double dx) {
                    const block_numbers kept = u.x;
                    (u.x.*g.x)[static_cast<std::size_t>(k)] += dx;
                    u.call(m, &flags_class::function);
                    const std::vector<double> f = u.x.f;
                    u.x = kept;
                    return f;
                };
                const std::vector<double> above = f_at(h), below = f_at(-h);
                for (int j = 0; j < u.jac.n_f; ++j) {
                    const auto jj = static_cast<std::size_t>(j);
                    const double difference = (above[jj] - below[jj]) / (2 * h);
                    EXPECT_NEAR(g.table[j][k], difference, 2e-6 * std::max(1e-3, std::abs(difference)))
                        << "function " << j << ", variable " << k;
                }
            }
    }
}

// Each mode writes all cells that the lines of the entry declare, and no others: what another mode left must not show.
TEST_P(every_block, writes_every_declared_derivative_in_every_mode_and_no_other) {
    std::mt19937 rng(5);
    const int kinds[] = {kind_vr, kind_gaux};
    for (const mode m : modes) {
        if (refused(GetParam(), m)) continue;
        block_unit u = unit_in_use(GetParam(), rng);
        const double untouched = 12345.5;
        std::fill(u.jac.store.begin(), u.jac.store.end(), untouched);
        u.call(m, &flags_class::jacobian);
        for (std::size_t i = 0; i < 2; ++i) {
            const jacobian_map::one_kind& declared = u.lib.map.entry[static_cast<std::size_t>(u.e)][i];
            for (int j = 0; j < u.jac.n_f; ++j)
                for (int k = 0; k < declared.n_var; ++k) {
                    const bool written =
                        u.jac.store[static_cast<std::size_t>(u.jac.offset(kinds[i], j, k))] != untouched;
                    const bool is_declared = declared.map[static_cast<std::size_t>(j * declared.n_var + k)] >= 0;
                    EXPECT_EQ(written, is_declared) << "kind " << kinds[i] << ", function " << j << ", variable " << k;
                }
        }
    }
}

TEST_P(every_block, answers_a_first_guess_without_functions_or_derivatives) {
    block_unit u(GetParam());
    u.prepare();
    std::fill(u.jac.store.begin(), u.jac.store.end(), 2.0);
    const std::vector<double> f = u.x.f, jac = u.jac.store;
    u.guess();
    EXPECT_EQ(u.x.f, f);
    EXPECT_EQ(u.jac.store, jac);
}

TEST_P(every_block, keeps_its_history_when_parameters_are_prepared_again) {
    std::mt19937 rng(6);
    block_unit u = unit_in_use(GetParam(), rng);
    const block_numbers before = u.x;
    u.prepare();
    EXPECT_EQ(u.x, before);
}

TEST_P(every_block, names_a_next_break_that_lies_ahead_and_only_if_it_limits_the_step) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> number(-0.01, 0.01);
    block_unit u = unit_in_use(GetParam(), rng);
    const bool limits = u.lib.flag.limit_tstep[static_cast<std::size_t>(u.e)];
    u.flags.iter_trns_1 = 5;
    for (int trial = 0; trial < 200; ++trial) {
        // also times on whole milliseconds, where clocks have corners and samplers samples
        double time = trial % 2 ? number(rng) : 1e-3 * (trial / 2);
        if (GetParam() == "clock_pwl20") time = std::abs(time);  // halts at times below 0
        const double next = u.next_break(time);
        if (limits) {
            EXPECT_GT(next, time) << "at " << time;
        } else {
            EXPECT_EQ(next, 1e9);
        }
    }
}

TEST_P(every_block, stands_accepted_points_at_falling_times) {
    std::mt19937 rng(8);
    for (const double last : {-1.0, 0.29, 0.3, 0.35}) {
        block_unit u = unit_in_use(GetParam(), rng);
        u.flags.iter_trns_1 = 7;
        for (const double time : {0.1, 0.2, 0.3, last, 0.4}) {
            randomise(u, rng);
            u.accept(time);
        }
        u.flags.time_given = 0.45;
        u.call(&flags_class::trns, &flags_class::function, &flags_class::jacobian);
        for (const double f : u.x.f) EXPECT_TRUE(std::isfinite(f));
        EXPECT_GT(u.next_break(0.45), 0.45);
    }
}

// A state stands in one row, and there only inside d_dt().
TEST_P(every_block, writes_each_state_in_one_row_and_only_as_a_derivative) {
    const function_table& t = installed_gbes().func;
    const int e = installed_gbes().list.find(GetParam());
    std::set<std::pair<int, int>> states;
    for (int k = t.first_f[static_cast<std::size_t>(e)]; k < t.first_f[static_cast<std::size_t>(e) + 1]; ++k) {
        const auto kk = static_cast<std::size_t>(k);
        std::set<std::pair<int, int>> of_row;
        for (int d = t.first_fvar[kk]; d < t.first_fvar[kk + 1]; ++d) {
            const auto dd = static_cast<std::size_t>(d);
            EXPECT_TRUE(of_row.emplace(t.var_flag[dd], t.var_number[dd]).second) << "a variable twice in row " << k;
        }
        if (t.flag_ddt[kk]) {
            EXPECT_TRUE(states.emplace(t.ddt_var_flag[kk], t.ddt_var_number[kk]).second);
        }
    }
}

// Pure entries; with blocks they are those of a constant Jacobian.
TEST_P(every_block, has_derivatives_that_hang_on_parameters_alone_if_it_says_so) {
    const auto e = static_cast<std::size_t>(installed_gbes().list.find(GetParam()));
    EXPECT_EQ(installed_gbes().flag.pure[e], installed_gbes().flag.jac_const[e]);
    if (!installed_gbes().flag.pure[e]) return;
    std::mt19937 rng(9);
    for (const mode m : modes) {
        if (refused(GetParam(), m)) continue;
        std::vector<double> first;
        for (int trial = 0; trial < 5; ++trial) {
            block_unit u = unit_in_use(GetParam(), rng);
            u.call(m, &flags_class::function, &flags_class::jacobian);
            if (trial == 0) first = u.jac.store;
            EXPECT_EQ(u.jac.store, first);
        }
    }
}

void dispatch(bool through_list, block_unit& u, int selector) {
    block_numbers& x = u.x;
    (through_list ? get_gbe_by_list : get_gbe_by_number)(selector, 0, x.iparm.data(), u.sparm.data(), x.rparm.data(),
                                                         x.stparm.data(), x.igparm.data(), x.vr.data(), x.xvr.data(),
                                                         x.aux.data(), x.vr_new.data(), x.aux_new.data(), x.f.data(),
                                                         &u.jac, &u.flags, &u.dp, &u.math_cnst);
}

TEST(generated_dispatch, calls_the_block_by_library_number_or_through_the_list) {
    const int i_abs = installed_gbes().list.find("abs");
    for (const bool list : {false, true}) {
        block_unit u("abs");
        u.flags.map_global_gbe = {99, i_abs};
        u.flags.trns = u.flags.function = 1;
        u.x.vr[0] = -3;
        u.x.vr[1] = 5;
        dispatch(list, u, list ? 1 : i_abs);
        EXPECT_EQ(u.x.f[0], 2);  // y - |x|
    }
}

TEST(generated_dispatch, does_nothing_at_all_for_an_unknown_block) {
    for (const bool list : {false, true}) {
        block_unit u("abs");
        u.flags.map_global_gbe = {999};
        u.flags.trns = u.flags.function = 1;
        u.x.vr[0] = -3;
        const block_numbers before = u.x;
        dispatch(list, u, list ? 0 : 999);
        EXPECT_EQ(u.x, before);
    }
}

}  // namespace
