// tnl-view -- the server of the page for looking at rows. `tnl view` starts it; it stands alone so that no other
// command carries its libraries.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <thread>

#include "tnl/common/exit_status.h"
#include "tnl/common/process.h"
#include "tnl/run/run_folder.h"
#include "tnl/view/view_server.h"

namespace {

namespace fs = std::filesystem;
using namespace cli;

struct view_options {
    int port = 0;
    double timeout = 0;  // s without requests; 0: none
    bool open = false;
    std::vector<std::string> runs;
};

// Words as cmd_view.cpp writes them.
view_options options_of(int argc, char** argv) {
    view_options options;
    int i = 1;
    for (; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
        if (std::strcmp(argv[i], "--open") == 0)
            options.open = true;
        else if (std::strcmp(argv[i], "--port") == 0 && i + 1 < argc)
            options.port = std::atoi(argv[++i]);
        else if (std::strcmp(argv[i], "--timeout") == 0 && i + 1 < argc)
            std::from_chars(argv[i + 1], argv[i + 1] + std::strlen(argv[i + 1]), options.timeout), ++i;
    }
    for (++i; i < argc; ++i) options.runs.emplace_back(argv[i]);
    if (options.runs.empty()) throw usage_error("this program is started by: tnl view RUN");
    return options;
}

// A file that leads a browser to the address. The address itself must not stand among a process's words, where other
// users of the machine can read it.
class signpost {
public:
    explicit signpost(const std::string& address) {
        const char* own = std::getenv("XDG_RUNTIME_DIR");
        path_ = (own && *own ? fs::path(own) : fs::temp_directory_path()) / "tnl-view-XXXXXX.html";
        const int fd = mkostemps(path_.data(), 5, O_CLOEXEC);  // readable by this user only
        if (fd < 0) {
            path_.clear();
            return;
        }
        const std::string text =
            "<!DOCTYPE html><meta charset=\"utf-8\"><meta http-equiv=\"refresh\" content=\"0; url=" + address +
            "\"><title>tnl view</title><a href=\"" + address + "\">tnl view</a>\n";
        if (write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) path_.clear();
        close(fd);
    }
    ~signpost() {
        if (!path_.empty()) unlink(path_.c_str());
    }
    signpost(const signpost&) = delete;
    signpost& operator=(const signpost&) = delete;
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

// No matter if it fails: the address is on the terminal.
void open_browser(const std::string& path) {
    const pid_t child = fork();
    if (child != 0) return;
    if (fork() != 0) _exit(0);  // the browser is nobody's child
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    setsid();
    const int null = open("/dev/null", O_RDWR);
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(null, fd);
    execlp("xdg-open", "xdg-open", path.c_str(), static_cast<char*>(nullptr));
    _exit(127);
}

// Returns when a signal asks to end (its number) or no request came for so long (0).
int wait_for_end(const sigset_t& signals, const view_server& server, double timeout) {
    for (;;) {
        const timespec slice{0, 250'000'000};
        const int signal = sigtimedwait(&signals, nullptr, &slice);
        if (signal > 0) return signal;
        if (timeout > 0 && server.seconds_idle() >= timeout) return 0;
    }
}

[[noreturn]] void view(const view_options& options) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, nullptr);  // before there are threads, so that all have it
    std::signal(SIGPIPE, SIG_IGN);

    view_store store(options.runs);
    view_server server(store, own_folder().parent_path() / "share" / "view", options.port);
    std::printf("%s\n", server.address().c_str());
    if (std::fflush(stdout) != 0) throw file_error(std::string("cannot write the address: ") + std::strerror(errno));
    std::optional<signpost> post;
    if (options.open) {
        post.emplace(server.address());
        if (!post->path().empty()) open_browser(post->path());
        std::fprintf(stderr, "tnl: the page is open in your browser; Ctrl-C ends it\n");
    }
    std::thread([&server] { server.listen(); }).detach();
    const int signal = wait_for_end(signals, server, options.timeout);
    post.reset();
    std::_Exit(signal == 0 ? good
                           : 128 + signal);  // at once: nothing is to be saved, and a browser may hold connections
}

}  // namespace

int main(int argc, char** argv) {
    try {
        view(options_of(argc, argv));
    } catch (const command_error& e) {
        std::fflush(stdout);
        std::fprintf(stderr, "tnl: %s\n", e.what());
        return e.status;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "tnl: %s\n", e.what());
        return file_fault;
    }
}
