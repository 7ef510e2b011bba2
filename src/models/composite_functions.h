// composite_functions.h -- functions of composites that compute parameters, and where they are found by name.
#pragma once
#include <string_view>

struct flags_class;

// Under flags->rparms a function rewrites rparm, under flags->acparms it fills rparm_ac; it has the values of the
// composite's output words and the time, s. Each array is in the order of the composite's list.
using composite_function = void (*)(int* iparm, char** sparm, double* rparm, double* rparm_ac, double* outvar,
                                    flags_class* flags, double time_given);
// Composites of blocks have functions without output values.
using block_composite_function = void (*)(int* iparm, char** sparm, double* rparm, double* rparm_ac, flags_class* flags,
                                          double time_given);
template <block_composite_function f>
void without_outvar(int* iparm, char** sparm, double* rparm, double* rparm_ac, double*, flags_class* flags,
                    double time_given) {
    f(iparm, sparm, rparm, rparm_ac, flags, time_given);
}

// n_...: words of the lists of the entry that the function was compiled from.
struct composite_registration {
    std::string_view name;
    composite_function function;
    int n_iprm, n_sprm, n_rprm, n_ov;
};

// All of this build; written by the build from the files of composites.
extern const composite_registration ece_functions[], gce_functions[], xce_functions[];
extern const int n_ece_functions, n_gce_functions, n_xce_functions;

// begin: "ece", "gce" or "xce". Null if there is none.
const composite_registration* find_composite_function(std::string_view begin, std::string_view name);
