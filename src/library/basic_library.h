// basic_library.h -- what all libraries of basic elements hold, and their one reader.
#pragma once
#include <string>
#include <vector>

#include "base/constants_class.h"
#include "base/enum1.h"
#include "library/function_table.h"
#include "library/lists.h"

// One 0/1 vector per flag word, [n entries]; a word that a family lacks keeps its default in every entry.
struct entry_flags {
    std::vector<int> limit_tstep, save_history, limit_newton, calc_acp, startup_sprt, allow_ssw, gmin_step;
    std::vector<int> limit_modulo, allow_reset, set_rparm_1, get_rparm_1;  // general blocks
    std::vector<int> evaluate, integrate, delay, allow_xmixed;             // explicit blocks; the first of three is 1
    std::vector<int> noise_source;                                         // small-signal forms
    std::vector<int> pure;          // derivatives depend on parameters and analysis alone; a call has no side effect
    std::vector<int> timeless;      // functions depend on parameters, analysis and the unit's variables alone
    std::vector<int> jac_const;     // "Jacobian: constant"
    std::vector<int> ground_dummy;  // the entry named ground_dummy_1
};

// Templates of basic elements, in file order. Filled once by a reader; read-only afterwards.
struct basic_library {
    library_lists list;
    entry_flags flag;
    function_table func;            // of explicit blocks slopes of states, evaluated
    function_table func_g, func_h;  // and in a network: slopes again, algebraic rows
    jacobian_map map;
    // generating mode
    int n_written = 0;                 // entries whose source was written
    std::vector<char> asks_frequency;  // [n entries] whether its source names the frequency

    int n() const { return list.n(); }
};

// One name a family; what they hold is the same.
using ebes_class = basic_library;
using ebac_class = basic_library;
using gbes_class = basic_library;
using gbac_class = basic_library;
using dbes_class = basic_library;
using xbes_class = basic_library;
using xbac_class = basic_library;

// All that makes one family's library different from the others (see basic_forms.cpp).
struct basic_form;
extern const basic_form ebes_form, ebac_form, gbes_form, gbac_form, dbes_form, xbes_form, xbac_form;

// Reads a whole library file ("<class>: file <path> does not exist. Halting..." if it cannot be opened). With
// write_glue and the second word of constants 1 or 2 it also writes the family's sources into the folder of the file.
void read_library(const std::string& path, const basic_form& form, truefalse write_glue,
                  const constants_class& constants, basic_library& lib);

ebes_class read_ebes(truefalse write_glue, const constants_class& constants);  // .tnlaux/ebes.aux
ebac_class read_ebac(truefalse write_glue, const constants_class& constants);  // .tnlaux/ebac.aux
gbes_class read_gbes(truefalse write_glue, const constants_class& constants);  // .tnlaux/gbes.aux
gbac_class read_gbac(truefalse write_glue, const constants_class& constants);  // .tnlaux/gbac.aux
