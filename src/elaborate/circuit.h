// circuit.h -- everything that elaboration makes of a deck, in one place.
#pragma once
#include "deck/circuit_file.h"
#include "deck/gprm_class.h"
#include "deck/ov_class.h"
#include "deck/tmpdim_class.h"
#include "elaborate/cct_class.h"
#include "elaborate/computed_parms.h"
#include "elaborate/instances.h"
#include "elaborate/rparm_links.h"
#include "elaborate/units.h"
#include "library/basic_library.h"
#include "library/composite/composite_library.h"
#include "library/composite/model_statements.h"

// The libraries of a run. Families without a reader are empty.
struct libraries {
    ebes_class ebes;
    ebac_class ebac;
    gbes_class gbes;
    gbac_class gbac;
    dbes_class dbes;
    xbes_class xbes;
    xbac_class xbac;
    eels_class eels;
    gels_class gels;
    dels_class dels;
    xels_class xels;
    gmes_class gmes;

    const composite_library& composites(int fam) const;  // of a family of element statements
};

// A circuit ready to be solved. Built once; afterwards parameter values and unit values change, nothing else.
struct circuit {
    circuit_file cf;
    libraries lib;
    gprm_class gprm;
    model_class ecem, gcem, dcem, gmem, xcem;
    ov_class ov;
    tmpdim_class tmpdim;
    cct_class cct;
    eelu_class eelu;
    gelu_class gelu;
    delu_class delu;
    xelu_class xelu;
    gmeu_class gmeu;
    ebeu_class ebeu;
    ebau_class ebau;
    gbeu_class gbeu;
    gbau_class gbau;
    dbeu_class dbeu;
    xbeu_class xbeu;
    xbau_class xbau;
    rparm_links links;
    computed_parms computed;

    instance_core& instances(int fam);
    const instance_core& instances(int fam) const;
    const model_class& models(int fam) const;
};

// The deck's models of composites, in the order in which their faults are to show.
void read_models_of_deck(circuit& c);

// The elaboration: names, instances, units, maps, outputs, reference nodes. Fills cct and everything below it; halts
// with the deck's first fault.
void elaborate(circuit& c);
// Its two halves: instances with the names that they use, and all that is made of these.
void bind_statements(circuit& c);
void build_units(circuit& c);

// Classification after elaboration, in the order in which its faults are to show.
void classify(circuit& c);
void check_linear(circuit& c);
void check_one_time(circuit& c);  // history, reset, limiting, modulo, parameter links

// After a write to instance i of a family: derived parameters, then every linked parameter of its units.
void instance_changed(circuit& c, int fam, int i);
// After a write to greal k: its dependents, every parameter tied to one of them, and the instances concerned.
void greal_changed(circuit& c, int k);
// Behind all writes that belong together: halts when an expression of the deck, or a derived parameter of an instance,
// has become infinite or not a number.
void check_expressions(const circuit& c);
void check_derived(const circuit& c, int fam, int i);  // the second half for one instance
