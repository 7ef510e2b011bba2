#include "analyses/period_check.h"

#include <algorithm>
#include <cmath>

#include "analyses/assembly.h"
#include "analyses/trns_solve.h"
#include "base/at.h"
#include "base/halt.h"

namespace {
constexpr double allowed = 1e-6;  // of the largest terms of a row; rounding of times and phases makes 1e-12 of them
constexpr double aside = 1e-8;    // of the period: a jump falls on either side of a point by the rounding of its time

double terms_of_row(const mat_class& mat, int row) {
    double sum = 0.0;
    for (int k = mat.m.srow[at(row)]; k >= 0; k = mat.m.prow[at(k)])
        sum += std::fabs(mat.val_m[at(k)] * mat.svec[at(mat.m.col[at(k)])]);
    return sum;
}
void evaluate_at(run_state& r, double t) {
    set_time_next(r, t);
    form_jac_rhs(r, true);
}
}  // namespace

period_check::period_check(const run_state& r)
    : period_(r.slv.method.ssw_period),
      functions_(at(r.mat.n_svec)),
      lowest_(functions_),
      highest_(functions_),
      rows_(at(r.mat.n_svec)) {}

void period_check::look(run_state& r) {
    const double t = r.slv.now.time_next;
    evaluate_at(r, t);
    functions_ = r.mat.rhs_m;
    evaluate_at(r, t + period_);
    if (r.mat.rhs_m == functions_) return evaluate_at(r, t);
    lowest_ = highest_ = r.mat.rhs_m;
    for (const double there : {t + period_ * (1.0 - aside), t + period_ * (1.0 + aside)}) {
        evaluate_at(r, there);
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            lowest_[i] = std::min(lowest_[i], r.mat.rhs_m[i]);
            highest_[i] = std::max(highest_[i], r.mat.rhs_m[i]);
        }
    }
    evaluate_at(r, t);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const double difference = std::max({0.0, functions_[i] - highest_[i], lowest_[i] - functions_[i]});
        if (difference == 0.0) continue;
        row_seen& row = rows_[i];
        row.terms = std::max(row.terms, terms_of_row(r.mat, static_cast<int>(i)));
        row.difference = std::max(row.difference, difference);
        if (row.is_seen || difference <= allowed * row.terms) continue;
        row.is_seen = true;
        row.first_time = t;
    }
}

void period_check::tell() const {
    double first = 0.0;
    bool differs = false;
    for (const row_seen& row : rows_) {
        if (!row.is_seen || row.difference <= allowed * row.terms) continue;
        first = differs ? std::min(first, row.first_time) : row.first_time;
        differs = true;
    }
    if (!differs) return;
    say(line("solve_ssw: the circuit does not repeat itself behind the period ", period_, ","));
    say(line("   at first at time=", first, ": a source or clock has another period."));
    say("   This is a warning only.");
}
