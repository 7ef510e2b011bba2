#include "tnl/view/view_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace cli {

namespace {

constexpr std::size_t longest_line = 16u << 20;

bool is_same(const row_source& source, const struct stat& s) {
    return source.fd >= 0 && source.device == s.st_dev && source.inode == s.st_ino && s.st_size >= source.at;
}

}  // namespace

void begin_anew(row_source& source) {
    if (source.fd >= 0) close(source.fd);
    source.fd = -1;
    source.at = source.size = 0;
    source.rest.clear();
    source.rows = {};
    source.problem.clear();
    ++source.version;
}

row_source::~row_source() {
    if (fd >= 0) close(fd);
}

bool look_at(row_source& source, const std::filesystem::path& path) {
    struct stat there {};
    if (stat(path.c_str(), &there) != 0) return source.fd >= 0 && source.problem.empty() && source.at < source.size;
    if (!is_same(source, there)) {
        const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);  // no waiting for the writer of a pipe
        const int why = errno;
        begin_anew(source);
        if (fd < 0) {
            source.problem = "cannot read " + path.string() + ": " + std::strerror(why);
            return false;
        }
        source.fd = fd;
        if (fstat(fd, &there) != 0 || !S_ISREG(there.st_mode)) {
            source.problem = "cannot read " + path.string() + ": it is no file";
            there.st_size = 0;
        }
        source.device = there.st_dev;
        source.inode = there.st_ino;
    }
    source.size = there.st_size;
    return source.problem.empty() && source.at < source.size;
}

std::string next_lines(row_source& source, std::size_t n) {
    std::string lines = std::move(source.rest);
    source.rest.clear();
    const std::size_t before = lines.size();
    lines.resize(before + n);
    ssize_t got = -1;
    do got = pread(source.fd, lines.data() + before, n, source.at);
    while (got < 0 && errno == EINTR);
    if (got < 0) source.problem = std::string("cannot read: ") + std::strerror(errno);
    lines.resize(before + (got > 0 ? static_cast<std::size_t>(got) : 0));
    source.at += got > 0 ? got : 0;
    const std::size_t end = lines.rfind('\n');
    const std::size_t whole = end == std::string::npos ? 0 : end + 1;
    source.rest = lines.substr(whole);
    lines.resize(whole);
    if (source.rest.size() > longest_line) source.problem = "not a row file: a line does not end";
    return lines;
}

}  // namespace cli
