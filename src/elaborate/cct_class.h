// cct_class.h -- the elaborated circuit: names of the deck, maps between levels, classification.
#pragma once
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// The global names of one domain and where they stand at each level. -1: no counterpart.
struct name_table {
    std::vector<std::string> name;               // in order of first use
    std::unordered_map<std::string, int> index;  // name -> number
    int n_lu = 0;            // instance level: the names, then internal ones of mixed instances, then those of others
    int n_mixed = 0;         // where those of others begin
    int n_eu = 0, n_au = 0;  // unit level, small-signal unit level
    std::vector<int> to_eu, to_au;           // [n]    global -> unit level
    std::vector<int> eu_to, au_to;           // [n_eu], [n_au]  and back
    std::vector<int> lu_to_eu, lu_to_au;     // [n_lu]
    int ref = -1, eu_ref = -1, au_ref = -1;  // the reference at each level
    std::vector<char> is_ground;             // [n] 1: a ground word, stands for the reference at unit level

    int n() const { return static_cast<int>(name.size()); }
    int find(std::string_view w) const {
        const auto it = index.find(std::string(w));
        return it == index.end() ? -1 : it->second;
    }
};

// Instance level is the identity below n() and has no global number above it.
struct cct_class {
    name_table ect, gct, dct, xct;

    // classification
    int n_dac = 0, n_adc = 0;  // electrical units with digital nodes, digital units with analog nodes
    bool flag_dac = false, flag_adc = false;
    int n_xec = 0, n_xgc = 0, n_gxc = 0;  // units with variables of the other domain
    bool flag_purely_digital = false, flag_purely_analog = false, flag_mixed = false;
    bool flag_solve_digital = false, flag_solve_analog = false;
    bool flag_x_only = false, flag_x_mixed = false, flag_x_cct = false;
    bool flag_linear = false, flag_x_linear = false;  // all units have "Jacobian: constant"
    bool flag_save_history = false, flag_save_history_x = false;
    bool flag_reset = false, flag_reset_x = false;
    bool flag_modulo_x = false, flag_lmttstep_x = false;
    bool flag_modulo = false, flag_setrparm = false, flag_getrparm = false;
    bool flag_lmtnewt = false;  // some unit limits Newton steps
    bool flag_lmttstep = false;
    bool flag_pstprc = false, flag_pstprc_x = false;
    bool flag_integrator_x = false;  // some explicit unit integrates
};
