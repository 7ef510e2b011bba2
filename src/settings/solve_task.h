// solve_task.h -- what a solve block asks for besides its settings: start, written parameters, sweeps, frequencies.
#pragma once
#include <string>
#include <vector>

#include "base/enum1.h"

// A parameter that a directive or a sweep writes: rparm_of_instance, or glbl_of_greal.
struct parm_item {
    enum table : int { global_value, int_value, real_value, start_value, guess_value };
    std::string word;  // as in the deck
    table where = real_value;
    int family = -1;     // `family` of the instance; -1 for a global
    int instance = -1;   // -1 for a global
    int index = -1;      // position in the instance's row of that table; greal for a global
    int value_int = 0;   // of an int_value
    double value = 0.0;  // of all others
};

struct dgtl_item {
    int node = -1;  // dct number
    int level = 0;
};

// The values of vary_parm, vary_parm_sync and vary_freq.
struct sweep_range {
    enum form : int { linear = 1, log = 2, table = 3, automatic = 4 };
    int type = table;
    int n = 0;                    // points; automatic: 1
    double from = 0.0, to = 0.0;  // linear, log
    std::vector<double> values;   // [n] table

    double at(int i) const;  // point i of the first three forms; both ends are exact
};

struct vary_statement {
    parm_item item;
    sweep_range range;
    double value_now = 0.0;  // written last
};

// The one vary_parm of type auto.
struct auto_sweep {
    double p_begin = 0.0, p_end = 0.0, step = 0.0, step_min = 0.0, step_max = 0.0;
    double factor_red = 0.8, factor_inc = 1.1;
    int itmax_sweep = 500;
    double p_now = 0.0, step_now = 0.0;  // run state, set by the driver
};

struct solve_task {
    // start
    truefalse init_file = int_F, init_initialize = int_F, init_previous = int_F;  // initial_sol
    std::string init_sol_path;

    // directives
    std::vector<parm_item> set_parm, set_stparm, set_igparm, set_dstparm, set_digparm;
    std::vector<dgtl_item> set_dgtl;
    std::vector<vary_statement> vary, vary_sync;
    truefalse flag_vary_auto = int_F;  // vary holds one statement, of type auto
    auto_sweep automatic;
    int n_sweep = 1;  // points of the vary_parm grid; 1 without one
    int n_sync = 1;   // points of vary_parm_sync; 1 without one

    // frequencies
    truefalse ac_single = int_F, ac_sweep = int_F;
    double ac_freq = 0.0;  // Hz, of set_freq
    sweep_range ac_range;  // Hz, of vary_freq
    int n_freq = 0;
    std::vector<double> freq_array;  // [n_freq] rad/s

    bool has_vary() const { return !vary.empty() || !vary_sync.empty(); }
};
