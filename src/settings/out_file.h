// out_file.h -- the output blocks of a solve block: files, their columns and options, and what has been written.
#pragma once
#include <complex>
#include <memory>
#include <string>
#include <vector>

#include "base/enum1.h"
#include "base/row_file.h"
#include "deck/ov_class.h"
#include "settings/fourier_sums.h"

// What the word before _of_ or a bare name in `variables:` asks for.
enum ov_prefix : int {
    prefix_none = 0,
    prefix_phase = 1,
    prefix_mag = 2,
    prefix_global = 3,
    prefix_vary = 4,       // the value of a vary_parm item
    prefix_vary_sync = 5,  // the value of a vary_parm_sync item
};

// One column of a row file.
struct out_var {
    std::string name;  // the word of the deck; for all_nodes the node
    int prefix = prefix_none;
    int i_ov = -1;       // output variable; -1 for globals, sweep items and all_nodes
    int kind = ov_none;  // ov_kind, of prefixes 0 to 2
    int index = -1;      // prefixes 0 to 2: as in ov_class; 3: greal; 4, 5: number of the sweep statement
    int instance = -1;   // [eelu, gelu, ...] that holds a parameter or a power; -1
};

enum out_content : int {
    out_rows,      // one row a point
    out_solution,  // all unknowns, at the end of the block
    out_solution_ac,
    out_parms,  // all parameters, at the end of the block
};
enum out_data_type : int { out_digital = 4, out_analog = 5 };

// One output block.
struct out_file {
    std::string path;
    int statement = -1;  // of begin_output
    int content = out_rows;
    bool all_nodes = false, all_outvars = false;
    std::vector<out_var> vars;
    int data_type = out_analog;  // by the first variable
    bool postproc = false, postproc_ac = false;

    // options of the filename statement
    int limit_lines = 100000;
    bool append = false;
    bool output_hz = true;
    bool fourier = false;
    bool nyquist = false;
    int sweep_format = 0;  // 0 reverse, 1 normal; has no effect on rows

    // control:
    int n_fourier = 2;  // harmonics, harmonic 0 included
    bool flag_fixed_interval = false;
    double fixed_interval = 0.0;  // s
    double out_tstart = -1000.0;  // s; not_given_time until set_values is done
    double out_tend = -1000.0;    // s
    bool until_end = false;       // out_tend is the end of the block
    bool flag_min_phase = false, flag_max_phase = false;
    double min_phase = 0.0, max_phase = 0.0, delta_phase = 200.0;  // degrees

    // run state
    int n_lines = 0;                    // rows so far; an appended file starts at the lines it has
    double next_time = 0.0;             // s, with fixed_interval: the next row
    std::vector<double> value;          // [vars] of an analog file: the present row
    std::vector<const double*> column;  // [vars] of an analog file: where each value stands; in `value` if computed
    std::vector<std::size_t> computed;  // columns whose value stands nowhere
    std::vector<int> level;             // [vars] of a digital file
    std::vector<const std::complex<double>*> phasor;  // [vars] of a small-signal file: amplitude of each column; null
    std::vector<double> phase_before;                 // [vars] degrees, as in the row before
    double period_fourier = 0.0;                      // s, out_tend - out_tstart
    std::vector<double> omega_fourier;                // [n_fourier] rad/s; empty unless fourier is on
    fourier_sums sums;                                // of a file with fourier on
    std::unique_ptr<row_file> stream;                 // open between open_out_files and close_out_files
};
inline constexpr double not_given_time = -1000.0;

// All files of a block.
struct solve_outputs {
    std::vector<out_file> files;     // in deck order
    truefalse flag_fourier = int_F;  // some file has fourier on
    int i_file_solution = -1, i_file_solution_ac = -1, i_file_parms = -1, i_file_all_nodes = -1,
        i_file_all_outvars = -1;  // -1: the block has no such file
};
