#include "tnl/elements/model_rules.h"

#include <gtest/gtest.h>

#include <cmath>

#include "installed_share.h"
#include "tnl/deck/installed.h"

namespace {

using namespace cli;

using values = std::map<std::string, double>;

bool broken(const std::string& text, const values& all) {
    return is_broken(limit_of(text), [&](const std::string& name) { return all.at(name); });
}

library_entry entry_with(const std::string& lines) {
    return {"e",
            "ebe name=e\n" + lines + "nodes: p n\niparms: n_pts=2\nrparms: r=1 t1=0 t2=0 t3=0\nC: compiled\nendebe\n"};
}
model_rules rules(const std::string& lines) {
    return rules_of(entry_with(lines), library_forms[find_library(&library_form::begin, "ebe")]);
}

TEST(limit, compares_sums_and_products_of_parameters_and_numbers) {
    EXPECT_TRUE(broken("r*k > 1e-9", {{"r", 1e-9}, {"k", 1}}));
    EXPECT_FALSE(broken("r*k > 1e-9", {{"r", 1e-9}, {"k", 2}}));
    EXPECT_TRUE(broken("a + 2*b <= c", {{"a", 1}, {"b", 1}, {"c", 2.9}}));
    EXPECT_FALSE(broken("a + 2*b <= c", {{"a", 1}, {"b", 1}, {"c", 3 - 1e-10}}));
    EXPECT_TRUE(broken("x != 0", {{"x", 0}}));
    EXPECT_TRUE(broken("a < b", {{"a", 1}, {"b", 1}}));
    EXPECT_FALSE(broken("a >= b", {{"a", INFINITY}, {"b", 1}}));
}

TEST(limit, of_three_sides_holds_where_both_comparisons_do) {
    for (const auto& [k, is_broken] : std::map<double, bool>{{-1, true}, {-0.5, false}, {1, true}, {2, true}})
        EXPECT_EQ(broken("-1 < k < 1", {{"k", k}}), is_broken) << k;
}

TEST(limit, with_a_condition_counts_where_that_holds) {
    EXPECT_TRUE(broken("pw <= per if per > 0", {{"pw", 2}, {"per", 1}}));
    EXPECT_FALSE(broken("pw <= per if per > 0", {{"pw", 2}, {"per", 0}}));
}

TEST(limit, of_a_value_that_is_not_known_is_not_broken) {
    EXPECT_FALSE(broken("r > 0", {{"r", NAN}}));
    EXPECT_FALSE(broken("a < b", {{"a", 1}, {"b", NAN}}));
    EXPECT_TRUE(broken("0 < a < b", {{"a", -1}, {"b", NAN}}));
    EXPECT_FALSE(broken("a < 0 if b > 0", {{"a", 1}, {"b", NAN}}));
}

TEST(limit, names_its_parameters_and_tells_whether_it_is_about_one) {
    EXPECT_EQ(limit_of("per >= tr + pw if per > 0").names, (std::vector<std::string>{"per", "tr", "pw"}));
    EXPECT_TRUE(limit_of("r*k_scale > 1e-9").is_of_one);
    EXPECT_TRUE(limit_of("-1 < k < 1").is_of_one);
    EXPECT_FALSE(limit_of("a <= b").is_of_one);
    EXPECT_FALSE(limit_of("a + b > 0").is_of_one);
    EXPECT_FALSE(limit_of("a > 0 if b > 0").is_of_one);
}

TEST(model_rules, are_read_from_the_comments_of_an_entry) {
    const model_rules all = rules("#= limit r > 0\n#= branch capacitor p n\n#= refuses dc\n#= jumps\n#  limit r > 5\n");
    ASSERT_EQ(all.limits.size(), 1U);
    EXPECT_EQ(all.limits[0].text, "r > 0");
    ASSERT_EQ(all.branches.size(), 1U);
    EXPECT_EQ(all.branches[0].to, "n");
    EXPECT_EQ(all.branches[0].kind, branch_kind::capacitor);
    EXPECT_TRUE(all.refuses_dc && all.jumps);
    EXPECT_EQ(all.faults, std::vector<std::string>{});
    EXPECT_FALSE(rules("").refuses_dc || rules("").jumps);
}

TEST(model_rules, name_the_parameters_that_a_composite_computes) {
    EXPECT_EQ(rules("#= computed r\n").computed, std::vector<std::string>{"r"});
    EXPECT_EQ(rules("#= computed x\n").faults.size(), 1U);
}

TEST(model_rules, stand_for_all_numbered_parameters_that_there_are) {
    const model_rules all = rules("#= limit t[k+1] >= t[k] if [k] < n_pts\n");
    ASSERT_EQ(all.limits.size(), 2U);
    EXPECT_EQ(all.limits[1].text, "t3 >= t2 if 2 < n_pts");
    EXPECT_EQ(all.limit_texts.size(), 1U);
}

TEST(model_rules, that_say_nothing_are_faults) {
    for (const char* line : {"limit x > 0", "limit t[k+1] >= t[k] if [k] < m", "limit", "branch coil p n",
                             "branch voltage p q", "branch voltage p", "refuses ac", "jump", ""})
        EXPECT_EQ(rules("#= " + std::string(line) + "\n").faults.size(), 1U) << line;
}

TEST(model_rules, tell_what_inputs_and_parameters_of_a_digital_element_are_to_each_other) {
    const model_rules all = rules(
        "#= expects 0 <= i0 <= 1\n#= pulses any r a b\n#= edges r b\n#= forces a i0 1\n#= forces b i0 n_pts\n"
        "#= excludes a b\ninput_nodes: a b\nstparms: i0=0\n");
    EXPECT_EQ(all.faults, std::vector<std::string>{});
    EXPECT_EQ(all.doubts.expects.size(), 1U);
    EXPECT_EQ(all.limits.size(), 0U);
    ASSERT_EQ(all.doubts.lost.size(), 3U);
    EXPECT_EQ(all.doubts.lost[1].input, "b");
    EXPECT_EQ(all.doubts.lost[2].what, lost_pulses::kind::edges);
    EXPECT_EQ(all.doubts.forced.size(), 2U);
    EXPECT_EQ(all.doubts.excluded.size(), 1U);
    for (const char* line : {"expects x > 0", "pulses 2 r a", "pulses 1 q a", "pulses 1 r p", "pulses 1 r", "edges r",
                             "edges r a b", "forces a i1 0", "forces a i0 x", "forces p i0 1", "excludes a p"})
        EXPECT_EQ(rules("#= " + std::string(line) + "\ninput_nodes: a b\nstparms: i0=0\n").faults.size(), 1U) << line;
}

TEST(model_rules, have_branches_between_nodes_or_to_the_reference_node) {
    const model_rules r = rules("#= branch conducting p reference\n#= branch voltage p n\n");
    ASSERT_EQ(r.branches.size(), 2U);
    EXPECT_EQ(r.branches[0].to, reference_end);
    EXPECT_EQ(r.branches[1].to, "n");
    for (const char* line : {"branch conducting reference p", "branch conducting p x", "branch conducting p"})
        EXPECT_EQ(rules("#= " + std::string(line) + "\n").faults.size(), 1U) << line;
}

TEST(model_rules, of_the_installed_elements_are_all_understood) {
    const installed_libraries libraries = read_installed(installed_share());
    std::size_t n_limits = 0;
    for (int i = 0; i < n_libraries; ++i)
        for (const library_entry& entry : libraries.library[i].entries) {
            const model_rules all = rules_of(entry, library_forms[i]);
            EXPECT_EQ(all.faults, std::vector<std::string>{}) << entry.name;
            // Composites without a function have those of their basic elements; of several elements, their own.
            const bool computes = entry.text.substr(0, entry.text.find('\n')).ends_with(" compute_rparms=yes");
            if (!library_forms[i].statement.empty()) {
                const std::size_t first = entry.text.find("\nebe ");
                const bool several =
                    entry.text.find("\ncallgce ") != std::string::npos ||
                    (first != std::string::npos && entry.text.find("\nebe ", first + 1) != std::string::npos);
                if (!several) {
                    EXPECT_EQ(all.limits.empty(), !computes) << entry.name;
                }
                EXPECT_EQ(all.computed.empty(), !computes) << entry.name;
            }
            n_limits += all.limits.size();
        }
    EXPECT_GT(n_limits, 50U);
}

}  // namespace
