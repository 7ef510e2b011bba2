// Dense routines against what defines them: products, residuals, a worked example.
#include "sparse/dense.h"

#include <random>

#include "halt_throws.h"
#include "sparse/arithmetic.h"

namespace {

using std::size_t;

void draw_one(double& x, std::mt19937& rng) { x = std::uniform_real_distribution<double>(-1, 1)(rng); }
void draw_one(complex_value& x, std::mt19937& rng) {
    double re, im;
    draw_one(re, rng);
    draw_one(im, rng);
    x = {re, im};
}
template <class T>
std::vector<T> random_vector(int n, std::mt19937& rng) {
    std::vector<T> v(static_cast<size_t>(n));
    for (T& x : v) draw_one(x, rng);
    return v;
}

template <class T>
void inverse_times_matrix_is_the_unit_matrix() {
    std::mt19937 rng(1);
    for (int n = 1; n <= 12; ++n) {
        const std::vector<T> a = random_vector<T>(n * n, rng), b = random_vector<T>(n, rng);
        std::vector<T> inv(a.size()), x(b.size()), unit(a.size()), back(b.size());
        std::vector<int> p1(b.size()), p2(b.size()), p3(b.size());
        mat_solve(n, a.data(), inv.data(), b.data(), x.data(), p1.data(), p2.data(), p3.data());
        mat_mult(n, n, n, n, a.data(), inv.data(), unit.data());
        mat_mult_1(n, a.data(), x.data(), back.data());
        for (int i = 0; i < n; ++i) {
            EXPECT_LT(magnitude(back[static_cast<size_t>(i)] - b[static_cast<size_t>(i)]), 1e-10);
            for (int j = 0; j < n; ++j) EXPECT_LT(magnitude(unit[static_cast<size_t>(i * n + j)] - T(i == j)), 1e-10);
        }
    }
}

template <class T>
void crout_factors_solve() {
    std::mt19937 rng(2);
    for (int n = 1; n <= 10; ++n) {
        std::vector<T> a = random_vector<T>(n * n, rng);
        for (int i = 0; i < n; ++i) a[static_cast<size_t>(i * n + i)] += T(n);
        const std::vector<T> b = random_vector<T>(n, rng);
        std::vector<T> lu = a, x(b.size()), back(b.size());
        ASSERT_EQ(Crout_LU_Decomposition(lu.data(), n), 0);
        ASSERT_EQ(Crout_LU_Solve(lu.data(), b.data(), x.data(), n), 0);
        mat_mult_1(n, a.data(), x.data(), back.data());
        for (size_t i = 0; i < b.size(); ++i) EXPECT_LT(magnitude(back[i] - b[i]), 1e-12);
    }
}

}  // namespace

TEST(dense, inverse_times_matrix_is_the_unit_matrix) {
    inverse_times_matrix_is_the_unit_matrix<double>();
    inverse_times_matrix_is_the_unit_matrix<complex_value>();
}

TEST(dense, crout_factors_solve) {
    crout_factors_solve<double>();
    crout_factors_solve<complex_value>();
}

TEST(dense, crout_form_has_a_unit_upper_diagonal) {
    double a[4] = {2, 4, 3, 7};  // lower 2; 3 1, upper 1 2; 1
    ASSERT_EQ(Crout_LU_Decomposition(a, 2), 0);
    EXPECT_EQ(std::vector<double>(a, a + 4), (std::vector<double>{2, 2, 3, 1}));
    double singular[4] = {1, 2, 2, 4}, x[2];
    const double b[2] = {1, 1};
    EXPECT_EQ(Crout_LU_Decomposition(singular, 2), -1);
    EXPECT_EQ(Lower_Triangular_Solve(singular, b, x, 2), -1);
}

TEST(dense, zero_diagonal_is_no_obstacle_to_full_pivoting) {
    double a[4] = {0, 2, 4, 0};
    int p1[2], p2[2], p3[2];
    invrs(2, a, p1, p2, p3);
    EXPECT_EQ(std::vector<double>(a, a + 4), (std::vector<double>{0, 0.25, 0.5, 0}));
}

TEST(dense, singular_matrix_and_unequal_sizes_halt) {
    double a[4] = {1, 2, 2, 4};
    complex_value c[1] = {0};
    int p1[2], p2[2], p3[2];
    EXPECT_HALT(invrs(2, a, p1, p2, p3), "invrs: singular matrix. Halting..\n");
    EXPECT_HALT(invrs(1, c, p1, p2, p3), "invrs_c: singular matrix. Halting..\n");
    EXPECT_HALT(mat_mult(1, 2, 1, 2, a, a, a), "mat_mult: ncol_a != nrow_b. Halting...\n");
    EXPECT_HALT(mat_mult(1, 2, 1, 2, c, c, c), "mat_mult_c: ncol_a != nrow_b. Halting...\n");
}

TEST(dense, product_of_unlike_shapes) {
    const double a[6] = {1, 2, 3, 4, 5, 6}, b[3] = {1, 0, -1};
    double c[2];
    mat_mult(2, 3, 3, 1, a, b, c);
    EXPECT_EQ(c[0], -2);
    EXPECT_EQ(c[1], -2);
}

TEST(arithmetic, complex_quotient_and_magnitude_survive_large_parts) {
    const complex_value big = {3e200, 4e200};
    EXPECT_DOUBLE_EQ(magnitude(big), 5e200);
    EXPECT_DOUBLE_EQ(magnitude(complex_value(0, -2)), 2);
    EXPECT_EQ(magnitude(complex_value(0, 0)), 0);
    EXPECT_TRUE(std::isnan(magnitude(complex_value(0, NAN))));
    EXPECT_TRUE(std::isinf(magnitude(complex_value(INFINITY, INFINITY))));
    const complex_value q = quotient(complex_value(1), big);
    EXPECT_NEAR(q.real() * 1e200, 0.12, 1e-15);
    EXPECT_NEAR(q.imag() * 1e200, -0.16, 1e-15);
    EXPECT_EQ(quotient(complex_value(5, 10), complex_value(1, 2)), complex_value(5, 0));
}
