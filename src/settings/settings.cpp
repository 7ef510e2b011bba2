// Choices that solvers take from the settings of a block.
#include "base/math_cnst_class.h"
#include "settings/solve_class.h"

void delete_arrays(solve_class& slv) {
    slv.task = {};
    slv.out = {};
    slv.now.i_vary_last = slv.now.i_sync_last = -1;
}

void define_method_type(solve_class& slv, const cct_class& cct) {
    slv.now.flag_linear = cct.flag_linear ? int_T : int_F;
    slv.now.flag_nonlinear = cct.flag_linear ? int_F : int_T;
    if (slv.now.flag_linear) return;
    constexpr const char* head = "solve_class::define_method_type";
    if (slv.method.chk_delx_sprt) {
        if (!slv.method.chk_delx_volt && !slv.method.chk_delx_kcl)
            halt({head, "   delta_x convergence criterion:", "   No type specified for delta_x.", "   Halting..."});
    } else if (!(slv.method.chk_rhs2 || slv.method.chk_rhs2_rel || slv.method.chk_rhsinf || slv.method.chk_delx_all ||
                 slv.method.chk_spice)) {
        halt({head, "   No convergence criterion for Newton method?", "   Halting..."});
    }
}

void x_define_method_type(solve_class& slv, const cct_class& cct) {
    slv.now.flag_x_linear = cct.flag_x_linear ? int_T : int_F;
    slv.now.flag_x_nonlinear = cct.flag_x_linear ? int_F : int_T;
    if (slv.now.flag_x_nonlinear && !slv.method.x_chk_rhs2 && !slv.method.x_chk_spice)
        halt({"solve_class::x_define_method_type", "   No convergence criterion for Newton method?", "   Halting..."});
}

// DC and start-up begin afresh at every point of a block that starts from nothing; a time loop does at its first step
// (all tries of it), a periodic block at the first step of each shot.
void get_dmp(solve_class& slv) {
    const bool from_nothing = !slv.task.init_file && !slv.task.init_previous;
    const bool first = slv.trns ? slv.now.iter_trns_1 == 0 : slv.ssw ? slv.now.iter_trns == 0 : from_nothing;
    slv.now.dmp = first ? slv.method.dmp_first : slv.method.dmp;
    slv.now.dmp_k = first ? slv.method.dmp_k_first : slv.method.dmp_k;
    slv.now.itmax_newton = first ? slv.method.itmax_newton_first : slv.method.itmax_newton;
    slv.now.dmp_newt_max = first                 ? slv.method.dmp_newt_max_first
                           : slv.trns || slv.ssw ? slv.method.dmp_newt_max2
                                                 : slv.method.dmp_newt_max;
}

// Decks give hertz, models and systems take rad/s; this is the one place between them.
void assign_freq_array(solve_class& slv) {
    const double rad_per_s = math_cnst_class{}.twopi;
    slv.task.freq_array.clear();
    if (slv.task.ac_sweep) slv.task.freq_array.reserve(static_cast<std::size_t>(slv.task.ac_range.n));
    if (slv.task.ac_single)
        slv.task.freq_array.push_back(rad_per_s * slv.task.ac_freq);
    else if (slv.task.ac_sweep)
        for (int i = 0; i < slv.task.ac_range.n; ++i)
            slv.task.freq_array.push_back(rad_per_s * slv.task.ac_range.at(i));
    slv.task.n_freq = static_cast<int>(slv.task.freq_array.size());
}
