#include "tnl/common/near_words.h"

#include <algorithm>
#include <climits>
#include <numeric>

#include "tnl/common/text.h"

namespace cli {

namespace {

constexpr std::size_t longest = 64;  // of words that anybody types; the work grows as the square

}  // namespace

int edit_distance(std::string_view a, std::string_view b) {
    const std::size_t more = std::max(a.size(), b.size());
    if (more > longest) return a == b ? 0 : static_cast<int>(std::min<std::size_t>(more, INT_MAX));
    std::vector<int> before, last, row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (std::size_t i = 0; i < a.size(); ++i) {
        before = std::move(last);
        last = row;
        row[0] = static_cast<int>(i) + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            row[j + 1] = std::min({last[j] + (a[i] != b[j]), row[j] + 1, last[j + 1] + 1});
            if (i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j])
                row[j + 1] = std::min(row[j + 1], before[j - 1] + 1);
        }
    }
    return row.back();
}

std::vector<std::string> near_words(const std::vector<std::string>& words, std::string_view word, std::size_t most) {
    if (word.empty() || word.size() > longest) return {};
    const std::string wanted = lower(word);
    std::vector<std::pair<int, std::string>> near;
    for (const std::string& candidate : words) {
        if (candidate == word || candidate.empty() || candidate.size() > longest) continue;
        const std::string other = lower(candidate);
        const int distance = edit_distance(wanted, other);
        const std::size_t shorter = std::min(wanted.size(), other.size());
        const bool begins = shorter > 2 && (other.starts_with(wanted) || wanted.starts_with(other));
        const bool short_pair = (shorter > 1 || other.size() < wanted.size()) && distance == 1 &&
                                wanted[0] == other[0];  // R1 and R2, g where gx is written
        if (distance <= static_cast<int>(std::max(wanted.size(), other.size())) / 3 || begins || short_pair)
            near.emplace_back(distance, candidate);
    }
    std::sort(near.begin(), near.end());
    near.erase(std::unique(near.begin(), near.end()), near.end());
    if (near.size() > most) near.resize(most);
    std::vector<std::string> out;
    out.reserve(near.size());
    for (const auto& [distance, candidate] : near) out.push_back(candidate);
    return out;
}

std::string near_text(const std::vector<std::string>& words, std::string_view word, std::string_view kind) {
    std::string out;
    for (const std::string& w : near_words(words, word))
        out += (out.empty() ? "; " + std::string(kind) + ": " : ", ") + w;
    return out;
}

}  // namespace cli
