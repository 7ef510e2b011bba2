// The order of a deck: title, circuit, solve blocks, and the words that begin a statement in each.
#include <algorithm>

#include "settings/solve_words.h"
#include "tnl/check/check_deck.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

constexpr std::size_t most_solves = 20;  // later blocks are not read

enum class section { outside, circuit, solve, output };

std::vector<std::string> circuit_words() {
    std::vector<std::string> list = {"refnode", "x_refnode", "output", "outvar:"};
    for (const library_form& form : library_forms)
        if (!form.statement.empty()) {
            list.emplace_back(form.statement);
            list.emplace_back(form.model);
        }
    return list;
}

std::vector<std::string> solve_words() {
    std::vector<std::string> list = {"solve_type", "begin_output"};
    for (std::string_view w : solve_card_words()) list.emplace_back(w);
    return list;
}

const std::vector<std::string> output_words = {"filename", "variables:", "control:"};
const std::vector<std::string> border_words = {"begin_circuit", "end_circuit", "begin_solve", "end_solve",
                                               "begin_output",  "end_output",  "end_cf"};

class walk {
public:
    explicit walk(checked_deck& d) : d_(d), s_(d.sections) {}

    void run() {
        const file_chr& f = d_.text();
        s_.end = f.n_lines();
        if (f.n_lines() == 0) {
            d_.report.error("empty", {}, "the deck is empty");
            return;
        }
        if (!f.begins(0, "title:"))
            d_.report.error("no-title", {0, 0}, "the first statement must be title:", "add a line: title: any words");
        for (int i = 0; i < s_.end; ++i)
            if (f.begins(i, "begin_circuit")) last_circuit_ = i;
        for (int i = 0; i < s_.end; ++i) {
            if (f.n_words(i) == 0) continue;
            const std::string word = d_.word(i, 0);
            if (has(border_words, word))
                border(i, word);
            else
                inside(i, word);
        }
        finish();
    }

private:
    void missing(const char* code, int at, const std::string& what, int opened) {
        const record_place place = place_in_files(d_.report.deck, opened);
        d_.report.error(code, {at < d_.text().n_lines() ? at : opened, 0},
                        what + " is missing before this statement: " + d_.word(opened, 0) + " in line " +
                            std::to_string(place.line) + " is not closed",
                        "add a line: " + what);
    }
    void close_output(int i, bool is_given) {
        if (!is_given) missing("no-end-output", i, "end_output", output_begin_);
        s_.solves.back().outputs.push_back({output_begin_ + 1, i});
        now_ = section::solve;
    }
    void close_solve(int i, bool is_given) {
        if (now_ == section::output) close_output(i, false);
        solve_section& s = s_.solves.back();
        if (!is_given) missing("no-end-solve", i, "end_solve", s.begin_line);
        s.range.end = i;
        now_ = section::outside;
    }
    void close_circuit(int i, bool is_given) {
        if (!is_given) missing("no-end-circuit", i, "end_circuit", s_.begin_circuit);
        s_.circuit.end = i;
        now_ = section::outside;
    }
    void close_any(int i) {
        if (now_ == section::circuit) close_circuit(i, false);
        if (now_ == section::solve || now_ == section::output) close_solve(i, false);
    }
    void unexpected(int i, const std::string& word, const std::string& why) {
        d_.report.error("misplaced", {i, 0}, word + " " + why);
    }

    void open_solve(int line, int begin) {
        solve_section s;
        s.begin_line = line;
        s.range = {begin, begin};
        s_.solves.push_back(std::move(s));
        now_ = section::solve;
    }

    void border(int i, const std::string& word) {
        if (word == "begin_circuit") {
            if (s_.begin_circuit >= 0) {
                unexpected(i, word, "stands here a second time; a deck has one circuit");
                return;
            }
            close_any(i);
            s_.begin_circuit = i;
            s_.circuit = {i + 1, i + 1};
            now_ = section::circuit;
        } else if (word == "end_circuit") {
            if (now_ == section::circuit)
                close_circuit(i, true);
            else
                unexpected(i, word, "without a begin_circuit before it");
        } else if (word == "begin_solve") {
            close_any(i);
            if (s_.begin_circuit < 0) unexpected(i, word, "before the circuit");
            open_solve(i, i + 1);
            if (s_.solves.size() == most_solves + 1)
                d_.report.error(
                    "too-many-blocks", {i, 0},
                    "this and later solve blocks are not read: a deck has at most " + std::to_string(most_solves),
                    "put them into a deck of their own");
        } else if (word == "end_solve") {
            if (now_ == section::solve || now_ == section::output)
                close_solve(i, true);
            else
                unexpected(i, word, "without a begin_solve before it");
        } else if (word == "begin_output") {
            if (now_ == section::output) close_output(i, false);
            if (now_ != section::solve) {
                unexpected(i, word, "outside of a solve block");
                return;
            }
            output_begin_ = i;
            now_ = section::output;
        } else if (word == "end_output") {
            if (now_ == section::output)
                close_output(i, true);
            else
                unexpected(i, word, "without a begin_output before it");
        } else {  // end_cf
            close_any(i);
            s_.end = i;
            has_end_ = true;
        }
    }

    void inside(int i, const std::string& word) {
        if (s_.solves.size() > most_solves) return;
        switch (now_) {
            case section::circuit:
                statement(i, word, circuit_words_, "the circuit block");
                break;
            case section::solve:
                if (word == "solve_type") {
                    solve_section& s = s_.solves.back();
                    if (s.type_line < 0) {
                        s.type_line = i;
                        if (d_.text().n_words(i) > 1) s.type = d_.word(i, 1);
                    } else {
                        d_.report.error("misplaced", {i, 0}, "the block has two solve_type statements");
                    }
                }
                statement(i, word, solve_words_, "a solve block");
                break;
            case section::output:
                if (!has(output_words, word)) outside_of_output(i, word);
                break;
            case section::outside:
                if (i > 0 && word != "title:") outside(i, word);
                break;
        }
    }

    void statement(int i, const std::string& word, const std::vector<std::string>& known, const char* where) {
        if (has(known, word)) return;
        std::vector<std::string> all = known;
        all.insert(all.end(), border_words.begin(), border_words.end());
        std::string advice;
        if (has(circuit_words_, word)) advice = "it belongs between begin_circuit and end_circuit";
        if (has(solve_words_, word)) advice = "it belongs between begin_solve and end_solve";
        if (has(output_words, word)) advice = "it belongs between begin_output and end_output";
        if (word == "greal" || word == "ginteger" || word == "gstring") advice = "it belongs before begin_circuit";
        if (word.starts_with("outvar:")) advice = "a blank is missing behind outvar:";
        if (word.starts_with("eelement") || word.starts_with("gelement"))
            advice = "a blank is missing behind " + word.substr(0, 8);
        const bool in_circuit = now_ == section::circuit;
        if (in_circuit && advice.empty() && near_words(all, word).empty())
            advice = "an element is: eelement name=R1 type=r p=in n=out r=1k";
        if (word.starts_with("*") || word.starts_with("//") || word.starts_with(";"))
            advice = "a comment begins with #";
        if (word.starts_with("+")) advice = "a blank must stand before a tab and '+'";
        d_.report.error("unknown-statement", {i, 0},
                        std::string(where) + " knows no statement " + word + near_text(all, word), advice);
    }
    // The reader passes over other statements in an output block.
    void outside_of_output(int i, const std::string& word) {
        std::vector<std::string> all = output_words;
        all.insert(all.end(), border_words.begin(), border_words.end());
        d_.report.warning("unread-statement", {i, 0},
                          "an output block knows no statement " + word + "; it is passed over" + near_text(all, word),
                          has(solve_words_, word) ? "it belongs outside of begin_output ... end_output" : "");
    }
    void outside(int i, const std::string& word) {
        static const std::vector<std::string> globals = {"greal", "ginteger", "gstring"};
        const bool before = s_.begin_circuit < 0;
        if (has(globals, word)) {
            if (!before)
                d_.report.warning("unread-statement", {i, 0}, word + " behind begin_circuit is not read",
                                  "constants stand before begin_circuit");
            return;
        }
        std::vector<std::string> all = border_words;
        if (before) all.insert(all.end(), globals.begin(), globals.end());
        if (before && has(circuit_words_, word) && i > last_circuit_) {  // as if begin_circuit stood here
            d_.report.error("no-circuit", {i, 0}, "begin_circuit is missing before this statement",
                            "add a line: begin_circuit");
            s_.begin_circuit = i;
            s_.circuit = {i, i};
            now_ = section::circuit;
            inside(i, word);
            return;
        }
        if (!before && (word == "solve_type" || has(solve_words_, word))) {  // as if begin_solve stood here
            d_.report.error("no-begin-solve", {i, 0}, "begin_solve is missing before this statement",
                            "add a line: begin_solve");
            open_solve(i, i);
            inside(i, word);
            return;
        }
        const bool misplaced = !near_words(border_words, word).empty() || has(circuit_words_, word) ||
                               has(solve_words_, word) || has(output_words, word);
        const std::string text =
            "the statement " + word + " ... stands outside of all blocks and is not read" + near_text(all, word);
        if (misplaced)
            d_.report.error("misplaced", {i, 0}, text,
                            has(circuit_words_, word) ? "it belongs between begin_circuit and end_circuit" : "");
        else
            d_.report.warning("unread-statement", {i, 0}, text);
    }

    void finish() {
        const int n = d_.text().n_lines();
        if (!has_end_) {
            close_any(n);
            const std::vector<std::string> last = {d_.word(n - 1, 0)};
            d_.report.error("no-end", {n - 1, 0}, "end_cf is missing at the end of the deck", "add a line: end_cf");
        }
        if (s_.begin_circuit < 0)
            d_.report.error("no-circuit", {0, 0}, "the deck has no begin_circuit",
                            "add lines: begin_circuit ... end_circuit");
        if (s_.solves.size() > most_solves) s_.solves.resize(most_solves);
        for (solve_section& s : s_.solves) {
            s.in_output.assign(static_cast<std::size_t>(std::max(0, s.range.end - s.range.begin)), 0);
            for (const statement_range& o : s.outputs)
                for (int i = o.begin - 1; i <= o.end && i < s.range.end; ++i)
                    s.in_output[static_cast<std::size_t>(i - s.range.begin)] = 1;
        }
    }

    checked_deck& d_;
    deck_sections& s_;
    section now_ = section::outside;
    int output_begin_ = -1;
    int last_circuit_ = -1;  // statement begin_circuit
    bool has_end_ = false;
    const std::vector<std::string> circuit_words_ = circuit_words(), solve_words_ = solve_words();
};

}  // namespace

void check_sections(checked_deck& d) { walk(d).run(); }

bool asks_for_no_rows(std::string_view word) {
    for (const std::string_view w :
         {"begin_circuit", "end_circuit", "end_solve", "end_output", "greal", "ginteger", "gstring"})
        if (w == word) return true;
    return has(circuit_words(), word);
}

}  // namespace cli
