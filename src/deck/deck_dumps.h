// deck_dumps.h -- what the words input, glbl and ov of an `output` statement write into the current folder.
#pragma once
#include "deck/circuit_file.h"
#include "deck/gprm_class.h"
#include "deck/ov_class.h"

// Each file is written anew: the class name, scalars as "label = value", and one indented row for each entry.
void write_input_dat(const circuit_file& cf);  // input.dat: section numbers of the deck
void write_glbl_dat(const gprm_class& gprm);   // glbl.dat: global parameters with expressions and dependents
void write_ov_dat(const ov_class& ov);         // ov.dat: output variables, resolved if the circuit tables stand
