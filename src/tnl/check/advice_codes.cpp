// The codes of what `tnl check` finds, for `tnl explain`: where a message of the simulator means the same, its row.
#include <span>
#include <utility>

#include "tnl/check/advice.h"

namespace cli {

namespace {

constexpr std::pair<std::string_view, std::string_view> same_as[] = {
    {"algebraic-loop", "block-order"},
    {"bad-initial-sol", "initial-sol"},
    {"bad-option", "output-options"},
    {"bad-setting", "settings-contradict"},
    {"bad-span", "postproc-rows"},
    {"bad-step", "delt-limits"},
    {"bad-value", "value-of-element"},
    {"bad-variables", "reserved-output"},
    {"continuation-at-top", "plus-at-top"},
    {"current-cutset", "singular"},
    {"floating", "singular"},
    {"long-chain", "block-order"},
    {"missing-method-word", "no-t-end"},
    {"mixed-file", "output-kind"},
    {"named-twice", "repeated"},
    {"no-begin-solve", "no-end-solve"},
    {"no-block", "variable-alone"},
    {"no-dc", "not-in-dc"},
    {"no-end", "no-end-cf"},
    {"no-end-circuit", "no-circuit"},
    {"no-file", "data-file"},
    {"no-reference", "reference"},
    {"no-value", "word-missing"},
    {"not-measured", "postproc-measured"},
    {"not-written", "not-square"},
    {"too-many-rows", "limit-lines"},
    {"too-many-steps", "cut-off"},
    {"unconnected", "sensed-only"},
    {"unknown-branch", "sensed-branch"},
    {"unknown-item", "bad-item"},
    {"unknown-method-word", "unknown-method"},
    {"unknown-model", "no-model"},
    {"unknown-output", "unknown-quantity"},
    {"unknown-statement", "illegal-statement"},
    {"voltage-loop", "singular"},
    {"written-twice", "not-square"},
};

constexpr advice_text texts[] = {
    {"bad-output-place", "A file would be written outside the folder of the run, or over one of its own.", "",
     "a name without a folder: filename out.dat; tnl run --force writes to a whole path"},
    {"basic-element", "A deck brings a basic element, whose function is compiled with the program.", "",
     "a composite (ece, gce) of elements that there are"},
    {"code", "A composite of a deck has code, which nobody compiles.", "", "rparms_derived: computes parameters"},
    {"composite", "A composite of the deck is not as it should be.", "", "ece name=NAME, its lines, endece"},
    {"computed", "A value is given to a parameter that its element computes from others (a warning).", "",
     "give those that it is computed from: tnl describe NAME"},
    {"doubtful-value", "A value is far from what its unit leads to expect (a warning).", "M for m, a missing letter",
     "m is 1e-3, u is 1e-6, M is 1e6"},
    {"driven-twice", "A digital node has two outputs; the later one in the deck wins where both change (a warning).",
     "", "a gate or a selector brings two outputs together"},
    {"empty", "The deck is empty.", "", "tnl new NAME makes one to start from"},
    {"event-restart", "A rule of second order goes on from currents that a jump has made untrue (a warning).",
     "switches, comparators and samplers act at once", "method: event_restart=yes"},
    {"fast-clock", "A clock is fast beside the steps of the circuit (a warning).", "",
     "delt_const near the half of its period, and a smaller delt_min; a slower clock where it is only to be seen"},
    {"few-harmonics", "A file of harmonics has no n_fourier, and so harmonics 0 and 1 alone (a warning).", "",
     "control: n_fourier=20"},
    {"given-twice", "A word or statement is given twice.", "", "leave one"},
    {"guessed-row", "A result is computed over the first row of a run from nothing (a warning).",
     "without initial_sol previous the first row holds the elements' first guesses and no solution",
     "out_tstart behind t_start, or initial_sol previous behind a startup block"},
    {"hides-installed", "A composite of the deck takes the place of an installed one (a warning).", "", "another name"},
    {"include", "An include statement cannot be followed.", "a file that is missing, or includes itself",
     "include FILE, relative to the file that names it"},
    {"late-crossing", "A comparator or sampler sees its crossing a whole step late (a warning).",
     "its break stands nearer to the crossing than the shortest step",
     "dt_guard of the element not below half of delt_min, or a smaller delt_min"},
    {"long-delay", "A delay is long beside the clock at an input: pulses or edges are lost (a warning).",
     "td_rise, td_fall, t_dead; a unit that is missing: n is 1e-9",
     "flip-flops and counters: below half of the clock's period; gates: below the length of its pulses"},
    {"misplaced", "A statement stands where it is not read or not allowed.", "", "docs/deck.md shows the order"},
    {"no-ac-source", "No source is on in an ac block: all magnitudes are 0 (a warning).",
     "sources are off in small signals unless a_ac says otherwise", "a_ac=1 behind the source that drives the circuit"},
    {"no-bias", "An ac block has no solution before it to be small around (a warning).", "",
     "a block with solve_type dc before it"},
    {"no-effect", "A sweep changes nothing of what the block solves (a warning).",
     "an ac block takes the bias of the block before it", "a dc block and an ac block for each value"},
    {"no-rows", "A file would stay empty (a warning).", "out_tstart behind the end", "look at out_tstart and out_tend"},
    {"no-solve", "The deck has no solve block: nothing is computed (a warning).", "", "begin_solve ... end_solve"},
    {"not-driven", "Nothing drives a digital input: it, and all that depends on it, stays unknown (a warning).",
     "a misspelt name", "delement type=dsrc y0=1 for a fixed level"},
    {"not-read", "Nobody reads a block variable (a warning).", "a misspelt name",
     "look at the variables of the blocks"},
    {"not-yes-or-no", "A switch has another value than yes or no, which counts as no (a warning).", "", "yes or no"},
    {"one-terminal", "A node has one connection only (a warning).", "a misspelt name", "look at the near names"},
    {"one-way-switch", "A switch that blocks one direction is the only way for the current of an inductor (a warning).",
     "two such switches in place of a synchronous rectifier; no diode for the time when the switch is off",
     "switch_bi, mosfet_switch, igbt_switch, leg_mosfet, leg_igbt, or a diode_r at that node"},
    {"phase-alone", "The phase of a small signal is written without its magnitude (a warning).",
     "plots and margins need both", "variables: mag_of_X phase_of_X"},
    {"refused", "The simulator's reader refuses this; its own text stands there.", "", "tnl explain with that text"},
    {"ring", "A composite contains itself.", "", "look at the calls that the message names"},
    {"same-file", "Two output blocks write the same file.", "", "another name, or append=yes in a later block"},
    {"same-node", "Both ends of an element stand at one node (a warning).", "", "look at its terminals"},
    {"set-and-reset", "Set and reset of a flip-flop are both 1 throughout, which stops the run (a warning).", "",
     "delement type=dsrc y0=0 for the one that is not used"},
    {"start-value", "A set or reset is 1 throughout, and a start-up does not look at it (a warning).", "",
     "a start value that agrees with it: q0=1, n0=0, in the statement or by set_dstparm"},
    {"stray-word", "A word at the end of method: is passed over (a warning).", "", "words and values alternate"},
    {"too-long", "A text is longer than it may be.", "", "49 characters in a gstring, 50 in a parameter"},
    {"too-many-blocks", "Solve blocks beyond the twentieth are not read.", "", "several decks"},
    {"two-zeros", "Two nodes have a name for zero, and one of them is not at 0 V (a warning).", "",
     "one name for both, or eelement name=... type=ground_dummy c=NODE"},
    {"unknown-option", "A word of filename or control: is passed over (a warning).", "a misspelt word",
     "docs/transient.md, \"Rows\"; docs/small_signals.md, \"Columns\""},
    {"unknown-solve-type", "There is no such solve_type in this version; a run would pass over the block.", "",
     "dc, startup, trns or ac"},
    {"unread-composites", "Composites were not looked into, as many others are refused (a warning).", "",
     "mend those that are told"},
    {"unread-statement", "A statement is passed over (a warning).", "it is misspelt or stands at a wrong place",
     "docs/deck.md shows the order"},
    {"unreadable", "The simulator cannot read the text.", "", "a deck is a text of lines; tnl examples shows some"},
    {"unused-rule", "A rule for explicit elements does nothing here (a warning).", "", "leave it out"},
};

}  // namespace

const advice_text* advice_of_code(std::string_view code) {
    for (const auto& [finding, id] : same_as)
        if (finding == code) code = id;
    for (const std::span<const advice_text> all : {std::span<const advice_text>(texts), advice_texts()})
        for (const advice_text& t : all)
            if (t.id == code) return &t;
    return nullptr;
}

}  // namespace cli
