#include "library/composite/mixed_reader.h"

#include "base/halt.h"
#include "library/check_limit.h"
#include "library/composite/mixed_entry.h"

namespace {

constexpr const library_form& form = library_forms[lib_gmes];
constexpr std::string_view class_name = form.class_name;

const mixed_domain* domain_of_call(std::string_view word) {
    for (const mixed_domain& d : mixed_domains)
        if (d.lib.call == word) return &d;
    return nullptr;
}

// ---- first sweep: how many calls every entry has, those of mixed composites expanded ----

void count_calls(text_file& file) {
    words names, w;
    std::vector<int> count;
    int total = 0;
    while (next_line(file, w)) {
        if (w[0] == form.begin) {
            names.add(w.size() > 2 ? w[2] : std::string_view());
            count.push_back(0);
        }
        if (count.empty()) continue;
        int more = domain_of_call(w[0]) != nullptr;
        if (w[0] == form.call) {
            const std::string callee = pick_word_1(w, 1);
            const int i = find_word_1(names, callee);
            if (i < 0 || i + 1 >= names.size())
                word_not_found("find_word_3", callee, "gmes_gmes_1: gmes_name not found");
            more = count[static_cast<std::size_t>(i)];
        }
        count.back() += more;
        total += more;
        check_limit(total, max_mixed_elements, class_name, ": n_ttl is too large.");
    }
}

// ---- second sweep: the entries in full ----

// The words of an output line become rows of its table; what a call has to serve stays open.
void read_output_line(mixed_entry& entry, const words& w, std::size_t i_line) {
    const mixed_outputs& out = mixed_output_lines[i_line];
    output_table& table = own_outputs(entry.lib, out);
    if (w.size() % 2 == 0) halt({line(class_name, ": k_rem is not zero (", out.tag, "). Halting...")});
    for (int i = 1; i < w.size(); i += 2) {
        table.name.pool.add(w[i]);
        const cut_word cut = extract_l_r_1(w[i + 1], "_of_", line("_of_ not found (", out.tag, "), check gme library"));
        int kind = ov_none, index = -1;
        for (const mixed_output_word& own : out.words)
            if (cut.left == own.left) {
                kind = own.kind;
                index = entry.find(own.place, cut.right);
                if (index < 0)
                    word_not_found("find_word_3", cut.right, line(class_name, ": outvar node name not found"));
            }
        if (kind == ov_none) entry.open[i_line].push_back({static_cast<int>(table.kind.size()), cut.left, cut.right});
        table.kind.push_back(kind);
        table.be.push_back(-1);
        table.index.push_back(index);
    }
    table.name.close_entry();
}

struct header_reader {
    mixed_entry& entry;
    const header_line& l;
    const words& w;

    void operator()(word_list library_lists::*m) const { add_names(w, entry.lib.list.*m); }
    void operator()(word_list composite_library::*m) const { add_names(w, entry.lib.*m); }
    template <class T>
    void operator()(pair_list<T> library_lists::*m) const {
        add_pairs(w, class_name, l.tag, entry.lib.list.*m);
        if constexpr (std::is_same_v<T, double>) {
            if (m == &library_lists::sv) entry.lib.n_sv.push_back(entry.lib.list.sv.count(entry.e));
            if (m == &library_lists::ig) entry.lib.n_ig.push_back(entry.lib.list.ig.count(entry.e));
        }
    }
    void operator()(output_table composite_library::*) const {
        for (std::size_t k = 0; k < mixed_output_lines.size(); ++k)
            if (std::string_view(l.tag) == mixed_output_lines[k].tag) read_output_line(entry, w, k);
    }
    void operator()(special_line s) const {
        if (s == special_line::derived) return read_derived(entry.lib, entry.e, class_name, false, w);
        pair_list<double>& list = s == special_line::digital_starts ? entry.lib.list.sv : entry.lib.list.ig;
        list.name.first.pop_back();  // the row of this entry goes on
        add_pairs(w, class_name, l.tag, list, true);
    }
};

// A line that gives calls of one kind values under a name. True if the line is one.
bool read_model(mixed_entry& entry, const words& w) {
    for (std::size_t k = 0; k < mixed_domains.size(); ++k) {
        const library_form& called = mixed_domains[k].lib;
        if (w[0] != called.submodel) continue;
        const std::string tag = line("gmm", called.begin);
        if (w.size() <= 6)
            halt({line(class_name, ": nw_s1=", w.size(), " is too small."),
                  line("  Check ", called.submodel, " statement. Halting...")});
        expect_word(w, 1, "name", "expect name here, check gme library");
        expect_word(w, 3, "type", "expect type here, check gme library");
        if (w.size() % 2 == 0) halt({line(class_name, ": k_rem is not zero (", tag, "). Halting...")});
        std::vector<model_line>& list = entry.models[k].list;
        list.push_back(model_line_of(w));
        check_limit(static_cast<int>(list.size()), max_mixed_models, class_name, ": ", tag, " is too large.");
        return true;
    }
    return false;
}

// Branches that calls sense: another call of elements, before or behind them.
void find_sensed_calls(mixed_entry& entry) {
    for (const mixed_entry::sensed_call& s : entry.sensed) {
        const named_element* call = find_named(entry.branches, s.name);
        if (!call) word_not_found("find_word_3", s.name, "gmes_ece: ind. branch of an eels not found.");
        entry.lib.be.ib.data[s.at] = call->be;
    }
}

void check_outputs(mixed_entry& entry) {
    for (std::size_t k = 0; k < mixed_output_lines.size(); ++k) {
        if (entry.open[k].empty()) continue;
        const mixed_outputs& out = mixed_output_lines[k];
        const int first = own_outputs(entry.lib, out).name.first[word_list::at(entry.e)];
        halt({line(class_name, ": some outvar is not assigned?"),
              line("  i_", out.tag, " = ", entry.open[k].front().at - first), "  Check gme library. Halting.."});
    }
}

// Tables that a mixed composite has nothing in, but that all composites have rows of.
void close_other_rows(composite_library& lib) {
    composite_flags& flag = lib.flag;
    for (auto* list : {&flag.compute_acp, &flag.compute_noisep, &flag.compute_rparms, &flag.postprocessor,
                       &flag.postprocessor_ac, &lib.computes_rparms})
        list->push_back(0);
    for (word_list* list : {&lib.inac, &lib.ibac, &lib.bias.name}) list->close_entry();
    lib.beac.first_be.push_back(0);
    lib.call.first.push_back(0);
    lib.callac.first.push_back(0);
}

void read_entry(text_file& file, words& w, const mixed_callees& callees, composite_library& lib) {
    expect_word(w, 0, form.begin, class_name, ": gme not found. Debug 1.");
    expect_word(w, 1, "name", "expect name here, check gme library");
    lib.list.entry.add(pick_word_1(w, 2));
    int at_flag = 3;
    while (at_flag < w.size() && w[at_flag] != "allow_ac") ++at_flag;
    lib.flag.allow_ac.push_back(at_flag < w.size() && assign_flag_1(pick_word_1(w, at_flag + 1)));

    mixed_entry entry{.callees = callees, .lib = lib, .e = lib.n() - 1, .name = lib.list.entry.str(lib.n() - 1)};
    for (const header_line& l : gmes_lines) {
        next_line(file, w);
        expect_word(w, 0, l.keyword, "expect ", l.text, " here, check gme library");
        std::visit(header_reader{entry, l, w}, l.member);
    }
    lib.list.close_rows();
    close_other_rows(lib);

    bool more = next_line(file, w);
    while (more && read_model(entry, w)) more = next_line(file, w);
    for (const mixed_domain* domain; more && (domain = domain_of_call(w[0])) != nullptr; more = next_line(file, w))
        if (domain->callees)
            read_single_call(entry, *domain, w);
        else
            read_nested_call(entry, w);
    expect_word(w, 0, form.end, class_name, ": expect endgme here.");
    lib.be.first_be.push_back(static_cast<int>(lib.be.i_be.size()));
    find_sensed_calls(entry);
    check_outputs(entry);
}

}  // namespace

void read_mixed_composites(text_file& file, const mixed_callees& callees, composite_library& lib) {
    lib = {};
    const std::size_t start = file.at;
    count_calls(file);
    file.at = start;
    words w;
    while (next_line(file, w)) read_entry(file, w, callees, lib);
}
