// digital_outputs.h -- selectors and converters: what they make of their inputs appears after a delay.
#pragma once
#include "models/digital_unit.h"

// ---- selectors

// rparm[0], rparm[1]: delays to falling and rising outputs; where some fall and some rise, the longer one. stparm[0]: 0
// at rest, 1 outputs of 0 on their way. What is delivered is what the inputs give by then.
struct selector_form {
    const char* name;
    const char* no_dc;
    const char* wrong_state;
    int n_out;
};
// Inputs d0 d1 d2 d3 s0 s1: y is the d of the number s0 + 2 s1, unknown where that or the number is.
void run_multiplexer(const selector_form& form, const digital_unit& u);
// Inputs d s0 s1: the y of the number s0 + 2 s1 is d, the others 0; all unknown where the number is.
void run_demultiplexer(const selector_form& form, const digital_unit& u);

// ---- from analog

// The code of v for n_bits bits, the highest standing for v_full: the nearest of 0 .. 2^n_bits - 1 steps of
// v_full/(2^n_bits - 1), V; the lower one half-way.
int nearest_code(double v, double v_full, int n_bits);
// val_anlg[0], `code` of n_bits bits from it, to as many outputs, lowest bit first, td after it changed; lparm[0] is
// the code that is planned. dc and start-up put it out at once.
void run_adc(int code, int n_bits, double td, const digital_unit& u);

// ---- to a number

// The inputs as bits, lowest first, to rparm[0], rparm[1] after they changed. An unknown bit is 0.
void run_decimal(const char* name, int n_bits, const digital_unit& u);
