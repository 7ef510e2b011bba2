#include "base/memory.h"

#include <sys/resource.h>
#include <sys/sysinfo.h>

#include <algorithm>
#include <limits>

namespace {
// Memory and swap space; infinite when the system does not say.
double machine_memory() {
    struct sysinfo info {};
    if (sysinfo(&info) != 0) return std::numeric_limits<double>::infinity();
    return (static_cast<double>(info.totalram) + static_cast<double>(info.totalswap)) * info.mem_unit;
}
}  // namespace

double memory_limit() {
    rlimit space{};
    const bool limited = getrlimit(RLIMIT_AS, &space) == 0 && space.rlim_cur != RLIM_INFINITY;
    return limited ? std::min(machine_memory(), static_cast<double>(space.rlim_cur)) : machine_memory();
}

bool fits_in_memory(double bytes) { return bytes <= memory_limit(); }

void hold_to_memory_limit() {
    rlimit space{};
    const double bytes = memory_limit();
    if (getrlimit(RLIMIT_AS, &space) != 0 || !(bytes < 1e18)) return;
    space.rlim_cur = static_cast<rlim_t>(bytes);
    setrlimit(RLIMIT_AS, &space);
}
