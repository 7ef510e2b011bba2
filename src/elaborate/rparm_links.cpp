#include "elaborate/rparm_links.h"

#include "base/at.h"
#include "base/halt.h"
#include "elaborate/families.h"

namespace {
constexpr family searched[] = {fam_e, fam_gm, fam_d, fam_g, fam_x};

// What differs between writing and reading.
struct link_kind {
    const char* routine;
    const char* block;  // of the message
    std::vector<int> entry_flags::*flag;
    std::vector<rparm_link> rparm_links::*list;
    const char* word;  // rparm of the block that takes part
    int rparm_link::*place;
};
constexpr link_kind writers = {"set_rparm_1",     "set_rparm", &entry_flags::set_rparm_1,
                               &rparm_links::set, "k",         &rparm_link::factor};
constexpr link_kind readers = {"get_rparm_1",     "get_rparm", &entry_flags::get_rparm_1,
                               &rparm_links::get, "value",     &rparm_link::value};

// The blocks of a family that may have links.
struct linked_blocks {
    const unit_core& unit;
    const basic_library& lib;
    const row_table<int>& vr;
    const char* word;  // "gbe": of messages
    bool is_explicit;
};

void find_target(const circuit& c, const link_kind& kind, const linked_blocks& blocks, const char* element,
                 const char* parm, rparm_link& link) {
    for (family fam : searched) {
        link.instance = c.instances(fam).find(element);
        if (link.instance < 0) continue;
        link.family = fam;
        break;
    }
    const std::string head = line("cct_class::", kind.routine, ": ");
    const std::string one_of = line("   one of the ", kind.block, " type ", blocks.word, ".");
    if (link.instance < 0)
        halt({head + "element not identified in", one_of, line("   element name is: ", element), "   Halting..."});
    const library_lists& list = c.lib.composites(link.family).list;
    const int e = c.instances(link.family).i_lib[at(link.instance)];
    link.index = list.rprm.find(e, parm);
    link.is_start = link.index < 0;
    if (link.is_start) link.index = list.sv.find(e, parm);
    if (link.index < 0) halt({head + "parameter not identified in", one_of, line("   parameter name is: ", parm)});
}

// Where the composite of the target feeds its units from the parameter.
void find_source(circuit& c, rparm_link& link, int fam, int instance, int index) {
    const instance_core& inst = c.instances(fam);
    const element_table& be = c.lib.composites(fam).be;
    const int e = inst.i_lib[at(instance)];
    for (int k = 0; k < be.n_be(e); ++k) {
        const row_table<int>& flag = link.is_start ? be.sv_flag : be.rprm_flag;
        const int b = be.first_be[at(e)] + k;
        for (int j = 0; j < flag.size(b); ++j) {
            if (flag.row(b)[j] != index) continue;
            if (fam == fam_gm) {  // its calls are instances
                find_source(c, link, family_of_library(be.library[at(b)]).number, inst.part.row(instance)[k], j);
                continue;
            }
            if (family_forms[fam].units.empty()) continue;
            const unit_core& unit = family_forms[fam].units[0].units(c);
            const int u = inst.first_unit[at(instance)] + k;
            ++link.n_source;
            link.source = (link.is_start ? unit.sv : unit.rprm).first[at(u)] + j;
            link.source_unit = u;
            link.source_family = fam;
        }
    }
}

void find_links_of(circuit& c, const link_kind& kind, const linked_blocks& blocks) {
    for (int u = 0; u < blocks.unit.n; ++u) {
        const int s = blocks.unit.i_lib[at(u)];
        if (!(blocks.lib.flag.*(kind.flag))[at(s)]) continue;
        // An explicit writer has its value in an output; inputs come first.
        const bool writes = kind.flag == &entry_flags::set_rparm_1;
        const int first = blocks.is_explicit && writes ? c.xbeu.n_input[at(u)] : 0;
        if (blocks.unit.sprm.size(u) < 2 || blocks.vr.size(u) <= first)
            halt({line("cct_class::", kind.routine, ": the block ", blocks.lib.list.entry[s], " needs"),
                  "   two string parameters and a variable.", "   Halting..."});
        rparm_link link;
        link.is_explicit = blocks.is_explicit;
        find_target(c, kind, blocks, blocks.unit.sprm.row(u)[0], blocks.unit.sprm.row(u)[1], link);
        link.variable = blocks.vr.row(u)[first];
        if (const int j = blocks.lib.list.rprm.find(s, kind.word); j >= 0)
            link.*(kind.place) = blocks.unit.rprm.first[at(u)] + j;
        find_source(c, link, link.family, link.instance, link.index);
        (c.links.*(kind.list)).push_back(link);
    }
}

void find_links(circuit& c, const link_kind& kind) {
    (c.links.*(kind.list)).clear();
    find_links_of(c, kind, {c.gbeu.unit, c.lib.gbes, c.gbeu.vr, "gbe", false});
    find_links_of(c, kind, {c.xbeu.unit, c.lib.xbes, c.xbeu.vr, "xbe", true});
}
}  // namespace

void set_rparm_1(circuit& c) { find_links(c, writers); }
void get_rparm_1(circuit& c) { find_links(c, readers); }
