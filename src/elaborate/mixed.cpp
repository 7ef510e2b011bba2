#include "elaborate/mixed.h"

#include "base/at.h"
#include "base/halt.h"
#include "elaborate/parameter_rows.h"

namespace {
// Names of a called composite that the mixed one connects: which of its lists a call's numbers are places in.
struct connected_list {
    word_list library_lists::*list;
    row_table<int> element_table::*numbers;
    row_table<int> instance_core::*of_owner;
};
constexpr connected_list connected_lists[] = {
    {&library_lists::node, &element_table::node, &instance_core::nd},
    {&library_lists::ind_node, &element_table::in, &instance_core::nd},
    {&library_lists::dgtl, &element_table::dgtl, &instance_core::dgtl},
    {&library_lists::vr, &element_table::vr, &instance_core::vr},
};

// One group of parameters: the value of each in the tables of calls, and where the owner and the part have theirs.
template <class T>
struct handed_group {
    row_table<T> element_table::*value;
    row_table<int> element_table::*flag;
    row_table<T> instance_core::*of_instance;
    std::vector<T> parameter_rows::*row;
};
template <class F>
void for_each_handed(F f) {
    using E = element_table;
    using I = instance_core;
    using P = parameter_rows;
    f(handed_group<int>{&E::iprm, &E::iprm_flag, &I::iprm, &P::iprm});
    f(handed_group<std::string>{&E::sprm, &E::sprm_flag, &I::sprm, &P::sprm});
    f(handed_group<double>{&E::rprm, &E::rprm_flag, &I::rprm, &P::rprm});
    f(handed_group<double>{&E::sv, &E::sv_flag, &I::sv, &P::sv});
    f(handed_group<double>{&E::ig, &E::ig_flag, &I::ig, &P::ig});
}

// A call of mixed instance i: row b of the calls of all mixed composites, number of its instance.
struct part {
    int owner, b, number;
    const family_form& form;
};

// A part's instance takes the place of a statement: connections and parameters come from the owner's rows.
void make_part(circuit& c, const part& p, const output_index& outputs) {
    const element_table& be = c.lib.gmes.be;
    const gmeu_class& gmeu = c.gmeu;
    const composite_library& lib = c.lib.*(p.form.composites);
    instance_core& inst = c.*(p.form.instances);
    const int e = be.i_be[at(p.b)];
    inst.i_lib.push_back(e);
    inst.statement.push_back(gmeu.statement[at(p.owner)]);
    for (auto* flag : {&inst.flag_compute_acp, &inst.flag_compute_noisep, &inst.flag_write_parms, &inst.flag_pwr_elec,
                       &inst.flag_pwr_elec_ac})
        flag->push_back(0);
    const std::string name = line(gmeu.name[at(p.owner)], ".", be.name[at(p.b)]);
    // Outputs reach the calls that stand in the composite itself, and no deeper ones.
    if (!be.nested[at(p.b)]) match_outputs(c, p.form, e, inst.n, name, outputs);

    for (const bound_list& bound : p.form.bound) {
        row_table<int>& row = inst.*(bound.row);
        for (const connected_list& l : connected_lists)
            if (l.list == bound.list)
                for (int j = 0; j < (be.*l.numbers).size(p.b); ++j)
                    row.add((gmeu.*l.of_owner).row(p.owner)[(be.*l.numbers).row(p.b)[j]]);
        for (int k = 0; bound.internal && k < (lib.*bound.internal).count(e); ++k)
            row.add((c.cct.*(bound.names)).n_lu++);
    }
    for (auto* row : {&inst.nd, &inst.dgtl, &inst.vr, &inst.xvr, &inst.in}) row->close_row();
    for (int j = 0; j < be.ib.size(p.b); ++j) inst.ib.add(gmeu.part.row(p.owner)[be.ib.row(p.b)[j]]);
    inst.ib.close_row();

    parameter_rows row = default_rows(lib.list, e);
    const auto give = [&](const auto& g) {
        for (int j = 0; j < (be.*g.flag).size(p.b); ++j)
            if (const int flag = (be.*g.flag).row(p.b)[j]; flag != left_at_default)
                (row.*g.row)[at(j)] = flag < 0 ? (be.*g.value).row(p.b)[j] : (gmeu.*g.of_instance).row(p.owner)[flag];
    };
    for_each_handed(give);
    // A model file stands between the composite's own defaults and what the call gives.
    if (const int j = lib.list.sprm.find(e, "model_file"); j >= 0 && row.sprm[at(j)] != "none") {
        read_model_file(lib, p.form, e, row.sprm[at(j)], lib.n_rprm_plain(e), row);
        for_each_handed(give);
    }
    append_rows(lib, e, row, inst);
    inst.name.push_back(name);
    ++inst.n;
}

template <class F>
void for_each_call(const circuit& c, int owner, F f) {
    const element_table& be = c.lib.gmes.be;
    const int first = be.first_be[at(c.gmeu.i_lib[at(owner)])];
    for (int k = 0; k < c.gmeu.part.size(owner); ++k)
        f(part{owner, first + k, c.gmeu.part.row(owner)[k], family_of_library(be.library[at(first + k)])});
}
}  // namespace

void number_parts(circuit& c, const std::vector<element_statement>& statements, const instance_counts& count) {
    const composite_library& gmes = c.lib.gmes;
    instance_counts next = count;
    c.gmeu.part.clear();
    for (const element_statement& s : statements) {
        if (s.form->number != fam_gm) continue;
        const int at_name = find_word_EO_1(s.w, "name", odd_words);
        const std::string owner = at_name >= 0 && at_name + 1 < s.w.size() ? s.w.str(at_name + 1) : std::string();
        for (int b = gmes.be.first_be[at(s.i_lib)]; b < gmes.be.first_be[at(s.i_lib) + 1]; ++b) {
            const family_form& form = family_of_library(gmes.be.library[at(b)]);
            const int number = next[at(form.number)]++;
            c.gmeu.part.add(number);
            (c.*(form.instances)).index.try_emplace(line(owner, ".", gmes.be.name[at(b)]), number);
        }
        c.gmeu.part.close_row();
        for (const bound_list& bound : s.form->bound)
            (c.cct.*(bound.names)).n_lu += (gmes.*bound.internal).count(s.i_lib);
    }
}

void make_parts(circuit& c, const std::vector<char>& unread, const output_index& outputs) {
    for (int i = 0; i < c.gmeu.n; ++i)
        for_each_call(c, i, [&](const part& p) {
            instance_core& inst = c.*(p.form.instances);
            const int statement = c.gmeu.statement[at(i)];
            if (unread[at(i)] || !reading(statement, [&] { make_part(c, p, outputs); }))
                keep_as_empty(inst, p.number, c.lib.gmes.be.i_be[at(p.b)], statement,
                              line(c.gmeu.name[at(i)], ".", c.lib.gmes.be.name[at(p.b)]));
        });
}

void parts_changed(circuit& c, int i) {
    const element_table& be = c.lib.gmes.be;
    for_each_call(c, i, [&](const part& p) {
        instance_core& inst = c.*(p.form.instances);
        for_each_handed([&](const auto& g) {
            for (int j = 0; j < (be.*g.flag).size(p.b); ++j)
                if (const int link = (be.*g.flag).row(p.b)[j]; link >= 0)
                    (inst.*g.of_instance).row(p.number)[j] = (c.gmeu.*g.of_instance).row(i)[link];
        });
        instance_changed(c, p.form.number, p.number);
    });
}
