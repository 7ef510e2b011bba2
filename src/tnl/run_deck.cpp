#include "tnl/run_deck.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "tnl/locate.h"
#include "tnl/row_count.h"
#include "tnl/run_folder.h"
#include "tnl/units.h"

namespace cli {

namespace fs = std::filesystem;

namespace {


// Signals wait while it lives, so that files get their places as a whole.
class held_signals {
public:
    held_signals() {
        sigset_t set;
        sigemptyset(&set);
        for (const int s : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&set, s);
        sigprocmask(SIG_BLOCK, &set, &old_);
    }
    ~held_signals() { sigprocmask(SIG_SETMASK, &old_, nullptr); }
    held_signals(const held_signals&) = delete;
    held_signals& operator=(const held_signals&) = delete;

private:
    sigset_t old_{};
};

std::string now_in_utc() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc)};
}

// All that is known before the simulator starts.
run_record begun_record(const run_options& options, const deck_view& deck, const installed_libraries& libraries) {
    run_record record;
    record.version = TNL_VERSION;
    record.deck = deck_identity(deck.path);
    record.deck_hash = hash_of(deck.text());
    record.title = title_of(deck);
    record.options = options.words;
    record.began = now_in_utc();
    record.state = "running";
    record.files = planned_files(deck, libraries);
    return record;
}

// The end of the simulator's text, without the lines that tell how the run goes on.
std::string message_of(std::string_view tail) {
    std::size_t begin = 0;
    for (std::size_t at = 0; at < tail.size();) {
        const std::size_t end = std::min(tail.find('\n', at), tail.size());
        const std::string_view line = tail.substr(at, end - at);
        at = std::min(end + 1, tail.size());
        for (const std::string_view told : {"mat::set_mat_2: system matrix", "Transient simulation starts",
                                            "iter_trns=", "iter_trns_1=", "i=", "main: "})
            if (line.starts_with(told) && line.find("time (") == std::string_view::npos) begin = at;
    }
    return std::string(tail.substr(begin));
}

// The simulator says so of a file that it could not open or write.
bool output_failed(std::string_view tail) {
    const std::size_t at = tail.rfind("row_file: output file ");
    return at != std::string_view::npos && tail.find(" could not be ", at) != std::string_view::npos;
}

void count_files(const fs::path& folder, run_record& record) {
    std::vector<record_file> written;
    for (record_file& file : record.files) {
        std::error_code error;
        const fs::path path = folder / file.path;
        if (!fs::is_regular_file(path, error)) continue;
        if (file.is_table()) {
            const row_count count = count_rows(path);
            file.rows = count.rows;
            file.curves = count.curves;
            if (count.columns > 0 && static_cast<std::size_t>(count.columns) != file.columns.size())
                file.columns.clear();
        }
        written.push_back(std::move(file));
    }
    record.files = std::move(written);
}

void end_record(const process_result& ended, const deck_view& deck, const deck_needs& needs,
                const installed_libraries& libraries, run_record& record) {
    record.status = ended.status;
    record.signal = ended.signal;
    record.state = ended.signal != 0 ? "signal" : ended.status != 0 ? "stopped" : "complete";
    if (ended.signal != 0 || ended.status == 0) return;
    record.message = message_of(ended.tail);
    if (output_failed(ended.tail)) record.status = file_fault;
    record.places = places_of_stop(ended.tail, deck, needs, libraries);
}

void print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

}  // namespace

installation own_installation() {
    const fs::path own = own_folder();
    return {own / "tarnel", own.parent_path() / "share"};
}

run_result run_deck(const run_options& options, const installation& where) {
    run_result run;
    run.deck = view_deck(read_deck_source(options.deck));
    run.folder = options.folder;
    if (options.folder.empty()) run.folder = (options.deck == "-" ? "stdin" : options.deck) + ".run";
    if (!fs::exists(where.program)) throw file_error("the simulator is missing: " + where.program.string());
    if (!fs::is_directory(where.share)) throw file_error("the libraries are missing: " + where.share.string());
    check_output_names(run.deck);

    const installed_libraries libraries = read_installed(where.share);
    const deck_needs needs = needs_of(run.deck, libraries);
    run_record& record = run.record = begun_record(options, run.deck, libraries);
    const run_folder folder = take_run_folder(run.folder, record.deck, options.force);
    check_output_places(folder, run.deck, options.force);
    fill_partial(folder, run.deck, libraries, needs, record);

    const auto start = std::chrono::steady_clock::now();
    const process_result ended =
        run_program(fs::absolute(where.program), folder.partial, options.quiet || options.silent);
    const held_signals hold;
    record.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    end_record(ended, run.deck, needs, libraries, record);
    count_files(folder.partial, record);
    run.status = record.status;

    std::string more;
    if (ended.signal != 0)
        more = "  the simulator was ended by signal " + std::to_string(ended.signal) + " (" + strsignal(ended.signal) +
               ")\n";
    else if (ended.status != 0)
        more = explain_stop(ended.tail, run.deck, needs, libraries);
    if (!more.empty() && !ended.tail.empty() && !ended.tail.ends_with('\n')) more.insert(0, "\n");
    if (options.quiet && ended.status != 0) more.insert(0, ended.tail);
    if (!options.silent) print(more);

    // A simulator that had no time to write out what it held, or could not: its rows are no results.
    run.kept = (ended.signal != 0 && ended.signal != SIGINT && ended.signal != SIGTERM) || run.status == file_fault;
    if (run.kept)
        write_partial_record(folder, record);
    else
        publish(folder, record);
    return run;
}

}  // namespace cli
