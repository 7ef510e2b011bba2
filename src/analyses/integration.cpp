#include "analyses/integration.h"

#include <algorithm>
#include <type_traits>

#include "base/at.h"

namespace {
// Each rule: its constants, dx/dt, and what is added to the row f - dx/dt of a state; sums in the order in which they
// are to be added. x1, x2: x at the accepted points before.

struct back_euler {
    static void find_constants(solve_class& s) { s.now.cnst_be = 1.0 / s.now.delt; }
    const double c;
    explicit back_euler(const solve_class& s) : c(s.now.cnst_be) {}
    double rate(double x, double x1, double) const { return (x - x1) * c; }
    double term(double x, double x1, double) const { return -(x - x1) * c; }
};

// The mean of the rates at both ends of the step: the old one is known from functions at the accepted point.
struct trapezoidal {
    static void find_constants(solve_class& s) { s.now.cnst_trz = 2.0 / s.now.delt; }
    const double c;
    explicit trapezoidal(const solve_class& s) : c(s.now.cnst_trz) {}
    double rate(double x, double x1, double) const { return (x - x1) * c; }
    double term(double x, double x1, double) const { return -(x - x1) * c; }
};

// The derivative of the parabola through three points.
struct gear_2 {
    const double c0, c1, c2;
    explicit gear_2(const solve_class& s) : c0(s.now.cnst_gear_0), c1(s.now.cnst_gear_1), c2(s.now.cnst_gear_2) {}
    double rate(double x, double x1, double x2) const { return x * c2 - x1 * c0 + x2 * c1; }
    double term(double x, double x1, double x2) const { return x1 * c0 - x2 * c1 - x * c2; }
};
struct gear_2_fixed : gear_2 {
    using gear_2::gear_2;
    static void find_constants(solve_class& s) {
        s.now.cnst_gear_0 = 2.0 / s.now.delt;
        s.now.cnst_gear_1 = 0.5 / s.now.delt;
        s.now.cnst_gear_2 = 1.5 / s.now.delt;
    }
};
struct gear_2_variable : gear_2 {
    using gear_2::gear_2;
    static void find_constants(solve_class& s) {
        const double h = s.now.delt, h1 = s.now.delt_old_2;
        s.now.cnst_gear_0 = (h + h1) / (h * h1);
        s.now.cnst_gear_1 = h / (h1 * (h + h1));
        s.now.cnst_gear_2 = (2.0 * h + h1) / (h * (h + h1));
    }
};

// The second stage of TR-BDF2 (Bank et al. 1985), at the end of the step, behind a trapezoidal one of its part gamma.
struct bdf_2 {
    static void find_constants(solve_class& s) {
        const double h = s.now.delt, g = s.method.trbdf2_gamma;
        s.now.cnst_bdf2_0 = (2.0 - g) / (h * (1.0 - g));
        s.now.cnst_bdf2_1 = 1.0 / ((1.0 - g) * g * h);
        s.now.cnst_bdf2_2 = (1.0 - g) / (g * h);
    }
    const double c0, c1, c2;
    explicit bdf_2(const solve_class& s) : c0(s.now.cnst_bdf2_0), c1(s.now.cnst_bdf2_1), c2(s.now.cnst_bdf2_2) {}
    double rate(double x, double x1, double x2) const { return x * c0 - x1 * c1 + x2 * c2; }
    double term(double x, double x1, double x2) const { return -x * c0 + x1 * c1 - x2 * c2; }
};

template <class Rule>
constexpr bool takes_mean = std::is_same_v<Rule, trapezoidal>;

template <class Rule>
void rates_by(run_state& r) {
    kcl_derivatives& k = r.mat.kcl_ddt;
    const Rule rule(r.slv);
    const std::size_t n = k.f.size();
    const int* at_z = k.z.data();
    const double *z = r.c.ebeu.locv.data(), *z1 = r.mat.locv_old_1.data(), *z2 = r.mat.locv_old_2.data();
    const double *total_1 = k.total_1.data(), *still_1 = k.still_1.data();
    double* rate = k.rate.data();
    for (std::size_t d = 0; d < n; ++d) {
        const int i = at_z[d];
        rate[d] = rule.rate(z[i], z1[i], z2[i]);
        if constexpr (takes_mean<Rule>) rate[d] -= total_1[d] - still_1[d];
    }
}

template <class Rule>
void add_terms_by(run_state& r, bool only_function) {
    mat_class& mat = r.mat;
    const Rule rule(r.slv);
    for (int i = 0; i < mat.state.n(); ++i) {
        const int q = mat.state.col[at(i)];
        double x = 0.0, x1 = 0.0, x2 = 0.0;
        if (q >= 0) {
            x = mat.svec[at(q)];
            x1 = mat.svec_old_1[at(q)];
            x2 = mat.svec_old_2[at(q)];
        }
        double term = rule.term(x, x1, x2);
        if constexpr (takes_mean<Rule>) term += only_function ? 0.0 : mat.state.f_1[at(i)];
        mat.rhs_m[at(mat.state.row[at(i)])] += term;
    }
}

template <class Rule>
constexpr integration_rule row(int solve_state::*on, double solve_state::*factor) {
    return {on, Rule::find_constants, factor, rates_by<Rule>, add_terms_by<Rule>};
}
constexpr integration_rule rules[] = {
    row<back_euler>(&solve_state::flag_be, &solve_state::cnst_be),
    row<trapezoidal>(&solve_state::flag_trz, &solve_state::cnst_trz),
    row<gear_2_fixed>(&solve_state::flag_gear_fixed, &solve_state::cnst_gear_2),
    row<gear_2_variable>(&solve_state::flag_gear_var, &solve_state::cnst_gear_2),
    row<bdf_2>(&solve_state::flag_bdf2, &solve_state::cnst_bdf2_0),
};

const integration_rule* present_rule(const solve_class& slv) {
    for (const integration_rule& rule : rules)
        if (slv.now.*rule.on) return &rule;
    return nullptr;
}
}  // namespace

void find_trns_constants(solve_class& slv) {
    for (const integration_rule& rule : rules)
        if (slv.now.*rule.on) rule.find_constants(slv);
}

double method_constant(const solve_class& slv) {
    const integration_rule* rule = present_rule(slv);
    return rule ? slv.now.*rule->factor : 0.0;
}

void find_rates(run_state& r) {
    if (const integration_rule* rule = present_rule(r.slv))
        rule->find_rates(r);
    else
        std::fill(r.mat.kcl_ddt.rate.begin(), r.mat.kcl_ddt.rate.end(), 0.0);
}

void add_trns_terms(run_state& r, bool only_function) {
    if (const integration_rule* rule = present_rule(r.slv)) rule->add_terms(r, only_function);
}
