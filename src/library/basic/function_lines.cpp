#include "library/basic/function_lines.h"

#include "base/halt.h"
#include "library/check_limit.h"

namespace {

// The entry being read, and what it is read by.
struct entry_in_work {
    const basic_form& form;
    const function_form& functions;
    basic_library& lib;
    function_table& f;  // that the functions go to
    int e;
};

struct variable {
    int kind = -1;  // -1: not found
    int number = -1;
};

variable find_in(const library_lists& list, int e, const variable_list& where, std::string_view word) {
    const int i = (list.*where.list).find(e, word);
    return i < 0 ? variable{} : variable{where.kind, i};
}

// A word for the current of a branch of a network; none when the word is another one.
variable find_current(const entry_in_work& in, std::string_view word) {
    const word_list& nodes = in.lib.list.cct;
    const int n = nodes.count(in.e);
    if (word == "current") {
        if (n != 2)
            halt({"xbes_class: keyword current cannot be used.", "   when number of nodes is not equal to 2.",
                  "   expected cur(xx) but did not find it.", "   Halting..."});
        return {kind_xcur, 0};
    }
    if (!word.starts_with("cur(") || word.back() != ')') return {};
    if (n <= 2)
        halt({"xbes_class: cur(xx) cannot be used.", "   when number of nodes <= 2.",
              "   Check xbe library. Halting..."});
    const int i = nodes.find(in.e, word.substr(4, word.size() - 5));
    if (i < 0) halt({"xbes_class: node in cur(xx) not found."});
    return {kind_xcur, i};
}

[[noreturn]] void unknown_word(const basic_form& form, const function_words& how, std::string_view word) {
    if (how.wrong)
        halt({line(form.lib.class_name, ": something wrong with ", how.wrong, "."), line("  string is ", word),
              "  Halting..."});
    halt({line("read_", form.lib.name, ": check ", word, " in ", form.lib.begin, " library."), "   (function part)",
          "   Halting..."});
}

// A word in brackets that the family knows, or a bare word. Halts when the lists do not have it.
variable find_variable(const entry_in_work& in, const function_words& how, std::string_view word) {
    if (how.branch_currents)
        if (const variable found = find_current(in, word); found.kind >= 0) return found;
    const std::size_t open = word.find('(');
    if (open != std::string_view::npos && word.back() == ')')
        for (const bracket_word& b : how.brackets)
            if (word.substr(0, open) == b.before) {
                const std::string_view inside = word.substr(open + 1, word.size() - open - 2);
                const variable found = find_in(in.lib.list, in.e, b.in, inside);
                if (found.kind < 0)
                    word_not_found(
                        "find_word_3", inside,
                        line(in.form.function_word, " functions: check ", b.before, "(xx)", how.bracket_tail));
                return found;
            }
    for (const variable_list& where : how.bare)
        if (const variable found = find_in(in.lib.list, in.e, where, word); found.kind >= 0) return found;
    unknown_word(in.form, how, word);
}

bool is_ddt(std::string_view word) { return word == "d_dt" || word.starts_with("d_dt("); }

int n_inputs(const entry_in_work& in) { return in.lib.list.n_input[static_cast<std::size_t>(in.e)]; }

// A word in brackets that is no d_dt().
[[noreturn]] void no_ddt(const basic_form& form, std::string_view word) {
    halt({line("read_", form.lib.name, ": check ", word, " in ", form.lib.begin, " library."),
          "   did not find keyword d_dt", "   Halting..."});
}

// The variable inside d_dt(...), as the sort of line allows.
variable find_ddt_variable(const entry_in_work& in, const function_words& how, std::string_view word) {
    if (how.ddt == ddt_rule::refused)
        halt({line(in.form.lib.class_name, ": d_dt is not allowd in the"),
              line("  mna-", how.ddt_refused_in, " equations!"),
              line("  Check ", in.form.lib.begin, " library. Halting...")});
    if (how.ddt == ddt_rule::not_allowed)
        halt({line("read_", in.form.lib.name, ": check ", word, " in ", in.form.lib.begin, " library."),
              "   d_dt is not allwed in h functions", "   Halting..."});
    if (word.size() < 6 || word.back() != ')') halt({line(in.form.lib.class_name, ": check variables involving d_dt")});
    const std::string_view inside = word.substr(5, word.size() - 6);
    if (how.ddt == ddt_rule::any_variable) return find_variable(in, how, inside);
    if (how.ddt == ddt_rule::state_variable) {
        // Inputs are no states.
        for (const variable_list& where : how.states)
            if (const variable found = find_in(in.lib.list, in.e, where, inside);
                found.kind >= 0 && (found.kind != kind_xvr || found.number >= n_inputs(in)))
                return found;
        unknown_word(in.form, how, word);
    }
    const variable found = find_in(in.lib.list, in.e, {kind_locv, &library_lists::locv}, inside);
    if (found.kind < 0)
        halt({line(in.form.lib.class_name, ": check ", inside, " in the ", in.form.lib.begin, " library."),
              "  trouble with d_dt() (locvar). Halting..."});
    return found;
}

// Words from position `from` on become dependencies of the function that was opened last.
void read_dependencies(const entry_in_work& in, const function_words& how, const words& w, int from) {
    function_table& f = in.f;
    for (int i = from; i < w.size(); ++i) {
        if (how.ddt == ddt_rule::state_variable && w[i].find('(') != std::string_view::npos && !is_ddt(w[i]))
            no_ddt(in.form, w[i]);
        const bool inside_ddt = how.ddt != ddt_rule::no_word && is_ddt(w[i]);
        const variable found = inside_ddt ? find_ddt_variable(in, how, w[i]) : find_variable(in, how, w[i]);
        f.var_flag.push_back(found.kind);
        f.var_number.push_back(found.number);
        f.l_ddt.push_back(inside_ddt);
        if (inside_ddt) {
            f.flag_ddt.back() = 1;
            f.ddt_var_flag.back() = found.kind;
            f.ddt_var_number.back() = found.number;
        }
        check_limit(static_cast<int>(f.var_flag.size()), in.form.max_dependencies, in.form.lib.class_name, ": n_ttlf",
                    in.functions.tag, "var is too large. Halting...");
    }
    f.first_fvar.push_back(static_cast<int>(f.var_flag.size()));
}

// Opens a function: the name behind "f_", and all marks off.
void open_function(const entry_in_work& in, const words& w, int block) {
    const std::string_view name = w.empty() ? std::string_view() : w[0];
    const char letter = in.functions.letter;
    if (name.size() < 2 || name[0] != letter || name[1] != '_')
        halt({line(in.form.lib.class_name, ": expected ", std::string_view(&letter, 1), "_ (", block, "). Halting..."),
              line("  s2 = ", name)});
    function_table& f = in.f;
    f.name.add(name.substr(2));
    for (std::vector<int>* mark :
         {&f.flag_kcl, &f.flag_gnrl, &f.flag_locvar, &f.func_startup, &f.startup_kcl, &f.startup_gnrl, &f.flag_ddt})
        mark->push_back(0);
    for (std::vector<int>* index :
         {&f.i_locvar, &f.startup_kcl_row, &f.ddt_var_flag, &f.ddt_var_number, &f.kcl_locvar_func})
        index->push_back(-1);
    check_limit(f.n_ttlf(), in.form.max_functions,
                in.functions.too_many ? in.functions.too_many : in.form.too_many_functions);
}

// Function j of the entry, the current into terminal j. Entries with a start-up form of their own leave it out there.
void read_terminal_line(const entry_in_work& in, const words& w, int j) {
    open_function(in, w, 1);
    function_table& f = in.f;
    f.flag_kcl.back() = 1;
    if (!in.lib.flag.startup_sprt.back()) {
        f.func_startup.back() = f.startup_kcl.back() = 1;
        f.startup_kcl_row.back() = j;
    }
    read_dependencies(in, *in.functions.terminal, w, 1);
}

// The first start-up functions, one for each terminal, stand on the terminals' rows; later ones have own rows.
void read_startup_line(const entry_in_work& in, const words& w, int n_before) {
    function_table& f = in.f;
    f.func_startup.back() = 1;
    if (n_before < in.lib.list.node.count(in.e)) {
        f.startup_kcl.back() = 1;
        f.startup_kcl_row.back() = n_before;
    } else {
        f.startup_gnrl.back() = 1;
    }
    read_dependencies(in, *in.functions.startup, w, 2);
}

void read_local_line(const entry_in_work& in, const words& w) {
    const std::string name = pick_word_1(w, 2);
    const int i = in.lib.list.locv.find(in.e, name);
    if (i < 0)
        word_not_found("find_word_3", name,
                       line(in.form.lib.class_name, ": locvar not found in function declaration."));
    in.f.flag_locvar.back() = 1;
    in.f.i_locvar.back() = i;
    read_dependencies(in, *in.functions.local, w, 3);
}

void read_general_line(const entry_in_work& in, const words& w) {
    function_table& f = in.f;
    f.flag_gnrl.back() = 1;
    if (!in.lib.flag.startup_sprt.back()) f.func_startup.back() = f.startup_gnrl.back() = 1;
    read_dependencies(in, *in.functions.general, w, 1);
}

// A charge of a terminal is known by the function of the same entry that defines it.
void find_defining_functions(const entry_in_work& in) {
    function_table& f = in.f;
    const int first = f.first_f.back(), n = f.n_ttlf();
    for (int k = first; k < n; ++k) {
        const auto kk = static_cast<std::size_t>(k);
        if (!f.flag_kcl[kk] || !f.flag_ddt[kk]) continue;
        for (int d = first; d < n && f.kcl_locvar_func[kk] < 0; ++d)
            if (f.flag_locvar[static_cast<std::size_t>(d)] &&
                f.i_locvar[static_cast<std::size_t>(d)] == f.ddt_var_number[kk])
                f.kcl_locvar_func[kk] = d - first;
        if (f.kcl_locvar_func[kk] < 0)
            halt({line("read_", in.form.lib.name, ": one of the KCL equations is"),
                  "   using a local_var for which there is no", "   defining equation."});
    }
}

}  // namespace

void read_functions(text_file& file, const basic_form& form, const function_form& functions, int n_func,
                    basic_library& lib) {
    const entry_in_work in{form, functions, lib, lib.*functions.table, lib.n() - 1};
    const int n_terminal = functions.terminal && !lib.flag.ground_dummy.back() ? lib.list.node.count(in.e) : 0;
    int n_startup = 0;
    words w;
    for (int j = 0; j < n_func; ++j) {
        w.clear();
        next_line(file, w, form.rule);  // at the end of the file w stays empty, which is no function line
        if (j < n_terminal) {
            read_terminal_line(in, w, j);
            continue;
        }
        open_function(in, w, functions.block);
        if (functions.startup && w.size() > 1 && w[1] == "startup")
            read_startup_line(in, w, n_startup++);
        else if (functions.local && w.size() > 1 && w[1] == "local_var")
            read_local_line(in, w);
        else
            read_general_line(in, w);
    }
    find_defining_functions(in);
    in.f.first_f.push_back(in.f.n_ttlf());
}
