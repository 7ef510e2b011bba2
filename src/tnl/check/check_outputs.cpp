// Output blocks: file, options, columns, control.
#include <algorithm>
#include <filesystem>
#include <limits>

#include "settings/solve_words.h"
#include "tnl/check/check_deck.h"
#include "tnl/common/near_words.h"
#include "tnl/deck/file_names.h"

namespace cli {

namespace {

constexpr int default_limit = 100000;  // rows of a file

std::vector<std::string> as_strings(const std::vector<std::string_view>& list) { return {list.begin(), list.end()}; }

struct output_file {
    std::string path;
    deck_word at;
    double limit = default_limit;
    deck_word limit_at;
    bool append = false, fourier = false, has_n_fourier = false;
    double out_tstart = NAN, out_tend = NAN, fixed_interval = NAN;
};

class output_checks {
public:
    output_checks(checked_deck& d, const solve_section& s) : d_(d), s_(s) {}

    void run(std::map<std::string, deck_word>& files_of_block) {
        for (const statement_range& o : s_.outputs) {
            output_file file;
            bool is_table = true;
            read_filename(o, file);
            read_variables(o, is_table);
            read_control(o, file);
            if (file.path.empty()) continue;
            if (file.fourier && !file.has_n_fourier && is_time())
                d_.report.warning(
                    "few-harmonics", file.at,
                    "without n_fourier there are harmonics 0 and 1 alone, and the distortion is told as 0",
                    "control: n_fourier=20 for the harmonics 0 to 19");
            check_name(file, files_of_block);
            const double rows = rows_of(file);
            check_rows(file, is_table ? rows : 0);
        }
    }

private:
    bool is_time() const { return s_.type == "trns" || s_.type == "ssw"; }

    int first(const statement_range& o, std::string_view word) {
        int found = -1;
        for (int i = o.begin; i < o.end; ++i) {
            if (!d_.text().begins(i, word)) continue;
            if (found >= 0 && word != "control:")
                d_.report.warning("given-twice", {i, 0},
                                  std::string(word) + " stands twice in this output block; the first counts");
            else
                found = i;
        }
        return found;
    }

    void read_filename(const statement_range& o, output_file& file) {
        const file_chr& f = d_.text();
        const int i = first(o, "filename");
        if (i < 0 || f.n_words(i) < 2) {
            d_.report.error("no-filename", {i < 0 ? o.begin - 1 : i, 0}, "this output block names no file",
                            "filename out.dat");
            return;
        }
        file.path = d_.word(i, 1);
        file.at = {i, 1};
        const std::vector<std::string> options = as_strings(file_option_words());
        for (int j = 2; j < f.n_words(i); j += 2) {
            const std::string word = d_.word(i, j);
            if (!has(options, word)) {
                d_.report.warning("unknown-option", {i, j},
                                  "filename passes over the word " + word + near_text(options, word));
                continue;
            }
            if (j + 1 >= f.n_words(i)) {
                d_.report.error("no-value", {i, j}, "there is no value behind " + word);
                continue;
            }
            const std::string value = d_.word(i, j + 1);
            int n = 0;
            if (word == "limit_lines") {
                if (check_int(d_, {i, j + 1}, &n)) file.limit = n;
                file.limit_at = {i, j};
            } else if (word == "sweep_format") {
                if (value != "normal" && value != "reverse")
                    d_.report.error("bad-option", {i, j + 1}, "sweep_format is normal or reverse");
            } else {
                if (value != "yes" && value != "no")
                    d_.report.warning("not-yes-or-no", {i, j + 1},
                                      word + " is on for yes and off for all else: " + value);
                if (word == "append") file.append = value == "yes";
                if (word == "fourier") file.fourier = value == "yes";
                if (word == "fourier" && value == "yes" && !is_time())
                    d_.report.error("bad-option", {i, j}, "fourier=yes stands in trns blocks only");
                if (word == "nyquist" && value == "yes" && s_.type != "ac")
                    d_.report.error("bad-option", {i, j}, "nyquist=yes stands in ac blocks only");
            }
        }
    }

    // ---- columns
    std::vector<std::string> outvars() const {
        std::vector<std::string> names;
        const file_chr& f = d_.text();
        for (int i = d_.sections.circuit.begin; i < d_.sections.circuit.end; ++i)
            if (is_outvar(f, i))
                for (int j = 1; j + 1 < f.n_words(i); j += 2) names.push_back(d_.word(i, j));
        return names;
    }
    std::vector<std::string> swept() const {
        std::vector<std::string> items;
        for (int i = s_.range.begin; i < s_.range.end; ++i)
            if ((d_.text().begins(i, "vary_parm") || d_.text().begins(i, "vary_parm_sync")) && d_.text().n_words(i) > 1)
                items.push_back(d_.word(i, 1));
        return items;
    }

    void read_variables(const statement_range& o, bool& is_table) {
        const file_chr& f = d_.text();
        const int i = first(o, "variables:");
        if (i < 0 || f.n_words(i) < 2) {
            d_.report.error("no-variables", {i < 0 ? o.begin - 1 : i, 0}, "this output block has no variables",
                            "variables: NAME ... with names of outvar: statements");
            return;
        }
        const std::vector<std::string> reserved = as_strings(reserved_output_words()), names = outvars(),
                                       items = swept();
        std::vector<std::string> all = names;
        all.insert(all.end(), items.begin(), items.end());
        all.insert(all.end(), d_.globals.reals.begin(), d_.globals.reals.end());
        for (int j = 1; j < f.n_words(i); ++j) {
            const std::string word = d_.word(i, j);
            if (has(reserved, word)) {
                is_table = word == "all_nodes" || word == "all_outvars";
                if (f.n_words(i) > 2)
                    d_.report.error("bad-variables", {i, j}, word + " stands alone in its output block");
                if (reserved_seen_.count(word))
                    d_.report.error("bad-variables", {i, j}, "a solve block has one output block of " + word);
                reserved_seen_.insert(word);
                if (word == "solution" && !items.empty())
                    d_.report.error("bad-variables", {i, j}, "a block with a sweep has no one solution to write");
                continue;
            }
            if (!has(all, word)) unknown_variable({i, j}, word, all, names);
        }
    }
    void unknown_variable(deck_word at, const std::string& word, const std::vector<std::string>& all,
                          const std::vector<std::string>& names) {
        for (std::string_view prefix : {"mag_of_", "phase_of_"})
            if (word.starts_with(prefix) && has(names, word.substr(prefix.size()))) return;
        if (has_lost_outvars(d_)) return;  // told already
        std::string advice;
        const std::size_t of = word.find("_of_");
        if (of != std::string::npos)
            advice =
                d_.element_of.count(word.substr(of + 4)) || word.starts_with("nodev_of_") || word.starts_with("var_of_")
                    ? "name it in the circuit block first: outvar: " + word.substr(0, of) + "=" + word
                    : "";
        else if (all.size() <= 12) {
            for (const std::string& n : all) advice += (advice.empty() ? "known are: " : " ") + n;
            if (all.empty()) advice = "the deck has no outvar: statement";
        }
        d_.report.error("unknown-variable", at, "no outvar: is named " + word + near_text(all, word), advice);
    }

    // ---- control:
    void read_control(const statement_range& o, output_file& file) {
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
                if (word == "n_fourier") {
                    int n = 0;
                    file.has_n_fourier = true;
                    if (check_int(d_, {i, j + 1}, &n) && (n < 0 || n == std::numeric_limits<int>::max()))
                        d_.report.error("bad-option", {i, j + 1}, "n_fourier is from 0 to 2147483646");
                    continue;
                }
                double x = NAN;
                check_real(d_, {i, j + 1}, &x);
                const bool of_time = word == "fixed_interval" || word.starts_with("out_t");
                if (s_.is_known_type && of_time != is_time())
                    d_.report.warning("unknown-option", {i, j}, word + " means nothing in a " + s_.type + " block");
                if (word == "out_tstart") file.out_tstart = x;
                if (word == "out_tend") file.out_tend = x;
                if (word == "fixed_interval") {
                    file.fixed_interval = x;
                    if (x <= 0) d_.report.warning("bad-step", {i, j + 1}, "fixed_interval is not above zero");
                }
                if (word == "out_tstart" && x >= s_.t_end)
                    d_.report.warning("no-rows", {i, j + 1}, "rows would begin when the run is over");
                if (file.out_tstart >= file.out_tend)
                    d_.report.warning("no-rows", {i, j + 1}, "out_tend is not behind out_tstart: the file stays empty");
            }
        }
    }

    // ---- names and sizes
    static std::string normal(const std::string& path) {
        return std::filesystem::path(path).lexically_normal().string();
    }

    void check_name(const output_file& file, std::map<std::string, deck_word>& files_of_block) {
        const std::string name = normal(file.path);
        const auto [same, is_new] = files_of_block.emplace(name, file.at);
        const bool earlier = d_.written.count(name) > 0;
        if (!is_new) {
            const record_place place = place_in_files(d_.report.deck, same->second.statement);
            d_.report.error("same-file", file.at,
                            "the output block of line " + std::to_string(place.line) + " writes " + file.path + " too",
                            "give each output block a file of its own");
        } else if (earlier && !file.append) {
            d_.report.warning("same-file", file.at,
                              "an earlier solve block writes " + file.path + "; its rows are lost",
                              "another name, or append=yes");
        } else if (file.append && !earlier && !file_exists(d_, file.path)) {
            d_.report.error("missing-file", file.at, "append=yes, but there is no " + file.path + " to go on behind",
                            "the first block that writes the file has no append=yes");
        }
        if (const std::string why = fault_of_output_name(file.path, default_run_folder(d_.report.deck.path), false);
            !why.empty()) {
            d_.report.error("bad-output-place", file.at, why, "a name without a folder: filename out.dat");
            return;
        }
        const std::filesystem::path folder = std::filesystem::path(file.path).parent_path();
        std::error_code error;
        if (folder.is_absolute() && !std::filesystem::is_directory(folder, error))
            d_.report.error("missing-file", file.at, "the folder " + folder.string() + " does not exist");
    }

    // At least so many; NaN if that cannot be told.
    double rows_of(const output_file& file) const {
        if (s_.type == "dc" || s_.type == "startup") return s_.n_points;
        if (!is_time() || file.fourier) return NAN;
        // Rows of a fixed interval come a step late at most, steps of a rule that chooses them may be ten times as
        // long.
        const double from = std::isnan(file.out_tstart) ? s_.t_start : std::max(s_.t_start, file.out_tstart);
        const double to = std::isnan(file.out_tend) ? s_.t_end : std::min(s_.t_end, file.out_tend);
        return (to - from) /
               (std::isnan(file.fixed_interval) ? s_.longest_step : file.fixed_interval + s_.longest_step);
    }
    void check_rows(const output_file& file, double rows) {
        const auto earlier = d_.written.find(normal(file.path));
        const double before = file.append && earlier != d_.written.end() ? earlier->second : 0;
        if (rows + before > file.limit) {
            const std::string text = "the file gets more rows than limit_lines allows (" +
                                     std::to_string(static_cast<long long>(file.limit)) + "); the run would stop there";
            d_.report.error("too-many-rows", file.limit_at.statement < 0 ? file.at : file.limit_at, text,
                            is_time() ? "limit_lines=N behind the name, or control: fixed_interval=T for fewer rows"
                                      : "limit_lines=N behind the name");
        }
        d_.written[normal(file.path)] = rows + before;
    }

    checked_deck& d_;
    const solve_section& s_;
    std::set<std::string> reserved_seen_;
};

}  // namespace

void check_outputs(checked_deck& d, const solve_section& s) {
    std::map<std::string, deck_word> files_of_block;
    output_checks(d, s).run(files_of_block);
}

}  // namespace cli
