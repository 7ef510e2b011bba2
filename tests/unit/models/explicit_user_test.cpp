// Explicit blocks of formulas that are built into the program.
#include <gtest/gtest.h>

#include <vector>

#include "block_unit.h"
#include "explicit_unit.h"
#include "halt_throws.h"

namespace {

void algebra_at(explicit_unit& u, double time) {
    u.flags.time_given_x = time;
    u.algebra();
}

const std::vector<std::string> names = {
    "user_function_1_1", "user_function_1_3",  "user_function_2_1",  "user_function_2_2", "user_function_3_1",
    "user_function_3_2", "user_function_3_3",  "user_function_6_1",  "user_function_6_3", "user_function_6_6",
    "user_function_6_8", "user_function_12_1", "user_function_12_12"};

// Inputs 3, 5, 7, then 100 each; constants 2, 11, 13, ip1 = 1; outputs at 9 before the call.
explicit_unit at_work(const std::string& name, int n_given) {
    explicit_unit u(name);
    u.i("n_given") = n_given;
    u.i("ip1") = 1;
    u.r("r1") = 2;
    u.r("r2") = 11;
    u.r("r3") = 13;
    u.prepare();
    for (int k = 0; k < u.n_inputs(); ++k) u.x.vr[static_cast<std::size_t>(k)] = k < 3 ? 3 + 2 * k : 100;
    for (int k = 0; k < u.n_outputs(); ++k) u.x.vr[static_cast<std::size_t>(u.n_inputs() + k)] = 9;
    return u;
}

// The results and their slopes by the inputs 0, 1, 2.
struct result {
    int n_given, n_in, n_out;
    double time;
    std::vector<double> y;
    std::vector<std::vector<double>> slope;
};
const std::vector<result> results = {
    {1, 1, 1, 0, {2 * 2 * 3 + 11}, {{4, 0, 0}}},
    {2, 2, 1, 0, {2 * 11 / 6.5 * 3 * 5}, {{2 * 11 / 6.5 * 5, 2 * 11 / 6.5 * 3, 0}}},
    {3,
     3,
     1,
     0,
     {2 * 11 / 6.5 * 3 * 5 - 11 / 6.5 * 3 * 7},
     {{2 * 11 / 6.5 * 5 - 11 / 6.5 * 7, 2 * 11 / 6.5 * 3, -11 / 6.5 * 3}}},
    {4, 3, 1, 0, {3.0 / (2 * 5) + 0.5 * 7}, {{0.1, -3.0 / (2 * 25), 0.5}}},
    {5, 2, 2, 2.0, {3, 0}, {{1, 0, 0}, {0, 0, 0}}},
    {5, 2, 2, 2.001, {0, 5}, {{0, 0, 0}, {0, 1, 0}}},
};

TEST(explicit_user_functions, have_the_values_of_their_formulas_and_0_behind_them) {
    int n_checked = 0;
    for (const std::string& name : names)
        for (const result& r : results) {
            explicit_unit u = at_work(name, r.n_given);
            if (u.n_inputs() < r.n_in || u.n_outputs() < r.n_out) continue;
            u.flags.time_given = 1e3;  // that of the other side
            for (int k = 0; k < u.n_outputs(); ++k) {
                const double y = static_cast<std::size_t>(k) < r.y.size() ? r.y[static_cast<std::size_t>(k)] : 0;
                EXPECT_NEAR(u.output_at(r.time, k), y, 1e-14) << name << ' ' << r.n_given << ' ' << k;
                ++n_checked;
            }
        }
    EXPECT_GT(n_checked, 150);
}

TEST(explicit_user_functions, have_the_rows_and_slopes_of_their_formulas) {
    for (const std::string& name : names)
        for (const result& r : results) {
            explicit_unit u = at_work(name, r.n_given);
            if (u.n_inputs() < r.n_in || u.n_outputs() < r.n_out) continue;
            u.flags.time_given = 1e3;
            std::fill(u.jac.store.begin(), u.jac.store.end(), 77.0);
            const std::vector<double> before = u.x.vr;
            algebra_at(u, r.time);
            EXPECT_EQ(u.x.vr, before) << "a row writes no variable";
            for (int k = 0; k < u.n_outputs(); ++k) {
                const auto kk = static_cast<std::size_t>(k);
                EXPECT_NEAR(u.x.fh[kk], 9 - (kk < r.y.size() ? r.y[kk] : 0), 1e-13) << name << ' ' << r.n_given;
                for (int j = 0; j < u.n_inputs(); ++j)
                    EXPECT_NEAR(u.jac.dhdvr[k][j],
                                kk < r.y.size() && j < 3 ? -r.slope[kk][static_cast<std::size_t>(j)] : 0, 1e-14)
                        << name << ' ' << r.n_given << ' ' << k << ' ' << j;
                EXPECT_EQ(u.jac.dhdvr[k][u.n_inputs() + k], 1);
            }
        }
}

TEST(explicit_user_functions, take_the_product_of_formula_1_in_single_precision) {
    explicit_unit u("user_function_1_1");
    u.r("r1") = 0.1;
    u.r("r2") = 1.0 / 3;
    u.vr("x1") = 0.7;
    EXPECT_EQ(u.output_at(0), static_cast<double>(0.5f * 0.1f * 0.7f) + 1.0 / 3);
    EXPECT_NE(u.output_at(0), 0.5 * 0.1 * 0.7 + 1.0 / 3);
}

TEST(explicit_user_functions, are_1_in_formula_4_at_rest) {
    explicit_unit u = at_work("user_function_3_1", 4);
    u.vr("x2") = -0.0099;
    EXPECT_EQ(u.output_at(0), 1 + 0.5 * 7);
    algebra_at(u, 0);
    EXPECT_EQ(u.jac.dhdvr[0][0], 0);
    EXPECT_EQ(u.jac.dhdvr[0][1], 0);
}

TEST(explicit_user_functions, have_the_bits_of_the_general_blocks) {
    block_unit g("user_function_2_1");
    explicit_unit x("user_function_2_1");
    for (const int n_given : {1, 2}) {
        for (const auto& [word, value] :
             std::vector<std::pair<const char*, double>>{{"r1", 0.3}, {"r2", 1.7}, {"r3", 0.9}})
            g.r(word) = x.r(word) = value;
        g.i("n_given") = x.i("n_given") = n_given;
        g.vr("x1") = x.vr("x1") = 1.0 / 7;
        g.vr("x2") = x.vr("x2") = -2.0 / 3;
        EXPECT_EQ(x.output_at(0), g.output(0));
    }
}

TEST(explicit_user_functions, refuse_formulas_that_they_do_not_have) {
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        for (const int n_given : {6, 7, 10}) {
            explicit_unit u = at_work(name, n_given);  // not before the first call
            EXPECT_HALT(u.output_at(0),
                        "user_function: n_given=" + std::to_string(n_given) + " is not implemented. Halting..\n");
        }
        for (const int n_given : {-1, 0, 11}) {
            explicit_unit u = at_work(name, n_given);
            EXPECT_HALT(algebra_at(u, 0), "user_function: Check n_given. Halting...\n");
        }
    }
    explicit_unit narrow = at_work("user_function_1_3", 2);
    EXPECT_HALT(narrow.output_at(0), "user_function: Check n_given. Halting...\n");
}

}  // namespace
