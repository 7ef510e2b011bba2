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
        case analysis::startup: return r.flags.startup;
        case analysis::trns: return r.flags.trns;
        default: return r.flags.dc;
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

// Adds its functions: rows of nodes are summed, rows of its own are assigned.
void add_function(const slot_table& slot, int u, const double* f, double* rhs_m) {
    for (int s = slot.first_sum[at(u)]; s < slot.first_sum[at(u) + 1]; ++s)
        rhs_m[slot.to_row[at(s)]] += f[slot.from_f[at(s)]];
    for (int s = slot.first_own[at(u)]; s < slot.first_own[at(u) + 1]; ++s)
        rhs_m[slot.to_own[at(s)]] = f[slot.from_own[at(s)]];
}

// dz/dt of KCL derivative d by the present method. Tests stand in this order; the first that is on decides.
double z_derivative(const mat_class& mat, const solve_class& slv, const double* locv, int d) {
    const std::size_t i = at(mat.kcl_ddt.z[at(d)]);
    const double z = locv[i], z1 = mat.locv_old_1[i];
    if (slv.flag_be) return (z - z1) * slv.cnst_be;
    if (slv.flag_trz) return (z - z1) * slv.cnst_trz - (mat.kcl_ddt.total_1[at(d)] - mat.kcl_ddt.still_1[at(d)]);
    const double z2 = mat.locv_old_2[i];
    if (slv.flag_gear_fixed || slv.flag_gear_var) return z * slv.cnst_gear_2 - z1 * slv.cnst_gear_0 + z2 * slv.cnst_gear_1;
    if (slv.flag_bdf2) return z * slv.cnst_bdf2_0 - z1 * slv.cnst_bdf2_1 + z2 * slv.cnst_bdf2_2;
    return 0.0;
}

void add_function_with_ddt(const run_state& r, int u, const double* f, double* rhs_m) {
    const slot_table& slot = r.mat.ebe;
    for (int s = slot.first_sum[at(u)]; s < slot.first_sum[at(u) + 1]; ++s) {
        double value = f[slot.from_f[at(s)]];
        if (const int d = slot.ddt[at(s)]; d >= 0) value += z_derivative(r.mat, r.slv, r.c.ebeu.locv.data(), d);
        rhs_m[slot.to_row[at(s)]] += value;
    }
    for (int s = slot.first_own[at(u)]; s < slot.first_own[at(u) + 1]; ++s)
        rhs_m[slot.to_own[at(s)]] = f[slot.from_own[at(s)]];
}

void take_local_variables(run_state& r, int u) {
    const mat_class& mat = r.mat;
    for (int k = mat.first_locv_f[at(u)]; k < mat.first_locv_f[at(u) + 1]; ++k)
        r.c.ebeu.locv[at(mat.locv_to[at(k)])] = r.c.ebeu.f[at(mat.locv_f[at(k)])];
}

void evaluate_electrical(run_state& r, bool only_function) {
    const int n = r.c.ebeu.n();
    const bool in_time = r.mat.kind == analysis::trns;
    const double constant = in_time ? method_constant(r.slv) : 0.0;
    double* val_m = r.mat.val_m.data();
    double* rhs_m = r.mat.rhs_m.data();
    for (int u = 0; u < n; ++u) {
        get_ebe(r, u);
        const ebe_call& call = r.ebe[at(u)];
        if (in_time && r.mat.ebe.any_ddt[at(u)]) {
            take_local_variables(r, u);
            if (!only_function) add_jac_scaled(r.mat.ebe, u, call.jac->store.data(), constant, val_m);
            add_function_with_ddt(r, u, call.f, rhs_m);
        } else {
            if (in_time) take_local_variables(r, u);
            if (!only_function) add_jac(r.mat.ebe, u, call.jac->store.data(), val_m);
            add_function(r.mat.ebe, u, call.f, rhs_m);
        }
    }
}

void evaluate_blocks(run_state& r, bool only_function) {
    double* val_m = r.mat.val_m.data();
    double* rhs_m = r.mat.rhs_m.data();
    for (int u = 0; u < r.c.gbeu.n(); ++u) {
        get_gbe(r, u);
        const gbe_call& call = r.gbe[at(u)];
        if (!only_function) add_jac(r.mat.gbe, u, call.jac->store.data(), val_m);
        add_function(r.mat.gbe, u, call.f, rhs_m);
    }
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
void find_functions_of(run_state& r, const std::vector<int>& units, bool with_ddt) {
    ebeu_class& e = r.c.ebeu;
    mat_class& mat = r.mat;
    const function_table& t = r.c.lib.ebes.func;
    const raised on(r.flags.trns, r.flags.function);
    for (int u : units) {
        get_ebe(r, u);
        take_local_variables(r, u);
        if (with_ddt) {
            const double* f = r.ebe[at(u)].f;
            const int s = e.unit.i_lib[at(u)], first = t.first_f[at(s)];
            for (int j = 0; j < std::min(e.nd.size(u), t.n_func(s)); ++j)
                if (t.flag_kcl[at(first + j)]) e.cur_nd[at(e.nd.first[at(u)] + j)] = f[j];
        }
        for (int d = mat.kcl_ddt.first[at(u)]; d < mat.kcl_ddt.first[at(u) + 1]; ++d) {
            const double still = e.f[at(mat.kcl_ddt.f[at(d)])];
            mat.kcl_ddt.still[at(d)] = still;
            if (!with_ddt) continue;
            const double total = still + z_derivative(mat, r.slv, e.locv.data(), d);
            mat.kcl_ddt.total[at(d)] = total;
            e.cur_nd[at(mat.kcl_ddt.terminal[at(d)])] = total;
        }
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
    // Every entry belongs to some unit, so that clearing all of them clears what will be summed. The matrix of a circuit
    // of pure units stands as long as the method's constant does.
    r.val_stands = !only_function && r.mat.kind == analysis::trns && r.passes.all_pure &&
                   r.val_constant == method_constant(r.slv);
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
            if (t.startup_kcl[at(first + j)])
                e.cur_nd[at(e.nd.first[at(u)] + t.startup_kcl_row[at(first + j)])] = f[j];
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
                slots_g[at(unit_of_index(
                    v.kind == ov_iparm_gbe ? r.c.gbeu.unit.iprm.first : r.c.gbeu.unit.rprm.first, v.index))] = 1;
        }
    const function_table& t = r.c.lib.ebes.func;
    p.all_pure = true;
    for (int u = 0; u < e.n(); ++u) {
        const int s = e.unit.i_lib[at(u)];
        bool ddt = false;
        for (int k = t.first_f[at(s)]; k < t.first_f[at(s) + 1]; ++k) ddt = ddt || t.flag_ddt[at(k)];
        const bool pure = pure_e[at(s)] != 0;
        p.all_pure = p.all_pure && pure;
        if (ddt) p.with_ddt.push_back(u);
        (ddt || !pure || wanted[at(u)] ? p.at_accepted : p.left_out).push_back(u);
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
