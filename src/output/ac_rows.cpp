// ac_rows.cpp -- rows of small-signal files.
#include <cmath>

#include "base/at.h"
#include "base/math_cnst_class.h"
#include "output/assign_ov.h"
#include "output/row_writers.h"
#include "sparse/arithmetic.h"

namespace {
constexpr double turn = 360.0;
constexpr int most_turns = 12;

// What a column shows that is no amplitude: a power, or a global parameter.
double other_value(const solve_class& slv, const circuit& c, const out_var& v) {
    double value = 0.0;
    if (v.prefix == prefix_none && v.kind != ov_pwr_elec_ac)
        halt({"assign_ov: check output variables.", "   perhaps missing phase or mag?"});
    if (!assign_ov(slv, c, v, value))
        halt({"write_ac: Check output variables.", "  Some output variables has not been",
              "  mapped to any system variable.", "  Halting..."});
    return value;
}

double column_of(const std::complex<double>& z, int prefix, const out_file& file, double* phase_before, bool is_first) {
    if (file.nyquist) return prefix == prefix_phase ? z.real() : z.imag();
    if (prefix == prefix_mag) return magnitude(z);
    return *phase_before = written_phase(z, file, is_first ? nullptr : phase_before);
}
}  // namespace

double written_phase(const std::complex<double>& z, const out_file& file, const double* before) {
    double phase = std::atan2(z.imag(), z.real()) * math_cnst_class{}.rad_to_deg;
    const auto move = [&](double by, auto beyond) {
        for (int k = 0; k < most_turns && beyond(); ++k) phase += by;
    };
    if (file.flag_min_phase) {
        move(turn, [&] { return phase <= file.min_phase; });
    } else if (file.flag_max_phase) {
        move(-turn, [&] { return phase >= file.max_phase; });
    } else if (before != nullptr) {
        move(-turn, [&] { return phase > *before + file.delta_phase; });
        move(turn, [&] { return phase < *before - file.delta_phase; });
    }
    return phase;
}

void write_ac(solve_class& slv, const circuit& c, const flags_class&) {
    const double hz = slv.now.freq / math_cnst_class{}.twopi;
    for (int i_file = 0; i_file < static_cast<int>(slv.out.files.size()); ++i_file) {
        out_file& file = slv.out.files[at(i_file)];
        if (!gets_rows(file)) continue;
        count_line(slv, i_file, "write_ac");
        if (file.data_type == out_digital) assign_ov_dgtl(c, file.vars[0]);
        for (std::size_t j = 0; j < file.value.size(); ++j) {
            const out_var& v = file.vars[j];
            file.value[j] = file.phasor[j] != nullptr
                                ? column_of(*file.phasor[j], v.prefix, file, &file.phase_before[j], slv.now.i_freq == 0)
                                : other_value(slv, c, v);
        }
        file.stream->put(file.output_hz ? hz : slv.now.freq);
        for (const double x : file.value) file.stream->put(x);
        file.stream->end_row();
    }
}
