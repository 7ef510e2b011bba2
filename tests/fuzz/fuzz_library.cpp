#include <sstream>

#include "analyses/accepted_point.h"
#include "analyses/assembly.h"
#include "analyses/dc.h"
#include "analyses/evaluate.h"
#include "analyses/solution_vector.h"
#include "library/composite/library_dumps.h"
#include "library_parts.h"
#include "run/driver.h"
#include "small_runs.h"
#include "targets.h"

namespace {
// A composite of one element with a current of its own, which others can sense; e if there is none.
int sensed_by(const libraries& lib, int e) {
    const element_table& be = lib.eels.be;
    for (int k = 0; k < lib.eels.n(); ++k)
        if (be.n_be(k) == 1 &&
            lib.ebes.list.aux.count(be.i_be[static_cast<std::size_t>(be.first_be[static_cast<std::size_t>(k)])]) > 0)
            return k;
    return e;
}

// One instance of each composite, every third connection on the reference and the others on nodes of their own.
std::string deck_of(const libraries& all) {
    const eels_class& lib = all.eels;
    std::ostringstream deck;
    deck << "title: each one\nbegin_circuit\nrefnode 0\n";
    int n_node = 0;
    for (int e = 0; e < lib.n(); ++e) {
        if (lib.list.entry[e] == "ground_dummy_1") continue;
        deck << "eelement name=x" << e << " type=" << lib.list.entry[e];
        for (const word_list* list : {&lib.list.node, &lib.list.ind_node, &lib.list.dgtl, &lib.list.vr, &lib.list.xvr})
            for (int j = 0; j < list->count(e); ++j) {
                deck << ' ' << list->word(e, j) << "=" << (n_node % 3 == 0 ? 0 : n_node);
                ++n_node;
            }
        for (int j = 0; j < lib.list.ind_branch.count(e); ++j)
            deck << ' ' << lib.list.ind_branch.word(e, j) << "=x" << sensed_by(all, e);
        deck << '\n';
        if (lib.ov.count(e) > 0)
            deck << "outvar: o" << e << '=' << lib.ov.name.word(e, lib.ov.count(e) - 1) << "_of_x" << e << '\n';
    }
    deck << "end_circuit\nend_cf\n";
    return deck.str();
}

// Up to the first assembly. Elements with the names of installed ones have models, which an entry must be fit for.
void use_each_one(const libraries& lib) {
    circuit c = circuit_of(deck_of(lib), lib);
    run_state r(c);
    prepare_circuit(r);
    for (int i = 0; i < c.eelu.n; ++i) instance_changed(c, fam_e, i);
    define_offs_solvec(r.mat, c, analysis::dc);
    set_mat(r.mat, c, r.ebe.jac, r.gbe.jac);
    init_guess(r);
    form_solvec(r);
    form_jac_rhs(r, false);
    find_ebe_cur_dc(r);
    ov_prm(r);
    solve_one_frequency(r);
}

void read_all(std::string_view text, libraries& lib) {
    const auto part = cut_parts(text);
    read_elements(part[0], ebes_form, installed_libraries().ebes, lib.ebes);
    read_elements(part[1], ebac_form, installed_libraries().ebac, lib.ebac);
    read_composites_of(part[2], eels_form, lib.ebes, lib.ebac, lib.eels);
}
}  // namespace

bool fuzz_library(std::string_view text) {
    libraries lib;
    const bool done = runs_through([&] { read_all(text, lib); });
    if (!done) return false;
    runs_through([&] {
        write_basic_dump("ebes", lib.ebes);
        write_composite_dump("eels", lib.eels);
        write_hebes_dump("hebes", lib.ebes);
        write_heels_dump("heels", lib.eels, lib.ebes);
    });
    runs_through([&] { use_each_one(lib); });
    empty_scratch_folder();
    return true;
}
