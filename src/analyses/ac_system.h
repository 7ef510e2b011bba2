// ac_system.h -- the complex system of small signals: its unknowns, its pattern, and where every number of a unit goes.
#pragma once
#include "analyses/mat_class.h"
#include "library/basic/ebac1_class.h"
#include "library/basic/gbac1_class.h"
#include "sparse/arithmetic.h"

struct ac_system {
    int n_svec = 0;
    svec_offsets offs;                  // eauxs is not used
    std::vector<complex_value> svec;    // [n_svec] amplitudes: nodes less the reference, aux, variables, aux of blocks
    knuth<complex_value> m;             // pattern; the values stand in val_m
    std::vector<complex_value> val_m;   // [m.nnz()]
    std::vector<complex_value> rhs_m;   // [n_svec]
    int nrow_ebce = 0;                  // rows of electrical units; those of blocks follow
    std::vector<int> ebce_row_of_func;  // [n_ttlf of electrical units] row; -1: of the reference node
    std::vector<int> row_first{0}, slot_of_row, column_of_row;  // the pattern row by row
    slot_table ebe, gbe;
    elimination<complex_value> e;
};

// Unknowns and pattern for the circuit; prints the size of the system. Halts where a unit asks for what has no
// amplitude (a node that no small-signal unit touches, a branch without an unknown), on a missing reference, on limits
// of tmpdim.in, and if the system is not square.
void set_mat_ac(ac_system& s, const circuit& c, const std::vector<ebac1_class>& ebac1,
                const std::vector<gbac1_class>& gbac1);

// Column of a term of unit u: kind and index within the unit's list. -1: the reference node.
int column_of_ac_term(const ac_system& s, const circuit& c, int u, int kind, int index);
int column_of_ac_block_term(const ac_system& s, const circuit& c, int u, int kind, int index);
