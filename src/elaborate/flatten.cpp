#include "elaborate/flatten.h"

#include <cstring>

#include "base/checks.h"
#include "base/halt.h"
#include "elaborate/families.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

// An instance node as the unit level sees it: ground words stand for the reference.
int without_ground_words(const name_table& ect, int node) {
    return node < ect.n() && ect.ref >= 0 && ect.is_ground[at(node)] ? ect.ref : node;
}

// Parameter rows of one unit: from the composite's fixed values, or through the link from the instance's row.
struct parameter_copy {
    const element_table& be;
    const instance_core& inst;
    unit_core& unit;

    void operator()(int b, int i, bool with_start_values) const {
        rows(be.iprm, be.iprm_flag, inst.iprm, unit.iprm, b, i);
        rows(be.rprm, be.rprm_flag, inst.rprm, unit.rprm, b, i);
        if (with_start_values) {
            rows(be.sv, be.sv_flag, inst.sv, unit.sv, b, i);
            rows(be.ig, be.ig_flag, inst.ig, unit.ig, b, i);
        } else {
            unit.sv.close_row();
            unit.ig.close_row();
        }
        for (int j = 0; j < be.sprm.size(b); ++j) {
            const int flag = be.sprm_flag.row(b)[j];
            const std::string& text = flag < 0 ? be.sprm.row(b)[j] : inst.sprm.row(i)[flag];
            auto bytes = std::make_unique<char[]>(64);
            std::strncpy(bytes.get(), text.c_str(), 63);
            unit.sprm.add(bytes.get());
            unit.text.push_back(std::move(bytes));
        }
        unit.sprm.close_row();
    }
    template <class T>
    static void rows(const row_table<T>& fixed, const row_table<int>& flag, const row_table<T>& from, row_table<T>& to,
                     int b, int i) {
        for (int j = 0; j < fixed.size(b); ++j) {
            const int link = flag.row(b)[j];
            to.add(link < 0 ? fixed.row(b)[j] : from.row(i)[link]);
        }
        to.close_row();
    }
};

// The unit-level node of an instance node, numbered now if it is new.
int number_node(std::vector<int>& lu_to, int lu, int& n_nd) {
    if (lu_to[at(lu)] < 0) lu_to[at(lu)] = n_nd++;
    return lu_to[at(lu)];
}

[[noreturn]] void unit_fault(const char* what, const char* halting) {
    halt({"ebeu_class:set_values_1", what, halting});
}

// Sensed nodes and branches need all units to exist.
void link_sensed(circuit& c) {
    const eels_class& eels = c.lib.eels;
    ebeu_class& u = c.ebeu;
    const name_table& ect = c.cct.ect;
    for (int k = 0; k < u.unit.n; ++k) {
        const int i = u.unit.i_inst[at(k)], e = c.eelu.i_lib[at(i)];
        const int b = eels.be.first_be[at(e)] + k - c.eelu.first_unit[at(i)];
        for (int j = 0; j < eels.be.in.size(b); ++j) {
            const int flag = eels.be.in_flag.row(b)[j];
            const int lu = flag < 0 ? c.eelu.nd.row(i)[eels.be.in.row(b)[j]] : c.eelu.in.row(i)[flag];
            const int nd = ect.lu_to_eu[at(without_ground_words(ect, lu))];
            if (nd < 0) unit_fault("   An independent node not assigned?", "   Halting..");
            u.in.add(nd);
        }
        u.in.close_row();
        for (int j = 0; j < eels.be.ib.size(b); ++j) {
            const int flag = eels.be.ib_flag.row(b)[j];
            if (flag == -2) unit_fault("  flag_ib0 = -2 for some ece", "  Halting..");
            int target = 0;
            if (flag < 0) {
                target = c.eelu.first_unit[at(i)] + eels.be.ib.row(b)[j];
            } else {
                const int other = c.eelu.ib.row(i)[flag];
                if (c.eelu.first_unit[at(other) + 1] - c.eelu.first_unit[at(other)] != 1)
                    unit_fault("  ind. branch must have a single ebe.", "  Halting..");
                target = c.eelu.first_unit[at(other)];
            }
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

void allocate_values(ebeu_class& u) {
    const std::size_t n_nd = at(u.n_nd);
    u.val_nd.assign(n_nd, 0.0);
    u.val_nd_new.assign(n_nd, 0.0);
    for (auto* v : {&u.nodev, &u.nodev_new, &u.cur_nd}) v->assign(u.nd.data.size(), 0.0);
    u.vin.assign(u.in.data.size(), 0.0);
    u.curind.assign(u.ib.data.size(), 0.0);
    u.val_vr.assign(u.vr.data.size(), 0.0);
    u.val_xvr.assign(u.xvr.data.size(), 0.0);
    u.dvar.assign(u.dgtl.data.size(), 0);
    for (auto* v : {&u.aux, &u.aux_new}) v->assign(at(u.n_ttlaux()), 0.0);
    for (auto* v : {&u.auxs, &u.auxs_new}) v->assign(at(u.n_ttlauxs()), 0.0);
    u.locv.assign(at(u.n_ttllocv()), 0.0);
    u.f.assign(at(u.unit.n_ttlf()), 0.0);
    u.time_nextbreak.assign(at(u.unit.n), 0.0);
    u.break_jumps.assign(at(u.unit.n), 0);
}
}  // namespace

void flatten_ebeu(circuit& c) {
    const eels_class& eels = c.lib.eels;
    const ebes_class& ebes = c.lib.ebes;
    ebeu_class& u = c.ebeu;
    name_table& ect = c.cct.ect;
    ect.lu_to_eu.assign(at(ect.n_lu), -1);
    u.first_aux = u.first_auxs = u.first_locv = {0};
    c.eelu.first_unit = {0};
    const parameter_copy copy_parameters{eels.be, c.eelu, u.unit};
    for (int i = 0; i < c.eelu.n; ++i) {
        const int e = c.eelu.i_lib[at(i)];
        for (int b = eels.be.first_be[at(e)]; b < eels.be.first_be[at(e) + 1]; ++b) {
            const int s = eels.be.i_be[at(b)];
            u.unit.i_lib.push_back(s);
            u.unit.i_inst.push_back(i);
            if (ebes.flag.ground_dummy[at(s)])
                u.ground_units.push_back(u.unit.n);
            else
                u.n_ttlnd_kcl += eels.be.node.size(b);
            for (int j = 0; j < eels.be.node.size(b); ++j) {
                const int lu = without_ground_words(ect, c.eelu.nd.row(i)[eels.be.node.row(b)[j]]);
                u.nd.add(number_node(ect.lu_to_eu, lu, u.n_nd));
            }
            u.nd.close_row();
            auto through = [&](const row_table<int>& be, const row_table<int>& inst, row_table<int>& to) {
                for (int j = 0; j < be.size(b); ++j) to.add(inst.row(i)[be.row(b)[j]]);
                to.close_row();
            };
            through(eels.be.dgtl, c.eelu.dgtl, u.dgtl);
            through(eels.be.vr, c.eelu.vr, u.vr);
            through(eels.be.xvr, c.eelu.xvr, u.xvr);
            copy_parameters(b, i, true);
            u.first_aux.push_back(u.first_aux.back() + ebes.list.aux.count(s));
            u.first_auxs.push_back(u.first_auxs.back() + ebes.list.auxs.count(s));
            u.first_locv.push_back(u.first_locv.back() + ebes.list.locv.count(s));
            u.unit.first_func.push_back(u.unit.first_func.back() + ebes.func.n_func(s));
            ++u.unit.n;
        }
        c.eelu.first_unit.push_back(u.unit.n);
    }
    // Ground words share the reference's number, so that outputs and sensed nodes on them read 0.
    if (ect.ref >= 0)
        for (int k = 0; k < ect.n(); ++k)
            if (ect.is_ground[at(k)]) ect.lu_to_eu[at(k)] = ect.lu_to_eu[at(ect.ref)];
    ect.n_eu = u.n_nd;
    link_sensed(c);
    allocate_values(u);
}

void flatten_gbeu(circuit& c) {
    const gels_class& gels = c.lib.gels;
    gbeu_class& u = c.gbeu;
    name_table& gct = c.cct.gct;
    gct.lu_to_eu.assign(at(gct.n_lu), -1);
    u.first_aux = {0};
    c.gelu.first_unit = {0};
    const parameter_copy copy_parameters{gels.be, c.gelu, u.unit};
    for (int i = 0; i < c.gelu.n; ++i) {
        const int e = c.gelu.i_lib[at(i)];
        for (int b = gels.be.first_be[at(e)]; b < gels.be.first_be[at(e) + 1]; ++b) {
            const int s = gels.be.i_be[at(b)];
            u.unit.i_lib.push_back(s);
            u.unit.i_inst.push_back(i);
            for (int j = 0; j < gels.be.vr.size(b); ++j)
                u.vr.add(number_node(gct.lu_to_eu, c.gelu.vr.row(i)[gels.be.vr.row(b)[j]], u.n_vr));
            u.vr.close_row();
            for (int j = 0; j < gels.be.xvr.size(b); ++j) u.xvr.add(c.gelu.xvr.row(i)[gels.be.xvr.row(b)[j]]);
            u.xvr.close_row();
            copy_parameters(b, i, true);
            u.first_aux.push_back(u.first_aux.back() + c.lib.gbes.list.aux.count(s));
            u.unit.first_func.push_back(u.unit.first_func.back() + c.lib.gbes.func.n_func(s));
            ++u.unit.n;
        }
        c.gelu.first_unit.push_back(u.unit.n);
    }
    gct.n_eu = u.n_vr;
    for (auto* v : {&u.val_vr, &u.val_vr_new}) v->assign(at(u.n_vr), 0.0);
    for (auto* v : {&u.vr_in, &u.vr_in_new}) v->assign(u.vr.data.size(), 0.0);
    u.val_xvr.assign(u.xvr.data.size(), 0.0);
    for (auto* v : {&u.aux, &u.aux_new}) v->assign(at(u.n_ttlaux()), 0.0);
    u.f.assign(at(u.unit.n_ttlf()), 0.0);
    u.time_nextbreak.assign(at(u.unit.n), 0.0);
    u.break_jumps.assign(at(u.unit.n), 0);
}

void link_general_variables(circuit& c) {
    c.ebeu.vr_gbeu.clear();
    for (int number : c.ebeu.vr.data) c.ebeu.vr_gbeu.push_back(c.cct.gct.to_eu[at(number)]);
}

void flatten_ebau(circuit& c) {
    const eels_class& eels = c.lib.eels;
    const ebac_class& ebac = c.lib.ebac;
    ebau_class& u = c.ebau;
    name_table& ect = c.cct.ect;
    ect.lu_to_au.assign(at(ect.n_lu), -1);
    u.first_aux = {0};
    c.eelu.first_unit_ac = {0};
    const parameter_copy copy_parameters{eels.beac, c.eelu, u.unit};
    for (int i = 0; i < c.eelu.n; ++i) {
        const int e = c.eelu.i_lib[at(i)];
        for (int b = eels.beac.first_be[at(e)]; b < eels.beac.first_be[at(e) + 1]; ++b) {
            const int s = eels.beac.i_be[at(b)];
            u.unit.i_lib.push_back(s);
            u.unit.i_inst.push_back(i);
            const int bias = eels.beac.acprm_be[at(b)];
            u.index_ebeu.push_back(bias < 0 ? -1 : c.eelu.first_unit[at(i)] + bias);
            for (int j = 0; j < eels.beac.node.size(b); ++j) {
                const int lu = without_ground_words(ect, c.eelu.nd.row(i)[eels.beac.node.row(b)[j]]);
                u.nd.add(number_node(ect.lu_to_au, lu, u.n_nd));
            }
            u.nd.close_row();
            for (int j = 0; j < eels.beac.vr.size(b); ++j) u.vr.add(c.eelu.vr.row(i)[eels.beac.vr.row(b)[j]]);
            u.vr.close_row();
            copy_parameters(b, i, false);
            u.first_aux.push_back(u.first_aux.back() + ebac.list.aux.count(s));
            u.unit.first_func.push_back(u.unit.first_func.back() + ebac.func.n_func(s));
            ++u.unit.n;
        }
        c.eelu.first_unit_ac.push_back(u.unit.n);
    }
    if (ect.ref >= 0)
        for (int k = 0; k < ect.n(); ++k)
            if (ect.is_ground[at(k)]) ect.lu_to_au[at(k)] = ect.lu_to_au[at(ect.ref)];
    ect.n_au = u.n_nd;
    // Sensed nodes may be without a small-signal number: an instance need not have a small-signal half.
    for (int k = 0; k < u.unit.n; ++k) {
        const int i = u.unit.i_inst[at(k)], e = c.eelu.i_lib[at(i)];
        const int b = eels.beac.first_be[at(e)] + k - c.eelu.first_unit_ac[at(i)];
        for (int j = 0; j < eels.beac.in.size(b); ++j) {
            const int flag = eels.beac.in_flag.row(b)[j];
            const int lu = flag < 0 ? c.eelu.nd.row(i)[eels.beac.in.row(b)[j]] : c.eelu.in.row(i)[flag];
            u.in.add(ect.lu_to_au[at(without_ground_words(ect, lu))]);
        }
        u.in.close_row();
        for (int j = 0; j < eels.beac.ib.size(b); ++j) {
            const int flag = eels.beac.ib_flag.row(b)[j];
            int target = -1;
            if (flag == -1) target = c.eelu.first_unit_ac[at(i)] + eels.beac.ib.row(b)[j];
            if (flag >= 0) {
                const int other = c.eelu.ib.row(i)[flag];
                if (c.eelu.first_unit_ac[at(other) + 1] - c.eelu.first_unit_ac[at(other)] == 1)
                    target = c.eelu.first_unit_ac[at(other)];
            }
            u.ib.add(target);
        }
        u.ib.close_row();
    }
}

void check_ebeu(const circuit& c, const char* message) {
    const ebeu_class& u = c.ebeu;
    check_nodes_1(u.n_nd, u.nd.data, message);
    for (int k = 0; k < u.unit.n; ++k)
        if (u.nd.size(k) != c.lib.ebes.list.node.count(u.unit.i_lib[at(k)]))
            halt({line("check_ebeu: terminals of unit ", k), message});
}
