#include <sstream>

#include "library/composite/library_dumps.h"
#include "library/composite/mixed_reader.h"
#include "run/driver.h"
#include "small_runs.h"
#include "targets.h"

namespace {
// One instance of each composite, on names that go round; each output and each call's instance has its turn.
std::string deck_of(const libraries& lib) {
    constexpr int n_names = 3;
    const gmes_class& gmes = lib.gmes;
    std::ostringstream deck;
    deck << "title: each one\nbegin_circuit\nrefnode 0\neelement name=V1 type=vsrcdc p=a0 n=0 vdc=1\n";
    int n = 0;
    for (int e = 0; e < gmes.n(); ++e) {
        deck << "gmelement name=x" << e << " type=" << gmes.list.entry[e];
        const std::pair<const word_list&, char> lists[] = {
            {gmes.list.node, 'a'}, {gmes.list.vr, 'v'}, {gmes.list.dgtl, 'd'}};
        for (const auto& [list, letter] : lists)
            for (int j = 0; j < list.count(e); ++j) deck << ' ' << list.word(e, j) << '=' << letter << n++ % n_names;
        deck << '\n';
        for (const output_table* table : {&gmes.ov, &gmes.ovd, &gmes.ovac})
            for (int j = 0; j < table->count(e); ++j)
                deck << "outvar: o" << n++ << '=' << table->name.word(e, j) << "_of_x" << e << '\n';
    }
    deck << "end_circuit\nend_cf\n";
    return deck.str();
}

void use_each_one(const libraries& lib) {
    circuit c = circuit_of(deck_of(lib), lib);
    bind_statements(c);
    for (int i = 0; i < c.gmeu.n; ++i) check_derived(c, fam_gm, i);
    build_units(c);
    for (int i = 0; i < c.gmeu.n; ++i) instance_changed(c, fam_gm, i);
    classify(c);
}
}  // namespace

// True only if the composites can also be used.
bool fuzz_mixed(std::string_view text) {
    libraries lib = installed_libraries();
    const bool is_read = runs_through([&] {
        text_file file = text_file_of(text);
        read_mixed_composites(file, {&lib.eels, &lib.dels, &lib.gels}, lib.gmes);
    });
    if (!is_read) return false;
    runs_through([&] { write_composite_dump("gmes", lib.gmes); });
    const bool done = runs_through([&] { use_each_one(lib); });
    empty_scratch_folder();
    return done;
}
