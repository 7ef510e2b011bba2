// ov_class.h -- the deck's output variables.
#pragma once
#include <string>
#include <vector>

#include "deck/circuit_file.h"
#include "deck/gprm_class.h"

// Kinds of output variable.
enum ov_kind : int {
    ov_none = -1,
    ov_nodev = 1,
    ov_aux = 4,
    ov_var = 6,
    ov_gaux = 7,
    ov_pwr_elec = 13,
    ov_dvar = 14,
    ov_dstate = 15,
    ov_cur = 18,
    ov_rparm_eelu = 21,
    ov_rparm_gelu = 25,
    ov_rparm_delu = 27,
    ov_rparm_xelu = 76,
    ov_nodev_ac = 31,
    ov_aux_ac = 34,
    ov_pwr_elec_ac = 35,
    ov_var_ac = 36,
    ov_cur_ac = 38,
    ov_iparm_ebe = 45,
    ov_rparm_ebe = 46,
    ov_iparm_gbe = 49,
    ov_rparm_gbe = 50,
    ov_xvar = 71,
    ov_iparm_xbe = 72,
    ov_rparm_xbe = 73,
    ov_xaux = 74,
    ov_xvar_ac = 78,
    ov_postproc = 87,
    ov_postproc_ac = 88,
};
inline bool is_digital(int kind) { return kind == ov_dvar || kind == ov_dstate; }
inline bool is_small_signal(int kind) {
    return kind == ov_nodev_ac || kind == ov_aux_ac || kind == ov_pwr_elec_ac || kind == ov_var_ac ||
           kind == ov_cur_ac || kind == ov_xvar_ac;
}

// One entry per variable, in the order of the statements.
struct ov_class {
    std::vector<std::string> name;         // used in `variables:`
    std::vector<std::string> left, right;  // quantity and element of quantity_of_element
    std::vector<int> statement;            // [n_ov] deck statement
    // filled by the circuit tables
    std::vector<int> kind;      // [n_ov] ov_kind
    std::vector<int> index;     // [n_ov] within the table of that kind: flat unit-level index
    std::vector<int> family;    // [n_ov] kind of element statement that the instance belongs to; -1
    std::vector<int> instance;  // [n_ov] instance, -1 for names of the deck
    std::vector<int> unit;      // [n_ov] unit that holds a parameter output; -1
    std::vector<int> usage;     // [n_ov]

    int n_ov() const { return static_cast<int>(name.size()); }
    int find(std::string_view word) const;
};

ov_class read_ov(circuit_file& cf, const gprm_class& gprm);
