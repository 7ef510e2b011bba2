// Machines of explicit diagrams against other forms of their equations, published numbers, and the balance of energy.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <numbers>
#include <random>

#include "explicit_unit.h"
#include "halt_throws.h"
#include "models/machines.h"

namespace {

constexpr double pi = std::numbers::pi, third = 2 * pi / 3;
using number = std::complex<double>;
using values = std::vector<double>;

values slopes_at(explicit_unit& u, const values& inputs, const values& state) {
    std::copy(inputs.begin(), inputs.end(), u.x.vr.begin());
    std::copy(state.begin(), state.end(), u.x.vr.begin() + u.n_inputs());
    u.evaluate();
    return {u.x.f.begin(), u.x.f.begin() + static_cast<std::ptrdiff_t>(state.size())};
}

values outputs_at(explicit_unit& u, const values& inputs) {
    std::copy(inputs.begin(), inputs.end(), u.x.vr.begin());
    u.evaluate();
    return {u.x.vr.begin() + u.n_inputs(), u.x.vr.begin() + u.n_inputs() + u.n_outputs()};
}

template <class T>
using system_of = std::function<std::vector<T>(double t, const std::vector<T>& x)>;

template <class T>
std::vector<T> moved(const std::vector<T>& x, double h, const std::vector<T>& k) {
    std::vector<T> y = x;
    for (std::size_t i = 0; i < y.size(); ++i) y[i] += h * k[i];
    return y;
}
// Classic Runge-Kutta of fourth order from 0 on.
template <class T>
std::vector<T> integrated(const system_of<T>& f, std::vector<T> x, double h, int n) {
    for (int step = 0; step < n; ++step) {
        const double t = step * h;
        const std::vector<T> k1 = f(t, x), k2 = f(t + h / 2, moved(x, h / 2, k1)),
                             k3 = f(t + h / 2, moved(x, h / 2, k2)), k4 = f(t + h, moved(x, h, k3));
        for (std::size_t i = 0; i < x.size(); ++i) x[i] += h / 6 * (k1[i] + 2.0 * k2[i] + 2.0 * k3[i] + k4[i]);
    }
    return x;
}
// The midpoint rule, second order.
template <class T>
std::vector<T> by_midpoint(const system_of<T>& f, std::vector<T> x, double h, int n) {
    for (int step = 0; step < n; ++step) {
        const double t = step * h;
        x = moved(x, h, f(t + h / 2, moved(x, h / 2, f(t, x))));
    }
    return x;
}

// ---- brushless DC machine ----

TEST(trapezoid, has_flat_tops_of_120_degrees_and_ramps_of_60_between) {
    const double points[][2] = {{0, 0},      {15, 0.5}, {30, 1},   {90, 1},   {150, 1},    {165, 0.5}, {180, 0},
                                {195, -0.5}, {210, -1}, {270, -1}, {330, -1}, {345, -0.5}, {360, 0},   {375, 0.5}};
    for (const auto& p : points) {
        EXPECT_NEAR(trapezoid(p[0] * pi / 180).f, p[1], 1e-12) << p[0];
        EXPECT_NEAR(trapezoid((p[0] - 720) * pi / 180).f, p[1], 1e-12) << p[0];
    }
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> angle(-20, 20);
    for (int trial = 0; trial < 1000; ++trial) {
        const double th = angle(rng);
        EXPECT_NEAR(trapezoid(th + pi).f, -trapezoid(th).f, 1e-12);
        const double slope = (trapezoid(th + 1e-7).f - trapezoid(th - 1e-7).f) / 2e-7;
        EXPECT_NEAR(trapezoid(th).df, slope, 1e-6);
    }
}

struct brushless {
    explicit_unit states{"bldc1a"}, out{"bldc1_out"};
    brushless() {
        for (explicit_unit* u : {&states, &out}) {
            for (const auto& [word, value] :
                 {std::pair{"rs", 0.6}, {"ls", 2e-3}, {"lam", 0.08}, {"poles", 6.0}, {"j", 2e-3}, {"b_f", 1e-3}})
                u->r(word) = value;
            u->prepare();
        }
    }
};

// Line voltages do not know the neutral: v_ab = rs (ia - ib) + ls d(ia - ib)/dt + e_a - e_b, and so for b and c.
values from_line_voltages(const values& v, double tl, const values& x) {
    const double ia = x[0], ib = x[1], ic = -ia - ib, w = x[2], e = 3 * x[3];
    const double f[] = {trapezoid(e).f, trapezoid(e - third).f, trapezoid(e + third).f}, k = 0.08 * 3 * w;
    const double d_ab = (v[0] - v[1] - 0.6 * (ia - ib) - k * (f[0] - f[1])) / 2e-3;
    const double d_bc = (v[1] - v[2] - 0.6 * (ib - ic) - k * (f[1] - f[2])) / 2e-3;
    const double te = 3 * 0.08 * (f[0] * ia + f[1] * ib + f[2] * ic);
    return {(2 * d_ab + d_bc) / 3, (d_bc - d_ab) / 3, (te - tl - 1e-3 * w) / 2e-3, w};
}

TEST(brushless_machine, runs_up_as_its_line_voltages_say) {
    brushless m;
    const double tl = 0.4;
    const auto voltages = [](double t) {
        values v;
        for (const double behind : {0.0, third, -third}) v.push_back(20 * std::sin(40 * t * (1 + 10 * t) - behind) + 5);
        return v;
    };
    const auto model = [&](double t, const values& x) {
        values in = voltages(t);
        in.push_back(tl);
        return slopes_at(m.states, in, x);
    };
    const auto other = [&](double t, const values& x) { return from_line_voltages(voltages(t), tl, x); };
    const values start = {0, 0, 5, 0.2};
    const values a = integrated<double>(model, start, 1e-5, 20000), b = by_midpoint<double>(other, start, 2e-6, 100000);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(a[i], b[i], 2e-5 * std::max(1.0, std::abs(b[i]))) << i;
    EXPECT_GT(std::abs(b[2] - 5), 1);  // it did something
}

TEST(brushless_machine, balances_its_energy_at_every_point) {
    brushless m;
    std::mt19937 rng(2);
    std::uniform_real_distribution<double> any(-30, 30);
    for (int trial = 0; trial < 200; ++trial) {
        const values v = {any(rng), any(rng), any(rng)}, x = {any(rng), any(rng), any(rng), any(rng)};
        const double tl = any(rng);
        const values dx = slopes_at(m.states, {v[0], v[1], v[2], tl}, x);
        const values out = outputs_at(m.out, x);  // ic te ea eb ec
        const double i[] = {x[0], x[1], out[0]}, di[] = {dx[0], dx[1], -dx[0] - dx[1]}, w = x[2], te = out[1];
        EXPECT_NEAR(i[0] + i[1] + i[2], 0, 1e-12);
        double taken = 0, lost = 0, stored = 0, converted = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            taken += v[k] * i[k];
            lost += 0.6 * i[k] * i[k];
            stored += 2e-3 * i[k] * di[k];
            converted += out[2 + k] * i[k];
        }
        EXPECT_NEAR(converted, te * w, 1e-9);
        EXPECT_NEAR(taken, lost + stored + converted, 1e-9);
        EXPECT_NEAR(te * w, tl * w + 1e-3 * w * w + 2e-3 * w * dx[2], 1e-9);
        EXPECT_EQ(dx[3], w);
    }
}

// Two phases in series on the flat tops: v = 2 (rs i + lam we), te = 2 (poles/2) lam i.
TEST(brushless_machine, is_a_dc_machine_while_two_phases_conduct_on_their_flat_tops) {
    brushless m;
    const double i = 7, w = 50, th = 60 * pi / 180 / 3, v = 2 * (0.6 * i + 0.08 * 3 * w);  // a at 60, b at -60 degrees
    const values x = {i, -i, w, th}, out = outputs_at(m.out, x);
    EXPECT_NEAR(out[0], 0, 1e-12);
    EXPECT_NEAR(out[1], 2 * 3 * 0.08 * i, 1e-12);
    EXPECT_NEAR(out[2], 0.08 * 3 * w, 1e-12);
    EXPECT_NEAR(out[3], -0.08 * 3 * w, 1e-12);
    EXPECT_NEAR(out[4], 0, 1e-9);  // c on its ramp, at 180 degrees
    const values dx = slopes_at(m.states, {v, 0, v / 2, out[1] - 1e-3 * w}, x);
    EXPECT_NEAR(dx[0], 0, 1e-9);
    EXPECT_NEAR(dx[1], 0, 1e-9);
    EXPECT_NEAR(dx[2], 0, 1e-9);
}

// ---- induction machine ----

constexpr double w_line = 377, lm_line = 26.13 / 377;

void set_machine(explicit_unit& u, double j) {
    u.r("lm") = lm_line;
    u.r("lls") = u.r("llr") = 0.754 / 377;
    u.r("j") = j;
    u.prepare();
}

values line_voltages(double t) {
    const double v = 220 * std::sqrt(2.0 / 3.0);
    return {v * std::cos(w_line * t), v * std::cos(w_line * t - third), v * std::cos(w_line * t + third)};
}

struct published {
    double slip, amplitude, degrees, torque;
};
// From the equivalent circuit: rs + j xls + j xm || (rr/s + j xlr), 220 V between lines.
constexpr published points[] = {{0.05, 12.50845184, -35.434014, 14.02650188}, {1, 92.96856809, NAN, 52.97042650}};

TEST(induction_machine, has_the_currents_and_torques_of_its_equivalent_circuit) {
    for (const published& p : points) {
        explicit_unit m("indmc1"), out("indmc1_out");
        set_machine(m, 1e15);  // the speed stands
        set_machine(out, 1);
        const auto f = [&](double t, const values& x) {
            values in = line_voltages(t);
            in.push_back(0);
            return slopes_at(m, in, x);
        };
        const double period = 2 * pi / w_line;
        const values start = {0, 0, 0, 0, (1 - p.slip) * w_line / 2, 0};
        const values x = integrated<double>(f, start, period / 400, 400 * 360);  // 6 s: all has settled
        const values o = outputs_at(out, values(x.begin(), x.begin() + 4));      // ia ib ic te
        const number i = 2.0 / 3 * (o[0] + o[1] * std::polar(1.0, third) + o[2] * std::polar(1.0, -third));
        EXPECT_NEAR(std::abs(i), p.amplitude, 1e-6 * p.amplitude) << p.slip;
        if (p.degrees == p.degrees) {  // whole periods have passed
            EXPECT_NEAR(std::arg(i) * 180 / pi, p.degrees, 1e-4);
        }
        EXPECT_NEAR(o[3], p.torque, 1e-6 * p.torque) << p.slip;
        EXPECT_NEAR(o[0] + o[1] + o[2], 0, 1e-9);
    }
}

TEST(induction_machine, stands_still_in_a_frame_that_turns_with_the_field) {
    for (const published& p : points) {
        explicit_unit m("indmc2a"), out("indmc2a_out");
        set_machine(m, 1e15);
        set_machine(out, 1);
        const values in = {220 * std::sqrt(2.0 / 3.0), 0, w_line, 0};
        const auto f = [&](double, const values& x) { return slopes_at(m, in, x); };
        const values x = integrated<double>(f, {0, 0, 0, 0, (1 - p.slip) * w_line / 2, 0}, 5e-5, 120000);
        const values dx = slopes_at(m, in, x), o = outputs_at(out, values(x.begin(), x.begin() + 4));  // id iq te
        for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(dx[k], 0, 1e-6);
        EXPECT_NEAR(std::hypot(o[0], o[1]), p.amplitude, 1e-7 * p.amplitude);
        EXPECT_NEAR(o[2], p.torque, 1e-7 * p.torque);
    }
}

// The same start on the line with currents as states, vectors in the frame of the rotor: there the rotor has no
// rotational voltage, and the stator sees voltages of slip frequency.
TEST(induction_machine, starts_on_the_line_as_its_currents_in_the_frame_of_the_rotor_say) {
    explicit_unit m("indmc1"), d("indmc2a"), out("indmc1_out");
    for (explicit_unit* u : {&m, &d, &out}) set_machine(u[0], 0.089);
    const double tl = 5, h = 5e-5;
    const int n = 6000;  // 0.3 s
    const auto model = [&](double t, const values& x) {
        values in = line_voltages(t);
        in.push_back(tl);
        return slopes_at(m, in, x);
    };
    const auto turning = [&](double, const values& x) {
        return slopes_at(d, {220 * std::sqrt(2.0 / 3.0), 0, w_line, tl}, x);
    };
    const double ls = 0.754 / 377 + lm_line, lr = ls, det = ls * lr - lm_line * lm_line;
    const auto other = [&](double t, const std::vector<number>& x) {  // is, ir, (wm, th)
        const number is = x[0], ir = x[1];
        const double wm = x[2].real(), th = x[2].imag(), wr = 2 * wm;
        const number v = std::polar(220 * std::sqrt(2.0 / 3.0), w_line * t - 2 * th);
        const number us = v - 0.435 * is - number(0, wr) * (ls * is + lm_line * ir), ur = -0.816 * ir;
        const double te = 1.5 * 2 * lm_line * std::imag(is * std::conj(ir));
        return std::vector<number>{(lr * us - lm_line * ur) / det, (ls * ur - lm_line * us) / det,
                                   number((te - tl) / 0.089, wm)};
    };
    const values a = integrated<double>(model, values(6, 0.0), h, n),
                 b = integrated<double>(turning, values(6, 0.0), h, n);
    const std::vector<number> c = by_midpoint<number>(other, std::vector<number>(3, 0.0), h / 25, 25 * n);
    for (const values* x : {&a, &b}) {
        EXPECT_NEAR((*x)[4], c[2].real(), 1e-4 * c[2].real());
        EXPECT_NEAR((*x)[5], c[2].imag(), 1e-4 * c[2].imag());
    }
    const values o = outputs_at(out, values(a.begin(), a.begin() + 4));
    const number is = c[0] * std::polar(1.0, 2 * c[2].imag());  // back in the stationary frame
    EXPECT_NEAR(o[0], is.real(), 1e-3 * std::abs(is));
    EXPECT_NEAR(o[1], (is * std::polar(1.0, -third)).real(), 1e-3 * std::abs(is));
    EXPECT_GT(c[2].real(), 20);
}

TEST(induction_machine, balances_its_energy_at_every_point_in_any_frame) {
    explicit_unit m("indmc2a");
    set_machine(m, 0.089);
    const induction_machine f = {0.435, 0.816, 0.754 / 377, lm_line, 0.754 / 377, {2, 0.089, 0}};
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> any(-2, 2);
    for (int trial = 0; trial < 200; ++trial) {
        const values in = {100 * any(rng), 100 * any(rng), 200 * any(rng), 10 * any(rng)};
        const values x = {any(rng), any(rng), any(rng), any(rng), 90 * any(rng), any(rng)}, dx = slopes_at(m, in, x);
        const induction_machine::currents i = f.currents_of({x[0], x[1], x[2], x[3]});
        const double te = 1.5 * 2 * lm_line * (i.qs * i.dr - i.ds * i.qr);  // by the currents alone
        const double taken = 1.5 * (in[0] * i.ds + in[1] * i.qs);
        const double lost = 1.5 * (0.435 * (i.ds * i.ds + i.qs * i.qs) + 0.816 * (i.dr * i.dr + i.qr * i.qr));
        const double stored = 1.5 * (i.ds * dx[0] + i.qs * dx[1] + i.dr * dx[2] + i.qr * dx[3]);
        EXPECT_NEAR(taken, lost + stored + te * x[4], 1e-10 * lost);
        EXPECT_NEAR(0.089 * dx[4], te - in[3], 1e-10 * std::abs(te) + 1e-9);
    }
}

TEST(explicit_machines, refuse_parameters_without_sense) {
    explicit_unit b("bldc1a"), i1("indmc1"), i2("indmc2a");
    b.r("ls") = 0;
    EXPECT_HALT(b.prepare(), "bldc1a.xbe: check ls, j, poles. Halting...\n");
    i1.r("lls") = i1.r("llr") = 0;
    EXPECT_HALT(i1.prepare(), "indmc1.xbe: check lls, lm, llr, j, poles. Halting...\n");
    i2.r("j") = 0;
    EXPECT_HALT(i2.prepare(), "indmc2a.xbe: check lls, lm, llr, j, poles. Halting...\n");
}

}  // namespace
