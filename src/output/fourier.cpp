#include "output/fourier.h"

#include <algorithm>
#include <cmath>

#include "base/at.h"

namespace {
// Values at time t between the last point and the present one at t_new.
void between(const out_file& file, double t, double t_new, std::vector<double>& x) {
    const fourier_sums& s = file.sums;
    const double part = (t - s.t_old) / (t_new - s.t_old);
    for (std::size_t j = 0; j < x.size(); ++j) x[j] = s.x_old[j] + part * (file.value[j] - s.x_old[j]);
}

// The mean over the interval stands for the signal, and its end for the phase.
void add_interval(const out_file& file, fourier_sums& s, const double* a, const double* b, double h, double t) {
    const std::size_t n = s.power.size();
    for (std::size_t k = 0; k < file.omega_fourier.size(); ++k) {
        const double wt = file.omega_fourier[k] * t;
        const double c = std::cos(wt), d = std::sin(wt);
        double* cosine = s.cosine.data() + k * n;
        double* sine = s.sine.data() + k * n;
        for (std::size_t j = 0; j < n; ++j) {
            const double m = 0.5 * (a[j] + b[j]) * h;
            cosine[j] += m * c;
            sine[j] += m * d;
        }
    }
    for (std::size_t j = 0; j < n; ++j) s.power[j] += 0.5 * (a[j] * a[j] + b[j] * b[j]) * h;
}

// The part of the interval from the last point to t_new that lies in the span.
void add_part(const out_file& file, fourier_sums& s, double t_new) {
    const bool cut_from = s.t_old<file.out_tstart, cut_to = t_new> file.out_tend;
    const double t_from = cut_from ? file.out_tstart : s.t_old, t_to = cut_to ? file.out_tend : t_new;
    if (!(t_from < t_to)) return;
    if (cut_from) between(file, t_from, t_new, s.from);
    if (cut_to) between(file, t_to, t_new, s.to);
    add_interval(file, s, cut_from ? s.from.data() : s.x_old.data(), cut_to ? s.to.data() : file.value.data(),
                 t_to - t_from, t_to);
}

double amplitude(const out_file& file, std::size_t k, std::size_t j) {
    const std::size_t i = k * file.vars.size() + j;
    const double c = file.sums.cosine[i], d = file.sums.sine[i];
    const double a = std::sqrt(c * c + d * d) / (0.5 * file.period_fourier);
    return k == 0 ? 0.5 * a : a;
}

void write_sticks(out_file& file) {
    constexpr double half_width = 0.0001;
    row_file& out = *file.stream;
    for (std::size_t k = 0; k < file.omega_fourier.size(); ++k)
        for (int side : {-1, 0, 1}) {
            out.put(static_cast<double>(k) + side * half_width);
            for (std::size_t j = 0; j < file.vars.size(); ++j) out.put(side == 0 ? amplitude(file, k, j) : 0.0);
            out.end_row();
        }
}

// Not a number, or infinite, where there is no fundamental.
double distortion(const out_file& file, std::size_t j) {
    double fundamental = 0.0, sum = 0.0;
    for (std::size_t k = 1; k < file.omega_fourier.size(); ++k) {
        const double a = amplitude(file, k, j);
        if (k == 1) fundamental = a;
        if (k > 1) sum += a * a;
    }
    return std::fabs(std::sqrt(sum) / fundamental);  // nan without a sign
}
}  // namespace

void start_fourier(out_file& file) {
    const std::size_t n = file.vars.size(), n_sums = at(file.n_fourier) * n;
    file.sums = {};
    for (auto* v : {&file.sums.x_old, &file.sums.from, &file.sums.to, &file.sums.power}) v->assign(n, 0.0);
    for (auto* v : {&file.sums.cosine, &file.sums.sine}) v->assign(n_sums, 0.0);
}

void add_fourier_point(out_file& file, double t) {
    fourier_sums& s = file.sums;
    if (s.now == fourier_sums::closed) return;
    if (s.now == fourier_sums::waiting && t >= file.out_tstart) s.now = fourier_sums::summing;
    if (s.now == fourier_sums::summing && s.has_point) add_part(file, s, t);
    if (t > file.out_tend) s.now = fourier_sums::closed;
    s.has_point = true;
    s.t_old = t;
    std::copy(file.value.begin(), file.value.end(), s.x_old.begin());
}

void write_fourier(solve_class& slv) {
    for (std::size_t i = 0; i < slv.out.files.size(); ++i) {
        out_file& file = slv.out.files[i];
        if (!file.fourier) continue;
        write_sticks(file);
        for (std::size_t j = 0; j < file.vars.size(); ++j)
            say(line("file no=", i, " variable no=", j, " thd (%)=", 100.0 * distortion(file, j)));
    }
}
