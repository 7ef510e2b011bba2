// scratch_folder.h -- a folder for a while.
#pragma once
#include <filesystem>
#include <string>

namespace cli {

// A folder of its own under the one for temporary files, which goes with it.
struct scratch_folder {
    std::filesystem::path path;  // empty: it could not be made
    std::string fault;           // why
    scratch_folder();
    ~scratch_folder();
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;
};

}  // namespace cli
