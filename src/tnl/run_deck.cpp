#include "tnl/run_deck.h"

#include <cstdio>
#include <cstring>

#include "tnl/locate.h"
#include "tnl/run_folder.h"

namespace cli {

namespace fs = std::filesystem;

installation own_installation() {
    const fs::path own = own_folder();
    return {own / "tarnel", own.parent_path() / "share"};
}

run_result run_deck(const run_options& options, const installation& where) {
    run_result run;
    run.deck = view_deck(read_deck_source(options.deck));
    run.folder = options.folder.empty() ? options.deck + ".run" : options.folder;
    if (!fs::exists(where.program)) throw file_error("the simulator is missing: " + where.program.string());
    if (!fs::is_directory(where.share)) throw file_error("the libraries are missing: " + where.share.string());

    const installed_libraries libraries = read_installed(where.share);
    const deck_needs needs = needs_of(run.deck, libraries);
    const std::set<std::string> foreign = make_run_folder(run.folder, run.deck, libraries, needs);
    const process_result ended = run_program(fs::absolute(where.program), run.folder, options.quiet);
    run.status = ended.status;

    std::string more;
    if (ended.signal != 0)
        more = "  the simulator was ended by signal " + std::to_string(ended.signal) + " (" + strsignal(ended.signal) +
               ")\n";
    else if (ended.status != 0)
        more = explain_stop(ended.tail, run.deck, needs, libraries);
    if (options.quiet && ended.status != 0) std::fwrite(ended.tail.data(), 1, ended.tail.size(), stdout);
    if (!more.empty() && !ended.tail.empty() && !ended.tail.ends_with('\n')) std::fputc('\n', stdout);
    std::fwrite(more.data(), 1, more.size(), stdout);
    std::fflush(stdout);
    note_results(run.folder, run.deck, foreign);
    return run;
}

}  // namespace cli
