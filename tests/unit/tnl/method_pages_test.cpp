#include "tnl/elements/method_pages.h"

#include <gtest/gtest.h>

namespace {

using namespace cli;

TEST(method_pages, describe_every_word_of_method_by_its_name_alone_or_with_its_kind) {
    const std::vector<std::string> names = method_word_names();
    EXPECT_GT(names.size(), 100U);
    for (const std::string& name : names) {
        const method_word* word = find_word_of_method(name);
        ASSERT_NE(word, nullptr) << name;
        EXPECT_EQ(find_word_of_method("method:" + name), word);
        EXPECT_EQ(method_text(*word).find(name + ": a word of method:"), 0U) << method_text(*word);
        EXPECT_NE(method_list("").find("  " + name + "  "), std::string::npos) << name;
    }
    EXPECT_EQ(find_word_of_method("trbfd2"), nullptr);
}

}  // namespace
