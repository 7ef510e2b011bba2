#include "base/words.h"

#include <algorithm>
#include <unordered_map>

#include "base/halt.h"

namespace {

bool separates(char c) { return c == ' ' || c == '\t' || c == '='; }

bool holds_halting(const std::string& message) { return message.find("Halting") != std::string::npos; }

bool same_ci(std::string_view a, std::string_view b) {
    auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) == lower(y); });
}

// Tail of both check_word routines; given_lines names what would have been right.
[[noreturn]] void wrong_word(const char* routine, const std::string& word, const std::string& given_line,
                             const std::string& message) {
    if (holds_halting(message)) halt({message});
    halt({line(routine, ":"), "   word_out is: " + word, given_line,
          "   message from calling routine:", "   " + message, "   Halting..."});
}

[[noreturn]] void word_repeated(const char* routine, const std::string& name, int i, int j,
                                const std::string& message) {
    if (holds_halting(message)) halt({message});
    halt({line(routine, ": "), line("   The string <", name, "> is repeated."), line("   i = ", i), line("  j = ", j),
          "   Message from the calling routine:", "   " + message});
}

}  // namespace

// ---- splitting ----

void add_words(std::string_view text, words& w) {
    for_each_word(text, [&](std::string_view word) { w.add(word); });
}

words parse_line_2(std::string_view text) {
    words w;
    add_words(text, w);
    return w;
}

std::string_view word_first_1(std::string_view text) {
    const auto begin = std::find_if_not(text.begin(), text.end(), separates);
    const auto end = std::find_if(begin, text.end(), separates);
    return text.substr(static_cast<std::size_t>(begin - text.begin()), static_cast<std::size_t>(end - begin));
}

int count_words_1(std::string_view text) { return parse_line_2(text).size(); }

bool check_blank_line(std::string_view text) { return std::all_of(text.begin(), text.end(), separates); }

void remove_space_pre(std::string& text) { text.erase(0, std::min(text.find_first_not_of(' '), text.size())); }

void remove_space_post(std::string& text) { text.erase(text.find_last_not_of(' ') + 1); }

std::string joined(const words& w) {
    std::string all;
    for (int i = 0; i < w.size(); ++i) {
        if (i > 0) all += ' ';
        all += w[i];
    }
    return all;
}

// ---- searching ----

int find_word_1(const words& w, std::string_view word) {
    for (int i = 0; i < w.size(); ++i)
        if (w[i] == word) return i;
    return -1;
}

int find_word_1_ci(const words& w, std::string_view word) {
    for (int i = 0; i < w.size(); ++i)
        if (same_ci(w[i], word)) return i;
    return -1;
}

int find_word_EO_1(const words& w, std::string_view word, int flag_eo) {
    if (flag_eo < odd_words || flag_eo > all_words) halt({line(" find_word_EO_1: flag_eo = ", flag_eo, " Halting..")});
    const int start = flag_eo == odd_words ? 1 : 0;
    const int step = flag_eo == all_words ? 1 : 2;
    for (int i = start; i < w.size(); i += step)
        if (w[i] == word) return i;
    return -1;
}

int find_word_6(const std::vector<std::string>& list, std::string_view word) {
    const auto found = std::find(list.begin(), list.end(), word);
    return found == list.end() ? -1 : static_cast<int>(found - list.begin());
}

bool find_word_2(const words& w, std::string_view word, int position) {
    if (position < 0 || position >= w.size())
        halt({line("find_word_2: position not in valid range. position = ", position, " Halting...")});
    return w[position] == word;
}

bool find_word_7(const words& w, std::string_view a, std::string_view b, int position) {
    return find_word_2(w, a, position) || w[position] == b;
}

void word_not_found(const char* routine, std::string_view word, const std::string& message) {
    if (holds_halting(message)) halt({message});
    halt({line(routine, ": word not found."), line("   word is: ", word),
          "   message from calling routine:", "   " + message, "   Halting..."});
}

int find_word_3(const words& w, std::string_view word, const std::string& message) {
    const int i = find_word_1(w, word);
    if (i == -1) word_not_found("find_word_3", word, message);
    return i;
}

void find_word_4(const words& w, std::string_view word, int position, const std::string& message) {
    if (!find_word_2(w, word, position)) word_not_found("find_word_4", word, message);
}

int find_word_EO_2(const words& w, std::string_view word, int flag_eo, const std::string& message) {
    const int i = find_word_EO_1(w, word, flag_eo);
    if (i == -1) word_not_found("find_word_EO_2", word, message);
    return i;
}

void check_word_2(const words& w, int position, std::string_view given, const std::string& message) {
    const std::string word = pick_word_1(w, position);
    if (word != given) wrong_word("check_word_2", word, line("   word_given is: ", given), message);
}

void check_word_3(const words& w, int position, std::string_view given_a, std::string_view given_b,
                  const std::string& message) {
    const std::string word = pick_word_1(w, position);
    if (word != given_a && word != given_b)
        wrong_word("check_word_3", word, line("   given words are: ", given_a, " ", given_b), message);
}

std::string pick_word_1(const words& w, int index) {
    at_word(index);
    if (index < 0 || index >= w.size())
        halt({"pick_word_1: index_word is too large! Halting..", line("  chr_in = ", w.chars()),
              line("  index_word = ", index)});
    return w.str(index);
}

bool check_word_1(const words& w, int index, std::string_view word) {
    if (index < 0 || index >= w.size()) halt({"check_word_1: index_word is too large! Halting.."});
    return w[index] == word;
}

bool add_word_1(words& w, std::string_view word) {
    if (find_word_1(w, word) != -1) return false;
    w.add(word);
    return true;
}

// ---- repeats: one pass over a hash map ----

void check_word_repeat_1(const std::vector<std::string>& list, const std::string& message) {
    struct places {
        int first, second;
    };
    std::unordered_map<std::string_view, places> seen;
    seen.reserve(list.size());
    int i = -1, j = -1;
    for (int k = 0; k < static_cast<int>(list.size()); ++k) {
        const auto [at, is_new] = seen.try_emplace(list[static_cast<std::size_t>(k)], places{k, -1});
        places& p = at->second;
        if (is_new || p.second != -1) continue;
        p.second = k;
        if (i == -1 || p.first < i) i = p.first, j = k;
    }
    if (i != -1) word_repeated("check_word_repeat_1", list[static_cast<std::size_t>(i)], i, j, message);
}

void check_word_repeat_2(const std::vector<std::string>& a, const std::vector<std::string>& b,
                         const std::string& message) {
    std::unordered_map<std::string_view, int> first_in_b;
    first_in_b.reserve(b.size());
    for (int j = 0; j < static_cast<int>(b.size()); ++j) first_in_b.try_emplace(b[static_cast<std::size_t>(j)], j);
    for (int i = 0; i < static_cast<int>(a.size()); ++i) {
        const std::string& name = a[static_cast<std::size_t>(i)];
        const auto found = first_in_b.find(name);
        if (found != first_in_b.end()) word_repeated("check_word_repeat_2", name, i, found->second, message);
    }
}
