#include "models/registration.h"

const ebe_registration* find_ebe_registration(std::string_view name) {
    for (int i = 0; i < n_ebe_registrations; ++i)
        if (ebe_registrations[i].name == name) return &ebe_registrations[i];
    return nullptr;
}

ebe_function find_ebe(std::string_view name) {
    const ebe_registration* found = find_ebe_registration(name);
    return found ? found->function : nullptr;
}

ebe_ac_function find_ebe_ac(std::string_view name) {
    for (int i = 0; i < n_ebe_ac_registrations; ++i)
        if (ebe_ac_registrations[i].name == name) return ebe_ac_registrations[i].function;
    return nullptr;
}
