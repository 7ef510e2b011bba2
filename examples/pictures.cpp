// pictures.cpp -- draws examples/NAME/*.svg from the rows of finished runs.
//
//   pictures EXAMPLES RUNS    EXAMPLES/NAME/picture.svg from RUNS/NAME/FILE; of small signals and of logic as `tnl
//                             plot` does
#include <fstream>
#include <iostream>
#include <list>
#include <string>
#include <vector>

#include "tnl/plot/plot_rows.h"
#include "tnl/plot/plot_runs.h"
#include "tnl/run/run_folder.h"

namespace {
struct shown_column {
    std::string file;
    int column;  // of the file; 0 is the time
    std::string name, unit;
    double times = 1;
};
struct picture {
    std::string name, title, time_name;
    double from, to;  // s; the whole run if to is not above from, else the time counts from the begin
    std::vector<shown_column> columns;
};

const picture pictures[] = {
    {"rc_step",
     "A capacitor is charged through a resistor",
     "time",
     0,
     0,
     {{"wave.dat", 1, "capacitor", "V"}, {"wave.dat", 2, "current", "A"}}},
    {"rlc_step",
     "Damped oscillation",
     "time",
     0,
     0,
     {{"wave.dat", 1, "capacitor", "V"}, {"wave.dat", 2, "current", "A"}}},
    {"rectifier",
     "Full-wave rectifier with smoothing",
     "time",
     0,
     60e-3,
     {{"wave.dat", 1, "source", "V"}, {"wave.dat", 2, "output", "V"}, {"wave.dat", 3, "current drawn", "A", -1}}},
    {"buck_open",
     "Buck converter, open loop: five periods at rest",
     "time behind 4.9 ms",
     4.9e-3,
     5e-3,
     {{"wave.dat", 3, "switch node", "V"}, {"wave.dat", 1, "output", "V"}, {"wave.dat", 2, "inductor", "A"}}},
    {"sync_buck_losses",
     "Synchronous buck: two periods at rest",
     "time behind 4.98 ms",
     4.98e-3,
     5e-3,
     {{"wave.dat", 3, "switch node", "V"}, {"wave.dat", 1, "output", "V"}, {"wave.dat", 2, "inductor", "A"}}},
    {"buck_control",
     "Voltage control: load step at 10 ms, set point at 20 ms",
     "time",
     0,
     0,
     {{"wave.dat", 2, "output", "V"}, {"wave.dat", 1, "set point", "V"}, {"wave.dat", 4, "duty ratio", "%", 100}}},
    {"boost", "Boost converter from 12 V to 30 V", "time", 0, 4e-3, {{"run.dat", 1, "output", "V"}}},
    {"flyback",
     "Flyback converter: winding currents in three periods",
     "time behind 7.94 ms",
     7.94e-3,
     8e-3,
     {{"wave.dat", 2, "first winding", "A"}, {"wave.dat", 3, "diode", "A"}}},
    {"rectifier_3ph",
     "Three-phase diode rectifier",
     "time",
     0,
     40e-3,
     {{"wave.dat", 1, "DC voltage", "V"},
      {"wave.dat", 2, "phase a", "V"},
      {"wave.dat", 4, "current of phase a", "A", -1}}},
    {"rectifier_power",
     "Two rectifiers: an inductor or a capacitor before the load",
     "time behind 160 ms",
     160e-3,
     200e-3,
     {{"wave.dat", 1, "mains", "V"},
      {"wave.dat", 2, "current with inductor", "A"},
      {"wave.dat", 3, "current with capacitor", "A"}}},
    {"inverter_spwm",
     "Sine-triangle modulation, RL load",
     "time behind 40 ms",
     40e-3,
     60e-3,
     {{"wave.dat", 1, "output", "V"}, {"wave.dat", 2, "current", "A"}}},
    {"inverter_3ph",
     "Three-phase inverter in six steps: phase a",
     "time behind 40 ms",
     40e-3,
     60e-3,
     {{"wave.dat", 1, "voltage to the star point", "V"},
      {"wave.dat", 2, "current", "A"},
      {"wave.dat", 4, "given back by the diode", "A"}}},
    {"thyristor_phase",
     "Phase control: output at three firing angles",
     "time",
     0,
     0,
     {{"wave_30.dat", 1, "30 degrees", "V"},
      {"wave_60.dat", 1, "60 degrees", "V"},
      {"wave_120.dat", 1, "120 degrees", "V"}}},
    {"pll",
     "Phase-locked loop: 60 degrees off, then a step to 52 Hz",
     "time",
     0,
     0,
     {{"wave.dat", 1, "frequency of the loop", "Hz"}, {"wave.dat", 2, "phase error", "rad"}}},
    {"dc_drive",
     "Speed control: from rest to 100 rad/s, a load of 0.5 N m at 0.2 s",
     "time",
     0,
     0,
     {{"wave.dat", 2, "speed", "rad/s"}, {"wave.dat", 3, "current", "A"}, {"wave.dat", 4, "voltage", "V"}}},
    {"buck_sampled",
     "Sampled voltage control: from rest to 12 V, load step at 10 ms",
     "time",
     0,
     0,
     {{"wave.dat", 1, "output", "V"}, {"wave.dat", 2, "inductor", "A"}, {"wave.dat", 3, "duty ratio", "%", 100}}},
    {"filter_degree_6",
     "A step with ripple through six poles and through one",
     "time",
     0,
     0,
     {{"wave.dat", 1, "signal", ""}, {"wave.dat", 3, "one pole", ""}, {"wave.dat", 2, "six poles", ""}}},
    {"induction_vf",
     "An induction machine at a drive of constant volts per hertz",
     "time",
     0,
     0,
     {{"wave.dat", 1, "frequency", "Hz"}, {"wave.dat", 2, "speed", "rad/s"}, {"wave.dat", 3, "torque", "N m"}}},
    {"pmsm_vector",
     "Vector control of a permanent-magnet machine",
     "time",
     0,
     0,
     {{"wave.dat", 1, "speed", "rad/s"}, {"wave.dat", 2, "torque", "N m"}, {"wave.dat", 3, "current", "A"}}},
    {"induction_inverter",
     "An induction machine starts on an inverter",
     "time",
     0,
     0.3,
     {{"wave.dat", 1, "speed", "rad/s"}, {"wave.dat", 2, "torque", "N m"}, {"wave.dat", 3, "current of a", "A"}}},
    {"direct_torque_control",
     "Direct torque control of an induction machine",
     "time",
     0,
     0,
     {{"wave.dat", 1, "speed", "rad/s"}, {"wave.dat", 2, "torque", "N m"}, {"wave.dat", 4, "flux", "V s"}}},
    {"brushless_six_step",
     "A brushless machine in six steps: from 0.2 to 0.8 N m at 150 ms",
     "time behind 140 ms",
     0.14,
     0.17,
     {{"wave.dat", 1, "speed", "rad/s"}, {"wave.dat", 2, "torque", "N m"}, {"wave.dat", 3, "current of a", "A"}}},
    {"battery_charger",
     "A battery is charged: 2 A, then 16.4 V",
     "time",
     0,
     0,
     {{"wave.dat", 1, "battery", "V"}, {"wave.dat", 2, "current", "A"}, {"wave.dat", 3, "charge", "%", 100}}},
    {"digital_pid",
     "A digital controller of speed: set point at 5 ms, load at 100 ms",
     "time",
     0,
     0,
     {{"wave.dat", 1, "speed", "rad/s"}, {"wave.dat", 2, "current", "A"}, {"wave.dat", 3, "voltage", "V"}}},
    {"solar_tracker",
     "The way to the largest power of a solar module",
     "time",
     0,
     0.15,
     {{"wave.dat", 2, "power", "W"}, {"wave.dat", 1, "module", "V"}, {"wave.dat", 3, "duty ratio", "%", 100}}},
    {"dual_active_bridge",
     "Dual active bridge at 30 degrees",
     "time",
     0,
     0,
     {{"wave.dat", 2, "first bridge", "V"}, {"wave.dat", 1, "coil", "A"}}},
    {"active_front_end",
     "Active rectifier: twice the load at 60 ms",
     "time behind 40 ms",
     40e-3,
     140e-3,
     {{"wave.dat", 1, "DC voltage", "V"},
      {"wave.dat", 5, "mains, phase a", "V"},
      {"wave.dat", 2, "current of phase a", "A"}}},
    {"droop_inverters",
     "Two inverters share a load by droop; it doubles at 0.5 s",
     "time",
     0,
     0,
     {{"wave.dat", 1, "power of the first", "W"},
      {"wave.dat", 2, "power of the second", "W"},
      {"wave.dat", 3, "frequency of the first", "Hz", 0.15915494},
      {"wave.dat", 4, "frequency of the second", "Hz", 0.15915494}}},
    {"grid_following_dip",
     "A grid-following inverter through a dip to half of the voltage",
     "time behind 60 ms",
     60e-3,
     320e-3,
     {{"wave.dat", 2, "grid, phase a", "V"},
      {"wave.dat", 1, "current of phase a", "A"},
      {"wave.dat", 3, "power", "W"}}},
    {"induction_start",
     "An induction machine starts on the line; a load of 12 N m at 0.8 s",
     "time",
     0,
     0,
     {{"wave.dat", 1, "speed", "1/min"}, {"wave.dat", 2, "torque", "N m"}, {"wave.dat", 3, "current of a", "A"}}},
    {"dc_chopper",
     "A DC machine at a chopper: start, and a load of 20 N m at 0.7 s",
     "time",
     0,
     0,
     {{"wave.dat", 1, "speed", "1/min"}, {"wave.dat", 2, "current", "A"}, {"wave.dat", 3, "duty ratio", "%", 100}}},
    {"synchronous_bus",
     "A synchronous machine on a bus: its turbine goes from 2 N m to 6 N m at 2 s",
     "time",
     0,
     0,
     {{"wave.dat", 1, "load angle", "deg"}, {"wave.dat", 2, "torque", "N m"}, {"wave.dat", 4, "field current", "A"}}},
    {"synchronous_exciter",
     "A synchronous machine with exciter: 2 to 8 N m",
     "time",
     0,
     0,
     {{"wave.dat", 1, "load angle", "deg"}, {"wave.dat", 2, "terminals", "V"}, {"wave.dat", 4, "field", "A"}}},
    {"network_thyristor",
     "A thyristor charges a capacitor",
     "time",
     0,
     0,
     {{"wave.dat", 1, "source", "V"}, {"wave.dat", 2, "capacitor", "V"}, {"wave.dat", 3, "current", "A"}}},
    {"bouncing_ball",
     "A ball that bounces",
     "time",
     0,
     0,
     {{"wave.dat", 1, "height", "m"}, {"wave.dat", 2, "speed", "m/s"}}},
    {"buck_steady",
     "Steady state of a buck converter",
     "time",
     0,
     0,
     {{"wave.dat", 3, "switch node", "V"}, {"wave.dat", 1, "output", "V"}, {"wave.dat", 2, "inductor", "A"}}},
    {"boost_steady",
     "Steady state of a boost converter",
     "time",
     0,
     0,
     {{"wave.dat", 3, "switch node", "V"}, {"wave.dat", 1, "output", "V"}, {"wave.dat", 2, "inductor", "A"}}},
    {"rectifier_steady",
     "Steady state of a rectifier",
     "time",
     0,
     0,
     {{"wave.dat", 1, "mains", "V"}, {"wave.dat", 2, "output", "V"}, {"wave.dat", 3, "current", "A"}}},
    {"van_der_pol",
     "The oscillator of van der Pol, mu = 1: one period",
     "time",
     0,
     0,
     {{"wave.dat", 1, "x", ""}, {"wave.dat", 2, "dx/dt", "1/s"}}},
    {"lc_oscillator",
     "An LC oscillator: one period",
     "time",
     0,
     0,
     {{"wave.dat", 1, "voltage", "V"}, {"wave.dat", 2, "inductor", "A"}, {"wave.dat", 3, "conductance", "A"}}},
    {"current_mode",
     "Current-mode control at 24 V: one period",
     "time",
     0,
     0,
     {{"wave_24.dat", 1, "inductor", "A"}, {"wave_24.dat", 3, "switch", ""}}},
    {"llc_gain",
     "Half-bridge resonant converter at 80 kHz: one period",
     "time",
     0,
     0,
     {{"wave_80.dat", 5, "leg", "V"},
      {"wave_80.dat", 4, "resonant capacitor", "V"},
      {"wave_80.dat", 2, "resonant inductor", "A"},
      {"wave_80.dat", 3, "magnetizing", "A"}}},
};

// Of a file over frequency, or of a family of curves. A window is one in the complex plane: of the real part, and of
// the imaginary one.
struct response_picture {
    std::string name, file, picture, title;
    double from = 0, to = 0, y_from = 0, y_to = 0;  // all that the file has if to is not above from
};

const response_picture response_pictures[] = {
    {"lc_filter", "bode.dat", "picture.svg", "LC filter with loads of 1 to 20 ohm"},
    {"loop_gain", "bode.dat", "picture.svg", "Loop gain of a buck converter"},
    {"loop_gain", "nyquist.dat", "nyquist.svg", "The same loop around -1", -3, 1, -2, 1},
    {"transformer_impedance", "bode.dat", "picture.svg", "Impedance of a transformer, dB of an ohm"},
    {"locked_loop", "bode.dat", "picture.svg", "Phase-locked loop at three gains"},
    {"output_curves", "out.dat", "picture.svg", "Output curves of an n-channel MOSFET"},
    {"common_emitter", "out.dat", "picture.svg", "Gain of an amplifier with a common emitter"},
    {"state_variable", "bode.dat", "picture.svg", "State-variable filter with the quality 5"},
};

// Of logic: curves with lanes below them, or lanes alone.
struct shown_name {
    std::string column, name, unit;
};
struct logic_picture {
    std::string name, title, time_name;
    double from, to;  // s; as above
    bool bits;        // a lane for each bit instead of the number that they make
    std::vector<shown_name> columns;
};

const logic_picture logic_pictures[] = {
    {"counter_decode",
     "Counter of 4 bits: 10 and 15 decoded",
     "time",
     0,
     1.8e-6,
     false,
     {{"ck", "clock", ""},
      {"q0", "q0", ""},
      {"q1", "q1", ""},
      {"q2", "q2", ""},
      {"q3", "q3", ""},
      {"is10", "is 10", ""},
      {"is15", "is 15", ""}}},
    {"shift_register",
     "Shift register with feedback: 15 states",
     "time",
     0,
     1.7e-6,
     true,
     {{"ck", "clock", ""}, {"q0", "q0", ""}, {"q1", "q1", ""}, {"q2", "q2", ""}, {"q3", "q3", ""}}},
    {"dead_time_leg",
     "Inverter leg: 2 us without a switch, at negative current",
     "time behind 39.61 ms",
     39.61e-3,
     39.69e-3,
     false,
     {{"v", "output", "V"}, {"i", "current", "A"}, {"pwm", "pwm", ""}, {"high", "high", ""}, {"low", "low", ""}}},
    {"peak_current",
     "Peak-current control of 5 A: three periods",
     "time behind 1.96 ms",
     1.96e-3,
     1.99e-3,
     false,
     {{"il", "inductor", "A"}, {"ck", "clock", ""}, {"peak", "peak", ""}, {"on", "switch", ""}}},
    {"sigma_delta",
     "Sigma-delta converter at 0.3 V",
     "time behind 100 us",
     100e-6,
     125e-6,
     false,
     {{"sum", "integrator", "V"}, {"ck", "clock", ""}, {"bit", "bit", ""}}},
};

// A sweep of a named constant is told by the name.
void shorten(std::string& name) {
    const std::string before = "glbl_of_";
    for (std::size_t k = name.find(before); k != std::string::npos; k = name.find(before)) name.erase(k, before.size());
}

cli::plot drawn(const response_picture& p, const std::string& runs) {
    cli::plot_wish wish;
    wish.file = p.file;
    wish.choice.title = p.title;
    if (p.to > p.from) {
        wish.choice.from = p.from;
        wish.choice.to = p.to;
        wish.choice.y.push_back(cli::plot_y_range{"", p.y_from, p.y_to});
    }
    const cli::plotted_runs plotted = cli::open_plotted({runs + "/" + p.name}, wish);
    cli::plot out = cli::plot_of_rows(plotted.sources, plotted.choice);
    for (cli::plot_panel& panel : out.panels)
        for (cli::plot_series& series : panel.series) shorten(series.name);
    return out;
}

void show_window(cli::plot_choice& choice, double from, double to) {
    if (!(to > from)) return;
    choice.from = from;
    choice.to = to;
    choice.from_zero = true;
}

cli::plot drawn(const logic_picture& p, const std::string& runs) {
    std::vector<std::string> words{runs + "/" + p.name};
    for (const shown_name& c : p.columns) words.push_back(c.column);
    cli::plot_wish wish;
    wish.choice.title = p.title;
    wish.choice.bits = p.bits;
    show_window(wish.choice, p.from, p.to);
    cli::plotted_runs plotted = cli::open_plotted(words, wish);
    for (cli::result_table& table : plotted.tables) {
        table.columns.at(0).name = p.time_name;
        for (const shown_name& c : p.columns)
            if (const int j = cli::find_column(table, c.column); j >= 0) {
                table.columns[static_cast<std::size_t>(j)].name = c.name;
                table.columns[static_cast<std::size_t>(j)].unit = c.unit;
            }
    }
    return cli::plot_of_rows(plotted.sources, plotted.choice);
}

cli::plot drawn(const picture& p, const std::string& runs) {
    std::list<cli::result_table> tables;
    std::vector<cli::plot_source> sources;
    for (const shown_column& c : p.columns) {
        const std::string path = runs + "/" + p.name + "/" + c.file;
        tables.push_back(cli::read_result_table(cli::read_file(path), path));
        tables.back().columns.at(0) = {p.time_name, "s"};
        tables.back().columns.at(static_cast<std::size_t>(c.column)) = {c.name, c.unit};
        sources.push_back({&tables.back(), "", 0, {c.column}, {c.times}});
    }
    cli::plot_choice choice;
    choice.title = p.title;
    show_window(choice, p.from, p.to);
    return cli::plot_of_rows(sources, choice);
}
}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cout << "usage: pictures EXAMPLES RUNS\n";
        return 2;
    }
    const std::string examples = argv[1], runs = argv[2];
    try {
        for (const picture& p : pictures) {
            std::ofstream out(examples + "/" + p.name + "/picture.svg");
            out << cli::draw_svg(drawn(p, runs));
            if (!out) return 5;
        }
        for (const logic_picture& p : logic_pictures) {
            std::ofstream out(examples + "/" + p.name + "/picture.svg");
            out << cli::draw_svg(drawn(p, runs));
            if (!out) return 5;
        }
        for (const response_picture& p : response_pictures) {
            std::ofstream out(examples + "/" + p.name + "/" + p.picture);
            out << cli::draw_svg(drawn(p, runs));
            if (!out) return 5;
        }
    } catch (const std::exception& e) {
        std::cout << "pictures: " << e.what() << '\n';
        return 5;
    }
    return 0;
}
