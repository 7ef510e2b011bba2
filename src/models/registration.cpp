#include "models/registration.h"

namespace {
template <class R> auto find(const R* rows, int n, std::string_view name) -> decltype(rows->function) {
    for (int i = 0; i < n; ++i)
        if (rows[i].name == name) return rows[i].function;
    return nullptr;
}
}  // namespace

ebe_function find_ebe(std::string_view name) { return find(ebe_registrations, n_ebe_registrations, name); }
ebe_ac_function find_ebe_ac(std::string_view name) { return find(ebe_ac_registrations, n_ebe_ac_registrations, name); }
gbe_function find_gbe(std::string_view name) { return find(gbe_registrations, n_gbe_registrations, name); }
gbe_ac_function find_gbe_ac(std::string_view name) { return find(gbe_ac_registrations, n_gbe_ac_registrations, name); }
