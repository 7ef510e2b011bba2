// postproc_plan.h -- what a file of results computed from other files is made of: which results, of which columns.
#pragma once
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "settings/solve_class.h"

// A column of a file of the block; column 0 is the time or the frequency.
struct file_column {
    int i_file = -1, column = -1;
};

struct postproc_plan {
    struct result {
        int instance = -1;  // gelu
        int index = -1;     // which of its results
    };
    std::vector<result> results;  // one a variable of the file, in order
    // By instance, what its main variables are measured by, at most two of them: over time one column each, in small
    // signals magnitude and phase.
    std::map<int, std::vector<file_column>> columns;
};

// Elements of these composites name general variables in x, or x1 and x2. What they measure is the column of an output
// variable of such a variable (var_of_X; mag_of_ and phase_of_ of a var_ac_of_X) in the first row file of the block
// that shows it, for two variables over time the first that shows both, else each in its own.
struct postproc_type {
    std::string_view name;  // of the composite
    bool ac;
    int n_x, n_results;
};
inline constexpr postproc_type postproc_types[] = {
    {"calc_avg", false, 1, 1}, {"calc_rms", false, 1, 1}, {"calc_avg_rms", false, 1, 2},
    {"calc_thd", false, 1, 3}, {"calc_pf", false, 2, 4},  {"calcac_pf", true, 2, 3},
};
inline constexpr int most_postproc_x = 2, most_postproc_results = 4;

// Plans file i_file of the block, whose variables are results of one of the two kinds. Halts where the file cannot have
// results, or a column is not there to be measured.
postproc_plan plan_postproc(const solve_class& slv, const circuit& c, int i_file);
// The type of a result's instance; halts for composites that are none of these, or lack what theirs needs.
const postproc_type& type_of_result(const circuit& c, const postproc_plan::result& r, bool ac);

// The name that stops of a file's results begin with: postproc_1 or postproc_1_ac.
inline const char* postproc_routine(bool ac) { return ac ? "postproc_1_ac" : "postproc_1"; }
