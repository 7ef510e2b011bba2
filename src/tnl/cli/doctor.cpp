#include "tnl/cli/doctor.h"

#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tnl/common/scratch_folder.h"
#include "tnl/common/text.h"
#include "tnl/elements/element_sheet.h"
#include "tnl/run/run_folder.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

// Two equal resistors at 10 V: the row is 5.
constexpr const char* small_deck = R"(title: half
begin_circuit
refnode 0
eelement name=V1 type=vsrcdc p=in n=0 vdc=10
eelement name=R1 type=r p=in n=out r=1k
eelement name=R2 type=r p=out n=0 r=1k
outvar: vout=nodev_of_out
end_circuit
begin_solve
solve_type dc
begin_output
filename out.dat
variables: vout
end_output
end_solve
end_cf
)";

constexpr double small_disk = 100e6;  // bytes; less is worth a remark

std::string last_line(std::string text) {
    while (!text.empty() && text.back() == '\n') text.pop_back();
    const std::size_t n = text.rfind('\n');
    return n == std::string::npos ? text : text.substr(n + 1);
}

finding run_small_deck(const installation& where, const fs::path& folder) {
    const finding::level_type bad = finding::fault;
    if (!fs::exists(where.program)) return {bad, "simulator", where.program.string() + " is missing; build it"};
    if (access(where.program.c_str(), X_OK) != 0)
        return {bad, "simulator", where.program.string() + " cannot be run: " + std::strerror(errno)};
    try {
        write_file(folder / "deck.in", small_deck);
        // As a person would: what this program does then is examined with it.
        const std::string command = shell_quoted((where.program.parent_path() / "tnl").string()) + " run " +
                                    shell_quoted((folder / "deck.in").string()) + " >" +
                                    shell_quoted((folder / "text").string()) + " 2>&1 </dev/null";
        const int status = std::system(command.c_str());
        if (status != 0)
            return {bad, "simulator", "a small deck does not run: " + last_line(read_file(folder / "text"))};
        std::istringstream row(read_file(folder / "deck.in.run" / "out.dat"));
        row.imbue(std::locale::classic());
        double value = 0;
        if (!(row >> value) || value != 5) return {bad, "simulator", "a small deck gives a wrong row"};
    } catch (const command_error& e) {
        return {bad, "simulator", e.what()};
    }
    return {finding::fine, "simulator", where.program.string() + " runs a small deck"};
}

finding examine_libraries(const fs::path& share) {
    std::error_code error;
    if (!fs::is_directory(share, error)) return {finding::fault, "libraries", share.string() + " is missing; build it"};
    const std::vector<std::string> faults = library_faults(share);
    if (!faults.empty()) {
        const std::string more = faults.size() > 1 ? " (and " + std::to_string(faults.size() - 1) + " more)" : "";
        return {finding::fault, "libraries", share.string() + ": " + faults[0] + more};
    }
    const std::size_t n = all_sheets(read_installed(share)).size();
    return {finding::fine, "libraries", std::to_string(n) + " elements in " + share.string()};
}

std::string bytes_text(double bytes) {
    char text[32];
    if (bytes >= 1e9)
        std::snprintf(text, sizeof text, "%.0f GB", bytes / 1e9);
    else
        std::snprintf(text, sizeof text, "%.0f MB", bytes / 1e6);
    return text;
}

// Can files be made there, and how much room is left?
void examine_folder(const std::string& what, const fs::path& folder, std::vector<finding>& list) {
    std::error_code error;
    if (access(folder.c_str(), W_OK | X_OK) != 0) {
        list.push_back({finding::fault, what, folder.string() + " cannot be written: " + std::strerror(errno)});
        return;
    }
    struct statvfs disk {};
    if (statvfs(folder.c_str(), &disk) != 0) {
        list.push_back({finding::fine, what, folder.string() + " can be written"});
        return;
    }
    const double room = static_cast<double>(disk.f_bavail) * static_cast<double>(disk.f_frsize);
    const finding::level_type level = room < 1e6 ? finding::fault : room < small_disk ? finding::remark : finding::fine;
    list.push_back({level, what, folder.string() + " can be written, " + bytes_text(room) + " free"});
}

bool on_path(const std::string& program) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const fs::path file = fs::path(folder.empty() ? "." : folder) / program;
        std::error_code error;
        if (fs::is_regular_file(file, error) && access(file.c_str(), X_OK) == 0) return true;
    }
    return false;
}

struct optional_program {
    const char *name, *what_for, *package;
};
constexpr optional_program optional_programs[] = {
    {"rsvg-convert", "pictures as PNG and PDF files", "librsvg2-bin"},
    {"npm", "the plotting library of tnl view, which is fetched once", "npm"},
    {"man", "tnl man run | man -l -", "man-db"},
};

}  // namespace

std::vector<std::string> library_faults(const fs::path& share) {
    std::vector<std::string> faults;
    std::error_code error;
    for (const library_form& form : library_forms)
        if (!fs::is_regular_file(share / form.file, error)) faults.push_back(std::string(form.file) + " is missing");
    for (const int listed : listed_libraries)
        if (!fs::is_regular_file(share / library_forms[listed].list, error))
            faults.push_back(std::string(library_forms[listed].list) + " is missing");
    if (!faults.empty()) return faults;
    const installed_libraries libraries = read_installed(share);
    int n_elements = 0;
    for (int i = 0; i < n_libraries; ++i) {
        const library_form& form = library_forms[i];
        if (form.statement.empty()) continue;
        for (const library_entry& entry : libraries.library[i].entries) {
            ++n_elements;
            if (!entry.text.ends_with("end" + std::string(form.begin) + "\n"))
                faults.push_back(std::string(form.file) + ": entry " + entry.name + " has no end");
            for (const entry_name& used : used_by(lines_of(entry, form)))
                if (!libraries.library[used.library].position.contains(used.name))
                    faults.push_back(std::string(form.begin) + " " + entry.name + " calls " + used.name + ", which " +
                                     std::string(library_forms[used.library].file) + " lacks");
        }
    }
    if (n_elements == 0) faults.emplace_back("no elements");
    return faults;
}

std::vector<finding> examine(const installation& where, const std::string& version, const terminal& t) {
    std::vector<finding> list;
    list.push_back({finding::fine, "program", "tnl " + version + " in " + where.program.parent_path().string()});
    const finding libraries = examine_libraries(where.share);
    list.push_back(libraries);
    const scratch_folder scratch;
    if (!scratch.fault.empty()) {
        list.push_back({finding::fault, "temporary folder", scratch.fault});
    } else {
        if (libraries.level == finding::fine) list.push_back(run_small_deck(where, scratch.path));
        examine_folder("temporary folder", scratch.path.parent_path(), list);
    }
    std::error_code error;
    examine_folder("this folder", fs::current_path(error), list);
    const bool tty = isatty(STDOUT_FILENO) == 1;
    list.push_back({finding::fine, "terminal",
                    !tty ? std::string("output goes to a file or pipe: no colour, no moving lines")
                         : std::to_string(t.columns) + " columns for plots, " +
                               (t.utf8 ? "UTF-8" : "plain characters (no UTF-8 in LC_ALL, LC_CTYPE, LANG)") + ", " +
                               (t.colour ? "colour" : "no colour (NO_COLOR)")});
    for (const optional_program& p : optional_programs) {
        const std::string what_for = std::string(", for ") + p.what_for;
        if (on_path(p.name))
            list.push_back({finding::fine, p.name, "found" + what_for});
        else
            list.push_back({finding::remark, p.name, "not found" + what_for + "; Debian package " + p.package});
    }
    return list;
}

bool is_well(const std::vector<finding>& findings) {
    return std::none_of(findings.begin(), findings.end(), [](const finding& f) { return f.level == finding::fault; });
}

std::string findings_text(const std::vector<finding>& findings, bool colour) {
    constexpr const char* words[] = {"ok     ", "note   ", "MISSING"};
    constexpr const char* colours[] = {"\x1b[32m", "\x1b[33m", "\x1b[31m"};
    std::string text;
    for (const finding& f : findings) {
        const std::string word = words[f.level];
        text += (colour ? colours[f.level] + word + "\x1b[0m" : word) + "  " + f.what + ": " + f.says + "\n";
    }
    return text;
}

std::string findings_json(const std::vector<finding>& findings) {
    constexpr const char* words[] = {"ok", "note", "fault"};
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const finding& f : findings) list.push_back({{"level", words[f.level]}, {"what", f.what}, {"says", f.says}});
    return nlohmann::ordered_json{{"well", is_well(findings)}, {"findings", list}}.dump(
               2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
           "\n";
}

}  // namespace cli
