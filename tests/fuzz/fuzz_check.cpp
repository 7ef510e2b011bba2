#include <cstdlib>

#include "base/halt.h"
#include "targets.h"
#include "tnl/check/advice.h"
#include "tnl/check/check_deck.h"
#include "tnl/check/explain_stop.h"
#include "tnl/common/exit_status.h"

namespace {
const cli::installed_libraries& share() {
    static const cli::installed_libraries all = cli::read_installed(TARNEL_SHARE);
    return all;
}

// A check stops nowhere: what it makes of the text is a report, whose every place must be one of the text.
bool has_errors(std::string_view text) {
    cli::deck_view deck;
    try {
        deck = cli::view_deck("deck.in", std::string(text));
    } catch (const cli::deck_error&) {  // an include statement
        return true;
    }
    const cli::check_report report = cli::check_deck(deck, share());
    (void)cli::report_text(report);
    (void)cli::report_json(report);
    // The text also as that of a stop.
    const cli::installed_libraries libraries = cli::with_own(share(), deck.own);
    (void)cli::explain_stop(text, report, cli::needs_of(deck, libraries));
    const std::optional<cli::check_report> same = cli::unpacked(cli::packed(report), deck);
    if (!same || cli::report_text(*same) != cli::report_text(report)) std::abort();
    (void)cli::similar_patterns(text, 3);
    return report.n_errors() > 0;
}
}  // namespace

bool fuzz_check(std::string_view text) {
    bool good = false;
    const bool done = runs_through([&] {
        // Files of a deck must stay in the folder of the process. Operators of expressions are no paths.
        for (std::size_t at = text.find('/'); at != std::string_view::npos; at = text.find('/', at + 1))
            if (at < 1 || text[at - 1] != ')') halt({"fuzz_check: a path. Halting..."});
        good = !has_errors(text);
    });
    empty_scratch_folder();
    return done && good;
}
