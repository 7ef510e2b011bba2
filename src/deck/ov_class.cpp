#include "deck/ov_class.h"

#include "base/halt.h"

int ov_class::find(std::string_view word) const { return find_word_6(name, word); }

ov_class read_ov(circuit_file& cf, const gprm_class& gprm) {
    ov_class ov;
    for (int i = cf.n_begin_cct; i < cf.n_end_cct; ++i) {
        if (!cf.text.begins(i, "outvar:")) continue;
        cf.mark(i);
        words w;
        reading(i, [&] { w = circuit_line(cf.text, i); });
        for (int j = 1; j + 1 < w.size(); j += 2) {
            const std::string name = w.str(j);
            if (gprm.find_greal(name) != -1) {
                say("ov_class: an outvar name is clashing");
                say("   with a global (real) parameter name.");
                say("   outvar name is " + name);
            }
            cut_word cut;
            const bool good = reading(i, [&] {
                at_word(j + 1);
                cut = extract_l_r_1(w[j + 1], "_of_", "ov_class: _of_ not found, check circuit file");
            });
            if (!good) continue;
            ov.name.push_back(name);
            ov.left.push_back(std::move(cut.left));
            ov.right.push_back(std::move(cut.right));
            ov.statement.push_back(i);
        }
    }
    const std::size_t n = ov.name.size();
    ov.kind.assign(n, ov_none);
    ov.index.assign(n, -1);
    ov.instance.assign(n, -1);
    ov.unit.assign(n, -1);
    ov.usage.assign(n, 0);
    return ov;
}
