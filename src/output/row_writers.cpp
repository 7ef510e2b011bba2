#include "output/row_writers.h"

#include "base/at.h"
#include "base/text_file.h"
#include "output/assign_ov.h"
#include "output/fourier.h"

bool gets_rows(const out_file& file) { return file.content == out_rows && !file.postproc && !file.postproc_ac; }

namespace {
// The present values of an analog file's columns. Variables that cannot be read show at the first row.
void read_values(const solve_class& slv, const circuit& c, out_file& file, const char* writer) {
    for (const std::size_t j : file.computed) {
        const out_var& v = file.vars[j];
        const bool small_signal_word = v.prefix == prefix_phase || v.prefix == prefix_mag;
        if (small_signal_word || !assign_ov(slv, c, v, file.value[j]))
            halt({line(writer, ": Check output variables."), "  Some output variables has not been",
                  "  mapped to any system variable.", "  Halting..."});
    }
    for (std::size_t j = 0; j < file.value.size(); ++j) file.value[j] = *file.column[j];
}

void read_columns(const solve_class& slv, const circuit& c, out_file& file, const char* writer) {
    if (file.data_type == out_analog) {
        read_values(slv, c, file, writer);
        return;
    }
    for (std::size_t j = 0; j < file.vars.size(); ++j) file.level[j] = assign_ov_dgtl(c, file.vars[j]);
}

// The columns that read_columns has left, and the end of the row.
void put_columns(const solve_class& slv, out_file& file) {
    row_file& out = *file.stream;
    if (file.data_type == out_analog)
        for (double x : file.value) out.put(x);
    else
        put_levels(out, file.level, slv.method.offset_dgtl);
    out.end_row();
}

// Whether an ordinary file takes a row at t; a fixed interval then runs from t, so its rows drift with the steps.
bool is_due(out_file& file, double t) {
    if (t > file.out_tend) return false;
    if (!file.flag_fixed_interval) return t >= file.out_tstart;
    if (t < file.next_time) return false;
    file.next_time = t + file.fixed_interval;
    return true;
}

void start_file(const solve_class& slv, const circuit& c, out_file& file) {
    file.next_time = file.out_tstart;
    file.value.assign(file.data_type == out_analog ? file.vars.size() : 0, 0.0);
    file.level.assign(file.data_type == out_digital ? file.vars.size() : 0, 0);
    file.column.clear();
    file.computed.clear();
    file.phasor.clear();
    for (std::size_t j = 0; j < file.value.size(); ++j) {
        const double* place = place_of(slv, c, file.vars[j]);
        if (place == nullptr) file.computed.push_back(j);
        file.column.push_back(place != nullptr ? place : &file.value[j]);
    }
    for (std::size_t j = 0; j < file.value.size(); ++j) file.phasor.push_back(phasor_of(c, file.vars[j]));
    file.phase_before.assign(file.value.size(), 0.0);
    if (file.fourier) start_fourier(file);
}
}  // namespace

void open_out_files(solve_class& slv, const circuit& c) {
    for (out_file& file : slv.out.files) {
        file.n_lines = file.append ? file_count_lines(file.path) : 0;
        file.stream = std::make_unique<row_file>();
        file.stream->open(file.path, file.append);
        start_file(slv, c, file);
    }
}

void close_out_files(solve_class& slv) {
    for (out_file& file : slv.out.files) {
        if (file.stream) file.stream->close();
        file.stream.reset();
    }
}

void count_line(solve_class& slv, int i_file, const char* writer) {
    out_file& file = slv.out.files[at(i_file)];
    if (file.n_lines >= file.limit_lines)
        halt({line(writer, ": limit_lines is exceeded."),
              line("  index_solve = ", slv.index_solve, ", i_file = ", i_file), "  Halting..."});
    ++file.n_lines;
}

void put_levels(row_file& out, const std::vector<int>& level, double offset) {
    for (std::size_t j = 0; j < level.size(); ++j)
        if (offset != 0.0)
            out.put(level[j] + static_cast<double>(j) * offset);
        else
            out.put_field(level[j]);
}

void write_dc(solve_class& slv, const circuit& c, const flags_class&) {
    for (int i_file = 0; i_file < static_cast<int>(slv.out.files.size()); ++i_file) {
        out_file& file = slv.out.files[at(i_file)];
        if (!gets_rows(file)) continue;
        count_line(slv, i_file, "write_dc");
        read_columns(slv, c, file, "write_dc");
        put_columns(slv, file);
    }
}

void write_trns(solve_class& slv, const circuit& c, int mode, double t) {
    constexpr const char* me = "write_trns";
    for (int i_file = 0; i_file < static_cast<int>(slv.out.files.size()); ++i_file) {
        out_file& file = slv.out.files[at(i_file)];
        if (!gets_rows(file) || (mode != rows_all && mode != file.data_type)) continue;
        if (file.fourier) {
            read_values(slv, c, file, me);
            add_fourier_point(file, t);
            continue;
        }
        if (!is_due(file, t)) continue;
        count_line(slv, i_file, me);
        read_columns(slv, c, file, me);
        file.stream->put(t);
        put_columns(slv, file);
    }
}
