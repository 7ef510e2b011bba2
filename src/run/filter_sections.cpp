#include "run/filter_sections.h"

#include <algorithm>
#include <array>

#include "base/at.h"
#include "base/halt.h"
#include "elaborate/circuit.h"
#include "models/partial_fractions.h"

namespace {
constexpr const char *composite_type = "filter_1", *section_type = "filter_1", *sum_type = "sum_filter_1";

std::string_view type_of(const circuit& c, int unit) { return c.lib.xbes.list.entry[c.xbeu.unit.i_lib[at(unit)]]; }

// Position of a parameter by its word. Libraries are read with the deck, so an entry need not have it.
template <class T>
int parameter(const pair_list<T>& list, const library_lists& lib, int e, std::string_view word) {
    const int i = list.find(e, word);
    if (i < 0) halt({line("dp_class::xce_filter_1: ", lib.entry[e], " has no parameter ", word, "."), "  Halting..."});
    return i;
}

double& real_of(circuit& c, int unit, std::string_view word) {
    const library_lists& list = c.lib.xbes.list;
    return c.xbeu.unit.rprm.row(unit)[parameter(list.rprm, list, c.xbeu.unit.i_lib[at(unit)], word)];
}
int& integer_of(circuit& c, int unit, std::string_view word) {
    const library_lists& list = c.lib.xbes.list;
    return c.xbeu.unit.iprm.row(unit)[parameter(list.iprm, list, c.xbeu.unit.i_lib[at(unit)], word)];
}

using coefficients = std::array<double, max_filter_degree + 1>;

filter_sections expansion_of(const circuit& c, int instance) {
    const library_lists& list = c.lib.xels.list;
    const int e = c.xelu.i_lib[at(instance)];
    const auto degree = [&](std::string_view word) {
        return c.xelu.iprm.row(instance)[parameter(list.iprm, list, e, word)];
    };
    const auto polynomial = [&](const char* letter) {
        coefficients a;
        for (std::size_t k = 0; k < a.size(); ++k)
            a[k] = c.xelu.rprm.row(instance)[parameter(list.rprm, list, e, line(letter, k))];
        return a;
    };
    const int degree_n = degree("degree_n"), degree_d = degree("degree_d");
    const coefficients n = polynomial("n"), d = polynomial("d");
    return expand_filter(degree_n, n.data(), degree_d, d.data());
}

void write_sections(circuit& c, int instance) {
    const filter_sections f = expansion_of(c, instance);
    std::size_t k = 0;
    for (int u = c.xelu.first_unit[at(instance)]; u < c.xelu.first_unit[at(instance) + 1]; ++u) {
        if (type_of(c, u) == sum_type) {
            real_of(c, u, "a0") = f.a0;
            for (std::size_t i = 0; i < f.section.size(); ++i) {
                real_of(c, u, line("c", i + 1)) = f.section[i].c;
                real_of(c, u, line("d", i + 1)) = f.section[i].d;
            }
        } else if (type_of(c, u) == section_type && k < f.section.size()) {
            const filter_section& s = f.section[k++];
            integer_of(c, u, "order") = s.order;
            real_of(c, u, "kx") = s.kx;
            real_of(c, u, "kp") = s.kp;
            real_of(c, u, "r") = s.r;
            real_of(c, u, "b0") = s.b0;
            real_of(c, u, "b1") = s.b1;
        }
    }
}

// A sum whose factors are all 0 stands in a composite that calls filter_1.
void check_callers(circuit& c) {
    for (int u = 0; u < c.xbeu.n(); ++u) {
        const int e = c.xelu.i_lib[at(c.xbeu.unit.i_inst[at(u)])];
        if (type_of(c, u) != sum_type || c.lib.xels.list.entry[e] == composite_type) continue;
        const double* parameters = c.xbeu.unit.rprm.row(u);
        if (std::all_of(parameters, parameters + c.xbeu.unit.rprm.size(u), [](double x) { return x == 0; }))
            halt({"dp_class::xce_filter_1: filter_1 cannot be called by a composite.",
                  line("  The composite is: ", c.lib.xels.list.entry[e]), "  Halting..."});
    }
}
}  // namespace

void xce_filter_1(circuit& c) {
    for (int i = 0; i < c.xelu.n; ++i)
        if (c.lib.xels.list.entry[c.xelu.i_lib[at(i)]] == composite_type) write_sections(c, i);
    check_callers(c);
}
