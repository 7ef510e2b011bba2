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

#include "working_folder.h"

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
    const fs::path folder = base / name;
    fill_working_folder(folder, deck);
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
