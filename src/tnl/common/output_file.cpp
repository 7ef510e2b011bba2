#include "tnl/common/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "tnl/common/exit_status.h"

namespace cli {

namespace {

constexpr std::size_t buffer_size = 1u << 20;  // bytes

std::string folder_of(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Follows links, also one to a file that is not there yet. A ring of links ends where it is.
std::string behind_links(std::string path) {
    for (int step = 0; step < 40; ++step) {
        char to[PATH_MAX];
        const ssize_t n = ::readlink(path.c_str(), to, sizeof to);
        if (n <= 0 || n == static_cast<ssize_t>(sizeof to)) break;
        const std::string next(to, static_cast<std::size_t>(n));
        path = next[0] == '/' ? next : folder_of(path) + "/" + next;
    }
    return path;
}

// A name for a file until it is complete. A process of the same number may have left one: then the next will do.
std::string fresh_name(const std::string& folder) {
    static std::atomic<int> count = 0;
    return folder + "/.tnl-" + std::to_string(::getpid()) + "-" + std::to_string(++count) + ".part";
}

int open_quietly(const std::string& path, int flags, unsigned mode = 0666) {
    for (;;) {
        const int fd = ::open(path.c_str(), flags | O_CLOEXEC, mode);
        if (fd >= 0 || errno != EINTR) return fd;
    }
}

}  // namespace

void output_file::fail(int error) {
    drop();
    throw file_error("cannot write " + (path_ == "-" ? "standard output" : path_) + ": " +
                     (error == EISDIR    ? "it is a folder"
                      : error == ENOTBLK ? "it is a device"
                                         : std::strerror(error)));
}

output_file::output_file(std::string path) : path_(std::move(path)) {
    if (path_ == "-" || path_ == "/dev/stdout") {
        std::cout.flush();
        std::fflush(stdout);
        fd_ = STDOUT_FILENO;
    } else {
        open_target();
    }
    buffer_.reserve(buffer_size);
}

void output_file::open_target() {
    if (path_.empty()) fail(ENOENT);
    if (path_.back() == '/') fail(EISDIR);
    struct stat status {};
    const bool exists = ::stat(path_.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) fail(errno);
    if (exists && S_ISDIR(status.st_mode)) fail(EISDIR);
    // The caller's open files have no name to be replaced under.
    const bool is_open_file = path_.starts_with("/dev/fd/") || path_.starts_with("/proc/") || path_ == "/dev/stderr";
    const bool is_direct = exists && (S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode) || is_open_file);
    if (exists && !is_direct && !S_ISREG(status.st_mode)) fail(ENOTBLK);
    if (is_direct) {
        fd_ = open_quietly(path_, O_WRONLY | O_NOCTTY);
        if (fd_ < 0) fail(errno);
        is_own_ = true;
        return;
    }
    if (exists && ::access(path_.c_str(), W_OK) != 0) fail(errno);
    target_ = behind_links(path_);
    open_beside(folder_of(target_), status.st_mode & 07777u, exists);
}

// A file without a name vanishes with the process, however that ends. Not every file system knows them.
void output_file::open_beside(const std::string& folder, unsigned mode, bool replaces) {
#ifdef O_TMPFILE
    if (::access("/proc/self/fd", X_OK) == 0) fd_ = open_quietly(folder, O_TMPFILE | O_WRONLY);  // for commit()
#endif
    if (fd_ < 0) {
        std::string name;
        do {
            name = fresh_name(folder);
            fd_ = open_quietly(name, O_CREAT | O_EXCL | O_WRONLY);
        } while (fd_ < 0 && errno == EEXIST);
        if (fd_ < 0) fail(errno);
        beside_ = name;
    }
    is_own_ = true;
    if (replaces && ::fchmod(fd_, static_cast<mode_t>(mode)) != 0) fail(errno);
}

void output_file::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t n = std::min(bytes.size(), buffer_size - buffer_.size());
        buffer_.append(bytes.substr(0, n));
        bytes.remove_prefix(n);
        if (buffer_.size() == buffer_size) flush();
    }
}

void output_file::flush() {
    std::string_view rest = buffer_;
    while (!rest.empty()) {
        const ssize_t n = ::write(fd_, rest.data(), rest.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) fail(n == 0 ? EIO : errno);
        rest.remove_prefix(static_cast<std::size_t>(n));
    }
    buffer_.clear();
}

void output_file::commit() {
    if (fd_ < 0) return;
    flush();
    if (!target_.empty() && beside_.empty()) {
        const std::string self = "/proc/self/fd/" + std::to_string(fd_);
        std::string name;
        int failed = 0;
        do {
            name = fresh_name(folder_of(target_));
            failed = ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW);
        } while (failed != 0 && errno == EEXIST);
        if (failed != 0) fail(errno);
        beside_ = name;
    }
    const int fd = fd_;
    fd_ = -1;
    if (is_own_ && ::close(fd) != 0 && errno != EINTR) fail(errno);
    if (target_.empty()) return;
    if (::rename(beside_.c_str(), target_.c_str()) != 0) fail(errno);
    beside_.clear();
}

void output_file::drop() {
    if (fd_ >= 0 && is_own_) ::close(fd_);
    if (!beside_.empty()) ::unlink(beside_.c_str());
    fd_ = -1;
    beside_.clear();
}

output_file::~output_file() { drop(); }

void write_output(const std::string& path, std::string_view text) {
    output_file file(path);
    file.write(text);
    file.commit();
}

}  // namespace cli
