#include "tnl/common/process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "tnl/common/exit_status.h"

namespace cli {

namespace {

volatile sig_atomic_t child_id = 0, signal_taken = 0, n_taken = 0;

void ask_child(int signal) {
    // The simulator writes its rows out at a request to terminate; a hang-up would end it at once.
    if (child_id > 0) kill(static_cast<pid_t>(child_id), signal == SIGHUP ? SIGTERM : signal);
}

extern "C" void pass_on(int signal) {
    const int before = errno;
    signal_taken = signal;
    n_taken = n_taken + 1;
    ask_child(signal);
    errno = before;
}

// While it lives, these signals go to the child, which decides; afterwards they are as they were.
class passing_on {
public:
    passing_on() {
        signal_taken = 0;
        n_taken = 0;
        struct sigaction action {};
        action.sa_handler = pass_on;
        for (std::size_t i = 0; i < signals.size(); ++i) {
            sigaction(signals[i], &action, &old_[i]);
            // Of a run that is to outlive its terminal.
            if (signals[i] == SIGHUP && old_[i].sa_handler == SIG_IGN) sigaction(SIGHUP, &old_[i], nullptr);
        }
    }
    ~passing_on() {
        for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &old_[i], nullptr);
        child_id = 0;
    }
    passing_on(const passing_on&) = delete;
    passing_on& operator=(const passing_on&) = delete;
    void begin(pid_t child) const {
        child_id = child;
        if (signal_taken != 0) ask_child(signal_taken);  // it came before there was a child
    }

private:
    static constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, 3> old_{};
};

constexpr double grace = 5;  // s, from the request to end to the kill
constexpr double patience =
    1;                    // s, in which requests are one request: of a terminal and of a program that passes it on
constexpr int tick = 40;  // ms

// When the child is to be asked to end, and when it has had time enough.
class clock_watch {
public:
    clock_watch(pid_t child, double limit) : child_(child), limit_(limit) {}

    void look(process_result& result) {
        const double now = seconds();
        if (limit_ > 0 && !result.timed_out && now >= limit_) {
            result.timed_out = true;
            kill_at_ = now + grace;
            kill(child_, SIGTERM);
        }
        if (n_taken != n_seen_) {
            if (n_seen_ == 0) first_ = now;
            if (now > first_ + patience) kill_at_ = now;
            n_seen_ = n_taken;
        }
        if (kill_at_ > 0 && now >= kill_at_) kill(child_, SIGKILL);
    }

    int milliseconds_to_next(const process_result& result) const {
        if (limit_ <= 0 || result.timed_out) return tick;
        const double left = (limit_ - seconds()) * 1e3 + 1;
        return left < tick ? std::max(0, static_cast<int>(left)) : tick;
    }

private:
    double seconds() const { return std::chrono::duration<double>(clock::now() - start_).count(); }

    using clock = std::chrono::steady_clock;
    clock::time_point start_ = clock::now();
    pid_t child_;
    double limit_, first_ = 0, kill_at_ = 0;
    int n_seen_ = 0;
};

[[noreturn]] void become(const process_task& task, pid_t parent, int output, int report) {
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, SIG_DFL);
    if (std::signal(SIGHUP, SIG_DFL) == SIG_IGN) std::signal(SIGHUP, SIG_IGN);
    prctl(PR_SET_PDEATHSIG, SIGTERM);  // nobody would take the results of a simulator that is alone
    if (getppid() != parent) _exit(127);
    if (chdir(task.folder.c_str()) == 0 && dup2(output, STDOUT_FILENO) >= 0 && dup2(output, STDERR_FILENO) >= 0)
        execl(task.program.c_str(), task.program.c_str(), static_cast<char*>(nullptr));
    const int why = errno;
    if (write(report, &why, sizeof why) < 0) _exit(126);
    _exit(127);
}

}  // namespace

process_result run_program(const process_task& task) {
    int text[2], started[2];  // the child's output; and its errno, if it cannot become the program
    if (pipe2(text, O_CLOEXEC) != 0 || pipe2(started, O_CLOEXEC) != 0)
        throw file_error(std::string("cannot make a pipe: ") + std::strerror(errno));
    std::fflush(nullptr);
    const passing_on handlers;
    const pid_t self = getpid(), child = fork();
    if (child < 0) throw file_error(std::string("cannot start a process: ") + std::strerror(errno));
    if (child == 0) become(task, self, text[1], started[1]);
    handlers.begin(child);
    close(text[1]);
    close(started[1]);

    process_result result;
    clock_watch watch(child, task.time_limit);
    constexpr std::size_t keep = 64u << 10;
    std::array<char, 16384> buffer{};
    for (;;) {
        pollfd wanted{text[0], POLLIN, 0};
        const int ready = poll(&wanted, 1, watch.milliseconds_to_next(result));
        watch.look(result);
        if (task.idle) task.idle();
        if (ready <= 0) continue;
        const ssize_t n = read(text[0], buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        const auto size = static_cast<std::size_t>(n);
        if (task.text) task.text({buffer.data(), size});
        result.tail.append(buffer.data(), size);
        if (result.tail.size() > 2 * keep) result.tail.erase(0, result.tail.size() - keep);
    }
    int why = 0;
    const bool failed = read(started[0], &why, sizeof why) == static_cast<ssize_t>(sizeof why);
    close(text[0]);
    close(started[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (failed)
        throw file_error("cannot run " + task.program.string() + " in " + task.folder.string() + ": " +
                         std::strerror(why));
    result.asked = signal_taken;
    if (WIFSIGNALED(status)) {
        result.signal = WTERMSIG(status);
        result.status = 128 + result.signal;
    } else {
        result.status = WEXITSTATUS(status);
    }
    return result;
}

std::filesystem::path own_folder() {
    std::error_code error;
    const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::current_path() : own.parent_path();
}

}  // namespace cli
