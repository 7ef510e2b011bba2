// sparse_floors.h -- what no replay of an order can beat on this machine: its arithmetic, its traffic, its chain.
#pragma once
#include "sparse/elimination.h"

// Speeds of the machine, measured in this program.
struct machine_speed {
    double divide_ns = 0, multiply_ns = 0, subtract_ns = 0;  // each waiting for the last
    double flop_ns = 0;                                      // of products and differences by pairs, none waiting
};
machine_speed measure_machine();
// Bytes per nanosecond of a copy, read and written bytes together, within a block of so many bytes.
double copy_speed(double block_bytes);

// Of one refactor and solve.
struct replay_floor {
    double flops = 0;  // n_matttlop1 + 2 n_matttlop2 + 1/pivot, and the solve's products, differences and quotients
    double bytes = 0;  // values and right-hand side read, factors and solution written, a target's index per operation
    double chain_ns = 0;  // longest way through operations that need each other's results, all else for nothing
};
replay_floor floor_of(const elimination<double>& e, int nnz_m, const machine_speed& speed);
