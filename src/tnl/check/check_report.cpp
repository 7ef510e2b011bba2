#include "tnl/check/check_report.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <set>

namespace cli {

namespace {

constexpr int most_of_a_code = 50;
constexpr std::size_t longest_text = 1000;  // characters of a message
constexpr std::size_t widest = 100;         // characters of a line that are shown

std::string counted(int n, const char* what) { return std::to_string(n) + " " + what + (n == 1 ? "" : "s"); }

// Bytes that are no printable ASCII: a terminal must not obey what stands in a deck. Names of no sensible length are
// cut.
std::string printable(std::string text) {
    if (text.size() > longest_text) text = text.substr(0, longest_text) + " ...";
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
    return text;
}

void add(check_report& report, bool is_error, const char* code, deck_word at, std::string message, std::string advice,
         std::optional<record_place> place = {}) {
    if (++report.count[code] > most_of_a_code) return;
    report.faults.push_back(
        {is_error, code, printable(std::move(message)), printable(std::move(advice)), at, std::move(place)});
}

}  // namespace

void check_report::error(const char* code, deck_word at, std::string message, std::string advice) {
    add(*this, true, code, at, std::move(message), std::move(advice));
}
void check_report::warning(const char* code, deck_word at, std::string message, std::string advice) {
    add(*this, false, code, at, std::move(message), std::move(advice));
}
void check_report::error_at(const char* code, const record_place& at, std::string message, std::string advice) {
    add(*this, true, code, {}, std::move(message), std::move(advice), at);
}
void check_report::warning_at(const char* code, const record_place& at, std::string message, std::string advice) {
    add(*this, false, code, {}, std::move(message), std::move(advice), at);
}
bool check_report::is_full(const char* code) const {
    const auto at = count.find(code);
    return at != count.end() && at->second >= most_of_a_code;
}
int check_report::n_errors() const {
    return static_cast<int>(
        std::count_if(faults.begin(), faults.end(), [](const check_fault& f) { return f.is_error; }));
}

void sort_faults(check_report& report) {
    // A word that is an error is not doubted as well.
    std::set<std::pair<int, int>> errors;
    for (const check_fault& f : report.faults)
        if (f.is_error && f.at.statement >= 0) errors.emplace(f.at.statement, f.at.word);
    std::erase_if(report.faults, [&](const check_fault& f) {
        return !f.is_error && errors.count({f.at.statement, f.at.word}) > 0;
    });
    const auto key = [](const check_fault& f) {
        return std::pair(f.at.line >= 0 || f.place ? -1 : f.at.statement < 0 ? INT_MAX : f.at.statement, f.at.word);
    };
    std::stable_sort(report.faults.begin(), report.faults.end(),
                     [&](const check_fault& a, const check_fault& b) { return key(a) < key(b); });
}

// Fields one after another, each behind its length.
std::string packed(const check_report& report) {
    std::string bytes;
    const auto put = [&](const std::string& field) { bytes += std::to_string(field.size()) + ":" + field; };
    const auto put_int = [&](int n) { put(std::to_string(n)); };
    put_int(static_cast<int>(report.faults.size()));
    for (const check_fault& f : report.faults) {
        const record_place place = f.place.value_or(record_place{});
        for (const int n : {int{f.is_error}, f.at.statement, f.at.word, f.at.line, int{f.place.has_value()}, place.line,
                            place.column})
            put_int(n);
        for (const std::string& field : {f.code, f.message, f.advice, place.file, place.text}) put(field);
    }
    for (const auto& [code, n] : report.count) {
        put(code);
        put_int(n);
    }
    return bytes;
}

std::optional<check_report> unpacked(std::string_view bytes, deck_view deck) {
    bool good = true;
    const auto take = [&] {
        const std::size_t colon = std::min(bytes.find(':'), bytes.size());
        const std::size_t n = std::strtoul(std::string(bytes.substr(0, colon)).c_str(), nullptr, 10);
        good = good && colon < bytes.size() && n <= bytes.size() - colon - 1;
        if (!good) return std::string();
        const std::string field(bytes.substr(colon + 1, n));
        bytes.remove_prefix(colon + 1 + n);
        return field;
    };
    const auto take_int = [&] { return std::atoi(take().c_str()); };
    check_report report{std::move(deck), {}, {}};
    for (int left = take_int(); left > 0 && good; --left) {
        check_fault f{};
        f.is_error = take_int() != 0;
        for (int* n : {&f.at.statement, &f.at.word, &f.at.line}) *n = take_int();
        const bool has_place = take_int() != 0;
        record_place place;
        for (int* n : {&place.line, &place.column}) *n = take_int();
        for (std::string* field : {&f.code, &f.message, &f.advice, &place.file, &place.text}) *field = take();
        if (has_place) f.place = place;
        report.faults.push_back(std::move(f));
    }
    while (good && !bytes.empty()) {
        const std::string code = take();
        report.count[code] = take_int();
    }
    if (!good) return {};
    return report;
}

record_place place_of_fault(const check_report& report, const check_fault& fault) {
    const file_chr& f = report.deck.statements;
    if (fault.place) return *fault.place;
    if (fault.at.statement >= 0 && fault.at.statement < f.n_lines())
        return place_in_files(report.deck, fault.at.statement, fault.at.word);
    // The line that is told, or the deck's last one.
    const deck_source& source = report.deck.source;
    if (source.origin.empty()) return {report.deck.path, 1, 1, ""};
    const std::size_t line = fault.at.line < 0 ? source.origin.size() - 1 : static_cast<std::size_t>(fault.at.line);
    const deck_source::place& p = source.origin[line];
    const deck_source::file& file = source.files[static_cast<std::size_t>(p.file)];
    return {file.path, p.line + 1, 1, file.lines[static_cast<std::size_t>(p.line)]};
}

std::string fault_text(const check_report& report, const check_fault& fault, const std::string& indent) {
    const bool has_statement = fault.at.statement >= 0 && fault.at.statement < report.deck.statements.n_lines();
    const record_place place = place_of_fault(report, fault);
    std::string out = indent + printable(place.file) + ":" + std::to_string(place.line) + ":" +
                      std::to_string(place.column) + ": " + (fault.is_error ? "error: " : "warning: ") + fault.message +
                      "\n";
    if (has_statement || fault.place) {  // the place, the line, the caret
        const std::string shown = place_with_caret(place);
        std::size_t at = shown.find('\n');
        while (at != std::string::npos) {
            const std::size_t end = shown.find('\n', at + 1);
            out += indent + shown.substr(at + 1, end == std::string::npos ? end : end - at - 1) + "\n";
            at = end;
        }
    }
    if (fault.at.line >= 0 && !place.text.empty()) {
        std::string line = printable(place.text.substr(0, widest));
        out += indent + "  " + line + "\n" + indent + "  " +
               std::string(std::min(line.find_first_not_of(' '), line.size()), ' ') + "^\n";
    }
    if (!fault.advice.empty()) out += indent + "  advice: " + fault.advice + "\n";
    return out;
}

std::string report_text(const check_report& report) {
    std::string out;
    for (const check_fault& f : report.faults) out += fault_text(report, f);
    for (const auto& [code, n] : report.count)
        if (n > most_of_a_code) out += std::to_string(n - most_of_a_code) + " more of the kind " + code + "\n";
    const int errors = report.n_errors(), warnings = report.n_warnings();
    out += printable(report.deck.path) + ": " +
           (errors + warnings == 0 ? std::string("no faults")
                                   : counted(errors, "error") + ", " + counted(warnings, "warning")) +
           "\n";
    return out;
}

std::string report_json(const check_report& report) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const check_fault& f : report.faults) {
        const record_place place = place_of_fault(report, f);
        nlohmann::ordered_json item;
        item["severity"] = f.is_error ? "error" : "warning";
        item["code"] = f.code;
        item["message"] = f.message;
        item["place"]["file"] = place.file;
        item["place"]["line"] = place.line;
        item["place"]["column"] = place.column;
        item["place"]["text"] = place.text;
        item["advice"] = f.advice;
        list.push_back(std::move(item));
    }
    // Decks may hold bytes that are no UTF-8.
    return list.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace cli
