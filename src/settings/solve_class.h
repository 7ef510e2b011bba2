// solve_class.h -- one solve block: its settings, its task, its files, and the state of its run.
#pragma once
#include <string_view>

#include "base/flags_class.h"
#include "elaborate/circuit.h"
#include "settings/method_settings.h"
#include "settings/out_file.h"
#include "settings/solve_task.h"

enum solve_code : int {
    solve_none = 0,  // a type word that is not known: the block is read, and nothing is solved
    solve_dc_code = 1,
    solve_ac_code = 2,
    solve_trns_code = 3,
    solve_startup_code = 4,
    solve_ssw_code = 8,
};

// What a run changes as it goes: present indices, time and step, what the last iteration came to.
struct solve_state {
    truefalse flag_linear = int_F, flag_nonlinear = int_F;      // path of the implicit side
    truefalse flag_x_linear = int_F, flag_x_nonlinear = int_F;  // path of the explicit side
    int i_sync = -1, i_sweep = -1, i_freq = -1;                 // present indices
    int i_vary_last = -1, i_sync_last = -1;  // points that stand in the circuit; -1: none of this block
    double freq = 0.0;                       // rad/s, of point i_freq
    int iter_newton = 0;
    int l_converged = 0, l_norm_too_large = 0;
    int dmp = 0, dmp_newt_max = 0, itmax_newton = 0;  // settings that hold for this Newton solve (get_dmp)
    double dmp_k = 0;
    double norm_rhs_2 = 0, norm_rhs_2_rel = 0, norm_rhs_2_first = 0, norm_rhs_inf = 0, norm_delx_all = 0,
           norm_delx_volt = 0, norm_delx_kcl = 0;
    double gmin = 0;       // S
    int iter_gmin = -1;    // -1 outside of a stepping
    int n_gmin_total = 0;  // steppings of the block
    int l_gmin_done = 0;

    double delt = 0, delt_new = 0, delt_old_1 = 0, delt_old_2 = 0;  // s
    double time_present = 0, time_next = 0;                         // s
    double time_x = 0, time_next_x = 0, delta_t_x = 0;              // s, of explicit blocks
    int iter_trns = 0;                                              // pass of the time loop
    int iter_trns_anlg = -1, iter_trns_dgtl = -1, iter_trns_1 = -1, iter_trns_x = -1;
    int iter_stepred = 0, iter_trbdf2 = 0;
    int flag_be = 0, flag_trz = 0, flag_gear_fixed = 0, flag_gear_var = 0, flag_bdf2 = 0, flag_auto = 0;
    double cnst_be = 0, cnst_trz = 0, cnst_gear_0 = 0, cnst_gear_1 = 0, cnst_gear_2 = 0, cnst_bdf2_0 = 0,
           cnst_bdf2_1 = 0, cnst_bdf2_2 = 0;  // 1/s

    double factored_constant = 0;  // 1/s, method constant of the factors that approximate iterations hold
};

// One object serves all blocks: method_default and set_values refill it, delete_arrays empties it.
struct solve_class {
    truefalse dc = int_F, ac = int_F, trns = int_F, startup = int_F, ssw = int_F;
    int solve_type = solve_none;           // solve_code
    int previous_solve_type = solve_none;  // of the block before
    truefalse flag_prev_solution_exists = int_F;
    int index_solve = -1;

    method_settings method;  // `method:` cards
    solve_task task;         // all other cards
    solve_outputs out;       // output blocks
    solve_state now;
};

// ---- reading ----

// Every setting at its default; t_start of flags at 0. Some defaults depend on the circuit.
void method_default(solve_class& slv, const circuit& c, flags_class& flags);
// Reads solve block index_solve of the deck and tests it against itself and the circuit. Marks accepted statements.
void set_values(solve_class& slv, int index_solve, circuit& c, flags_class& flags);
// Empties the block's tables; open files are closed.
void delete_arrays(solve_class& slv);

// ---- choices derived from the settings ----

// Linear or Newton path; a Newton path without a test of convergence halts. Not for ac or digital-only circuits.
void define_method_type(solve_class& slv, const cct_class& cct);
void x_define_method_type(solve_class& slv, const cct_class& cct);
// Damping and iteration limit of the next Newton solve, into `now`.
void get_dmp(solve_class& slv);
void assign_freq_array(solve_class& slv);
