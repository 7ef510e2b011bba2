// trns_messages_test.cpp -- what start-up and transient say on the console when they fail, dump or only go on.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>

#include "dc_fixture.h"
#include "whole_run.h"

namespace {
// 1 V through 1k into 1u with a diode that stays off: linear in what it does, yet solved by Newton. The residual of a
// charging step is gone at its second iteration, so that an iteration limit of 1 fails every step, and 2 none.
const std::string charging =
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\neelement name=R1 type=r p=in n=a r=1k\n"
    "eelement name=C1 type=c p=a n=0 c=1u\neelement name=D1 type=diode_r p=0 n=a\n"
    "outvar: va=nodev_of_a ic=i_of_C1\n";
// The same at rest until 60 us, when the source rises at once.
const std::string pulsed =
    "eelement name=V1 type=vpulse p=in n=0 td=60u tr=1n\neelement name=R1 type=r p=in n=a r=1k\n"
    "eelement name=C1 type=c p=a n=0 c=1u\neelement name=D1 type=diode_r p=0 n=a\n"
    "outvar: va=nodev_of_a ic=i_of_C1\n";
// y = x x from x = y = 0: x is right after one iteration, the residual of y is then x x.
std::string square(const std::string& x) {
    return "gelement name=K type=const y=x k=" + x + "\ngelement name=M type=mult_2a x1=x x2=x y=va\n" +
           "outvar: va=var_of_va ic=var_of_x\n";
}
// A difference of infinite products at the second iteration.
const std::string no_number =
    "gelement name=K type=const y=x k=1e200\ngelement name=S type=sum_2 x1=x x2=x y=va k1=1e200 k2=-1e200\n"
    "gelement name=M type=mult_2a x1=va x2=va y=w\n"
    "outvar: va=var_of_va ic=var_of_x\n";
// Infinite products at the second iteration.
const std::string no_end =
    "gelement name=K type=const y=x k=1e200\ngelement name=M1 type=mult_2a x1=x x2=x y=y1\n"
    "gelement name=M2 type=mult_2a x1=x x2=x y=y2\ngelement name=S type=sub_2 x1=y1 x2=y2 y=va\n"
    "outvar: va=var_of_va ic=var_of_x\n";

const std::string starts = "Transient simulation starts...\niter_trns=0 time=0\n";
// Gmin stepping wants electrical elements; these have no part in it.
const std::string bystanders = "eelement name=V1 type=vsrcdc p=in n=0 vdc=0\neelement name=R1 type=r p=in n=0 r=1\n";
std::string size_line(int n) {
    const std::string k = std::to_string(n);
    return "mat::set_mat_2: system matrix size is " + k + " x " + k + "\n";
}

struct told {
    const char* name;
    std::string circuit, block;
    int size;
    std::string text;  // behind the line of the system's size
    bool stops = true;
};
void PrintTo(const told& t, std::ostream* os) { *os << t.name; }

std::string trns(const std::string& settings) { return "solve_type trns\nmethod: gmin_step=no " + settings + "\n"; }
const std::string one_iteration = " itmax_newton=1 ", none_first = " itmax_newton_first=1 itmax_newton=1 ";
const std::string halting = "  Halting...\n";

const told fatal[] = {
    {"startup_newton", charging, "solve_type startup\nmethod: gmin_step=no itmax_newton_first=1\n", 4,
     "solve_startup: N-R did not converge.\n   Halting...\n"},
    {"startup_norm", square("3"), "solve_type startup\nmethod: norm_large=5\n", 2,
     "check_convergence: norm too large.\n   slv->norm_rhs_2=6.3640e+00\nsolve_newton_startup: norm too large.\n"
     "solve_startup: N-R did not converge.\n   Halting...\n"},
    {"startup_nan", no_number, "solve_type startup\n", 3,
     "solve_newton_startup: NaN found!\nsolve_startup: N-R did not converge.\n   Halting...\n"},
    {"startup_infinite", no_end, "solve_type startup\n", 4,
     "solve_newton_startup: norm too large.\nsolve_startup: N-R did not converge.\n   Halting...\n"},

    {"newton_first_step", charging, trns("back_euler=yes t_end=1m delt_const=0.1m" + none_first), 3,
     starts + "solve_trns: N-R iterations did not converge.\n  iter_trns_anlg=0\n  time (4)=0.0001\n" + halting},
    {"newton_later_step", charging, trns("trapezoidal=yes t_end=1m delt_const=0.1m" + one_iteration), 3,
     starts + "solve_trns: N-R iterations did not converge.\n  iter_trns_anlg=1\n  time (4)=0.0002\n" + halting},
    {"newton_gear2", charging, trns("gear2=yes t_end=1m delt_const=0.1m" + one_iteration), 3,
     starts + "solve_trns: N-R iterations did not converge.\n  iter_trns_anlg=1\n  time (4)=0.0002\n" + halting},
    {"newton_gear2_fixed", charging, trns("gear2_fixed=yes t_start=1 t_end=2 delt_const=0.25" + one_iteration), 3,
     "Transient simulation starts...\niter_trns=0 time=1\n"
     "solve_trns: N-R iterations did not converge.\n  iter_trns_anlg=1\n  time (4)=1.5\n" +
         halting},
    {"norm", square("3"), trns("back_euler=yes t_end=4m delt_const=1m norm_large=5"), 2,
     starts +
         "check_convergence: norm too large.\n   slv->norm_rhs_2=6.3640e+00\nsolve_newton_trns: norm too large.\n"
         "solve_trns: N-R iterations did not converge.\n  iter_trns_anlg=0\n  time (4)=0.001\n" +
         halting},
    {"nan", no_number, trns("back_euler=yes t_end=4m delt_const=1m"), 3,
     starts +
         "solve_newton_trns: NaN found!\n"
         "solve_trns: N-R iterations did not converge.\n  iter_trns_anlg=0\n  time (4)=0.001\n" +
         halting},
    {"infinite", no_end, trns("back_euler=yes t_end=4m delt_const=1m"), 4,
     starts +
         "solve_newton_trns: norm too large.\n"
         "solve_trns: N-R iterations did not converge.\n  iter_trns_anlg=0\n  time (4)=0.001\n" +
         halting},

    // The first step grows to 0.15 ms; behind it come 0.09, 0.054 and then the smallest.
    {"back_euler_auto_smallest_step", charging,
     trns("back_euler_auto=yes t_end=1m delt_const=0.1m delt_min=50u" + one_iteration), 3,
     starts + "solve_trns: no convergence even with\n  the smallest time step.\niter_trns_1=1, time (3)=0.00015\n" +
         halting},
    {"trapezoidal_auto_smallest_step", charging,
     trns("trapezoidal_auto=yes t_end=1m delt_const=0.1m delt_min=50u" + one_iteration), 3,
     starts + "solve_trns: no convergence even with\n  the smallest time step.\niter_trns_1=1, time (3)=0.00015\n" +
         halting},
    {"smallest_step_is_not_retried", charging,
     trns("back_euler_auto=yes t_end=1m delt_const=0.1m delt_min=0.1m itmax_stepred=0" + none_first), 3,
     starts + "solve_trns: no convergence even with\n  the smallest time step.\niter_trns_1=0, time (3)=0.0001\n" +
         halting},
    {"iter_stepred", charging, trns("back_euler_auto=yes t_end=1m delt_const=0.1m itmax_stepred=2" + one_iteration), 3,
     starts + "solve_trns: iter_stepred has exceeded\n  itmax_stepred.\n  iter_stepred=3\n  itmax_stepred=2\n" +
         halting},

    {"itmax_trbdf2_below_0", charging, trns("trbdf2=yes t_end=1m delt_const=0.1m itmax_trbdf2=-1"), 3,
     starts +
         "solve_trns: iter_trbdf2 has exceeded itmax_trbdf2\n  iter_trbdf2=1\n  itmax_trbdf2=-1\n"
         "  number_reject=0\n  time_given=0\n" +
         halting},
    // Whole steps of 0.4, 0.2 and 0.1 ms fail in their first stage, and the third is the smallest step.
    {"trbdf2_first_stage", charging,
     trns("trbdf2=yes t_end=1m delt_const=0.4m delt_min=0.1m trbdf2_gamma=0.5 fctr_stepred=0.5" + none_first), 3,
     starts + "solve_trns: no convergence even with\n  the smallest time step.\n  iter_tr=3\n  iter_trbdf2=3\n"
              "  number_reject=3\n  iter_trns_1=0\n"},
    // The source rises behind the first stage, which ends at 50 us, so that only the second stage fails. A step of
    // 0.25 ms before it fails in its first stage. The break is nearer than the smallest step and shortens neither.
    {"trbdf2_second_stage", pulsed,
     trns("trbdf2=yes t_end=1m delt_const=0.1m delt_min=0.1m trbdf2_gamma=0.5 chk_only_rhs2=yes" + none_first), 3,
     starts + "solve_trns: no convergence (in bdf2) even with\n  the smallest time step.\n  iter_tr=1\n  iter_bdf2=1\n"
              "  number_reject=1\n  iter_trns_1=0\n"},
    {"trbdf2_second_stage_later", pulsed,
     trns("trbdf2=yes t_end=1m delt_const=0.25m delt_min=0.1m trbdf2_gamma=0.5 fctr_stepred=0.4 chk_only_rhs2=yes" +
          none_first),
     3,
     starts + "solve_trns: no convergence (in bdf2) even with\n  the smallest time step.\n  iter_tr=2\n  iter_bdf2=1\n"
              "  number_reject=2\n  iter_trns_1=0\n"},

    {"gmin_points", charging,
     "solve_type trns\nmethod: back_euler=yes t_end=1m delt_const=0.1m gmin_step=yes gmin_itmax_newton=1\n", 3,
     starts + "gmin_step_trns_1:\n   N-R iterations did not converge.\n   gmin_present=0.1\n   1/gmin_present=10\n"
              "   Halting...\n"},
    {"gmin_behind_newton", charging,
     "solve_type trns\nmethod: back_euler=yes t_end=1m delt_const=0.1m gmin_step=yes gmin_init=no gmin_itmax_newton=1 "
     "gmin_start=0.25 itmax_newton=1\n",
     3,
     starts + "solve_trns: N-R iterations did not converge.\n  iter_trns_anlg=1\n  time (4)=0.0002\n"
              "  calling gmin_step_trns_1...\n"
              "gmin_step_trns_1:\n   N-R iterations did not converge.\n   gmin_present=0.25\n   1/gmin_present=4\n"
              "   Halting...\n"},
    {"gmin_infinite", no_end + bystanders,
     "solve_type trns\nmethod: back_euler=yes t_end=1m delt_const=0.1m gmin_step=yes\n", 6,
     starts + "gmin_step_trns_1: norm too large.\ngmin_step_trns_1:\n   N-R iterations did not converge.\n"
              "   gmin_present=0.1\n   1/gmin_present=10\n   Halting...\n"},
    {"gmin_norm", square("3") + bystanders,
     "solve_type trns\nmethod: back_euler=yes t_end=1m delt_const=0.1m gmin_step=yes gmin_dmp=no chk_only_rhs2=yes "
     "norm_large=4\n",
     4,
     starts + "check_convergence: norm too large.\n   slv->norm_rhs_2=4.5000e+00\ngmin_step_trns_1: norm too large.\n"
              "gmin_step_trns_1:\n   N-R iterations did not converge.\n"
              "   gmin_present=0.1\n   1/gmin_present=10\n   Halting...\n"},

    {"gear2_with_breaks", pulsed, trns("gear2_fixed=yes t_end=1m delt_const=0.1m"), 3,
     "solve_trns: cannot use gear2 when\n  step size may be limited\n  by the elements. Halting...\n"},
    {"gear2_changed_step", charging, trns("gear2_fixed=yes t_end=0.25m delt_const=0.1m"), 3,
     starts + "solve_trns:\n   cannot use gear2 when step\n   size may be changed\n" + halting},

    {"line_search_without_trials", square("3"),
     trns("back_euler=yes t_end=4m delt_const=1m nr_line_search=yes itmax_line_search=0"), 2,
     starts + "solve_newton_trns: N-R line search failed.\n  Halting..\n"},
    // Residuals (-3, 0) at the start and (0, -9) behind the full step.
    {"line_search_with_one_trial", square("3"),
     trns("back_euler=yes t_end=4m delt_const=1m nr_line_search=yes itmax_line_search=1"), 2,
     starts + "solve_newton_trns: line search: i=0 dmp_ls=1 norm_linsrh=6.363961031 norm_linsrh0=2.121320344\n"
              "solve_newton_trns: N-R line search failed.\n  Halting..\n"},
};

class fatal_texts : public testing::TestWithParam<told> {};
TEST_P(fatal_texts, are_printed_to_the_letter) {
    const told& t = GetParam();
    const whole_run run(deck_text{t.circuit, "va ic", {t.block}}.str());
    EXPECT_TRUE(run.stopped);
    EXPECT_EQ(run.text, size_line(t.size) + t.text);
}
INSTANTIATE_TEST_SUITE_P(of, fatal_texts, testing::ValuesIn(fatal), [](const auto& p) { return p.param.name; });

// Texts of blocks that cannot be read do not get as far as the system.
struct refused {
    const char* name;
    std::string settings, text;
};
void PrintTo(const refused& t, std::ostream* os) { *os << t.name; }
const refused refusals[] = {
    {"two_methods", "back_euler=yes trbdf2=yes t_end=1m delt_const=0.1m",
     "solve_class: more then one method specified for\n   transient simulation? Halting...\n"},
    {"a_method_and_its_auto_form", "trapezoidal=yes trapezoidal_auto=yes t_end=1m delt_const=0.1m",
     "solve_class: more then one method specified for\n   transient simulation? Halting...\n"},
    {"no_delt_const", "back_euler=yes t_end=1m",
     "solve_class: delt_const for transient/SSW simulation\n   has not been specified. Halting...\n"},
    {"no_t_end", "back_euler=yes delt_const=0.1m",
     "solve_class: t_end for transient simulation\n   has not been specified. Halting...\n"},
    {"delt_const_below_delt_min", "back_euler=yes t_end=1m delt_const=0.1m delt_min=0.2m",
     "solve_class: delt_const for transient simulation\n   is less than delt_min. Halting...\n"},
};
class refused_blocks : public testing::TestWithParam<refused> {};
TEST_P(refused_blocks, say_what_is_missing_or_too_much) {
    const whole_run run(deck_text{charging, "va ic", {trns(GetParam().settings)}}.str());
    EXPECT_TRUE(run.stopped);
    EXPECT_EQ(run.text, GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(of, refused_blocks, testing::ValuesIn(refusals), [](const auto& p) { return p.param.name; });

std::string without_diode(std::string circuit) {
    const std::size_t at = circuit.find("eelement name=D1");
    return circuit.erase(at, circuit.find('\n', at) + 1 - at);
}
const std::string not_reached =
    "warning: time_end not reached\n  in transient simulation.\n  Increase itmax_trns in the method card.\n";
const std::string completed = "TARNEL: Program completed.\n";
}  // namespace

TEST(trns_messages, a_block_without_a_method_tells_which_one_it_takes) {
    const std::string block = trns("t_end=0.2m delt_const=0.1m");
    const whole_run linear(deck_text{without_diode(charging), "va ic", {block}}.str());
    EXPECT_EQ(linear.text,
              "solve_class: trns method not sepcified.\n   Setting trapezoidal by default.\n   (linear circuit)\n" +
                  size_line(3) + starts + completed);
    const whole_run newton(deck_text{charging, "va ic", {block}}.str());
    EXPECT_EQ(newton.text,
              "solve_class: trns method not sepcified.\n   Setting back Euler by default.\n   (non-linear circuit)\n" +
                  size_line(3) + starts + completed);
}

TEST(trns_messages, progress_without_times_counts_passes) {
    const whole_run run(
        deck_text{charging, "va ic", {trns("back_euler=yes t_end=1m delt_const=0.1m write_time=no n_wrtiterno=4")}}
            .str());
    EXPECT_EQ(run.text, size_line(3) + "Transient simulation starts...\ni=0\ni=4\ni=8\n" + completed);
}

TEST(trns_messages, no_step_is_taken_with_no_pass) {
    const whole_run run(
        deck_text{charging, "va ic", {trns("back_euler=yes t_end=1m delt_const=0.1m itmax_trns=0")}}.str());
    EXPECT_FALSE(run.stopped);
    EXPECT_EQ(run.text, size_line(3) + not_reached + completed);
    EXPECT_EQ(run.rows("out1.dat").size(), 1u);
}

// ---- gmin stepping takes over

TEST(trns_messages, gmin_stepping_takes_over_where_newton_fails_and_its_result_is_the_step) {
    const whole_run run(deck_text{charging,
                                  "va ic",
                                  {"solve_type trns\nmethod: back_euler=yes t_end=0.3m delt_const=0.1m gmin_step=yes "
                                   "gmin_init=no gmin_npoints=3 itmax_newton=1 chk_only_rhs2=yes norm_2=1e-13 "
                                   "time_epsilon=1e-16\n"}}
                            .str());
    std::string expected = size_line(3) + starts;
    for (int k = 1; k < 3; ++k)
        expected += "solve_trns: N-R iterations did not converge.\n  iter_trns_anlg=" + std::to_string(k) +
                    "\n  time (4)=0.000" + std::to_string(k + 1) + "\n  calling gmin_step_trns_1...\n";
    EXPECT_EQ(run.text, expected + "main: n_gmin_total=2\n" + completed);
    const table rows = run.rows("out1.dat");
    ASSERT_EQ(rows.size(), 4u);
    double v = 0;
    for (std::size_t k = 1; k < rows.size(); ++k) {
        const double i = (1 - v - v * 1e-3) / (1 + 0.1 + 0.1e-3) * 1e-3;  // c dv/dt of the backward step
        v += 0.1e-3 / 1e-6 * i;
        EXPECT_NEAR(rows[k][1], v, 1e-6);
        EXPECT_NEAR(rows[k][2], i, 1e-9);
    }
}

TEST(trns_messages, gmin_stepping_is_the_start_of_a_run_from_nothing_only) {
    const std::string settings = "method: back_euler=yes t_end=0.3m delt_const=0.1m gmin_step=yes gmin_npoints=3\n";
    const whole_run run(deck_text{
        charging, "va ic", {"solve_type trns\n" + settings, "solve_type trns\ninitial_sol previous\n" + settings}}
                            .str());
    EXPECT_EQ(run.text, size_line(3) + starts + "main: n_gmin_total=1\n" + size_line(3) + starts + completed);
}

// Three reductions are one too many: the stepping runs, its result is dropped, and the step is reduced all the same.
TEST(trns_messages, gmin_stepping_behind_too_many_reductions_is_dropped) {
    const whole_run run(deck_text{charging,
                                  "va ic",
                                  {"solve_type trns\nmethod: back_euler_auto=yes t_end=1m delt_const=0.1m "
                                   "delt_min=50u gmin_step=yes gmin_init=no gmin_npoints=2 itmax_newton=1 "
                                   "itmax_stepred=2 itmax_trns=2 chk_only_rhs2=yes norm_2=1e-13\n"}}
                            .str());
    EXPECT_EQ(run.text,
              size_line(3) + starts +
                  "solve_trns: iter_stepred has exceeded\n  itmax_stepred.\n  iter_stepred=3\n  itmax_stepred=2\n"
                  "  calling gmin_step_trns_1...\n"
                  "solve_trns: no convergence even with\n  the smallest time step.\niter_trns_1=1, time (3)=0.00015\n"
                  "  calling gmin_step_trns_1...\n" +
                  not_reached + "main: n_gmin_total=2\n" + completed);
    const table rows = run.rows("out1.dat");
    ASSERT_EQ(rows.size(), 3u);
    double v = 0, t = 0;
    for (const auto& [row, h] : {std::pair{1u, 0.1e-3}, std::pair{2u, 0.05e-3}}) {
        t += h;
        v = (v + h * 1e3) / (1 + h * (1e3 + 1));
        EXPECT_NEAR(rows[row][0], t, 1e-10);
        EXPECT_NEAR(rows[row][1], v, 1e-6);
    }
}

// ---- line search

// Newton with halving on (x - 3, y - x x), worked out beside the run; each trial is a line.
TEST(trns_messages, a_line_search_tells_every_trial) {
    const whole_run run(deck_text{
        square("3"), "va ic", {trns("back_euler=yes t_end=1m delt_const=1m nr_line_search=yes itmax_line_search=10")}}
                            .str());
    auto printed = [](double x) {
        char text[40];
        std::snprintf(text, sizeof text, "%.10g", x);
        return std::string(text);
    };
    auto norm = [](double x, double y) { return std::sqrt(((x - 3) * (x - 3) + (y - x * x) * (y - x * x)) / 2); };
    double x = 0, y = 0;
    std::string expected = size_line(2) + starts;
    for (int iteration = 0;; ++iteration) {
        ASSERT_LT(iteration, 20);
        const double reference = norm(x, y), dx = 3 - x, dy = x * x - y + 2 * x * dx;
        double alpha = 1;
        for (int i = 0;; ++i, alpha /= 2) {
            ASSERT_LT(i, 10);
            const double trial = norm(x + alpha * dx, y + alpha * dy);
            expected += "solve_newton_trns: line search: i=" + std::to_string(i) + " dmp_ls=" + printed(alpha) +
                        " norm_linsrh=" + printed(trial) + " norm_linsrh0=" + printed(reference) + "\n";
            if (trial <= reference) break;
        }
        expected += "solve_newton_trns: exiting line search loop.\nsolve_newton_trns: dmp_ls=" + printed(alpha) + "\n";
        x += alpha * dx;
        y += alpha * dy;
        // The test of convergence is made with the residual of the last trial.
        if (norm(x, y) <= 1e-10) break;
    }
    EXPECT_EQ(run.text, expected + completed);
    ASSERT_EQ(run.rows("out1.dat").size(), 2u);
    EXPECT_EQ(run.rows("out1.dat")[1][1], 9.0);
}

// ---- dumps

namespace {
std::vector<double> numbers_behind_title(const std::string& file, const std::string& title) {
    std::istringstream in(read_file(file));
    std::string first;
    std::getline(in, first);
    EXPECT_EQ(first, title);
    std::vector<double> values;
    for (double x; in >> x;) values.push_back(x);
    return values;
}
bool exist(std::initializer_list<const char*> files, bool wanted) {
    for (const char* f : files)
        if (std::filesystem::exists(f) != wanted) return false;
    return true;
}
constexpr auto newton_files = {"mat_trns_newt.dat", "rhs_trns_newt.dat", "svec_trns_newt.dat", "delx_trns_newt.dat"};
constexpr auto linear_files = {"mat_trns_lin.dat", "rhs_trns_lin.dat", "delx_trns_lin.dat"};
}  // namespace

// Backward Euler on 1 V, 1k, 1u: v1 = 1/11 behind the first step, the second adds (1 - v1)/11. The current of the
// source falls by the same over 1k.
TEST(trns_dumps, write_the_chosen_iteration_of_newton_and_stop) {
    const whole_run run(deck_text{charging,
                                  "va ic",
                                  {trns("back_euler=yes t_end=1m delt_const=0.1m wrt_debug_smat=yes iter_debug_trns=2 "
                                        "iter_debug_newton=1")}}
                            .str());
    EXPECT_TRUE(run.stopped);
    EXPECT_EQ(run.text, size_line(3) + starts + "stopped as wrt_debug_smat asks, behind writing delx_trns_newt.dat\n");
    EXPECT_TRUE(exist(newton_files, true));
    EXPECT_TRUE(exist(linear_files, false));
    const std::vector<double> step = numbers_behind_title("delx_trns_newt.dat", "solve_newton_trns: delsvec");
    const double k = 1 + 0.1 + 0.1e-3, v1 = 0.1 / k, dv = (0.1 + v1) / k - v1;  // with 1 M of the diode beside it
    ASSERT_EQ(step.size(), 3u);
    EXPECT_NEAR(step[0], 0, 1e-12);
    EXPECT_NEAR(step[1], dv, 1e-9);
    EXPECT_NEAR(step[2], dv * 1e-3, 1e-12);
    EXPECT_EQ(run.rows("out1.dat").size(), 2u);
}

TEST(trns_dumps, write_the_chosen_linear_step_and_stop) {
    const whole_run run(
        deck_text{without_diode(charging),
                  "va ic",
                  {trns("back_euler=yes t_end=1m delt_const=0.1m wrt_debug_smat=yes iter_debug_trns=2")}}
            .str());
    EXPECT_TRUE(run.stopped);
    EXPECT_EQ(run.text, size_line(3) + starts + "stopped as wrt_debug_smat asks, behind writing delx_trns_lin.dat\n");
    EXPECT_TRUE(exist(linear_files, true));
    EXPECT_TRUE(exist(newton_files, false));
    const std::vector<double> step = numbers_behind_title("delx_trns_lin.dat", "solve_linear_trns: delsvec");
    ASSERT_EQ(step.size(), 3u);
    EXPECT_NEAR(step[1], 1.0 / 11 * (1 - 1.0 / 11), 1e-9);
}

TEST(trns_dumps, of_a_step_or_an_iteration_that_does_not_come_stop_nothing) {
    for (const char* which : {"iter_debug_trns=11 iter_debug_newton=1", "iter_debug_trns=2 iter_debug_newton=3", ""}) {
        const whole_run run(deck_text{
            charging,
            "va ic",
            {trns(std::string("back_euler=yes t_end=1m delt_const=0.1m wrt_debug_smat=yes ") +
                  which)}}.str());
        EXPECT_EQ(run.text, size_line(3) + starts + completed) << which;
        EXPECT_TRUE(exist(newton_files, false));
    }
}

TEST(trns_dumps, are_of_newton_and_not_of_gmin_stepping) {
    const whole_run run(deck_text{charging,
                                  "va ic",
                                  {"solve_type trns\nmethod: gmin_step=yes back_euler=yes t_end=0.3m delt_const=0.1m "
                                   "wrt_debug_smat=yes iter_debug_trns=3 iter_debug_newton=1\n"}}
                            .str());
    EXPECT_TRUE(run.stopped);
    EXPECT_EQ(run.text, size_line(3) + starts + "stopped as wrt_debug_smat asks, behind writing delx_trns_newt.dat\n");
    EXPECT_TRUE(exist(newton_files, true));
    EXPECT_EQ(run.rows("out1.dat").size(), 3u);
}

// ---- data files

namespace {
std::string file_deck(const std::string& file) {
    return deck_text{"gelement name=F type=pwl_file y=y file=" + file + "\noutvar: va=var_of_y\n",
                     "va",
                     {"solve_type trns\nmethod: back_euler=yes t_end=3m delt_const=1m\n"}}
        .str();
}
}  // namespace

TEST(data_files_of_a_run, that_cannot_be_used_stop_it_before_any_solve) {
    const std::string who = "dp_class::gbe_pwl_file:\n", tail = "  Check file: w.dat\n  Halting...\n";
    const std::pair<std::string, std::string> cases[] = {
        {"", who + "  number of lines = 0 ?\n" + tail},
        {"\n\n# only a comment\n", who + "  number of lines = 0 ?\n" + tail},
        {"0 1\n", who + "  number of lines = 1 ?\n" + tail},
        {"0 1\n1m\n", who + "  number of words is 1\n" + tail},
        {"0 1\n1m 2 3\n", who + "  number of words is 3\n" + tail},
        {"0 1\n2m 1\n1m 0\n", who + "  time points not in ascending order?\n" + tail},
        {"0 1\n1m volt\n", "check double string: <volt>\n  (brackets are not part of the string)\n  Halting...\n"},
    };
    for (const auto& [text, told] : cases) {
        const temp_folder folder;
        write_file("w.dat", text);
        const console_run heard = run_here(file_deck("w.dat"));
        EXPECT_TRUE(heard.stopped) << text;
        EXPECT_EQ(heard.text, told) << text;
        EXPECT_FALSE(std::filesystem::exists("out1.dat"));
    }
}

TEST(data_files_of_a_run, that_are_missing_or_folders_do_not_exist) {
    for (const bool a_folder : {false, true}) {
        const temp_folder folder;
        if (a_folder) std::filesystem::create_directory("w.dat");
        const console_run heard = run_here(file_deck("w.dat"));
        EXPECT_TRUE(heard.stopped);
        EXPECT_EQ(heard.text, "dp_class::gbe_pwl_file:\n  file w.dat does not exist.\n  Halting...\n") << a_folder;
    }
}

TEST(data_files_of_a_run, of_any_bytes_stop_it) {
    std::string bytes;
    for (int i = 0; i < 4096; ++i) bytes += static_cast<char>((i * 167 + 13) % 256);
    const temp_folder folder;
    write_file("w.dat", bytes);
    const console_run heard = run_here(file_deck("w.dat"));
    EXPECT_TRUE(heard.stopped);
    EXPECT_NE(heard.text.find("alting"), std::string::npos) << heard.text;
}

TEST(data_files_of_a_run, that_are_sound_give_their_points) {
    const temp_folder folder;
    write_file("w.dat", "0 1\n1m 2\n1.5m 4\n3m 1\n");
    const console_run heard = run_here(file_deck("w.dat"));
    EXPECT_FALSE(heard.stopped) << heard.text;
    // The corner at 1.5 ms is a row of its own.
    EXPECT_EQ(read_file("out1.dat"),
              " 0.000000e+00  0.000000e+00 \n 1.000000e-03  2.000000e+00 \n 1.500000e-03  4.000000e+00 \n"
              " 2.500000e-03  2.000000e+00 \n 3.000000e-03  1.000000e+00 \n");
}
