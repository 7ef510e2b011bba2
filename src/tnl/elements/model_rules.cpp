#include "tnl/elements/model_rules.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "base/words.h"
#include "tnl/common/text.h"

namespace cli {

namespace {

constexpr branch_word branch_words[] = {
    // in the order of branch_kind
    {"conducting", "current follows voltage"},
    {"one_way", "a switch that conducts one way"},
    {"voltage", "an ideal voltage"},
    {"winding", "a winding of an ideal transformer"},
    {"current", "an ideal current"},
    {"controlled_current", "a controlled current"},
    {"capacitor", "open in dc, a given voltage in start-up"},
    {"inductor", "a short in dc, a given current in start-up"},
};

struct comparison {
    std::string_view word;
    bool (*holds)(double a, double b);
};
bool is_near(double a, double b) { return std::abs(a - b) <= 1e-9 * std::max(std::abs(a), std::abs(b)); }
constexpr comparison comparisons[] = {
    {"<", [](double a, double b) { return a < b; }},
    {">", [](double a, double b) { return a > b; }},
    {"!=", [](double a, double b) { return a != b; }},
    {"<=", [](double a, double b) { return a <= b || is_near(a, b); }},
    {">=", [](double a, double b) { return a >= b || is_near(a, b); }},
};
const comparison* comparison_of(std::string_view word) {
    const auto at = std::find_if(std::begin(comparisons), std::end(comparisons),
                                 [&](const comparison& c) { return c.word == word; });
    return at == std::end(comparisons) ? nullptr : at;
}

using value_function = std::function<double(const std::string&)>;

double product(const std::string& word, const value_function& value_of) {
    double all = 1;
    for (const std::string& factor : split(word, '*')) {
        double x = 0;
        all *= is_double(factor, x) ? x : value_of(factor);
    }
    return all;
}

enum class verdict { holds, broken, unknown };

// Of the comparisons that begin at a word; goes on to "if" or the end.
verdict judge(const std::vector<std::string>& words, std::size_t& i, const value_function& value_of) {
    verdict all = verdict::holds;
    const comparison* last = nullptr;
    for (double left = 0; i < words.size() && words[i] != "if";) {
        double side = 0;
        for (; i < words.size() && words[i] != "if" && comparison_of(words[i]) == nullptr; ++i)
            if (words[i] != "+") side += product(words[i], value_of);
        if (last != nullptr && (std::isnan(left) || std::isnan(side))) {
            if (all == verdict::holds) all = verdict::unknown;
        } else if (last != nullptr && !last->holds(left, side)) {
            all = verdict::broken;
        }
        left = side;
        last = i < words.size() ? comparison_of(words[i]) : nullptr;
        if (last != nullptr) ++i;
    }
    return all;
}

constexpr std::pair<std::string_view, lost_pulses::kind> pulse_words[] = {
    {"0", lost_pulses::kind::low}, {"1", lost_pulses::kind::high}, {"any", lost_pulses::kind::any}};

void add_limit(std::vector<limit>& limits, const std::string& text, int line, const std::set<std::string>& parameters,
               std::vector<std::string>& faults) {
    const auto is_whole = [&](const limit& l) {
        return std::all_of(l.names.begin(), l.names.end(), [&](const auto& name) { return parameters.contains(name); });
    };
    const auto add = [&](limit&& l) {
        l.line = line;
        limits.push_back(std::move(l));
    };
    const std::size_t before = limits.size();
    if (text.find("[k") == std::string::npos) {
        limit l = limit_of(text);
        if (is_whole(l) && !l.names.empty()) add(std::move(l));
    } else {
        for (int k = 1;; ++k) {
            limit l = limit_of(replaced(replaced(text, "[k+1]", std::to_string(k + 1)), "[k]", std::to_string(k)));
            if (!is_whole(l) || l.names.size() < 2) break;
            add(std::move(l));
        }
    }
    if (limits.size() == before) faults.push_back("limit of no parameter: " + text);
}

// False: the line is none of these, or names what the entry lacks.
bool add_doubt(doubt_rules& doubts, const std::vector<std::string>& w, const std::set<std::string>& parameters,
               const std::set<std::string>& inputs) {
    const auto has_inputs = [&](std::size_t from, std::size_t to) {
        return from < to &&
               std::all_of(w.begin() + static_cast<std::ptrdiff_t>(from), w.begin() + static_cast<std::ptrdiff_t>(to),
                           [&](const std::string& name) { return inputs.contains(name); });
    };
    const std::string_view first = w.empty() ? std::string_view() : w[0];
    if (first == "pulses" && w.size() > 3 && parameters.contains(w[2]) && has_inputs(3, w.size())) {
        const auto* kind = std::find_if(std::begin(pulse_words), std::end(pulse_words),
                                        [&](const auto& p) { return p.first == w[1]; });
        if (kind == std::end(pulse_words)) return false;
        for (std::size_t j = 3; j < w.size(); ++j) doubts.lost.push_back({kind->second, w[2], w[j]});
        return true;
    }
    if (first == "edges" && w.size() == 3 && parameters.contains(w[1]) && has_inputs(2, 3)) {
        doubts.lost.push_back({lost_pulses::kind::edges, w[1], w[2]});
        return true;
    }
    double x = 0;
    if (first == "forces" && w.size() == 4 && has_inputs(1, 2) && parameters.contains(w[2]) &&
        (parameters.contains(w[3]) || is_double(w[3], x))) {
        doubts.forced.push_back({w[1], w[2], w[3]});
        return true;
    }
    if (first == "excludes" && w.size() == 3 && has_inputs(1, 3)) {
        doubts.excluded.push_back({w[1], w[2]});
        return true;
    }
    return false;
}

}  // namespace

const branch_word& words_of(branch_kind kind) { return branch_words[static_cast<int>(kind)]; }

limit limit_of(const std::string& text) {
    limit l{text, split(text, ' '), {}, false, 0};
    int n_terms = 0;
    for (const std::string& word : l.words) {
        if (word == "if") n_terms = 2;
        if (word == "if" || word == "+" || comparison_of(word) != nullptr) continue;
        bool has_name = false;
        for (std::string& factor : split(word, '*')) {
            double x = 0;
            if (is_double(factor, x)) continue;
            has_name = true;
            if (std::find(l.names.begin(), l.names.end(), factor) == l.names.end())
                l.names.push_back(std::move(factor));
        }
        n_terms += has_name ? 1 : 0;
    }
    l.is_of_one = n_terms == 1;
    return l;
}

bool is_broken(const limit& l, const value_function& value_of) {
    std::size_t i = 0;
    if (judge(l.words, i, value_of) != verdict::broken) return false;
    return i == l.words.size() || judge(l.words, ++i, value_of) == verdict::holds;
}

model_rules rules_of(const library_entry& entry, const library_form& form) {
    model_rules rules;
    std::set<std::string> parameters, nodes, inputs;
    const entry_lines lines = lines_of(entry, form);
    for (const char* list : {"iparms:", "rparms:", "stparms:"})
        for (const name_and_value& p : pairs_of(lines, list)) parameters.insert(p.name);
    for (const words& w : lines)
        for (int j = 1; j < w.size(); ++j) {
            if (w[0] == "nodes:") nodes.insert(w.str(j));
            if (w[0] == "input_nodes:" || w[0] == "mainnodes_dgtl:") inputs.insert(w.str(j));
        }
    for (std::string line : split(entry.text, '\n')) {
        if (!line.starts_with("#=")) continue;
        if (line.ends_with('\r')) line.pop_back();
        const std::vector<std::string> w = split(line.substr(2), ' ');
        const auto is_doubt = [&] { return add_doubt(rules.doubts, w, parameters, inputs); };
        const auto kind = std::find_if(std::begin(branch_words), std::end(branch_words),
                                       [&](const branch_word& b) { return w.size() > 1 && b.word == w[1]; });
        const auto rest = [&] { return line.substr(line.find(w[0]) + w[0].size() + 1); };
        if (w.size() > 3 && w[0] == "limit") {
            rules.limit_texts.push_back(rest());
            add_limit(rules.limits, rest(), static_cast<int>(rules.limit_texts.size()), parameters, rules.faults);
        } else if (w.size() > 3 && w[0] == "expects") {
            rules.expect_texts.push_back(rest());
            add_limit(rules.doubts.expects, rest(), static_cast<int>(rules.expect_texts.size()), parameters,
                      rules.faults);
        } else if (w.size() == 4 && w[0] == "branch" && kind != std::end(branch_words) && nodes.contains(w[2]) &&
                   (nodes.contains(w[3]) || w[3] == reference_end)) {
            rules.branches.push_back({w[2], w[3], static_cast<branch_kind>(kind - branch_words)});
        } else if (w.size() == 2 && w[0] == "refuses" && w[1] == "dc") {
            rules.refuses_dc = true;
        } else if (w.size() == 1 && w[0] == "jumps") {
            rules.jumps = true;
        } else if (w.size() == 2 && w[0] == "computed" && parameters.contains(w[1])) {
            rules.computed.push_back(w[1]);
        } else if (!is_doubt()) {
            rules.faults.push_back("not understood: " + line);
        }
    }
    return rules;
}

}  // namespace cli
