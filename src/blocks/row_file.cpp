#include "blocks/row_file.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "blocks/scientific.h"

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
    failed_ = false;
    file_ = std::fopen(path.c_str(), append ? "ab" : "wb");
    if (file_ == nullptr) halt({line("row_file: output file ", path, " could not be opened."), "  Halting..."});
    std::setvbuf(file_, nullptr, _IONBF, 0);
    buffer_.resize(buffer_size);
}

void row_file::write_out() {
    if (used_ > 0 && std::fwrite(buffer_.data(), 1, used_, file_) != used_) failed_ = true;
    used_ = 0;
}

char* row_file::room(std::size_t n) {
    if (buffer_.size() - used_ < n) write_out();
    return buffer_.data() + used_;
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
    if (std::fclose(file_) != 0) failed_ = true;
    file_ = nullptr;
    if (failed_) halt({line("row_file: output file ", path_, " could not be written."), "  Halting..."});
}

// A stop is on its way already, so a failure is only remembered here.
void row_file::flush_now() {
    if (file_ != nullptr) write_out();
}
