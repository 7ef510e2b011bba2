#include "tnl/results/junit.h"

#include "tnl/common/xml_text.h"

#include <gtest/gtest.h>

namespace {

using namespace cli;

TEST(junit, marks_and_bytes_that_xml_cannot_hold_are_written_otherwise) {
    EXPECT_EQ(xml_escaped("a<b & \"c\">\n\xc3\xa4"), "a&lt;b &amp; &quot;c&quot;&gt;&#10;\xc3\xa4");
    const std::string gap = "\xef\xbf\xbd";
    EXPECT_EQ(xml_escaped(std::string("\0\x01\xff", 3)), gap + gap + gap);
    EXPECT_EQ(xml_escaped("\xc3"), gap);                      // cut
    EXPECT_EQ(xml_escaped("\xc0\x80"), gap + gap);            // too long a form
    EXPECT_EQ(xml_escaped("\xed\xa0\x80"), gap + gap + gap);  // half of a pair
    EXPECT_EQ(xml_escaped("\xf0\x9f\x98\x80"), "\xf0\x9f\x98\x80");
}

TEST(junit, counts_failures_and_errors) {
    EXPECT_EQ(
        junit_xml("s",
                  {{"a", test_result::pass, ""}, {"b", test_result::fail, "x = 1"}, {"c", test_result::error, "no"}}),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<testsuites tests=\"3\" failures=\"1\" errors=\"1\">\n"
        "  <testsuite name=\"s\" tests=\"3\" failures=\"1\" errors=\"1\">\n"
        "    <testcase classname=\"s\" name=\"a\"/>\n"
        "    <testcase classname=\"s\" name=\"b\">\n"
        "      <failure message=\"x = 1\">x = 1</failure>\n"
        "    </testcase>\n"
        "    <testcase classname=\"s\" name=\"c\">\n"
        "      <error message=\"no\">no</error>\n"
        "    </testcase>\n"
        "  </testsuite>\n"
        "</testsuites>\n");
}

}  // namespace
