#include "tnl/view/view_server.h"

#include <httplib.h>
#include <sys/random.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <optional>

#include "tnl/common/exit_status.h"
#include "tnl/run/run_folder.h"
#include "tnl/view/view_reduce.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

struct page_file {
    std::string_view path, name, type;
};
constexpr page_file page_files[] = {
    {"/", "index.html", "text/html; charset=utf-8"},
    {"/view.js", "view.js", "text/javascript; charset=utf-8"},
    {"/plots.js", "plots.js", "text/javascript; charset=utf-8"},
    {"/locus.js", "locus.js", "text/javascript; charset=utf-8"},
    {"/lanes.js", "lanes.js", "text/javascript; charset=utf-8"},
    {"/parts.js", "parts.js", "text/javascript; charset=utf-8"},
    {"/rows.js", "rows.js", "text/javascript; charset=utf-8"},
    {"/view.css", "view.css", "text/css; charset=utf-8"},
    {"/icon.svg", "icon.svg", "image/svg+xml"},
    {"/uPlot.iife.min.js", "uPlot.iife.min.js", "text/javascript; charset=utf-8"},
    {"/uPlot.min.css", "uPlot.min.css", "text/css; charset=utf-8"},
};
constexpr std::size_t most_points = 20000, most_columns = 1000;

std::string new_token() {
    unsigned char bytes[16];
    if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes))
        throw file_error(std::string("no random numbers: ") + std::strerror(errno));
    constexpr const char* digits = "0123456789abcdef";
    std::string token;
    for (const unsigned char b : bytes) {
        token += digits[b >> 4];
        token += digits[b & 15];
    }
    return token;
}

// In a time that does not tell how much of it is right.
bool begins_with_token(const std::string& path, const std::string& token) {
    if (path.size() < token.size() + 1 || path[0] != '/') return false;
    unsigned difference = 0;
    for (std::size_t i = 0; i < token.size(); ++i)
        difference |= static_cast<unsigned char>(path[i + 1]) ^ static_cast<unsigned char>(token[i]);
    return difference == 0 && (path.size() == token.size() + 1 || path[token.size() + 1] == '/');
}

bool is_own_host(const std::string& host, int port) {
    const std::string end = ":" + std::to_string(port);
    return host == "127.0.0.1" + end || host == "localhost" + end ||
           (port == 80 && (host == "127.0.0.1" || host == "localhost"));
}

void answer(httplib::Response& to, int status, const std::string& text, std::string_view type = "text/plain") {
    to.status = status;
    to.set_content(text, std::string(type));
}

// What is wrong with a request, for the one who writes it.
struct bad_request : std::runtime_error {
    using std::runtime_error::runtime_error;
};

template <class T>
T number_of(std::string_view text, const char* name) {
    T x{};
    const std::from_chars_result r = std::from_chars(text.data(), text.data() + text.size(), x);
    if (r.ec != std::errc() || r.ptr != text.data() + text.size() || !(x == x))
        throw bad_request(std::string(name) + " is no number");
    return x;
}

template <class T>
std::optional<T> find_number(const httplib::Request& request, const char* name) {
    const std::string text = request.get_param_value(name);
    if (text.empty()) return std::nullopt;
    return number_of<T>(text, name);
}

std::vector<std::size_t> columns_of(const httplib::Request& request) {
    std::vector<std::size_t> columns;
    const std::string text = request.get_param_value("columns");
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        columns.push_back(number_of<std::size_t>(std::string_view(text).substr(at, end - at), "columns"));
        at = end + 1;
    }
    if (columns.size() > most_columns) throw bad_request("too many columns");
    return columns;
}

void check_columns(const view_window& window, const view_rows& rows) {
    if (rows.n == 0) return;
    for (const std::size_t column : window.columns)
        if (column >= rows.columns.size()) throw bad_request("no such column");
    if (window.axis < -1 || window.axis >= static_cast<int>(rows.columns.size())) throw bad_request("no such axis");
}

void put(std::string& bytes, double x) {
    static_assert(std::endian::native == std::endian::little);
    char raw[sizeof x];
    std::memcpy(raw, &x, sizeof x);
    bytes.append(raw, sizeof x);
}
void put(std::string& bytes, const std::vector<double>& values) {
    for (const double x : values) put(bytes, x);
}

view_file_ptr file_of(const httplib::Request& request, view_store& store) {
    const std::size_t run = find_number<std::size_t>(request, "run").value_or(0);
    return store.want_file(run, request.get_param_value("file"));
}

view_window window_of(const httplib::Request& request) {
    view_window window;
    window.curve = find_number<std::size_t>(request, "curve").value_or(0);
    window.columns = columns_of(request);
    window.from = find_number<double>(request, "from");
    window.to = find_number<double>(request, "to");
    window.points = std::clamp<std::size_t>(find_number<std::size_t>(request, "points").value_or(1000), 1, most_points);
    window.by_rows = request.get_param_value("spacing") == "rows";
    window.axis = request.get_param_value("axis") == "rows" ? -1 : find_number<int>(request, "axis").value_or(0);
    return window;
}

std::string data_bytes(const httplib::Request& request, view_file& file) {
    const view_window window = window_of(request);
    const std::lock_guard<std::mutex> hold(file.lock);
    const view_rows& rows = file.source.rows;
    check_columns(window, rows);
    const reduced_rows out = reduce(rows, window);
    std::string bytes;
    bytes.reserve(8 * (8 + out.x.size() * (1 + out.y.size())));
    for (const double x : {static_cast<double>(out.x.size()), static_cast<double>(1 + out.y.size()),
                           out.whole ? 1.0 : 0.0, out.row_axis ? 1.0 : 0.0, out.lo, out.hi,
                           static_cast<double>(out.n_curve), static_cast<double>(file.source.version)})
        put(bytes, x);
    put(bytes, out.x);
    for (const std::vector<double>& y : out.y) put(bytes, y);
    return bytes;
}

std::string at_bytes(const httplib::Request& request, view_file& file) {
    const view_window window = window_of(request);
    const std::optional<double> x = find_number<double>(request, "x");
    if (!x) throw bad_request("x is missing");
    const std::lock_guard<std::mutex> hold(file.lock);
    check_columns(window, file.source.rows);
    std::string bytes;
    put(bytes, values_at(file.source.rows, window, *x));
    return bytes;
}

void answer_rows(const httplib::Request& request, httplib::Response& to, view_store& store,
                 std::string (*bytes_of)(const httplib::Request&, view_file&)) {
    const view_file_ptr file = file_of(request, store);
    if (!file)
        answer(to, 404, "no such file in this run\n");
    else
        answer(to, 200, bytes_of(request, *file), "application/octet-stream");
}

void answer_path(const std::string& path, const httplib::Request& request, httplib::Response& to, view_store& store,
                 const fs::path& page) {
    if (request.method != "GET" && request.method != "HEAD") return answer(to, 405, "only GET\n");
    if (path == "/api/runs") return answer(to, 200, store.list(), "application/json");
    if (path == "/api/data") return answer_rows(request, to, store, data_bytes);
    if (path == "/api/at") return answer_rows(request, to, store, at_bytes);
    if (path == "/api/column") {
        try {
            store.add_column(request.get_param_value("text"));
        } catch (const usage_error& e) {
            return answer(to, 400, std::string(e.what()) + "\n");
        }
        return answer(to, 200, "");
    }
    for (const page_file& file : page_files)
        if (path == file.path) return answer(to, 200, read_file(page / file.name), file.type);
    answer(to, 404, "no such page\n");
}

}  // namespace

// The library's reader of requests and writer of answers, over texts in memory: it never waits for a client.
class view_server::request_reader : public httplib::Server {
public:
    std::string answer(const std::string& head, bool& keep_open) {
        text_stream text(head);
        bool closed = false;
        // A body would be taken for the next request; nothing that is answered has one.
        const auto look = [&](const httplib::Request& request) {
            keep_open = (request.method == "GET" || request.method == "HEAD") &&
                        !request.has_header("Content-Length") && !request.has_header("Transfer-Encoding");
        };
        keep_open = false;
        const bool good = process_request(text, false, closed, look);
        keep_open = keep_open && good && !closed;
        return std::move(text.out);
    }

private:
    class text_stream : public httplib::Stream {
    public:
        explicit text_stream(const std::string& in) : in_(in) {}
        std::string out;

        bool is_readable() const override { return at_ < in_.size(); }
        bool is_writable() const override { return true; }
        ssize_t read(char* to, std::size_t size) override {
            const std::size_t n = in_.copy(to, size, at_);
            at_ += n;
            return static_cast<ssize_t>(n);
        }
        ssize_t write(const char* from, std::size_t size) override {
            out.append(from, size);
            return static_cast<ssize_t>(size);
        }
        void get_remote_ip_and_port(std::string&, int&) const override {}
        void get_local_ip_and_port(std::string&, int&) const override {}
        socket_t socket() const override { return INVALID_SOCKET; }

    private:
        const std::string& in_;
        std::size_t at_ = 0;
    };
};

view_server::view_server(view_store& store, fs::path page, int port, const view_limits& limits)
    : store_(store), page_(std::move(page)), token_(new_token()), reader_(std::make_unique<request_reader>()) {
    last_request_ = std::chrono::steady_clock::now();
    for (const page_file& file : page_files)
        if (!fs::exists(page_ / file.name))
            throw file_error("the page is not installed: " + (page_ / file.name).string() +
                             " is missing; the script ./tnl brings it (./tnl view)");
    reader_->set_default_headers(
        {{"Cache-Control", "no-store"},
         {"Content-Security-Policy", "default-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
         {"Cross-Origin-Resource-Policy", "same-origin"},
         {"Referrer-Policy", "no-referrer"},
         {"X-Content-Type-Options", "nosniff"}});
    reader_->set_keep_alive_timeout(static_cast<time_t>(limits.idle));
    reader_->set_payload_max_length(4096);
    reader_->set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& to) {
        if (!is_own_host(request.get_header_value("Host"), this->port()) || !begins_with_token(request.path, token_)) {
            answer(to, 403, "forbidden\n");
            return httplib::Server::HandlerResponse::Handled;
        }
        last_request_ = std::chrono::steady_clock::now();
        const std::string path = request.path.substr(token_.size() + 1);
        try {
            if (path.empty())
                to.set_redirect("/" + token_ + "/");
            else
                answer_path(path, request, to, store_, page_);
        } catch (const bad_request& e) {
            answer(to, 400, std::string(e.what()) + "\n");
        } catch (const std::exception& e) {
            answer(to, 500, std::string(e.what()) + "\n");
        }
        return httplib::Server::HandlerResponse::Handled;
    });
    connections_ = std::make_unique<view_connections>(
        port, [this](const std::string& head, bool& keep_open) { return reader_->answer(head, keep_open); }, limits);
}

view_server::~view_server() = default;

std::string view_server::address() const { return "http://127.0.0.1:" + std::to_string(port()) + "/" + token_ + "/"; }

void view_server::listen() { connections_->serve(); }

void view_server::stop() { connections_->stop(); }

double view_server::seconds_idle() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - last_request_.load()).count();
}

}  // namespace cli
