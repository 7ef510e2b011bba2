// library_texts.h -- library entries as text, whole and with lines changed.
#pragma once
#include <string>
#include <vector>

#include "library/basic/basic_reader.h"
#include "library/composite/composite_reader.h"

using lines = std::vector<std::string>;

// The lines joined, less those that begin with a word of `dropped`; a line of `replaced` takes the place of the first
// line with the same first word.
inline std::string edited(lines text, const lines& replaced, const std::string& dropped = "") {
    const auto word = [](const std::string& l) { return l.substr(0, l.find(' ')); };
    std::string all;
    for (const std::string& r : replaced)
        for (std::string& l : text)
            if (word(l) == word(r)) {
                l = r;
                break;
            }
    for (const std::string& l : text)
        if (dropped.empty() || word(l) != dropped) all += l + '\n';
    return all;
}

inline const lines ebe_header = {
    "ebe name=x", "Jacobian: constant", "nodes:",        "ind_nodes:",       "ind_branches:",  "iparms:",   "sparms:",
    "rparms:",    "local_var:",         "aux_var:",      "aux_var_startup:", "digital_nodes:", "main_var:", "xvar:",
    "stparms:",   "igparms:",           "no_functions 0"};

// An electrical entry: some header lines replaced, the function lines (the last replacement says how many), its code.
inline std::string ebe(const lines& replaced, const std::string& functions = "",
                       const std::string& code = "C: compiled\nendebe\n") {
    return edited(ebe_header, replaced) + functions + code;
}
inline std::string ebe_ac(const lines& replaced, const std::string& functions = "") {
    return edited({"ebe_ac name=x", "nodes:", "ind_nodes:", "ind_branches:", "iparms:", "sparms:", "rparms:",
                   "aux_var:", "main_var:", "no_functions 0"},
                  replaced) +
           functions + "C: compiled\nendebe_ac\n";
}

inline const lines ece_header = {"ece name=x", "begin_dc", "mainnodes:", "auxnodes:",     "outvar:",        "bias:",
                                 "stparms:",   "igparms:", "ind_nodes:", "ind_branches:", "digital_nodes:", "main_var:",
                                 "xvar:",      "iparms:",  "sparms:",    "rparms:",       "rparms_derived:"};
inline const lines ece_middle = {"end_dc", "C:", "endC", "begin_ac", "outvar_ac:", "ind_nodes_ac:", "ind_branches_ac:"};

// A composite: header lines replaced, body of the DC half, lines of the AC half replaced, body of the AC half.
inline std::string ece(const lines& replaced, const std::string& body = "", const lines& replaced_ac = {},
                       const std::string& body_ac = "") {
    return edited(ece_header, replaced) + body + edited(ece_middle, replaced_ac) + body_ac + "end_ac\nendece\n";
}

inline basic_library read_basic(const std::string& text, const basic_form& form = ebes_form) {
    basic_library lib;
    text_file file = text_file_of(text);
    read_library_text(file, form, nullptr, lib);
    return lib;
}

// A small electrical library: two terminals with parameters of all sorts, a source with a current, sensing elements,
// one that is tied to all other kinds of variable.
inline const std::string small_ebes =
    ebe({"ebe name=r", "nodes: p n", "iparms: mode=2", "sparms: label=none", "rparms: r=1 v_o=0 k=1", "no_functions 2"},
        "f_p v(p) v(n)\nf_n v(p) v(n)\n") +
    ebe({"ebe name=src startup_sprt=yes", "nodes: p n", "rparms: u=0 v_o=0", "aux_var: i", "aux_var_startup: i_s",
         "stparms: u0=0", "igparms: v_ig=0.5", "no_functions 6"},
        "f_p i\nf_n i\nf_v v(p) v(n)\nf_ps startup i_s\nf_ns startup i_s\nf_vs startup v(p) v(n)\n") +
    ebe({"ebe name=sense", "nodes: p n", "ind_nodes: cp cn", "ind_branches: br", "rparms: gain=1", "no_functions 2"},
        "f_p volt(cp) volt(cn) cur(br)\nf_n volt(cp) volt(cn) cur(br)\n") +
    ebe({"ebe name=mix", "nodes: a", "digital_nodes: s", "main_var: g", "xvar: xg", "no_functions 1"}, "f_a v(a) g\n") +
    ebe({"ebe name=ground_dummy_1", "nodes: g"});
inline const std::string small_ebac =
    ebe_ac({"ebe_ac name=r", "nodes: p n", "rparms: r=1 k=1", "no_functions 2"}, "f_p v(p) v(n)\nf_n v(p) v(n)\n") +
    ebe_ac(
        {"ebe_ac name=bias", "nodes: p n", "iparms: ac_parm_be=-1", "rparms: g=0 c=0", "aux_var: i", "no_functions 3"},
        "f_p i\nf_n i\nf_i v(p) v(n) i\n") +
    ebe_ac({"ebe_ac name=sense", "nodes: p n", "ind_nodes: cp cn", "ind_branches: br", "no_functions 2"},
           "f_p volt(cp) volt(cn) cur(br)\nf_n volt(cp) volt(cn) cur(br)\n");

inline eels_class read_composite_text(const std::string& text) {
    const ebes_class basic = read_basic(small_ebes);
    const ebac_class basic_ac = read_basic(small_ebac, ebac_form);
    eels_class lib;
    text_file file = text_file_of(text);
    read_composites(file, eels_form, basic, basic_ac, lib);
    return lib;
}

// Frames that search routines print around a caller's message.
inline std::string wrong_keyword(const std::string& found, const std::string& wanted, const std::string& message) {
    return "check_word_2:\n   word_out is: " + found + "\n   word_given is: " + wanted +
           "\n   message from calling routine:\n   " + message + "\n   Halting...\n";
}
inline std::string not_in_list(const std::string& word, const std::string& message,
                               const std::string& routine = "find_word_3") {
    return routine + ": word not found.\n   word is: " + word + "\n   message from calling routine:\n   " + message +
           "\n   Halting...\n";
}
inline std::string too_many(int n, int m, const std::string& message) {
    return "compare_int_1: n > m. n = " + std::to_string(n) + ", m = " + std::to_string(m) + "\n" + message +
           "\nHalting...\n";
}

// n words "<stem>0 <stem>1 ...", each followed by `behind`.
inline std::string many(const std::string& stem, int n, const std::string& behind = "") {
    std::string all;
    for (int i = 0; i < n; ++i) all += ' ' + stem + std::to_string(i) + behind;
    return all;
}
// One word of n characters.
inline std::string long_word(int n) { return std::string(static_cast<std::size_t>(n), 'w'); }
