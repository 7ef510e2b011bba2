#include "tnl/results/junit.h"

#include <algorithm>

#include "tnl/common/xml_text.h"

namespace cli {

std::string junit_xml(const std::string& suite, const std::vector<test_result>& results) {
    const auto count = [&](test_result::outcome o) {
        return std::to_string(
            std::count_if(results.begin(), results.end(), [&](const test_result& r) { return r.is == o; }));
    };
    const std::string counts = " tests=\"" + std::to_string(results.size()) + "\" failures=\"" +
                               count(test_result::fail) + "\" errors=\"" + count(test_result::error) + "\"";
    const std::string name = xml_escaped(suite);
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts + ">\n  <testsuite name=\"" +
                      name + "\"" + counts + ">\n";
    for (const test_result& r : results) {
        xml += "    <testcase classname=\"" + name + "\" name=\"" + xml_escaped(r.name) + "\"";
        if (r.is == test_result::pass) {
            xml += "/>\n";
            continue;
        }
        const std::string kind = r.is == test_result::fail ? "failure" : "error", message = xml_escaped(r.message);
        xml += ">\n      <" + kind + " message=\"" + message + "\">" + message + "</" + kind + ">\n    </testcase>\n";
    }
    return xml + "  </testsuite>\n</testsuites>\n";
}

}  // namespace cli
