// directives.h -- a block's directives, applied to the circuit.
#pragma once
#include "settings/solve_class.h"

// All set_parm items in order. What they write stays for later blocks.
void set_parm(const solve_class& slv, circuit& c);

// Starting values: start-up parameters of electrical and general instances, of digital ones; first guesses alike.
void set_sv(const solve_class& slv, circuit& c);
void set_dsv(const solve_class& slv, circuit& c);
void set_ig(const solve_class& slv, circuit& c);
void set_dig(const solve_class& slv, circuit& c);
void set_ig_x(const solve_class& slv, circuit& c);

// Moves the sweep to point i of the grid (the last statement varies fastest): writes the values that differ from those
// in the circuit. An automatic sweep takes its present value, automatic.p_now. A blank line goes to every file of the
// block where a new curve begins.
void vary_parm(solve_class& slv, circuit& c, int i);
// Moves all vary_parm_sync statements to their point i.
void vary_parmsync(solve_class& slv, circuit& c, int i);

// Points of the grid of several vary_parm statements, one count a statement.
std::vector<int> grid_counts(const solve_class& slv);
