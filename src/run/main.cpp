#include <iostream>
#include <new>
#include <stdexcept>

#include "run/driver.h"
#include "run/halt.h"
#include "run/signals.h"

int main() {
    std::ios::sync_with_stdio(false);
    std::cout.precision(10);
    note_signals();
    try {
        run_tarnel();
    } catch (const std::bad_alloc&) {  // what the run held is free again, its rows are written
        halt({"main: there is not enough memory for this.", "  Halting..."});
    } catch (const std::length_error&) {  // a size that no memory holds
        halt({"main: there is not enough memory for this.", "  Halting..."});
    }
    flush_all();
    return 0;
}
