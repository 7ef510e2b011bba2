// The rows of advice.h: texts, and the patterns of the messages that lead to them.
#include "tnl/check/advice.h"

#include <algorithm>

namespace cli {

namespace {

constexpr advice_text texts[] = {
    // ---- no solution
    {"dc-no-convergence", "The iteration for the dc or start-up state found no solution.",
     "a part that floats or nearly does; a source or parameter with a wrong sign or scale; very steep diodes or "
     "switches; too few iterations",
     "look at doubtful values first (tnl check); then method: gmin_step=yes itmax_newton=1000, or dmp=yes "
     "dmp_newt_max=200; a softer r_on, r_off of switches and diodes often helps"},
    {"gmin-failed", "Not even with small conductances across the junctions did the iteration find a solution.",
     "no way for a current: a source that feeds a blocked diode; a wrong value; too few iterations in each stage",
     "method: gmin_itmax_newton=2000 gmin_npoints=100; look at the values of the sources and of what they feed"},
    {"time-no-convergence", "A time step did not converge, and the step cannot be made smaller.",
     "two switches that toggle each other; ideal parts that force a jump of a current or voltage; a step that is too "
     "long for a fixed rule; a tolerance below what rounding allows, where blocks have large states",
     "method: back_euler_auto=yes with a smaller delt_min, or back_euler=yes with a smaller delt_const; norm_2=1u "
     "where the deck is all blocks; event_restart=yes or a small series resistance or a snubber where something jumps"},
    {"step-below-time", "A time step is too small for the digits of the time.",
     "delt_min=0 with a step that keeps failing; a t_start that is huge against delt_const",
     "method: delt_min=..., not below 1e-15 of t_end; t_start=0"},
    {"trbdf2-passes", "TR-BDF2 rejected its step more often than itmax_trbdf2 allows.",
     "a current or voltage that jumps, for which this rule is not made; a tolerance that is too tight",
     "method: event_restart=yes, or back_euler=yes, or a larger trbdf2_tolr"},
    {"line-search", "The line search of the iteration found no better point.", "a steep or broken characteristic",
     "method: nr_line_search=no, with dmp=yes instead"},
    {"singular", "The equations have no unique solution: the matrix is singular.",
     "a part without a path to the reference node (in dc, capacitors are open); voltage sources, or in dc inductors, "
     "in a loop; current sources alone at a node; in start-up a capacitor across a voltage source",
     "tnl check DECK names the nodes and elements; a large resistor to the reference node or a small one in the loop "
     "mends it"},
    {"not-square", "There are more unknowns than equations, or fewer.",
     "a block variable that no block writes, or that two write", "tnl check DECK names the variable"},
    {"nan", "A value became no number.", "a division by zero or an overflow in an element: doubtful parameters",
     "look at the values of the parameters; a smaller step; dmp=yes"},
    {"debug-stop", "The run stopped because wrt_debug_smat asks for it.", "", "leave wrt_debug_smat out of method:"},
    {"gear2-steps", "gear2_fixed needs a step that never changes.",
     "elements with corners shorten the step; t_end is no multiple of delt_const",
     "method: gear2=yes, or trapezoidal=yes; or make t_end a multiple of delt_const"},
    {"sweep-end", "A sweep of type auto did not reach its end.",
     "step or step_max is small against the range; itmax_sweep is small", "a larger step_max or itmax_sweep"},
    {"cut-off", "The run in time was cut off before t_end (a warning; tnl run ends with status 6).",
     "itmax_trns passes are over: 100000 if not given",
     "method: itmax_trns=N, at least twice (t_end - t_start)/delt_const"},
    {"method-by-default", "No rule for the time steps was named; one was taken (not a fault).", "",
     "method: back_euler=yes or another rule"},
    {"ignored-setting", "A setting does not apply and was switched off (not a fault).", "", ""},
    {"goes-well", "How a run goes on, and that it has come to its end (not a fault).", "", ""},
    {"word-not-found", "A word is looked for in a list that does not have it.",
     "a misspelt name; the lines behind this one tell the word and who looked for it",
     "tnl explain with these lines too; tnl check DECK shows the place and near words"},
    {"finding", "tnl has found this at the place that stands before it: file, line, column.", "",
     "the line behind it that begins with advice: says what to mend; tnl check DECK shows all findings at once"},

    // ---- the deck as a text
    {"no-end-cf", "The deck does not end with end_cf.", "the line is missing or misspelt",
     "add the line end_cf at the end"},
    {"no-title", "The deck does not begin with title:.", "", "make the first statement: title: any words"},
    {"no-circuit", "begin_circuit or end_circuit is missing.", "",
     "put the circuit between begin_circuit and end_circuit"},
    {"no-end-solve", "A solve block has no end_solve.", "", "end each block with end_solve"},
    {"output-statement", "The statement output in the circuit block has a word that is not known.", "",
     "words are those of \"Looking inside\" in docs/deck.md"},
    {"plus-at-top", "The deck begins with a '+'.", "the statement that it continues is missing",
     "take the '+' away, or put the statement before it"},
    {"deck-too-long", "A deck or library has more lines in a row than are allowed: 5000, if nothing else is said.",
     "comments and what follows end_cf count too",
     "for a deck, M_DECK_LINES in tmpdim.in, which tnl run writes by itself; else take comments away"},
    {"statement-too-long", "A statement has too many words or characters.",
     "10000 characters and 500 words in the circuit, 2000 and 100 in a solve block",
     "several statements of the same kind, such as outvar: or method:, do the same"},
    {"word-missing", "A statement ends where a word is needed.",
     "a key without value at its end; a '=' or a blank that is missing", "tnl check DECK shows the word"},
    {"illegal-statement", "A statement in the circuit or in a solve block begins with a word that nobody knows.",
     "a misspelt word; a statement in the wrong block; a missing end_solve or end_circuit",
     "tnl check DECK shows near words"},
    {"not-finite", "A number of the deck is infinite or not a number.",
     "a constant that divides by 0 or overflows, perhaps at one point of a sweep; a number beyond 1e308",
     "look at the constants in that expression, and at the range of the sweep"},
    {"no-solution", "The currents at that node do not add up to zero: what the run answers there is no solution.",
     "large voltages beside junctions, where the default test accepts too early",
     "method: chk_rhs2=yes norm_2=1e-9 in that block; the residual, in A, beside the currents of the node tells how "
     "wrong the rows are"},
    {"digits-of-ac",
     "The equations at that frequency have no solution with enough digits: no amplitude is written for it.",
     "values that stand far apart at one node, as of 1 uohm beside 1 Gohm; a loop of ideal sources or a node that "
     "hangs on "
     "nothing at that frequency",
     "tnl check DECK; replace extreme values by what the device really has, or move the frequency off a resonance "
     "without loss"},
    {"bad-number", "A word stands where a number should, or a number has more than one letter of scale.",
     "units behind the number (10V), 'meg' for M, a misspelt name of a constant",
     "numbers are 4700, 4.7k, 1e-3: one letter of G M k m u n p f at most, no unit"},
    {"bad-expression", "An expression $(...) cannot be read.", "brackets that do not match; a blank inside; nesting",
     "$((a)op(b)) with op one of + - * / **, or $(f(a)) with exp, sin, cos; constants take further steps"},
    {"greal-depends", "A constant that is computed from others cannot be set or swept.", "",
     "set the constants that stand in its expression"},
    {"empty-statement", "A statement of constants has no words.", "", "greal NAME=VALUE ..."},
    {"too-many-dependents", "The constants depend on each other in too many ways.", "a chain of thousands",
     "fewer steps"},

    // ---- elements
    {"unknown-type", "The type of an element or model is not installed.", "a misspelt type; eelement for gelement",
     "tnl list shows what is installed"},
    {"no-type", "An element has no type.", "type= is missing or stands at a wrong place: words and values alternate",
     "add type=NAME"},
    {"no-name", "An element or model has no name.", "name= is missing, or words and values do not alternate",
     "add name=NAME"},
    {"missing-terminal", "A terminal or variable of an element is not given.", "",
     "give each terminal of the type; tnl describe TYPE lists them"},
    {"unknown-word", "A statement has a word that its type does not know, or one twice.",
     "a misspelt parameter, a '=' that is missing, a word given twice",
     "tnl describe TYPE lists the words; tnl check DECK shows near ones"},
    {"no-such-name", "A word of a statement names something that is not there.",
     "a misspelt name of an element or node", "look at the names that the message shows"},
    {"repeated", "Two elements have the same name.", "", "names are unique in the deck, for all kinds of element"},
    {"no-model", "The model that an element names is not there, or is of another type.", "",
     "emodel name=NAME type=TYPE ... with the element's own type"},
    {"model-file", "A model file is missing or is not of the element's type.", "",
     "look at the name and the first line of the file"},
    {"reference", "The reference node is missing, or no element uses it.",
     "no refnode statement, or a misspelt node in it",
     "refnode NODE in the circuit block, with a node that elements use"},
    {"sensed-only", "A node is named that no element is connected to.", "a terminal that only senses; a misspelt node",
     "connect the node, or mend its name"},
    {"variable-alone", "A block variable stands in electrical elements alone, or nowhere.",
     "a misspelt variable; a meter whose reading no block takes",
     "a variable needs a block that reads or writes it: gelement type=linear_1 passes it on"},
    {"sensed-branch", "The current of an element is asked for that has none of its own.",
     "br= names a resistor, a diode or another element whose current follows from its voltage",
     "put an ammeter in series and name that"},
    {"ground-type", "This type is not for decks.", "",
     "eelement type=ground_dummy c=NODE joins a node with the reference"},
    {"kinds-together", "These kinds of elements cannot stand in one circuit.", "", "split the circuit"},
    {"unknown-quantity", "An output asks an element for a quantity that it does not offer.", "a misspelt quantity",
     "tnl describe TYPE lists the output variables"},
    {"unknown-instance", "An output names an element that is not there.", "a misspelt name behind _of_",
     "nodev_of_NODE, var_of_VARIABLE, QUANTITY_of_ELEMENT"},
    {"unknown-node", "An output names a node or variable that is not there.", "a misspelt name behind _of_",
     "look at the names of nodes and variables"},
    {"no-of", "An output or an item is not of the form LEFT_of_RIGHT.", "",
     "nodev_of_NODE, i_of_ELEMENT, r_of_R1, glbl_of_NAME"},
    {"value-of-element", "A parameter of an element has a value that its model does not allow.",
     "zero or negative resistances, times that do not fit each other, limits that cross",
     "tnl describe TYPE; look at scale letters: m is 1e-3, M is 1e6"},
    {"value-missing", "A parameter that has no default is not given.", "the word is missing, or misspelt in the emodel",
     "give the parameter that the message names, at the element or in its emodel; tnl describe TYPE tells its unit"},
    {"channel-too-short", "The channel of a MOS transistor has no length left: l less 2 ld.",
     "l and ld in different units", "l must be above 2 ld; both are metres: 2u is 2 micrometres"},
    {"value-of-block", "A block set_rparm wrote a value into an element that its model does not allow.",
     "a run from nothing begins with x = 0, and so with the value 0; an x that passes 0",
     "begin with a solution: a block of solve_type startup before, and initial_sol previous in this one; or look at "
     "the "
     "x and k of set_rparm"},
    {"not-in-dc", "An element cannot stand in a dc block.",
     "it lives in time: machines, transformers with a core, thyristor_g, sampler1, pll_1a, dtc_1",
     "find the state to start from with solve_type startup"},
    {"set-and-reset", "The set and the reset input of a flip-flop were 1 at the same time.",
     "a logic that asks for both; an input that begins at 1; a pulse that is longer than it seems",
     "tnl plot the levels in front of it, in a run that ends before; let one of the two exclude the other"},
    {"digital-start", "A digital element is to begin in a state that it does not have.",
     "st of a gate is 0, 1 or 3, of a flip-flop 0, 1 or 2, of a selector 0 or 1", "tnl describe TYPE; st=0 is at rest"},
    {"user-function", "A user function is not there, or has the wrong number of inputs.", "",
     "look at n_given in the element's file"},

    // ---- solve blocks
    {"no-solve-type", "A solve block has no solve_type.", "", "solve_type dc, startup, trns, ssw or ac"},
    {"no-post-processing", "Results of post-processing are not available in this version.", "",
     "tnl measure computes means, effective values and harmonics from the rows"},
    {"unknown-method", "method: has a word that this kind of block does not know.",
     "a misspelt word; a word of another kind of block; a value that is missing before it",
     "tnl check DECK shows near words and where the word belongs"},
    {"two-rules", "More than one rule for the time steps is switched on.", "", "leave one of them in method:"},
    {"no-t-end", "A run in time has no end.", "t_end is missing in method:", "method: t_end=5m"},
    {"no-delt", "A run in time has no step.", "delt_const is missing in method:", "method: delt_const=1u"},
    {"delt-limits", "The steps of a run in time contradict each other.", "delt_const is below delt_min",
     "delt_min <= delt_const <= delt_max; the bounds may be left out"},
    {"settings-contradict", "Settings of method: contradict each other.", "", "take the defaults: leave the words out"},
    {"initial-sol", "initial_sol is not as it should be.", "two of them, or a misspelt word",
     "initial_sol initialize, previous, or file filename PATH"},
    {"no-previous", "There is no solution to start from.", "the first block says initial_sol previous",
     "put a dc or startup block before it, or leave the statement out"},
    {"solution-file", "A file of a solution cannot be used.", "it comes from another circuit, or was cut",
     "write it again with a block whose variables: is solution"},
    {"bad-item", "set_parm, vary_parm or their kin name something that is not there.",
     "a misspelt parameter or element", "PARAMETER_of_ELEMENT or glbl_of_NAME; tnl describe TYPE lists parameters"},
    {"rparm-link", "A block that sets or reads a parameter names an element or a parameter that is not there.",
     "a misspelt element or parm", "element=NAME of an element statement, parm= one of its real parameters"},
    {"rparm-source", "get_rparm cannot tell where the parameter that it reads stands.",
     "a parameter that the element only computes with, or that several of its parts share",
     "read another parameter of the element; tnl describe TYPE lists them"},
    {"bad-sweep", "A sweep is not complete, or not possible.", "",
     "vary_parm ITEM from A to B type linear n_points N (2 or more); type log needs A, B above 0; type table V1 "
     "V2 ..."},
    {"sweep-not-here", "A sweep stands in a kind of block that has none.", "",
     "sweeps stand in dc blocks (vary_parm also in startup); in time give each value a block with set_parm"},
    {"ac-settings", "Settings of small-signal blocks contradict each other.", "", ""},
    {"no-frequency", "A small-signal block has no frequencies, or two statements of them.", "",
     "vary_freq from 1 to 1M type log n_points 61"},
    {"no-ac-half", "An element of the circuit has no small-signal form.", "",
     "tnl describe TYPE tells whether it has one; exchange the element or leave the ac block out"},
    {"ssw-settings", "Settings of periodic blocks contradict each other.", "", ""},
    {"no-period", "A periodic block does not know its period.", "", "ssw_period=20u or ssw_frequency=50k in method:"},
    {"not-periodic", "A periodic block cannot know what an element keeps from step to step.",
     "switches with a latch, comparators with hysteresis, samplers, running means",
     "put something without memory in its place, or run to the steady state in a trns block"},
    {"at-rest", "A search for a period begins where nothing moves.", "an oscillator at its point of rest",
     "set_igparm away from rest, or some periods of a trns block before it and initial_sol previous"},
    {"period-numbers", "A number of a periodic block is out of its range.", "",
     "ssw_period, ssw_frequency, ssw_ndiv, ssw_period_mult above 0; ssw_dmp_k above 0 and at most 1"},
    {"no-state", "A periodic block has nothing to search for: the circuit has no states, or too few.",
     "no capacitor, inductor, integrator or lag; one alone does not oscillate", "a dc or trns block"},
    {"no-steady-state", "A state is the same behind a period, whatever it is before.",
     "an integrator without feedback; a node that only capacitors reach; an inductor loop without resistance",
     "a large resistor across the capacitor, a small one in the loop, feedback around the integrator; an oscillation "
     "needs ssw_known_period=no"},
    {"two-derivatives", "Two elements give the derivative of one variable.", "two integrators with one output",
     "sum their inputs, or name their outputs differently"},
    {"period-too-small", "The search for the period led to one of less than five steps.",
     "a start far from the oscillation, or at rest; a poor first guess of the period",
     "a trns block before it, and initial_sol previous; ssw_dmp=yes"},
    {"explicit-circuit", "The circuit of explicit elements does not allow these settings.", "", ""},
    {"block-order", "No order is found in which the explicit blocks could be evaluated.",
     "blocks that need each other at the same time, a variable that no block computes, or more than 20 blocks without "
     "a "
     "state behind one another",
     "a state in the circle: an integrator, a filter or delay_2; tnl check names the blocks"},
    {"x-no-convergence", "A circuit of explicit elements was not solved at some time.",
     "a jump of a source or a switch that the step does not resolve, values of very different size",
     "a smaller delt_const_x; method: x_dmp=yes"},
    {"rational-filter", "A rational filter (filter_1) cannot be taken apart into sections.",
     "a numerator of higher degree than the denominator, a leading coefficient of 0, roots that are very close "
     "together "
     "or very far apart",
     "n0 n1 ... and d0 d1 ... are the coefficients of rising powers of s; two filters in a row for one of high degree"},
    {"two-outputs", "Two explicit blocks compute one variable.", "", "one of them writes another name; sum_2 adds two"},
    {"digital-circuit", "The circuit of digital elements does not allow these settings.", "",
     "runs in time and start-ups alone, without constant_step"},
    {"digital-unstable", "Digital elements do not come to rest before the run in time begins.",
     "a loop of gates that has no rest, as an odd number of inverters; a circuit and its gates that change each other",
     "leave the startup block out and give first levels with set_dgtl; a start value (st=...) for a gate of the loop; "
     "n_pass_dgtl=100 n_pass_mixed=100 for long chains"},

    // ---- output
    {"no-filename", "An output block names no file.", "", "filename out.dat behind begin_output"},
    {"no-end-output", "An output block has no end_output.", "", "add the line end_output"},
    {"no-variables", "An output block has no variables.", "", "variables: NAME ... with names of outvar: statements"},
    {"unknown-variable", "variables: has a word that is no output variable, constant or swept item.", "a misspelt name",
     "tnl check DECK shows near names; name quantities in the circuit block first: outvar: vout=nodev_of_out"},
    {"reserved-output",
     "solution, parms, all_nodes and all_outvars stand alone in their output block, once in a solve block.", "",
     "give it an output block of its own"},
    {"output-options", "Options of an output block contradict each other or the kind of block.", "",
     "docs/transient.md, \"Rows\"; docs/small_signals.md, \"Columns\""},
    {"output-kind", "A column of an output file does not exist in this kind of block.",
     "in an ac block an amplitude without mag_of_ or phase_of_, a value of dc or time, a parameter, a swept item, "
     "all_nodes, all_outvars; a small signal in another block",
     "mag_of_X and phase_of_X with X=nodev_ac_of_NODE in ac blocks, and there alone; tnl check DECK tells each column"},
    {"limit-lines", "A row file reached the number of rows that it may have.", "limit_lines is 100000 if not given",
     "filename NAME limit_lines=N, or in a trns block fewer rows: control: fixed_interval=T"},
    {"limit-lines-of-sweep", "A row file reached the number of rows that it may have.",
     "limit_lines is 100000 if not given; each sweep of the block multiplies the rows",
     "filename NAME limit_lines=N, or fewer points"},
    {"postproc-file", "A file of results that are computed from other files asks for what it cannot have.",
     "append=yes, other variables beside the results, out_tstart and out_tend alike, another kind of solve block",
     "a file of results alone, in a trns or ssw block, for calcac_pf in an ac block of one frequency"},
    {"postproc-measured", "What a result is computed from stands in no file of its block.",
     "no outvar of the measured variable, or no file with that outvar among its variables",
     "outvar: N=var_of_X for x=X, and N in another file of the block; for calcac_pf N=var_ac_of_X, with mag_of_N and "
     "phase_of_N in one file"},
    {"postproc-rows", "The rows that a result is to be computed from do not fit it.",
     "the measured file begins later or ends earlier than the span of the result, goes on behind rows of an earlier "
     "block, or two files have rows at different times",
     "out_tstart and out_tend of the result within those of the measured file; variables of one result in one file"},
    {"postproc-type", "A composite flagged as postprocessor is none of those that results are computed for.", "",
     "calc_avg, calc_rms, calc_avg_rms, calc_thd, calc_pf, calcac_pf, with their own variables and outputs"},
    {"no-memory", "The run needs more memory than it can have.",
     "a circuit, sweep or table beyond all measure, by a slip of a number; a limit of the shell (ulimit -v)",
     "fewer points or elements; tnl check tells what is far from usual"},
    {"cannot-write", "A file could not be opened or written.",
     "a folder that does not exist, no right to write there, a full disk",
     "look at the path; tnl run -o DIR writes elsewhere"},
    {"missing-file", "A file that the deck names is not there.",
     "a misspelt name; a path that is not relative to the deck", "files are looked for beside the deck"},
    {"data-file", "A data file is not as it should be.",
     "less than two lines, other than two numbers in a line, or a first column that does not ascend",
     "two columns of numbers, the first ascending; lines with # are comments"},

    // ---- capacities and the program itself
    {"capacity", "A table of the run is full.", "a very large circuit; sizes stand in tmpdim.in of the run folder",
     "larger numbers in tmpdim.in, or a smaller circuit; tnl run writes generous ones"},
    {"memory", "A file or a table is too large.", "", "make it smaller"},
    {"tmpdim", "The file tmpdim.in is not as it should be.", "it was written by hand", "let tnl run write it"},
    {"library-file", "An element file of the libraries is at fault.",
     "an element that was added or changed; the names of the lists in its text must fit its code",
     "look at the file of the element that the message names, in models/; then ./tnl build"},
    {"list-file", "A list of element names does not fit the libraries.", "files of different builds in one folder",
     "./tnl build writes them anew"},
    {"internal", "The program met a state that should not be possible.", "a fault of the program, seldom of the deck",
     "keep the deck and report it"},
};

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
     "the factors of this step do not serve|error in gauss_2|(even after reordering)|Pivot is too small|zero "
     "pivot|singular matrix"},
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
    {"value-of-element", "n_delay is too small|more points within td than n_delay"},
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

std::span<const advice_text> advice_texts() { return texts; }
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
