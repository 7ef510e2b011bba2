#include <fstream>
#include <sstream>

#include "analyses/accepted_point.h"
#include "analyses/assembly.h"
#include "analyses/dc.h"
#include "analyses/evaluate.h"
#include "analyses/integration.h"
#include "analyses/solution_vector.h"
#include "analyses/step_control.h"
#include "library/composite/library_dumps.h"
#include "library_parts.h"
#include "run/driver.h"
#include "small_runs.h"
#include "targets.h"

namespace {
constexpr const char* data_file = "points.dat";

// Equations less unknowns of its own: as many of a composite's variables can be on nobody else's.
int n_driven(const libraries& lib, int e) {
    int n = -lib.gels.auxnode.count(e);
    for (int k = lib.gels.be.first_be[static_cast<std::size_t>(e)];
         k < lib.gels.be.first_be[static_cast<std::size_t>(e) + 1]; ++k) {
        const int s = lib.gels.be.i_be[static_cast<std::size_t>(k)];
        n += lib.gbes.func.n_func(s) - lib.gbes.list.aux.count(s);
    }
    return n;
}

// One instance of each composite. Variables that it drives, as a rule the last ones, have names of their own; all
// others are the first driven variable of all.
std::string deck_of(const libraries& lib) {
    std::ostringstream deck;
    deck << "title: each one\nbegin_circuit\nrefnode 0\neelement name=R1 type=r p=a n=0\n";
    int n_own = 0;
    for (int e = 0; e < lib.gels.n(); ++e) {
        const int n_vr = lib.gels.list.vr.count(e), n_shared = n_vr - n_driven(lib, e);
        deck << "gelement name=x" << e << " type=" << lib.gels.list.entry[e];
        for (int j = 0; j < n_vr; ++j)
            deck << ' ' << lib.gels.list.vr.word(e, j) << "=v" << (j < n_shared ? 0 : n_own++);
        for (int j = 0; j < lib.gels.list.xvr.count(e); ++j) deck << ' ' << lib.gels.list.xvr.word(e, j) << "=z" << j;
        for (int j = 0; j < lib.gels.list.sprm.count(e); ++j)
            deck << ' ' << lib.gels.list.sprm.word(e, j) << '=' << data_file;
        deck << '\n';
        if (lib.gels.ov.count(e) > 0)
            deck << "outvar: o" << e << '=' << lib.gels.ov.name.word(e, lib.gels.ov.count(e) - 1) << "_of_x" << e
                 << '\n';
    }
    deck << "end_circuit\nend_cf\n";
    return deck.str();
}

void assemble_once(run_state& r, analysis kind) {
    define_offs_solvec(r.mat, r.c, kind);
    set_mat(r.mat, r.c, r.ebe.jac, r.gbe.jac);
    init_guess(r);
    form_solvec(r);
    form_jac_rhs(r, false);
}

// Up to the first assembly of start-up and transient, and whatever else a block is asked for; then of dc, which some
// blocks refuse.
void use_each_one(const libraries& lib) {
    refuse_paths(lib.gbes, lib.gels);
    std::ofstream(data_file) << "0 1\n1m 2\n";
    circuit c = circuit_of(deck_of(lib), lib);
    run_state r(c);
    prepare_circuit(r);
    for (int i = 0; i < c.gelu.n; ++i) instance_changed(c, fam_g, i);
    one_time_parms(r);
    r.flags.t_end = 1e-3;
    for (const analysis kind : {analysis::startup, analysis::trns}) assemble_once(r, kind);
    find_block_functions(r);
    add_trns_terms(r, false);
    find_nextbreak(r);
    save_history(r);
    treat_reset(r);
    ov_prm(r);
    runs_through([&] { assemble_once(r, analysis::dc); });
    runs_through([&] { solve_one_frequency(r); });
}

void read_all(std::string_view text, libraries& lib) {
    const auto part = cut_parts(text);
    read_elements(part[0], gbes_form, installed_libraries().gbes, lib.gbes);
    read_elements(part[1], gbac_form, installed_libraries().gbac, lib.gbac);
    read_composites_of(part[2], gels_form, lib.gbes, lib.gbac, lib.gels);
}
}  // namespace

// True only if the composites can also be used.
bool fuzz_blocks(std::string_view text) {
    const libraries& installed = installed_libraries();
    libraries lib;
    lib.ebes = installed.ebes;
    lib.ebac = installed.ebac;
    lib.eels = installed.eels;
    if (!runs_through([&] { read_all(text, lib); })) return false;
    runs_through([&] {
        write_basic_dump("gbes", lib.gbes);
        write_composite_dump("gels", lib.gels);
    });
    const bool done = runs_through([&] { use_each_one(lib); });
    empty_scratch_folder();
    return done;
}
