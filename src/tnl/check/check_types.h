// check_types.h -- what a composite of the libraries lets a statement say, read from the entry's text.
#pragma once
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tnl/deck/installed.h"
#include "tnl/elements/element_doc.h"
#include "tnl/elements/model_rules.h"

namespace cli {

// A basic explicit block of a composite, with the composite's words, or names of its own, for its variables.
struct type_block {
    enum class kind { evaluate, integrate, delay } how;
    std::vector<std::string> in, out;
};

struct element_type {
    int library;  // position in library_forms
    std::string name;
    // What a statement must give: nodes that carry current, nodes and branches that are sensed, digital nodes, block
    // variables, explicit variables.
    std::vector<std::string> node, ind_node, ind_branch, digital, var, xvar;
    std::vector<std::string> inner;                     // its own nodes or variables, or those of a basic element
    std::vector<std::string> inner_var, inner_digital;  // of a mixed composite, whose inner ones are analog nodes
    // Those of var, and of digital, that the element itself determines; of digital those that it reads.
    std::vector<std::string> driven, reads;
    // What it may give; `derived` are computed, and only read.
    std::vector<std::string> iprm, sprm, rprm, start, guess, derived;
    std::vector<name_and_value> text_values;  // sprm with what stands in the library
    std::vector<std::string> outvar;          // dc and small signal
    std::vector<type_branch> branches;
    std::vector<std::string> basics;  // the basic elements that it is made of
    std::vector<limit> limits;        // of its parameters, where it is made of one or tells its own
    bool has_own_limits = false;
    doubt_rules doubts;                  // likewise
    std::vector<std::string> computed;   // of rprm: what a deck gives is overwritten
    std::vector<name_and_value> values;  // iprm, rprm, start with what stands in the library
    bool can_be_sensed = false;          // one basic element with a current of its own
    bool limits_step = false;            // has corners or events that steps must meet
    bool nonlinear = false;
    bool refuses_dc = false, jumps = false;  // as one of them says in its model_rules
    // Of a mixed composite: what it calls itself. Instances of these go by the path INSTANCE.NAME.
    struct part {
        std::string name, type;
        int library;
    };
    std::vector<part> parts;
    // Of explicit blocks: what it is made of, variables that are nodes of a circuit of such blocks, and whether they
    // may stand beside other elements.
    std::vector<type_block> blocks;
    std::vector<std::string> x_node;
    bool stands_alone = false;
    element_doc doc;
};

// Types are read when they are first asked for.
class element_types {
public:
    explicit element_types(const installed_libraries& libraries) : libraries_(libraries) {}
    const element_type* find(int library, std::string_view name);  // nullptr if there is none
    const installed_libraries& libraries() const { return libraries_; }
    // Of an entry of the libraries, each read once: composites that double at each level call one a thousand times.
    const entry_lines& lines(const library_entry& entry, int library);
    const model_rules& rules(const library_entry& entry, int library);

private:
    const installed_libraries& libraries_;
    std::map<const library_entry*, entry_lines> lines_;
    std::map<const library_entry*, model_rules> rules_;
    std::map<std::pair<int, std::string>, element_type> known_;
};

bool has(const std::vector<std::string>& list, std::string_view word);

}  // namespace cli
