#include "tnl/check/explain_stop.h"

#include <algorithm>

#include "tnl/check/advice.h"
#include "tnl/check/check_deck.h"

namespace cli {

namespace {

constexpr std::size_t most_faults = 3;
constexpr std::size_t most_candidates = 4;

std::string indented(const std::string& text) {
    std::string out;
    for (const std::string& l : split_lines(text)) out += "  " + l + "\n";
    return out;
}

// What is to be shown of a stop.
struct stop_reading {
    std::vector<stop_place> found;           // by the text
    std::vector<const check_fault*> errors;  // of the report: at what was found, else wherever they are
    bool explained = false;                  // they are at what was found
};

stop_reading read_stop(std::string_view text, const check_report& report, const deck_needs& needs) {
    stop_reading stop{find_places(text, report.deck, needs), {}, false};
    const auto is_found = [&](const check_fault& f) {
        return std::any_of(stop.found.begin(), stop.found.end(),
                           [&](const stop_place& p) { return p.i_statement == f.at.statement; });
    };
    // A stop of the readers of composites is about these.
    const bool of_composites = !report.deck.own.entries.empty() && speaks_of_composites(split_lines(text));
    for (const int wanted : {2, 1, 0}) {  // of composites, at the place, any
        for (const check_fault& f : report.faults)
            if (f.is_error && (wanted == 2 ? of_composites && f.place : wanted == 0 || is_found(f)))
                stop.errors.push_back(&f);
        stop.explained = wanted == 1 && !stop.errors.empty();
        if (!stop.errors.empty()) break;
    }
    return stop;
}

// A value that a model refuses where a block writes it: the text of the stop speaks of the element alone.
bool is_of_set_rparm(const stop_reading& stop, const deck_view& deck) {
    const auto writes_to = [&](int i, const std::string& element) {
        return value_of(deck, i, "type") == "set_rparm" && value_of(deck, i, "element") == element;
    };
    for (const stop_place& p : stop.found)
        for (int i = 0; i < deck.statements.n_lines(); ++i)
            if (writes_to(i, value_of(deck, p.i_statement, "name"))) return true;
    return false;
}

}  // namespace

std::vector<record_place> places_of_stop(std::string_view text, const check_report& report, const deck_needs& needs) {
    const stop_reading stop = read_stop(text, report, needs);
    std::vector<record_place> places;
    if (!stop.explained && stop.found.size() <= most_candidates)
        for (const stop_place& p : stop.found) places.push_back(place_in_files(report.deck, p.i_statement, p.i_word));
    if (places.empty())
        for (const check_fault* f : stop.errors) {  // one place a line is enough
            const record_place place = place_of_fault(report, *f);
            const bool told = std::any_of(places.begin(), places.end(), [&](const record_place& p) {
                return p.file == place.file && p.line == place.line;
            });
            if (!told && places.size() < most_faults) places.push_back(place);
        }
    return places;
}

std::string explain_stop(std::string_view text, const check_report& report, const deck_needs& needs) {
    const stop_reading stop = read_stop(text, report, needs);
    std::string out;
    if (!stop.explained && stop.found.size() <= most_candidates) {
        if (stop.found.size() > 1) out += "  one of these statements:\n";
        for (const stop_place& p : stop.found) out += indented(place_with_caret(report.deck, p.i_statement, p.i_word));
    }
    // All that is wrong with the deck at once, as the check tells it; doubts alone are better than nothing.
    const std::size_t most = stop.errors.empty() ? out.empty() ? most_faults : 0 : report.faults.size();
    for (std::size_t i = 0; i < std::min(most, report.faults.size()); ++i)
        out += fault_text(report, report.faults[i], "  ");
    const advice_text* advice = find_advice(text);
    if (advice != nullptr && advice->id == "value-of-element" && is_of_set_rparm(stop, report.deck))
        advice = find_advice("set_rparm");
    if (advice != nullptr && stop.errors.empty()) {
        out += "  meaning: " + std::string(advice->meaning) + "\n";
        if (!advice->mend.empty()) out += "  advice: " + std::string(advice->mend) + "\n";
    }
    return out;
}

}  // namespace cli
