// junit.h -- results of assertions as JUnit XML, as servers that run tests read it.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace cli {

struct test_result {
    enum outcome { pass, fail, error };  // error: the rows do not allow the measurement
    std::string name;
    outcome is = pass;
    std::string message;  // of a fail or error
};
// Bytes that XML cannot hold are replaced.
std::string junit_xml(const std::string& suite, const std::vector<test_result>& results);

}  // namespace cli
