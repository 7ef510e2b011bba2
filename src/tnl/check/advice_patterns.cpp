// The patterns of advice.h: which message leads to which text.
#include <algorithm>

#include "tnl/check/advice.h"

namespace cli {

namespace {

// Patterns of one text that follow one another, with '|' between.
struct pattern_row {
    std::string_view id, patterns;
};
constexpr pattern_row rows[] = {
    {"at-rest", "nothing moves at the start"},
    {"period-numbers", "solve_class: ssw: *must be above 0"},
    {"no-state", "n_statevar"},
    // ---- no solution
    {"gmin-failed", "gmin_step_dc_1:*did not converge|gmin_step_trns_1:*did not converge"},
    {"dc-no-convergence", "solve_dc: did not converge even with the smallest auto step|N-R did not converge"},
    {"time-no-convergence", "no convergence*even with"},
    {"x-no-convergence", "x_solve_newton: no convergence"},
    {"rational-filter",
     "dp_class::xce_filter_1|coef_d[degree_d] is zero|coef_n[degree_n] is zero|degree_n > degree_d not|"
     "classify_roots:|laguer:"},
    {"step-below-time", "the time does not go on with"},
    {"trbdf2-passes", "solve_trns: iter_trbdf2 has exceeded"},
    {"time-no-convergence", "the smallest time step"},
    {"line-search", "N-R line search failed"},
    {"singular", "Singular matrix?|valmax_col="},
    {"time-no-convergence",
     "solve_trns: N-R iterations did not converge|solve_ssw_1: N-R iterations|solve_ssw_1: iter_stepred"},
    {"singular",
     "the factors of this step do not serve|error in gauss_2 again|error in gauss_2_c again|(even after "
     "reordering)|Pivot is too small|zero "
     "pivot|singular matrix"},
    {"reordered", "error in gauss_2|to reorder"},
    {"not-square", "system matrix is not square"},
    {"nan", "NaN found"},
    {"debug-stop", "as wrt_debug_smat asks"},
    {"gear2-steps", "cannot use gear2 when"},
    {"sweep-end", "sweep end not reached"},
    {"cut-off", "time_end not reached"},
    {"method-by-default", "trns method not sepcified"},
    {"ignored-setting", "Ignored..|gmin stepping can only be used"},

    // ---- the deck as a text
    {"no-end-cf", "end_cf not found"},
    {"no-title", "circuit_file: title: not found"},
    {"no-circuit", "begin_circuit not found"},
    {"no-end-solve", "end_solve not found"},
    {"output-statement", "check output statement in the circuit block"},
    {"plus-at-top", "cannot have + in the first line|a new line cannot start with +"},
    {"deck-too-long", "filr_chr: file end not reached|eof not reached in MAXLINES"},
    {"statement-too-long",
     "file_line_to_chrarr_1: n_chr_1 is too large|"
     "file_line_to_chrarr_1: n_words_1 is too large"},
    {"word-missing",
     "get_word: word_given is too large|pick_word_1: index_word is too large|"
     "check_word_1: index_word is too large"},
    {"illegal-statement", "illegal statement in"},
    {"digits-of-ac", "solve_ac: the solution leaves a residual"},
    {"no-solution", "the solution leaves a residual"},
    {"not-finite", "value = inf|value = -inf|value = nan"},
    {"bad-number",
     "(brackets are not part of the string)|chr_to_double:|real_spice_to_tarnel: something wrong|"
     "empty string. Halting"},
    {"bad-expression", "expr_eval|gprm_class: unknown"},
    {"greal-depends", "is not independent!"},
    {"too-many-dependents", "gprm_class: the greal parameters depend"},
    {"empty-statement", "gprm_class: check"},

    // ---- elements
    {"unknown-type", "els_name not found|gmes_name not found"},
    {"no-type", "cct_class: type not found|ground_dummy): type not found"},
    {"missing-terminal", "ground_dummy): c not found"},
    {"no-type", "cem_class: type not found"},
    {"no-name", "_class: name not found"},
    {"missing-terminal", "cct_class: (*not found. *is *name is"},
    {"unknown-word", "some word has not been ticked"},
    {"no-such-name", "not found. Check this line"},
    {"repeated", "is repeated"},
    {"no-model", "model not found|flag_model_sparm and flag_model_cct are both T"},
    {"model-file", ": file name*is not found|: keyword*not found.|was expected, but"},
    {"reference", "something wrong with refnode statement|reference node not found"},
    {"variable-alone", "ect_to_ebeu_nd:*gct_to_gbeu"},
    {"sensed-only", "ect_to_ebeu_nd:"},
    {"variable-alone", "problem in assigning gct_to_gbeu"},
    {"sensed-only", "problem in assigning ect_to_ebeu|An independent node not assigned"},
    {"sensed-branch", "ind. branch|flag_ib0|ebeu_class:set_values_1|ebau_class:set_values_1"},
    {"ground-type", "ground_dummy_1.ece cannot be called"},
    {"kinds-together",
     "cannot have xelements and delements|"
     "general elements are not allowed in a purely digital circuit"},
    {"kinds-together", "check_xmixed: some xelement"},
    {"block-order", "ordering failed even after|xbeu has not been visited"},
    {"two-outputs", "An xvar is assigned as an output var"},
    {"unknown-quantity", "outvar not found name is|check output variables (explicit)"},
    {"sensed-only", "outvar of a name that no call is connected to"},
    {"unknown-instance", "cct_ov_flag = IGL_CLEAR"},
    {"unknown-node", "Check outvars of type|var name is:"},
    {"no-of", "_of_ not found"},
    {"not-in-dc", "DC not allowed|dc not implemented|DC not implemented|dc not allowed|cannot be used in DC"},
    {"value-missing", "mos_level1.ebe: *not given"},
    {"channel-too-short", "effective channel length"},
    {"value-of-element",
     "too small!|a is too large!|?!|xfmr.ebe:|> t_ramp_2|.ebe: check|.gbe: check|.dbe: check|"
     "x_high must be above|: check active_|: check x|: i_file=|time loop did not end|"
     "times must ascend|g_low <= g_high?|check turns|vd=|must be gt|must be lt|first number does not fit|"
     "g_high < 0?"},
    {"value-of-element",
     "xce_filter_1|partial_fractions_1|n_by_d_1|degree_n > degree_d|coef_n[degree_n]|coef_d[degree_d]|in laguer|"
     "classify_roots|invrs_c|_begin, x"},
    {"set-and-reset", "cannot have set and reset|r = s = 1 is not allowed"},
    {"digital-start", "wrong condition in start-up|wrong condition 1"},
    {"user-function", "user_function:"},

    // ---- solve blocks
    {"no-solve-type", "solve_type not found"},
    {"no-post-processing", "post-processing is not available"},
    {"unknown-method", "An unknown keyword is found in the method card"},
    {"two-rules",
     "method specified for transient simulation|one method specified for|"
     "methods specified for transient simulation"},
    {"no-t-end", "t_end for transient simulation"},
    {"delt-limits", "is less than delt_min"},
    {"settings-contradict", "fctr_stepred must be below|trbdf2_tolr must be|trbdf2_gamma must"},
    {"no-delt", "has not been specified"},
    {"explicit-circuit", "delt_const_x"},
    {"initial-sol", "init sol. Check the solve blocks|the initial_sol card"},
    {"no-previous", "previous solution does not exist"},
    {"solution-file", "read_solution: file*ends early"},
    {"rparm-link", "type gbe.|element not identified in|two string parameters and a variable"},
    {"rparm-source", "get_rparm_2|parameter not assigned. nttl|multiple parameters? nttl"},
    {"bad-item", "parameter not identified in|which does not exist?|digital node name not found|a digital level is 0"},
    {"sweep-not-here",
     "is not allowed in trns or ssw|is not allowed in startup|trns or ssw. Halting|startup. Halting|"
     "is allowed only in a DC solve section"},
    {"bad-sweep",
     "n_points|vary_parm (auto)|too many points|type must be linear or log|"
     "type can only be table or auto|type can be table only|check number of table points|divide_l|interp_l"},
    {"reserved-output", "vary_parm solve block|vary_parm_sync solve block"},
    {"no-frequency", "check frequency definition cards"},
    {"no-ac-half", "There are no AC statements in this"},
    {"ac-settings", "set_freq|vary_freq"},
    {"bad-sweep", "> not found in"},
    {"ac-settings", "AC solve"},
    {"no-period", "must specify period or frequency|period or frequency must be specified"},
    {"not-periodic", "SSW not allowed for"},
    {"no-steady-state", "a period leaves some state"},
    {"two-derivatives", "two elements give the derivative of"},
    {"period-too-small", "period too small"},
    {"ssw-settings", "period and frequency|for SSW simulation|do not set stparms in ssw"},
    {"explicit-circuit",
     "x-mixed circuit|for x-circuit|(x-circuit)|with xelements|only F.Euler is allowed|"
     "(xelements)|x_eval_serial|without xelements"},
    {"digital-circuit", "circuit contains digital elements|without digital elements"},
    {"digital-unstable",
     "all digital elements must be|did not converger after|passes did not converge|did not converge after*passes"},
    {"gear2-steps", "reset type elements are not allowed with Gear"},
    {"settings-contradict",
     "only for transient simulation. Halting|constant_step is allowed|dmp_newt_max =|dmp_k =|"
     "chk_only_xxx|N-R line search is allowed only|No convergence criterion|delta_x convergence criterion|"
     "gauss elim method not specified correctly"},

    // ---- output
    {"no-filename", "filename not found in an output block"},
    {"no-end-output", "end_output not found"},
    {"no-variables", "Output block does not have any variables"},
    {"unknown-variable", "syntax problem in output variables|Check this outvar:|glbl_of_xxx is not allowed"},
    {"reserved-output", "Check syntax of*output block|file is allowed as output"},
    {"postproc-file",
     "append not allowed|t_start = t_end?|cct_ov_flag !=|postproc variables cannot stand beside|"
     "postproc is allowed only|postproc_ac is allowed"},
    {"postproc-measured", "could not find*in any output file|could not find*in the outvar statement|: could not find"},
    {"postproc-rows",
     "check_trns_1|n_new =|stand at different times|to have a single row|columns. Halting|is no number. Halting"},
    {"postproc-type", "gels name ="},
    {"output-options",
     "sweep_format|n_fourier|ourier|yquist|for AC. Halting|in the output file|"
     "when data type is ANLG|min-phase"},
    {"output-kind", "assign_ov|Some output variables has not been mapped"},
    {"limit-lines", "write_trns: limit_lines is exceeded"},
    {"limit-lines-of-sweep", "write_ac: limit_lines is exceeded|write_dc: limit_lines is exceeded"},
    {"limit-lines", "limit_lines is exceeded"},
    {"no-memory", "there is not enough memory"},
    {"cannot-write", "could not be opened|could not be written|write_dump: cannot write"},
    {"bad-sweep", "solve_class:* not found in*Halting.."},
    {"missing-file", "file name=none|does not exist"},
    {"data-file", "Check file:"},

    // ---- libraries, capacities, the program itself
    {"tmpdim", "tmpdim|not assigned? Halting"},
    {"list-file", "make_chrarray_5"},
    {"library-file",
     "tarnel_generate:|generate:|write_ebes_c|expect constant/variable for jacobian|n_func < n_nodes|"
     "compiled not found|end of file not reached|of next*before*of current|Calling|model_type does not match|"
     "AC not allowed by one of the|cannot have derived rparms|nw_s1=|k_rem is not zero|endfortran|(source:) not found|"
     "variables: not found|An expression was expected here|derived rparms|some outvar|"
     "some bias variable is not assigned|not assigned?*number is|acparm_map|has no reader for entries of|"
     "is smaller than its model|is smaller than its function|no function is compiled for the composite|"
     "has no source for its parameters|nothing calls the source of|d_dt|(function part)|one of the KCL equations is "
     "using a local_var|expected f_|s2 =|Check the order of cct nodes|n_cctnd = 1|ncctnd >|node in bev not found|xbes "
     "type must be|"
     "cur(xx)|keyword current cannot|"
     "something wrong with*string is|sparm string is too long|xvars are not allowed "
     "for|no_functions|map_jacobian|check * library|"
     ": type not found. Halting"},
    {"capacity", "Insufficient storage|nnz_|mnz_w|is too large!|is too large|too large."},
    {"capacity", "> M_AVERAGE_MV_|> M_RMS_MV_|clock_delay_2: empty location"},
    {"statement-too-long", "strcpy_chk"},
    {"memory", "text_file: file*is too large"},
    {"missing-file", "file*is a device or a pipe|line_stream: file*cannot be read"},
    {"value-of-element", "v_on < 0|mos_bsim1: leff1|mos_bsim1: weff1|mos_bsim1.ebe: xpart|jfet_spice_1.ebe: level"},
    {"value-of-element", "clock_pwl20.ebe: |clock_pwl20.gbe: |edges must follow each other"},
    {"value-of-element",
     "theta_delay=*must be from|is out of range. i_f0|is out of range. i_t0|pwl10_xy.gbe: x must ascend"},
    {"delay-too-long", "n_delay is too small|more points within td than n_delay"},
    {"internal",
     "not found? Halting|compute_norm_spice|var_flag not identified|check_nodes_1|check_ebeu|"
     "line_given is too large|i_line is too large|message from calling routine|Message from calling routine|flag_eo|"
     "position not in valid range|extract_|strings do not match|tf=|int_to_tf|power_int|indx_to_ijk|ijk_to_indx|"
     "mat_mult|.ne.|knuth|pattern_builder|No diaginal entry"},
    {"library-file", "not found. Halting|cannot be scheduled"},
    {"value-of-block", "set_rparm"},

    // ---- what is no stop
    {"unknown-type", "no element type * is installed"},
    {"finding", ": error: |: warning: |advice: "},
    {"word-not-found", "word not found"},
    {"goes-well",
     "system matrix size is|Transient simulation starts|iter_trns|gauss_1 starting|gmin_present=|"
     "Program completed"},
};

}  // namespace

std::span<const advice_pattern> advice_patterns() {
    static const std::vector<advice_pattern> all = [] {
        std::vector<advice_pattern> cut;
        for (const auto& [id, patterns] : rows)
            for (std::string_view rest = patterns; !rest.empty();) {
                const std::size_t end = std::min(rest.find('|'), rest.size());
                cut.push_back({rest.substr(0, end), id});
                rest.remove_prefix(std::min(end + 1, rest.size()));
            }
        return cut;
    }();
    return all;
}

}  // namespace cli
