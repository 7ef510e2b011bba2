// Transformers with leakage, of three and four windings, with a core that saturates; texts. Ideal and coupled ones are
// in switched_and_coupled.cpp as well.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "halt_throws.h"
#include "model_unit.h"
#include "models/windings.h"

namespace {

#define EXPECT_REL(a, b, tolerance) EXPECT_NEAR(a, b, std::abs(b) * (tolerance))
using values = std::vector<double>;

struct leaking {
    const char* name;
    std::size_t n;
};
constexpr leaking leaking_ones[] = {{"xfmr_level1_1ph", 2}, {"xfmr_level1_1ph_1_2", 3}, {"xfmr_level1_1ph_4w", 4}};
std::string word(const char* first, std::size_t k) { return first + std::to_string(k + 1); }

struct windings {
    model_unit u;
    std::size_t n;
    explicit windings(const leaking& l) : u(l.name), n(l.n) {
        const double turns[] = {230, 24, -12, 5}, leakage[] = {3e-3, 30e-6, 8e-6, 1e-6};
        for (std::size_t k = 0; k < n; ++k) {
            u.r(word("w", k)) = turns[k];
            u.r(word("ll", k)) = leakage[k];
        }
        u.r("lm") = 1.7;
        u.prepare();
    }
    double ratio(std::size_t k) { return u.r(word("w", k)) / u.r("w1"); }
    double inductance(std::size_t j, std::size_t k) {
        return u.r("lm") * ratio(j) * ratio(k) + (j == k ? u.r(word("ll", k)) : 0);
    }
};

TEST(xfmr_level1, has_current_slopes_that_give_back_the_voltages_through_its_inductances) {
    std::mt19937 rng(6);
    std::uniform_real_distribution<double> any(-1, 1);
    for (const leaking& l : leaking_ones) {
        windings w(l);
        for (double& x : w.u.x.v) x = any(rng);
        for (double& x : w.u.x.aux) x = any(rng);
        w.u.call(&flags_class::trns, &flags_class::function);
        for (std::size_t j = 0; j < w.n; ++j) {
            EXPECT_EQ(w.u.x.f[2 * j], w.u.x.aux[j]);
            EXPECT_EQ(w.u.x.f[2 * j + 1], -w.u.x.aux[j]);
            double sum = 0, size = 0;
            for (std::size_t k = 0; k < w.n; ++k) {
                const double part = w.inductance(j, k) * w.u.x.f[2 * w.n + k];
                sum += part;
                size += std::abs(part);
            }
            EXPECT_NEAR(sum, w.u.x.v[2 * j] - w.u.x.v[2 * j + 1], 1e-12 * size) << l.name << ' ' << j;
        }
    }
}

// Volts per turn of all open windings are equal, and with the others shorted a winding has but leakages.
TEST(xfmr_level1, keeps_its_digits_where_the_core_is_nearly_ideal) {
    model_unit u("xfmr_level1_1ph");
    u.r("lm") = 1e9;
    u.r("w2") = 2;
    u.r("ll1") = 1e-6;
    u.r("ll2") = 4e-6;
    u.prepare();
    u.x.v = {1, 0, 0, 0, 0};
    u.call(&flags_class::trns, &flags_class::function);
    EXPECT_REL(u.x.f[4], 1 / 2e-6, 1e-12);  // leakage 1 and a quarter of leakage 2
    EXPECT_REL(u.x.f[5], -0.5 / 2e-6, 1e-12);
}

TEST(xfmr_level1, shows_the_magnetising_current_of_winding_1) {
    windings w(leaking_ones[3 - 1]);
    w.u.x.aux = {1, 2, 3, 4, 0};
    w.u.call(&flags_class::outvar_prm);
    EXPECT_REL(w.u.r("im_o"), 1 + (2 * 24 - 3 * 12 + 4 * 5) / 230.0, 1e-14);
}

TEST(xfmr_level1, begins_without_current_and_holds_what_start_up_is_given) {
    for (const leaking& l : leaking_ones) {
        windings w(l);
        const std::size_t start = 3 * w.n;
        for (std::size_t k = 0; k < w.n; ++k) {
            w.u.x.stparm[k] = 1 + static_cast<double>(k);
            w.u.x.auxs[k] = 5;
        }
        w.u.startup();
        for (std::size_t k = 0; k < w.n; ++k) {
            EXPECT_EQ(w.u.x.f[start + 2 * k], 5);
            EXPECT_EQ(w.u.x.f[start + 2 * w.n + k], 4 - static_cast<double>(k));
            EXPECT_EQ(w.u.x.aux[k], 5);
        }
        w.u.call(&flags_class::init_guess);
        for (std::size_t k = 0; k < w.n; ++k) EXPECT_EQ(w.u.x.aux[k], 0);
    }
}

TEST(transformers, refuse_dc_but_are_themselves_at_the_bias_of_small_signals) {
    const std::pair<const char*, const char*> texts[] = {
        {"xfmr_basic_1", "xfmr_basic_1.ebe: dc not implemented\n"},
        {"xfmr_level1_1ph", "xfmr_level1_1ph.ebe: cannot be used in DC!\n"},
        {"xfmr_level1_1ph_1_2", "xfmr_level1_1ph_1_2.ebe: cannot be used in DC!\n"},
        {"xfmr_level1_1ph_4w", "xfmr_level1_1ph_4w.ebe: cannot be used in DC!\n"},
        {"xfmr_level2_1ph", "xfmr_level2_1ph.ebe: cannot be used in DC!\n"}};
    for (const auto& [name, text] : texts) {
        model_unit u(name);
        u.prepare();
        EXPECT_HALT(u.dc(), text);
        u.x.aux[0] = 2;
        u.call(&flags_class::dc, &flags_class::ac, &flags_class::function);
        EXPECT_EQ(u.x.f[0], 2) << name;
    }
}

TEST(transformers, refuse_inductances_and_turns_without_sense) {
    const auto expect = [](const char* name, const std::string& what, double value, const std::string& text) {
        model_unit u(name);
        u.r(what) = value;
        EXPECT_HALT(u.prepare(), name + text);
    };
    const std::string of_core = ".ebe: check turns, leakages, lm. Halting...\n";
    for (const leaking& l : leaking_ones) {
        for (std::size_t k = 0; k < l.n; ++k) {
            expect(l.name, word("ll", k), 0, of_core);
            expect(l.name, word("w", k), 0, of_core);
        }
        expect(l.name, "lm", std::nan(""), of_core);
    }
    expect("xfmr_level2_1ph", "ll2", -1e-6, of_core);
    expect("xfmr_level2_1ph", "lm_sat", 0, ".ebe: check lm_sat, i_sat. Halting...\n");
    expect("xfmr_level2_1ph", "i_sat", 0, ".ebe: check lm_sat, i_sat. Halting...\n");
    for (const double m : {1e-3, -1e-3, 2e-3, std::nan("")})  // a coupling of exactly one, and more
        expect("xfmr_basic_1", "m", m, ".ebe: check l1, l2, m. Halting...\n");
    expect("xfmr_basic_1", "l2", 0, ".ebe: check l1, l2, m. Halting...\n");
    model_unit near("xfmr_basic_1");
    near.r("m") = 0.999999e-3;
    near.prepare();
}

TEST(xfmr_basic_1, is_xfmr_by_its_mutual_inductance) {
    model_unit a("xfmr_basic_1"), b("xfmr");
    a.r("l1") = b.r("l1") = 2e-3;
    a.r("l2") = b.r("l2") = 8e-3;
    a.r("m") = 3e-3;
    b.r("k") = 0.75;
    for (model_unit* u : {&a, &b}) {
        u->prepare();
        u->x.v = {5, 1, -2, 1, 0};
        u->x.aux = {0.3, -0.2, 0};
        u->trns();
    }
    for (std::size_t j = 0; j < 6; ++j) EXPECT_NEAR(a.x.f[j], b.x.f[j], 1e-12 * std::abs(b.x.f[j])) << j;
    EXPECT_REL(2e-3 * a.x.f[4] + 3e-3 * a.x.f[5], 4.0, 1e-13);
}

TEST(xfmr_3w_ideal, has_equal_volts_per_turn_and_no_power_of_its_own) {
    model_unit u("xfmr_3w_ideal");
    u.r("w1") = 100;
    u.r("w2") = 25;
    u.r("w3") = -50;
    // 8 V, 2 V and -4 V; 100 i1 + 25 i2 - 50 i3 = 0
    u.x.v = {9, 1, 3, 1, 0, 4, 0};
    u.x.aux = {0.5, -1, 0.5, 0};
    u.x.auxs = u.x.aux;
    for (const auto mode : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
        const std::size_t first = mode == &flags_class::startup ? 9 : 0;
        u.call(mode, &flags_class::function);
        double power = 0;
        for (std::size_t j = 0; j < 6; ++j) power += u.x.v[j] * u.x.f[first + j];
        EXPECT_EQ(power, 0);
        for (std::size_t j = 6; j < 9; ++j) EXPECT_EQ(u.x.f[first + j], 0);
    }
    u.x.v[4] = 1;
    u.x.aux[2] = 1.5;
    u.dc();
    EXPECT_EQ(u.x.f[6], 0);
    EXPECT_EQ(u.x.f[7], -100);  // -50 times 8 V, less 100 times -3 V
    EXPECT_EQ(u.x.f[8], -50);
}

TEST(r_xfmr_1, conducts_with_its_current_as_unknown) {
    model_unit u("r_xfmr_1");
    u.r("r") = 4;
    u.prepare();
    u.x.v = {3, 1, 0};
    u.x.aux[0] = 0.5;
    u.trns();
    EXPECT_EQ(u.x.f[0], 0.5);
    EXPECT_EQ(u.x.f[1], -0.5);
    EXPECT_EQ(u.x.f[2], 0);
    u.r("r") = 0;
    u.prepare();
    EXPECT_EQ(u.r("g"), 1e6);
}

// ---- the core that saturates

struct saturating : model_unit {
    saturating() : model_unit("xfmr_level2_1ph") {
        r("w1") = 200;
        r("w2") = 50;
        r("ll1") = 2e-3;
        r("ll2") = 0.1e-3;
        r("lm") = 0.8;
        r("lm_sat") = 0.02;
        r("i_sat") = 0.5;
        r("g_core") = 1e-3;
        prepare();
    }
};

// Fluxes of given currents by hand: the rows of the currents are then fulfilled.
TEST(xfmr_level2, has_the_fluxes_of_its_currents_on_both_parts_of_its_curve) {
    for (const double im : {0.3, -0.4, 0.5, 0.9, -3.0}) {
        saturating u;
        const double flux = std::abs(im) <= 0.5 ? 0.8 * im : std::copysign(0.4 + 0.02 * (std::abs(im) - 0.5), im);
        const double i2 = 1.2, inner = im - i2 / 4, v1 = 7, v2 = -3;
        u.x.v = {v1 + 1, 1, v2, 0, 0};
        u.x.aux = {inner + 1e-3 * v1, i2, 2e-3 * inner + flux, 0.1e-3 * i2 + flux / 4, 0};
        u.trns();
        EXPECT_EQ(u.x.f[0], u.x.aux[0]);
        EXPECT_EQ(u.x.f[2], i2);
        EXPECT_EQ(u.x.f[4], v1);
        EXPECT_EQ(u.x.f[5], v2);
        EXPECT_NEAR(u.x.f[6], 0, 1e-12) << im;
        EXPECT_NEAR(u.x.f[7], 0, 1e-11) << im;
        u.call(&flags_class::outvar_prm);
        EXPECT_NEAR(u.r("im_o"), im, 1e-14);
        EXPECT_NEAR(u.r("psi_o"), flux, 1e-14);
    }
}

TEST(xfmr_level2, hands_the_fluxes_of_its_start_currents_over) {
    saturating u;
    u.x.stparm = {0.7, 0.4};
    const double v1 = 10, im = 0.7 + 0.4 / 4, flux = 0.4 + 0.02 * (im - 0.5);
    u.x.v = {v1, 0, 3, 0, 0};
    u.x.auxs = {0.7 + 1e-3 * v1, 0.4, 0};
    u.startup();
    EXPECT_EQ(u.x.f[8], u.x.auxs[0]);
    EXPECT_EQ(u.x.f[11], -0.4);
    EXPECT_NEAR(u.x.f[12], 0, 1e-15);
    EXPECT_EQ(u.x.f[13], 0);
    EXPECT_NEAR(u.x.aux[2], 2e-3 * 0.7 + flux, 1e-14);
    EXPECT_NEAR(u.x.aux[3], 0.1e-3 * 0.4 + flux / 4, 1e-14);
}

}  // namespace
