#include "base/row_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

#include "base/scientific.h"

namespace {
constexpr std::size_t buffer_size = std::size_t{1} << 16;
constexpr std::size_t number_room = 40;  // the longest number has a sign, 7 digits, a point and 5 more
constexpr int field_width = 13, precision = 6, digital_width = 3;
}  // namespace

row_file::~row_file() {
    if (file_ == nullptr) return;
    flush_now();
    std::fclose(file_);
}

void row_file::open(const std::string& path, bool append) {
    path_ = path;
    used_ = 0;
    error_ = 0;
    file_ = std::fopen(path.c_str(), append ? "ab" : "wb");
    if (file_ == nullptr)
        halt({line("row_file: output file ", path, " could not be opened."), line("  ", std::strerror(errno)),
              "  Halting..."});
    std::setvbuf(file_, nullptr, _IONBF, 0);
    whole_rows_ = std::fseek(file_, 0, SEEK_END) == 0 ? std::ftell(file_) : 0;
    buffer_.resize(buffer_size);
}

void row_file::stop() const {
    halt({line("row_file: output file ", path_, " could not be written."), line("  ", std::strerror(error_)),
          "  Halting..."});
}

void row_file::write_out() {
    errno = 0;
    const std::size_t n = error_ == 0 ? std::fwrite(buffer_.data(), 1, used_, file_) : 0;
    const std::size_t end = std::string_view(buffer_.data(), n).rfind('\n');
    if (end != std::string_view::npos) whole_rows_ = std::ftell(file_) - static_cast<long>(n - end - 1);
    if (n < used_ && error_ == 0) {
        error_ = errno != 0 ? errno : EIO;
        drop_half_row();
    }
    used_ = 0;
}

// A disk that is full may have taken the beginning of a row, in this write or in those before it.
void row_file::drop_half_row() {
    if (std::ftell(file_) <= whole_rows_) return;
    if (::ftruncate(::fileno(file_), whole_rows_) != 0) return;  // no regular file
}

char* row_file::room(std::size_t n) {
    if (buffer_.size() - used_ < n) {
        write_out();
        if (error_ != 0) stop();
    }
    return buffer_.data() + used_;
}

void row_file::end_row() {
    put_text("\n");
    if (error_ != 0) stop();  // as the last flush_now() found
}

void row_file::put(double x, char behind) {
    char* quick = room(scientific_width + 1);
    if (put_scientific(x, quick)) {
        quick[scientific_width] = behind;
        used_ += scientific_width + 1;
        return;
    }
    char digits[number_room];
    const std::to_chars_result end =
        std::to_chars(digits, digits + number_room, x, std::chars_format::scientific, precision);
    const auto n = static_cast<std::size_t>(end.ptr - digits);
    const std::size_t pad = n < field_width ? field_width - n : 0;
    char* to = room(number_room + field_width + 1);
    std::memset(to, ' ', pad);
    std::memcpy(to + pad, digits, n);
    to[pad + n] = behind;
    used_ += pad + n + 1;
}

void row_file::put_plain(double x) {
    char* to = room(number_room);
    used_ += static_cast<std::size_t>(
        std::to_chars(to, to + number_room, x, std::chars_format::scientific, precision).ptr - to);
}

void row_file::put_field(int x) {
    char digits[number_room];
    const auto n = static_cast<std::size_t>(std::to_chars(digits, digits + number_room, x).ptr - digits);
    const std::size_t pad = n < digital_width ? digital_width - n : 0;
    char* to = room(number_room + digital_width + 1);
    std::memset(to, ' ', pad);
    std::memcpy(to + pad, digits, n);
    to[pad + n] = ' ';
    used_ += pad + n + 1;
}

void row_file::put_int(int x) {
    char* to = room(number_room);
    used_ += static_cast<std::size_t>(std::to_chars(to, to + number_room, x).ptr - to);
}

void row_file::put_text(std::string_view text) {
    while (!text.empty()) {
        char* to = room(1);
        const std::size_t n = std::min(text.size(), buffer_.size() - used_);
        std::memcpy(to, text.data(), n);
        used_ += n;
        text.remove_prefix(n);
    }
}

void row_file::close() {
    if (file_ == nullptr) return;
    write_out();
    if (std::fclose(file_) != 0 && error_ == 0) error_ = errno;
    file_ = nullptr;
    if (error_ != 0) stop();
}

// A stop may be on its way already, so a failure is only remembered here.
void row_file::flush_now() {
    if (file_ != nullptr) write_out();
}
