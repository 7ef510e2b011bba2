// view_server.h -- gives the page and the rows to the browser of this user on this machine, and to nobody else.
#pragma once
#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "tnl/view/view_connections.h"
#include "tnl/view/view_store.h"

namespace cli {

// Listens on 127.0.0.1. All paths begin with a token of 128 random bits; what lacks it, or names another host than this
// one (a name of somebody else's may lead here too), is refused with 403. Below the token:
//   /                    the page, and its files by a fixed list of names
//   /api/runs            JSON, view_store::list
//   /api/data?run=0&file=out.dat&curve=0&columns=1,2&from=&to=&points=1000&spacing=rows&axis=0
//                        spacing and axis may be left out; axis=rows is the number of the row
//                        reduce(): doubles, the least significant byte first: a head of eight (rows, columns with the
//                        axis, whole, row_axis, lo, hi, n_curve, version), then the axis, then each column
//   /api/at?run=0&file=out.dat&curve=0&columns=1,2&x=0.5
//                        values_at(): doubles, one a column
class view_server {
public:
    class request_reader;

    // Port 0: any that is free. Throws file_error when the port is taken or the page's files are missing.
    view_server(view_store& store, std::filesystem::path page, int port, const view_limits& limits = {});
    ~view_server();
    view_server(const view_server&) = delete;
    view_server& operator=(const view_server&) = delete;

    int port() const { return connections_->port(); }
    std::string address() const;  // with the token
    void listen();                // until stop()
    void stop();                  // also before listen()
    double seconds_idle() const;  // since the last request that was not refused

private:
    view_store& store_;
    std::filesystem::path page_;
    std::string token_;
    std::atomic<std::chrono::steady_clock::time_point> last_request_;
    std::unique_ptr<request_reader> reader_;  // from the text of a request to that of its answer
    std::unique_ptr<view_connections> connections_;
};

}  // namespace cli
