#include <cstdio>
#include <filesystem>
#include <memory>

#include "tnl/check/advice.h"
#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/input_file.h"
#include "tnl/common/run_record.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

struct explain_options {
    std::vector<std::string> words;
    bool list = false;
};

void put(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

// What the user points at: "-", a run's folder, its record, or the text itself.
std::string message_of(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& w : words) text += (text.empty() ? "" : " ") + w;
    if (text == "-") return read_standard_input(most_deck_bytes);
    std::error_code error;
    fs::path record;
    if (text.size() < 4096) {
        if (fs::is_directory(text, error))
            record = fs::path(text) / record_name;
        else if (fs::is_regular_file(text, error) && fs::path(text).filename() == record_name)
            record = text;
    }
    if (record.empty()) return text;
    const run_record run = read_record(record);
    if (run.message.empty()) throw file_error(record.string() + " holds no message: its run did not stop with one");
    return run.message;
}

int list_all() {
    for (const advice_text& t : advice_texts()) {
        put(explained(t));
        for (const advice_pattern& row : advice_patterns())
            if (row.id == t.id) put("  message: " + std::string(row.pattern) + "\n");
        put("\n");
    }
    return good;
}

int explain_command(const explain_options& options) {
    if (options.list) return list_all();
    if (options.words.empty()) throw usage_error("explain needs a message, - for standard input, or --list");
    const std::string message = message_of(options.words);
    const advice_text* t = advice_of_code(message);
    if (t == nullptr) t = find_advice(message);
    if (t != nullptr) {
        put(explained(*t));
        return good;
    }
    const std::vector<const advice_pattern*> rows = similar_patterns(message, 3);
    if (rows.empty()) {
        std::fputs("tnl: no message like this is known; tnl explain --list shows all\n", stderr);
        return nothing_found;
    }
    for (const advice_pattern* row : rows) {
        put("message: " + std::string(row->pattern) + "\n" + explained(*advice_of(*row)));
        if (row != rows.back()) put("\n");
    }
    return good;
}

}  // namespace

void add_explain(CLI::App& app, command_list& commands) {
    const auto options = std::make_shared<explain_options>();
    CLI::App* explain = app.add_subcommand(
        "explain", "Say what a message of the simulator, or a finding of check, means and what to do");
    explain->add_option(
        "MESSAGE", options->words,
        "The message or a piece of it, or the code of a finding of check; a run's folder or its run.json; - is "
        "standard input");
    explain->add_flag("--list", options->list, "All messages that are known");
    explain->footer("Status: 0 explained, 1 no message like this is known.");
    commands.push_back({explain, [options] { return explain_command(*options); }});
}

}  // namespace cli
