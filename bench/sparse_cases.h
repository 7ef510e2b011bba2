// sparse_cases.h -- the systems that the linear solver is measured on.
#pragma once
#include <string>
#include <vector>

#include "sparse/knuth.h"

// A matrix with two sets of values, so that no call meets those of the call before; the same in compressed columns.
struct bench_case {
    knuth<double> m;
    std::vector<double> val[2], rhs;
    std::vector<int> cc_cn, cc_row;
    std::vector<double> cc_val[2];
};

struct case_family {
    const char* name;
    bench_case (*make)(int n);
    std::vector<int> sizes;  // unknowns that are measured; a grid takes the nearest square
};
extern const std::vector<case_family> families;

// Systems of decks as the first Newton iteration meets them.
extern const std::vector<std::string> deck_names;
bench_case deck_case(const std::string& name);
