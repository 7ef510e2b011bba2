#include "tnl/view/view_connections.h"

#include <arpa/inet.h>
#include <httplib.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

#include "tnl/common/exit_status.h"

namespace cli {

namespace {

using clock_type = std::chrono::steady_clock;
constexpr int n_workers = 6, tick = 200;  // ms between looks at the deadlines
constexpr double last_words = 1;          // s, in which a client may read an answer behind which the connection closes

enum class doing { reading, answering, writing, closing };

struct connection {
    int fd = -1;
    doing now = doing::reading;
    bool keep_open = true;
    std::string in, out;
    std::size_t sent = 0;
    clock_type::time_point since = clock_type::now();  // it does this; or, while writing, the client took something
};

struct finished_answer {
    std::uint64_t id;
    std::string bytes;
    bool keep_open;
};

// All connections, in the thread that waits for them.
class waiting_room {
public:
    waiting_room(int listener, int wake, const view_answerer& answer, const view_limits& limits)
        : listener_(listener), wake_(wake), answer_(answer), limits_(limits), workers_(n_workers) {}
    ~waiting_room() {
        workers_.shutdown();
        for (const auto& [id, c] : all_) ::close(c.fd);
    }
    waiting_room(const waiting_room&) = delete;
    waiting_room& operator=(const waiting_room&) = delete;

    void wait_once() {
        std::vector<pollfd> wanted = {{wake_, POLLIN, 0}, {listener_, POLLIN, 0}};
        std::vector<std::uint64_t> ids;
        for (const auto& [id, c] : all_) {
            if (c.now == doing::answering) continue;
            wanted.push_back({c.fd, static_cast<short>(c.now == doing::writing ? POLLOUT : POLLIN), 0});
            ids.push_back(id);
        }
        if (::poll(wanted.data(), wanted.size(), tick) < 0) return;
        for (std::size_t i = 0; i < ids.size(); ++i)
            if (wanted[i + 2].revents != 0) serve(ids[i]);
        if (wanted[0].revents != 0) take_answers();
        if (wanted[1].revents != 0) accept_all();
        close_late_ones();
    }

private:
    double seconds_in(const connection& c) const {
        return std::chrono::duration<double>(clock_type::now() - c.since).count();
    }
    void turn_to(connection& c, doing what) {
        c.now = what;
        c.since = clock_type::now();
    }
    void close(std::uint64_t id) {
        ::close(all_.at(id).fd);
        all_.erase(id);
    }

    // Those that only wait go first, and of them the one that has done so for the longest time.
    bool close_longest_waiting() {
        const auto worth = [](const connection& c) { return c.now == doing::writing ? 1 : 0; };
        std::uint64_t longest = 0;
        for (const auto& [id, c] : all_) {
            if (c.now == doing::answering) continue;
            const connection* other = longest == 0 ? nullptr : &all_.at(longest);
            if (other == nullptr || std::pair(worth(c), c.since) < std::pair(worth(*other), other->since)) longest = id;
        }
        if (longest != 0) close(longest);
        return longest != 0;
    }

    void accept_all() {
        for (;;) {
            const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
            if (fd < 0 && (errno == EMFILE || errno == ENFILE) && close_longest_waiting()) continue;
            if (fd < 0) return;
            const int yes = 1;
            ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
            if (all_.size() >= limits_.connections && !close_longest_waiting()) {
                ::close(fd);
                continue;
            }
            all_[++last_id_].fd = fd;
        }
    }

    void serve(std::uint64_t id) {
        connection& c = all_.at(id);
        if (c.now == doing::reading) return read(id, c);
        if (c.now == doing::writing) return write(id, c);
        char rest[4096];  // what comes behind the last request is not read
        const ssize_t n = ::recv(c.fd, rest, sizeof rest, 0);
        if (n == 0 || (n < 0 && errno != EAGAIN && errno != EINTR)) close(id);
    }

    void read(std::uint64_t id, connection& c) {
        char bytes[4096];
        const ssize_t n = ::recv(c.fd, bytes, sizeof bytes, 0);
        if (n < 0 && (errno == EAGAIN || errno == EINTR)) return;
        if (n <= 0) return close(id);
        if (c.in.empty()) c.since = clock_type::now();
        c.in.append(bytes, static_cast<std::size_t>(n));
        ask(id, c);
    }

    // Hands a head that is complete to a worker.
    void ask(std::uint64_t id, connection& c) {
        const std::size_t end = c.in.find("\r\n\r\n");
        if (end == std::string::npos) {
            if (c.in.size() > limits_.head_bytes) close(id);
            return;
        }
        std::string head = c.in.substr(0, end + 4);
        c.in.erase(0, end + 4);
        turn_to(c, doing::answering);
        workers_.enqueue([this, id, head = std::move(head)] {
            finished_answer answer{id, {}, true};
            try {
                answer.bytes = answer_(head, answer.keep_open);
            } catch (...) {  // without an answer the connection closes
                answer.keep_open = false;
            }
            const std::lock_guard<std::mutex> hold(lock_);
            finished_.push_back(std::move(answer));
            const std::uint64_t one = 1;
            if (::write(wake_, &one, sizeof one) < 0) return;  // the next tick finds it
        });
    }

    void take_answers() {
        std::uint64_t count = 0;
        if (::read(wake_, &count, sizeof count) < 0 && errno != EAGAIN) return;
        std::vector<finished_answer> finished;
        {
            const std::lock_guard<std::mutex> hold(lock_);
            finished.swap(finished_);
        }
        for (finished_answer& answer : finished) {
            connection& c = all_.at(answer.id);
            c.out = std::move(answer.bytes);
            c.sent = 0;
            c.keep_open = answer.keep_open;
            turn_to(c, doing::writing);
            write(answer.id, c);
        }
    }

    void write(std::uint64_t id, connection& c) {
        while (c.sent < c.out.size()) {
            const ssize_t n = ::send(c.fd, c.out.data() + c.sent, c.out.size() - c.sent, MSG_NOSIGNAL);
            if (n < 0 && errno == EINTR) continue;
            if (n < 0 && errno == EAGAIN) return;
            if (n <= 0) return close(id);
            c.sent += static_cast<std::size_t>(n);
            c.since = clock_type::now();
        }
        c.out = {};
        if (c.keep_open) {
            turn_to(c, doing::reading);
            ask(id, c);
        } else {
            ::shutdown(c.fd, SHUT_WR);
            turn_to(c, doing::closing);
        }
    }

    void close_late_ones() {
        std::vector<std::uint64_t> late;
        for (const auto& [id, c] : all_) {
            const double most = c.now == doing::reading   ? (c.in.empty() ? limits_.idle : limits_.head)
                                : c.now == doing::writing ? limits_.stalled
                                                          : last_words;
            if (c.now != doing::answering && seconds_in(c) > most) late.push_back(id);
        }
        for (const std::uint64_t id : late) close(id);
    }

    int listener_, wake_;
    const view_answerer& answer_;
    const view_limits& limits_;
    std::map<std::uint64_t, connection> all_;
    std::uint64_t last_id_ = 0;
    std::mutex lock_;
    std::vector<finished_answer> finished_;  // under the lock
    httplib::ThreadPool workers_;
};

}  // namespace

view_connections::view_connections(int port, view_answerer answer, const view_limits& limits)
    : answer_(std::move(answer)), limits_(limits) {
    const auto fail = [&] {
        const std::string why = std::strerror(errno);
        if (listener_ >= 0) ::close(listener_);
        if (wake_ >= 0) ::close(wake_);
        throw file_error("cannot listen on port " + std::to_string(port) + ": " + why);
    };
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    const int yes = 1;  // the port of a server that has just ended; no other option: nobody shares it
    wake_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (wake_ < 0 || listener_ < 0) fail();
    ::setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener_, SOMAXCONN) != 0 ||
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        fail();
    port_ = ntohs(address.sin_port);
}

view_connections::~view_connections() {
    if (listener_ >= 0) ::close(listener_);
    ::close(wake_);
}

void view_connections::serve() {
    {
        waiting_room room(listener_, wake_, answer_, limits_);
        while (!stopping_) room.wait_once();
    }
    ::close(listener_);
    listener_ = -1;
}

void view_connections::stop() {
    stopping_ = true;
    const std::uint64_t one = 1;
    if (::write(wake_, &one, sizeof one) < 0) return;  // it looks up by itself, some times a second
}

}  // namespace cli
