// rparm_links.h -- parameters of elements that blocks write or read while a transient runs.
#pragma once
#include <vector>

struct circuit;

// A block that declares set_rparm_1 or get_rparm_1, and the parameter that its strings `element` and `parm` name.
struct rparm_link {
    bool is_explicit = false;  // the block is an explicit one, else a general one
    int variable = -1;  // variable of the block, at unit level: the first; of an explicit writer its first output
    int factor = -1;    // of a writer: place of its `k` in rprm of the units; -1: 1
    int value = -1;     // of a reader: place of its `value` there; -1: the parameter goes to the variable itself
    int family = -1, instance = -1;
    bool is_start = false;  // a stparm, else an rparm
    int index = -1;         // in the instance's row
    // of a reader: where the parameter stands at unit level
    int n_source = 0;        // places in units of the instance that the composite feeds from it
    int source = -1;         // the last of them, in rprm or sv of the family's units
    int source_unit = -1;    // and its unit
    int source_family = -1;  // family of that unit: of a mixed instance that of one of its parts
};

struct rparm_links {
    std::vector<rparm_link> set, get;  // in the order of the units, explicit blocks behind general ones
};

// Looks up what every writer and reader names: string parameters 0 (instance) and 1 (one of its rparms, else of its
// stparms). Instances are searched in the order eelement, gmelement, delement, gelement, xelement. Halts for a name
// that is not there.
void set_rparm_1(circuit& c);
void get_rparm_1(circuit& c);
