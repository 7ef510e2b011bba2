#include "elaborate/names.h"

#include "base/checks.h"
#include "base/halt.h"

namespace {
int table_limit(const circuit& c, name_table cct_class::*table) {
    if (table == &cct_class::ect) return c.tmpdim.m_ect_nd_tmp;
    if (table == &cct_class::gct) return c.tmpdim.m_gct_vr_tmp;
    if (table == &cct_class::dct) return c.tmpdim.m_dct_nd_tmp;
    return c.tmpdim.m_xct_vr_tmp;
}

const char* table_count(name_table cct_class::*table) {
    if (table == &cct_class::ect) return "n_ect_nd";
    if (table == &cct_class::gct) return "n_gct_vr";
    if (table == &cct_class::dct) return "n_dct_nd";
    return "n_xct_vr";
}

void add_name(circuit& c, name_table cct_class::*which, std::string_view word) {
    name_table& table = c.cct.*which;
    const auto [it, is_new] = table.index.try_emplace(std::string(word), table.n());
    if (!is_new) return;
    if (table.n() >= table_limit(c, which))  // the message is made when it is needed: a deck has thousands of names
        check_m_gt_n(table_limit(c, which), table.n(), line("cct_class: ", table_count(which), " is too large!"));
    table.name.emplace_back(word);
}
}  // namespace

std::vector<element_statement> find_element_statements(circuit_file& cf) {
    std::vector<element_statement> found;
    for (int i = cf.n_begin_cct + 1; i < cf.n_end_cct; ++i) {
        const family_form* form = family_of_keyword(cf.text.word(i, 0));
        if (!form) continue;
        reading(i, [&] {
            element_statement s{form, i, circuit_line(cf.text, i), -1, -1};
            const int key = find_word_EO_1(s.w, "type", odd_words);
            if (key < 0) halt({"cct_class: type not found. Halting.."});
            const std::string type = pick_word_1(s.w, key + 1);
            s.at_type = key + 1;
            cf.mark(i);
            if (is_placeholder(*form, type)) return;
            if (form->number == fam_e && type == "ground_dummy_1")
                halt(
                    {"cct_class: ground_dummy_1.ece cannot be called", "  directly from the circuit file. Halting..."});
            found.push_back(std::move(s));
        });
    }
    return found;
}

namespace {
void number_names_of(circuit& c, element_statement& s) {
    const composite_library& lib = c.lib.*(s.form->composites);
    at_word(s.at_type);
    s.i_lib = lib.find(s.w[s.at_type]);
    if (s.i_lib < 0)
        word_not_found("find_word_3", s.w[s.at_type], line("cct_class: ", s.form->lib.name, "_name not found"));
    for (const bound_list& b : s.form->bound) {
        const word_list& list = lib.list.*(b.list);
        for (int j = 0; j < list.count(s.i_lib); ++j) {
            const std::string_view key = list.word(s.i_lib, j);
            const int at = find_word_EO_1(s.w, key, odd_words);
            if (at < 0) {
                at_word(0);
                const int at_name = find_word_EO_1(s.w, "name", odd_words);
                const bool named = at_name >= 0 && at_name + 1 < s.w.size();
                halt({line("cct_class: (", s.form->lib.statement, ") ", b.what, " not found."),
                      line("   ", b.what, " is ", key),
                      line("   ", s.form->lib.statement, " name is ", named ? s.w.str(at_name + 1) : ""),
                      "   Halting..."});
            }
            add_name(c, b.names, pick_word_1(s.w, at + 1));
        }
    }
}
}  // namespace

void number_names(circuit& c, std::vector<element_statement>& statements) {
    std::erase_if(statements, [&](element_statement& s) { return !reading(s.line, [&] { number_names_of(c, s); }); });
}
