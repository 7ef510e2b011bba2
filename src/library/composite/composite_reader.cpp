#include "library/composite/composite_reader.h"

#include "library/check_limit.h"
#include "library/code_section.h"
#include "library/composite/composite_entry.h"
#include "library/list_lines.h"

namespace {

bool begins(const words& w, std::string_view word) { return !w.empty() && w[0] == word; }
bool begins_code(const words& w) { return begins(w, "C:") || begins(w, "fortran:"); }

// The reserved section behind the DC half; "compiled" says that there is none.
void skip_composite_code(text_file& file, const words& w, const composite_form& form) {
    if (w.size() > 1 && w[1] == "compiled") return;
    if (!pass_lines(file, "endC", "endfortran", nullptr))
        halt({line(form.lib.class_name, ": endfortran not found. Halting...")});
}

// ---- first sweep: how many elements every entry has, calls expanded ----

struct element_count {
    int dc = 0, ac = 0;
};

void count_elements(text_file& file, const composite_form& form) {
    words names, w;
    std::vector<element_count> count;
    element_count total;
    bool ac = false;
    while (next_line(file, w)) {
        if (begins(w, form.lib.begin)) {
            names.add(w.size() > 2 ? w[2] : std::string_view());
            count.emplace_back();
            ac = false;
        }
        if (begins_code(w)) skip_composite_code(file, w, form);
        if (begins(w, "begin_ac")) ac = true;
        if (begins(w, "end_ac")) ac = false;
        element_count more;
        if (begins(w, form.basic.begin)) more.dc = 1;
        if (begins(w, form.basic_ac.begin)) more.ac = 1;
        if (begins(w, form.lib.call)) {
            const std::string callee = pick_word_1(w, 1);
            const int i = find_word_1(names, callee);
            if (i < 0 || i + 1 >= names.size())
                word_not_found("find_word_3", callee,
                               line(form.lib.name, "_", form.lib.name,
                                    ac                ? "_ac: "
                                    : form.has_halves ? ": "
                                                      : "_1: ",
                                    form.lib.name, "_name not found"));
            (ac ? more.ac : more.dc) =
                ac ? count[static_cast<std::size_t>(i)].ac : count[static_cast<std::size_t>(i)].dc;
        }
        if (count.empty()) continue;
        count.back().dc += more.dc;
        count.back().ac += more.ac;
        total.dc += more.dc;
        total.ac += more.ac;
        check_limit(total.dc, form.limit.max_elements, form.lib.class_name, ": n_be_ttl is too large.");
        check_limit(total.ac, form.limit.max_elements_ac, form.lib.class_name, ": n_beac_ttl is too large.");
    }
}

// ---- second sweep: the entries in full ----

// Visits the member of a header line; every kind of list ends as a pool of words with the row of this entry.
struct header_reader {
    entry_in_work& entry;
    half_in_work& half;
    const header_line& l;
    const words& w;

    const word_list* operator()(word_list library_lists::*m) const {
        add_names(w, entry.lib.list.*m);
        return &(entry.lib.list.*m);
    }
    const word_list* operator()(word_list composite_library::*m) const {
        add_names(w, entry.lib.*m);
        return &(entry.lib.*m);
    }
    template <class T>
    const word_list* operator()(pair_list<T> library_lists::*m) const {
        bool whole = false;
        if constexpr (std::is_same_v<T, double>) whole = entry.form.whole_start_values && holds_start_values(m);
        add_pairs(w, entry.form.lib.class_name, l.tag, entry.lib.list.*m, whole);
        return &(entry.lib.list.*m).name;
    }
    const word_list* operator()(output_table composite_library::*m) const {
        const bool is_bias = m == &composite_library::bias;
        read_outputs(entry, w, l, entry.lib.*m, half.kinds, is_bias ? half.open_bias : half.open_ov);
        return &(entry.lib.*m).name;
    }
    const word_list* operator()(special_line s) const {
        if (s == special_line::mark) return nullptr;
        read_derived(entry.lib, entry.e, entry.form.lib.class_name, entry.form.tells_operands, w);
        return &entry.lib.list.rprm.name;
    }
};

// The connections of the entry are known once its internal names are.
void count_nodes(entry_in_work& entry) {
    const composite_form& form = entry.form;
    const word_list& main = entry.lib.list.*form.main_list;
    entry.n_main = main.count(entry.e);
    entry.n_internal = entry.n_internal_named = entry.lib.auxnode.count(entry.e);
    entry.node_touched.assign(static_cast<std::size_t>(entry.n_main + entry.n_internal), 0);
    check_limit(entry.n_main + entry.n_internal, form.limit.max_nodes, form.lib.class_name,
                ": ttlnd_old is too large!");
    check_limit(main.pool.n_chr() + entry.lib.auxnode.pool.n_chr(), form.limit.max_node_chars, form.lib.class_name,
                ": n_ttlndchr is too large!");
}

void read_header(text_file& file, entry_in_work& entry, half_in_work& half, std::span<const header_line> lines) {
    const std::string_view class_name = entry.form.lib.class_name;
    for (const header_line& l : lines) {
        words w;
        const std::size_t before = file.at;
        next_line(file, w);
        if (l.goes_on) {
            if (!begins(w, l.keyword)) {
                file.at = before;
                continue;
            }
            (entry.lib.list.*std::get<pair_list<double> library_lists::*>(l.member)).name.first.pop_back();
        }
        expect_word(w, 0, l.keyword, "expect ", l.text, " here, check ", l.library ? l.library : entry.form.lib.begin,
                    " library");
        const word_list* list = std::visit(header_reader{entry, half, l, w}, l.member);
        if (!list) continue;
        if (l.max_entry > 0)
            check_limit(list->count(entry.e), l.max_entry, class_name, ": ", l.entry_text, " is too large!");
        if (l.max_words > 0)
            check_limit(list->pool.size(), l.max_words, class_name, ": n_ttl", l.tag, " is too large!");
        if (l.max_chars > 0)
            check_limit(list->pool.n_chr(), l.max_chars, class_name, ": n_ttl", l.tag, "chr is too large!");
        if (list == &entry.lib.auxnode) count_nodes(entry);
    }
}

// Model lines, then body statements up to the end word of the half.
void read_body(text_file& file, entry_in_work& entry, half_in_work& half) {
    const composite_form& form = entry.form;
    const std::string_view element = half.ac ? form.basic_ac.begin : form.basic.begin, call = form.lib.call;
    const std::string_view element_model = form.basic.submodel, call_model = form.lib.submodel;
    const std::string end(!form.has_halves ? form.lib.end : half.ac ? "end_ac" : "end_dc");
    words w;
    bool more = next_line(file, w);
    for (; more && (w[0] == element_model || w[0] == call_model); more = next_line(file, w))
        read_model_line(entry, half, w, w[0] == element_model);
    for (; more && w[0] != end; more = next_line(file, w)) {
        if (w[0] == element)
            read_element(entry, half, w);
        else if (w[0] == call)
            read_call(entry, half, w);
        else if (half.ac && w[0] == "acparm_map:")
            read_acparm_map(entry, half, w);
        else
            break;
    }
    if (!more || w[0] != end) halt({line(form.lib.class_name, ": ", end, " not found. Halting...")});
    half.be.first_be.push_back(static_cast<int>(half.be.i_be.size()));
    half.call.first.push_back(static_cast<int>(half.call.i_lib.size()));
}

// What the body must have found by its end: outputs, then bias variables, then an element at every node.
void check_dc_half(const entry_in_work& entry, const half_in_work& half) {
    const composite_form& form = entry.form;
    const std::string check = line("  Check ", form.lib.begin, " library. Halting..");
    const auto number = [&](const output_table& table, const open_output& o) {
        return line("  i_ov = ", o.at - table.name.first[static_cast<std::size_t>(entry.e)]);
    };
    if (!half.open_ov.empty())
        halt({line(form.lib.class_name, ": some outvar is not assigned?"), number(half.ov, half.open_ov[0]), check});
    if (!half.open_bias.empty())
        halt({line(form.lib.class_name, ": some bias variable is not assigned?"),
              number(entry.lib.bias, half.open_bias[0]), check});
    for (std::size_t i = 0; i < entry.node_touched.size(); ++i)
        if (!entry.node_touched[i])
            halt({line(form.lib.class_name, ": a ", form.node_name, " not assigned? ", entry.library_words()),
                  line("  ", form.lib.name, " name is ", entry.name), line("  ", form.node_name, " number is ", i)});
}

void read_entry_line(const words& w, const composite_form& form, composite_library& lib) {
    expect_word(w, 0, form.lib.begin, form.lib.class_name, ": ", form.lib.begin, " not found. Debug 1.");
    expect_word(w, 1, "name", "expect name here, check ", form.lib.begin, " library");
    const std::string name = pick_word_1(w, 2);
    check_limit(lib.n() + 2, form.limit.max_entries, form.lib.class_name, ": n is too large! Debug 2.");
    lib.list.entry.add(name);
    struct flag_word {
        const char* word;
        std::vector<int> composite_flags::*member;
        bool known;
    };
    const flag_word flags[] = {
        {"allow_ac", &composite_flags::allow_ac, true},
        {"compute_acp", &composite_flags::compute_acp, true},
        {"compute_noisep", &composite_flags::compute_noisep, true},
        {"compute_rparms", &composite_flags::compute_rparms, true},
        {"postprocessor", &composite_flags::postprocessor, form.may_postprocess},
        {"postprocessor_ac", &composite_flags::postprocessor_ac, form.may_postprocess},
    };
    for (const flag_word& f : flags) {
        int i = f.known ? 3 : w.size();
        while (i < w.size() && w[i] != f.word) ++i;
        (lib.flag.*f.member).push_back(i < w.size() && assign_flag_1(pick_word_1(w, i + 1)));
    }
    if (lib.flag.compute_rparms.back()) lib.any_compute_rparms = true;
}

// "eels_ebe", "eels_eels_ac": how messages call the reading of an element or a call.
std::string routine(const composite_form& form, std::string_view what, bool ac) {
    return line(form.lib.name, "_", what, ac ? "_ac" : "");
}

void read_ac_half(text_file& file, entry_in_work& entry, const basic_library& basic) {
    const composite_form& form = entry.form;
    composite_library& lib = entry.lib;
    half_in_work ac{.ac = true,
                    .basic = basic,
                    .be = lib.beac,
                    .call = lib.callac,
                    .ov = lib.ovac,
                    .kinds = form.ac_kinds,
                    .in = lib.inac,
                    .ib = lib.ibac,
                    .element_routine = routine(form, form.basic.begin, true),
                    .call_routine = routine(form, form.lib.name, true),
                    .half_word = "AC"};
    read_header(file, entry, ac, form.ac_lines);
    read_body(file, entry, ac);
    if (!ac.open_ov.empty())
        halt({line(form.lib.class_name, ": some outvar (ac) is not assigned?"),
              line("  Check ", form.lib.begin, " library. Halting..")});
}

// A composite inherits the need from those that it calls, which have been read before it.
void assign_compute_rparms(composite_library& lib, int e) {
    const auto i = static_cast<std::size_t>(e);
    int on = lib.flag.compute_rparms[i];
    for (int k = lib.call.first[i]; k < lib.call.first[i + 1]; ++k)
        on |= lib.computes_rparms[static_cast<std::size_t>(lib.call.i_lib[static_cast<std::size_t>(k)])];
    lib.computes_rparms.push_back(on);
}

void read_entry(text_file& file, const words& first_line, const composite_form& form, const basic_library& basic,
                const basic_library& basic_ac, composite_library& lib) {
    read_entry_line(first_line, form, lib);
    entry_in_work entry{.form = form, .lib = lib, .e = lib.n() - 1, .name = lib.list.entry.str(lib.n() - 1)};
    half_in_work dc{.ac = false,
                    .basic = basic,
                    .be = lib.be,
                    .call = lib.call,
                    .ov = lib.ov,
                    .kinds = form.dc_kinds,
                    .in = lib.list.ind_node,
                    .ib = lib.list.ind_branch,
                    .element_routine = routine(form, form.basic.begin, false),
                    .call_routine = routine(form, form.lib.name, false),
                    .half_word = "DC"};
    read_header(file, entry, dc, form.dc_lines);
    lib.list.close_rows();
    read_body(file, entry, dc);
    check_dc_half(entry, dc);
    assign_compute_rparms(lib, entry.e);
    entry.dc_elements = dc.elements;

    words w;
    if (form.has_code) {
        next_line(file, w);
        check_word_3(w, 0, "fortran:", "C:", line("expect fortran:/C: here, ", entry.library_words()));
        skip_composite_code(file, w, form);
    }
    if (form.ac_lines.empty()) {
        lib.ovac.name.close_entry();
        lib.beac.first_be.push_back(0);
        lib.callac.first.push_back(0);
    } else {
        read_ac_half(file, entry, basic_ac);
    }
    if (!form.has_halves) {
        lib.bias.name.close_entry();
        return;
    }
    next_line(file, w);
    expect_word(w, 0, form.lib.end, form.lib.class_name, ": expect end", form.lib.begin, " here.");
}

}  // namespace

void read_composites(text_file& file, const composite_form& form, const basic_library& basic,
                     const basic_library& basic_ac, composite_library& lib) {
    lib = {};
    const std::size_t start = file.at;
    count_elements(file, form);
    file.at = start;
    words w;
    while (next_line(file, w)) read_entry(file, w, form, basic, basic_ac, lib);
}

namespace {
composite_library read_from_form(const composite_form& form, const basic_library& basic,
                                 const basic_library& basic_ac) {
    composite_library lib;
    text_file file = open_text_file(std::string(form.lib.path), std::string(form.lib.class_name));
    read_composites(file, form, basic, basic_ac, lib);
    return lib;
}
}  // namespace

void read_eels_file(const std::string& path, const ebes_class& ebes, const ebac_class& ebac, eels_class& eels) {
    text_file file = open_text_file(path, std::string(eels_form.lib.class_name));
    read_composites(file, eels_form, ebes, ebac, eels);
}

eels_class read_eels(const ebes_class& ebes, const ebac_class& ebac) { return read_from_form(eels_form, ebes, ebac); }
gels_class read_gels(const gbes_class& gbes, const gbac_class& gbac) { return read_from_form(gels_form, gbes, gbac); }
dels_class read_dels(const dbes_class& dbes) { return read_from_form(dels_form, dbes, dbes); }
xels_class read_xels(const xbes_class& xbes, const xbac_class& xbac) { return read_from_form(xels_form, xbes, xbac); }

void eval_rprm_1(const composite_library& lib, int e, double* rprm) {
    double* to = rprm + lib.n_rprm_plain(e);
    for (int k = 0; k < lib.derived.row.size(e); ++k) to[k] = evaluate(lib.derived.row.row(e)[k], rprm);
}
