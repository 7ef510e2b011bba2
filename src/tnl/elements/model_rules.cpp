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

void add_limit(model_rules& rules, const std::string& text, const std::set<std::string>& parameters) {
    const auto is_whole = [&](const limit& l) {
        return std::all_of(l.names.begin(), l.names.end(), [&](const auto& name) { return parameters.contains(name); });
    };
    rules.limit_texts.push_back(text);
    const std::size_t before = rules.limits.size();
    if (text.find("[k") == std::string::npos) {
        limit l = limit_of(text);
        if (is_whole(l) && !l.names.empty()) rules.limits.push_back(std::move(l));
    } else {
        for (int k = 1;; ++k) {
            limit l = limit_of(replaced(replaced(text, "[k+1]", std::to_string(k + 1)), "[k]", std::to_string(k)));
            if (!is_whole(l) || l.names.size() < 2) break;
            rules.limits.push_back(std::move(l));
        }
    }
    if (rules.limits.size() == before) rules.faults.push_back("limit of no parameter: " + text);
}

}  // namespace

const branch_word& words_of(branch_kind kind) { return branch_words[static_cast<int>(kind)]; }

limit limit_of(const std::string& text) {
    limit l{text, split(text, ' '), {}, false};
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
    std::set<std::string> parameters, nodes;
    const entry_lines lines = lines_of(entry, form);
    for (const char* list : {"iparms:", "rparms:"})
        for (const name_and_value& p : pairs_of(lines, list)) parameters.insert(p.name);
    for (const words& w : lines)
        if (w[0] == "nodes:")
            for (int j = 1; j < w.size(); ++j) nodes.insert(w.str(j));
    for (std::string line : split(entry.text, '\n')) {
        if (!line.starts_with("#=")) continue;
        if (line.ends_with('\r')) line.pop_back();
        const std::vector<std::string> w = split(line.substr(2), ' ');
        const auto kind = std::find_if(std::begin(branch_words), std::end(branch_words),
                                       [&](const branch_word& b) { return w.size() > 1 && b.word == w[1]; });
        if (w.size() > 3 && w[0] == "limit")
            add_limit(rules, line.substr(line.find("limit") + 6), parameters);
        else if (w.size() == 4 && w[0] == "branch" && kind != std::end(branch_words) && nodes.contains(w[2]) &&
                 nodes.contains(w[3]))
            rules.branches.push_back({w[2], w[3], static_cast<branch_kind>(kind - branch_words)});
        else if (w.size() == 2 && w[0] == "refuses" && w[1] == "dc")
            rules.refuses_dc = true;
        else if (w.size() == 1 && w[0] == "jumps")
            rules.jumps = true;
        else if (w.size() == 2 && w[0] == "computed" && parameters.contains(w[1]))
            rules.computed.push_back(w[1]);
        else
            rules.faults.push_back("not understood: " + line);
    }
    return rules;
}

}  // namespace cli
