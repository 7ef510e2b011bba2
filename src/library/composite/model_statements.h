// model_statements.h -- the deck's model statements: named sets of parameter values of one composite.
#pragma once
#include <string>
#include <vector>

#include "base/row_table.h"
#include "deck/circuit_file.h"
#include "deck/gprm_class.h"
#include "deck/library_forms.h"
#include "library/composite/composite_library.h"

// One row per statement in each table, starting from the library's defaults. tie: greal that a value named, or -1.
struct model_class {
    std::vector<std::string> name;
    std::vector<int> i_lib;  // composite
    row_table<int> iprm;
    row_table<std::string> sprm;
    row_table<double> rprm, sv, ig;
    row_table<int> rprm_tie, sv_tie, ig_tie;

    int n() const { return static_cast<int>(name.size()); }
    int find(std::string_view model, int i_lib_wanted) const;  // first of that name and type; -1
};

// Marks and reads all statements of the circuit block that begin with the library's model word.
model_class read_models(circuit_file& cf, const gprm_class& gprm, const composite_library& lib,
                        const library_form& form);
