// pictures.cpp -- draws examples/NAME/picture.svg from the rows of finished runs.
//
//   pictures EXAMPLES RUNS    EXAMPLES/NAME/picture.svg from RUNS/NAME/FILE
#include <cmath>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tnl/plot.h"
#include "tnl/rows.h"

namespace {
struct shown_column {
    std::string file;
    int column;  // of the file; 0 is the time
    double factor;
    std::string label;
};
struct picture {
    std::string name, title, x_label, y_label;
    double x_factor, x_from,
        x_to;  // in the unit of the label; all rows if x_to is not above x_from, else counted from the first
    std::vector<shown_column> columns;
};

const picture pictures[] = {
    {"rc_step",
     "A capacitor is charged through a resistor",
     "t, ms",
     "V, mA",
     1e3,
     0,
     0,
     {{"wave.dat", 1, 1, "capacitor, V"}, {"wave.dat", 2, 1e3, "current, mA"}}},
    {"rlc_step",
     "Damped oscillation",
     "t, ms",
     "V, 10 mA",
     1e3,
     0,
     0,
     {{"wave.dat", 1, 1, "capacitor, V"}, {"wave.dat", 2, 100, "current, 10 mA"}}},
    {"rectifier",
     "Full-wave rectifier with smoothing",
     "t, ms",
     "V",
     1e3,
     0,
     60,
     {{"wave.dat", 1, 1, "source, V"}, {"wave.dat", 2, 1, "output, V"}}},
    {"buck_open",
     "Buck converter, open loop: five periods at rest",
     "t, us behind 4.9 ms",
     "V, A",
     1e6,
     4900,
     5000,
     {{"wave.dat", 1, 1, "output, V"}, {"wave.dat", 2, 1, "inductor, A"}, {"wave.dat", 3, 1, "switch node, V"}}},
    {"buck_control",
     "Voltage control: load step at 10 ms, set point at 20 ms",
     "t, ms",
     "V, 10 %",
     1e3,
     0,
     0,
     {{"wave.dat", 2, 1, "output, V"}, {"wave.dat", 1, 1, "set point, V"}, {"wave.dat", 4, 10, "duty ratio, 10 %"}}},
    {"boost", "Boost converter from 12 V to 30 V", "t, ms", "V", 1e3, 0, 4, {{"run.dat", 1, 1, "output, V"}}},
    {"flyback",
     "Flyback converter: winding currents in three periods",
     "t, us behind 7.94 ms",
     "A",
     1e6,
     7940,
     8000,
     {{"wave.dat", 2, 1, "first winding, A"}, {"wave.dat", 3, 1, "diode, A"}}},
    {"rectifier_3ph",
     "Three-phase diode rectifier",
     "t, ms",
     "V, 0.1 A",
     1e3,
     0,
     40,
     {{"wave.dat", 1, 1, "DC voltage, V"}, {"wave.dat", 2, 1, "phase a, V"}, {"wave.dat", 4, -10, "current a, 0.1 A"}}},
    {"inverter_spwm",
     "Sine-triangle modulation, RL load",
     "t, ms behind 40 ms",
     "V, 0.1 A",
     1e3,
     40,
     60,
     {{"wave.dat", 1, 1, "output, V"}, {"wave.dat", 2, 10, "current, 0.1 A"}}},
    {"thyristor_phase",
     "Phase control: output at three firing angles",
     "t, ms",
     "V",
     1e3,
     0,
     0,
     {{"wave_30.dat", 1, 1, "30 degrees"}, {"wave_60.dat", 1, 1, "60 degrees"}, {"wave_120.dat", 1, 1, "120 degrees"}}},
    {"pll",
     "Phase-locked loop: 60 degrees off, then a step to 52 Hz",
     "t, s",
     "Hz",
     1,
     0,
     0,
     {{"wave.dat", 1, 1, "frequency of the loop, Hz"}}},
};

std::string text_of(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::cout << "pictures: cannot read " << path << '\n';
        std::exit(5);
    }
    return {std::istreambuf_iterator<char>(in), {}};
}

// Keeps the points that a line through the kept ones would miss by more than `far` (Ramer, Douglas and Peucker); both
// axes scaled to 1.
void keep_bends(const cli::plot_series& s, std::size_t a, std::size_t b, double far, std::vector<bool>& kept) {
    std::size_t worst = a;
    double most = far;
    const double dx = s.x[b] - s.x[a], dy = s.y[b] - s.y[a], length = std::hypot(dx, dy);
    for (std::size_t i = a + 1; i < b; ++i) {
        const double d = std::fabs((s.x[i] - s.x[a]) * dy - (s.y[i] - s.y[a]) * dx) / length;
        if (d > most) most = d, worst = i;
    }
    if (worst == a) return;
    kept[worst] = true;
    keep_bends(s, a, worst, far, kept);
    keep_bends(s, worst, b, far, kept);
}

cli::plot_series thinned(const cli::plot_series& s, double width, double height) {
    cli::plot_series scaled = s, out{s.name, {}, {}};
    for (double& x : scaled.x) x /= width;
    for (double& y : scaled.y) y /= height;
    std::vector<bool> kept(s.x.size(), false);
    kept.front() = kept.back() = true;
    keep_bends(scaled, 0, s.x.size() - 1, 3e-4, kept);
    for (std::size_t i = 0; i < s.x.size(); ++i)
        if (kept[i]) out.x.push_back(s.x[i]), out.y.push_back(s.y[i]);
    return out;
}

cli::plot drawn(const picture& p, const std::string& runs) {
    cli::plot out{p.title, p.x_label, p.y_label, {}};
    const bool all = !(p.x_to > p.x_from);
    for (const shown_column& c : p.columns) {
        cli::plot_series s{c.label, {}, {}};
        double first = 0;
        const std::vector<cli::curve> curves = cli::read_rows(text_of(runs + "/" + p.name + "/" + c.file));
        for (const cli::row& row : curves.at(0)) {
            const double x = row.at(0) * p.x_factor;
            if (!all && (x < p.x_from || x > p.x_to)) continue;
            if (!all && s.x.empty()) first = x;
            s.x.push_back(x - first);
            s.y.push_back(row.at(static_cast<std::size_t>(c.column)) * c.factor);
        }
        out.series.push_back(s);
    }
    double lo = INFINITY, hi = -INFINITY;
    for (const cli::plot_series& s : out.series)
        for (const double y : s.y) lo = std::fmin(lo, y), hi = std::fmax(hi, y);
    for (cli::plot_series& s : out.series) s = thinned(s, s.x.back() - s.x.front(), hi - lo);
    return out;
}
}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cout << "usage: pictures EXAMPLES RUNS\n";
        return 2;
    }
    const std::string examples = argv[1], runs = argv[2];
    for (const picture& p : pictures) {
        std::ofstream out(examples + "/" + p.name + "/picture.svg");
        out << cli::draw_svg(drawn(p, runs));
        if (!out) return 5;
    }
    return 0;
}
