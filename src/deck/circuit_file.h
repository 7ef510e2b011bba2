// circuit_file.h -- the deck: its sections, what its output statements ask for, and which statements were claimed.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "deck/file_chr.h"

// What the words of `output` statements switch on; one member a word. xcem has no word and stays off.
struct output_flags {
    bool input = false, glbl = false, ebes = false, hebes = false, hebes_ac = false, dbes = false, gbes = false,
         xbes = false, ebac = false, gbac = false, xbac = false, eels = false, heels = false, dels = false,
         gels = false, xels = false, gmes = false, ecem = false, dcem = false, gcem = false, gmem = false, xcem = false,
         ect = false, gct = false, dct = false, xct = false, ebce = false, gbce = false, xbce = false, ov = false,
         kcl = false, smat = false, debug = false, error1 = false, error2 = false, ssw = false, x_kcl = false,
         x_bvd = false, x_smat = false;
};

struct output_word {
    std::string_view word;
    bool output_flags::*flag;
};
extern const std::vector<output_word>& output_words();  // every word that `output` accepts

struct circuit_file {
    file_chr text;
    int n_end_cf = -1;  // statement numbers
    int n_begin_cct = -1, n_end_cct = -1;
    int n_solve = 0;                              // at most 20; later blocks are not read
    std::vector<int> n_begin_solve, n_end_solve;  // [n_solve]
    std::vector<char> used;                       // [n_end_cf + 1] 1: some reader claimed the statement
    int n_dc = 0, n_ac = 0, n_ssw = 0, n_trns = 0, n_startup = 0;  // solve blocks of each type
    output_flags output;
    std::string ref_node, x_ref_node;                       // of the first refnode, x_refnode statement; empty: none
    std::vector<std::string> ground_dummy, x_ground_dummy;  // other ground words, without the reference

    void mark(int i_line) { used[static_cast<std::size_t>(i_line)] = 1; }
    // First statement strictly inside (begin, end) that nobody claimed; -1 if none.
    int first_unclaimed(int begin, int end) const;
};

circuit_file read_circuit_file(const std::string& path, int max_lines = usual_deck_lines);
circuit_file circuit_file_of(file_chr text);
// The last step of these, once the sections are known: what `output` statements switch on, and words for the reference.
void read_output_and_grounds(circuit_file& cf);
