// composite_library.h -- named subcircuits, each expanded to a flat list of basic elements when it is read.
#pragma once
#include <string>
#include <vector>

#include "base/row_table.h"
#include "deck/gprm_class.h"
#include "library/basic_library.h"
#include "library/lists.h"

// The expanded elements of all entries: those of entry e are first_be[e] up to first_be[e + 1] - 1, callee's elements
// inline. One row per element of each table that the family's elements have words for; others have no rows.
struct element_table {
    std::vector<int> first_be{0};   // [n entries + 1]
    std::vector<int> i_be;          // [n_be_ttl] entry of the basic library
    std::vector<std::string> name;  // [n_be_ttl] name= of the statement, "" if none; inlined ones keep their own
    row_table<int> node;            // composite's node of terminal j: main nodes, then n_nd + k for auxiliary node k
    row_table<int> dgtl, vr, xvr;   // composite's digital node, general variable, explicit variable
    row_table<int> in, in_flag;     // flag -1: in is a node of the composite (as in node); >= 0: position in ind_nodes:
    row_table<int> ib, ib_flag;  // flag -1: ib is the element's position in this entry's flat list; >= 0: position in
                                 // ind_branches:; -2: a reference that never came
    row_table<int> iprm, iprm_flag;  // flag -1: fixed value; >= 0: position in the composite's list
    row_table<std::string> sprm;
    row_table<int> sprm_flag;
    row_table<double> rprm;
    row_table<int> rprm_flag;
    row_table<double> sv;
    row_table<int> sv_flag;
    row_table<double> ig;
    row_table<int> ig_flag;
    // of mixed composites, whose elements are composites
    std::vector<int> library;  // [n_be_ttl] that of entry i_be, as in library_forms
    std::vector<char> nested;  // [n_be_ttl] 1: brought by a call of another mixed composite
    // small-signal half only
    std::vector<int> acprm_be;  // [n_be_ttl] position of the DC element whose operating point it uses; -1
    row_table<int> acparm_map;  // per rparm of the element: entry of the instance's rparm row that feeds it; -1

    int n_be(int e) const { return first_be[row_table<int>::at(e) + 1] - first_be[row_table<int>::at(e)]; }
};

// Output or bias words of composites. kind is an ov_kind.
struct output_table {
    word_list name;
    std::vector<int> kind;  // [pool words]
    std::vector<int> be;    // [pool words] element within the entry's flat list; -1 for nodes and power
    std::vector<int>
        index;  // [pool words] ov_nodev: composite's node. ov_aux, ov_cur, ov_iparm_ebe, ov_rparm_ebe: running
                // index over the concatenated aux, terminals, iparms, rparms of the entry's elements.
                // ov_var: composite's variable. ov_postproc, ov_postproc_ac: which of its results

    int count(int e) const { return name.count(e); }
    int at(int e, int j) const { return name.first[word_list::at(e)] + j; }
};

// Derived real parameters of all entries; row e holds those of entry e, the last words of its rparms in order.
struct derived_table {
    row_table<expression> row;
};

struct composite_flags {
    std::vector<int> allow_ac, compute_acp, compute_noisep, compute_rparms, postprocessor, postprocessor_ac;  // [n]
};

// Calls of other composites by the statements of one half; those of entry e are first[e] up to first[e + 1] - 1. The
// rows are the callee's parameters as the call sets them: flag -1: a fixed value, >= 0: position in the caller's list.
struct call_table {
    std::vector<int> first{0};      // [n entries + 1]
    std::vector<int> i_lib;         // [calls] callee
    std::vector<std::string> name;  // [calls] name= of the statement, "" if none
    std::vector<int> first_be;      // [calls] position of its first element in the caller's flat list of this half
    std::vector<int> first_be_dc;   // [calls] the same in the DC half
    row_table<int> iprm, iprm_flag;
    row_table<std::string> sprm;
    row_table<int> sprm_flag;
    row_table<double> rprm;
    row_table<int> rprm_flag;
};

// Composites of one family. list.node holds the main nodes (blocks: list.vr the main variables); list.rprm holds plain
// parameters, then derived ones.
struct composite_library {
    library_lists list;
    word_list auxnode;     // internal nodes (blocks: internal variables)
    word_list inac, ibac;  // ind_nodes_ac:, ind_branches_ac:
    composite_flags flag;
    output_table ov, bias, ovac;
    derived_table derived;
    element_table be, beac;
    call_table call, callac;
    std::vector<int> computes_rparms;  // [n] 1: the entry, or one that it calls at any depth, has compute_rparms
    bool any_compute_rparms = false;
    // of mixed composites, of which list.node, list.vr and list.dgtl are main names of three domains; else empty
    word_list auxvr, auxdgtl;     // internal variables, internal digital nodes; auxnode: analog ones
    output_table ovd;             // outputs of the digital line
    std::vector<int> n_sv, n_ig;  // [n] start values and first guesses of analog calls; in list.sv, list.ig those of
                                  // digital calls stand behind them, whole numbers

    int n() const { return list.n(); }
    int n_nd(int e) const { return list.node.count(e); }
    int n_ttlnd(int e) const { return list.node.count(e) + auxnode.count(e); }
    int n_rprm_derived(int e) const { return derived.row.size(e); }
    int n_rprm_plain(int e) const { return list.rprm.count(e) - derived.row.size(e); }
    int find(std::string_view name) const { return list.find(name); }
};

// One name a family; what they hold is the same.
using eels_class = composite_library;
using gels_class = composite_library;
using dels_class = composite_library;
using xels_class = composite_library;
using gmes_class = composite_library;

// In element tables of mixed composites a parameter that the call leaves at the callee's own default has this flag.
inline constexpr int left_at_default = -2;

// Reads .tnlaux/eels.aux and expands every entry. A callee stands earlier in the file than its callers.
eels_class read_eels(const ebes_class& ebes, const ebac_class& ebac);
void read_eels_file(const std::string& path, const ebes_class& ebes, const ebac_class& ebac, eels_class& eels);

// The same from .tnlaux/gels.aux.
gels_class read_gels(const gbes_class& gbes, const gbac_class& gbac);

// The same from .tnlaux/dels.aux.
dels_class read_dels(const dbes_class& dbes);
xels_class read_xels(const xbes_class& xbes, const xbac_class& xbac);

// Evaluates the derived parameters of entry e on one row of its rparms, in order.
void eval_rprm_1(const composite_library& lib, int e, double* rprm);
