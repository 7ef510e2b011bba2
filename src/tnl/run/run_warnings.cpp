#include "tnl/run/run_warnings.h"

#include "tnl/check/check_report.h"
#include "tnl/check/locate.h"

namespace cli {

namespace {

constexpr std::string_view residual_told = "solve_dc: the solution leaves a residual of ";
constexpr std::string_view before_message = "solve_dc: ", before_node = " at node ", before_advice = "   consider ";
constexpr std::string_view unit = " A", only_first = "; later points of its block were not looked at";
constexpr std::size_t longest_line = 10000;  // of one that can be a warning

}  // namespace

void warning_listener::note_line(std::string_view line) {
    if (advice_follows_ && line.starts_with(before_advice))
        heard_.back().advice = std::string(line.substr(3)) + std::string(only_first);
    advice_follows_ = false;
    const std::size_t at = line.find(before_node);
    if (!line.starts_with(residual_told) || at == std::string_view::npos) return;
    std::string message(line.substr(before_message.size(), at - before_message.size()));
    heard_.push_back({message.append(unit).append(line.substr(at)), "", {}});
    node_.emplace_back(line.substr(at + before_node.size()));
    advice_follows_ = true;
}

void warning_listener::take(std::string_view text) {
    for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
        waiting_ += text.substr(0, end);
        note_line(waiting_);
        waiting_.clear();
    }
    if (waiting_.size() < longest_line) waiting_ += text;
}

std::vector<record_warning> warning_listener::warnings(const deck_view& deck) const {
    std::vector<record_warning> all = heard_;
    for (std::size_t k = 0; k < all.size(); ++k)
        for (const stop_place& p : places_of_node(deck, node_[k]))
            all[k].places.push_back(place_in_files(deck, p.i_statement, p.i_word));
    return all;
}

std::string warning_text(const deck_view& deck, const std::vector<record_warning>& warnings,
                         const std::string& indent) {
    std::string out;
    for (const record_warning& w : warnings) {
        const std::size_t at = w.message.find(before_node);
        const std::vector<stop_place> places = at == std::string::npos
                                                   ? std::vector<stop_place>{}
                                                   : places_of_node(deck, w.message.substr(at + before_node.size()));
        deck_word word;
        if (!places.empty()) word = {places[0].i_statement, places[0].i_word};
        out += fault_text(check_report{deck, {}, {}}, {false, "residual", w.message, w.advice, word}, indent);
    }
    return out;
}

}  // namespace cli
