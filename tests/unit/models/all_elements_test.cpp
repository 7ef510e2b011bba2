// What holds for every element of this build in the course of a run: breaks ahead, the same answer whatever was asked
// before, dc as the limit of a transient at rest, no energy from passive ones.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

#include "model_unit.h"

namespace {

std::vector<std::string> all_names() {
    std::vector<std::string> all;
    for (int e = 0; e < installed_ebes().n(); ++e) all.push_back(installed_ebes().list.entry.str(e));
    return all;
}

void randomise(model_unit& u, std::mt19937& rng) {
    std::uniform_real_distribution<double> number(-0.8, 0.8);
    for (std::vector<double>* a : {&u.x.v, &u.x.vind, &u.x.curind, &u.x.aux, &u.x.vr, &u.x.xvr, &u.x.auxs, &u.x.locv})
        for (double& x : *a) x = number(rng);
    for (int& x : u.x.dvar) x = static_cast<int>(rng() % 3);
    u.flags.time_given = std::abs(number(rng));
}

using mode = int flags_class::*;

class any_element : public ::testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(, any_element, ::testing::ValuesIn(all_names()),
                         [](const auto& element) { return element.param; });

TEST_P(any_element, answers_the_next_break_strictly_ahead_at_any_time) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> time(0, 0.02);
    model_unit u(GetParam());
    u.prepare();
    u.call(&flags_class::init_guess);
    u.flags.t_end = 1e9;
    const auto next = [&](double t) {
        u.flags.time_given = t;
        u.flags.time_nextbreak = 1e9;
        u.call(&flags_class::nexttime);
        return u.flags.time_nextbreak;
    };
    for (int trial = 0; trial < 200; ++trial) {
        double t = trial == 0 ? 0 : time(rng);
        // From break to break, and from the neighbours of each: none is answered twice.
        for (int k = 0; k < 20 && t < 1e8; ++k) {
            const double n = next(t);
            ASSERT_GT(n, t);
            ASSERT_GT(next(std::nextafter(n, 0)), std::nextafter(n, 0));
            t = n;
        }
    }
}

TEST_P(any_element, answers_the_same_whatever_it_was_asked_before) {
    std::mt19937 rng(12);
    for (const mode m : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
        if (m == &flags_class::dc && refuses_dc(GetParam())) continue;
        model_unit u(GetParam());
        u.prepare();
        u.call(&flags_class::init_guess);
        for (int trial = 0; trial < 20; ++trial) {
            randomise(u, rng);
            const model_numbers here = u.x;
            const double t = u.flags.time_given;
            u.call(m, &flags_class::function);
            const std::vector<double> f = u.x.f;
            // Elsewhere and at another time; then back, with what the element keeps as that left it.
            randomise(u, rng);
            u.call(m, &flags_class::function);
            const std::vector<double> rparm = u.x.rparm;
            const std::vector<int> iparm = u.x.iparm;
            u.x = here;
            if (m == &flags_class::trns) u.x.rparm = rparm, u.x.iparm = iparm;
            u.flags.time_given = t;
            u.call(m, &flags_class::function);
            EXPECT_EQ(u.x.f, f);
        }
    }
}

TEST_P(any_element, has_in_dc_what_a_transient_at_rest_has) {
    // The state of charge of a battery, which dc holds, runs over hours in a transient.
    if (refuses_dc(GetParam()) || GetParam() == "battery_c") return;
    std::mt19937 rng(13);
    for (int trial = 0; trial < 50; ++trial) {
        model_unit u(GetParam());
        u.prepare();
        u.call(&flags_class::init_guess);
        randomise(u, rng);
        u.call(&flags_class::dc, &flags_class::function);  // switches store their state
        const std::vector<double> f = u.x.f;
        u.call(&flags_class::trns, &flags_class::function);
        EXPECT_EQ(u.x.f, f);
    }
}

// One local variable for each terminal that carries charge: together they hold none.
TEST_P(any_element, has_charges_that_sum_to_zero) {
    std::mt19937 rng(14);
    for (int trial = 0; trial < 50; ++trial) {
        model_unit u(GetParam());
        if (u.lib.list.locv.count(u.e) == 0) return;
        u.prepare();
        u.call(&flags_class::init_guess);
        randomise(u, rng);
        u.call(&flags_class::trns, &flags_class::function);
        const int first = u.lib.func.first_f[static_cast<std::size_t>(u.e)];
        double sum = 0, size = 0;
        for (int j = 0; j < u.jac.n_f; ++j)
            if (u.lib.func.flag_locvar[static_cast<std::size_t>(first + j)]) {
                sum += u.x.f[static_cast<std::size_t>(j)];
                size += std::abs(u.x.f[static_cast<std::size_t>(j)]);
            }
        EXPECT_LE(std::abs(sum), 1e-12 * size);
    }
}

// Energy taken up over a closed cycle of the voltage across the first terminal, J: the static current and the change of
// the charge there, by the midpoints of many small steps.
double energy_of_a_cycle(const std::string& name, const std::function<double(double)>& voltage) {
    model_unit u(name);
    u.prepare();
    const bool charged = u.lib.list.locv.count(u.e) > 0;
    const int n = 20000;
    double energy = 0, v_before = voltage(0), q_before = 0, i_before = 0;
    for (int k = 0; k <= n; ++k) {
        const double v = voltage(static_cast<double>(k) / n);
        u.x.v[0] = v;
        u.call(&flags_class::trns, &flags_class::function);
        const double i = u.x.f[0], q = charged ? u.x.f[2] : 0;  // behind the currents of two terminals
        if (k > 0) energy += 0.5 * (v + v_before) * (q - q_before + 0.5 * (i + i_before) / n);
        v_before = v;
        q_before = q;
        i_before = i;
    }
    return energy;
}
TEST(passive_elements, give_no_energy_over_a_cycle) {
    const double turn = 2 * 3.14159265358979323846;
    for (const char* name : {"r", "r_pot", "r_time", "diode", "diode_r", "diode_spice_1", "diode_spice_3", "c"})
        for (const double offset : {-1.0, 0.0, 0.5}) {
            const auto wave = [&](double x) { return offset + 0.6 * std::sin(turn * x); };
            EXPECT_GE(energy_of_a_cycle(name, wave), -1e-12) << name << ", about " << offset << " V";
        }
}

}  // namespace
