// general_waves.h -- general blocks whose outputs are waves of time.
#pragma once
#include "base/flags_class.h"
#include "models/block_functions.h"
#include "models/edges.h"

// All that a block does whose n outputs, from variable first_out on and in rows 0 to n - 1, are these waves; but for
// its one_time_parms. eps, s, parts neighbouring corners of any of them.
template <int n>
void g_waves(const edge_list (&wave)[n], double eps, int first_out, const double* vr, double* f, gbes1_class* jac,
             flags_class* flags) {
    if (flags->nexttime) {
        edge_break(n, wave, eps, flags->time_given, flags->time_nextbreak);
        return;
    }
    if (!is_solving(flags)) return;
    for (int i = 0; i < n; ++i)
        output_row(i, first_out + i, edge_value(wave[i], flags->time_given), {}, vr, f, jac, flags);
}
