// plot_axis.h -- limits, ticks at round numbers, and the prefix of the unit that keeps them short.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// Values are shown divided by the factor: with "V" and 4700 the ticks read 4.7 and the unit kV.
struct unit_scale {
    double factor = 1;
    std::string unit;
};
// The scale for values up to this size. Units without prefixes (deg, rpm, none) get a power of ten when needed: "1e6".
unit_scale scale_for(double size, std::string_view unit);

std::string engineering_text(double value);  // four digits and a prefix: "100k", "1.5m"

struct axis {
    double lo = 0, hi = 1;
    bool log = false;           // then lo > 0
    unit_scale scale;           // a log axis is not scaled; its ticks carry the prefix: "10k"
    bool prefixes = false;      // the unit takes prefixes
    double step = 1;            // between ticks, as shown; linear axes
    std::vector<double> ticks;  // inside the limits; 1, 2 or 5 times a power of ten, as shown; degrees: parts of a turn
    std::vector<double> minor;  // of a log axis: 2, 3 ... 9 times the powers of ten

    double place(double v) const;  // 0 at lo, 1 at hi; not finite for what the axis cannot show
    std::string tick_text(double tick) const;
};
// n_ticks is an aim. Limits that are no range (equal, not finite) are widened.
axis make_axis(double lo, double hi, int n_ticks, std::string_view unit = "");
axis make_log_axis(double lo, double hi, int n_ticks, std::string_view unit = "");

std::string axis_label(std::string_view quantity, const axis& a);  // "vout, kV"

}  // namespace cli
