#include "tnl/common/run_record.h"

#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "tnl/common/exit_status.h"
#include "tnl/common/input_file.h"

namespace cli {

// NOLINTBEGIN: the library looks for these names
static void to_json(nlohmann::json& j, const record_column& c) {
    j = {{"name", c.name}, {"unit", c.unit}};
    if (c.level) j["level"] = true;
}
static void from_json(const nlohmann::json& j, record_column& c) {
    c = {j.value("name", ""), j.value("unit", ""), j.value("level", false)};
}
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(record_sweep, name, unit, values)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(record_file, path, kind, columns, rows, curves, begins_with_guess,
                                                sweeps, steps, digital, offset)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(record_place, file, line, column, text)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(record_warning, message, advice, places)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(record_multiplier, re, im)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(record_period, shots, converged, difference, period, stability, largest,
                                                multipliers)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(run_record, version, deck, deck_hash, library_hash, title, options,
                                                began, seconds, state, status, signal, message, places, warnings,
                                                periods, files, other_files)
// NOLINTEND

std::string to_json(const run_record& record) {
    // Bytes that are no UTF-8, as a deck may hold, are replaced.
    return nlohmann::ordered_json(nlohmann::json(record))
               .dump(2, ' ', false, nlohmann::json::error_handler_t::replace) +
           "\n";
}

run_record record_of_json(const std::string& text) {
    try {
        return nlohmann::json::parse(text).get<run_record>();
    } catch (const nlohmann::json::exception& e) {
        throw file_error(std::string("not a run record: ") + e.what());
    }
}

run_record read_record(const std::filesystem::path& path) {
    const std::string text = read_file(path, most_deck_bytes);
    try {
        return record_of_json(text);
    } catch (const file_error& e) {
        throw file_error(path.string() + ": " + e.what());
    }
}

std::string hash_of(std::string_view text) {  // Fowler, Noll, Vo: FNV-1a with 64 bits
    std::uint64_t h = 14695981039346656037u;
    for (const char c : text) h = (h ^ static_cast<unsigned char>(c)) * 1099511628211u;
    char digits[32];
    std::snprintf(digits, sizeof digits, "fnv1a64:%016llx", static_cast<unsigned long long>(h));
    return digits;
}

}  // namespace cli
