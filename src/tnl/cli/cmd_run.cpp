#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <memory>

#include "tnl/cli/commands.h"
#include "tnl/run/progress.h"
#include "tnl/run/run_deck.h"

namespace cli {

namespace {

void tell(const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); }

std::string counted(long long n, const char* what) { return std::to_string(n) + " " + what + (n == 1 ? "" : "s"); }

// " pf=0.6 p=6 W" of a file of results; nothing where the row is not there.
std::string results_in(const std::filesystem::path& path, const record_file& file) {
    std::ifstream in(path);
    std::string text;
    double value = 0;
    for (const record_column& c : file.columns) {
        if (!(in >> value)) return {};
        char number[32];
        std::snprintf(number, sizeof number, "%.6g", value);
        text += (text.empty() ? " " : ", ") + c.name + "=" + number + (c.unit.empty() ? "" : " " + c.unit);
    }
    return text;
}

// "out.dat: 1001 rows of time vout", or results themselves: "power.dat: pf=0.6, p=6 W"
std::string told(const std::filesystem::path& folder, const record_file& file) {
    std::string text = (folder / file.path).string() + ":";
    if (!file.is_table()) return text + (file.kind == "parms" ? " parameters" : " a solution");
    if (file.kind == "postproc" && file.rows == 1)
        if (const std::string results = results_in(folder / file.path, file); !results.empty()) return text + results;
    text += " " + counted(file.rows, "row");
    if (file.curves > 1) text += " in " + counted(file.curves, "curve");
    if (!file.columns.empty()) text += " of";
    for (const record_column& c : file.columns) text += " " + c.name;
    return text;
}

// "out.dat could not be written: No space left on device", of the simulator's text.
std::string file_failure(const std::string& message) {
    constexpr std::string_view who = "row_file: output file ";
    const std::size_t at = message.rfind(who);
    if (at == std::string::npos) return "a file could not be written";
    const std::size_t end = std::min(message.find(".\n", at), message.size()), cause = end + 2;
    std::string text = message.substr(at + who.size(), end - at - who.size());
    if (cause < message.size() && message.compare(cause, 9, "  Halting") != 0)
        text += ": " + message.substr(cause + 2, message.find('\n', cause) - cause - 2);
    return text;
}

// How a run ended that was not complete, apart from the simulator's own words.
std::string ending(const run_options& options, const run_result& run, const std::filesystem::path& place) {
    const std::string t = run.t_last < 0 ? "" : "t = " + short_number(run.t_last);
    const std::string kept = run.record.files.empty()
                                 ? "there are no rows"
                                 : "rows up to " + (t.empty() ? "there" : t) + " are in " + place.string() + "/";
    char limit[32];
    std::snprintf(limit, sizeof limit, "%g s", options.time_limit);
    if (run.record.state == "limit" && !run.timed_out)
        return "tnl: the steps that itmax_trns allows were used up" + (t.empty() ? "" : " at " + t) + "; " + kept;
    if (run.record.state == "limit")
        return std::string("tnl: time limit of ") + limit + " reached" + (t.empty() ? "" : " at " + t) + "; " + kept;
    if (run.record.signal == SIGINT) return "tnl: interrupted; " + kept;
    if (run.record.signal == SIGTERM || run.record.signal == SIGHUP) return "tnl: asked to end; " + kept;
    if (run.record.signal != 0) return "tnl: the simulator was killed; " + kept;
    if (run.kept && run.status == file_fault) return "tnl: " + file_failure(run.record.message) + "; " + kept;
    return run.status == good || run.record.files.empty() ? "" : kept;
}

// What stood on the command line, options by their long names.
std::vector<std::string> words_of(const CLI::App& command) {
    std::vector<std::string> words;
    for (const CLI::Option* option : command.parse_order()) {
        if (!option->get_positional()) words.push_back(option->get_name());
        const bool has_value = option->get_items_expected_max() > 0;
        if (has_value) words.insert(words.end(), option->results().begin(), option->results().end());
    }
    return words;
}

int run_command(const run_options& options, bool json) {
    const run_result run = run_deck(options, own_installation());
    std::fflush(stdout);
    const std::filesystem::path place = run.kept ? run.folder / partial_name : run.folder;
    if (const std::string text = ending(options, run, place); !text.empty()) tell(text);
    if (json)
        std::fputs(to_json(run.record).c_str(), stdout);
    else
        for (const record_file& file : run.record.files) tell(told(place, file));
    std::error_code error;
    if (run.kept && std::filesystem::exists(run.folder / record_name, error))
        tell("tnl: " + run.folder.string() + "/ holds the results of the earlier run as they were");
    if (!run.findings.empty())
        tell((run.status == deck_fault
                  ? "tnl: the run came to its end without rows that the deck asks for, status 3; at fault are:\n"
                  : "tnl: the run did not stop at these; look whether it solved what is meant:\n") +
             run.findings.substr(0, run.findings.size() - 1));
    return run.status;
}

}  // namespace

void add_run(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<run_options>();
    const auto json = std::make_shared<bool>(false);
    CLI::App* run = app.add_subcommand("run", "Run a deck; its row files are left in DECK.run/");
    run->add_option("DECK", options->deck, "File with the circuit and what to solve; - reads standard input")
        ->required();
    run->add_option("-o,--output", options->folder, "Folder of the run, instead of DECK.run");
    run->add_option("--time-limit", options->time_limit,
                    "Seconds, with all that goes before it, until the run is asked to end; its rows are kept")
        ->check(CLI::PositiveNumber);
    run->add_flag("--json", *json, "Print the record of the run instead of the simulator's text");
    run->add_flag("-q,--quiet", options->quiet, "Show the simulator's text only when it stops, and no progress");
    run->add_flag("--force", options->force,
                  "Replace the results of another deck in the folder; write files that the deck names by a whole path");
    commands.push_back({run, [options, json, run] {
                            options->words = words_of(*run);
                            options->silent = *json;
                            options->follow = !options->quiet;
                            return run_command(*options, *json);
                        }});
}

}  // namespace cli
