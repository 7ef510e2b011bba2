#include "deck/circuit_file.h"

#include <algorithm>
#include <unordered_set>

#include "base/halt.h"

namespace {

constexpr int max_solve = 20;   // later blocks are dropped without a word
constexpr int max_output = 50;  // later output statements stay unclaimed

struct solve_kind {
    std::string_view word;
    int circuit_file::*count;
};
constexpr solve_kind solve_kinds[] = {
    {"dc", &circuit_file::n_dc},           {"ac", &circuit_file::n_ac},     {"ssw", &circuit_file::n_ssw},
    {"startup", &circuit_file::n_startup}, {"trns", &circuit_file::n_trns},
};

// The two sides that can have a reference and other ground words.
struct ground_form {
    std::string_view refnode, element, type;
    const char *no_type, *no_node;
    std::string circuit_file::*ref;
    std::vector<std::string> circuit_file::*ground;
};
const ground_form ground_forms[] = {
    {"refnode", "eelement", "ground_dummy", "circuit_file (ece ground_dummy): type not found. Halting..",
     "circuit_file (ece ground_dummy): c not found. Halting..", &circuit_file::ref_node, &circuit_file::ground_dummy},
    {"x_refnode", "xelement", "e_ground_dummy", "circuit_file (xce ground_dummy): type not found. Halting..",
     "circuit_file (xce ground_dummy): c not found. Halting..", &circuit_file::x_ref_node,
     &circuit_file::x_ground_dummy},
};

int section(const file_chr& text, int start, int end, std::string_view word, const char* message) {
    const int i = file_find_string_4(text, start, end, word);
    if (i == -1) halt({message});
    return i;
}

void find_solve_blocks(circuit_file& cf) {
    int i = file_find_string_4(cf.text, cf.n_end_cct, cf.n_end_cf, "begin_solve");
    while (i != -1) {
        const int end = section(cf.text, i, cf.n_end_cf, "end_solve", "circuit_file: end_solve not found. Halting...");
        if (cf.n_solve < max_solve) {
            cf.n_begin_solve.push_back(i);
            cf.n_end_solve.push_back(end);
            ++cf.n_solve;
        }
        i = file_find_string_4(cf.text, end, cf.n_end_cf, "begin_solve");
    }
}

void count_solve_types(circuit_file& cf) {
    for (std::size_t b = 0; b < cf.n_begin_solve.size(); ++b) {
        const int i = file_find_string_4(cf.text, cf.n_begin_solve[b], cf.n_end_solve[b], "solve_type");
        if (i == -1) continue;
        const std::string type = file_get_word(cf.text, i, 1);
        for (const solve_kind& k : solve_kinds)
            if (k.word == type) ++(cf.*k.count);
    }
}

// Only the first of equal words is marked, so a word given twice in a statement is refused.
void read_output_statement(circuit_file& cf, int i_line) {
    std::vector<char> marks(static_cast<std::size_t>(cf.text.n_words(i_line)), 0);
    for (const output_word& w : output_words())
        if (file_find_string_5(cf.text, i_line, w.word, marks)) cf.output.*w.flag = true;
    for (int j = 1; j < cf.text.n_words(i_line); ++j)
        if (!marks[static_cast<std::size_t>(j)]) {
            at_word(j);
            halt({"circuit_file: check output statement in the circuit block.",
                  line("  The word <", cf.text.word(i_line, j), "> is not recognised."), "  Halting..."});
        }
}

void read_output(circuit_file& cf) {
    int n = 0;
    for (int i = cf.n_begin_cct; i < cf.n_end_cct && n < max_output; ++i) {
        if (!cf.text.begins(i, "output")) continue;
        reading(i, [&] { read_output_statement(cf, i); });
        cf.mark(i);
        ++n;
    }
}

void read_ground(circuit_file& cf, const ground_form& form) {
    const int i_ref = file_find_string_4(cf.text, cf.n_begin_cct, cf.n_end_cct, form.refnode);
    if (i_ref == -1) return;
    if (!reading(i_ref, [&] { cf.*form.ref = file_get_word(cf.text, i_ref, 1); })) return;

    std::unordered_set<std::string> seen{cf.*form.ref};
    for (int i = cf.n_begin_cct; i < cf.n_end_cct; ++i) {
        if (!cf.text.begins(i, form.element)) continue;
        reading(i, [&] {
            const words w = circuit_line(cf.text, i);
            const int i_type = find_word_EO_2(w, "type", odd_words, form.no_type);
            if (pick_word_1(w, i_type + 1) != form.type) return;
            const int i_node = find_word_EO_2(w, "c", odd_words, form.no_node);
            const std::string node = pick_word_1(w, i_node + 1);
            if (seen.insert(node).second) (cf.*form.ground).push_back(node);
        });
    }
}

}  // namespace

const std::vector<output_word>& output_words() {
    using f = output_flags;
    static const std::vector<output_word> all = {
        {"input", &f::input},   {"glbl", &f::glbl},         {"ebes", &f::ebes}, {"hebes", &f::hebes},
        {"dbes", &f::dbes},     {"hebes_ac", &f::hebes_ac}, {"gbes", &f::gbes}, {"xbes", &f::xbes},
        {"ebac", &f::ebac},     {"gbac", &f::gbac},         {"xbac", &f::xbac}, {"eels", &f::eels},
        {"heels", &f::heels},   {"dels", &f::dels},         {"gels", &f::gels}, {"xels", &f::xels},
        {"gmes", &f::gmes},     {"ecem", &f::ecem},         {"dcem", &f::dcem}, {"gcem", &f::gcem},
        {"gmem", &f::gmem},     {"ect", &f::ect},           {"gct", &f::gct},   {"dct", &f::dct},
        {"xct", &f::xct},       {"ebce", &f::ebce},         {"gbce", &f::gbce}, {"xbce", &f::xbce},
        {"ov", &f::ov},         {"kcl", &f::kcl},           {"smat", &f::smat}, {"debug", &f::debug},
        {"error1", &f::error1}, {"error2", &f::error2},     {"ssw", &f::ssw},   {"x_kcl", &f::x_kcl},
        {"x_bvd", &f::x_bvd},   {"x_smat", &f::x_smat},
    };
    return all;
}

int circuit_file::first_unclaimed(int begin, int end) const {
    for (int i = begin + 1; i < end; ++i)
        if (!used[static_cast<std::size_t>(i)]) return i;
    return -1;
}

circuit_file circuit_file_of(file_chr text) {
    circuit_file cf;
    cf.text = std::move(text);
    cf.n_end_cf = section(cf.text, 0, cf.text.n_lines(), "end_cf", "circuit_file: end_cf not found. Halting...");
    cf.used.assign(static_cast<std::size_t>(cf.n_end_cf) + 1, 0);
    if (!cf.text.begins(0, "title:")) halt({"circuit_file: title: not found. Halting..."});
    // A missing end_circuit is told in the words of a missing begin_circuit.
    const char* no_circuit = "circuit_file: begin_circuit not found. Halting...";
    cf.n_begin_cct = section(cf.text, 0, cf.n_end_cf, "begin_circuit", no_circuit);
    cf.n_end_cct = section(cf.text, cf.n_begin_cct, cf.n_end_cf, "end_circuit", no_circuit);
    find_solve_blocks(cf);
    count_solve_types(cf);
    read_output_and_grounds(cf);
    return cf;
}

void read_output_and_grounds(circuit_file& cf) {
    read_output(cf);
    for (const ground_form& form : ground_forms) read_ground(cf, form);
}

circuit_file read_circuit_file(const std::string& path, int max_lines) {
    return circuit_file_of(read_file_chr(path, max_lines));
}
