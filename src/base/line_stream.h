// line_stream.h -- a text file read line by line, in memory that does not grow with the file.
#pragma once
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The lines of a file that may be far larger than the memory; only a block of it, and the line that crosses its end,
// are held.
class line_stream {
public:
    // Halts with "<who>: file <path> does not exist. Halting...", and with texts of its own for what is no file.
    line_stream(const std::string& path, const std::string& who);
    // The next line without its newline; it stands until the next call. False behind the last one.
    bool next(std::string_view& line);

private:
    struct closer {
        void operator()(std::FILE* f) const { std::fclose(f); }
    };
    bool fill();  // reads behind what is left; false at the end of the file

    std::string path_;
    std::unique_ptr<std::FILE, closer> file_;
    std::vector<char> block_;
    std::size_t from_ = 0, to_ = 0;  // what is read and not yet handed out
};
