// driver.h -- a whole run in the current folder.
#pragma once

struct run_state;

// Reads .tnlaux/, tmpdim.in and the deck, elaborates, and runs the deck's solve blocks in order. Returns at the end of
// the deck; every fault halts.
void run_tarnel();

// The stages behind the reading of libraries, deck and sizes, in order.
void prepare_circuit(run_state& r);        // from statements to an allocated system
void read_block(run_state& r, int index);  // settings of one solve block, tested
void run_block(run_state& r);              // its rows and files
