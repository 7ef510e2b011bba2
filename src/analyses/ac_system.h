// ac_system.h -- the complex system of small signals: its unknowns, its pattern, and where every number of a unit goes.
#pragma once
#include "analyses/mat_class.h"
#include "sparse/arithmetic.h"

struct ac_system {
    int n_svec = 0;
    svec_offsets offs;                 // eauxs is not used
    std::vector<complex_value> svec;   // [n_svec] amplitudes: nodes less the reference, aux; of each family of blocks
                                       // variables and aux
    knuth<complex_value> m;            // pattern; the values stand in val_m
    std::vector<complex_value> val_m;  // [m.nnz()]
    std::vector<complex_value> rhs_m;  // [n_svec]
    std::vector<complex_value> rest, step;  // [n_svec] what rows are off by, and what mends it
    int nrow_ebce = 0;                      // rows of electrical units; those of general and of explicit blocks follow
    std::vector<int> ebce_row_of_func;      // [n_ttlf of electrical units] row; -1: of the reference node
    std::vector<int> row_first{0}, slot_of_row, column_of_row;  // the pattern row by row
    slot_table ebe, gbe, xbe;
    elimination<complex_value> e;
};

// What a family of blocks brings to the system: how its terms name their unknowns and where these begin, its limit and
// the words of its messages and dumps.
struct ac_block_unknowns {
    int kind_var, kind_aux;
    int svec_offsets::*var, svec_offsets::*aux;
    int tmpdim_class::*limit;
    bool output_flags::*dump;
    const char *units, *templates, *rows;
};
