// input_file.h -- files of the user's, read whole: regular ones alone, and none beyond what a run can use.
#pragma once
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace cli {

inline constexpr std::uintmax_t most_deck_bytes = 64u << 20;  // of a deck, what it includes counted
inline constexpr std::size_t most_deck_lines = 2000000;       // likewise
inline constexpr int most_includes = 10000;                   // files that a deck brings in, repeats counted
inline constexpr std::uintmax_t most_row_bytes = std::uintmax_t{4} << 30, most_piped_bytes = 512u << 20;  // of rows

// Throws file_error for what cannot be read, for what is no regular file, which may have no end, or nobody who writes
// it, and for what has more bytes.
std::string read_file(const std::filesystem::path& path, std::uintmax_t most = most_row_bytes);
std::string read_standard_input(std::uintmax_t most);

// "a folder", "a device", "a pipe", "a socket": what stands there in place of a file. Empty for a file and for nothing.
std::string other_than_file(const std::filesystem::path& path);

}  // namespace cli
