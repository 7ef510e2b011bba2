#include "library/check_limit.h"

#include "base/checks.h"

void over_limit(int n, int m, const std::string& message) {
    if (message.find("Halting") == std::string::npos) compare_int_1(n, m, message);
    halt({message});
}
