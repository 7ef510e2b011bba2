#include "base/words.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <random>
#include <utility>

#include "halt_throws.h"

namespace {

std::vector<std::string> list_of(const words& w) {
    std::vector<std::string> list;
    for (int i = 0; i < w.size(); ++i) list.push_back(w.str(i));
    return list;
}
using strings = std::vector<std::string>;

const std::string frame_3 =
    "find_word_3: word not found.\n   word is: x\n   message from calling routine:\n   who: what\n   Halting...\n";

}  // namespace

// ---- splitting

TEST(parse_line_2, splits_at_blank_tab_and_equals_only) {
    EXPECT_EQ(list_of(parse_line_2("r=5")), (strings{"r", "5"}));
    EXPECT_EQ(list_of(parse_line_2("r 5")), (strings{"r", "5"}));
    EXPECT_EQ(list_of(parse_line_2("\t r = \t5 ==")), (strings{"r", "5"}));
    EXPECT_EQ(list_of(parse_line_2("a,b;c+d#e(f)")), (strings{"a,b;c+d#e(f)"}));
    EXPECT_EQ(list_of(parse_line_2("")), strings{});
}

TEST(parse_line_2, counts_the_characters_of_the_words_only) {
    const words w = parse_line_2("  ab = cde ");
    EXPECT_EQ(w.size(), 2);
    EXPECT_EQ(w.n_chr(), 5);
    EXPECT_EQ(w.chars(), "abcde");
}

TEST(parse_line_2, takes_bytes_of_any_value_as_parts_of_words) {
    const std::string line("a\0b\xff c\r", 7);
    EXPECT_EQ(list_of(parse_line_2(line)), (strings{std::string("a\0b\xff", 4), "c\r"}));
}

TEST(check_blank_line, is_true_for_separators_only) {
    for (const char* blank : {"", " ", "\t", "=", "== \t ="}) EXPECT_TRUE(check_blank_line(blank)) << blank;
    for (const char* text : {"a", " = b", "#", "\r"}) EXPECT_FALSE(check_blank_line(text)) << text;
}

TEST(remove_space, removes_blanks_and_leaves_tabs) {
    std::string a = "  \t a  ", b = "   ";
    remove_space_pre(a);
    EXPECT_EQ(a, "\t a  ");
    remove_space_post(a);
    EXPECT_EQ(a, "\t a");
    remove_space_pre(b);
    EXPECT_EQ(b, "");
    remove_space_post(b);
    EXPECT_EQ(b, "");
}

TEST(word_first_1, is_the_first_word_of_the_split_line) {
    for (const char* text : {"C: x", "  \tC:", "", "   ", "==a=b", "one"}) {
        const words w = parse_line_2(text);
        EXPECT_EQ(word_first_1(text), w.empty() ? "" : w[0]) << text;
        EXPECT_EQ(count_words_1(text), w.size());
    }
}

TEST(joined, puts_one_blank_between_words) {
    EXPECT_EQ(joined(parse_line_2("a=b   c")), "a b c");
    EXPECT_EQ(joined(words{}), "");
}

// ---- searching

TEST(find_word_1, gives_the_first_exact_match_or_minus_one) {
    const words w{"ab", "a", "b", "a"};
    EXPECT_EQ(find_word_1(w, "a"), 1);
    EXPECT_EQ(find_word_1(w, "abb"), -1);
    EXPECT_EQ(find_word_1(w, "A"), -1);
    EXPECT_EQ(find_word_1(words{}, "a"), -1);
}

TEST(find_word_1_ci, ignores_the_case_of_letters_only) {
    const words w{"a[", "Name"};
    EXPECT_EQ(find_word_1_ci(w, "nAME"), 1);
    EXPECT_EQ(find_word_1_ci(w, "A{"), -1);  // [ and { differ by the bit that tells the case of letters
    EXPECT_EQ(find_word_1_ci(w, "nam"), -1);
}

TEST(find_word_EO_1, looks_at_odd_even_or_all_positions) {
    const words w{"type", "name", "type", "type"};
    EXPECT_EQ(find_word_EO_1(w, "type", odd_words), 3);
    EXPECT_EQ(find_word_EO_1(w, "type", even_words), 0);
    EXPECT_EQ(find_word_EO_1(w, "name", all_words), 1);
    EXPECT_EQ(find_word_EO_1(w, "name", even_words), -1);
}

TEST(find_word_6, gives_the_position_in_the_list_or_minus_one) {
    EXPECT_EQ(find_word_6({"a", "b", "b"}, "b"), 1);
    EXPECT_EQ(find_word_6({}, "b"), -1);
}

TEST(find_word_7, accepts_either_word) {
    const words w{"a", "b", "c"};
    EXPECT_TRUE(find_word_7(w, "a", "b", 0));
    EXPECT_TRUE(find_word_7(w, "a", "b", 1));
    EXPECT_FALSE(find_word_7(w, "a", "b", 2));
}

TEST(find_word, finds_without_a_word_on_the_console) {
    const console_run heard = run_and_listen([] {
        const words w{"a", "x"};
        EXPECT_EQ(find_word_3(w, "x", "m"), 1);
        EXPECT_EQ(find_word_EO_2(w, "x", odd_words, "m"), 1);
        find_word_4(w, "x", 1, "m");
        check_word_2(w, 1, "x", "m");
        check_word_3(w, 1, "y", "x", "m");
        EXPECT_TRUE(check_word_1(w, 0, "a"));
        EXPECT_FALSE(check_word_1(w, 0, "x"));
        EXPECT_EQ(pick_word_1(w, 1), "x");
    });
    EXPECT_FALSE(heard.stopped);
    EXPECT_EQ(heard.text, "");
}

TEST(search_stops, frame_a_message_and_print_one_with_halting_alone) {
    const words w{"a", "b"};
    EXPECT_HALT(find_word_3(w, "x", "who: what"), frame_3);
    EXPECT_HALT(find_word_3(w, "x", "who: what. Halting.."), "who: what. Halting..\n");
    EXPECT_HALT(find_word_4(w, "x", 0, "who: what"),
                "find_word_4: word not found.\n   word is: x\n   message from calling routine:\n   who: what\n"
                "   Halting...\n");
    EXPECT_HALT(find_word_4(w, "x", 0, "Halting"), "Halting\n");
    EXPECT_HALT(find_word_EO_2(w, "a", odd_words, "who: what"),
                "find_word_EO_2: word not found.\n   word is: a\n   message from calling routine:\n   who: what\n"
                "   Halting...\n");
    EXPECT_HALT(find_word_EO_2(w, "a", odd_words, "c not found. Halting.."), "c not found. Halting..\n");
    EXPECT_HALT(check_word_2(w, 1, "x", "who: what"),
                "check_word_2:\n   word_out is: b\n   word_given is: x\n   message from calling routine:\n"
                "   who: what\n   Halting...\n");
    EXPECT_HALT(check_word_2(w, 1, "x", "expect x. Halting..."), "expect x. Halting...\n");
    EXPECT_HALT(check_word_3(w, 1, "x", "y", "who: what"),
                "check_word_3:\n   word_out is: b\n   given words are: x y\n   message from calling routine:\n"
                "   who: what\n   Halting...\n");
}

TEST(search_stops, name_a_position_outside_the_words) {
    const words w{"ab", "c"};
    EXPECT_HALT(find_word_2(w, "ab", 2), "find_word_2: position not in valid range. position = 2 Halting...\n");
    EXPECT_HALT(find_word_2(w, "ab", -1), "find_word_2: position not in valid range. position = -1 Halting...\n");
    EXPECT_HALT(find_word_4(w, "ab", 7, "m"), "find_word_2: position not in valid range. position = 7 Halting...\n");
    EXPECT_HALT(find_word_EO_1(w, "ab", 3), " find_word_EO_1: flag_eo = 3 Halting..\n");
    EXPECT_HALT(find_word_EO_2(w, "ab", -1, "m"), " find_word_EO_1: flag_eo = -1 Halting..\n");
    EXPECT_HALT(check_word_1(w, 2, "c"), "check_word_1: index_word is too large! Halting..\n");
}

TEST(pick_word_1, halts_at_the_number_of_words) {
    const std::string text = "pick_word_1: index_word is too large! Halting..\n  chr_in = abc\n  index_word = ";
    EXPECT_HALT(pick_word_1(words{"ab", "c"}, 2), text + "2\n");
    EXPECT_HALT(pick_word_1(words{"ab", "c"}, -1), text + "-1\n");
    EXPECT_HALT(check_word_2(words{"ab", "c"}, 2, "c", "m"), text + "2\n");
}

// ---- repeats

TEST(check_word_repeat, names_the_string_and_both_places) {
    EXPECT_HALT(check_word_repeat_1({"r1", "c1", "r1"}, "cct_class (eelu)"),
                "check_word_repeat_1: \n   The string <r1> is repeated.\n   i = 0\n  j = 2\n"
                "   Message from the calling routine:\n   cct_class (eelu)\n");
    EXPECT_HALT(check_word_repeat_2({"a", "b"}, {"c", "b"}, "cct_class"),
                "check_word_repeat_2: \n   The string <b> is repeated.\n   i = 1\n  j = 1\n"
                "   Message from the calling routine:\n   cct_class\n");
}

TEST(check_word_repeat, finds_the_pair_of_two_nested_loops) {
    std::mt19937 rng(3);
    for (int trial = 0; trial < 500; ++trial) {
        auto random_list = [&] {
            strings list(rng() % 8);
            for (std::string& s : list) s = std::string(1, static_cast<char>('a' + rng() % 12));
            return list;
        };
        const strings a = random_list(), b = random_list();
        std::optional<std::pair<std::size_t, std::size_t>> in_a, in_both;
        for (std::size_t i = 0; i < a.size() && !in_a; ++i)
            for (std::size_t j = i + 1; j < a.size() && !in_a; ++j)
                if (a[i] == a[j]) in_a = {i, j};
        for (std::size_t i = 0; i < a.size() && !in_both; ++i)
            for (std::size_t j = 0; j < b.size() && !in_both; ++j)
                if (a[i] == b[j]) in_both = {i, j};
        auto places = [](const auto& pair) {
            return "   i = " + std::to_string(pair->first) + "\n  j = " + std::to_string(pair->second) + "\n";
        };
        const console_run one = run_and_listen([&] { check_word_repeat_1(a, "m"); });
        EXPECT_EQ(one.stopped, in_a.has_value());
        EXPECT_EQ(one.text.find(in_a ? places(in_a) : "i = ") != std::string::npos, in_a.has_value()) << one.text;
        const console_run two = run_and_listen([&] { check_word_repeat_2(a, b, "m"); });
        EXPECT_EQ(two.stopped, in_both.has_value());
        EXPECT_EQ(two.text.find(in_both ? places(in_both) : "i = ") != std::string::npos, in_both.has_value())
            << two.text;
    }
}

// ---- single words

TEST(extract_l_r_2, cuts_at_the_first_occurrence) {
    const cut_word cut = extract_l_r_2("i_of_x_of_y", "_of_");
    EXPECT_TRUE(cut.found);
    EXPECT_EQ(cut.left, "i");
    EXPECT_EQ(cut.right, "x_of_y");
}

TEST(extract_l_r_2, leaves_the_word_less_its_first_character_when_the_key_is_absent) {
    const cut_word cut = extract_l_r_2("vout", "_of_");
    EXPECT_FALSE(cut.found);
    EXPECT_EQ(cut.left, "");
    EXPECT_EQ(cut.right, "out");
    EXPECT_EQ(extract_l_r_2("", "_of_").right, "");
}

TEST(extract_l_r_1, halts_when_the_key_is_absent) {
    EXPECT_EQ(extract_l_r_1("a_of_b", "_of_", "m").right, "b");
    EXPECT_HALT(extract_l_r_1("ab", "_of_", "who: what"),
                "find_sub_word: _of_ was not found.\nMessage from calling routine:\nwho: what\n");
    EXPECT_HALT(extract_l_r_1("ab", "_of_", "who: what. Halting..."), "who: what. Halting...\n");
}

TEST(extract_l_r_3a, tells_which_sides_have_text) {
    EXPECT_TRUE(extract_l_r_3a("a:", ":").has_left);
    EXPECT_FALSE(extract_l_r_3a("a:", ":").has_right);
    EXPECT_FALSE(extract_l_r_3a(":b", ":").has_left);
    EXPECT_TRUE(extract_l_r_3a(":b", ":").has_right);
}

TEST(extract_brckt, cuts_a_word_of_the_form_name_inside) {
    const cut_word cut = extract_brckt_1("cur(p)");
    EXPECT_EQ(cut.left, "cur");
    EXPECT_EQ(cut.right, "p");
    EXPECT_EQ(extract_brckt_1("v()").right, "");
    EXPECT_TRUE(extract_brckt_2("v(a)").found);
    for (const char* bad : {"v", "v(a", "va)", ")v(", ""}) EXPECT_FALSE(extract_brckt_2(bad).found) << bad;
}

TEST(extract_brckt_1, names_the_missing_bracket) {
    EXPECT_HALT(extract_brckt_1("va)"), "extract_brckt_1: left bracket not found. Halting...\n   word_in is va)\n");
    EXPECT_HALT(extract_brckt_1("v(a"), "extract_brckt_1: right bracket not found. Halting...\n   word_in is v(a\n");
    EXPECT_HALT(extract_brckt_1(")v("), "extract_brckt_1: right bracket not found. Halting...\n   word_in is )v(\n");
}

TEST(extract_middle_1, gives_the_part_between_two_keys) {
    EXPECT_EQ(extract_middle_1("a%bc%d", '%').right, "bc");
    EXPECT_FALSE(extract_middle_1("a%bc", '%').found);
    EXPECT_FALSE(extract_middle_1("abc", '%').found);
    EXPECT_HALT(extract_middle_1("%b c%", '%'), "extract_middle_1: space not allowed in input string.\n");
}

TEST(assign_flag_1, takes_lower_case_yes_alone_for_true) {
    EXPECT_TRUE(assign_flag_1("yes"));
    for (const char* no : {"Yes", "YES", "no", "y", "yes ", "true", "1", ""}) EXPECT_FALSE(assign_flag_1(no)) << no;
}

TEST(strcpy_chk, needs_one_place_more_than_the_word_is_long) {
    EXPECT_EQ(strcpy_chk(std::string(49, 'a'), 50), std::string(49, 'a'));
    EXPECT_HALT(strcpy_chk(std::string(50, 'a'), 50), "strcpy_chk: M is too small. l=50\n");
    EXPECT_HALT(strcpy_chk("", 0), "strcpy_chk: M is too small. l=0\n");
}

TEST(compare_word_1b, halts_unless_the_words_are_equal) {
    compare_word_1b("a", "a", "m");
    EXPECT_HALT(compare_word_1b("a", "b", "who: what"), "compare_word_1b: strings do not match.\nwho: what\n");
}

TEST(add_word_1, appends_a_word_that_is_not_yet_there) {
    words w{"a"};
    EXPECT_TRUE(add_word_1(w, "b"));
    EXPECT_FALSE(add_word_1(w, "a"));
    EXPECT_EQ(joined(w), "a b");
}
