#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale>
#include <random>

#include "base/words.h"
#include "halt_throws.h"

namespace {

std::string bad_text(const std::string& kind, const std::string& word) {
    return "check " + kind + " string: <" + word + ">\n  (brackets are not part of the string)\n  Halting...\n";
}

std::string not_finite(const std::string& word, const std::string& value) {
    return "check double string: <" + word + ">\n  (brackets are not part of the string)\n  value = " + value +
           "\n  Halting...\n";
}

bool same_bits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

}  // namespace

TEST(chr_to_int, takes_digits_with_an_optional_minus) {
    EXPECT_EQ(chr_to_int("0"), 0);
    EXPECT_EQ(chr_to_int("-17"), -17);
    EXPECT_EQ(chr_to_int("007"), 7);
    EXPECT_EQ(chr_to_int("2147483647"), std::numeric_limits<int>::max());
    EXPECT_EQ(chr_to_int("-2147483648"), std::numeric_limits<int>::min());
}

TEST(chr_to_int, refuses_anything_else_in_the_same_words) {
    for (const char* word :
         {"+5", "-", "", "1.0", "1e3", "1k", "0x10", "--1", "5-", "2147483648", "-2147483649", "inf"})
        EXPECT_HALT(chr_to_int(word), bad_text("integer", word));
    const std::string long_word(400, '9');
    EXPECT_HALT(chr_to_int(long_word), bad_text("integer", long_word));
}

TEST(chr_to_double, takes_one_scale_letter) {
    struct row {
        const char* word;
        double value;
    };
    const row rows[] = {
        {"1G", 1e9},   {"1M", 1e6},      {"1k", 1e3},   {"1K", 1e3},      {"1m", 1e-3},
        {"1u", 1e-6},  {"1n", 1e-9},     {"1p", 1e-12}, {"1f", 1e-15},    {"1e3", 1e3},
        {"1e3k", 1e6}, {"-2.5k", -2500}, {"+.5", 0.5},  {"5.", 5},        {"1.5E-3", 1.5e-3},
        {"0x10", 16},  {"0x1p-1", 0.5},  {"0x.8", 0.5}, {"0X1P4k", 16e3}, {"0x1f", 1e-15},  // the f is a scale
    };
    for (const row& r : rows) EXPECT_DOUBLE_EQ(chr_to_double(r.word), r.value) << r.word;
}

TEST(chr_to_double, refuses_words_that_read_as_no_finite_number) {
    for (const std::string& word :
         {std::string("1e400"), std::string(400, '9'), std::string("1e99999999999999999999"),
          std::string("0.000001e400"), std::string("0x1p5000"), std::string("infinity"), std::string("1e308k")})
        EXPECT_HALT(chr_to_double(word), not_finite(word, "inf"));
    EXPECT_HALT(chr_to_double("-1e400"), not_finite("-1e400", "-inf"));
    EXPECT_HALT(chr_to_double("NaN"), not_finite("NaN", "nan"));
    EXPECT_HALT(chr_to_double("-NaN"), not_finite("-NaN", "nan"));
}

TEST(is_double, is_false_of_what_is_no_finite_number) {
    double value = 7.0;
    for (const char* word : {"1e400", "NaN", "infinity", "abc", ""}) EXPECT_FALSE(is_double(word, value)) << word;
    EXPECT_EQ(value, 7.0);
    EXPECT_TRUE(is_double("1e308", value));
    EXPECT_EQ(value, 1e308);
}

TEST(chr_to_double, reads_numbers_next_to_nothing_as_zero) {
    EXPECT_TRUE(same_bits(chr_to_double("1e-400"), 0.0));
    EXPECT_TRUE(same_bits(chr_to_double("-1e-400"), -0.0));
    EXPECT_EQ(chr_to_double("1" + std::string(400, '0') + "e-400"), 1.0);
    EXPECT_EQ(chr_to_double("0." + std::string(400, '0') + "1e401"), 1.0);
    EXPECT_EQ(chr_to_double("0x1p-5000"), 0.0);
    EXPECT_EQ(chr_to_double("4.9e-324"), std::numeric_limits<double>::denorm_min());
}

TEST(chr_to_double, refuses_what_does_not_parse_to_the_end) {
    // "inf" and "nan" end in scale letters, and "in", "na" are no numbers.
    for (const char* word : {"m", "5meg", "1F", "1mm", "abc",   "1e",  "1e+", "1.2.3", "--1", "+-1", "-",
                             ".", "1,5",  "0x", "0xg", "0xinf", "inf", "nan", "k",     "1 ",  "a"}) {
        if (std::strchr(word, ' ')) continue;
        EXPECT_HALT(chr_to_double(word), bad_text("double", word));
    }
    const std::string with_nul("5\0", 2);
    EXPECT_HALT(chr_to_double(with_nul), bad_text("double", with_nul));
}

TEST(chr_to_double, names_an_empty_word_and_separators) {
    EXPECT_HALT(chr_to_double(""), "chr_to_double: word_in is empty!\n");
    EXPECT_HALT(chr_to_double("1 k"), "chr_to_double: space not allowed in input string.\n");
    EXPECT_HALT(chr_to_double("1\tk"), "chr_to_double: tab not allowed in input string.\n");
}

TEST(chr_to_double_1, takes_the_number_that_the_word_begins_with) {
    EXPECT_DOUBLE_EQ(chr_to_double_1("5xM"), 5e6);  // of "5x" the 5, scaled by the last letter
    EXPECT_EQ(chr_to_double_1("5meg"), 5.0);
    EXPECT_EQ(chr_to_double_1("abc"), 0.0);
    EXPECT_DOUBLE_EQ(chr_to_double_1("2.5V"), 2.5);
    EXPECT_HALT(chr_to_double_1(""), "empty string. Halting...\n");
}

TEST(chr_to_double_4, has_no_scale_letters) {
    EXPECT_EQ(chr_to_double_4("1.5e3"), 1500.0);
    EXPECT_HALT(chr_to_double_4("nan"), not_finite("nan", "nan"));
    EXPECT_HALT(chr_to_double_4("-inf"), not_finite("-inf", "-inf"));
    EXPECT_EQ(chr_to_double_4("0x1f"), 31.0);
    EXPECT_HALT(chr_to_double_4("1k"), bad_text("double", "1k"));
    EXPECT_HALT(chr_to_double_4(""), "empty string. Halting...\n");
}

// The process of the tests never leaves the C locale here, so the runtime's strtod is the rule itself.
TEST(chr_to_double_4, accepts_and_reads_what_strtod_reads_as_a_finite_number) {
    std::mt19937 rng(7);
    const std::string_view letters[] = {"0123456789.eE+-", "0123456789.", "0x1aFp+-.8", "infatyINFNAN(_0)", "01e-+.xk"};
    int accepted = 0;
    for (int trial = 0; trial < 200000; ++trial) {
        const std::string_view alphabet = letters[rng() % 5];
        std::string word(1 + rng() % 9, ' ');
        for (char& c : word) c = alphabet[rng() % alphabet.size()];
        if (trial % 7 == 0) word = "0x" + word;
        if (trial % 11 == 0) word += "e" + std::to_string(static_cast<int>(rng() % 700) - 350);
        char* end = nullptr;
        const double expected = std::strtod(word.c_str(), &end);
        const bool whole = *end == '\0' && std::isfinite(expected);
        double value = 0;
        const console_run heard = run_and_listen([&] { value = chr_to_double_4(word); });
        ASSERT_EQ(!heard.stopped, whole) << word;
        if (!whole) continue;
        ++accepted;
        ASSERT_TRUE(same_bits(value, expected)) << word;
    }
    EXPECT_GT(accepted, 20000);
}

TEST(chr_to_double_4, reads_printed_doubles_back_exactly) {
    std::mt19937_64 rng(11);
    for (int trial = 0; trial < 20000; ++trial) {
        const std::uint64_t bits = rng();
        double x;
        std::memcpy(&x, &bits, sizeof x);
        if (!std::isfinite(x)) continue;
        char text[64];
        std::snprintf(text, sizeof text, "%.17g", x);
        ASSERT_TRUE(same_bits(chr_to_double_4(text), x)) << text;
        std::snprintf(text, sizeof text, "%a", x);
        ASSERT_TRUE(same_bits(chr_to_double_4(text), x)) << text;
    }
}

// Streams take their decimal sign from the global C++ locale, strtod from that of C; the second can only be tried where
// such a locale is installed.
TEST(chr_to_double, does_not_depend_on_the_locale) {
    struct comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new comma));
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "nl_NL.UTF-8"})
        if (std::setlocale(LC_NUMERIC, name)) break;
    const double scaled = chr_to_double("1.5k"), hex = chr_to_double("0x1.8"), plain = chr_to_double_4("1.5");
    std::locale::global(before);
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(scaled, 1500.0);
    EXPECT_EQ(hex, 1.5);
    EXPECT_EQ(plain, 1.5);
}

TEST(numbers_of_a_word_array, are_picked_by_position) {
    const words w{"n", "-3", "1.5k"};
    EXPECT_EQ(chr_to_int_3(w, 1), -3);
    EXPECT_EQ(chr_to_double_3(w, 2), 1500.0);
    EXPECT_HALT(chr_to_int_3(w, 3),
                "pick_word_1: index_word is too large! Halting..\n  chr_in = n-31.5k\n  index_word = 3\n");
}

TEST(truefalse, has_two_values) {
    EXPECT_EQ(tf_to_int(1), 1);
    EXPECT_EQ(tf_to_int(0), 0);
    EXPECT_EQ(int_to_tf(1), int_T);
    EXPECT_EQ(int_to_tf(0), int_F);
    EXPECT_HALT(tf_to_int(2), "   tf=2\n");
    EXPECT_HALT(tf_to_int(-1), "   tf=-1\n");
    EXPECT_HALT(int_to_tf(2), "int_to_tf: wrong argument? Halting...\n");
}

TEST(real_spice_to_tarnel, turns_classic_scales_into_ours) {
    struct row {
        const char* word;
        double value;
    };
    const row rows[] = {{"1MEG", 1e6}, {"1M", 1e-3},      {"1m", 1e-3}, {"2.2megohm", 2.2e6}, {"10uF", 10e-6},
                        {"5V", 5},     {"1F", 1e-15},     {"1T", 1e12}, {"-3G", -3e9},        {"4K", 4e3},
                        {"1e3", 1e3},  {"1mil", 25.4e-6}, {"100", 100}, {"1e3t", 1e15},       {"0x5", 0}};
    for (const row& r : rows) EXPECT_DOUBLE_EQ(chr_to_double(real_spice_to_tarnel(r.word)), r.value) << r.word;
    for (const char* word : {"", "abc", "-", "+x", "-inf", "nan", "."})
        EXPECT_HALT(real_spice_to_tarnel(word),
                    "real_spice_to_tarnel: something wrong?\n  Check this word: " + std::string(word) + "\n");
}
