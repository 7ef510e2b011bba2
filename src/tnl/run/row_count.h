// row_count.h -- rows of a file, counted without holding them.
#pragma once
#include <filesystem>

namespace cli {

// Lines without line end, as a run that was cut may leave one, do not count.
struct row_count {
    long long rows = 0;
    int curves = 0;   // parts with blank lines between them
    int columns = 0;  // of the first row
    double last = 0;  // the last row's first number
};
row_count count_rows(const std::filesystem::path& path);  // of a file that cannot be read: nothing

// The first number of the last complete row, found from the file's end; -1 if there is none.
double last_time(const std::filesystem::path& path);

}  // namespace cli
