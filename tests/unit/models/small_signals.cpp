// Small-signal forms against the large-signal forms that they stand for, composite by composite, at random parameters,
// bias points and frequencies. Both are linear relations between small motions of nodes, currents and variables: those
// of the large-signal form by differences, d_dt() as i freq. A form may use other rows and fewer unknowns, so what must
// be the same are the motions that the rows allow, and the currents of the terminals in them.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <random>
#include <set>

#include "block_unit.h"
#include "deck/ov_class.h"
#include "halt_throws.h"
#include "library/composite/composite_reader.h"
#include "models/composite_functions.h"

// The generated dispatch: by the number in the library, and through the list of names.
#define DECLARE_EBE_AC(routine)                                                                                  \
    void routine(const int i, const int i_ebau, int* iparm, char** sparm, double freq, double* rparm,            \
                 std::complex<double>* v, std::complex<double>* vind, std::complex<double>* curind,              \
                 std::complex<double>* aux, std::complex<double>* vr, std::complex<double>* f, ebac1_class* jac, \
                 ebes1_class* ebe_jac, flags_class* flags, dp_class* dp, math_cnst_class* math_cnst)
DECLARE_EBE_AC(get_ebe_ac_by_number);
DECLARE_EBE_AC(get_ebe_ac_by_list);
#define DECLARE_GBE_AC(routine)                                                                                  \
    void routine(const int i, const int i_gbau, int* iparm, char** sparm, double freq, double* rparm,            \
                 std::complex<double>* vr, std::complex<double>* aux, std::complex<double>* f, gbac1_class* jac, \
                 flags_class* flags, dp_class* dp, math_cnst_class* math_cnst)
DECLARE_GBE_AC(get_gbe_ac_by_number);
DECLARE_GBE_AC(get_gbe_ac_by_list);

namespace {

using number = std::complex<double>;

// A linear form of small motions, by the names of what moves.
using terms = std::map<std::string, number>;

struct relation {
    std::map<std::string, terms> current;  // into the element at each node of the composite
    std::vector<terms> own;                // rows that are 0
    std::set<std::string> unknowns;
};

void add(terms& sum, const terms& more, number factor) {
    for (const auto& [name, c] : more) sum[name] += factor * c;
}
number value(const terms& form, const terms& at) {
    number sum = 0;
    for (const auto& [name, c] : form) sum += c * at.at(name);
    return sum;
}
double size(const terms& form, const terms& at) {
    double sum = 0;
    for (const auto& [name, c] : form) sum += std::abs(c * at.at(name));
    return sum;
}

// All motions that the own rows allow: a random one, and how many there are.
struct motions {
    terms one;
    std::size_t n_free = 0;
};
motions allowed(const relation& r, std::mt19937& rng) {
    std::vector<terms> rows = r.own;
    std::set<std::string> left = r.unknowns;
    std::vector<std::pair<std::string, terms>> solved;  // the unknown by which a row is solved, the row
    for (terms& row : rows) {                           // each as large as the others
        double largest = 0;
        for (const auto& [name, c] : row) largest = std::max(largest, std::abs(c));
        for (auto& [name, c] : row) c /= largest > 0 ? largest : 1;
    }
    while (true) {
        double largest = 1e-9;
        terms* pivot_row = nullptr;
        std::string pivot;
        for (terms& row : rows)
            for (const auto& [name, c] : row)
                if (left.contains(name) && std::abs(c) > largest) {
                    largest = std::abs(c);
                    pivot_row = &row;
                    pivot = name;
                }
        if (!pivot_row) break;
        terms p = *pivot_row;
        pivot_row->clear();
        for (terms& row : rows)
            if (row.contains(pivot)) {
                add(row, p, -row[pivot] / p[pivot]);
                row.erase(pivot);
            }
        left.erase(pivot);
        solved.emplace_back(pivot, p);
    }
    std::uniform_real_distribution<double> random(-1, 1);
    motions m;
    m.n_free = left.size();
    for (const std::string& name : left) m.one[name] = {random(rng), random(rng)};
    for (auto s = solved.rbegin(); s != solved.rend(); ++s) {
        number sum = 0;
        for (const auto& [name, c] : s->second)
            if (name != s->first) sum += c * m.one.at(name);
        m.one[s->first] = -sum / s->second.at(s->first);
    }
    return m;
}

// What one array of a unit stands for.
template <class T>
struct moving {
    std::vector<T>* x;
    std::vector<std::string> name;
};

// Where the words of an element of a composite lead to.
std::vector<std::string> names_of_row(const char* before, const row_table<int>& row, int at) {
    std::vector<std::string> names;
    if (at < row.n_rows())
        for (int j = 0; j < row.size(at); ++j) names.push_back(before + std::to_string(row.row(at)[j]));
    return names;
}
std::vector<std::string> names_of_sensed(const char* before, const row_table<int>& row, const row_table<int>& flag,
                                         int at, const word_list& words, int c) {
    std::vector<std::string> names;
    for (int j = 0; j < row.size(at); ++j)
        names.push_back(flag.row(at)[j] < 0 ? "node " + std::to_string(row.row(at)[j])
                                            : before + std::string(words.word(c, flag.row(at)[j])));
    return names;
}
std::vector<std::string> names_of_words(const char* before, const word_list& words, int e) {
    std::vector<std::string> names;
    for (int j = 0; j < words.count(e); ++j) names.push_back(before + std::string(words.word(e, j)));
    return names;
}

// Element k of composite c, and its small-signal form: both halves have the same order.
struct one_composite {
    const composite_library& lib;
    int c, k = 0;
    std::string name() const { return lib.list.entry.str(c); }
    int row() const { return lib.be.first_be[static_cast<std::size_t>(c)] + k; }
    int row_ac() const { return lib.beac.first_be[static_cast<std::size_t>(c)] + k; }
};

template <class T>
void take_parameters(const row_table<T>& fixed, const row_table<int>& link, int row, const std::vector<T>& own,
                     std::vector<T>& to) {
    for (int j = 0; j < fixed.size(row); ++j)
        to[static_cast<std::size_t>(j)] =
            link.row(row)[j] < 0 ? fixed.row(row)[j] : own[static_cast<std::size_t>(link.row(row)[j])];
}

std::vector<moving<double>> moving_of(model_unit& u, const one_composite& o) {
    const int r = o.row();
    const element_table& be = o.lib.be;
    return {{&u.x.v, names_of_row("node ", be.node, r)},
            {&u.x.vind, names_of_sensed("in ", be.in, be.in_flag, r, o.lib.list.ind_node, o.c)},
            {&u.x.curind, names_of_sensed("branch ", be.ib, be.ib_flag, r, o.lib.list.ind_branch, o.c)},
            {&u.x.vr, names_of_row("variable ", be.vr, r)},
            {&u.x.aux, names_of_words("unknown ", u.lib.list.aux, u.e)}};
}
std::vector<moving<double>> moving_of(block_unit& u, const one_composite& o) {
    return {{&u.x.vr, names_of_row("variable ", o.lib.be.vr, o.row())},
            {&u.x.aux, names_of_words("unknown ", u.lib.list.aux, u.e)}};
}
std::vector<moving<number>> moving_of(ac_unit& u, const one_composite& o) {
    const int r = o.row_ac();
    const element_table& be = o.lib.beac;
    return {{&u.v, names_of_row("node ", be.node, r)},
            {&u.vind, names_of_sensed("in ", be.in, be.in_flag, r, o.lib.inac, o.c)},
            {&u.curind, names_of_sensed("branch ", be.ib, be.ib_flag, r, o.lib.ibac, o.c)},
            {&u.vr, names_of_row("variable ", be.vr, r)},
            {&u.aux, names_of_words("unknown ", u.lib.list.aux, u.e)}};
}
std::vector<moving<number>> moving_of(ac_block& u, const one_composite& o) {
    return {{&u.vr, names_of_row("variable ", o.lib.beac.vr, o.row_ac())},
            {&u.aux, names_of_words("unknown ", u.lib.list.aux, u.e)}};
}

// At the bias point as the solver of small signals asks for it.
template <class U, class... F>
void call_at_bias(U& u, F... what) {
    u.call(&flags_class::dc, &flags_class::ac, what...);
}

// df/dx of every function by differences of fourth order.
template <class U>
std::vector<terms> differences(U& u, const one_composite& o) {
    // Formulas of user functions are polynomials, some in single precision; filter_hp2 is a straight line whose terms
    // leave little of each other at low frequency.
    const bool wide = o.name().starts_with("user_function") || o.name() == "filter_hp2";
    const double h = wide ? 1.0 : 1e-5;
    std::vector<terms> slope(static_cast<std::size_t>(u.jac.n_f));
    for (const moving<double>& m : moving_of(u, o))
        for (std::size_t k = 0; k < m.name.size(); ++k) {
            const auto f_at = [&](double dx) {
                const double kept = (*m.x)[k];
                (*m.x)[k] += dx;
                call_at_bias(u, &flags_class::function);
                (*m.x)[k] = kept;
                return u.x.f;
            };
            const std::vector<double> f2 = f_at(2 * h), f1 = f_at(h), b1 = f_at(-h), b2 = f_at(-2 * h);
            for (std::size_t j = 0; j < slope.size(); ++j)
                slope[j][m.name[k]] += (8 * (f1[j] - b1[j]) - (f2[j] - b2[j])) / (12 * h);
        }
    return slope;
}

template <class U>
relation relation_of(U& u, const one_composite& o, double freq) {
    const std::vector<terms> slope = differences(u, o);
    const function_table& t = u.lib.func;
    const int first = t.first_f[static_cast<std::size_t>(u.e)];
    relation r;
    for (const moving<double>& m : moving_of(u, o)) r.unknowns.insert(m.name.begin(), m.name.end());
    for (std::size_t j = 0; j < slope.size(); ++j) {
        const auto k = static_cast<std::size_t>(first) + j;
        if (!t.flag_kcl[k] && !t.flag_gnrl[k]) continue;  // of start-up, or the value of a charge
        terms row = slope[j];
        if (t.flag_kcl[k]) {
            if (t.kcl_locvar_func[k] >= 0)
                add(row, slope[static_cast<std::size_t>(t.kcl_locvar_func[k])], number(0, freq));
            const std::string node = "node " + std::to_string(o.lib.be.node.row(o.row())[j]);
            add(r.current[node], row, 1);
            continue;
        }
        if (t.flag_ddt[k]) {
            const int kind = t.ddt_var_flag[k];
            const auto n = static_cast<std::size_t>(t.ddt_var_number[k]);
            const auto all = moving_of(u, o);
            const bool is_aux = kind == kind_aux || kind == kind_gaux;
            row[all[all.size() - (is_aux ? 1 : 2)].name[n]] -= number(0, freq);
        }
        r.own.push_back(row);
    }
    return r;
}

template <class A>
relation relation_of_ac(A& u, const one_composite& o, const std::vector<number**>& tables) {
    relation r;
    const auto all = moving_of(u, o);
    for (const moving<number>& m : all) r.unknowns.insert(m.name.begin(), m.name.end());
    const function_table& t = u.lib.func;
    const int first = t.first_f[static_cast<std::size_t>(u.e)];
    for (int j = 0; j < u.jac.n_f; ++j) {
        terms row;
        for (std::size_t g = 0; g < all.size(); ++g)
            for (std::size_t k = 0; k < all[g].name.size(); ++k) row[all[g].name[k]] += tables[g][j][k];
        if (t.flag_kcl[static_cast<std::size_t>(first + j)])
            add(r.current["node " + std::to_string(o.lib.beac.node.row(o.row_ac())[j])], row, 1);
        else
            r.own.push_back(row);
    }
    return r;
}
relation relation_of(ac_unit& u, const one_composite& o) {
    return relation_of_ac(u, o, {u.jac.dfdv, u.jac.dfdvind, u.jac.dfdcurind, u.jac.dfdvr, u.jac.dfdaux});
}
relation relation_of(ac_block& u, const one_composite& o) { return relation_of_ac(u, o, {u.jac.dfdvr, u.jac.dfdaux}); }

void give_bias(ac_unit& ac, model_unit& dc) { ac.ebe_jac = &dc.jac; }
void give_bias(ac_block& ac, block_unit& dc) { ac.jac.bias = &dc.jac; }

// A value that the parameter may have; what moves nothing by default, a charge or a coefficient, is there as well.
double random_parameter(const std::string& word, double dflt, bool of_mos, std::mt19937& rng) {
    std::uniform_real_distribution<double> by(0.9, 1.1), around(-0.5, 0.5);
    static const std::map<std::string, double> chosen = {
        {"cj0", 1e-12}, {"tt", 1e-9},   {"bv", 1.5},    {"ibv", 0},   {"a_ac", 0},    {"ph_ac", 0},
        {"cje", 1e-12}, {"cjc", 1e-12}, {"cjs", 1e-12}, {"tf", 1e-9}, {"tr", 1e-9},   {"xtf", 2},
        {"vtf", 3},     {"itf", 0.1},   {"ikf", 0.1},   {"ikr", 0.1}, {"ise", 1e-14}, {"isc", 1e-14},
        {"vaf", 50},    {"var", 10},    {"xtb", 1.5},   {"xpart", 0}};
    // Of a MOS transistor those that are 0 by default or not given.
    static const std::map<std::string, double> mos = {
        {"vt0", 0.7},  {"kp", 2e-5},    {"nsub", 1e16},  {"gamma", 0.5},  {"phi", 0.65},   {"as", 1e-10},
        {"ad", 1e-10}, {"cbd", 1e-12},  {"cbs", 1e-12},  {"cgbo", 1e-10}, {"cgdo", 1e-10}, {"cgso", 1e-10},
        {"cj", 1e-4},  {"cjsw", 1e-10}, {"lambda", .02}, {"ld", 1e-6},    {"pd", 1e-5},    {"ps", 1e-5},
        {"delta", 1},  {"eta", 0.05},   {"nfs", 1e11},   {"theta", 0.1},  {"vmax", 1e5},   {"xj", 3e-7},
        {"js", 1e-4},  {"kappa", 0.2},  {"rsh", 10},     {"nrd", 1},      {"nrs", 1},      {"rd", 1},
        {"rs", 1}};
    if (of_mos && (dflt == -1000 || dflt == 0))
        if (const auto c = mos.find(word); c != mos.end()) return c->second * by(rng);
    if (const auto c = chosen.find(word); c != chosen.end() && dflt == (word == "bv" ? 1e3 : 0.0))
        return c->second * by(rng);
    return dflt != 0 ? dflt * by(rng) : around(rng);
}

// A prepared unit of the composite's element with random parameters; own: those of the composite.
template <class U>
U random_unit(const one_composite& o, int trial, std::vector<double>& own, std::vector<int>& own_i, std::mt19937& rng) {
    const composite_library& lib = o.lib;
    for (int attempt = 0;; ++attempt) {
        own = default_values(lib.list.rprm, o.c);
        own_i = default_values(lib.list.iprm, o.c);
        for (std::size_t j = 0; j < own.size() && attempt < 100; ++j)
            own[j] = random_parameter(std::string(lib.list.rprm.word(o.c, static_cast<int>(j))), own[j],
                                      o.name().starts_with("mos_level"), rng);
        if (const int n = lib.list.iprm.find(o.c, "n_given"); n >= 0 && o.name().ends_with("_2_1"))
            own_i[static_cast<std::size_t>(n)] = 1 + trial % 2;
        const basic_library& basic = std::is_same_v<U, model_unit> ? installed_ebes() : installed_gbes();
        U u(basic.list.entry.str(lib.be.i_be[static_cast<std::size_t>(o.row())]));  // as a rule of the composite's name
        take_parameters(lib.be.rprm, lib.be.rprm_flag, o.row(), own, u.x.rparm);
        take_parameters(lib.be.iprm, lib.be.iprm_flag, o.row(), own_i, u.x.iparm);
        try {
            u.prepare();
        } catch (const halted&) {
            if (attempt >= 100) throw;
            continue;  // a combination that the element refuses
        }
        return u;
    }
}

// Accepts a random point, so that states are stored, and stands at another one.
template <class U>
void bring_to_bias(U& u, const one_composite& o, std::mt19937& rng) {
    std::uniform_real_distribution<double> anywhere(-2, 2);
    for (int i = 0; i < 2; ++i) {
        for (const moving<double>& m : moving_of(u, o))
            for (double& x : *m.x) x = anywhere(rng);
        if constexpr (std::is_same_v<U, block_unit>)
            if (o.name() == "fmod") u.vr("x2") = 1 + std::abs(u.vr("x2"));  // below 0 it is held
        if constexpr (std::is_same_v<U, model_unit>)
            for (int& x : u.x.dvar) x = static_cast<int>(rng() % 3);
        u.flags.time_given = 1e-3 * i;
        if (i == 0) u.call(&flags_class::save_history);
    }
}

// Real parameters of the composite as its small-signal units take them: its own function, if it has one, computes them
// from its outputs at the bias point.
template <class U>
std::vector<double> small_signal_parameters(const one_composite& o, U& dc, std::vector<int> own_i,
                                            std::vector<double> own) {
    const auto c = static_cast<std::size_t>(o.c);
    if (!o.lib.flag.compute_acp[c]) return own;
    dc.call(&flags_class::outvar_prm);
    std::vector<double> outvar, row = own;
    for (int j = 0; j < o.lib.ov.count(o.c); ++j) {
        const auto k = static_cast<std::size_t>(o.lib.ov.at(o.c, j));
        outvar.push_back(o.lib.ov.kind[k] == ov_rparm_ebe ? dc.x.rparm[static_cast<std::size_t>(o.lib.ov.index[k])]
                                                          : 0);
    }
    const composite_registration* function = find_composite_function("ece", o.name());
    EXPECT_NE(function, nullptr) << o.name();
    flags_class flags;
    flags.acparms = 1;
    if (function) function->function(own_i.data(), nullptr, own.data(), row.data(), outvar.data(), &flags, 0);
    return row;
}

// A; the last digit of a saturation current over the step of the differences.
constexpr double unresolved = 1e-22;

// Sources are quiet here.
template <class U, class A>
void expect_same_motions(const one_composite& o) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> decade(0, 7);
    const element_table& be = o.lib.beac;
    const std::string form = (std::is_same_v<A, ac_unit> ? installed_ebac() : installed_gbac())
                                 .list.entry.str(be.i_be[static_cast<std::size_t>(o.row_ac())]);
    for (int trial = 0; trial < 60; ++trial) {
        SCOPED_TRACE(line(o.name(), ", form ", form, ", trial ", trial));
        std::vector<double> own;
        std::vector<int> own_i;
        U dc = random_unit<U>(o, trial, own, own_i, rng);
        bring_to_bias(dc, o, rng);
        call_at_bias(dc, &flags_class::jacobian);
        const double freq = std::pow(10, decade(rng));

        A ac(form);
        take_parameters(be.rprm, be.rprm_flag, o.row_ac(), small_signal_parameters(o, dc, own_i, own), ac.rparm);
        take_parameters(be.iprm, be.iprm_flag, o.row_ac(), own_i, ac.iparm);
        if (be.acprm_be[static_cast<std::size_t>(o.row_ac())] >= 0) give_bias(ac, dc);
        ac.ac(freq);
        relation small = relation_of(ac, o);
        const relation large = relation_of(dc, o, freq);
        // A function that is a sum of others has their last digit, over the step of the differences.
        double largest = 0;
        for (const double f : dc.x.f) largest = std::max(largest, std::abs(f));
        const double last_digit = unresolved + 2.2e-16 * largest / 1e-5;

        for (const std::string& name : small.unknowns) ASSERT_TRUE(large.unknowns.contains(name)) << name;
        for (const std::string& name : large.unknowns)  // what the form leaves out from outside, it does not feel
            if (!name.starts_with("unknown ")) small.unknowns.insert(name);
        const motions of_large = allowed(large, rng);
        EXPECT_EQ(allowed(small, rng).n_free, of_large.n_free);

        // The functions of the form where the large-signal form allows the unit to be.
        const auto all = moving_of(ac, o);
        for (const moving<number>& m : all)
            for (std::size_t k = 0; k < m.name.size(); ++k) (*m.x)[k] = of_large.one.at(m.name[k]);
        ac.ac(freq);
        std::map<std::string, number> current;
        const function_table& t = ac.lib.func;
        const int first = t.first_f[static_cast<std::size_t>(ac.e)];
        std::size_t n_own = 0;
        for (int j = 0; j < ac.jac.n_f; ++j) {
            const number f = ac.f[static_cast<std::size_t>(j)];
            if (t.flag_kcl[static_cast<std::size_t>(first + j)])
                current["node " + std::to_string(be.node.row(o.row_ac())[j])] += f;
            else
                EXPECT_LE(std::abs(f), 1e-6 * size(small.own[n_own++], of_large.one) + last_digit) << "row " << j;
        }
        EXPECT_EQ(current.size(), large.current.size());
        for (const auto& [node, c] : large.current)
            EXPECT_LE(std::abs(current[node] - value(c, of_large.one)), 1e-6 * size(c, of_large.one) + last_digit)
                << node;
    }
}

// ---- the composites of this build
// -----------------------------------------------------------------------------------------

// Each composite in a library of its own: electrical ones do not fit into one.
std::vector<composite_library> composites_of(const char* file, const composite_form& form, const basic_library& basic,
                                             const basic_library& basic_ac) {
    std::vector<composite_library> all;
    std::ifstream in(std::string(TARNEL_SHARE) + '/' + file);
    text_file one;
    for (std::string l; std::getline(in, l);) {
        one.lines.push_back(l);
        if (!l.starts_with("endece") && !l.starts_with("endgce")) continue;
        composite_library lib;
        read_composites(one, form, basic, basic_ac, lib);
        all.push_back(std::move(lib));
        one = {};
    }
    return all;
}
const std::vector<composite_library>& electrical() {
    static const auto all = composites_of("eels.aux", eels_form, installed_ebes(), installed_ebac());
    return all;
}
// Without the composites of post-processing: their names are those of no block.
const std::vector<composite_library>& general() {
    static const auto all = [] {
        auto list = composites_of("gels.aux", gels_form, installed_gbes(), installed_gbac());
        std::erase_if(list, [](const composite_library& lib) {
            return lib.flag.postprocessor[0] || lib.flag.postprocessor_ac[0];
        });
        return list;
    }();
    return all;
}

// Its function computes what its small-signal elements take from the outputs of all together, which whole runs show.
bool computes_for_many(const composite_library& lib) { return lib.flag.compute_acp[0] && lib.be.n_be(0) > 1; }

std::string name_of(const composite_library& lib) { return lib.list.entry.str(0); }

// What is held to its formula elsewhere (block_filters_test.cpp, block_dynamics_test.cpp): blocks that put out what is
// made of their past, which a point does not show, and one whose terms cancel to their twelfth digit.
bool has_no_motions(const composite_library& lib) {
    return name_of(lib).starts_with("d_filter_") || name_of(lib) == "delay_2" || name_of(lib) == "zero_2_b";
}

TEST(small_signals, of_every_electrical_element_are_the_motions_of_its_large_signal_form) {
    for (const composite_library& lib : electrical())
        for (int k = 0; k < lib.beac.n_be(0) && !computes_for_many(lib); ++k)
            expect_same_motions<model_unit, ac_unit>({lib, 0, k});
}

TEST(small_signals, of_every_block_are_the_motions_of_its_large_signal_form) {
    for (const composite_library& lib : general())
        for (int k = 0; k < lib.beac.n_be(0) && !has_no_motions(lib); ++k)
            expect_same_motions<block_unit, ac_block>({lib, 0, k});
}

TEST(small_signals, are_there_for_every_element_that_allows_them_one_form_each) {
    for (const auto* all : {&electrical(), &general()})
        for (const composite_library& lib : *all) {
            const int n = lib.beac.n_be(0);
            EXPECT_EQ(n > 0, lib.flag.allow_ac[0] != 0) << name_of(lib);
            if (lib.flag.allow_ac[0]) {
                EXPECT_EQ(n, lib.be.n_be(0)) << name_of(lib);
            }
        }
}

TEST(small_signals, are_missing_only_where_an_output_has_none) {
    std::set<std::string> without;
    for (const auto* all : {&electrical(), &general()})
        for (const composite_library& lib : *all)
            if (!lib.flag.allow_ac[0]) without.insert(name_of(lib));
    // xtog reads a diagram beside its circuit, which an ac block refuses anyway.
    // The words of two functions of twelve inputs do not fit the tables of the small-signal library.
    // Machines of three phases have no bias point: at rest they turn.
    EXPECT_EQ(without, (std::set<std::string>{"average", "average_1", "average_mv", "bldc1", "delay_onestep", "indmc",
                                              "intgrtr_reset_1", "loss_meter", "peak_detector", "pmsm", "rms",
                                              "rms_3ph_1", "rms_mv", "sampler1", "syncmc_1", "user_function_12_1",
                                              "user_function_12_12", "xtog"}));
}

// calc_acp: the solver keeps the derivatives at the bias point of those whose form reads them.
TEST(small_signals, tell_the_solver_whose_derivatives_they_read) {
    const auto expect_flags = [](const std::vector<composite_library>& all, const basic_library& basic,
                                 const basic_library& basic_ac) {
        for (const composite_library& lib : all)
            for (int k = 0; k < lib.beac.n_be(0); ++k) {
                const auto at = static_cast<std::size_t>(k);
                const bool reads = basic_ac.list.iprm.find(lib.beac.i_be[at], "ac_parm_be") >= 0;
                EXPECT_EQ(lib.beac.acprm_be[at] >= 0, reads) << name_of(lib);
                EXPECT_EQ(basic.flag.calc_acp[static_cast<std::size_t>(lib.be.i_be[at])] != 0, reads) << name_of(lib);
            }
    };
    expect_flags(electrical(), installed_ebes(), installed_ebac());
    expect_flags(general(), installed_gbes(), installed_gbac());
}

// Whatever analysis the bias point comes from: there the element is what it would be in the next step of a transient.
template <class U>
void expect_transient_at_bias(const std::vector<composite_library>& all) {
    std::mt19937 rng(9);
    for (const composite_library& lib : all)
        for (int i = 0; i < 20 * lib.beac.n_be(0); ++i) {
            const int k = i / 20, trial = i % 20;
            const one_composite o{lib, 0, k};
            if (lib.beac.acprm_be[static_cast<std::size_t>(k)] < 0) continue;
            std::vector<double> own;
            std::vector<int> own_i;
            U u = random_unit<U>(o, trial, own, own_i, rng);
            bring_to_bias(u, o, rng);
            const auto before = u.x.rparm;
            call_at_bias(u, &flags_class::function, &flags_class::jacobian);
            EXPECT_EQ(u.x.rparm, before) << o.name();
            const auto f = u.x.f;
            const auto jac = u.jac.store;
            u.trns();
            EXPECT_EQ(u.x.f, f) << o.name();
            EXPECT_EQ(u.jac.store, jac) << o.name();
        }
}
TEST(small_signals, have_the_stored_state_of_switches_at_their_bias_point) {
    expect_transient_at_bias<model_unit>(electrical());
    expect_transient_at_bias<block_unit>(general());
}

// ---- the calls
// -------------------------------------------------------------------------------------------------------------

// Calls test(form, composite) for the form of each composite that has one, with the derivatives of its element at a
// bias point.
template <class U, class A, class F>
void for_each_form(const std::vector<composite_library>& all, const basic_library& basic_ac, F test) {
    std::mt19937 rng(11);
    for (const composite_library& lib : all)
        for (int k = 0; k < lib.beac.n_be(0) && !computes_for_many(lib); ++k) {
            const one_composite o{lib, 0, k};
            const auto at = static_cast<std::size_t>(k);
            SCOPED_TRACE(o.name());
            std::vector<double> own;
            std::vector<int> own_i;
            U dc = random_unit<U>(o, 0, own, own_i, rng);
            bring_to_bias(dc, o, rng);
            call_at_bias(dc, &flags_class::jacobian);
            A ac(basic_ac.list.entry.str(lib.beac.i_be[at]));
            take_parameters(lib.beac.rprm, lib.beac.rprm_flag, k, small_signal_parameters(o, dc, own_i, own), ac.rparm);
            if (lib.beac.acprm_be[at] >= 0) give_bias(ac, dc);
            std::uniform_real_distribution<double> random(-1, 1);
            for (const moving<number>& m : moving_of(ac, o))
                for (number& x : *m.x) x = {random(rng), random(rng)};
            for (number& x : ac.f) x = {random(rng), random(rng)};
            test(ac, o);
        }
}
template <class F>
void for_every_form(F test) {
    for_each_form<model_unit, ac_unit>(electrical(), installed_ebac(), test);
    for_each_form<block_unit, ac_block>(general(), installed_gbac(), test);
}

TEST(small_signal_calls, change_nothing_when_no_flag_is_on) {
    for_every_form([](auto& ac, const one_composite&) {
        const auto f = ac.f;
        const auto rparm = ac.rparm;
        std::fill(ac.jac.store.begin(), ac.jac.store.end(), 4.0);
        const auto jac = ac.jac.store;
        ac.call(100);
        EXPECT_EQ(ac.f, f);
        EXPECT_EQ(ac.rparm, rparm);
        EXPECT_EQ(ac.jac.store, jac);
    });
}

TEST(small_signal_calls, fill_functions_and_derivatives_each_only_when_asked) {
    for_every_form([](auto& ac, const one_composite&) {
        const auto f_before = ac.f;
        const auto jac_before = ac.jac.store;
        const auto call = [&](int function, int jacobian) {
            ac.flags.ac = 1;
            ac.flags.function = function;
            ac.flags.jacobian = jacobian;
            ac.call(1000);
            ac.flags.init_flags();
        };
        call(1, 0);
        EXPECT_EQ(ac.jac.store, jac_before);
        const auto f_alone = ac.f;
        ac.f = f_before;
        call(0, 1);
        EXPECT_EQ(ac.f, f_before);
        const auto jac_alone = ac.jac.store;
        ac.jac.store = jac_before;
        call(1, 1);
        EXPECT_EQ(ac.f, f_alone);
        EXPECT_EQ(ac.jac.store, jac_alone);
    });
}

// All forms are affine: f(x) - f(0) is the Jacobian times x.
TEST(small_signal_calls, give_functions_that_their_derivatives_describe_exactly) {
    for_every_form([](auto& ac, const one_composite& o) {
        ac.ac(1000);
        const auto f = ac.f;
        const relation r = relation_of(ac, o);
        terms at;
        for (const auto& m : moving_of(ac, o))
            for (std::size_t k = 0; k < m.name.size(); ++k) {
                at[m.name[k]] = (*m.x)[k];
                (*m.x)[k] = 0.0;
            }
        ac.ac(1000);
        const function_table& t = ac.lib.func;
        std::size_t n_own = 0;
        for (int j = 0; j < ac.jac.n_f; ++j) {
            const auto jj = static_cast<std::size_t>(j);
            const auto k = static_cast<std::size_t>(t.first_f[static_cast<std::size_t>(ac.e)] + j);
            const terms& row = t.flag_kcl[k]
                                   ? r.current.at("node " + std::to_string(o.lib.beac.node.row(o.row_ac())[j]))
                                   : r.own[n_own++];
            EXPECT_LE(std::abs(f[jj] - ac.f[jj] - value(row, at)), 1e-12 * (size(row, at) + std::abs(ac.f[jj])));
        }
    });
}

// The matrix has places for what the lines of the entry declare.
TEST(small_signal_calls, write_every_declared_derivative_and_no_other) {
    for_every_form([](auto& ac, const one_composite&) {
        const number untouched = 12345.5;
        std::fill(ac.jac.store.begin(), ac.jac.store.end(), untouched);
        ac.ac(1000);
        const bool electrical_form = ac.lib.map.entry[static_cast<std::size_t>(ac.e)].size() == 5;
        const std::vector<int> kinds = electrical_form
                                           ? std::vector<int>{kind_v, kind_vind, kind_curind, kind_vr, kind_aux}
                                           : std::vector<int>{kind_vr, kind_gaux};
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            const jacobian_map::one_kind& declared = ac.lib.map.entry[static_cast<std::size_t>(ac.e)][i];
            for (int j = 0; j < ac.jac.n_f; ++j)
                for (int k = 0; k < declared.n_var; ++k) {
                    const bool written =
                        ac.jac.store[static_cast<std::size_t>(ac.jac.offset(kinds[i], j, k))] != untouched;
                    const bool is_declared = declared.map[static_cast<std::size_t>(j * declared.n_var + k)] >= 0;
                    EXPECT_EQ(written, is_declared) << "kind " << kinds[i] << ", function " << j << ", variable " << k;
                }
        }
    });
}

TEST(small_signal_calls, reach_every_form_that_there_is) {
    std::set<std::string> used, there;
    for_every_form([&](auto& ac, const one_composite&) {
        used.insert((ac.lib.list.node.pool.size() > 0 ? "e " : "g ") + ac.lib.list.entry.str(ac.e));
    });
    for (int e = 0; e < installed_ebac().n(); ++e) there.insert("e " + installed_ebac().list.entry.str(e));
    for (int e = 0; e < installed_gbac().n(); ++e) there.insert("g " + installed_gbac().list.entry.str(e));
    EXPECT_EQ(used, there);
}

TEST(small_signal_calls, of_a_source_of_blocks_have_its_amplitude_and_angle) {
    ac_block u("const_ac");
    u.rparm = {2, 90};
    u.vr[0] = 3;
    u.ac(1);
    EXPECT_NEAR(std::abs(u.f[0] - number(3, -2)), 0, 1e-15);
    EXPECT_EQ(u.jac.dfdvr[0][0], 1.0);
}

TEST(small_signal_calls, without_a_bias_point_give_outputs_that_stand_still) {
    ac_block u("slope_2_1");
    u.vr = {5, 6, 7, 0};
    u.ac(1);
    EXPECT_EQ(u.f[0], 7.0);
    ac_block loop("pll_1a");
    loop.vr = {1, 2, 3, 4, 5, 0};
    loop.aux = {6, 0};
    loop.ac(10);
    EXPECT_EQ(loop.f[0], 4.0);
    EXPECT_EQ(loop.f[1], number(4, -50));
    EXPECT_EQ(loop.f[2], number(0, -60));
}

void dispatch(bool through_list, ac_unit& u, int selector) {
    (through_list ? get_ebe_ac_by_list : get_ebe_ac_by_number)(
        selector, 0, u.iparm.data(), u.sparm.data(), 50, u.rparm.data(), u.v.data(), u.vind.data(), u.curind.data(),
        u.aux.data(), u.vr.data(), u.f.data(), &u.jac, u.ebe_jac, &u.flags, &u.dp, &u.math_cnst);
}
void dispatch(bool through_list, ac_block& u, int selector) {
    (through_list ? get_gbe_ac_by_list : get_gbe_ac_by_number)(selector, 0, u.iparm.data(), u.sparm.data(), 50,
                                                               u.rparm.data(), u.vr.data(), u.aux.data(), u.f.data(),
                                                               &u.jac, &u.flags, &u.dp, &u.math_cnst);
}

TEST(generated_dispatch, calls_small_signal_forms_by_library_number_or_through_the_list) {
    for (const bool list : {false, true})
        for (const bool known : {true, false}) {
            ac_unit y("branch_y");
            ac_block lag("lag_1");
            y.rparm = {0.25, 0.01};
            y.v = {2.0, 0.0, 0.0};
            lag.rparm = {3, 0.1};
            lag.vr = {1.0, 1.0, 0.0};
            for (flags_class* flags : {&y.flags, &lag.flags}) flags->ac = flags->function = 1;
            y.flags.map_global_sse = {99, y.e};
            lag.flags.map_global_ssg = {99, lag.e};
            dispatch(list, y, list ? known : known ? y.e : 99);
            dispatch(list, lag, list ? known : known ? lag.e : 99);
            EXPECT_EQ(y.f[0], known ? number(0.5, 1) : number());
            EXPECT_EQ(lag.f[0], known ? number(-2, 5) : number());
        }
}

}  // namespace
