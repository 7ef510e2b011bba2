#include "elaborate/instance_values.h"

#include <unordered_map>

#include "base/halt.h"
#include "base/text_file.h"
#include "library/composite/composite_form.h"

namespace {
// The statement being read, with the words that somebody used.
struct ticked_words {
    const words& w;
    std::vector<char> used;

    explicit ticked_words(const words& all) : w(all), used(static_cast<std::size_t>(all.size()), 0) { used[0] = 1; }
    // Ticks a key at an odd position and its value; the value's position, or -1 if the key is absent.
    int take(std::string_view key) {
        const int at = find_word_EO_1(w, key, odd_words);
        at_word(0);
        if (at < 0) return -1;
        pick_word_1(w, at + 1);
        used[static_cast<std::size_t>(at)] = used[static_cast<std::size_t>(at) + 1] = 1;
        return at + 1;
    }
};

// The parameter rows of one instance while they are being put together.
struct parameter_rows {
    std::vector<int> iprm;
    std::vector<std::string> sprm;
    std::vector<double> rprm, sv, ig;
    std::vector<int> rprm_tie, sv_tie, ig_tie;
};

template <class T>
std::vector<T> defaults(const pair_list<T>& list, int e) {
    std::vector<T> row;
    for (int j = 0; j < list.count(e); ++j) row.push_back(list.value(e, j));
    return row;
}

[[noreturn]] void check_this_line(std::string_view routine, std::string_view word, const words& w) {
    halt({line(routine, ": string <", word, "> not found."), "   Check this line:", joined(w), "   Halting..."});
}

// Values of a model statement of the deck over the library's defaults; derived parameters stay out.
void copy_model(const circuit& c, const family_form& form, int i_lib, std::string_view name, int n_plain,
                parameter_rows& row) {
    const model_class& models = c.*(form.models);
    const int m = models.find(name, i_lib);
    if (m < 0)
        halt({line("set_values_1 (", form.lib.instances, "): model not found."), line("   model name is ", name),
              "   Halting..."});
    auto copy = [m](const auto& from, auto& to, int n) {
        for (int j = 0; j < n; ++j) to[static_cast<std::size_t>(j)] = from.row(m)[j];
    };
    copy(models.iprm, row.iprm, static_cast<int>(row.iprm.size()));
    copy(models.sprm, row.sprm, static_cast<int>(row.sprm.size()));
    copy(models.rprm, row.rprm, n_plain);
    copy(models.rprm_tie, row.rprm_tie, n_plain);
    copy(models.sv, row.sv, static_cast<int>(row.sv.size()));
    copy(models.sv_tie, row.sv_tie, static_cast<int>(row.sv.size()));
    copy(models.ig, row.ig, static_cast<int>(row.ig.size()));
    copy(models.ig_tie, row.ig_tie, static_cast<int>(row.ig.size()));
}

// Values of a model file, one logical line: <keyword> name X type T p v ...
void read_model_file(const composite_library& lib, const family_form& form, int i_lib, const std::string& path,
                     int n_plain, parameter_rows& row) {
    const std::string who = line("set_values_1 (", form.lib.instances, " model)");
    text_file file;
    if (!read_text_file(path, file)) halt({who + ":", line("  file name ", path, " is not found."), "  Halting... "});
    words w;
    const bool read = next_line(file, w);
    if (!read || !check_word_1(w, 0, form.lib.model))
        halt({who + ":", line("  keyword ", form.lib.model, " not found.")});
    find_word_4(w, "type", 3, who + ": type not found");
    const std::string type = pick_word_1(w, 4);
    if (type != lib.list.entry[i_lib])
        halt({who + ":", line("   ", lib.list.entry[i_lib], " was expected, but ", type, " was found.")});
    for (int j = 5; j < w.size(); j += 2) {
        const std::string_view name = w[j];
        const std::string value = pick_word_1(w, j + 1);
        bool known = false;
        auto store = [&](const auto& list, auto& values, int n, auto convert) {
            const int at = list.find(i_lib, name);
            if (at < 0 || at >= n) return;
            values[static_cast<std::size_t>(at)] = convert(value);
            known = true;
        };
        auto size = [](const auto& v) { return static_cast<int>(v.size()); };
        store(lib.list.iprm, row.iprm, size(row.iprm), [](const std::string& v) { return chr_to_int(v); });
        store(lib.list.sprm, row.sprm, size(row.sprm), [](const std::string& v) { return strcpy_chk(v, 50); });
        store(lib.list.rprm, row.rprm, n_plain, [](const std::string& v) { return chr_to_double(v); });
        const bool whole = has_whole_start_values(form.lib);
        const auto start = [&](const std::string& v) { return whole ? chr_to_int(v) : chr_to_double(v); };
        store(lib.list.sv, row.sv, size(row.sv), start);
        store(lib.list.ig, row.ig, size(row.ig), start);
        if (!known) check_this_line(who, name, w);
    }
}

void read_model(const circuit& c, const family_form& form, int i_lib, int n_plain, ticked_words& t,
                parameter_rows& row) {
    const composite_library& lib = c.lib.*(form.composites);
    const int at_model = t.take("model");
    const int at_file = lib.list.sprm.find(i_lib, "model_file");
    std::string file = "none";
    if (at_file >= 0) {
        file = row.sprm[static_cast<std::size_t>(at_file)];
        const int at = find_word_EO_1(t.w, "model_file", odd_words);
        if (at >= 0) file = c.gprm.gprm_string_1(pick_word_1(t.w, at + 1));
    }
    if (at_model >= 0 && file != "none")
        halt({line("set_values_1 (", form.lib.instances, "):"), "  flag_model_sparm and flag_model_cct are both T",
              "  Halting..."});
    if (at_model >= 0) copy_model(c, form, i_lib, t.w[at_model], n_plain, row);
    if (file != "none") read_model_file(lib, form, i_lib, file, n_plain, row);
}

// Words of the statement itself; they beat the model, which beats the library.
void read_parameters(const circuit& c, const composite_library& lib, bool whole_start_values, int i_lib, int n_plain,
                     ticked_words& t, parameter_rows& row) {
    const library_lists& list = lib.list;
    auto each = [&](const auto& names, int n, auto store) {
        for (int j = 0; j < n; ++j)
            if (const int at = t.take(names.word(i_lib, j)); at >= 0) store(static_cast<std::size_t>(j), t.w[at]);
    };
    auto tied = [&](std::vector<double>& values, std::vector<int>& ties) {
        return [&](std::size_t j, std::string_view word) {
            values[j] = c.gprm.gprm_double_1(word);
            ties[j] = c.gprm.find_greal(word);
        };
    };
    each(list.iprm, list.iprm.count(i_lib),
         [&](std::size_t j, std::string_view word) { row.iprm[j] = c.gprm.gprm_int_1(word); });
    each(list.sprm, list.sprm.count(i_lib),
         [&](std::size_t j, std::string_view word) { row.sprm[j] = strcpy_chk(c.gprm.gprm_string_1(word), 51); });
    each(list.rprm, n_plain, tied(row.rprm, row.rprm_tie));
    if (whole_start_values) {
        const auto whole = [&](std::vector<double>& values) {
            return [&](std::size_t j, std::string_view word) { values[j] = c.gprm.gprm_int_1(word); };
        };
        each(list.sv, list.sv.count(i_lib), whole(row.sv));
        each(list.ig, list.ig.count(i_lib), whole(row.ig));
        return;
    }
    each(list.sv, list.sv.count(i_lib), tied(row.sv, row.sv_tie));
    each(list.ig, list.ig.count(i_lib), tied(row.ig, row.ig_tie));
}

template <class T>
void append_row(row_table<T>& table, const std::vector<T>& row) {
    table.data.insert(table.data.end(), row.begin(), row.end());
    table.close_row();
}

bool is_global_request(std::string_view left) {
    return left == "nodev" || left == "dvar" || left == "nodev_ac" || left == "var" || left == "xvar" ||
           left == "var_ac" || left == "xvar_ac";
}

// Matches the outputs that name this instance: the power of an electrical element, an output word of the composite
// (first its DC list, then its small-signal list), or a real parameter. Nothing else has terminals whose power could be
// summed, so there the words of power are looked up like any other.
void match_outputs(circuit& c, const family_form& form, int i_lib, int i, const std::vector<int>& outputs) {
    const composite_library& lib = c.lib.*(form.composites);
    instance_core& inst = c.*(form.instances);
    ov_class& ov = c.ov;
    const bool has_power = form.number == fam_e;
    const auto match = [&](std::size_t o) {
        const std::string& left = ov.left[o];
        ov.family[o] = form.number;
        ov.instance[o] = i;
        if (has_power && left == "pwr_elec") {
            ov.kind[o] = ov_pwr_elec;
            inst.flag_pwr_elec.back() = 1;
        } else if (has_power && left == "pwr_elec_ac") {
            ov.kind[o] = ov_pwr_elec_ac;
            inst.flag_pwr_elec_ac.back() = 1;
        } else if (const int j = lib.ov.name.find(i_lib, left); j >= 0) {
            const std::size_t at = static_cast<std::size_t>(lib.ov.at(i_lib, j));
            ov.kind[o] = lib.ov.kind[at];
            ov.index[o] = lib.ov.index[at];
            if (ov.kind[o] == ov_pwr_elec) inst.flag_pwr_elec.back() = 1;
            if (ov.kind[o] == ov_pwr_elec_ac) inst.flag_pwr_elec_ac.back() = 1;
        } else if (const int ja = lib.ovac.name.find(i_lib, left); ja >= 0) {
            const std::size_t at = static_cast<std::size_t>(lib.ovac.at(i_lib, ja));
            ov.kind[o] = lib.ovac.kind[at];
            ov.index[o] = lib.ovac.index[at];
        } else if (const int jr = lib.list.rprm.find(i_lib, left); jr >= 0 && form.kind_rparm != ov_none) {
            ov.kind[o] = form.kind_rparm;
            ov.index[o] = jr;
        } else {
            halt({line(form.lib.instances, "_class: outvar not found"), line("   name is ", left), "   Halting..."});
        }
    };
    for (int k : outputs)
        if (const std::size_t o = static_cast<std::size_t>(k); ov.kind[o] == ov_none && !is_global_request(ov.left[o]))
            reading(ov.statement[o], [&] { match(o); });
}

// A statement that could not be read, and after which the program goes on: an instance without values.
void keep_as_empty(instance_core& inst, int n, const element_statement& s) {
    const auto only = [n](auto& table) {
        table.keep(n);
        table.close_row();
    };
    const std::size_t n_now = static_cast<std::size_t>(n) + 1;
    for (auto* list : {&inst.i_lib, &inst.statement, &inst.flag_compute_acp, &inst.flag_compute_noisep,
                       &inst.flag_write_parms, &inst.flag_pwr_elec, &inst.flag_pwr_elec_ac})
        list->resize(n_now, 0);
    inst.i_lib.back() = s.i_lib;
    inst.statement.back() = s.line;
    const int at_name = find_word_EO_1(s.w, "name", odd_words);
    inst.name.push_back(at_name >= 0 && at_name + 1 < s.w.size() ? s.w.str(at_name + 1) : std::string());
    for (auto* table : {&inst.nd, &inst.dgtl, &inst.vr, &inst.xvr, &inst.in, &inst.ib, &inst.iprm, &inst.rprm_tie,
                        &inst.sv_tie, &inst.ig_tie})
        only(*table);
    for (auto* table : {&inst.rprm, &inst.sv, &inst.ig}) only(*table);
    only(inst.sprm);
    inst.n = n + 1;
}

using output_index = std::unordered_map<std::string_view, std::vector<int>>;

void set_values_1(circuit& c, const element_statement& s, const output_index& outputs) {
    const family_form& form = *s.form;
    const composite_library& lib = c.lib.*(form.composites);
    instance_core& inst = c.*(form.instances);
    const int e = s.i_lib;
    ticked_words t(s.w);
    t.take("type");
    const int at_name = t.take("name");
    if (at_name < 0) halt({line(form.lib.instances, "_class: name not found. Halting..")});
    const std::string name = s.w.str(at_name);
    inst.i_lib.push_back(e);
    inst.statement.push_back(s.line);
    for (auto* flag : {&inst.flag_compute_acp, &inst.flag_compute_noisep, &inst.flag_write_parms, &inst.flag_pwr_elec,
                       &inst.flag_pwr_elec_ac})
        flag->push_back(0);
    if (const auto wanted = outputs.find(name); wanted != outputs.end())
        match_outputs(c, form, e, inst.n, wanted->second);
    for (std::string_view word : form.flag_words)
        if (const int at = t.take(word); at >= 0) {
            const int value = assign_flag_1(s.w[at]) ? 1 : 0;
            if (word == "compute_acp") inst.flag_compute_acp.back() = value;
            if (word == "compute_noisep") inst.flag_compute_noisep.back() = value;
            if (word == "write_parms") inst.flag_write_parms.back() = value;
        }
    for (const bound_list& b : form.bound) {
        const word_list& list = lib.list.*(b.list);
        row_table<int>& row = inst.*(b.row);
        const name_table& names = c.cct.*(b.names);
        for (int j = 0; j < list.count(e); ++j) {
            const int at = t.take(list.word(e, j));
            const int number = at < 0 ? -1 : names.find(s.w[at]);
            if (number < 0) check_this_line(b.assigning, at < 0 ? list.word(e, j) : s.w[at], s.w);
            row.add(number);
        }
        // Internal nodes or variables stand behind those of the family's first list, with numbers behind all names.
        if (&b == &form.bound.front())
            for (int k = 0; k < lib.auxnode.count(e); ++k) row.add((c.cct.*(b.names)).n_lu++);
    }
    for (auto* row : {&inst.nd, &inst.dgtl, &inst.vr, &inst.xvr, &inst.in}) row->close_row();
    for (int j = 0; j < lib.list.ind_branch.count(e); ++j) {
        const int at = t.take(lib.list.ind_branch.word(e, j));
        const int target = at < 0 ? -1 : c.eelu.find(s.w[at]);
        if (target < 0) check_this_line("assign_elu_nodes", at < 0 ? lib.list.ind_branch.word(e, j) : s.w[at], s.w);
        inst.ib.add(target);
    }
    inst.ib.close_row();

    parameter_rows row{defaults(lib.list.iprm, e),
                       defaults(lib.list.sprm, e),
                       defaults(lib.list.rprm, e),
                       defaults(lib.list.sv, e),
                       defaults(lib.list.ig, e),
                       {},
                       {},
                       {}};
    row.rprm_tie.assign(row.rprm.size(), -1);
    row.sv_tie.assign(row.sv.size(), -1);
    row.ig_tie.assign(row.ig.size(), -1);
    const int n_plain = lib.n_rprm_plain(e);
    read_model(c, form, e, n_plain, t, row);
    read_parameters(c, lib, has_whole_start_values(form.lib), e, n_plain, t, row);
    eval_rprm_1(lib, e, row.rprm.data());
    append_row(inst.iprm, row.iprm);
    append_row(inst.sprm, row.sprm);
    append_row(inst.rprm, row.rprm);
    append_row(inst.sv, row.sv);
    append_row(inst.ig, row.ig);
    append_row(inst.rprm_tie, row.rprm_tie);
    append_row(inst.sv_tie, row.sv_tie);
    append_row(inst.ig_tie, row.ig_tie);
    for (int j = 0; j < s.w.size(); ++j)
        if (!t.used[static_cast<std::size_t>(j)]) {
            at_word(j);
            halt(
                {line(form.lib.instances, ":set_values_1: some word has not been ticked."), line("   word: ", s.w[j])});
        }
    inst.name.push_back(name);
    ++inst.n;
}
}  // namespace

void set_instance_values(circuit& c, const std::vector<element_statement>& statements) {
    output_index outputs;
    ov_class& ov = c.ov;
    const std::size_t n_ov = ov.name.size();
    ov.kind.assign(n_ov, ov_none);
    ov.index.assign(n_ov, -1);
    ov.family.assign(n_ov, -1);
    ov.instance.assign(n_ov, -1);
    ov.unit.assign(n_ov, -1);
    ov.usage.assign(n_ov, 0);
    for (std::size_t k = 0; k < n_ov; ++k) outputs[ov.right[k]].push_back(static_cast<int>(k));

    // All instance names first: a sensed branch may name a later statement.
    int count[n_family] = {};
    for (const element_statement& s : statements) {
        const int at = find_word_EO_1(s.w, "name", odd_words);
        const int i = count[s.form->number]++;
        if (at >= 0 && at + 1 < s.w.size()) (c.*(s.form->instances)).index.try_emplace(s.w.str(at + 1), i);
    }
    for (name_table* names : {&c.cct.ect, &c.cct.gct, &c.cct.dct, &c.cct.xct}) names->n_lu = names->n();
    for (const element_statement& s : statements) {
        instance_core& inst = c.*(s.form->instances);
        const int n = inst.n;
        if (!reading(s.line, [&] { set_values_1(c, s, outputs); })) keep_as_empty(inst, n, s);
    }
}

void check_instance_names(const circuit& c) {
    constexpr family order[] = {fam_d, fam_e, fam_g, fam_x, fam_gm};
    for (family f : order)
        check_word_repeat_1(c.instances(f).name, line("cct_class (", family_forms[f].lib.instances, ")"));
    for (int a = 0; a < n_family; ++a)
        for (int b = a + 1; b < n_family; ++b)
            check_word_repeat_2(c.instances(order[a]).name, c.instances(order[b]).name, "cct_class");
}
