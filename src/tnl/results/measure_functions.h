// measure_functions.h -- the functions of measurements as a table.
#pragma once
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/results/response.h"
#include "tnl/results/waveform.h"

namespace cli {

// Arguments of a call, numbers and waves in one list each by their order.
struct call_arguments {
    std::vector<wave> waves;
    std::vector<response> responses;
    std::vector<double> numbers;
    int word = 0;  // position in the function's words
};

enum class unit_of { wave, axis, per_axis, wave_times_axis, wave_per_axis, decibel, degrees, none };

// What the first argument of a function may be besides a number.
enum class takes : unsigned char {
    waves,      // values a row
    both,       // or a small signal, whose magnitude it goes by
    magnitude,  // a small signal, or a magnitude alone
    phase,      // a small signal with its phase
};

// A form is one letter an argument: w a wave, n a number, e one of the function's words. A window's two ends are taken
// off before the function is called.
struct measure_function {
    std::string_view name;
    std::string_view usage, text;  // for the help
    std::string_view forms;        // parted by blanks
    std::string_view windows;      // those of the same forms with a window behind, parted by blanks
    unit_of unit = unit_of::none;  // of the result
    double (*measure)(const call_arguments& a) = nullptr;
    double (*by_sample)(double) = nullptr;  // instead: a function of each sample, or of a number
    bool is_ratio = false;                  // shown in %
    std::string_view words = {};            // that may be an argument, parted by blanks
    bool needs_axis = true;                 // false: rows in any order will do
    takes of = takes::waves;
    // Instead of measure: of a magnitude and a phase in degrees, in each row, or at the frequency behind it.
    double (*of_sample)(double magnitude, double phase) = nullptr;
};
std::span<const measure_function> measure_functions();
int find_function(std::string_view name);                            // -1 if none
std::string near_functions(std::string_view name);                   // "; near names: avg" or empty
int find_word_of(const measure_function& f, std::string_view word);  // among its words; -1: none
bool has_form(const measure_function& f, std::string_view letters);
bool has_window(const measure_function& f, std::string_view letters);  // the last two letters are one

}  // namespace cli
