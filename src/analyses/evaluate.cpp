#include "analyses/evaluate.h"

#include <algorithm>
#include <cstring>

#include "analyses/plan.h"

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

void call(run_state& r, const ebe_run& run, bool with_derivatives) {
    if (run.function) return run.function(run, with_derivatives, &r.flags, &r.dp, &r.math_cnst);
    get_ebe(r, run.unit);
    if (with_derivatives) fetch_derivatives(run.jac, run.jac.out);
}
void call(run_state& r, const gbe_run& run, bool with_derivatives) {
    if (run.function) return run.function(run, with_derivatives, &r.flags, &r.dp, &r.math_cnst);
    get_gbe(r, run.unit);
    if (with_derivatives) fetch_derivatives(run.jac, run.jac.out);
}
// The units of some runs, for functions and, if with_derivatives, for derivatives.
template <class Run>
void call(run_state& r, const std::vector<Run>& runs, bool with_derivatives) {
    r.flags.jacobian = with_derivatives ? 1 : 0;
    for (const Run& run : runs) call(r, run, with_derivatives);
    r.flags.jacobian = 0;
}

double add_terms(double sum, const double* from, const int* term, const int* end) {
    for (; term != end; ++term) sum += from[*term];
    return sum;
}

void scale(const value_moves& m, double constant, double* d) {
    const std::size_t n = m.from.size();
    for (std::size_t k = 0; k < n; ++k) d[m.to[k]] = constant * d[m.from[k]];
}

// The whole matrix, and what stands of the entries that will change.
void sum_matrix(assembly_plan& p, double constant, double* val_m) {
    double* d = p.d.data();
    scale(p.scaled, constant, d);
    p.d.back() = -constant;
    const int *term = p.entries.term.data(), *first = p.entries.first.data();
    const int n = p.entries.n();
    for (int i = 0; i < n; ++i) val_m[i] = add_terms(0.0, d, term + first[i], term + first[i + 1]);
    for (std::size_t k = 0; k < p.entry.size(); ++k) {
        const int* begin = term + first[p.entry[k]];
        p.standing[k] = add_terms(0.0, d, begin, begin + p.n_standing[k]);
    }
}
// The entries that change.
void sum_changing(assembly_plan& p, double* val_m) {
    double* d = p.d.data();
    scale(p.scaled_changing, p.val_constant, d);
    const int *term = p.changing.term.data(), *first = p.changing.first.data();
    const std::size_t n = p.entry.size();
    for (std::size_t k = 0; k < n; ++k)
        val_m[p.entry[k]] = add_terms(p.standing[k], d, term + first[k], term + first[k + 1]);
}

// Rows of nodes are sums of functions f, rows of a unit's own are assigned.
void sum_rows_of_nodes(const assembly_plan& p, const double* f, double* rhs_m) {
    const int *term = p.rows.term.data(), *first = p.rows.first.data();
    const std::size_t n = p.row.size();
    for (std::size_t i = 0; i < n; ++i) rhs_m[p.row[i]] = add_terms(0.0, f, term + first[i], term + first[i + 1]);
}
void assign_own_rows(const slot_table& slot, const double* f, double* rhs_m) {
    const std::size_t n = slot.to_own.size();
    for (std::size_t s = 0; s < n; ++s) rhs_m[slot.to_own[s]] = f[slot.from_own[s]];
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
    if (slv.now.flag_be)
        find([=, c = slv.now.cnst_be](std::size_t, int i) { return (z[i] - z1[i]) * c; });
    else if (slv.now.flag_trz)
        find([=, c = slv.now.cnst_trz, total_1 = k.total_1.data(), still_1 = k.still_1.data()](std::size_t d, int i) {
            return (z[i] - z1[i]) * c - (total_1[d] - still_1[d]);
        });
    else if (slv.now.flag_gear_fixed || slv.now.flag_gear_var)
        find([=, c0 = slv.now.cnst_gear_0, c1 = slv.now.cnst_gear_1, c2 = slv.now.cnst_gear_2](std::size_t, int i) {
            return z[i] * c2 - z1[i] * c0 + z2[i] * c1;
        });
    else if (slv.now.flag_bdf2)
        find([=, c0 = slv.now.cnst_bdf2_0, c1 = slv.now.cnst_bdf2_1, c2 = slv.now.cnst_bdf2_2](std::size_t, int i) {
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

// The held units, unless they have been called for these arguments.
void call_held(run_state& r, bool with_derivatives) {
    if (!with_derivatives && r.formed.of_held == r.formed.version) return;
    call(r, r.plan.e.held, with_derivatives);
    move_values(r.plan.e.of_held.locv, r.c.ebeu.f.data(), r.c.ebeu.locv.data());
    r.formed.of_held = r.formed.version;
}

// All units; whole: with the derivatives of all, changing: with those of units whose derivatives may change.
void evaluate_electrical(run_state& r, bool whole, bool changing) {
    const electrical_runs& e = r.plan.e;
    double* f = r.c.ebeu.f.data();
    call_held(r, whole);
    call(r, e.accepted, whole);
    call(r, e.left_out, whole);
    call(r, e.changing, changing);
    if (r.mat.kind == analysis::trns) {
        move_values(e.of_others.locv, f, r.c.ebeu.locv.data());
        move_values(e.of_left_out.locv, f, r.c.ebeu.locv.data());
        find_rates(r);
        const kcl_derivatives& k = r.mat.kcl_ddt;
        double* total = f + r.c.ebeu.unit.n_ttlf();
        for (int d = 0; d < k.n(); ++d) total[d] = f[k.f[at(d)]] + k.rate[at(d)];
    }
    sum_rows_of_nodes(r.plan, f, r.mat.rhs_m.data());
    assign_own_rows(r.mat.ebe, f, r.mat.rhs_m.data());
}

void evaluate_blocks(run_state& r, bool whole, bool changing) {
    call(r, r.plan.g.pure, whole);
    call(r, r.plan.g.changing, changing);
    assign_own_rows(r.mat.gbe, r.c.gbeu.f.data(), r.mat.rhs_m.data());
}

// Function values of the state rows, from what the models gave last. Those of blocks follow every assembly, those of
// electrical units the passes behind a solve.
void keep_state_functions(run_state& r, bool of_blocks) {
    state_rows& s = r.mat.state;
    const std::vector<double>& f = of_blocks ? r.c.gbeu.f : r.c.ebeu.f;
    for (int i = 0; i < s.n(); ++i)
        if ((s.is_block[at(i)] != 0) == of_blocks) s.f_now[at(i)] = f[at(s.f[at(i)])];
}

// Static values of derivatives, and with_totals their totals as currents.
void find_totals(run_state& r, const std::vector<int>& ddt, bool with_totals) {
    kcl_derivatives& k = r.mat.kcl_ddt;
    const double* f = r.c.ebeu.f.data();
    for (int d : ddt) k.still[at(d)] = f[k.f[at(d)]];
    if (!with_totals) return;
    for (int d : ddt) {
        const double total = k.still[at(d)] + k.rate[at(d)];
        k.total[at(d)] = total;
        r.c.ebeu.cur_nd[at(k.terminal[at(d)])] = total;
    }
}

// Terminal currents at a point whose functions and local variables are known.
void find_currents(run_state& r, const function_moves& m) {
    move_values(m.current, r.c.ebeu.f.data(), r.c.ebeu.cur_nd.data());
}

// Nobody asks for totals before the end of a block whose method has no use for the present ones.
bool totals_wait(const run_state& r) {
    return !r.slv.now.flag_trz && !r.slv.now.flag_bdf2 && !r.plan.shows_currents && r.slv.out.i_file_solution < 0;
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
    if (slv.now.flag_be) return slv.now.cnst_be;
    if (slv.now.flag_trz) return slv.now.cnst_trz;
    if (slv.now.flag_gear_fixed || slv.now.flag_gear_var) return slv.now.cnst_gear_2;
    return slv.now.flag_bdf2 ? slv.now.cnst_bdf2_0 : 0.0;
}

namespace {
bool same(const std::vector<double>& a, const std::vector<double>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}
}  // namespace

void ebce_form_arrays(run_state& r) {
    ebeu_class& u = r.c.ebeu;
    formed_arguments& formed = r.formed;
    const std::vector<double>& vr = r.c.gbeu.val_vr;
    if (formed.valid && same(formed.val_nd, u.val_nd) && same(formed.aux, u.aux) && same(formed.val_vr, vr)) return;
    formed.valid = formed.kept;
    ++formed.version;
    if (formed.valid) {
        formed.val_nd = u.val_nd;
        formed.aux = u.aux;
        formed.val_vr = vr;
    }
    const double* val = u.val_nd.data();
    for (std::size_t k = 0; k < u.nodev.size(); ++k) u.nodev[k] = val[u.nd.data[k]];
    for (std::size_t k = 0; k < u.vin.size(); ++k) u.vin[k] = val[u.in.data[k]];
    for (std::size_t k = 0; k < u.curind.size(); ++k) {
        const int auxs = u.ib_auxs.data[k];
        u.curind[k] = r.mat.kind == analysis::startup && auxs >= 0 ? u.auxs[at(auxs)] : u.aux[at(u.ib_aux.data[k])];
    }
    for (std::size_t k = 0; k < u.val_vr.size(); ++k) u.val_vr[k] = vr[at(u.vr_gbeu[k])];
}

void gbce_form_arrays(run_state& r) {
    gbeu_class& g = r.c.gbeu;
    for (std::size_t k = 0; k < g.vr_in.size(); ++k) g.vr_in[k] = g.val_vr[at(g.vr.data[k])];
}

void form_jac_rhs(run_state& r, bool only_function) {
    assembly_plan& plan = r.plan;
    if (plan.layout != r.mat.layout) make_plan(r);
    r.flags.n_limit = 0;
    ebce_form_arrays(r);
    gbce_form_arrays(r);
    const bool in_time = r.mat.kind == analysis::trns;
    const double constant = in_time ? method_constant(r.slv) : 0.0;
    const bool changing = !only_function, whole = changing && !(in_time && plan.d_stands);
    {
        const raised on(analysis_flag(r), r.flags.function);
        evaluate_electrical(r, whole, changing);
        evaluate_blocks(r, whole, changing);
    }
    if (changing) {
        if (!whole && plan.val_stands && plan.val_constant == constant)
            sum_changing(plan, r.mat.val_m.data());
        else
            sum_matrix(plan, constant, r.mat.val_m.data());
        plan.d_stands = plan.val_stands = in_time;
        plan.val_constant = constant;
    }
    keep_state_functions(r, true);
}

void add_trns_terms(run_state& r, bool only_function) {
    mat_class& mat = r.mat;
    const solve_class& slv = r.slv;
    for (int i = 0; i < mat.state.n(); ++i) {
        const int q = mat.state.col[at(i)];
        double x = 0.0, x1 = 0.0, x2 = 0.0;
        if (q >= 0) {
            x = mat.svec[at(q)];
            x1 = mat.svec_old_1[at(q)];
            x2 = mat.svec_old_2[at(q)];
        }
        double& residual = mat.rhs_m[at(mat.state.row[at(i)])];
        if (slv.now.flag_be) {
            residual -= (x - x1) * slv.now.cnst_be;
        } else if (slv.now.flag_trz) {
            const double f1 = only_function ? 0.0 : mat.state.f_1[at(i)];
            residual += -(x - x1) * slv.now.cnst_trz + f1;
        } else if (slv.now.flag_gear_fixed || slv.now.flag_gear_var) {
            residual += x1 * slv.now.cnst_gear_0 - x2 * slv.now.cnst_gear_1 - x * slv.now.cnst_gear_2;
        } else if (slv.now.flag_bdf2) {
            residual += -x * slv.now.cnst_bdf2_0 + x1 * slv.now.cnst_bdf2_1 - x2 * slv.now.cnst_bdf2_2;
        }
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
    const electrical_runs& e = r.plan.e;
    const double* f = r.c.ebeu.f.data();
    double* locv = r.c.ebeu.locv.data();
    {
        const raised on(r.flags.trns, r.flags.function);
        call_held(r, false);
        if (with_ddt) {
            call(r, e.accepted, false);
            call(r, e.changing, false);
        } else {
            call(r, e.with_ddt, false);
        }
    }
    const function_moves& others = with_ddt ? e.of_others : e.of_with_ddt;
    move_values(others.locv, f, locv);
    if (!with_ddt || !totals_wait(r)) {
        if (with_ddt) {
            find_currents(r, e.of_held);
            find_currents(r, others);
            find_rates(r);
        }
        find_totals(r, e.of_held.ddt, with_ddt);
        find_totals(r, others.ddt, with_ddt);
    }
    keep_state_functions(r, false);
}

bool keeps_all_currents(const run_state& r) { return r.slv.out.i_file_solution >= 0 || r.c.cct.flag_reset; }

void find_left_out_currents(run_state& r) {
    const electrical_runs& e = r.plan.e;
    ebce_form_arrays(r);
    {
        const raised on(r.flags.trns, r.flags.function);
        call(r, e.left_out, false);
    }
    move_values(e.of_left_out.locv, r.c.ebeu.f.data(), r.c.ebeu.locv.data());
    find_currents(r, e.of_left_out);
}

void find_waiting_currents(run_state& r) {
    if (!totals_wait(r)) return;
    const electrical_runs& e = r.plan.e;
    find_currents(r, e.of_held);
    find_currents(r, e.of_others);
    find_rates(r);
    find_totals(r, e.of_held.ddt, true);
    find_totals(r, e.of_others.ddt, true);
}

void ov_prm_of_files(run_state& r) {
    if (r.plan.ov_ebe.empty() && r.plan.ov_gbe.empty()) return;
    const raised on(r.flags.outvar_prm);
    ebce_form_arrays(r);
    gbce_form_arrays(r);
    for (int u : r.plan.ov_ebe) get_ebe(r, u);
    for (int u : r.plan.ov_gbe) get_gbe(r, u);
}

void find_block_functions(run_state& r) {
    gbce_form_arrays(r);
    const raised on(r.flags.trns, r.flags.function);
    call(r, r.plan.g.pure, false);
    call(r, r.plan.g.changing, false);
    keep_state_functions(r, true);
}
