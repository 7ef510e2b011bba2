#include "sparse_cases.h"

#include <cmath>
#include <fstream>
#include <iostream>
#include <random>
#include <sstream>

#include "analyses/evaluate.h"
#include "analyses/newton.h"
#include "analyses/run_state.h"
#include "analyses/solution_vector.h"
#include "circuit_from_text.h"
#include "run/driver.h"
#include "sparse/pattern.h"

namespace {

using std::size_t;

bench_case case_of(const knuth<double>& m, const std::vector<double>& val) {
    bench_case c;
    c.m = m;
    std::mt19937 rng(1);
    c.rhs.resize(static_cast<size_t>(m.n_row));
    for (double& x : c.rhs) x = std::uniform_real_distribution<double>(-1, 1)(rng);
    c.val[0] = c.val[1] = val;
    for (size_t k = 0; k < val.size(); ++k)  // time steps and devices change the diagonal
        if (c.m.row[k] == c.m.col[k]) c.val[1][k] *= 1.25;
    for (int s = 0; s < 2; ++s) {
        c.m.val = c.val[s];
        knuth_to_col_compressed(c.m, c.cc_cn, c.cc_row, c.cc_val[s], false);
    }
    return c;
}

class stamper {
public:
    explicit stamper(int n) : n_(n), rng_(static_cast<unsigned>(n)) {}
    void entry(int i, int j, double x) {
        if (i < 0 || j < 0) return;
        const size_t slot = static_cast<size_t>(pattern_.add(i, j));
        if (slot == val_.size()) val_.push_back(0);
        val_[slot] += x;
    }
    // A branch between two nodes, -1 being the reference.
    void conductance(int i, int j) {
        const double g = std::pow(10.0, std::uniform_real_distribution<double>(-4, 0)(rng_));
        entry(i, i, g);
        entry(j, j, g);
        entry(i, j, -g);
        entry(j, i, -g);
    }
    // A source from node i to node j, with the unknown k for its current.
    void source(int i, int j, int k) {
        for (const auto& [node, x] : {std::pair{i, 1.0}, std::pair{j, -1.0}}) {
            entry(node, k, x);
            entry(k, node, x);
        }
    }
    int pick(int n) { return static_cast<int>(rng_() % static_cast<unsigned>(n)); }
    bench_case finish() { return case_of(pattern_.finish<double>(n_, n_), val_); }

private:
    int n_;
    std::mt19937 rng_;
    pattern_builder pattern_;
    std::vector<double> val_;
};

// A source at one end, a series branch and a shunt at each node.
bench_case ladder(int n) {
    stamper s(n);
    s.source(0, -1, n - 1);
    for (int i = 0; i < n - 1; ++i) {
        s.conductance(i, -1);
        if (i > 0) s.conductance(i - 1, i);
    }
    return s.finish();
}

bench_case grid(int n) {
    const int side = static_cast<int>(std::lround(std::sqrt(n)));
    stamper s(side * side);
    for (int i = 0; i < side; ++i)
        for (int j = 0; j < side; ++j) {
            const int p = i * side + j;
            s.conductance(p, -1);
            if (j > 0) s.conductance(p - 1, p);
            if (i > 0) s.conductance(p - side, p);
        }
    return s.finish();
}

// Branches between near nodes, a few far ones, two hubs that every twentieth node meets, one source in ten unknowns.
bench_case random_circuit(int n) {
    stamper s(n);
    const int n_source = n / 10, n_node = n - n_source;
    for (int i = 0; i < n_node; ++i) {
        s.conductance(i, -1);
        if (i > 0) s.conductance(i, i - 1 - s.pick(std::min(i, 4)));
        if (i > 20 && s.pick(3) == 0) s.conductance(i, i - 5 - s.pick(15));
        if (i > 0 && s.pick(40) == 0) s.conductance(i, s.pick(i));
        if (i > 1 && s.pick(20) == 0) s.conductance(i, s.pick(2));
    }
    for (int k = 0; k < n_source; ++k) s.source(9 * k, k % 3 ? -1 : 9 * k + 3, n_node + k);
    return s.finish();
}

// Six branches at a node between any two nodes: the active part is soon full.
bench_case mesh(int n) {
    stamper s(n);
    for (int i = 0; i < n; ++i) {
        s.conductance(i, -1);
        if (i > 0) s.conductance(i - 1, i);
    }
    for (int b = 0; b < 2 * n; ++b) {
        const int i = s.pick(n), j = s.pick(n);
        if (i != j) s.conductance(i, j);
    }
    return s.finish();
}

// Any values everywhere, somewhat larger ones on the diagonal.
bench_case full(int n) {
    stamper s(n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) s.entry(i, j, (s.pick(2001) - 1000) / 1000.0 + (i == j ? 3 : 0));
    return s.finish();
}

}  // namespace

const std::vector<case_family> families = {
    {"ladder", ladder, {10, 30, 100, 300, 1000, 3000, 10000}},
    {"circuit", random_circuit, {10, 30, 100, 300, 1000, 3000, 10000}},
    {"grid", grid, {9, 25, 100, 289, 1024, 1600, 4900, 10000}},
    {"mesh", mesh, {100, 300, 1000}},
    {"full", full, {30, 73, 300}},
};

const std::vector<std::string> deck_names = {"divider",       "wheatstone",         "diode_bridge",
                                             "models",        "controlled_sources", "set_parm_and_globals",
                                             "gmin_stepping", "chain_1000"};

bench_case deck_case(const std::string& name) {
    std::ifstream file(TARNEL_DECKS "/" + name + "/deck.in");
    std::stringstream text;
    text << file.rdbuf();
    std::streambuf* console = std::cout.rdbuf(nullptr);  // the sizes that the set-up prints are no part of a table
    circuit c = circuit_of(text.str(), installed_libraries());
    run_state r(c);
    prepare_circuit(r);
    read_block(r, 0);
    define_offs_solvec(r.mat, c, analysis::dc);
    define_method_type(r.slv, c.cct);
    set_mat(r.mat, c, r.ebe.jac, r.gbe.jac);
    r.flags.init_flags();
    dcmp_solvec(r);
    form_jac_rhs(r, false);
    std::cout.rdbuf(console);
    std::cout.clear();
    return case_of(r.mat.m, r.mat.val_m);
}
