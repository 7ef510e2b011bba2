// method_settings.h -- the settings of a solve block: each keyword of `method:` is a member of its own name.
// Types, defaults and meanings stand in method_words.cpp.
#pragma once
#include <vector>

#include "base/enum1.h"

struct method_settings {
    // Newton
    int itmax_newton = 0, itmax_newton_first = 0;
    truefalse dmp = int_F, dmp_first = int_F;
    double dmp_k = 0, dmp_k2 = 0, dmp_k_first = 0;
    int dmp_newt_max = 0, dmp_newt_max2 = 0, dmp_newt_max_first = 0;
    truefalse nr_line_search = int_F;
    int itmax_line_search = 0;
    truefalse nr_approx = int_F;
    int iter_trns_nrapprox = 0;

    // convergence
    truefalse chk_cnvrg = int_F, chk_rhs2 = int_F, chk_spice = int_F, chk_rhs2_rel = int_F, chk_rhsinf = int_F,
              chk_delx_sprt = int_F, chk_delx_all = int_F, chk_delx_volt = int_F, chk_delx_kcl = int_F;
    truefalse chk_only_rhs2 = int_F, chk_only_delx_volt = int_F, chk_only_spice = int_F;
    double norm_2 = 0, norm_2_rel = 0, norm_inf = 0, norm_large = 0;
    double norm_spice_nodev = 0, norm_spice_eaux = 0, norm_spice_locvar = 0, norm_spice_gvar = 0, norm_spice_gaux = 0,
           norm_spice_cur = 0, norm_spice_rel = 0;
    double delxmax_all = 0, delxmax_volt = 0, delxmax_kcl = 0;

    // elimination
    truefalse matrix_sparse1 = int_F, matrix_superlu = int_F;
    double zero_piv = 0, gauss_epsln = 0;
    truefalse debug_gauss_1 = int_F, debug_gauss_2 = int_F, wrt_debug_smat = int_F;

    // gmin stepping
    truefalse gmin_step = int_F, gmin_init = int_F, gmin_dmp = int_F;
    double gmin_dmp_k = 0, gmin_start = 0, gmin_end = 0;
    int gmin_npoints = 0, gmin_itmax_newton = 0, gmin_dmp_newt_max = 0;

    // digital passes
    int n_pass_dgtl = 0, n_pass_mixed = 0;
    double offset_dgtl = 0;

    // explicit side
    int x_itmax_newton = 0, x_itmax_newton_first = 0;
    truefalse x_dmp = int_F, x_dmp_first = int_F;
    double x_dmp_k = 0, x_dmp_k_first = 0;
    int x_dmp_newt_max = 0, x_dmp_newt_max_first = 0;
    truefalse x_chk_rhs2 = int_F, x_chk_spice = int_F;
    double x_norm_2 = 0, x_norm_large = 0, x_norm_spice_nodev = 0, x_norm_spice_xaux = 0, x_norm_spice_cur = 0,
           x_norm_spice_rel = 0;
    truefalse x_write_rhs2 = int_F, x_write_spice = int_F, x_wrt_debug_smat = int_F, x_write_time = int_F;
    int x_iter_write_rhs2 = 0, x_iter_debug_newton = 0;

    // progress and diagnostics
    int n_wrtiterno = 0, iter_debug_newton = 0, iter_debug_ssw_newton = 0, iter_debug_trns = 0, iter_write_rhs2 = 0,
        flag_debug_int = 0;
    truefalse write_rhs2 = int_F, write_rhsinf = int_F, write_delx_sprt = int_F, write_delx_all = int_F,
              write_delx_volt = int_F, write_delx_kcl = int_F, write_spice = int_F;

    // time
    truefalse back_euler = int_F, back_euler_auto = int_F, trapezoidal = int_F, trapezoidal_auto = int_F, gear2 = int_F,
              gear2_fixed = int_F, trbdf2 = int_F;
    truefalse forward_euler = int_F, RK4 = int_F, RKF45 = int_F, BS23 = int_F, modified_euler = int_F, Heun = int_F;
    truefalse event_restart = int_F;
    truefalse constant_step = int_F, x_eval_serial = int_F, write_time = int_F;
    double delt_const = 0, delt_min = 0, delt_max = 0;        // s
    double delt_const_x = 0, delt_min_x = 0, delt_max_x = 0;  // s
    double fctr_stepred = 0, fctr_stepinc = 0;
    double time_epsilon = 0, time_epsilon_x = 0;  // s
    double trbdf2_tolr = 0, trbdf2_gamma = 0;
    double rkf45_tolr = 0, bs23_tolr = 0, rkf45_fctr_min = 0, bs23_fctr_min = 0, rkf45_fctr_max = 0, bs23_fctr_max = 0;
    int itmax_trns = 0, itmax_trbdf2 = 0, itmax_stepred = 0;

    // of one type of block
    truefalse compute_acp = int_F;   // ac
    double t_startup = 0, t_dc = 0;  // startup, dc; s
    double ssw_period = 0;           // s, of one shot: the deck's period times ssw_period_mult
    double ssw_frequency = 0, ssw_norm = 0, ssw_dmp_k = 0;
    int ssw_itmax_newton = 0, ssw_ndiv = 0, ssw_period_mult = 0, ssw_dmp_newt_max = 0;
    truefalse ssw_dmp = int_F, ssw_known_period = int_F, ssw_chk_spice = int_F, ssw_chk_rhs2 = int_F;

    std::vector<char> given;  // [n_method_words] 1: a card of the block gave the keyword (see was_given)
};
