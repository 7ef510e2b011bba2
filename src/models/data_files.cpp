#include "models/data_files.h"

#include <limits>

#include "base/halt.h"
#include "base/text_file.h"

namespace {

enum class layout {
    points,   // two numbers a line; the first ascend
    times,    // a count, then so many times, one a line, strictly ascending
    values,   // the points along each axis, then a number a line
    no_file,  // a slot of the clocks' angles
};

// An element type that needs data, in the order in which files are read.
struct loader {
    const char* family;  // begins its name in messages, which goes on with the type
    const char* type;
    layout file;
    int n_axes;         // of a look-up table
    const char* sizes;  // what its first line has
    int n_y;            // values a point; above 1 the last size
};
constexpr loader loaders[] = {
    {"gbe", "src_table_1", layout::points, 0, "", 1},
    {"gbe", "pwl_file", layout::points, 0, "", 1},
    {"gbe", "pwl_file_xy_1", layout::points, 0, "", 1},
    {"gbe", "pwm_file_1", layout::times, 0, "", 1},
    {"gbe", "pwm_file_2", layout::times, 0, "", 1},
    {"gbe", "lut_file_1_to_3", layout::values, 1, "n1 n2", 3},
    {"gbe", "lut_file_2_to_1", layout::values, 2, "n1 n2", 1},
    {"gbe", "lut_file_3_to_1", layout::values, 3, "n1 n2 n3", 1},
    {"gbe", "lut_file_4_to_1", layout::values, 4, "n1 n2 n3 n4", 1},
    {"gbe", "clock_delay_2", layout::no_file, 0, "", 0},
    {"xbe", "src_table_1", layout::points, 0, "", 1},
    {"xbe", "pwl_file", layout::points, 0, "", 1},
    {"xbe", "lut_file_1_to_3", layout::values, 1, "n1 n2", 3},
};
constexpr int min_lines = 2;
constexpr std::size_t n_delay_slots = 50;

// One file in the reading; every stop has the loader's name before it and the file behind it.
struct data_file {
    std::string who, path;
    text_file text;
    int n_lines = 0;
    words w;

    data_file(const loader& l, const std::string& name)
        : who(line("dp_class::", l.family, "_", l.type, ":")), path(name) {
        if (path == "none") halt({who, "  file name=none?", "  Halting..."});
        if (!read_text_file(path, text)) halt({who, line("  file ", path, " does not exist."), "  Halting..."});
        while (next_line(text, w, line_rule::plain_lines)) ++n_lines;
        text.at = 0;
        needs_lines(min_lines);
    }
    [[noreturn]] void stop(const std::string& what) const {
        halt({who, what, line("  Check file: ", path), "  Halting..."});
    }
    void needs_lines(std::int64_t n) const {
        if (n_lines < n) stop(line("  number of lines = ", n_lines, " ?"));
    }
    bool next() { return next_line(text, w, line_rule::plain_lines); }
    void needs_words(int n) const {
        if (w.size() != n) stop(line("  number of words is ", w.size()));
    }
};

void read_points(data_file& file, data_table& table) {
    while (file.next()) {
        file.needs_words(2);
        const double x = chr_to_double(file.w[0]);
        if (!table.x.empty() && !(x >= table.x.back())) file.stop("  time points not in ascending order?");
        table.x.push_back(x);
        table.y.push_back(chr_to_double(file.w[1]));
    }
}

void read_times(data_file& file, data_table& table) {
    file.next();
    file.needs_words(1);
    const int n = chr_to_int(file.w[0]);
    if (n < 1) file.stop(line("  number of times is ", n));
    file.needs_lines(std::int64_t{n} + 1);
    while (file.next()) {
        file.needs_words(1);
        const double t = chr_to_double(file.w[0]);
        if (!table.x.empty() && !(t > table.x.back())) file.stop("  time points not in ascending order?");
        table.x.push_back(t);
    }
    if (table.n_points() > n) file.stop("  more times than the first line says?");
}

// Count of numbers that the first line announces; sizes that no file can have count as more than any.
std::int64_t read_sizes(data_file& file, const loader& l, data_table& table) {
    const int n_sizes = l.n_axes + (l.n_y > 1 ? 1 : 0);
    file.next();
    if (file.w.size() != n_sizes)
        halt({file.who, line("  expecting ", l.sizes, " here"), line("  number of words is ", file.w.size()),
              line("  s2= ", joined(file.w)), line("  Check file: ", file.path), "  Halting..."});
    std::int64_t total = l.n_y;
    for (int k = 0; k < l.n_axes; ++k) {
        const int n = chr_to_int(file.w[k]);
        if (n < 1) file.stop(line("  n", k + 1, "= ", n, " ?"));
        table.n.push_back(n);
        total = total > std::numeric_limits<int>::max() ? total : total * n;
    }
    if (l.n_y > 1 && chr_to_int(file.w[l.n_axes]) != l.n_y) file.stop(line("  n", n_sizes, " must be ", l.n_y));
    return total;
}

void read_values(data_file& file, const loader& l, data_table& table) {
    table.n_y = l.n_y;
    const std::int64_t total = read_sizes(file, l, table);
    while (file.next()) {
        if (file.w.size() != 1)
            halt({file.who, "  expecting n_words=1 here", line("  n_words is ", file.w.size()),
                  line("  Check file: ", file.path), "  Halting..."});
        table.y.push_back(chr_to_double(file.w[0]));
    }
    const std::int64_t n = static_cast<std::int64_t>(table.y.size());
    if (n < total) file.stop("  not enough numbers?");
    if (n > total) file.stop("  more numbers than the first line says?");
}

data_table read_table(const loader& l, const std::string& path) {
    data_file file(l, path);
    data_table table;
    if (l.file == layout::points) read_points(file, table);
    if (l.file == layout::times) read_times(file, table);
    if (l.file == layout::values) read_values(file, l, table);
    return table;
}

void number_delays(const loader& l, const basic_library& lib, const std::vector<int>& i_lib, delay_angles& delays) {
    delays.of_unit.assign(i_lib.size(), -1);
    int n = 0;
    for (std::size_t u = 0; u < i_lib.size(); ++u)
        if (lib.list.entry[i_lib[u]] == l.type) delays.of_unit[u] = n++;
    delays.slots.assign(n > 0 ? n_delay_slots : 0, {});
}

void read_family(std::string_view family, const basic_library& lib, const std::vector<int>& i_lib,
                 const row_table<char*>& sprm, data_tables& tables, delay_angles& delays) {
    tables.table.clear();
    tables.of_unit.assign(i_lib.size(), -1);
    for (const loader& l : loaders) {
        if (l.family != family) continue;
        if (l.file == layout::no_file) {
            number_delays(l, lib, i_lib, delays);
            continue;
        }
        for (std::size_t u = 0; u < i_lib.size(); ++u) {
            if (lib.list.entry[i_lib[u]] != l.type) continue;
            const int i_file = lib.list.sprm.find(i_lib[u], "file");
            tables.of_unit[u] = static_cast<int>(tables.table.size());
            tables.table.push_back(read_table(l, i_file < 0 ? "none" : sprm.row(static_cast<int>(u))[i_file]));
        }
    }
}
}  // namespace

void read_gbe_data_files(const basic_library& gbes, const std::vector<int>& i_lib, const row_table<char*>& sprm,
                         dp_class& dp) {
    read_family("gbe", gbes, i_lib, sprm, dp.gbe, dp.clock_delay_2);
}

void read_xbe_data_files(const basic_library& xbes, const std::vector<int>& i_lib, const row_table<char*>& sprm,
                         dp_class& dp) {
    read_family("xbe", xbes, i_lib, sprm, dp.xbe, dp.clock_delay_2);
}
