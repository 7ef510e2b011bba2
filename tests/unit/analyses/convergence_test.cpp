#include "analyses/convergence.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "halt_throws.h"

namespace {
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

// An iterate of two nodes and one auxiliary unknown. All tests are off.
struct iterate {
    mat_class mat;
    flags_class flags;
    solve_class slv;

    iterate() {
        mat.n_svec = 3;
        mat.svec_flag = {kind_v, kind_v, kind_aux};
        mat.svec = {1, 2, 3};
        mat.svec_old = {1, 2, 3};
        mat.delsvec = {0, 0, 0};
        mat.rhs_m = {0, 0, 0};
        mat.tol_spice = mat.del_spice = {0, 0, 0};
        slv.method.chk_cnvrg = int_T;
        slv.now.iter_newton = 1;
        slv.method.norm_2 = slv.method.norm_2_rel = slv.method.norm_inf = slv.method.delxmax_all =
            slv.method.delxmax_volt = slv.method.delxmax_kcl = 1;
        slv.method.norm_spice_nodev = slv.method.norm_spice_eaux = slv.method.norm_spice_rel = 0.125;
        slv.method.norm_large = 1e3;
    }
    // Root of the mean of squares 3 for {a, a, a} is a.
    void residual(double a) { mat.rhs_m = {a, -a, a}; }
    std::string check() {
        return run_and_listen([&] { check_convergence(mat, flags, slv); }).text;
    }
    bool converged() {
        check();
        return slv.now.l_converged == 1;
    }
};

// A test that is on, and what stands for its norm.
struct norm_test {
    const char* name;
    truefalse method_settings::*on;
    truefalse method_settings::*support;  // also on; null: none
    void (*set)(iterate&, double);
    double method_settings::*limit;
    const char* printed;  // name in the text
};
void set_residual(iterate& t, double a) { t.residual(a); }
void set_step(iterate& t, double a) { t.mat.delsvec = {0, -a, 0}; }
void set_ratio(iterate& t, double a) {
    t.slv.now.norm_rhs_2_first = 1;
    t.residual(a);
}
constexpr norm_test norm_tests[] = {
    {"chk_rhs2", &method_settings::chk_rhs2, nullptr, set_residual, &method_settings::norm_2, "norm_rhs_2"},
    {"chk_rhs2_rel", &method_settings::chk_rhs2_rel, nullptr, set_ratio, &method_settings::norm_2_rel,
     "norm_rhs_2_rel"},
    {"chk_rhsinf", &method_settings::chk_rhsinf, nullptr, set_residual, &method_settings::norm_inf, "norm_rhs_inf"},
    {"chk_delx_all", &method_settings::chk_delx_all, nullptr, set_step, &method_settings::delxmax_all, "norm_delx_all"},
    {"chk_delx_volt", &method_settings::chk_delx_volt, &method_settings::chk_delx_sprt, set_step,
     &method_settings::delxmax_volt, "norm_delx_volt"},
    {"chk_delx_kcl", &method_settings::chk_delx_kcl, &method_settings::chk_delx_sprt, set_residual,
     &method_settings::delxmax_kcl, "norm_delx_kcl"},
};
iterate with(const norm_test& n) {
    iterate t;
    t.slv.method.*n.on = int_T;
    if (n.support) t.slv.method.*n.support = int_T;
    return t;
}
}  // namespace

TEST(check_convergence, every_norm_passes_at_its_limit_and_fails_above) {
    for (const norm_test& n : norm_tests) {
        iterate t = with(n);
        t.slv.method.*n.limit = 0.25;
        n.set(t, 0.25);
        EXPECT_TRUE(t.converged()) << n.name;
        n.set(t, std::nextafter(0.25, 1));
        EXPECT_FALSE(t.converged()) << n.name;
        EXPECT_FALSE(t.slv.now.l_norm_too_large) << n.name;
    }
}

TEST(check_convergence, a_norm_of_exactly_norm_large_is_not_too_large) {
    for (const norm_test& n : norm_tests) {
        iterate t = with(n);
        t.slv.method.norm_large = 512;
        n.set(t, 512);
        EXPECT_EQ(t.check(), "") << n.name;
        EXPECT_FALSE(t.slv.now.l_norm_too_large) << n.name;
    }
}

TEST(check_convergence, a_norm_above_norm_large_is_told_with_its_name_and_value) {
    for (const norm_test& n : norm_tests) {
        iterate t = with(n);
        n.set(t, 12345.678);
        EXPECT_EQ(t.check(), std::string("check_convergence: norm too large.\n   slv->") + n.printed + "=1.2346e+04\n");
        EXPECT_TRUE(t.slv.now.l_norm_too_large) << n.name;
        EXPECT_FALSE(t.slv.now.l_converged) << n.name;
    }
}

TEST(check_convergence, nan_counts_as_too_large_wherever_it_stands) {
    for (const norm_test& n : norm_tests)
        for (const std::size_t i : {0u, 1u}) {
            iterate t = with(n);
            n.set(t, 0.5);
            t.mat.rhs_m[i] = t.mat.delsvec[i] = not_a_number;
            EXPECT_NE(t.check().find("norm too large."), std::string::npos) << n.name;
            EXPECT_TRUE(t.slv.now.l_norm_too_large) << n.name;
        }
}

TEST(check_convergence, rhs2_alone_can_converge_at_iteration_0_and_is_not_too_large_there) {
    iterate t = with(norm_tests[0]);
    t.slv.now.iter_newton = 0;
    EXPECT_TRUE(t.converged());
    t.residual(1e9);
    EXPECT_EQ(t.check(), "");
    EXPECT_FALSE(t.slv.now.l_norm_too_large);
    EXPECT_FALSE(t.slv.now.l_converged);
}

TEST(check_convergence, the_relative_residual_is_against_iteration_0_and_fails_there) {
    iterate t = with(norm_tests[1]);
    t.slv.method.norm_2_rel = 0.5;
    t.slv.now.iter_newton = 0;
    t.residual(8);
    EXPECT_FALSE(t.converged());
    t.slv.now.iter_newton = 1;
    t.residual(4);
    EXPECT_TRUE(t.converged());
    t.residual(4.001);
    EXPECT_FALSE(t.converged());
}

TEST(check_convergence, a_relative_residual_against_zero_is_too_large) {
    for (const double now : {1.0, 0.0}) {
        iterate t = with(norm_tests[1]);
        t.slv.now.iter_newton = 0;
        t.residual(0);
        EXPECT_FALSE(t.converged());
        t.slv.now.iter_newton = 1;
        t.residual(now);
        EXPECT_NE(t.check().find("slv->norm_rhs_2_rel="), std::string::npos);
        EXPECT_TRUE(t.slv.now.l_norm_too_large);
    }
}

TEST(check_convergence, the_spice_test_never_passes_at_iteration_0) {
    iterate t;
    t.slv.method.chk_spice = int_T;
    t.slv.now.iter_newton = 0;
    EXPECT_FALSE(t.converged());
    t.slv.now.iter_newton = 1;
    EXPECT_TRUE(t.converged());
}

TEST(check_convergence, the_spice_test_compares_each_unknown_with_its_own_tolerance) {
    // Tolerances: 0.125 times the larger of both values, plus 0.125.
    iterate t;
    t.slv.method.chk_spice = int_T;
    t.mat.svec = {1, 2, 8};
    t.mat.svec_old = {1, 2, 8 - 1.125};
    EXPECT_TRUE(t.converged());
    t.mat.svec_old[2] = 8 - 1.126;
    EXPECT_FALSE(t.converged());
    t.mat.svec_old = {1.5, 2, 8};  // 0.5 against 0.125 * 1.5 + 0.125
    EXPECT_FALSE(t.converged());
}

TEST(check_convergence, the_spice_test_alone_wants_a_residual_of_at_most_1) {
    iterate t;
    t.slv.method.chk_spice = int_T;
    t.residual(1);
    EXPECT_TRUE(t.converged());
    t.residual(1.001);
    EXPECT_FALSE(t.converged());
    t.residual(2e3);
    EXPECT_EQ(t.check(), "check_convergence: norm too large.\n   slv->norm_rhs_2=2.0000e+03\n");
}

TEST(check_convergence, with_rhs2_on_the_limit_of_1_does_not_hold) {
    iterate t;
    t.slv.method.chk_spice = t.slv.method.chk_rhs2 = int_T;
    t.slv.method.norm_2 = 50;
    t.residual(40);
    EXPECT_TRUE(t.converged());
}

TEST(check_convergence, a_change_without_bound_is_told) {
    for (const double change : {2e3, not_a_number}) {
        iterate t;
        t.slv.method.chk_spice = int_T;
        t.mat.svec[1] = change;
        EXPECT_EQ(t.check(), "check_convergence: spice norm too large.\n");
        EXPECT_TRUE(t.slv.now.l_norm_too_large);
    }
}

TEST(check_convergence, the_volt_limit_is_out_of_force_beside_the_kcl_limit) {
    iterate t;
    t.slv.method.chk_delx_sprt = t.slv.method.chk_delx_volt = t.slv.method.chk_delx_kcl = int_T;
    t.mat.delsvec = {5, 0, 0};
    EXPECT_TRUE(t.converged());
    t.mat.delsvec = {5e3, 0, 0};
    EXPECT_NE(t.check().find("slv->norm_delx_volt=5.0000e+03"), std::string::npos);
}

TEST(check_convergence, the_volt_norm_looks_at_nodes_only) {
    iterate t = with(norm_tests[4]);
    t.mat.delsvec = {0, 0.5, 100};
    EXPECT_TRUE(t.converged());
    EXPECT_EQ(t.slv.now.norm_delx_volt, 0.5);
}

TEST(check_convergence, every_test_that_is_on_must_pass) {
    for (const norm_test& failing : norm_tests) {
        iterate t;
        for (const norm_test& n : norm_tests)
            if (n.on != &method_settings::chk_delx_volt) t.slv.method.*n.on = int_T;
        t.slv.method.chk_delx_sprt = int_T;
        t.slv.now.norm_rhs_2_first = 1;
        t.residual(0.5);
        t.mat.delsvec = {0.5, 0, 0};
        EXPECT_TRUE(t.converged());
        if (failing.on == &method_settings::chk_delx_volt) continue;
        t.slv.method.*failing.limit = 0.25;
        EXPECT_FALSE(t.converged()) << failing.name;
    }
}

TEST(check_convergence, with_no_test_on_nothing_converges) {
    iterate t;
    EXPECT_FALSE(t.converged());
}

TEST(check_convergence, with_chk_cnvrg_off_everything_converges_even_nan) {
    for (const norm_test& n : norm_tests) {
        iterate t = with(n);
        t.slv.method.chk_cnvrg = int_F;
        n.set(t, not_a_number);
        EXPECT_EQ(t.check(), "") << n.name;
        EXPECT_TRUE(t.slv.now.l_converged) << n.name;
        EXPECT_FALSE(t.slv.now.l_norm_too_large) << n.name;
    }
}

TEST(check_convergence, a_capped_exponential_is_refused_without_a_word_or_a_norm) {
    iterate t = with(norm_tests[0]);
    t.slv.method.write_rhs2 = int_T;
    t.slv.now.norm_rhs_2 = 77;
    t.flags.n_limit = 1;
    EXPECT_EQ(t.check(), "");
    EXPECT_FALSE(t.slv.now.l_converged);
    EXPECT_EQ(t.slv.now.norm_rhs_2, 77);
    t.slv.method.chk_cnvrg = int_F;
    EXPECT_FALSE(t.converged());
}

TEST(check_convergence, norms_are_printed_with_four_digits_in_width_11) {
    iterate t;
    t.slv.now.iter_newton = 12;
    t.slv.method.write_rhs2 = t.slv.method.write_rhsinf = t.slv.method.write_delx_sprt = t.slv.method.write_delx_volt =
        t.slv.method.write_delx_kcl = t.slv.method.write_delx_all = int_T;
    t.residual(0.25);
    t.mat.delsvec = {0, -3e-5, 7e100};
    EXPECT_EQ(t.check(),
              "12 norm_rhs_2= 2.5000e-01\n12 norm_rhs_inf= 2.5000e-01\n12  norm_delx_volt= 3.0000e-05\n"
              "12  norm_delx_kcl= 2.5000e-01\n12  norm_delx_all=7.0000e+100\n");
}

TEST(check_convergence, the_spice_table_marks_what_has_changed_too_much) {
    iterate t;
    t.slv.method.write_spice = int_T;
    t.mat.svec_old = {1, 1, 3};
    EXPECT_EQ(t.check(),
              "SPICE convergence: iter_newton=1\nSPICE convergence: i,tol,norm,svec_flag\n"
              "0 2.5000e-01 0.0000e+00 1\n1 3.7500e-01 1.0000e+00 1 *\n2 5.0000e-01 0.0000e+00 4\n");
    t.slv.now.iter_newton = 0;
    EXPECT_EQ(t.check(), "");
}

TEST(check_convergence, the_console_has_its_own_form_again_afterwards) {
    iterate t = with(norm_tests[0]);
    const std::string text = run_and_listen([&] {
                                 check_convergence(t.mat, t.flags, t.slv);
                                 std::cout.precision(10);
                                 std::cout << 0.125 << '\n';
                             }).text;
    EXPECT_EQ(text, "0.125\n");
}

TEST(compute_norm_spice, absolute_parts_go_by_kind_of_unknown) {
    iterate t;
    t.mat.n_svec = 6;
    t.mat.svec_flag = {kind_v, kind_aux, kind_vr, kind_gaux, kind_locv, kind_auxs};
    t.mat.svec = t.mat.svec_old = t.mat.tol_spice = t.mat.del_spice = std::vector<double>(6, 0.0);
    t.slv.method.norm_spice_nodev = 1;
    t.slv.method.norm_spice_eaux = 2;
    t.slv.method.norm_spice_gvar = 3;
    t.slv.method.norm_spice_gaux = 4;
    t.slv.method.norm_spice_locvar = 5;
    compute_norm_spice(t.mat, t.slv);
    EXPECT_EQ(t.mat.tol_spice, (std::vector<double>{1, 2, 3, 4, 5, 2}));
}

TEST(compute_norm_spice, an_unknown_without_tolerance_stops_the_run) {
    for (const int flag : {0, -1, 12, 99}) {
        iterate t;
        t.mat.svec_flag[1] = flag;
        EXPECT_HALT(compute_norm_spice(t.mat, t.slv), "compute_norm_spice: incorrect svec_flag?\n  i=1\n  svec_flag=" +
                                                          std::to_string(flag) + "\n  Halting...\n");
    }
}
