#include <cmath>
#include <cstdlib>

#include "base/text_file.h"
#include "deck/gprm_class.h"
#include "targets.h"

namespace {
// A small deck in which the word is a global parameter behind two others.
bool reads_as_global(const std::string& word) {
    return runs_through([&] {
        const circuit_file cf =
            circuit_file_of(file_chr_of("title: t\ngreal a=2 b=-0.5\ngreal c=" + word +
                                        "\ngreal d=$((c)*(a))\nbegin_circuit\nend_circuit\nend_cf\n"));
        gprm_class g = read_gprm(cf);
        if (g.greal.size() != g.dependents.size()) std::abort();
        g.expr_1();
    });
}

// A number that one reader takes must not stop another one that knows the same forms.
void read_number(const std::string& word) {
    double value = 0, again = 0;
    const bool is_number = is_double(word, value);
    const bool reads = runs_through([&] { again = chr_to_double(word); });
    if (word.find_first_of(" \t") == std::string::npos && reads != (is_number && std::isfinite(value))) std::abort();
    if (reads && again != value) std::abort();
    runs_through([&] { chr_to_double_1(word); });
    // Numbers of data files read as the C library reads them.
    char* end = nullptr;
    const double expected = std::strtod(word.c_str(), &end);
    const bool takes = runs_through([&] { value = chr_to_double_4(word); });
    const bool whole = !word.empty() && end == word.c_str() + word.size();
    if (takes != (whole && std::isfinite(expected))) std::abort();
    if (takes && value != expected) std::abort();
    runs_through([&] { chr_to_int(word); });
    runs_through([&] { chr_to_double(real_spice_to_tarnel(word)); });
    runs_through([&] { strcpy_chk(word, 50); });
}

void cut(const std::string& word) {
    for (const char* key : {"_of_", "(", "$", ""}) {
        runs_through([&] { extract_l_r_1(word, key, "no key"); });
        runs_through([&] { extract_l_r_3a(word, key); });
    }
    runs_through([&] { extract_middle_1(word, '"'); });
    runs_through([&] { extract_brckt_1(word); });
    extract_brckt_2(word);
    runs_through([&] { operation_code(expr_eval_1(word)); });
    std::string text = word;
    remove_space_pre(text);
    remove_space_post(text);
}
}  // namespace

bool fuzz_expression(std::string_view text) {
    bool all = true;
    for (const std::string& word : text_file_of(text).lines) {
        read_number(word);
        cut(word);
        all = reads_as_global(word) && all;
    }
    return all;
}
