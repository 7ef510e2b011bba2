// output_block.h -- output blocks of a solve block.
#pragma once
#include <string_view>
#include <vector>

#include "settings/block_text.h"

// Where an output block stands and what the counting pass saw of it.
struct output_block {
    int begin = -1, end = -1;  // statements begin_output and end_output
    int variables = -1;        // the first variables: statement
};

// Finds all output blocks and notes files of reserved words. Halts on a block without end or without variables, and on
// a second file of a reserved kind.
std::vector<output_block> find_output_blocks(solve_class& slv, const block_text& block);

// Reads one output block into a new file of slv, and marks its statements.
void read_output_block(solve_class& slv, const circuit& c, const block_text& block, const output_block& b);

// Tests that need the whole block: times, phase limits, Fourier and Nyquist files.
void check_files(solve_class& slv, const flags_class& flags);
// The block ends at another time, s, than its settings told, as a period that it finds.
void end_files_at(solve_class& slv, double t_end);

// Words that output blocks take as options and keys, for lists of all keywords.
void add_output_words(std::vector<std::string_view>& list);
