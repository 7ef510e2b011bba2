// model_rules.h -- what an entry says of its model, or of its function, to those who check a deck before it runs.
#pragma once
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/deck/library_split.h"

namespace cli {

// How an element holds voltages and currents between two of its nodes.
enum class branch_kind {
    conducting,          // current follows voltage
    one_way,             // a switch that blocks the current from its second node to the first
    voltage,             // an ideal voltage: sources, meters of current
    winding,             // of an ideal transformer: a voltage as soon as the other winding has one
    current,             // an independent current
    controlled_current,  // may depend on the voltage across itself
    capacitor,           // open in dc, a voltage in start-up
    inductor,            // a short in dc, a current in start-up
};
struct branch_word {
    std::string_view word, text;  // in entries; for people
};
const branch_word& words_of(branch_kind kind);

struct type_branch {
    std::string from, to;  // the second one may be the reference node, wherever the element stands
    branch_kind kind;
};
inline constexpr std::string_view reference_end = "reference";

// Values that the model takes; it stops the run at others. Sums of products of parameters and numbers with < <= > >= !=
// between them, all that hold at once, and a condition: "-1 < k < 1", "r*k_scale > 1e-9", "tr + pw <= per if per > 0".
struct limit {
    std::string text;
    std::vector<std::string> words;
    std::vector<std::string> names;  // of the parameters, in the order of the text, each once
    // A number that every name but one of them only scales: "r*k_scale > 1e-9".
    bool is_of_one = false;
    int line = 0;  // of one entry, from 0: limits of one text have the same
};
limit limit_of(const std::string& text);
// False where a value that counts is NaN. Within 1e-9 of each other the sides of <= and >= are equal.
bool is_broken(const limit& l, const std::function<double(const std::string&)>& value_of);

// What a digital input and a parameter are to each other.
struct lost_pulses {
    enum class kind { low, high, any, edges } what;  // pulses to 0, to 1, both; edges of a clock
    std::string delay, input;
};
struct forced_start {
    std::string input, start, value;  // a number, or another parameter
};
struct excluded_pair {
    std::string a, b;
};

// What raises a doubt about a deck, and stops no run.
struct doubt_rules {
    std::vector<limit> expects;
    std::vector<lost_pulses> lost;
    std::vector<forced_start> forced;
    std::vector<excluded_pair> excluded;
    bool empty() const { return expects.empty() && lost.empty() && forced.empty() && excluded.empty(); }
};

// Comment lines of a basic entry, behind its first line; those of limits also of a composite with a function, and those
// from expects to excludes of any composite:
//   #= limit r*k_scale > 1e-9     see above; with [k] and [k+1] it stands for k=1, 2 ... as far as there are parameters
//   #= expects 0 <= q0 <= 1       a limit, beyond which the model goes on, though not as the value looks
//   #= pulses 1 td_rise a b       pulses to 1 at these digital inputs are lost if shorter than a delay; 0; any: both
//   #= edges td_rise clk          edges of a clock are lost if this delay is above half of its period
//   #= forces r n0 0              an input at 1 holds the state, whose start value is then to be this
//   #= excludes s r               two inputs at 1 stop the run
//   #= branch voltage p n         kind and nodes; entries without one conduct between all of their nodes
//   #= branch conducting y reference   from a node to the reference node
//   #= refuses dc                 a dc block stops at it
//   #= jumps                      its stored state, or its value, jumps in a run in time
//   #= computed l_o               of a composite: its function writes this parameter, whatever a deck gives
struct model_rules {
    std::vector<std::string> limit_texts;  // as the file has them
    std::vector<limit> limits;
    std::vector<type_branch> branches;
    bool refuses_dc = false, jumps = false;
    std::vector<std::string> computed;
    std::vector<std::string> expect_texts;
    doubt_rules doubts;
    std::vector<std::string> faults;  // lines that say nothing, or name what the entry lacks
};
model_rules rules_of(const library_entry& entry, const library_form& form);

}  // namespace cli
