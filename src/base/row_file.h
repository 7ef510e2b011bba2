// row_file.h -- fast writing of rows of numbers.
#pragma once
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "base/halt.h"

// An output file behind a buffer of its own. Numbers have the bytes of printf's formats told with each function. What
// is in the buffer reaches the disk when it is full, at close(), and when the run stops early. A file that cannot be
// written halts with its name and the cause when that shows: as a buffer is full, at the end of a row, at close().
class row_file final : public flushed_at_halt {
public:
    row_file() = default;
    ~row_file() override;

    // Creates the file, or continues it. Halts with its name and the cause when it cannot be opened.
    void open(const std::string& path, bool append);
    bool is_open() const { return file_ != nullptr; }

    void put(double x, char behind = ' ');  // "%13.6e" and that character
    void put_plain(double x);               // "%e"
    void put_field(int x);                  // "%3d "
    void put_int(int x);                    // "%d"
    void put_text(std::string_view text);
    void end_row();

    // Writes out what is left.
    void close();
    void flush_now() override;

private:
    char* room(std::size_t n);  // at least n free bytes at the end of the buffer
    void write_out();
    void drop_half_row();
    [[noreturn]] void stop() const;  // as error_ says

    std::FILE* file_ = nullptr;
    std::string path_;
    std::vector<char> buffer_;
    std::size_t used_ = 0;
    long whole_rows_ = 0;  // bytes of the file up to the end of its last whole row
    int error_ = 0;        // errno of the first write that failed; what comes behind it is lost
};
