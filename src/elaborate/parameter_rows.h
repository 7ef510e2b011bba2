// parameter_rows.h -- the parameters of one instance while they are put together.
#pragma once
#include <string>
#include <vector>

#include "elaborate/families.h"

// Rows as in instance_core.
struct parameter_rows {
    std::vector<int> iprm;
    std::vector<std::string> sprm;
    std::vector<double> rprm, sv, ig;
    std::vector<int> rprm_tie, sv_tie, ig_tie;
};

// The defaults of the library, tied to nothing.
parameter_rows default_rows(const library_lists& list, int e);

// Values of a model file, one logical line: <keyword> name X type T p v ... n_plain: real parameters that can be set.
void read_model_file(const composite_library& lib, const family_form& form, int i_lib, const std::string& path,
                     int n_plain, parameter_rows& row);

// Evaluates what the composite computes, and appends the rows to those of the instances.
void append_rows(const composite_library& lib, int e, parameter_rows& row, instance_core& inst);

// Instance n, of which nothing could be read, and after which the program goes on: a name without values.
void keep_as_empty(instance_core& inst, int n, int i_lib, int statement, const std::string& name);

[[noreturn]] void check_this_line(std::string_view routine, std::string_view word, const words& w);
