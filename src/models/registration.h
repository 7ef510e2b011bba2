// registration.h -- from the name of an element to its compiled function.
#pragma once
#include <span>
#include <string_view>

#include "models/runs.h"

// counts: words of each list of the entry that the model was compiled from, in the order of its lines, then its
// functions. The model indexes its arrays by them.
template <class Call>
struct registration {
    std::string_view name;
    model_function<Call> function = nullptr;
    int counts[Call::n_counts] = {};
    typename unit_run<Call>::run_function run = nullptr;  // the same for rows of units; null: there is none
    bool asks_frequency = true;  // a small-signal model: false where what it gives is the same at all frequencies
};

// All elements of this build, family by family; written by the build from the element files.
using ebe_registration = registration<ebe_call>;
using gbe_registration = registration<gbe_call>;
using ebe_ac_registration = registration<ebe_ac_call>;
using gbe_ac_registration = registration<gbe_ac_call>;
using dbe_registration = registration<dbe_call>;
using xbe_registration = registration<xbe_call>;
using xbe_ac_registration = registration<xbe_ac_call>;
extern const ebe_registration ebe_registrations[];
extern const gbe_registration gbe_registrations[];
extern const ebe_ac_registration ebe_ac_registrations[];
extern const gbe_ac_registration gbe_ac_registrations[];
extern const dbe_registration dbe_registrations[];
extern const xbe_registration xbe_registrations[];
extern const xbe_ac_registration xbe_ac_registrations[];
extern const int n_ebe_registrations, n_gbe_registrations, n_ebe_ac_registrations, n_gbe_ac_registrations,
    n_dbe_registrations, n_xbe_registrations, n_xbe_ac_registrations;

template <class Call>
std::span<const registration<Call>> registered();
template <>
inline std::span<const ebe_registration> registered<ebe_call>() {
    return {ebe_registrations, static_cast<std::size_t>(n_ebe_registrations)};
}
template <>
inline std::span<const gbe_registration> registered<gbe_call>() {
    return {gbe_registrations, static_cast<std::size_t>(n_gbe_registrations)};
}
template <>
inline std::span<const ebe_ac_registration> registered<ebe_ac_call>() {
    return {ebe_ac_registrations, static_cast<std::size_t>(n_ebe_ac_registrations)};
}
template <>
inline std::span<const gbe_ac_registration> registered<gbe_ac_call>() {
    return {gbe_ac_registrations, static_cast<std::size_t>(n_gbe_ac_registrations)};
}
template <>
inline std::span<const dbe_registration> registered<dbe_call>() {
    return {dbe_registrations, static_cast<std::size_t>(n_dbe_registrations)};
}

template <>
inline std::span<const xbe_registration> registered<xbe_call>() {
    return {xbe_registrations, static_cast<std::size_t>(n_xbe_registrations)};
}
template <>
inline std::span<const xbe_ac_registration> registered<xbe_ac_call>() {
    return {xbe_ac_registrations, static_cast<std::size_t>(n_xbe_ac_registrations)};
}

template <class Call>
const registration<Call>* find_registration(std::string_view name) {
    for (const registration<Call>& row : registered<Call>())
        if (row.name == name) return &row;
    return nullptr;
}

// Null if there is no such model.
template <class Call>
model_function<Call> find_model(std::string_view name) {
    const registration<Call>* row = find_registration<Call>(name);
    return row ? row->function : nullptr;
}
