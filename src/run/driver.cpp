#include "run/driver.h"

#include <tuple>
#include <vector>

#include "analyses/dc.h"
#include "analyses/evaluate.h"
#include "analyses/run_state.h"
#include "analyses/sweep.h"
#include "analyses/trns.h"
#include "base/halt.h"
#include "base/list_file.h"
#include "deck/deck_dumps.h"
#include "elaborate/circuit_dumps.h"
#include "elaborate/read_circuit.h"
#include "library/composite/library_dumps.h"
#include "models/data_files.h"
#include "output/fourier.h"
#include "output/parms_file.h"
#include "output/row_writers.h"
#include "output/solution_file.h"
#include "settings/directives.h"

namespace {
void write_library_dumps(const output_flags& on, const libraries& lib) {
    const std::tuple<bool, const char*, const basic_library*> basic[] = {
        {on.ebes, "ebes", &lib.ebes}, {on.gbes, "gbes", &lib.gbes}, {on.ebac, "ebac", &lib.ebac},
        {on.gbac, "gbac", &lib.gbac}, {on.dbes, "dbes", &lib.dbes}, {on.xbes, "xbes", &lib.xbes},
        {on.xbac, "xbac", &lib.xbac}};
    for (const auto& [wanted, word, library] : basic)
        if (wanted) write_basic_dump(word, *library);
    const std::tuple<bool, const char*, const composite_library*> composites[] = {{on.eels, "eels", &lib.eels},
                                                                                  {on.gels, "gels", &lib.gels},
                                                                                  {on.xels, "xels", &lib.xels},
                                                                                  {on.dels, "dels", &lib.dels}};
    for (const auto& [wanted, word, library] : composites)
        if (wanted) write_composite_dump(word, *library);
    if (on.hebes) write_hebes_dump("hebes", lib.ebes);
    if (on.heels) write_heels_dump("heels", lib.eels, lib.ebes);
    if (on.hebes_ac) write_hebes_dump("hebes_ac", lib.ebac);
    if (on.gmes) write_composite_dump("gmes", lib.gmes);
}

void write_model_dumps(const output_flags& on, const circuit& c) {
    if (on.ecem) write_model_dump("ecem", c.ecem, c.lib.eels);
    if (on.gcem) write_model_dump("gcem", c.gcem, c.lib.gels);
    if (on.dcem) write_model_dump("dcem", c.dcem, c.lib.dels);
    if (on.xcem) write_model_dump("xcem", c.xcem, c.lib.xels);
    if (on.gmem) write_model_dump("gmem", c.gmem, c.lib.gmes);
}

// Global numbers of all library entries, in the order in which a faulty list is to show.
void read_lists(const libraries& lib, flags_class& flags) {
    flags.map_global_ece = make_chrarray_5("ece", ".tnlaux/ece_all.lst", lib.eels.list.entry);
    flags.map_global_gce = make_chrarray_5("gce", ".tnlaux/gce_all.lst", lib.gels.list.entry);
    flags.map_global_xce = make_chrarray_5("xce", ".tnlaux/xce_all.lst", lib.xels.list.entry);
    flags.map_global_dbe = make_chrarray_5("dbe", ".tnlaux/dbe_all.lst", lib.dbes.list.entry);
    flags.map_global_ebe = make_chrarray_5("ebe", ".tnlaux/ebe_all.lst", lib.ebes.list.entry);
    flags.map_global_gbe = make_chrarray_5("gbe", ".tnlaux/gbe_all.lst", lib.gbes.list.entry);
    flags.map_global_xbe = make_chrarray_5("xbe", ".tnlaux/xbe_all.lst", lib.xbes.list.entry);
    flags.map_global_sse = make_chrarray_5("sse", ".tnlaux/sse_all.lst", lib.ebac.list.entry);
    flags.map_global_ssg = make_chrarray_5("ssg", ".tnlaux/ssg_all.lst", lib.gbac.list.entry);
    flags.map_global_ssx = make_chrarray_5("ssx", ".tnlaux/ssx_all.lst", lib.xbac.list.entry);
}

void check_circuit_leftovers(const circuit_file& cf) {
    const int i = cf.first_unclaimed(cf.n_begin_cct, cf.n_end_cct);
    if (i >= 0)
        halt({"ccmain: illegal statement in circuit section?",
              line("  Check line starting with: ", cf.text.word(i, 0))});
}

void check_solve_leftovers(const circuit_file& cf, int index) {
    const std::size_t b = static_cast<std::size_t>(index);
    const int i = cf.first_unclaimed(cf.n_begin_solve[b], cf.n_end_solve[b]);
    if (i >= 0)
        halt({"main: illegal statement in a solve section?", line("  Check solve section number ", index),
              line("  Check line starting with: ", cf.text.word(i, 0)), "  Halting..."});
}

void check_available(const solve_class& slv) {
    for (const auto& [on, word] : {std::pair{slv.ssw, "ssw"}, std::pair{slv.ac, "ac"}})
        if (on) halt({line("main: solve_type ", word, " is not available in this version."), "  Halting..."});
}

// Nobody makes the results of post-processing yet: a file that asks for one would stay empty.
void check_results_available(const circuit& c) {
    for (int index = 0; index < c.cf.n_solve; ++index)
        for (int i = c.cf.n_begin_solve[static_cast<std::size_t>(index)];
             i < c.cf.n_end_solve[static_cast<std::size_t>(index)]; ++i) {
            if (!c.cf.text.begins(i, "variables:")) continue;
            for (int j = 1; j < c.cf.text.n_words(i); ++j) {
                const int k = c.ov.find(c.cf.text.word(i, j));
                const int kind = k < 0 ? ov_none : c.ov.kind[static_cast<std::size_t>(k)];
                if (kind == ov_postproc || kind == ov_postproc_ac)
                    halt({"main: post-processing is not available in this version.",
                          line("   Check this outvar: ", c.cf.text.word(i, j)), "  Halting..."});
            }
        }
}

bool solves(const solve_class& slv) { return slv.dc || slv.startup || slv.trns; }

analysis analysis_of(const solve_class& slv) {
    return slv.trns ? analysis::trns : slv.startup ? analysis::startup : analysis::dc;
}

// All points of a block, and the currents that the file of its last solution shows.
void solve_points(run_state& r) {
    if (r.slv.startup) set_sv(r.slv, r.c);
    r.residual = {};
    init_sol(r);
    set_mat(r.mat, r.c, r.ebes1, r.gbes1);
    if (r.slv.trns)
        solve_trns(r);
    else
        run_dc_sweeps(r);
    if (r.slv.out.i_file_solution < 0) return;
    ebce_form_arrays(r);
    if (r.slv.dc) find_ebe_cur_dc(r);
    if (r.slv.startup) find_ebe_cur_startup(r);
    if (r.slv.trns) find_ebe_cur_trns(r, false);
}
}  // namespace

void prepare_circuit(run_state& r) {
    circuit& c = r.c;
    elaborate(c);
    read_gbe_data_files(c.lib.gbes, c.gbeu.unit.i_lib, c.gbeu.unit.sprm, r.dp);
    write_circuit_dumps(c);
    check_circuit_leftovers(c.cf);
    classify(c);
    bind_models(r);
    one_time_parms(r);
    check_linear(c);
    check_one_time(c);
    set_rparm_1(c);
    get_rparm_1(c);
    allocate_system(r.mat, c);
}

void read_block(run_state& r, int index) {
    solve_class& slv = r.slv;
    circuit& c = r.c;
    const bool debug = c.cf.output.debug;
    slv.now.n_gmin_total = 0;
    slv.index_solve = index;
    r.flags.n_solve_lin = 0;
    slv.now.i_vary_last = slv.now.i_sync_last = -1;
    if (debug) say(line("main: index_solve = ", index));
    r.flags.init_flags();
    method_default(slv, c, r.flags);
    if (debug) say("main: calling slv.set_values");
    set_values(slv, index, c, r.flags);
    if (debug) say("main: slv.set_values done");
    r.flags.gmin = slv.method.gmin_end;
    r.flags.flag_debug_int = slv.method.flag_debug_int;
    r.mat.e.zero_piv = slv.method.zero_piv;
    r.mat.e.gauss_epsln = slv.method.gauss_epsln;
    r.mat.e.debug_gauss_1 = slv.method.debug_gauss_1;
    r.mat.e.debug_gauss_2 = slv.method.debug_gauss_2;
    check_solve_leftovers(c.cf, index);
    check_available(slv);
}

void solve_block(run_state& r) {
    solve_class& slv = r.slv;
    circuit& c = r.c;
    if (solves(slv)) {
        define_offs_solvec(r.mat, c, analysis_of(slv));
        define_method_type(slv, c.cct);
    }
    open_out_files(slv, c);
    if (!slv.task.set_parm.empty()) r.flags.set_parm = 1;
    set_parm(slv, c);
    one_time_parms(r);
    r.flags.set_parm = 0;
    if (c.cf.output.debug) say("main: one_time_parms done");
    if (solves(slv)) solve_points(r);
    if (slv.out.i_file_solution >= 0) write_solution(slv, c, r.flags);
    if (slv.out.i_file_parms >= 0) write_parms(slv, c);
    write_fourier(slv);
    close_out_files(slv);
    slv.previous_solve_type = slv.solve_type;
    if (solves(slv)) slv.flag_prev_solution_exists = int_T;
    if (slv.method.gmin_step && slv.now.n_gmin_total != 0) say(line("main: n_gmin_total=", slv.now.n_gmin_total));
    delete_arrays(slv);
}

void run_tarnel() {
    circuit c;
    c.cf = read_circuit_file(".tnlaux/cct.in", deck_line_limit("tmpdim.in"));
    if (c.cf.output.input) write_input_dat(c.cf);
    read_libraries(c.lib);
    write_library_dumps(c.cf.output, c.lib);
    read_circuit(c, {[&] {
                         if (c.cf.output.glbl) write_glbl_dat(c.gprm);
                     },
                     [&] { write_model_dumps(c.cf.output, c); }});
    run_state r(c);
    read_lists(c.lib, r.flags);
    c.tmpdim = read_tmpdim("tmpdim.in");
    prepare_circuit(r);
    check_results_available(c);
    for (int index = 0; index < c.cf.n_solve; ++index) {
        read_block(r, index);
        solve_block(r);
    }
    say("TARNEL: Program completed.");
}
