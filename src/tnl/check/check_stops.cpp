#include "tnl/check/check_stops.h"

#include <algorithm>
#include <span>
#include <sstream>

#include "settings/method_words.h"
#include "settings/read_directives.h"
#include "settings/solve_words.h"
#include "tnl/check/advice.h"
#include "tnl/check/locate.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

// A stop, as far as its text and place tell.
struct told_stop {
    deck_word at;
    std::string word;   // at that place
    std::string value;  // what the first '*' of its kind's pattern stands for
    const solve_section* block;
};

struct stop_kind {
    std::string_view pattern;  // of the text, as in advice.h
    const char* code;          // nullptr: another check tells it
    // @ the word, % the value, ^ the statement's first word, $ the block's kind, "an ac block"
    const char* message = nullptr;
    const char* advice = "";
    std::string_view settings = {};  // words, the first of which that the block has is the place
    void (*tell)(checked_deck&, const told_stop&, const stop_kind&) = nullptr;  // where there is more to say
};

std::vector<std::string> as_strings(const std::vector<std::string_view>& list) { return {list.begin(), list.end()}; }

std::string message_of(const checked_deck& d, const told_stop& s, std::string_view form) {
    std::string text;
    for (const char c : form)
        if (c == '@')
            text += s.word;
        else if (c == '%')
            text += s.value;
        else if (c == '^')
            text += s.at.statement < 0 ? "" : d.word(s.at.statement, 0);
        else if (c == '$')
            text += s.block == nullptr ? "" : block_named(s.block->type);
        else
            text += c;
    return text;
}

void tell_as(checked_deck& d, const told_stop& s, const stop_kind& kind) {
    d.report.error(kind.code, s.at, message_of(d, s, kind.message), kind.advice);
}

void tell_with_advice(checked_deck& d, const told_stop& s, const stop_kind& kind) {  // which names the value too
    d.report.error(kind.code, s.at, message_of(d, s, kind.message), message_of(d, s, kind.advice));
}

void tell_near(checked_deck& d, const told_stop& s, const stop_kind& kind, const std::vector<std::string>& known) {
    d.report.error(kind.code, s.at, message_of(d, s, kind.message) + near_text(known, s.word), kind.advice);
}

void tell_number(checked_deck& d, const told_stop& s, const stop_kind& kind) {
    const std::set<std::string>& reals = d.globals.reals;
    if (d.globals.ints.count(s.value) || reals.count(s.value)) {
        // A name whose own value is at fault, or one of the other kind.
        const bool is_there = d.c.gprm.find_greal(s.value) >= 0 || d.c.gprm.gint_index.count(s.value) > 0;
        if (!is_there) return;
    }
    if (s.word.starts_with("$("))
        d.report.error("bad-expression", s.at,
                       "in an expression, " + s.value + " is neither a number nor an earlier greal" +
                           near_text({reals.begin(), reals.end()}, s.value));
    else
        tell_as(d, s, kind);
}

void tell_method_word(checked_deck& d, const told_stop& s, const stop_kind& kind) {
    const block_type* type = nullptr;
    for (const block_type& t : block_types)
        if (t.word == s.block->type) type = &t;
    const method_word* m = nullptr;
    std::vector<std::string> known;
    for (const method_word& k : method_words()) {
        if (k.word == s.word) m = &k;
        if (type == nullptr || (k.blocks & type->bit)) known.emplace_back(k.word);
    }
    if (m == nullptr) {
        const bool value_of_last = has(known, d.word(s.at.statement, s.at.word + 1));
        d.report.error(kind.code, s.at, message_of(d, s, kind.message) + near_text(known, s.word),
                       value_of_last ? "words and values alternate: is a value missing before it?" : "");
    } else if (type != nullptr) {
        std::string where;
        for (const block_type& t : block_types)
            if (m->blocks & t.bit) where += (where.empty() ? "" : ", ") + std::string(t.word);
        d.report.error(kind.code, s.at,
                       s.word + " means nothing in " + block_named(s.block->type) + "; it belongs to: " + where);
    }
}

void tell_item(checked_deck& d, const told_stop& s, const stop_kind&) {
    const std::string statement = d.word(s.at.statement, 0);
    for (const item_card& card : item_cards())
        if (card.word == statement) check_item(d, s.at, card);
}

constexpr const char* sweep_forms = "ITEM from A to B type linear n_points N; ITEM type table V1 V2 ...";

// A key that is looked for in vain may stand where a value is due.
void tell_sweep(checked_deck& d, const told_stop& s, const stop_kind& kind) {
    const std::vector<std::string> keys = {"from", "to", "type", "n_points", "div"};
    const int i = s.at.statement, first = d.text().begins(i, "vary_freq") ? 1 : 2;
    if (s.value == "<from> or <type>") {
        const std::string found = d.text().n_words(i) > first ? ", not " + d.word(i, first) : "";
        d.report.error(kind.code, {i, std::min(first, d.text().n_words(i) - 1)},
                       "behind the item stands from or type" + found, sweep_forms);
        return;
    }
    for (const key_value& p : pairs_in(d, i, first, keys))
        if (const std::string key = d.word(i, p.key); !has(keys, key)) {
            d.report.error("unknown-word", {i, p.key},
                           d.word(i, 0) + " knows no word " + key + " here" + near_text(keys, key), sweep_forms);
            return;
        }
    d.report.error(kind.code, {i, 0}, message_of(d, s, kind.message), sweep_forms);
}

void tell_auto_word(checked_deck& d, const told_stop& s, const stop_kind& kind) {
    tell_near(d, s, kind, as_strings(auto_sweep_words(false)));
}
void tell_initial_sol(checked_deck& d, const told_stop& s, const stop_kind& kind) {
    tell_near(d, s, kind, {"initialize", "previous", "file"});
}
void tell_variable(checked_deck& d, const told_stop& s, const stop_kind&) { check_unknown_variable(d, *s.block, s.at); }

// Names of the circuit to which no element gives a small signal, all at once.
void tell_no_small_signal(checked_deck& d, const told_stop& s, const stop_kind& kind) {
    const name_table& names = s.value == "nodev" ? d.c.cct.ect : s.value == "var" ? d.c.cct.gct : d.c.cct.xct;
    const std::string left = s.value + "_ac_of_";
    for (int j = 2; j < d.text().n_words(s.at.statement); j += 2) {
        const std::string word = d.word(s.at.statement, j);
        if (!word.starts_with(left)) continue;
        const int i = names.find(word.substr(left.size()));
        const bool has_form =
            i >= 0 && static_cast<std::size_t>(i) < names.to_au.size() && names.to_au[static_cast<std::size_t>(i)] >= 0;
        const deck_word at{s.at.statement, j};
        const auto is_told = [&](const check_fault& f) {
            return f.code == kind.code && f.at.statement == at.statement && f.at.word == at.word;
        };
        if (!has_form && std::none_of(d.report.faults.begin(), d.report.faults.end(), is_told))
            d.report.error(kind.code, at, "no element at " + word.substr(left.size()) + " has a small-signal form",
                           kind.advice);
    }
}

// The statement that begins with this word, first of the circuit.
deck_word first_statement(const checked_deck& d, std::string_view word) {
    for (int i = d.sections.circuit.begin; i < d.sections.circuit.end; ++i)
        if (d.text().begins(i, word)) return {i, 0};
    return {};
}
void tell_first_block(checked_deck& d, const told_stop& s, const stop_kind& kind) {
    told_stop there = s;
    there.at = first_statement(d, "gelement");
    tell_as(d, there, kind);
}
void tell_digital_node(checked_deck& d, const told_stop& s, const stop_kind& kind) {
    tell_near(d, s, kind, d.c.cct.dct.name);
}

// All elements with a part of which a periodic block knows no state: it keeps something from step to step.
void tell_not_periodic(checked_deck& d, const told_stop&, const stop_kind& kind) {
    for (const int f : {fam_e, fam_g}) {
        const unit_core& unit = f == fam_e ? d.c.ebeu.unit : d.c.gbeu.unit;
        const basic_library& lib = f == fam_e ? d.c.lib.ebes : d.c.lib.gbes;
        const instance_core& instances = d.c.instances(f);
        int last = -1;
        for (int u = 0; u < unit.n; ++u) {
            const auto i = static_cast<std::size_t>(unit.i_inst[static_cast<std::size_t>(u)]);
            const int e = unit.i_lib[static_cast<std::size_t>(u)];
            if (lib.flag.allow_ssw[static_cast<std::size_t>(e)] || unit.i_inst[static_cast<std::size_t>(u)] == last)
                continue;
            last = unit.i_inst[static_cast<std::size_t>(u)];
            const std::string type(lib.list.entry[e]);
            d.report.error(
                kind.code, {instances.statement[i], 0},
                "an ssw block cannot stand with " + instances.name[i] + ": " + type + " keeps what no state holds",
                kind.advice);
        }
    }
}

constexpr const char* expressions =
    "an expression is $((a)op(b)) with op one of + - * / **, or $(f(a)) with exp, sin, cos; no blanks";
constexpr const char* scales = "a number may end in one letter of G M k m u n p f, without a unit: 4.7u, 1e-3";

constexpr stop_kind kinds[] = {
    // ---- numbers and constants
    {"check double string: <*>", "bad-number", "this is no number: %", scales, {}, tell_number},
    {"check integer string: <*>",
     "bad-number",
     "this is no whole number: %",
     "digits alone, without a letter of scale: 1000",
     {},
     tell_number},
    {"empty string. Halting", "bad-expression", "an operand is missing in @", expressions},
    {"expr_eval_", "bad-expression", "the brackets of @ do not match", expressions},
    {"gprm_class: unknown * in", "bad-expression", "unknown % in @", expressions},
    {"gprm_class: check * statement", "no-value", "% needs a name and a value"},
    {"strcpy_chk:", "too-long", "the text is too long: a gstring has at most 49 characters"},
    {"word_index is too large", "no-value", "there is no value behind @"},
    {"index_word is too large", "no-value", "there is no value behind @"},

    // ---- what is told from what other checks know
    {"solve_type not found", nullptr},
    {"end_output not found", nullptr},
    {"word_given is too large", nullptr},
    {"t_end for transient simulation", nullptr},
    {"transient simulation (x-circuit)?", nullptr},
    {"number of methods specified for*must be 1", nullptr},
    {"x-reference node not found", nullptr},
    {"RKF45 not allowed for", nullptr},
    {"BS23 not allowed for", nullptr},
    {"only F.Euler is allowed", nullptr},
    {"delt_const_x not assigned", nullptr},
    {"delt_const_x is too small", nullptr},
    {"delt_const_x for transient simulation*has not", nullptr},
    {"is not allowed with flag_x_eval_serial", nullptr},
    {"delt_const for transient/SSW simulation has not", nullptr},
    {"is less than delt_min", nullptr},
    {"then one method specified for", nullptr},
    {"interp_log: check x_start", nullptr},
    {"ect_to_ebeu_nd:*assigning dct_to_dbeu", nullptr},

    // ---- statements of a solve block
    {"An unknown keyword is found in the method card",
     "unknown-method-word",
     "method: knows no word @",
     "",
     {},
     tell_method_word},
    {"_of_ not found*Check this string:", "bad-item", "^ needs an item PARAMETER_of_ELEMENT, not @"},
    {"a global parameter which does not exist", "unknown-item", "", "", {}, tell_item},
    {"a global parameter which depends on others", "bad-item", "@ is computed from other constants",
     "change those that stand in its expression"},
    {"parameter not identified in", "unknown-item", "", "", {}, tell_item},
    {"digital node name not found", "unknown-item", "there is no digital node @", "", {}, tell_digital_node},
    {"solve_class: * not found in*statement", "bad-sweep", "the sweep has no %", "", {}, tell_sweep},
    {"type must be linear or log", "bad-sweep", "a sweep from A to B has the type linear or log, not @", sweep_forms},
    {"type can only be table or auto", "bad-sweep", "@ needs from and to before it, or is no type of sweep",
     sweep_forms},
    {"type can be table only", "bad-sweep", "@ needs from and to before it, or is no type of sweep", sweep_forms},
    {"n_points cannot be < 2", "bad-sweep", "a sweep has at least two points"},
    {"too many points in the vary_parm grid", "bad-sweep", "the sweeps of this block span more than 2147483647 points",
     "", "vary_parm"},
    {"too many points in", "bad-sweep", "a sweep has at most 2147483647 points"},
    {"check number of table points", "bad-sweep", "the table has no values"},
    {"unknown keyword in in vary_parm (auto)",
     "unknown-word",
     "a sweep of type auto knows no word @",
     "",
     {},
     tell_auto_word},
    {"vary_parm (auto) statement: * not sepcified", "bad-sweep", "a sweep of type auto needs %"},
    {"vary_parm (auto) is allowed only", "misplaced", "a sweep of type auto stands in dc blocks only"},
    {"only one vary_parm (auto)", "bad-sweep", "a sweep of type auto stands alone in its block"},
    {"Cannot have any other vary_parm", "bad-sweep", "a sweep of type auto stands alone in its block", "", "auto"},
    {"check frequency definition cards", "no-frequency", "an ac block has one set_freq or one vary_freq",
     "vary_freq from 1 to 1M type log n_points 61", "set_freq vary_freq solve_type"},
    {"only one *_freq is allowed", "given-twice", "the block has @ twice"},
    {"n_points must be identical", "bad-sweep",
     "all vary_parm_sync statements of a block need the same number of points", "", "vary_parm_sync"},
    {"vary_parm*is not allowed in", "misplaced", "^ is not allowed in $",
     "give each value a block of its own, with set_parm"},
    {"filename not found in the initial_sol card", "no-filename", "the name of the file is missing",
     "initial_sol file filename PATH"},
    {"something wrong with the initial_sol card",
     "bad-initial-sol",
     "initial_sol knows initialize, previous and file",
     "",
     {},
     tell_initial_sol},
    {"for init sol", "given-twice", "the block has two initial_sol statements", "", "initial_sol"},

    {"a digital level is 0, 1, or 2", "bad-value", "a digital level is 0, 1 or 2 (unknown), not @", ""},

    // ---- digital elements in circuits and blocks that have none
    {"is not allowed when*contains digital elements", "no-dc", "$ does not go with digital elements",
     "find the state to start from with solve_type startup", "dc ssw"},
    {"constant_step is allowed only without digital", "bad-setting",
     "constant_step does not go with digital elements, whose events cut the steps", "leave it out", "constant_step"},
    {"general elements are not allowed in a purely digital",
     "kinds-together",
     "blocks do not stand beside digital elements alone",
     "an electrical element beside them makes a mixed circuit: eelement type=r from some node to the reference",
     {},
     tell_first_block},

    // ---- explicit blocks
    {"not allowed*for x-mixed circuit. Halting", "no-dc", "$ does not go with explicit blocks beside other elements",
     "a trns block that begins with initial_sol initialize", "dc startup ac ssw"},
    {"SSW/DC/startup not allowed", "no-dc", "$ does not go with explicit blocks",
     "a trns block that begins with initial_sol initialize: states start at their start values", "dc startup ssw"},
    {"write_parameters is not allowed", "bad-variables", "a file of parameters does not go with explicit blocks", "",
     "parms"},
    {"xelements cannot be mixed", "no-dc", "an ac block does not go with explicit blocks beside other elements", "",
     "ac"},
    {"x_cct elements are not allowed", "no-dc", "an ac block does not go with circuits of explicit elements", "", "ac"},
    {"only without xelements", "bad-setting", "constant_step does not go with explicit blocks", "leave it out",
     "constant_step"},
    {"flag_x_eval_serial and flag_x_use_matrix", "bad-setting",
     "x_eval_serial=yes does not go with a circuit of explicit elements", "leave it out", "x_eval_serial"},
    {"solution cannot be written for AC", "bad-variables", "an ac block of explicit blocks has no solution to write",
     "", "solution"},
    {"vary_parm/vary_parm_sync are", "bad-sweep", "explicit blocks have no sweeps",
     "a block for each value, with set_parm", "vary_parm vary_parm_sync"},

    // ---- outputs of the circuit
    {"Check outvars of type *_ac_of_xxx",
     "no-ac-half",
     "",
     "tnl describe TYPE tells whether an element has one; a composite needs allow_ac=yes and begin_ac ... end_ac",
     {},
     tell_no_small_signal},

    // ---- output blocks
    {"filename not found in an output block", "no-filename", "this output block names no file", "filename out.dat"},
    {"Output block does not have any variables", "no-variables", "this output block has no variables",
     "variables: NAME ... with names of outvar: statements"},
    {"Check syntax of * output block", "bad-variables", "@ stands alone in its output block"},
    {"Only one * file is allowed", "bad-variables", "a solve block has one output block of @"},
    {"cannot write solution", "bad-variables", "a block with a sweep has no one solution to write", "", "solution"},
    {"sweep_format option", "bad-option", "sweep_format is normal or reverse"},
    {"n_fourier must be from", "bad-option", "n_fourier is from 0 to 2147483646"},
    {"Fourier is allowed only", "bad-option", "fourier=yes stands in trns blocks only", "", "fourier"},
    {"solve_class (Nyquist):", "bad-variables",
     "a nyquist file has two variables, phase_of_X and mag_of_X of one X, in this order", "", "nyquist"},
    {"cannot specify both min-phase", "bad-option", "min_phase and max_phase exclude each other", "leave one",
     "max_phase"},
    {"Nyquist is allowed only for AC", "bad-option", "nyquist=yes stands in ac blocks only", "", "nyquist"},
    {"syntax problem in output variables", "unknown-variable", "", "", {}, tell_variable},
    {"_of_ not found*Check this outvar:", "unknown-variable", "", "", {}, tell_variable},

    // ---- files of results
    {"postproc variables cannot stand beside", "bad-variables",
     "results computed from other files stand in a file of their own", "", "variables:"},
    {"postproc is allowed only", "bad-variables", "results over time stand in trns blocks only, not in $", "",
     "variables:"},
    {"postproc_ac is allowed only", "bad-variables", "results of small signals stand in ac blocks only, not in $", "",
     "variables:"},
    {"append not allowed", "bad-option", "a file of results cannot go on behind others: append=yes", "leave append out",
     "append"},
    {"t_start = t_end?", "bad-option", "out_tstart and out_tend are the same: the result has no span", "",
     "out_tend out_tstart variables:"},
    {"cct_ov_flag !=", "bad-variables", "a result stands alone, without mag_of_ or phase_of_", "", "variables:"},
    {"could not find var_of_* in any output file", "not-measured",
     "no file of this block shows var_of_%, which the result is computed from",
     "name an outvar of % in the variables: of another file of this block, without fourier",
     "variables:", tell_with_advice},
    {"could not find var_of_* in the outvar", "not-measured",
     "no outvar shows var_of_%, which the result is computed from",
     "outvar: %=var_of_%, and % in another file of this block", "variables:", tell_with_advice},
    {"could not find var_ac_of_* in the outvar", "not-measured",
     "no outvar shows var_ac_of_%, which the result is computed from",
     "outvar: %_ac=var_ac_of_%, with mag_of_%_ac and phase_of_%_ac in another file of this block",
     "variables:", tell_with_advice},
    {"could not find mag_of_* in any", "not-measured",
     "no file of this block shows mag_of_%, which the result is computed from", "mag_of_% and phase_of_% in one file",
     "variables:", tell_with_advice},
    {"could not find phase_of_* in any", "not-measured",
     "no file of this block shows phase_of_% beside mag_of_%, which the result is computed from",
     "mag_of_% and phase_of_% in one file", "variables:", tell_with_advice},
    {"single frequency only", "bad-variables", "results of small signals need a block of one frequency", "set_freq F",
     "variables:"},

    // ---- periodic blocks
    {"must specify period or frequency", "no-period", "an ssw block needs a period",
     "ssw_period=20u or ssw_frequency=50k in method:", "method:"},
    {"period or frequency must be specified", "no-period", "the search for a period needs a first guess of it",
     "ssw_period=20u or ssw_frequency=50k in method:", "ssw_known_period"},
    {"ssw: ssw_period must be", "bad-value", "ssw_period must be above 0", "", "ssw_period"},
    {"ssw: ssw_frequency must be", "bad-value", "ssw_frequency must be above 0", "", "ssw_frequency"},
    {"ssw: ssw_ndiv must be", "bad-value", "ssw_ndiv must be above 0", "", "ssw_ndiv"},
    {"ssw: ssw_period_mult must be", "bad-value", "ssw_period_mult must be above 0", "", "ssw_period_mult"},
    {"ssw: delt_const must be", "bad-value", "delt_const must be above 0", "", "delt_const"},
    {"ssw_dmp_k must be above 0", "bad-value", "ssw_dmp_k must be above 0 and at most 1", "", "ssw_dmp_k"},
    {"cannot assign both period and frequency", "bad-setting", "ssw_period and ssw_frequency say the same", "leave one",
     "ssw_frequency"},
    {"one of back_euler, back_euler_auto", "bad-setting", "this rule does not go with ssw",
     "one of back_euler, back_euler_auto, trapezoidal, trapezoidal_auto", "gear2 gear2_fixed trbdf2 method:"},
    {"SSW not allowed for * type:",
     "not-periodic",
     "",
     "put something without memory in its place; a trns block finds the steady state of such a circuit, too",
     {},
     tell_not_periodic},
    {"do not set stparms in ssw", "misplaced", "^ means nothing in an ssw block, which starts from guesses",
     "set_igparm, or a startup block before it and initial_sol previous", "set_stparm"},

    // ---- settings against each other and the circuit
    {"more than one chk_only_xxx", "bad-setting", "more than one chk_only_ word is on", "leave one",
     "chk_only_rhs2 chk_only_delx_volt chk_only_spice"},
    {"dmp_newt_max2 = * is not allowed", "bad-setting",
     "dmp_newt_max2 is below dmp_newt_max (they are 50 if not given)", "", "dmp_newt_max2 dmp_newt_max"},
    {"dmp_k2 = * is not allowed", "bad-setting", "dmp_k2 is above dmp_k (they are 0.2 if not given)", "",
     "dmp_k2 dmp_k"},
    {"constant_step is allowed only with", "bad-setting", "constant_step goes with back_euler or trapezoidal alone", "",
     "constant_step"},
    {"fctr_stepred must be below", "bad-setting", "fctr_stepred must be below 1", "", "fctr_stepred"},
    {"trbdf2_tolr must be above", "bad-setting", "trbdf2_tolr must be above 0", "", "trbdf2_tolr"},
    {"trbdf2_gamma must lie", "bad-setting", "trbdf2_gamma must lie between 0 and 1", "", "trbdf2_gamma"},
    {"delta_x convergence criterion", "bad-setting", "chk_delx_sprt needs chk_delx_volt or chk_delx_kcl", "",
     "chk_delx_sprt"},
    {"No convergence criterion for Newton", "bad-setting", "no test tells when the iteration has converged",
     "chk_spice=yes or chk_rhs2=yes", "chk_spice chk_rhs2"},
    {"N-R line search is allowed only", "bad-setting", "nr_line_search goes with dc and trns alone", "",
     "nr_line_search"},
    {"gauss elim method", "bad-setting", "there is one way of elimination: matrix_sparse1=yes", "",
     "matrix_superlu matrix_sparse1"},
};

// A stop that no row knows has its own text and the advice that `explain` would give.
void tell_in_own_words(checked_deck& d, const told_stop& s, const std::string& text) {
    const advice_text* advice = find_advice(text);
    d.report.error("refused", s.at, stop_in_one_line(text), advice == nullptr ? "" : std::string(advice->mend));
}

void tell(checked_deck& d, const kept_stop& stop, const solve_section* block) {
    const file_chr& f = d.text();
    told_stop s{{stop.statement, stop.word}, {}, {}, block};
    if (stop.statement >= 0) {
        s.at.word = std::min(stop.word, f.n_words(stop.statement) - 1);
        s.word = d.word(stop.statement, s.at.word);
    }
    for (const stop_kind& kind : kinds) {
        if (!fits(stop.text, kind.pattern, &s.value)) continue;
        if (kind.code == nullptr) return;
        for (int j = s.at.word + 1; stop.statement >= 0 && s.word != s.value && j < f.n_words(stop.statement); ++j)
            if (f.word(stop.statement, j) == s.value) {  // a value behind the key that was in hand
                s.at.word = j;
                s.word = s.value;
            }
        std::istringstream settings{std::string(kind.settings)};
        for (std::string word; settings >> word;)
            if (const deck_word at = find_in_block(d, stop.statement, word); at.statement >= 0) {
                s.at = at;
                break;
            }
        (kind.tell != nullptr ? kind.tell : tell_as)(d, s, kind);
        return;
    }
    if (stop.statement < 0) {
        const deck_needs needs = needs_of(d.report.deck, d.types.libraries());
        const std::vector<int> found = find_statements(stop.text, d.report.deck, needs);
        s.at.statement = found.empty() ? -1 : found.front();
    }
    tell_in_own_words(d, s, stop.text);
}

// The lines of a stop as one sentence.
std::string in_one_line(const std::string& text) {
    std::istringstream in(text);
    std::string out;
    for (std::string line; std::getline(in, line);) {
        const std::size_t a = line.find_first_not_of(' ');
        if (a == std::string::npos || line.find("Halting") == a) continue;
        out += (out.empty() ? "" : " ") + line.substr(a);
    }
    for (const char* end : {" Halting...", " Halting..", " Halting ..."})
        if (out.ends_with(end)) out.erase(out.size() - std::string_view(end).size());
    return out;
}

}  // namespace

std::string stop_in_one_line(const std::string& text) {
    return "the simulator refuses this: " + (text.empty() ? std::string("(no text)") : in_one_line(text));
}

deck_word find_in_block(const checked_deck& d, int begin, std::string_view word) {
    const file_chr& f = d.text();
    const std::string_view end = f.begins(begin, "begin_output") ? "end_output" : "end_solve";
    for (int i = std::max(begin, 0); i < d.sections.end && !f.begins(i, end); ++i)
        for (int j = 0; j < f.n_words(i); ++j)
            if (f.word(i, j) == word) return {i, j};
    return {};
}

void tell_stops(checked_deck& d, const std::vector<kept_stop>& stops, const solve_section* block) {
    std::set<std::pair<int, int>> told;
    for (const kept_stop& s : stops)
        if (told.emplace(s.statement, s.word).second || s.word == 0) tell(d, s, block);
}

}  // namespace cli
