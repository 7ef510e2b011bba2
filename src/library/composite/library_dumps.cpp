// library_dumps.cpp -- form of a dump: the name of the class, totals as `label = value`, then rows `  i = k, name =
// ..., ...`.
#include "library/composite/library_dumps.h"

#include <algorithm>
#include <fstream>
#include <numeric>
#include <span>

#include "base/halt.h"
#include "library/composite/mixed_form.h"

namespace {

using L = library_lists;

// Every named list with the tag of its total, in the order of the totals; a row of an entry names the lists that it
// fills.
struct names_tag {
    word_list L::*list;
    const char* tag;
};
constexpr names_tag name_lists[] = {
    {&L::node, "nd"}, {&L::vr, "vr"},     {&L::xvr, "xvr"},   {&L::ind_node, "in"}, {&L::ind_branch, "ib"},
    {&L::aux, "aux"}, {&L::auxs, "auxs"}, {&L::locv, "locv"}, {&L::dgtl, "dgtl"},
};
// Those that composites have, too.
constexpr names_tag composite_lists[] = {
    {&L::node, "nd"},     {&L::vr, "vr"},         {&L::xvr, "xvr"},
    {&L::ind_node, "in"}, {&L::ind_branch, "ib"}, {&L::dgtl, "dgtl"},
};

// Visits the pair lists: parameters, then start values and guesses.
template <class F>
void for_each_parameter_list(const L& list, F f) {
    f(list.iprm, "iprm");
    f(list.sprm, "sprm");
    f(list.rprm, "rprm");
}
template <class F>
void for_each_value_list(const L& list, F f) {
    f(list.sv, "sv");
    f(list.ig, "ig");
}

struct flag_tag {
    std::vector<int> entry_flags::*flag;
    const char* tag;
};
constexpr flag_tag flag_tags[] = {
    {&entry_flags::limit_tstep, "flag_limit_tstep"},   {&entry_flags::limit_newton, "flag_limit_newton"},
    {&entry_flags::save_history, "flag_save_history"}, {&entry_flags::calc_acp, "flag_calc_acp"},
    {&entry_flags::startup_sprt, "flag_startup_sprt"}, {&entry_flags::allow_ssw, "flag_allow_ssw"},
    {&entry_flags::gmin_step, "flag_gmin_step"},       {&entry_flags::jac_const, "flag_jac_const"},
    {&entry_flags::limit_modulo, "flag_limit_modulo"}, {&entry_flags::allow_reset, "flag_allow_reset"},
    {&entry_flags::set_rparm_1, "flag_set_rparm_1"},   {&entry_flags::get_rparm_1, "flag_get_rparm_1"},
    {&entry_flags::noise_source, "flag_noise_source"}, {&entry_flags::ground_dummy, "flag_ground_dummy"},
};

void write_total(std::ostream& out, const char* label, int n) { out << label << " = " << n << '\n'; }
template <class T>
void write_total(std::ostream& out, const char* tag, const pair_list<T>& list) {
    out << "n_ttl" << tag << " = " << list.name.pool.size() << '\n';
}

void write_list_totals(std::ostream& out, const L& list) {
    const auto total = [&](const auto& l, const char* tag) { write_total(out, tag, l); };
    write_total(out, "n", list.n());
    for_each_parameter_list(list, total);
    for (const names_tag& t : name_lists) out << "n_ttl" << t.tag << " = " << (list.*t.list).pool.size() << '\n';
    for_each_value_list(list, total);
}

template <class T>
void write_pairs(std::ostream& out, const char* tag, const pair_list<T>& list, int e) {
    for (int j = 0; j < list.count(e); ++j)
        out << "    " << tag << ' ' << list.word(e, j) << " = " << list.value(e, j) << '\n';
}

void write_entry_lists(std::ostream& out, const L& list, int e) {
    for (const names_tag& t : name_lists) {
        if ((list.*t.list).count(e) == 0) continue;
        out << "    " << t.tag << ':';
        for (int j = 0; j < (list.*t.list).count(e); ++j) out << ' ' << (list.*t.list).word(e, j);
        out << '\n';
    }
    const auto pairs = [&](const auto& l, const char* tag) { write_pairs(out, tag, l, e); };
    for_each_parameter_list(list, pairs);
    for_each_value_list(list, pairs);
}

// How long each list of an entry is; that with the tag `told` is told already.
void write_entry_counts(std::ostream& out, const L& list, int e, std::span<const names_tag> lists,
                        const std::string& told = "") {
    const auto count = [&](const auto& l, const char* tag) { out << ", n_" << tag << " = " << l.count(e); };
    for_each_parameter_list(list, count);
    for_each_value_list(list, count);
    for (const names_tag& t : lists)
        if (t.tag != told) out << ", n_" << t.tag << " = " << (list.*t.list).count(e);
}

void write_functions(std::ostream& out, const function_table& f, int e) {
    const int first = f.first_f[static_cast<std::size_t>(e)];
    for (int j = 0; j < f.n_func(e); ++j) {
        const auto k = static_cast<std::size_t>(first + j);
        out << "    f = " << j << ", name = " << f.name[first + j]
            << ", n_var = " << f.first_fvar[k + 1] - f.first_fvar[k] << ", flag_kcl = " << f.flag_kcl[k]
            << ", flag_gnrl = " << f.flag_gnrl[k] << ", flag_locvar = " << f.flag_locvar[k]
            << ", i_locvar = " << f.i_locvar[k] << ", func_startup = " << f.func_startup[k]
            << ", startup_kcl = " << f.startup_kcl[k] << ", startup_kcl_row = " << f.startup_kcl_row[k]
            << ", startup_gnrl = " << f.startup_gnrl[k] << ", flag_ddt = " << f.flag_ddt[k]
            << ", ddt_var_flag = " << f.ddt_var_flag[k] << ", ddt_var_number = " << f.ddt_var_number[k]
            << ", kcl_locvar_func = " << f.kcl_locvar_func[k] << '\n';
        for (int d = f.first_fvar[k]; d < f.first_fvar[k + 1]; ++d) {
            const auto i = static_cast<std::size_t>(d);
            out << "      var_flag = " << f.var_flag[i] << ", var_number = " << f.var_number[i]
                << ", l_ddt = " << f.l_ddt[i] << '\n';
        }
    }
}

void write_outputs(std::ostream& out, const char* tag, const output_table& table, int e) {
    for (int j = 0; j < table.count(e); ++j) {
        const auto i = static_cast<std::size_t>(table.at(e, j));
        out << "    " << tag << "_name = " << table.name.word(e, j) << ", " << tag << "_flag = " << table.kind[i]
            << ", " << tag << "_be = " << table.be[i] << ", " << tag << "_var = " << table.index[i] << '\n';
    }
}

template <class T>
void write_row(std::ostream& out, const std::string& tag, const row_table<T>& table, const row_table<int>* flag,
               int row) {
    if (row >= table.n_rows() || table.size(row) == 0) return;  // a family has rows for words of its own only
    out << "      " << tag << ':';
    for (int j = 0; j < table.size(row); ++j) {
        out << ' ' << table.row(row)[j];
        if (flag && row < flag->n_rows() && flag->row(row)[j] != -1) out << '(' << flag->row(row)[j] << ')';
    }
    out << '\n';
}

// Values with the composite's parameter or name that feeds them in brackets; no brackets: fixed. In mixed composites
// (-2) is a callee's own default.
void write_element_rows(std::ostream& out, const std::string& prefix, const element_table& be, int row) {
    write_row(out, prefix + "node", be.node, nullptr, row);
    write_row(out, prefix + "dgtl", be.dgtl, nullptr, row);
    write_row(out, prefix + "vr", be.vr, nullptr, row);
    write_row(out, prefix + "xvr", be.xvr, nullptr, row);
    write_row(out, prefix + "in", be.in, &be.in_flag, row);
    write_row(out, prefix + "ib", be.ib, &be.ib_flag, row);
    write_row(out, prefix + "iprm", be.iprm, &be.iprm_flag, row);
    write_row(out, prefix + "sprm", be.sprm, &be.sprm_flag, row);
    write_row(out, prefix + "rprm", be.rprm, &be.rprm_flag, row);
    write_row(out, prefix + "sv", be.sv, &be.sv_flag, row);
    write_row(out, prefix + "ig", be.ig, &be.ig_flag, row);
}

void write_elements(std::ostream& out, const std::string& library, const element_table& be, bool ac, int e) {
    const std::string basic = library.substr(0, 1) + (ac ? "bac" : "bes");  // eels: ebes, ebac
    const std::string prefix = ac ? "beac_" : "be_";
    for (int k = 0; k < be.n_be(e); ++k) {
        const int row = be.first_be[static_cast<std::size_t>(e)] + k;
        const auto r = static_cast<std::size_t>(row);
        out << "    i_" << library << "be" << (ac ? "_ac" : "") << " = " << k << ", i_" << basic << " = " << be.i_be[r];
        if (ac) out << ", beac_acprm_be = " << be.acprm_be[r];
        out << '\n';
        write_element_rows(out, prefix, be, row);
    }
}

// ---- mixed composites ----

int sum(const std::vector<int>& counts) { return std::accumulate(counts.begin(), counts.end(), 0); }
int total(const word_list& list) { return list.pool.size(); }
template <class T>
int total(const row_table<T>& rows, const element_table& be, int library) {
    int n = 0;
    for (int row = 0; row < rows.n_rows(); ++row)
        if (be.library[static_cast<std::size_t>(row)] == library) n += rows.size(row);
    return n;
}
int most_of_one(const composite_library& lib, mixed_place place) {
    const mixed_names names = names_at(lib, place);
    int most = 0;
    for (int e = 0; e < lib.n(); ++e) most = std::max(most, names.main->count(e) + names.internal->count(e));
    return most;
}

// The called composites of one domain: how many, and which lists their calls fill.
struct called_lists {
    int library;
    const char* name;
    std::vector<std::pair<const char*, row_table<int> element_table::*>> lists;
};

void write_mixed_totals(std::ostream& out, const composite_library& lib, std::span<const called_lists> called) {
    const auto each = [&](std::initializer_list<std::pair<const char*, int>> totals) {
        for (const auto& [label, n] : totals) write_total(out, label, n);
    };
    each({{"n", lib.n()},
          {"n_ttliprm", total(lib.list.iprm.name)},
          {"n_ttlsprm", total(lib.list.sprm.name)},
          {"n_ttlrprm", total(lib.list.rprm.name)},
          {"n_ttlsva", sum(lib.n_sv)},
          {"n_ttliga", sum(lib.n_ig)},
          {"n_ttlsvd", total(lib.list.sv.name) - sum(lib.n_sv)},
          {"n_ttligd", total(lib.list.ig.name) - sum(lib.n_ig)},
          {"n_ttlova", total(lib.ov.name)},
          {"n_ttlovd", total(lib.ovd.name)},
          {"n_ttlmnda", total(lib.list.node)},
          {"n_ttlmndd", total(lib.list.dgtl)},
          {"n_ttlmvr", total(lib.list.vr)},
          {"n_ttlnda_one", most_of_one(lib, mixed_place::analog)},
          {"n_ttlndd_one", most_of_one(lib, mixed_place::digital)},
          {"n_ttlvr_one", most_of_one(lib, mixed_place::variable)}});
    for (const called_lists& c : called) {
        const auto label = [&](const char* tag) { return line("n_", c.name, "_ttl", tag); };
        write_total(out, label("").c_str(),
                    static_cast<int>(std::count(lib.be.library.begin(), lib.be.library.end(), c.library)));
        for (const auto& [tag, rows] : c.lists)
            write_total(out, label(tag).c_str(), total(lib.be.*rows, lib.be, c.library));
    }
}

void write_mixed_dump(std::ostream& out, const composite_library& lib) {
    using E = element_table;
    const called_lists called[] = {
        {lib_eels,
         "ece",
         {{"nd", &E::node},
          {"sv", &E::sv_flag},
          {"ig", &E::ig_flag},
          {"in", &E::in},
          {"ib", &E::ib},
          {"dgtl", &E::dgtl},
          {"vr", &E::vr},
          {"iprm", &E::iprm_flag},
          {"sprm", &E::sprm_flag},
          {"rprm", &E::rprm_flag}}},
        {lib_dels,
         "dce",
         {{"nd", &E::dgtl},
          {"anlg", &E::in},
          {"iprm", &E::iprm_flag},
          {"sprm", &E::sprm_flag},
          {"rprm", &E::rprm_flag},
          {"sv", &E::sv_flag},
          {"ig", &E::ig_flag}}},
        {lib_gels,
         "gce",
         {{"vr", &E::vr},
          {"sv", &E::sv_flag},
          {"ig", &E::ig_flag},
          {"iprm", &E::iprm_flag},
          {"sprm", &E::sprm_flag},
          {"rprm", &E::rprm_flag}}},
    };
    write_mixed_totals(out, lib, called);
    for (int e = 0; e < lib.n(); ++e) {
        out << "  i = " << e << ", name = " << lib.list.entry[e];
        const auto count = [&](const char* label, int n) { out << ", " << label << " = " << n; };
        const auto names = [&](const char* main, const char* all, mixed_place place) {
            const mixed_names n = names_at(lib, place);
            count(main, n.main->count(e));
            count(all, n.main->count(e) + n.internal->count(e));
        };
        names("nnda", "ttlnda", mixed_place::analog);
        names("nndd", "ttlndd", mixed_place::digital);
        names("nvr", "ttlvr", mixed_place::variable);
        const int first = lib.be.first_be[word_list::at(e)], end = first + lib.be.n_be(e);
        for (const called_lists& c : called)
            count(line("n_", c.name).c_str(), static_cast<int>(std::count(lib.be.library.begin() + first,
                                                                          lib.be.library.begin() + end, c.library)));
        count("flag_allow_ac", lib.flag.allow_ac[word_list::at(e)]);
        out << '\n';
        write_entry_lists(out, lib.list, e);
        write_outputs(out, "ova", lib.ov, e);
        write_outputs(out, "ovd", lib.ovd, e);
        write_outputs(out, "ovac", lib.ovac, e);
        for (const called_lists& c : called)
            for (int row = first, k = 0; row < end; ++row) {
                if (lib.be.library[word_list::at(row)] != c.library) continue;
                out << "    i_gmes" << c.name << " = " << k++ << ", i_" << library_forms[c.library].name << " = "
                    << lib.be.i_be[word_list::at(row)] << ", name = " << lib.be.name[word_list::at(row)] << '\n';
                write_element_rows(out, "be_", lib.be, row);
            }
    }
}

template <class F>
void write_file(const std::string& word, F write) {
    std::ofstream out(word + ".dat");
    if (!out) halt({line("write_dump: cannot write ", word, ".dat. Halting...")});
    write(out);
}

}  // namespace

void write_basic_dump(std::ostream& out, const std::string& word, const basic_library& lib) {
    out.precision(10);
    out << word << "_class\n";
    write_list_totals(out, lib.list);
    write_total(out, "n_ttlf", lib.func.n_ttlf());
    write_total(out, "n_ttlfvar", lib.func.first_fvar.back());
    for (int e = 0; e < lib.n(); ++e) {
        out << "  i = " << e << ", name = " << lib.list.entry[e] << ", n_func = " << lib.func.n_func(e);
        write_entry_counts(out, lib.list, e, name_lists);
        for (const flag_tag& f : flag_tags)
            if ((lib.flag.*f.flag)[static_cast<std::size_t>(e)]) out << ", " << f.tag << " = 1";
        out << '\n';
        write_entry_lists(out, lib.list, e);
        write_functions(out, lib.func, e);
    }
}

void write_composite_dump(std::ostream& out, const std::string& word, const composite_library& lib) {
    out.precision(10);
    out << word << "_class\n";
    if (word == library_forms[lib_gmes].name) return write_mixed_dump(out, lib);
    write_total(out, "n", lib.n());
    for_each_parameter_list(lib.list, [&](const auto& l, const char* t) { write_total(out, t, l); });
    write_total(out, "n_ttlbias", lib.bias.name.pool.size());
    for (const names_tag& t : composite_lists)
        if (t.list != &L::dgtl) out << "n_ttl" << t.tag << " = " << (lib.list.*t.list).pool.size() << '\n';
    write_total(out, "n_ttlov", lib.ov.name.pool.size());
    write_total(out, "n_ttlsv", lib.list.sv);
    write_total(out, "n_ttlinac", lib.inac.pool.size());
    write_total(out, "n_ttlibac", lib.ibac.pool.size());
    const auto count = [](const auto& table) { return static_cast<int>(table.data.size()); };
    write_total(out, "n_be_ttl", static_cast<int>(lib.be.i_be.size()));
    write_total(out, "n_be_ttliprm", count(lib.be.iprm));
    write_total(out, "n_be_ttlsprm", count(lib.be.sprm));
    write_total(out, "n_be_ttlrprm", count(lib.be.rprm));
    const bool digital = word == "dels";
    write_total(out, "n_be_ttlnd", count(digital ? lib.be.dgtl : lib.be.node));
    write_total(out, "n_be_ttlvr", count(lib.be.vr));
    write_total(out, "n_be_ttlxvr", count(lib.be.xvr));
    write_total(out, digital ? "n_be_ttlanlg" : "n_be_ttlin", count(lib.be.in));
    write_total(out, "n_be_ttlib", count(lib.be.ib));
    if (digital) {
        write_total(out, "n_ttlanlg", lib.list.ind_node.pool.size());
        write_total(out, "n_be_ttlsv", count(lib.be.sv));
        write_total(out, "n_be_ttlig", count(lib.be.ig));
    }
    // Blocks are connected by variables, all others by nodes.
    const bool blocks = word == "gels" || word == "xels";
    const std::string tag = blocks ? "vr" : "nd";
    for (int e = 0; e < lib.n(); ++e) {
        const auto i = static_cast<std::size_t>(e);
        const int n_main = blocks ? lib.list.vr.count(e) : lib.n_nd(e);
        out << "  i = " << e << ", name = " << lib.list.entry[e] << ", n_be = " << lib.be.n_be(e)
            << ", n_beac = " << lib.beac.n_be(e) << ", n_" << tag << " = " << n_main << ", n_ttl" << tag
            << "_old = " << n_main + lib.auxnode.count(e) << ", n_ov = " << lib.ov.count(e)
            << ", n_bias = " << lib.bias.count(e);
        write_entry_counts(out, lib.list, e, composite_lists, tag);
        out << ", n_rprm_plain = " << lib.n_rprm_plain(e) << ", n_rprm_derived = " << lib.n_rprm_derived(e)
            << ", flag_allow_ac = " << lib.flag.allow_ac[i] << ", flag_compute_acp = " << lib.flag.compute_acp[i]
            << ", flag_compute_noisep = " << lib.flag.compute_noisep[i]
            << ", flag_compute_rparms = " << lib.flag.compute_rparms[i];
        if (blocks)
            out << ", flag_postprocessor = " << lib.flag.postprocessor[i]
                << ", flag_postprocessor_ac = " << lib.flag.postprocessor_ac[i];
        out << '\n';
        write_entry_lists(out, lib.list, e);
        write_outputs(out, "ov", lib.ov, e);
        write_outputs(out, "bias", lib.bias, e);
        write_outputs(out, "ovac", lib.ovac, e);
        write_elements(out, word, lib.be, false, e);
        write_elements(out, word, lib.beac, true, e);
    }
}

void write_hebes_dump(std::ostream& out, const std::string& word, const basic_library& lib) {
    out.precision(10);
    out << word << "_class\n";
    write_total(out, "n", lib.n());
    for (int e = 0; e < lib.n(); ++e) {
        out << "  i = " << e << ", name = " << lib.list.entry[e] << ", n_rprm = " << lib.list.rprm.count(e) << '\n';
        write_pairs(out, "rprm", lib.list.rprm, e);
    }
}

void write_heels_dump(std::ostream& out, const std::string& word, const composite_library& lib,
                      const basic_library& basic) {
    constexpr int is_element = 1, is_composite = 2;
    struct child {
        int kind, index;  // among those of its kind
        std::string_view name;
    };
    out.precision(10);
    out << word << "_class\n";
    write_total(out, "n", lib.n());
    for (int e = 0; e < lib.n(); ++e) {
        const auto i = static_cast<std::size_t>(e);
        // In the order of the body: what a call has brought stands behind one another in the flat list.
        std::vector<child> children;
        int n_be = 0, n_ce = 0, position = 0;
        for (int k = lib.call.first[i]; position < lib.be.n_be(e) || k < lib.call.first[i + 1];) {
            const auto c = static_cast<std::size_t>(k);
            if (k < lib.call.first[i + 1] && lib.call.first_be[c] == position) {
                children.push_back({is_composite, n_ce++, lib.list.entry[lib.call.i_lib[c]]});
                position += lib.be.n_be(lib.call.i_lib[c]);
                ++k;
            } else {
                const auto row = static_cast<std::size_t>(lib.be.first_be[i] + position++);
                children.push_back({is_element, n_be++, basic.list.entry[lib.be.i_be[row]]});
            }
        }
        out << "  i = " << e << ", name = " << lib.list.entry[e] << ", n_rprm = " << lib.list.rprm.count(e)
            << ", flag_compute_rparms = " << lib.computes_rparms[i] << ", n_be = " << n_be << ", n_ce = " << n_ce
            << ", n_children = " << n_be + n_ce << '\n';
        write_pairs(out, "rprm", lib.list.rprm, e);
        for (const child& c : children)
            out << "    child_kind = " << c.kind << ", child_index = " << c.index << ", name = " << c.name << '\n';
    }
}

void write_model_dump(std::ostream& out, const std::string& word, const model_class& models,
                      const composite_library& lib) {
    out.precision(10);
    out << word << "_class\n";
    write_total(out, "n", models.n());
    for (int i = 0; i < models.n(); ++i) {
        const auto k = static_cast<std::size_t>(i);
        out << "  i = " << i << ", name = " << models.name[k] << ", type = " << lib.list.entry[models.i_lib[k]] << '\n';
        write_row(out, "iprm", models.iprm, nullptr, i);
        write_row(out, "sprm", models.sprm, nullptr, i);
        write_row(out, "rprm", models.rprm, nullptr, i);
        write_row(out, "sv", models.sv, nullptr, i);
        write_row(out, "ig", models.ig, nullptr, i);
    }
}

void write_basic_dump(const std::string& word, const basic_library& lib) {
    write_file(word, [&](std::ostream& out) { write_basic_dump(out, word, lib); });
}
void write_composite_dump(const std::string& word, const composite_library& lib) {
    write_file(word, [&](std::ostream& out) { write_composite_dump(out, word, lib); });
}
void write_hebes_dump(const std::string& word, const basic_library& lib) {
    write_file(word, [&](std::ostream& out) { write_hebes_dump(out, word, lib); });
}
void write_heels_dump(const std::string& word, const composite_library& lib, const basic_library& basic) {
    write_file(word, [&](std::ostream& out) { write_heels_dump(out, word, lib, basic); });
}
void write_model_dump(const std::string& word, const model_class& models, const composite_library& lib) {
    write_file(word, [&](std::ostream& out) { write_model_dump(out, word, models, lib); });
}
