// Machines as electrical elements: published operating points, the balance of energy at any point, texts.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>

#include "halt_throws.h"
#include "model_unit.h"

namespace {

constexpr double pi = std::numbers::pi, third = 2 * pi / 3;
using number = std::complex<double>;
using values = std::vector<double>;

// What the rows of an element with n_t terminals and n_s states say in a transient.
struct answer {
    values current, slope;
};
answer answer_of(model_unit& u, std::size_t n_t, std::size_t n_s) {
    u.call(&flags_class::trns, &flags_class::function);
    const auto f = u.x.f.begin();
    const auto t = static_cast<std::ptrdiff_t>(n_t), s = static_cast<std::ptrdiff_t>(n_s);
    return {{f, f + t}, {f + t, f + t + s}};
}
void set(values& to, const values& from) { std::copy(from.begin(), from.end(), to.begin()); }

values phases_of(number vector) {
    return {vector.real(), (vector * std::polar(1.0, -third)).real(), (vector * std::polar(1.0, third)).real()};
}
number vector_of(const values& x) {
    return 2.0 / 3 * (x[0] + x[1] * std::polar(1.0, third) + x[2] * std::polar(1.0, -third));
}

// ---- operating points ----

struct published {
    double slip, amplitude, degrees, torque;
};
// From the equivalent circuit: rs + j xls + j xm || (rr/s + j xlr), 220 V between lines.
constexpr published points[] = {{0.05, 12.50845184, -35.434014, 14.02650188}, {1, 92.96856809, NAN, 52.97042650}};

TEST(indmc, turns_its_fluxes_with_the_field_at_the_currents_and_torques_of_its_equivalent_circuit) {
    const double w = 377, xls = 0.754, xm = 26.13, rs = 0.435, rr = 0.816;
    for (const published& p : points) {
        model_unit u("indmc");
        u.r("lls") = u.r("llr") = xls / w;
        u.r("lm") = xm / w;
        u.prepare();
        const number v = 220 * std::sqrt(2.0 / 3.0), jxm(0, xm), rotor(rr / p.slip, xls),
                     i_s = v / (number(rs, xls) + jxm * rotor / (jxm + rotor)), i_r = -i_s * jxm / (jxm + rotor);
        EXPECT_NEAR(std::abs(i_s), p.amplitude, 1e-8);
        if (p.degrees == p.degrees) {
            EXPECT_NEAR(std::arg(i_s) * 180 / pi, p.degrees, 1e-6);
        }
        for (const double at : {0.0, 0.7, 2.5, 5.0}) {  // at any moment of the turn
            const number turn = std::polar(1.0, at), fs = turn * ((xls + xm) * i_s + xm * i_r) / w,
                         fr = turn * ((xls + xm) * i_r + xm * i_s) / w;
            set(u.x.v, phases_of(turn * v));
            u.x.aux = {fs.real(), fs.imag(), fr.real(), fr.imag(), (1 - p.slip) * w / 2, 0, 0};
            u.x.vr = {p.torque, 0, 0, 0};
            const answer a = answer_of(u, 3, 6);
            EXPECT_NEAR(std::abs(vector_of(a.current) - turn * i_s), 0, 1e-10 * p.amplitude);
            EXPECT_NEAR(std::abs(number(a.slope[0], a.slope[1]) - number(0, w) * fs), 0, 1e-9);
            EXPECT_NEAR(std::abs(number(a.slope[2], a.slope[3]) - number(0, w) * fr), 0, 1e-9);
            EXPECT_NEAR(a.slope[4], 0, 1e-6);
            EXPECT_EQ(a.slope[5], u.x.aux[4]);
            EXPECT_EQ(u.x.f[9], -u.x.aux[4]);
            EXPECT_NEAR(-u.x.f[10], p.torque, 1e-8);
        }
    }
}

TEST(pmsm, stands_at_its_published_voltages_and_torque_wherever_the_rotor_is) {
    for (const double th : {0.0, 0.3, -2.0, 7.0}) {
        model_unit u("pmsm");
        u.prepare();
        set(u.x.v, phases_of(number(-40.4, 75.2) * std::polar(1.0, 4 * th)));
        u.x.aux = {-2, 10, 100, th, 0};
        u.x.vr = {10.62, 100, 10.62, 0};
        const answer a = answer_of(u, 3, 4);
        EXPECT_NEAR(std::abs(vector_of(a.current) - number(-2, 10) * std::polar(1.0, 4 * th)), 0, 1e-12);
        for (int s = 0; s < 3; ++s) EXPECT_NEAR(a.slope[static_cast<std::size_t>(s)], 0, 1e-9) << s;
        EXPECT_EQ(u.x.f[7], 0);
        EXPECT_NEAR(u.x.f[8], 0, 1e-13);
    }
}

TEST(dcmc, stands_at_its_published_speed_and_current) {
    for (const char* name : {"dcmc", "dcmc_1"}) {
        model_unit u(name);
        u.r("b_f") = 0.01;
        u.prepare();
        u.x.v = {240, 0, 100, 0, 0};
        u.x.aux = {18.2698961938, 1, 192.3875432526, 0};
        u.x.vr = {20, 192.3875432526, 0};
        const answer a = answer_of(u, 4, 3);
        EXPECT_NEAR(a.slope[0], 0, 1e-6);  // the last digits given, over la
        EXPECT_EQ(a.slope[1], 0);
        EXPECT_NEAR(a.slope[2], 0, 1e-8);
        EXPECT_EQ(a.current, (values{18.2698961938, -18.2698961938, 1, -1}));
        EXPECT_EQ(u.x.f[7], 0);
    }
}

// At rest P = E V sin(d)/xd + V^2/2 (1/xq - 1/xd) sin(2 d) in per unit, E = we lmd ifd, no current in the dampers.
TEST(syncmc_1, has_the_power_of_its_load_angle) {
    const double w = 314, xd = 1.1, xq = 0.7, x_l = 0.15, d = 25 * pi / 180, e = 1.4, n_f = 0.2;
    model_unit u("syncmc_1");
    u.r("rs") = 0;
    u.r("lls") = x_l / w;
    u.r("lmd") = (xd - x_l) / w;
    u.r("lmq") = (xq - x_l) / w;
    u.r("n_f") = n_f;
    u.r("rfd") = 2e-3;
    u.prepare();
    // A motor: the voltage is ahead of q by d, the fluxes are a quarter turn behind it.
    const double vd = -std::sin(d), vq = std::cos(d), fd = vq / w, fq = -vd / w;
    const double ifd = e / (xd - x_l), id = (vq - e) / xd, iq = -vd / xq;
    const double md = (xd - x_l) / w * (id + ifd);
    EXPECT_NEAR(x_l / w * id + md, fd, 1e-15);
    const double power = 0.7368503703;  // of 3/2 V^2
    const double wm = w / 2, tl = 1.5 * power / wm;
    for (const double th : {0.0, 0.4, -3.0}) {
        set(u.x.v, phases_of(number(vd, vq) * std::polar(1.0, 2 * th)));
        u.x.v[3] = 2e-3 * ifd / n_f;
        u.x.aux = {fd, fq, md + u.r("llfd") * ifd, md, (xq - x_l) / w * iq, wm, th, 0};
        u.x.vr = {tl, wm, tl, 0};
        const answer a = answer_of(u, 5, 7);
        for (std::size_t s = 0; s < 5; ++s) EXPECT_NEAR(a.slope[s], 0, 1e-10) << s;
        EXPECT_NEAR(std::abs(vector_of(a.current) - number(id, iq) * std::polar(1.0, 2 * th)), 0, 1e-12);
        EXPECT_NEAR(a.current[3], 1.5 * n_f * ifd, 1e-12);
        EXPECT_NEAR(-u.x.f[13] + tl, tl, 1e-10 * tl);
    }
}

// ---- energy ----

// x of a x = b.
values solved(std::vector<values> a, values b) {
    for (std::size_t j = 0; j < b.size(); ++j)
        for (std::size_t i = 0; i < b.size(); ++i) {
            if (i == j) continue;
            const double by = a[i][j] / a[j][j];
            for (std::size_t k = 0; k < b.size(); ++k) a[i][k] -= by * a[j][k];
            b[i] -= by * b[j];
        }
    for (std::size_t j = 0; j < b.size(); ++j) b[j] /= a[j][j];
    return b;
}

struct powers {
    double taken = 0, lost = 0, stored = 0;
};
// Taken up = lost in copper + stored in fields + te wm, and j wm dwm/dt = (te - tl) wm - b_f wm^2; at random points.
template <class F>
void expect_balance(const char* name, std::size_t n_t, std::size_t n_s, std::size_t speed, F of_fields) {
    std::mt19937 rng(4);
    std::uniform_real_distribution<double> any(-1, 1);
    for (int trial = 0; trial < 100; ++trial) {
        model_unit u(name);
        u.r("b_f") = 0.3;
        u.prepare();
        for (double& x : u.x.v) x = 100 * any(rng);
        for (double& x : u.x.aux) x = 2 * any(rng);
        u.x.aux[speed] *= 50;
        u.x.vr = {10 * any(rng), 0, 0, 0};
        const answer a = answer_of(u, n_t, n_s);
        const double w = u.x.aux[speed], tl = u.x.vr[0];
        // The torque by the acceleration, as the DC machine gives it to no block.
        const double te = a.slope[speed] * u.r("j") + tl + 0.3 * w;
        powers p = of_fields(u, a);
        for (std::size_t t = 0; t < n_t; ++t) p.taken += u.x.v[t] * a.current[t];
        const double size = std::abs(p.taken) + std::abs(p.lost) + std::abs(p.stored) + std::abs(te * w);
        EXPECT_NEAR(p.taken, p.lost + p.stored + te * w, 1e-11 * size) << name;
        if (speed + 1 < n_s) {
            EXPECT_NEAR(-u.x.f[n_t + n_s + 1], te, 1e-10 * std::max(1.0, std::abs(te))) << name;
            EXPECT_EQ(a.slope[speed + 1], w);
        }
        EXPECT_EQ(u.x.f[n_t + n_s], -w);
    }
}

// Currents of the windings from their fluxes, by the matrix of inductances; loss and field of them.
powers of_windings(const std::vector<values>& l, const values& r, const values& flux, const answer& a, double k) {
    const values i = solved(l, flux);
    powers p;
    for (std::size_t n = 0; n < i.size(); ++n) {
        p.lost += k * r[n] * i[n] * i[n];
        p.stored += k * i[n] * a.slope[n];
    }
    return p;
}

TEST(electrical_machines, balance_their_energy_at_every_point) {
    const auto first = [](const model_unit& u, std::ptrdiff_t n) {
        return values(u.x.aux.begin(), u.x.aux.begin() + n);
    };
    expect_balance("indmc", 3, 6, 4, [&](model_unit& u, const answer& a) {
        const double ls = u.r("lls") + u.r("lm"), lr = u.r("llr") + u.r("lm"), m = u.r("lm"), rs = u.r("rs"),
                     rr = u.r("rr");
        return of_windings({{ls, 0, m, 0}, {0, ls, 0, m}, {m, 0, lr, 0}, {0, m, 0, lr}}, {rs, rs, rr, rr}, first(u, 4),
                           a, 1.5);
    });
    expect_balance("syncmc_1", 5, 7, 5, [&](model_unit& u, const answer& a) {
        const double l = u.r("lls"), d = u.r("lmd"), q = u.r("lmq");
        return of_windings({{l + d, 0, d, d, 0},
                            {0, l + q, 0, 0, q},
                            {d, 0, u.r("llfd") + d, d, 0},
                            {d, 0, d, u.r("llkd") + d, 0},
                            {0, q, 0, 0, u.r("llkq") + q}},
                           {u.r("rs"), u.r("rs"), u.r("rfd"), u.r("rkd"), u.r("rkq")}, first(u, 5), a, 1.5);
    });
    expect_balance("pmsm", 3, 4, 2, [](model_unit& u, const answer& a) {
        const double id = u.x.aux[0], iq = u.x.aux[1];
        return powers{0, 1.5 * u.r("rs") * (id * id + iq * iq),
                      1.5 * (u.r("ld") * id * a.slope[0] + u.r("lq") * iq * a.slope[1])};
    });
    expect_balance("bldc1", 3, 4, 2, [](model_unit& u, const answer& a) {
        const double ia = u.x.aux[0], ib = u.x.aux[1], ic = -ia - ib, da = a.slope[0], db = a.slope[1];
        return powers{0, u.r("rs") * (ia * ia + ib * ib + ic * ic), u.r("ls") * (ia * da + ib * db - ic * (da + db))};
    });
    expect_balance("dcmc", 4, 3, 2, [](model_unit& u, const answer& a) {
        const double ia = u.x.aux[0], i_f = u.x.aux[1];
        return powers{0, u.r("ra") * ia * ia + u.r("rf") * i_f * i_f,
                      u.r("la") * ia * a.slope[0] + u.r("lf") * i_f * a.slope[1]};
    });
}

// Line voltages do not know the neutral: v_ab = rs (ia - ib) + ls d(ia - ib)/dt + ea - eb, and so for b and c.
TEST(bldc1, has_the_line_voltages_of_its_windings) {
    const auto shape = [](double th) {  // by the points of the trapezoid
        double x = std::fmod(th * 180 / pi, 360.0);
        if (x < 0) x += 360;
        return x < 30 ? x / 30 : x < 150 ? 1 : x < 210 ? (180 - x) / 30 : x < 330 ? -1 : (x - 360) / 30;
    };
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> any(-1, 1);
    for (int trial = 0; trial < 200; ++trial) {
        model_unit u("bldc1");
        u.prepare();
        for (double& x : u.x.v) x = 30 * any(rng);
        u.x.aux = {10 * any(rng), 10 * any(rng), 100 * any(rng), 5 * any(rng), 0};
        const answer a = answer_of(u, 3, 4);
        const double i[] = {u.x.aux[0], u.x.aux[1], -u.x.aux[0] - u.x.aux[1]},
                     di[] = {a.slope[0], a.slope[1], -a.slope[0] - a.slope[1]}, we = 4 * u.x.aux[2],
                     th = 4 * u.x.aux[3];
        double u_k[3], te = 0;
        for (int k = 0; k < 3; ++k) {
            const double e = 0.05 * we * shape(th - k * third);
            u_k[k] = 0.5 * i[k] + 1e-3 * di[k] + e;
            te += 4 * 0.05 * shape(th - k * third) * i[k];
        }
        EXPECT_NEAR(u_k[0] - u_k[1], u.x.v[0] - u.x.v[1], 1e-9);
        EXPECT_NEAR(u_k[1] - u_k[2], u.x.v[1] - u.x.v[2], 1e-9);
        EXPECT_NEAR(-u.x.f[8], te, 1e-10);
    }
}

// ---- start-up and texts ----

TEST(electrical_machines, hold_their_states_in_start_up_and_hand_them_over) {
    model_unit u("pmsm");
    u.prepare();
    u.x.stparm = {-2, 10, 100, 0.3};
    u.x.auxs = {-2, 10, 100, 0.3, 0};
    u.x.vr = {0, 100, 10.62, 0};
    u.startup();
    const values now(u.x.f.begin() + 9, u.x.f.begin() + 12);
    EXPECT_NEAR(std::abs(vector_of(now) - number(-2, 10) * std::polar(1.0, 1.2)), 0, 1e-13);
    for (std::size_t k = 12; k < 18; ++k) EXPECT_NEAR(u.x.f[k], 0, 1e-13);
    EXPECT_EQ(values(u.x.aux.begin(), u.x.aux.begin() + 4), u.x.stparm);
    u.x.auxs[2] = 90;
    u.startup();
    EXPECT_EQ(u.x.f[14], -10);
    EXPECT_EQ(u.x.f[16], 10);
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.x.aux[2], 0);
}

TEST(electrical_machines, refuse_dc) {
    const std::pair<const char*, const char*> texts[] = {
        {"indmc", "indmc: dc not implemented\n"},           {"syncmc_1", "syncmc_1: dc not implemented\n"},
        {"pmsm", "pmsm: dc not implemented. Halting...\n"}, {"bldc1", "bldc1: dc not implemented\n"},
        {"dcmc", "dcmc: dc not implemented. Halting...\n"}, {"dcmc_1", "dcmc_1: dc not implemented. Halting...\n"}};
    for (const auto& [name, text] : texts) {
        model_unit u(name);
        u.prepare();
        EXPECT_HALT(u.dc(), text);
    }
}

TEST(electrical_machines, refuse_parameters_without_sense) {
    const auto expect = [](const char* name, const char* word, double value, const std::string& text) {
        model_unit u(name);
        u.r(word) = value;
        EXPECT_HALT(u.prepare(), name + text);
    };
    expect("indmc", "j", 0, ".ebe: check lls, lm, llr, j, poles. Halting...\n");
    expect("indmc", "poles", -2, ".ebe: check lls, lm, llr, j, poles. Halting...\n");
    expect("indmc", "j", std::nan(""), ".ebe: check lls, lm, llr, j, poles. Halting...\n");
    model_unit tight("indmc");
    tight.r("lls") = tight.r("llr") = 0;
    EXPECT_HALT(tight.prepare(), "indmc.ebe: check lls, lm, llr, j, poles. Halting...\n");
    expect("pmsm", "lq", 0, ".ebe: check ld, lq, j, poles. Halting...\n");
    expect("pmsm", "ld", std::nan(""), ".ebe: check ld, lq, j, poles. Halting...\n");
    expect("bldc1", "ls", 0, ".ebe: check ls, j, poles. Halting...\n");
    for (const char* word : {"lls", "lmd", "lmq", "llfd", "llkd", "llkq", "n_f", "j", "poles"})
        expect("syncmc_1", word, 0, ".ebe: check lls, lmd, lmq, llfd, llkd, llkq, n_f, j, poles. Halting...\n");
    expect("dcmc", "lf", 0, ".ebe: check la, lf, j. Halting...\n");
    expect("dcmc_1", "la", 0, ".ebe: check la, lf, j. Halting...\n");
    expect("dcmc_1", "w_oc", 0, ".ebe: check i_oc, w_oc. Halting...\n");
}

TEST(dcmc_1, takes_its_emf_from_a_test_without_load_and_shows_it_when_asked) {
    model_unit u("dcmc_1");
    u.r("v_oc") = 210;
    u.r("i_oc") = 0.7;
    u.r("w_oc") = 150;
    u.flags.flag_debug_int = 1;
    u.flags.one_time_parms = 1;
    testing::internal::CaptureStdout();
    u.call();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "dcmc_1: laf=2\n");
    u.flags.flag_debug_int = 0;
    u.r("laf") = 0.9;  // given: it counts
    testing::internal::CaptureStdout();
    u.call();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(u.r("laf_d"), 0.9);
}

}  // namespace
