// MOS transistors of level 1 and level 3.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

#include "halt_throws.h"
#include "model_unit.h"
#include "models/mos.h"

namespace {

using volts = std::array<double, 4>;  // d g s b
using named = std::vector<std::pair<std::string, double>>;

struct mos_unit : model_unit {
    mos_unit(const std::string& name, const named& given, int pol = 1) : model_unit(name) {
        for (const auto& [word, value] : given) r(word) = value;
        x.iparm[1] = pol;
        prepare();
    }
    void at(const volts& v) {
        std::copy(v.begin(), v.end(), x.v.begin());
        trns();
    }
    double f(int j) const { return x.f[static_cast<std::size_t>(j)]; }
    // Current of the channel at (vgs, vds, vbs), the source at 0 V.
    double id(double vgs, double vds, double vbs) {
        x.v = {vds, vgs, 0, vbs, 0};
        call(&flags_class::outvar_prm);
        return r("id_o");
    }
};

const named level_1 = {{"vt0", 1},       {"kp", 2e-5}, {"gamma", 0.5}, {"phi", 0.6},
                       {"lambda", 0.02}, {"w", 10e-6}, {"l", 1e-6}};
const named level_3 = {{"vt0", 0.8},   {"kp", 5e-5}, {"gamma", 0.4}, {"phi", 0.65}, {"tox", 25e-9},
                       {"nsub", 1e16}, {"w", 10e-6}, {"l", 2e-6},    {"kappa", 0}};
named operator+(named a, const named& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
const named charged = {{"cbd", 2e-14}, {"cj", 3e-4},    {"as", 3e-11},   {"ps", 2e-5},   {"cjsw", 4e-10},
                       {"pd", 2.5e-5}, {"cgso", 3e-10}, {"cgdo", 2e-10}, {"cgbo", 1e-10}};
struct kind {
    std::string name;
    named given;
};
// Every part of the levels at once, and the plain ones.
const std::vector<kind> kinds = {
    {"mos_level1", level_1 + charged},
    {"mos_level1", level_1 + named{{"gamma", 0}, {"temp", 350}, {"js", 1e-4}, {"ad", 1e-10}, {"as", 1e-10}}},
    {"mos_level3", level_3 + charged},
    {"mos_level3", level_3 + charged + named{{"theta", 0.1}, {"eta", 0.05}, {"xj", 3e-7}, {"delta", 1}, {"ld", 1e-7}}},
    {"mos_level3", level_3 + named{{"theta", 0.1}, {"vmax", 1e5}, {"kappa", 0.5}, {"nfs", 5e11}, {"temp", 330}}},
    {"mos_level3", level_3 + charged + named{{"kappa", 0.5}, {"nfs", 1e11}, {"eta", 0.1}, {"xj", 1e-7}}},
};

void expect_currents(const named& given, const std::string& name, const std::vector<std::array<double, 4>>& table) {
    mos_unit u(name, given);
    for (const auto& [vgs, vds, vbs, id] : table)
        EXPECT_NEAR(u.id(vgs, vds, vbs), id, 1e-9 * id) << vgs << ' ' << vds << ' ' << vbs;
}

TEST(mos_level1, has_the_currents_of_the_closed_form) {
    expect_currents(level_1, "mos_level1",
                    {{3, 5, 0, 4.4e-04}, {3, 1, 0, 3.06e-04}, {3, 5, -2, 2.7497694833e-04}, {0.99, 5, 0, 0}});
}

// Of the published equations in closed form, apart from this program.
TEST(mos_level3, has_the_currents_of_the_closed_form) {
    const auto three = [](const named& more, double a, double b, double c) {
        expect_currents(level_3 + more, "mos_level3", {{3, 0.5, 0, a}, {3, 5, 0, b}, {3, 5, -2, c}});
    };
    const named theta = {{"theta", 0.1}};
    three({}, 2.3987391454e-04, 5.3823959472e-04, 4.1240420917e-04);
    three(theta, 1.9661796274e-04, 4.4117999567e-04, 3.4739489940e-04);
    three(theta + named{{"eta", 0.05}, {"xj", 3e-7}}, 2.0011879318e-04, 4.6635874460e-04, 3.9878743966e-04);
    three(theta + named{{"vmax", 1e5}}, 1.7509044857e-04, 3.0493818472e-04, 2.4554779725e-04);
    three(theta + named{{"kappa", 0.5}}, 1.9661796274e-04, 5.6690632186e-04, 4.5042748225e-04);
}

// 5 V and 10 kohm at the drain; the expected figures are from a bisection of the closed form.
TEST(mos_level1, loads_a_resistor_as_the_bisection_says) {
    const double table[2][3] = {{2, 3.9215686275, 1.0784313725e-04}, {4, 0.7952213320, 4.2047786680e-04}};
    mos_unit u("mos_level1", level_1);
    for (const auto& [vg, vd, id] : table) {
        double low = 0, high = 5;
        for (int n = 0; n < 100; ++n) {
            const double middle = 0.5 * (low + high);
            (u.id(vg, middle, 0) > (5 - middle) / 10e3 ? high : low) = middle;
        }
        EXPECT_NEAR(low, vd, 1e-9 * vd);
        EXPECT_NEAR(u.id(vg, low, 0), id, 1e-9 * id);
    }
}

TEST(mos_level1, stops_without_what_it_needs) {
    const auto stops = [](const named& given, const std::string& text) {
        EXPECT_HALT(mos_unit("mos_level1", given), text + "\n");
    };
    stops({{"vt0", -1000}, {"kp", -1000}}, "mos_level1.ebe: vt0 not given?");
    stops({{"vt0", 1}, {"kp", -1000}}, "mos_level1.ebe: kp not given?");
    stops({{"kp", -1000}, {"nsub", 1e15}, {"tox", 0}}, "mos_level1.ebe: kp not given?");
    stops({{"vt0", 1}, {"kp", 1e-5}, {"l", 1e-6}, {"ld", 0.6e-6}}, "  effective channel length less than zero?");
    stops({{"vt0", 1}, {"kp", 1e-5}, {"l", 1e-6}, {"ld", 0.5e-6}}, "  effective channel length less than zero?");
    stops({{"vt0", 1}, {"kp", 1e-5}, {"nsub", 0}}, "mos_level1.ebe: nsub = 0 ?!");
    EXPECT_NO_THROW(mos_unit("mos_level1", {{"vt0", 1}, {"kp", 1e-5}}));
    EXPECT_NO_THROW(mos_unit("mos_level1", {{"vt0", -1000}, {"kp", -1000}, {"nsub", 1e15}}));
    EXPECT_EQ(installed_ebes().list.rprm.value(installed_ebes().list.find("mos_level1"), 13), -1000);  // kp
}

TEST(mos_level3, stops_without_what_it_needs) {
    const auto stops = [](const named& given, const std::string& text) {
        EXPECT_HALT(mos_unit("mos_level3", given), text + "\n");
    };
    stops({{"nsub", 0}}, "mos_level3.ebe: nsub=0 ?!");
    stops({{"nsub", 1e10}}, "mos_level3.ebe: nsub < n_i ?!");
    stops({{"nsub", 1.45e10}}, "mos_level3.ebe: nsub < n_i ?!");
    stops({{"l", 1e-6}, {"ld", 0.6e-6}}, "  effective channel length less than zero?");
    EXPECT_NO_THROW(mos_unit("mos_level3", {}));
}

// phi = 2 vt ln(nsub/ni), gamma = sqrt(2 eps_si q nsub)/cox, kp = u0 cox, by hand for nsub 1e16, tox 25 nm:
// vt 2.586418638e-02, cox = 3.9*8.854214871e-12/25e-9 = 1.38125752e-3.
TEST(mos_level3, takes_from_doping_and_oxide_what_is_not_given) {
    mos_unit u("mos_level3", {{"nsub", 1e16}, {"tox", 25e-9}, {"w", 10e-6}, {"l", 2e-6}});
    const double cox = 3.9 * 8.854214871e-12 / 25e-9, phi = 2 * 2.586418638e-02 * std::log(1e16 / 1.45e10);
    const double gamma = std::sqrt(2 * 11.7 * 8.854214871e-12 * 1.6021918e-19 * 1e22) / cox;
    EXPECT_NEAR(u.r("phi_t"), phi, 1e-9);
    EXPECT_NEAR(u.r("gamma_t"), gamma, 1e-12);
    EXPECT_NEAR(u.r("beta"), 600e-4 * cox * 5, 1e-12);
    const double gap = 1.16 - 7.02e-4 * 300.15 * 300.15 / (300.15 + 1108);
    EXPECT_NEAR(u.r("vbi"), 0.5 * (phi - gap), 1e-9);  // without body effect: vt0 - gamma sqrt(phi)
}

double slope_of(mos_unit& u, const volts& v, int j, int k, double h) {
    volts w = v;
    const auto kk = static_cast<std::size_t>(k);
    w[kk] = v[kk] + h;
    u.at(w);
    const double above = u.f(j);
    w[kk] = v[kk] - h;
    u.at(w);
    return (above - u.f(j)) / (2 * h);
}

// A kink within the step of the difference shows as a difference of its two halves.
bool smooth_here(mos_unit& u, const volts& v, int j, int k, double h) {
    volts w = v;
    const auto kk = static_cast<std::size_t>(k);
    std::array<double, 3> f;
    for (int n = -1; n <= 1; ++n) {
        w[kk] = v[kk] + n * h;
        u.at(w);
        f[static_cast<std::size_t>(n + 1)] = u.f(j);
    }
    const double a = f[2] - f[1], b = f[1] - f[0];
    return std::fabs(a - b) <= 1e-4 * (std::fabs(a) + std::fabs(b));
}

TEST(mos, has_the_derivatives_of_its_functions_in_every_region) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> volt(-6, 6), kelvin(250, 400);
    for (const kind& k : kinds)
        for (const int pol : {1, -1}) {
            int n_kinks = 0, n_slopes = 0;
            for (int trial = 0; trial < 1000; ++trial) {
                mos_unit u(k.name, k.given + named{{"temp", kelvin(rng)}}, pol);
                volts v{volt(rng), volt(rng), volt(rng), 0};
                // The bulk on the side where its junctions block, or a little beyond.
                v[3] = pol * (std::min(pol * v[0], pol * v[2]) + 0.4 - std::fabs(volt(rng)));
                u.at(v);
                std::vector<double> jac = u.jac.store;
                double j_ik[8][4];
                for (int j = 0; j < 8; ++j) std::copy_n(u.jac.dfdv[j], 4, j_ik[j]);
                for (int j = 0; j < 8; ++j) {
                    double largest = 0;
                    for (const double x : j_ik[j]) largest = std::max(largest, std::fabs(x));
                    for (int n = 0; n < 4; ++n, ++n_slopes) {
                        const double d = slope_of(u, v, j, n, 1e-5);
                        if (std::fabs(j_ik[j][n] - d) <= 1e-5 * largest + (j < 4 ? 1e-12 : 1e-21)) continue;
                        if (!smooth_here(u, v, j, n, 1e-5)) {
                            ++n_kinks;
                            continue;
                        }
                        ADD_FAILURE() << k.name << " pol " << pol << " row " << j << " voltage " << n << ": "
                                      << j_ik[j][n] << " against " << d << " at " << v[0] << ' ' << v[1] << ' ' << v[2]
                                      << ' ' << v[3];
                    }
                }
            }
            EXPECT_LE(n_kinks, n_slopes / 1000);
        }
}

TEST(mos, takes_differences_when_asked) {
    for (const kind& k : kinds) {
        mos_unit u(k.name, k.given);
        const volts v{2.3, 2.9, 0.1, -0.7};
        u.at(v);
        double formula[8][4];
        for (int j = 0; j < 8; ++j) std::copy_n(u.jac.dfdv[j], 4, formula[j]);
        u.x.iparm[0] = 1;
        u.at(v);
        bool differs = false;
        for (int j = 0; j < 8; ++j)
            for (int n = 0; n < 4; ++n) {
                EXPECT_NEAR(u.jac.dfdv[j][n], formula[j][n], 2e-3 * std::fabs(formula[j][n]) + (j < 4 ? 1e-7 : 1e-17));
                differs = differs || u.jac.dfdv[j][n] != formula[j][n];
            }
        EXPECT_TRUE(differs) << k.name;
    }
}

volts random_volts(std::mt19937& rng, double size) {
    std::uniform_real_distribution<double> volt(-size, size);
    return {volt(rng), volt(rng), volt(rng), volt(rng)};
}

TEST(mos, has_currents_and_charges_that_sum_to_zero_and_depend_on_differences_alone) {
    std::mt19937 rng(2);
    for (const kind& k : kinds)
        for (int trial = 0; trial < 1000; ++trial) {
            mos_unit u(k.name, k.given);
            u.at(random_volts(rng, 4));
            for (const int first : {0, 4}) {
                double sum = 0, size = 0, slopes = 0, row[4] = {}, column[4] = {};
                for (int j = 0; j < 4; ++j) {
                    sum += u.f(first + j);
                    size += std::fabs(u.f(first + j));
                    for (int n = 0; n < 4; ++n) {
                        const double slope = u.jac.dfdv[first + j][n];
                        slopes += std::fabs(slope);
                        row[j] += slope;
                        column[n] += slope;
                    }
                }
                EXPECT_LE(std::fabs(sum), 1e-15 * size);
                for (int j = 0; j < 4; ++j) {
                    EXPECT_LE(std::fabs(row[j]), 1e-15 * slopes);
                    EXPECT_LE(std::fabs(column[j]), 1e-15 * slopes);
                }
            }
        }
}

TEST(mos, exchanges_drain_and_source) {
    std::mt19937 rng(3);
    const named even = {{"cbd", 2e-14}, {"cbs", 2e-14}, {"cgso", 3e-10}, {"cgdo", 3e-10}};
    for (const kind& k : {kind{"mos_level1", level_1 + even}, kind{"mos_level3", level_3 + even}})
        for (int trial = 0; trial < 1000; ++trial) {
            mos_unit u(k.name, k.given), w(k.name, k.given);
            const volts v = random_volts(rng, 4);
            u.at(v);
            w.at({v[2], v[1], v[0], v[3]});
            const int other[] = {2, 1, 0, 3, 6, 5, 4, 7};
            for (int j = 0; j < 8; ++j) {
                // The sum that the bulk's row is adds in another order.
                EXPECT_NEAR(u.f(j), w.f(other[j]), 1e-13 * (std::fabs(u.f(0)) + std::fabs(u.f(j)) + std::fabs(u.f(2))));
                for (int n = 0; n < 4; ++n)
                    EXPECT_NEAR(u.jac.dfdv[j][n], w.jac.dfdv[other[j]][other[n]],
                                1e-12 * (1e-15 + std::fabs(u.jac.dfdv[j][n])) +
                                    1e-13 * std::fabs(u.jac.dfdv[j == 3 ? 0 : j][j == 3 ? 0 : n]));
            }
        }
}

TEST(mos, mirrors_the_n_channel_in_the_p_channel) {
    std::mt19937 rng(4);
    for (const kind& k : kinds) {
        named p = k.given + named{{"temp", 300.15}};
        mos_unit n_type(k.name, p);
        mos_unit p_type(k.name, p + named{{"vt0", -n_type.r("vt0")}}, -1);
        for (int trial = 0; trial < 1000; ++trial) {
            volts v = random_volts(rng, 4);
            n_type.at(v);
            const auto x = n_type.x;
            const auto jac = n_type.jac.store;
            for (double& w : v) w = -w;
            p_type.at(v);
            for (int j = 0; j < 8; ++j) EXPECT_EQ(p_type.f(j), -n_type.f(j));
            EXPECT_EQ(p_type.jac.store, jac);
        }
    }
}

// Over each border of regions, on both sides of it by 1e-9 V: current and slopes agree. Level 3 has kinks that are its
// own: with nfs at the beginning of weak inversion, with kappa and no vmax at the edge of saturation.
TEST(mos, has_a_current_with_continuous_slopes_over_the_borders_of_its_regions) {
    struct border {
        double vgs, vds, vbs;  // source at 0 V
        int k;                 // terminal that is moved
    };
    const auto compare = [](mos_unit& u, const border& at, int first, int last, double tolerance) {
        volts v{at.vds, at.vgs, 0, at.vbs};
        double side[2][8][5];
        for (int n = 0; n < 2; ++n) {
            v[static_cast<std::size_t>(at.k)] += n == 0 ? -1e-9 : 2e-9;
            u.at(v);
            for (int j = first; j < last; ++j) {
                std::copy_n(u.jac.dfdv[j], 4, side[n][j]);
                side[n][j][4] = u.f(j);
            }
        }
        for (int j = first; j < last; ++j) {
            double largest = 0;
            for (int c = 0; c < 4; ++c) largest = std::max(largest, std::fabs(side[0][j][c]));
            for (int c = 0; c < 5; ++c)
                EXPECT_NEAR(side[0][j][c], side[1][j][c], tolerance * largest)
                    << "row " << j << " column " << c << " at " << at.vgs << ' ' << at.vds << ' ' << at.vbs;
        }
    };
    mos_unit one("mos_level1", level_1 + charged);
    const double vth = 1 + 0.5 * (std::sqrt(2.6) - std::sqrt(0.6));  // at vbs -2
    for (const border& at : {border{3, 2, 0, 0},
                             {3, 2, 0, 1},
                             {3 + vth, 3, -2, 0},
                             {2, 0, 0, 0},
                             {2, 0, -2, 0},
                             {2, 1.3, 0, 3},
                             {0.5, 0, -2, 0},
                             {0.5, 1, 0, 3},
                             {2, 0, 0.3, 0}})
        compare(one, at, 0, 8, 1e-6);
    // Where the channel begins the current is smooth (its slope rises from 0), and charges are.
    {
        mos_unit u("mos_level1", level_1 + charged);
        u.at({3, vth - 1e-9, 0, -2});
        const double off[2] = {u.f(0), u.f(5)};
        u.at({3, vth + 1e-9, 0, -2});
        EXPECT_NEAR(u.f(0), off[0], 1e-12);
        EXPECT_NEAR(u.jac.dfdv[0][1], 0, 1e-11);
        EXPECT_NEAR(u.f(5), off[1], 1e-9 * std::fabs(off[1]) + 1e-22);
    }
    // Flat band: accumulation meets depletion. vgb = vbi - phi.
    compare(one, {0, 0, -(1 - 0.5 * std::sqrt(0.6) - 0.6), 1}, 4, 8, 1e-4);
    mos_unit three("mos_level3", level_3 + charged + named{{"theta", 0.1}, {"eta", 0.05}, {"xj", 3e-7}});
    for (const border& at : {border{2, 0, 0, 0}, {2, 0, -2, 0}, {2, 1, 0, 3}, {2, 0, 0.3, 0}})
        compare(three, at, 0, 8, 1e-6);
    // The edge of saturation is vgst/(1 + fb) of the plain one: 1.95723489 V.
    mos_unit plain("mos_level3", level_3);
    compare(plain, {3, 1.95723489, 0, 0}, 0, 4, 1e-6);
}

TEST(mos, is_bounded_at_any_voltage) {
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> pick(0, 12);
    const double sizes[] = {0, 1e-3, -1e-3, 0.7, -0.7, 5, -5, 100, -100, 1e4, -1e4, 1e6, -1e6};
    for (const kind& k : kinds)
        for (const int pol : {1, -1}) {
            mos_unit u(k.name, k.given, pol);
            for (int trial = 0; trial < 5000; ++trial) {
                u.at({sizes[pick(rng)], sizes[pick(rng)], sizes[pick(rng)], sizes[pick(rng)]});
                for (int j = 0; j < 8; ++j) {
                    ASSERT_TRUE(std::isfinite(u.f(j))) << k.name << j;
                    for (int n = 0; n < 4; ++n) ASSERT_TRUE(std::isfinite(u.jac.dfdv[j][n])) << k.name << j << n;
                }
            }
            u.at({1e150, 0, 0, 0});
            EXPECT_TRUE(std::isinf(u.f(0)));
        }
}

// At 450 K little doping would leave potentials below 0.
TEST(mos, ends_its_potentials_at_a_tenth_of_a_volt_when_hot) {
    mos_unit u("mos_level1", level_1 + named{{"phi", 0.3}, {"pb", 0.35}, {"cbd", 1e-14}, {"temp", 450}});
    EXPECT_EQ(u.r("phi_t"), 0.1);
    EXPECT_EQ(u.r("pb_t"), 0.1);
    u.at({1, 2, 0, 0.3});
    for (int j = 0; j < 8; ++j) EXPECT_TRUE(std::isfinite(u.f(j)));
}

// Integral of the capacitances round a loop of voltages through all regions, against the charge that moved on the way.
TEST(mos, keeps_no_charge_after_a_closed_loop) {
    for (const kind& k : kinds) {
        mos_unit u(k.name, k.given);
        constexpr int n_steps = 40000;
        const double pi = 3.141592653589793;
        const auto place = [&](double t) {
            return volts{2.5 * std::sin(t), 1 + 4 * std::cos(t), std::sin(2 * t), -2 + std::cos(3 * t)};
        };
        double sum[4] = {}, size[4] = {};
        for (int n = 0; n < n_steps; ++n) {
            const double t = 2 * pi * (n + 0.5) / n_steps, dt = pi / n_steps;
            const volts a = place(t - dt), b = place(t + dt);
            u.at(place(t));
            for (int j = 0; j < 4; ++j) {
                double dq = 0;
                for (int c = 0; c < 4; ++c)
                    dq += u.jac.dfdv[4 + j][c] * (b[static_cast<std::size_t>(c)] - a[static_cast<std::size_t>(c)]);
                sum[j] += dq;
                size[j] += std::fabs(dq);
            }
        }
        // Where a capacitance jumps, at the beginning of inversion, a step of the sum is wrong by itself at most.
        for (int j = 0; j < 4; ++j) EXPECT_LE(std::fabs(sum[j]), 4.0 / n_steps * size[j]) << k.name << j;
    }
}

// Regions by hand, in units of the oxide: gamma 0.5, phi 0.6, flat band at vgb = 0.012701665 V.
TEST(mos_charge, is_that_of_ward_and_dutton_in_each_region) {
    mos_charge_slopes c;
    mos_charge(0.5, 0.6, -1, 1, 0, c);  // accumulation
    EXPECT_DOUBLE_EQ(c.qg, -1);
    EXPECT_EQ(c.qn, 0);
    mos_charge(0.5, 0.6, 0.5, 1, 0, c);  // depletion: 0.5 (sqrt(0.0625 + 0.5) - 0.25) = 0.25
    EXPECT_DOUBLE_EQ(c.qg, 0.25);
    EXPECT_EQ(c.qn, 0);
    // Without body effect: 2/3 of the gate voltage above threshold when saturated, all of it at vds = 0.
    mos_charge(0, 0.6, 2.6, 5, 0, c);
    EXPECT_DOUBLE_EQ(c.qn, -2 * 2 / 3.0);
    EXPECT_DOUBLE_EQ(c.qg, 2 * 2 / 3.0);
    EXPECT_DOUBLE_EQ(c.qg_g, 2 / 3.0);
    EXPECT_NEAR(c.qn_d, 0, 1e-15);
    mos_charge(0, 0.6, 2.6, 0, 0, c);
    EXPECT_DOUBLE_EQ(c.qn, -2);
    EXPECT_DOUBLE_EQ(c.qg_d, -0.5);
    EXPECT_DOUBLE_EQ(c.qg_s, -0.5);
    // Linear, by the integral of q^2 over that of q: 2/3 (a^3 - b^3)/(a^2 - b^2), a = 2, b = 1 at the ends.
    mos_charge(0, 0.6, 2.6, 1, 0, c);
    EXPECT_DOUBLE_EQ(c.qn, -2 / 3.0 * 7 / 3.0);
}

TEST(mos, has_the_slopes_and_capacitances_of_its_bias_point_in_small_signals) {
    for (const kind& k : kinds) {
        mos_unit u(k.name, k.given);
        u.at({2.1, 2.6, 0.2, -0.5});
        ac_unit a(k.name);
        a.ebe_jac = &u.jac;
        a.v = {{0.3, 0.1}, {-0.2, 0.4}, {0.7, 0}, {0, -0.6}, 0.0};
        const double omega = 1e7;
        a.ac(omega);
        for (int j = 0; j < 4; ++j) {
            std::complex<double> current = 0;
            for (int n = 0; n < 4; ++n) {
                const std::complex<double> y(u.jac.dfdv[j][n], omega * u.jac.dfdv[4 + j][n]);
                EXPECT_EQ(a.jac.dfdv[j][n], y);
                current += y * a.v[static_cast<std::size_t>(n)];
            }
            EXPECT_NEAR(std::abs(a.f[static_cast<std::size_t>(j)] - current), 0, 1e-15 * std::abs(current));
        }
    }
}

TEST(mos_resistances, are_their_value_or_sheet_times_squares) {
    for (const std::string name : {"mos_l1_r", "mos_l3_r"}) {
        const auto g = [&](const named& given) {
            model_unit u(name);
            for (const auto& [word, value] : given) u.r(word) = value;
            u.prepare();
            return u.r("g");
        };
        EXPECT_DOUBLE_EQ(g({{"r", 50}}), 0.02);
        EXPECT_DOUBLE_EQ(g({{"rsh", 20}, {"sq", 2.5}}), 0.02);
        EXPECT_DOUBLE_EQ(g({{"r", 50}, {"rsh", 20}, {"m", 3}}), 0.06);
        EXPECT_DOUBLE_EQ(g({}), 1e6);
        ac_unit a(name);
        a.r("rsh") = 20;
        a.r("sq") = 2.5;
        a.v = {1.0, 0.0};
        a.ac(1e3);
        EXPECT_DOUBLE_EQ(a.f[0].real(), 0.02);
    }
}

}  // namespace
