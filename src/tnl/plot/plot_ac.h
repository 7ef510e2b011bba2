// plot_ac.h -- small signals in pictures: magnitudes in dB over phases, or curves in the complex plane.
#pragma once
#include <string>
#include <vector>

#include "tnl/plot/plot_rows.h"
#include "tnl/results/measure.h"

namespace cli {

// Names X for which the table has mag_of_X and phase_of_X, or real_of_X and imag_of_X, in their order.
std::vector<std::string> small_signals_in(const result_table& table);

// The expression's values in all rows as new columns: one, or two for a small signal, mag_of_NAME and phase_of_NAME.
// Throws usage_error and measure_error.
std::vector<int> add_columns_of(const expression& e, result_table& table);

// Magnitudes among these columns become dB.
void take_decibels(result_table& table, const std::vector<int>& columns);
// Magnitudes and what is in dB come first, then degrees, then all else.
void order_by_panels(const result_table& table, std::vector<int>& columns);

// The small signal's imaginary part over its real part, as new columns. Throws usage_error for what is none.
plot_source locus_of(const expression& e, result_table& table);

}  // namespace cli
