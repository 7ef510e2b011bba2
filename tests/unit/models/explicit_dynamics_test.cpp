// Explicit blocks with a state or a past.
#include <gtest/gtest.h>

#include <cmath>

#include "explicit_unit.h"
#include "halt_throws.h"

namespace {

double slope(explicit_unit& u, std::size_t i = 0) {
    u.evaluate();
    return u.x.f[i];
}

TEST(explicit_integrators, have_their_gain_times_the_input_as_slope) {
    for (const char* name : {"intgrtr", "intgrtr2", "intgrtr_2", "intgrtr_reset_1", "intgrtr_reset_2"}) {
        explicit_unit u(name);
        u.r("k") = -3;
        u.prepare();
        u.vr("x") = 0.5;
        u.vr("y") = 77;
        EXPECT_EQ(slope(u), -1.5) << name;
    }
}

TEST(explicit_integrators, have_the_range_of_an_angle_as_their_first_parameters) {
    explicit_unit u("intgrtr_2");
    EXPECT_EQ(&u.r("lo"), &u.x.rparm[0]);
    EXPECT_EQ(&u.r("hi"), &u.x.rparm[1]);
    EXPECT_TRUE(u.is(u.lib.flag.limit_modulo));
    u.r("lo") = u.r("hi");
    EXPECT_HALT(u.prepare(), "intgrtr_2.xbe: check lo, hi. Halting...\n");
}

TEST(explicit_filters, have_the_slopes_of_their_transfer_functions) {
    explicit_unit lag("filter_z0_p1"), lead("filter_z1_p1");
    lag.r("a0") = 2;
    lag.r("b0") = 3;
    lag.r("b1") = 4;
    lag.prepare();
    lag.vr("x") = 5;
    lag.vr("y") = 7;
    EXPECT_DOUBLE_EQ(slope(lag), (2 * 5 - 3 * 7) / 4.0);
    // (a0 + a1 s)/(b0 + b1 s) = a1/b1 + (a0 - a1 b0/b1)/(b0 + b1 s)
    lead.r("a0") = 2;
    lead.r("a1") = 6;
    lead.r("b0") = 3;
    lead.r("b1") = 4;
    lead.prepare();
    lead.vr("x") = 5;
    lead.vr("z") = 7;
    EXPECT_DOUBLE_EQ(slope(lead), ((2 - 6 * 3 / 4.0) * 5 - 3 * 7) / 4.0);
}

TEST(explicit_filters, refuse_a_denominator_of_no_degree) {
    explicit_unit lag("filter_z0_p1"), lead("filter_z1_p1");
    lag.r("b1") = lead.r("b1") = 0;
    EXPECT_HALT(lag.prepare(), "filter_z0_p1.xbe: b1 = 0 ?!\n");
    EXPECT_HALT(lead.prepare(), "filter_z1_p1.xbe: b1 = 0 ?!\n");
}

// ---- reset ----

// The control by its values at accepted points; the value of y that a reset leaves, or the 5 that stood there.
double after(const std::string& name, bool rising, std::initializer_list<double> control) {
    explicit_unit u(name);
    u.i("active_pos_edge") = rising;
    u.i("active_neg_edge") = !rising;
    u.r("g_high") = 10;  // the level is 5
    u.ig("y0") = -2;
    u.prepare();
    u.guess();
    double t = 0;
    for (const double g : control) {
        u.vr("y") = 5;
        if (name == "intgrtr_reset_2") u.vr("y_new") = -2;
        u.vr("g") = g;
        u.reset(t);
        t += 0.1;
    }
    return u.vr("y");
}

TEST(explicit_integrators, are_reset_by_edges_of_their_control_from_one_accepted_point_to_the_next) {
    for (const char* name : {"intgrtr_reset_1", "intgrtr_reset_2"}) {
        EXPECT_EQ(after(name, true, {4.9, 5.1}), -2) << name;
        EXPECT_EQ(after(name, true, {5.1, 4.9}), 5) << name;
        EXPECT_EQ(after(name, false, {5.1, 4.9}), -2) << name;
        EXPECT_EQ(after(name, false, {4.9, 5.1}), 5) << name;
        EXPECT_EQ(after(name, true, {4.9, 4.8}), 5) << name;
        EXPECT_EQ(after(name, true, {9, 8}), 5) << name;
        EXPECT_EQ(after(name, true, {9}), 5) << "a control that is high from the start on is no edge";
        EXPECT_EQ(after(name, true, {0, 9, 9}), 5) << "an edge resets once";
        EXPECT_EQ(after(name, true, {9, 0, 9}), -2) << name;
    }
}

TEST(explicit_integrators, refuse_edges_that_are_not_just_one) {
    for (const std::string name : {"intgrtr_reset_1", "intgrtr_reset_2"}) {
        explicit_unit u(name);
        u.i("active_pos_edge") = 2;
        EXPECT_HALT(u.prepare(), name + ".xbe: check active_pos_edge. Halting...\n");
        u.i("active_pos_edge") = 0;
        u.i("active_neg_edge") = -1;
        EXPECT_HALT(u.prepare(), name + ".xbe: check active_neg_edge. Halting...\n");
        for (const int both : {0, 1}) {
            u.i("active_pos_edge") = u.i("active_neg_edge") = both;
            EXPECT_HALT(u.prepare(), name + ".xbe: check active_neg_edge/active_pos_edge. Halting...\n");
        }
    }
}

// ---- delay ----

TEST(explicit_delay, gives_a_ramp_a_time_td_later) {
    explicit_unit u("delay_2");
    u.r("td") = 0.25;
    u.prepare();
    u.flags.t_start = 1;
    u.guess();
    EXPECT_EQ(u.output(1, {9}), 0);
    for (int n = 0; n < 100; ++n) {
        const double t = 1 + 0.01 * n;
        u.vr("x") = 3 * t;
        u.accept(t);
        for (const double ahead : {0.0, 0.004, 0.01}) {
            const double then = t + ahead - 0.25;
            if (std::abs(then - 1) < 1e-12) continue;
            EXPECT_NEAR(u.output(t + ahead), then < 1 ? 0 : 3 * then, 1e-12);
        }
    }
}

// A ring that is too short would give a wrong value from somewhere else.
TEST(explicit_delay, stops_when_its_points_have_no_room) {
    explicit_unit u("delay_2");
    u.i("n_delay") = 5;
    u.prepare();
    u.guess();
    for (int n = 0; n < 5; ++n) u.accept(1e-4 * n);
    EXPECT_HALT(u.accept(5e-4),
                "delay_2.xbe: more points within td than n_delay.\n  n_delay is 5\n  td=0.001\n  Halting...\n");
    u.i("n_delay") = 1;
    EXPECT_HALT(u.prepare(), "delay_2.xbe: n_delay is too small.\n  n_delay is 1\n  Halting...\n");
    u.r("td") = 0;
    EXPECT_HALT(u.prepare(), "delay_2.xbe: check td. Halting...\n");
}

TEST(explicit_delay, of_each_unit_has_a_line_of_its_own) {
    explicit_unit u("delay_2");
    u.prepare();
    u.guess();
    u.dp.delay_2_x.prepare(3).resize(10);
    u.dp.delay_2_x[3].clear(0);
    EXPECT_TRUE(u.dp.delay_2_x[3].take(0, 44, 1));
    u.vr("x") = 11;
    u.accept(0);
    EXPECT_EQ(u.output(1e-3), 11);
}

TEST(explicit_delay, breaks_loops) {
    const explicit_unit u("delay_2");
    EXPECT_TRUE(u.is(u.lib.flag.delay));
    EXPECT_FALSE(u.is(u.lib.flag.evaluate));
}

// ---- discrete filters ----

struct filter_case {
    std::string name;
    double a0, a1, b0, b1, b2;
};

TEST(explicit_discrete_filters, follow_their_recursion_and_stand_between_samples) {
    for (const filter_case& c :
         {filter_case{"d_filter_z0_p1", 2, 0, 4, -3, 0}, filter_case{"d_filter_z0_p2", 2, 0, 4, -3, 0.5},
          filter_case{"d_filter_z1", 2, -0.5, 1, 0, 0}, filter_case{"d_filter_z1_p1", 2, -0.5, 4, -3, 0}}) {
        explicit_unit u(c.name);
        u.r("a0") = c.a0;
        if (c.a1 != 0) u.r("a1") = c.a1;
        if (c.name != "d_filter_z1") {
            u.r("b0") = c.b0;
            u.r("b1") = c.b1;
        }
        if (c.b2 != 0) u.r("b2") = c.b2;
        u.r("t_smp") = 0.1;
        u.r("t0") = 0.05;
        u.prepare();
        u.guess();
        double x1 = 0, y1 = 0, y2 = 0;  // of the last samples
        for (int n = 0; n < 12; ++n) {
            const double x = std::sin(1 + n), t = 0.05 + 0.1 * n;
            const double y = (c.a0 * x + c.a1 * x1 - c.b1 * y1 - c.b2 * y2) / c.b0;
            EXPECT_NEAR(u.output(t - 0.01, {88}), n == 0 ? c.a0 * 88 / c.b0 : y1, 1e-12) << c.name;
            if (n == 0) u.guess();
            EXPECT_NEAR(u.output(t, {x}), y, 1e-12) << c.name;
            u.accept(t);
            EXPECT_NEAR(u.output(t, {99}), y, 1e-12) << "a sample is taken once";
            u.accept(t + 0.03);  // a point that is no sample
            EXPECT_NEAR(u.output(t + 0.05, {99}), y, 1e-12) << c.name;
            x1 = x;
            y2 = y1;
            y1 = y;
        }
    }
}

TEST(explicit_discrete_filters, have_their_samples_as_breaks) {
    for (const char* name : {"d_filter_z0_p1", "d_filter_z0_p2", "d_filter_z1", "d_filter_z1_p1"}) {
        explicit_unit u(name);
        u.r("t_smp") = 0.1;
        u.r("t0") = 0.05;
        u.prepare();
        double t = 0;
        for (int n = 0; n < 1000; ++n) {
            t = u.next_break(t);
            EXPECT_NEAR(t, 0.05 + 0.1 * n, 1e-10);
        }
    }
}

TEST(explicit_discrete_filters, refuse_parameters_without_sense) {
    for (const std::string name : {"d_filter_z0_p1", "d_filter_z0_p2", "d_filter_z1_p1"}) {
        explicit_unit u(name);
        u.r("b0") = 0;
        EXPECT_HALT(u.prepare(), name + ".xbe: b0 = 0 ?!\n");
    }
    explicit_unit u("d_filter_z1");
    u.r("t_smp") = 0;
    EXPECT_HALT(u.prepare(), "d_filter_z1.xbe: check t_smp. Halting...\n");
}

// ---- sliding means ----

TEST(explicit_means, slide_over_the_last_samples) {
    explicit_unit avg("average_mv"), rms("rms_mv");
    for (explicit_unit* u : {&avg, &rms}) {
        u->i("n_smp") = 4;
        u->r("per") = 0.4;
        run_and_listen([&] { u->prepare(); });
        u->guess();
    }
    EXPECT_EQ(avg.output(0, {-3}), -3);  // before the first sample
    EXPECT_EQ(rms.output(0, {-3}), 3);
    const double x[] = {1, 3, -2, 6, 5, 0, -4};
    for (int n = 0; n < 7; ++n) {
        double sum = 0, squares = 0;
        const int first = std::max(0, n - 3);
        for (int k = first; k <= n; ++k) {
            sum += x[k];
            squares += x[k] * x[k];
        }
        const double mean = sum / (n - first + 1), root = std::sqrt(squares / (n - first + 1));
        for (explicit_unit* u : {&avg, &rms}) {
            u->vr("x") = x[n];
            u->accept(0.1 * n);
            u->vr("x") = 1000;
            u->accept(0.1 * n + 0.04);  // no sample
        }
        EXPECT_NEAR(avg.output(0.1 * n + 0.05), mean, 1e-12);
        EXPECT_NEAR(rms.output(0.1 * n + 0.05), root, 1e-12);
        EXPECT_NEAR(avg.next_break(0.1 * n + 0.02), 0.1 * (n + 1), 1e-12);
    }
}

TEST(explicit_means, have_as_many_slots_as_the_dimensions_allow_and_keep_theirs) {
    explicit_unit a("average_mv");
    a.dp.average_mv_x.limit = 2;
    const auto slot_of_next = [&] {
        a.i("slot") = -1;
        a.prepare();
        return a.i("slot");
    };
    EXPECT_EQ(run_and_listen([&] { EXPECT_EQ(slot_of_next(), 0); }).text,
              "average_mv.xbe: avg_mv_x is not allocated. Allocating now...\n");
    EXPECT_EQ(run_and_listen([&] { a.prepare(); }).text, "");  // again
    EXPECT_EQ(a.i("slot"), 0);
    EXPECT_EQ(run_and_listen([&] { EXPECT_EQ(slot_of_next(), 1); }).text, "");
    EXPECT_HALT(slot_of_next(), "average_mv.xbe: index1 > M_AVERAGE_MV_XBE.\n");

    explicit_unit r("rms_mv");
    r.dp.rms_mv_x.limit = 1;
    EXPECT_EQ(run_and_listen([&] { r.prepare(); }).text,
              "rms_mv.xbe:\n  rms_mv_x[index] is not allocated. Allocating now...\n");
    r.i("slot") = -1;
    EXPECT_HALT(r.prepare(), "rms_mv.xbe: index > M_RMS_MV_XBE.\n");
}

// A library of the user's own may give them any number to begin with.
TEST(explicit_means, take_a_slot_where_theirs_is_none_that_was_taken) {
    for (const std::string name : {"average_mv", "rms_mv"}) {
        explicit_unit u(name);
        u.i("slot") = 7;
        run_and_listen([&] { u.prepare(); });
        EXPECT_EQ(u.i("slot"), 0) << name;
        u.guess();
        u.vr("x") = 2;
        u.accept(0);
        EXPECT_EQ(u.output(0.5), 2) << name;
    }
}

TEST(explicit_means, refuse_windows_without_samples) {
    for (const std::string name : {"average_mv", "rms_mv"}) {
        explicit_unit u(name);
        u.i("n_smp") = 0;
        EXPECT_HALT(u.prepare(), name + ".xbe: check per, n_smp. Halting...\n");
        u.i("n_smp") = 10;
        u.r("per") = 0;
        EXPECT_HALT(u.prepare(), name + ".xbe: check per, n_smp. Halting...\n");
    }
}

}  // namespace
