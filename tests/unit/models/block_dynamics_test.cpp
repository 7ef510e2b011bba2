// General blocks with a past: discrete filters, means, peaks, delays, resets; by accepted points, and by points that
// are taken back.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "block_unit.h"
#include "halt_throws.h"

namespace {
using number = std::complex<double>;

// Within a transient from t_start on.
void begin(block_unit& u, double t_start = 0) {
    u.prepare();
    u.flags.t_start = u.flags.time_given = u.flags.time_present = t_start;
    u.guess();
    u.flags.iter_trns_1 = 0;
}
double output(block_unit& u, double t, double x) {
    u.vr("x") = x;
    return u.output(t);
}
// A converged point, and whether the block told an event.
bool converged(block_unit& u, double t, double x) {
    u.vr("x") = x;
    u.flags.forget_events();
    u.accept(t);
    return u.flags.event != 0;
}
void accepted(block_unit& u, double t, double x) {
    converged(u, t, x);
    u.flags.time_present = t;
}

// ---- discrete filters ----

struct filter_case {
    std::string name;
    std::vector<double> a, b;  // no b: 1
};
const std::vector<filter_case> discrete = {{"d_filter_z0_p1", {2}, {4, -3}},
                                           {"d_filter_z0_p2", {2}, {4, -3, 0.5}},
                                           {"d_filter_z1", {2, -0.5}, {}},
                                           {"d_filter_z1_p1", {2, -0.5}, {4, -3}},
                                           {"d_filter_z2_p2", {2, -0.5, 0.7}, {4, -3, 0.5}}};
void give(block_unit& u, const filter_case& c) {
    for (std::size_t k = 0; k < c.a.size(); ++k) u.r("a" + std::to_string(k)) = c.a[k];
    for (std::size_t k = 0; k < c.b.size(); ++k) u.r("b" + std::to_string(k)) = c.b[k];
}
// y of all samples by the difference equation.
std::vector<double> recursion(const filter_case& c, const std::vector<double>& x) {
    std::vector<double> y;
    for (std::size_t n = 0; n < x.size(); ++n) {
        double sum = 0;
        for (std::size_t k = 0; k < c.a.size() && k <= n; ++k) sum += c.a[k] * x[n - k];
        for (std::size_t k = 1; k < c.b.size() && k <= n; ++k) sum -= c.b[k] * y[n - k];
        y.push_back(c.b.empty() ? sum : sum / c.b[0]);
    }
    return y;
}
std::vector<double> random_samples(int n, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> any(-1, 1);
    std::vector<double> x;
    for (int i = 0; i < n; ++i) x.push_back(any(rng));
    return x;
}

TEST(block_discrete_filters, follow_their_recursion_whatever_the_steps_between_samples) {
    const std::vector<double> x = random_samples(40, 1);
    for (const filter_case& c : discrete) {
        SCOPED_TRACE(c.name);
        const std::vector<double> y = recursion(c, x);
        block_unit u(c.name);
        give(u, c);
        u.r("t_smp") = 0.1;
        begin(u);
        std::mt19937 rng(2);
        for (std::size_t n = 0; n < x.size(); ++n) {
            const double t = 0.1 * static_cast<double>(n);
            EXPECT_NEAR(output(u, t, x[n]), y[n], 1e-12);
            accepted(u, t, x[n]);
            EXPECT_NEAR(output(u, t, 77), y[n], 1e-12) << "a sample is taken once";
            for (double share = 0.9 * (rng() % 100) / 100; share < 0.98; share += 0.05 + 0.4 * (rng() % 100) / 100) {
                EXPECT_NEAR(output(u, t + 0.1 * share, 99), y[n], 1e-12);
                accepted(u, t + 0.1 * share, 99);
            }
        }
    }
}

TEST(block_discrete_filters, take_no_sample_before_the_first_that_lies_in_the_run) {
    for (const filter_case& c : discrete) {
        SCOPED_TRACE(c.name);
        block_unit u(c.name);
        give(u, c);
        u.r("t_smp") = 0.1;
        u.r("t0") = 0.05;
        begin(u, 1.0);
        EXPECT_EQ(output(u, 1.0, 5), 0);
        accepted(u, 1.0, 5);
        accepted(u, 1.02, 6);
        EXPECT_EQ(output(u, 1.04, 7), 0);
        EXPECT_DOUBLE_EQ(output(u, 1.05, 7), 7 * c.a[0] / (c.b.empty() ? 1 : c.b[0]));
    }
}

// A step longer than the way to the next sample: what passes over it takes the sample at its end.
TEST(block_discrete_filters, take_a_sample_at_the_first_point_that_is_not_before_it) {
    block_unit u("d_filter_z1");
    u.r("t_smp") = 0.1;
    begin(u);
    EXPECT_EQ(output(u, 0.03, 4), 4);  // the sample at 0, of a run that had no point there
    accepted(u, 0.03, 4);
    EXPECT_EQ(output(u, 0.0999, 5), 4);
    accepted(u, 0.0999, 5);
    EXPECT_EQ(output(u, 0.1001, 6), 6);
}

TEST(block_discrete_filters, forget_a_sample_that_a_rejected_step_has_taken) {
    const std::vector<double> x = random_samples(20, 3);
    for (const filter_case& c : discrete) {
        SCOPED_TRACE(c.name);
        const std::vector<double> y = recursion(c, x);
        block_unit u(c.name);
        give(u, c);
        u.r("t_smp") = 0.1;
        begin(u);
        for (std::size_t n = 0; n < x.size(); ++n) {
            const double t = 0.1 * static_cast<double>(n);
            if (n > 0) {
                converged(u, t - 0.02, 50);  // the stage of a step
                converged(u, t, -60);        // and its end, in vain
                EXPECT_NEAR(output(u, t - 0.03, 70), y[n - 1], 1e-12);
                converged(u, t - 0.03, 70);
                EXPECT_NEAR(output(u, t - 0.03, 70), y[n - 1], 1e-12);
            }
            EXPECT_NEAR(output(u, t, x[n]), y[n], 1e-12);
            accepted(u, t, x[n]);
        }
    }
}

TEST(block_discrete_filters, tell_of_a_jump_within_the_step_where_their_value_changes) {
    block_unit u("d_filter_z0_p1");
    u.r("t_smp") = 0.1;
    begin(u);
    EXPECT_FALSE(converged(u, 0, 0));
    EXPECT_FALSE(converged(u, 0.05, 3));
    EXPECT_TRUE(converged(u, 0.1, 3));
    EXPECT_EQ(u.flags.event_acts, 1);
    EXPECT_EQ(u.flags.event_share, 1);
    EXPECT_FALSE(converged(u, 0.2, 3)) << "the same value again";
}

TEST(block_discrete_filters, have_their_samples_as_breaks_without_drift) {
    for (const filter_case& c : discrete) {
        block_unit u(c.name);
        u.r("t_smp") = 1e-4;
        u.r("t0") = 0.3e-4;
        u.prepare();
        double t = 0, last = 0;
        for (int n = 0; n < 1000000; ++n) {
            last = t;
            t = u.next_break(t);
            ASSERT_GT(t, last);
            if (n % 100000 == 99999) {
                EXPECT_NEAR(t, 0.3e-4 + 1e-4 * n, 1e-12 * 1e-4 * n);
            }
        }
    }
}

// A constant x gives sum(a)/sum(b), and a transient goes on from there.
TEST(block_discrete_filters, are_at_rest_in_dc_and_begin_there) {
    for (const filter_case& c : discrete) {
        SCOPED_TRACE(c.name);
        double a = 0, b = c.b.empty() ? 1 : 0;
        for (const double k : c.a) a += k;
        for (const double k : c.b) b += k;
        block_unit u(c.name);
        give(u, c);
        u.r("t_smp") = 0.1;
        u.prepare();
        u.guess();
        u.vr("x") = 3;
        u.vr("y") = 3 * a / b;
        u.dc();
        EXPECT_NEAR(u.x.f[0], 0, 1e-12);
        EXPECT_EQ(u.jac.dfdvr[0][0], -a);
        EXPECT_EQ(u.jac.dfdvr[0][1], b);
        u.accept(0);
        u.flags.iter_trns_1 = 0;
        for (int n = 0; n < 5; ++n) {
            EXPECT_NEAR(output(u, 0.1 * n, 3), 3 * a / b, 1e-12);
            accepted(u, 0.1 * n, 3);
        }
    }
}

// A sine of samples in the long run.
TEST(block_discrete_filters, have_small_signals_of_what_they_do_to_sines) {
    for (const filter_case& c : discrete) {
        SCOPED_TRACE(c.name);
        ac_block form(c.name);
        const library_lists& l = form.lib.list;
        const auto set = [&](const std::string& word, double value) {
            form.rparm[static_cast<std::size_t>(l.rprm.find(form.e, word))] = value;
        };
        for (std::size_t k = 0; k < c.a.size(); ++k) set("a" + std::to_string(k), c.a[k]);
        for (std::size_t k = 0; k < c.b.size(); ++k) set("b" + std::to_string(k), c.b[k]);
        set("t_smp", 0.1);
        for (const double w : {0.3, 4.0, 20.0}) {
            std::vector<double> x, x_shifted;
            for (int n = 0; n < 400; ++n) {
                x.push_back(std::cos(w * 0.1 * n));
                x_shifted.push_back(std::sin(w * 0.1 * n));
            }
            const number last = {recursion(c, x).back(), recursion(c, x_shifted).back()};
            form.ac(w);
            const number found = -form.jac.dfdvr[0][0] / form.jac.dfdvr[0][1];
            EXPECT_LE(std::abs(found - last / std::polar(1.0, w * 0.1 * 399)), 1e-9) << w;
        }
    }
}

TEST(block_discrete_filters, refuse_parameters_without_sense) {
    for (const filter_case& c : discrete) {
        block_unit u(c.name);
        u.r("t_smp") = 0;
        EXPECT_HALT(u.prepare(), c.name + ".gbe: check t_smp. Halting...\n");
        if (c.b.empty()) continue;
        u.r("b0") = 0;
        EXPECT_HALT(u.prepare(), c.name + ".gbe: b0 = 0 ?!\n");
    }
    ac_block form("d_filter_z0_p2");
    EXPECT_HALT(form.ac(1), "d_filter_z0_p2.ssx: b2=0 ?!\n");
}

// ---- sliding means ----

TEST(block_sliding_means, are_those_of_the_last_samples) {
    const std::vector<double> x = random_samples(30, 5);
    block_unit avg("average_mv"), rms("rms_mv");
    for (block_unit* u : {&avg, &rms}) {
        u->i("n_smp") = 4;
        u->r("per") = 0.4;
        begin(*u);
    }
    EXPECT_EQ(output(avg, 0, -3), -3);  // before the first sample
    EXPECT_EQ(output(rms, 0, -3), 3);
    for (std::size_t n = 0; n < x.size(); ++n) {
        const double t = 0.1 * static_cast<double>(n);
        double sum = 0, squares = 0;
        const std::size_t first = n < 3 ? 0 : n - 3, taken = n - first + 1;
        for (std::size_t k = first; k <= n; ++k) {
            sum += x[k];
            squares += x[k] * x[k];
        }
        for (block_unit* u : {&avg, &rms}) {
            const double before = output(*u, t, 1000);
            converged(*u, t - 0.03, 600);
            converged(*u, t, 400);  // in vain
            if (n > 0) {
                EXPECT_EQ(output(*u, t - 0.05, 500), before);
            }
            converged(*u, t - 0.05, 500);
            accepted(*u, t, x[n]);
            accepted(*u, t + 0.04, 1000);  // no sample
        }
        EXPECT_NEAR(output(avg, t + 0.06, 9), sum / static_cast<double>(taken), 1e-12);
        EXPECT_NEAR(output(rms, t + 0.06, 9), std::sqrt(squares / static_cast<double>(taken)), 1e-12);
        EXPECT_NEAR(avg.next_break(t + 0.02), t + 0.1, 1e-12);
    }
    for (block_unit* u : {&avg, &rms}) u->vr("x") = -2;
    for (const auto mode : {&flags_class::dc, &flags_class::startup}) {
        avg.vr("y") = rms.vr("y") = 0;
        avg.call(mode, &flags_class::function);
        rms.call(mode, &flags_class::function);
        EXPECT_EQ(avg.x.f[0], 2);
        EXPECT_EQ(rms.x.f[0], -2);
    }
}

TEST(block_sliding_means, have_as_many_slots_as_the_dimensions_allow_and_keep_theirs) {
    const struct {
        const char* name;
        mean_slots dp_class::*slots;
        const char* text;
    } kinds[] = {{"average_mv", &dp_class::average_mv_g, "average_mv.gbe: index1 > M_AVERAGE_MV_GBE.\n"},
                 {"rms_mv", &dp_class::rms_mv_g, "rms_mv.gbe: index > M_RMS_MV_GBE.\n"}};
    for (const auto& k : kinds) {
        block_unit u(k.name);
        (u.dp.*k.slots).limit = 2;
        for (int slot = 0; slot < 2; ++slot) {
            u.r("slot") = -1;
            u.prepare();
            EXPECT_EQ(u.r("slot"), slot);
            u.prepare();
            EXPECT_EQ(u.r("slot"), slot) << "prepared again";
        }
        u.r("slot") = -1;
        EXPECT_HALT(u.prepare(), k.text);  // exactly as many are too many
        u.r("slot") = 1;
        u.i("n_smp") = 0;
        EXPECT_HALT(u.prepare(), std::string(k.name) + ".gbe: check per, n_smp. Halting...\n");
        u.i("n_smp") = 2;
        u.r("per") = 0;
        EXPECT_HALT(u.prepare(), std::string(k.name) + ".gbe: check per, n_smp. Halting...\n");
    }
}

TEST(block_sliding_means, of_units_are_apart) {
    block_unit u("average_mv");
    begin(u);
    accepted(u, 0, 7);
    u.r("slot") = -1;
    begin(u);
    accepted(u, 0, 11);
    EXPECT_EQ(output(u, 1e-6, 0), 11);
    u.r("slot") = 0;
    EXPECT_EQ(output(u, 1e-6, 0), 7);
}

// ---- running means and peaks ----

TEST(average_1, begins_anew_when_the_time_covered_reaches_its_input) {
    block_unit u("average_1");
    u.r("t_min") = 1e-9;
    begin(u);
    double expected = 0, covered = 0;
    const std::vector<double> x = random_samples(50, 7);
    for (int n = 1; n < 50; ++n) {
        const double per = n < 20 ? 0.004 : n < 40 ? 0.007 : 0;
        u.vr("t_per") = per;
        const double now = x[static_cast<std::size_t>(n)];
        // rectangles that end at each point
        EXPECT_NEAR(output(u, 1e-3 * n, now), (expected + now * 1e-3) / (covered + 1e-3), 1e-12) << n;
        accepted(u, 1e-3 * n, now);
        expected += now * 1e-3;
        covered += 1e-3;
        if (per > 0 && covered > per - 1e-6) expected = covered = 0;
    }
}

TEST(rms_3ph_1, is_that_of_each_phase_of_a_balanced_system_at_any_time) {
    block_unit u("rms_3ph_1");
    begin(u);
    const double third = 2 * std::acos(-1.0) / 3;
    for (int n = 1; n < 400; ++n) {
        const double th = 0.37 * n;
        u.vr("x1") = 5 * std::cos(th);
        u.vr("x2") = 5 * std::cos(th - third);
        u.vr("x3") = 5 * std::cos(th + third);
        if (n > 100) {
            EXPECT_NEAR(u.output(1e-5 * n), 5 / std::sqrt(2.0), 1e-12);
        }
        u.accept(1e-5 * n);
    }
    u.vr("x1") = 1;
    u.vr("x2") = 2;
    u.vr("x3") = 2;
    u.vr("y") = 0;
    u.dc();
    EXPECT_NEAR(u.x.f[0], -std::sqrt(3.0), 1e-15);
}

TEST(peak_detector, keeps_the_largest_value_of_the_period) {
    block_unit u("peak_detector");
    u.r("per") = 1;
    begin(u, 2);
    const struct {
        double t, x, y;
    } path[] = {{2, -3, -3}, {2.3, -1, -1}, {2.6, -2, -1}, {2.9, -2, -1}, {3, -5, -5}, {3.5, -4, -4}, {3.7, -6, -4}};
    for (const auto& p : path) {
        EXPECT_EQ(output(u, p.t, p.x), p.y) << p.t;
        accepted(u, p.t, p.x);
    }
    u.r("per") = 0;
    begin(u);
    for (int n = 0; n < 100; ++n) accepted(u, n, -std::abs(n - 50));
    EXPECT_EQ(output(u, 100, -9), 0);
    EXPECT_EQ(output(u, 100, 9), 9);
}

// ---- delays ----

TEST(block_delay, gives_a_ramp_a_time_td_later_whatever_the_step) {
    for (const double td : {0.25, 0.004}) {  // longer and shorter than the step
        block_unit u("delay_2");
        u.r("td") = td;
        begin(u, 1);
        accepted(u, 1, 3);
        std::mt19937 rng(1);
        for (double t = 1; t < 3;) {
            const double h = 0.005 + 0.01 * (rng() % 100) / 100, rejected = t + 2 * h;
            converged(u, rejected, 1e6);
            t += h;
            const double then = t - td;
            EXPECT_NEAR(output(u, t, 3 * t), then < 1 ? 0 : 3 * then, 1e-12) << t;
            accepted(u, t, 3 * t);
        }
    }
}

TEST(block_delay, follows_its_input_by_the_share_of_the_step_that_td_leaves) {
    block_unit u("delay_2");
    u.r("td") = 0.25;
    begin(u);
    accepted(u, 0, 4);
    u.flags.time_given = 1;
    u.trns();
    EXPECT_DOUBLE_EQ(u.jac.dfdvr[0][0], -0.75);
    u.flags.time_given = 0.2;
    u.trns();
    EXPECT_EQ(u.jac.dfdvr[0][0], 0);
}

TEST(block_delay, stops_when_its_points_have_no_room) {
    block_unit u("delay_2");
    u.i("n_delay") = 5;
    begin(u);
    for (int n = 0; n < 5; ++n) u.accept(1e-4 * n);
    EXPECT_HALT(u.accept(5e-4),
                "delay_2.gbe: more points within td than n_delay.\n  n_delay is 5\n  td=0.001\n  Halting...\n");
    u.i("n_delay") = 1;
    EXPECT_HALT(u.prepare(), "delay_2.gbe: n_delay is too small.\n  n_delay is 1\n  Halting...\n");
    u.r("td") = 0;
    EXPECT_HALT(u.prepare(), "delay_2.gbe: check td. Halting...\n");
    EXPECT_HALT(u.dc(), "delay_2: dc not implemented. Halting...\n");
}

TEST(block_delay, is_0_in_start_up_and_turns_small_signals_back) {
    block_unit u("delay_2");
    begin(u);
    u.vr("x") = 5;
    u.vr("y") = 2;
    u.startup();
    EXPECT_EQ(u.x.f[0], 2);
    ac_block form("delay_2");
    form.rparm[0] = 0.25;
    for (const double w : {0.1, 3.0, 40.0}) {
        form.ac(w);
        const number found = -form.jac.dfdvr[0][0] / form.jac.dfdvr[0][1];
        EXPECT_LE(std::abs(found - number(std::cos(0.25 * w), -std::sin(0.25 * w))), 1e-14);
    }
}

TEST(delay_onestep, gives_the_value_of_the_last_accepted_step) {
    block_unit u("delay_onestep");
    begin(u);
    EXPECT_EQ(output(u, 0.1, 5), 0);
    accepted(u, 0.1, 5);
    EXPECT_EQ(output(u, 0.2, 6), 5);
    converged(u, 0.15, 77);  // the stage of a step
    EXPECT_EQ(output(u, 0.2, 6), 5);
    converged(u, 0.2, 78);  // that is rejected
    EXPECT_EQ(output(u, 0.12, 6), 5);
    converged(u, 0.11, 79);
    EXPECT_EQ(output(u, 0.13, 6), 5);
    accepted(u, 0.13, 8);
    EXPECT_EQ(output(u, 0.2, 6), 8);
    u.vr("x") = 4;
    u.vr("y") = 0;
    u.dc();
    EXPECT_EQ(u.x.f[0], -4);
}

// ---- reset ----

// The control by its values at accepted points; the value of y that a reset leaves, or the 5 that stood there.
double after(bool rising, std::initializer_list<double> control) {
    block_unit u("intgrtr_reset_1");
    u.i("active_pos_edge") = rising;
    u.i("active_neg_edge") = !rising;
    u.r("g_high") = 10;  // the level is 5
    u.st("y0") = -2;
    begin(u);
    double t = 0;
    for (const double g : control) {
        u.vr("y") = 5;
        u.vr("g") = g;
        u.flags.time_given = t;
        u.call(&flags_class::reset);
        u.flags.time_present = t;
        t += 0.1;
    }
    return u.vr("y");
}

TEST(block_reset, comes_with_edges_of_the_control_from_one_accepted_point_to_the_next) {
    EXPECT_EQ(after(true, {4.9, 5.1}), -2);
    EXPECT_EQ(after(true, {5.1, 4.9}), 5);
    EXPECT_EQ(after(false, {5.1, 4.9}), -2);
    EXPECT_EQ(after(false, {4.9, 5.1}), 5);
    EXPECT_EQ(after(true, {4.9, 4.8}), 5);
    EXPECT_EQ(after(true, {9, 8}), 5);
    EXPECT_EQ(after(true, {9}), 5) << "a control that is high from the start on is no edge";
    EXPECT_EQ(after(true, {0, 9, 9}), 5) << "an edge resets once";
    EXPECT_EQ(after(true, {9, 0, 9}), -2);
}

TEST(block_reset, comes_again_when_the_step_that_had_the_edge_was_rejected) {
    block_unit u("intgrtr_reset_1");
    begin(u);
    const auto reset = [&](double t, double g) {
        u.vr("g") = g;
        u.vr("y") = 5;
        u.flags.time_given = t;
        u.call(&flags_class::reset);
        return u.vr("y") != 5;
    };
    EXPECT_FALSE(reset(0.1, 0));
    u.flags.time_present = 0.1;
    EXPECT_TRUE(reset(0.3, 1));
    EXPECT_FALSE(reset(0.15, 0));  // shorter
    u.flags.time_present = 0.15;
    EXPECT_TRUE(reset(0.25, 1));
    u.flags.time_present = 0.25;
    EXPECT_FALSE(reset(0.35, 1));
}

TEST(block_reset, integrates_and_refuses_what_it_cannot_do) {
    block_unit u("intgrtr_reset_1");
    u.r("k") = -3;
    begin(u);
    u.vr("x") = 0.5;
    u.vr("y") = 77;
    u.trns();
    EXPECT_EQ(u.x.f[0], -1.5);
    EXPECT_HALT(u.dc(), "intgrtr_reset: dc not implemented. Halting...\n");
    u.i("active_pos_edge") = 2;
    EXPECT_HALT(u.prepare(), "intgrtr_reset_1.gbe: check active_pos_edge. Halting...\n");
    u.i("active_pos_edge") = 0;
    u.i("active_neg_edge") = -1;
    EXPECT_HALT(u.prepare(), "intgrtr_reset_1.gbe: check active_neg_edge. Halting...\n");
    for (const int both : {0, 1}) {
        u.i("active_pos_edge") = u.i("active_neg_edge") = both;
        EXPECT_HALT(u.prepare(), "intgrtr_reset_1.gbe: check active_neg_edge/active_pos_edge. Halting...\n");
    }
}

}  // namespace
