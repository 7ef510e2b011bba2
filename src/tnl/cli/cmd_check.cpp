#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>

#include "tnl/check/check_deck.h"
#include "tnl/cli/commands.h"
#include "tnl/run/run_deck.h"
#include "tnl/run/run_folder.h"

namespace cli {

namespace {

struct check_options {
    std::string deck;
    bool json = false, strict = false;
};

// A deck whose includes cannot be resolved has that one fault: "file:line: text".
check_report report_of_include(const std::string& text) {
    const std::size_t colon = text.find(':');
    const std::size_t end = colon == std::string::npos ? colon : text.find(": ", colon + 1);
    check_report report;
    if (end == std::string::npos) {
        report.error("include", {}, text);
        return report;
    }
    report.deck.path = text.substr(0, colon);
    deck_source::file file{report.deck.path, {}};
    try {
        std::istringstream in(read_file(report.deck.path, most_deck_bytes));
        for (std::string line; std::getline(in, line);) file.lines.push_back(line);
    } catch (const command_error&) {  // standard input cannot be read twice: the place goes without its line
    }
    const auto line = static_cast<std::size_t>(std::max(1, std::atoi(text.c_str() + colon + 1)));
    if (file.lines.size() < line) file.lines.resize(line);
    report.deck.source.files.push_back(std::move(file));
    report.deck.source.origin.push_back({0, static_cast<int>(line) - 1});
    report.error("include", {-1, 0, 0}, text.substr(end + 2));
    return report;
}

check_report check_file(const std::string& path, const installed_libraries& libraries) {
    deck_source source;
    try {
        source = read_deck_source(path);
    } catch (const deck_error& e) {
        return report_of_include(e.what());
    }
    return check_deck(view_deck(std::move(source)), libraries);
}

int check_command(const check_options& options) {
    const installation where = own_installation();
    if (!std::filesystem::is_directory(where.share))
        throw file_error("the libraries are missing: " + where.share.string());
    const check_report report = check_file(options.deck, read_installed(where.share));
    const std::string out = options.json ? report_json(report) : report_text(report);
    std::fwrite(out.data(), 1, out.size(), stdout);
    if (report.n_errors() > 0) return deck_fault;
    return options.strict && report.n_warnings() > 0 ? deck_fault : good;
}

}  // namespace

void add_check(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<check_options>();
    CLI::App* check = app.add_subcommand("check", "Find all faults of a deck without running it");
    check->add_option("DECK", options->deck, "File with the circuit and what to solve; - is standard input")
        ->required();
    check->add_flag("--json", options->json, "A list of the faults as JSON");
    check->add_flag("--strict", options->strict, "Warnings lead to status 3 too");
    check->footer("Status: 0 no errors, 3 errors (with --strict also warnings), 5 the deck cannot be read.");
    commands.push_back({check, [options] { return check_command(*options); }});
}

}  // namespace cli
