#include "tnl/common/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tnl/common/exit_status.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& path, const std::string& why) {
    throw file_error("cannot read " + path + ": " + why);
}

std::string in_megabytes(std::uintmax_t n) {
    return n < (1u << 20) ? std::to_string(n) + " bytes" : std::to_string(n >> 20) + " MB";
}

std::string read_all(int fd, const std::string& path, std::uintmax_t most) {
    std::string text;
    char block[1 << 16];
    for (;;) {
        const ssize_t n = ::read(fd, block, sizeof block);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) fail(path, std::strerror(errno));
        if (n == 0) return text;
        if (text.size() + static_cast<std::size_t>(n) > most)
            fail(path, "it has more than " + in_megabytes(most) + ", the most that is read");
        text.append(block, static_cast<std::size_t>(n));
    }
}

struct open_file {
    int fd;
    ~open_file() {
        if (fd >= 0) ::close(fd);
    }
};

std::string kind_of(mode_t mode) {
    if (S_ISREG(mode)) return {};
    return S_ISDIR(mode) ? "a folder" : S_ISFIFO(mode) ? "a pipe" : S_ISSOCK(mode) ? "a socket" : "a device";
}

}  // namespace

std::string read_file(const fs::path& path, std::uintmax_t most) {
    // Without waiting for somebody who writes into a pipe.
    const open_file file{::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
    struct stat there {};
    if (file.fd < 0 || ::fstat(file.fd, &there) != 0) {
        const int why = errno;
        const std::string kind = other_than_file(path);  // a socket cannot even be opened
        fail(path.string(), kind.empty() ? std::strerror(why) : "it is " + kind);
    }
    const std::string kind = kind_of(there.st_mode);
    if (!kind.empty()) fail(path.string(), "it is " + kind);
    return read_all(file.fd, path.string(), most);
}

std::string read_standard_input(std::uintmax_t most) { return read_all(STDIN_FILENO, "standard input", most); }

std::string other_than_file(const fs::path& path) {
    struct stat there {};
    return ::stat(path.c_str(), &there) == 0 ? kind_of(there.st_mode) : std::string();
}

}  // namespace cli
