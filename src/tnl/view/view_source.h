// view_source.h -- a row file that is followed while it grows.
#pragma once
#include <filesystem>
#include <string>

#include "tnl/view/view_columns.h"

namespace cli {

// What is read of one file. The descriptor stays open, so that the file is known again when it moves, and one of the
// same name in its place is known as another.
struct row_source {
    int fd = -1;
    unsigned long long device = 0, inode = 0;
    long long at = 0, size = 0;  // bytes taken, bytes there at the last look
    std::string rest;            // of a line whose end is not there yet
    view_rows rows;
    long long version = 0;  // changes with the rows
    std::string problem;    // a fault ends the reading until another file takes the place; empty: none

    row_source() = default;
    ~row_source();
    row_source(const row_source&) = delete;
    row_source& operator=(const row_source&) = delete;
};

// Has the file read from its begin at the next look.
void begin_anew(row_source& source);

// Looks for the file: opens it, or begins anew when another one or a shorter one stands there. A file that is missing
// for now changes nothing. Says whether more can be read.
bool look_at(row_source& source, const std::filesystem::path& path);

// The next whole lines, at most about n bytes of them; empty: none for now.
std::string next_lines(row_source& source, std::size_t n);

}  // namespace cli
