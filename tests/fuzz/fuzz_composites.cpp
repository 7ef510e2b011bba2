#include <cstdlib>

#include "base/halt.h"
#include "targets.h"
#include "tnl/check/check_deck.h"
#include "tnl/common/exit_status.h"

namespace {
const cli::installed_libraries& share() {
    static const cli::installed_libraries all = cli::read_installed(TARNEL_SHARE);
    return all;
}

void demand(bool holds) {
    if (!holds) std::abort();
}

// What a user's text of composites becomes must be one entry each, with all its places in the text.
bool has_errors(std::string_view text) {
    cli::deck_view deck;
    try {
        deck = cli::view_deck("deck.in", std::string(text));
    } catch (const cli::deck_error&) {  // an include statement
        return true;
    }
    for (const cli::own_entry& e : deck.own.entries) {
        const auto entries = cli::split_library(e.entry.text, library_forms[e.library]);
        demand(entries.size() == 1 && entries[0].name == e.entry.name && entries[0].text == e.entry.text);
        for (const cli::own_line& l : e.lines)
            for (int j = 0; j < l.w.size(); ++j) {
                const cli::record_place p = cli::place_of(deck.source, l.at[static_cast<std::size_t>(j)]);
                demand(p.text.substr(static_cast<std::size_t>(p.column) - 1).starts_with(l.w[j]));
            }
    }
    for (const cli::own_fault& f : deck.own.faults) (void)cli::place_of(deck.source, f.at);
    const cli::check_report report = cli::check_deck(std::move(deck), share());
    (void)cli::report_text(report);
    return report.n_errors() > 0;
}
}  // namespace

bool fuzz_composites(std::string_view text) {
    bool good = false;
    const bool done = runs_through([&] {
        if (text.find('/') != std::string_view::npos && text.find("include") != std::string_view::npos)
            halt({"fuzz_composites: a path. Halting..."});  // files of a deck must stay in the folder of the process
        good = !has_errors(text);
    });
    empty_scratch_folder();
    return done && good;
}
