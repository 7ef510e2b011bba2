// Output blocks: names and sizes of files, and what is read in another way than it looks.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>

#include "base/halt.h"
#include "settings/postproc_plan.h"
#include "settings/solve_words.h"
#include "tnl/check/check_stops.h"
#include "tnl/common/halt.h"
#include "tnl/common/near_words.h"
#include "tnl/deck/file_names.h"

namespace cli {

namespace {

std::vector<std::string> as_strings(const std::vector<std::string_view>& list) { return {list.begin(), list.end()}; }

constexpr double half_turn = 180;  // degrees

class output_checks {
public:
    output_checks(checked_deck& d, const solve_section& s, const solve_class& slv) : d_(d), s_(s), slv_(slv) {}

    void run() {
        std::map<std::string, deck_word> files_of_block;
        for (const out_file& file : slv_.out.files) {
            const statement_range o{file.statement + 1, end_of(file.statement + 1)};
            const int i_name = first(o, "filename");
            first(o, "variables:");
            if (i_name >= 0) doubt_options(i_name);
            doubt_control(o, file);
            if (i_name < 0 || file.path.empty()) continue;
            const deck_word at{i_name, 1};
            if (file.fourier && is_time() && find_in_block(d_, file.statement, "n_fourier").statement < 0)
                d_.report.warning(
                    "few-harmonics", at,
                    "without n_fourier there are harmonics 0 and 1 alone, and the distortion is told as 0",
                    "control: n_fourier=20 for the harmonics 0 to 19");
            if (file.content == out_solution_ac && s_.is_known_type && s_.type != "ac")
                d_.report.warning("misplaced", find_in_block(d_, file.statement, "solution_ac"),
                                  "solution_ac holds what the last ac block has found, or zeros",
                                  "variables: solution");
            if (d_.is_built) check_one_kind(file);
            check_name(file, at, files_of_block);
            check_rows(file, at);
            if (d_.is_built && (file.postproc || file.postproc_ac)) check_measured_rows(file, {i_name, 0});
        }
    }

private:
    bool is_time() const { return s_.type == "trns" || s_.type == "ssw"; }

    int end_of(int begin) const {
        const int end = file_find_string_4(d_.text(), begin, s_.range.end, "end_output");
        return end < 0 ? s_.range.end : end;
    }
    int first(const statement_range& o, std::string_view word) {
        int found = -1;
        for (int i = o.begin; i < o.end; ++i) {
            if (!d_.text().begins(i, word)) continue;
            if (found >= 0)
                d_.report.warning("given-twice", {i, 0},
                                  std::string(word) + " stands twice in this output block; the first counts");
            else
                found = i;
        }
        return found;
    }

    void doubt_options(int i) {
        const file_chr& f = d_.text();
        const std::vector<std::string> options = as_strings(file_option_words());
        for (int j = 2; j < f.n_words(i); j += 2) {
            const std::string word = d_.word(i, j);
            if (!has(options, word)) {
                d_.report.warning("unknown-option", {i, j},
                                  "filename passes over the word " + word + near_text(options, word));
            } else if (j + 1 < f.n_words(i) && word != "limit_lines" && word != "sweep_format") {
                const std::string value = d_.word(i, j + 1);
                if (value != "yes" && value != "no")
                    d_.report.warning("not-yes-or-no", {i, j + 1},
                                      word + " is on for yes and off for all else: " + value);
            }
        }
    }

    void doubt_control(const statement_range& o, const out_file& file) {
        const file_chr& f = d_.text();
        const std::vector<std::string> known = as_strings(control_words());
        for (int i = o.begin; i < o.end; ++i) {
            if (!f.begins(i, "control:")) continue;
            for (int j = 1; j < f.n_words(i); j += 2) {
                const std::string word = d_.word(i, j);
                if (!has(known, word)) {
                    d_.report.warning("unknown-option", {i, j},
                                      "control: passes over the word " + word + near_text(known, word));
                    continue;
                }
                if (j + 1 >= f.n_words(i)) {
                    d_.report.warning("no-value", {i, j}, word + " has no value and is passed over");
                    continue;
                }
                const bool of_time = word == "fixed_interval" || word.starts_with("out_t"),
                           of_phase = word.ends_with("_phase");
                const bool is_read = of_time ? is_time() : of_phase ? s_.type == "ac" : true;
                if (s_.is_known_type && !is_read) {
                    d_.report.warning("unknown-option", {i, j}, word + " means nothing in " + block_named(s_.type));
                    continue;
                }
                if (of_phase && file.nyquist)
                    d_.report.warning("unknown-option", {i, j},
                                      word + " means nothing in a nyquist file, which has no phase");
                else if (word == "delta_phase" && !file.flag_min_phase && !file.flag_max_phase &&
                         file.delta_phase < half_turn)
                    d_.report.warning(
                        "bad-option", {i, j},
                        "with delta_phase below 180 a phase that falls by more between two rows climbs by a "
                        "turn instead",
                        "leave it out for 200 degrees, or more points of frequency");
                if (word == "fixed_interval" && file.flag_fixed_interval && file.fixed_interval <= 0)
                    d_.report.warning("bad-step", {i, j + 1}, "fixed_interval is not above zero");
                if (word == "out_tstart" && file.out_tstart >= s_.t_end)
                    d_.report.warning("no-rows", {i, j + 1}, "rows would begin when the run is over");
                if (word == "out_tend" && file.out_tstart >= file.out_tend)
                    d_.report.warning("no-rows", {i, j + 1}, "out_tend is not behind out_tstart: the file stays empty");
            }
        }
    }

    // ---- names and sizes
    static std::string normal(const std::string& path) {
        return std::filesystem::path(path).lexically_normal().string();
    }

    void check_name(const out_file& file, deck_word at, std::map<std::string, deck_word>& files_of_block) {
        const std::string name = normal(file.path);
        const auto [same, is_new] = files_of_block.emplace(name, at);
        const bool earlier = d_.written.count(name) > 0;
        if (!is_new) {
            const record_place place = place_in_files(d_.report.deck, same->second.statement);
            d_.report.error("same-file", at,
                            "the output block of line " + std::to_string(place.line) + " writes " + file.path + " too",
                            "give each output block a file of its own");
        } else if (earlier && !file.append) {
            d_.report.warning("same-file", at, "an earlier solve block writes " + file.path + "; its rows are lost",
                              "another name, or append=yes");
        } else if (file.append && !earlier && !file_exists(d_, file.path)) {
            d_.report.error("missing-file", at, "append=yes, but there is no " + file.path + " to go on behind",
                            "the first block that writes the file has no append=yes");
        }
        if (const std::string why = fault_of_output_name(file.path, d_.place.folder, d_.place.force); !why.empty()) {
            d_.report.error("bad-output-place", at, why, "a name without a folder: filename out.dat");
            return;
        }
        const std::filesystem::path folder = std::filesystem::path(file.path).parent_path();
        std::error_code error;
        if (folder.is_absolute() && !std::filesystem::is_directory(folder, error))
            d_.report.error("missing-file", at, "the folder " + folder.string() + " does not exist");
    }

    // Outputs of the circuit that name nothing: they have no kind.
    std::set<std::string> lost_outputs() const {
        std::set<std::string> names;
        for (const check_fault& f : d_.report.faults)
            if (f.code == std::string_view("unknown-output") && f.at.word > 0)
                names.insert(d_.word(f.at.statement, f.at.word - 1));
        return names;
    }

    // The first variable decides whether a file holds numbers, or levels and states.
    void check_one_kind(const out_file& file) {
        if (file.content != out_rows || file.vars.empty()) return;
        const auto is_level = [](const out_var& v) { return v.prefix == prefix_none && is_digital(v.kind); };
        const auto what = [&](const out_var& v) { return v.name + (is_level(v) ? " is a digital level" : " is not"); };
        const std::set<std::string> lost = lost_outputs();
        const auto has_kind = [&](const out_var& v) { return lost.count(v.name) == 0; };
        const auto known = std::find_if(file.vars.begin(), file.vars.end(), has_kind);
        if (known == file.vars.end()) return;
        const out_var& first = *known;
        for (const out_var& v : file.vars) {
            if (!has_kind(v) || is_level(v) == is_level(first)) continue;
            d_.report.error("mixed-file", find_in_block(d_, file.statement, v.name),
                            "a file holds digital levels or other values, not both: " + what(first) + ", " + what(v),
                            "an output block of its own for each kind; tnl plot draws both over one time");
            return;
        }
    }

    // At least so many; NaN if that cannot be told.
    double rows_of(const out_file& file) const {
        if (file.data_type == out_digital && is_time()) return NAN;  // two for each event
        if (s_.type == "dc" || s_.type == "startup") return s_.n_points;
        if (s_.type == "ac") return s_.n_points * slv_.task.n_freq;
        if (!is_time() || file.fourier) return NAN;
        // Rows of a fixed interval come a step late at most, steps of a rule that chooses them may be ten times as
        // long.
        const double from = std::max({s_.t_start, s_.t_long, file.out_tstart}), to = std::min(s_.t_end, file.out_tend);
        return (to - from) / (file.flag_fixed_interval ? file.fixed_interval + s_.longest_step : s_.longest_step);
    }
    void check_rows(const out_file& file, deck_word at) {
        const auto earlier = d_.written.find(normal(file.path));
        const double before = file.append && earlier != d_.written.end() ? earlier->second : 0,
                     rows = file.content == out_rows && !file.postproc && !file.postproc_ac ? rows_of(file) : 0;
        if (rows + before > file.limit_lines) {
            for (int j = 2; j < d_.text().n_words(at.statement); j += 2)
                if (d_.text().word(at.statement, j) == "limit_lines") at.word = j;
            const std::string text = "the file gets more rows than limit_lines allows (" +
                                     std::to_string(file.limit_lines) + "); the run would stop there";
            d_.report.error("too-many-rows", at, text,
                            is_time() ? "limit_lines=N behind the name, or control: fixed_interval=T for fewer rows"
                                      : "limit_lines=N behind the name");
        }
        d_.written[normal(file.path)] = rows + before;
    }

    // ---- files of results: whether the rows of the measured files will do
    void check_measured_rows(const out_file& file, deck_word at) {
        const std::optional<postproc_plan> plan = plan_of(file);
        if (!plan) return;  // told already
        if (const deck_word end = find_in_block(d_, file.statement, "out_tend"); end.statement >= 0) at = end;
        if (const deck_word begin = find_in_block(d_, file.statement, "out_tstart"); begin.statement >= 0) at = begin;
        if (file.postproc && file.out_tstart > file.out_tend) {
            d_.report.error("bad-span", at,
                            "the result has no rows to be computed from: out_tend is before out_tstart");
            return;
        }
        // A run from nothing begins with a row of first guesses.
        if (s_.type == "trns" && !slv_.task.init_previous && !slv_.task.init_file && file.out_tstart <= s_.t_start)
            d_.report.warning("guessed-row", at,
                              "the span of the result begins with the elements' first guesses, which are no solution",
                              "out_tstart behind t_start, or initial_sol previous behind a startup block");
        for (const auto& [instance, columns] : plan->columns)
            for (const file_column& column : columns) {
                const out_file& measured = slv_.out.files[static_cast<std::size_t>(column.i_file)];
                const bool fits = file.postproc ? covers(measured, file, at) : has_one_row(measured, at);
                if (!fits) return;
                const out_file& first = slv_.out.files[static_cast<std::size_t>(columns[0].i_file)];
                if (file.postproc && (measured.flag_fixed_interval != first.flag_fixed_interval ||
                                      measured.fixed_interval != first.fixed_interval))
                    d_.report.warning("not-measured", at,
                                      "the variables of a result come from " + first.path + " and " + measured.path +
                                          ", which have rows at different times",
                                      "both variables in one file");
            }
    }
    std::optional<postproc_plan> plan_of(const out_file& file) const {
        try {
            return plan_postproc(slv_, d_.c, static_cast<int>(&file - slv_.out.files.data()));
        } catch (const stop&) {
            return {};
        }
    }
    // Rows of a file that goes on behind others may have come before this block.
    bool covers(const out_file& measured, const out_file& file, deck_word at) {
        const double step = measured.flag_fixed_interval ? measured.fixed_interval + s_.longest_step : s_.longest_step;
        const double from = std::max(measured.out_tstart, s_.t_start), to = std::min(measured.out_tend, s_.t_end);
        if (measured.append || (from - file.out_tstart <= 1.01 * step && file.out_tend - to <= 1.01 * step))
            return true;
        if (std::isnan(from) || std::isnan(to) || std::isnan(step)) return true;
        d_.report.error("bad-span", at,
                        line("the result spans ", file.out_tstart, " s to ", file.out_tend, " s, and the rows of ",
                             measured.path, " reach from ", from, " s to ", to, " s"),
                        "out_tstart and out_tend within the rows of the measured file");
        return false;
    }
    bool has_one_row(const out_file& measured, deck_word at) {
        if (!(s_.n_points > 1)) return true;
        d_.report.error("bad-span", at,
                        "the sweep gives " + measured.path + " more than the one row that a result needs",
                        "a block without vary_parm");
        return false;
    }

    checked_deck& d_;
    const solve_section& s_;
    const solve_class& slv_;
};

// Names of the deck's output variables, those too whose statement is at fault.
std::vector<std::string> outvars(const checked_deck& d) {
    std::vector<std::string> names;
    const file_chr& f = d.text();
    for (int i = d.sections.circuit.begin; i < d.sections.circuit.end; ++i)
        if (is_outvar(f, i))
            for (int j = 1; j + 1 < f.n_words(i); j += 2) names.push_back(d.word(i, j));
    return names;
}

}  // namespace

void check_unknown_variable(checked_deck& d, const solve_section& s, deck_word at) {
    const std::string word = d.word(at.statement, at.word);
    const std::vector<std::string> names = outvars(d);
    std::vector<std::string> all = names;
    for (int i = s.range.begin; i < s.range.end; ++i)
        if ((d.text().begins(i, "vary_parm") || d.text().begins(i, "vary_parm_sync")) && d.text().n_words(i) > 1)
            all.push_back(d.word(i, 1));
    all.insert(all.end(), d.globals.reals.begin(), d.globals.reals.end());
    if (has(all, word) || has_lost_outvars(d)) return;  // told already
    for (std::string_view prefix : {"mag_of_", "phase_of_"})
        if (word.starts_with(prefix) && has(names, word.substr(prefix.size()))) return;
    std::string advice;
    const std::size_t of = word.find("_of_");
    if (of != std::string::npos)
        advice = d.element_of.count(word.substr(of + 4)) || word.starts_with("nodev_of_") || word.starts_with("var_of_")
                     ? "name it in the circuit block first: outvar: " + word.substr(0, of) + "=" + word
                     : "";
    else if (all.size() <= 12) {
        for (const std::string& n : all) advice += (advice.empty() ? "known are: " : " ") + n;
        if (all.empty()) advice = "the deck has no outvar: statement";
    }
    d.report.error("unknown-variable", at, "no outvar: is named " + word + near_text(all, word), advice);
}

void check_outputs(checked_deck& d, const solve_section& s, const solve_class& slv) { output_checks(d, s, slv).run(); }

}  // namespace cli
