#include "elaborate/parameter_rows.h"

#include "base/halt.h"
#include "base/text_file.h"
#include "library/composite/composite_form.h"

namespace {
template <class T>
std::vector<T> defaults(const pair_list<T>& list, int e) {
    std::vector<T> row;
    for (int j = 0; j < list.count(e); ++j) row.push_back(list.value(e, j));
    return row;
}

template <class T>
void append_row(row_table<T>& table, const std::vector<T>& row) {
    table.data.insert(table.data.end(), row.begin(), row.end());
    table.close_row();
}
}  // namespace

parameter_rows default_rows(const library_lists& list, int e) {
    parameter_rows row{defaults(list.iprm, e),
                       defaults(list.sprm, e),
                       defaults(list.rprm, e),
                       defaults(list.sv, e),
                       defaults(list.ig, e),
                       {},
                       {},
                       {}};
    row.rprm_tie.assign(row.rprm.size(), -1);
    row.sv_tie.assign(row.sv.size(), -1);
    row.ig_tie.assign(row.ig.size(), -1);
    return row;
}

void check_this_line(std::string_view routine, std::string_view word, const words& w) {
    halt({line(routine, ": string <", word, "> not found."), "   Check this line:", joined(w), "   Halting..."});
}

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
            values[static_cast<std::size_t>(at)] = convert(value, at);
            known = true;
        };
        auto size = [](const auto& v) { return static_cast<int>(v.size()); };
        store(lib.list.iprm, row.iprm, size(row.iprm), [](const std::string& v, int) { return chr_to_int(v); });
        store(lib.list.sprm, row.sprm, size(row.sprm), [](const std::string& v, int) { return strcpy_chk(v, 50); });
        store(lib.list.rprm, row.rprm, n_plain, [](const std::string& v, int) { return chr_to_double(v); });
        const auto start = [&](pair_list<double> library_lists::*list) {
            return [n_real = first_whole(form.lib, lib, list, i_lib)](const std::string& v, int at) {
                return at >= n_real ? chr_to_int(v) : chr_to_double(v);
            };
        };
        store(lib.list.sv, row.sv, size(row.sv), start(&library_lists::sv));
        store(lib.list.ig, row.ig, size(row.ig), start(&library_lists::ig));
        if (!known) check_this_line(who, name, w);
    }
}

void append_rows(const composite_library& lib, int e, parameter_rows& row, instance_core& inst) {
    eval_rprm_1(lib, e, row.rprm.data());
    append_row(inst.iprm, row.iprm);
    append_row(inst.sprm, row.sprm);
    append_row(inst.rprm, row.rprm);
    append_row(inst.sv, row.sv);
    append_row(inst.ig, row.ig);
    append_row(inst.rprm_tie, row.rprm_tie);
    append_row(inst.sv_tie, row.sv_tie);
    append_row(inst.ig_tie, row.ig_tie);
}

void keep_as_empty(instance_core& inst, int n, int i_lib, int statement, const std::string& name) {
    const auto only = [n](auto& table) {
        table.keep(n);
        table.close_row();
    };
    const std::size_t n_now = static_cast<std::size_t>(n) + 1;
    for (auto* list : {&inst.i_lib, &inst.statement, &inst.flag_compute_acp, &inst.flag_compute_noisep,
                       &inst.flag_write_parms, &inst.flag_pwr_elec, &inst.flag_pwr_elec_ac})
        list->resize(n_now, 0);
    inst.i_lib.back() = i_lib;
    inst.statement.back() = statement;
    inst.name.push_back(name);
    for (auto* table : {&inst.nd, &inst.dgtl, &inst.vr, &inst.xvr, &inst.in, &inst.ib, &inst.iprm, &inst.rprm_tie,
                        &inst.sv_tie, &inst.ig_tie})
        only(*table);
    for (auto* table : {&inst.rprm, &inst.sv, &inst.ig}) only(*table);
    only(inst.sprm);
    inst.n = n + 1;
}
