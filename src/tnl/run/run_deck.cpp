#include "tnl/run/run_deck.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <optional>

#include "tnl/check/check_deck.h"
#include "tnl/check/explain_stop.h"
#include "tnl/elements/planned_files.h"
#include "tnl/run/deadline.h"
#include "tnl/run/progress.h"
#include "tnl/run/row_count.h"
#include "tnl/run/run_folder.h"
#include "tnl/run/run_warnings.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view cut_off_text = "Increase itmax_trns in the method card.";
constexpr double least_limit = 1e-3;  // s, of the simulator, when reading the deck has taken all the time
constexpr double longest_check = 5;   // s, behind the run
const std::string unchecked = "  the deck was not checked: that takes too long, or too much memory\n";
constexpr double between_looks = 0.5;  // s, at the files of a run; the simulator writes as often

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

// Fills in what the files hold and leaves out those that were not written. Gives the last time of a row, or -1.
double count_files(const fs::path& folder, run_record& record) {
    double t_last = -1;
    std::vector<record_file> written;
    for (record_file& file : record.files) {
        std::error_code error;
        const fs::path path = folder / file.path;
        if (!fs::is_regular_file(path, error)) continue;
        if (file.is_table()) {
            const row_count count = count_rows(path);
            file.rows = count.rows;
            file.curves = count.curves;
            // A sweep around the frequencies writes no blank line between all of its curves.
            long long points = file.sweeps.empty() ? 0 : static_cast<long long>(file.sweeps[0].values.size());
            // Nor one in step with a vary_parm, which has so many rows a curve.
            if (!file.steps.name.empty() && count.rows != points * static_cast<long long>(file.steps.values.size()))
                points = 0;
            if (points > count.curves && count.rows > points && count.rows % points == 0)
                file.curves = static_cast<int>(points);
            if (file.kind == "trns" && count.rows > 0) t_last = std::max(t_last, count.last);
            if (count.columns > 0 && static_cast<std::size_t>(count.columns) != file.columns.size())
                file.columns.clear();
        }
        written.push_back(std::move(file));
    }
    record.files = std::move(written);
    return t_last;
}

void end_record(const process_result& ended, run_record& record) {
    record.status = ended.status;
    record.signal = ended.signal;
    record.state = ended.signal != 0 ? "signal" : ended.status != 0 ? "stopped" : "complete";
    // One that had to be killed in the end may have left a row half written; signal says so.
    if (ended.signal != 0 && ended.timed_out) {
        record.state = "limit";
        record.status = limit_reached;
        if (ended.signal == SIGTERM) record.signal = 0;
    } else if (ended.signal != 0 && ended.asked != 0) {
        record.status = 128 + ended.asked;
        if (ended.signal != SIGKILL) record.signal = ended.asked;
    }
    // The simulator calls a run complete that has used up its steps.
    if (ended.signal == 0 && ended.status == 0 && ended.tail.find(cut_off_text) != std::string::npos) {
        record.state = "limit";
        record.status = limit_reached;
    }
    if (ended.signal != 0 || ended.status == 0) return;
    record.message = message_of(ended.tail);
    if (output_failed(ended.tail)) record.status = file_fault;
}

void print(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

// Runs the simulator in .partial. Its text goes to standard output and, when asked for, how far it is to standard
// error.
process_result simulate(const run_options& options, double time_limit, const installation& where,
                        const run_folder& folder, const deck_view& deck, run_listener& listener) {
    using clock = std::chrono::steady_clock;
    const clock::time_point start = clock::now();
    const auto now = [&] { return std::chrono::duration<double>(clock::now() - start).count(); };
    // A bar takes lines off the simulator's text, so that must be on the terminal too.
    progress_form form = options.follow ? form_for_standard_error() : progress_form::none;
    const bool hears = !options.quiet && !options.silent;
    const bool filters = form == progress_form::bar && hears && isatty(STDOUT_FILENO) == 1;
    progress way(time_blocks(deck), form, columns_of_standard_error(), options.deck);
    const auto tell = [](const std::string& text) { std::fwrite(text.data(), 1, text.size(), stderr); };

    process_task task{fs::absolute(where.program), folder.partial, time_limit, {}, {}};
    task.text = [&](std::string_view text) {
        listener.take(text);
        const std::string rest = way.take(text, now());
        const std::string_view shown = filters ? std::string_view(rest) : text;
        if (!hears || shown.empty()) return;
        tell(way.wipe());
        print(shown);
    };
    double looked_at = 0;
    if (form != progress_form::none)
        task.idle = [&] {
            const double t = now();
            if (t > looked_at + between_looks && way.block() != nullptr) {
                looked_at = t;
                for (const std::string& file : way.block()->files) way.note_time(last_time(folder.partial / file), t);
            }
            tell(way.draw(t));
        };
    process_result ended = run_program(task);
    tell(way.wipe());
    if (filters) print(way.rest());
    return ended;
}

void check_own_composites(const deck_view& deck) {
    if (deck.own.faults.empty()) return;
    const own_fault& f = deck.own.faults.front();
    throw deck_error(f.message + "\n" + place_with_caret(place_of(deck.source, f.at)) +
                     (f.advice.empty() ? "" : "\n  advice: " + f.advice));
}

// Errors of blocks that a run passes over without a word, so that rows are missing which the deck asks for.
bool leaves_no_rows(const check_fault& fault, const file_chr& deck) {
    constexpr std::string_view codes[] = {"unknown-solve-type", "no-solve-type", "no-begin-solve", "misplaced",
                                          "too-many-blocks"};
    if (fault.code == "misplaced" && fault.at.statement < deck.n_lines() && fault.at.statement >= 0 &&
        asks_for_no_rows(deck.word(fault.at.statement, 0)))
        return false;
    return fault.is_error && std::find(std::begin(codes), std::end(codes), fault.code) != std::end(codes);
}

// What `tnl check` says of a deck that ran: it may have solved something else than what is written.
std::string findings_of(const check_report& report, const run_options& options) {
    std::string text;
    for (const check_fault& fault : report.faults)
        if (fault.is_error || !options.quiet) text += fault_text(report, fault, "  ");
    return text;
}

bool lacks_rows(const run_record& record, std::size_t n_planned) {
    return record.files.size() < n_planned ||
           std::any_of(record.files.begin(), record.files.end(),
                       [](const record_file& f) { return f.is_table() && f.rows == 0; });
}

}  // namespace

installation own_installation() {
    const fs::path own = own_folder();
    return {own / "tarnel", own.parent_path() / "share"};
}

run_result run_deck(const run_options& options, const installation& where) {
    using clock = std::chrono::steady_clock;
    const clock::time_point begin = clock::now();
    const auto since = [](clock::time_point t) { return std::chrono::duration<double>(clock::now() - t).count(); };
    std::optional<deadline> limit;
    limit.emplace(options.time_limit, "tnl: the time limit was reached before the simulator started\n");

    run_result run;
    run.deck = view_deck(read_deck_source(options.deck));
    run.folder = options.folder.empty() ? default_run_folder(options.deck) : fs::path(options.folder);
    if (!fs::exists(where.program)) throw file_error("the simulator is missing: " + where.program.string());
    if (!fs::is_directory(where.share)) throw file_error("the libraries are missing: " + where.share.string());
    check_output_names(run.deck, run.folder, options.force);
    name_inside(run.deck, run.folder);
    check_input_names(run.deck);
    check_own_composites(run.deck);
    if (is_library(run.deck))
        throw deck_error(options.deck +
                         " holds composites and no circuit to run\n  advice: a deck takes them in with: include " +
                         options.deck + "; tnl check " + options.deck + " looks into them, tnl describe --deck " +
                         options.deck + " shows them");

    const installed_libraries libraries = with_own(read_installed(where.share), run.deck.own);
    const deck_needs needs = needs_of(run.deck, libraries);
    run_record& record = run.record = begun_record(options, run.deck, libraries);
    const run_folder folder = take_run_folder(run.folder, record.deck, options.force);
    check_output_places(folder, run.deck, options.force);
    try {
        fill_partial(folder, run.deck, libraries, needs, record);
    } catch (const file_error&) {
        drop_partial(folder);
        throw;
    }
    limit.reset();

    side_work check([&] { return packed(check_deck(run.deck, libraries, {run.folder, options.force})); });
    const clock::time_point start = clock::now();
    const double left = options.time_limit > 0 ? std::max(least_limit, options.time_limit - since(begin)) : 0;
    run_listener listener;
    const process_result ended = simulate(options, left, where, folder, run.deck, listener);
    const held_signals hold;
    record.seconds = since(start);
    end_record(ended, record);
    run.timed_out = ended.timed_out;
    record.warnings = listener.warnings(run.deck);
    record.periods = listener.periods();
    const std::size_t n_planned = record.files.size();
    run.t_last = count_files(folder.partial, record);
    std::optional<check_report> report;
    if (ended.signal == 0) {
        const double rest = options.time_limit > 0 ? options.time_limit - since(begin) : longest_check;
        report = unpacked(check.answer(std::clamp(rest, 0.0, longest_check)).value_or(""), run.deck);
    }
    const bool checked = report.has_value();
    if (!checked) report = check_report{run.deck, {}, {}};
    if (ended.status == 0 && ended.signal == 0) {
        run.findings =
            warning_text(run.deck, record.warnings, "  ") + findings_of(*report, options) + (checked ? "" : unchecked);
        const auto leaves_none = [&](const check_fault& f) { return leaves_no_rows(f, run.deck.statements); };
        const bool lacks = std::any_of(report->faults.begin(), report->faults.end(), leaves_none) ||
                           (report->n_errors() > 0 && lacks_rows(record, n_planned));
        if (lacks && record.status == good) record.status = deck_fault;
    } else if (ended.signal == 0) {
        record.places = places_of_stop(ended.tail, *report, needs);
    }
    run.status = record.status;

    // A stop before the first row, as a misspelt word leads to, is no reason to lose the results that are there, nor
    // are rows that were cut one to lose those of a run that came to its end.
    const bool nothing_new = record.state == "stopped" && record.files.empty() && !folder.old.files.empty();
    const bool cut = (record.state == "limit" || record.state == "signal") && folder.old.state == "complete" &&
                     folder.old.deck == record.deck;
    run.kept = stays_aside(record) || nothing_new || cut;

    std::string more;
    if (ended.signal != 0 && stays_aside(record))
        more = "  the simulator was ended by signal " + std::to_string(ended.signal) + " (" + strsignal(ended.signal) +
               ")\n";
    else if (ended.signal == 0 && ended.status != 0)
        more = explain_stop(ended.tail, *report, needs) + (checked ? "" : unchecked);
    if (!more.empty() && !ended.tail.empty() && !ended.tail.ends_with('\n')) more.insert(0, "\n");
    if (options.quiet && ended.status != 0) more.insert(0, ended.tail);
    if (!options.silent) print(more);

    if (!run.kept) {
        publish(folder, record);
        return run;
    }
    try {
        write_partial_record(folder, record);
    } catch (const file_error&) {  // on a disk that is full; the record of the beginning stays
    }
    return run;
}

}  // namespace cli
