#include "analyses/evaluate.h"

#include <algorithm>

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

// Raises up to four switches of flags_class while it lives.
class raised {
public:
    explicit raised(int& a) : raised(a, a, a, a) {}
    raised(int& a, int& b) : raised(a, b, b, b) {}
    raised(int& a, int& b, int& c) : raised(a, b, c, c) {}
    raised(int& a, int& b, int& c, int& d) : a_(a), b_(b), c_(c), d_(d) { a_ = b_ = c_ = d_ = 1; }
    ~raised() { a_ = b_ = c_ = d_ = 0; }
    raised(const raised&) = delete;
    raised& operator=(const raised&) = delete;

private:
    int &a_, &b_, &c_, &d_;
};

int& analysis_flag(run_state& r) {
    switch (r.mat.kind) {
        case analysis::startup:
            return r.flags.startup;
        case analysis::trns:
            return r.flags.trns;
        default:
            return r.flags.dc;
    }
}

// Adds the derivatives of one evaluated unit. No search and no test: the slots hold active terms only.
void add_jac(const slot_table& slot, int u, const double* jac, double* val_m) {
    for (int s = slot.first_jac[at(u)]; s < slot.first_jac[at(u) + 1]; ++s)
        val_m[slot.to_val[at(s)]] += jac[slot.from_jac[at(s)]];
}
void add_jac_scaled(const slot_table& slot, int u, const double* jac, double constant, double* val_m) {
    const double factor[2] = {1.0, constant};
    for (int s = slot.first_jac[at(u)]; s < slot.first_jac[at(u) + 1]; ++s)
        val_m[slot.to_val[at(s)]] += factor[slot.scale[at(s)]] * jac[slot.from_jac[at(s)]];
}

// Adds the functions f of all units of a family: rows of nodes are summed, rows of a unit's own are assigned.
void add_functions(const slot_table& slot, const double* f, double* rhs_m) {
    const std::size_t n_sum = slot.to_row.size(), n_own = slot.to_own.size();
    for (std::size_t s = 0; s < n_sum; ++s) rhs_m[slot.to_row[s]] += f[slot.from_f[s]];
    for (std::size_t s = 0; s < n_own; ++s) rhs_m[slot.to_own[s]] = f[slot.from_own[s]];
}
// The same with the derivatives of sums that have one.
void add_functions_with_ddt(const slot_table& slot, const double* f, const double* rate, double* rhs_m) {
    const std::size_t n_sum = slot.to_row.size(), n_own = slot.to_own.size();
    for (std::size_t s = 0; s < n_sum; ++s) {
        double value = f[slot.from_f[s]];
        if (const int d = slot.ddt[s]; d >= 0) value += rate[d];
        rhs_m[slot.to_row[s]] += value;
    }
    for (std::size_t s = 0; s < n_own; ++s) rhs_m[slot.to_own[s]] = f[slot.from_own[s]];
}

// dz/dt of all KCL derivatives by the present method. Tests stand in this order; the first that is on decides.
void find_rates(run_state& r) {
    kcl_derivatives& k = r.mat.kcl_ddt;
    const solve_class& slv = r.slv;
    const std::size_t n = k.f.size();
    const int* at_z = k.z.data();
    const double *z = r.c.ebeu.locv.data(), *z1 = r.mat.locv_old_1.data(), *z2 = r.mat.locv_old_2.data();
    double* rate = k.rate.data();
    const auto find = [&](auto formula) {
        for (std::size_t d = 0; d < n; ++d) rate[d] = formula(d, at_z[d]);
    };
    if (slv.flag_be)
        find([=, c = slv.cnst_be](std::size_t, int i) { return (z[i] - z1[i]) * c; });
    else if (slv.flag_trz)
        find([=, c = slv.cnst_trz, total_1 = k.total_1.data(), still_1 = k.still_1.data()](std::size_t d, int i) {
            return (z[i] - z1[i]) * c - (total_1[d] - still_1[d]);
        });
    else if (slv.flag_gear_fixed || slv.flag_gear_var)
        find([=, c0 = slv.cnst_gear_0, c1 = slv.cnst_gear_1, c2 = slv.cnst_gear_2](std::size_t, int i) {
            return z[i] * c2 - z1[i] * c0 + z2[i] * c1;
        });
    else if (slv.flag_bdf2)
        find([=, c0 = slv.cnst_bdf2_0, c1 = slv.cnst_bdf2_1, c2 = slv.cnst_bdf2_2](std::size_t, int i) {
            return z[i] * c0 - z1[i] * c1 + z2[i] * c2;
        });
    else
        find([](std::size_t, int) { return 0.0; });
}

void move_values(const value_moves& m, const double* from, double* to) {
    const std::size_t n = m.from.size();
    for (std::size_t k = 0; k < n; ++k) to[m.to[k]] = from[m.from[k]];
}

void take_local_variables(run_state& r, int u) {
    const mat_class& mat = r.mat;
    for (int k = mat.first_locv[at(u)]; k < mat.first_locv[at(u) + 1]; ++k)
        r.c.ebeu.locv[at(mat.locv.to[at(k)])] = r.c.ebeu.f[at(mat.locv.from[at(k)])];
}

// Templates share their derivatives, so that those of a unit are added before the next one is called. Functions and
// local variables are each unit's own: they are fetched behind all calls.
void evaluate_electrical(run_state& r, bool only_function) {
    const int n = r.c.ebeu.n();
    const bool in_time = r.mat.kind == analysis::trns;
    const double constant = in_time ? method_constant(r.slv) : 0.0;
    double* val_m = r.mat.val_m.data();
    const double* f = r.c.ebeu.f.data();
    if (only_function) {
        for (int u = 0; u < n; ++u) get_ebe(r, u);
    } else {
        for (int u = 0; u < n; ++u) {
            get_ebe(r, u);
            const double* jac = r.ebe[at(u)].jac->store.data();
            if (r.mat.ebe.any_ddt[at(u)])
                add_jac_scaled(r.mat.ebe, u, jac, constant, val_m);
            else
                add_jac(r.mat.ebe, u, jac, val_m);
        }
    }
    if (in_time) {
        move_values(r.mat.locv, f, r.c.ebeu.locv.data());
        find_rates(r);
        add_functions_with_ddt(r.mat.ebe, f, r.mat.kcl_ddt.rate.data(), r.mat.rhs_m.data());
    } else {
        add_functions(r.mat.ebe, f, r.mat.rhs_m.data());
    }
}

void evaluate_blocks(run_state& r, bool only_function) {
    double* val_m = r.mat.val_m.data();
    for (int u = 0; u < r.c.gbeu.n(); ++u) {
        get_gbe(r, u);
        if (!only_function) add_jac(r.mat.gbe, u, r.gbe[at(u)].jac->store.data(), val_m);
    }
    add_functions(r.mat.gbe, r.c.gbeu.f.data(), r.mat.rhs_m.data());
}

// Function values of the state rows, from what the models gave last. Those of blocks follow every assembly, those of
// electrical units the passes behind a solve.
void keep_state_functions(run_state& r, bool of_blocks) {
    state_rows& s = r.mat.state;
    const std::vector<double>& f = of_blocks ? r.c.gbeu.f : r.c.ebeu.f;
    for (int i = 0; i < s.n(); ++i)
        if ((s.is_block[at(i)] != 0) == of_blocks) s.f_now[at(i)] = f[at(s.f[at(i)])];
}

// Totals, static values, local variables and terminal currents of some units in a transient.
void find_functions_of(run_state& r, const unit_pass& pass, bool with_ddt) {
    ebeu_class& e = r.c.ebeu;
    kcl_derivatives& k = r.mat.kcl_ddt;
    const raised on(r.flags.trns, r.flags.function);
    for (int u : pass.unit) get_ebe(r, u);
    const double* f = e.f.data();
    move_values(pass.locv, f, e.locv.data());
    for (int d : pass.ddt) k.still[at(d)] = f[k.f[at(d)]];
    if (!with_ddt) return;
    move_values(pass.current, f, e.cur_nd.data());
    find_rates(r);
    for (int d : pass.ddt) {
        const double total = k.still[at(d)] + k.rate[at(d)];
        k.total[at(d)] = total;
        e.cur_nd[at(k.terminal[at(d)])] = total;
    }
}

// The unit whose row holds a flat index.
int unit_of_index(const std::vector<int>& first, int index) {
    return static_cast<int>(std::upper_bound(first.begin(), first.end(), index) - first.begin()) - 1;
}

// Calls every unit that declares a flag word.
void call_declared(run_state& r, std::vector<int> entry_flags::*word) {
    for (int u = 0; u < r.c.ebeu.n(); ++u)
        if ((r.c.lib.ebes.flag.*word)[at(r.c.ebeu.unit.i_lib[at(u)])]) get_ebe(r, u);
    for (int u = 0; u < r.c.gbeu.n(); ++u)
        if ((r.c.lib.gbes.flag.*word)[at(r.c.gbeu.unit.i_lib[at(u)])]) get_gbe(r, u);
}

void call_all(run_state& r) {
    for (int u = 0; u < r.c.ebeu.n(); ++u) get_ebe(r, u);
    for (int u = 0; u < r.c.gbeu.n(); ++u) get_gbe(r, u);
}
}  // namespace

double method_constant(const solve_class& slv) {
    if (slv.flag_be) return slv.cnst_be;
    if (slv.flag_trz) return slv.cnst_trz;
    if (slv.flag_gear_fixed || slv.flag_gear_var) return slv.cnst_gear_2;
    return slv.flag_bdf2 ? slv.cnst_bdf2_0 : 0.0;
}

void ebce_form_arrays(run_state& r) {
    ebeu_class& u = r.c.ebeu;
    const double* val = u.val_nd.data();
    for (std::size_t k = 0; k < u.nodev.size(); ++k) u.nodev[k] = val[u.nd.data[k]];
    for (std::size_t k = 0; k < u.vin.size(); ++k) u.vin[k] = val[u.in.data[k]];
    for (std::size_t k = 0; k < u.curind.size(); ++k) {
        const int auxs = u.ib_auxs.data[k];
        u.curind[k] = r.mat.kind == analysis::startup && auxs >= 0 ? u.auxs[at(auxs)] : u.aux[at(u.ib_aux.data[k])];
    }
    for (std::size_t k = 0; k < u.val_vr.size(); ++k) u.val_vr[k] = r.c.gbeu.val_vr[at(u.vr_gbeu[k])];
}

void gbce_form_arrays(run_state& r) {
    gbeu_class& g = r.c.gbeu;
    for (std::size_t k = 0; k < g.vr_in.size(); ++k) g.vr_in[k] = g.val_vr[at(g.vr.data[k])];
}

void form_jac_rhs(run_state& r, bool only_function) {
    r.flags.n_limit = 0;
    ebce_form_arrays(r);
    gbce_form_arrays(r);
    std::fill(r.mat.rhs_m.begin(), r.mat.rhs_m.end(), 0.0);
    // Every entry belongs to some unit, so that clearing all of them clears what will be summed. The matrix of a
    // circuit of pure units stands as long as the method's constant does.
    r.val_stands =
        !only_function && r.mat.kind == analysis::trns && r.passes.all_pure && r.val_constant == method_constant(r.slv);
    if (!only_function && !r.val_stands) r.val_constant = r.mat.kind == analysis::trns ? method_constant(r.slv) : 0.0;
    only_function = only_function || r.val_stands;
    if (!only_function) std::fill(r.mat.val_m.begin(), r.mat.val_m.end(), 0.0);
    const raised on(analysis_flag(r), r.flags.function);
    r.flags.jacobian = only_function ? 0 : 1;
    evaluate_electrical(r, only_function);
    evaluate_blocks(r, only_function);
    r.flags.jacobian = 0;
    keep_state_functions(r, true);
}

void add_trns_terms(run_state& r, bool only_function) {
    mat_class& mat = r.mat;
    const solve_class& slv = r.slv;
    const double constant = method_constant(slv);
    for (int i = 0; i < mat.state.n(); ++i) {
        const int q = mat.state.col[at(i)];
        double x = 0.0, x1 = 0.0, x2 = 0.0;
        if (q >= 0) {
            x = mat.svec[at(q)];
            x1 = mat.svec_old_1[at(q)];
            x2 = mat.svec_old_2[at(q)];
        }
        double& residual = mat.rhs_m[at(mat.state.row[at(i)])];
        if (slv.flag_be) {
            residual -= (x - x1) * slv.cnst_be;
        } else if (slv.flag_trz) {
            const double f1 = only_function ? 0.0 : mat.state.f_1[at(i)];
            residual += -(x - x1) * slv.cnst_trz + f1;
        } else if (slv.flag_gear_fixed || slv.flag_gear_var) {
            residual += x1 * slv.cnst_gear_0 - x2 * slv.cnst_gear_1 - x * slv.cnst_gear_2;
        } else if (slv.flag_bdf2) {
            residual += -x * slv.cnst_bdf2_0 + x1 * slv.cnst_bdf2_1 - x2 * slv.cnst_bdf2_2;
        }
        if (!only_function && !r.val_stands && q >= 0) mat.val_m[at(mat.state.slot[at(i)])] -= constant;
    }
}

void one_time_parms(run_state& r) {
    const raised on(r.flags.one_time_parms);
    call_all(r);
}

void save_history(run_state& r) {
    const raised on(r.flags.save_history);
    ebce_form_arrays(r);
    gbce_form_arrays(r);
    call_declared(r, &entry_flags::save_history);
}

void treat_reset(run_state& r) {
    const raised on(r.flags.reset);
    gbeu_class& g = r.c.gbeu;
    for (int u = 0; u < g.n(); ++u) {
        if (!r.c.lib.gbes.flag.allow_reset[at(g.unit.i_lib[at(u)])]) continue;
        for (int k = g.vr.first[at(u)]; k < g.vr.first[at(u) + 1]; ++k) g.vr_in[at(k)] = g.val_vr[at(g.vr.data[at(k)])];
        get_gbe(r, u);
        for (int k = g.vr.first[at(u)]; k < g.vr.first[at(u) + 1]; ++k) {
            g.val_vr[at(g.vr.data[at(k)])] = g.vr_in[at(k)];
            r.mat.svec[at(r.mat.offs.gvar + g.vr.data[at(k)])] = g.vr_in[at(k)];
        }
        for (int k = g.first_aux[at(u)]; k < g.first_aux[at(u) + 1]; ++k)
            r.mat.svec[at(r.mat.offs.gaux + k)] = g.aux[at(k)];
    }
}

void ov_prm(run_state& r) {
    const raised on(r.flags.outvar_prm);
    ebce_form_arrays(r);
    gbce_form_arrays(r);
    call_all(r);
}

void find_ebe_cur_dc(run_state& r) {
    ebeu_class& e = r.c.ebeu;
    const function_table& t = r.c.lib.ebes.func;
    const raised on(r.flags.dc, r.flags.function);
    for (int u = 0; u < e.n(); ++u) {
        get_ebe(r, u);
        const int first = t.first_f[at(e.unit.i_lib[at(u)])];
        const double* f = r.ebe[at(u)].f;
        for (int j = 0; j < t.n_func(e.unit.i_lib[at(u)]); ++j)
            if (t.flag_kcl[at(first + j)]) e.cur_nd[at(e.nd.first[at(u)] + j)] = f[j];
        take_local_variables(r, u);
    }
}

void find_ebe_cur_startup(run_state& r) {
    ebeu_class& e = r.c.ebeu;
    const function_table& t = r.c.lib.ebes.func;
    const raised on(r.flags.startup, r.flags.function);
    for (int u = 0; u < e.n(); ++u) {
        get_ebe(r, u);
        const int s = e.unit.i_lib[at(u)], first = t.first_f[at(s)];
        const double* f = r.ebe[at(u)].f;
        for (int j = 0; j < t.n_func(s); ++j)
            if (t.startup_kcl[at(first + j)]) e.cur_nd[at(e.nd.first[at(u)] + t.startup_kcl_row[at(first + j)])] = f[j];
        // A template with start-up equations of its own has left its local variables itself.
        if (!r.c.lib.ebes.flag.startup_sprt[at(s)]) take_local_variables(r, u);
    }
}

void find_ebe_cur_trns(run_state& r, bool with_ddt) {
    find_functions_of(r, with_ddt ? r.passes.at_accepted : r.passes.with_ddt, with_ddt);
    keep_state_functions(r, false);
}

void find_left_out_currents(run_state& r) {
    ebce_form_arrays(r);
    find_functions_of(r, r.passes.left_out, true);
}

namespace {
void add_move(value_moves& m, int from, int to) {
    m.from.push_back(from);
    m.to.push_back(to);
}

void add_to_pass(unit_pass& pass, const run_state& r, int u) {
    const ebeu_class& e = r.c.ebeu;
    const mat_class& mat = r.mat;
    const function_table& t = r.c.lib.ebes.func;
    pass.unit.push_back(u);
    for (int k = mat.first_locv[at(u)]; k < mat.first_locv[at(u) + 1]; ++k)
        add_move(pass.locv, mat.locv.from[at(k)], mat.locv.to[at(k)]);
    const int s = e.unit.i_lib[at(u)];
    for (int j = 0; j < std::min(e.nd.size(u), t.n_func(s)); ++j)
        if (t.flag_kcl[at(t.first_f[at(s)] + j)])
            add_move(pass.current, e.unit.first_func[at(u)] + j, e.nd.first[at(u)] + j);
    for (int d = mat.kcl_ddt.first[at(u)]; d < mat.kcl_ddt.first[at(u) + 1]; ++d) pass.ddt.push_back(d);
}
}  // namespace

void plan_passes(run_state& r) {
    pass_lists& p = r.passes;
    p = pass_lists{};
    const ebeu_class& e = r.c.ebeu;
    const std::vector<int>&pure_e = r.c.lib.ebes.flag.pure, &pure_g = r.c.lib.gbes.flag.pure;
    std::vector<char> wanted(at(e.n()), 0);
    std::vector<char> slots_e(at(e.n()), 0), slots_g(at(r.c.gbeu.n()), 0);
    for (const out_file& file : r.slv.files)
        for (const out_var& v : file.vars) {
            if (v.prefix != prefix_none) continue;
            if (v.kind == ov_cur)
                wanted[at(unit_of_index(e.nd.first, v.index))] = 1;
            else if (v.kind == ov_pwr_elec)
                for (int u = r.c.eelu.first_unit[at(v.instance)]; u < r.c.eelu.first_unit[at(v.instance) + 1]; ++u)
                    wanted[at(u)] = 1;
            else if (v.kind == ov_iparm_ebe || v.kind == ov_rparm_ebe)
                slots_e[at(unit_of_index(v.kind == ov_iparm_ebe ? e.unit.iprm.first : e.unit.rprm.first, v.index))] = 1;
            else if (v.kind == ov_iparm_gbe || v.kind == ov_rparm_gbe)
                slots_g[at(unit_of_index(v.kind == ov_iparm_gbe ? r.c.gbeu.unit.iprm.first : r.c.gbeu.unit.rprm.first,
                                         v.index))] = 1;
        }
    const function_table& t = r.c.lib.ebes.func;
    p.all_pure = true;
    for (int u = 0; u < e.n(); ++u) {
        const int s = e.unit.i_lib[at(u)];
        bool ddt = false;
        for (int k = t.first_f[at(s)]; k < t.first_f[at(s) + 1]; ++k) ddt = ddt || t.flag_ddt[at(k)];
        const bool pure = pure_e[at(s)] != 0;
        p.all_pure = p.all_pure && pure;
        if (ddt) add_to_pass(p.with_ddt, r, u);
        add_to_pass(ddt || !pure || wanted[at(u)] ? p.at_accepted : p.left_out, r, u);
        if (slots_e[at(u)]) p.ov_ebe.push_back(u);
    }
    for (int u = 0; u < r.c.gbeu.n(); ++u) {
        p.all_pure = p.all_pure && pure_g[at(r.c.gbeu.unit.i_lib[at(u)])];
        if (slots_g[at(u)]) p.ov_gbe.push_back(u);
    }
}

void ov_prm_of_files(run_state& r) {
    if (r.passes.ov_ebe.empty() && r.passes.ov_gbe.empty()) return;
    const raised on(r.flags.outvar_prm);
    ebce_form_arrays(r);
    gbce_form_arrays(r);
    for (int u : r.passes.ov_ebe) get_ebe(r, u);
    for (int u : r.passes.ov_gbe) get_gbe(r, u);
}

void find_block_functions(run_state& r) {
    gbce_form_arrays(r);
    const raised on(r.flags.trns, r.flags.function);
    for (int u = 0; u < r.c.gbeu.n(); ++u) get_gbe(r, u);
    keep_state_functions(r, true);
}
