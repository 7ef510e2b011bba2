#include "tnl/common/scratch_folder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace cli {

scratch_folder::scratch_folder() {
    std::error_code error;
    std::filesystem::path base = std::filesystem::temp_directory_path(error);
    if (error) base = "/tmp";
    std::string name = (base / "tnl-XXXXXX").string();
    if (mkdtemp(name.data()))
        path = name;
    else
        fault = base.string() + ": " + std::strerror(errno);
}

scratch_folder::~scratch_folder() {
    std::error_code error;
    if (!path.empty()) std::filesystem::remove_all(path, error);
}

}  // namespace cli
