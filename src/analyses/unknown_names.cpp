#include "analyses/unknown_names.h"

#include <algorithm>

#include "base/at.h"
#include "base/halt.h"

namespace {
// "word of instance" for value k of tables in which a unit's begin at first[unit].
std::string name_in_unit(const unit_core& unit, const std::vector<int>& first, const word_list& words,
                         const instance_core& instances, int k) {
    const int u = static_cast<int>(std::upper_bound(first.begin(), first.end(), k) - first.begin()) - 1;
    return line(words.word(unit.i_lib[at(u)], k - first[at(u)]), " of ", instances.name[at(unit.i_inst[at(u)])]);
}
}  // namespace

std::string name_of_node(const circuit& c, int node) {
    const name_table& ect = c.cct.ect;
    if (const int k = ect.eu_to[at(node)]; k >= 0) return ect.name[at(k)];
    for (int i = 0; i < c.eelu.n; ++i) {
        const int e = c.eelu.i_lib[at(i)], n_main = c.lib.eels.n_nd(e);
        for (int k = n_main; k < c.eelu.nd.size(i); ++k) {
            if (ect.lu_to_eu[at(c.eelu.nd.row(i)[k])] != node) continue;
            const std::string_view word = c.lib.eels.auxnode.word(e, k - n_main);
            // Nodes inside of a composite that this one calls have lost their names.
            return word.empty() ? line("(internal node ", k - n_main, ") of ", c.eelu.name[at(i)])
                                : line(word, " of ", c.eelu.name[at(i)]);
        }
    }
    return line("(internal node ", node, ")");
}

std::string name_of_unknown(const circuit& c, const mat_class& mat, int column) {
    const svec_offsets& o = mat.offs;
    const library_lists& of_e = c.lib.ebes.list;
    if (column < o.cur) return name_of_node(c, column < c.ebeu.ref_nd ? column : column + 1);
    if (column < o.eauxs)
        return line("current ", name_in_unit(c.ebeu.unit, c.ebeu.nd.first, of_e.node, c.eelu,
                                             mat.terminal_of_unknown[at(column - o.cur)]));
    if (column < o.eaux) return name_in_unit(c.ebeu.unit, c.ebeu.first_auxs, of_e.auxs, c.eelu, column - o.eauxs);
    if (column < o.locv)
        return name_in_unit(c.ebeu.unit, c.ebeu.first_aux, of_e.aux, c.eelu, mat.aux_of_unknown[at(column - o.eaux)]);
    if (column < o.gvar) return name_in_unit(c.ebeu.unit, c.ebeu.first_locv, of_e.locv, c.eelu, column - o.locv);
    if (column >= o.gaux)
        return name_in_unit(c.gbeu.unit, c.gbeu.first_aux, c.lib.gbes.list.aux, c.gelu, column - o.gaux);
    const name_table& gct = c.cct.gct;
    const int k = gct.eu_to[at(column - o.gvar)];
    return k >= 0 ? gct.name[at(k)] : line("(internal variable ", column - o.gvar, ")");
}
