#include <gtest/gtest.h>

#include "halt_throws.h"
#include "settings/solve_class.h"

namespace {
cct_class circuit_class(bool linear) {
    cct_class cct;
    cct.flag_linear = cct.flag_x_linear = linear;
    return cct;
}
const std::string head = "solve_class::define_method_type\n";
}  // namespace

TEST(define_method_type, takes_the_linear_path_without_a_convergence_test) {
    solve_class slv;
    define_method_type(slv, circuit_class(true));
    EXPECT_TRUE(slv.now.flag_linear);
    EXPECT_FALSE(slv.now.flag_nonlinear);
    x_define_method_type(slv, circuit_class(true));
    EXPECT_TRUE(slv.now.flag_x_linear);
}

TEST(define_method_type, needs_a_convergence_test_on_the_newton_path) {
    solve_class slv;
    EXPECT_HALT(define_method_type(slv, circuit_class(false)),
                head + "   No convergence criterion for Newton method?\n   Halting...\n");
    for (auto test : {&method_settings::chk_rhs2, &method_settings::chk_rhs2_rel, &method_settings::chk_rhsinf,
                      &method_settings::chk_delx_all, &method_settings::chk_spice}) {
        solve_class tested;
        tested.method.*test = int_T;
        define_method_type(tested, circuit_class(false));
        EXPECT_TRUE(tested.now.flag_nonlinear);
    }
}

TEST(define_method_type, needs_voltages_or_kcl_with_separate_steps) {
    solve_class slv;
    slv.method.chk_delx_sprt = slv.method.chk_rhs2 = int_T;
    EXPECT_HALT(define_method_type(slv, circuit_class(false)),
                head + "   delta_x convergence criterion:\n   No type specified for delta_x.\n   Halting...\n");
    slv.method.chk_delx_kcl = int_T;
    define_method_type(slv, circuit_class(false));
    EXPECT_TRUE(slv.now.flag_nonlinear);
}

TEST(define_method_type, of_the_explicit_side_needs_a_test_alike) {
    solve_class slv;
    EXPECT_TRUE(run_and_listen([&] { x_define_method_type(slv, circuit_class(false)); }).stopped);
    slv.method.x_chk_spice = int_T;
    x_define_method_type(slv, circuit_class(false));
    EXPECT_TRUE(slv.now.flag_x_nonlinear);
}

namespace {
solve_class with_damping_sets() {
    solve_class slv;
    slv.method.itmax_newton = 1, slv.method.itmax_newton_first = 2;
    slv.method.dmp_newt_max = 3, slv.method.dmp_newt_max2 = 4, slv.method.dmp_newt_max_first = 5;
    slv.method.dmp_k = 0.6, slv.method.dmp_k2 = 0.7, slv.method.dmp_k_first = 0.8;
    slv.method.dmp_first = int_T;
    return slv;
}
void expect_set(solve_class& slv, int itmax, int newt_max, double k, int dmp) {
    get_dmp(slv);
    EXPECT_EQ(slv.now.itmax_newton, itmax);
    EXPECT_EQ(slv.now.dmp_newt_max, newt_max);
    EXPECT_EQ(slv.now.dmp_k, k);
    EXPECT_EQ(slv.now.dmp, dmp);
}
}  // namespace

TEST(get_dmp, of_dc_and_startup_goes_by_the_start_of_the_block) {
    for (auto type : {&solve_class::dc, &solve_class::startup}) {
        solve_class slv = with_damping_sets();
        slv.*type = int_T;
        slv.task.init_initialize = int_T;
        expect_set(slv, 2, 5, 0.8, 1);
        slv.task.init_initialize = int_F;
        slv.task.init_previous = int_T;
        expect_set(slv, 1, 3, 0.6, 0);
        slv.task.init_previous = int_F;
        slv.task.init_file = int_T;
        expect_set(slv, 1, 3, 0.6, 0);
    }
}

TEST(get_dmp, of_time_loops_goes_by_the_first_step_and_uses_the_second_count_later) {
    solve_class slv = with_damping_sets();
    slv.trns = int_T;
    slv.task.init_previous = int_T;
    slv.now.iter_trns_1 = 0;
    expect_set(slv, 2, 5, 0.8, 1);
    slv.now.iter_trns_1 = 1;
    expect_set(slv, 1, 4, 0.6, 0);
    solve_class ssw = with_damping_sets();
    ssw.ssw = int_T;
    ssw.now.iter_trns = 0;
    expect_set(ssw, 2, 5, 0.8, 1);
    ssw.now.iter_trns = 3;
    expect_set(ssw, 1, 4, 0.6, 0);
}
