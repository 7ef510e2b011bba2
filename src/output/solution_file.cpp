#include "output/solution_file.h"

#include "output/row_writers.h"
#include "run/text_file.h"

namespace {
std::size_t at(int i) { return static_cast<std::size_t>(i); }

// One section: a title, and the values under it. A family without units of its own kind yet has none.
struct section {
    std::string_view title;
    std::vector<double> ebeu_class::*ebeu;  // null: no values
};
constexpr section sections[] = {
    {"ebeu->val_nd:", &ebeu_class::val_nd},
    {"ebeu->cur_nd:", &ebeu_class::cur_nd},
    {"ebeu->aux1d:", &ebeu_class::aux},
    {"ebeu->auxs1d:", &ebeu_class::auxs},
    {"ebeu->locv1d:", &ebeu_class::locv},
    {"gbeu->val_vr:", nullptr},
    {"gbeu->aux1d:", nullptr},
    {"xbeu->val_vr:", nullptr},
    {"xbeu->val_aux1d:", nullptr},
    {"xbeu->val_bev1d:", nullptr},
    {"xbeu->val_cur1d:", nullptr},
    {"dbeu->val_nd:", nullptr},
    {"dbeu->state:", nullptr},
    {"dbeu->stable:", nullptr},
    {"dbeu->tschdl_rel:", nullptr},
};

// The words of a file, one after the other, whatever lines they stand on.
struct word_stream {
    text_file file;
    words w;
    int i = 0;

    std::string next() {
        while (i >= w.size()) {
            if (file.at_end())
                halt({line("cct_class::read_solution: file ", file.path, " ends early."),
                      "   It must come from the same circuit. Halting..."});
            w = parse_line_2(file.lines[file.at++]);
            i = 0;
        }
        return w.str(i++);
    }
};

}  // namespace

void write_solution(solve_class& slv, const circuit& c, const flags_class&) {
    count_line(slv, slv.i_file_solution, "write_solution");
    row_file& out = *slv.files[at(slv.i_file_solution)].stream;
    for (const section& s : sections) {
        out.put_text(s.title);
        out.end_row();
        if (s.ebeu == nullptr) continue;
        for (double x : c.ebeu.*s.ebeu) out.put(x, '\n');
    }
}

void read_solution(const solve_class& slv, circuit& c, const flags_class&) {
    word_stream in{open_text_file(slv.init_sol_path, "cct_class::read_solution"), {}, 0};
    for (const section& s : sections) {
        in.next();
        if (s.ebeu == nullptr) continue;
        for (double& x : c.ebeu.*s.ebeu) x = chr_to_double_4(in.next());
    }
}
