// Solve blocks: type, method words, where the iteration starts, what is set and swept.
#include <algorithm>
#include <cmath>

#include "base/words.h"
#include "settings/method_words.h"
#include "settings/read_directives.h"
#include "settings/solve_words.h"
#include "tnl/check/check_deck.h"
#include "tnl/check/check_values.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

using list_member = std::vector<std::string> element_type::*;

struct block_type {
    std::string_view word;
    unsigned bit;
};
constexpr block_type block_types[] = {
    {"dc", b_dc}, {"ac", b_ac}, {"trns", b_trns}, {"startup", b_startup}, {"ssw", b_ssw}};

constexpr double most_points = 2147483647;  // of a sweep: they are numbered

// Rules for circuits of explicit elements, which no library has.
constexpr std::string_view explicit_rules[] = {"forward_euler", "RK4", "RKF45", "BS23", "modified_euler", "Heun"};

std::vector<std::string> as_strings(const std::vector<std::string_view>& list) { return {list.begin(), list.end()}; }

class block_checks {
public:
    block_checks(checked_deck& d, solve_section& s, bool after_solution)
        : d_(d), s_(s), after_solution_(after_solution) {}

    void run() {
        check_type();
        for (int i = s_.range.begin; i < s_.range.end; ++i) {
            if (s_.in_output[static_cast<std::size_t>(i - s_.range.begin)] || d_.text().n_words(i) == 0) continue;
            const std::string word = d_.word(i, 0);
            if (word == "method:") read_method(i);
            if (word == "initial_sol") read_initial_sol(i);
            if (word == "vary_parm" || word == "vary_parm_sync") read_vary(i, word == "vary_parm_sync");
            for (const item_card& card : item_cards())
                if (card.word == word && !word.starts_with("vary")) read_items(i, card);
            if (word == "set_freq" || word == "vary_freq") frequency(i);
        }
        if (s_.type == "trns") check_time();
        if (s_.type == "dc") check_dc();
        check_settings(d_, s_, given_);
        s_.n_points = n_grid_ * n_sync_;
    }

private:
    // Where a word of method: is missing.
    deck_word block_place() const {
        for (int i = s_.range.begin; i < s_.range.end; ++i)
            if (d_.text().begins(i, "method:")) return {i, 0};
        return {s_.type_line >= 0 ? s_.type_line : s_.begin_line, 0};
    }
    bool is_time() const { return s_.type == "trns" || s_.type == "ssw"; }

    void check_type() {
        const std::vector<std::string> types = as_strings(solve_type_words());
        if (s_.type_line < 0) {
            d_.report.error("no-solve-type", {s_.begin_line, 0}, "this solve block has no solve_type",
                            "add a line: solve_type dc, startup or trns");
            return;
        }
        s_.is_known_type = has(types, s_.type);
        if (s_.type.empty())
            d_.report.error("no-solve-type", {s_.type_line, 0}, "solve_type needs a word: dc, startup or trns");
        else if (!s_.is_known_type)
            d_.report.error("unknown-solve-type", {s_.type_line, 1},
                            "there is no solve_type " + s_.type + "; the block would solve nothing, without a word" +
                                near_text(types, s_.type),
                            "known are dc, startup, trns");
        else if (s_.type == "ac" || s_.type == "ssw")
            d_.report.error("unknown-solve-type", {s_.type_line, 1},
                            "solve_type " + s_.type + " is not available in this version");
        for (const block_type& t : block_types)
            if (t.word == s_.type) bit_ = t.bit;
    }

    // ---- method:
    void read_method(int i) {
        const file_chr& f = d_.text();
        if (f.n_words(i) == 1) d_.report.warning("no-value", {i, 0}, "this statement names nothing");
        for (int j = 1; j < f.n_words(i); j += 2) {
            const std::string word = d_.word(i, j);
            if (j + 1 >= f.n_words(i)) {
                const std::span<const method_word> all = method_words();
                if (std::any_of(all.begin(), all.end(), [&](const method_word& k) { return k.word == word; }))
                    d_.report.error("no-value", {i, j}, word + " has no value and is passed over", word + "=...");
                else
                    d_.report.warning("stray-word", {i, j}, "the word " + word + " is passed over");
                break;
            }
            const method_word* m = nullptr;
            for (const method_word& k : method_words())
                if (k.word == word) m = &k;
            if (m == nullptr || (bit_ != 0 && !(m->blocks & bit_))) {
                unknown_method(i, j, m);
                continue;
            }
            method_value v{{i, j}, d_.word(i, j + 1), std::nan("")};
            const std::string_view kind = type_name(*m);
            int n = 0;
            if (kind == "int" && check_int(d_, {i, j + 1}, &n)) v.value = n;
            if (kind == "double") check_real(d_, {i, j + 1}, &v.value);
            if (kind == "flag" && v.text != "yes" && v.text != "no")
                d_.report.warning("not-yes-or-no", {i, j + 1}, word + " is on for yes and off for all else: " + v.text,
                                  word + "=yes");
            if (const auto at = given_.find(word); at != given_.end())
                d_.report.warning("given-twice", {i, j}, word + " is given twice; the last one counts");
            given_[word] = v;
        }
    }
    void unknown_method(int i, int j, const method_word* m) {
        const std::string word = d_.word(i, j);
        std::vector<std::string> known;
        for (const method_word& k : method_words())
            if (bit_ == 0 || (k.blocks & bit_)) known.emplace_back(k.word);
        if (m == nullptr) {
            const bool value_of_last = has(known, d_.word(i, j + 1));
            d_.report.error("unknown-method-word", {i, j}, "method: knows no word " + word + near_text(known, word),
                            value_of_last ? "words and values alternate: is a value missing before it?" : "");
            return;
        }
        std::string where;
        for (const block_type& t : block_types)
            if (m->blocks & t.bit) where += (where.empty() ? "" : ", ") + std::string(t.word);
        d_.report.error("unknown-method-word", {i, j},
                        word + " means nothing in a " + s_.type + " block; it belongs to: " + where);
    }

    const method_value* given(const char* word) const {
        const auto at = given_.find(word);
        return at == given_.end() ? nullptr : &at->second;
    }
    double number(const char* word, double otherwise) const {
        const method_value* v = given(word);
        return v == nullptr ? otherwise : v->value;
    }
    void need(const char* word, const char* why, const char* advice) {
        if (given(word) == nullptr) d_.report.error("missing-method-word", block_place(), std::string(why), advice);
    }
    void above_zero(const char* word) {
        const method_value* v = given(word);
        if (v != nullptr && v->value <= 0)
            d_.report.error("bad-step", v->at, std::string(word) + " must be above zero, not " + v->text);
    }

    // ---- runs in time
    void check_time() {
        need("t_end", "a trns block needs the time at which it ends", "method: t_end=5m");
        need("delt_const", "a trns block needs its time step", "method: delt_const=1u");
        for (const char* word : {"delt_const", "delt_min", "delt_max"}) above_zero(word);
        one_rule();
        heeds_events();
        const double start = number("t_start", 0), end = number("t_end", std::nan("")),
                     step = number("delt_const", std::nan(""));
        s_.t_start = start;
        s_.t_end = end;
        if (end <= start)
            d_.report.error("bad-step", given("t_end")->at, "t_end is not behind t_start: the run has no length");
        else if (step > end - start)
            d_.report.warning("bad-step", given("delt_const")->at, "the step is longer than the whole run");
        if (const method_value* least = given("delt_min"); least != nullptr && step < least->value)
            d_.report.error("bad-step", given("delt_const")->at, "delt_const is less than delt_min");
        if (const method_value* most = given("delt_max"); most != nullptr && step > most->value)
            d_.report.warning("bad-step", given("delt_const")->at, "delt_const is more than delt_max");
        // Rules that choose their steps may take ten times the first one.
        double longest = step;
        for (const char* rule : {"back_euler_auto", "trapezoidal_auto", "trbdf2"})
            if (given(rule) != nullptr && given(rule)->text == "yes") longest = number("delt_max", 10 * step);
        s_.longest_step = longest;
        const double passes = number("itmax_trns", 100000), steps = (end - start) / longest;
        if (steps > passes * 1.0001 && longest > 0)
            d_.report.warning(
                "too-many-steps", given("t_end")->at,
                "the run needs about " + rounded(steps) + " steps and is cut off after itmax_trns=" + rounded(passes),
                "method: itmax_trns=" + rounded(std::ceil(steps * 2)));
    }
    static std::string rounded(double x) {
        char text[32];
        std::snprintf(text, sizeof text, x < 1e9 ? "%.0f" : "%.2e", x);
        return text;
    }
    void one_rule() {
        std::vector<const method_value*> on;
        for (std::string_view rule : time_rule_words())
            if (const method_value* v = given(std::string(rule).c_str()); v != nullptr && v->text == "yes")
                on.push_back(v);
        std::sort(on.begin(), on.end(), [](const method_value* a, const method_value* b) {
            return std::pair(a->at.statement, a->at.word) < std::pair(b->at.statement, b->at.word);
        });
        for (std::size_t r = 1; r < on.size(); ++r)
            d_.report.error("two-rules", on[r]->at,
                            "two rules for the time steps: " + d_.word(on[0]->at.statement, on[0]->at.word) + " and " +
                                d_.word(on[r]->at.statement, on[r]->at.word),
                            "a trns block has one rule");
        for (std::string_view rule : explicit_rules)
            if (const method_value* v = given(std::string(rule).c_str()); v != nullptr && v->text == "yes")
                d_.report.warning("unused-rule", v->at,
                                  std::string(rule) + " is for explicit elements alone and does nothing here");
    }

    // A rule of second order goes on from currents and rates that a jump has made untrue.
    void heeds_events() {
        if (given("event_restart") != nullptr) return;
        for (const char* rule : {"trapezoidal", "trapezoidal_auto", "gear2", "gear2_fixed", "trbdf2"}) {
            const method_value* v = given(rule);
            if (v == nullptr || v->text != "yes") continue;
            for (const deck_element& e : d_.elements) {
                if (e.type == nullptr || !e.type->jumps) continue;
                d_.report.warning("event-restart", v->at,
                                  std::string(rule) + " loses its accuracy wherever " + e.name + " (" + e.type->name +
                                      ") acts, as it goes on from the currents before",
                                  "method: event_restart=yes");
                return;
            }
        }
    }

    void check_dc() {
        for (const deck_element& e : d_.elements)
            if (e.type != nullptr && e.type->refuses_dc)
                d_.report.error("no-dc", {s_.type_line, 1},
                                "a dc block cannot stand with " + e.name + " (" + e.type->name + ")",
                                "find the state to start from with solve_type startup");
    }

    // ---- where the iteration starts
    void read_initial_sol(int i) {
        const file_chr& f = d_.text();
        if (n_initial_++ > 0) d_.report.error("given-twice", {i, 0}, "the block has two initial_sol statements");
        const std::string how = f.n_words(i) > 1 ? d_.word(i, 1) : std::string();
        if (how == "initialize") return;
        if (how == "previous") {
            if (!after_solution_)
                d_.report.error("no-previous", {i, 1}, "no block before this one has a solution to start from",
                                "leave the statement out, or put a dc or startup block before it");
        } else if (how == "file") {
            if (f.n_words(i) < 4 || f.word(i, 2) != "filename") {
                d_.report.error("no-filename", {i, 1}, "the name of the file is missing",
                                "initial_sol file filename PATH");
            } else if (const std::string name = d_.word(i, 3);
                       !d_.globals.texts.count(name) && !file_exists(d_, name) && !d_.written.count(name)) {
                d_.report.error("missing-file", {i, 3}, "the file " + name + " does not exist",
                                "paths are relative to the deck");
            }
        } else {
            d_.report.error(
                "bad-initial-sol", {i, f.n_words(i) > 1 ? 1 : 0},
                "initial_sol knows initialize, previous and file" + near_text({"initialize", "previous", "file"}, how));
        }
    }

    // ---- what is set
    static std::vector<list_member> lists_of(const item_card& card) {
        std::vector<list_member> lists;
        for (const parm_item::table t : card.tables) {
            if (t == parm_item::int_value) lists.push_back(&element_type::iprm);
            if (t == parm_item::real_value) {
                lists.push_back(&element_type::rprm);
                lists.push_back(&element_type::derived);
            }
            if (t == parm_item::start_value) lists.push_back(&element_type::start);
            if (t == parm_item::guess_value) lists.push_back(&element_type::guess);
        }
        return lists;
    }
    void read_items(int i, const item_card& card) {
        const file_chr& f = d_.text();
        if (f.n_words(i) == 1) d_.report.warning("no-value", {i, 0}, "this statement sets nothing");
        for (int j = 1; j < f.n_words(i); j += 2) {
            if (j + 1 >= f.n_words(i)) {
                d_.report.error("no-value", {i, j}, d_.word(i, j) + " has no value and is passed over");
                break;
            }
            check_item(d_, {i, j}, lists_of(card), card.globals);
            double x = 0;
            const std::string value = d_.word(i, j + 1);
            if (!d_.globals.ints.count(value) && !d_.globals.reals.count(value) && !is_double(value, x))
                check_real(d_, {i, j + 1});
            check_item_value(d_, {i, j}, {i, j + 1});
        }
    }

    // ---- sweeps
    void read_vary(int i, bool in_step) {
        const file_chr& f = d_.text();
        const std::string word = d_.word(i, 0);
        if (is_time() || (in_step && s_.type == "startup")) {
            d_.report.error("misplaced", {i, 0}, word + " is not allowed in a " + s_.type + " block",
                            "give each value a block of its own, with set_parm");
            return;
        }
        if (f.n_words(i) < 2) {
            d_.report.error("bad-item", {i, 0}, word + " names no item",
                            "vary_parm r_of_R1 from 1k to 10k type linear n_points 10");
            return;
        }
        for (const item_card& card : item_cards())
            if (card.word == word) check_item(d_, {i, 1}, lists_of(card), card.globals);
        const double n = read_range(i, 2, in_step);
        if (in_step) {
            if (n_in_step_++ > 0 && n != n_sync_ && !std::isnan(n) && !std::isnan(n_sync_))
                d_.report.error("bad-sweep", {i, 0},
                                "all vary_parm_sync statements of a block need the same number of points");
            n_sync_ = n;
        } else {
            n_grid_ *= n;
            ++n_vary_;
            if (has_auto_ && n_vary_ > 1)
                d_.report.error("bad-sweep", {i, 0}, "a sweep of type auto stands alone in its block");
            if (n_grid_ > most_points)
                d_.report.error("bad-sweep", {i, 0}, "the sweeps of this block span more than 2147483647 points");
        }
    }

    // Keys and values from word `first` on; the number of points, NaN if it is unknown.
    double read_range(int i, int first, bool in_step) {
        const file_chr& f = d_.text();
        const double unknown = std::nan("");
        const std::string statement = d_.word(i, 0);
        const std::string key = f.n_words(i) > first ? d_.word(i, first) : std::string();
        const char* forms = "ITEM from A to B type linear n_points N; ITEM type table V1 V2 ...";
        if (key == "type") {
            const std::string form = f.n_words(i) > first + 1 ? d_.word(i, first + 1) : std::string();
            if (form == "table") {
                for (int j = first + 2; j < f.n_words(i); ++j) {
                    check_real(d_, {i, j});
                    if (first == 2) check_item_value(d_, {i, 1}, {i, j});
                }
                const int n = f.n_words(i) - first - 2;
                if (n < 1) d_.report.error("bad-sweep", {i, first}, "the table has no values");
                return n;
            }
            if (form == "auto" && !in_step && statement == "vary_parm") {
                read_auto(i);
                return unknown;
            }
            d_.report.error("bad-sweep", {i, std::min(first + 1, f.n_words(i) - 1)},
                            form == "linear" || form == "log"
                                ? "from and to must stand before type " + form
                                : "the type of a sweep is linear, log, table or auto, not " + form,
                            forms);
            return unknown;
        }
        if (key != "from") {
            d_.report.error("bad-sweep", {i, std::min(first, f.n_words(i) - 1)},
                            "behind the item stands from or type" + (key.empty() ? "" : ", not " + key), forms);
            return unknown;
        }
        std::map<std::string, int> at;  // key to the position of its value
        static const std::vector<std::string> keys = {"from", "to", "type", "n_points", "div"};
        for (const key_value& p : pairs_in(d_, i, first, keys)) {
            const std::string k = d_.word(i, p.key);
            if (!has(keys, k))
                d_.report.error("unknown-word", {i, p.key},
                                statement + " knows no word " + k + " here" + near_text(keys, k), forms);
            else if (p.value < 0)
                d_.report.error("no-value", {i, p.key}, "there is no value behind " + k);
            else
                at.emplace(k, p.value);
        }
        double from = unknown, to = unknown, div = unknown;
        const auto real = [&](const char* k, double& x) {
            if (at.count(k)) check_real(d_, {i, at[k]}, &x);
        };
        real("from", from);
        real("to", to);
        real("div", div);
        for (const char* k : {"from", "to"})
            if (first == 2 && at.count(k)) check_item_value(d_, {i, 1}, {i, at[k]});
        bool complete = true;
        for (const char* k : {"to", "type"})
            if (!at.count(k)) {
                d_.report.error("bad-sweep", {i, 0}, std::string("the sweep has no ") + k, forms);
                complete = false;
            }
        if (!complete) return unknown;
        const std::string form = d_.word(i, at["type"]);
        if (form != "linear" && form != "log") {
            d_.report.error("bad-sweep", {i, at["type"]}, "a sweep from A to B has the type linear or log, not " + form,
                            forms);
            return unknown;
        }
        if (form == "log" && (from <= 0 || to <= 0))
            d_.report.error("bad-sweep", {i, at["from"]}, "a sweep of type log runs between numbers above zero");
        if (from == to) d_.report.warning("bad-sweep", {i, at["to"]}, "the sweep ends where it begins");
        if (at.count("n_points")) {
            int n = 0;
            if (!check_int(d_, {i, at["n_points"]}, &n)) return unknown;
            if (n < 2) d_.report.error("bad-sweep", {i, at["n_points"]}, "a sweep has at least two points");
            return n;
        }
        if (form == "linear" && at.count("div")) {
            const double n = std::trunc((to - from) / div + 0.5) + 1;
            if (!std::isnan(n) && !(n >= 2 && n <= most_points))
                d_.report.error("bad-sweep", {i, at["div"]},
                                "this division gives less than two points or more than 2147483647",
                                "div is the step from point to point, with the sign of the sweep");
            return n;
        }
        d_.report.error("bad-sweep", {i, 0}, "the sweep has no n_points", forms);
        return unknown;
    }

    void read_auto(int i) {
        const file_chr& f = d_.text();
        if (s_.type != "dc") d_.report.error("misplaced", {i, 3}, "a sweep of type auto stands in dc blocks only");
        if (has_auto_ || n_vary_ > 0)
            d_.report.error("bad-sweep", {i, 3}, "a sweep of type auto stands alone in its block");
        has_auto_ = true;
        const std::vector<std::string> known = as_strings(auto_sweep_words(false));
        std::vector<std::string> seen;
        for (int j = 4; j < f.n_words(i); j += 2) {
            const std::string k = d_.word(i, j);
            if (!has(known, k)) {
                d_.report.error("unknown-word", {i, j},
                                "a sweep of type auto knows no word " + k + near_text(known, k));
                continue;
            }
            seen.push_back(k);
            double x = 0;
            if (j + 1 >= f.n_words(i))
                d_.report.error("no-value", {i, j}, "there is no value behind " + k);
            else if (!is_double(f.word(i, j + 1), x))
                d_.report.error("bad-number", {i, j + 1}, "this is no number: " + d_.word(i, j + 1));
        }
        for (const std::string& k : as_strings(auto_sweep_words(true)))
            if (!has(seen, k)) d_.report.error("bad-sweep", {i, 3}, "a sweep of type auto needs " + k);
    }

    void frequency(int i) {
        if (s_.is_known_type && s_.type != "ac")
            d_.report.warning("misplaced", {i, 0}, d_.word(i, 0) + " means nothing in a " + s_.type + " block");
        if (d_.word(i, 0) == "vary_freq") {
            read_range(i, 1, false);
        } else if (d_.text().n_words(i) < 2) {
            d_.report.error("no-value", {i, 0}, "set_freq needs a frequency");
        } else {
            check_real(d_, {i, 1});
        }
    }

    checked_deck& d_;
    solve_section& s_;
    bool after_solution_;
    unsigned bit_ = 0;  // 0: type unknown
    std::map<std::string, method_value> given_;
    int n_initial_ = 0, n_vary_ = 0, n_in_step_ = 0;
    bool has_auto_ = false;
    double n_grid_ = 1, n_sync_ = 1;
};

}  // namespace

void check_solves(checked_deck& d) {
    bool has_solution = false;
    if (d.sections.solves.empty() && d.sections.begin_circuit >= 0)
        d.report.warning("no-solve", {d.sections.begin_circuit, 0}, "the deck has no solve block: nothing is computed");
    for (solve_section& s : d.sections.solves) {
        block_checks(d, s, has_solution).run();
        check_outputs(d, s);
        has_solution = true;  // a type that is not known has its own fault
    }
}

}  // namespace cli
