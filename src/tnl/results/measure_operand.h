// measure_operand.h -- what stands on the stack of an expression, and its arithmetic.
#pragma once
#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "tnl/results/measure.h"

namespace cli {

// The samples of one curve, by rising first column.
struct curve_view {
    const result_table& table;
    std::size_t begin, end;  // rows
    bool backwards = false;  // the first column falls
    bool ordered = true;     // it rises or falls
    bool log = false;        // it is a frequency: between rows, over its logarithm
    std::vector<double> axis;

    curve_view(const result_table& table_, std::size_t i_curve);
    std::vector<double> column(std::size_t j) const;
};

using row_list = std::shared_ptr<std::vector<double>>;

// What stands on the stack: a number, a wave with one value a row, or a small signal with a magnitude and a phase.
struct operand {
    double number = 0;
    row_list x = {};  // not for numbers; of a small signal the magnitude
    std::string unit = {};
    bool literal = false;       // made of numbers alone: takes any unit
    bool is_word = false;       // number is the position of a word of the function
    bool is_magnitude = false;  // a wave: of a small signal
    bool is_response = false;   // a small signal
    row_list phase = {};        // degrees, of a small signal
    // Columns that a small signal would need and the file does not have; empty: none.
    std::string no_magnitude = {}, no_phase = {};

    bool is_wave() const { return x != nullptr; }
};

// Throw usage_error where the file lacks the column of that part of a small signal.
const std::vector<double>& magnitude_of(const operand& o, const curve_view& curve);
const std::vector<double>& phase_of(const operand& o, const curve_view& curve);

row_list rows_of(std::vector<double> values);

inline constexpr double degrees = 180 / 3.14159265358979323846;  // of a radian

// f of two samples, or of two numbers.
template <class F>
operand by_sample(operand a, const operand& b, F f) {
    operand r;
    r.literal = a.literal && b.literal;
    if (!a.is_wave() && !b.is_wave()) {
        r.number = f(a.number, b.number);
        return r;
    }
    const std::vector<double>*p = a.x.get(), *q = b.x.get();
    r.x = p != nullptr && a.x.use_count() == 1 ? a.x : std::make_shared<std::vector<double>>((p ? p : q)->size());
    std::vector<double>& out = *r.x;
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = f(p ? (*p)[i] : a.number, q ? (*q)[i] : b.number);
    return r;
}

// Units follow where the result has one. Small signals are complex numbers: their sums need both parts.
operand arithmetic(measure_op::code what, operand a, const operand& b, const curve_view& curve);
operand negated(operand a);

}  // namespace cli
