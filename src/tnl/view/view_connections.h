// view_connections.h -- the connections of the page's server. One thread waits for all of them, so that those which say
// nothing, or say it slowly, keep nobody else waiting; requests that are complete are answered by a few others.
#pragma once
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace cli {

// From the head of a request, up to its blank line, to the bytes of the answer. keep_open: may be set to false.
using view_answerer = std::function<std::string(const std::string& head, bool& keep_open)>;

// How long a connection may take, and how many there may be. When there are more, that goes which has waited longest.
struct view_limits {
    std::size_t connections = 200, head_bytes = 16384;
    double idle = 10;     // s without a request
    double head = 5;      // s from the first byte of a head to its last
    double stalled = 15;  // s in which a client takes nothing of an answer
};

class view_connections {
public:
    // Listens on 127.0.0.1, port 0: any that is free. Throws file_error when the port is taken.
    view_connections(int port, view_answerer answer, const view_limits& limits = {});
    ~view_connections();
    view_connections(const view_connections&) = delete;
    view_connections& operator=(const view_connections&) = delete;

    int port() const { return port_; }
    void serve();  // until stop()
    void stop();   // also before serve()

private:
    view_answerer answer_;
    view_limits limits_;
    int port_ = 0, listener_ = -1, wake_ = -1;
    std::atomic<bool> stopping_ = false;
};

}  // namespace cli
