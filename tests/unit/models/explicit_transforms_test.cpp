// Frame transforms of explicit diagrams.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "explicit_unit.h"

namespace {

constexpr double pi = std::numbers::pi, third = 2 * pi / 3;

std::vector<double> outputs(explicit_unit& u, const std::vector<double>& inputs) {
    u.output(0, inputs);
    return {u.x.vr.begin() + u.n_inputs(), u.x.vr.begin() + u.n_inputs() + u.n_outputs()};
}

void expect_near(const std::vector<double>& is, const std::vector<double>& should) {
    ASSERT_EQ(is.size(), should.size());
    for (std::size_t i = 0; i < is.size(); ++i) EXPECT_NEAR(is[i], should[i], 1e-13) << i;
}

// A cos(x), A cos(x - 120 deg), A cos(x + 120 deg), and a zero component that no frame sees.
std::vector<double> wave(double a, double x, double zero = 0) {
    return {a * std::cos(x) + zero, a * std::cos(x - third) + zero, a * std::cos(x + third) + zero};
}

TEST(explicit_transforms, keep_the_amplitude_and_the_angle_of_a_wave) {
    explicit_unit stationary("abc_to_alphabeta"), dq_1("abc_to_dq_1"), dq_2("abc_to_dq_2"), theta("abc_to_theta");
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> angle(-3.1, 3.1);
    for (int trial = 0; trial < 100; ++trial) {
        const double x = angle(rng), th = angle(rng), a = 1.5 + angle(rng) / 3;
        std::vector<double> in = wave(a, x, 0.7);
        expect_near(outputs(stationary, in), {a * std::cos(x), a * std::sin(x)});
        expect_near(outputs(theta, in), {x});
        in.push_back(th);
        expect_near(outputs(dq_1, in), {a * std::cos(x - th), a * std::sin(x - th)});
        in.back() = std::cos(th);
        in.push_back(std::sin(th));
        expect_near(outputs(dq_2, in), {a * std::cos(x - th), a * std::sin(x - th)});
    }
}

// d = 2/3 (a cos th + b cos(th - e) + c cos(th + e)), q = -2/3 (a sin th + ...), on phases of any kind.
TEST(explicit_transforms, are_the_published_sums) {
    explicit_unit dq("abc_to_dq_1"), stationary("abc_to_alphabeta");
    const double a = 0.3, b = -1.7, c = 2.2, th = 0.9;
    expect_near(outputs(dq, {a, b, c, th}),
                {2.0 / 3 * (a * std::cos(th) + b * std::cos(th - third) + c * std::cos(th + third)),
                 -2.0 / 3 * (a * std::sin(th) + b * std::sin(th - third) + c * std::sin(th + third))});
    expect_near(outputs(stationary, {a, b, c}), {(2 * a - b - c) / 3, (b - c) / std::sqrt(3.0)});
}

TEST(explicit_transforms, come_back_from_d_and_q_to_the_phases) {
    explicit_unit back("dq_to_abc"), back_1("dq_to_abc_1");
    std::mt19937 rng(2);
    std::uniform_real_distribution<double> number(-3, 3);
    for (int trial = 0; trial < 100; ++trial) {
        const double d = number(rng), q = number(rng), th = number(rng);
        const std::vector<double> in = wave(std::hypot(d, q), th + std::atan2(q, d));
        expect_near(outputs(back, {d, q, th}), in);
        expect_near(outputs(back_1, {d, q, std::cos(th), std::sin(th)}), in);
    }
}

TEST(explicit_transforms, give_the_angle_0_and_no_slope_where_there_is_no_vector) {
    explicit_unit u("abc_to_theta");
    expect_near(outputs(u, {2, 2, 2}), {0});
    u.algebra();
    for (int k = 0; k < 3; ++k) EXPECT_EQ(u.jac.dhdvr[0][k], 0);
}

}  // namespace
