#include "run/signals.h"

#include <sys/time.h>

#include <atomic>
#include <csignal>

#include "run/halt.h"

namespace {

constexpr int rows_due = 1, interrupted = 2, asked_to_end = 4;
std::atomic<int> noted = 0;
static_assert(std::atomic<int>::is_always_lock_free);  // what a signal handler may touch

extern "C" void note_signal(int number) {
    noted.fetch_or(number == SIGALRM ? rows_due : number == SIGINT ? interrupted : asked_to_end);
}

}  // namespace

void note_signals() {
    std::signal(SIGINT, note_signal);
    std::signal(SIGTERM, note_signal);
    std::signal(SIGALRM, note_signal);
    constexpr timeval half_a_second{0, 500000};
    const itimerval timer{half_a_second, half_a_second};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

void heed_signals() {
    if (noted.load(std::memory_order_relaxed) == 0) return;
    const int what = noted.exchange(0);
    flush_all();
    if (what == rows_due) return;
    const int number = what & interrupted ? SIGINT : SIGTERM;
    std::signal(number, SIG_DFL);
    std::raise(number);
}
