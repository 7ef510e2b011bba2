// composite_parms.h -- parameters that composites compute from others by functions of their own.
#pragma once

struct run_state;

// Looks up the functions of all composites in use that compute parameters; called by bind_models. Halts for one that
// computes its parameters (compute_rparms) and has no function in this program.
void bind_composites(run_state& r);

// Computed parameters of all instances, nested composites included, and on to their units of both halves. Behind every
// write of parameters: one_time_parms begins with it. Halts for a value that is no finite number.
void compute_rparms(run_state& r);
void compute_rparms_of(run_state& r, int fam, int instance);  // of one instance

// Small-signal parameters at the bias point that stands in the units: rprm_ac from rprm, then by the functions of
// composites with compute_acp, then to the small-signal units (linked parameters and acparm_map). Returns at once when
// no composite in use has either. Functions see parameters, output values and time, no frequency: once for each bias
// point is enough. Halts for a composite whose function is not there.
void compute_acp(run_state& r);
bool has_compute_acp(const run_state& r);  // whether it would do anything
