#include "analyses/evaluate.h"

#include <algorithm>

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

// Raises up to three switches of flags_class while it lives.
class raised {
public:
    explicit raised(int& a) : raised(a, a, a) {}
    raised(int& a, int& b) : raised(a, b, b) {}
    raised(int& a, int& b, int& c) : a_(a), b_(b), c_(c) { a_ = b_ = c_ = 1; }
    ~raised() { a_ = b_ = c_ = 0; }
    raised(const raised&) = delete;
    raised& operator=(const raised&) = delete;

private:
    int &a_, &b_, &c_;
};

// Adds one evaluated unit into the system. No search and no test: the slots hold active terms only.
void add_unit(const slot_table& slot, int u, const double* jac, const double* f, double* val_m, double* rhs_m) {
    const std::size_t k = at(u);
    for (int s = slot.first_jac[k]; s < slot.first_jac[k + 1]; ++s)
        val_m[slot.to_val[at(s)]] += jac[slot.from_jac[at(s)]];
    for (int s = slot.first_sum[k]; s < slot.first_sum[k + 1]; ++s) rhs_m[slot.to_row[at(s)]] += f[slot.from_f[at(s)]];
    for (int s = slot.first_own[k]; s < slot.first_own[k + 1]; ++s) rhs_m[slot.to_own[at(s)]] = f[slot.from_own[at(s)]];
}

// The same without the matrix.
void add_unit_function(const slot_table& slot, int u, const double* f, double* rhs_m) {
    const std::size_t k = at(u);
    for (int s = slot.first_sum[k]; s < slot.first_sum[k + 1]; ++s) rhs_m[slot.to_row[at(s)]] += f[slot.from_f[at(s)]];
    for (int s = slot.first_own[k]; s < slot.first_own[k + 1]; ++s) rhs_m[slot.to_own[at(s)]] = f[slot.from_own[at(s)]];
}
}  // namespace

void ebce_form_arrays(run_state& r) {
    ebeu_class& u = r.c.ebeu;
    const double* val = u.val_nd.data();
    for (std::size_t k = 0; k < u.nodev.size(); ++k) u.nodev[k] = val[u.nd.data[k]];
    for (std::size_t k = 0; k < u.vin.size(); ++k) u.vin[k] = val[u.in.data[k]];
    for (std::size_t k = 0; k < u.curind.size(); ++k) u.curind[k] = u.aux[at(u.ib_aux.data[k])];
}

void form_jac_rhs_dc(run_state& r, bool only_function) {
    r.flags.n_limit = 0;
    ebce_form_arrays(r);
    double* rhs_m = r.mat.rhs_m.data();
    std::fill(r.mat.rhs_m.begin(), r.mat.rhs_m.end(), 0.0);
    const int n = r.c.ebeu.n();
    if (only_function) {
        const raised on(r.flags.dc, r.flags.function);
        for (int u = 0; u < n; ++u) {
            get_ebe(r, u);
            add_unit_function(r.mat.ebe, u, r.ebe[at(u)].f, rhs_m);
        }
        return;
    }
    // Every entry belongs to some unit, so that clearing all of them clears what will be summed.
    std::fill(r.mat.val_m.begin(), r.mat.val_m.end(), 0.0);
    double* val_m = r.mat.val_m.data();
    const raised on(r.flags.dc, r.flags.function, r.flags.jacobian);
    for (int u = 0; u < n; ++u) {
        get_ebe(r, u);
        add_unit(r.mat.ebe, u, r.ebe[at(u)].jac->store.data(), r.ebe[at(u)].f, val_m, rhs_m);
    }
}

void one_time_parms(run_state& r) {
    const raised on(r.flags.one_time_parms);
    for (int u = 0; u < r.c.ebeu.n(); ++u) get_ebe(r, u);
}

void save_history(run_state& r) {
    const raised on(r.flags.save_history);
    ebce_form_arrays(r);
    for (int u = 0; u < r.c.ebeu.n(); ++u)
        if (r.c.lib.ebes.flag.save_history[at(r.c.ebeu.unit.i_lib[at(u)])]) get_ebe(r, u);
}

void ebce_ov_prm(run_state& r) {
    const raised on(r.flags.outvar_prm);
    for (int u = 0; u < r.c.ebeu.n(); ++u) get_ebe(r, u);
}

void find_ebe_cur_dc(run_state& r) {
    ebeu_class& e = r.c.ebeu;
    const function_table& t = r.c.lib.ebes.func;
    const raised on(r.flags.dc, r.flags.function);
    for (int u = 0; u < e.n(); ++u) {
        get_ebe(r, u);
        const int first = t.first_f[at(e.unit.i_lib[at(u)])];
        const double* f = r.ebe[at(u)].f;
        for (int j = 0; j < t.n_func(e.unit.i_lib[at(u)]); ++j) {
            if (t.flag_kcl[at(first + j)]) e.cur_nd[at(e.nd.first[at(u)] + j)] = f[j];
            if (t.flag_locvar[at(first + j)]) e.locv[at(e.first_locv[at(u)] + t.i_locvar[at(first + j)])] = f[j];
        }
    }
}
