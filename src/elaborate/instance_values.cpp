#include "elaborate/instance_values.h"

#include "base/at.h"
#include "base/halt.h"
#include "elaborate/instance_outputs.h"
#include "elaborate/mixed.h"
#include "elaborate/parameter_rows.h"
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
void read_parameters(const circuit& c, const family_form& form, int i_lib, int n_plain, ticked_words& t,
                     parameter_rows& row) {
    const composite_library& lib = c.lib.*(form.composites);
    const library_lists& list = lib.list;
    auto each = [&](const auto& names, int n, auto store) {
        for (int j = 0; j < n; ++j)
            if (const int at = t.take(names.word(i_lib, j)); at >= 0) store(static_cast<std::size_t>(j), t.w[at]);
    };
    auto tied = [&](std::vector<double>& values, std::vector<int>& ties, int n_real) {
        return [&, n_real](std::size_t j, std::string_view word) {
            const bool whole = static_cast<int>(j) >= n_real;
            values[j] = whole ? c.gprm.gprm_int_1(word) : c.gprm.gprm_double_1(word);
            ties[j] = whole ? -1 : c.gprm.find_greal(word);
        };
    };
    each(list.iprm, list.iprm.count(i_lib),
         [&](std::size_t j, std::string_view word) { row.iprm[j] = c.gprm.gprm_int_1(word); });
    each(list.sprm, list.sprm.count(i_lib),
         [&](std::size_t j, std::string_view word) { row.sprm[j] = strcpy_chk(c.gprm.gprm_string_1(word), 51); });
    each(list.rprm, n_plain, tied(row.rprm, row.rprm_tie, n_plain));
    each(list.sv, list.sv.count(i_lib),
         tied(row.sv, row.sv_tie, first_whole(form.lib, lib, &library_lists::sv, i_lib)));
    each(list.ig, list.ig.count(i_lib),
         tied(row.ig, row.ig_tie, first_whole(form.lib, lib, &library_lists::ig, i_lib)));
}

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
    match_outputs(c, form, e, inst.n, name, outputs);
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
        name_table& names = c.cct.*(b.names);
        for (int j = 0; j < list.count(e); ++j) {
            const int at = t.take(list.word(e, j));
            const int number = at < 0 ? -1 : names.find(s.w[at]);
            if (number < 0) check_this_line(b.assigning, at < 0 ? list.word(e, j) : s.w[at], s.w);
            row.add(number);
        }
        // Internal ones stand behind those of the list, with numbers behind all names.
        int& next = form.number == fam_gm ? names.n_mixed : names.n_lu;
        for (int k = 0; b.internal && k < (lib.*b.internal).count(e); ++k) row.add(next++);
    }
    for (auto* row : {&inst.nd, &inst.dgtl, &inst.vr, &inst.xvr, &inst.in}) row->close_row();
    for (int j = 0; j < lib.list.ind_branch.count(e); ++j) {
        const int at = t.take(lib.list.ind_branch.word(e, j));
        const int target = at < 0 ? -1 : c.eelu.find(s.w[at]);
        if (target < 0) check_this_line("assign_elu_nodes", at < 0 ? lib.list.ind_branch.word(e, j) : s.w[at], s.w);
        inst.ib.add(target);
    }
    inst.ib.close_row();

    parameter_rows row = default_rows(lib.list, e);
    const int n_plain = lib.n_rprm_plain(e);
    read_model(c, form, e, n_plain, t, row);
    read_parameters(c, form, e, n_plain, t, row);
    append_rows(lib, e, row, inst);
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
    ov_class& ov = c.ov;
    const std::size_t n_ov = ov.name.size();
    ov.kind.assign(n_ov, ov_none);
    ov.index.assign(n_ov, -1);
    ov.family.assign(n_ov, -1);
    ov.instance.assign(n_ov, -1);
    ov.unit.assign(n_ov, -1);
    ov.usage.assign(n_ov, 0);
    const output_index outputs = index_outputs(ov);

    // All instance names first: a sensed branch may name a later statement.
    instance_counts count{};
    for (const element_statement& s : statements) {
        const int at_name = find_word_EO_1(s.w, "name", odd_words);
        const int i = count[at(s.form->number)]++;
        if (at_name >= 0 && at_name + 1 < s.w.size())
            (c.*(s.form->instances)).index.try_emplace(s.w.str(at_name + 1), i);
    }
    for (name_table* names : {&c.cct.ect, &c.cct.gct, &c.cct.dct, &c.cct.xct})
        names->n_lu = names->n_mixed = names->n();
    number_parts(c, statements, count);
    std::vector<char> mixed_unread;  // [mixed instances]
    for (const element_statement& s : statements) {
        instance_core& inst = c.*(s.form->instances);
        const int n = inst.n, at_name = find_word_EO_1(s.w, "name", odd_words);
        const bool good = reading(s.line, [&] { set_values_1(c, s, outputs); });
        if (!good)
            keep_as_empty(inst, n, s.i_lib, s.line,
                          at_name >= 0 && at_name + 1 < s.w.size() ? s.w.str(at_name + 1) : std::string());
        if (s.form->number == fam_gm) mixed_unread.push_back(!good);
    }
    make_parts(c, mixed_unread, outputs);
}

void check_instance_names(const circuit& c) {
    constexpr family order[] = {fam_d, fam_e, fam_g, fam_x, fam_gm};
    for (family f : order)
        check_word_repeat_1(c.instances(f).name, line("cct_class (", family_forms[f].lib.instances, ")"));
    for (int a = 0; a < n_family; ++a)
        for (int b = a + 1; b < n_family; ++b)
            check_word_repeat_2(c.instances(order[a]).name, c.instances(order[b]).name, "cct_class");
}
