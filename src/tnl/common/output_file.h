// output_file.h -- a file that appears under its name only when it is complete.
#pragma once
#include <string>
#include <string_view>

namespace cli {

// Text goes through a buffer into a file beside the final one; commit() renames it. Without commit() the folder is left
// as it was. What stands under the name is replaced, with its permissions kept; a link is followed. A folder, block
// device or socket in its place is refused, as is a file without permission to write. Character devices, pipes and "-",
// standard output, are written directly. Every failure throws file_error with the name.
class output_file {
public:
    explicit output_file(std::string path);
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    void write(std::string_view bytes);
    void commit();  // ends the writing; a second call does nothing

private:
    [[noreturn]] void fail(int error);
    void open_target();
    void open_beside(const std::string& folder, unsigned mode, bool replaces);
    void flush();
    void drop();

    std::string path_;    // as given
    std::string target_;  // links resolved; empty: written directly
    std::string beside_;  // name of the file until commit; empty: it has none yet
    std::string buffer_;
    int fd_ = -1;
    bool is_own_ = false;  // fd_ is to be closed
};

// The whole text at once.
void write_output(const std::string& path, std::string_view text);

}  // namespace cli
