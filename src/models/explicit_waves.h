// explicit_waves.h -- explicit blocks whose outputs are waves of time.
#pragma once
#include "models/edges.h"
#include "models/explicit_functions.h"

// All that a block does whose n outputs, from variable first_out on and in rows 0 to n - 1, are these waves; but for
// its one_time_parms. eps, s, parts neighbouring corners of any of them.
template <int n>
void x_waves(const edge_list (&wave)[n], double eps, int first_out, double* vr, double* fh, xbes1_class* jac,
             flags_class* flags) {
    if (flags->nexttime) {
        edge_break(n, wave, eps, flags->time_given_x, flags->time_nextbreak_x);
        return;
    }
    if (!flags->init_guess && !x_is_solving(flags)) return;
    for (int i = 0; i < n; ++i) {
        if (flags->init_guess)
            vr[first_out + i] = 0.0;
        else
            x_output(i, first_out + i, edge_value(wave[i], flags->time_given_x), {}, vr, fh, jac, flags);
    }
}
