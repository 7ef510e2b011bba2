#include <iostream>

#include "run/driver.h"
#include "run/halt.h"
#include "run/signals.h"

int main() {
    std::ios::sync_with_stdio(false);
    std::cout.precision(10);
    note_signals();
    run_tarnel();
    flush_all();
    return 0;
}
