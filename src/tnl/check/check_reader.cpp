// The simulator's own readers over a deck, gone on with behind each stop.
#include <algorithm>
#include <iostream>
#include <streambuf>

#include "base/halt.h"
#include "elaborate/read_circuit.h"
#include "settings/postproc_plan.h"
#include "tnl/check/check_deck.h"
#include "tnl/check/check_stops.h"

namespace cli {

namespace {

// The readers speak on standard output, which is the report's.
class silence {
public:
    silence() : old_(std::cout.rdbuf(&nothing_)) {}
    ~silence() { std::cout.rdbuf(old_); }
    silence(const silence&) = delete;
    silence& operator=(const silence&) = delete;

private:
    struct sink : std::streambuf {
        int_type overflow(int_type c) override { return traits_type::not_eof(c); }
        std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
    };
    sink nothing_;
    std::streambuf* old_;
};

// The parts of the libraries that the deck needs, as a run folder would hold them.
library_source parts_of(const installed_libraries& libraries, const deck_needs& needs) {
    return [&](const std::string& path, const std::string&) {
        const int i = find_library(&library_form::file, std::string_view(path).substr(path.rfind('/') + 1));
        std::string text;
        for (const int e : needs.entries[i]) text += libraries.library[i].entries[static_cast<std::size_t>(e)].text;
        return text_file_of(text);
    };
}

// The sections as the simulator would have them, had each its end.
circuit_file file_of_sections(const checked_deck& d) {
    const deck_sections& s = d.sections;
    circuit_file cf;
    cf.text = d.text();
    cf.n_end_cf = s.end;
    cf.used.assign(static_cast<std::size_t>(d.text().n_lines()) + 1, 0);
    cf.n_begin_cct = s.circuit.begin > 0 ? s.circuit.begin - 1 : std::max(0, s.end - 1);
    cf.n_end_cct = std::max(s.circuit.end, cf.n_begin_cct);
    for (const solve_section& block : s.solves) {
        cf.n_begin_solve.push_back(block.range.begin - 1);
        cf.n_end_solve.push_back(block.range.end);
        ++cf.n_solve;
    }
    return cf;
}

// All stops of f: those of statements, and the one that it ended with.
template <class F>
std::vector<kept_stop> stops_of(F f) {
    const silence quiet;
    kept_stops kept;
    try {
        f(kept);
    } catch (const stop& s) {
        kept.list.push_back({-1, 0, s.what()});
    } catch (const std::exception& e) {  // of memory
        kept.list.push_back({-1, 0, e.what()});
    }
    return std::move(kept.list);
}

// What the simulator finds of files of results when it has solved the block, but without the rows.
void plan_results(const circuit& c, const solve_class& slv) {
    for (int i = 0; i < static_cast<int>(slv.out.files.size()); ++i) {
        const out_file& file = slv.out.files[static_cast<std::size_t>(i)];
        const int kind = file.postproc ? ov_postproc : ov_postproc_ac;
        const auto fits = [&](const out_var& v) { return v.kind == kind; };
        if (!file.postproc && !file.postproc_ac) continue;
        if (!std::all_of(file.vars.begin(), file.vars.end(), fits)) continue;  // refused by the reader
        reading(file.statement, [&] {
            for (const postproc_plan::result& r : plan_postproc(slv, c, i).results)
                type_of_result(c, r, file.postproc_ac);
        });
    }
}

}  // namespace

std::optional<std::string> stop_of_libraries(const installed_libraries& libraries, const deck_needs& needs) {
    const std::vector<kept_stop> stops = stops_of([&](kept_stops&) {
        struct libraries lib;
        read_libraries(lib, parts_of(libraries, needs));
    });
    if (stops.empty()) return {};
    return stops.front().text;
}

void read_circuit_of(checked_deck& d) {
    if (d.text().n_lines() == 0) return;
    const deck_needs needs = needs_of(d.report.deck, d.types.libraries(), d.sections.circuit);
    circuit& c = d.c;
    c.tmpdim = generous_tmpdim();
    c.cf = file_of_sections(d);
    const std::optional<std::string> unsound = stop_of_libraries(d.types.libraries(), needs);
    d.stops = stops_of([&](kept_stops& kept) {
        if (!unsound) read_libraries(c.lib, parts_of(d.types.libraries(), needs));
        read_output_and_grounds(c.cf);
        read_circuit(c);
        bind_statements(c);
        if (!kept.list.empty() || unsound) return;
        build_units(c);
        classify(c);
        check_linear(c);
        check_one_time(c);
        d.is_built = true;
    });
    if (unsound) d.stops = {{-1, 0, *unsound}};
    for (name_table* names : {&c.cct.ect, &c.cct.gct, &c.cct.dct, &c.cct.xct})
        names->to_eu.resize(static_cast<std::size_t>(names->n()), -1);
}

std::vector<kept_stop> read_solve_of(checked_deck& d, int block, solve_class& slv, flags_class& flags) {
    return stops_of([&](kept_stops&) {
        method_default(slv, d.c, flags);
        set_values(slv, block, d.c, flags);
        if (d.is_built && (slv.dc || slv.startup || slv.trns))
            reading(d.c.cf.n_begin_solve[static_cast<std::size_t>(block)], [&] { define_method_type(slv, d.c.cct); });
        if (d.is_built) plan_results(d.c, slv);
    });
}

}  // namespace cli
