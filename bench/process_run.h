// process_run.h -- working folders of the simulator, and runs of it as a process, for the measurements.
#pragma once
#include <filesystem>
#include <string>

// Prints what is wrong and ends the program.
[[noreturn]] void fail(const std::string& what);

std::string read_file(const std::filesystem::path& path);
void write_file(const std::filesystem::path& path, const std::string& text);

// The folder of the running program; and a new temporary one.
std::filesystem::path program_folder();
std::filesystem::path temporary_folder();

// base/name with the installed libraries and lists, sizes beyond need, and the deck.
std::filesystem::path installed_folder(const std::filesystem::path& base, const std::string& name,
                                       const std::string& deck);

struct process_run {
    double wall_ms, cpu_ms, peak_mb;
};
// One run to its end in a working folder; the console goes to a file there.
process_run run_once(const std::string& program, const std::filesystem::path& folder);
