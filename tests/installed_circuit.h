// installed_circuit.h -- circuits from text on the libraries that the build installs, for tests and measurements.
#pragma once
#include <string_view>

#include "elaborate/circuit.h"

// The libraries of a folder with ebes.aux, ebac.aux and eels.aux; other families are empty.
libraries read_libraries_of(const std::string& folder);
const libraries& installed_libraries();

// Everything of a deck that is read before the elaboration. The libraries are copied; the sizes are generous.
circuit circuit_of(std::string_view deck, const libraries& lib);
