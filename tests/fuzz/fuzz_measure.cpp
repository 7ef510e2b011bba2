#include "targets.h"
#include "tnl/common/exit_status.h"
#include "tnl/results/export.h"
#include "tnl/results/measure.h"

namespace {
using namespace cli;

// Every format takes every table; only VCD may refuse it.
void write_all(const result_table& table) {
    if (table.n_rows() == 0) return;
    export_choice choice{table, {}, 0, table.n_curves(), "t", "", true, false};
    for (std::size_t j = 0; j < table.n_columns(); ++j) choice.columns.push_back(j);
    for (const auto write : {write_csv, write_tsv, write_npy, write_raw, write_vcd}) {
        output_file out("/dev/null");
        try {
            write(choice, out);
        } catch (const file_error&) {
            if (write != write_vcd) throw;
        }
    }
}
}  // namespace

// Rows, a line "--", then an expression a line.
bool fuzz_measure(std::string_view text) {
    const std::size_t cut = text.find("--\n");
    bool all = cut != std::string_view::npos;
    try {
        result_table table = read_result_table(text.substr(0, cut), "rows");
        const char* const units[] = {"s", "V", "A", "%"};
        for (std::size_t j = 0; j < table.n_columns(); ++j) table.columns[j].unit = units[j % 4];
        write_all(table);
        text.remove_prefix(all ? cut + 3 : text.size());
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            try {
                evaluate(parse_expression(text.substr(0, end)), table, 0);
            } catch (const usage_error&) {
                all = false;
            } catch (const measure_error&) {
                all = false;
            }
            text.remove_prefix(std::min(end + 1, text.size()));
        }
    } catch (const file_error&) {
        return false;
    }
    return all;
}
