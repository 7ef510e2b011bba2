// ac_class.h -- small signals of a run: their units, the system over frequencies, and what of it stands between them.
#pragma once
#include "analyses/sums.h"
#include "analyses/unit_family.h"

struct ac_class {
    ac_system s;
    unit_family<electrical_ac_family> ebe;
    unit_family<general_ac_family> gbe;
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

    explicit ac_class(circuit& c) : ebe{c.ebau, c.lib.ebac}, gbe{c.gbau, c.lib.gbac} {}
};
