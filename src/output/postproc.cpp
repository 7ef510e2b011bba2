#include "output/postproc.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/at.h"
#include "base/math_cnst_class.h"
#include "output/postproc_columns.h"
#include "output/postproc_values.h"
#include "settings/postproc_plan.h"

namespace {
void write_row(const out_file& file, const std::vector<double>& row) {
    row_file out;
    out.open(file.path, true);
    for (const double x : row) out.put(x);
    out.end_row();
    out.close();
}

// ---- over time

using results_of_one = std::array<double, most_postproc_results>;

results_of_one compute(std::string_view type, samples t, const std::vector<samples>& x) {
    if (type == "calc_avg") return {postproc_avg(t, x[0])};
    if (type == "calc_rms") return {postproc_rms(t, x[0])};
    if (type == "calc_avg_rms") return {postproc_avg(t, x[0]), postproc_rms(t, x[0])};
    if (type == "calc_thd") return {postproc_avg(t, x[0]), postproc_rms(t, x[0]), postproc_thd(t, x[0])};
    const double p = postproc_pavg(t, x[0], x[1]), rms_1 = postproc_rms(t, x[0]), rms_2 = postproc_rms(t, x[1]);
    const double apparent = rms_1 * rms_2;
    return {p, rms_1, rms_2, apparent == 0.0 ? 0.0 : p / apparent};
}

// What is read of a file: its columns in the order of `column`.
struct file_read {
    std::vector<int> column;
    trns_columns got;

    samples x(int wanted) const {
        return got.x[static_cast<std::size_t>(std::find(column.begin(), column.end(), wanted) - column.begin())];
    }
};

// Two columns of different files make a product when their rows stand at the same times.
void check_same_times(const std::vector<double>& t_old, const std::vector<double>& t_new) {
    if (t_new.size() != t_old.size())
        halt({line("postproc_1: n_new = ", t_new.size(), ", n_old = ", t_old.size(), " ? Halting...")});
    if (t_new != t_old) halt({"postproc_1: the rows of two columns stand at different times. Halting..."});
}
}  // namespace

void postproc_1(const solve_class& slv, const circuit& c, int i_file) {
    const out_file& file = slv.out.files[at(i_file)];
    const postproc_plan plan = plan_postproc(slv, c, i_file);

    // Each file is read once for all of its columns.
    std::map<int, file_read> read;
    for (const auto& [instance, columns] : plan.columns)
        for (const file_column& f : columns) {
            std::vector<int>& of_file = read[f.i_file].column;
            if (std::find(of_file.begin(), of_file.end(), f.column) == of_file.end()) of_file.push_back(f.column);
        }
    for (auto& [i, r] : read) {
        r.got = file_trns_get_col(slv.out.files[at(i)].path, file.out_tstart, file.out_tend, r.column);
        check_trns_1(file.out_tstart, file.out_tend, r.got.t);
    }

    std::map<int, results_of_one> done;  // by instance
    std::vector<double> row;
    for (const postproc_plan::result& r : plan.results) {
        const postproc_type& type = type_of_result(c, r, false);
        if (!done.contains(r.instance)) {
            const std::vector<file_column>& columns = plan.columns.at(r.instance);
            const std::vector<double>& t = read[columns[0].i_file].got.t;
            std::vector<samples> x;
            for (const file_column& f : columns) {
                check_same_times(t, read[f.i_file].got.t);
                x.push_back(read[f.i_file].x(f.column));
            }
            done[r.instance] = compute(type.name, t, x);
        }
        row.push_back(done[r.instance][at(r.index)]);
    }
    write_row(file, row);
}

// ---- at one frequency

namespace {
struct phasor {
    double mag = 0.0, phase = 0.0;  // deg
};

// Out of the one row of a file that shows both.
phasor read_phasor(const solve_class& slv, const file_column& mag, const file_column& phase) {
    const std::string& path = slv.out.files[at(mag.i_file)].path;
    const ac_columns got = file_ac_get_col(path, {mag.column, phase.column});
    if (!got.single) halt({line("postproc_1_ac: expect ", path, " to have a single row. Halting...")});
    return {got.x[0], got.x[1]};
}
}  // namespace

void postproc_1_ac(const solve_class& slv, const circuit& c, int i_file) {
    const postproc_plan plan = plan_postproc(slv, c, i_file);
    std::map<int, std::vector<phasor>> measured;  // by instance
    for (const auto& [instance, columns] : plan.columns)
        for (std::size_t j = 0; j + 1 < columns.size(); j += 2)
            measured[instance].push_back(read_phasor(slv, columns[j], columns[j + 1]));
    std::vector<double> row;
    for (const postproc_plan::result& r : plan.results) {
        type_of_result(c, r, true);
        const phasor &a = measured[r.instance][0], &b = measured[r.instance][1];
        const double pf = std::cos((a.phase - b.phase) * math_cnst_class{}.deg_to_rad);
        const double apparent = 0.5 * a.mag * b.mag;  // magnitudes are peak values
        const double results[] = {pf, apparent * pf, apparent};
        row.push_back(results[r.index]);
    }
    write_row(slv.out.files[at(i_file)], row);
}
