#include "tnl/elements/response_deck.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "base/words.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/text.h"

namespace cli {

namespace {

constexpr int steps_of_a_run = 2000;

std::vector<std::string> words_in(std::string_view line) {
    std::vector<std::string> all;
    for (const std::string& w : split(std::string(line), ' '))
        if (!w.empty()) all.push_back(w);
    return all;
}

// The value of word=value.
std::optional<std::string> value_of(const std::vector<std::string>& words, std::string_view word) {
    for (const std::string& w : words)
        if (w.starts_with(std::string(word) + "=")) return w.substr(word.size() + 1);
    return std::nullopt;
}

std::string part_of(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", seconds / steps_of_a_run);
    return text;
}

std::string lines_of_file(const std::vector<std::string>& words) {
    std::string text;
    for (std::size_t i = 2; i < words.size(); ++i) text += words[i] == ";" ? "\n" : words[i] + " ";
    return text + "\n";
}

// The variables of the statement, each once, with the units that the sheet tells.
std::vector<record_column> variables_of(const std::vector<std::string>& statement, const element_sheet& sheet) {
    std::vector<record_column> all;
    for (const sheet_word& t : sheet.terminals) {
        const std::optional<std::string> name = value_of(statement, t.word);
        if (!name) continue;
        const bool known = std::any_of(all.begin(), all.end(), [&](const auto& c) { return c.name == *name; });
        if (!known) all.push_back({*name, t.unit});
    }
    return all;
}

}  // namespace

response_deck response_of(const element_sheet& sheet) {
    response_deck deck;
    if (sheet.response.empty()) return deck;
    const auto fault = [&](const std::string& text) {
        throw usage_error("the response of " + sheet.family + ":" + sheet.name + ": " + text);
    };
    const std::vector<std::string> head = words_in(sheet.response[0]);
    const std::string t_end = value_of(head, "t_end").value_or("");
    double seconds = 0;
    if (!is_double(t_end, seconds) || !(seconds > 0)) fault("its first line has no t_end above 0");

    std::string elements;
    std::vector<std::string> own;  // the statement of the block
    for (std::size_t i = 1; i < sheet.response.size(); ++i) {
        const std::vector<std::string> words = words_in(sheet.response[i]);
        if (words.size() < 2) fault("a line too short: " + sheet.response[i]);
        if (words[0] == "file") {
            deck.files.push_back({words[1], lines_of_file(words)});
            continue;
        }
        elements += sheet.statement + " name=S" + std::to_string(i) + " type=" + sheet.response[i] + "\n";
        if (words[0] == sheet.name && own.empty()) own = words;
    }
    if (own.empty()) {
        if (sheet.examples.empty()) fault("the block has no example");
        own = words_in(sheet.examples[0]);
        elements += sheet.examples[0] + "\n";
    }

    deck.columns = variables_of(own, sheet);
    if (const std::optional<std::string> show = value_of(head, "show")) {
        std::vector<record_column> chosen;
        for (const std::string& name : split(*show, ',')) {
            const auto known =
                std::find_if(deck.columns.begin(), deck.columns.end(), [&](const auto& c) { return c.name == name; });
            chosen.push_back(known == deck.columns.end() ? record_column{name, ""} : *known);
        }
        deck.columns = std::move(chosen);
    }
    std::string names, outvars;
    for (const record_column& c : deck.columns) {
        names += " " + c.name;
        outvars += " " + c.name + "=var_of_" + c.name;
    }
    deck.columns.insert(deck.columns.begin(), {"time", "s"});
    if (const std::optional<std::string> x = value_of(head, "x")) {
        const auto over =
            std::find_if(deck.columns.begin(), deck.columns.end(), [&](const auto& c) { return c.name == *x; });
        if (over == deck.columns.end()) fault("it has no variable " + *x);
        deck.x = static_cast<int>(over - deck.columns.begin());
    }
    deck.lanes = value_of(head, "lanes") == "yes";
    const std::string step = value_of(head, "delt").value_or(part_of(seconds));
    deck.text = "title: " + sheet.summary() + "\nbegin_circuit\n" + elements + "outvar:" + outvars +
                "\nend_circuit\nbegin_solve\nsolve_type startup\nend_solve\nbegin_solve\nsolve_type trns\n"
                "initial_sol previous\nmethod: back_euler=yes t_end=" +
                t_end + " delt_const=" + step + "\nbegin_output\nfilename " + response_rows + "\nvariables:" + names +
                "\nend_output\nend_solve\nend_cf\n";
    return deck;
}

}  // namespace cli
