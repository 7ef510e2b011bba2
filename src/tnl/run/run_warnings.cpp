#include "tnl/run/run_warnings.h"

#include <cmath>

#include "base/words.h"
#include "tnl/check/check_report.h"
#include "tnl/check/locate.h"

namespace cli {

namespace {

constexpr std::string_view residual_told = "solve_dc: the solution leaves a residual of ";
constexpr std::string_view before_message = "solve_dc: ", before_node = " at node ", before_advice = "   consider ";
constexpr std::string_view unit = " A", only_first = "; later points of its block were not looked at";
constexpr std::string_view before_block = "periodic block ";
constexpr std::size_t longest_line = 10000;  // of one that can be a warning

// The number that follows some words, up to a blank or comma; NaN if they are not there.
double number_behind(std::string_view line, std::string_view words) {
    const std::size_t at = line.find(words);
    if (at == std::string_view::npos) return NAN;
    line.remove_prefix(at + words.size());
    double x = NAN;
    return is_double(line.substr(0, line.find_first_of(" ,:")), x) ? x : NAN;
}

// The type of the n-th periodic block, from 1.
std::vector<stop_place> places_of_periodic_block(const deck_view& deck, int n) {
    for (const statement_range& range : solve_ranges(deck))
        for (int i = range.begin; i < range.end; ++i)
            if (deck.statements.begins(i, "solve_type") && deck.statements.n_words(i) > 1 &&
                deck.statements.word(i, 1) == "ssw" && --n == 0)
                return {{i, 1}};
    return {};
}

std::vector<stop_place> places_of(const deck_view& deck, const record_warning& w) {
    if (const std::size_t at = w.message.find(before_node); at != std::string::npos)
        return places_of_node(deck, w.message.substr(at + before_node.size()));
    const double block = number_behind(w.message, before_block);
    return std::isnan(block) ? std::vector<stop_place>{} : places_of_periodic_block(deck, static_cast<int>(block));
}

}  // namespace

void run_listener::note_residual(std::string_view line) {
    if (advice_follows_ && line.starts_with(before_advice))
        heard_.back().advice = std::string(line.substr(3)) + std::string(only_first);
    advice_follows_ = false;
    const std::size_t at = line.find(before_node);
    if (!line.starts_with(residual_told) || at == std::string_view::npos) return;
    std::string message(line.substr(before_message.size(), at - before_message.size()));
    heard_.push_back({message.append(unit).append(line.substr(at)), "", {}});
    advice_follows_ = true;
}

void run_listener::note_period(std::string_view line) {
    if (line.starts_with("  multiplier: re=")) {
        period_.multipliers.push_back({number_behind(line, "re="), number_behind(line, "im=")});
        return;
    }
    if (!line.starts_with("solve_ssw")) return;
    const std::string block = std::string(before_block) + std::to_string(this_block());
    if (const double shot = number_behind(line, "solve_ssw: ssw_iter_newton="); !std::isnan(shot)) {
        period_.shots = static_cast<int>(shot) + 1;
        period_.difference = number_behind(line, "rhs_ssw_norm=");
        period_.converged = true;
    } else if (line == "solve_ssw: convergence not reached.") {
        period_.converged = false;
        heard_.push_back({block + ": no steady state was found in " + std::to_string(period_.shots) +
                              " shots; its rows are those of one more period",
                          "more shots by ssw_itmax_newton, shorter steps by ssw_ndiv, or a block before it that brings "
                          "the circuit nearer",
                          {}});
    } else if (line.starts_with("solve_ssw: the circuit does not repeat itself")) {
        heard_.push_back({block + ": a source or clock has a period that does not fit in that of the search, " +
                              std::string(line.substr(line.rfind(' ') + 1, line.size() - line.rfind(' ') - 2)) + " s",
                          "ssw_period as the common period of all of them",
                          {}});
    } else if (const double period = number_behind(line, "solve_ssw: period="); !std::isnan(period)) {
        period_.period = period;
    } else if (const double largest = number_behind(line, "largest multiplier="); !std::isnan(largest)) {
        period_.stability = line.starts_with("solve_ssw: stable") ? "stable" : "unstable";
        period_.largest = largest;
    } else if (line.starts_with("solve_ssw ends")) {
        periods_.push_back(std::move(period_));
        period_ = {};
    }
}

void run_listener::note_line(std::string_view line) {
    note_residual(line);
    note_period(line);
}

void run_listener::take(std::string_view text) {
    for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
        waiting_ += text.substr(0, end);
        note_line(waiting_);
        waiting_.clear();
    }
    if (waiting_.size() < longest_line) waiting_ += text;
}

std::vector<record_warning> run_listener::warnings(const deck_view& deck) const {
    std::vector<record_warning> all = heard_;
    for (record_warning& w : all)
        for (const stop_place& p : places_of(deck, w))
            w.places.push_back(place_in_files(deck, p.i_statement, p.i_word));
    return all;
}

std::string warning_text(const deck_view& deck, const std::vector<record_warning>& warnings,
                         const std::string& indent) {
    std::string out;
    for (const record_warning& w : warnings) {
        const std::vector<stop_place> places = places_of(deck, w);
        deck_word word;
        if (!places.empty()) word = {places[0].i_statement, places[0].i_word};
        out += fault_text(check_report{deck, {}, {}}, {false, "residual", w.message, w.advice, word}, indent);
    }
    return out;
}

}  // namespace cli
