// waveform.h -- what can be measured on a wave between unevenly spaced samples.
#pragma once
#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace cli {

// How a wave runs between two samples: straight over t and x, or over their logarithms where both ends are above 0.
// Areas (integral, average, rms, harmonics) are always those of straight lines over t and x.
struct wave_scales {
    bool log_t = false, log_x = false;
};
// t does not decrease; two samples at one t are a jump.
struct wave {
    std::span<const double> t, x;  // equal lengths, at least 1
    wave_scales scales = {};
};
// A wave that owns its samples.
struct samples {
    std::vector<double> t, x;
    wave_scales scales = {};
    operator wave() const { return {t, x, scales}; }
};

// The rows do not allow the measurement: an empty window, too few crossings. The text says which.
struct measure_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The part from a to b with interpolated borders. Ends that lie beyond the samples by less than the distance of two and
// a hundredth of the span are taken for the first or last sample; over a logarithmic t by less than a millionth. Throws
// measure_error.
samples clip(const wave& w, double a, double b);
double value_at(const wave& w, double t);  // behind a jump at t; throws measure_error

// Exact for the straight lines. avg and rms of a wave without extent are those of its value.
double integral(const wave& w);
double average(const wave& w);
double rms(const wave& w);
double middle(const wave& w);  // between least and greatest of the samples that are numbers
double slope(const wave& w);   // from the first sample to the last
// Not a number when some sample is none.
double least(const wave& w);
double greatest(const wave& w);

enum class edge { any, rise, fall };
// Where the wave goes through the level, first to last: from below to above it or back. What only touches it does not
// count; where it stays on the level in between, its arrival counts.
struct crossing {
    double t;
    bool rises;
};
std::vector<crossing> crossings(const wave& w, double level);
// The n-th of these edges from 1, or from the end: -1. Throws measure_error.
double nth_crossing(const wave& w, double level, long long n, edge which);

// Over the whole periods between the first rising crossing and the last. Throw measure_error with fewer than two, and
// where a sample between them is no number.
double period(const wave& w, double level);
double duty(const wave& w, double level);  // part of the time above the level

// A step goes from the first sample to the value `last`. These throw measure_error when there is no such step, and
// rise_time when it goes down, fall_time when it goes up.
double rise_time(const wave& w, double last);  // from 10 % to 90 %
double fall_time(const wave& w, double last);  // from 90 % to 10 %
double overshoot(const wave& w, double last);  // beyond last, as a part of the step; 0 if none
// From the first sample to the last entry into last +- tolerance * step; the step is the greatest distance from last,
// so that a wave that leaves its value and comes back has one too.
double settling_time(const wave& w, double last, double tolerance);

// Over the last whole periods of f0 that fit; throw measure_error when none does.
double harmonic_amplitude(const wave& w, double f0, int k);  // peak value; the mean for k = 0
// Effective value of all but the mean and the first harmonic, over that of the first; n_harmonics >= 2: of the
// harmonics 2 .. n_harmonics alone.
double distortion(const wave& w, double f0, int n_harmonics = 0);

}  // namespace cli
