#include "tnl/deck/library_split.h"

#include <gtest/gtest.h>

using namespace cli;

namespace {

const library_form& form_of(std::string_view file) { return library_forms[find_library(&library_form::file, file)]; }

constexpr std::string_view two_composites =
    "# resistors\n"
    "ece name=r allow_ac=yes\n"
    "begin_dc\n"
    "mainnodes: p n\n"
    "sparms: file=none\n"
    "+ model_file=none\n"
    "ebe type=r name=r1 p=p n=n\n"
    "+ r=r\n"
    "end_dc\n"
    "C:\n"
    "ebe type=in_code\n"
    "callece in_code\n"
    "endC\n"
    "begin_ac\n"
    "ebe_ac type=r_ac name=r1 p=p n=n\n"
    "end_ac\n"
    "endece\n"
    "\n"
    "  ece name=pair\r\n"
    "begin_dc\n"
    "ebemodel name M type diode is 1p\n"
    "ecemodel name N type r r 1\n"
    "callece r name=a p=p n=m\n"
    "ebe model=M p=m n=n\n"
    "callece r name=b p=m n=n\n"
    "end_dc\n"
    "C: compiled\n"
    "begin_ac\n"
    "callece r p=p n=m\n"
    "end_ac\n"
    "endece";

std::vector<std::string> text_of(const std::vector<entry_name>& names) {
    std::vector<std::string> out;
    for (const entry_name& n : names) out.push_back(std::string(library_forms[n.library].file) + " " + n.name);
    return out;
}
using list = std::vector<std::string>;

}  // namespace

TEST(split_library, entries_keep_their_text_with_code_and_comments) {
    const auto entries = split_library(two_composites, form_of("eels.aux"));
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].name, "r");
    EXPECT_EQ(entries[1].name, "pair");
    const std::size_t begin = two_composites.find("ece name=r"), end = two_composites.find("endece\n") + 7;
    EXPECT_EQ(entries[0].text, two_composites.substr(begin, end - begin));
    EXPECT_TRUE(entries[1].text.starts_with("  ece name=pair\r\n"));
}

TEST(split_library, last_line_without_newline_gets_one) {
    const auto entries = split_library(two_composites, form_of("eels.aux"));
    EXPECT_TRUE(entries[1].text.ends_with("end_ac\nendece\n"));
}

TEST(split_library, text_outside_entries_is_dropped) {
    const auto entries =
        split_library("stray\nebe name=a\nendebe\nstray\nebe name=b\nendebe\nstray", form_of("ebes.aux"));
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].text, "ebe name=a\nendebe\n");
    EXPECT_EQ(entries[1].text, "ebe name=b\nendebe\n");
}

TEST(split_library, a_name_on_a_continuation_line_is_found) {
    EXPECT_EQ(split_library("ebe\n# why not\n+ name=a flag=yes\nendebe\n", form_of("ebes.aux")).at(0).name, "a");
}

TEST(split_library, an_entry_cut_short_is_kept_as_far_as_it_goes) {
    const auto entries = split_library("ebe name=a\nnodes: p n\n", form_of("ebes.aux"));
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].text, "ebe name=a\nnodes: p n\n");
}

TEST(split_library, empty_and_strange_texts_give_no_entry_or_no_name) {
    EXPECT_TRUE(split_library("", form_of("ebes.aux")).empty());
    EXPECT_TRUE(split_library(std::string_view("\0\n\n==\n", 6), form_of("ebes.aux")).empty());
    EXPECT_EQ(split_library("ebe", form_of("ebes.aux")).at(0).name, "");
    EXPECT_EQ(split_library("ebe name", form_of("ebes.aux")).at(0).name, "");
}

TEST(used_by, follows_types_calls_and_models_but_not_code) {
    const auto& form = form_of("eels.aux");
    const auto entries = split_library(two_composites, form);
    EXPECT_EQ(text_of(used_by(lines_of(entries[0], form))), (list{"ebes.aux r", "ebac.aux r_ac"}));
    EXPECT_EQ(text_of(used_by(lines_of(entries[1], form))), (list{"eels.aux r", "ebes.aux diode"}));
}

TEST(used_by, a_mixed_composite_calls_all_families) {
    const auto& form = form_of("gmes.aux");
    const auto entries = split_library(
        "gme name=x\ncallece r name=a\ncalldce and_2 name=b\ncallgce sum name=c\ncallgme y name=d\nendgme\n", form);
    EXPECT_EQ(text_of(used_by(lines_of(entries.at(0), form))),
              (list{"eels.aux r", "dels.aux and_2", "gels.aux sum", "gmes.aux y"}));
}

TEST(pairs_of, joins_continuation_lines) {
    const auto& form = form_of("eels.aux");
    const auto pairs = pairs_of(lines_of(split_library(two_composites, form)[0], form), "sparms:");
    ASSERT_EQ(pairs.size(), 2u);
    EXPECT_EQ(pairs[1].name, "model_file");
    EXPECT_EQ(pairs[1].value, "none");
}
