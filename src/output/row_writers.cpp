#include "output/row_writers.h"

#include "output/assign_ov.h"
#include "run/text_file.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

bool gets_rows(const out_file& file) { return file.content == out_rows && !file.postproc && !file.postproc_ac; }
}  // namespace

void open_out_files(solve_class& slv) {
    for (out_file& file : slv.files) {
        file.n_lines = file.append ? file_count_lines(file.path) : 0;
        file.stream = std::make_unique<row_file>();
        file.stream->open(file.path, file.append);
    }
}

void close_out_files(solve_class& slv) {
    for (out_file& file : slv.files) {
        if (file.stream) file.stream->close();
        file.stream.reset();
    }
}

void count_line(solve_class& slv, int i_file, const char* writer) {
    out_file& file = slv.files[at(i_file)];
    if (file.n_lines >= file.limit_lines)
        halt({line(writer, ": limit_lines is exceeded."),
              line("  index_solve = ", slv.index_solve, ", i_file = ", i_file), "  Halting..."});
    ++file.n_lines;
}

void write_dc(solve_class& slv, const circuit& c, const flags_class&) {
    for (int i_file = 0; i_file < static_cast<int>(slv.files.size()); ++i_file) {
        out_file& file = slv.files[at(i_file)];
        if (!gets_rows(file)) continue;
        count_line(slv, i_file, "write_dc");
        for (const out_var& v : file.vars) {
            double value = 0.0;
            const bool small_signal_word = v.prefix == prefix_phase || v.prefix == prefix_mag;
            if (small_signal_word || !assign_ov(slv, c, v, value))
                halt({"write_dc: Check output variables.", "  Some output variables has not been",
                      "  mapped to any system variable.", "  Halting..."});
            file.stream->put(value);
        }
        file.stream->end_row();
    }
}
