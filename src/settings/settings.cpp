// Choices that solvers take from the settings of a block.
#include "base/math_cnst_class.h"
#include "settings/solve_class.h"

void delete_arrays(solve_class& slv) {
    slv.files.clear();
    for (auto list : {&slv.set_parm, &slv.set_stparm, &slv.set_igparm, &slv.set_dstparm, &slv.set_digparm})
        list->clear();
    slv.set_dgtl.clear();
    slv.vary.clear();
    slv.vary_sync.clear();
    slv.flag_vary_auto = int_F;
    slv.automatic = {};
    slv.n_sweep = slv.n_sync = 1;
    slv.i_vary_last = slv.i_sync_last = -1;
    slv.init_file = slv.init_initialize = slv.init_previous = int_F;
    slv.init_sol_path.clear();
    slv.ac_single = slv.ac_sweep = int_F;
    slv.ac_range = {};
    slv.n_freq = 0;
    slv.freq_array.clear();
    slv.flag_fourier = int_F;
    slv.i_file_solution = slv.i_file_solution_ac = slv.i_file_parms = slv.i_file_all_nodes = slv.i_file_all_outvars =
        -1;
}

void define_method_type(solve_class& slv, const cct_class& cct) {
    slv.flag_linear = cct.flag_linear ? int_T : int_F;
    slv.flag_nonlinear = cct.flag_linear ? int_F : int_T;
    if (slv.flag_linear) return;
    constexpr const char* head = "solve_class::define_method_type";
    if (slv.chk_delx_sprt) {
        if (!slv.chk_delx_volt && !slv.chk_delx_kcl)
            halt({head, "   delta_x convergence criterion:", "   No type specified for delta_x.", "   Halting..."});
    } else if (!(slv.chk_rhs2 || slv.chk_rhs2_rel || slv.chk_rhsinf || slv.chk_delx_all || slv.chk_spice)) {
        halt({head, "   No convergence criterion for Newton method?", "   Halting..."});
    }
}

void x_define_method_type(solve_class& slv, const cct_class& cct) {
    slv.flag_x_linear = cct.flag_x_linear ? int_T : int_F;
    slv.flag_x_nonlinear = cct.flag_x_linear ? int_F : int_T;
    if (slv.flag_x_nonlinear && !slv.x_chk_rhs2 && !slv.x_chk_spice)
        halt({"solve_class::x_define_method_type", "   No convergence criterion for Newton method?", "   Halting..."});
}

// DC and start-up begin afresh at every point of a block that starts from nothing; a time loop does at its first step
// (all tries of it), a periodic block at the first step of each shot.
void get_dmp(solve_class& slv) {
    const bool from_nothing = !slv.init_file && !slv.init_previous;
    const bool first = slv.trns ? slv.iter_trns_1 == 0 : slv.ssw ? slv.iter_trns == 0 : from_nothing;
    slv.dmp_now = first ? slv.dmp_first : slv.dmp;
    slv.dmp_k_now = first ? slv.dmp_k_first : slv.dmp_k;
    slv.itmax_newton_now = first ? slv.itmax_newton_first : slv.itmax_newton;
    slv.dmp_newt_max_now = first ? slv.dmp_newt_max_first : slv.trns || slv.ssw ? slv.dmp_newt_max2 : slv.dmp_newt_max;
}

// Decks give hertz, models and systems take rad/s; this is the one place between them.
void assign_freq_array(solve_class& slv) {
    const double rad_per_s = math_cnst_class{}.twopi;
    slv.freq_array.clear();
    if (slv.ac_sweep) slv.freq_array.reserve(static_cast<std::size_t>(slv.ac_range.n));
    if (slv.ac_single)
        slv.freq_array.push_back(rad_per_s * slv.ac_freq);
    else if (slv.ac_sweep)
        for (int i = 0; i < slv.ac_range.n; ++i) slv.freq_array.push_back(rad_per_s * slv.ac_range.at(i));
    slv.n_freq = static_cast<int>(slv.freq_array.size());
}
