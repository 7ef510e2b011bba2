// What holds for every element of this build.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <set>

#include "base/list_file.h"
#include "model_unit.h"

void get_ebe_by_number(const int i_ebes, const int i_ebeu, int* iparm, char** sparm, double* rparm, double* stparm,
                       double* igparm, double* v, double* vind, double* curind, double* aux, double* vr, double* xvr,
                       double* auxs, double* locv, double* v_new, double* aux_new, double* auxs_new, int* dvar,
                       double* f, ebes1_class* jac, flags_class* flags, dp_class* dp, math_cnst_class* math_cnst);
void get_ebe_by_list(const int i_element, const int i_ebeu, int* iparm, char** sparm, double* rparm, double* stparm,
                     double* igparm, double* v, double* vind, double* curind, double* aux, double* vr, double* xvr,
                     double* auxs, double* locv, double* v_new, double* aux_new, double* auxs_new, int* dvar, double* f,
                     ebes1_class* jac, flags_class* flags, dp_class* dp, math_cnst_class* math_cnst);

namespace {

std::vector<std::string> names_of(const basic_library& lib) {
    std::vector<std::string> all;
    for (int e = 0; e < lib.n(); ++e) all.push_back(lib.list.entry.str(e));
    return all;
}

TEST(registration, every_name_has_an_entry_and_every_entry_a_function) {
    ASSERT_EQ(n_ebe_registrations, installed_ebes().n());
    ASSERT_EQ(n_ebe_ac_registrations, installed_ebac().n());
    for (const std::string& name : names_of(installed_ebes())) EXPECT_NE(find_model<ebe_call>(name), nullptr) << name;
    for (const std::string& name : names_of(installed_ebac()))
        EXPECT_NE(find_model<ebe_ac_call>(name), nullptr) << name;
    for (int i = 0; i < n_ebe_registrations; ++i)
        EXPECT_GE(installed_ebes().list.find(ebe_registrations[i].name), 0) << ebe_registrations[i].name;
    for (int i = 0; i < n_ebe_ac_registrations; ++i)
        EXPECT_GE(installed_ebac().list.find(ebe_ac_registrations[i].name), 0) << ebe_ac_registrations[i].name;
    EXPECT_EQ(find_model<ebe_call>("no_such_model"), nullptr);
    EXPECT_EQ(find_model<ebe_ac_call>("no_such_model"), nullptr);
}

TEST(registration, the_list_files_hold_every_entry) {
    const std::string share = TARNEL_SHARE;
    EXPECT_EQ(make_chrarray_5(share + "/ebe_all.lst", installed_ebes().list.entry).size(),
              static_cast<std::size_t>(installed_ebes().n()));
    EXPECT_EQ(make_chrarray_5(share + "/sse_all.lst", installed_ebac().list.entry).size(),
              static_cast<std::size_t>(installed_ebac().n()));
}

void randomise(model_unit& u, std::mt19937& rng) {
    std::uniform_real_distribution<double> number(-0.8, 0.8);
    for (std::vector<double>* a : {&u.x.v, &u.x.vind, &u.x.curind, &u.x.aux, &u.x.vr, &u.x.xvr, &u.x.auxs, &u.x.locv,
                                   &u.x.v_new, &u.x.aux_new, &u.x.auxs_new, &u.x.f, &u.x.stparm})
        for (double& x : *a) x = number(rng);
    for (int& x : u.x.dvar) x = static_cast<int>(rng() % 3);
    u.flags.time_given = number(rng);
    if (u.lib.list.entry.str(u.e) == "clock_pwl20") u.flags.time_given += 0.8;  // it stops before time 0
}

using mode = int flags_class::*;
constexpr mode modes[] = {&flags_class::dc, &flags_class::trns, &flags_class::startup};

// Modes in which an element stops the run with a text of its own.
bool refused(const std::string& name, mode m) { return m == &flags_class::dc && refuses_dc(name); }

// General variables that an element defines.
int n_defined(const std::string& name) {
    static const std::map<std::string, int> n = {{"ammeter_fb", 1}, {"bldc1", 2}, {"dcmc", 1},     {"dcmc_1", 1},
                                                 {"indmc", 2},      {"pmsm", 2},  {"syncmc_1", 2}, {"voltmeter_fb", 1}};
    const auto it = n.find(name);
    return it == n.end() ? 0 : it->second;
}

class every_element : public ::testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(, every_element, ::testing::ValuesIn(names_of(installed_ebes())),
                         [](const auto& element) { return element.param; });

TEST_P(every_element, changes_nothing_when_no_flag_is_on) {
    std::mt19937 rng(1);
    model_unit u(GetParam());
    u.prepare();
    randomise(u, rng);
    for (double& x : u.jac.store) x = 3;
    const model_numbers before = u.x;
    const std::vector<double> jac_before = u.jac.store;
    u.call();
    EXPECT_EQ(u.x, before);
    EXPECT_EQ(u.jac.store, jac_before);
}

TEST_P(every_element, fills_functions_and_derivatives_each_only_when_asked) {
    std::mt19937 rng(2);
    for (const mode m : modes) {
        if (refused(GetParam(), m)) continue;
        model_unit u(GetParam());
        u.prepare();
        randomise(u, rng);
        std::fill(u.jac.store.begin(), u.jac.store.end(), 0.0);
        const std::vector<double> f_before = u.x.f, jac_before = u.jac.store;
        u.call(m, &flags_class::function);
        EXPECT_EQ(u.jac.store, jac_before);
        const std::vector<double> f_alone = u.x.f;
        u.x.f = f_before;
        u.call(m, &flags_class::jacobian);
        EXPECT_EQ(u.x.f, f_before);
        const std::vector<double> jac_alone = u.jac.store;
        std::fill(u.jac.store.begin(), u.jac.store.end(), 0.0);
        u.call(m, &flags_class::function, &flags_class::jacobian);
        EXPECT_EQ(u.x.f, f_alone);
        EXPECT_EQ(u.jac.store, jac_alone);
    }
}

// Every partial derivative, declared or not, against the central difference of the functions. The switch of the control
// and the knee of a curve are met with probability 0.
TEST_P(every_element, has_the_derivatives_of_its_functions) {
    std::mt19937 rng(3);
    for (int trial = 0; trial < 60; ++trial) {
        const mode m = modes[trial % 3];
        if (refused(GetParam(), m)) continue;
        model_unit u(GetParam());
        // Of a junction that carries amperes a small derivative beside is lost in the difference.
        if (GetParam().starts_with("mos_level")) u.r("i_max") = 1e-4;
        u.prepare();
        randomise(u, rng);
        std::fill(u.jac.store.begin(), u.jac.store.end(), 0.0);
        u.call(m, &flags_class::jacobian);
        struct group {
            std::vector<double> model_numbers::*x;
            double** table;
            int n;
        };
        const library_lists& l = u.lib.list;
        const group groups[] = {{&model_numbers::v, u.jac.dfdv, l.node.count(u.e)},
                                {&model_numbers::vind, u.jac.dfdvind, l.ind_node.count(u.e)},
                                {&model_numbers::curind, u.jac.dfdcurind, l.ind_branch.count(u.e)},
                                {&model_numbers::aux, u.jac.dfdaux, l.aux.count(u.e)},
                                {&model_numbers::vr, u.jac.dfdvr, l.vr.count(u.e)},
                                {&model_numbers::auxs, u.jac.dfdauxs, l.auxs.count(u.e)}};
        // Linear, and a large current stands beside a small derivative.
        const double h = GetParam() == "spdt1" ? 1e-2 : 1e-6;
        for (const group& g : groups)
            for (int k = 0; k < g.n; ++k) {
                const auto f_at = [&](double dx) {
                    const model_numbers kept = u.x;
                    (u.x.*g.x)[static_cast<std::size_t>(k)] += dx;
                    u.call(m, &flags_class::function);
                    const std::vector<double> f = u.x.f;
                    u.x = kept;
                    return f;
                };
                const std::vector<double> above = f_at(h), below = f_at(-h);
                // What the differences do not resolve: last digits of the functions, of which some are sums of others.
                double largest = 0;
                for (const double f : above) largest = std::max(largest, std::abs(f));
                const double unresolved = 2 * std::numeric_limits<double>::epsilon() * largest / h;
                for (int j = 0; j < u.jac.n_f; ++j) {
                    const auto jj = static_cast<std::size_t>(j);
                    const double difference = (above[jj] - below[jj]) / (2 * h);
                    EXPECT_NEAR(g.table[j][k], difference, 1e-6 * std::max(1e-3, std::abs(difference)) + unresolved)
                        << "function " << j << ", variable " << k;
                }
            }
    }
}

TEST_P(every_element, writes_derivatives_only_where_its_lines_declare_them) {
    std::mt19937 rng(4);
    const int kinds[] = {kind_v, kind_locv, kind_vind, kind_curind, kind_vr, kind_aux, kind_auxs};
    model_unit u(GetParam());
    u.prepare();
    randomise(u, rng);
    std::fill(u.jac.store.begin(), u.jac.store.end(), 0.0);
    for (const mode m : modes)
        if (!refused(GetParam(), m)) u.call(m, &flags_class::jacobian);
    for (std::size_t i = 0; i < 7; ++i) {
        const jacobian_map::one_kind& declared = u.lib.map.entry[static_cast<std::size_t>(u.e)][i];
        for (int j = 0; j < u.jac.n_f; ++j)
            for (int k = 0; k < declared.n_var; ++k) {
                if (declared.map[static_cast<std::size_t>(j * declared.n_var + k)] >= 0) continue;
                EXPECT_EQ(u.jac.store[static_cast<std::size_t>(u.jac.offset(kinds[i], j, k))], 0.0)
                    << "kind " << kinds[i] << ", function " << j << ", variable " << k;
            }
    }
}

// What drives a single node has the reference node for the other one.
TEST_P(every_element, has_currents_of_its_terminals_that_sum_to_zero) {
    std::mt19937 rng(5);
    const ebes_class& lib = installed_ebes();
    if (lib.list.node.count(lib.list.find(GetParam())) == 1) return;
    for (const mode m : modes) {
        if (refused(GetParam(), m)) continue;
        model_unit u(GetParam());
        u.prepare();
        randomise(u, rng);
        u.call(m, &flags_class::function);
        const function_table& t = u.lib.func;
        const int first = t.first_f[static_cast<std::size_t>(u.e)];
        double sum = 0, size = 0;
        for (int j = 0; j < u.jac.n_f; ++j) {
            const auto k = static_cast<std::size_t>(first + j);
            const bool counts = m == &flags_class::startup ? t.startup_kcl[k] : t.flag_kcl[k];
            if (counts) sum += u.x.f[static_cast<std::size_t>(j)];
            if (counts) size += std::abs(u.x.f[static_cast<std::size_t>(j)]);
        }
        EXPECT_LE(std::abs(sum), 1e-12 * size);
    }
}

TEST_P(every_element, answers_a_first_guess_without_functions_or_derivatives) {
    model_unit u(GetParam());
    u.prepare();
    std::fill(u.jac.store.begin(), u.jac.store.end(), 2.0);
    const std::vector<double> f = u.x.f, jac = u.jac.store;
    u.call(&flags_class::init_guess);
    EXPECT_EQ(u.x.f, f);
    EXPECT_EQ(u.jac.store, jac);
}

TEST_P(every_element, counts_its_functions_as_its_unknowns_ask) {
    const ebes_class& lib = installed_ebes();
    const int e = lib.list.find(GetParam());
    const function_table& t = lib.func;
    int n_general = 0, n_startup = 0;
    for (int k = t.first_f[static_cast<std::size_t>(e)]; k < t.first_f[static_cast<std::size_t>(e) + 1]; ++k) {
        n_general += t.flag_gnrl[static_cast<std::size_t>(k)];
        n_startup += t.func_startup[static_cast<std::size_t>(k)];
    }
    if (lib.flag.startup_sprt[static_cast<std::size_t>(e)]) {
        EXPECT_EQ(n_startup, lib.list.node.count(e) + lib.list.auxs.count(e) + n_defined(GetParam()));
        // state-free rows of start-up forms are general functions too
        EXPECT_EQ(n_general, lib.list.aux.count(e) + n_defined(GetParam()));
    } else {
        EXPECT_EQ(n_general, n_defined(GetParam()));
        EXPECT_EQ(lib.list.aux.count(e), 0);
    }
}

// ---- generated dispatch

void through_list(model_unit& u, int i_element) {
    model_numbers& x = u.x;
    get_ebe_by_list(i_element, 0, x.iparm.data(), u.sparm.data(), x.rparm.data(), x.stparm.data(), x.igparm.data(),
                    x.v.data(), x.vind.data(), x.curind.data(), x.aux.data(), x.vr.data(), x.xvr.data(), x.auxs.data(),
                    x.locv.data(), x.v_new.data(), x.aux_new.data(), x.auxs_new.data(), x.dvar.data(), x.f.data(),
                    &u.jac, &u.flags, &u.dp, &u.math_cnst);
}
void by_number(model_unit& u, int i_ebes) {
    model_numbers& x = u.x;
    get_ebe_by_number(i_ebes, 0, x.iparm.data(), u.sparm.data(), x.rparm.data(), x.stparm.data(), x.igparm.data(),
                      x.v.data(), x.vind.data(), x.curind.data(), x.aux.data(), x.vr.data(), x.xvr.data(),
                      x.auxs.data(), x.locv.data(), x.v_new.data(), x.aux_new.data(), x.auxs_new.data(), x.dvar.data(),
                      x.f.data(), &u.jac, &u.flags, &u.dp, &u.math_cnst);
}

TEST(generated_dispatch, calls_the_model_by_library_number_or_through_the_list) {
    const int i_r = installed_ebes().list.find("r");
    for (const bool list : {false, true}) {
        model_unit u("r");
        u.flags.map_global_ebe = {99, i_r};
        u.r("r") = 4;
        u.flags.one_time_parms = 1;
        list ? through_list(u, 1) : by_number(u, i_r);
        EXPECT_EQ(u.r("g"), 0.25);
    }
}

TEST(generated_dispatch, does_nothing_at_all_for_an_unknown_selector) {
    const int unknown = installed_ebes().n() + 7;
    for (const bool list : {false, true}) {
        model_unit u("r");
        u.flags.map_global_ebe = {unknown};
        u.flags.one_time_parms = 1;
        u.r("r") = 4;
        const model_numbers before = u.x;
        list ? through_list(u, 0) : by_number(u, unknown);
        EXPECT_EQ(u.x, before);
    }
}

}  // namespace
