// Single words: cutting, comparing, copying.
#include "base/halt.h"
#include "base/words.h"

cut_word extract_l_r_2(std::string_view word, std::string_view key) {
    cut_word cut;
    const std::size_t at = word.find(key);
    if (at == std::string_view::npos) {
        cut.right = word.substr(word.empty() ? 0 : 1);
        return cut;
    }
    cut.found = true;
    cut.left = word.substr(0, at);
    cut.right = word.substr(at + key.size());
    return cut;
}

cut_word extract_l_r_1(std::string_view word, std::string_view key, const std::string& message) {
    cut_word cut = extract_l_r_2(word, key);
    if (!cut.found) {
        if (message.find("Halting") != std::string::npos) halt({message});
        halt({line("find_sub_word: ", key, " was not found."), "Message from calling routine:", message});
    }
    return cut;
}

cut_sides extract_l_r_3a(std::string_view word, std::string_view key) {
    cut_sides cut{extract_l_r_2(word, key)};
    cut.has_left = !cut.left.empty();
    cut.has_right = !cut.right.empty();
    return cut;
}

cut_word extract_middle_1(std::string_view word, char key) {
    if (word.find_first_of(" \t") != std::string_view::npos)
        halt({"extract_middle_1: space not allowed in input string."});
    cut_word cut;
    const std::size_t first = word.find(key);
    if (first == std::string_view::npos) return cut;
    const std::size_t second = word.find(key, first + 1);
    if (second == std::string_view::npos) return cut;
    cut.found = true;
    cut.left = word.substr(0, first);
    cut.right = word.substr(first + 1, second - first - 1);
    return cut;
}

cut_word extract_brckt_2(std::string_view word) {
    cut_word cut;
    const std::size_t open = word.find('(');
    if (open == std::string_view::npos) return cut;
    const std::size_t close = word.find(')', open);
    if (close == std::string_view::npos) return cut;
    cut.found = true;
    cut.left = word.substr(0, open);
    cut.right = word.substr(open + 1, close - open - 1);
    return cut;
}

cut_word extract_brckt_1(std::string_view word) {
    cut_word cut = extract_brckt_2(word);
    if (!cut.found)
        halt({word.find('(') == std::string_view::npos ? "extract_brckt_1: left bracket not found. Halting..."
                                                       : "extract_brckt_1: right bracket not found. Halting...",
              line("   word_in is ", word)});
    return cut;
}

bool assign_flag_1(std::string_view word) { return word == "yes"; }

void compare_word_1b(std::string_view a, std::string_view b, const std::string& message) {
    if (a != b) halt({"compare_word_1b: strings do not match.", message});
}

std::string strcpy_chk(std::string_view word, int m) {
    if (m <= 0 || word.size() >= static_cast<std::size_t>(m))
        halt({line("strcpy_chk: M is too small. l=", word.size())});
    return std::string(word);
}
