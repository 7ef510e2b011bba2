#include "analyses/evaluate.h"

#include "analyses/composite_parms.h"
#include "analyses/explicit.h"
#include "base/at.h"

namespace {
void call_all(run_state& r) {
    for_families(r, [&](auto& f) {
        for (int u = 0; u < f.n(); ++u) get_unit(r, f, u);
    });
}
}  // namespace

void formed_arguments::form_for(const std::vector<double>& val_nd, const std::vector<double>& aux,
                                const std::vector<double>& val_vr) {
    valid_ = kept_;
    ++version_;
    if (!valid_) return;
    val_nd_ = val_nd;
    aux_ = aux;
    val_vr_ = val_vr;
}

void ebce_form_arrays(run_state& r) {
    ebeu_class& u = r.c.ebeu;
    if (r.formed.stand_for(u.val_nd, u.aux, r.c.gbeu.val_vr)) return;
    r.formed.form_for(u.val_nd, u.aux, r.c.gbeu.val_vr);
    gather(r, r.ebe);
    for (std::size_t k = 0; k < u.curind.size(); ++k) {
        const int auxs = u.ib_auxs.data[k];
        u.curind[k] = r.mat.kind == analysis::startup && auxs >= 0 ? u.auxs[at(auxs)] : u.aux[at(u.ib_aux.data[k])];
    }
}

void gbce_form_arrays(run_state& r) { gather(r, r.gbe); }

void form_arrays(run_state& r) {
    ebce_form_arrays(r);
    gbce_form_arrays(r);
}

void call_held(run_state& r, bool with_derivatives) {
    call_runs(r, r.ebe, r.ebe.runs.held, with_derivatives);
    move_values(r.plan.of_held.locv, r.c.ebeu.f.data(), r.c.ebeu.locv.data());
    r.formed.keep_held();
}

void call_curved(run_state& r, bool with_derivatives) {
    if (r.formed.curved_stand(r.flags.gmin, with_derivatives)) return;
    call_runs(r, r.ebe, r.ebe.runs.curved, with_derivatives);
    r.formed.keep_curved(r.flags.gmin, with_derivatives);
}

void one_time_parms(run_state& r) {
    compute_rparms(r);
    const raised on(r.flags.one_time_parms);
    call_all(r);
    one_time_parms_explicit(r);
    call_digital_models(r);
}

void ov_prm(run_state& r) {
    const raised on(r.flags.outvar_prm);
    form_arrays(r);
    call_all(r);
    show_digital_parameters(r);
}

void move_values(const value_moves& m, const double* from, double* to) {
    const std::size_t n = m.from.size();
    for (std::size_t k = 0; k < n; ++k) to[m.to[k]] = from[m.from[k]];
}
