// whole_run.h -- a run of the simulator inside a test: a deck goes in, console text and rows come out.
#pragma once
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "base/halt.h"
#include "deck/tmpdim_class.h"
#include "halt_throws.h"
#include "run/driver.h"
#include "temp_folder.h"

using table = std::vector<std::vector<double>>;

// Works in a folder of its own with all installed libraries while it lives.
class whole_run {
public:
    // without: a word that is cut out of all library texts; more_eels: electrical composites of the test's own.
    explicit whole_run(const std::string& deck, const std::string& without = "", const std::string& more_eels = "") {
        std::filesystem::create_directory(".tnlaux");
        for (const auto& entry : std::filesystem::directory_iterator(TARNEL_SHARE)) {
            std::string library = read_file(entry.path().string());
            for (std::size_t at = without.empty() ? std::string::npos : library.find(without); at != std::string::npos;
                 at = library.find(without, at))
                library.erase(at, without.size());
            const std::filesystem::path name = entry.path().filename();
            if (name == "eels.aux") library += more_eels;
            if (name == "ece_all.lst") library += names_of(more_eels);
            write_file((".tnlaux" / name).string(), library);
        }
        std::string dimensions;
        for (const tmpdim_word& w : tmpdim_words())
            dimensions += std::string(w.word) + " " + std::to_string(w.generous) + "\n";
        write_file("tmpdim.in", dimensions);
        write_file(".tnlaux/cct.in", deck);
        const console_run heard = run_and_listen([] { run_tarnel(); });
        text = heard.text;
        stopped = heard.stopped;
        flush_all();
    }

    // Rows of a file as numbers; empty lines are left out.
    table rows(const std::string& file) const {
        table all;
        std::istringstream in(read_file(file));
        for (std::string one; std::getline(in, one);) {
            std::istringstream words(one);
            std::vector<double> row;
            for (double x; words >> x;) row.push_back(x);
            if (!row.empty()) all.push_back(row);
        }
        return all;
    }

    std::string file(const std::string& name) const { return read_file(name); }

    std::string text;
    bool stopped = false;

private:
    // Lines of a list file for the entries of a library text.
    static std::string names_of(const std::string& library) {
        std::string list;
        std::istringstream in(library);
        for (std::string one; std::getline(in, one);)
            if (one.starts_with("ece name=")) list += "." + one.substr(9) + "\n";
        return list;
    }

    temp_folder folder_;
};

// A deck of a circuit block and solve blocks; each block is its cards, and writes `variables` to out<k>.dat.
struct deck_text {
    std::string circuit, variables;
    std::vector<std::string> blocks{};
    std::string before{};

    std::string str() const {
        const std::string reference = circuit.find("eelement") == std::string::npos ? "" : "refnode 0\n";
        std::string deck = "title: test\n" + before + "begin_circuit\n" + reference + circuit + "end_circuit\n";
        for (std::size_t k = 0; k < blocks.size(); ++k)
            deck += "begin_solve\n" + blocks[k] + "begin_output\nfilename out" + std::to_string(k + 1) +
                    ".dat\nvariables: " + variables + "\nend_output\nend_solve\n";
        return deck + "end_cf\n";
    }
};
