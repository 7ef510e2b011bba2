// transient_run.h -- the transient of a deck, measured in this process.
#pragma once
#include <string>

#include "circuit_from_text.h"

// Solve blocks behind a circuit: start-up, then a transient with these method words and one row of the variable.
std::string transient(const std::string& method, const std::string& t_end, const std::string& variable);

// The circuit of an example with such a transient.
std::string example_transient(const std::string& name, const std::string& method, const std::string& t_end,
                              const std::string& variable);

struct measured {
    double us = 0;  // user time of the transient
    int n_step = 0, n_iteration = 0, n_unknown = 0;
};
// The second block of the deck. Of some runs the quickest: other work on the machine only adds.
measured quickest(const std::string& deck, const libraries& lib, int n_run);
