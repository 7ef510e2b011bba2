#include "library/check_limit.h"

#include "run/checks.h"
#include "run/halt.h"

void check_limit(int n, int m, const std::string& message) {
    if (n > m && message.find("Halting") != std::string::npos) halt({message});
    compare_int_1(n, m, message);
}
