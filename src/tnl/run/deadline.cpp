#include "tnl/run/deadline.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>

#include "tnl/common/exit_status.h"

namespace cli {

namespace {

const std::string* text_at_end = nullptr;

extern "C" void end_at_deadline(int) {
    if (write(STDERR_FILENO, text_at_end->data(), text_at_end->size()) < 0) _exit(limit_reached);
    _exit(limit_reached);
}

itimerval timer_of(double seconds) {
    const double whole = std::floor(std::min(seconds, 1e9));
    return {{0, 0},
            {static_cast<time_t>(whole), static_cast<suseconds_t>((std::min(seconds, 1e9) - whole) * 999999) + 1}};
}

}  // namespace

deadline::deadline(double seconds, std::string text) : text_(std::move(text)), set_(seconds > 0) {
    if (!set_) return;
    text_at_end = &text_;
    std::signal(SIGALRM, end_at_deadline);
    const itimerval timer = timer_of(seconds);
    setitimer(ITIMER_REAL, &timer, nullptr);
}

deadline::~deadline() {
    if (!set_) return;
    const itimerval none{};
    setitimer(ITIMER_REAL, &none, nullptr);
    std::signal(SIGALRM, SIG_DFL);
}

side_work::side_work(const std::function<std::string()>& work) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    const pid_t self = getpid();
    child_ = fork();
    if (child_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != self) _exit(file_fault);
        std::signal(SIGPIPE, SIG_DFL);
        int status = file_fault;
        try {
            const std::string text = work();
            status = good;
            for (std::size_t at = 0; at < text.size() && status == good;) {
                const ssize_t n = write(ends[1], text.data() + at, text.size() - at);
                if (n > 0) at += static_cast<std::size_t>(n);
                if (n < 0 && errno != EINTR) status = file_fault;
            }
        } catch (...) {  // no answer
        }
        _exit(status);
    }
    close(ends[1]);
    if (child_ > 0)
        from_ = ends[0];
    else
        close(ends[0]);
}

side_work::~side_work() {
    if (from_ >= 0) close(from_);
    if (child_ <= 0) return;
    kill(child_, SIGKILL);
    while (waitpid(child_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

std::optional<std::string> side_work::answer(double seconds) {
    if (child_ <= 0) return {};
    using clock = std::chrono::steady_clock;
    const clock::time_point end = clock::now() + std::chrono::duration_cast<clock::duration>(
                                                     std::chrono::duration<double>(std::max(seconds, 0.0)));
    std::string text;
    std::array<char, 16384> buffer{};
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - clock::now()).count();
        pollfd wanted{from_, POLLIN, 0};
        const int ready = poll(&wanted, 1, static_cast<int>(std::clamp<long long>(left + 1, 0, 1000)));
        if (ready < 0 && errno != EINTR) return {};
        if (ready <= 0) {
            if (clock::now() >= end) return {};
            continue;
        }
        const ssize_t n = read(from_, buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return {};
        if (n == 0) break;
        text.append(buffer.data(), static_cast<std::size_t>(n));
    }
    int status = 0;
    while (waitpid(child_, &status, 0) < 0)
        if (errno != EINTR) return {};
    child_ = -1;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != good) return {};
    return text;
}

}  // namespace cli
