// The targets, and their dictionaries from the tables that the readers walk.
#include "targets.h"

#include <set>
#include <vector>

#include "deck/circuit_file.h"
#include "deck/tmpdim_class.h"
#include "elaborate/families.h"
#include "library/basic_form.h"
#include "library/composite/mixed_form.h"
#include "settings/solve_words.h"
#include "tnl/results/measure_functions.h"

namespace {
using word_set = std::set<std::string>;

std::string as_dictionary(const word_set& words) {
    std::string all;
    for (const std::string& w : words)
        if (!w.empty()) all += '"' + w + "\"\n";
    return all;
}

const std::vector<std::string_view> numbers = {"1k",          "-1",         "1e999", "1e-999", "2147483647",
                                               "-2147483648", "4294967296", "0x",    "0x1p3",  "nan",
                                               "-inf",        "1.5Meg",     "0.1u",  "0"};
const std::vector<std::string_view> expressions = {"$(",  "$((a)+(b))", ")**(", ")*(",  ")/(",
                                                   ")-(", "exp(",       "sin(", "cos(", "_of_"};

std::string deck_words() {
    word_set all;
    const auto add = [&](const auto& list) { all.insert(list.begin(), list.end()); };
    add(solve_block_words());
    add(numbers);
    add(expressions);
    add(std::vector<std::string_view>{"title:",
                                      "begin_circuit",
                                      "end_circuit",
                                      "begin_solve",
                                      "end_solve",
                                      "end_cf",
                                      "begin_output",
                                      "end_output",
                                      "refnode",
                                      "x_refnode",
                                      "output",
                                      "outvar:",
                                      "greal",
                                      "ginteger",
                                      "gstring",
                                      "name=",
                                      "type=",
                                      "model=",
                                      "model_file",
                                      "pwr_elec_of_",
                                      "nodev_of_",
                                      "nodev_ac_of_",
                                      "dvar_of_",
                                      "xvar_of_",
                                      "yes",
                                      "no",
                                      "\\x0a+ ",
                                      "\\x0a",
                                      "#"});
    for (const output_word& w : output_words()) all.insert(std::string(w.word));
    for (const family_form& f : family_forms) {
        all.insert(std::string(f.lib.statement));
        all.insert(std::string(f.lib.model));
        add(f.placeholders);
        add(f.flag_words);
    }
    return as_dictionary(all);
}

void add_form(const basic_form& form, word_set& all) {
    all.insert(std::string(form.lib.begin));
    all.insert(std::string(form.lib.end));
    for (const flag_word& f : form.flags) all.insert(std::string(f.word) + "=yes");
    for (const list_line& l : form.lines) all.insert(l.keyword);
    for (const function_form& f : form.functions) all.insert({f.count, std::string("\\x0a") + f.letter + '_'});
}

// Words of elements and composites of one family.
std::string words_of_family(const basic_form& form, const basic_form& form_ac, const composite_form& composites) {
    word_set all = {"====\\x0a",
                    "name=",
                    "Jacobian: constant",
                    "Jacobian: variable",
                    "no_functions",
                    "f_",
                    "v(",
                    "volt(",
                    "cur(",
                    "d_dt(",
                    "startup",
                    "local_var",
                    "C:",
                    "endC",
                    "compiled",
                    "fortran:",
                    "endfortran",
                    "prototypes:",
                    "variables:",
                    "source:",
                    "begin_dc",
                    "end_dc",
                    "begin_ac",
                    "end_ac",
                    "allow_ac=yes",
                    "acparm_map:",
                    "callece",
                    "nodev_of_",
                    "var_of_",
                    "pwr_elec_of_",
                    "_of_",
                    "compute_rparms=yes",
                    "ground_dummy_1",
                    "\\x0a+ ",
                    "model="};
    all.insert(numbers.begin(), numbers.end());
    all.insert(expressions.begin(), expressions.end());
    add_form(form, all);
    add_form(form_ac, all);
    const std::string element(composites.basic.begin), own(composites.lib.begin);
    all.insert({own, "end" + own, "call" + own, element + "_ac", element + "model", own + "model", element + "_acmodel",
                "ac_parm_be="});
    for (const auto& lines : {composites.dc_lines, composites.ac_lines})
        for (const header_line& l : lines) all.insert(l.keyword);
    return as_dictionary(all);
}

std::string library_words() { return words_of_family(ebes_form, ebac_form, eels_form); }
std::string block_words() { return words_of_family(gbes_form, gbac_form, gels_form); }

std::string mixed_words() {
    word_set all = {"gme name=", "endgme",  "name=",    "model=", "type=",  "allow_ac=yes",
                    "nodev_of_", "var_of_", "dvar_of_", "_of_",   "\\x0a+ "};
    all.insert(numbers.begin(), numbers.end());
    all.insert(expressions.begin(), expressions.end());
    for (const header_line& l : gmes_lines) all.insert(l.keyword);
    for (const mixed_domain& d : mixed_domains) {
        all.insert(std::string(d.lib.call));
        all.insert(std::string(d.lib.submodel));
    }
    for (const char* callee : {"r ", "vsrcdc ", "and_2 ", "intgrtr ", "p=", "n=", "x=", "y=", "a=", "b="})
        all.insert(callee);
    return as_dictionary(all);
}
std::string digital_words() { return words_of_family(dbes_form, dbes_form, dels_form); }
std::string explicit_words() {
    return words_of_family(xbes_form, xbac_form, xels_form) + "\"filter_1\"\n\"sum_filter_1\"\n\"current\"\n";
}

std::string composite_words() {
    const std::string blocks = block_words();
    std::string all = library_words();
    for (std::size_t at = 0; at < blocks.size(); at = blocks.find('\n', at) + 1) {
        const std::string word = blocks.substr(at, blocks.find('\n', at) + 1 - at);
        if (("\n" + all).find("\n" + word) == std::string::npos) all += word;
    }
    return all + "\"begin_circuit\"\n\"emodel\"\n\"include\"\n\"#:\"\n";
}

std::string data_words() {
    word_set all(numbers.begin(), numbers.end());
    all.insert({"\\x0a", "\\x0d\\x0a", "\\x09", "+", "#", "none"});
    return as_dictionary(all);
}

std::string expression_words() {
    word_set all(numbers.begin(), numbers.end());
    all.insert(expressions.begin(), expressions.end());
    all.insert({"meg", "mil", "infinity", "nan(", "e+", "p-1"});
    return as_dictionary(all);
}

std::string solution_words() {
    word_set all(numbers.begin(), numbers.end());
    all.insert({"ebeu->val_nd:", "ebeu->aux1d:", "dbeu->state:"});
    return as_dictionary(all);
}

std::string text_words() {
    word_set all(numbers.begin(), numbers.end());
    for (const tmpdim_word& w : tmpdim_words()) all.insert(std::string(w.word));
    all.insert({"#ifndef", "#define", "#endif", "\\x0a+", "\\x0d\\x0a", ".ebe"});
    return as_dictionary(all);
}

std::string measure_words() {
    word_set all(numbers.begin(), numbers.end());
    for (const cli::measure_function& f : cli::measure_functions()) all.insert(std::string(f.name) + "(");
    all.insert({"c1", "c2", "$3", "x", "y", "mag_of_x", "--\\x0a", "2%", "1m", "rise", "fall", "any", "low", "peak",
                "<=", "==", "!=", "\\x0a\\x0a"});
    return as_dictionary(all);
}

constexpr fuzz_target targets[] = {
    {"deck", fuzz_deck, deck_words},
    {"library", fuzz_library, library_words},
    {"blocks", fuzz_blocks, block_words},
    {"digital", fuzz_digital, digital_words},
    {"explicit", fuzz_explicit, explicit_words},
    {"mixed", fuzz_mixed, mixed_words},
    {"data", fuzz_data, data_words},
    {"expression", fuzz_expression, expression_words},
    {"solution", fuzz_solution, solution_words},
    {"measure", fuzz_measure, measure_words},
    {"check", fuzz_check, deck_words},
    {"composites", fuzz_composites, composite_words},
    {"words", fuzz_words, text_words},
};
}  // namespace

std::span<const fuzz_target> fuzz_targets() { return targets; }
