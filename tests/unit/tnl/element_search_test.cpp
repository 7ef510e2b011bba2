// What is found for the words that somebody looks for.
#include "tnl/elements/element_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "../installed_share.h"
#include "../temp_folder.h"

namespace cli {

namespace {

element_sheet sheet(const std::string& name, const std::string& text) {
    element_sheet s;
    s.family = "g";
    s.group = "valves";
    s.name = name;
    s.description = {text};
    return s;
}

std::vector<std::string> names(const std::vector<element_sheet>& sheets) {
    std::vector<std::string> all;
    for (const element_sheet& s : sheets) all.push_back(s.name);
    return all;
}

const std::vector<element_sheet>& installed() {
    static const std::vector<element_sheet> all = all_sheets(read_installed(installed_share()));
    return all;
}

bool has(const std::vector<element_sheet>& sheets, const std::string& name) {
    return std::any_of(sheets.begin(), sheets.end(), [&](const element_sheet& s) { return s.name == name; });
}

using words = std::vector<std::string>;

}  // namespace

TEST(element_search, tells_names_whole_words_and_parts_of_words_apart) {
    const element_sheet s = sheet("gate_1", "Valves of a pipe with dead time");
    EXPECT_EQ(answer_of(s, "GATE_1"), answer::name);
    EXPECT_EQ(answer_of(s, "gate"), answer::whole);
    EXPECT_EQ(answer_of(s, "PIPE of"), answer::whole);
    EXPECT_EQ(answer_of(s, "valve"), answer::whole);
    EXPECT_EQ(answer_of(s, "pipes"), answer::whole);
    EXPECT_EQ(answer_of(s, "dead-time"), answer::whole);
    EXPECT_EQ(answer_of(s, "pip valve"), answer::part);
    EXPECT_EQ(answer_of(s, "a pip"), answer::part);
    EXPECT_EQ(answer_of(s, "ipe"), answer::part);
    EXPECT_EQ(answer_of(s, "a ipe"), answer::some);
    EXPECT_EQ(answer_of(s, "pe"), answer::none);
    EXPECT_EQ(answer_of(s, "pi"), answer::part);
    EXPECT_EQ(answer_of(s, "pipe inlet"), answer::some);
    EXPECT_EQ(answer_of(s, "inlet"), answer::none);
    EXPECT_EQ(answer_of(s, ""), answer::whole);
}

TEST(element_search, has_the_best_answers_first_and_some_words_alone_only_where_there_is_nothing_better) {
    const std::vector<element_sheet> all = {sheet("a", "spin"), sheet("b", "a pin of wood"), sheet("pin", "x"),
                                            sheet("c", "wood")};
    const search_result pin = search(all, "pin");
    EXPECT_EQ(names(pin.whole), (words{"pin", "b"}));
    EXPECT_EQ(names(pin.part), words{"a"});
    EXPECT_TRUE(pin.some.empty());
    EXPECT_EQ(names(search(all, "wood pin").whole), words{"b"});
    const search_result some = search(all, "wood iron");
    EXPECT_TRUE(some.whole.empty() && some.part.empty());
    EXPECT_EQ(names(some.some), (words{"b", "c"}));
    EXPECT_TRUE(search(all, "iron").some.empty());
}

TEST(element_search, finds_what_designers_look_for) {
    for (const auto& [looked_for, name] :
         std::vector<std::pair<std::string, std::string>>{{"pi controller", "pi"},
                                                          {"PI", "pi"},
                                                          {"pid", "pid"},
                                                          {"pid controllers", "pid"},
                                                          {"anti-windup", "pi"},
                                                          {"pwm", "pwm_carrier"},
                                                          {"pwm", "pwm_3ph"},
                                                          {"space vector", "svpwm"},
                                                          {"svpwm", "svpwm"},
                                                          {"droop", "droop"},
                                                          {"pll", "pll_1ph"},
                                                          {"phase locked loop", "pll_1a"},
                                                          {"integrator", "intgrtr"},
                                                          {"current control", "dq_current_control"},
                                                          {"solar", "solar_module"}})
        EXPECT_TRUE(has(search(installed(), looked_for).whole, name)) << looked_for;
    EXPECT_EQ(search(installed(), "pi").whole[0].name, "pi");
    EXPECT_EQ(search(installed(), "pid").whole[0].name, "pid");
}

TEST(element_search, reads_parts_of_the_trade_from_their_files) {
    const temp_folder folder;
    std::ofstream("b.par") << "# Z9: zener diode, 9.1 V. Typical figures\nemodel name=Z9 type=diode_rs bv=9\n";
    std::ofstream("a.par") << "# A7: rectifier. Of old\n# more: words\nemodel name=A7 type=diode_rs is=1n\n";
    std::ofstream("c.txt") << "# no part\nemodel name=X type=r\n";
    const std::vector<trade_part> parts = parts_in(".");
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(parts[0].name, "A7");
    EXPECT_EQ(parts[0].text, "rectifier");
    EXPECT_EQ(parts[1].text, "zener diode, 9.1 V");
    EXPECT_EQ(parts[1].type, "diode_rs");
    EXPECT_EQ(parts[1].file.filename(), "b.par");
    EXPECT_EQ(answer_of(parts[1], "z9"), answer::name);
    EXPECT_EQ(answer_of(parts[1], "Zener"), answer::whole);
    EXPECT_EQ(answer_of(parts[0], "zener"), answer::none);
    EXPECT_TRUE(parts_in("nowhere").empty());
}

TEST(element_search, hints_speak_of_installed_elements) {
    for (const hint& h : hints()) {
        EXPECT_FALSE(h.elements.empty());
        for (const std::string_view name : h.elements) {
            EXPECT_FALSE(find_sheets(installed(), name).empty()) << name;
            EXPECT_NE(h.text.find(name), std::string_view::npos) << name;
        }
    }
    for (const char* looked_for :
         {"zener", "Zener diodes", "low pass", "a low pass filter", "op amp", "opamps", "noise"})
        EXPECT_NE(find_hint(looked_for), nullptr) << looked_for;
    for (const char* looked_for : {"resistor", "pass", "low", ""})
        EXPECT_EQ(find_hint(looked_for), nullptr) << looked_for;
}

}  // namespace cli
