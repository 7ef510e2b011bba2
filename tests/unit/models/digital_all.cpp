// What holds for every digital element of this build.
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <set>

#include "base/list_file.h"
#include "digital_one.h"
#include "library/composite/composite_reader.h"

namespace {

std::vector<std::string> names() {
    std::vector<std::string> all;
    for (int e = 0; e < installed_dbes().n(); ++e) all.push_back(installed_dbes().list.entry.str(e));
    return all;
}

const std::set<std::string> planned = {
    "and_2",     "or_2",      "nand_2",         "nor_2",          "xor",       "not",        "dff",
    "dff1",      "jkff",      "jkff1",          "rsff1",          "rsff2",     "clock",      "clock1",
    "dsrc",      "dsrc1",     "clock_random",   "adc1",           "adc4",      "counter_2",  "counter_4",
    "counter_8", "decimal_4", "counter_4_gnrl", "counter_8_gnrl", "decimal_8", "mux_4_to_1", "demux_1_to_4"};

TEST(digital_elements, are_those_that_are_planned_each_with_a_function_and_a_place_in_the_list) {
    const std::vector<std::string> all = names();
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()), planned);
    EXPECT_EQ(n_dbe_registrations, static_cast<int>(planned.size()));
    for (const std::string& name : all) EXPECT_NE(find_model<dbe_call>(name), nullptr) << name;
    EXPECT_EQ(find_model<dbe_call>("no_such_model"), nullptr);
    EXPECT_EQ(make_chrarray_5(std::string(TARNEL_SHARE) + "/dbe_all.lst", installed_dbes().list.entry).size(),
              planned.size());
}

TEST(digital_elements, leave_aux_variables_and_first_guesses_empty) {
    for (int e = 0; e < installed_dbes().n(); ++e) {
        EXPECT_EQ(installed_dbes().list.aux.count(e), 0);
        EXPECT_EQ(installed_dbes().list.ig.count(e), 0);
    }
}

class every_digital_element : public ::testing::TestWithParam<std::string> {
protected:
    // Prepared, with numbers that tell whether somebody has written over them.
    digital_one random_unit(std::mt19937& rng) const {
        digital_one u(GetParam());
        u.prepare();
        for (auto* a : {&u.x.lparm, &u.x.stbl_in, &u.x.stbl_out, &u.x.val_in, &u.x.val_out, &u.x.val_in_old})
            for (int& v : *a) v = static_cast<int>(rng() % 2);
        for (double& v : u.x.val_anlg) v = static_cast<double>(rng() % 100) * 0.1 - 2;
        u.x.dstate = static_cast<int>(rng() % 2);
        u.x.stbl = static_cast<int>(rng() % 2);
        u.x.t_next = 1e-6;
        u.flags.time_given = 2e-6;
        return u;
    }
};
INSTANTIATE_TEST_SUITE_P(, every_digital_element, ::testing::ValuesIn(names()),
                         [](const auto& element) { return element.param; });

TEST_P(every_digital_element, changes_nothing_when_no_flag_is_on) {
    std::mt19937 rng(1);
    for (int trial = 0; trial < 50; ++trial) {
        digital_one u = random_unit(rng);
        const digital_numbers before = u.x;
        u.call();
        EXPECT_EQ(u.x, before);
        u.call(&flags_class::trns);  // neither fires nor reacts
        EXPECT_EQ(u.x, before);
        u.call(&flags_class::outvar_prm);
        EXPECT_EQ(u.x, before);
    }
}

TEST_P(every_digital_element, never_writes_its_inputs_or_what_the_deck_gives) {
    std::mt19937 rng(2);
    for (int trial = 0; trial < 50; ++trial)
        for (const auto mode : {&flags_class::one_time_parms, &flags_class::startup, &flags_class::init_guess,
                                &flags_class::process, &flags_class::schedule}) {
            digital_one u = random_unit(rng);
            u.x.dstate = 1;
            for (std::size_t k = 0; k < static_cast<std::size_t>(u.n_in); ++k)  // no set and reset together
                if (u.lib.list.dgtl.word(u.e, static_cast<int>(k)) == "s") u.x.val_in[k] = 0;
            const bool source = u.n_in == 0 && u.x.val_anlg.size() == 1;
            if (source && mode == &flags_class::schedule) continue;  // it would stop
            const digital_numbers before = u.x;
            u.call(mode);
            EXPECT_EQ(u.x.iparm, before.iparm);
            EXPECT_EQ(u.x.stparm, before.stparm);
            EXPECT_EQ(u.x.stbl_in, before.stbl_in);
            EXPECT_EQ(u.x.val_in, before.val_in);
            EXPECT_EQ(u.x.val_in_old, before.val_in_old);
            EXPECT_EQ(u.x.val_anlg, before.val_anlg);
            EXPECT_TRUE(u.x.stbl == 0 || u.x.stbl == 1);
            if (mode != &flags_class::one_time_parms) continue;
            EXPECT_EQ(u.x.lparm, before.lparm);  // it runs again at each point of a sweep
            EXPECT_EQ(u.outputs(), [&] {
                digital_one w = u;
                w.x = before;
                return w.outputs();
            }());
            EXPECT_EQ(u.x.dstate, before.dstate);
            EXPECT_EQ(u.x.stbl, before.stbl);
            EXPECT_EQ(u.x.t_next, before.t_next);
        }
}

TEST_P(every_digital_element, leaves_no_event_behind_the_time_of_a_call) {
    std::mt19937 rng(3);
    for (int trial = 0; trial < 50; ++trial)
        for (const auto mode : {&flags_class::startup, &flags_class::init_guess}) {
            digital_one u = random_unit(rng);
            u.x.stbl = 1;
            u.call(mode);
            if (u.x.stbl == 1) continue;
            EXPECT_GE(u.x.t_next, 2e-6);
        }
}

TEST_P(every_digital_element, gives_equal_answers_to_equal_start_ups) {
    std::mt19937 rng(4);
    digital_one u = random_unit(rng), w = u;
    u.startup();
    w.startup();
    EXPECT_EQ(u.x, w.x);
    w.startup();  // passes of a start-up repeat it
    EXPECT_EQ(u.x, w.x);
}

// ---- composites

TEST(digital_composites, have_the_nodes_parameters_and_defaults_of_the_element_of_their_name) {
    composite_library lib;
    text_file file;
    std::ifstream in(std::string(TARNEL_SHARE) + "/dels.aux");
    for (std::string l; std::getline(in, l);) file.lines.push_back(l);
    read_composites(file, dels_form, installed_dbes(), {}, lib);
    ASSERT_EQ(lib.n(), installed_dbes().n());
    const library_lists& basic = installed_dbes().list;
    for (int c = 0; c < lib.n(); ++c) {
        const std::string name = lib.list.entry.str(c);
        const int e = basic.find(name);
        ASSERT_GE(e, 0) << name;
        ASSERT_EQ(lib.list.dgtl.count(c), basic.dgtl.count(e)) << name;
        for (int j = 0; j < basic.dgtl.count(e); ++j) EXPECT_EQ(lib.list.dgtl.word(c, j), basic.dgtl.word(e, j));
        ASSERT_EQ(lib.list.ind_node.count(c), basic.ind_node.count(e)) << name;
        const int b = lib.be.first_be[static_cast<std::size_t>(c)];
        ASSERT_EQ(lib.be.n_be(c), 1);
        // every parameter of the composite reaches that of the element, with its default
        const auto expect_links = [&](const auto& ours, const auto& theirs, const row_table<int>& link) {
            for (int j = 0; j < theirs.count(e); ++j) {
                const int k = ours.find(c, theirs.word(e, j));
                EXPECT_EQ(link.row(b)[j], k) << name << ' ' << theirs.word(e, j);
                if (k < 0) continue;  // a constant that the model computes
                EXPECT_EQ(ours.value(c, k), theirs.value(e, j)) << name << ' ' << theirs.word(e, j);
            }
            for (int j = 0; j < ours.count(c); ++j) EXPECT_GE(theirs.find(e, ours.word(c, j)), 0) << name;
        };
        expect_links(lib.list.iprm, basic.iprm, lib.be.iprm_flag);
        expect_links(lib.list.rprm, basic.rprm, lib.be.rprm_flag);
        expect_links(lib.list.sv, basic.sv, lib.be.sv_flag);
    }
}

}  // namespace
