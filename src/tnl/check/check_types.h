// check_types.h -- what a composite of the libraries lets a statement say, read from the entry's text.
#pragma once
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/deck/installed.h"
#include "tnl/elements/element_doc.h"

namespace cli {

// How an element holds voltages and currents between two of its nodes.
enum class branch_kind {
    conducting,          // current follows voltage
    voltage,             // an ideal voltage: sources, meters of current
    winding,             // of an ideal transformer: a voltage as soon as the other winding has one
    current,             // an independent current
    controlled_current,  // may depend on the voltage across itself
    capacitor,           // open in dc, a voltage in start-up
    inductor,            // a short in dc, a current in start-up
};
struct type_branch {
    std::string from, to;
    branch_kind kind;
};

struct element_type {
    int library;  // position in library_forms
    std::string name;
    // What a statement must give: nodes that carry current, nodes and branches that are sensed, digital nodes, block
    // variables, explicit variables.
    std::vector<std::string> node, ind_node, ind_branch, digital, var, xvar;
    std::vector<std::string> inner;   // its own nodes or variables, or those of a basic element
    std::vector<std::string> driven;  // those of var that the element itself determines
    // What it may give; `derived` are computed, and only read.
    std::vector<std::string> iprm, sprm, rprm, start, guess, derived;
    std::vector<name_and_value> text_values;  // sprm with what stands in the library
    std::vector<std::string> outvar;          // dc and small signal
    std::vector<type_branch> branches;
    std::vector<std::string> basics;     // the basic elements that it is made of
    std::vector<name_and_value> values;  // iprm, rprm with what stands in the library
    bool can_be_sensed = false;          // one basic element with a current of its own
    bool limits_step = false;            // has corners or events that steps must meet
    bool nonlinear = false;
    element_doc doc;
};

// Types are read when they are first asked for.
class element_types {
public:
    explicit element_types(const installed_libraries& libraries) : libraries_(libraries) {}
    const element_type* find(int library, std::string_view name);  // nullptr if there is none
    const installed_libraries& libraries() const { return libraries_; }

private:
    const installed_libraries& libraries_;
    std::map<std::pair<int, std::string>, element_type> known_;
};

bool has(const std::vector<std::string>& list, std::string_view word);

// Basic elements with other branches than conducting ones between all of their nodes.
struct basic_branch {
    std::string_view element, from, to;
    branch_kind kind;
};
const std::vector<basic_branch>& basic_branches();

// Types that a block of this kind cannot treat, whatever their values: their models stop.
bool refuses_dc(std::string_view basic_element);
// Types whose stored state, or whose value, jumps in a run in time.
bool acts_at_once(std::string_view basic_element);

}  // namespace cli
