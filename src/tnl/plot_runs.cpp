#include "tnl/plot_runs.h"

#include <algorithm>
#include <filesystem>

#include "tnl/exit_status.h"
#include "tnl/open_run.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

struct named_run {
    std::string word;  // as typed
    opened_run run;
    std::list<std::pair<const record_file*, row_table>> loaded;  // files that were looked into
};

row_table& table_of(named_run& r, const record_file& file) {
    for (auto& [f, table] : r.loaded)
        if (f == &file) return table;
    return r.loaded.emplace_back(&file, load_table(r.run, file)).second;
}

// Without the rows when the record tells the columns.
row_table columns_of(named_run& r, const record_file& file) {
    if (file.columns.empty()) return table_of(r, file);
    row_table names;
    names.columns = file.columns;
    return names;
}

int n_columns_of(named_run& r, const record_file& file, const std::vector<std::string>& names) {
    const row_table table = columns_of(r, file);
    return static_cast<int>(
        std::count_if(names.begin(), names.end(), [&](const std::string& n) { return find_column(table, n) >= 0; }));
}

std::vector<const record_file*> tables_of(const named_run& r, const plot_wish& wish) {
    std::vector<const record_file*> files;
    for (const record_file& file : r.run.record.files)
        if (file.is_table() && (wish.file.empty() || file.path == wish.file)) files.push_back(&file);
    return files;
}

// "out.dat, wave.dat"
std::string listed(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& w : words) text += (text.empty() ? "" : ", ") + w;
    return text;
}

bool is_column(std::list<named_run>& runs, const plot_wish& wish, const std::string& word) {
    for (named_run& r : runs)
        for (const record_file* file : tables_of(r, wish))
            if (n_columns_of(r, *file, {word}) > 0) return true;
    return false;
}

[[noreturn]] void refuse_word(std::list<named_run>& runs, const plot_wish& wish, const std::string& word) {
    std::string text = word + " is neither a column nor a run; columns are";
    for (named_run& r : runs)
        for (const record_file* file : tables_of(r, wish)) {
            std::vector<std::string> names;
            for (const record_column& c : columns_of(r, *file).columns) names.push_back(c.name);
            text += "\n  " + file->path + ": " + listed(names);
        }
    throw usage_error(text);
}

// The file with most of the columns, and among equals the finest.
const record_file& file_for(named_run& r, const std::vector<std::string>& columns, const plot_wish& wish) {
    const std::vector<const record_file*> files = tables_of(r, wish);
    if (files.empty() && !wish.file.empty()) {
        std::vector<std::string> names;
        for (const record_file& f : r.run.record.files)
            if (f.is_table()) names.push_back(f.path);
        throw usage_error(r.word + " has no row file " + wish.file + "; it has " + listed(names));
    }
    if (files.empty()) throw file_error(r.word + " has no row files");
    const record_file* best = nullptr;
    int most = -1;
    for (const record_file* file : files) {
        const int n = n_columns_of(r, *file, columns);
        if (n > most || (n == most && is_finer(*file, *best))) best = file, most = n;
    }
    if (most < 1 && !columns.empty()) throw usage_error(r.word + " has none of the columns " + listed(columns));
    return *best;
}

std::string name_of(const named_run& r, const std::list<named_run>& runs) {
    const auto last = [](const std::string& word) {
        fs::path path(word);
        if (!path.has_filename()) path = path.parent_path();
        return path.filename().string();
    };
    const auto same = [&](const named_run& other) { return last(other.word) == last(r.word); };
    return std::count_if(runs.begin(), runs.end(), same) > 1 ? r.word : last(r.word);
}

}  // namespace

plotted_runs open_plotted(const std::vector<std::string>& words, const plot_wish& wish) {
    std::list<named_run> runs;
    std::vector<std::string> columns;
    std::error_code error;
    for (const std::string& word : words) {
        if (!runs.empty() && is_column(runs, wish, word))
            columns.push_back(word);
        else if (runs.empty() || fs::exists(word, error) || fs::exists(word + ".run", error))
            runs.push_back({word, open_run(word), {}});
        else
            refuse_word(runs, wish, word);
    }
    std::vector<std::string> wanted = columns;
    if (!wish.x.empty()) wanted.push_back(wish.x);

    plotted_runs out;
    out.choice = wish.choice;
    std::string title;
    for (named_run& r : runs) {
        const record_file& file = file_for(r, wanted, wish);
        std::vector<std::string> others;
        for (const record_file* f : tables_of(r, wish))
            if (f != &file) others.push_back(f->path);
        if (!others.empty() && wish.file.empty())
            out.notes.push_back(r.word + ": shown is " + file.path + "; --file takes also " + listed(others));
        if (!r.run.later.empty())
            out.notes.push_back(r.word + ": shown is the run that came to its end; a later one left rows in " +
                                r.run.later.string());
        if (r.run.unfinished) out.notes.push_back(r.word + ": the run is not finished; shown are its rows so far");

        row_table& loaded = table_of(r, file);
        if (loaded.n_rows() == 0) throw file_error(fs::path(loaded.path).lexically_normal().string() + " has no rows");
        out.tables.push_back(std::move(loaded));
        row_table& table = out.tables.back();
        plot_source source;
        source.table = &table;
        source.run = runs.size() > 1 ? name_of(r, runs) : "";
        source.x = wish.x.empty() ? x_column_of(table) : find_column(table, wish.x);
        if (columns.empty()) source.columns = drawn_columns(table, source.x);
        for (const std::string& name : columns)
            if (const int j = find_column(table, name); j >= 0) source.columns.push_back(j);
        if (!wish.x.empty() && source.x < 0) throw usage_error(table.path + " has no column " + wish.x);
        if (source.columns.empty())
            throw usage_error(columns.empty() ? table.path + " has no column besides that of the x axis"
                                              : table.path + " has none of the columns " + listed(columns));
        if (table.kind == "ac") out.choice.log_x = true;
        out.sources.push_back(std::move(source));
        if (&r == &runs.front()) title = r.run.record.title;
        if (r.run.record.title != title) title.clear();
    }
    const auto x_of = [](const plot_source& s) {
        return s.x < 0 ? record_column{"row", ""} : s.table->columns[static_cast<std::size_t>(s.x)];
    };
    const record_column first = x_of(out.sources.front());
    for (const plot_source& s : out.sources) {
        const record_column x = x_of(s);
        if (x.unit != first.unit && !x.unit.empty() && !first.unit.empty())
            throw usage_error("the x axes differ: " + first.name + ", " + first.unit + " in " +
                              out.sources.front().table->path + " and " + x.name + ", " + x.unit + " in " +
                              s.table->path);
        if ((s.table->kind == "fourier") != (out.sources.front().table->kind == "fourier"))
            throw usage_error("harmonics and curves do not go into one picture: " + out.sources.front().table->path +
                              ", " + s.table->path);
    }
    for (const std::string& name : columns) {
        const auto has = [&](const plot_source& s) { return find_column(*s.table, name) >= 0; };
        if (std::none_of(out.sources.begin(), out.sources.end(), has))
            throw usage_error("no row file has all of the columns " + listed(columns) + "; " + name +
                              " is in another one");
    }
    if (out.choice.title.empty()) out.choice.title = title;
    return out;
}

}  // namespace cli
