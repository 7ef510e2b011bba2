// composite_models.cpp -- the ebemodel and ecemodel lines of composites.
#include "base/halt.h"
#include "library/check_limit.h"
#include "library/composite/composite_entry.h"

const model_line* model_lines::find(std::string_view name) const {
    for (const model_line& m : list)
        if (m.name == name) return &m;
    return nullptr;
}

model_line model_line_of(const words& w) {
    model_line m{w.str(2), w.str(4), {}, {}};
    for (int i = 5; i + 1 < w.size(); i += 2) {
        m.key.add(w[i]);
        m.value.add(w[i + 1]);
    }
    return m;
}

void read_model_line(const entry_in_work& entry, half_in_work& half, const words& w, bool of_element) {
    const composite_form& form = entry.form;
    const char* half_word = half.half_word;
    const std::string keyword = line(of_element ? form.basic.begin : form.lib.begin, "model");
    const std::string tag = line(form.model_tag, of_element ? form.basic.begin : form.lib.begin);
    std::string check = of_element ? line("  Check ", keyword, " (", half_word, ") statement. Halting...")
                                   : line("  Check ", keyword, " statement (", half_word, "). Halting...");
    if (!form.has_halves)
        check = line("  Check ", keyword, of_element ? " statement. Halting..." : " statement  Halting...");
    if (w.size() <= 6) halt({line(form.lib.class_name, ": nw_s1=", w.size(), " is too small."), check});
    expect_word(w, 1, "name", "expect name here, ", entry.library_words());
    expect_word(w, 3, "type", "expect type here, ", entry.library_words());
    if (w.size() % 2 == 0)
        halt({line(form.lib.class_name, ": k_rem is not zero (", tag, ", ", half_word, "). Halting...")});

    model_lines& lines = of_element ? half.element_models : half.call_models;
    const model_line& m = lines.list.emplace_back(model_line_of(w));
    lines.n_key_chr += m.key.n_chr();
    lines.n_value_chr += m.value.n_chr();
    const auto chars_text = [&](const char* which) {
        return of_element ? line(form.lib.class_name, ": n_ttl", tag, which, " (", half_word, ") is too large!")
                          : line(form.lib.class_name, ": n_ttl", tag, which, " is too large (", half_word, ").");
    };
    check_limit(static_cast<int>(lines.list.size()), form.limit.max_models,
                of_element ? line(form.lib.class_name, ": ", tag, " is too large (", half_word, ").")
                           : line(form.lib.class_name, ": ", tag, " is too large!"));
    check_limit(lines.n_key_chr, form.limit.max_model_chars, chars_text("prm1chr"));
    check_limit(lines.n_value_chr, form.limit.max_model_chars, chars_text("prm2chr"));
}
