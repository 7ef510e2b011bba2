#include "models/digital_unit.h"

#include "base/halt.h"

void digital_stop(const std::string& text, const char* second) {
    if (*second == '\0') halt({text});
    halt({text, second});
}

void check_delays(const digital_unit& u, const char* name, int first, int n) {
    for (int k = first; k < first + n; ++k)
        if (!(u.rparm[k] >= 0.0))
            halt({line(name, ".dbe: check ", n == 1 ? "td" : "td_fall, td_rise", ". Halting...")});
}
