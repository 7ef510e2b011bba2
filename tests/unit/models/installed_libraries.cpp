// The libraries of this build as a whole: what they hold against what a library may hold, and what composites say of
// their elements.
#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <random>
#include <set>

#include "library/basic_form.h"
#include "library/composite/composite_reader.h"
#include "model_unit.h"

namespace {

// Every pool of a library of basic elements with its sum and its limit, fullest pools visible in the test's output.
void expect_room(const char* library, const basic_library& lib, const basic_form& form) {
    struct pool {
        std::string name;
        int sum, limit;
    };
    std::vector<pool> pools = {{"entries", lib.n(), form.max_entries - 1},  // index + 2 is held against the limit
                               {"functions", lib.func.n_ttlf(), form.max_functions},
                               {"dependencies", static_cast<int>(lib.func.var_flag.size()), form.max_dependencies}};
    for (const list_line& l : form.lines) {
        const int sum = std::visit(
            [&](auto member) {
                int n = 0;
                if constexpr (requires { (lib.list.*member).count(0); })
                    for (int e = 0; e < lib.n(); ++e) n += (lib.list.*member).count(e);
                return n;
            },
            l.member);
        pools.push_back({std::string(l.keyword), sum, l.max_words});
    }
    for (const pool& p : pools) {
        std::cout << library << ' ' << p.name << ' ' << p.sum << " of " << p.limit
                  << (p.sum >= 0.95 * p.limit ? "  nearly full" : "") << '\n';
        EXPECT_LE(p.sum, p.limit) << p.name;
    }
}

TEST(installed_libraries, fit_into_one_file_each) {
    expect_room("ebes", installed_ebes(), ebes_form);
    expect_room("ebac", installed_ebac(), ebac_form);
}

TEST(installed_libraries, have_first_guesses_only_where_they_are_planned) {
    const ebes_class& lib = installed_ebes();
    std::set<std::string> with;
    for (int e = 0; e < lib.n(); ++e)
        if (lib.list.ig.count(e) > 0) with.insert(lib.list.entry.str(e));
    EXPECT_EQ(with, (std::set<std::string>{"diode", "vsrcdc"}));
}

// ---- flag words

// Entries whose line says `pure=yes`: evaluation reads parameters and unknowns, and derivatives hang on parameters
// alone.
std::set<std::string> pure_entries() {
    std::set<std::string> pure;
    std::ifstream in(std::string(TARNEL_SHARE) + "/ebes.aux");
    for (std::string l; std::getline(in, l);)
        if (l.starts_with("ebe name=") && l.find(" pure=yes") != std::string::npos)
            pure.insert(l.substr(9, l.find(' ', 9) - 9));
    return pure;
}

TEST(pure_elements, are_all_but_those_with_a_state_a_curve_or_a_conductance_in_time) {
    std::set<std::string> others;
    const ebes_class& lib = installed_ebes();
    const std::set<std::string> pure = pure_entries();
    for (int e = 0; e < lib.n(); ++e)
        if (!pure.contains(lib.list.entry.str(e))) others.insert(lib.list.entry.str(e));
    EXPECT_EQ(others, (std::set<std::string>{"and_2",
                                             "battery_vsrc",
                                             "bjt_spice_5",
                                             "bjt_spice_6",
                                             "bldc1",
                                             "bridge_3ph_1",
                                             "c_delay",
                                             "cmprtr_1",
                                             "cmprtr_2",
                                             "cool_vccs_1",
                                             "cool_vccs_2",
                                             "cool_vccs_3",
                                             "cool_vccs_5",
                                             "cool_vcvs_1",
                                             "cool_vcvs_2",
                                             "dac1a",
                                             "dcmc",
                                             "dcmc_1",
                                             "diode",
                                             "diode_r",
                                             "diode_r_spice_3",
                                             "diode_spice_1",
                                             "diode_spice_3",
                                             "diode_spice_3a",
                                             "ground_dummy_1",
                                             "indmc",
                                             "jfet_spice_1",
                                             "jfet_spice_2",
                                             "l_theta",
                                             "mos_bsim1",
                                             "mos_level1",
                                             "mos_level3",
                                             "nand_2",
                                             "nor_2",
                                             "not",
                                             "or_2",
                                             "pmsm",
                                             "r_time",
                                             "sampler2",
                                             "solar_module_1b",
                                             "spdt",
                                             "spdt1",
                                             "spdt_boost",
                                             "spdt_buck",
                                             "switch_bi",
                                             "switch_bi_d",
                                             "switch_d",
                                             "switch_e",
                                             "switch_g1",
                                             "syncmc_1",
                                             "thyristor_g",
                                             "thyristor_g_2",
                                             "xfmr_level2_1ph",
                                             "xor_2"}));
    for (const std::string& name : pure)
        EXPECT_TRUE(lib.flag.jac_const[static_cast<std::size_t>(lib.list.find(name))]) << name;
}

// A charge or a state that an evaluation writes is a function of the point; nothing else may move.
TEST(pure_elements, have_derivatives_that_hang_on_parameters_alone_and_keep_their_parameters) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> number(-2, 2);
    for (const std::string& name : pure_entries())
        for (const auto mode : {&flags_class::dc, &flags_class::trns, &flags_class::startup}) {
            if (mode == &flags_class::dc && (name == "xfmr_basic_1" || name.starts_with("xfmr_level1"))) continue;
            model_unit u(name);
            u.prepare();
            std::vector<double> first;
            for (int trial = 0; trial < 5; ++trial) {
                for (std::vector<double>* a : {&u.x.v, &u.x.vind, &u.x.curind, &u.x.aux, &u.x.vr, &u.x.auxs})
                    for (double& x : *a) x = number(rng);
                u.flags.time_given = number(rng) + (name == "clock_pwl20" ? 2 : 0);  // that one stops before time 0
                model_numbers before = u.x;
                std::fill(u.jac.store.begin(), u.jac.store.end(), 0.0);
                u.call(mode, &flags_class::function, &flags_class::jacobian);
                if (trial == 0) first = u.jac.store;
                EXPECT_EQ(u.jac.store, first) << name;
                const std::vector<double> f = u.x.f;
                u.call(mode, &flags_class::function);
                EXPECT_EQ(u.x.f, f) << name;
                before.f = u.x.f;
                before.locv = u.x.locv;
                if (mode == &flags_class::startup) before.aux = u.x.aux;
                EXPECT_EQ(u.x, before) << name;
            }
        }
}

// ---- composites

std::string share(const char* file) { return std::string(TARNEL_SHARE) + '/' + file; }

// The library of composites, entry by entry: as a whole it may be larger than a working folder can hold.
std::vector<composite_library> installed_composites() {
    std::vector<composite_library> all;
    std::ifstream in(share("eels.aux"));
    text_file one;
    for (std::string l; std::getline(in, l);) {
        one.lines.push_back(l);
        if (l != "endece") continue;
        composite_library lib;
        read_composites(one, eels_form, installed_ebes(), installed_ebac(), lib);
        all.push_back(std::move(lib));
        one = {};
    }
    return all;
}

TEST(composites, have_the_terminals_and_defaults_of_the_element_of_their_name) {
    int n_seen = 0;
    for (const composite_library& c : installed_composites()) {
        ASSERT_EQ(c.n(), 1);
        const library_lists& basic = installed_ebes().list;
        const std::string name = c.list.entry.str(0);
        const int e = basic.find(name);
        if (e < 0) continue;
        ++n_seen;
        const auto expect_words = [&](const word_list& ours, const word_list& theirs) {
            ASSERT_EQ(ours.count(0), theirs.count(e)) << name;
            for (int j = 0; j < ours.count(0); ++j) EXPECT_EQ(ours.word(0, j), theirs.word(e, j)) << name;
        };
        expect_words(c.list.node, basic.node);
        expect_words(c.list.ind_node, basic.ind_node);
        expect_words(c.list.ind_branch, basic.ind_branch);
        expect_words(c.list.vr, basic.vr);
        expect_words(c.list.dgtl, basic.dgtl);
        const auto expect_defaults = [&](const auto& ours, const auto& theirs) {
            for (int j = 0; j < ours.count(0); ++j) {
                const int k = theirs.find(e, ours.word(0, j));
                if (k < 0) continue;  // of the small-signal half
                EXPECT_EQ(ours.value(0, j), theirs.value(e, k)) << name << ' ' << ours.word(0, j);
            }
        };
        expect_defaults(c.list.rprm, basic.rprm);
        expect_defaults(c.list.iprm, basic.iprm);
        expect_defaults(c.list.sv, basic.sv);
        expect_defaults(c.list.ig, basic.ig);
    }
    constexpr int n_parts = 2;  // mos_l1_r and mos_l3_r stand in other composites alone
    EXPECT_EQ(n_seen + n_parts, installed_ebes().n());
}

TEST(composites, pass_every_parameter_of_theirs_on_by_its_own_name) {
    for (const composite_library& c : installed_composites()) {
        if (c.be.n_be(0) != 1) continue;
        const library_lists& basic = installed_ebes().list;
        const int e = c.be.i_be[0];
        for (int j = 0; j < basic.rprm.count(e) && !c.flag.compute_rparms[0]; ++j) {  // those have values of their own
            const int own = c.list.rprm.find(0, basic.rprm.word(e, j));
            EXPECT_EQ(c.be.rprm_flag.row(0)[j], own) << c.list.entry[0] << ' ' << basic.rprm.word(e, j);
        }
        for (int j = 0; j < basic.sv.count(e); ++j)
            EXPECT_EQ(c.be.sv_flag.row(0)[j], c.list.sv.find(0, basic.sv.word(e, j))) << c.list.entry[0];
        for (int j = 0; j < basic.iprm.count(e); ++j)
            EXPECT_EQ(c.be.iprm_flag.row(0)[j], c.list.iprm.find(0, basic.iprm.word(e, j))) << c.list.entry[0];
    }
}

}  // namespace
