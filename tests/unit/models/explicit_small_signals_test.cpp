// Small-signal forms of explicit blocks: what holds for each, and against what their blocks do to sines in time.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

#include "base/list_file.h"
#include "explicit_unit.h"
#include "halt_throws.h"

namespace {
using number = std::complex<double>;
const double pi = std::acos(-1.0);

std::vector<std::string> form_names() {
    std::vector<std::string> all;
    for (int e = 0; e < installed_xbac().n(); ++e) all.push_back(installed_xbac().list.entry.str(e));
    return all;
}

// A form with random parameters and amplitudes; degrees within their lists.
ac_explicit random_form(const std::string& name, std::mt19937& rng) {
    std::uniform_real_distribution<double> any(0.2, 2);
    ac_explicit u(name);
    for (double& x : u.rparm) x = any(rng);
    for (int& x : u.iparm) x = 1 + static_cast<int>(rng() % 3);
    for (std::vector<number>* a : {&u.vr, &u.f})
        for (number& x : *a) x = {any(rng), any(rng)};
    return u;
}

TEST(explicit_small_signals, every_form_has_a_function_and_stands_in_the_list_file) {
    ASSERT_EQ(n_xbe_ac_registrations, installed_xbac().n());
    for (const std::string& name : form_names()) EXPECT_NE(find_model<xbe_ac_call>(name), nullptr) << name;
    EXPECT_EQ(make_chrarray_5(std::string(TARNEL_SHARE) + "/ssx_all.lst", installed_xbac().list.entry).size(),
              static_cast<std::size_t>(installed_xbac().n()));
}

class every_explicit_form : public ::testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(, every_explicit_form, ::testing::ValuesIn(form_names()),
                         [](const auto& form) { return form.param; });

TEST_P(every_explicit_form, changes_nothing_when_no_flag_is_on) {
    std::mt19937 rng(1);
    ac_explicit u = random_form(GetParam(), rng);
    std::fill(u.jac.store.begin(), u.jac.store.end(), 3.0);
    const auto f = u.f, vr = u.vr, jac = u.jac.store;
    const auto rparm = u.rparm;
    u.call(10);
    EXPECT_EQ(u.f, f);
    EXPECT_EQ(u.vr, vr);
    EXPECT_EQ(u.jac.store, jac);
    EXPECT_EQ(u.rparm, rparm);
}

TEST_P(every_explicit_form, has_rows_that_are_straight_with_the_derivatives_it_tells) {
    std::mt19937 rng(2);
    for (int trial = 0; trial < 20; ++trial) {
        ac_explicit u = random_form(GetParam(), rng);
        const auto vr = u.vr;
        u.ac(5);
        const auto f = u.f;
        std::fill(u.vr.begin(), u.vr.end(), number{});
        u.ac(5);
        for (int j = 0; j < u.jac.n_f; ++j) {
            number sum = u.f[static_cast<std::size_t>(j)];
            for (int k = 0; k < u.jac.n_vr; ++k) sum += u.jac.dfdvr[j][k] * vr[static_cast<std::size_t>(k)];
            EXPECT_LE(std::abs(sum - f[static_cast<std::size_t>(j)]), 1e-13 * (1 + std::abs(sum)));
        }
    }
}

TEST_P(every_explicit_form, writes_every_declared_derivative_and_no_other) {
    std::mt19937 rng(3);
    ac_explicit u = random_form(GetParam(), rng);
    const number untouched = 12345.5;
    std::fill(u.jac.store.begin(), u.jac.store.end(), untouched);
    u.ac(7);
    const function_table& t = u.lib.func;
    for (int j = 0; j < u.jac.n_f; ++j) {
        const auto row = static_cast<std::size_t>(t.first_f[static_cast<std::size_t>(u.e)] + j);
        std::set<int> declared;
        for (int d = t.first_fvar[row]; d < t.first_fvar[row + 1]; ++d)
            declared.insert(t.var_number[static_cast<std::size_t>(d)]);
        for (int k = 0; k < u.jac.n_vr; ++k)
            EXPECT_EQ(u.jac.dfdvr[j][k] != untouched, declared.contains(k)) << "row " << j << ", variable " << k;
    }
}

// y/x as the form has it.
number quotient(ac_explicit& u, double w) {
    u.ac(w);
    return -u.jac.dfdvr[0][0] / u.jac.dfdvr[0][1];
}
void expect_near(const number& found, const number& wanted, double relative) {
    EXPECT_LE(std::abs(found - wanted), relative * std::abs(wanted)) << found << ' ' << wanted;
}

TEST(explicit_small_signals, of_filters_are_what_their_blocks_do_to_sampled_sines) {
    std::mt19937 rng(4);
    std::uniform_real_distribution<double> any(-1, 1);
    for (const std::string name : {"d_filter_z0_p1", "d_filter_z0_p2", "d_filter_z1", "d_filter_z1_p1"})
        for (int trial = 0; trial < 10; ++trial) {
            SCOPED_TRACE(name);
            ac_explicit form(name);
            explicit_unit part[2] = {explicit_unit(name), explicit_unit(name)};  // real, imaginary
            for (const char* word : {"a0", "a1", "b0", "b1", "b2"})  // poles within 0.9 of the circle's middle
                if (form.lib.list.rprm.find(form.e, word) >= 0) {
                    const double value = word[0] == 'a' ? any(rng) : word[1] == '0' ? 2 : 0.8 * any(rng);
                    form.r(word) = part[0].r(word) = part[1].r(word) = value;
                }
            const double t_smp = 1e-3, w = 2500 * (1 + any(rng));
            form.r("t_smp") = part[0].r("t_smp") = part[1].r("t_smp") = t_smp;
            for (explicit_unit& u : part) {
                u.prepare();
                u.guess();
            }
            number x, y;
            for (int n = 0; n < 400; ++n) {
                const double t = n * t_smp;
                x = std::polar(1.0, w * t);
                y = {part[0].output(t, {x.real()}), part[1].output(t, {x.imag()})};
                for (explicit_unit& u : part) u.accept(t);
            }
            expect_near(quotient(form, w), y / x, 1e-9);
        }
}

TEST(explicit_small_signals, of_states_follow_from_the_slopes_of_their_blocks) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> any(0.3, 2);
    for (const std::string name : {"intgrtr", "filter_z0_p1"})
        for (int trial = 0; trial < 20; ++trial) {
            SCOPED_TRACE(name);
            ac_explicit form(name);
            explicit_unit u(name);
            for (const char* word : {"k", "a0", "b0", "b1"})
                if (form.lib.list.rprm.find(form.e, word) >= 0) form.r(word) = u.r(word) = any(rng);
            u.prepare();
            const auto slope = [&](double x, double y) {
                u.vr("x") = x;
                u.vr("y") = y;
                u.evaluate();
                return u.x.f[0];
            };
            const double by_x = slope(1, 0) - slope(0, 0), by_y = slope(0, 1) - slope(0, 0), w = any(rng);
            expect_near(quotient(form, w), by_x / (number(0, w) - by_y), 1e-13);
        }
}

// What follows the input at once stands in a sum behind the block.
TEST(explicit_small_signals, of_a_filter_with_a_zero_have_the_part_that_follows_at_once) {
    std::mt19937 rng(6);
    std::uniform_real_distribution<double> any(0.3, 2);
    for (int trial = 0; trial < 20; ++trial) {
        ac_explicit form("filter_z1_p1");
        explicit_unit u("filter_z1_p1");
        for (const char* word : {"a0", "a1", "b0", "b1"}) form.r(word) = u.r(word) = any(rng);
        u.prepare();
        const auto slope = [&](double x, double z) {
            u.vr("x") = x;
            u.vr("z") = z;
            u.evaluate();
            return u.x.f[0];
        };
        const double w = any(rng);
        const number state = slope(1, 0) / (number(0, w) - slope(0, 1));
        expect_near(quotient(form, w), state + u.r("a1") / u.r("b1"), 1e-13);
    }
}

TEST(explicit_small_signals, of_a_delay_turn_a_sine_back) {
    ac_explicit form("delay_2");
    form.r("td") = 0.25;
    expect_near(quotient(form, 2 * pi), number(0, -1), 1e-15);
    expect_near(quotient(form, pi / 3), std::polar(1.0, -pi / 12), 1e-15);
}

TEST(explicit_small_signals, of_a_source_have_its_amplitude_and_angle) {
    ac_explicit u("const_ac");
    u.rparm = {2, 90};
    u.vr[0] = 3;
    u.ac(1);
    EXPECT_NEAR(std::abs(u.f[0] - number(3, -2)), 0, 1e-15);
    EXPECT_EQ(u.jac.dfdvr[0][0], 1.0);
}

TEST(explicit_small_signals, refuse_denominators_without_their_last_term) {
    ac_explicit first("filter_z1_p1");
    first.r("b1") = 0;
    EXPECT_HALT(first.ac(1), "filter_z1_p1.ssx: b1 = 0 ?!\n");
    ac_explicit second("d_filter_z0_p2");
    EXPECT_HALT(second.ac(1), "d_filter_z0_p2.ssx: b2=0 ?!\n");
}
}  // namespace
