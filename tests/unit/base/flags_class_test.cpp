#include "base/flags_class.h"

#include <gtest/gtest.h>

#include "base/constants_class.h"
#include "base/math_cnst_class.h"
#include "halt_throws.h"

namespace {

using member = int flags_class::*;

// By switch number.
const std::vector<member> by_number = {
    &flags_class::dc,           &flags_class::trns,         &flags_class::startup,
    &flags_class::ac,           &flags_class::ssw,          &flags_class::init_guess,
    &flags_class::dc_first,     &flags_class::trns_first,   &flags_class::startup_first,
    &flags_class::limit_newton, &flags_class::newton_first, &flags_class::one_time_parms,
    &flags_class::save_history, &flags_class::nexttime,     &flags_class::pwr_elec,
    &flags_class::pwr_elec_ac,  &flags_class::function,     &flags_class::jacobian,
    &flags_class::process,      &flags_class::schedule,     &flags_class::outvar_prm,
    &flags_class::vary_parm,    &flags_class::set_parm,     &flags_class::acparms,
    &flags_class::rparms,       &flags_class::evaluate,     &flags_class::reset_x,
    &flags_class::x_matrix,     &flags_class::matrix_ddt,   &flags_class::matrix_alg,
    &flags_class::ssw_init,     &flags_class::reset,
};

}  // namespace

TEST(flags_class, starts_with_all_switches_off_and_one_second_to_run) {
    const flags_class flags;
    ASSERT_EQ(by_number.size(), 32u);
    for (const member m : by_number) EXPECT_EQ(flags.*m, 0);
    EXPECT_EQ(flags.t_start, 0.0);
    EXPECT_EQ(flags.t_end, 1.0);
}

TEST(flags_class, keeps_x_matrix_alone_through_init_flags) {
    flags_class flags;
    for (const member m : by_number) flags.*m = 1;
    flags.init_flags();
    for (const member m : by_number) EXPECT_EQ(flags.*m, m == &flags_class::x_matrix ? 1 : 0);
}

TEST(flags_class, saves_every_switch_at_its_number_and_restores_it) {
    for (std::size_t k = 0; k < by_number.size(); ++k) {
        flags_class flags;
        flags.*by_number[k] = 1;
        flags.save_flags();
        for (std::size_t i = 0; i < by_number.size(); ++i) EXPECT_EQ(flags.saved[i], i == k ? 1 : 0);
        for (const member m : by_number) flags.*m = 1 - flags.*m;
        flags.retrieve_flags();
        for (std::size_t i = 0; i < by_number.size(); ++i) EXPECT_EQ(flags.*by_number[i], i == k ? 1 : 0);
    }
}

TEST(flags_class, writes_the_first_switch_that_is_on) {
    struct row {
        member on;
        const char* expected;
    };
    // In the order of asking: each row's switch is written although all below are on as well.
    const row rows[] = {
        {&flags_class::dc, "  dc             = int_T\n"},
        {&flags_class::trns, "  trns           = int_T\n"},
        {&flags_class::startup, "  startup        = int_T\n"},
        {&flags_class::ac, "  ac             = int_T\n"},
        {&flags_class::ssw, "  ssw            = int_T\n"},
        {&flags_class::ssw_init, "  ssw_init       = int_T\n"},
        {&flags_class::dc_first, "  dc_first       = int_T\n"},
        {&flags_class::trns_first, "  trns_first     = int_T\n"},
        {&flags_class::startup_first, "  startup_first  = int_T\n"},
        {&flags_class::newton_first, "  newton_first   = int_T\n"},
        {&flags_class::nexttime, "  nexttime       = int_T\n"},
        {&flags_class::limit_newton, "  limit_newton   = int_T\n"},
        {&flags_class::init_guess, "  init_guess     = int_T\n"},
        {&flags_class::save_history, "  save_history   = int_T\n"},
        {&flags_class::pwr_elec, "  pwr_elec       = int_T\n"},
        {&flags_class::pwr_elec_ac, "  pwr_elec_ac    = int_T\n"},
        {&flags_class::jacobian, "  jacobian       = int_T\n"},
        {&flags_class::function, "  function       = int_T\n"},
        {&flags_class::process, "  process        = int_T\n"},
        {&flags_class::schedule, "  schedule       = int_T\n"},
        {&flags_class::one_time_parms, "  one_time_parms = int_T\n"},
        {&flags_class::outvar_prm, "  outvar_prm     = int_T\n"},
        {&flags_class::acparms, "  acparms        = int_T\n"},
        {&flags_class::rparms, "  rparms         = int_T\n"},
        {&flags_class::vary_parm, "  vary_parm      = int_T\n"},
        {&flags_class::set_parm, "  set_parm       = int_T\n"},
        {&flags_class::reset, "  reset          = int_T\n"},
        {&flags_class::evaluate, "  evaluate       = int_T\n"},
        {&flags_class::reset_x, "  reset_x        = int_T\n"},
        {&flags_class::x_matrix, "  x_matrix       = int_T\n"},
        {&flags_class::matrix_ddt, "  matrix_ddt     = int_T\n"},
        {&flags_class::matrix_alg, "  matrix_alg     = int_T\n"},
    };
    flags_class flags;
    for (const member m : by_number) flags.*m = 1;
    for (const row& r : rows) {
        EXPECT_EQ(run_and_listen([&] { flags.write_all_true(); }).text, r.expected);
        flags.*r.on = 0;
    }
    EXPECT_EQ(run_and_listen([&] { flags.write_all_true(); }).text, "");
}

TEST(constants_class, holds_one_and_three) {
    EXPECT_EQ(constants_class{}.first, 1);
    EXPECT_EQ(constants_class{}.second, 3);
}

TEST(math_cnst_class, agrees_with_the_functions_that_define_it) {
    const math_cnst_class c;
    EXPECT_DOUBLE_EQ(std::sin(c.pi_by_2), 1.0);
    EXPECT_DOUBLE_EQ(c.pi, 2 * c.pi_by_2);
    EXPECT_DOUBLE_EQ(c.twopi, 4 * c.pi_by_2);
    EXPECT_DOUBLE_EQ(c.pi_by_6 * 6, c.pi);
    EXPECT_DOUBLE_EQ(c.rad_to_deg * c.pi, 180.0);
    EXPECT_DOUBLE_EQ(c.deg_to_rad * c.rad_to_deg, 1.0);
    EXPECT_DOUBLE_EQ(std::log(c.e), 1.0);
    EXPECT_DOUBLE_EQ(c.sqrt_2, std::sqrt(2.0));
    EXPECT_EQ(c.one_c * c.zero_c, std::complex<double>(0, 0));
    EXPECT_EQ(c.one_c, std::complex<double>(1, 0));
    EXPECT_EQ(c.boltzmann, 1.3806226e-23);
    EXPECT_EQ(c.q, 1.6021918e-19);
    EXPECT_EQ(c.t_zero_celsius, 273.15);
}
