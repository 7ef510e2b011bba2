#include "deck/deck_dumps.h"
#include "elaborate/circuit_dumps.h"
#include "run/driver.h"
#include "small_runs.h"
#include "targets.h"

namespace {
// Files of a deck must stay in the folder of the process: no word is a path. Operators of expressions are none.
bool names_a_path(std::string_view text) {
    const file_chr deck = file_chr_of(text);
    for (int i = 0; i < deck.all.size(); ++i)
        if (deck.all[i].find('/') != std::string_view::npos && !deck.all[i].starts_with("$(")) return true;
    return false;
}

void run(std::string_view text) {
    if (names_a_path(text)) halt({"fuzz_deck: a path. Halting..."});
    circuit c = circuit_of(text, installed_libraries(text));
    if (c.cf.output.input) write_input_dat(c.cf);
    if (c.cf.output.glbl) write_glbl_dat(c.gprm);
    run_state r(c);
    prepare_circuit(r);
    for (int index = 0; index < c.cf.n_solve; ++index) {
        read_block(r, index);
        if (keep_short(r))
            run_block(r);
        else
            delete_arrays(r.slv);
    }
}
}  // namespace

bool fuzz_deck(std::string_view text) {
    const bool done = runs_through([&] { run(text); });
    empty_scratch_folder();
    return done;
}
