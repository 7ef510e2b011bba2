#include "base/checks.h"

#include <algorithm>

#include "base/halt.h"

namespace {

[[noreturn]] void halt_with_size(const std::string& first, const std::string& message) {
    if (message.find("Halting") != std::string::npos) halt({first, message});
    halt({first, message, "Halting..."});
}

}  // namespace

void compare_int_1(int n, int m, const std::string& message) {
    if (n > m) halt_with_size(line("compare_int_1: n > m. n = ", n, ", m = ", m), message);
}

void check_m_gt_n(int m, int n, const std::string& message) {
    if (m <= n) halt_with_size(line("check_m_gt_n: m <= n. m = ", m, ", n = ", n), message);
}

void check_nodes_1(int n_nd, const std::vector<int>& nd, const std::string& message) {
    std::vector<char> mark_1(static_cast<std::size_t>(std::max(n_nd, 0)), 0);
    for (const int i : nd)
        if (i >= 0 && i < n_nd) mark_1[static_cast<std::size_t>(i)] = 1;
    const auto bare = std::find(mark_1.begin(), mark_1.end(), 0);
    if (bare != mark_1.end()) halt({line("check_nodes_1: mark_1 is F for i = ", bare - mark_1.begin()), message});
}

void check_all_true_1(const std::vector<int>& flag, const std::string& message) {
    if (std::find(flag.begin(), flag.end(), 0) != flag.end()) halt({message});
}

void check_all_int_1(const std::vector<int>& v, int value, const std::string& message) {
    if (std::any_of(v.begin(), v.end(), [&](int x) { return x != value; })) halt({message});
}
