#include "models/registration.h"

namespace {
template <class R>
const R* find(const R* rows, int n, std::string_view name) {
    for (int i = 0; i < n; ++i)
        if (rows[i].name == name) return &rows[i];
    return nullptr;
}
}  // namespace

const ebe_registration* find_ebe_registration(std::string_view name) {
    return find(ebe_registrations, n_ebe_registrations, name);
}
const ebe_ac_registration* find_ebe_ac_registration(std::string_view name) {
    return find(ebe_ac_registrations, n_ebe_ac_registrations, name);
}
const gbe_registration* find_gbe_registration(std::string_view name) {
    return find(gbe_registrations, n_gbe_registrations, name);
}
const gbe_ac_registration* find_gbe_ac_registration(std::string_view name) {
    return find(gbe_ac_registrations, n_gbe_ac_registrations, name);
}

namespace {
template <class R>
auto function_of(const R* row) -> decltype(row->function) {
    return row ? row->function : nullptr;
}
}  // namespace

ebe_function find_ebe(std::string_view name) { return function_of(find_ebe_registration(name)); }
ebe_ac_function find_ebe_ac(std::string_view name) { return function_of(find_ebe_ac_registration(name)); }
gbe_function find_gbe(std::string_view name) { return function_of(find_gbe_registration(name)); }
gbe_ac_function find_gbe_ac(std::string_view name) { return function_of(find_gbe_ac_registration(name)); }
