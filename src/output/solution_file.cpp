#include "output/solution_file.h"

#include <variant>

#include "base/at.h"
#include "base/text_file.h"
#include "output/row_writers.h"

namespace {
using ebeu_list = std::vector<double> ebeu_class::*;
using gbeu_list = std::vector<double> gbeu_class::*;
using xbeu_list = std::vector<double> xbeu_class::*;
using dbeu_list = std::vector<int> dbeu_class::*;
// Times of events stand relative to the end of the run, so that another run can begin with them.
struct event_times {};

// One section: a title, and the values under it.
struct section {
    std::string_view title;
    std::variant<ebeu_list, gbeu_list, xbeu_list, dbeu_list, event_times> member;
};
constexpr section sections[] = {
    {"ebeu->val_nd:", &ebeu_class::val_nd}, {"ebeu->cur_nd:", &ebeu_class::cur_nd},
    {"ebeu->aux1d:", &ebeu_class::aux},     {"ebeu->auxs1d:", &ebeu_class::auxs},
    {"ebeu->locv1d:", &ebeu_class::locv},   {"gbeu->val_vr:", &gbeu_class::val_vr},
    {"gbeu->aux1d:", &gbeu_class::aux},     {"xbeu->val_vr:", &xbeu_class::val_vr},
    {"xbeu->val_aux1d:", &xbeu_class::aux}, {"xbeu->val_bev1d:", &xbeu_class::bev},
    {"xbeu->val_cur1d:", &xbeu_class::cur}, {"dbeu->val_nd:", &dbeu_class::dvar},
    {"dbeu->state:", &dbeu_class::dstate},  {"dbeu->stable:", &dbeu_class::stbl},
    {"dbeu->tschdl_rel:", event_times{}},
};

// The values of a section; null: none.
template <class C>
auto values(C& c, const section& s) {
    decltype(&c.ebeu.val_nd) list = nullptr;
    if (const auto* e = std::get_if<ebeu_list>(&s.member)) list = &(c.ebeu.**e);
    if (const auto* g = std::get_if<gbeu_list>(&s.member)) list = &(c.gbeu.**g);
    if (const auto* x = std::get_if<xbeu_list>(&s.member)) list = &(c.xbeu.**x);
    return list;
}

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

void write_solution(solve_class& slv, const circuit& c, const flags_class& flags) {
    count_line(slv, slv.out.i_file_solution, "write_solution");
    row_file& out = *slv.out.files[at(slv.out.i_file_solution)].stream;
    for (const section& s : sections) {
        out.put_text(s.title);
        out.end_row();
        if (const auto* list = values(c, s))
            for (double x : *list) out.put(x, '\n');
        if (const auto* d = std::get_if<dbeu_list>(&s.member))
            for (int x : c.dbeu.**d) {
                out.put_text(std::to_string(x));
                out.end_row();
            }
        if (std::holds_alternative<event_times>(s.member))
            for (double t : c.dbeu.t_next) out.put(t - flags.t_end, '\n');
    }
}

void read_solution(const solve_class& slv, circuit& c, const flags_class& flags) {
    word_stream in{open_text_file(slv.task.init_sol_path, "cct_class::read_solution"), {}, 0};
    for (const section& s : sections) {
        in.next();
        if (auto* list = values(c, s))
            for (double& x : *list) x = chr_to_double_4(in.next());
        if (const auto* d = std::get_if<dbeu_list>(&s.member))
            for (int& x : c.dbeu.**d) x = chr_to_int(in.next());
        if (std::holds_alternative<event_times>(s.member))
            for (double& t : c.dbeu.t_next) t = chr_to_double_4(in.next()) + flags.t_start;
    }
}

void write_solution_ac(solve_class& slv, const circuit& c, const flags_class&) {
    count_line(slv, slv.out.i_file_solution_ac, "write_solution_ac");
    row_file& out = *slv.out.files[at(slv.out.i_file_solution_ac)].stream;
    using section_ac = std::pair<std::string_view, const std::vector<std::complex<double>>&>;
    for (const auto& [title, list] :
         {section_ac{"ebau->val_nd:", c.ebau.val_nd}, section_ac{"ebau->aux1d:", c.ebau.aux},
          section_ac{"gbau->val_vr:", c.gbau.val_vr}, section_ac{"gbau->aux1d:", c.gbau.aux}}) {
        out.put_text(title);
        out.end_row();
        for (const std::complex<double>& z : list) {
            out.put(z.real());
            out.put(z.imag(), '\n');
        }
    }
}
