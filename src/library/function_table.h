// function_table.h -- the functions of basic entries: what rows they stand on and which variables they depend on.
#pragma once
#include <array>
#include <vector>

#include "base/words.h"

// Kinds of variable that a function depends on; used by every later stage.
enum var_kind : int {
    kind_v = 1,        // v(xx): a terminal
    kind_aux = 4,      // an auxiliary unknown
    kind_vr = 6,       // a general variable
    kind_gaux = 7,     // an auxiliary unknown of a general block
    kind_vind = 11,    // volt(xx): a sensed node
    kind_curind = 12,  // cur(xx): a sensed branch
    kind_locv = 16,    // d_dt(xx) in a KCL function: a local variable
    kind_auxs = 17,    // an auxiliary unknown of the start-up system
    kind_cur = 18,     // the current of a terminal, an unknown of the periodic system
    kind_xvr = 71,     // a variable of an explicit block
    kind_xaux = 74,    // an auxiliary one
    kind_bev = 75,     // a branch voltage of a network of explicit blocks
    kind_xcur = 77,    // a branch current of it
};

// One row per function, the functions of an entry contiguous and in file order.
struct function_table {
    std::vector<int> first_f{0};                               // [n entries + 1]
    words name;                                                // [n_ttlf]  text behind "f_"
    std::vector<int> flag_kcl, flag_gnrl, flag_locvar;         // [n_ttlf] what it is: exactly one is 1
    std::vector<int> i_locvar;                                 // [n_ttlf] local variable it defines; -1
    std::vector<int> func_startup, startup_kcl, startup_gnrl;  // [n_ttlf] its part in start-up
    std::vector<int> startup_kcl_row;                          // [n_ttlf] terminal whose row it stands on; -1
    std::vector<int> flag_ddt, ddt_var_flag, ddt_var_number;   // [n_ttlf] the last d_dt word of the line; -1
    std::vector<int> kcl_locvar_func;  // [n_ttlf] KCL function with d_dt: function of the entry that defines z; -1
    std::vector<int> first_fvar{0};    // [n_ttlf + 1] dependencies of function k
    std::vector<int> var_flag, var_number, l_ddt;  // [n_ttlfvar] kind, index in the entry's list, inside d_dt()

    int n_ttlf() const { return static_cast<int>(flag_kcl.size()); }
    int n_func(int e) const { return first_f[static_cast<std::size_t>(e) + 1] - first_f[static_cast<std::size_t>(e)]; }
};

// Where the partial derivatives of an entry stand: for each kind a dense map [function][variable] to the sequence
// number of that dependency within the entry and kind, -1 where there is none. A variable that stands twice on a line
// has two numbers; the map holds the later.
struct jacobian_map {
    struct one_kind {
        int n_var = 0;               // length of the kind's list
        std::vector<int> func, var;  // [number of dependencies] in sequence order
        std::vector<int> map;        // [n_func * n_var]
    };
    std::vector<std::vector<one_kind>> entry;  // [n entries][kinds in the order of map_jacobian's argument]
};
