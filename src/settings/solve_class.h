// solve_class.h -- one solve block: its settings, its directives and files, and the state of its run.
#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/enum1.h"
#include "base/flags_class.h"
#include "base/row_file.h"
#include "elaborate/circuit.h"
#include "settings/fourier_sums.h"

enum solve_code : int {
    solve_none = 0,  // a type word that is not known: the block is read, and nothing is solved
    solve_dc_code = 1,
    solve_ac_code = 2,
    solve_trns_code = 3,
    solve_startup_code = 4,
    solve_ssw_code = 8,
};

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
    bool flag_min_phase = false, flag_max_phase = false;
    double min_phase = 0.0, max_phase = 0.0, delta_phase = 200.0;  // degrees

    // run state
    int n_lines = 0;                    // rows so far; an appended file starts at the lines it has
    double next_time = 0.0;             // s, with fixed_interval: the next row
    std::vector<double> value;          // [vars] of an analog file: the present row
    std::vector<int> level;             // [vars] of a digital file
    double period_fourier = 0.0;        // s, out_tend - out_tstart
    std::vector<double> omega_fourier;  // [n_fourier] rad/s; empty unless fourier is on
    fourier_sums sums;                  // of a file with fourier on
    std::unique_ptr<row_file> stream;   // open between open_out_files and close_out_files
};
inline constexpr double not_given_time = -1000.0;

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

// One object serves all blocks: method_default and set_values refill it, delete_arrays empties it. Every keyword of
// `method:` is a member of its own name; defaults stand in method_words.cpp.
struct solve_class {
    // ---- type ---------------------------------------------------------------------------------------------------
    truefalse dc = int_F, ac = int_F, trns = int_F, startup = int_F, ssw = int_F;
    int solve_type = solve_none;           // solve_code
    int previous_solve_type = solve_none;  // of the block before
    truefalse flag_prev_solution_exists = int_F;
    int index_solve = -1;

    // ---- settings: Newton ---------------------------------------------------------------------------------------
    int itmax_newton = 0, itmax_newton_first = 0;
    truefalse dmp = int_F, dmp_first = int_F;
    double dmp_k = 0, dmp_k2 = 0, dmp_k_first = 0;
    int dmp_newt_max = 0, dmp_newt_max2 = 0, dmp_newt_max_first = 0;
    truefalse nr_line_search = int_F;
    int itmax_line_search = 0;
    truefalse nr_approx = int_F;
    int iter_trns_nrapprox = 0;

    // ---- settings: convergence ------------------------------------------------------------------------------------
    truefalse chk_cnvrg = int_F, chk_rhs2 = int_F, chk_spice = int_F, chk_rhs2_rel = int_F, chk_rhsinf = int_F,
              chk_delx_sprt = int_F, chk_delx_all = int_F, chk_delx_volt = int_F, chk_delx_kcl = int_F;
    truefalse chk_only_rhs2 = int_F, chk_only_delx_volt = int_F, chk_only_spice = int_F;
    double norm_2 = 0, norm_2_rel = 0, norm_inf = 0, norm_large = 0;
    double norm_spice_nodev = 0, norm_spice_eaux = 0, norm_spice_locvar = 0, norm_spice_gvar = 0, norm_spice_gaux = 0,
           norm_spice_cur = 0, norm_spice_rel = 0;
    double delxmax_all = 0, delxmax_volt = 0, delxmax_kcl = 0;

    // ---- settings: elimination ------------------------------------------------------------------------------------
    truefalse matrix_sparse1 = int_F, matrix_superlu = int_F;
    double zero_piv = 0, gauss_epsln = 0;
    truefalse debug_gauss_1 = int_F, debug_gauss_2 = int_F, wrt_debug_smat = int_F;

    // ---- settings: gmin stepping ------------------------------------------------------------------------------------
    truefalse gmin_step = int_F, gmin_init = int_F, gmin_dmp = int_F;
    double gmin_dmp_k = 0, gmin_start = 0, gmin_end = 0;
    int gmin_npoints = 0, gmin_itmax_newton = 0, gmin_dmp_newt_max = 0;

    // ---- settings: digital passes
    // ------------------------------------------------------------------------------------
    int n_pass_dgtl = 0, n_pass_mixed = 0;
    double offset_dgtl = 0;

    // ---- settings: explicit side
    // --------------------------------------------------------------------------------------
    int x_itmax_newton = 0, x_itmax_newton_first = 0;
    truefalse x_dmp = int_F, x_dmp_first = int_F;
    double x_dmp_k = 0, x_dmp_k_first = 0;
    int x_dmp_newt_max = 0, x_dmp_newt_max_first = 0;
    truefalse x_chk_rhs2 = int_F, x_chk_spice = int_F;
    double x_norm_2 = 0, x_norm_large = 0, x_norm_spice_nodev = 0, x_norm_spice_xaux = 0, x_norm_spice_cur = 0,
           x_norm_spice_rel = 0;
    truefalse x_write_rhs2 = int_F, x_write_spice = int_F, x_wrt_debug_smat = int_F, x_write_time = int_F;
    int x_iter_write_rhs2 = 0, x_iter_debug_newton = 0;

    // ---- settings: progress and diagnostics
    // --------------------------------------------------------------------------------
    int n_wrtiterno = 0, iter_debug_newton = 0, iter_debug_ssw_newton = 0, iter_debug_trns = 0, iter_write_rhs2 = 0,
        flag_debug_int = 0;
    truefalse write_rhs2 = int_F, write_rhsinf = int_F, write_delx_sprt = int_F, write_delx_all = int_F,
              write_delx_volt = int_F, write_delx_kcl = int_F, write_spice = int_F;

    // ---- settings: time
    // ---------------------------------------------------------------------------------------------------
    truefalse back_euler = int_F, back_euler_auto = int_F, trapezoidal = int_F, trapezoidal_auto = int_F, gear2 = int_F,
              gear2_fixed = int_F, trbdf2 = int_F;
    truefalse forward_euler = int_F, RK4 = int_F, RKF45 = int_F, BS23 = int_F, modified_euler = int_F, Heun = int_F;
    truefalse event_restart = int_F;
    truefalse constant_step = int_F, x_eval_serial = int_F, write_time = int_F;
    double delt_const = 0, delt_min = 0, delt_max = 0;        // s
    double delt_const_x = 0, delt_min_x = 0, delt_max_x = 0;  // s
    double fctr_stepred = 0, fctr_stepinc = 0;
    double time_epsilon = 0, time_epsilon_x = 0;  // s
    double trbdf2_tolr = 0, trbdf2_gamma = 0;
    double rkf45_tolr = 0, bs23_tolr = 0, rkf45_fctr_min = 0, bs23_fctr_min = 0, rkf45_fctr_max = 0, bs23_fctr_max = 0;
    int itmax_trns = 0, itmax_trbdf2 = 0, itmax_stepred = 0;

    // ---- settings of one type of block
    // --------------------------------------------------------------------------------------
    truefalse compute_acp = int_F;   // ac
    double t_startup = 0, t_dc = 0;  // startup, dc; s
    double ssw_period = 0;           // s, of one shot: the deck's period times ssw_period_mult
    double ssw_frequency = 0, ssw_norm = 0, ssw_dmp_k = 0;
    int ssw_itmax_newton = 0, ssw_ndiv = 0, ssw_period_mult = 0, ssw_dmp_newt_max = 0;
    truefalse ssw_dmp = int_F, ssw_known_period = int_F, ssw_chk_spice = int_F, ssw_chk_rhs2 = int_F;

    std::vector<char> given;  // [n_method_words] 1: a card of the block gave the keyword (see was_given)

    // ---- start
    // ----------------------------------------------------------------------------------------------------------------
    truefalse init_file = int_F, init_initialize = int_F, init_previous = int_F;  // initial_sol
    std::string init_sol_path;

    // ---- directives
    // --------------------------------------------------------------------------------------------------------------
    std::vector<parm_item> set_parm, set_stparm, set_igparm, set_dstparm, set_digparm;
    std::vector<dgtl_item> set_dgtl;
    std::vector<vary_statement> vary, vary_sync;
    truefalse flag_vary_auto = int_F;  // vary holds one statement, of type auto
    auto_sweep automatic;
    int n_sweep = 1;  // points of the vary_parm grid; 1 without one
    int n_sync = 1;   // points of vary_parm_sync; 1 without one

    // ---- frequencies
    // ----------------------------------------------------------------------------------------------------------------
    truefalse ac_single = int_F, ac_sweep = int_F;
    double ac_freq = 0.0;  // Hz, of set_freq
    sweep_range ac_range;  // Hz, of vary_freq
    int n_freq = 0;
    std::vector<double> freq_array;  // [n_freq] rad/s
    double freq = 0.0;               // rad/s, present

    // ---- files
    // ------------------------------------------------------------------------------------------------------------------------
    std::vector<out_file> files;     // in deck order
    truefalse flag_fourier = int_F;  // some file has fourier on
    int i_file_solution = -1, i_file_solution_ac = -1, i_file_parms = -1, i_file_all_nodes = -1,
        i_file_all_outvars = -1;  // -1: the block has no such file

    // ---- state of the run
    // -----------------------------------------------------------------------------------------------------------------
    truefalse flag_linear = int_F, flag_nonlinear = int_F;      // path of the implicit side
    truefalse flag_x_linear = int_F, flag_x_nonlinear = int_F;  // path of the explicit side
    int i_sync = -1, i_sweep = -1, i_freq = -1;                 // present indices
    int i_vary_last = -1, i_sync_last = -1;  // points that stand in the circuit; -1: none of this block
    int iter_newton = 0;
    int l_converged = 0, l_norm_too_large = 0;
    int dmp_now = 0, dmp_newt_max_now = 0, itmax_newton_now = 0;
    double dmp_k_now = 0;
    double norm_rhs_2 = 0, norm_rhs_2_rel = 0, norm_rhs_2_first = 0, norm_rhs_inf = 0, norm_delx_all = 0,
           norm_delx_volt = 0, norm_delx_kcl = 0;
    double gmin_present = 0;  // S
    int iter_gmin = -1;       // -1 outside of a stepping
    int n_gmin_total = 0;     // steppings of the block
    int l_gmin_done = 0;

    double delt = 0, delt_new = 0, delt_old_1 = 0, delt_old_2 = 0;  // s
    double time_present = 0, time_next = 0;                         // s
    int iter_trns = 0;                                              // pass of the time loop
    int iter_trns_anlg = -1, iter_trns_dgtl = -1, iter_trns_1 = -1, iter_trns_x = -1;
    int iter_stepred = 0, iter_trbdf2 = 0;
    int flag_be = 0, flag_trz = 0, flag_gear_fixed = 0, flag_gear_var = 0, flag_bdf2 = 0, flag_auto = 0;
    double cnst_be = 0, cnst_trz = 0, cnst_gear_0 = 0, cnst_gear_1 = 0, cnst_gear_2 = 0, cnst_bdf2_0 = 0,
           cnst_bdf2_1 = 0, cnst_bdf2_2 = 0;  // 1/s

    double factored_constant = 0;  // 1/s, method constant of the factors that approximate iterations hold

    bool has_vary() const { return !vary.empty() || !vary_sync.empty(); }
};

// ---- reading
// -----------------------------------------------------------------------------------------------------------

// Every setting at its default; t_start of flags at 0. Some defaults depend on the circuit.
void method_default(solve_class& slv, const circuit& c, flags_class& flags);
// Reads solve block index_solve of the deck and tests it against itself and the circuit. Marks accepted statements.
void set_values(solve_class& slv, int index_solve, const circuit& c, flags_class& flags);
// Empties the block's tables; open files are closed.
void delete_arrays(solve_class& slv);

// ---- choices derived from the settings
// -----------------------------------------------------------------------------------

// Linear or Newton path; a Newton path without a test of convergence halts. Not for ac or digital-only circuits.
void define_method_type(solve_class& slv, const cct_class& cct);
void x_define_method_type(solve_class& slv, const cct_class& cct);
// Damping and iteration limit of the next Newton solve, into the _now members.
void get_dmp(solve_class& slv);
void assign_freq_array(solve_class& slv);
