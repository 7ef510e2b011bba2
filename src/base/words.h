// words.h -- word arrays: how every statement, name list and library line is held, searched and cut.
#pragma once
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "base/enum1.h"

// All words run together in one buffer, and where each begins: word i is chars[offset[i]] up to chars[offset[i + 1]].
class words {
public:
    words() = default;
    words(std::initializer_list<std::string_view> list) {
        for (std::string_view w : list) add(w);
    }
    int size() const { return static_cast<int>(offset_.size()) - 1; }
    bool empty() const { return offset_.size() == 1; }
    int n_chr() const { return offset_.back(); }
    std::string_view chars() const { return chars_; }  // all words run together
    std::string_view operator[](int i) const {
        const int a = offset_[static_cast<std::size_t>(i)], b = offset_[static_cast<std::size_t>(i) + 1];
        return {chars_.data() + a, static_cast<std::size_t>(b - a)};
    }
    std::string str(int i) const { return std::string((*this)[i]); }
    void add(std::string_view w) {
        chars_.append(w);
        offset_.push_back(static_cast<int>(chars_.size()));
    }
    void clear() {
        chars_.clear();
        offset_.assign(1, 0);
    }

private:
    std::string chars_;
    std::vector<int> offset_{0};
};

// ---- splitting a line; blank, tab and '=' all separate words -------------------------------------------------------

// Calls f with each word of the line, a view of its text.
template <class F>
void for_each_word(std::string_view line, F f) {
    constexpr std::string_view separators = " \t=";
    for (std::size_t i = line.find_first_not_of(separators); i != std::string_view::npos;) {
        const std::string_view word = line.substr(i, line.find_first_of(separators, i) - i);
        f(word);
        i = line.find_first_not_of(separators, i + word.size());
    }
}
words parse_line_2(std::string_view line);
void add_words(std::string_view line, words& w);       // the words of a line, behind those already there
std::string_view word_first_1(std::string_view line);  // first word of a raw line; empty if it has none
int count_words_1(std::string_view line);
bool check_blank_line(std::string_view line);  // empty, or separators only
void remove_space_pre(std::string& line);      // leading blanks, not tabs
void remove_space_post(std::string& line);     // trailing blanks
std::string joined(const words& w);            // words with single blanks between

// ---- searching; the position, or -1 ---------------------------------------------------------------------------------

int find_word_1(const words& w, std::string_view word);
int find_word_1_ci(const words& w, std::string_view word);               // ASCII case ignored
int find_word_EO_1(const words& w, std::string_view word, int flag_eo);  // positions of evenodd
int find_word_6(const std::vector<std::string>& list, std::string_view word);

// Is the word at this position equal to this one? A position outside the array halts.
bool find_word_2(const words& w, std::string_view word, int position);
bool find_word_7(const words& w, std::string_view a, std::string_view b, int position);

// The word must be there, or the run halts with the caller's message: printed alone if it holds "Halting", and framed
// by the routine's own lines otherwise.
int find_word_3(const words& w, std::string_view word, const std::string& message);
void find_word_4(const words& w, std::string_view word, int position, const std::string& message);
int find_word_EO_2(const words& w, std::string_view word, int flag_eo, const std::string& message);
void check_word_2(const words& w, int position, std::string_view given, const std::string& message);
void check_word_3(const words& w, int position, std::string_view given_a, std::string_view given_b,
                  const std::string& message);
[[noreturn]] void word_not_found(const char* routine, std::string_view word, const std::string& message);

std::string pick_word_1(const words& w, int index);  // halts when index is out of range
bool check_word_1(const words& w, int index, std::string_view word);

// No string may occur twice in a list, or in both of two lists. The pair reported has the smallest i, then j.
void check_word_repeat_1(const std::vector<std::string>& list, const std::string& message);
void check_word_repeat_2(const std::vector<std::string>& a, const std::vector<std::string>& b,
                         const std::string& message);

// ---- single words ---------------------------------------------------------------------------------------------------

struct cut_word {
    std::string left, right;
    bool found = false;
};
// Cuts at the first occurrence of key. If key is absent, right holds the word less its first character: use neither.
cut_word extract_l_r_2(std::string_view word, std::string_view key);
cut_word extract_l_r_1(std::string_view word, std::string_view key, const std::string& message);  // fatal when absent

// The same as extract_l_r_2, telling also which sides have text.
struct cut_sides : cut_word {
    bool has_left = false, has_right = false;
};
cut_sides extract_l_r_3a(std::string_view word, std::string_view key);
// The part between the first two occurrences of key, in right; left holds what stands before. A blank or a tab halts.
cut_word extract_middle_1(std::string_view word, char key);

// name(inside). The first form halts at a missing bracket; the second tells.
cut_word extract_brckt_1(std::string_view word);
cut_word extract_brckt_2(std::string_view word);

bool assign_flag_1(std::string_view word);                                                 // exactly "yes"
void compare_word_1b(std::string_view a, std::string_view b, const std::string& message);  // fatal unless equal
bool add_word_1(words& w, std::string_view word);      // appends it unless present; true if it was appended
std::string strcpy_chk(std::string_view word, int m);  // halts unless shorter than m

// ---- numbers --------------------------------------------------------------------------------------------------------

int chr_to_int(std::string_view word);  // optional '-', digits
// The value, unless it is infinite or not a number: that halts with the text of a word that is no number, and the
// value.
double finite_number(double value, std::string_view word);
double chr_to_double(std::string_view word);    // one scale letter of G M k K m u n p f may follow the number; finite
double chr_to_double_1(std::string_view word);  // the same scale letters, without the test that the whole word parsed
double chr_to_double_4(std::string_view word);  // no scale letters: for data files
bool is_double(std::string_view word, double& value);  // chr_to_double without the stop
int chr_to_int_3(const words& w, int i);
double chr_to_double_3(const words& w, int i);

int tf_to_int(int tf);
truefalse int_to_tf(int i);

// A number in the notation of classic circuit decks (case ignored, "meg", "mil", "t", units behind the scale) in ours.
std::string real_spice_to_tarnel(std::string_view word);
