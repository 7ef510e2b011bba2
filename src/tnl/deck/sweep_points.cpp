#include "tnl/deck/sweep_points.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "base/words.h"
#include "settings/solve_task.h"

namespace cli {

namespace {

constexpr double most_points = 1000;  // that are told by their values

// A number, or the name of a constant that the deck gives as one; not a number for all else.
double value_of_word(const deck_view& deck, const std::string& word) {
    double x = NAN;
    if (is_double(word, x)) return x;
    const statement_range circuit = circuit_range(deck);
    for (int i = 0; i < circuit.end; ++i)
        if (deck.statements.begins(i, "greal"))
            if (const std::string value = value_of(deck, i, word); !value.empty() && is_double(value, x)) return x;
    return NAN;
}

// Without points where the words do not tell them.
sweep_range range_of(const deck_view& deck, int i_statement) {
    const file_chr& s = deck.statements;
    const auto number = [&](std::string_view key) {
        const std::string word = value_of(deck, i_statement, key, 2);
        return word.empty() ? NAN : value_of_word(deck, word);
    };
    sweep_range r;
    const std::string form = value_of(deck, i_statement, "type", 2);
    double n = 0;
    if (form == "table") {
        for (int j = 4; j < s.n_words(i_statement); ++j)
            r.values.push_back(value_of_word(deck, std::string(s.word(i_statement, j))));
        n = static_cast<double>(r.values.size());
        for (const double x : r.values) n = std::isfinite(x) ? n : 0;
    } else if (form == "linear" || form == "log") {
        r.type = form == "linear" ? sweep_range::linear : sweep_range::log;
        r.from = number("from");
        r.to = number("to");
        n = number("n_points");
        if (std::isnan(n) && form == "linear") n = std::trunc((r.to - r.from) / number("div") + 0.5) + 1;
        const bool is_range = std::isfinite(r.from) && std::isfinite(r.to) && (form == "linear" || r.from * r.to > 0);
        if (!is_range || n < 2) n = 0;
    }
    r.n = n >= 1 && n <= most_points ? static_cast<int>(n) : 0;
    return r;
}

struct sweep_statement {
    std::string word;
    sweep_range range;
    bool sync = false;
};

std::vector<sweep_statement> sweeps_in(const deck_view& deck, const statement_range& block) {
    std::vector<sweep_statement> all;
    for (int i = block.begin; i < block.end; ++i) {
        const bool sync = deck.statements.begins(i, "vary_parm_sync");
        if ((!sync && !deck.statements.begins(i, "vary_parm")) || deck.statements.n_words(i) < 2) continue;
        all.push_back({std::string(deck.statements.word(i, 1)), range_of(deck, i), sync});
    }
    return all;
}

std::vector<swept_item> points_of(const std::vector<sweep_statement>& sweeps) {
    double n_grid = 1, n_sync = 1;
    for (const sweep_statement& s : sweeps) {
        if (s.range.n == 0) return {};
        if (s.sync)
            n_sync = s.range.n;
        else
            n_grid *= s.range.n;
    }
    if (n_grid * n_sync > most_points) return {};
    const int n = static_cast<int>(n_grid), all = n * static_cast<int>(n_sync);
    int faster = 1;  // points of the vary_parm behind this one
    std::vector<swept_item> items(sweeps.size());
    for (std::size_t k = sweeps.size(); k-- > 0;) {
        const sweep_range& range = sweeps[k].range;
        items[k].word = sweeps[k].word;
        for (int point = 0; point < all; ++point) {
            const int i = sweeps[k].sync ? point / n : point / faster % range.n;
            items[k].values.push_back(i < range.n ? range.at(i) : NAN);
        }
        if (!sweeps[k].sync) faster *= range.n;
    }
    return items;
}

}  // namespace

std::vector<swept_item> swept_items(const deck_view& deck, const statement_range& block) {
    return points_of(sweeps_in(deck, block));
}

swept_curves curves_of_sweeps(const deck_view& deck, const statement_range& block) {
    std::vector<sweep_statement> sweeps = sweeps_in(deck, block);
    if (sweeps.empty()) return {};
    const auto last = std::find_if(sweeps.rbegin(), sweeps.rend(), [](const sweep_statement& s) { return !s.sync; });
    const auto steps = last == sweeps.rend() ? sweeps.begin() : std::prev(last.base());
    swept_curves found;
    found.steps.word = steps->word;
    for (int i = 0; i < steps->range.n; ++i) found.steps.values.push_back(steps->range.at(i));
    if (last == sweeps.rend()) return found;
    sweeps.erase(steps);
    found.curves = points_of(sweeps);
    // Between the steps of vary_parm_sync no line is left free: only the number of rows parts their curves.
    const bool any_sync = std::any_of(sweeps.begin(), sweeps.end(), [](const sweep_statement& s) { return s.sync; });
    if (any_sync && found.steps.values.empty()) found.curves.clear();
    return found;
}

}  // namespace cli
