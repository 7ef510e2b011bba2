#include "tnl/results/open_run.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "tnl/common/exit_status.h"
#include "tnl/results/sweep_columns.h"
#include "tnl/run/run_folder.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

bool open_folder(const fs::path& folder, opened_run& run) {
    std::error_code error;
    for (const fs::path& place : {folder, folder / partial_name}) {
        if (!fs::is_regular_file(place / record_name, error)) continue;
        run.folder = place;
        run.record = read_record(place / record_name);
        run.unfinished = run.record.state == "running";
        if (place == folder && fs::is_regular_file(folder / partial_name / record_name, error))
            run.later = folder / partial_name;
        return true;
    }
    return false;
}

// The row file alone, or as the record beside it describes it.
opened_run open_file(const fs::path& path) {
    opened_run run;
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    const std::string name = path.filename().string();
    if (open_folder(folder, run) && run.folder == folder)
        for (const record_file& file : run.record.files)
            if (file.path == name) {
                run.record.files = {file};
                return run;
            }
    run = {};
    run.folder = folder;
    run.record.files.push_back({name, "", {}, 0, 0});
    return run;
}

bool begins_like_a_deck(const fs::path& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) return false;  // a pipe would be waited for
    std::ifstream in(path, std::ios::binary);
    std::string begin(6, ' ');
    return in.read(begin.data(), 6) && begin == "title:";
}

}  // namespace

opened_run open_run(const std::string& path) {
    opened_run run;
    std::error_code error;
    if (fs::is_directory(path, error)) {
        if (open_folder(path, run)) return run;
        throw file_error(path + " is a folder without results of tnl run");
    }
    if (fs::is_directory(path + ".run", error) && open_folder(path + ".run", run)) return run;
    if (begins_like_a_deck(path)) throw file_error(path + " has not been run; tnl run " + path + " does");
    if (fs::exists(path, error)) return open_file(path);
    throw file_error("cannot read " + path + ": no such run, deck or row file");
}

namespace {

// The first line of a stop that says something.
std::string first_line(const std::string& message) { return message.substr(0, message.find('\n')); }

std::string text_of_state(const run_record& record) {
    if (record.state == "limit") return "was cut off at a limit of time or steps";
    if (record.state == "signal") return "was ended by a signal";
    if (record.state == "stopped")
        return "stopped with a message" + (record.message.empty() ? "" : ": " + first_line(record.message));
    return "did not come to its end";
}

}  // namespace

std::string how_it_ended(const opened_run& run) {
    const std::string& state = run.record.state;
    if (!run.later.empty()) {
        run_record later;
        try {
            later = read_record(run.later / record_name);
        } catch (const file_error&) {  // it goes on just now
        }
        std::string text = "these rows are of the last run that came to its end; ";
        if (later.state.empty() || later.state == "running")
            return text + "a later one goes on, or was cut, and left rows in " + run.later.string();
        text += "a later one " + text_of_state(later);
        return later.files.empty() ? text : text + "; its rows are in " + run.later.string();
    }
    if (run.unfinished) return "the run goes on, or was cut: these are its rows up to now";
    if (state.empty() || state == "complete") return {};
    return "the run " + text_of_state(run.record) + "; these are its rows up to there";
}

std::string why_none(const opened_run& run) {
    const std::string& state = run.record.state;
    if (state.empty() || state == "complete" || run.unfinished) return {};
    return "; the run " + text_of_state(run.record);
}

namespace {

// The curves of a sweep, with its values; rows of one frequency stand over these, as columns of their own.
void name_sweeps(result_table& table, const record_file& file) {
    split_at_restarts(table);
    const auto has_all = [&](std::size_t n) {
        return std::all_of(file.sweeps.begin(), file.sweeps.end(),
                           [&](const record_sweep& sweep) { return sweep.values.size() >= n; });
    };
    const bool is_one_frequency = table.n_rows() > table.n_curves() && table.at(0, 0) == table.at(1, 0);
    if (is_one_frequency && has_all(table.n_rows())) {
        for (const record_sweep& sweep : file.sweeps) add_column(table, {sweep.name, sweep.unit}, sweep.values);
        if (!file.sweeps.empty()) table.swept_column = static_cast<int>(table.n_columns()) - 1;
    } else if (table.n_curves() > 1 && has_all(table.n_curves())) {
        table.sweeps = file.sweeps;
    }
}

// The curves of a sweep point by point. Those of vary_parm_sync have no free line between them, but all their rows.
void name_points(result_table& table, const record_file& file, bool is_complete) {
    const std::size_t n = file.steps.values.size(), n_curves = file.sweeps.empty() ? 0 : file.sweeps[0].values.size();
    if (n > 0 && n_curves > table.n_curves() && table.n_rows() == n * n_curves) {
        table.first_row.clear();
        for (std::size_t k = 0; k <= n_curves; ++k) table.first_row.push_back(k * n);
    }
    std::vector<curve_rows> curves;
    for (std::size_t k = 0; k < table.n_curves(); ++k)
        curves.push_back({table.first_row[k], table.first_row[k + 1] - table.first_row[k]});
    const auto at = [&](std::size_t i, std::size_t j) { return table.at(i, j); };
    table.steps_column = steps_column(file, table.columns, curves, at);
    if (table.n_curves() < 2 || (is_complete && n_curves != table.n_curves())) return;
    if (n > 0 && std::any_of(curves.begin(), curves.end(), [&](const curve_rows& c) { return c.n > n; })) return;
    table.sweeps = sweeps_of_curves(file, table.columns, curves, at);
    table.is_swept.assign(table.n_columns(), 0);
    for (std::size_t j = 0; j < table.n_columns(); ++j) {
        const auto in_row = [&](std::size_t i) { return table.at(i, j); };
        const auto shows = [&](const record_sweep& s) { return shows_curves(in_row, curves, s.values); };
        table.is_swept[j] = shows_steps(in_row, curves, file.steps.values) ||
                            std::any_of(file.sweeps.begin(), file.sweeps.end(), shows);
    }
}

}  // namespace

result_table load_table(const opened_run& run, const record_file& file) {
    const fs::path path = run.folder / file.path;
    result_table table = read_result_table(read_file(path), path.string());
    table.kind = file.kind;
    table.begins_with_guess = file.begins_with_guess;
    if (table.n_rows() == 0 || file.columns.size() == table.n_columns()) table.columns = file.columns;
    take_off_offset(table, file);
    if (is_over_frequency(table))
        name_sweeps(table, file);
    else if (table.n_rows() > 0 && table.columns.size() == file.columns.size() && !file.steps.name.empty())
        name_points(table, file, run.record.state == "complete");
    return table;
}

bool is_finer(const record_file& a, const record_file& b) {
    const auto worth = [](const record_file& f) { return std::pair(f.kind != "startup" && f.rows != 1, f.rows); };
    return worth(a) > worth(b);
}

}  // namespace cli
