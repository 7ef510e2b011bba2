#include "elaborate/flatten.h"

#include <cstring>

#include "base/at.h"
#include "base/checks.h"
#include "base/halt.h"
#include "elaborate/families.h"

using B = element_table;
using I = instance_core;
using L = library_lists;

namespace {
// ---- units from elements ----

// Unit-level numbers of what the units of a family share, by first use: nodes, or variables.
struct numbering {
    row_table<int> element_table::*element;
    row_table<int> instance_core::*instance;
    const name_table& names;
    std::vector<int>& lu_to;  // instance level -> unit level
    int& n;
    row_table<int>& unit;
};
// A list of numbers that goes from the instance to its units through the composite.
struct passed_list {
    row_table<int> element_table::*element;
    row_table<int> instance_core::*instance;
    row_table<int>* unit;
};
// A list of templates whose words are numbered through over all units.
struct counted_list {
    word_list library_lists::*list;
    std::vector<int>* first;
};

// What becomes of the elements of one kind of instance.
struct flattening {
    const element_table& be;
    const basic_library& lib;
    instance_core& inst;
    unit_core& unit;
    std::vector<int>& first_unit;  // of instances
    bool with_start_values;
    numbering number;
    std::vector<passed_list> passed;
    std::vector<counted_list> counted;

    flattening(circuit& c, family fam, const unit_table& t, const numbering& w, std::vector<passed_list> through,
               std::vector<counted_list> over)
        : be(c.lib.composites(fam).*t.elements),
          lib(c.lib.*t.templates),
          inst(c.instances(fam)),
          unit(t.units(c)),
          first_unit(inst.*t.first_unit),
          with_start_values(t.with_start_values),
          number(w),
          passed(std::move(through)),
          counted(std::move(over)) {}

    int element(int u) const {
        const int i = unit.i_inst[at(u)];
        return be.first_be[at(inst.i_lib[at(i)])] + u - first_unit[at(i)];
    }
};

// An instance's node as the unit level sees it: ground words stand for the reference.
int without_ground_words(const name_table& names, int node) {
    return node < names.n() && names.ref >= 0 && names.is_ground[at(node)] ? names.ref : node;
}

// Parameters of one unit: the composite's fixed values, or through the link those of the instance's row.
template <class T>
void add_parameters(const row_table<T>& fixed, const row_table<int>& flag, const row_table<T>& from, row_table<T>& to,
                    int b, int i) {
    for (int j = 0; j < fixed.size(b); ++j) {
        const int link = flag.row(b)[j];
        to.add(link < 0 ? fixed.row(b)[j] : from.row(i)[link]);
    }
    to.close_row();
}

void add_texts(const flattening& f, int b, int i) {
    for (int j = 0; j < f.be.sprm.size(b); ++j) {
        const int link = f.be.sprm_flag.row(b)[j];
        const std::string& text = link < 0 ? f.be.sprm.row(b)[j] : f.inst.sprm.row(i)[link];
        auto bytes = std::make_unique<char[]>(64);
        std::strncpy(bytes.get(), text.c_str(), 63);
        f.unit.sprm.add(bytes.get());
        f.unit.text.push_back(std::move(bytes));
    }
    f.unit.sprm.close_row();
}

void add_unit(const flattening& f, int b, int i) {
    const int s = f.be.i_be[at(b)];
    f.unit.i_lib.push_back(s);
    f.unit.i_inst.push_back(i);
    const auto through = [&](auto element, auto instance, int j) {
        return (f.inst.*instance).row(i)[(f.be.*element).row(b)[j]];
    };
    const numbering& w = f.number;
    for (int j = 0; j < (f.be.*w.element).size(b); ++j) {
        int& to = w.lu_to[at(without_ground_words(w.names, through(w.element, w.instance, j)))];
        if (to < 0) to = w.n++;
        w.unit.add(to);
    }
    w.unit.close_row();
    for (const passed_list& p : f.passed) {
        for (int j = 0; j < (f.be.*p.element).size(b); ++j) p.unit->add(through(p.element, p.instance, j));
        p.unit->close_row();
    }
    add_parameters(f.be.iprm, f.be.iprm_flag, f.inst.iprm, f.unit.iprm, b, i);
    add_parameters(f.be.rprm, f.be.rprm_flag, f.inst.rprm, f.unit.rprm, b, i);
    if (f.with_start_values) {
        add_parameters(f.be.sv, f.be.sv_flag, f.inst.sv, f.unit.sv, b, i);
        add_parameters(f.be.ig, f.be.ig_flag, f.inst.ig, f.unit.ig, b, i);
    } else {
        f.unit.sv.close_row();
        f.unit.ig.close_row();
    }
    add_texts(f, b, i);
    for (const counted_list& l : f.counted) l.first->push_back(l.first->back() + (f.lib.list.*l.list).count(s));
    f.unit.first_func.push_back(f.unit.first_func.back() + f.lib.func.n_func(s));
    ++f.unit.n;
}

void flatten(const flattening& f) {
    f.number.lu_to.assign(at(f.number.names.n_lu), -1);
    for (const counted_list& l : f.counted) *l.first = {0};
    f.first_unit = {0};
    for (int i = 0; i < f.inst.n; ++i) {
        const int e = f.inst.i_lib[at(i)];
        for (int b = f.be.first_be[at(e)]; b < f.be.first_be[at(e) + 1]; ++b) add_unit(f, b, i);
        f.first_unit.push_back(f.unit.n);
    }
    // Ground words share the reference's number, so that outputs and sensed nodes on them read 0.
    const name_table& names = f.number.names;
    if (names.ref >= 0)
        for (int k = 0; k < names.n(); ++k)
            if (names.is_ground[at(k)]) f.number.lu_to[at(k)] = f.number.lu_to[at(names.ref)];
}

// ---- sensed nodes and branches, which need all units to exist ----

int sensed_node(const flattening& f, int u, int j) {
    const int i = f.unit.i_inst[at(u)], b = f.element(u);
    const int lu =
        f.be.in_flag.row(b)[j] < 0 ? f.inst.nd.row(i)[f.be.in.row(b)[j]] : f.inst.in.row(i)[f.be.in_flag.row(b)[j]];
    return f.number.lu_to[at(without_ground_words(f.number.names, lu))];
}

// The unit of a sensed branch; -1 with the fault, if it is none.
int sensed_unit(const flattening& f, int u, int j, const char*& fault) {
    const int i = f.unit.i_inst[at(u)], b = f.element(u), flag = f.be.ib_flag.row(b)[j];
    fault = "  flag_ib0 = -2 for some ece";
    if (flag == -2) return -1;
    if (flag < 0) return f.first_unit[at(i)] + f.be.ib.row(b)[j];
    const int other = f.inst.ib.row(i)[flag];
    fault = "  ind. branch must have a single ebe.";
    return f.first_unit[at(other) + 1] - f.first_unit[at(other)] == 1 ? f.first_unit[at(other)] : -1;
}

[[noreturn]] void unit_fault(const char* what, const char* halting) {
    halt({"ebeu_class:set_values_1", what, halting});
}

void link_sensed(const flattening& f, ebeu_class& u) {
    for (int k = 0; k < u.unit.n; ++k) {
        for (int j = 0; j < f.be.in.size(f.element(k)); ++j) {
            const int nd = sensed_node(f, k, j);
            if (nd < 0) unit_fault("   An independent node not assigned?", "   Halting..");
            u.in.add(nd);
        }
        u.in.close_row();
        for (int j = 0; j < f.be.ib.size(f.element(k)); ++j) {
            const char* fault = "";
            const int target = sensed_unit(f, k, j, fault);
            if (target < 0) unit_fault(fault, "  Halting..");
            if (u.first_aux[at(target) + 1] == u.first_aux[at(target)])
                unit_fault("  ind. branch has no auxiliary variable.", "  Halting..");
            u.ib.add(target);
            u.ib_aux.add(u.first_aux[at(target)]);
            const bool has_auxs = u.first_auxs[at(target) + 1] > u.first_auxs[at(target)];
            u.ib_auxs.add(has_auxs ? u.first_auxs[at(target)] : -1);
        }
        u.ib.close_row();
        u.ib_aux.close_row();
        u.ib_auxs.close_row();
    }
}

// Sensed nodes and branches may be without a small-signal number: an instance need not have a small-signal half.
void link_sensed(const flattening& f, ebau_class& u) {
    for (int k = 0; k < u.unit.n; ++k) {
        const char* fault = "";
        for (int j = 0; j < f.be.in.size(f.element(k)); ++j) u.in.add(sensed_node(f, k, j));
        u.in.close_row();
        for (int j = 0; j < f.be.ib.size(f.element(k)); ++j) u.ib.add(sensed_unit(f, k, j, fault));
        u.ib.close_row();
    }
}

// For small-signal units: that of the element whose bias each takes.
std::vector<int> units_of_bias(const flattening& f) {
    std::vector<int> units;
    for (int u = 0; u < f.unit.n; ++u) {
        const int element = f.be.acprm_be[at(f.element(u))];
        units.push_back(element < 0 ? -1 : f.inst.first_unit[at(f.unit.i_inst[at(u)])] + element);
    }
    return units;
}

// For each digital node the units that read it, in their order.
row_table<int> readers_of_nodes(const dbeu_class& u) {
    std::vector<std::vector<int>> readers(at(u.n_nd));
    for (int k = 0; k < u.n(); ++k)
        for (int j = 0; j < u.n_input[at(k)]; ++j) {
            std::vector<int>& list = readers[at(u.nd.row(k)[j])];
            if (list.empty() || list.back() != k) list.push_back(k);
        }
    row_table<int> table;
    for (const std::vector<int>& list : readers) {
        for (const int k : list) table.add(k);
        table.close_row();
    }
    return table;
}

// Numbers at instance level, as those at unit level. A name of the deck has been looked at before; one inside of a
// mixed instance must have been touched by a unit of its own domain too.
void link_numbers(const std::vector<int>& numbers, const name_table& names, const char* problem,
                  std::vector<int>& at_unit) {
    at_unit.clear();
    for (int number : numbers) {
        at_unit.push_back(names.lu_to_eu[at(number)]);
        if (at_unit.back() < 0) halt({"ect_to_ebeu_nd: i_eelu_nd = -1", line("   for i_ect_nd = ", number), problem});
    }
}

// ---- values ----

template <class... T>
void zeros(std::size_t n, std::vector<T>&... values) {
    (values.assign(n, T{}), ...);
}
}  // namespace

void flatten_ebeu(circuit& c) {
    ebeu_class& u = c.ebeu;
    name_table& ect = c.cct.ect;
    const flattening f(c, fam_e, family_forms[fam_e].units[0], {&B::node, &I::nd, ect, ect.lu_to_eu, u.n_nd, u.nd},
                       {{&B::dgtl, &I::dgtl, &u.dgtl}, {&B::vr, &I::vr, &u.vr}, {&B::xvr, &I::xvr, &u.xvr}},
                       {{&L::aux, &u.first_aux}, {&L::auxs, &u.first_auxs}, {&L::locv, &u.first_locv}});
    flatten(f);
    for (int k = 0; k < u.n(); ++k) {
        if (c.lib.ebes.flag.ground_dummy[at(u.unit.i_lib[at(k)])])
            u.ground_units.push_back(k);
        else
            u.n_ttlnd_kcl += u.nd.size(k);
    }
    ect.n_eu = u.n_nd;
    link_sensed(f, u);
    zeros(at(u.n_nd), u.val_nd, u.val_nd_new);
    zeros(u.nd.data.size(), u.nodev, u.nodev_new, u.cur_nd);
    zeros(u.in.data.size(), u.vin);
    zeros(u.ib.data.size(), u.curind);
    zeros(u.vr.data.size(), u.val_vr);
    zeros(u.xvr.data.size(), u.val_xvr);
    zeros(u.dgtl.data.size(), u.dvar);
    zeros(at(u.n_ttlaux()), u.aux, u.aux_new);
    zeros(at(u.n_ttlauxs()), u.auxs, u.auxs_new);
    zeros(at(u.n_ttllocv()), u.locv);
    zeros(at(u.unit.n_ttlf()), u.f);
    zeros(at(u.n()), u.time_nextbreak, u.break_jumps);
}

void flatten_gbeu(circuit& c) {
    gbeu_class& u = c.gbeu;
    name_table& gct = c.cct.gct;
    flatten({c,
             fam_g,
             family_forms[fam_g].units[0],
             {&B::vr, &I::vr, gct, gct.lu_to_eu, u.n_vr, u.vr},
             {{&B::xvr, &I::xvr, &u.xvr}},
             {{&L::aux, &u.first_aux}}});
    gct.n_eu = u.n_vr;
    zeros(at(u.n_vr), u.val_vr, u.val_vr_new);
    zeros(u.vr.data.size(), u.vr_in, u.vr_in_new);
    zeros(u.xvr.data.size(), u.val_xvr);
    zeros(at(u.n_ttlaux()), u.aux, u.aux_new);
    zeros(at(u.unit.n_ttlf()), u.f);
    zeros(at(u.n()), u.time_nextbreak, u.break_jumps);
}

void flatten_dbeu(circuit& c) {
    dbeu_class& u = c.dbeu;
    name_table& dct = c.cct.dct;
    flatten({c,
             fam_d,
             family_forms[fam_d].units[0],
             {&B::dgtl, &I::dgtl, dct, dct.lu_to_eu, u.n_nd, u.nd},
             {{&B::in, &I::in, &u.anlg}},
             {}});
    dct.n_eu = u.n_nd;
    u.n_input.clear();
    u.first_lprm = {0};
    for (int s : u.unit.i_lib) {
        u.n_input.push_back(c.lib.dbes.list.n_input[at(s)]);
        u.first_lprm.push_back(u.first_lprm.back() + c.lib.dbes.list.n_logical[at(s)]);
    }
    u.reader = readers_of_nodes(u);
    u.dvar.assign(at(u.n_nd), 2);
    zeros(u.unit.sv.data.size(), u.stparm);
    zeros(u.unit.ig.data.size(), u.igparm);
    zeros(at(u.n_ttllprm()), u.lparm);
    zeros(u.nd.data.size(), u.stbl_out, u.val_out);
    zeros(u.anlg.data.size(), u.val_anlg);
    zeros(at(u.n()), u.dstate);
    zeros(at(u.n()), u.t_next);
    u.stbl.assign(at(u.n()), 1);
}

void flatten_xbeu(circuit& c) {
    xbeu_class& u = c.xbeu;
    const library_lists& list = c.lib.xbes.list;
    name_table& xct = c.cct.xct;
    flatten({c,
             fam_x,
             family_forms[fam_x].units[0],
             {&B::xvr, &I::xvr, xct, xct.lu_to_eu, u.n_vr, u.vr},
             {{&B::vr, &I::vr, &u.gvr}},
             {{&L::aux, &u.first_aux}, {&L::bev, &u.first_bev}, {&L::cur, &u.first_cur}}});
    xct.n_eu = u.n_vr;
    u.n_input.clear();
    u.kind.clear();
    u.first_g = u.first_h = {0};
    for (int s : u.unit.i_lib) {
        const entry_flags& flag = c.lib.xbes.flag;
        u.n_input.push_back(list.n_input[at(s)]);
        u.kind.push_back(flag.evaluate[at(s)]    ? block_kind::evaluate
                         : flag.integrate[at(s)] ? block_kind::integrate
                                                 : block_kind::delay);
        u.first_g.push_back(u.first_g.back() + c.lib.xbes.func_g.n_func(s));
        u.first_h.push_back(u.first_h.back() + c.lib.xbes.func_h.n_func(s));
        if (list.cct.count(s) > 0) c.cct.flag_x_cct = true;
    }
    zeros(at(u.n_vr), u.val_vr);
    zeros(u.vr.data.size(), u.vr_in, u.vr_in_new);
    zeros(u.gvr.data.size(), u.val_gvr);
    zeros(at(u.n_ttlaux()), u.aux, u.aux_new);
    zeros(at(u.first_bev.back()), u.bev);
    zeros(at(u.first_cur.back()), u.cur);
    zeros(at(u.unit.n_ttlf()), u.f);
    zeros(at(u.first_g.back()), u.fg);
    zeros(at(u.first_h.back()), u.fh);
    zeros(at(u.n()), u.time_nextbreak);
}

void flatten_xbau(circuit& c) {
    xbau_class& u = c.xbau;
    name_table& xct = c.cct.xct;
    flatten({c,
             fam_x,
             family_forms[fam_x].units[1],
             {&B::xvr, &I::xvr, xct, xct.lu_to_au, u.n_vr, u.vr},
             {},
             {{&L::aux, &u.first_aux}}});
    xct.n_au = u.n_vr;
    zeros(at(u.n_vr), u.val_vr);
    zeros(u.vr.data.size(), u.vr_in);
    zeros(at(u.n_ttlaux()), u.aux);
    zeros(at(u.unit.n_ttlf()), u.f);
}

void link_domains(circuit& c) {
    link_numbers(c.ebeu.xvr.data, c.cct.xct, "cct_class: problem in assigning xct_to_xbeu", c.ebeu.xvr_xbeu);
    link_numbers(c.gbeu.xvr.data, c.cct.xct, "cct_class: problem in assigning xct_to_xbeu", c.gbeu.xvr_xbeu);
    link_numbers(c.xbeu.gvr.data, c.cct.gct, "cct_class: problem in assigning gct_to_gbeu", c.xbeu.gvr_gbeu);
    link_numbers(c.ebeu.dgtl.data, c.cct.dct, "cct_class: problem in assigning dct_to_dbeu", c.ebeu.dgtl_dbeu);
    link_numbers(c.dbeu.anlg.data, c.cct.ect, "cct_class: problem in assigning ect_to_ebeu", c.dbeu.anlg_ebeu);
}

void link_general_variables(circuit& c) {
    link_numbers(c.ebeu.vr.data, c.cct.gct, "cct_class: problem in assigning gct_to_gbeu", c.ebeu.vr_gbeu);
    c.ebau.vr_gbau.clear();
    for (int number : c.ebau.vr.data) c.ebau.vr_gbau.push_back(c.cct.gct.lu_to_au[at(number)]);
}

void flatten_ebau(circuit& c) {
    ebau_class& u = c.ebau;
    name_table& ect = c.cct.ect;
    const flattening f(c, fam_e, family_forms[fam_e].units[1], {&B::node, &I::nd, ect, ect.lu_to_au, u.n_nd, u.nd},
                       {{&B::vr, &I::vr, &u.vr}}, {{&L::aux, &u.first_aux}});
    flatten(f);
    ect.n_au = u.n_nd;
    u.index_ebeu = units_of_bias(f);
    link_sensed(f, u);
    zeros(at(u.n_nd), u.val_nd);
    zeros(u.nd.data.size(), u.nodev, u.cur_nd);
    zeros(u.in.data.size(), u.vin);
    zeros(u.ib.data.size(), u.curind);
    zeros(u.vr.data.size(), u.val_vr);
    zeros(at(u.n_ttlaux()), u.aux);
    zeros(at(u.unit.n_ttlf()), u.f);
}

void flatten_gbau(circuit& c) {
    gbau_class& u = c.gbau;
    name_table& gct = c.cct.gct;
    const flattening f(c, fam_g, family_forms[fam_g].units[1], {&B::vr, &I::vr, gct, gct.lu_to_au, u.n_vr, u.vr}, {},
                       {{&L::aux, &u.first_aux}});
    flatten(f);
    gct.n_au = u.n_vr;
    u.index_gbeu = units_of_bias(f);
    zeros(at(u.n_vr), u.val_vr);
    zeros(u.vr.data.size(), u.vr_in);
    zeros(at(u.n_ttlaux()), u.aux);
    zeros(at(u.unit.n_ttlf()), u.f);
}

void check_ebeu(const circuit& c, const char* message) {
    const ebeu_class& u = c.ebeu;
    check_nodes_1(u.n_nd, u.nd.data, message);
    for (int k = 0; k < u.unit.n; ++k)
        if (u.nd.size(k) != c.lib.ebes.list.node.count(u.unit.i_lib[at(k)]))
            halt({line("check_ebeu: terminals of unit ", k), message});
}
