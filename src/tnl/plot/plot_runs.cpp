#include "tnl/plot/plot_runs.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "tnl/common/exit_status.h"
#include "tnl/plot/plot_ac.h"
#include "tnl/results/measure.h"
#include "tnl/results/open_run.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

struct named_run {
    std::string word;  // as typed
    opened_run run;
    std::list<std::pair<const record_file*, result_table>> loaded;  // files that were looked into
};

result_table& table_of(named_run& r, const record_file& file) {
    for (auto& [f, table] : r.loaded)
        if (f == &file) return table;
    return r.loaded.emplace_back(&file, load_table(r.run, file)).second;
}

// Without the rows when the record tells the columns.
result_table columns_of(named_run& r, const record_file& file) {
    if (file.columns.empty()) return table_of(r, file);
    result_table names;
    names.columns = file.columns;
    return names;
}

// A word for a curve: a column, or an expression over some.
struct wanted_curve {
    std::string word;                // as typed
    std::vector<std::string> names;  // of the columns that it needs
    std::optional<expression> made;  // none: the column itself
    bool once = false;               // not where it is drawn already
    std::string name() const { return made ? made->label : word; }
};

bool has_all(const result_table& table, const wanted_curve& c) {
    return std::all_of(c.names.begin(), c.names.end(), [&](const std::string& n) { return has_quantity(table, n); });
}

int n_columns_of(named_run& r, const record_file& file, const std::vector<wanted_curve>& curves) {
    const result_table table = columns_of(r, file);
    return static_cast<int>(
        std::count_if(curves.begin(), curves.end(), [&](const wanted_curve& c) { return has_all(table, c); }));
}

std::vector<const record_file*> tables_of(const named_run& r, const plot_wish& wish) {
    std::vector<const record_file*> files;
    for (const record_file& file : r.run.record.files)
        if (file.is_table() && (wish.file.empty() || file.path == wish.file)) files.push_back(&file);
    return files;
}

std::vector<std::string> words_of(const std::vector<wanted_curve>& curves) {
    std::vector<std::string> words;
    for (const wanted_curve& c : curves) words.push_back(c.word);
    return words;
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
            if (has_quantity(columns_of(r, *file), word)) return true;
    return false;
}

[[noreturn]] void refuse_word(std::list<named_run>& runs, const plot_wish& wish, const std::string& word) {
    if (runs.size() == 1 && tables_of(runs.front(), {}).empty())
        throw file_error(runs.front().word + " has no row files" + why_none(runs.front().run));
    std::string text = word + " is neither a column nor a run; columns are";
    for (named_run& r : runs)
        for (const record_file* file : tables_of(r, wish)) {
            std::vector<std::string> names;
            for (const record_column& c : columns_of(r, *file).columns) names.push_back(c.name);
            text += "\n  " + file->path + ": " + listed(names);
        }
    throw usage_error(text);
}

// The word as an expression over columns that there are. Throws usage_error.
wanted_curve curve_of(std::list<named_run>& runs, const plot_wish& wish, const std::string& word) {
    if (is_column(runs, wish, word)) return {word, {word}, {}};
    // A name and nothing else is no expression: it is misspelt.
    if (word.find_first_of("+-*/^()$`'\"= ") == std::string::npos) refuse_word(runs, wish, word);
    wanted_curve c{word, {}, parse_expression(word)};
    if (!c.made->relations.empty()) throw usage_error(word + " is a comparison; tnl assert tells whether it holds");
    c.names = c.made->names;
    if (c.names.empty()) throw usage_error(word + " has no column in it");
    for (const std::string& name : c.names)
        if (!is_column(runs, wish, name)) refuse_word(runs, wish, name);
    return c;
}

// Columns that the curve is drawn from, where an expression becomes a new one; none: the table lacks one.
std::vector<int> places_of(const wanted_curve& c, result_table& table) {
    if (!has_all(table, c)) return {};
    if (!c.made) {
        const int j = find_column(table, c.word);
        if (j >= 0) return {j};
        const response_columns r = find_response(table, c.word);
        std::vector<int> places;
        for (const int part : {r.mag, r.phase, r.real, r.imag})
            if (part >= 0) places.push_back(part);
        return places;
    }
    try {
        return add_columns_of(*c.made, table);
    } catch (const measure_error& fault) {
        throw file_error(c.word + ": " + fault.what() + " (" + table.path + ")");
    }
}

// A name as an expression, however odd it is.
expression expression_of(const std::string& name) {
    expression e;
    e.text = e.label = name;
    e.names = {name};
    e.sides.push_back({name, {{measure_op::column, 0, false, 0, 0}}, false});
    return e;
}

// Curves in the complex plane, each a source of its own as each has an x of its own; of all small signals if none is
// wanted.
std::vector<plot_source> loci_of(const std::vector<wanted_curve>& wanted, result_table& table) {
    std::vector<expression> curves;
    for (const wanted_curve& c : wanted)
        if (has_all(table, c)) curves.push_back(c.made ? *c.made : expression_of(c.word));
    if (wanted.empty())
        for (const std::string& name : small_signals_in(table)) curves.push_back(expression_of(name));
    if (curves.empty()) throw usage_error(table.path + " has no small signal, mag_of_X and phase_of_X");
    std::vector<plot_source> sources;
    for (const expression& e : curves) {
        try {
            sources.push_back(locus_of(e, table));
        } catch (const measure_error& fault) {
            throw file_error(e.text + ": " + fault.what() + " (" + table.path + ")");
        }
        sources.back().table = &table;
    }
    return sources;
}

// A nyquist file is drawn in the complex plane as long as no column of it is asked for.
bool is_locus(const plot_wish& wish, const std::vector<wanted_curve>& curves, const result_table& table) {
    if (wish.nyquist) return true;
    return table.kind == "nyquist" && wish.x.empty() &&
           std::all_of(curves.begin(), curves.end(), [&](const wanted_curve& c) {
               return !c.made && find_column(table, c.word) < 0 && find_response(table, c.word).any();
           });
}

// The file with most of the columns, and among equals the finest.
const record_file& file_for(named_run& r, const std::vector<wanted_curve>& columns, const plot_wish& wish) {
    const std::vector<const record_file*> files = tables_of(r, wish);
    if (files.empty() && !wish.file.empty()) {
        std::vector<std::string> names;
        for (const record_file& f : r.run.record.files)
            if (f.is_table()) names.push_back(f.path);
        throw usage_error(r.word + " has no row file " + wish.file + "; it has " + listed(names));
    }
    if (files.empty()) throw file_error(r.word + " has no row files" + why_none(r.run));
    const record_file* best = nullptr;
    int most = -1;
    for (const record_file* file : files) {
        const int n = n_columns_of(r, *file, columns);
        if (n > most || (n == most && is_finer(*file, *best))) best = file, most = n;
    }
    if (most < 1 && !columns.empty())
        throw usage_error(r.word + " has none of the columns " + listed(words_of(columns)));
    return *best;
}

// Whether the rows of two files lie over one another, for half of the time that both take together at least.
bool go_together(const result_table& a, const result_table& b) {
    const auto begin = [](const result_table& t) { return t.at(0, 0); };
    const auto end = [](const result_table& t) { return t.at(t.n_rows() - 1, 0); };
    if (a.n_rows() == 0 || b.n_rows() == 0) return false;
    const double common = std::min(end(a), end(b)) - std::max(begin(a), begin(b));
    return 2 * common >= std::max(end(a), end(b)) - std::min(begin(a), begin(b));
}

// Beside a file of one kind, of numbers or levels over time, one of the other: the one with most of the columns that
// the first lacks, or, where none is asked for, the finest that has rows at its times. nullptr: none.
const record_file* companion_of(named_run& r, const record_file& first, const std::vector<wanted_curve>& columns,
                                const plot_wish& wish) {
    if (first.kind != "trns" || !wish.file.empty() || !wish.x.empty()) return nullptr;
    const result_table known = columns_of(r, first);
    std::vector<wanted_curve> missing;
    for (const wanted_curve& c : columns)
        if (!has_all(known, c)) missing.push_back(c);
    if (missing.empty() && !columns.empty()) return nullptr;
    const record_file* best = nullptr;
    int most = 0;
    for (const record_file* file : tables_of(r, wish)) {
        if (file->kind != "trns" || file->digital == first.digital) continue;
        if (table_of(r, *file).n_rows() < 2) continue;
        int n = n_columns_of(r, *file, missing);
        if (columns.empty()) n = go_together(table_of(r, first), table_of(r, *file)) ? 1 : 0;
        if (n > most || (n > 0 && n == most && is_finer(*file, *best))) best = file, most = n;
    }
    return best;
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

bool is_drawn(const plot_source& source, int column) {
    return std::find(source.columns.begin(), source.columns.end(), column) != source.columns.end();
}

// The names that the word has in the tables; itself where it is a name or an expression.
std::vector<std::string> names_of(const std::list<result_table>& tables, const std::string& word) {
    std::vector<std::string> names{word};
    for (const result_table& table : tables)
        if (const int j = find_column(table, word); j >= 0)
            names.push_back(table.columns[static_cast<std::size_t>(j)].name);
    return names;
}

// Columns that the choice tells by number get their names, which panels know them by.
void name_columns(plot_choice& choice, const std::list<result_table>& tables) {
    for (std::vector<std::string>& panel : choice.panels) {
        std::vector<std::string> names;
        for (const std::string& word : panel)
            for (std::string& name : names_of(tables, word)) names.push_back(std::move(name));
        panel = std::move(names);
    }
    for (plot_y_range& range : choice.y)
        if (const std::vector<std::string> names = names_of(tables, range.column); names.size() > 1)
            range.column = names[1];
}

// What is drawn of one table.
void add_sources(plotted_runs& out, result_table& table, const std::string& run,
                 const std::vector<wanted_curve>& columns, const plot_wish& wish) {
    if (is_locus(wish, columns, table)) {
        if (!out.sources.empty() && !out.choice.locus)
            throw usage_error("curves over frequency and in the complex plane do not go into one picture: " +
                              table.path);
        out.choice.locus = true;
        out.choice.panels.resize(1);
        for (plot_source& source : loci_of(columns, table)) {
            source.run = run;
            out.choice.panels[0].push_back(table.columns[static_cast<std::size_t>(source.columns[0])].name);
            out.sources.push_back(std::move(source));
        }
        return;
    }
    if (out.choice.locus)
        throw usage_error("curves over frequency and in the complex plane do not go into one picture: " + table.path);
    plot_source source;
    source.table = &table;
    source.run = run;
    source.x = wish.x.empty() ? x_column_of(table) : find_column(table, wish.x);
    if (columns.empty()) source.columns = drawn_columns(table, source.x);
    for (const wanted_curve& c : columns)
        for (const int j : places_of(c, table))
            if (!(c.once && is_drawn(source, j))) source.columns.push_back(j);
    if (!wish.x.empty() && source.x < 0) throw usage_error(table.path + " has no column " + wish.x);
    if (source.columns.empty())
        throw usage_error(columns.empty() ? table.path + " has no column besides that of the x axis"
                                          : table.path + " has none of the columns " + listed(words_of(columns)));
    if (is_over_frequency(table)) {
        if (source.x == 0 && !wish.linear_x) out.choice.log_x = true;
        if (!wish.linear_y && !wish.choice.log_y) take_decibels(table, source.columns);
        if (!wish.choice.stack) order_by_panels(table, source.columns);
    }
    out.sources.push_back(std::move(source));
}

}  // namespace

plotted_runs open_plotted(const std::vector<std::string>& words, const plot_wish& wish) {
    std::list<named_run> runs;
    std::vector<wanted_curve> columns;
    std::error_code error;
    for (const std::string& word : words) {
        if (runs.empty() && word == "-")
            throw usage_error(
                "- is standard input to tnl run, measure and assert; plot draws a run, a deck that was run "
                "or a row file");
        if (!runs.empty() && is_column(runs, wish, word))
            columns.push_back({word, {word}, {}});
        else if (runs.empty() || fs::exists(word, error) || fs::exists(word + ".run", error))
            runs.push_back({word, open_run(word), {}});
        else
            columns.push_back(curve_of(runs, wish, word));
    }
    plotted_runs out;
    out.choice = wish.choice;
    for (const std::vector<std::string>& panel : wish.panels) {
        out.choice.panels.emplace_back();
        for (const std::string& word : panel) {
            wanted_curve c = curve_of(runs, wish, word);
            c.once = true;
            if (std::none_of(columns.begin(), columns.end(), [&](const wanted_curve& o) { return o.word == word; }))
                columns.push_back(c);
            out.choice.panels.back().push_back(c.name());
        }
    }
    std::vector<wanted_curve> wanted = columns;
    if (!wish.x.empty()) wanted.push_back({wish.x, {wish.x}, {}});
    std::string title;
    for (named_run& r : runs) {
        std::vector<const record_file*> shown{&file_for(r, wanted, wish)};
        if (const record_file* other = companion_of(r, *shown[0], columns, wish))
            shown.insert(other->digital ? shown.end() : shown.begin(), other);  // lanes below curves
        std::vector<std::string> taken, others;
        for (const record_file* f : shown) taken.push_back(f->path);
        for (const record_file* f : tables_of(r, wish))
            if (std::find(shown.begin(), shown.end(), f) == shown.end()) others.push_back(f->path);
        if (!others.empty() && wish.file.empty())
            out.notes.push_back(r.word + ": shown is " + listed(taken) + "; --file takes also " + listed(others));
        if (const std::string end = how_it_ended(r.run); !end.empty()) out.notes.push_back(r.word + ": " + end);
        if (&r == &runs.front()) title = r.run.record.title;
        if (r.run.record.title != title) title.clear();
        const std::string run = runs.size() > 1 ? name_of(r, runs) : "";
        for (const record_file* file : shown) {
            result_table& loaded = table_of(r, *file);
            if (loaded.n_rows() == 0)
                throw file_error(fs::path(loaded.path).lexically_normal().string() + " has no rows");
            out.tables.push_back(std::move(loaded));
            add_sources(out, out.tables.back(), run, columns, wish);
        }
    }
    const auto x_of = [](const plot_source& s) {
        return s.x < 0 ? record_column{"row", ""} : s.table->columns[static_cast<std::size_t>(s.x)];
    };
    const record_column first = x_of(out.sources.front());
    for (const plot_source& s : out.sources) {
        const record_column x = x_of(s);
        if (!out.choice.locus && x.unit != first.unit && !x.unit.empty() && !first.unit.empty())
            throw usage_error("the x axes differ: " + first.name + ", " + first.unit + " in " +
                              out.sources.front().table->path + " and " + x.name + ", " + x.unit + " in " +
                              s.table->path);
        if ((s.table->kind == "fourier") != (out.sources.front().table->kind == "fourier"))
            throw usage_error("harmonics and curves do not go into one picture: " + out.sources.front().table->path +
                              ", " + s.table->path);
    }
    for (const wanted_curve& c : columns) {
        const auto has = [&](const plot_source& s) { return has_all(*s.table, c); };
        if (std::none_of(out.sources.begin(), out.sources.end(), has))
            throw usage_error("no row file has all of the columns " + listed(words_of(columns)) + "; " + c.word +
                              " is in another one");
    }
    if (out.choice.title.empty()) out.choice.title = title;
    name_columns(out.choice, out.tables);
    return out;
}

}  // namespace cli
