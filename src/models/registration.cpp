#include "models/registration.h"

ebe_function find_ebe(std::string_view name) {
    for (int i = 0; i < n_ebe_registrations; ++i)
        if (ebe_registrations[i].name == name) return ebe_registrations[i].function;
    return nullptr;
}

ebe_ac_function find_ebe_ac(std::string_view name) {
    for (int i = 0; i < n_ebe_ac_registrations; ++i)
        if (ebe_ac_registrations[i].name == name) return ebe_ac_registrations[i].function;
    return nullptr;
}
