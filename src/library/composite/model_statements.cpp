#include "library/composite/model_statements.h"

#include "base/halt.h"
#include "library/composite/composite_form.h"
#include "library/statement_keys.h"

namespace {

// One row of values, the library's defaults with the statement's words on top. value_of turns a word into a value.
template <class T, class F>
void add_row(const pair_list<T>& list, int i_lib, int n_words, statement_keys& keys, row_table<T>& row,
             row_table<int>* tie, const gprm_class& gprm, F value_of) {
    for (int j = 0; j < list.count(i_lib); ++j) {
        const int i = j < n_words ? keys.find(list.word(i_lib, j)) : -1;
        row.add(i < 0 ? list.value(i_lib, j) : value_of(keys.w[i]));
        if (tie) tie->add(i < 0 ? -1 : gprm.find_greal(keys.w[i]));
    }
    row.close_row();
    if (tie) tie->close_row();
}

// The same of start-up values or first guesses, whole numbers from a position on.
void add_start_row(const pair_list<double>& list, int i_lib, int n_real, statement_keys& keys, row_table<double>& row,
                   row_table<int>& tie, const gprm_class& gprm) {
    for (int j = 0; j < list.count(i_lib); ++j) {
        const int i = keys.find(list.word(i_lib, j));
        row.add(i < 0         ? list.value(i_lib, j)
                : j >= n_real ? gprm.gprm_int_1(keys.w[i])
                              : gprm.gprm_double_1(keys.w[i]));
        tie.add(i < 0 || j >= n_real ? -1 : gprm.find_greal(keys.w[i]));
    }
    row.close_row();
    tie.close_row();
}

void read_statement(const words& w, const gprm_class& gprm, const composite_library& lib, const library_form& form,
                    model_class& models) {
    const std::string prefix = line(form.models_class, ": ");
    find_word_4(w, "name", 1, prefix + "name not found");
    find_word_4(w, "type", 3, prefix + "type not found");
    const std::string name = pick_word_1(w, 2), type = pick_word_1(w, 4);
    const int i_lib = lib.find(type);
    if (i_lib < 0) word_not_found("find_word_3", type, line(prefix, form.name, "_name not found"));
    models.name.push_back(name);
    models.i_lib.push_back(i_lib);

    statement_keys keys(w, 5);
    const auto int_of = [&](std::string_view word) { return gprm.gprm_int_1(word); };
    const auto string_of = [&](std::string_view word) { return strcpy_chk(gprm.gprm_string_1(word), 50); };
    const auto double_of = [&](std::string_view word) { return gprm.gprm_double_1(word); };
    const library_lists& list = lib.list;
    add_row(list.iprm, i_lib, list.iprm.count(i_lib), keys, models.iprm, nullptr, gprm, int_of);
    add_row(list.sprm, i_lib, list.sprm.count(i_lib), keys, models.sprm, nullptr, gprm, string_of);
    add_row(list.rprm, i_lib, lib.n_rprm_plain(i_lib), keys, models.rprm, &models.rprm_tie, gprm, double_of);
    add_start_row(list.sv, i_lib, first_whole(form, lib, &library_lists::sv, i_lib), keys, models.sv, models.sv_tie,
                  gprm);
    add_start_row(list.ig, i_lib, first_whole(form, lib, &library_lists::ig, i_lib), keys, models.ig, models.ig_tie,
                  gprm);
    if (const int i = keys.first_unticked(); i >= 0)
        halt({prefix + "some word has not been ticked.", line("   word: ", w[i]), "   Halting..."});
}

// What a statement left that could not be read.
void drop_from(int n, model_class& models) {
    models.name.resize(static_cast<std::size_t>(n));
    models.i_lib.resize(static_cast<std::size_t>(n));
    models.sprm.keep(n);
    for (auto* table : {&models.iprm, &models.rprm_tie, &models.sv_tie, &models.ig_tie}) table->keep(n);
    for (auto* table : {&models.rprm, &models.sv, &models.ig}) table->keep(n);
}

}  // namespace

int model_class::find(std::string_view model, int i_lib_wanted) const {
    for (int i = 0; i < n(); ++i)
        if (name[static_cast<std::size_t>(i)] == model && i_lib[static_cast<std::size_t>(i)] == i_lib_wanted) return i;
    return -1;
}

model_class read_models(circuit_file& cf, const gprm_class& gprm, const composite_library& lib,
                        const library_form& form) {
    model_class models;
    for (int i = cf.n_begin_cct + 1; i < cf.n_end_cct; ++i) {
        if (!cf.text.begins(i, form.model)) continue;
        cf.mark(i);
        const int n = models.n();
        if (!reading(i, [&] { read_statement(circuit_line(cf.text, i), gprm, lib, form, models); }))
            drop_from(n, models);
    }
    return models;
}
