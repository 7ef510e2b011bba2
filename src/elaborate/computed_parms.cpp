#include "elaborate/computed_parms.h"

#include <algorithm>
#include <cmath>

#include "base/at.h"
#include "base/flags_class.h"
#include "base/halt.h"
#include "elaborate/families.h"

namespace {
// The halves of a family of composites, as nodes walk them.
struct half {
    element_table composite_library::*elements;
    call_table composite_library::*calls;
    std::vector<computed_node> computed_instance::*nodes;
    std::vector<int> instance_core::*first_unit;
    bool ac;
};
constexpr half dc_half = {&composite_library::be, &composite_library::call, &computed_instance::nodes,
                          &instance_core::first_unit, false};
constexpr half ac_half = {&composite_library::beac, &composite_library::callac, &computed_instance::nodes_ac,
                          &instance_core::first_unit_ac, true};

// The units of a half; null: the family has none there.
const unit_table* units_of(int fam, const half& h) {
    for (const unit_table& t : family_forms[fam].units)
        if (t.elements == h.elements) return &t;
    return nullptr;
}

bool has_map(const composite_library& lib, int e) {
    const row_table<int>& map = lib.beac.acparm_map;
    for (int b = lib.beac.first_be[at(e)]; b < lib.beac.first_be[at(e) + 1]; ++b)
        for (int j = 0; j < map.size(b); ++j)
            if (map.row(b)[j] >= 0) return true;
    return false;
}

// compute_acp of the composite or of one that its small-signal half calls. [n]
std::vector<char> with_compute_acp(const composite_library& lib) {
    std::vector<char> on;
    for (int e = 0; e < lib.n(); ++e) {
        bool any = lib.flag.compute_acp[at(e)] != 0 && lib.beac.n_be(e) > 0;
        for (int k = lib.callac.first[at(e)]; k < lib.callac.first[at(e) + 1]; ++k)
            any |= on[at(lib.callac.i_lib[at(k)])] != 0;
        on.push_back(any ? 1 : 0);
    }
    return on;
}

// What makes a called composite a node of a half: its own function or that of one which it calls.
struct node_finder {
    const composite_library& lib;
    const half& h;
    const std::vector<char>& acp;
    std::vector<computed_node>& nodes;

    void add_calls_of(int e, int parent, const std::string& path, int first_unit, int first_dc) {
        const call_table& calls = lib.*h.calls;
        for (int k = calls.first[at(e)]; k < calls.first[at(e) + 1]; ++k) {
            const int callee = calls.i_lib[at(k)];
            const bool computes = lib.computes_rparms[at(callee)] != 0 || (h.ac && acp[at(callee)] != 0);
            if (!computes || (lib.*h.elements).n_be(callee) == 0) continue;  // without units nothing needs it
            computed_node node;
            node.e = callee;
            node.parent = parent;
            node.call = k;
            node.first_unit = first_unit + calls.first_be[at(k)];
            node.first_dc = first_dc + calls.first_be_dc[at(k)];
            node.path = path + "." + (calls.name[at(k)].empty() ? lib.list.entry.str(callee) : calls.name[at(k)]);
            node.iprm.resize(at(lib.list.iprm.count(callee)));
            node.sprm.resize(at(lib.list.sprm.count(callee)));
            node.rprm.resize(at(lib.list.rprm.count(callee)));
            node.rprm_ac = node.rprm;
            node.outvar.resize(at(lib.ov.count(callee)));
            nodes.push_back(node);
            add_calls_of(callee, static_cast<int>(nodes.size()) - 1, node.path, node.first_unit, node.first_dc);
        }
    }
};

[[noreturn]] void no_function(const composite_library& lib, int fam, int e, const char* what) {
    halt({line("compute_", what, "_", family_forms[fam].lib.begin[0], ": no function is compiled for the composite ",
               lib.list.entry[e]),
          "   which computes its parameters by one.", "   Halting..."});
}

void check_functions(const computed_parms& computed, const composite_library& lib, int fam, int e,
                     const computed_instance& x) {
    const auto check = [&](int entry) {
        if (lib.flag.compute_rparms[at(entry)] && computed.function[at(fam)][at(entry)] == nullptr)
            no_function(lib, fam, entry, "rparms");
    };
    check(e);
    for (const auto* nodes : {&x.nodes, &x.nodes_ac})
        for (const computed_node& node : *nodes) check(node.e);
}

// The rows of a composite in an instance, as its function takes them.
struct parameter_rows {
    int* iprm;
    std::string* sprm;
    double *rprm, *rprm_ac, *outvar;
};
parameter_rows rows_of(instance_core& inst, int i) {
    return {inst.iprm.row(i), inst.sprm.row(i), inst.rprm.row(i), inst.rprm_ac.row(i), inst.outvar.row(i)};
}
parameter_rows rows_of(computed_node& n) {
    return {n.iprm.data(), n.sprm.data(), n.rprm.data(), n.rprm_ac.data(), n.outvar.data()};
}

// One composite in hand.
struct evaluation {
    circuit& c;
    int fam;
    flags_class& flags;
    const composite_library& lib = c.lib.composites(fam);

    void check_finite(int e, const double* rprm, int from, const std::string& path) const {
        for (int j = from; j < lib.list.rprm.count(e); ++j)
            if (!std::isfinite(rprm[j])) finite_number(rprm[j], line(lib.list.rprm.word(e, j), "_of_", path));
    }
    void call(int e, const parameter_rows& rows, int& mode) const {
        std::vector<char*>& sparm = c.computed.sparm;
        sparm.clear();
        for (int j = 0; j < lib.list.sprm.count(e); ++j) sparm.push_back(rows.sprm[j].data());
        mode = 1;
        c.computed.function[at(fam)][at(e)](rows.iprm, sparm.data(), rows.rprm, rows.rprm_ac, rows.outvar, &flags,
                                            flags.time_given);
        mode = 0;
    }
    void rparms(int e, const parameter_rows& rows, const std::string& path) const {
        const int n_plain = lib.n_rprm_plain(e), n_derived = lib.n_rprm_derived(e);
        eval_rprm_1(lib, e, rows.rprm);
        check_finite(e, rows.rprm, n_plain, path);
        if (!lib.flag.compute_rparms[at(e)]) return;
        std::vector<double>& before = c.computed.derived;
        before.assign(rows.rprm + n_plain, rows.rprm + n_plain + n_derived);
        call(e, rows, flags.rparms);
        for (int k = 0; k < n_derived; ++k)
            if (rows.rprm[n_plain + k] == before[at(k)])
                rows.rprm[n_plain + k] = evaluate(lib.derived.row.row(e)[k], rows.rprm);
        check_finite(e, rows.rprm, 0, path);
    }
    void acparms(int e, const parameter_rows& rows, int first_dc, const std::string& path) const;

    // The rows of a called composite as its caller gives them.
    void fill(computed_node& node, const half& h, const int* iprm, const std::string* sprm, const double* rprm) const {
        const call_table& t = lib.*h.calls;
        const auto take = [&](auto& to, const auto& fixed, const row_table<int>& flag, const auto* from) {
            for (int j = 0; j < flag.size(node.call); ++j) {
                const int link = flag.row(node.call)[j];
                to[at(j)] = link < 0 ? fixed.row(node.call)[j] : from[link];
            }
        };
        take(node.iprm, t.iprm, t.iprm_flag, iprm);
        take(node.sprm, t.sprm, t.sprm_flag, sprm);
        take(node.rprm, t.rprm, t.rprm_flag, rprm);
    }
    // acp: the callers' small-signal rows feed those of callees, and their functions are called.
    void nodes(computed_instance& x, const half& h, bool acp) const {
        const unit_table* t = units_of(fam, h);
        if (t == nullptr) return;
        const parameter_rows top = rows_of(c.instances(fam), x.instance);
        for (computed_node& node : x.*h.nodes) {
            const parameter_rows from = node.parent < 0 ? top : rows_of((x.*h.nodes)[at(node.parent)]);
            fill(node, h, from.iprm, from.sprm, acp ? from.rprm_ac : from.rprm);
            rparms(node.e, rows_of(node), node.path);
            node.rprm_ac = node.rprm;
            if (acp) acparms(node.e, rows_of(node), node.first_dc, node.path);
            push_linked(lib.*h.elements, node.e, node.first_unit, node.iprm.data(), node.rprm_ac.data(), acp,
                        t->units(c));
        }
    }
};

// ---- output values ----

// Unit-level number of a node or variable of a composite: that of a connection which leads there; -1.
int unit_level(const element_table& be, int e, int first_unit, const row_table<int>& element,
               const row_table<int>& unit, int number) {
    for (int k = 0; k < be.n_be(e); ++k) {
        const int b = be.first_be[at(e)] + k;
        if (b >= element.n_rows()) return -1;
        for (int j = 0; j < element.size(b); ++j)
            if (element.row(b)[j] == number) return unit.row(first_unit + k)[j];
    }
    return -1;
}

double power_of(const ebeu_class& u, int first_unit, int n) {
    double power = 0.0;
    for (int k = u.nd.first[at(first_unit)]; k < u.nd.first[at(first_unit + n)]; ++k)
        power += u.val_nd[at(u.nd.data[at(k)])] * u.cur_nd[at(k)];
    return power;
}

double output_value(const circuit& c, const element_table& be, int e, int first_unit, int kind, int index) {
    const ebeu_class& u = c.ebeu;
    const gbeu_class& g = c.gbeu;
    const auto k = at(first_unit);
    switch (kind) {
        case ov_nodev: {
            const int node = unit_level(be, e, first_unit, be.node, u.nd, index);
            return node < 0 ? 0.0 : u.val_nd[at(node)];
        }
        case ov_aux:
            return u.aux[at(u.first_aux[k] + index)];
        case ov_cur:
            return u.cur_nd[at(u.nd.first[k] + index)];
        case ov_pwr_elec:
            return power_of(u, first_unit, be.n_be(e));
        case ov_iparm_ebe:
            return u.unit.iprm.data[at(u.unit.iprm.first[k] + index)];
        case ov_rparm_ebe:
            return u.unit.rprm.data[at(u.unit.rprm.first[k] + index)];
        case ov_var: {
            const int vr = unit_level(be, e, first_unit, be.vr, g.vr, index);
            return vr < 0 ? 0.0 : g.val_vr[at(vr)];
        }
        case ov_gaux:
            return g.aux[at(g.first_aux[k] + index)];
        case ov_iparm_gbe:
            return g.unit.iprm.data[at(g.unit.iprm.first[k] + index)];
        case ov_rparm_gbe:
            return g.unit.rprm.data[at(g.unit.rprm.first[k] + index)];
        default:
            return 0.0;
    }
}

// Values of the words of an output table of composite e whose elements' units begin at first_unit.
void output_values(const circuit& c, const composite_library& lib, const output_table& words, int e, int first_unit,
                   double* values) {
    for (int j = 0; j < words.count(e); ++j) {
        const auto k = at(words.at(e, j));
        values[j] = output_value(c, lib.be, e, first_unit, words.kind[k], words.index[k]);
    }
}

void evaluation::acparms(int e, const parameter_rows& rows, int first_dc, const std::string& path) const {
    if (!lib.flag.compute_acp[at(e)]) return;
    if (c.computed.function[at(fam)][at(e)] == nullptr) no_function(lib, fam, e, "acp");
    output_values(c, lib, lib.ov, e, first_dc, rows.outvar);
    call(e, rows, flags.acparms);
    check_finite(e, rows.rprm_ac, 0, path);
}

// The parameters of an instance to the units of one half.
void push_instance(circuit& c, const computed_instance& x, const half& h, const double* rprm, bool use_map) {
    const unit_table* t = units_of(x.fam, h);
    if (t == nullptr) return;
    const instance_core& inst = c.instances(x.fam);
    push_linked(c.lib.composites(x.fam).*h.elements, inst.i_lib[at(x.instance)], (inst.*h.first_unit)[at(x.instance)],
                inst.iprm.row(x.instance), rprm, use_map, t->units(c));
}
}  // namespace

void push_linked(const element_table& be, int e, int first_unit, const int* iprm, const double* rprm, bool use_map,
                 unit_core& unit) {
    for (int k = 0; k < be.n_be(e); ++k) {
        const int b = be.first_be[at(e)] + k, u = first_unit + k;
        for (int j = 0; j < be.iprm_flag.size(b); ++j)
            if (const int link = be.iprm_flag.row(b)[j]; link >= 0) unit.iprm.row(u)[j] = iprm[link];
        const int* map = b < be.acparm_map.n_rows() ? be.acparm_map.row(b) : nullptr;
        for (int j = 0; j < be.rprm_flag.size(b); ++j) {
            const bool mapped = map != nullptr && map[j] >= 0;
            const int from = mapped ? map[j] : be.rprm_flag.row(b)[j];
            if (from >= 0 && (use_map || !mapped)) unit.rprm.row(u)[j] = rprm[from];
        }
    }
}

void build_computed(circuit& c) {
    computed_parms& computed = c.computed;
    computed.list.clear();
    for (const family fam : {fam_e, fam_g, fam_x}) {
        const composite_library& lib = c.lib.composites(fam);
        const instance_core& inst = c.instances(fam);
        const std::vector<char> acp = with_compute_acp(lib);
        std::vector<int>& of = computed.of_instance[at(fam)];
        of.assign(at(inst.n), -1);
        for (int i = 0; i < inst.n; ++i) {
            const int e = inst.i_lib[at(i)];
            computed_instance x;
            x.fam = fam;
            x.instance = i;
            x.rparms = lib.computes_rparms[at(e)] != 0;
            x.acparms = acp[at(e)] != 0 || has_map(lib, e);
            if (!x.rparms && !x.acparms) continue;
            const std::string& name = inst.name[at(i)];
            const int first = inst.first_unit[at(i)];
            node_finder{lib, dc_half, acp, x.nodes}.add_calls_of(e, -1, name, first, first);
            if (units_of(fam, ac_half) != nullptr)
                node_finder{lib, ac_half, acp, x.nodes_ac}.add_calls_of(e, -1, name, inst.first_unit_ac[at(i)], first);
            check_functions(computed, lib, fam, e, x);
            of[at(i)] = static_cast<int>(computed.list.size());
            computed.list.push_back(std::move(x));
        }
    }
}

void compute_rparms(circuit& c, computed_instance& x, flags_class& flags) {
    instance_core& inst = c.instances(x.fam);
    const parameter_rows top = rows_of(inst, x.instance);
    const evaluation now{c, x.fam, flags};
    now.rparms(inst.i_lib[at(x.instance)], top, inst.name[at(x.instance)]);
    for (const half& h : {dc_half, ac_half}) {
        push_instance(c, x, h, top.rprm, false);
        now.nodes(x, h, false);
    }
}

void compute_acp(circuit& c, computed_instance& x, flags_class& flags) {
    instance_core& inst = c.instances(x.fam);
    const int i = x.instance, e = inst.i_lib[at(i)], first = inst.first_unit[at(i)];
    const parameter_rows top = rows_of(inst, i);
    std::copy_n(top.rprm, inst.rprm.size(i), top.rprm_ac);
    const evaluation now{c, x.fam, flags};
    if (now.lib.flag.compute_acp[at(e)]) output_values(c, now.lib, now.lib.bias, e, first, inst.bias.row(i));
    now.acparms(e, top, first, inst.name[at(i)]);
    push_instance(c, x, ac_half, top.rprm_ac, true);
    now.nodes(x, ac_half, true);
}

void push_computed(circuit& c, const computed_instance& x) {
    const composite_library& lib = c.lib.composites(x.fam);
    for (const half& h : {dc_half, ac_half})
        if (const unit_table* t = units_of(x.fam, h))
            for (const computed_node& node : x.*h.nodes)
                push_linked(lib.*h.elements, node.e, node.first_unit, node.iprm.data(), node.rprm_ac.data(), false,
                            t->units(c));
}
