#include "library/list_lines.h"

#include "base/halt.h"
#include "library/check_limit.h"

void read_literal(std::string_view word, std::string_view, int& value, bool) { value = chr_to_int(word); }
void read_literal(std::string_view word, std::string_view, double& value, bool whole) {
    value = whole ? chr_to_int(word) : chr_to_double(word);
}
void read_literal(std::string_view word, std::string_view class_name, std::string& value, bool) {
    check_string(word, class_name);
    value = word;
}

void check_string(std::string_view word, std::string_view class_name) {
    constexpr std::size_t max_string = 50;
    if (word.size() > max_string)
        halt({line(class_name, ": nchr_s2=", word.size(), " is too large. Halting..."), "  sparm string is too long."});
}

void add_names(const words& w, word_list& list) {
    for (int i = 1; i < w.size(); ++i) list.pool.add(w[i]);
    list.close_entry();
}

template <class T>
void add_pairs(const words& w, std::string_view class_name, const char* tag, pair_list<T>& list, bool whole) {
    if (w.size() % 2 == 0) halt({line(class_name, ": k_rem is not zero (", tag, "). Halting...")});
    for (int i = 1; i < w.size(); i += 2) {
        list.name.pool.add(w[i]);
        read_literal(w[i + 1], class_name, list.dflt.emplace_back(), whole);
    }
    list.name.close_entry();
}
template void add_pairs(const words&, std::string_view, const char*, pair_list<int>&, bool);
template void add_pairs(const words&, std::string_view, const char*, pair_list<double>&, bool);
template void add_pairs(const words&, std::string_view, const char*, pair_list<std::string>&, bool);

void check_pool(const words& pool, std::string_view class_name, const char* tag, int max_words, int max_chars) {
    check_limit(pool.size(), max_words, class_name, ": n_ttl", tag, " is too large!");
    check_limit(pool.n_chr(), max_chars, class_name, ": n_ttl", tag, "chr is too large!");
}
