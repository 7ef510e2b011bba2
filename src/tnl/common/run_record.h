// run_record.h -- run.json, which stands beside the rows of a run and tells what they are.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

namespace cli {

inline constexpr const char* record_name = "run.json";
// While a run goes on, its folder holds everything in this subfolder; files get their final places when it is over.
inline constexpr const char* partial_name = ".partial";

inline constexpr double unknown_level = 2;  // of a digital node

struct record_column {
    std::string name;    // "time", "frequency", "harmonic", or the deck's word: "vout", "r_of_R2"
    std::string unit;    // "s", "V", "ohm"; empty when unknown or none
    bool level = false;  // of a digital file: 0, 1 or unknown_level
    bool operator==(const record_column&) const = default;
};
struct record_sweep {
    std::string name, unit;      // the deck's word: "r_of_R1"
    std::vector<double> values;  // [curves]
};
struct record_file {
    std::string path;  // relative to the folder of the record
    // "dc", "startup", "trns", "ssw", "ac", "nyquist", "fourier"; "postproc": one row of results; "solution", "parms":
    // no table
    std::string kind;
    std::vector<record_column> columns;
    long long rows = 0;
    int curves = 0;  // parts with blank lines between them
    // A run in time from initial_sol initialize: its first row holds the elements' first guesses, before anything is
    // solved.
    bool begins_with_guess = false;
    // What tells the curves of a sweep apart where no column does: the values that each was made with.
    std::vector<record_sweep> sweeps = {};
    // Of a sweep point by point: what steps along each of the curves; values [rows of a curve], none where not known.
    record_sweep steps = {};
    // Levels of digital nodes and states of digital elements: integers, the j-th of them (from 0) raised by j offsets
    // in the file's rows. Each event has two rows of its time, before and after.
    bool digital = false;
    double offset = 0;
    bool is_table() const { return kind != "solution" && kind != "parms"; }
};
struct record_place {  // of a statement in the user's files
    std::string file;
    int line = 0, column = 0;  // 1-based
    std::string text;          // the line
};
struct record_warning {  // told by the simulator while it went on
    std::string message, advice;
    std::vector<record_place> places;  // that it speaks of
};
struct record_multiplier {  // an eigenvalue of the map from one period to the next
    double re = 0, im = 0;
};
struct record_period {  // what a periodic block came to, in the order of the blocks
    int shots = 0;
    bool converged = false;
    double difference = 0;  // of the states behind the last shot from those before it, root of the mean square
    double period = 0;      // s, where the block searched for it; else 0
    std::string stability;  // "stable", "unstable"; empty where it was not found
    double largest = 0;     // modulus of the multipliers that count
    std::vector<record_multiplier> multipliers;
};
struct run_record {
    std::string version;  // of tnl
    std::string deck;     // absolute path; "-" for standard input
    std::string deck_hash, library_hash;
    std::string title;
    std::vector<std::string> options;  // as typed behind "tnl run"
    std::string began;                 // ISO 8601, UTC
    double seconds = 0;                // wall time of the simulator
    std::string state;                 // "running", "complete", "stopped", "limit", "signal"
    int status = 0;                    // exit status of tnl run
    int signal = 0;
    std::string message;               // the simulator's text of the stop
    std::vector<record_place> places;  // that it speaks of
    std::vector<record_warning> warnings;
    std::vector<record_period> periods;
    std::vector<record_file> files;
    // What else the run has put into its folder: deck and libraries as the simulator read them, data files, dumps.
    std::vector<std::string> other_files;
};

std::string to_json(const run_record& record);
run_record record_of_json(const std::string& text);         // throws file_error
run_record read_record(const std::filesystem::path& path);  // throws file_error
std::string hash_of(std::string_view text);                 // "fnv1a64:" and 16 digits; tells changes, no secrets

}  // namespace cli
