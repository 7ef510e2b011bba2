#include <sstream>

#include "base/at.h"
#include "library/composite/library_dumps.h"
#include "library_parts.h"
#include "run/driver.h"
#include "small_runs.h"
#include "targets.h"

namespace {
// One instance of each composite, on nodes that go round; a source of 1 V at every analog node.
std::string deck_of(const libraries& lib) {
    constexpr int n_nodes = 5;
    std::ostringstream deck;
    deck << "title: each one\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc p=a n=0 vdc=1\n";
    int n = 0;
    for (int e = 0; e < lib.dels.n(); ++e) {
        deck << "delement name=x" << e << " type=" << lib.dels.list.entry[e];
        for (int j = 0; j < lib.dels.list.dgtl.count(e); ++j)
            deck << ' ' << lib.dels.list.dgtl.word(e, j) << "=d" << n++ % n_nodes;
        for (int j = 0; j < lib.dels.list.ind_node.count(e); ++j)
            deck << ' ' << lib.dels.list.ind_node.word(e, j) << "=a";
        deck << '\n';
        if (lib.dels.ov.count(e) > 0)
            deck << "outvar: o" << e << '=' << lib.dels.ov.name.word(e, lib.dels.ov.count(e) - 1) << "_of_x" << e
                 << '\n';
    }
    deck << "end_circuit\n";
    for (const char* cards : {"solve_type startup\n",
                              "solve_type trns\ninitial_sol previous\nmethod: t_start=0 t_end=1u "
                              "delt_const=10n back_euler=yes delt_min=1p\n"})
        deck << "begin_solve\n" << cards << "end_solve\n";
    deck << "end_cf\n";
    return deck.str();
}

void use_each_one(const libraries& lib) {
    circuit c = circuit_of(deck_of(lib), lib);
    run_state r(c);
    prepare_circuit(r);
    for (int i = 0; i < c.delu.n; ++i) instance_changed(c, fam_d, i);
    for (int index = 0; index < c.cf.n_solve; ++index) {
        read_block(r, index);
        if (!keep_short(r)) halt({"fuzz_digital: a long run. Halting..."});
        run_block(r);
    }
}

void read_all(std::string_view text, libraries& lib) {
    const auto part = cut_parts(text);
    read_elements(part[0], dbes_form, installed_libraries().dbes, lib.dbes);
    read_composites_of(part[1], dels_form, lib.dbes, lib.dbes, lib.dels);
}
}  // namespace

// True only if the composites can also be used.
bool fuzz_digital(std::string_view text) {
    libraries lib;
    lib.ebes = installed_libraries().ebes;
    lib.ebac = installed_libraries().ebac;
    lib.eels = installed_libraries().eels;
    if (!runs_through([&] { read_all(text, lib); })) return false;
    runs_through([&] {
        write_basic_dump("dbes", lib.dbes);
        write_composite_dump("dels", lib.dels);
    });
    const bool done = runs_through([&] { use_each_one(lib); });
    empty_scratch_folder();
    return done;
}
