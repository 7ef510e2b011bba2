// mixed.h -- what the statements of mixed instances bring: an instance of its own family for each call.
#pragma once
#include <array>

#include "elaborate/instance_outputs.h"

using instance_counts = std::array<int, n_family>;

// Gives each call the number that its instance will have, behind those of the deck's own statements (count: how many
// of each family), and its name; and each mixed instance room for its internal names, behind those of the deck.
void number_parts(circuit& c, const std::vector<element_statement>& statements, const instance_counts& count);

// The instances themselves, by mixed instance and then in the order of its calls. unread: mixed instances without
// values, whose parts have none.
void make_parts(circuit& c, const std::vector<char>& unread, const output_index& outputs);

// Hands the parameters of mixed instance i down to its parts, and brings these to their units.
void parts_changed(circuit& c, int i);

// f(family, instance) for what has units: the instance itself, or the parts of a mixed one.
template <class F>
void for_each_part(const circuit& c, int fam, int i, F f) {
    if (fam != fam_gm) return f(fam, i);
    const element_table& be = c.lib.gmes.be;
    const int first = be.first_be[static_cast<std::size_t>(c.gmeu.i_lib[static_cast<std::size_t>(i)])];
    for (int k = 0; k < c.gmeu.part.size(i); ++k)
        f(static_cast<int>(family_of_library(be.library[static_cast<std::size_t>(first + k)]).number),
          c.gmeu.part.row(i)[k]);
}
