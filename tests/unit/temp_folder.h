// temp_folder.h -- a folder of its own for a test that writes files; the test runs inside it.
#pragma once
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

class temp_folder {
public:
    temp_folder() : before_(std::filesystem::current_path()) {
        std::string name = (std::filesystem::temp_directory_path() / "tarnel_test_XXXXXX").string();
        path_ = mkdtemp(name.data());
        std::filesystem::current_path(path_);
    }
    ~temp_folder() {
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(path_);
    }
    temp_folder(const temp_folder&) = delete;
    temp_folder& operator=(const temp_folder&) = delete;

private:
    std::filesystem::path before_, path_;
};

inline void write_file(const std::string& path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string read_file(const std::string& path) {
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

// The same line n times.
inline std::string repeated(std::string_view line, int n) {
    std::string all;
    for (int i = 0; i < n; ++i) all += line;
    return all;
}
