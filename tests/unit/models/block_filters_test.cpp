// Continuous filters of general blocks: their rows against the transfer functions, in states, at rest and in start-up.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <random>

#include "block_unit.h"
#include "halt_throws.h"

namespace {
using number = std::complex<double>;
using words = std::map<std::string, double>;
using transfer_of = std::function<number(const words&, number)>;

number poly(const words& w, char c, int n, number s) {
    number sum = 0;
    for (int k = n; k >= 0; --k) sum = sum * s + w.at(std::string(1, c) + std::to_string(k));
    return sum;
}
transfer_of rational(int n_a, int n_b) {
    return [=](const words& w, number s) { return poly(w, 'a', n_a, s) / (n_b ? poly(w, 'b', n_b, s) : 1.0); };
}
number second_order_poles(const words& w, number s) {
    const double w0 = w.at("w0");
    return s * s + (w0 / w.at("q")) * s + w0 * w0;
}
const std::map<std::string, transfer_of> filters = {
    {"filter_z0_p2", rational(0, 2)},
    {"filter_z0_p3", rational(0, 3)},
    {"filter_z0_p4", rational(0, 4)},
    {"filter_z0_p5", rational(0, 5)},
    {"filter_z1_p2", rational(1, 2)},
    {"filter_z3_p3", rational(3, 3)},
    {"filter_z4_p4", rational(4, 4)},
    {"filter_z5_p5", rational(5, 5)},
    {"filter_z1", rational(1, 0)},
    {"filter_z2", rational(2, 0)},
    {"filter_lp2",
     [](const words& w, number s) { return w.at("k") * w.at("w0") * w.at("w0") / second_order_poles(w, s); }},
    {"filter_hp2", [](const words& w, number s) { return w.at("k") * s * s / second_order_poles(w, s); }},
    {"filter_bp2",
     [](const words& w, number s) { return w.at("k") * (w.at("w0") / w.at("q")) * s / second_order_poles(w, s); }},
    {"filter_bs2",
     [](const words& w, number s) { return w.at("k") * (s * s + w.at("w0") * w.at("w0")) / second_order_poles(w, s); }},
    {"pole_2_b",
     [](const words& w, number s) {
         return 1.0 / (1.0 + 2 * w.at("z") * s / w.at("w") + s * s / (w.at("w") * w.at("w")));
     }},
    {"zero_2_b",
     [](const words& w, number s) {
         const number far = 1.0 + s / (1000 * w.at("w"));
         return (1.0 + 2 * w.at("z") * s / w.at("w") + s * s / (w.at("w") * w.at("w"))) / (far * far);
     }},
    {"intgrtr2", [](const words& w, number s) { return w.at("k") / s; }},
    {"filter_z0_p1_efd", [](const words& w, number s) { return w.at("k") / (1.0 + w.at("tau") * s); }},
};

// The words of the composite: those that a user gives.
bool is_derived(const std::string& word) {
    return word == "t_z" || (word.size() == 2 && word[0] == 'c' && std::isdigit(word[1]));
}
words random_words(block_unit& u, std::mt19937& rng) {
    std::uniform_real_distribution<double> any(0.4, 2);
    words w;
    for (int j = 0; j < u.lib.list.rprm.count(u.e); ++j) {
        const std::string word(u.lib.list.rprm.word(u.e, j));
        if (is_derived(word) || word == "lo" || word == "hi" || word.starts_with("y_")) continue;
        w[word] = u.r(word) = any(rng);
    }
    return w;
}

// y for x = 1 of the block's own linear system: each row is 0, a state row s times its state.
number solved(block_unit& u, number s) {
    u.trns();
    const int n = u.jac.n_aux + 1;
    const function_table& t = u.lib.func;
    const auto first = static_cast<std::size_t>(t.first_f[static_cast<std::size_t>(u.e)]);
    std::vector<std::vector<number>> a;
    for (int j = 0; j < n; ++j) {
        std::vector<number> row = {u.jac.dfdvr[j][1]};
        for (int k = 0; k < u.jac.n_aux; ++k) row.push_back(u.jac.dfdaux[j][k]);
        row.push_back(-u.jac.dfdvr[j][0]);
        const std::size_t f = first + static_cast<std::size_t>(j);
        if (t.flag_ddt[f]) {
            const bool of_aux = t.ddt_var_flag[f] == kind_gaux;
            row[of_aux ? static_cast<std::size_t>(t.ddt_var_number[f]) + 1 : 0] -= s;
        }
        a.push_back(row);
    }
    const auto size = static_cast<std::size_t>(n);
    for (std::size_t p = 0; p < size; ++p) {
        std::size_t best = p;
        for (std::size_t j = p + 1; j < size; ++j)
            if (std::abs(a[j][p]) > std::abs(a[best][p])) best = j;
        std::swap(a[p], a[best]);
        for (std::size_t j = 0; j < size; ++j) {
            if (j == p) continue;
            const number factor = a[j][p] / a[p][p];
            for (std::size_t k = p; k <= size; ++k) a[j][k] -= factor * a[p][k];
        }
    }
    return a[0][size] / a[0][0];
}

TEST(block_filters, have_rows_of_their_transfer_functions) {
    std::mt19937 rng(1);
    for (const auto& [name, transfer] : filters)
        for (int trial = 0; trial < 20; ++trial) {
            SCOPED_TRACE(name);
            block_unit u(name);
            const words w = random_words(u, rng);
            u.prepare();
            for (const number s : {number(0, 0.05), number(0, 1), number(0, 30), number(0.7, 2)}) {
                const number wanted = transfer(w, s);
                EXPECT_LE(std::abs(solved(u, s) - wanted), 1e-9 * (std::abs(wanted) + 1e-3)) << s;
            }
        }
}

// As the rows that the solver sees are linear, the values hang together as the derivatives say.
TEST(block_filters, have_residuals_that_are_their_derivatives_times_the_point) {
    std::mt19937 rng(2);
    std::uniform_real_distribution<double> any(-0.3, 0.3);
    for (const auto& [name, transfer] : filters) {
        block_unit u(name);
        random_words(u, rng);
        u.prepare();
        for (double& x : u.x.vr) x = any(rng);
        for (double& x : u.x.aux) x = any(rng);
        u.trns();
        for (int j = 0; j < u.jac.n_f; ++j) {
            double sum = 0, size = 1;
            for (int k = 0; k < 2; ++k) sum += u.jac.dfdvr[j][k] * u.x.vr[static_cast<std::size_t>(k)];
            for (int k = 0; k < u.jac.n_aux; ++k) sum += u.jac.dfdaux[j][k] * u.x.aux[static_cast<std::size_t>(k)];
            for (int k = 0; k < 2; ++k) size = std::max(size, std::abs(u.jac.dfdvr[j][k]));
            EXPECT_NEAR(u.x.f[static_cast<std::size_t>(j)], sum, 1e-12 * size) << name << ", row " << j;
        }
    }
}

TEST(block_filters, have_small_signals_of_their_transfer_functions) {
    std::mt19937 rng(3);
    for (const auto& [name, transfer] : filters) {
        if (name == "filter_z0_p1_efd") continue;  // has a state of its own there
        for (int trial = 0; trial < 20; ++trial) {
            block_unit u(name);
            const words w = random_words(u, rng);
            ac_block form(name);
            for (int j = 0; j < form.lib.list.rprm.count(form.e); ++j)
                form.rparm[static_cast<std::size_t>(j)] = w.at(std::string(form.lib.list.rprm.word(form.e, j)));
            const double freq = 0.1 * std::pow(3.0, trial % 7);
            form.ac(freq);
            const number found = -form.jac.dfdvr[0][0] / form.jac.dfdvr[0][1], wanted = transfer(w, {0, freq});
            EXPECT_LE(std::abs(found - wanted), 1e-12 * std::abs(wanted)) << name;
        }
    }
}

TEST(block_filters, hold_their_states_in_start_up) {
    for (const auto& [name, transfer] : filters) {
        block_unit u(name);
        if (name.ends_with("z1") || name.ends_with("z2") || name == "intgrtr2") continue;
        u.prepare();
        for (int k = 0; k < u.jac.n_aux; ++k) {
            u.x.aux[static_cast<std::size_t>(k)] = 10 + k;
            u.x.stparm[static_cast<std::size_t>(k)] = k * k + 0.5;
        }
        u.vr("x") = 99;
        u.startup();
        for (int k = 0; k < u.jac.n_aux; ++k) {
            EXPECT_EQ(u.x.f[static_cast<std::size_t>(k) + 1], 10 + k - (k * k + 0.5)) << name;
            EXPECT_EQ(u.jac.dfdvr[k + 1][0], 0) << name;
            EXPECT_EQ(u.jac.dfdaux[k + 1][k], 1) << name;
        }
    }
}

TEST(block_filters, of_zeros_alone_are_at_rest_in_start_up) {
    for (const char* name : {"filter_z1", "filter_z2"}) {
        block_unit u(name);
        u.r("a0") = 3;
        u.prepare();
        u.vr("x") = 2;
        u.vr("y") = 6;
        u.x.aux[0] = 2;  // x and a rate of 0
        u.startup();
        for (const double f : u.x.f) EXPECT_EQ(f, 0) << name;
        u.vr("y") = 7;
        u.startup();
        EXPECT_EQ(u.x.f[static_cast<std::size_t>(u.jac.n_aux) - 1], 1) << name;
    }
}

// The state goes on behind a limit, the output does not.
TEST(filter_z0_p1_efd, holds_its_output_within_the_limits) {
    block_unit u("filter_z0_p1_efd");
    u.r("k") = 2;
    u.r("tau") = 0.5;
    u.r("y_min") = -1;
    u.r("y_max") = 3;
    u.prepare();
    const struct { double z, y, slope; } points[] = {{2.5, 2.5, 1}, {3.5, 3, 0}, {-4, -1, 0}, {-0.9, -0.9, 1}};
    for (const auto& p : points)
        for (const auto mode : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
            u.vr("x") = 7;
            u.vr("y") = 0;
            u.aux("z") = p.z;
            u.call(mode, &flags_class::function, &flags_class::jacobian);
            EXPECT_EQ(u.x.f[0], -p.y);
            EXPECT_EQ(u.jac.dfdaux[0][0], -p.slope);
            if (mode != &flags_class::startup) {
                EXPECT_DOUBLE_EQ(u.x.f[1], (2 * 7 - p.z) / 0.5);
            }
        }
    u.r("y_min") = 4;
    EXPECT_HALT(u.prepare(), "filter_z0_p1_efd.gbe: y_min > y_max ?!\n");
    u.r("tau") = 0;
    EXPECT_HALT(u.prepare(), "filter_z0_p1_efd.gbe: tau = 0 ?!\n");
}

TEST(block_filters, refuse_a_leading_coefficient_of_0) {
    const std::map<std::string, std::string> leading = {
        {"filter_z0_p2", "b2"}, {"filter_z0_p3", "b3"}, {"filter_z0_p4", "b4"}, {"filter_z0_p5", "b5"},
        {"filter_z1_p2", "b2"}, {"filter_z3_p3", "b3"}, {"filter_z4_p4", "b4"}, {"filter_z5_p5", "b5"},
        {"filter_z1", "a1"},    {"filter_z2", "a2"}};
    for (const auto& [name, word] : leading) {
        block_unit u(name);
        u.r(word) = 0;
        EXPECT_HALT(u.prepare(), name + ".gbe: " + word + " = 0 ?!\n");
    }
}

TEST(block_filters, refuse_frequencies_and_qualities_that_are_not_above_0) {
    for (const std::string name : {"filter_lp2", "filter_hp2", "filter_bp2", "filter_bs2"})
        for (const char* word : {"w0", "q"}) {
            block_unit u(name);
            u.r(word) = 0;
            EXPECT_HALT(u.prepare(), name + ".gbe: check w0, q. Halting...\n");
        }
    for (const std::string name : {"pole_2_b", "zero_2_b"}) {
        block_unit u(name);
        u.r("w") = -1;
        EXPECT_HALT(u.prepare(), name + ".gbe: check w. Halting...\n");
    }
    block_unit u("intgrtr2");
    EXPECT_EQ(&u.r("lo"), &u.x.rparm[0]);
    EXPECT_EQ(&u.r("hi"), &u.x.rparm[1]);
    EXPECT_TRUE(u.lib.flag.limit_modulo[static_cast<std::size_t>(u.e)]);
    u.r("lo") = u.r("hi");
    EXPECT_HALT(u.prepare(), "intgrtr2.gbe: check lo, hi. Halting...\n");
}

// States are as large as y where the filter is of any speed: residuals keep their digits.
TEST(block_filters, have_states_of_the_size_of_their_output) {
    for (const double w0 : {1e-3, 1.0, 1e6}) {
        block_unit u("filter_z0_p5");
        double power = 1;
        for (int k = 0; k <= 5; ++k, power /= w0) u.r("b" + std::to_string(k)) = power;
        u.prepare();
        EXPECT_NEAR(u.r("t_z") * w0, 1, 1e-12);
        u.trns();
        for (int i = 1; i < 5; ++i) EXPECT_NEAR(u.jac.dfdaux[i][i] / w0, 1, 1e-12);
    }
}

}  // namespace
