#include "library/basic/jacobian_map.h"

#include "base/halt.h"

jacobian_map map_jacobian(const basic_library& lib, std::span<const variable_list> kinds, std::string_view class_name) {
    jacobian_map result;
    result.entry.resize(static_cast<std::size_t>(lib.n()));
    const function_table& f = lib.func;
    for (int e = 0; e < lib.n(); ++e) {
        std::vector<jacobian_map::one_kind>& entry = result.entry[static_cast<std::size_t>(e)];
        entry.resize(kinds.size());
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            entry[i].n_var = (lib.list.*kinds[i].list).count(e);
            entry[i].map.assign(static_cast<std::size_t>(lib.func.n_func(e) * entry[i].n_var), -1);
        }
        const int first = f.first_f[static_cast<std::size_t>(e)];
        for (int j = 0; j < f.n_func(e); ++j) {
            const auto k = static_cast<std::size_t>(first + j);
            for (int d = f.first_fvar[k]; d < f.first_fvar[k + 1]; ++d) {
                const int flag = f.var_flag[static_cast<std::size_t>(d)];
                const int number = f.var_number[static_cast<std::size_t>(d)];
                std::size_t i = 0;
                while (i < kinds.size() && kinds[i].kind != flag) ++i;
                if (i == kinds.size()) halt({line(class_name, "::map_jacobian:"), line("   var_flag = ", flag)});
                jacobian_map::one_kind& one = entry[i];
                one.map[static_cast<std::size_t>(j * one.n_var + number)] = static_cast<int>(one.func.size());
                one.func.push_back(j);
                one.var.push_back(number);
            }
        }
    }
    return result;
}
