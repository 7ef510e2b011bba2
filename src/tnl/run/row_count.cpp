#include "tnl/run/row_count.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cli {

namespace {

constexpr std::string_view blanks = " \t\r";

int words_in(std::string_view line) {
    int n = 0;
    for (std::size_t at = 0; (at = line.find_first_not_of(blanks, at)) != std::string_view::npos; ++n)
        at = std::min(line.find_first_of(blanks, at), line.size());
    return n;
}

}  // namespace

row_count count_rows(const std::filesystem::path& path) {
    row_count count;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return count;
    std::vector<char> block(1u << 18);
    std::string begun, joined, last;  // a line that is not complete yet; the same, complete; the last row
    bool in_curve = false;
    for (ssize_t n = 0; (n = ::read(fd, block.data(), block.size())) > 0;) {
        std::string_view rest(block.data(), static_cast<std::size_t>(n));
        std::string_view row;
        for (std::size_t end = 0; (end = rest.find('\n')) != std::string_view::npos; rest.remove_prefix(end + 1)) {
            std::string_view line = rest.substr(0, end);
            if (!begun.empty()) {
                joined = std::exchange(begun, {}).append(line);
                line = joined;
            }
            if (line.find_first_not_of(blanks) == std::string_view::npos) {
                in_curve = false;
                continue;
            }
            if (count.rows++ == 0) count.columns = words_in(line);
            if (!std::exchange(in_curve, true)) ++count.curves;
            row = line;
        }
        if (!row.empty()) last = row;
        begun += rest;
    }
    ::close(fd);
    count.last = std::strtod(last.c_str(), nullptr);
    return count;
}

double last_time(const std::filesystem::path& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return -1;
    char end[8192];
    const off_t size = ::lseek(fd, 0, SEEK_END);
    const off_t from = std::max<off_t>(0, size - static_cast<off_t>(sizeof end));
    const ssize_t n = ::pread(fd, end, sizeof end, from);
    ::close(fd);
    std::string_view text(end, n > 0 ? static_cast<std::size_t>(n) : 0);
    text = text.substr(
        0, text.rfind('\n') == std::string_view::npos ? 0 : text.rfind('\n'));  // behind it a row is not complete
    if (text.empty() || n <= 0) return -1;
    const std::size_t before = text.rfind('\n');
    if (before == std::string_view::npos && from > 0) return -1;
    const std::string row(text.substr(before == std::string_view::npos ? 0 : before + 1));
    char* behind = nullptr;
    const double t = std::strtod(row.c_str(), &behind);
    return behind == row.c_str() ? -1 : t;
}

}  // namespace cli
