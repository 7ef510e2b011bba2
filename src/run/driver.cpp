#include "run/driver.h"

#include <vector>

#include "analyses/ac.h"
#include "analyses/accepted_point.h"
#include "analyses/dc.h"
#include "analyses/evaluate.h"
#include "analyses/run_state.h"
#include "analyses/ssw.h"
#include "analyses/sweep.h"
#include "analyses/trns.h"
#include "analyses/trns_x.h"
#include "base/halt.h"
#include "base/list_file.h"
#include "deck/deck_dumps.h"
#include "elaborate/circuit_dumps.h"
#include "elaborate/families.h"
#include "elaborate/read_circuit.h"
#include "library/composite/library_dumps.h"
#include "models/data_files.h"
#include "output/fourier.h"
#include "output/parms_file.h"
#include "output/postproc.h"
#include "output/row_writers.h"
#include "output/solution_file.h"
#include "run/filter_sections.h"
#include "settings/directives.h"

namespace {
void write_library_dumps(const output_flags& on, const libraries& lib) {
    constexpr bool output_flags::*wanted[n_libraries] = {&output_flags::ebes, &output_flags::gbes, &output_flags::ebac,
                                                         &output_flags::gbac, &output_flags::dbes, &output_flags::xbes,
                                                         &output_flags::xbac, &output_flags::eels, &output_flags::gels,
                                                         &output_flags::dels, &output_flags::xels, &output_flags::gmes};
    for (int i = 0; i < n_libraries; ++i) {
        if (!(on.*wanted[i])) continue;
        const library_place& place = library_places[i];
        const std::string word(library_forms[i].name);
        if (place.basic != nullptr) write_basic_dump(word, lib.*place.basic);
        if (place.composites != nullptr) write_composite_dump(word, lib.*place.composites);
    }
    if (on.hebes) write_hebes_dump("hebes", lib.ebes);
    if (on.heels) write_heels_dump("heels", lib.eels, lib.ebes);
    if (on.hebes_ac) write_hebes_dump("hebes_ac", lib.ebac);
}

void write_model_dumps(const output_flags& on, const circuit& c) {
    constexpr bool output_flags::*wanted[n_family] = {&output_flags::ecem, &output_flags::dcem, &output_flags::gcem,
                                                      &output_flags::xcem, &output_flags::gmem};
    for (const family_form& f : family_forms)
        if (on.*wanted[f.number]) write_model_dump(std::string(f.lib.models), c.*f.models, c.lib.*f.composites);
}

// Global numbers of all library entries.
void read_lists(const libraries& lib, flags_class& flags) {
    for (const int i : listed_libraries) {
        const library_place& place = library_places[i];
        const words& names = place.basic ? (lib.*place.basic).list.entry : (lib.*place.composites).list.entry;
        flags.*place.numbers = make_chrarray_5(line(".tnlaux/", library_forms[i].list), names);
    }
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

bool solves(const solve_class& slv) { return slv.dc || slv.startup || slv.trns || slv.ssw; }

analysis analysis_of(const solve_class& slv) {
    return slv.trns ? analysis::trns : slv.ssw ? analysis::ssw : slv.startup ? analysis::startup : analysis::dc;
}

// All points of a block, and the currents that the file of its last solution shows.
void solve_points(run_state& r) {
    if (r.slv.startup) {
        set_sv(r.slv, r.c);
        set_dsv(r.slv, r.c);
    }
    r.residual = {};
    if (r.c.cct.flag_x_only)
        init_sol_x(r);
    else
        init_sol(r);
    if (r.slv.trns && !r.slv.task.init_file && !r.slv.task.init_previous) set_dgtl(r);
    plan_digital_outputs(r);
    set_mat(r.mat, r.c, r.ebe.jac, r.gbe.jac);
    if (r.slv.trns && r.c.cct.flag_x_only)
        solve_trns_x(r);
    else if (r.slv.trns)
        solve_trns(r);
    else if (r.slv.ssw)
        solve_ssw(r);
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
    read_xbe_data_files(c.lib.xbes, c.xbeu.unit.i_lib, c.xbeu.unit.sprm, r.dp);
    r.dp.average_mv_g.limit = c.tmpdim.m_average_mv_gbe;
    r.dp.rms_mv_g.limit = c.tmpdim.m_rms_mv_gbe;
    r.dp.average_mv_x.limit = c.tmpdim.m_average_mv_xbe;
    r.dp.rms_mv_x.limit = c.tmpdim.m_rms_mv_xbe;
    xce_filter_1(c);
    write_circuit_dumps(c);
    check_circuit_leftovers(c.cf);
    classify(c);
    r.flags.x_matrix = c.cct.flag_x_cct ? 1 : 0;
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
    if (c.xbeu.n() > 0) r.flags.x_matrix = slv.method.x_eval_serial ? 0 : 1;
    r.flags.gmin = slv.method.gmin_end;
    r.flags.flag_debug_int = slv.method.flag_debug_int;
    r.mat.e.zero_piv = slv.method.zero_piv;
    r.mat.e.gauss_epsln = slv.method.gauss_epsln;
    r.mat.e.debug_gauss_1 = slv.method.debug_gauss_1;
    r.mat.e.debug_gauss_2 = slv.method.debug_gauss_2;
    elimination<complex_value>& e_ac = r.ac.s.e;
    e_ac.zero_piv = slv.method.zero_piv;
    e_ac.gauss_epsln = slv.method.gauss_epsln;
    e_ac.debug_gauss_1 = slv.method.debug_gauss_1;
    e_ac.debug_gauss_2 = slv.method.debug_gauss_2;
    check_solve_leftovers(c.cf, index);
}

void run_block(run_state& r) {
    solve_class& slv = r.slv;
    circuit& c = r.c;
    if (solves(slv)) {
        define_offs_solvec(r.mat, c, analysis_of(slv));
        if (!c.cct.flag_purely_digital) define_method_type(slv, c.cct);
        if (c.xbeu.n() > 0 && !slv.method.x_eval_serial) x_define_method_type(slv, c.cct);
    }
    open_out_files(slv, c);
    if (!slv.task.set_parm.empty()) r.flags.set_parm = 1;
    set_parm(slv, c);
    one_time_parms(r);
    r.flags.set_parm = 0;
    if (c.cf.output.debug) say("main: one_time_parms done");
    if (solves(slv)) solve_points(r);
    if (slv.ac) run_ac(r);
    if (slv.out.i_file_solution >= 0) write_solution(slv, c, r.flags);
    if (slv.out.i_file_solution_ac >= 0) write_solution_ac(slv, c, r.flags);  // of the last ac block, else zeros
    if (slv.out.i_file_parms >= 0) write_parms(slv, c);
    write_fourier(slv);
    close_out_files(slv);
    for (int i = 0; i < static_cast<int>(slv.out.files.size()); ++i) {
        if (slv.out.files[static_cast<std::size_t>(i)].postproc) postproc_1(slv, c, i);
        if (slv.out.files[static_cast<std::size_t>(i)].postproc_ac) postproc_1_ac(slv, c, i);
    }
    slv.previous_solve_type = slv.solve_type;
    if (solves(slv)) slv.flag_prev_solution_exists = int_T;
    if (slv.method.gmin_step && slv.now.n_gmin_total != 0) say(line("main: n_gmin_total=", slv.now.n_gmin_total));
    delete_arrays(slv);
}

void run_tarnel() {
    // The deck as statements: its sections, and what its `output` statements ask for.
    circuit c;
    c.cf = read_circuit_file(".tnlaux/cct.in", deck_line_limit("tmpdim.in"));
    if (c.cf.output.input) write_input_dat(c.cf);
    // The templates of all elements; composites are expanded to basic elements here.
    read_libraries(c.lib);
    write_library_dumps(c.cf.output, c.lib);
    // The deck's constants, models and output variables, each on top of what was read before it.
    read_circuit(c, {[&] {
                         if (c.cf.output.glbl) write_glbl_dat(c.gprm);
                     },
                     [&] { write_model_dumps(c.cf.output, c); }});
    // From here on there are flags and systems to fill, and sizes that hold for them.
    run_state r(c);
    read_lists(c.lib, r.flags);
    c.tmpdim = read_tmpdim("tmpdim.in");
    // Instances and units, bound to their models; whatever depends on the circuit alone is found and tested.
    prepare_circuit(r);
    // One block after another: its settings against the circuit, then its points, rows and files.
    for (int index = 0; index < c.cf.n_solve; ++index) {
        read_block(r, index);
        run_block(r);
    }
    say("TARNEL: Program completed.");
}
