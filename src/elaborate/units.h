// units.h -- the flat tables that the solvers see: one unit per basic element of the running circuit.
#pragma once
#include <array>
#include <complex>
#include <memory>
#include <string>
#include <vector>

#include "base/row_table.h"
#include "elaborate/instances.h"
#include "library/basic_library.h"

// What the units of every family have. Order: by instance in deck order, within an instance in the order of the
// composite's flat element list.
struct unit_core {
    int n = 0;
    std::vector<int> i_lib;   // [n] template
    std::vector<int> i_inst;  // [n] instance
    row_table<int> iprm;
    row_table<char*> sprm;  // each points to 64 bytes of text
    row_table<double> rprm, sv, ig;
    std::vector<std::unique_ptr<char[]>> text;  // the bytes that sprm points to
    std::vector<int> first_func{0};             // [n + 1] flat function index of the unit's first function

    int n_ttlf() const { return first_func.back(); }
};

// Electrical units. Row tables give each unit's terminals, sensed nodes and so on; the value arrays beside them have
// the same first-index arrays.
struct ebeu_class {
    unit_core unit;
    int n_nd = 0;                  // unit-level nodes, numbered by first use of a terminal
    int ref_nd = -1;               // the reference among them; -1: no terminal reaches it
    int n_ttlnd_kcl = 0;           // terminals without those of ground_dummy_1 units
    row_table<int> nd;             // unit-level node of terminal j
    row_table<int> in;             // unit-level node of sensed node j
    row_table<int> ib;             // unit whose current sensed branch j reads
    row_table<int> ib_aux;         // index in aux of that current; -1 if the unit has no aux (then start-up only)
    row_table<int> ib_auxs;        // index in auxs of it; -1
    row_table<int> dgtl, vr, xvr;  // dct, gct, xct numbers
    std::vector<int> first_aux, first_auxs, first_locv;  // [n + 1]

    // values; one entry per unit-level node
    std::vector<double> val_nd, val_nd_new;
    // one per terminal, sensed node, sensed branch, general variable, explicit variable, digital node of units
    std::vector<double> nodev, nodev_new, cur_nd, vin, curind, val_vr, val_xvr;
    std::vector<int> dvar;
    // one per auxiliary unknown, start-up unknown, local variable
    std::vector<double> aux, aux_new, auxs, auxs_new, locv;
    // what the models write: static function values; behind them room for totals of those with a derivative
    std::vector<double> f;               // [n_ttlf + n_ddt]
    std::vector<double> time_nextbreak;  // [n] s, the unit's last answer
    std::vector<char> break_jumps;       // [n] 1: its wave jumps there
    std::vector<int> vr_gbeu;            // [vr.data] general variable at unit level, of each connection
    std::vector<int> xvr_xbeu;           // [xvr.data] explicit variable at unit level, of each connection
    std::vector<int> dgtl_dbeu;          // [dgtl.data] digital node at unit level, of each connection

    std::vector<int> ground_units;  // units of ground_dummy_1

    int n() const { return unit.n; }
    int n_ttlnd() const { return static_cast<int>(nd.data.size()); }
    int n_ttlaux() const { return first_aux.empty() ? 0 : first_aux.back(); }
    int n_ttlauxs() const { return first_auxs.empty() ? 0 : first_auxs.back(); }
    int n_ttllocv() const { return first_locv.empty() ? 0 : first_locv.back(); }
};

// Small-signal units of electrical elements. An instance need not have any, so names may be without a number here.
struct ebau_class {
    unit_core unit;
    int n_nd = 0;                 // nodes, numbered by first use of a terminal
    int ref_nd = -1;              // the reference among them; -1: no terminal reaches it
    row_table<int> nd, in, vr;    // node of terminal j, of sensed node j (-1: none); gct number
    row_table<int> ib;            // unit of the sensed branch; -1
    std::vector<int> index_ebeu;  // [n] unit of the element whose bias it takes; -1
    std::vector<int> first_aux;   // [n + 1]
    std::vector<int> vr_gbau;     // [vr.data] variable at small-signal unit level; -1

    // values: amplitudes; one per node, per terminal, sensed node, sensed branch, variable of units, auxiliary unknown
    std::vector<std::complex<double>> val_nd, nodev, cur_nd, vin, curind, val_vr, aux;
    std::vector<std::complex<double>> f;  // [n_ttlf] what the models write

    int n() const { return unit.n; }
    int n_ttlaux() const { return first_aux.empty() ? 0 : first_aux.back(); }
};

// Units of general blocks. Variables are numbered by first use over the connections.
struct gbeu_class {
    unit_core unit;
    int n_vr = 0;                // variables of the blocks
    row_table<int> vr;           // variable of connection j
    row_table<int> xvr;          // xct numbers
    std::vector<int> first_aux;  // [n + 1]

    std::vector<double> val_vr, val_vr_new;  // [n_vr] values in iteration, and of the next iterate
    std::vector<double> vr_in, vr_in_new;    // [vr.data] what each unit sees
    std::vector<double> val_xvr;             // [xvr.data]
    std::vector<int> xvr_xbeu;               // [xvr.data] its unit-level number
    std::vector<double> aux, aux_new;        // [n_ttlaux]
    std::vector<double> f;                   // [n_ttlf] function values
    std::vector<double> time_nextbreak;      // [n] s
    std::vector<char> break_jumps;           // [n]

    int n() const { return unit.n; }
    int n_ttlaux() const { return first_aux.empty() ? 0 : first_aux.back(); }
};

// Small-signal units of general blocks.
struct gbau_class {
    unit_core unit;
    int n_vr = 0;                 // variables, numbered by first use
    row_table<int> vr;            // variable of connection j
    std::vector<int> index_gbeu;  // [n] unit of the block whose bias it takes; -1
    std::vector<int> first_aux;   // [n + 1]

    std::vector<std::complex<double>> val_vr, vr_in, aux;  // [n_vr], [vr.data], [n_ttlaux] amplitudes
    std::vector<std::complex<double>> f;                   // [n_ttlf]

    int n() const { return unit.n; }
    int n_ttlaux() const { return first_aux.empty() ? 0 : first_aux.back(); }
};

// Units of digital elements. Nodes are numbered by first use over the units: inputs, then outputs.
struct dbeu_class {
    unit_core unit;
    int n_nd = 0;                 // digital nodes
    row_table<int> nd;            // node of input j, behind the inputs that of output j
    std::vector<int> n_input;     // [n] how many of them are inputs
    row_table<int> anlg;          // ect number of analog node j
    std::vector<int> anlg_ebeu;   // [anlg.data] its unit-level number
    std::vector<int> first_lprm;  // [n + 1]
    row_table<int> reader;        // for each node the units that have it as an input, each once

    // values; levels are 0, 1, or 2 for unknown
    std::vector<int> dvar;               // [n_nd] level of each node
    std::vector<int> stparm, igparm;     // as unit.sv, unit.ig
    std::vector<int> lparm;              // [n_ttllprm] what units keep between calls
    std::vector<int> stbl_out, val_out;  // [nd.data] what each unit has put out, at the places of its outputs
    std::vector<double> val_anlg;        // [anlg.data] V
    std::vector<int> dstate;             // [n] pending action
    std::vector<int> stbl;               // [n] 0: an event is pending
    std::vector<double> t_next;          // [n] s, its time

    int n() const { return unit.n; }
    int n_ttllprm() const { return first_lprm.empty() ? 0 : first_lprm.back(); }
};

// What an explicit block does: the first of its words in this order.
enum class block_kind : char { evaluate, integrate, delay };

// Units of explicit blocks. Variables are numbered by first use over the connections: inputs, then outputs.
struct xbeu_class {
    unit_core unit;                         // first_func: functions f
    int n_vr = 0;                           // variables of the blocks
    int ref_vr = -1;                        // the reference of a network among them; -1: none
    row_table<int> vr;                      // variable of input j, behind the inputs that of output j
    std::vector<int> n_input;               // [n] how many of them are inputs
    row_table<int> gvr;                     // gct number of general variable j
    std::vector<int> gvr_gbeu;              // [gvr.data] its unit-level number
    std::vector<block_kind> kind;           // [n]
    std::vector<int> first_aux, first_bev;  // [n + 1]
    std::vector<int> first_cur;             // [n + 1]
    std::vector<int> first_g, first_h;      // [n + 1] functions in a network

    // The order of evaluation (elaborate/evaluation_order.cpp).
    std::vector<int> opvr_xbeu;                      // [n_vr] unit that writes the variable; -1
    std::vector<int> integrating, delaying, source;  // units of these kinds, sources: blocks to evaluate without inputs
    row_table<int> pass_beu;                         // for each pass the other blocks to evaluate
    std::vector<int> in_order;                       // the same in one list

    std::vector<double> val_vr;            // [n_vr] values
    std::vector<double> vr_in, vr_in_new;  // [vr.data] what each unit sees
    std::vector<double> val_gvr;           // [gvr.data]
    std::vector<double> aux, aux_new;      // [n_ttlaux]
    std::vector<double> bev, cur;          // [n_ttlbev], [n_ttlcur] branch voltages and currents of networks
    std::vector<double> f, fg, fh;         // what the models write
    std::vector<double> time_nextbreak;    // [n] s

    int n() const { return unit.n; }
    int n_pass() const { return pass_beu.n_rows(); }
    int n_ttlaux() const { return first_aux.empty() ? 0 : first_aux.back(); }
};

// Small-signal units of explicit blocks.
struct xbau_class {
    unit_core unit;
    int n_vr = 0;                // variables, numbered by first use
    row_table<int> vr;           // variable of connection j
    std::vector<int> first_aux;  // [n + 1]

    std::vector<std::complex<double>> val_vr, vr_in, aux;  // [n_vr], [vr.data], [n_ttlaux] amplitudes
    std::vector<std::complex<double>> f;                   // [n_ttlf]

    int n() const { return unit.n; }
    int n_ttlaux() const { return first_aux.empty() ? 0 : first_aux.back(); }
};
