#include <iostream>
#include <new>
#include <stdexcept>

#include "base/halt.h"
#include "base/memory.h"
#include "base/signals.h"
#include "run/driver.h"

namespace {
// The row files of the run have been written out and closed by now.
[[noreturn]] void out_of_memory() { halt({"main: there is not enough memory for this.", "  Halting..."}); }
}  // namespace

int main() {
    std::ios::sync_with_stdio(false);
    std::cout.precision(10);
    note_signals();
#ifndef __SANITIZE_ADDRESS__  // which reserves more than any machine has
    hold_to_memory_limit();
#endif
    try {
        run_tarnel();
    } catch (const std::bad_alloc&) {
        out_of_memory();
    } catch (const std::length_error&) {  // of a container: more than it could ever hold
        out_of_memory();
    }
    flush_all();
    return 0;
}
