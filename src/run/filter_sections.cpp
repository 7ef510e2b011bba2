#include "run/filter_sections.h"

#include <algorithm>

#include "base/at.h"
#include "base/halt.h"
#include "elaborate/circuit.h"
#include "models/partial_fractions.h"

namespace {
constexpr const char *composite_type = "filter_1", *section_type = "filter_1", *sum_type = "sum_filter_1";

std::string_view type_of(const circuit& c, int unit) { return c.lib.xbes.list.entry[c.xbeu.unit.i_lib[at(unit)]]; }

// The parameter of a unit by its word.
double& real_of(circuit& c, int unit, std::string_view word) {
    return c.xbeu.unit.rprm.row(unit)[c.lib.xbes.list.rprm.find(c.xbeu.unit.i_lib[at(unit)], word)];
}
int& integer_of(circuit& c, int unit, std::string_view word) {
    return c.xbeu.unit.iprm.row(unit)[c.lib.xbes.list.iprm.find(c.xbeu.unit.i_lib[at(unit)], word)];
}

filter_sections expansion_of(const circuit& c, int instance) {
    const library_lists& list = c.lib.xels.list;
    const int e = c.xelu.i_lib[at(instance)];
    const auto degree = [&](std::string_view word) { return c.xelu.iprm.row(instance)[list.iprm.find(e, word)]; };
    const double* real = c.xelu.rprm.row(instance);
    // Coefficients follow one another from n0 and from d0 on.
    return expand_filter(degree("degree_n"), real + list.rprm.find(e, "n0"), degree("degree_d"),
                         real + list.rprm.find(e, "d0"));
}

void write_sections(circuit& c, int instance) {
    const filter_sections f = expansion_of(c, instance);
    std::size_t k = 0;
    for (int u = c.xelu.first_unit[at(instance)]; u < c.xelu.first_unit[at(instance) + 1]; ++u) {
        if (type_of(c, u) == sum_type) {
            real_of(c, u, "a0") = f.a0;
            double *weight_z = &real_of(c, u, "c1"), *weight_zd = &real_of(c, u, "d1");
            for (const filter_section& s : f.section) {
                *weight_z++ = s.c;
                *weight_zd++ = s.d;
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
