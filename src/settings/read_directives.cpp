#include "settings/read_directives.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <variant>

#include "base/at.h"
#include "base/numeric.h"
#include "settings/solve_words.h"

namespace {
constexpr int circuit_families[] = {fam_e, fam_gm, fam_d, fam_g, fam_x};
constexpr int swept_families[] = {fam_e, fam_gm, fam_d, fam_g};
constexpr int start_families[] = {fam_e, fam_g};
constexpr int guess_families[] = {fam_e, fam_g, fam_x};
constexpr int digital_families[] = {fam_d};
constexpr parm_item::table parms[] = {parm_item::int_value, parm_item::real_value};
constexpr parm_item::table reals[] = {parm_item::real_value};
constexpr parm_item::table starts[] = {parm_item::start_value};
constexpr parm_item::table guesses[] = {parm_item::guess_value};

constexpr item_card cards[] = {
    {"set_parm", "set_parm statement", circuit_families, parms, true},
    {"set_stparm", "set_stparm statement", start_families, starts, false},
    {"set_igparm", "set_igparm statement", guess_families, guesses, false},
    {"set_dstparm", "set_dstparm statement", digital_families, starts, false},
    {"set_digparm", "set_digparm statement", digital_families, guesses, false},
    {"vary_parm", "vary_parm statement", swept_families, reals, true},
    {"vary_parm_sync", "vary_parm_sync statement", swept_families, reals, true},
};
const item_card& card_of(std::string_view word) {
    return *std::find_if(std::begin(cards), std::end(cards), [&](const item_card& k) { return k.word == word; });
}
bool sweeps(const item_card& card) { return card.word.starts_with("vary"); }

std::vector<parm_item> solve_task::*list_of(std::string_view word) {
    if (word == "set_parm") return &solve_task::set_parm;
    if (word == "set_stparm") return &solve_task::set_stparm;
    if (word == "set_igparm") return &solve_task::set_igparm;
    return word == "set_dstparm" ? &solve_task::set_dstparm : &solve_task::set_digparm;
}

int find_parameter(const library_lists& list, int entry, parm_item::table where, std::string_view word) {
    switch (where) {
        case parm_item::int_value:
            return list.iprm.find(entry, word);
        case parm_item::real_value:
            return list.rprm.find(entry, word);
        case parm_item::start_value:
            return list.sv.find(entry, word);
        case parm_item::guess_value:
            return list.ig.find(entry, word);
        default:
            return -1;
    }
}

[[noreturn]] void item_without_of(const item_card& card, std::string_view word) {
    if (sweeps(card))
        halt({"solve_class: keyword _of_ not found in", line("   ", card.name_in_text, "."),
              line("   Check this string: ", word), "   Halting..."});
    halt({"solve_class: _of_ not found.", line("   Check this string: ", word),
          line("   in the ", card.name_in_text, "."), "   Halting..."});
}
}  // namespace

std::span<const item_card> item_cards() { return cards; }

parm_item read_item(const circuit& c, const item_card& card, std::string_view word) {
    const cut_word cut = extract_l_r_2(word, "_of_");
    if (!cut.found) item_without_of(card, word);
    parm_item item;
    item.word = word;

    if (card.globals && cut.left == "glbl") {
        const std::string head = line("solve_class: trying to ", sweeps(card) ? "vary" : "set", " a global parameter");
        item.where = parm_item::global_value;
        item.index = c.gprm.find_greal(cut.right);
        if (item.index < 0) halt({head, "   which does not exist?"});
        if (c.gprm.flag_expr) c.gprm.expr_3(item.index, {head, "   which depends on others?"});
        return item;
    }
    for (int fam : card.families) {
        const instance_core& inst = c.instances(fam);
        item.instance = inst.find(cut.right);
        if (item.instance < 0) continue;
        item.family = fam;
        const library_lists& list = c.lib.composites(fam).list;
        for (parm_item::table where : card.tables) {
            item.where = where;
            item.index = find_parameter(list, inst.i_lib[at(item.instance)], where, cut.left);
            if (item.index >= 0) return item;
        }
        break;
    }
    halt({"solve_class: parameter not identified in", line("   ", card.name_in_text, "."),
          line("   Check this string: ", word), "   Halting..."});
}

void read_items(solve_class& slv, const circuit& c, const words& w) {
    const item_card& card = card_of(w[0]);
    for (int i = 1; i + 1 < w.size(); i += 2) {
        at_word(i);
        parm_item item = read_item(c, card, w[i]);
        at_word(i + 1);
        if (item.where == parm_item::int_value)
            item.value_int = c.gprm.gprm_int_1(w[i + 1]);
        else if (card.families.data() == digital_families)
            item.value = c.gprm.gprm_int_1(w[i + 1]);  // start-up values of digital elements are whole numbers
        else
            item.value = c.gprm.gprm_double_1(w[i + 1]);
        (slv.task.*list_of(w[0])).push_back(item);
    }
}

void read_dgtl(solve_class& slv, const circuit& c, const words& w) {
    for (int i = 1; i + 1 < w.size(); i += 2) {
        at_word(i);
        const int node = c.cct.dct.find(w[i]);
        if (node < 0)
            halt({"solve_class: digital node name not found", "   in set_sgtl statement.",
                  line("   Check this string: ", w[i])});
        at_word(i + 1);
        const int level = c.gprm.gprm_int_1(w[i + 1]);
        if (level < 0 || level > 2)
            halt({"solve_class: a digital level is 0, 1, or 2 (unknown)", "   in set_dgtl statement.",
                  line("   Check this string: ", w[i + 1]), "   Halting..."});
        slv.task.set_dgtl.push_back({node, level});
    }
}

// ---- sweeps ----
namespace {
constexpr double max_points = std::numeric_limits<int>::max();  // points are numbered; nothing is kept of them

[[noreturn]] void word_missing(std::string_view what, const std::string& statement) {
    halt({line("solve_class: ", what, " not found in"), line("   ", statement, ". Halting..")});
}

void check_points(double n, const std::string& statement) {
    if (!(n >= 2)) halt({"solve_class: n_points cannot be < 2", line("   in ", statement, ". Halting..")});
    if (n > max_points) halt({"solve_class: too many points", line("   in ", statement, ". Halting..")});
}

// `from` a `to` b `type` form, then `n_points` n or, for linear, `div` d; keys on one parity of positions.
sweep_range read_range(const circuit& c, const words& w, int parity, const std::string& statement) {
    auto find = [&](std::string_view key) { return find_word_EO_1(w, key, parity); };
    auto number = [&](int at_key) { return c.gprm.gprm_double_1(value_of(w, at_key)); };
    sweep_range r;
    r.from = number(find("from"));
    const int at_to = find("to");
    if (at_to < 0) word_missing("<to>", statement);
    r.to = number(at_to);
    const int at_type = find("type");
    if (at_type < 0) word_missing("<type>", statement);
    const std::string form = value_of(w, at_type);
    if (form != "linear" && form != "log")
        halt({"solve_class: type must be linear or log in", line("   ", statement, ". Halting..")});
    r.type = form == "linear" ? sweep_range::linear : sweep_range::log;

    const int at_n = find("n_points"), at_div = r.type == sweep_range::linear ? find("div") : -1;
    if (at_n < 0 && at_div < 0)
        word_missing(r.type == sweep_range::linear ? "<n_points> or <div>" : "<n_points>", statement);
    if (at_n >= 0) {
        r.n = c.gprm.gprm_int_1(value_of(w, at_n));
        check_points(r.n, statement);
    } else {
        const double pieces = (r.to - r.from) / number(at_div) + 0.5;
        check_points(std::trunc(pieces) + 1, statement);
        r.n = static_cast<int>(pieces) + 1;
    }
    return r;
}

sweep_range read_table(const circuit& c, const words& w, int first_value, const std::string& statement) {
    sweep_range r;
    r.type = sweep_range::table;
    for (int i = first_value; i < w.size(); ++i) r.values.push_back(c.gprm.gprm_double_1(pick_word_1(w, i)));
    r.n = static_cast<int>(r.values.size());
    if (r.n < 1) halt({"solve_class: check number of table points", line("   in ", statement, "."), "   Halting..."});
    return r;
}

struct auto_word {
    std::string_view word;
    std::variant<int auto_sweep::*, double auto_sweep::*> member;
    bool required;
};
constexpr auto_word auto_words[] = {
    {"p_begin", &auto_sweep::p_begin, true},
    {"p_end", &auto_sweep::p_end, true},
    {"step", &auto_sweep::step, true},
    {"step_min", &auto_sweep::step_min, true},
    {"step_max", &auto_sweep::step_max, true},
    {"factor_red", &auto_sweep::factor_red, false},
    {"factor_inc", &auto_sweep::factor_inc, false},
    {"itmax_sweep", &auto_sweep::itmax_sweep, false},
};

void set_value(double& to, std::string_view word) { to = chr_to_double(word); }
void set_value(int& to, std::string_view word) { to = chr_to_int(word); }

auto_sweep read_auto(const words& w) {
    auto_sweep a;
    bool seen[std::size(auto_words)] = {};
    for (int i = 4; i + 1 < w.size(); i += 2) {
        at_word(i);
        const auto_word* k = std::find_if(std::begin(auto_words), std::end(auto_words),
                                          [&](const auto_word& x) { return x.word == w[i]; });
        if (k == std::end(auto_words))
            halt({"solve_class: unknown keyword in", "   in vary_parm (auto) statement.",
                  line("   Check this string: ", w[i])});
        at_word(i + 1);
        std::visit([&](auto member) { set_value(a.*member, w[i + 1]); }, k->member);
        seen[k - auto_words] = true;
    }
    for (const auto_word& k : auto_words)
        if (k.required && !seen[&k - auto_words])
            halt({"solve_class: vary_parm (auto) statement:", line("  ", k.word, " not sepcified? Halting...")});
    return a;
}

// The sweep definition behind the item (or behind the first word): key is the position of `type` or `from`.
sweep_range read_definition(const circuit& c, const words& w, int key, const std::string& statement) {
    if (check_word_1(w, key, "type")) return read_table(c, w, key + 2, statement);
    if (!check_word_1(w, key, "from")) word_missing("<from> or <type>", statement);
    return read_range(c, w, key % 2 == 0 ? even_words : odd_words, statement);
}
}  // namespace

void read_vary(solve_class& slv, const circuit& c, const words& w) {
    vary_statement v;
    v.item = read_item(c, card_of("vary_parm"), pick_word_1(w, 1));
    if (check_word_1(w, 2, "type")) {
        const std::string form = pick_word_1(w, 3);
        if (form == "auto") {
            if (!slv.dc)
                halt({"solve_class: vary_parm (auto) is allowed", "   only in a DC solve section.", "   Halting..."});
            if (slv.task.flag_vary_auto)
                halt({"solve_class: only one vary_parm (auto)", "   statement is allowed in a solve section.",
                      "   Halting..."});
            slv.task.flag_vary_auto = int_T;
            slv.task.automatic = read_auto(w);
            v.range.type = sweep_range::automatic;
            v.range.n = 1;
            slv.task.vary.push_back(v);
            return;
        }
        if (form != "table")
            halt({"solve_class: type can only be table or auto", "   in vary_parm statement.",
                  line("   Check this string: ", form)});
    }
    v.range = read_definition(c, w, 2, "vary_parm statement");
    slv.task.vary.push_back(v);
}

void read_vary_sync(solve_class& slv, const circuit& c, const words& w) {
    vary_statement v;
    v.item = read_item(c, card_of("vary_parm_sync"), pick_word_1(w, 1));
    if (check_word_1(w, 2, "type") && pick_word_1(w, 3) != "table")
        halt({"solve_class: vary_parm_sync: type can be", "   table only. Halting..."});
    v.range = read_definition(c, w, 2, "vary_parm_sync statement");
    slv.task.vary_sync.push_back(v);
}

void read_set_freq(solve_class& slv, const circuit& c, const words& w) {
    if (slv.task.ac_single) halt({"solve_class: only one set_freq is allowed", "   in a solve section. Halting..."});
    slv.task.ac_freq = c.gprm.gprm_double_1(pick_word_1(w, 1));
    slv.task.ac_single = int_T;
}

void read_vary_freq(solve_class& slv, const circuit& c, const words& w) {
    if (slv.task.ac_sweep) halt({"solve_class: only one vary_freq is allowed", "   in a solve section. Halting..."});
    if (check_word_1(w, 1, "type") && pick_word_1(w, 2) != "table")
        halt({"solve_class: vary_freq: type can be", "   table only. Halting..."});
    slv.task.ac_range = read_definition(c, w, 1, "vary_freq statement");
    slv.task.ac_sweep = int_T;
}

double sweep_range::at(int i) const {
    switch (type) {
        case linear:
            return interp_linear(from, to, i, n);
        case log:
            return interp_log(from, to, i, n);
        default:
            return values[static_cast<std::size_t>(i)];
    }
}

void add_directive_words(std::vector<std::string_view>& list) {
    for (const item_card& k : cards) list.push_back(k.word);
    for (const auto_word& k : auto_words) list.push_back(k.word);
    for (std::string_view word :
         {"from", "to", "type", "linear", "log", "table", "auto", "n_points", "div", "glbl_of_"})
        list.push_back(word);
}

std::vector<std::string_view> auto_sweep_words(bool required_only) {
    std::vector<std::string_view> list;
    for (const auto_word& k : auto_words)
        if (k.required || !required_only) list.push_back(k.word);
    return list;
}
