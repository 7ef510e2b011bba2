// gummel_poon.h -- the bipolar transistor. (Gummel and Poon, Bell System Technical Journal 49, 1970; Nagel 1975,
// appendix; Getreu 1976.)
#pragma once

struct ebes1_class;
struct flags_class;
struct math_cnst_class;

// Places of the parameters in rparm, in the order of the element's line: those of a deck, then what is derived of them
// by the temperature, then output slots, then what evaluation reads, with area, infinite values as the inverse 0.
namespace bjt {
// clang-format off
enum parm {
    area, bf, br, cjc, cje, cjs, eg, fc, ikf, ikr, is, isc, ise, itf, mjc, mje, mjs, nc, ne, nf, nr, ptf, tf, tnom, tr,
    vaf, var, vjc, vje, vjs, vtf, xcjc, xtb, xtf, xti, temp,
    vt, is_t, bf_t, br_t, ise_t, isc_t, vje_t, vjc_t, cje_t, cjc_t, f1e, f2e, f3e, f1c, f2c, f3c, i_max, x_max, vbe_ig,
    ic_o, ib_o, vbe_o, vce_o,
    vjs_t, cjs_t, is_a, ise_a, isc_a, itf_a, vt_f, vt_r, vt_e, vt_c, g_bf, g_br, g_kf, g_kr, g_af, g_ar, g_tf,
    n_parms
};
// clang-format on
enum terminal { c, b, e, s };
}  // namespace bjt

// A value and its partials by the voltages base-emitter, base-collector and substrate-collector.
struct gummel_poon_part {
    double value, be, bc, sc;
};
// What flows into collector, base and substrate, A and S, and what is stored there, C and F; the emitter has what is
// missing to 0. All for the npn transistor.
struct gummel_poon_point {
    gummel_poon_part ic, ib, is, qc, qb, qs;
};

// From the temperature: everything behind temp but i_max, the first guess and the output slots.
void gummel_poon_constants(double* rparm, const math_cnst_class& math_cnst);

// At the voltages v [4] of collector, base, emitter and substrate, V; pol is 1 or, for pnp, -1. gmin, S, stands across
// the three junctions. The exponentials of the transport currents go on as straight lines from x_max on; if that is to
// be counted, n_limit gets 1 for each that did.
gummel_poon_point gummel_poon_at(const double* rparm, int pol, const double* v, double gmin, int* n_limit = nullptr);

// The eight functions, in the order of their rows: currents into the terminals, then charges; and their derivatives.
void gummel_poon_functions(const gummel_poon_point& p, int pol, double* f);
void gummel_poon_functions_anew(const double* rparm, int pol, const double* v, double gmin,
                                const math_cnst_class& math_cnst, double* f);  // with constants of their own
void gummel_poon_derivatives(const gummel_poon_point& p, double** dfdv);

// What an element of this transistor answers under each flag; counted: capped exponentials count in flags->n_limit, on
// passes with derivatives. Voltages beyond 1e100 V, or where a formula leaves the range of numbers, are answered with
// an infinite current from collector to emitter, which the solver takes for a norm that is too large: false.
bool gummel_poon_element(bool counted, int pol, double* rparm, double* v, double* f, double** dfdv, flags_class* flags,
                         const math_cnst_class& math_cnst);
