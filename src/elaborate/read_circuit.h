// read_circuit.h -- from the sections of a deck and the texts of the libraries to a circuit that can be elaborated: the
// one road for the simulator, the check of decks, tests and measurements.
#pragma once
#include <functional>
#include <string>

#include "base/flags_class.h"
#include "base/text_file.h"
#include "deck/library_forms.h"
#include "elaborate/circuit.h"

// Where a library of library_forms stands, as one of basic elements or of composites, and the global numbers of its
// entries, if it has a list file.
struct library_place {
    basic_library libraries::*basic;
    composite_library libraries::*composites;
    std::vector<int> flags_class::*numbers;
};
extern const library_place library_places[n_libraries];

// The text of a library by its path in a working folder, ".tnlaux/ebes.aux". who: for the message where it is not
// there.
using library_source = std::function<text_file(const std::string& path, const std::string& who)>;

// All libraries, in the order in which their faults show. Families that have no reader must be empty.
void read_libraries(libraries& lib, const library_source& source = open_text_file);

// What is done when a step of read_circuit is: the simulator writes dumps of what there is.
struct reading_steps {
    std::function<void()> constants = {}, models = {};
};
// From c.cf and c.lib: constants, models and output variables of the deck. elaborate(c) needs the sizes c.tmpdim too.
void read_circuit(circuit& c, const reading_steps& done = {});
