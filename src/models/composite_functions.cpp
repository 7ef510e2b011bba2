#include "models/composite_functions.h"

#include <span>

const composite_registration* find_composite_function(std::string_view begin, std::string_view name) {
    using rows = std::span<const composite_registration>;
    const rows all = begin == "ece"   ? rows(ece_functions, static_cast<std::size_t>(n_ece_functions))
                     : begin == "gce" ? rows(gce_functions, static_cast<std::size_t>(n_gce_functions))
                                      : rows(xce_functions, static_cast<std::size_t>(n_xce_functions));
    for (const composite_registration& row : all)
        if (row.name == name) return &row;
    return nullptr;
}
