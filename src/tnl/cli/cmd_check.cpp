#include <cstdio>
#include <filesystem>
#include <memory>

#include "tnl/check/check_deck.h"
#include "tnl/cli/commands.h"
#include "tnl/run/run_deck.h"

namespace cli {

namespace {

struct check_options {
    std::string deck;
    bool json = false, strict = false;
};

// A deck whose includes cannot be resolved has that one fault.
check_report report_of_source(const std::string& deck, const source_error& e) {
    check_report report;
    report.deck.path = deck;
    if (e.place.line > 0)
        report.error_at("include", e.place, e.why);
    else
        report.error("include", {}, e.why);
    return report;
}

check_report check_file(const std::string& path, const installed_libraries& libraries) {
    deck_source source;
    try {
        source = read_deck_source(path);
    } catch (const source_error& e) {
        return report_of_source(path, e);
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
