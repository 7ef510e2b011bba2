#include "library/basic/basic_reader.h"

#include <algorithm>

#include "base/halt.h"
#include "library/basic/function_lines.h"
#include "library/basic/jacobian_map.h"
#include "library/check_limit.h"
#include "library/code_section.h"
#include "library/list_lines.h"

namespace {

// The next line of an entry; its first word must be the keyword.
words expect_line(text_file& file, const basic_form& form, std::string_view keyword, const char* entry = nullptr) {
    words w;
    next_line(file, w, form.rule);
    expect_word(w, 0, keyword, "expect ", keyword, " here, check ", entry ? entry : form.lib.begin, " library");
    return w;
}

// The first line of an entry: its name, and the flag words behind it at any place. Every list gets a row, so that
// those that the family lacks have an empty one.
void read_entry_line(const words& w, const basic_form& form, basic_library& lib) {
    expect_word(w, 0, form.lib.begin, form.lib.class_name, ": ", form.lib.begin, " not found. Debug 1.");
    expect_word(w, 1, "name", "expect name here, check ", form.lib.begin, " library");
    const std::string name = pick_word_1(w, 2);
    check_limit(lib.n() + 2, form.max_entries, form.lib.class_name, ": n is too large! Debug 2.");
    lib.list.entry.add(name);

    entry_flags& flag = lib.flag;
    for (std::vector<int>* f : {&flag.limit_tstep, &flag.save_history, &flag.limit_newton, &flag.calc_acp,
                                &flag.startup_sprt, &flag.gmin_step, &flag.limit_modulo, &flag.allow_reset,
                                &flag.set_rparm_1, &flag.get_rparm_1, &flag.noise_source, &flag.jac_const, &flag.pure,
                                &flag.timeless, &flag.evaluate, &flag.integrate, &flag.delay})
        f->push_back(0);
    flag.allow_ssw.push_back(1);
    flag.allow_xmixed.push_back(1);
    flag.ground_dummy.push_back(name == "ground_dummy_1");
    for (const flag_word& f : form.flags) {
        int i = 3;
        while (i < w.size() && w[i] != f.word) ++i;
        if (i < w.size()) (lib.flag.*f.member).back() = assign_flag_1(pick_word_1(w, i + 1));
    }
    if (form.check_flags) form.check_flags(lib, lib.n() - 1);
}

void read_jacobian_line(text_file& file, const basic_form& form, basic_library& lib) {
    const words w = expect_line(file, form, "Jacobian:");
    const std::string_view word = w.size() > 1 ? w[1] : std::string_view();
    if (word != "constant" && word != "variable")
        halt({line(form.lib.class_name, ": expect constant/variable for jacobian."),
              line(form.jacobian_entry, lib.list.entry[lib.n() - 1]), "  Halting..."});
    lib.flag.jac_const.back() = word == "constant";
}

// Visits the member of a list line; gives the words that count against the limits of the library, if there are any.
struct list_reader {
    const basic_form& form;
    const list_line& l;
    const words& w;
    basic_library& lib;

    const words* operator()(word_list library_lists::*m) const {
        word_list& list = lib.list.*m;
        if (l.goes_on_behind) {
            (lib.list.*l.goes_on_behind).push_back(list.count(lib.n() - 1));
            list.first.pop_back();
        }
        add_names(w, list);
        return &list.pool;
    }
    template <class T>
    const words* operator()(pair_list<T> library_lists::*m) const {
        bool whole = false;
        if constexpr (std::is_same_v<T, double>) whole = form.whole_start_values && holds_start_values(m);
        add_pairs(w, form.lib.class_name, l.tag, lib.list.*m, whole);
        return &(lib.list.*m).name.pool;
    }
    const words* operator()(std::vector<int> library_lists::*m) const {
        const int n = chr_to_int(w.size() > 1 ? w[1] : std::string_view());
        check_limit(n, l.max_words, form.lib.class_name, ": ", l.keyword, " is too large!");
        (lib.list.*m).push_back(std::max(n, 0));
        return nullptr;
    }
};

void read_list_line(text_file& file, const basic_form& form, const list_line& l, basic_library& lib) {
    const words w = expect_line(file, form, l.keyword, l.told_as);
    if (const words* pool = std::visit(list_reader{form, l, w, lib}, l.member))
        check_pool(*pool, form.lib.class_name, l.tag, l.max_words, l.max_chars);
}

// The count of functions. Each terminal of an entry has one, but for the ground dummy, which only holds a node.
int read_function_count(text_file& file, const basic_form& form, const function_form& functions,
                        const basic_library& lib) {
    const words w = expect_line(file, form, functions.count);
    const int n_func = chr_to_int(w.size() > 1 ? w[1] : std::string_view());
    if (functions.has_count_test && !lib.flag.ground_dummy.back() && n_func < lib.list.node.count(lib.n() - 1))
        halt({line(form.lib.class_name, ": n_func < n_nodes. Halting...")});
    return n_func;
}

// The text between the functions and the end word. Whoever only reads tables passes over it unseen.
void read_code(text_file& file, const basic_form& form, glue_text* glue, basic_library& lib) {
    words w;
    next_line(file, w, form.rule);
    check_word_3(w, 0, "fortran:", "C:", line("expect fortran:/C: here, check ", form.lib.begin, " library"));
    const bool compiled = w.size() > 1;
    if (glue && compiled && w[1] != "compiled") halt({line(form.lib.class_name, ": compiled not found")});
    if (!glue || compiled) {
        skip_code(file, form);
        return;
    }
    copy_code(file, form, *glue, lib);
    expect_line(file, form, form.lib.end);
}

void read_entry(text_file& file, const words& first_line, const basic_form& form, glue_text* glue, basic_library& lib) {
    read_entry_line(first_line, form, lib);
    if (form.jacobian_entry) read_jacobian_line(file, form, lib);
    for (const list_line& l : form.lines) read_list_line(file, form, l, lib);
    if (form.close_lists) form.close_lists(lib, lib.n() - 1);
    lib.list.close_rows();
    for (const function_form& f : form.functions)
        read_functions(file, form, f, read_function_count(file, form, f, lib), lib);
    if (form.functions.empty()) lib.func.first_f.push_back(0);
    if (form.has_code)
        read_code(file, form, glue, lib);
    else
        expect_line(file, form, form.lib.end);
}

// Runs over the file once, so that what is wrong with its lines and code sections shows before the entries are read.
void count_entries(text_file& file, const basic_form& form) {
    constexpr int max_lines = 50000;
    words w;
    for (int i = 0; next_line(file, w, form.rule); ++i) {
        if (i >= max_lines) halt({line(form.lib.class_name, ": end of file not reached. Halting...")});
        if (!w.empty() && (w[0] == "C:" || w[0] == "fortran:")) skip_code(file, form);
    }
}

}  // namespace

void read_library_text(text_file& file, const basic_form& form, glue_text* glue, basic_library& lib) {
    lib = {};
    const std::size_t start = file.at;
    count_entries(file, form);
    file.at = start;
    words w;
    while (next_line(file, w, form.rule)) read_entry(file, w, form, glue, lib);
    lib.map = map_jacobian(lib, form.map_kinds, form.lib.class_name);
}

void read_library(const std::string& path, const basic_form& form, truefalse write_glue,
                  const constants_class& constants, basic_library& lib) {
    text_file file = open_text_file(path, std::string(form.lib.class_name));
    const int mode = constants.second;
    if (write_glue == int_F || (mode != 1 && mode != 2)) {
        read_library_text(file, form, nullptr, lib);
        return;
    }
    glue_text glue;
    read_library_text(file, form, &glue, lib);
    write_glue_files(path, form, mode, glue, lib);
}

namespace {
basic_library read_from_form(const basic_form& form, truefalse write_glue, const constants_class& constants) {
    basic_library lib;
    read_library(std::string(form.lib.path), form, write_glue, constants, lib);
    return lib;
}
}  // namespace

ebes_class read_ebes(truefalse write_glue, const constants_class& constants) {
    return read_from_form(ebes_form, write_glue, constants);
}
ebac_class read_ebac(truefalse write_glue, const constants_class& constants) {
    return read_from_form(ebac_form, write_glue, constants);
}
gbes_class read_gbes(truefalse write_glue, const constants_class& constants) {
    return read_from_form(gbes_form, write_glue, constants);
}
gbac_class read_gbac(truefalse write_glue, const constants_class& constants) {
    return read_from_form(gbac_form, write_glue, constants);
}
