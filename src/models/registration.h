// registration.h -- from the name of an element to its compiled function.
#pragma once
#include <complex>
#include <string_view>

#include "models/runs.h"

struct ebac1_class;
struct gbac1_class;

// counts: words of each list of the entry that the model was compiled from, in the order of its lines, then its
// functions. The model indexes its arrays by them.
struct ebe_registration {
    std::string_view name;
    ebe_function function;
    int counts[15];
    ebe_run_function run;  // the same for rows of units
};

// All electrical elements of this build; written by the build from the element files.
extern const ebe_registration ebe_registrations[];
extern const int n_ebe_registrations;

ebe_function find_ebe(std::string_view name);  // null if there is no such model
const ebe_registration* find_ebe_registration(std::string_view name);

// A small-signal model of an electrical element; freq in rad/s. ebe_jac: derivatives of the element at the bias point,
// or null.
using ebe_ac_function = void (*)(const int i_ebau, int* iparm, char** sparm, double freq, double* rparm,
                                 std::complex<double>* v, std::complex<double>* vind, std::complex<double>* curind,
                                 std::complex<double>* aux, std::complex<double>* vr, std::complex<double>* f,
                                 ebac1_class* jac, ebes1_class* ebe_jac, flags_class* flags, dp_class* dp,
                                 math_cnst_class* math_cnst);

struct ebe_ac_registration {
    std::string_view name;
    ebe_ac_function function;
    int counts[9];
};
extern const ebe_ac_registration ebe_ac_registrations[];
extern const int n_ebe_ac_registrations;

ebe_ac_function find_ebe_ac(std::string_view name);  // null if there is no such model
const ebe_ac_registration* find_ebe_ac_registration(std::string_view name);

struct gbe_registration {
    std::string_view name;
    gbe_function function;
    int counts[9];
    gbe_run_function run;
};
extern const gbe_registration gbe_registrations[];
extern const int n_gbe_registrations;

gbe_function find_gbe(std::string_view name);  // null if there is no such model
const gbe_registration* find_gbe_registration(std::string_view name);

using gbe_ac_function = void (*)(const int i_gbau, int* iparm, char** sparm, double freq, double* rparm,
                                 std::complex<double>* vr, std::complex<double>* aux, std::complex<double>* f,
                                 gbac1_class* jac, flags_class* flags, dp_class* dp, math_cnst_class* math_cnst);
struct gbe_ac_registration {
    std::string_view name;
    gbe_ac_function function;
    int counts[6];
};
extern const gbe_ac_registration gbe_ac_registrations[];
extern const int n_gbe_ac_registrations;

gbe_ac_function find_gbe_ac(std::string_view name);  // null if there is no such model
const gbe_ac_registration* find_gbe_ac_registration(std::string_view name);
