#include "tnl/results/run_tables.h"

#include <algorithm>

#include "tnl/common/exit_status.h"
#include "tnl/common/input_file.h"
#include "tnl/deck/installed.h"

namespace cli {

namespace {

std::string list_of(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

result_table table_of(const std::vector<std::string>& known) {
    result_table columns;
    for (const std::string& k : known) columns.columns.push_back({k, ""});
    return columns;
}
bool holds(const std::vector<std::string>& known, std::string_view name) { return has_quantity(table_of(known), name); }

// Small signals of which only the magnitude, or only the phase, is there.
long long n_halves(const std::vector<std::string>& known, const std::vector<std::string>& names) {
    const result_table table = table_of(known);
    return std::count_if(names.begin(), names.end(), [&](const std::string& name) {
        const response_columns r = find_response(table, name);
        return find_column(table, name) < 0 && (r.mag < 0) != (r.phase < 0);
    });
}

}  // namespace

run_tables::run_tables(const std::string& run, const std::string& file) {
    if (run == "-") {
        run_.record.files.push_back({"-", "", {}, 0, 0});
        table_["-"] = read_result_table(read_standard_input(most_piped_bytes), "standard input");
    } else {
        run_ = open_run(run);
    }
    std::vector<std::string> paths;
    for (const record_file& f : run_.record.files) {
        if (!f.is_table()) continue;
        paths.push_back(f.path);
        if (file.empty() || f.path == file) files_.push_back(&f);
    }
    if (!files_.empty()) return;
    if (paths.empty()) throw file_error(run + " has no tables" + why_none(run_));
    throw usage_error(run + " has no table " + file + "; it has " + list_of(paths));
}

const result_table& run_tables::load(const record_file& file) {
    const auto known = table_.find(file.path);
    if (known != table_.end()) return known->second;
    return table_[file.path] = load_table(run_, file);
}

std::vector<std::string> run_tables::names_of(const record_file& file) {
    const std::vector<record_column>& columns = file.columns.empty() ? load(file).columns : file.columns;
    std::vector<std::string> names;
    for (const record_column& c : columns) names.push_back(c.name);
    return names;
}

void fail_no_column(std::string_view name, const std::vector<std::string>& known, const std::string& path) {
    std::string near;
    if (name.size() <= 100)
        for (const std::string& n : near_names(known, name)) near += (near.empty() ? "; near names: " : ", ") + n;
    throw usage_error("no column " + std::string(name) + " in " + path + near +
                      (known.empty() ? "; it has no rows" : "; it has " + list_of(known)));
}

const result_table& run_tables::with_columns(const std::vector<std::string>& names, bool digital_first) {
    std::vector<const record_file*> fitting;
    std::vector<std::string> paths, all;
    for (const record_file* file : files_) {
        const std::vector<std::string> known = names_of(*file);
        all.insert(all.end(), known.begin(), known.end());
        if (!std::all_of(names.begin(), names.end(), [&](const std::string& n) { return holds(known, n); })) continue;
        fitting.push_back(file);
        paths.push_back(file->path);
    }
    if (fitting.size() > 1) {
        const auto finest =
            std::max_element(fitting.begin(), fitting.end(), [&](const record_file* a, const record_file* b) {
                if (digital_first && a->digital != b->digital) return b->digital;
                const long long of_a = n_halves(names_of(*a), names), of_b = n_halves(names_of(*b), names);
                return of_a != of_b ? of_a > of_b : is_finer(*b, *a);
            });
        const std::string taken = (*finest)->path;
        std::erase(paths, taken);
        choices_.insert("tnl: " + (names.empty() ? "" : list_of(names) + ": ") + "taken is " + taken +
                        "; --file takes also " + list_of(paths) + "\n");
        fitting = {*finest};
    }
    if (fitting.empty() && files_.size() == 1) {
        const std::vector<std::string> known = names_of(*files_[0]);
        for (const std::string& n : names)
            if (!holds(known, n)) fail_no_column(n, known, load(*files_[0]).path);
    }
    if (fitting.empty()) {
        std::sort(all.begin(), all.end());
        all.erase(std::unique(all.begin(), all.end()), all.end());
        for (const std::string& n : names)
            if (!holds(all, n)) fail_no_column(n, all, "the tables of the run");
        throw usage_error("no table of the run holds all of " + list_of(names));
    }
    const result_table& table = load(*fitting[0]);
    for (const std::string& n : names)  // the record may be of other rows
        if (!has_quantity(table, n)) fail_no_column(n, names_of({"", "", table.columns, 0, 0}), table.path);
    if (table.n_rows() == 0) throw file_error(table.path + " has no rows");
    return table;
}

std::string run_tables::cut() const {
    const std::string& state = run_.record.state;
    if (run_.unfinished) return "the run goes on, or was cut";
    if (!state.empty() && state != "complete") return "the run did not come to its end (" + state + ")";
    if (!run_.later.empty()) return "the last run did not come to its end; its rows are in " + run_.later.string();
    return "";
}

std::string run_tables::note() const {
    std::string text;
    for (const std::string& choice : choices_) text += choice;
    const std::string end = how_it_ended(run_);
    return end.empty() ? text : text + "tnl: " + end + "\n";
}

curve_range curves_of(const result_table& table, int number) {
    if (number == 0) return {0, table.n_curves()};
    if (number < 0 || static_cast<std::size_t>(number) > table.n_curves())
        throw usage_error(table.path + " has " + std::to_string(table.n_curves()) + " curves; there is no curve " +
                          std::to_string(number));
    const std::size_t i = static_cast<std::size_t>(number) - 1;
    return {i, i + 1};
}

}  // namespace cli
