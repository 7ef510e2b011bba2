#include "tnl/view/view_store.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tnl/common/exit_status.h"
#include "tnl/plot/plot_panels.h"
#include "tnl/plot/plot_rows.h"
#include "tnl/results/sweep_columns.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t head_size = 64u << 10, chunk_size = 2u << 20;  // bytes

// The folder's name without its ending; the whole path where two runs have the same.
void name_runs(std::vector<view_run>& runs) {
    for (view_run& run : runs) {
        fs::path path = fs::path(run.path).lexically_normal();
        if (!path.has_filename()) path = path.parent_path();
        if (path.filename() == "." || path.filename() == "..") path = fs::absolute(path).lexically_normal();
        if (!path.has_filename()) path = path.parent_path();
        run.name = path.extension() == ".run" ? path.stem().string() : path.filename().string();
    }
    std::vector<std::string> names;
    for (const view_run& run : runs) names.push_back(run.name);
    for (view_run& run : runs)
        if (std::count(names.begin(), names.end(), run.name) > 1) run.name = run.path;
}

// A file that a record names must stand in the record's folder, through symbolic links too. What the user named by
// itself may stand anywhere.
bool is_inside(const fs::path& folder, const std::string& name) {
    if (name.empty() || fs::path(name).is_absolute()) return false;
    for (const fs::path& part : fs::path(name))
        if (part == "..") return false;
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(folder / name, error), home = fs::weakly_canonical(folder, error);
    return !error && std::mismatch(home.begin(), home.end(), whole.begin(), whole.end()).first == home.end();
}

// A run that goes on, or was cut, comes before the results of the one before it, which stand in its folder.
opened_run open_latest(const std::string& path) {
    std::error_code error;
    for (const fs::path& folder : {fs::path(path), fs::path(path + ".run")}) {
        if (!fs::is_regular_file(folder / partial_name / record_name, error)) continue;
        try {
            opened_run run = open_run((folder / partial_name).string());
            if (run.unfinished || !run.record.files.empty()) return run;
        } catch (const file_error&) {  // it ends just now
        }
    }
    return open_run(path);
}

bool is_row_file(const std::string& path) {
    std::error_code error;
    return !fs::is_directory(path, error) && !fs::is_directory(path + ".run", error);
}

// A record may come after its file was read: what is made of the rows by the names of their columns is made again.
bool reads_alike(const record_file& a, const record_file& b) {
    return a.begins_with_guess == b.begins_with_guess && a.kind == b.kind && a.digital == b.digital &&
           a.offset == b.offset && a.columns == b.columns;
}

// Takes over what was read of the files that are still there.
void set_files(view_run& run) {
    std::vector<view_file_ptr> files;
    for (const record_file& record : run.opened.record.files) {
        if (!record.is_table()) continue;
        if (!is_row_file(run.path) && !is_inside(run.opened.folder, record.path)) continue;
        view_file_ptr file;
        for (const view_file_ptr& old : run.files)
            if (old->record.path == record.path) file = old;
        if (!file) file = std::make_shared<view_file>();
        const std::lock_guard<std::mutex> hold(file->lock);
        if (!reads_alike(file->record, record)) begin_anew(file->source);
        file->record = record;
        file->path = run.opened.folder / record.path;
        files.push_back(file);
    }
    run.files = std::move(files);
}

// Names of the columns in the file, not of those that are made of them.
std::vector<record_column> columns_of(const view_file& file) {
    const std::size_t made = file.made.size(), all = file.source.rows.columns.size(), n = all > made ? all - made : 0;
    if (n == 0 || file.record.columns.size() == n) return file.record.columns;
    std::vector<record_column> columns;
    for (std::size_t j = 0; j < n; ++j) columns.push_back({"c" + std::to_string(j + 1), ""});
    return columns;
}

// Holds no values where the file has lost a column that it needs: the others are shown.
void make_column(result_table& table, view_file& file, std::size_t i) {
    std::vector<double> values;
    file.made_faults[i].clear();
    try {
        for (std::size_t k = 0; k < table.n_curves(); ++k) {
            const row_values part = evaluate_rows(file.made[i], table, k);
            values.insert(values.end(), part.value.begin(), part.value.end());
            file.made_units[i] = part.unit == "%" ? "" : part.unit;
        }
    } catch (const std::runtime_error& e) {
        values.assign(table.n_rows(), NAN);
        file.made_units[i].clear();
        file.made_faults[i] = e.what();
    }
    add_column(table, {file.made[i].label, ""}, values);
}

// What the file does not hold: columns made of others; and its first row where that is a guess apart from all else.
void complete(result_table& table, view_file& file, bool is_begin) {
    if (table.n_rows() == 0) return;
    if (file.record.columns.size() == table.n_columns()) table.columns = file.record.columns;
    table.begins_with_guess = is_begin && file.record.begins_with_guess;
    take_off_offset(table, file.record);
    for (std::size_t j = 1; j < table.n_columns(); ++j)
        if (starts_apart(table, j)) table.values[j] = NAN;
    for (std::size_t i = 0; i < file.made.size(); ++i) make_column(table, file, i);
}

// Why a made column has no values, where the file itself can be read.
std::string fault_of_made(const view_file& file) {
    for (std::size_t i = 0; i < file.made.size(); ++i)
        if (!file.made_faults[i].empty()) return file.made[i].label + ": " + file.made_faults[i];
    return {};
}

nlohmann::json list_file(view_file& file) {
    const std::lock_guard<std::mutex> hold(file.lock);
    const row_source& source = file.source;
    nlohmann::json columns = nlohmann::json::array();
    std::size_t n_known = 0;
    for (const record_column& c : columns_of(file)) {
        columns.push_back({{"name", c.name}, {"unit", c.unit}});
        const bool is_node = file.record.columns.empty() && file.record.digital && n_known++ > 0;  // of all_nodes
        if (c.level || is_node) columns.back()["level"] = true;
    }
    for (std::size_t j = 0; j < file.made.size(); ++j)
        columns.push_back({{"name", file.made[j].label}, {"unit", file.made_units[j]}});
    for (std::size_t j = 0; j < source.rows.columns.size() && j < columns.size(); ++j) {  // greatest distance from zero
        const min_max m = extremes(source.rows.columns[j], 0, source.rows.n);
        const double size = m.is_empty() ? 0 : std::max(std::abs(m.lo), std::abs(m.hi));
        columns[j]["size"] = std::isfinite(size) ? size : 1e308;
    }
    const bool all_read = source.at == source.size;
    const std::string& kind = file.record.kind;
    std::vector<curve_rows> curves;
    for (const view_curve& c : source.rows.curves) curves.push_back({c.first, c.n});
    const auto at = [&](std::size_t i, std::size_t j) { return source.rows.columns[j].values[i]; };
    const std::vector<record_column> shown(
        file.record.columns.begin(),
        file.record.columns.begin() +
            static_cast<std::ptrdiff_t>(std::min(file.record.columns.size(), source.rows.columns.size())));
    const int steps = steps_column(file.record, shown, curves, at);
    const int axis = steps >= 0 && source.rows.columns.size() > 1 ? steps
                     : kind == "startup" || kind == "postproc"    ? -1
                     : kind == "ac" || kind == "nyquist"          ? 0
                                                                  : axis_column(source.rows);
    nlohmann::json labels = nlohmann::json::array();  // of the curves of a sweep
    const std::vector<record_sweep> sweeps = sweeps_of_curves(file.record, shown, curves, at);
    for (std::size_t k = 0; !sweeps.empty() && k < curves.size(); ++k) labels.push_back(text_of_sweeps(sweeps, k));
    return {{"path", file.record.path},
            {"kind", file.record.kind},
            {"digital", file.record.digital},
            {"columns", columns},
            {"labels", labels},
            {"axis", axis},
            {"rows", all_read ? static_cast<long long>(source.rows.n)
                              : std::max(file.record.rows, static_cast<long long>(source.rows.n))},
            {"curves", std::max<std::size_t>(source.rows.curves.size(),
                                             all_read ? 0 : static_cast<std::size_t>(std::max(file.record.curves, 0)))},
            {"version", source.version},
            {"wanted", file.wanted.load()},
            {"bytes", source.size},
            {"bytes_read", source.at},
            {"problem", source.problem.empty() ? fault_of_made(file) : source.problem}};
}

}  // namespace

view_store::view_store(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        view_run run;
        run.path = path;
        run.opened = open_latest(path);
        set_files(run);
        runs_.push_back(std::move(run));
    }
    name_runs(runs_);
    reader_ = std::thread([this] { follow(); });
}

view_store::~view_store() {
    {
        const std::lock_guard<std::mutex> hold(lock_);
        ending_ = true;
    }
    changed_.notify_all();
    reader_.join();
}

std::string view_store::list() {
    nlohmann::json runs = nlohmann::json::array();
    {
        const std::lock_guard<std::mutex> hold(lock_);
        for (const view_run& run : runs_) {
            nlohmann::json files = nlohmann::json::array();
            for (const view_file_ptr& file : run.files) files.push_back(list_file(*file));
            const run_record& record = run.opened.record;
            runs.push_back({{"path", run.path},
                            {"name", run.name},
                            {"title", record.title},
                            {"deck", record.deck},
                            {"began", record.began},
                            {"state", record.state},
                            {"unfinished", run.opened.unfinished},
                            {"message", record.message},
                            {"problem", run.problem},
                            {"files", std::move(files)}});
        }
        asked_ = true;
    }
    changed_.notify_all();
    return nlohmann::json({{"runs", std::move(runs)}}).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

view_file_ptr view_store::want_file(std::size_t run, const std::string& path) {
    const std::lock_guard<std::mutex> hold(lock_);
    if (run >= runs_.size()) return nullptr;
    for (const view_file_ptr& file : runs_[run].files)
        if (file->record.path == path) {
            if (!file->wanted) {
                file->wanted = asked_ = true;
                changed_.notify_all();
            }
            return file;
        }
    return nullptr;
}

void view_store::add_column(const std::string& text) {
    const expression e = parse_expression(text);
    if (!is_by_row(e))
        throw usage_error(
            "a column is made of others row by row, as vin - vout or abs(i); tnl measure knows all functions");
    const std::lock_guard<std::mutex> hold(lock_);
    bool any = false;
    for (const view_run& run : runs_)
        for (const view_file_ptr& file : run.files) {
            const std::lock_guard<std::mutex> hold_file(file->lock);
            result_table names;
            names.columns = columns_of(*file);
            if (!std::all_of(e.names.begin(), e.names.end(),
                             [&](const std::string& name) { return find_column(names, name) >= 0; }))
                continue;
            any = true;
            const auto same = [&](const expression& other) { return other.label == e.label; };
            if (std::any_of(file->made.begin(), file->made.end(), same)) continue;
            file->made.push_back(e);
            file->made_units.emplace_back();
            file->made_faults.emplace_back();
            file->wanted = true;
            begin_anew(file->source);
        }
    if (!any) throw usage_error("no file has all columns of " + text);
    asked_ = true;
    changed_.notify_all();
}

void view_store::wait_until_read() {
    std::unique_lock<std::mutex> hold(lock_);
    asked_ = true;
    changed_.notify_all();
    changed_.wait(hold, [this] { return idle_ && !asked_; });
}

void view_store::follow() {
    for (;;) {
        {
            std::unique_lock<std::mutex> hold(lock_);
            idle_ = !asked_;
            if (idle_) changed_.notify_all();
            changed_.wait(hold, [this] { return asked_ || ending_; });
            if (ending_) return;
            asked_ = idle_ = false;
        }
        look_for_changes();
        for (bool more = true; more;) {  // a chunk of each file in turn
            more = false;
            std::vector<view_file_ptr> files;
            {
                const std::lock_guard<std::mutex> hold(lock_);
                if (ending_) return;
                for (const view_run& run : runs_) files.insert(files.end(), run.files.begin(), run.files.end());
            }
            for (const view_file_ptr& file : files) more = read_on(*file) || more;
        }
    }
}

void view_store::look_for_changes() {
    for (std::size_t i = 0; i < runs_.size(); ++i) {  // only this thread changes runs_
        opened_run opened;
        std::string problem;
        try {
            opened = open_latest(runs_[i].path);
        } catch (const file_error& e) {
            problem = e.what();
        }
        const std::lock_guard<std::mutex> hold(lock_);
        runs_[i].problem = problem;
        if (!problem.empty()) continue;
        runs_[i].opened = std::move(opened);
        set_files(runs_[i]);
    }
}

bool view_store::read_on(view_file& file) {
    std::unique_lock<std::mutex> hold(file.lock);
    row_source& source = file.source;
    if (!look_at(source, file.path)) return false;
    const std::size_t n = file.wanted ? chunk_size : source.at == 0 ? head_size : 0;
    if (n == 0) return false;
    try {
        const std::string text = next_lines(source, n);
        const std::string path = file.path.string();
        const long long first_line = source.rows.n_lines + 1, version = source.version;
        const bool is_sweep = file.record.kind == "ac" || file.record.kind == "nyquist";
        hold.unlock();  // only this thread changes the source: requests are answered from the rows that are there
        view_lines lines = parse_lines(text, path, first_line);
        hold.lock();
        if (version != source.version) return true;  // a column was added: all is read again
        if (is_sweep) part_sweeps(lines, source.rows);
        complete(lines.table, file, source.rows.n == 0);
        append_lines(source.rows, lines);
    } catch (const file_error& e) {
        if (!hold) hold.lock();
        source.problem = e.what();
    } catch (const std::bad_alloc&) {
        if (!hold) hold.lock();
        source.rows = {};
        source.problem = "not enough memory for " + file.path.string();
    }
    ++source.version;
    return source.problem.empty() && file.wanted && source.at < source.size;
}

}  // namespace cli
