// What holds for every semiconductor, in every region: derivatives, sums, continuity, voltages of any size.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "model_unit.h"

namespace {
// A device with charges and every effect switched on. Terminals first, then charges, in f.
struct device {
    std::string name, element;
    std::vector<std::pair<std::string, double>> words;  // real or integer parameters
    double low, high;                                   // V, of terminals: where currents are those of a working device
    bool has_steps;             // current or slope is published with a step: it is not asked for continuity
    bool has_numeric;           // derivatives from differences can be chosen
    bool charges_bend = false;  // capacitances have a step, where inversion begins
};
std::ostream& operator<<(std::ostream& out, const device& d) { return out << d.name; }

std::vector<device> devices() {
    const std::vector<std::pair<std::string, double>> junction = {{"cj0", 2e-12}, {"tt", 5e-9}, {"m", 0.4},
                                                                  {"area", 1.5},  {"bv", 3},    {"n_em", 1.2}};
    std::vector<device> all = {
        {"diode", "diode", {}, -1.0, 0.9, false, false},
        {"diode_r", "diode_r", {}, -1.0, 1.5, true, false},
        {"diode_spice_1", "diode_spice_1", junction, -4.0, 0.9, true, true},
    };
    const auto add = [&](const std::string& name, const std::string& element,
                         const std::vector<std::pair<std::string, double>>& words, double low, double high,
                         bool has_steps, bool has_numeric, const std::vector<std::pair<std::string, double>>& more) {
        all.push_back({name, element, words, low, high, has_steps, has_numeric});
        all.back().words.insert(all.back().words.end(), more.begin(), more.end());
    };
    add("diode_spice_1_smooth", "diode_spice_1", junction, -4.0, 0.9, false, true, {{"bv_cont", 1}});
    add("diode_spice_3_smooth", "diode_spice_3", junction, -4.0, 0.9, false, false, {{"bv_cont", 1}});
    add("diode_spice_3a", "diode_spice_3a", junction, -4.0, 0.9, true, false, {});
    add("diode_r_spice_3", "diode_r_spice_3", {}, -1.0, 1.5, true, false, {});

    const std::vector<std::pair<std::string, double>> bipolar = {
        {"bf", 80},     {"br", 2},     {"vaf", 40}, {"var", 12},    {"ikf", 20e-3}, {"ikr", 5e-3},  {"ise", 1e-14},
        {"isc", 2e-14}, {"ne", 1.7},   {"nc", 1.6}, {"cje", 3e-12}, {"cjc", 2e-12}, {"cjs", 1e-12}, {"mjs", 0.4},
        {"tf", 0.4e-9}, {"tr", 20e-9}, {"xtf", 3},  {"vtf", 2},     {"itf", 50e-3}, {"xtb", 1.5},   {"area", 1.3}};
    const std::vector<std::pair<std::string, double>> junction_fet = {
        {"beta", 1.2e-3}, {"lambda", 0.02}, {"cgs", 3e-12}, {"cgd", 2e-12}, {"area", 1.4}};
    const std::vector<std::pair<std::string, double>> mos = {
        {"kp", 5e-5},    {"gamma", 0.45}, {"phi", 0.65},   {"tox", 2.5e-8}, {"cgso", 3e-10}, {"cgdo", 3e-10},
        {"cgbo", 2e-10}, {"cj", 2e-4},    {"cjsw", 2e-10}, {"as", 4e-11},   {"ad", 4e-11},   {"ps", 3e-5},
        {"pd", 3e-5},    {"w", 1e-5},     {"l", 2e-6},     {"js", 1e-5}};
    for (const double pol : {1.0, -1.0}) {
        const std::string type = pol > 0 ? "n" : "p";
        add("bjt_spice_5_" + type, "bjt_spice_5", bipolar, -1.0, 1.0, false, true, {{"pol", pol}});
        add("bjt_spice_6_" + type, "bjt_spice_6", bipolar, -1.0, 1.0, false, false, {{"pol", pol}});
        add("jfet_spice_1_" + type, "jfet_spice_1", junction_fet, -3.0, 3.0, false, true, {{"pol", pol}});
        add("jfet_spice_1_level_2_" + type, "jfet_spice_1", junction_fet, -3.0, 3.0, false, true,
            {{"pol", pol}, {"level", 2}});
        const std::vector<std::pair<std::string, double>> level_1 = {
            {"pol", pol}, {"vt0", 0.6 * pol}, {"lambda", 0.03}};
        add("mos_level1_" + type, "mos_level1", mos, -3.0, 3.0, true, true, level_1);
        // The threshold has a published bend at a bulk of 2 phi above the source.
        add("mos_level1_inside_" + type, "mos_level1", mos, -0.6, 0.6, false, false, level_1);
        all.back().charges_bend = true;
        add("mos_level3_" + type, "mos_level3", mos, -3.0, 3.0, true, true,
            {{"pol", pol},
             {"vt0", 0.8 * pol},
             {"nsub", 1e16},
             {"theta", 0.1},
             {"eta", 0.05},
             {"xj", 0.3e-6},
             {"vmax", 1e5},
             {"delta", 0.5},
             {"kappa", 0.3}});
        add("mos_bsim1_" + type, "mos_bsim1", {}, -3.0, 3.0, true, true, {{"pol", pol}});
    }
    add("jfet_spice_2", "jfet_spice_2", {}, -3.0, 3.0, false, false, {});
    return all;
}

class every_device : public ::testing::TestWithParam<device> {
protected:
    void SetUp() override {
        const device& d = GetParam();
        ASSERT_GE(installed_ebes().list.find(d.element), 0);
        set(u, d);
        n_nd = u.lib.list.node.count(u.e);
        n_f = u.jac.n_f;
        has_charges = n_f > n_nd;
    }
    static void set(model_unit& to, const device& d) {
        for (const auto& [word, value] : d.words)
            if (const int j = to.lib.list.iprm.find(to.e, word); j >= 0)
                to.x.iparm[static_cast<std::size_t>(j)] = static_cast<int>(value);
            else
                to.r(word) = value;
        to.prepare();
    }
    // Functions, and derivatives as [function][terminal], at these voltages.
    struct answer {
        std::vector<double> f, jac;
    };
    answer at(const std::vector<double>& v) { return at(u, v); }
    answer at(model_unit& w, const std::vector<double>& v) const {
        std::copy(v.begin(), v.end(), w.x.v.begin());
        std::fill(w.jac.store.begin(), w.jac.store.end(), 0.0);
        w.call(&flags_class::trns, &flags_class::function, &flags_class::jacobian, &flags_class::newton_first);
        answer a;
        a.f.assign(w.x.f.begin(), w.x.f.begin() + n_f);
        for (int j = 0; j < n_f; ++j) a.jac.insert(a.jac.end(), w.jac.dfdv[j], w.jac.dfdv[j] + n_nd);
        return a;
    }
    std::vector<double> random_voltages() {
        std::uniform_real_distribution<double> number(GetParam().low, GetParam().high);
        std::vector<double> v(static_cast<std::size_t>(n_nd));
        for (double& x : v) x = number(rng);
        return v;
    }
    void random_temperature(model_unit& w) {
        if (w.lib.list.rprm.find(w.e, "temp") < 0) return;
        w.r("temp") = std::uniform_real_distribution<double>(230, 420)(rng);
        w.prepare();
    }
    std::size_t cell(int j, int k) const { return static_cast<std::size_t>(j * n_nd + k); }

    model_unit u{GetParam().element};
    int n_nd = 0, n_f = 0;
    bool has_charges = false;
    int n_compared = 0;
    std::mt19937 rng{15};
};
class every_device_with_a_numeric_form : public every_device {};
class every_device_without_steps : public every_device {};

std::vector<device> devices_where(bool (*holds)(const device&)) {
    std::vector<device> all = devices();
    std::erase_if(all, [&](const device& d) { return !holds(d); });
    return all;
}
const auto name_of = [](const auto& d) { return d.param.name; };
INSTANTIATE_TEST_SUITE_P(, every_device, ::testing::ValuesIn(devices()), name_of);
INSTANTIATE_TEST_SUITE_P(, every_device_with_a_numeric_form,
                         ::testing::ValuesIn(devices_where([](const device& d) { return d.has_numeric; })), name_of);
INSTANTIATE_TEST_SUITE_P(, every_device_without_steps,
                         ::testing::ValuesIn(devices_where([](const device& d) { return !d.has_steps; })), name_of);

TEST_P(every_device, has_the_derivatives_of_its_functions_at_a_thousand_biases_and_temperatures) {
    for (int trial = 0; trial < 1000; ++trial) {
        if (trial % 10 == 0) random_temperature(u);
        const std::vector<double> v = random_voltages();
        const answer here = at(v);
        for (int k = 0; k < n_nd; ++k) {
            // Two differences: where they disagree, a border or rounding lies between, and nothing can be said.
            const auto difference = [&](double h, int j) {
                std::vector<double> above = v, below = v;
                above[static_cast<std::size_t>(k)] += h;
                below[static_cast<std::size_t>(k)] -= h;
                return (at(above).f[static_cast<std::size_t>(j)] - at(below).f[static_cast<std::size_t>(j)]) / (2 * h);
            };
            for (int j = 0; j < n_f; ++j) {
                const double f = std::abs(here.f[static_cast<std::size_t>(j)]);
                const double d_1 = difference(1e-5, j), d_2 = difference(2e-5, j);
                // A function may be the sum of the others of its kind.
                double largest = 0;
                const int first = j < n_nd ? 0 : n_nd;
                for (int i = first; i < first + n_nd; ++i)
                    largest = std::max(largest, std::abs(here.f[static_cast<std::size_t>(i)]));
                const double rounding = 2e-10 * largest + (j < n_nd ? 1e-16 : 1e-26);
                const double unsure = std::abs(d_1 - d_2);
                if (unsure > 1e-3 * std::abs(d_1) + rounding) continue;
                ++n_compared;
                EXPECT_NEAR(here.jac[cell(j, k)], d_1, 1e-6 * std::abs(d_1) + unsure + rounding)
                    << "function " << j << ", terminal " << k << ", f " << f << ", v " << ::testing::PrintToString(v);
            }
        }
        if (HasFailure()) return;
    }
    EXPECT_GT(n_compared, 900 * n_nd * n_f);
}

TEST_P(every_device_with_a_numeric_form, has_numeric_derivatives_near_the_analytic_ones) {
    model_unit numeric(GetParam().element);
    set(numeric, GetParam());
    numeric.x.iparm[0] = 1;
    int n_near = 0;
    for (int trial = 0; trial < 1000; ++trial) {
        const std::vector<double> v = random_voltages();
        const answer a = at(v), b = at(numeric, v);
        EXPECT_EQ(a.f, b.f);
        // A step of 1 mV is a few hundredths of n vt.
        for (std::size_t c = 0; c < a.jac.size(); ++c)
            n_near +=
                std::abs(a.jac[c] - b.jac[c]) <= 0.05 * std::abs(a.jac[c]) + 1e-10 * (c < cell(n_nd, 0) ? 1 : 1e-9);
    }
    EXPECT_GT(n_near, 980 * n_nd * n_f);
}

TEST_P(every_device, has_currents_and_charges_of_its_terminals_that_sum_to_zero) {
    for (int trial = 0; trial < 1000; ++trial) {
        if (trial % 10 == 0) random_temperature(u);
        const answer a = at(random_voltages());
        for (int first : {0, n_nd}) {
            if (first == n_nd && !has_charges) break;
            double sum = 0, size = 0;
            for (int j = first; j < first + n_nd; ++j) {
                sum += a.f[static_cast<std::size_t>(j)];
                size += std::abs(a.f[static_cast<std::size_t>(j)]);
            }
            EXPECT_LE(std::abs(sum), 1e-14 * size);
            // So do the derivatives of a column; of a row, as only differences of voltages count.
            double large = 0;
            for (int c = 0; c < n_nd * n_nd; ++c)
                large = std::max(large, std::abs(a.jac[cell(first, 0) + static_cast<std::size_t>(c)]));
            for (int k = 0; k < n_nd; ++k) {
                double column = 0, row = 0;
                for (int j = 0; j < n_nd; ++j) {
                    column += a.jac[cell(first + j, k)];
                    row += a.jac[cell(first + k, j)];
                }
                EXPECT_LE(std::abs(column), 1e-12 * large);
                EXPECT_LE(std::abs(row), 1e-12 * large);
            }
        }
        if (HasFailure()) return;
    }
}

TEST_P(every_device, answers_the_same_whatever_was_asked_before) {
    for (int trial = 0; trial < 200; ++trial) {
        const std::vector<double> v = random_voltages();
        model_unit fresh(GetParam().element);
        set(fresh, GetParam());
        const answer a = at(fresh, v);
        at(random_voltages());
        const answer b = at(v);
        EXPECT_EQ(a.f, b.f);
        EXPECT_EQ(a.jac, b.jac);
    }
}

TEST_P(every_device, answers_any_voltage_up_to_a_million_with_finite_numbers) {
    std::uniform_real_distribution<double> exponent(-3, 6);
    for (int trial = 0; trial < 5000; ++trial) {
        std::vector<double> v(static_cast<std::size_t>(n_nd));
        for (double& x : v) x = (rng() % 2 ? 1 : -1) * std::pow(10.0, exponent(rng));
        const answer a = at(v);
        for (double x : a.f) ASSERT_TRUE(std::isfinite(x)) << ::testing::PrintToString(v);
        for (double x : a.jac) ASSERT_TRUE(std::isfinite(x)) << ::testing::PrintToString(v);
    }
}

// Along random lines: functions have no jump, and where the slope between two points changes most, the change goes away
// as the points come near.
TEST_P(every_device_without_steps, has_functions_and_first_derivatives_without_steps) {
    constexpr int n_point = 400;
    for (int trial = 0; trial < 60; ++trial) {
        const std::vector<double> a = random_voltages(), b = random_voltages();
        const auto slopes_at = [&](double s, answer& here) {
            std::vector<double> v(a);
            for (std::size_t k = 0; k < v.size(); ++k) v[k] += s * (b[k] - a[k]);
            here = at(v);
            std::vector<double> slope(static_cast<std::size_t>(n_f), 0.0);
            for (int j = 0; j < n_f; ++j)
                for (int k = 0; k < n_nd; ++k)
                    slope[static_cast<std::size_t>(j)] +=
                        here.jac[cell(j, k)] * (b[static_cast<std::size_t>(k)] - a[static_cast<std::size_t>(k)]);
            return slope;
        };
        std::vector<std::vector<double>> slope, value;
        for (int i = 0; i <= n_point; ++i) {
            answer here;
            slope.push_back(slopes_at(i / double(n_point), here));
            value.push_back(here.f);
        }
        const int n_smooth = GetParam().charges_bend ? n_nd : n_f;
        // A function may be the sum of the others of its kind: their last digit is its own.
        double size[2] = {}, steepest[2] = {};
        for (std::size_t i = 0; i <= n_point; ++i)
            for (int j = 0; j < n_f; ++j) {
                const auto jj = static_cast<std::size_t>(j);
                size[j < n_nd ? 0 : 1] = std::max(size[j < n_nd ? 0 : 1], std::abs(value[i][jj]));
                steepest[j < n_nd ? 0 : 1] = std::max(steepest[j < n_nd ? 0 : 1], std::abs(slope[i][jj]));
            }
        for (std::size_t j = 0; j < static_cast<std::size_t>(n_smooth); ++j) {
            const std::size_t kind = static_cast<int>(j) < n_nd ? 0 : 1;
            std::size_t worst = 0;
            double most = 0;
            for (std::size_t i = 0; i < n_point; ++i) {
                const double change = std::abs(slope[i + 1][j] - slope[i][j]);
                if (change > most) {
                    most = change;
                    worst = i;
                }
            }
            if (most == 0) continue;
            double s_0 = double(worst) / n_point, s_1 = double(worst + 1) / n_point;
            answer h_0, h_1, h_m;
            double left = slope[worst][j], right = slope[worst + 1][j];
            for (int half = 0; half < 24; ++half) {
                const double s_m = 0.5 * (s_0 + s_1), middle = slopes_at(s_m, h_m)[j];
                if (std::abs(middle - left) > std::abs(right - middle)) {
                    s_1 = s_m;
                    right = middle;
                } else {
                    s_0 = s_m;
                    left = middle;
                }
            }
            EXPECT_LE(std::abs(right - left), 1e-4 * most + 1e-9 * steepest[kind])
                << "slope of function " << j << " at " << s_0 << " from " << ::testing::PrintToString(a) << " to "
                << ::testing::PrintToString(b);
            slopes_at(s_0, h_0);
            slopes_at(s_1, h_1);
            const double step = std::abs(h_1.f[j] - h_0.f[j]),
                         expected = std::max(std::abs(left), std::abs(right)) * (s_1 - s_0);
            EXPECT_LE(step, 2 * expected + 1e-14 * size[kind]) << "function " << j << " at " << s_0;
        }
        if (HasFailure()) return;
    }
}
}  // namespace
