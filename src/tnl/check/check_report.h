// check_report.h -- what `tnl check` finds: faults with their places.
#pragma once
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tnl/deck/deck_view.h"

namespace cli {

// A word of the deck. Statement -1: the deck as a whole.
struct deck_word {
    int statement = -1, word = 0;
    int line = -1;  // of the simulator's text, 0-based, where no statement stands there
};

struct check_fault {
    bool is_error;     // the run would stop, or solve something else than is written; otherwise a warning
    std::string code;  // "unknown-type": stable, for programs
    std::string message;
    std::string advice;  // what to mend; may be empty
    deck_word at;
    std::optional<record_place> place = {};  // in place of at: of what is no statement of the deck
};

struct check_report {
    deck_view deck;
    std::vector<check_fault> faults;
    std::map<std::string, int> count;  // faults of each code, those beyond the limit too

    // At most 50 faults of a code are kept.
    void error(const char* code, deck_word at, std::string message, std::string advice = {});
    void warning(const char* code, deck_word at, std::string message, std::string advice = {});
    void error_at(const char* code, const record_place& at, std::string message, std::string advice = {});
    void warning_at(const char* code, const record_place& at, std::string message, std::string advice = {});
    bool is_full(const char* code) const;  // no more of this code are kept
    int n_errors() const;
    int n_warnings() const { return static_cast<int>(faults.size()) - n_errors(); }
};

// A report as bytes, for another process that looks at the same deck; empty if the bytes are of none.
std::string packed(const check_report& report);
std::optional<check_report> unpacked(std::string_view bytes, deck_view deck);

// By place; what holds for the whole deck stands last. A warning at the word of an error is left out.
void sort_faults(check_report& report);

record_place place_of_fault(const check_report& report, const check_fault& fault);

// "deck.in:6:32: error: text", the line and a caret below it, and a line of advice; lines begin with the indent.
std::string fault_text(const check_report& report, const check_fault& fault, const std::string& indent = {});

// All faults and a summary line.
std::string report_text(const check_report& report);
std::string report_json(const check_report& report);

}  // namespace cli
