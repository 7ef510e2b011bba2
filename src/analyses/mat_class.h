// mat_class.h -- the sparse system of an analysis: its unknowns, its pattern, and where every number of a unit goes.
#pragma once
#include <cstdint>
#include <vector>

#include "elaborate/circuit.h"
#include "library/basic/ebes1_class.h"
#include "library/basic/gbes1_class.h"
#include "sparse/elimination.h"
#include "sparse/knuth.h"

enum class analysis { dc, startup, trns, ssw };
// Analyses that integrate over time.
inline bool in_time(analysis kind) { return kind == analysis::trns || kind == analysis::ssw; }

// Start of each kind of unknown in svec. dc, trns: nodes, aux of electrical units, general variables, aux of blocks.
// startup: nodes, start-up unknowns, aux of units without equations of their own for start-up, then as before.
// ssw: nodes, currents of terminals, aux, local variables, then as before. Small signals: as dc, then variables and aux
// of explicit blocks.
struct svec_offsets {
    int nodev = 0;  // nodes less the reference; a node above the reference stands one lower
    int cur = 0, eauxs = 0, eaux = 0, locv = 0, gvar = 0, gaux = 0, xvar = 0, xaux = 0;
};

// How a derivative that a model gives comes into the matrix.
enum entry_scale : std::uint8_t { as_it_is, by_constant, negated };  // by_constant: times the constant of the method

// Where the units' numbers go: active terms only, the reference node left out. Functions are flat indices of the
// family; derivatives of unit u are first_jac[u] up to first_jac[u + 1] - 1. All stand in the order in which they are
// added.
struct slot_table {
    std::vector<int> first_jac{0}, to_val, from_jac;  // entry of val_m, place in the template's jac store
    std::vector<entry_scale> scale;
    std::vector<int> to_row, from_f;    // rows that several units share: f is added
    std::vector<int> ddt;               // of each sum: derivative added to it; -1
    std::vector<int> to_own, from_own;  // rows of one function alone: f is assigned
};

// Values that are copied from one flat array to another, in this order.
struct value_moves {
    std::vector<int> from, to;
};

// KCL functions with a time derivative dz/dt, in unit order, those at the reference node included.
struct kcl_derivatives {
    std::vector<int> first{0};  // [n electrical units + 1]
    std::vector<int> f;         // [n] flat function, static part
    std::vector<int> z;         // [n] flat local variable
    std::vector<int> terminal;  // [n] flat terminal
    std::vector<int> row;       // [n] system row; -1 at the reference
    // total F and static G at the present and the two earlier levels; A or C/s as the function
    std::vector<double> total, total_1, total_2, still, still_1, still_2;
    std::vector<double> rate;  // [n] dz/dt of the present iterate
    int n() const { return static_cast<int>(f.size()); }
};

// Rows of the periodic system that no other one has. A terminal's current and a local variable z are unknowns with a
// row x - f = 0 each; where the current is that of a changing z, it reads x - f = dz/dt.
struct periodic_rows {
    std::vector<int> node_row, current, current_slot;  // rows of nodes: columns of the currents that they sum
    std::vector<int> row, x, x_slot, f;                // column of x, flat function of f
};

// Rows f(x) = dx/dt of one unknown x.
struct state_rows {
    std::vector<int> row, col, slot;      // [n] col, slot -1: x on the reference node
    std::vector<int> f;                   // [n] flat function, of electrical units or of blocks
    std::vector<char> is_block;           // [n]
    std::vector<double> f_now, f_1, f_2;  // [n] function values at the levels
    int n() const { return static_cast<int>(row.size()); }
};

struct mat_class {
    analysis kind = analysis::dc;
    int layout = 0;  // counts the calls of set_mat
    // unknowns
    int n_svec = 0;
    svec_offsets offs;
    std::vector<int> aux_of_unknown;       // [aux unknowns] flat aux of each
    std::vector<int> terminal_of_unknown;  // [current unknowns] flat terminal of each
    std::vector<int> column_of_terminal;   // [n_ttlnd] column of its current; -1: no unknown of this analysis
    std::vector<int> column_of_aux;        // [n_ttlaux] column; -1: no unknown of this analysis
    std::vector<int> svec_flag;            // [n_svec] var_kind of the unknown
    std::vector<double> svec, delsvec, svec_old, svec_ls, delsvec_ls, tol_spice, del_spice;  // [n_svec]
    std::vector<double> svec_old_1, svec_old_2;  // [n_svec] the two accepted points before
    std::vector<double> svec_prev;               // [n_svec] what an automatic sweep goes back to
    std::vector<double> locv_old_1, locv_old_2;  // [n_ttllocv]
    // system
    knuth<double> m;                    // pattern; the values stand in val_m
    std::vector<double> val_m;          // [m.nnz()]
    std::vector<double> rhs_m;          // [n_svec]
    int nrow_kcl = 0;                   // rows that sum unknown currents, the first ones
    int nrow_ebce = 0;                  // rows of the electrical block; those of blocks follow
    std::vector<int> ebce_row_of_func;  // [n_ttlf] system row of each function of the units; -1
    std::vector<int> ebce_row_of_node;  // [n_nd]   system row of each node; -1
    slot_table ebe, gbe;
    kcl_derivatives kcl_ddt;
    state_rows state;
    periodic_rows periodic;
    std::vector<int> first_locv{0};  // [n + 1] moves of unit u
    value_moves locv;                // flat function -> flat local variable
    elimination<double> e;
    // limits
    int mnz_ebce = 0, mnz_gbce = 0;
};

// Lengths and offsets for an analysis; fills svec_flag and sizes the vectors.
void define_offs_solvec(mat_class& mat, const circuit& c, analysis kind);

// The limits of the run from tmpdim.in; halts when the circuit's pattern passes them.
void allocate_system(mat_class& mat, const circuit& c);

// Builds pattern, rows and slots for mat.kind and prints the size of the system. Halts if it is not square.
void set_mat(mat_class& mat, const circuit& c, const std::vector<ebes1_class>& ebes1,
             const std::vector<gbes1_class>& gbes1);

// Terminal on whose node's row function j of a template stands in an analysis; k: its place in the table. -1: it has a
// row of its own, or none.
int terminal_of_function(const function_table& t, int k, int j, analysis kind);

// Whether a dependency is the first word of its (function, variable) cell: a variable that stands twice on a line is
// added once. k: function, term: dependency, in the table.
bool first_of_cell(const function_table& t, int k, int term);

// Column of a term of electrical unit u: kind and index within the unit's list. -1: the reference node, or a kind that
// is no unknown of this analysis.
int column_of_term(const mat_class& mat, const circuit& c, int u, int kind, int index);
int column_of_block_term(const mat_class& mat, const circuit& c, int u, int kind, int index);
