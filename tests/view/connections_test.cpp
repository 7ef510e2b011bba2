#include "tnl/view/view_connections.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <vector>

namespace {

using namespace cli;

// A server that answers each head with its first line.
struct echo_server {
    explicit echo_server(const view_limits& limits = {})
        : connections(
              0,
              [](const std::string& head, bool& keep_open) {
                  keep_open = head.find("close") == std::string::npos;
                  if (head.starts_with("large")) return std::string(64u << 20, 'x');
                  if (head.starts_with("throw")) throw std::runtime_error("no answer");
                  return head.substr(0, head.find('\r')) + ";";
              },
              limits),
          thread([this] { connections.serve(); }) {}
    ~echo_server() {
        connections.stop();
        thread.join();
    }
    view_connections connections;
    std::thread thread;
};

class client {
public:
    explicit client(int port) : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(static_cast<std::uint16_t>(port));
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connected_ = ::connect(fd_, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0;
    }
    client(client&& other) noexcept : fd_(std::exchange(other.fd_, -1)), connected_(other.connected_) {}
    ~client() {
        if (fd_ >= 0) ::close(fd_);
    }
    bool send(const std::string& text) const {
        return connected_ && ::send(fd_, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
    }
    // What comes within the time, up to so many bytes.
    std::string receive(std::size_t most, double seconds = 20) const {
        std::string text;
        char bytes[4096];
        while (text.size() < most) {
            pollfd wanted{fd_, POLLIN, 0};
            if (::poll(&wanted, 1, static_cast<int>(seconds * 1e3)) <= 0) break;
            const ssize_t n = ::recv(fd_, bytes, std::min(sizeof bytes, most - text.size()), 0);
            if (n <= 0) break;
            text.append(bytes, static_cast<std::size_t>(n));
        }
        return text;
    }
    bool is_closed(double seconds = 20) const {
        pollfd wanted{fd_, POLLIN, 0};
        char byte;
        return ::poll(&wanted, 1, static_cast<int>(seconds * 1e3)) > 0 && ::recv(fd_, &byte, 1, 0) <= 0;
    }

private:
    int fd_;
    bool connected_ = false;
};

bool is_answered_soon(int port) {
    const client one(port);
    return one.send("hello\r\n\r\n") && one.receive(6, 5) == "hello;";
}

TEST(view_connections, answers_one_request_after_the_other_also_when_they_come_together_or_in_pieces) {
    const echo_server server;
    const client one(server.connections.port());
    one.send("a\r\n\r\nb\r\nX: y\r\n\r\nc\r");
    EXPECT_EQ(one.receive(4), "a;b;");
    one.send("\n\r");
    one.send("\n");
    EXPECT_EQ(one.receive(2), "c;");
    one.send("d close\r\n\r\nnever");
    EXPECT_EQ(one.receive(8), "d close;");
    EXPECT_TRUE(one.is_closed());
    const client other(server.connections.port());
    other.send("throw\r\n\r\n");
    EXPECT_TRUE(other.is_closed());
}

TEST(view_connections, a_thousand_that_say_nothing_keep_nobody_waiting) {
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit more{std::min<rlim_t>(files.rlim_max, 4096), files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &more);
    const std::size_t n = more.rlim_cur >= 1500 ? 1000 : 500;
    const echo_server server;
    std::vector<client> idle;
    for (std::size_t i = 0; i < n; ++i) idle.emplace_back(server.connections.port());
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(is_answered_soon(server.connections.port()));
    EXPECT_TRUE(idle.front().is_closed()) << "more than there may be: the first went";
    EXPECT_TRUE(idle.back().send("late\r\n\r\n"));
    EXPECT_EQ(idle.back().receive(5), "late;") << "of the last ones some are left";
    idle.clear();
    setrlimit(RLIMIT_NOFILE, &files);
}

TEST(view_connections, those_that_send_slowly_or_take_nothing_keep_nobody_waiting_and_are_closed) {
    view_limits limits;
    limits.head = 0.6;
    limits.stalled = 0.6;
    const echo_server server(limits);
    std::vector<client> slow, greedy;
    for (int i = 0; i < 60; ++i) {
        slow.emplace_back(server.connections.port());
        slow.back().send("GET");
    }
    for (int i = 0; i < 3; ++i) {
        greedy.emplace_back(server.connections.port());
        greedy.back().send("large\r\n\r\n");
    }
    for (int round = 0; round < 12; ++round) {
        for (const client& one : slow) one.send("x");  // never to its end
        EXPECT_TRUE(is_answered_soon(server.connections.port()));
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    for (const client& one : slow) EXPECT_TRUE(one.is_closed());
    std::this_thread::sleep_for(std::chrono::milliseconds(1000));
    EXPECT_LT(greedy[0].receive(64u << 20, 2).size(), 64u << 20);
}

TEST(view_connections, a_head_without_end_and_an_idle_connection_are_closed) {
    view_limits limits;
    limits.idle = 0.3;
    const echo_server server(limits);
    const client idle(server.connections.port()), endless(server.connections.port());
    for (int i = 0; i < 40; ++i) endless.send(std::string(1000, 'a'));
    EXPECT_TRUE(endless.is_closed());
    EXPECT_TRUE(idle.is_closed());
}

}  // namespace
