// Solve blocks: what the simulator's reader refuses, and what it takes without a word although it is seldom meant.
#include <algorithm>
#include <cmath>

#include "settings/method_words.h"
#include "settings/read_directives.h"
#include "settings/solve_class.h"
#include "settings/solve_words.h"
#include "tnl/check/advice.h"
#include "tnl/check/check_diagram.h"
#include "tnl/check/check_solves.h"
#include "tnl/check/check_stops.h"
#include "tnl/check/check_values.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

// Rules for circuits of explicit elements, which no library has.
constexpr std::string_view explicit_rules[] = {"forward_euler", "RK4", "RKF45", "BS23", "modified_euler", "Heun"};

std::vector<std::string> as_strings(const std::vector<std::string_view>& list) { return {list.begin(), list.end()}; }

class block_checks {
public:
    block_checks(checked_deck& d, solve_section& s, int index, solve_class& slv, bool after_solution)
        : d_(d), s_(s), index_(index), slv_(slv), after_solution_(after_solution) {}

    void run() {
        check_type();
        std::vector<kept_stop> stops = read_solve_of(d_, index_, slv_, flags_);
        if (has_refused_frequencies(stops))
            std::erase_if(stops,
                          [](const kept_stop& stop) { return fits(stop.text, "check frequency definition cards"); });
        tell_stops(d_, stops, &s_);
        for (int i = s_.range.begin; i < s_.range.end; ++i) {
            if (s_.in_output[static_cast<std::size_t>(i - s_.range.begin)] || d_.text().n_words(i) == 0) continue;
            const std::string word = d_.word(i, 0);
            if (word == "method:") doubt_method(i);
            if (word == "initial_sol") check_initial_sol(i);
            if (word == "vary_parm" || word == "vary_parm_sync") doubt_sweep(i);
            if (s_.type == "ac" && (word == "set_freq" || word == "vary_freq")) doubt_frequencies(i);
            if (word.starts_with("set_") && word.ends_with("parm")) doubt_items(i);
            if (word == "set_dgtl") doubt_levels(i);
            if ((word == "set_freq" || word == "vary_freq") && s_.is_known_type && s_.type != "ac")
                d_.report.warning("misplaced", {i, 0}, word + " means nothing in " + block_named(s_.type));
        }
        if (s_.type == "trns") check_time();
        if (s_.type == "ssw") check_period();
        if (s_.type == "trns" || s_.type == "dc") check_gmin();
        if (s_.type == "dc") check_dc();
        s_.n_points = slv_.task.flag_vary_auto ? NAN : double(slv_.task.n_sweep) * slv_.task.n_sync;
    }

private:
    // Whether a statement of frequencies is there, and at fault: then none is missing.
    bool has_refused_frequencies(const std::vector<kept_stop>& stops) const {
        return std::any_of(stops.begin(), stops.end(), [&](const kept_stop& stop) {
            return stop.statement >= s_.range.begin &&
                   (d_.text().begins(stop.statement, "set_freq") || d_.text().begins(stop.statement, "vary_freq"));
        });
    }

    // Where a word of method: is missing.
    deck_word block_place() const {
        for (int i = s_.range.begin; i < s_.range.end; ++i)
            if (d_.text().begins(i, "method:")) return {i, 0};
        return {s_.type_line >= 0 ? s_.type_line : s_.begin_line, 0};
    }

    void check_type() {
        const std::vector<std::string> types = as_strings(solve_type_words());
        if (s_.type_line < 0) {
            d_.report.error("no-solve-type", {s_.begin_line, 0}, "this solve block has no solve_type",
                            "add a line: solve_type dc, startup, trns, ssw or ac");
            return;
        }
        s_.is_known_type = has(types, s_.type);
        if (s_.type.empty())
            d_.report.error("no-solve-type", {s_.type_line, 0},
                            "solve_type needs a word: dc, startup, trns, ssw or ac");
        else if (!s_.is_known_type)
            d_.report.error("unknown-solve-type", {s_.type_line, 1},
                            "there is no solve_type " + s_.type + "; the block would solve nothing, without a word" +
                                near_text(types, s_.type),
                            "known are dc, startup, trns, ssw, ac");
    }

    // ---- method:
    // What is read in another way than it looks.
    void doubt_method(int i) {
        const file_chr& f = d_.text();
        if (f.n_words(i) == 1) d_.report.warning("no-value", {i, 0}, "this statement names nothing");
        for (int j = 1; j < f.n_words(i); j += 2) {
            const std::string word = d_.word(i, j);
            const std::span<const method_word> all = method_words();
            const auto m = std::find_if(all.begin(), all.end(), [&](const method_word& k) { return k.word == word; });
            if (j + 1 >= f.n_words(i)) {
                if (m != all.end())
                    d_.report.error("no-value", {i, j}, word + " has no value and is passed over", word + "=...");
                else
                    d_.report.warning("stray-word", {i, j}, "the word " + word + " is passed over");
            } else if (m != all.end()) {
                const std::string value = d_.word(i, j + 1);
                if (type_name(*m) == std::string_view("flag") && value != "yes" && value != "no")
                    d_.report.warning("not-yes-or-no", {i, j + 1},
                                      (word + " is on for yes and off for all else: ").append(value), word + "=yes");
                if (!given_.insert_or_assign(word, deck_word{i, j}).second)
                    d_.report.warning("given-twice", {i, j}, word + " is given twice; the last one counts");
            }
        }
    }

    // The word as it counts, or nullptr.
    const deck_word* given(std::string_view word) const {
        const auto at = given_.find(word);
        return at == given_.end() ? nullptr : &at->second;
    }
    deck_word place_of(std::string_view word) const {
        return given(word) != nullptr ? given_.find(word)->second : block_place();
    }
    bool on(std::string_view word) const {
        const deck_word* at = given(word);
        return at != nullptr && d_.text().word(at->statement, at->word + 1) == "yes";
    }
    // Its value as the reader understood it; NaN: it did not.
    double value(std::string_view word, double read) const { return was_given(slv_, word) ? read : NAN; }
    void need(const char* word, const char* why, const char* advice) {
        if (given(word) == nullptr) d_.report.error("missing-method-word", block_place(), why, advice);
    }

    // ---- runs in time
    void check_time() {
        need("t_end", "a trns block needs the time at which it ends", "method: t_end=5m");
        const bool is_diagram = is_explicit_alone(d_);
        if (!is_digital_alone(d_) && !is_diagram)
            need("delt_const", "a trns block needs its time step", "method: delt_const=1u");
        const method_settings& m = slv_.method;
        const double start = flags_.t_start, end = value("t_end", flags_.t_end),
                     step = value("delt_const", m.delt_const), least = value("delt_min", m.delt_min),
                     most = value("delt_max", m.delt_max);
        for (const auto& [word, x] : {std::pair{"delt_const", step}, {"delt_min", least}, {"delt_max", most}})
            if (x <= 0)
                d_.report.error("bad-step", place_of(word),
                                std::string(word) + " must be above zero, not " +
                                    d_.word(place_of(word).statement, place_of(word).word + 1));
        one_rule();
        heeds_events();
        sees_crossings();
        s_.t_start = start;
        s_.t_end = end;
        check_clocks(d_, s_, slv_, place_of("t_end"));
        if (end <= start)
            d_.report.error("bad-step", place_of("t_end"), "t_end is not behind t_start: the run has no length");
        else if (step > end - start)
            d_.report.warning("bad-step", place_of("delt_const"), "the step is longer than the whole run");
        if (has_explicit(d_)) check_explicit_steps(d_, s_, slv_, block_place());
        if (is_diagram) return count_steps(s_.longest_step);
        if (step < least) d_.report.error("bad-step", place_of("delt_const"), "delt_const is less than delt_min");
        if (step > most) d_.report.warning("bad-step", place_of("delt_const"), "delt_const is more than delt_max");
        if (on("gear2_fixed"))
            for (const deck_element& e : d_.elements)
                if (e.type != nullptr && e.type->limits_step) {
                    d_.report.error(
                        "bad-setting", place_of("gear2_fixed"),
                        "gear2_fixed has steps of one length, and " + e.name + " (" + e.type->name + ") changes them",
                        "gear2, trapezoidal or back_euler");
                    break;
                }
        // Rules that choose their steps may take ten times the first one.
        const bool chooses = on("back_euler_auto") || on("trapezoidal_auto") || on("trbdf2");
        double longest = chooses ? (std::isnan(most) ? 10 * step : most) : step;
        if (shrinks(step, most)) {
            const double least_step = std::isnan(least) ? m.delt_min : least;
            s_.t_long = start + step / (1 - std::max(0.0, m.fctr_stepinc)) + least_step;
            longest = least_step;
            d_.report.warning("bad-setting", place_of("fctr_stepinc"),
                              "each step that converges makes the next one shorter, down to delt_min",
                              "fctr_stepinc is above 1");
        }
        s_.longest_step = longest;
        count_steps(longest);
    }
    void check_period() {
        one_rule();
        const method_settings& m = slv_.method;
        const double steps = m.ssw_period / m.delt_const;
        if (!(steps > m.itmax_trns * 1.0001) || std::isinf(steps)) return;
        d_.report.warning(
            "too-many-steps", place_of(given("delt_const") ? "delt_const" : "ssw_ndiv"),
            "a period needs " + rounded(steps) + " steps and is cut off after itmax_trns=" + rounded(m.itmax_trns),
            "method: itmax_trns=" + rounded(std::ceil(steps * 2)));
    }
    void count_steps(double longest) {
        const double steps = (s_.t_end - std::max(s_.t_start, s_.t_long)) / longest;
        if (const method_settings& m = slv_.method; steps > m.itmax_trns * 1.0001 && longest > 0)
            d_.report.warning("too-many-steps", place_of("t_end"),
                              "the run needs about " + rounded(steps) +
                                  " steps and is cut off after itmax_trns=" + rounded(m.itmax_trns),
                              "method: itmax_trns=" + rounded(std::ceil(steps * 2)));
    }
    bool iterates() const { return d_.is_built && !d_.c.cct.flag_linear; }

    // Whether the steps fall towards delt_min: these rules take fctr_stepinc of a step behind each but the longest.
    // Behind an event there may be longer ones.
    bool shrinks(double step, double most) const {
        return iterates() && !on("event_restart") && (on("back_euler_auto") || on("trapezoidal_auto")) &&
               slv_.method.fctr_stepinc < 1 && (std::isnan(most) || step < most);
    }

    // Conductances in equal ratios. A run in time that starts from nothing takes them, other solves where they fail.
    void check_gmin() {
        const method_settings& m = slv_.method;
        if (!iterates() || !m.gmin_step) return;
        const bool surely = s_.type == "trns" && m.gmin_init && !slv_.task.init_previous && !slv_.task.init_file;
        for (const auto& [word, x] : {std::pair{"gmin_start", m.gmin_start}, {"gmin_end", m.gmin_end}}) {
            if (!(x <= 0) || given(word) == nullptr) continue;
            const std::string text = std::string(word) + " must be above zero";
            if (surely)
                d_.report.error("bad-setting", place_of(word), text + ": the run would stop");
            else
                d_.report.warning("bad-setting", place_of(word),
                                  text + ": a solve that needs gmin stepping would stop");
        }
    }

    static std::string rounded(double x) {
        char text[32];
        std::snprintf(text, sizeof text, x < 1e9 ? "%.0f" : "%.2e", x);
        return text;
    }
    void one_rule() {
        std::vector<deck_word> rules;
        for (std::string_view rule : time_rule_words())
            if (on(rule)) rules.push_back(place_of(rule));
        std::sort(rules.begin(), rules.end(), [](const deck_word& a, const deck_word& b) {
            return std::pair(a.statement, a.word) < std::pair(b.statement, b.word);
        });
        for (std::size_t r = 1; r < rules.size(); ++r)
            d_.report.error("two-rules", rules[r],
                            "two rules for the time steps: " + d_.word(rules[0].statement, rules[0].word) + " and " +
                                d_.word(rules[r].statement, rules[r].word),
                            "a block has one rule");
        for (std::string_view rule : explicit_rules)
            if (on(rule) && !has_explicit(d_))
                d_.report.warning("unused-rule", place_of(rule),
                                  std::string(rule) + " is for explicit elements alone and does nothing here");
    }

    // A rule of second order goes on from currents and rates that a jump has made untrue.
    void heeds_events() {
        if (given("event_restart") != nullptr) return;
        for (const char* rule : {"trapezoidal", "trapezoidal_auto", "gear2", "gear2_fixed", "trbdf2"}) {
            if (!on(rule)) continue;
            for (const deck_element& e : d_.elements) {
                if (e.type == nullptr || !e.type->jumps) continue;
                d_.report.warning("event-restart", place_of(rule),
                                  std::string(rule) + " loses its accuracy wherever " + e.name + " (" + e.type->name +
                                      ") acts, as it goes on from the currents before",
                                  "method: event_restart=yes");
                return;
            }
        }
    }

    // A break stands dt_guard before a crossing that is foreseen, the next one twice as far behind it. Steps have
    // delt_min at least: a nearer break is none.
    void sees_crossings() {
        const method_settings& m = slv_.method;
        if (m.constant_step || !(m.delt_const > m.delt_min)) return;
        for (const deck_element& e : d_.elements) {
            if (e.type == nullptr || e.library == lib_xels) continue;
            const double guard = value_of_parameter(d_, e, "dt_guard");
            if (!(2 * guard < m.delt_min * (1 - 1e-9))) continue;
            int at = 0;
            d_.value(e, "dt_guard", &at);
            d_.report.warning("late-crossing", {e.statement, at},
                              e.name + " (" + e.type->name + ") acts up to " + seconds(m.delt_const) +
                                  " late: its dt_guard of " + seconds(guard) + " is below half of delt_min, " +
                                  seconds(m.delt_min) + ", so the step behind a crossing is a whole one",
                              "dt_guard=" + figure(m.delt_min) + " there, or method: delt_min=" + figure(guard));
            return;
        }
    }

    void check_dc() {
        for (const deck_element& e : d_.elements)
            if (e.type != nullptr && e.type->refuses_dc && e.library != lib_dels)  // no digital one can stand there
                d_.report.error("no-dc", {s_.type_line, 1},
                                "a dc block cannot stand with " + e.name + " (" + e.type->name + ")",
                                "find the state to start from with solve_type startup");
    }

    // ---- where the iteration starts
    void check_initial_sol(int i) {
        if (d_.text().n_words(i) < 2) return;
        const std::string how = d_.word(i, 1);
        if (s_.type == "ac") {
            if (how == "previous" ? !after_solution_ : how == "initialize" || how == "file")
                d_.report.warning(
                    "misplaced", {i, 1},
                    "initial_sol has no effect in an ac block, whose bias is what the block before it left",
                    "leave the statement out; a block with solve_type dc before it finds a bias");
            return;
        }
        if (how == "previous" && !after_solution_)
            d_.report.error("no-previous", {i, 1}, "no block before this one has a solution to start from",
                            "leave the statement out, or put a dc or startup block before it");
        if (how != "file" || d_.text().n_words(i) < 4) return;
        const std::string name = d_.word(i, 3);
        if (!d_.globals.texts.count(name) && !file_exists(d_, name) && !d_.written.count(name))
            d_.report.error("missing-file", {i, 3}, "the file " + name + " does not exist",
                            "paths are relative to the deck");
    }

    // ---- what is set and swept
    void doubt_items(int i) {
        const file_chr& f = d_.text();
        if (f.n_words(i) == 1) d_.report.warning("no-value", {i, 0}, "this statement sets nothing");
        if (f.n_words(i) % 2 == 0)
            d_.report.error("no-value", {i, f.n_words(i) - 1},
                            d_.word(i, f.n_words(i) - 1) + " has no value and is passed over");
        for (int j = 1; j + 1 < f.n_words(i); j += 2) check_item_value(d_, {i, j}, {i, j + 1});
    }
    // First levels count where a block starts from nothing.
    void doubt_levels(int i) {
        const file_chr& f = d_.text();
        if (f.n_words(i) == 1) d_.report.warning("no-value", {i, 0}, "this statement sets nothing");
        if (f.n_words(i) % 2 == 0)
            d_.report.error("no-value", {i, f.n_words(i) - 1},
                            d_.word(i, f.n_words(i) - 1) + " has no value and is passed over", "set_dgtl NODE 0");
        if (!s_.is_known_type) return;
        if (s_.type != "trns" && s_.type != "startup")
            d_.report.warning("misplaced", {i, 0}, "set_dgtl means nothing in " + block_named(s_.type));
        else if (slv_.task.init_previous || slv_.task.init_file)
            d_.report.warning("misplaced", {i, 0},
                              "set_dgtl has no effect where initial_sol takes the levels from another solution");
    }
    void doubt_sweep(int i) {
        const file_chr& f = d_.text();
        const bool is_table = f.n_words(i) > 3 && f.word(i, 2) == "type" && f.word(i, 3) == "table";
        for (int j = 2; j < f.n_words(i); ++j)
            if (is_table ? j > 3 : j % 2 == 1 && (f.word(i, j - 1) == "from" || f.word(i, j - 1) == "to"))
                check_item_value(d_, {i, 1}, {i, j});
        for (const std::vector<vary_statement>* list : {&slv_.task.vary, &slv_.task.vary_sync})
            for (const vary_statement& v : *list) {
                if (f.n_words(i) < 2 || v.item.word != f.word(i, 1) || v.range.type > sweep_range::log) continue;
                const deck_word at = {i, std::max(0, find_word(f, i, "from") + 1)};
                if (v.range.type == sweep_range::log && (v.range.from <= 0 || v.range.to <= 0))
                    d_.report.error("bad-sweep", at, "a sweep of type log runs between numbers above zero");
                if (v.range.from == v.range.to)
                    d_.report.warning("bad-sweep", {i, std::max(0, find_word(f, i, "to") + 1)},
                                      "the sweep ends where it begins");
            }
    }
    void doubt_frequencies(int i) {
        const file_chr& f = d_.text();
        const sweep_range& r = slv_.task.ac_range;
        if (f.begins(i, "set_freq")) {
            if (slv_.task.ac_single && slv_.task.ac_freq <= 0)
                d_.report.warning("bad-sweep", {i, 1}, "a frequency is above zero");
            return;
        }
        if (!slv_.task.ac_sweep || r.n == 0) return;
        const int from = file_find_string_1(f, i, "from", odd_words), to = file_find_string_1(f, i, "to", odd_words);
        if (r.type == sweep_range::log && (r.from <= 0 || r.to <= 0))
            d_.report.error("bad-sweep", {i, std::max(0, (r.from <= 0 ? from : to) + 1)},
                            "a sweep of type log runs between numbers above zero");
        else if (r.type != sweep_range::table && (r.from < 0 || r.to <= 0))  // 0 is a usual begin of linear ones
            d_.report.warning("bad-sweep", {i, std::max(0, (r.from < 0 ? from : to) + 1)}, "a frequency is above zero");
        if (r.type != sweep_range::table && r.from == r.to)
            d_.report.warning("bad-sweep", {i, std::max(0, to + 1)}, "the sweep ends where it begins");
        for (std::size_t k = 0; r.type == sweep_range::table && k < r.values.size(); ++k)
            if (r.values[k] <= 0)
                d_.report.warning("bad-sweep", {i, static_cast<int>(k) + 3}, "a frequency is above zero");
    }
    static int find_word(const file_chr& f, int i, std::string_view word) {
        return file_find_string_1(f, i, word, even_words);
    }

    checked_deck& d_;
    solve_section& s_;
    int index_;
    solve_class& slv_;
    flags_class flags_;
    bool after_solution_;
    std::map<std::string, deck_word, std::less<>> given_;  // words of method: with a value, the last of equal ones
};

}  // namespace

void check_solves(checked_deck& d) {
    bool has_solution = false;
    std::set<std::string> written;  // items that blocks have set or swept
    if (d.sections.solves.empty() && d.sections.begin_circuit >= 0)
        d.report.warning("no-solve", {d.sections.begin_circuit, 0}, "the deck has no solve block: nothing is computed");
    for (std::size_t i = 0; i < d.sections.solves.size(); ++i) {
        solve_section& s = d.sections.solves[i];
        solve_class slv;
        block_checks(d, s, static_cast<int>(i), slv, has_solution).run();
        check_outputs(d, s, slv);
        check_columns(d, s, slv);
        for (const parm_item& item : slv.task.set_parm) written.insert(item.word);
        for (const std::vector<vary_statement>* list : {&slv.task.vary, &slv.task.vary_sync})
            for (const vary_statement& v : *list) written.insert(v.item.word);
        if (s.type == "ac") check_small_signals(d, s, slv, written, has_solution);
        if (s.type != "ac") has_solution = true;  // a type that is not known has its own fault
    }
}

}  // namespace cli
