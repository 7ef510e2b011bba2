// computed_parms.h -- instances whose composites compute parameters from others by functions of their own.
#pragma once
#include <array>
#include <string>
#include <vector>

#include "elaborate/units.h"
#include "models/composite_functions.h"

struct circuit;
struct flags_class;

// A called composite inside of an instance, with the values that its parameters have there. Both halves have nodes of
// their own, as each says itself what it gives a callee.
struct computed_node {
    int e = -1;           // composite
    int parent = -1;      // node of the same list; -1: the instance itself
    int call = -1;        // of call_table
    int first_unit = -1;  // of its elements in this half
    int first_dc = -1;    // and in the DC half
    std::string path;     // "L1.core": in messages
    std::vector<int> iprm;
    std::vector<std::string> sprm;
    std::vector<double> rprm, rprm_ac, outvar;
};

// An instance with something to compute. Callers stand before callees; of called composites only those are there that
// compute, or that call one which does, at any depth.
struct computed_instance {
    int fam = -1, instance = -1;
    bool rparms = false;   // compute_rparms, its own or that of a called composite
    bool acparms = false;  // compute_acp alike, or an acparm_map
    std::vector<computed_node> nodes, nodes_ac;
};

struct computed_parms {
    std::vector<computed_instance> list;                             // empty if nothing in use computes anything
    std::array<std::vector<int>, n_family> of_instance;              // [instances] position in the list; -1
    std::array<std::vector<composite_function>, n_family> function;  // [composites] null: there is none
    std::vector<char*> sparm;                                        // of the call in hand
    std::vector<double> derived;                                     // before it

    const computed_instance* find(int fam, int i) const {
        const std::vector<int>& of = of_instance[static_cast<std::size_t>(fam)];
        const std::size_t k = static_cast<std::size_t>(i);
        return k < of.size() && of[k] >= 0 ? &list[static_cast<std::size_t>(of[k])] : nullptr;
    }
};

// Finds the instances; computed.function is filled by the caller before. Halts for a composite with compute_rparms
// that has no function.
void build_computed(circuit& c);

// Derived parameters, then the functions of composites with compute_rparms, callers before callees, then all linked
// parameters of the units of both halves. A derived parameter that a function has not rewritten follows what the
// function wrote. Halts for a parameter that is no finite number.
void compute_rparms(circuit& c, computed_instance& x, flags_class& flags);
// The same for small signals, on rprm_ac: functions of composites with compute_acp, linked parameters and acparm_map of
// the small-signal units. Output values are those that stand in the units. Halts for a function that is not there.
void compute_acp(circuit& c, computed_instance& x, flags_class& flags);

// What called composites have computed goes to their units once more, on top of what came by the links alone.
void push_computed(circuit& c, const computed_instance& x);

// Integer and real parameters of a composite to the units of its elements, by the links. use_map: by acparm_map, too;
// else what that feeds keeps its last value.
void push_linked(const element_table& be, int e, int first_unit, const int* iprm, const double* rprm, bool use_map,
                 unit_core& unit);
