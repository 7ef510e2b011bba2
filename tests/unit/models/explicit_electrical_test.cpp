// Branches of networks that explicit blocks solve.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "explicit_unit.h"
#include "halt_throws.h"

namespace {

constexpr double pi = std::numbers::pi;

// Rows at a voltage and a current of the branch.
std::vector<double> rows(explicit_unit& u, double v, double i) {
    u.x.bev[0] = v;
    u.x.cur[0] = i;
    u.algebra();
    return {u.x.fh.begin(), u.x.fh.end() - 1};
}

TEST(explicit_networks, have_branches_with_their_nodes_as_first_inputs) {
    for (const char* name :
         {"e_c", "e_l", "e_r", "e_diode_r", "e_thyristor", "e_voltmeter_fb", "e_vpulse", "e_vsrcac", "e_vsrcdc"}) {
        explicit_unit u(name);
        EXPECT_EQ(u.lib.list.cct.count(u.e), 2) << name;
        EXPECT_EQ(u.lib.list.bev.count(u.e), 1) << name;
        EXPECT_EQ(u.lib.list.cur.count(u.e), 1) << name;
        EXPECT_EQ(u.vr("p"), u.x.vr[0]);
    }
}

TEST(explicit_networks, hold_resistors_and_meters) {
    explicit_unit r("e_r"), m("e_voltmeter_fb");
    r.r("r") = 3;
    r.vr("i") = 2.5;
    EXPECT_EQ(rows(r, 5, 2), (std::vector<double>{5 - 6, 2.5 - 2}));
    m.r("k") = 10;
    m.vr("y") = 1;
    EXPECT_EQ(rows(m, 5, 2), (std::vector<double>{2, 1 - 50}));
}

TEST(explicit_networks, have_states_of_capacitors_and_inductors) {
    explicit_unit c("e_c"), l("e_l");
    c.r("c") = 1e-3;
    c.ig("vc0") = 7;
    c.prepare();
    c.guess();
    EXPECT_EQ(c.vr("vc"), 7);
    c.vr("i") = 0.5;
    EXPECT_EQ(rows(c, 4, 0.25), (std::vector<double>{4 - 7, 0.25}));
    c.slopes();
    EXPECT_DOUBLE_EQ(c.x.fg[0], 250);
    l.r("l") = 1e-3;
    l.ig("i0") = 3;
    l.prepare();
    l.guess();
    EXPECT_EQ(l.vr("i"), 3);
    EXPECT_EQ(rows(l, 4, 0.5), (std::vector<double>{0.5 - 3}));
    l.slopes();
    EXPECT_DOUBLE_EQ(l.x.fg[0], 4000);
}

// 1 V behind 1 kilohm charges 1 uF: at each voltage the current by hand solves all rows, and the slopes it gives lead
// to 1 - 1/e after one time constant.
TEST(explicit_networks, charge_a_capacitor_through_a_resistor) {
    explicit_unit r("e_r"), c("e_c"), source("e_vsrcdc");
    r.r("r") = 1e3;
    source.r("vdc") = 1;
    for (explicit_unit* u : {&r, &c, &source}) u->prepare();
    const auto slope = [&](double vc) {
        const double i = (1 - vc) / 1e3;
        c.vr("vc") = vc;
        r.vr("i") = c.vr("i") = i;
        source.vr("i") = -i;
        for (const double f : rows(r, 1 - vc, i)) EXPECT_NEAR(f, 0, 1e-15);
        for (const double f : rows(c, vc, i)) EXPECT_NEAR(f, 0, 1e-15);
        for (const double f : rows(source, 1, -i)) EXPECT_NEAR(f, 0, 1e-15);
        c.slopes();
        return c.x.fg[0];
    };
    double v = 0;
    const double h = 1e-5;
    for (int n = 0; n < 100; ++n) {
        const double k1 = slope(v), k2 = slope(v + h / 2 * k1), k3 = slope(v + h / 2 * k2), k4 = slope(v + h * k3);
        v += h / 6 * (k1 + 2 * k2 + 2 * k3 + k4);
    }
    EXPECT_NEAR(v, 1 - std::exp(-1.0), 1e-9);
}

// 10 V behind 1 ohm: i = (10 - 0.7)/1.01.
TEST(explicit_networks, have_diodes_of_two_lines) {
    explicit_unit d("e_diode_r");
    d.prepare();
    EXPECT_NEAR(d.r("v_knee"), 0.700000007, 1e-12);
    EXPECT_NEAR(rows(d, 0.7920792079, 9.2079207921)[0], 0, 2e-8);
    EXPECT_DOUBLE_EQ(rows(d, -5, 0)[0], 5e-6);
    EXPECT_DOUBLE_EQ(d.jac.dhdbev[0][0], -1e-6);
    d.r("r_on") = d.r("r_off");
    EXPECT_HALT(d.prepare(), "e_diode_r: r too small!\n");
}

TEST(explicit_networks, have_thyristors_that_change_at_accepted_points_only) {
    explicit_unit u("e_thyristor");
    u.r("g_high") = 10;
    u.prepare();
    u.guess();
    const auto resistance = [&] {
        rows(u, 0, 0);
        return -u.jac.dhdcur[0][0];
    };
    const auto accept = [&](double v, double g) {
        u.x.bev[0] = v;
        u.vr("g") = g;
        u.algebra();
        const double before = -u.jac.dhdcur[0][0];
        EXPECT_EQ(before, u.i("on") ? 0.01 : 1e6) << "moved by a solve";
        u.accept(0);
        return resistance();
    };
    EXPECT_EQ(resistance(), 1e6);
    EXPECT_EQ(accept(5, 4.9), 1e6);   // not fired
    EXPECT_EQ(accept(-5, 5.1), 1e6);  // reverse
    EXPECT_EQ(accept(5, 5.1), 0.01);
    EXPECT_EQ(accept(0.1, 0), 0.01);  // latched
    EXPECT_EQ(u.r("on_o"), 1);
    EXPECT_EQ(accept(0, 9), 1e6);
    EXPECT_EQ(u.r("on_o"), 0);
    u.r("r_on") = 1e-10;
    EXPECT_HALT(u.prepare(), "e_thyristor: r too small!\n");
}

TEST(explicit_networks, have_sources_over_the_explicit_time) {
    explicit_unit ac("e_vsrcac"), dc("e_vsrcdc"), pulse("e_vpulse");
    const auto voltage = [](explicit_unit& u, double t) {
        u.flags.time_given_x = t;
        return -rows(u, 0, 3)[0];
    };
    ac.r("a") = 2;
    ac.r("k_scale") = 5;
    ac.r("phi") = 90;
    ac.r("vdc") = 1;
    ac.r("t0") = 1e-3;
    ac.prepare();
    for (const double t : {0.0, 1e-3, 7e-3})
        EXPECT_NEAR(voltage(ac, t), 1 + 10 * std::cos(100 * pi * (t - 1e-3)), 1e-12);
    dc.r("vdc") = 6;
    dc.r("k_scale") = 2;
    dc.prepare();
    EXPECT_EQ(voltage(dc, -1), 12);
    dc.r("t_ramp_1") = 1;
    dc.r("t_ramp_2") = 3;
    dc.prepare();
    EXPECT_EQ(voltage(dc, 1), 0);
    EXPECT_EQ(voltage(dc, 1.5), 3);
    EXPECT_EQ(voltage(dc, 3), 12);
    for (const auto& [word, value] :
         {std::pair{"v1", -1.0}, {"v2", 3.0}, {"td", 1.0}, {"tr", 0.1}, {"tf", 0.2}, {"pw", 0.5}, {"per", 2.0}})
        pulse.r(word) = value;
    pulse.prepare();
    const double points[][2] = {{0.5, -1}, {1, -1},   {1.05, 1}, {1.1, 3}, {1.6, 3},
                                {1.7, 1},  {1.8, -1}, {2.9, -1}, {3.05, 1}};
    for (const auto& p : points) EXPECT_NEAR(voltage(pulse, p[0]), p[1], 1e-12) << p[0];
}

TEST(explicit_networks, have_pulses_with_their_corners_as_breaks_over_many_periods) {
    explicit_unit u("e_vpulse");  // corners at 0, 1u, 501u, 502u of 1 ms
    u.prepare();
    double t = 0;
    for (int n = 0; n < 2000; ++n)
        for (const double corner : {1e-6, 501e-6, 502e-6, 1e-3}) {
            t = u.next_break(t);
            EXPECT_NEAR(t, 1e-3 * n + corner, 1e-11);
        }
}

TEST(explicit_networks, refuse_parameters_without_sense) {
    explicit_unit c("e_c"), l("e_l"), dc("e_vsrcdc"), pulse("e_vpulse");
    c.r("c") = l.r("l") = 0;
    EXPECT_HALT(c.prepare(), "e_c.xbe: c too small!\n");
    EXPECT_HALT(l.prepare(), "e_l.xbe: l too small!\n");
    dc.r("t_ramp_1") = 1;
    EXPECT_HALT(dc.prepare(), "e_vsrcdc: t_ramp_1 > t_ramp_2? Halting...\n");
    pulse.r("pw") = 2e-3;
    EXPECT_HALT(pulse.prepare(), "e_vpulse.xbe: check tr, tf, pw, per. Halting...\n");
}

}  // namespace
