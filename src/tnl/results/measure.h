// measure.h -- expressions over the columns of a row table: "avg(vout, 4m, 5m)", "rms(i1) < 3.2".
#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/results/result_table.h"
#include "tnl/results/waveform.h"

namespace cli {

// An expression is a word for a stack machine: no text, however deep, costs more than its length.
struct measure_op {
    enum code { number, column, own_word, negate, add, subtract, multiply, divide, power, call };
    code what;
    double value = 0;      // number
    bool percent = false;  // number: written with %
    int index = 0;         // column: in names; call: in the table of functions; own_word: in those of the function
    int n_args = 0;        // call
};
enum class relation { less, less_equal, greater, greater_equal, equal, not_equal };

struct measure_side {
    std::string text;  // as written
    std::vector<measure_op> ops;
    bool constant = false;  // made of numbers alone
};
// label = side relation side relation side ...: all relations between neighbours must hold.
struct expression {
    std::string text, label;         // label: the text where the user gives none
    std::vector<std::string> names;  // of its columns and small signals, each once, in order; "3" for $3
    std::vector<measure_side> sides;
    std::vector<relation> relations;  // one fewer than sides
};
// Throws usage_error with the text and a caret below the fault.
expression parse_expression(std::string_view text);

// One line for each function, for the help.
std::string function_list();

struct quantity {
    double value = 0;
    std::string unit;  // "%": value 1 is shown as 100 %; empty: unknown or none
};
// Seven significant digits and the unit: "4.998213 V", "16.3 %".
std::string text_of(const quantity& q);
// The number that text_of shows.
double shown_value(const quantity& q);

struct measured {
    std::vector<quantity> sides;
    bool holds = true;  // every relation; none does with something that is not a number
};
// On one curve. The first column is what the others are functions of. A name X that no column has is the small signal
// of mag_of_X and phase_of_X, or of real_of_X and imag_of_X. Throws usage_error when the table lacks a column or a wave
// is left that nothing was measured on, measure_error when the rows do not allow the measurement.
measured evaluate(const expression& e, const result_table& table, std::size_t i_curve);

// The first side of the expression as a value in each row of the curve, in their order; what was measured stands in all
// of them. Throws as evaluate does.
bool is_by_row(const expression& e);  // no function in it needs more than one row
struct row_values {
    std::vector<double> value;
    std::string unit;
    std::vector<double> phase;  // degrees, of a small signal, whose magnitude the value is; else empty
};
row_values evaluate_rows(const expression& e, const result_table& table, std::size_t i_curve);

}  // namespace cli
