// The check against the truth: decks of the source tree whose runs are known to complete or to stop.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "temp_folder.h"
#include "tnl/check/check_deck.h"

using namespace cli;
namespace fs = std::filesystem;

namespace {

struct known_deck {
    fs::path path;
    bool completes;
};

std::vector<known_deck> known_decks() {
    std::vector<known_deck> decks = {{fs::path(TARNEL_SOURCE) / "examples/divider.in", true}};
    for (const char* folder : {"examples", "tests/decks"})
        for (const auto& entry : fs::directory_iterator(fs::path(TARNEL_SOURCE) / folder)) {
            if (!fs::exists(entry.path() / "deck.in")) continue;
            const fs::path status = entry.path() / "expect/status";
            decks.push_back({entry.path() / "deck.in", !fs::exists(status) || ::read_file(status.string()) == "0\n"});
        }
    return decks;
}

std::string name_of(const known_deck& d) {
    const std::string folder = d.path.parent_path().filename().string();
    return folder == "examples" ? d.path.filename().string() : folder;
}

check_report check(const known_deck& d) {
    static const installed_libraries libraries = read_installed(TARNEL_SHARE);
    return check_deck(view_deck(read_deck_source(d.path.string())), libraries);
}

// Completes, and yet an error: the block solves nothing, which nobody means.
bool solves_less_than_it_says(const known_deck& d) { return name_of(d) == "unknown_solve_type"; }

// Stops whose cause is not in the deck's text: numbers of an iteration, a file of data.
const std::map<std::string, const char*> stops_for_other_reasons = {
    {"counted_beyond_i_max", "its operating current is above i_max"},
    {"gmin_stepping_fails", "too few iterations"},
    {"newton_fails_without_gmin", "too few iterations"},
    {"sweep_auto_too_long", "too few steps"},
    {"solution_file_too_short", "the file is short"},
};

// Decks that test just what is warned of.
const std::map<std::string, int> warned = {{"no_solve_block", 1}, {"stray_text_outside", 3}};

}  // namespace

TEST(check_deck, finds_no_error_in_a_deck_that_runs_to_completion) {
    int n = 0;
    for (const known_deck& d : known_decks()) {
        if (!d.completes || solves_less_than_it_says(d)) continue;
        const check_report report = check(d);
        EXPECT_EQ(report.n_errors(), 0) << report_text(report);
        const auto at = warned.find(name_of(d));
        EXPECT_EQ(report.n_warnings(), at == warned.end() ? 0 : at->second) << report_text(report);
        ++n;
    }
    EXPECT_GT(n, 40);
}

TEST(check_deck, finds_an_error_in_a_deck_that_stops) {
    int n = 0;
    for (const known_deck& d : known_decks()) {
        if (d.completes && !solves_less_than_it_says(d)) continue;
        const check_report report = check(d);
        const bool in_text = stops_for_other_reasons.count(name_of(d)) == 0;
        EXPECT_EQ(report.n_errors() > 0, in_text) << name_of(d) << '\n' << report_text(report);
        ++n;
    }
    EXPECT_GT(n, 10);
}
