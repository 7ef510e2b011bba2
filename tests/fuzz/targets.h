// targets.h -- readers as functions of one piece of text, for the fuzzer and for the replay of its corpus.
#pragma once
#include <functional>
#include <span>
#include <string>
#include <string_view>

// Each reads the whole text and gives true, or false when the run would have stopped with a message. Anything else that
// happens is a fault of the reader. Console output is swallowed; files go to a folder of the process.
bool fuzz_deck(std::string_view text);        // a deck on the installed libraries, its dc blocks solved
bool fuzz_library(std::string_view text);     // libraries of elements and composites, then a deck that uses each one
bool fuzz_blocks(std::string_view text);      // libraries of general blocks, then a deck that uses each composite
bool fuzz_digital(std::string_view text);     // libraries of digital elements, then a deck that uses each composite
bool fuzz_explicit(std::string_view text);    // libraries of explicit blocks, then decks that use each composite
bool fuzz_mixed(std::string_view text);       // mixed composites, then a deck that uses each one
bool fuzz_data(std::string_view text);        // a data file, and transients of the blocks that read one
bool fuzz_expression(std::string_view text);  // each line as a word: expressions, numbers, cuts
bool fuzz_solution(std::string_view text);    // a solution file of a small circuit
bool fuzz_measure(std::string_view text);     // rows, and expressions over them
bool fuzz_check(std::string_view text);       // a deck as `tnl check` sees it; true if it has no errors
bool fuzz_composites(std::string_view text);  // a deck or file with composites of its own; true if it has no errors
bool fuzz_words(std::string_view text);       // text files: lines, name lists, sizes of a run

struct fuzz_target {
    const char* name;  // also of its folder of seeds
    bool (*run)(std::string_view text);
    std::string (*dictionary)();  // words of its texts, as the fuzzer reads them
};
std::span<const fuzz_target> fuzz_targets();

// Calls f in the folder of the process, without console output; false if it stopped with a message.
bool runs_through(const std::function<void()>& f);
const std::string& text_of_last_stop();
// Removes what a call may have written there.
void empty_scratch_folder();
// A path under which the text can be read as a file.
std::string file_of(std::string_view text);
