// transient_solution_test.cpp -- solution files that are written in the middle of a transient: their terminal currents
// are those of the last solution, whatever the variables are by then.
#include <gtest/gtest.h>

#include "whole_run.h"

namespace {
// The terminal currents of a solution file: V1 (in, 0), R1 (in, a), then others.
std::vector<double> terminal_currents(const whole_run& run) {
    std::istringstream in(run.file("s.dat"));
    std::vector<double> found;
    bool there = false;
    for (std::string l; std::getline(in, l);) {
        if (l == "ebeu->cur_nd:") {
            there = true;
        } else if (there) {
            if (l.find("ebeu") == 0) break;
            found.push_back(std::stod(l));
        }
    }
    return found;
}

// A transient of a diode behind 1 kOhm at a sine; no output asks for a current. From the second step on no solve has
// iterations enough.
deck_text diode(const std::string& more) {
    return {
        "eelement name=V1 type=vsrcac p=in n=0 a=5 f_hz=1k\neelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=D1 type=diode_spice_1 p=a n=0\noutvar: vin=nodev_of_in va=nodev_of_a\n",
        "vin va",
        {"solve_type trns\nmethod: gmin_step=no t_end=1m delt_const=0.1m " + more +
         "\nbegin_output\nfilename s.dat\nvariables: solution\nend_output\n"}};
}

const char* const methods[] = {"back_euler=yes", "trapezoidal=yes", "gear2=yes"};
}  // namespace

TEST(transient_solution, of_a_step_that_fails_has_the_currents_of_the_step_before) {
    for (const std::string method : methods) {
        const whole_run run(diode(method + " itmax_newton=1").str());
        ASSERT_TRUE(run.stopped) << run.text;
        const std::vector<double> last = run.rows("out1.dat").back(), i = terminal_currents(run);
        ASSERT_EQ(i.size(), 6u);
        EXPECT_NEAR(last[0], 1e-4, 1e-10) << "one step is accepted";
        const double wanted = (last[1] - last[2]) / 1e3;
        EXPECT_GT(wanted, 1e-4);
        EXPECT_NEAR(i[2], wanted, 2e-6 * wanted) << method;
        EXPECT_NEAR(i[3], -wanted, 2e-6 * wanted);
        EXPECT_NEAR(i[0], -wanted, 2e-6 * wanted);
    }
}

TEST(transient_solution, beside_the_dumped_system_of_a_step_has_the_currents_of_the_step_before) {
    const whole_run run(diode("back_euler=yes wrt_debug_smat=yes iter_debug_trns=2 iter_debug_newton=1").str());
    ASSERT_TRUE(run.stopped) << run.text;
    const std::vector<double> last = run.rows("out1.dat").back(), i = terminal_currents(run);
    ASSERT_EQ(i.size(), 6u);
    EXPECT_NEAR(last[0], 1e-4, 1e-10);
    const double wanted = (last[1] - last[2]) / 1e3;
    EXPECT_NEAR(i[2], wanted, 2e-6 * wanted);
}

TEST(transient_solution, of_a_run_without_steps_keeps_the_currents_that_it_began_with) {
    const deck_text deck{
        "eelement name=V1 type=vsrcdc p=in n=0 vdc=10\neelement name=R1 type=r p=in n=a r=1k\n"
        "eelement name=R2 type=r p=a n=0 r=1k\noutvar: va=nodev_of_a\n",
        "va",
        {"solve_type dc\n",
         "solve_type trns\ninitial_sol previous\nset_parm r_of_R1 2k\n"
         "method: back_euler=yes t_end=1m delt_const=0.1m itmax_trns=0\n"
         "begin_output\nfilename s.dat\nvariables: solution\nend_output\n"}};
    const whole_run run(deck.str());
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(terminal_currents(run), (std::vector<double>{-5e-3, 5e-3, 5e-3, -5e-3, 5e-3, -5e-3}));
}
