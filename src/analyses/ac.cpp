#include "analyses/ac.h"

#include "analyses/composite_parms.h"
#include "analyses/evaluate.h"
#include "base/at.h"
#include "base/halt.h"
#include "base/signals.h"
#include "output/row_writers.h"
#include "settings/directives.h"

namespace {
// Every instance needs a small-signal half. One that only processes results has none to give.
void check_ac_halves(const circuit& c) {
    struct checked {
        family fam;
        const char* name;
    };
    for (const auto& [fam, name] :
         {checked{fam_e, "ece"}, checked{fam_g, "gce"}, checked{fam_x, "xce"}, checked{fam_gm, "gme"}}) {
        const composite_library& lib = c.lib.composites(fam);
        for (const int e : c.instances(fam).i_lib) {
            if (fam == fam_g && (lib.flag.postprocessor[at(e)] || lib.flag.postprocessor_ac[at(e)])) continue;
            if (lib.flag.allow_ac[at(e)] && (fam == fam_gm || lib.beac.n_be(e) > 0)) continue;
            halt({line("ccmain: There are no AC statements in this ", name, ": ", lib.list.entry[e]), "  Halting..."});
        }
    }
}

// All frequencies at one point of the sweeps.
void run_frequencies(run_state& r) {
    solve_class& slv = r.slv;
    if (slv.method.compute_acp) compute_acp(r);
    take_bias(r);
    for (slv.now.i_freq = 0; slv.now.i_freq < slv.task.n_freq; ++slv.now.i_freq) {
        heed_signals();
        slv.now.freq = slv.task.freq_array[at(slv.now.i_freq)];
        if (r.c.ebau.n() > 0 || r.c.gbau.n() > 0 || r.c.xbau.n() > 0) solve_ac(r);
        write_ac(slv, r.c, r.flags);
    }
}
}  // namespace

void run_ac(run_state& r) {
    solve_class& slv = r.slv;
    check_ac_halves(r.c);
    set_mat_1_ac(r);
    calc_acparms(r);
    for (slv.now.i_sync = 0; slv.now.i_sync < slv.task.n_sync; ++slv.now.i_sync) {
        if (!slv.task.vary_sync.empty()) vary_parmsync(slv, r.c, slv.now.i_sync);
        for (slv.now.i_sweep = 0; slv.now.i_sweep < slv.task.n_sweep; ++slv.now.i_sweep) {
            if (slv.task.n_sweep > 1) {
                r.flags.vary_parm = 1;
                vary_parm(slv, r.c, slv.now.i_sweep);
            }
            one_time_parms(r);
            r.flags.vary_parm = 0;
            run_frequencies(r);
        }
    }
    slv.now.freq = slv.task.n_freq > 0 ? slv.task.freq_array.back() : 0.0;
}
