// instances.h -- element statements of the deck, bound to composites and to the deck's names.
#pragma once
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/row_table.h"
#include "library/composite/composite_library.h"

// The instances of one kind of element statement, in deck order; behind them those that mixed composites call, which
// have names of two words, "x1.r2". One row per instance in every table; parameter rows
// follow the composite's list order. Numbers in nd, in are those of ect; dgtl: dct; vr: gct; xvr: xct.
struct instance_core {
    int n = 0;
    std::vector<int> i_lib;                      // [n] composite
    std::vector<int> statement;                  // [n] deck statement
    std::vector<std::string> name;               // [n]
    std::unordered_map<std::string, int> index;  // name -> instance; the first of equal names
    std::vector<int> flag_compute_acp, flag_compute_noisep, flag_write_parms;  // [n] statement words; stored
    std::vector<int> flag_pwr_elec, flag_pwr_elec_ac;                          // [n] an output asks for the power
    row_table<int> nd;  // main nodes: ect number, then auxiliary nodes: numbers behind all of ect
    row_table<int> dgtl, vr, xvr;
    row_table<int> in;  // ect number
    row_table<int> ib;  // instance that the branch word names; -1 until all names are known
    row_table<int> iprm;
    row_table<std::string> sprm;
    row_table<double> rprm, sv, ig;
    row_table<int> rprm_tie, sv_tie, ig_tie;  // greal that the value named; -1
    row_table<double> rprm_ac;                // small-signal copy of rprm
    row_table<double> outvar, bias;           // values of the composite's output and bias words at run time
    row_table<int> part;          // of mixed instances: number, in its own family, of the instance that call k became
    std::vector<int> first_unit;  // [n + 1] units of instance i
    std::vector<int> first_unit_ac;  // [n + 1] small-signal units

    int find(std::string_view w) const {  // -1 if none
        const auto it = index.find(std::string(w));
        return it == index.end() ? -1 : it->second;
    }
};
using eelu_class = instance_core;
using gelu_class = instance_core;
using delu_class = instance_core;
using xelu_class = instance_core;
using gmeu_class = instance_core;

// The five kinds of element statement.
enum family : int { fam_e = 0, fam_d = 1, fam_g = 2, fam_x = 3, fam_gm = 4, n_family = 5 };
