// run_tables.h -- the tables of a run, and the one that a request is about.
#pragma once
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/results/open_run.h"

namespace cli {

// What the user names as RUN, its tables read when asked for.
class run_tables {
public:
    // RUN, or "-" for rows on standard input. file: the path of one of its row files, or empty. Throws file_error, and
    // usage_error for a file that the run does not have.
    run_tables(const std::string& run, const std::string& file);

    // The table that holds all these columns, the finest if there are several; note() tells which. Throws usage_error
    // when there is none, with near names. digital_first: one of digital levels before all others.
    const result_table& with_columns(const std::vector<std::string>& names, bool digital_first = false);

    const run_record& record() const { return run_.record; }
    // What the user should know: of a run that did not come to its end, and of tables that were chosen among several.
    // Lines that begin with "tnl: "; empty for nothing.
    std::string note() const;
    // Why the rows are not those of the last run from its begin to its end, or empty. Of rows alone nothing is known.
    std::string cut() const;

private:
    const result_table& load(const record_file& file);
    std::vector<std::string> names_of(const record_file& file);

    opened_run run_;
    std::vector<const record_file*> files_;      // tables that may be meant
    std::map<std::string, result_table> table_;  // that were read
    std::set<std::string> choices_;              // lines about tables chosen among several
};

// Throws usage_error: the table lacks this column.
[[noreturn]] void fail_no_column(std::string_view name, const std::vector<std::string>& known, const std::string& path);

// Curves first and behind: all, or the one that the user numbered from 1. Throws usage_error; 0 means all.
struct curve_range {
    std::size_t first, end;
};
curve_range curves_of(const result_table& table, int number);

}  // namespace cli
