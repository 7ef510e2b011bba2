// Start to exit of the simulator as a process: a deck of three elements, and a ladder of 10,000 nodes.
// Usage: bench_process [folder of the programs [keep]]; by default the folder of this program. "keep" leaves the
// working folders, for a profiler.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "process_run.h"

namespace fs = std::filesystem;

namespace {
constexpr int n_line = 200, n_section = 50;  // the ladder: deck lines, and nodes of each

// Entries "<keyword> name=X ..." to "end<keyword>" of a library, for the names that are wanted.
std::string entries(const std::string& library, const std::string& keyword, const std::vector<std::string>& names) {
    std::istringstream in(library);
    std::string line, all;
    bool inside = false;
    while (std::getline(in, line)) {
        if (line.starts_with(keyword + " name="))
            for (const std::string& name : names)
                inside =
                    inside || line == keyword + " name=" + name || line.starts_with(keyword + " name=" + name + " ");
        if (inside) all += line + '\n';
        if (line == "end" + keyword) inside = false;
    }
    return all;
}

// n_section series resistors with a resistor to g behind each; the last node is the terminal n.
std::string ladder_composite() {
    std::ostringstream out;
    out << "ece name=ladder\nbegin_dc\nmainnodes: p n g\nauxnodes:";
    for (int i = 1; i < n_section; ++i) out << " m" << i;
    out << "\noutvar:\nbias:\nstparms:\nigparms:\nind_nodes:\nind_branches:\ndigital_nodes:\nmain_var:\nxvar:\n"
           "iparms:\nsparms:\nrparms: rs=1 rp=1k\nrparms_derived:\n";
    const auto node = [](int i) {
        return i == 0 ? std::string("p") : i == n_section ? std::string("n") : "m" + std::to_string(i);
    };
    for (int i = 0; i < n_section; ++i) {
        out << "ebe type=r name=s" << i << " p=" << node(i) << " n=" << node(i + 1) << " r=rs\n";
        out << "ebe type=r name=t" << i << " p=" << node(i + 1) << " n=g r=rp\n";
    }
    out << "end_dc\nC: compiled\nbegin_ac\noutvar_ac:\nind_nodes_ac:\nind_branches_ac:\nend_ac\nendece\n";
    return out.str();
}

const char* const solve_block =
    "begin_solve\nsolve_type dc\nbegin_output\nfilename out.dat\nvariables: v\nend_output\nend_solve\nend_cf\n";

std::string divider_deck() {
    return std::string(
               "title: divider\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc p=in n=0 vdc=10\n"
               "eelement name=R1 type=r p=in n=out r=1k\neelement name=R2 type=r p=out n=0 r=2k\n"
               "outvar: v=nodev_of_out\nend_circuit\n") +
           solve_block;
}

std::string ladder_deck() {
    std::ostringstream deck;
    deck << "title: ladder\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc p=a0 n=0 vdc=10\n";
    for (int i = 0; i < n_line; ++i)
        deck << "eelement name=X" << i << " type=ladder p=a" << i << " n=a" << i + 1 << " g=0 rs=1m rp=100k\n";
    deck << "outvar: v=nodev_of_a" << n_line << "\nend_circuit\n" << solve_block;
    return deck.str();
}

// A working folder: installed files, less what the run does not need if `names` says what it needs.
fs::path working_folder(const fs::path& base, const std::string& name, const std::string& deck,
                        const std::vector<std::string>& names, const std::string& more_composites) {
    const fs::path folder = installed_folder(base, name, deck), lib = folder / ".tnlaux";
    if (!names.empty()) {
        for (const auto& [file, keyword] : {std::pair{"ebes.aux", "ebe"}, {"ebac.aux", "ebe_ac"}, {"eels.aux", "ece"}})
            write_file(lib / file, entries(read_file(lib / file), keyword, names));
    }
    write_file(lib / "eels.aux", read_file(lib / "eels.aux") + more_composites);
    write_file(lib / "ece_all.lst", read_file(lib / "ece_all.lst") + "x.ladder\n");
    return folder;
}

double median(std::vector<double> v) {
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2), v.end());
    return v[v.size() / 2];
}

void measure(const char* what, const std::string& program, const fs::path& folder, int n_run) {
    std::vector<double> wall, cpu, peak;
    run_once(program, folder);
    for (int i = 0; i < n_run; ++i) {
        const process_run r = run_once(program, folder);
        wall.push_back(r.wall_ms);
        cpu.push_back(r.cpu_ms);
        peak.push_back(r.peak_mb);
    }
    std::printf("| %s | %.2f | %.2f | %.2f | %.1f |\n", what, median(wall), *std::min_element(wall.begin(), wall.end()),
                median(cpu), median(peak));
    std::fflush(stdout);
}
}  // namespace

int main(int argc, char** argv) {
    const bool given = argc > 1 && !std::string_view(argv[1]).starts_with("--");  // options are of the other programs
    const fs::path programs = given ? fs::path(argv[1]) : program_folder();
    const std::string tarnel = fs::absolute(programs / "tarnel").string();
    const fs::path name = temporary_folder();
    const std::vector<std::string> few = {"r", "vsrcdc", "vsrc_ac", "ground_dummy_1"};
    std::printf(
        "Start to exit of tarnel.\n\n| run | wall ms, median | least | cpu ms, median | peak MB "
        "|\n|---|---|---|---|---|\n");
    measure("three elements, libraries of these", tarnel, working_folder(name, "few", divider_deck(), few, ""), 101);
    measure("three elements, installed libraries", tarnel, working_folder(name, "all", divider_deck(), {}, ""), 101);
    measure("ladder of 10,000 nodes", tarnel, working_folder(name, "ladder", ladder_deck(), few, ladder_composite()),
            11);
    if (argc > 2 && std::string_view(argv[2]) == "keep")
        std::printf("\nThe folders are in %s\n", name.c_str());
    else
        fs::remove_all(name);
}
