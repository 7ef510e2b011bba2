// measure_functions.h -- the functions of measurements as a table.
#pragma once
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/results/waveform.h"

namespace cli {

// Arguments of a call, numbers and waves in one list each by their order.
struct call_arguments {
    std::vector<wave> waves;
    std::vector<double> numbers;
    edge which = edge::any;
};

enum class unit_of { wave, axis, per_axis, wave_times_axis, wave_per_axis, none };

// A form is one letter an argument: w a wave, n a number, e an edge. A window's two ends are taken off before the
// function is called.
struct measure_function {
    std::string_view name;
    std::string_view usage, text;  // for the help
    std::string_view forms;        // parted by blanks
    std::string_view windows;      // those of the same forms with a window behind, parted by blanks
    unit_of unit = unit_of::none;  // of the result
    double (*measure)(const call_arguments& a) = nullptr;
    double (*by_sample)(double) = nullptr;  // instead: a function of each sample, or of a number
    bool is_ratio = false;                  // shown in %
    bool takes_edge = false;
    bool needs_axis = true;  // false: rows in any order will do
};
std::span<const measure_function> measure_functions();
int find_function(std::string_view name);           // -1 if none
std::string near_functions(std::string_view name);  // "; near names: avg" or empty
bool has_form(const measure_function& f, std::string_view letters);
bool has_window(const measure_function& f, std::string_view letters);  // the last two letters are one

}  // namespace cli
