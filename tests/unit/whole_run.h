// whole_run.h -- a run of the simulator inside a test: a deck goes in, console text and rows come out.
#pragma once
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "../working_folder.h"
#include "base/halt.h"
#include "halt_throws.h"
#include "run/driver.h"
#include "temp_folder.h"

using table = std::vector<std::vector<double>>;

// Works in a folder of its own with all installed libraries while it lives.
class whole_run {
public:
    // without: a word that is cut out of all library texts; more_eels, more_gmes: electrical and mixed composites of
    // the test's own.
    explicit whole_run(const std::string& deck, const std::string& without = "", const std::string& more_eels = "",
                       const std::string& more_gmes = "") {
        const library_change add = more_entries("eels.aux", "ece_all.lst", more_eels);
        fill_working_folder(".", deck, [&](const std::string& file, std::string& library) {
            for (std::size_t at = without.empty() ? std::string::npos : library.find(without); at != std::string::npos;
                 at = library.find(without, at))
                library.erase(at, without.size());
            add(file, library);
            if (file == "gmes.aux") library += more_gmes;
        });
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
