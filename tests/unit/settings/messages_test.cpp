// Every fault of a solve block: the cards that raise it, and the whole console text.
#include <gtest/gtest.h>

#include "block_fixture.h"
#include "halt_throws.h"

namespace {
// What has to be different from the fixture's circuit.
using change = void (*)(block_run&);

void nothing(block_run&) {}
void x_mixed(block_run& r) {
    r.c.cct.flag_x_mixed = true;
    r.c.cct.flag_integrator_x = true;
    r.c.xbeu.unit.n = 1;
}
void x_mixed_no_integrator(block_run& r) {
    x_mixed(r);
    r.c.cct.flag_integrator_x = false;
}
void x_only(block_run& r) {
    r.c.cct.flag_x_only = true;
    r.c.cct.flag_integrator_x = true;
    r.c.xbeu.unit.n = 1;
    r.c.ebeu.unit.n = 0;
}
void x_only_no_integrator(block_run& r) {
    x_only(r);
    r.c.cct.flag_integrator_x = false;
}
void x_units(block_run& r) { r.c.xbeu.unit.n = 1; }
void x_matrix(block_run& r) {
    r.c.xbeu.unit.n = 1;
    r.flags.x_matrix = 1;
}
void x_ac_units(block_run& r) { r.c.xbau.unit.n = 1; }
void x_and_e_ac_units(block_run& r) { r.c.xbau.unit.n = r.c.ebau.unit.n = 1; }
void x_circuit(block_run& r) { r.c.cct.flag_x_cct = true; }
void digital_units(block_run& r) { r.c.dbeu.unit.n = 1; }
void purely_digital(block_run& r) {
    r.c.dbeu.unit.n = 1;
    r.c.cct.flag_purely_digital = true;
}
void reset_units(block_run& r) { r.c.cct.flag_reset = true; }
void digital_outvar(block_run& r) { r.c.ov.kind[0] = ov_dvar; }
void postproc_outvar(block_run& r) { r.c.ov.kind[0] = ov_postproc; }
void postproc_ac_outvar(block_run& r) { r.c.ov.kind[0] = ov_postproc_ac; }
void no_electrical(block_run& r) {
    r.c.eelu.n = 0;
    r.c.ebeu.unit.n = 0;
}
void gmin_declared(block_run& r) { r.c.lib.ebes.flag.gmin_step[0] = 1; }
void gmin_declared_no_units(block_run& r) {
    gmin_declared(r);
    r.c.ebeu.unit.n = 0;
}

struct fault {
    const char* what;  // a word for the test's name
    std::string cards;
    std::string text;
    change circuit = nothing;
};
std::ostream& operator<<(std::ostream& out, const fault& f) { return out << f.what; }

const std::string file_head = "filename a.dat\n";
const std::string dc = "solve_type dc\n";
const std::string trns = "solve_type trns\nmethod: t_end=1 delt_const=1m back_euler=yes\n";
const std::string no_rule = "solve_type trns\nmethod: t_end=1 delt_const=1m ";
const std::string ac = "solve_type ac\nset_freq 50\n";
const std::string ssw = "solve_type ssw\nmethod: ssw_period=1m back_euler=yes\n";
std::string out(const std::string& variables, const std::string& options = "", const std::string& more = "") {
    return out_block("filename a.dat " + options + "\nvariables: " + variables + "\n" + more);
}

// In the order in which one block would show them.
const fault faults[] = {
    // counting pass
    {"end_output", dc + "begin_output\nfilename a\nvariables: vout\n",
     "solve_class: end_output not found. Halting...\n"},
    {"no_variables_statement", dc + out_block(file_head), "Output block does not have any variables?\n   Halting..\n"},
    {"empty_variables", dc + out_block(file_head + "variables:\n"),
     "Output block does not have any variables?\n   Halting..\n"},
    {"two_solution", dc + out("solution") + out("solution"), "Only one solution file is allowed as output.\n"},
    {"two_solution_ac", dc + out("solution_ac") + out("solution_ac"),
     "Only one solution_ac file is allowed as output.\n"},
    {"two_parms", dc + out("parms") + out("parms"), "Only one parms file is allowed as output.\n"},
    {"two_all_nodes", dc + out("all_nodes") + out("all_nodes"), "Only one all_nodes file is allowed as output.\n"},
    {"two_all_outvars", dc + out("all_outvars") + out("all_outvars"),
     "Only one all_outvars file is allowed as output.\n"},
    {"solution_with_more", dc + out("solution vout"), "Check syntax of solution output block.\n"},
    {"parms_behind_others", dc + out("vout parms"), "Check syntax of parms output block.\n"},
    {"counting_comes_first", "method: nonsense=1\n" + out("solution vout"), "Check syntax of solution output block.\n"},
    // type
    {"no_type", "method: norm_2=1\n", "solve_class: solve_type not found. Halting...\n"},
    {"type_before_cards", "method: nonsense=1\n", "solve_class: solve_type not found. Halting...\n"},
    // initial_sol
    {"initial_sol_file", dc + "initial_sol file x.dat\n",
     "solve_class: filename not found in\n  the initial_sol card. Halting...\n"},
    {"initial_sol_file_alone", dc + "initial_sol file\n",
     "solve_class: filename not found in\n  the initial_sol card. Halting...\n"},
    {"initial_sol_word", dc + "initial_sol zero\n",
     "solve_class: something wrong with\n  the initial_sol card. Halting...\n"},
    {"two_starts", dc + "initial_sol initialize\ninitial_sol previous\n",
     "solve_class: one and only one method is allowed\n   for init sol. Check the solve blocks. Halting..\n"},
    {"two_starts_ac", ac + "initial_sol initialize\ninitial_sol previous\n",
     "solve_class: Not more than 1 method is allowed\n   for init sol. Check the solve blocks. Halting..\n"},
    // output blocks
    {"no_filename", dc + out_block("variables: vout\n"),
     "solve_class: filename not found in\n  an output block. Halting...\n"},
    {"sweep_format", dc + out("vout", "sweep_format=upward"),
     "solve_class: something wrong with\n   sweep_format option.\n   Halting...\n"},
    {"glbl_word", dc + out("glbl_of_ra"),
     "solve_class: syntax problem in output variables?\n   Check this outvar: glbl_of_ra\n"
     "   glbl_of_xxx is not allowed.\n   Halting...\n"},
    {"unknown_variable", dc + out("nodev_of_out"),
     "solve_class: syntax problem in output variables?\n   Check this outvar: nodev_of_out\n   Halting...\n"},
    {"mag_of_unknown", dc + out("mag_of_ra"),
     "solve_class: syntax problem in output variables?\n   Check this outvar: mag_of_ra\n   Halting...\n"},
    {"variable_without_of", dc + out("vuot"),
     "solve_class: _of_ not found.\n   Check this outvar: vuot\n   Halting...\n"},
    {"n_fourier", dc + out("vout", "", "control: n_fourier=-1\n"),
     "solve_class: n_fourier must be from 0 to 2147483646. Halting...\n"},
    {"postproc_in_dc", dc + out("vout"), "solve_class: postproc is allowed only\n   for trns and SSW. Halting...\n",
     postproc_outvar},
    {"postproc_ac_in_dc", dc + out("vout"), "solve_class: postproc_ac is allowed only\n   for AC. Halting...\n",
     postproc_ac_outvar},
    {"postproc_mixed", trns + out("iv vout"),
     "solve_class: postproc variables cannot stand beside\n   others in an output file. Halting...\n", postproc_outvar},
    // items
    {"set_parm_of", dc + "set_parm r=1\n",
     "solve_class: _of_ not found.\n   Check this string: r\n   in the set_parm statement.\n   Halting...\n"},
    {"set_stparm_of", dc + "set_stparm r=1\n",
     "solve_class: _of_ not found.\n   Check this string: r\n   in the set_stparm statement.\n   Halting...\n"},
    {"set_igparm_of", dc + "set_igparm r=1\n",
     "solve_class: _of_ not found.\n   Check this string: r\n   in the set_igparm statement.\n   Halting...\n"},
    {"set_dstparm_of", dc + "set_dstparm r=1\n",
     "solve_class: _of_ not found.\n   Check this string: r\n   in the set_dstparm statement.\n   Halting...\n"},
    {"set_digparm_of", dc + "set_digparm r=1\n",
     "solve_class: _of_ not found.\n   Check this string: r\n   in the set_digparm statement.\n   Halting...\n"},
    {"set_parm_instance", dc + "set_parm r_of_R9=1\n",
     "solve_class: parameter not identified in\n   set_parm statement.\n   Check this string: r_of_R9\n"
     "   Halting...\n"},
    {"set_parm_parameter", dc + "set_parm c_of_R1=1\n",
     "solve_class: parameter not identified in\n   set_parm statement.\n   Check this string: c_of_R1\n"
     "   Halting...\n"},
    {"set_dstparm_on_electrical", dc + "set_dstparm r_of_R1=1\n",
     "solve_class: parameter not identified in\n   set_dstparm statement.\n   Check this string: r_of_R1\n"
     "   Halting...\n"},
    {"set_parm_no_global", dc + "set_parm glbl_of_x=1\n",
     "solve_class: trying to set a global parameter\n   which does not exist?\n"},
    {"set_parm_dependent_global", dc + "set_parm glbl_of_rb=1\n",
     "greal parm no. 1 is not independent!\n  message from the calling routine:\n"
     "solve_class: trying to set a global parameter\n   which depends on others?\n  Halting...\n"},
    {"set_dgtl", dc + "set_dgtl q=1\n",
     "solve_class: digital node name not found\n   in set_sgtl statement.\n   Check this string: q\n"},
    // sweeps
    {"vary_of", dc + "vary_parm r type table 1\n",
     "solve_class: keyword _of_ not found in\n   vary_parm statement.\n   Check this string: r\n   Halting...\n"},
    {"vary_no_global", dc + "vary_parm glbl_of_x type table 1\n",
     "solve_class: trying to vary a global parameter\n   which does not exist?\n"},
    {"vary_dependent_global", dc + "vary_parm glbl_of_rb type table 1\n",
     "greal parm no. 1 is not independent!\n  message from the calling routine:\n"
     "solve_class: trying to vary a global parameter\n   which depends on others?\n  Halting...\n"},
    {"vary_iparm", dc + "vary_parm n_par_of_R2 type table 1\n",
     "solve_class: parameter not identified in\n   vary_parm statement.\n   Check this string: n_par_of_R2\n"
     "   Halting...\n"},
    {"vary_in_trns", trns + "vary_parm r_of_R2 type table 1\n",
     "solve_class: vary_parm is not allowed in\n   trns or ssw. Halting...\n"},
    {"vary_in_ssw", ssw + "vary_parm r_of_R2 type table 1\n",
     "solve_class: vary_parm is not allowed in\n   trns or ssw. Halting...\n"},
    {"sync_in_trns", trns + "vary_parm_sync r_of_R2 type table 1\n",
     "solve_class: vary_parm_sync is not allowed in\n   trns or ssw. Halting...\n"},
    {"sync_in_startup", "solve_type startup\nvary_parm_sync r_of_R2 type table 1\n",
     "solve_class: vary_parm_sync is not allowed in\n   startup. Halting...\n"},
    {"table_empty", dc + "vary_parm r_of_R2 type table\n",
     "solve_class: check number of table points\n   in vary_parm statement.\n   Halting...\n"},
    {"table_empty_sync", dc + "vary_parm_sync r_of_R2 type table\n",
     "solve_class: check number of table points\n   in vary_parm_sync statement.\n   Halting...\n"},
    {"one_point", dc + "vary_parm r_of_R2 from 1 to 2 type linear n_points 1\n",
     "solve_class: n_points cannot be < 2\n   in vary_parm statement. Halting..\n"},
    {"div_of_zero", dc + "vary_parm r_of_R2 from 1 to 1 type linear div 0\n",
     "solve_class: n_points cannot be < 2\n   in vary_parm statement. Halting..\n"},
    {"div_too_fine", dc + "vary_parm r_of_R2 from 1 to 2 type linear div 1e-300\n",
     "solve_class: too many points\n   in vary_parm statement. Halting..\n"},
    {"no_from", dc + "vary_parm r_of_R2 to 2 from 1 type linear n_points 4\n",
     "solve_class: <from> or <type> not found in\n   vary_parm statement. Halting..\n"},
    {"no_to", dc + "vary_parm r_of_R2 from 1 type linear n_points 4\n",
     "solve_class: <to> not found in\n   vary_parm statement. Halting..\n"},
    {"no_to_sync", dc + "vary_parm_sync r_of_R2 from 1 type linear n_points 4\n",
     "solve_class: <to> not found in\n   vary_parm_sync statement. Halting..\n"},
    {"no_type_word", dc + "vary_parm r_of_R2 from 1 to 2 n_points 4\n",
     "solve_class: <type> not found in\n   vary_parm statement. Halting..\n"},
    {"no_points_linear", dc + "vary_parm r_of_R2 from 1 to 2 type linear\n",
     "solve_class: <n_points> or <div> not found in\n   vary_parm statement. Halting..\n"},
    {"no_points_log", dc + "vary_parm r_of_R2 from 1 to 2 type log div 1\n",
     "solve_class: <n_points> not found in\n   vary_parm statement. Halting..\n"},
    {"wrong_form", dc + "vary_parm r_of_R2 from 1 to 2 type cubic n_points 3\n",
     "solve_class: type must be linear or log in\n   vary_parm statement. Halting..\n"},
    {"wrong_type", dc + "vary_parm r_of_R2 type linear\n",
     "solve_class: type can only be table or auto\n   in vary_parm statement.\n   Check this string: linear\n"},
    {"sync_auto", dc + "vary_parm_sync r_of_R2 type auto\n",
     "solve_class: vary_parm_sync: type can be\n   table only. Halting...\n"},
    {"auto_key", dc + "vary_parm r_of_R2 type auto start 1\n",
     "solve_class: unknown keyword in\n   in vary_parm (auto) statement.\n   Check this string: start\n"},
    {"auto_no_begin", dc + "vary_parm r_of_R2 type auto p_end 1 step 1 step_min 1 step_max 1\n",
     "solve_class: vary_parm (auto) statement:\n  p_begin not sepcified? Halting...\n"},
    {"auto_no_end", dc + "vary_parm r_of_R2 type auto p_begin 1 step 1 step_min 1 step_max 1\n",
     "solve_class: vary_parm (auto) statement:\n  p_end not sepcified? Halting...\n"},
    {"auto_no_step", dc + "vary_parm r_of_R2 type auto p_begin 1 p_end 1 step_min 1 step_max 1\n",
     "solve_class: vary_parm (auto) statement:\n  step not sepcified? Halting...\n"},
    {"auto_no_step_min", dc + "vary_parm r_of_R2 type auto p_begin 1 p_end 1 step 1 step_max 1\n",
     "solve_class: vary_parm (auto) statement:\n  step_min not sepcified? Halting...\n"},
    {"auto_no_step_max", dc + "vary_parm r_of_R2 type auto p_begin 1 p_end 1 step 1 step_min 1\n",
     "solve_class: vary_parm (auto) statement:\n  step_max not sepcified? Halting...\n"},
    {"auto_twice",
     dc + "vary_parm r_of_R2 type auto p_begin 1 p_end 1 step 1 step_min 1 step_max 1\n"
          "vary_parm r_of_R1 type auto p_begin 1 p_end 1 step 1 step_min 1 step_max 1\n",
     "solve_class: only one vary_parm (auto)\n   statement is allowed in a solve section.\n   Halting...\n"},
    {"auto_in_ac", ac + "vary_parm r_of_R2 type auto\n",
     "solve_class: vary_parm (auto) is allowed\n   only in a DC solve section.\n   Halting...\n"},
    // frequencies
    {"two_set_freq", ac + "set_freq 60\n",
     "solve_class: only one set_freq is allowed\n   in a solve section. Halting...\n"},
    {"two_vary_freq", "solve_type ac\nvary_freq type table 1\nvary_freq type table 2\n",
     "solve_class: only one vary_freq is allowed\n   in a solve section. Halting...\n"},
    {"vary_freq_type", "solve_type ac\nvary_freq type auto\n",
     "solve_class: vary_freq: type can be\n   table only. Halting...\n"},
    {"vary_freq_table", "solve_type ac\nvary_freq type table\n",
     "solve_class: check number of table points\n   in vary_freq statement.\n   Halting...\n"},
    // settings against each other
    {"gear_reset", "solve_type trns\nmethod: gear2=yes t_end=1 delt_const=1\n",
     "solve_class: reset type elements are not allowed\n   with Gear method. Halting...\n", reset_units},
    {"gear_fixed_reset", "solve_type trns\nmethod: gear2_fixed=yes t_end=1 delt_const=1\n",
     "solve_class: reset type elements are not allowed\n   with Gear method. Halting...\n", reset_units},
    {"line_search", "solve_type startup\nmethod: nr_line_search=yes\n",
     "solve_class: N-R line search is allowed only\n  for dc and trns. Halting...\n"},
    {"damping_counts", dc + "method: dmp_newt_max=60\n",
     "solve_class: dmp_newt_max = 60, dmp_newt_max2 = 50 is not allowed. Halting...\n"},
    {"damping_factors", dc + "method: dmp_k=0.1 dmp_k2=0.25\n",
     "solve_class: dmp_k = 0.1, dmp_k2 = 0.25 is not allowed. Halting...\n"},
    {"two_only_tests", dc + "method: chk_only_rhs2=yes chk_only_spice=yes\n",
     "solve_class: more than one chk_only_xxx parameters\n   not allowed for convergence. Halting...\n"},
    {"ssw_both", "solve_type ssw\nmethod: ssw_period=1 ssw_frequency=1\n",
     "solve_class: cannot assign both period and frequency\n   in SSW solve blocks. Halting..\n"},
    {"ssw_neither", "solve_type ssw\n",
     "solve_class: must specify period or frequency\n   in SSW solve blocks. Halting..\n"},
    {"ssw_neither_unknown", "solve_type ssw\nmethod: ssw_known_period=no\n",
     "solve_class: ssw: period or frequency must be specified.\n   in SSW solve blocks. Halting..\n"},
    // methods: x-mixed
    {"x_mixed_dc", dc, "solve_class: SSW/AC/DC/startup not allowed\n  for x-mixed circuit. Halting...\n", x_mixed},
    {"x_mixed_ac", ac, "solve_class: SSW/AC/DC/startup not allowed\n  for x-mixed circuit. Halting...\n", x_mixed},
    {"x_mixed_startup", "solve_type startup\n",
     "solve_class: SSW/AC/DC/startup not allowed\n  for x-mixed circuit. Halting...\n", x_mixed},
    {"x_mixed_ssw", ssw, "solve_class: SSW/AC/DC/startup not allowed\n  for x-mixed circuit. Halting...\n", x_mixed},
    {"x_mixed_no_method", trns,
     "solve_class: more then one method specified for\n   transient simulation (x-circuit)? Halting...\n", x_mixed},
    {"x_mixed_two_methods", trns + "method: RK4=yes Heun=yes\n",
     "solve_class: more then one method specified for\n   transient simulation (x-circuit)? Halting...\n", x_mixed},
    {"x_mixed_rkf45", trns + "method: RKF45=yes\n", "solve_class: RKF45 not allowed for x-mixed circuit.\n", x_mixed},
    {"x_mixed_bs23", trns + "method: BS23=yes\n", "solve_class: BS23 not allowed for x-mixed circuit.\n", x_mixed},
    {"x_mixed_euler_only", trns + "method: RK4=yes\n",
     "solve_class: only F.Euler is allowed when there are\n   no integrator type x-elements. Halting...\n",
     x_mixed_no_integrator},
    {"x_mixed_two_implicit", trns + "method: RK4=yes trapezoidal=yes\n",
     "solve_class: more than one method specified for\n   transient simulation (non-x circuit)? Halting...\n", x_mixed},
    {"x_mixed_no_delt_x", trns + "method: RK4=yes\n", "solve_class: delt_const_x not assigned.\n", x_mixed},
    {"x_mixed_small_delt_x", trns + "method: RK4=yes delt_const_x=39m\n",
     "solve_class: delt_const_x is too small.\n   delt_const_x = 0.039, delt_max = 0.01\n   Halting..\n", x_mixed},
    // methods: explicit blocks only
    {"x_only_dc", dc, "solve_class: SSW/DC/startup not allowed\n  for x-circuit. Halting...\n", x_only},
    {"x_only_ssw", ssw, "solve_class: SSW/DC/startup not allowed\n  for x-circuit. Halting...\n", x_only},
    {"x_only_parms", trns + out("parms"),
     "solve_class: write_parameters is not allowed\n   with xelements. Halting...\n", x_only},
    {"x_only_no_method", trns,
     "solve_class: number of methods specified for\n   transient simulation must be 1. Halting...\n", x_only},
    {"x_only_no_delt", trns + "method: RK4=yes\n",
     "solve_class: delt_const_x for transient simulation\n   has not been specified. Halting...\n", x_only},
    {"x_only_no_t_end", "solve_type trns\nmethod: RK4=yes delt_const_x=1\n",
     "solve_class: t_end for transient simulation\n   has not been specified. Halting...\n", x_only},
    {"x_only_delt_min", trns + "method: RK4=yes delt_const_x=1m delt_min_x=2m\n",
     "solve_class: delt_const_x for transient simulation\n   is less than delt_min_x. Halting...\n", x_only},
    {"x_only_euler_only", trns + "method: RK4=yes delt_const_x=1m\n",
     "solve_class: only F.Euler is allowed when there are\n   no integrator type elements. Halting...\n",
     x_only_no_integrator},
    // methods: ordinary circuits
    {"two_implicit", trns + "method: trbdf2=yes\n",
     "solve_class: more then one method specified for\n   transient simulation? Halting...\n"},
    {"no_delt_const", "solve_type trns\nmethod: back_euler=yes t_end=1\n",
     "solve_class: delt_const for transient/SSW simulation\n   has not been specified. Halting...\n"},
    {"no_t_end", "solve_type trns\nmethod: back_euler=yes delt_const=1\n",
     "solve_class: t_end for transient simulation\n   has not been specified. Halting...\n"},
    {"no_t_end_digital", "solve_type trns\n",
     "solve_class: t_end for transient simulation\n   has not been specified. Halting...\n", purely_digital},
    {"small_delt_const", trns + "method: delt_min=2m\n",
     "solve_class: delt_const for transient simulation\n   is less than delt_min. Halting...\n"},
    {"fctr_stepred_auto", no_rule + "back_euler_auto=yes fctr_stepred=1\n",
     "solve_class: fctr_stepred must be below 1.\n   fctr_stepred = 1\n   Halting...\n"},
    {"fctr_stepred_trbdf2", no_rule + "trbdf2=yes fctr_stepred=1.5\n",
     "solve_class: fctr_stepred must be below 1.\n   fctr_stepred = 1.5\n   Halting...\n"},
    {"trbdf2_tolr", no_rule + "trbdf2=yes trbdf2_tolr=0\n",
     "solve_class: trbdf2_tolr must be above 0.\n   trbdf2_tolr = 0\n   Halting...\n"},
    {"trbdf2_gamma", no_rule + "trbdf2=yes trbdf2_gamma=1\n",
     "solve_class: trbdf2_gamma must lie between 0 and 1.\n   trbdf2_gamma = 1\n   Halting...\n"},
    {"ssw_method", "solve_type ssw\nmethod: ssw_period=1 gear2=yes\n",
     "solve_class: one of back_euler, back_euler_auto,\n   trapezoidal, trapezoidal_auto must be selected\n"
     "   for SSW simulation, Halting...\n"},
    {"serial_and_matrix", trns + "method: x_eval_serial=yes\n",
     "solve_class: flag_x_eval_serial and flag_x_use_matrix\n  are not compatible.\n"
     "  flag_x_eval_serial = 1, flag_x_use_matrix = 1\n",
     x_matrix},
    {"serial_without_method", trns,
     "solve_class: trns method specified in solve block\n  is not allowed with flag_x_eval_serial = T.\n"
     "  Halting...\n",
     x_units},
    // files
    {"both_phases", ac + out("mag_of_vout", "", "control: min_phase=0 max_phase=1\n"),
     "solve_class: cannot specify both min-phase\n   and max-phase in output blocks. Halting...\n"},
    {"fourier_dc", dc + out("vout", "fourier=yes"),
     "solve_class: Fourier is allowed only\n   for trns and SSW. Halting...\n"},
    {"fourier_digital", trns + out("vout", "fourier=yes"),
     "solve_class: wrong data type for Fourier\n   variable. Check output blocks. Halting...\n", digital_outvar},
    {"fourier_period", trns + out("vout", "fourier=yes", "control: out_tstart=1 out_tend=1\n"),
     "solve_class: period_fourier = 0?\n   Check Fourier variables. Halting...\n"},
    {"fourier_size", trns + out(repeated("vout ", 60), "fourier=yes", "control: n_fourier=2147483646\n"),
     "solve_class: too many harmonics and variables\n   in a Fourier file. Halting...\n"},
    {"fourier_prefix", trns + out("mag_of_vout", "fourier=yes"),
     "solve_class: cannot have a prefix\n   for an outvar in fourier analysis.\n   Halting...\n"},
    {"nyquist_dc", dc + out("vout", "nyquist=yes"), "solve_class: Nyquist is allowed only\n   for AC. Halting...\n"},
    {"nyquist_one", ac + out("mag_of_vout", "nyquist=yes"),
     "solve_class (Nyquist):\n  more than two variables in the output file?\n"},
    {"nyquist_digital", ac + out("phase_of_vout mag_of_vout", "nyquist=yes"),
     "solve_class: Nyquist is allowed only\n  when data type is ANLG. Halting...\n", digital_outvar},
    {"nyquist_two_variables", ac + out("phase_of_vout mag_of_iv", "nyquist=yes"),
     "solve_class (Nyquist):\n  i_ov1 is not equal to i_ov2 in the output file.\n"},
    {"nyquist_first", ac + out("mag_of_vout mag_of_vout", "nyquist=yes"),
     "solve_class (Nyquist):\n  first outvar is not of type phase in the output file.\n"},
    {"nyquist_second", ac + out("phase_of_vout phase_of_vout", "nyquist=yes"),
     "solve_class (Nyquist):\n  second outvar is not of type mag in the output file.\n"},
    // sweeps against files
    {"auto_with_others",
     dc + "vary_parm r_of_R2 type auto p_begin 1 p_end 1 step 1 step_min 1 step_max 1\n"
          "vary_parm r_of_R1 type table 1 2\n",
     "solve_class: vary_parm (auto):\n   Cannot have any other vary_parm\n   statement with auto sweep.\n"
     "   Halting ...\n"},
    {"grid_too_large",
     dc + "vary_parm r_of_R2 from 1 to 2 type linear n_points 1073741824\n"
          "vary_parm r_of_R1 type table 1 2\n",
     "solve_class: too many points\n   in the vary_parm grid. Halting...\n"},
    {"solution_and_sweep", dc + out("solution") + "vary_parm r_of_R1 type table 1\n",
     "solve_class::set_values: cannot write solution\n   in a vary_parm solve block.\n   Halting ...\n"},
    {"sync_counts", dc + "vary_parm_sync r_of_R1 type table 1 2\nvary_parm_sync r_of_R2 type table 1 2 3\n",
     "solve_class::set_values: vary_parm_sync:\n   n_points must be identical for\n"
     "   all vary_parm_sync statements.\n   Halting ...\n"},
    {"solution_and_sync", dc + out("solution") + "vary_parm_sync r_of_R1 type table 1\n",
     "solve_class::set_values: cannot write solution\n   in a vary_parm_sync solve block.\n   Halting ...\n"},
    // ac
    {"ac_no_frequency", "solve_type ac\n",
     "solve_class::set_values: check frequency definition cards\n   must define either a single frequency\n"
     "   with the set_freq statement OR\n   a range of frequencies with the\n   vary_freq statement.\n"},
    {"ac_two_frequencies", ac + "vary_freq type table 1\n",
     "solve_class::set_values: check frequency definition cards\n   must define either a single frequency\n"
     "   with the set_freq statement OR\n   a range of frequencies with the\n   vary_freq statement.\n"},
    {"ac_x_mixed", ac,
     "solve_class::set_values: xelements cannot be mixed\n   with other types in AC solve. Halting...\n",
     x_and_e_ac_units},
    {"ac_x_circuit", ac, "solve_class: x_cct elements are not allowed\n   in AC solve. Halting...\n", x_circuit},
    // circuits
    {"dc_digital", dc, "solve_class: dc is not allowed when\n   the circuit contains digital elements. Halting..\n",
     digital_units},
    {"constant_step_ssw", ssw + "method: constant_step=yes\n",
     "solve_class: constant_step is allowed\n   only for transient simulation. Halting..\n"},
    {"constant_step_digital", trns + "method: constant_step=yes\n",
     "solve_class: constant_step is allowed\n   only without digital elements. Halting..\n", digital_units},
    {"constant_step_x", trns + "method: constant_step=yes x_eval_serial=no\n",
     "solve_class: constant_step is allowed\n   only without xelements. Halting..\n", x_units},
    {"constant_step_method", "solve_type trns\nmethod: constant_step=yes trbdf2=yes t_end=1 delt_const=1\n",
     "solve_class: constant_step is allowed only\n   with b.euler or trapezoidal. Halting..\n"},
    {"ssw_digital", ssw, "solve_class: ssw is not allowed when\n   the circuit contains digital elements. Halting..\n",
     digital_units},
    {"ssw_stparm", ssw + "set_stparm v0_of_R1=1\n", "solve_class: do not set stparms in ssw!\n",
     [](block_run& r) {  // give the composite r a start parameter
         r.c.lib.eels.list.sv = r.c.lib.eels.list.rprm;
         r.c.lib.eels.list.sv.name.pool = words{"v0", "v0", "v0", "v0", "v0", "v0"};
     }},
    {"ssw_not_allowed", ssw, "solve_class: SSW not allowed for ebe type: vs\n",
     [](block_run& r) { r.c.lib.ebes.flag.allow_ssw[1] = 0; }},
    {"ssw_not_allowed_block", ssw, "solve_class: SSW not allowed for gbe type: intgr\n",
     [](block_run& r) {
         r.c.lib.gbes.list.entry = {"intgr"};
         r.c.lib.gbes.flag.allow_ssw = {0};
         r.c.gbeu.unit.i_lib = {0};
     }},
    {"gauss", dc + "method: matrix_sparse1=no\n",
     "solve_class: gauss elim method not specified correctly.\n   Halting..\n"},
    {"superlu", dc + "method: matrix_superlu=yes\n",
     "solve_class: gauss elim method not specified correctly.\n   Halting..\n"},
    {"x_ac_solution", ac + out("solution"), "solution cannot be written for AC (xelements)\n", x_ac_units},
    {"x_ac_sweep", ac + "vary_parm r_of_R2 type table 1\n",
     "solve_class: vary_parm/vary_parm_sync are\n   not allowed with xelements. Halting...\n", x_ac_units},
    {"x_sweep", dc + "vary_parm r_of_R2 type table 1\n",
     "solve_class: vary_parm/vary_parm_sync are\n   not allowed with xelements. Halting...\n", x_units},
};

class solve_block_fault : public testing::TestWithParam<fault> {};
}  // namespace

TEST_P(solve_block_fault, halts_with_its_text) {
    block_run r = prepared(solve_block(GetParam().cards));
    GetParam().circuit(r);
    EXPECT_HALT(read_block(r), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(all, solve_block_fault, testing::ValuesIn(faults),
                         [](const auto& p) { return std::string(p.param.what); });

namespace {
// Settings that are switched off, and methods that are chosen, with a text and without a stop.
struct warning {
    const char* what;
    std::string cards, text;
    truefalse method_settings::*setting;
    truefalse value;
    change circuit = nothing;
};
const std::string gmin_type =
    "solve_class: gmin stepping can only be used\n  for DC and trns. Resetting l_gmin_step to F.\n";
const warning warnings[] = {
    {"nr_approx_type", dc + "method: nr_approx=yes\n",
     "solve_class::set_values: nr_approx=yes is used\n   only in trns. Ignored..\n", &method_settings::nr_approx,
     int_F},
    {"nr_approx_circuit", trns + "method: nr_approx=yes\n",
     "solve_class::set_values: nr_approx=yes cannot be used\n   if there are no electrical elements. Ignored..\n",
     &method_settings::nr_approx, int_F, no_electrical},
    {"nr_approx_kept", trns + "method: nr_approx=yes\n", "", &method_settings::nr_approx, int_T},
    {"gmin_startup", "solve_type startup\n", gmin_type, &method_settings::gmin_step, int_F, gmin_declared},
    {"gmin_ac", ac, gmin_type, &method_settings::gmin_step, int_F, gmin_declared},
    {"gmin_unknown_type", "solve_type dcc\n", "", &method_settings::gmin_step, int_T, gmin_declared},
    {"gmin_kept", dc, "", &method_settings::gmin_step, int_T, gmin_declared},
    {"gmin_no_units", dc,
     "solve_class: gmin stepping can only be used\n  with electrical elements.\n  Resetting l_gmin_step to F.\n",
     &method_settings::gmin_step, int_F, gmin_declared_no_units},
    {"linear_method", "solve_type trns\nmethod: t_end=1 delt_const=1m\n",
     "solve_class: trns method not sepcified.\n   Setting trapezoidal by default.\n   (linear circuit)\n",
     &method_settings::trapezoidal, int_T},
    {"nonlinear_method", "solve_type trns\nmethod: t_end=1 delt_const=1m\n",
     "solve_class: trns method not sepcified.\n   Setting back Euler by default.\n   (non-linear circuit)\n",
     &method_settings::back_euler, int_T, [](block_run& r) { r.c.cct.flag_linear = false; }},
};
std::ostream& operator<<(std::ostream& out, const warning& w) { return out << w.what; }

class solve_block_warning : public testing::TestWithParam<warning> {};
}  // namespace

TEST_P(solve_block_warning, is_told_and_the_run_goes_on) {
    block_run r = prepared(solve_block(GetParam().cards));
    GetParam().circuit(r);
    const console_run heard = run_and_listen([&] { read_block(r); });
    EXPECT_FALSE(heard.stopped);
    EXPECT_EQ(heard.text, GetParam().text);
    EXPECT_EQ(r.slv.method.*GetParam().setting, GetParam().value);
}
INSTANTIATE_TEST_SUITE_P(all, solve_block_warning, testing::ValuesIn(warnings),
                         [](const auto& p) { return std::string(p.param.what); });
