#include "tnl/process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "tnl/run_folder.h"

namespace cli {

namespace {

volatile sig_atomic_t child_id = 0;

extern "C" void pass_on(int signal) {
    if (child_id > 0) kill(static_cast<pid_t>(child_id), signal);
}

// While it lives, these signals go to the child, which decides; afterwards they are as they were.
class passing_on {
public:
    passing_on() {
        struct sigaction action {};
        action.sa_handler = pass_on;
        action.sa_flags = SA_RESTART;
        for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &action, &old_[i]);
    }
    ~passing_on() {
        for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &old_[i], nullptr);
        child_id = 0;
    }
    passing_on(const passing_on&) = delete;
    passing_on& operator=(const passing_on&) = delete;

private:
    static constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, 3> old_{};
};

void write_all(const char* data, std::size_t n) {
    std::fwrite(data, 1, n, stdout);
    std::fflush(stdout);
}

}  // namespace

process_result run_program(const std::filesystem::path& program, const std::filesystem::path& folder, bool quiet) {
    int text[2], started[2];  // the child's output; and its errno, if it cannot become the program
    if (pipe2(text, O_CLOEXEC) != 0 || pipe2(started, O_CLOEXEC) != 0)
        throw file_error(std::string("cannot make a pipe: ") + std::strerror(errno));
    std::fflush(nullptr);
    const passing_on handlers;
    const pid_t self = getpid();
    const pid_t child = fork();
    if (child < 0) throw file_error(std::string("cannot start a process: ") + std::strerror(errno));
    if (child == 0) {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
        prctl(PR_SET_PDEATHSIG, SIGTERM);  // nobody would take the results of a simulator that is alone
        if (getppid() != self) _exit(127);
        if (chdir(folder.c_str()) == 0 && dup2(text[1], STDOUT_FILENO) >= 0 && dup2(text[1], STDERR_FILENO) >= 0)
            execl(program.c_str(), program.c_str(), static_cast<char*>(nullptr));
        const int why = errno;
        if (write(started[1], &why, sizeof why) < 0) _exit(126);
        _exit(127);
    }
    child_id = child;
    close(text[1]);
    close(started[1]);

    process_result result;
    constexpr std::size_t keep = 64u << 10;
    std::array<char, 16384> buffer{};
    for (;;) {
        const ssize_t n = read(text[0], buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        const auto size = static_cast<std::size_t>(n);
        if (!quiet) write_all(buffer.data(), size);
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
        throw file_error("cannot run " + program.string() + " in " + folder.string() + ": " + std::strerror(why));
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
