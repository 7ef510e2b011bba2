// convergence.h -- when a Newton iterate is a solution.
#pragma once
#include "analyses/mat_class.h"
#include "base/flags_class.h"
#include "settings/solve_class.h"

// Tolerance and change of every unknown: relative to the larger of the present and the previous value, plus an absolute
// part by kind of unknown.
void compute_norm_spice(mat_class& mat, const solve_class& slv);

// Computes and prints the norms that were asked for and sets l_converged and l_norm_too_large. Never accepts an iterate
// at which a model worked beyond the cap of an exponential.
void check_convergence(mat_class& mat, const flags_class& flags, solve_class& slv);
