#include "tnl/elements/element_doc.h"

#include <gtest/gtest.h>

namespace {

using namespace cli;

TEST(element_doc, description_and_words_are_read_from_the_comments_of_an_entry) {
    const element_doc doc = doc_of({"r",
                                    "ece name=r\n#: Resistor.\n#: i = v / r\n#. r ohm resistance at 300.15 K\n"
                                    "#. tc1 1/K\n#. k - scale\n# not for people\nbegin_dc\n"});
    EXPECT_EQ(doc.description, (std::vector<std::string>{"Resistor.", "i = v / r"}));
    ASSERT_NE(find_word(doc, "r"), nullptr);
    EXPECT_EQ(find_word(doc, "r")->unit, "ohm");
    EXPECT_EQ(find_word(doc, "r")->text, "resistance at 300.15 K");
    EXPECT_EQ(find_word(doc, "tc1")->text, "");
    EXPECT_EQ(find_word(doc, "k")->unit, "");
    EXPECT_EQ(find_word(doc, "q"), nullptr);
    EXPECT_EQ(doc.group, "");
}

TEST(element_doc, group_and_examples_are_read_too) {
    const element_doc doc = doc_of({"r", "ece name=r\n#@ passive\n#: Resistor.\n#> eelement name=R1 type=r p=a n=b\n"});
    EXPECT_EQ(doc.group, "passive");
    EXPECT_EQ(doc.examples, (std::vector<std::string>{"eelement name=R1 type=r p=a n=b"}));
    EXPECT_EQ(doc.description, (std::vector<std::string>{"Resistor."}));
}

TEST(element_doc, of_two_lines_about_a_word_the_last_is_found_so_that_an_output_goes_before_a_terminal) {
    const element_doc doc = doc_of({"r", "ece name=r\n#. p - terminal\n#. n - terminal\n#. p W absorbed power\n"});
    ASSERT_NE(find_word(doc, "p"), nullptr);
    EXPECT_EQ(find_word(doc, "p")->unit, "W");
    EXPECT_EQ(doc.words.size(), 3U);
}

}  // namespace
