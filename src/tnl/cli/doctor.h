// doctor.h -- what an installation needs and whether it is there.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

#include "tnl/plot/plot.h"
#include "tnl/run/run_deck.h"

namespace cli {

struct finding {
    enum level_type { fine, remark, fault } level;  // remark: something that is not there can be done without
    std::string what, says;
};

// Program, libraries, simulator on a small deck in a temporary folder, folders, disk, terminal, optional programs.
std::vector<finding> examine(const installation& where, const std::string& version, const terminal& t);

// Entries that composites call and that are not installed, files that are missing or empty, names that a list lacks:
// one line each.
std::vector<std::string> library_faults(const std::filesystem::path& share);

bool is_well(const std::vector<finding>& findings);  // no fault
std::string findings_text(const std::vector<finding>& findings, bool colour);
std::string findings_json(const std::vector<finding>& findings);

}  // namespace cli
