// mat_class.h -- the sparse system of an analysis: its unknowns, its pattern, and where every number of a unit goes.
#pragma once
#include <vector>

#include "elaborate/circuit.h"
#include "library/ebes1_class.h"
#include "sparse/elimination.h"
#include "sparse/knuth.h"

// Start of each kind of unknown in svec; the lengths follow from the unit tables.
struct svec_offsets {
    int nodev = 0;  // nodes less the reference; a node above the reference stands one lower
    int eaux = 0;
    int gvar = 0;
    int gaux = 0;
};

// Where the units' numbers go: active terms only, the reference node left out. Entries of unit u are first[u] up to
// first[u + 1] - 1, in the order in which they are added.
struct slot_table {
    std::vector<int> first_jac{0}, to_val, from_jac;  // entry of val_m, place in the template's jac store
    std::vector<int> first_sum{0}, to_row, from_f;    // rows that several units share: f is added
    std::vector<int> first_own{0}, to_own, from_own;  // rows of one function alone: f is assigned
};

struct mat_class {
    // unknowns
    int n_svec = 0;
    svec_offsets offs;
    std::vector<int> svec_flag;  // [n_svec] var_kind of the unknown
    std::vector<double> svec, delsvec, svec_old, svec_ls, delsvec_ls, tol_spice, del_spice;  // [n_svec]
    std::vector<double> svec_prev;  // the vector that an automatic sweep goes back to
    // system
    knuth<double> m;              // pattern; the values stand in val_m
    std::vector<double> val_m;    // [m.nnz()]
    std::vector<double> rhs_m;    // [n_svec]
    std::vector<int> ebce_row_of_func;  // [n_ttlf] system row of each function of the units; -1
    std::vector<int> ebce_row_of_node;  // [n_nd]   system row of each node; -1
    slot_table ebe;
    elimination<double> e;
    // limits
    int mnz_ebce = 0, mnz_m = 0;
};

// Lengths and offsets for dc; fills svec_flag and sizes the vectors. svec keeps its values if its length stays.
void define_offs_solvec_dc(mat_class& mat, const circuit& c);

// Column of a term of unit u: kind and index within the unit's list. -1 for the reference node and for local variables.
int column_of_term(const mat_class& mat, const circuit& c, int u, int kind, int index);

// The limits of the run from tmpdim.in; halts when the circuit's pattern passes them.
void allocate_system(mat_class& mat, const circuit& c);

// Builds pattern, rows and slots for dc and prints the size of the system. Halts if it is not square.
void set_mat_dc(mat_class& mat, const circuit& c, const std::vector<ebes1_class>& ebes1);
