#include "tnl/check/advice.h"

#include <algorithm>
#include <set>

#include "tnl/common/near_words.h"

namespace cli {

namespace {

// Blanks and line ends as one blank, case kept.
std::string flat(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const bool blank = c == ' ' || c == '\n' || c == '\t' || c == '\r';
        if (blank && (out.empty() || out.back() == ' ')) continue;
        out += blank ? ' ' : c;
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out;
}

bool flat_fits(std::string_view text, std::string_view pattern, std::string* value) {
    std::size_t at = 0;
    for (std::size_t n_piece = 0; !pattern.empty(); ++n_piece) {
        const std::size_t star = std::min(pattern.find('*'), pattern.size());
        const std::string_view piece = pattern.substr(0, star);
        const std::size_t found = text.find(piece, at);
        if (found == std::string_view::npos) return false;
        if (value != nullptr && n_piece == 1) *value = text.substr(at, found - at);
        at = found + piece.size();
        pattern.remove_prefix(std::min(star + 1, pattern.size()));
    }
    return true;
}

// Words of letters, without case.
std::set<std::string> words_of_text(std::string_view text) {
    std::set<std::string> words;
    std::string word;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        const char c = i < text.size() ? text[i] : ' ';
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_') {
            word += c;
        } else if (c >= 'A' && c <= 'Z') {
            word += static_cast<char>(c | 0x20);
        } else {
            if (word.size() > 2 && word != "halting" && word != "the") words.insert(word);
            word.clear();
        }
    }
    return words;
}

constexpr std::size_t longest_question = 400;  // characters that are looked at

bool among(const std::set<std::string>& words, const std::string& word) {
    if (words.count(word)) return true;
    if (word.size() < 5) return false;
    return std::any_of(words.begin(), words.end(), [&](const std::string& w) {
        const bool near_length = w.size() <= word.size() + 1 && word.size() <= w.size() + 1;
        return w.size() >= 5 && (w.starts_with(word) || word.starts_with(w) ||
                                 (near_length && w[0] == word[0] && edit_distance(w, word) <= 1));
    });
}

}  // namespace

const advice_text* advice_of(const advice_pattern& row) {
    for (const advice_text& t : advice_texts())
        if (t.id == row.id) return &t;
    return nullptr;
}

bool fits(std::string_view text, std::string_view pattern, std::string* value) {
    return flat_fits(flat(text), pattern, value);
}

const advice_text* find_advice(std::string_view message) {
    const std::string text = flat(message);
    const advice_text* aside = nullptr;  // what is no fault says nothing of a stop behind it
    for (const advice_pattern& row : advice_patterns())
        if (flat_fits(text, row.pattern, nullptr)) {
            const advice_text* const found = advice_of(row);
            if (found == nullptr || !found->meaning.ends_with("(not a fault).")) return found;
            if (aside == nullptr) aside = found;
        }
    return aside;
}

std::vector<const advice_pattern*> similar_patterns(std::string_view text, std::size_t most) {
    const std::set<std::string> asked = words_of_text(text.substr(0, longest_question));
    std::vector<std::pair<double, const advice_pattern*>> scored;
    for (const advice_pattern& row : advice_patterns()) {
        const advice_text* t = advice_of(row);
        const std::set<std::string> in_pattern = words_of_text(row.pattern);
        const std::set<std::string> in_meaning = t == nullptr ? in_pattern : words_of_text(t->meaning);
        double score = 0;
        for (const std::string& w : asked) score += among(in_pattern, w) ? 1.0 : among(in_meaning, w) ? 0.5 : 0.0;
        if (!asked.empty()) score /= static_cast<double>(asked.size());
        if (score >= 0.5) scored.emplace_back(-score, &row);
    }
    std::stable_sort(scored.begin(), scored.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<const advice_pattern*> rows;
    std::set<std::string_view> ids;
    for (const auto& [score, row] : scored)
        if (rows.size() < most && ids.insert(row->id).second) rows.push_back(row);
    return rows;
}

std::string explained(const advice_text& text) {
    std::string out = "meaning: " + std::string(text.meaning) + "\n";
    if (!text.causes.empty()) out += "causes:  " + std::string(text.causes) + "\n";
    if (!text.mend.empty()) out += "to do:   " + std::string(text.mend) + "\n";
    return out;
}

}  // namespace cli
