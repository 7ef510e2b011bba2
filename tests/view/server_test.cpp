#include "tnl/view/view_server.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "temp_folder.h"
#include "tnl/common/exit_status.h"

namespace {

using namespace cli;
namespace fs = std::filesystem;

void write_page() {
    fs::create_directory("page");
    for (const char* name : {"index.html", "view.js", "plots.js", "locus.js", "lanes.js", "parts.js", "rows.js",
                             "view.css", "icon.svg", "uPlot.iife.min.js", "uPlot.min.css"})
        ::write_file(std::string("page/") + name, std::string("text of ") + name);
}

// A server over w.dat (x, 10 x; x = 0 .. 9) in a folder of its own, and a client.
struct served {
    temp_folder inside;
    std::unique_ptr<view_store> store;
    std::unique_ptr<view_server> server;
    std::thread thread;
    std::unique_ptr<httplib::Client> client;
    std::string base;  // "/token"

    served() {
        write_page();
        std::string text;
        for (int i = 0; i < 10; ++i) text += std::to_string(i) + " " + std::to_string(10 * i) + "\n";
        ::write_file("w.dat", text);
        ::write_file("secret.txt", "1 2\n");
        store = std::make_unique<view_store>(std::vector<std::string>{"w.dat"});
        server = std::make_unique<view_server>(*store, "page", 0);
        thread = std::thread([this] { server->listen(); });
        client = std::make_unique<httplib::Client>("127.0.0.1", server->port());
        const std::string address = server->address(), host = "http://127.0.0.1:" + std::to_string(server->port());
        EXPECT_EQ(address.substr(0, host.size()), host);
        base = address.substr(host.size());
        base.pop_back();
        store->want_file(0, "w.dat");
        store->wait_until_read();
    }
    ~served() {
        server->stop();
        thread.join();
    }
    int status(const std::string& path, const httplib::Headers& headers = {}) {
        const httplib::Result r = client->Get(path, headers);
        return r ? r->status : -1;
    }
    std::string body(const std::string& path) {
        const httplib::Result r = client->Get(base + path);
        return r ? r->body : "";
    }
};

std::vector<double> doubles_of(const std::string& bytes) {
    std::vector<double> values(bytes.size() / sizeof(double));
    std::memcpy(values.data(), bytes.data(), values.size() * sizeof(double));
    return values;
}

TEST(view_server, refuses_all_that_does_not_begin_with_its_token) {
    served s;
    EXPECT_EQ(s.base.size(), 33u);
    EXPECT_EQ(s.status(s.base + "/"), 200);
    std::string wrong = s.base;
    wrong.back() = wrong.back() == '0' ? '1' : '0';
    for (const std::string& path :
         {std::string("/"), std::string("/index.html"), std::string("/api/runs"), std::string("/favicon.ico"),
          wrong + "/", s.base + "0/", s.base.substr(0, 32) + "/", "/x" + s.base + "/", "/" + s.base + "/"})
        EXPECT_EQ(s.status(path), 403) << path;
    EXPECT_EQ(s.client->Post(s.base + "/api/runs", "x", "text/plain")->status, 405);
    EXPECT_EQ(s.client->Post("/api/runs", "x", "text/plain")->status, 403);
    EXPECT_EQ(s.client->Delete("/")->status, 403);
}

TEST(view_server, refuses_other_host_names_even_with_the_token) {
    served s;
    const std::string port = ":" + std::to_string(s.server->port());
    for (const std::string& host : {"127.0.0.1" + port, "localhost" + port})
        EXPECT_EQ(s.status(s.base + "/", {{"Host", host}}), 200) << host;
    for (const std::string& host : std::vector<std::string>{
             "evil.example" + port, "evil.example", "127.0.0.1.evil.example" + port, "127.0.0.1:1", "localhost", ""})
        EXPECT_EQ(s.status(s.base + "/", {{"Host", host}}), 403) << host;
}

TEST(view_server, a_stop_before_it_listens_is_not_forgotten) {
    served s;
    view_server other(*s.store, "page", 0);
    other.stop();
    other.listen();  // comes back
    EXPECT_EQ(httplib::Client("127.0.0.1", other.port()).Get("/").error() == httplib::Error::Success, false);
}

TEST(view_server, two_servers_have_different_tokens) {
    served s;
    const view_server other(*s.store, "page", 0);
    EXPECT_NE(other.address().substr(other.address().size() - 33),
              s.server->address().substr(s.server->address().size() - 33));
}

TEST(view_server, gives_the_page_and_no_other_file) {
    served s;
    EXPECT_EQ(s.body("/"), "text of index.html");
    EXPECT_EQ(s.body("/uPlot.min.css"), "text of uPlot.min.css");
    for (const char* path : {"/w.dat", "/secret.txt", "/../secret.txt", "/..%2fsecret.txt", "/%2e%2e/secret.txt",
                             "//etc/passwd", "/index.html/../../secret.txt", "/index.html%00", "/api", "/api/"})
        EXPECT_EQ(s.status(s.base + path), 404) << path;
    for (const char* file :
         {"secret.txt", "../w.dat", "./w.dat", "..%2fw.dat", "/etc/passwd", "%2fetc%2fpasswd", "", "w.dat%00"})
        EXPECT_EQ(s.status(s.base + "/api/data?run=0&columns=1&file=" + file), 404) << file;
}

TEST(view_server, sends_nothing_to_be_stored_and_lets_the_page_load_its_own_files_only) {
    served s;
    const httplib::Result r = s.client->Get(s.base + "/");
    EXPECT_EQ(r->get_header_value("Cache-Control"), "no-store");
    EXPECT_EQ(r->get_header_value("X-Content-Type-Options"), "nosniff");
    EXPECT_EQ(r->get_header_value("Content-Security-Policy").substr(0, 18), "default-src 'self'");
    EXPECT_EQ(r->get_header_value("Referrer-Policy"), "no-referrer");
    EXPECT_FALSE(r->has_header("Access-Control-Allow-Origin"));
    EXPECT_EQ(s.client->Get("/")->get_header_value("Cache-Control"), "no-store");
}

TEST(view_server, gives_rows_as_doubles_behind_a_head) {
    served s;
    EXPECT_EQ(doubles_of(s.body("/api/data?run=0&file=w.dat&columns=1&from=2&to=3")),
              (std::vector<double>{4, 2, 1, 0, 0, 9, 10, doubles_of(s.body("/api/data?run=0&file=w.dat&columns=1"))[7],
                                   1, 2, 3, 4, 10, 20, 30, 40}));
    EXPECT_EQ(doubles_of(s.body("/api/at?run=0&file=w.dat&columns=1,0&x=2.5")), (std::vector<double>{25, 2.5}));
    EXPECT_EQ(doubles_of(s.body("/api/data?run=0&file=w.dat&columns=1&points=1")),
              (std::vector<double>{4, 2, 0, 0, 0, 9, 10, doubles_of(s.body("/api/data?run=0&file=w.dat"))[7],  //
                                   0, 3, 6, 9, 0, 0, 90, 90}));
    const nlohmann::json list = nlohmann::json::parse(s.body("/api/runs"));
    EXPECT_EQ(list["runs"][0]["files"][0]["rows"], 10);
}

TEST(view_server, answers_with_whole_rows_while_the_file_grows) {
    served s;
    std::ofstream out("w.dat", std::ios::app);
    double rows = 10;
    for (int round = 0; round < 60; ++round) {
        for (int i = 0; i < 500; ++i) out << rows + i << " " << 10 * (rows + i) << "\n";
        rows += 500;
        out << rows << " ";  // half a line
        out.flush();
        s.body("/api/runs");  // has the reader look
        const std::vector<double> data = doubles_of(s.body("/api/data?run=0&file=w.dat&columns=1&points=20"));
        ASSERT_GE(data.size(), 8u);
        const auto n = static_cast<std::size_t>(data[0]);
        ASSERT_EQ(data.size(), 8 + 2 * n);
        ASSERT_LE(data[6], rows);
        ASSERT_EQ(data[5], data[6] - 1);       // the axis ends with the last row
        ASSERT_EQ(data.back(), 10 * data[5]);  // and so does the column
        out << 10 * rows << "\n";
        rows += 1;
    }
    out.flush();
    s.store->wait_until_read();
    EXPECT_EQ(doubles_of(s.body("/api/data?run=0&file=w.dat&columns=1"))[6], rows);
}

TEST(view_server, says_what_is_wrong_with_a_request) {
    served s;
    const auto told = [&](const std::string& words) {
        const httplib::Result r = s.client->Get(s.base + words);
        return std::to_string(r->status) + " " + r->body;
    };
    EXPECT_EQ(told("/api/data?run=x&file=w.dat"), "400 run is no number\n");
    EXPECT_EQ(told("/api/data?run=-1&file=w.dat"), "400 run is no number\n");
    EXPECT_EQ(told("/api/data?run=99999999999999999999999&file=w.dat"), "400 run is no number\n");
    EXPECT_EQ(told("/api/data?run=0&file=w.dat&columns=2"), "400 no such column\n");
    EXPECT_EQ(told("/api/data?run=0&file=w.dat&columns=1,,1"), "400 columns is no number\n");
    EXPECT_EQ(told("/api/data?run=0&file=w.dat&columns=1&from=nan"), "400 from is no number\n");
    EXPECT_EQ(told("/api/at?run=0&file=w.dat&columns=1"), "400 x is missing\n");
    EXPECT_EQ(told("/api/data?run=0&file=w.dat&columns=1&axis=2"), "400 no such axis\n");
    EXPECT_EQ(told("/api/data?run=0&file=w.dat&columns=1&axis=-2"), "400 no such axis\n");
    EXPECT_EQ(told("/api/data?run=1&file=w.dat"), "404 no such file in this run\n");
    EXPECT_EQ(s.status(s.base + "/api/data?run=0&file=w.dat&columns=1&points=18446744073709551615"), 200);
    EXPECT_EQ(s.status(s.base + "/api/data?run=0&file=w.dat&columns=1&points=0"), 200);
    EXPECT_EQ(s.status(s.base + "/api/data?run=0&file=w.dat&columns=1&curve=7"), 200);
    EXPECT_EQ(s.status(s.base + "/api/data?run=0&file=w.dat&columns=1&from=-inf&to=inf"), 200);
}

// Each connection that waits costs no thread, and what it sends may come byte by byte.
TEST(view_server, many_idle_and_slow_connections_keep_the_page_alive) {
    served s;
    std::vector<int> sockets;
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<std::uint16_t>(s.server->port()));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::string begin = "GET " + s.base + "/ HTTP/1.1\r\nX: ";
    for (int i = 0; i < 150; ++i) {
        sockets.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_EQ(::connect(sockets.back(), reinterpret_cast<sockaddr*>(&to), sizeof to), 0);
        if (i % 2 == 0) {
            EXPECT_GT(::send(sockets.back(), begin.data(), begin.size(), MSG_NOSIGNAL), 0);
        }
    }
    s.client->set_read_timeout(5);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(s.status(s.base + "/api/runs"), 200);
        for (std::size_t k = 0; k < sockets.size(); k += 2) ::send(sockets[k], "x", 1, MSG_NOSIGNAL);
    }
    for (const int one : sockets) ::close(one);
}

TEST(view_server, fails_when_the_port_is_taken_or_the_page_is_not_there) {
    served s;
    EXPECT_THROW(view_server(*s.store, "page", s.server->port()), file_error);
    fs::remove("page/uPlot.min.css");
    EXPECT_THROW(view_server(*s.store, "page", 0), file_error);
}

TEST(view_server, a_refused_request_does_not_count_as_use) {
    served s;
    const double before = s.server->seconds_idle();
    s.status("/");
    EXPECT_GE(s.server->seconds_idle(), before);
}

}  // namespace
