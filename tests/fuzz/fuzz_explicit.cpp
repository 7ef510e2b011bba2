#include <algorithm>
#include <fstream>
#include <sstream>

#include "base/at.h"
#include "library/composite/library_dumps.h"
#include "library_parts.h"
#include "run/driver.h"
#include "small_runs.h"
#include "targets.h"

namespace {
constexpr const char* data_file = "points.dat";

// What the blocks of a composite do with one of its main variables. known: an output that has its value at the
// beginning of a step.
enum class port { input, node, output, known };

std::vector<port> ports_of(const libraries& lib, int e) {
    const library_lists& list = lib.xbes.list;
    std::vector<port> ports(at(lib.xels.list.xvr.count(e)), port::input);
    for (int k = lib.xels.be.first_be[at(e)]; k < lib.xels.be.first_be[at(e) + 1]; ++k) {
        const int s = lib.xels.be.i_be[at(k)], n_input = list.n_input[at(s)];
        const bool known = n_input == 0 || !lib.xbes.flag.evaluate[at(s)];
        for (int j = 0; j < lib.xels.be.xvr.size(k); ++j) {
            const auto v = at(lib.xels.be.xvr.row(k)[j]);
            if (v >= ports.size()) continue;  // internal
            if (j >= n_input)
                ports[v] = known ? port::known : port::output;
            else if (j < list.cct.count(s) && ports[v] == port::input)
                ports[v] = port::node;
        }
    }
    return ports;
}

// Instances of some composites. Each output has a variable of its own; inputs take known outputs in turn, but the first
// one the last output of the instance before, so that rows of blocks stay short; nodes of networks go round.
struct diagram {
    static constexpr int longest_row = 4, n_nodes = 3;
    std::ostringstream text;
    std::vector<std::string> known, outvars;
    std::string first_output;
    bool integrates = false, has_network = false, has_general = false;

    diagram(const libraries& lib, const std::vector<int>& entries, bool ac) {
        std::vector<std::vector<port>> ports;
        int n = 0;
        for (const int e : entries) {
            ports.push_back(ports_of(lib, e));
            note_blocks(lib, e);
            for (const port p : ports.back()) {
                const std::string name = "v" + std::to_string(n++);
                if (p == port::known) known.push_back(name);
                if (first_output.empty() && (p == port::known || p == port::output)) first_output = name;
            }
        }
        if (known.empty()) known.push_back(first_output.empty() ? "u" : first_output);
        n = 0;
        for (std::size_t i = 0; i < entries.size(); ++i) add_instance(lib, entries[i], ports[i], n, ac);
    }

private:
    std::string last_;  // output of the instance before
    std::size_t n_taken_ = 0;
    int row_ = 0, n_node_ = 0;

    void note_blocks(const libraries& lib, int e) {
        for (int k = lib.xels.be.first_be[at(e)]; k < lib.xels.be.first_be[at(e) + 1]; ++k) {
            const int s = lib.xels.be.i_be[at(k)];
            integrates |= lib.xbes.flag.integrate[at(s)] && !lib.xbes.flag.evaluate[at(s)];
            has_network |= lib.xbes.list.cct.count(s) > 0;
        }
        has_general |= lib.xels.list.vr.count(e) > 0;
    }

    std::string input() {
        if (last_.empty()) return known[n_taken_++ % known.size()];
        std::string name;
        name.swap(last_);
        return name;
    }

    void add_instance(const libraries& lib, int e, const std::vector<port>& ports, int& n, bool ac) {
        const library_lists& list = lib.xels.list;
        text << "xelement name=x" << e << " type=" << list.entry[e];
        if (row_++ % longest_row == 0) last_.clear();
        std::string own;
        for (std::size_t j = 0; j < ports.size(); ++j) {
            const std::string name = "v" + std::to_string(n++);
            text << ' ' << list.xvr.word(e, static_cast<int>(j)) << '=';
            if (ports[j] == port::input)
                text << input();
            else if (ports[j] == port::node)
                text << n_node_++ % n_nodes;
            else
                text << (own = name);
        }
        last_ = own;
        for (int j = 0; j < list.vr.count(e); ++j) text << ' ' << list.vr.word(e, j) << "=g";
        for (int j = 0; j < list.sprm.count(e); ++j) text << ' ' << list.sprm.word(e, j) << '=' << data_file;
        text << '\n';
        const output_table& ov = ac ? lib.xels.ovac : lib.xels.ov;
        for (int j = 0; j < ov.count(e); ++j) {
            outvars.push_back("o" + std::to_string(outvars.size()));
            text << "outvar: " << outvars.back() << '=' << ov.name.word(e, j) << "_of_x" << e << '\n';
        }
    }
};

std::string output_of(const diagram& d, const char* file, const char* before_name) {
    if (d.outvars.empty()) return {};
    std::string text = std::string("begin_output\nfilename ") + file + "\nvariables:";
    for (const std::string& name : d.outvars) text += std::string(" ") + before_name + name;
    return text + "\nend_output\n";
}

// Each block after the one before, the blocks one after another, or solved together.
std::string deck_of_transients(const libraries& lib) {
    std::vector<int> all;
    for (int e = 0; e < lib.xels.n(); ++e) all.push_back(e);
    const diagram d(lib, all, false);
    std::ostringstream deck;
    deck << "title: each one\nbegin_circuit\n";
    if (d.has_network) deck << "x_refnode 0\n";
    if (d.has_general)
        deck << "refnode 0\neelement name=R1 type=r p=a n=0\ngelement name=G type=xtog x=" << d.known[0] << " y=g\n";
    deck << d.text.str() << "end_circuit\n";
    const char* rule = d.integrates ? "RK4=yes" : "forward_euler=yes";
    std::vector<std::string> methods = {rule, std::string(rule) + " x_eval_serial=no"};
    if (d.has_network) methods = {rule};
    if (d.integrates && !d.has_general) methods.insert(methods.begin(), "RKF45=yes rkf45_tolr=1m delt_max_x=0.2m");
    for (const std::string& method : methods)
        deck << "begin_solve\nsolve_type trns\ninitial_sol initialize\nmethod: t_start=0 t_end=4m delt_const_x=0.1m "
             << (d.has_general ? "back_euler=yes delt_const=20u delt_max=20u " : "") << method << '\n'
             << output_of(d, "out.dat", "") << "end_solve\n";
    deck << "end_cf\n";
    return deck.str();
}

std::string deck_of_small_signals(const libraries& lib, const std::vector<int>& entries) {
    const diagram d(lib, entries, true);
    return "title: small signals\nbegin_circuit\n" + d.text.str() +
           "end_circuit\nbegin_solve\nsolve_type ac\nvary_freq from 1 to 1k type log n_points 4\n" +
           output_of(d, "ac.dat", "mag_of_") + "end_solve\nend_cf\n";
}

// Blocks that keep samples take room for as many as their parameters say.
void refuse_long_pasts(const libraries& lib) {
    constexpr int most = 10000;
    const element_table& be = lib.xels.be;
    for (int k = 0; k < be.first_be.back(); ++k)
        for (const char* word : {"n_delay", "n_smp"})
            if (const int j = lib.xbes.list.iprm.find(be.i_be[at(k)], word); j >= 0 && be.iprm.row(k)[j] > most)
                halt({"fuzz_explicit: many samples. Halting..."});
}

void run_deck(const std::string& deck, const libraries& lib) {
    circuit c = circuit_of(deck, lib);
    run_state r(c);
    prepare_circuit(r);
    for (int i = 0; i < c.xelu.n; ++i) instance_changed(c, fam_x, i);
    for (int index = 0; index < c.cf.n_solve; ++index) {
        read_block(r, index);
        if (!keep_short(r)) halt({"fuzz_explicit: a long run. Halting..."});
        run_block(r);
    }
}

void use_each_one(const libraries& lib) {
    refuse_paths(lib.xbes, lib.xels);
    refuse_long_pasts(lib);
    std::ofstream(data_file) << "0 1\n1m 2\n";
    run_deck(deck_of_transients(lib), lib);
    std::vector<int> entries;
    for (int e = 0; e < lib.xels.n(); ++e)
        if (lib.xels.flag.allow_ac[at(e)]) entries.push_back(e);
    if (!entries.empty()) run_deck(deck_of_small_signals(lib, entries), lib);
}

void read_all(std::string_view text, libraries& lib) {
    const auto part = cut_parts(text);
    read_elements(part[0], xbes_form, installed_libraries().xbes, lib.xbes);
    read_elements(part[1], xbac_form, installed_libraries().xbac, lib.xbac);
    read_composites_of(part[2], xels_form, lib.xbes, lib.xbac, lib.xels);
}
}  // namespace

// True only if the composites can also be used.
bool fuzz_explicit(std::string_view text) {
    const libraries& installed = installed_libraries();
    libraries lib;
    lib.ebes = installed.ebes;
    lib.ebac = installed.ebac;
    lib.eels = installed.eels;
    lib.gbes = installed.gbes;
    lib.gbac = installed.gbac;
    lib.gels = installed.gels;
    if (!runs_through([&] { read_all(text, lib); })) return false;
    runs_through([&] {
        write_basic_dump("xbes", lib.xbes);
        write_composite_dump("xels", lib.xels);
    });
    const bool done = runs_through([&] { use_each_one(lib); });
    empty_scratch_folder();
    return done;
}
