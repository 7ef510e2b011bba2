#include "settings/block_checks.h"

#include <algorithm>
#include <limits>
#include <span>

#include "base/at.h"
#include "base/memory.h"
#include "settings/method_words.h"
#include "settings/output_block.h"
#include "settings/solve_words.h"

namespace {
int n_on(const solve_class& slv, std::span<truefalse method_settings::*const> flags) {
    return static_cast<int>(std::count_if(flags.begin(), flags.end(), [&](auto f) { return slv.method.*f == int_T; }));
}

constexpr truefalse method_settings::*explicit_methods[] = {&method_settings::forward_euler,  &method_settings::RK4,
                                                            &method_settings::RKF45,          &method_settings::BS23,
                                                            &method_settings::modified_euler, &method_settings::Heun};
constexpr truefalse method_settings::*implicit_methods[] = {
    &method_settings::back_euler,      &method_settings::trapezoidal, &method_settings::gear2_fixed,
    &method_settings::gear2,           &method_settings::trbdf2,      &method_settings::back_euler_auto,
    &method_settings::trapezoidal_auto};
constexpr truefalse method_settings::*ssw_methods[] = {&method_settings::back_euler, &method_settings::back_euler_auto,
                                                       &method_settings::trapezoidal,
                                                       &method_settings::trapezoidal_auto};
constexpr truefalse method_settings::*convergence_tests[] = {
    &method_settings::chk_rhs2,      &method_settings::chk_rhs2_rel, &method_settings::chk_rhsinf,
    &method_settings::chk_delx_sprt, &method_settings::chk_delx_all, &method_settings::chk_delx_volt,
    &method_settings::chk_delx_kcl,  &method_settings::chk_spice};

void check_initial_sol(solve_class& slv) {
    const int n = slv.task.init_file + slv.task.init_initialize + slv.task.init_previous;
    if (n > 1)
        halt({slv.ac ? "solve_class: Not more than 1 method is allowed"
                     : "solve_class: one and only one method is allowed",
              "   for init sol. Check the solve blocks. Halting.."});
    if (n == 0) slv.task.init_initialize = int_T;
}

void check_newton_settings(solve_class& slv, const circuit& c) {
    if ((slv.method.gear2 || slv.method.gear2_fixed) && (c.cct.flag_reset || c.cct.flag_reset_x))
        halt({"solve_class: reset type elements are not allowed", "   with Gear method. Halting..."});
    if (slv.method.nr_line_search && !slv.dc && !slv.trns)
        halt({"solve_class: N-R line search is allowed only", "  for dc and trns. Halting..."});

    if (was_given(slv, "dmp_k") && !was_given(slv, "dmp_k2")) {
        slv.method.dmp_k2 = slv.method.dmp_k;
        slv.method.dmp_newt_max2 = slv.method.dmp_newt_max;
    } else {
        if (slv.method.dmp_newt_max2 < slv.method.dmp_newt_max)
            halt({line("solve_class: dmp_newt_max = ", slv.method.dmp_newt_max,
                       ", dmp_newt_max2 = ", slv.method.dmp_newt_max2, " is not allowed. Halting...")});
        if (slv.method.dmp_k < slv.method.dmp_k2)
            halt({line("solve_class: dmp_k = ", slv.method.dmp_k, ", dmp_k2 = ", slv.method.dmp_k2,
                       " is not allowed. Halting...")});
    }

    struct only_test {
        truefalse method_settings::*only;
        truefalse method_settings::*test;
    };
    constexpr only_test only[] = {{&method_settings::chk_only_rhs2, &method_settings::chk_rhs2},
                                  {&method_settings::chk_only_delx_volt, &method_settings::chk_delx_volt},
                                  {&method_settings::chk_only_spice, &method_settings::chk_spice}};
    int n_only = 0;
    for (const only_test& k : only) n_only += slv.method.*k.only;
    if (n_only > 1)
        halt({"solve_class: more than one chk_only_xxx parameters", "   not allowed for convergence. Halting..."});
    for (const only_test& k : only) {
        if (!(slv.method.*k.only)) continue;
        for (auto test : convergence_tests) slv.method.*test = int_F;
        slv.method.*k.test = int_T;
    }
}

// The period is needed in both modes: where it is unknown it is the first guess.
void find_ssw_period(solve_class& slv, flags_class& flags) {
    const bool period = was_given(slv, "ssw_period"), frequency = was_given(slv, "ssw_frequency");
    constexpr const char* last = "   in SSW solve blocks. Halting..";
    if (period && frequency) halt({"solve_class: cannot assign both period and frequency", last});
    if (!period && !frequency)
        halt({slv.method.ssw_known_period ? "solve_class: must specify period or frequency"
                                          : "solve_class: ssw: period or frequency must be specified.",
              last});
    const auto must_be_above_0 = [](const char* word, double value) {
        if (!(value > 0.0))
            halt({line("solve_class: ssw: ", word, " must be above 0."), line("   ", word, " = ", value), last});
    };
    if (period) must_be_above_0("ssw_period", slv.method.ssw_period);
    if (frequency) must_be_above_0("ssw_frequency", slv.method.ssw_frequency);
    must_be_above_0("ssw_ndiv", slv.method.ssw_ndiv);
    must_be_above_0("ssw_period_mult", slv.method.ssw_period_mult);
    if (was_given(slv, "delt_const")) must_be_above_0("delt_const", slv.method.delt_const);
    if (slv.method.ssw_dmp && !(slv.method.ssw_dmp_k > 0.0 && slv.method.ssw_dmp_k <= 1.0))
        halt({"solve_class: ssw: ssw_dmp_k must be above 0 and at most 1.",
              line("   ssw_dmp_k = ", slv.method.ssw_dmp_k), last});
    const double one_period = period ? slv.method.ssw_period : 1.0 / slv.method.ssw_frequency;
    if (!was_given(slv, "delt_const")) slv.method.delt_const = one_period / slv.method.ssw_ndiv;
    slv.method.ssw_period = slv.method.ssw_period_mult * one_period;
    flags.t_end = flags.t_start + slv.method.ssw_period;
}

// ---- methods and steps of a time loop ----

void check_t_end(const solve_class& slv) {
    if (slv.trns && !was_given(slv, "t_end"))
        halt({"solve_class: t_end for transient simulation", "   has not been specified. Halting..."});
}

void check_implicit_count(const solve_class& slv, const char* head, const char* last) {
    if (n_on(slv, implicit_methods) > 1) halt({head, last});
}

// A method where none was named, and the limits of its step.
void check_implicit_side(solve_class& slv, const circuit& c) {
    if (n_on(slv, implicit_methods) == 0) {
        say("solve_class: trns method not sepcified.");
        if (c.cct.flag_linear) {
            slv.method.trapezoidal = int_T;
            say("   Setting trapezoidal by default.");
            say("   (linear circuit)");
        } else {
            slv.method.back_euler = int_T;
            say("   Setting back Euler by default.");
            say("   (non-linear circuit)");
        }
    }
    if (slv.ssw && n_on(slv, ssw_methods) == 0)
        halt({"solve_class: one of back_euler, back_euler_auto,", "   trapezoidal, trapezoidal_auto must be selected",
              "   for SSW simulation, Halting..."});
    constexpr const char* head = "solve_class: delt_const for transient/SSW simulation";
    if (!was_given(slv, "delt_const") && !slv.ssw) halt({head, "   has not been specified. Halting..."});
    check_t_end(slv);
    if (was_given(slv, "delt_min") && slv.method.delt_const < slv.method.delt_min)
        halt({"solve_class: delt_const for transient simulation", "   is less than delt_min. Halting..."});
    // Settings by which a step would be tried again for ever.
    const bool shortens = slv.method.trbdf2 || slv.method.back_euler_auto || slv.method.trapezoidal_auto;
    if (shortens && !(slv.method.fctr_stepred < 1.0))
        halt({"solve_class: fctr_stepred must be below 1.", line("   fctr_stepred = ", slv.method.fctr_stepred),
              "   Halting..."});
    if (slv.method.trbdf2 && !(slv.method.trbdf2_tolr > 0.0))
        halt({"solve_class: trbdf2_tolr must be above 0.", line("   trbdf2_tolr = ", slv.method.trbdf2_tolr),
              "   Halting..."});
    if (slv.method.trbdf2 && !(slv.method.trbdf2_gamma > 0.0 && slv.method.trbdf2_gamma < 1.0))
        halt({"solve_class: trbdf2_gamma must lie between 0 and 1.",
              line("   trbdf2_gamma = ", slv.method.trbdf2_gamma), "   Halting..."});
    if (!was_given(slv, "delt_min")) slv.method.delt_min = 0.0002 * slv.method.delt_const;
    if (!was_given(slv, "delt_max")) slv.method.delt_max = 10.0 * slv.method.delt_const;
}

void set_explicit_steps(solve_class& slv) {
    if (!was_given(slv, "delt_min_x")) slv.method.delt_min_x = 0.0002 * slv.method.delt_const_x;
    if (!was_given(slv, "delt_max_x")) slv.method.delt_max_x = 10.0 * slv.method.delt_const_x;
}

void check_x_mixed(solve_class& slv, const circuit& c) {
    if (slv.ssw || slv.ac || slv.dc || slv.startup)
        halt({"solve_class: SSW/AC/DC/startup not allowed", "  for x-mixed circuit. Halting..."});
    if (!slv.trns) return;
    if (n_on(slv, explicit_methods) != 1)
        halt({"solve_class: more then one method specified for", "   transient simulation (x-circuit)? Halting..."});
    if (slv.method.RKF45) halt({"solve_class: RKF45 not allowed for x-mixed circuit."});
    if (slv.method.BS23) halt({"solve_class: BS23 not allowed for x-mixed circuit."});
    if (!c.cct.flag_integrator_x && !slv.method.forward_euler)
        halt({"solve_class: only F.Euler is allowed when there are", "   no integrator type x-elements. Halting..."});
    check_implicit_count(slv, "solve_class: more than one method specified for",
                         "   transient simulation (non-x circuit)? Halting...");
    check_implicit_side(slv, c);
    if (!was_given(slv, "delt_const_x")) halt({"solve_class: delt_const_x not assigned."});
    // The explicit step is taken between implicit ones, so it must not be finer than they are.
    if (slv.method.delt_const_x < 4.0 * slv.method.delt_max)
        halt({"solve_class: delt_const_x is too small.",
              line("   delt_const_x = ", slv.method.delt_const_x, ", delt_max = ", slv.method.delt_max),
              "   Halting.."});
    set_explicit_steps(slv);
}

void check_x_only(solve_class& slv, const circuit& c) {
    if (slv.ssw || slv.dc || slv.startup)
        halt({"solve_class: SSW/DC/startup not allowed", "  for x-circuit. Halting..."});
    if (slv.out.i_file_parms >= 0)
        halt({"solve_class: write_parameters is not allowed", "   with xelements. Halting..."});
    if (!slv.trns) return;
    if (n_on(slv, explicit_methods) != 1)
        halt({"solve_class: number of methods specified for", "   transient simulation must be 1. Halting..."});
    constexpr const char* head = "solve_class: delt_const_x for transient simulation";
    if (!was_given(slv, "delt_const_x")) halt({head, "   has not been specified. Halting..."});
    check_t_end(slv);
    if (was_given(slv, "delt_min_x") && slv.method.delt_const_x < slv.method.delt_min_x)
        halt({head, "   is less than delt_min_x. Halting..."});
    set_explicit_steps(slv);
    if (!c.cct.flag_integrator_x && !slv.method.forward_euler)
        halt({"solve_class: only F.Euler is allowed when there are", "   no integrator type elements. Halting..."});
}

void check_method(solve_class& slv, const circuit& c) {
    if (c.cct.flag_x_mixed) {
        check_x_mixed(slv, c);
    } else if (c.cct.flag_x_only) {
        check_x_only(slv, c);
    } else if (slv.trns || slv.ssw) {
        if (c.cct.flag_purely_digital) {
            check_t_end(slv);
            return;
        }
        check_implicit_count(slv, "solve_class: more then one method specified for",
                             "   transient simulation? Halting...");
        check_implicit_side(slv, c);
    }
}

void check_serial_evaluation(const solve_class& slv, const circuit& c, const flags_class& flags) {
    if (c.xbeu.n() == 0) return;
    if (slv.method.x_eval_serial && flags.x_matrix)
        halt({"solve_class: flag_x_eval_serial and flag_x_use_matrix", "  are not compatible.",
              line("  flag_x_eval_serial = ", slv.method.x_eval_serial, ", flag_x_use_matrix = ", flags.x_matrix)});
    if (slv.trns && slv.method.x_eval_serial && n_on(slv, explicit_methods) == 0)
        halt({"solve_class: trns method specified in solve block", "  is not allowed with flag_x_eval_serial = T.",
              "  Halting..."});
}

// ---- sweeps and frequencies ----------------------------------------------------------------------------------------

constexpr double max_grid = std::numeric_limits<int>::max();  // its points are numbered

void check_sweeps(solve_class& slv) {
    constexpr const char* no_solution = "solve_class::set_values: cannot write solution";
    if (!slv.task.vary.empty()) {
        if (slv.task.flag_vary_auto && slv.task.vary.size() > 1)
            halt({"solve_class: vary_parm (auto):", "   Cannot have any other vary_parm",
                  "   statement with auto sweep.", "   Halting ..."});
        double n = 1;
        for (const vary_statement& v : slv.task.vary) n *= v.range.n;
        if (n > max_grid) halt({"solve_class: too many points", "   in the vary_parm grid. Halting..."});
        slv.task.n_sweep = static_cast<int>(n);
        if (slv.out.i_file_solution >= 0) halt({no_solution, "   in a vary_parm solve block.", "   Halting ..."});
    }
    if (!slv.task.vary_sync.empty()) {
        slv.task.n_sync = slv.task.vary_sync[0].range.n;
        for (const vary_statement& v : slv.task.vary_sync)
            if (v.range.n != slv.task.n_sync)
                halt({"solve_class::set_values: vary_parm_sync:", "   n_points must be identical for",
                      "   all vary_parm_sync statements.", "   Halting ..."});
        if (slv.out.i_file_solution >= 0) halt({no_solution, "   in a vary_parm_sync solve block.", "   Halting ..."});
    }
}

void check_step_norms(solve_class& slv) {
    if (slv.method.chk_delx_volt || slv.method.chk_delx_kcl) slv.method.chk_delx_sprt = int_T;
    if (slv.method.write_delx_volt || slv.method.write_delx_kcl) slv.method.write_delx_sprt = int_T;
}

void check_ac(solve_class& slv, const circuit& c) {
    if (!slv.ac) return;
    if (slv.task.ac_single == slv.task.ac_sweep)
        halt({"solve_class::set_values: check frequency definition cards", "   must define either a single frequency",
              "   with the set_freq statement OR", "   a range of frequencies with the", "   vary_freq statement."});
    if (slv.task.ac_sweep && !fits_in_memory(slv.task.ac_range.n * double{sizeof(double)}))
        halt({"solve_class: too many points", "   in vary_freq statement. Halting.."});
    assign_freq_array(slv);
    if (c.xbau.n() > 0 && (c.ebau.n() > 0 || c.gbau.n() > 0))
        halt({"solve_class::set_values: xelements cannot be mixed", "   with other types in AC solve. Halting..."});
    if (c.cct.flag_x_cct) halt({"solve_class: x_cct elements are not allowed", "   in AC solve. Halting..."});
}

// ---- circuits that a type of block cannot treat ----

void check_digital_units(const solve_class& slv, const circuit& c, truefalse solve_class::*type, const char* name) {
    if (slv.*type && c.dbeu.n() > 0)
        halt({line("solve_class: ", name, " is not allowed when"),
              "   the circuit contains digital elements. Halting.."});
}

void check_constant_step(const solve_class& slv, const circuit& c) {
    if (!slv.method.constant_step) return;
    constexpr const char* head = "solve_class: constant_step is allowed";
    if (!slv.trns) halt({head, "   only for transient simulation. Halting.."});
    if (c.dbeu.n() > 0) halt({head, "   only without digital elements. Halting.."});
    if (c.xbeu.n() > 0) halt({head, "   only without xelements. Halting.."});
    if (!slv.method.back_euler && !slv.method.trapezoidal)
        halt({"solve_class: constant_step is allowed only", "   with b.euler or trapezoidal. Halting.."});
}

void check_allow_ssw(const unit_core& unit, const basic_library& lib, const char* family) {
    for (int e : unit.i_lib)
        if (!lib.flag.allow_ssw[at(e)])
            halt({line("solve_class: SSW not allowed for ", family, " type: ", lib.list.entry[e])});
}

void check_ssw(const solve_class& slv, const circuit& c) {
    if (!slv.ssw) return;
    check_digital_units(slv, c, &solve_class::ssw, "ssw");
    if (!slv.task.set_stparm.empty()) halt({"solve_class: do not set stparms in ssw!"});
    check_allow_ssw(c.ebeu.unit, c.lib.ebes, "ebe");
    check_allow_ssw(c.gbeu.unit, c.lib.gbes, "gbe");
}

// ---- settings that are switched off with a warning ----

void switch_off_ignored(solve_class& slv, const circuit& c) {
    if (slv.solve_type == solve_none) return;  // nothing is solved, so nothing is told
    if (slv.method.nr_approx && c.eelu.n == 0) {
        say("solve_class::set_values: nr_approx=yes cannot be used");
        say("   if there are no electrical elements. Ignored..");
        slv.method.nr_approx = int_F;
    } else if (slv.method.nr_approx && !slv.trns) {
        say("solve_class::set_values: nr_approx=yes is used");
        say("   only in trns. Ignored..");
        slv.method.nr_approx = int_F;
    }
    if (!slv.method.gmin_step) return;
    constexpr const char* head = "solve_class: gmin stepping can only be used";
    if (!slv.dc && !slv.trns) {
        say(head);
        say("  for DC and trns. Resetting l_gmin_step to F.");
        slv.method.gmin_step = int_F;
    } else if (c.ebeu.n() == 0) {
        say(head);
        say("  with electrical elements.");
        say("  Resetting l_gmin_step to F.");
        slv.method.gmin_step = int_F;
    }
}

void check_explicit_outputs(const solve_class& slv, const circuit& c) {
    constexpr const char* no_sweep = "solve_class: vary_parm/vary_parm_sync are";
    constexpr const char* last = "   not allowed with xelements. Halting...";
    if (slv.ac && c.xbau.n() > 0) {
        if (slv.out.i_file_solution >= 0) halt({"solution cannot be written for AC (xelements)"});
        if (slv.task.has_vary()) halt({no_sweep, last});
    }
    if (!slv.ac && c.xbeu.n() > 0 && slv.task.has_vary()) halt({no_sweep, last});
}
}  // namespace

void check_block(solve_class& slv, const circuit& c, flags_class& flags) {
    for (const out_file& file : slv.out.files)
        if (file.fourier) slv.out.flag_fourier = int_T;
    const auto test = [&](auto check) { reading(c.cf.n_begin_solve[at(slv.index_solve)], check); };
    test([&] { check_initial_sol(slv); });
    test([&] { check_newton_settings(slv, c); });
    if (slv.ssw) test([&] { find_ssw_period(slv, flags); });
    test([&] { check_method(slv, c); });
    test([&] { check_serial_evaluation(slv, c, flags); });
    check_files(slv, flags);
    test([&] { check_sweeps(slv); });
    check_step_norms(slv);
    test([&] { check_ac(slv, c); });
    test([&] { check_digital_units(slv, c, &solve_class::dc, "dc"); });
    test([&] { check_constant_step(slv, c); });
    test([&] { check_ssw(slv, c); });
    switch_off_ignored(slv, c);
    slv.now.delt = slv.method.delt_const;
    test([&] {
        if (!slv.method.matrix_sparse1 || slv.method.matrix_superlu)
            halt({"solve_class: gauss elim method not specified correctly.", "   Halting.."});
    });
    test([&] { check_explicit_outputs(slv, c); });
}

std::vector<std::string_view> time_rule_words() {
    std::vector<std::string_view> list;
    for (const method_word& m : method_words())
        for (auto rule : implicit_methods)
            if (const auto* flag = std::get_if<truefalse method_settings::*>(&m.member);
                flag != nullptr && *flag == rule)
                list.push_back(m.word);
    return list;
}
