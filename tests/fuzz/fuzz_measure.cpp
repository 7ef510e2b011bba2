#include "targets.h"
#include "tnl/common/exit_status.h"
#include "tnl/results/export.h"
#include "tnl/results/measure.h"

namespace {
using namespace cli;

// The same rows as small signals x and y over frequency.
result_table over_frequency(result_table table) {
    const char* const names[] = {"frequency", "mag_of_x", "phase_of_x", "real_of_y", "imag_of_y", "p"};
    const char* const units[] = {"Hz", "V", "deg", "A", "A", "W"};
    for (std::size_t j = 0; j < table.n_columns() && j < std::size(names); ++j) table.columns[j] = {names[j], units[j]};
    table.kind = "ac";
    return table;
}

// Whether some table gives the expression a value; faults of the text and of the rows are none of the reader.
bool is_measured(const std::string& text, std::span<const result_table> tables) {
    bool any = false;
    for (const result_table& table : tables) {
        try {
            evaluate(parse_expression(text), table, 0);
            any = true;
        } catch (const usage_error&) {
        } catch (const measure_error&) {
        }
    }
    return any;
}

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
        const result_table tables[] = {table, over_frequency(table)};
        for (const small_signal_form form :
             {small_signal_form::as_it_is, small_signal_form::cartesian, small_signal_form::polar})
            write_all(chosen_columns(tables[1], {}, form));
        text.remove_prefix(all ? cut + 3 : text.size());
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            all = is_measured(std::string(text.substr(0, end)), tables) && all;
            text.remove_prefix(std::min(end + 1, text.size()));
        }
    } catch (const file_error&) {
        return false;
    }
    return all;
}
