#include "process_run.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& what) {
    std::cerr << program_invocation_short_name << ": " << what << '\n';
    std::exit(1);
}

std::string read_file(const fs::path& path) {
    std::ostringstream all;
    all << std::ifstream(path).rdbuf();
    return all.str();
}

void write_file(const fs::path& path, const std::string& text) {
    std::ofstream file(path);
    file << text;
    if (!file.flush()) fail("cannot write " + path.string());
}

fs::path program_folder() { return fs::canonical("/proc/self/exe").parent_path(); }

fs::path temporary_folder() {
    std::string name = (fs::temp_directory_path() / "tarnel_bench_XXXXXX").string();
    if (!mkdtemp(name.data())) fail("no temporary folder");
    return name;
}

fs::path installed_folder(const fs::path& base, const std::string& name, const std::string& deck) {
    const fs::path folder = base / name, lib = folder / ".tnlaux";
    fs::create_directories(lib);
    for (const auto& entry : fs::directory_iterator(TARNEL_SHARE)) {
        const std::string file = entry.path().filename().string();
        if (file.ends_with(".aux") || file.ends_with(".lst"))
            fs::copy_file(entry.path(), lib / file, fs::copy_options::overwrite_existing);
    }
    std::ostringstream sizes;
    for (const char* word : {"M_ECT_ND_TMP", "M_GCT_VR_TMP", "M_DCT_ND_TMP", "M_XCT_VR_TMP", "MNZ_EBCE", "MNZ_GBCE",
                             "MNZ_XBCE", "MNZ_EBCE_AC", "MNZ_GBCE_AC", "MNZ_XBCE_AC", "M_MATTTLOP2", "M_MATTTLOP3",
                             "M_AVERAGE_MV_GBE", "M_RMS_MV_GBE", "M_AVERAGE_MV_XBE", "M_RMS_MV_XBE"})
        sizes << word << " 10000000\n";
    sizes << "F_MNZ_W 100\n";
    write_file(folder / "tmpdim.in", sizes.str());
    write_file(lib / "cct.in", deck);
    return folder;
}

process_run run_once(const std::string& program, const fs::path& folder) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    posix_spawn_file_actions_addopen(&actions, 1, "console.txt", O_WRONLY | O_CREAT | O_TRUNC, 0644);
    char* argv[] = {const_cast<char*>(program.c_str()), nullptr};
    const auto start = std::chrono::steady_clock::now();
    pid_t pid = 0;
    if (const int error = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv, environ); error != 0)
        fail("cannot start " + program + ": " + std::strerror(error));
    int status = 0;
    rusage use{};
    if (wait4(pid, &status, 0, &use) != pid) fail("the program was lost");
    const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - start;
    posix_spawn_file_actions_destroy(&actions);
    if (status != 0) fail("the program failed:\n" + read_file(folder / "console.txt"));
    const auto ms = [](const timeval& t) {
        return 1e3 * static_cast<double>(t.tv_sec) + 1e-3 * static_cast<double>(t.tv_usec);
    };
    return {wall.count(), ms(use.ru_utime) + ms(use.ru_stime), static_cast<double>(use.ru_maxrss) / 1024.0};
}
