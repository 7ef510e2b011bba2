#include "models/data_files.h"

#include "base/halt.h"
#include "base/text_file.h"

namespace {

// An element type with a two-column file: time or x, and value.
struct loader {
    const char* name;  // in messages
    const char* type;
};
constexpr loader gbe_loaders[] = {{"gbe_pwl_file", "pwl_file"}};
constexpr int min_lines = 2;

data_table read_table(const loader& l, const std::string& path) {
    const std::string who = line("dp_class::", l.name, ":");
    if (path == "none") halt({who, "  file name=none?", "  Halting..."});
    text_file file;
    if (!read_text_file(path, file)) halt({who, line("  file ", path, " does not exist."), "  Halting..."});

    int n_lines = 0;
    words w;
    while (next_line(file, w, line_rule::plain_lines)) ++n_lines;
    if (n_lines < min_lines)
        halt({who, line("  number of lines = ", n_lines, " ?"), line("  Check file: ", path), "  Halting..."});

    data_table table;
    file.at = 0;
    while (next_line(file, w, line_rule::plain_lines)) {
        if (w.size() != 2)
            halt({who, line("  number of words is ", w.size()), line("  Check file: ", path), "  Halting..."});
        const double x = chr_to_double(w[0]);
        if (!table.x.empty() && !(x >= table.x.back()))
            halt({who, "  time points not in ascending order?", line("  Check file: ", path), "  Halting..."});
        table.x.push_back(x);
        table.y.push_back(chr_to_double(w[1]));
    }
    return table;
}

}  // namespace

void read_gbe_data_files(const gbes_class& gbes, const std::vector<int>& i_lib, const row_table<char*>& sprm,
                         dp_class& dp) {
    dp.table.clear();
    dp.gbe_table.assign(i_lib.size(), -1);
    for (const loader& l : gbe_loaders)
        for (std::size_t u = 0; u < i_lib.size(); ++u) {
            if (gbes.list.entry[i_lib[u]] != l.type) continue;
            const int i_file = gbes.list.sprm.find(i_lib[u], "file");
            dp.gbe_table[u] = static_cast<int>(dp.table.size());
            dp.table.push_back(read_table(l, i_file < 0 ? "none" : sprm.row(static_cast<int>(u))[i_file]));
        }
}
