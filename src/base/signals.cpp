#include "base/signals.h"

#include <sys/time.h>

#include <atomic>
#include <csignal>

#include "base/halt.h"

namespace {

constexpr int rows_due = 1, interrupted = 2, asked_to_end = 4;
constexpr int most_ticks = 8;  // of half a second, from a request to end to the end
std::atomic<int> noted = 0;
std::atomic<int> waiting_for = 0;  // the signal that asked the run to end and is not heeded yet, or 0
std::atomic<int> n_ticks = 0;      // since then
static_assert(std::atomic<int>::is_always_lock_free);  // what a signal handler may touch

void end_by(int number) {
    std::signal(number, SIG_DFL);
    std::raise(number);
}

extern "C" void note_signal(int number) {
    if (number == SIGALRM) {
        noted.fetch_or(rows_due);
        // Far from any point where it is heeded, in a large elimination for example: nobody else may be there to kill.
        if (waiting_for != 0 && ++n_ticks > most_ticks) end_by(waiting_for);
    } else {
        noted.fetch_or(number == SIGINT ? interrupted : asked_to_end);
        waiting_for = number;
    }
}

}  // namespace

void note_signals() {
    std::signal(SIGINT, note_signal);
    std::signal(SIGTERM, note_signal);
    std::signal(SIGALRM, note_signal);
    std::signal(SIGXFSZ, SIG_IGN);  // a file as large as the user allows is one that cannot be written, and told
    constexpr timeval half_a_second{0, 500000};
    const itimerval timer{half_a_second, half_a_second};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

void heed_signals() {
    if (noted.load(std::memory_order_relaxed) == 0) return;
    const int what = noted.exchange(0);
    flush_all();
    if (what == rows_due) return;
    end_by(what & interrupted ? SIGINT : SIGTERM);
}
