#include "analyses/composite_parms.h"

#include "analyses/evaluate.h"
#include "base/at.h"
#include "base/halt.h"
#include "elaborate/families.h"

namespace {
// The function would reach beyond the rows of an entry that is smaller than the one which it was compiled from.
void check_counts(const composite_library& lib, int e, const composite_registration& row, const library_form& form) {
    struct count {
        const char* keyword;
        int has, uses;
    };
    for (const count& k :
         {count{"iparms:", lib.list.iprm.count(e), row.n_iprm}, count{"sparms:", lib.list.sprm.count(e), row.n_sprm},
          count{"rparms:", lib.list.rprm.count(e), row.n_rprm}, count{"outvar:", lib.ov.count(e), row.n_ov}})
        if (k.has < k.uses)
            halt({line(form.class_name, ": entry ", row.name, " is smaller than its function."),
                  line("   ", k.keyword, " has ", k.has, ", the function uses ", k.uses, "."), "   Halting..."});
}

// Terminal currents at the bias point of the instances whose output values functions read; output slots of all.
void refresh_outputs(run_state& r) {
    ov_prm(r);
    ebeu_class& e = r.c.ebeu;
    const function_table& t = r.ebe.lib.func;
    const raised on(r.flags.dc, r.flags.ac, r.flags.function);
    for (const computed_instance& x : r.c.computed.list) {
        if (!x.acparms || x.fam != fam_e) continue;
        for (int u = r.c.eelu.first_unit[at(x.instance)]; u < r.c.eelu.first_unit[at(x.instance) + 1]; ++u) {
            get_unit(r, r.ebe, u);
            const int s = r.ebe.entry(u);
            for (int j = 0; j < t.n_func(s); ++j)
                if (const int terminal = terminal_of_function(t, t.first_f[at(s)] + j, j, analysis::dc); terminal >= 0)
                    e.cur_nd[at(e.nd.first[at(u)] + terminal)] = r.ebe.call[at(u)].f[j];
        }
    }
}
}  // namespace

void bind_composites(run_state& r) {
    circuit& c = r.c;
    for (const family fam : {fam_e, fam_g, fam_x}) {
        const composite_library& lib = c.lib.composites(fam);
        const library_form& form = family_forms[fam].lib;
        std::vector<composite_function>& function = c.computed.function[at(fam)];
        function.assign(at(lib.n()), nullptr);
        for (int e = 0; e < lib.n(); ++e) {
            if (!lib.flag.compute_rparms[at(e)] && !lib.flag.compute_acp[at(e)]) continue;
            const composite_registration* row = find_composite_function(form.begin, lib.list.entry[e]);
            if (row == nullptr) continue;
            check_counts(lib, e, *row, form);
            function[at(e)] = row->function;
        }
    }
    build_computed(c);
}

void compute_rparms(run_state& r) {
    for (computed_instance& x : r.c.computed.list)
        if (x.rparms) compute_rparms(r.c, x, r.flags);
}

void compute_rparms_of(run_state& r, int fam, int instance) {
    for (computed_instance& x : r.c.computed.list)
        if (x.rparms && x.fam == fam && x.instance == instance) compute_rparms(r.c, x, r.flags);
}

bool has_compute_acp(const run_state& r) {
    for (const computed_instance& x : r.c.computed.list)
        if (x.acparms) return true;
    return false;
}

void compute_acp(run_state& r) {
    if (!has_compute_acp(r)) return;
    refresh_outputs(r);
    for (computed_instance& x : r.c.computed.list)
        if (x.acparms) compute_acp(r.c, x, r.flags);
}
