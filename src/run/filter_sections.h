// filter_sections.h -- the parameters of the sections that rational filters are made of.
#pragma once

struct circuit;

// Expands the transfer function of each instance of the explicit composite `filter_1` and writes the parameters of its
// units. Once, behind the elaboration: those parameters are linked to none of the composite, so nothing writes them
// later. Halts as expand_filter does, and where another composite calls it, whose instances do not know its
// coefficients.
void xce_filter_1(circuit& c);
