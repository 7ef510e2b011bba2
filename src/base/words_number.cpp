// Numbers in words. Everything here reads as in the C locale, whatever locale the process has.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include "base/halt.h"
#include "base/words.h"

namespace {

[[noreturn]] void bad_number(const char* kind, std::string_view word) {
    halt({line("check ", kind, " string: <", word, ">"), "  (brackets are not part of the string)", "  Halting..."});
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_hex(char c) { return is_digit(c) || ((c | 0x20) >= 'a' && (c | 0x20) <= 'f'); }

// What a number beyond the range of double becomes: 0 or infinity, by the weight of its first digit that is not 0.
//   exponent_letter  'e' or 'p'
//   digit            weight of one place in the exponent's unit: 1 for decimal digits, 4 bits for hexadecimal ones
double out_of_range(std::string_view text, char exponent_letter, int digit) {
    std::int64_t weight = 0;
    bool behind_point = false, counting = false;
    std::size_t i = 0;
    for (; i < text.size() && (text[i] | 0x20) != exponent_letter; ++i) {
        if (text[i] == '.') {
            behind_point = true;
            continue;
        }
        if (counting && !behind_point) weight += digit;
        if (!counting && behind_point) weight -= digit;
        counting = counting || text[i] != '0';
    }
    std::int64_t exponent = 0;
    if (i < text.size()) {
        const bool minus = text[++i] == '-';
        if (text[i] == '-' || text[i] == '+') ++i;
        for (; i < text.size(); ++i)
            if (exponent < INT64_C(1000000000000)) exponent = 10 * exponent + (text[i] - '0');
        if (minus) exponent = -exponent;
    }
    return weight + exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

// Where a hexadecimal number may end: from_chars would take "p+-1" for an exponent.
const char* hex_end(const char* begin, const char* end) {
    const char* p = std::find_if(begin, end, [](char c) { return (c | 0x20) == 'p'; });
    if (p == end) return end;
    const char* q = p + 1;
    if (q != end && (*q == '-' || *q == '+')) ++q;
    return q != end && is_digit(*q) ? end : p;
}

// strtod of the C locale: number of characters used, 0 if there is no number.
std::size_t c_strtod(std::string_view text, double& value) {
    value = 0;
    std::size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))) ++i;
    bool minus = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) minus = text[i++] == '-';
    if (i == text.size() || text[i] == '-') return 0;  // from_chars would take a second sign

    const char *begin = text.data() + i, *end = text.data() + text.size();
    std::from_chars_result got{begin, std::errc::invalid_argument};
    if (end - begin > 2 && begin[0] == '0' && (begin[1] | 0x20) == 'x' && (is_hex(begin[2]) || begin[2] == '.')) {
        got = std::from_chars(begin + 2, hex_end(begin, end), value, std::chars_format::hex);
        if (got.ec == std::errc::result_out_of_range)
            value = out_of_range({begin + 2, static_cast<std::size_t>(got.ptr - begin - 2)}, 'p', 4);
    }
    if (got.ec == std::errc::invalid_argument) {  // of "0x" without digits behind it the 0 is a number
        got = std::from_chars(begin, end, value, std::chars_format::general);
        if (got.ec == std::errc::result_out_of_range)
            value = out_of_range({begin, static_cast<std::size_t>(got.ptr - begin)}, 'e', 1);
    }
    if (got.ec == std::errc::invalid_argument) return 0;
    if (minus) value = -value;
    return static_cast<std::size_t>(got.ptr - text.data());
}

// Factor of a scale letter; 0 if the character is none. "M" is mega, "m" is milli; only k has two spellings.
double scale_of(char c) {
    switch (c) {
        case 'G':
            return 1e9;
        case 'M':
            return 1e6;
        case 'k':
        case 'K':
            return 1e3;
        case 'm':
            return 1e-3;
        case 'u':
            return 1e-6;
        case 'n':
            return 1e-9;
        case 'p':
            return 1e-12;
        case 'f':
            return 1e-15;
        default:
            return 0;
    }
}

}  // namespace

int chr_to_int(std::string_view word) {
    int value = 0;
    const char* end = word.data() + word.size();
    const auto got = std::from_chars(word.data(), end, value);
    if (got.ec != std::errc{} || got.ptr != end) bad_number("integer", word);
    return value;
}

namespace {
// The number of a word, which may be infinite or not a number; false if the word is none.
bool read_double(std::string_view word, double& value) {
    if (word.empty()) return false;
    const double scale = scale_of(word.back());
    const std::string_view number = scale == 0 ? word : word.substr(0, word.size() - 1);
    double x = 0;
    if (number.empty() || c_strtod(number, x) != number.size()) return false;
    value = scale == 0 ? x : x * scale;
    return true;
}
}  // namespace

double finite_number(double value, std::string_view word) {
    if (!std::isfinite(value))
        halt({line("check double string: <", word, ">"), "  (brackets are not part of the string)",
              line("  value = ", std::isnan(value) ? std::fabs(value) : value), "  Halting..."});
    return value;
}

bool is_double(std::string_view word, double& value) {
    double x = 0;
    if (!read_double(word, x) || !std::isfinite(x)) return false;
    value = x;
    return true;
}

double chr_to_double(std::string_view word) {
    if (word.empty()) halt({"chr_to_double: word_in is empty!"});
    if (word.find(' ') != std::string_view::npos) halt({"chr_to_double: space not allowed in input string."});
    if (word.find('\t') != std::string_view::npos) halt({"chr_to_double: tab not allowed in input string."});
    double value = 0;
    if (!read_double(word, value)) bad_number("double", word);
    return finite_number(value, word);
}

double chr_to_double_1(std::string_view word) {
    if (word.empty()) halt({"empty string. Halting..."});
    const double scale = scale_of(word.back());
    double value = 0;
    c_strtod(scale == 0 ? word : word.substr(0, word.size() - 1), value);
    return scale == 0 ? value : value * scale;
}

double chr_to_double_4(std::string_view word) {
    if (word.empty()) halt({"empty string. Halting..."});
    double value = 0;
    if (c_strtod(word, value) != word.size()) bad_number("double", word);
    return finite_number(value, word);
}

int chr_to_int_3(const words& w, int i) { return chr_to_int(pick_word_1(w, i)); }

double chr_to_double_3(const words& w, int i) { return chr_to_double(pick_word_1(w, i)); }

int tf_to_int(int tf) {
    if (tf != 0 && tf != 1) halt({line("   tf=", tf)});
    return tf;
}

truefalse int_to_tf(int i) {
    if (i != 0 && i != 1) halt({"int_to_tf: wrong argument? Halting..."});
    return i == 1 ? int_T : int_F;
}

std::string real_spice_to_tarnel(std::string_view word) {
    struct suffix {
        std::string_view classic, ours;
        double factor;  // where no letter of ours says it
    };
    // "meg" and "mil" stand before "m". A mil is a thousandth of an inch.
    constexpr suffix suffixes[] = {{"meg", "M", 0}, {"mil", "", 25.4e-6}, {"t", "", 1e12}, {"g", "G", 0},
                                   {"k", "k", 0},   {"m", "m", 0},        {"u", "u", 0},   {"n", "n", 0},
                                   {"p", "p", 0},   {"f", "f", 0}};
    // The number ends before an x: there are no hexadecimal numbers in such decks. Neither is "-inf" one.
    const std::size_t first = !word.empty() && (word[0] == '-' || word[0] == '+') ? 1 : 0;
    const bool begins = first < word.size() && (is_digit(word[first]) || word[first] == '.');
    double value = 0;
    const std::size_t n = begins ? c_strtod(word.substr(0, word.find_first_of("xX")), value) : 0;
    if (n == 0) halt({"real_spice_to_tarnel: something wrong?", line("  Check this word: ", word)});

    const std::string number(word.substr(0, n));
    std::string unit(word.substr(n));
    for (char& c : unit)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c | 0x20);
    for (const suffix& s : suffixes) {
        if (!unit.starts_with(s.classic)) continue;
        if (s.factor == 0) return number + std::string(s.ours);
        char text[32];
        const auto put = std::to_chars(text, text + sizeof text, value * s.factor);
        return std::string(text, put.ptr);
    }
    return number;  // the rest is a unit
}
