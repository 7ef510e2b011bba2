// ac_class.h -- small signals of a run: their units, the system over frequencies, and what of it stands between them.
#pragma once
#include "analyses/sums.h"
#include "analyses/unit_family.h"

struct ac_class {
    ac_system s;
    unit_family<electrical_ac_family> ebe;
    unit_family<general_ac_family> gbe;
    unit_family<explicit_ac_family> xbe;
    // Derivatives at the bias point: of the elements that small-signal units take their values from.
    std::vector<ebes1_class> bias_ebe;              // [units that have one]
    std::vector<gbes1_class> bias_gbe;              // [units that have one]
    std::vector<int> ebe_with_bias, gbe_with_bias;  // [the same] small-signal units
    std::vector<const gbes1_class*> bias_of_gbe;    // [units of blocks]; null: none
    // The assembly. Models that do not ask for the frequency are called once for a bias point.
    std::vector<complex_value> d;           // derivatives as the models gave them last
    standing_sums<complex_value> entries;   // [nnz] over d
    standing_sums<complex_value> rows;      // [n_svec] rows of nodes over the functions of electrical units
    std::vector<complex_value> f;           // [n_svec] functions at zero amplitudes, by row
    std::vector<complex_value> f_of_point;  // [most functions of a unit] work space of terminal currents

    explicit ac_class(circuit& c) : ebe{c.ebau, c.lib.ebac}, gbe{c.gbau, c.lib.gbac}, xbe{c.xbau, c.lib.xbac} {}
};

// General blocks, explicit ones.
template <class A, class F>
void for_ac_blocks(A& ac, F f) {
    f(ac.gbe);
    f(ac.xbe);
}
// Electrical units before them.
template <class A, class F>
void for_ac_families(A& ac, F f) {
    f(ac.ebe);
    for_ac_blocks(ac, f);
}

// Unknowns and pattern for the circuit; prints the size of the system. Halts where a unit asks for what has no
// amplitude (a node that no small-signal unit touches, a branch without an unknown), on a missing reference, on limits
// of tmpdim.in, and if the system is not square.
void set_mat_ac(ac_class& ac, const circuit& c);

[[noreturn]] void unknown_ac_kind(const char* units, int kind);
// Column of a term of unit u: kind and index within the unit's list. -1: the reference node.
int column_of_ac_term(const ac_system& s, const unit_family<electrical_ac_family>& f, int u, int kind, int index);
template <class Rows>
int column_of_ac_term(const ac_system& s, const unit_family<Rows>& f, int u, int kind, int index) {
    constexpr ac_block_unknowns x = Rows::unknowns;
    if (kind == x.kind_var) return s.offs.*x.var + f.units.vr.row(u)[index];
    if (kind == x.kind_aux) return s.offs.*x.aux + f.units.first_aux[at(u)] + index;
    unknown_ac_kind(x.units, kind);
}
