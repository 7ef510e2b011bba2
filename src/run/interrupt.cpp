#include "run/interrupt.h"

#include <csignal>

#include "run/halt.h"

namespace {
volatile std::sig_atomic_t noted = 0;
extern "C" void note_signal(int number) { noted = number; }
}  // namespace

void note_interrupts() {
    std::signal(SIGINT, note_signal);
    std::signal(SIGTERM, note_signal);
}

void end_if_interrupted() {
    if (noted == 0) return;
    const int number = noted;
    flush_all();
    std::signal(number, SIG_DFL);
    std::raise(number);
}
