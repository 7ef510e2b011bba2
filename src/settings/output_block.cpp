#include "settings/output_block.h"

#include <algorithm>
#include <limits>
#include <variant>

#include "base/at.h"
#include "base/math_cnst_class.h"
#include "base/memory.h"
#include "settings/solve_words.h"

namespace {
// A word that asks for a file of its own kind; it stands alone in `variables:`.
struct reserved_word {
    std::string_view word;
    int solve_outputs::*i_file;
    int content;
};
constexpr reserved_word reserved_words[] = {
    {"solution", &solve_outputs::i_file_solution, out_solution},
    {"solution_ac", &solve_outputs::i_file_solution_ac, out_solution_ac},
    {"parms", &solve_outputs::i_file_parms, out_parms},
    {"all_nodes", &solve_outputs::i_file_all_nodes, out_rows},
    {"all_outvars", &solve_outputs::i_file_all_outvars, out_rows},
};
const reserved_word* find_reserved(std::string_view word) {
    for (const reserved_word& r : reserved_words)
        if (r.word == word) return &r;
    return nullptr;
}

// Options of the filename statement, and keys of control: with the types of block in which they mean something.
struct file_option {
    std::string_view word;
    std::variant<int out_file::*, bool out_file::*> member;
};
constexpr file_option file_options[] = {
    {"limit_lines", &out_file::limit_lines}, {"append", &out_file::append},   {"output_hz", &out_file::output_hz},
    {"fourier", &out_file::fourier},         {"nyquist", &out_file::nyquist},
};

struct control_key {
    std::string_view word;
    truefalse solve_class::*type_a;  // the key is read in blocks of these types
    truefalse solve_class::*type_b;
    double out_file::*value;
    bool out_file::*given;  // null: none
};
constexpr control_key control_keys[] = {
    {"fixed_interval", &solve_class::trns, &solve_class::ssw, &out_file::fixed_interval,
     &out_file::flag_fixed_interval},
    {"out_tstart", &solve_class::trns, &solve_class::ssw, &out_file::out_tstart, nullptr},
    {"out_tend", &solve_class::trns, &solve_class::ssw, &out_file::out_tend, nullptr},
    {"min_phase", &solve_class::ac, &solve_class::ac, &out_file::min_phase, &out_file::flag_min_phase},
    {"max_phase", &solve_class::ac, &solve_class::ac, &out_file::max_phase, &out_file::flag_max_phase},
    {"delta_phase", &solve_class::ac, &solve_class::ac, &out_file::delta_phase, nullptr},
};

void set_option(int& to, const gprm_class& gprm, std::string_view word) { to = gprm.gprm_int_1(word); }
void set_option(bool& to, const gprm_class&, std::string_view word) { to = assign_flag_1(word); }

void read_filename(out_file& file, const gprm_class& gprm, const words& w) {
    file.path = pick_word_1(w, 1);
    for (const file_option& o : file_options)
        if (const int key = find_word_EO_1(w, o.word, even_words); key >= 2)
            std::visit([&](auto member) { set_option(file.*member, gprm, value_of(w, key)); }, o.member);
    if (const int key = find_word_EO_1(w, "sweep_format", even_words); key >= 2) {
        const std::string format = value_of(w, key);
        if (format != "normal" && format != "reverse")
            halt({"solve_class: something wrong with", "   sweep_format option.", "   Halting..."});
        file.sweep_format = format == "normal" ? 1 : 0;
    }
}

constexpr int max_harmonics = std::numeric_limits<int>::max() - 1;  // harmonic 0 counts too

void read_control(out_file& file, const solve_class& slv, const gprm_class& gprm, const words& w) {
    for (int i = 1; i + 1 < w.size(); i += 2) {
        at_word(i + 1);
        if (w[i] == "n_fourier") {
            const int n = gprm.gprm_int_1(w[i + 1]);
            if (n < 0 || n > max_harmonics)
                halt({line("solve_class: n_fourier must be from 0 to ", max_harmonics, ". Halting...")});
            file.n_fourier = n + 1;
        }
        for (const control_key& k : control_keys) {
            if (k.word != w[i] || !(slv.*k.type_a || slv.*k.type_b)) continue;
            file.*k.value = gprm.gprm_double_1(w[i + 1]);
            if (k.given != nullptr) file.*k.given = true;
        }
    }
}

out_var of_ov(const ov_class& ov, int i, int prefix, std::string_view name) {
    return {std::string(name), prefix, i, ov.kind[at(i)], ov.index[at(i)], ov.instance[at(i)]};
}

// The statements of sweeps may stand behind the output block, so their item words are looked up in the deck itself.
// What stands inside an output block is not read as a sweep.
int find_sweep_word(const block_text& block, std::string_view statement, std::string_view word) {
    int k = 0;
    bool in_output = false;
    for (int i = block.begin + 1; i < block.end; ++i) {
        const file_chr& text = block.cf.text;
        if (text.begins(i, "begin_output")) in_output = true;
        if (text.begins(i, "end_output")) in_output = false;
        if (in_output || !text.begins(i, statement)) continue;
        if (text.n_words(i) > 1 && text.word(i, 1) == word) return k;
        ++k;
    }
    return -1;
}

out_var find_variable(const circuit& c, const block_text& block, std::string_view word) {
    if (const int i = c.ov.find(word); i >= 0) return of_ov(c.ov, i, prefix_none, word);
    out_var v{std::string(word)};
    if (v.index = c.gprm.find_greal(word); v.index >= 0) {
        v.prefix = prefix_global;
        return v;
    }
    if (v.index = find_sweep_word(block, "vary_parm", word); v.index >= 0) {
        v.prefix = prefix_vary;
        return v;
    }
    if (v.index = find_sweep_word(block, "vary_parm_sync", word); v.index >= 0) {
        v.prefix = prefix_vary_sync;
        return v;
    }
    const cut_word cut = extract_l_r_2(word, "_of_");
    const std::string which = line("   Check this outvar: ", word);
    if (!cut.found) halt({"solve_class: _of_ not found.", which, "   Halting..."});
    constexpr const char* problem = "solve_class: syntax problem in output variables?";
    if (cut.left == "glbl") halt({problem, which, "   glbl_of_xxx is not allowed.", "   Halting..."});
    const int prefix = cut.left == "phase" ? prefix_phase : cut.left == "mag" ? prefix_mag : prefix_none;
    const int i = c.ov.find(cut.right);
    if (prefix == prefix_none || i < 0) halt({problem, which, "   Halting..."});
    return of_ov(c.ov, i, prefix, word);
}

bool is_postproc(int kind) { return kind == ov_postproc || kind == ov_postproc_ac; }

// One column for each name of a domain but its reference.
void add_all(std::vector<out_var>& vars, const name_table& names, int kind) {
    for (int k = 0; k < names.n(); ++k)
        if (k != names.ref) vars.push_back({names.name[at(k)], prefix_none, -1, kind, names.to_eu[at(k)], -1});
}

// A file of all nodes: values of general and explicit variables stand behind the voltages.
std::vector<out_var> all_nodes(const circuit& c) {
    std::vector<out_var> vars;
    if (c.cct.flag_purely_digital) {
        add_all(vars, c.cct.dct, ov_dvar);
        return vars;
    }
    add_all(vars, c.cct.ect, ov_nodev);
    add_all(vars, c.cct.gct, ov_var);
    add_all(vars, c.cct.xct, ov_xvar);
    return vars;
}

// All analog variables of the deck; the digital ones where there are no others.
std::vector<out_var> all_outvars(const circuit& c) {
    std::vector<out_var> analog, digital;
    for (int i = 0; i < c.ov.n_ov(); ++i) {
        const int kind = c.ov.kind[at(i)];
        if (is_small_signal(kind) || is_postproc(kind)) continue;
        (is_digital(kind) ? digital : analog).push_back(of_ov(c.ov, i, prefix_none, c.ov.name[at(i)]));
    }
    return analog.empty() ? digital : analog;
}

// Results of post-processing come once a block, so no other variable fits beside them.
void check_postproc(out_file& file, const solve_class& slv) {
    for (const out_var& v : file.vars) {
        if (v.kind == ov_postproc) file.postproc = true;
        if (v.kind == ov_postproc_ac) file.postproc_ac = true;
    }
    if (!file.postproc && !file.postproc_ac) return;
    const int wanted = file.postproc ? ov_postproc : ov_postproc_ac;
    for (const out_var& v : file.vars)
        if (v.kind != wanted)
            halt({"solve_class: postproc variables cannot stand beside", "   others in an output file. Halting..."});
    if (file.postproc && !slv.trns && !slv.ssw)
        halt({"solve_class: postproc is allowed only", "   for trns and SSW. Halting..."});
    if (file.postproc_ac && !slv.ac) halt({"solve_class: postproc_ac is allowed only", "   for AC. Halting..."});
}
}  // namespace

std::vector<output_block> find_output_blocks(solve_class& slv, const block_text& block) {
    std::vector<output_block> blocks;
    for (int i = block.find(block.begin + 1, block.end, "begin_output"); i >= 0;
         i = block.find(blocks.back().end + 1, block.end, "begin_output")) {
        output_block b;
        b.begin = i;
        b.end = block.find(i + 1, block.end, "end_output");
        const bool ends = reading(i, [&] {
            if (b.end < 0) halt({"solve_class: end_output not found. Halting..."});
        });
        if (!ends) b.end = block.end;
        b.variables = block.find(i + 1, b.end, "variables:");
        const int n = b.variables < 0 ? 0 : block.cf.text.n_words(b.variables) - 1;
        reading(b.variables < 0 ? i : b.variables, [&] {
            if (n < 1) halt({"Output block does not have any variables?", "   Halting.."});
            for (int k = 1; k <= n; ++k) {
                const reserved_word* r = find_reserved(block.cf.text.word(b.variables, k));
                if (r == nullptr) continue;
                at_word(k);
                if (n > 1) halt({line("Check syntax of ", r->word, " output block.")});
                if (slv.out.*r->i_file >= 0) halt({line("Only one ", r->word, " file is allowed as output.")});
                slv.out.*r->i_file = static_cast<int>(blocks.size());
            }
        });
        blocks.push_back(b);
    }
    return blocks;
}

void read_output_block(solve_class& slv, const circuit& c, const block_text& block, const output_block& b) {
    const file_chr& text = block.cf.text;
    for (int i = b.begin; i <= b.end; ++i) block.cf.mark(i);

    out_file file;
    file.statement = b.begin;
    const int at_name = block.find(b.begin + 1, b.end, "filename");
    reading(at_name < 0 ? b.begin : at_name, [&] {
        if (at_name < 0) halt({"solve_class: filename not found in", "  an output block. Halting..."});
        read_filename(file, c.gprm, solve_line(text, at_name));
    });
    for (int i = b.begin + 1; i < b.end; ++i)
        if (text.begins(i, "control:")) reading(i, [&] { read_control(file, slv, c.gprm, solve_line(text, i)); });
    if (file.fourier) file.flag_fixed_interval = false;

    words w;
    if (b.variables >= 0) reading(b.variables, [&] { w = solve_line(text, b.variables); });
    if (const reserved_word* r = w.size() == 2 ? find_reserved(w[1]) : nullptr) {
        file.content = r->content;
        file.all_nodes = r->word == "all_nodes";
        file.all_outvars = r->word == "all_outvars";
        if (file.all_nodes) file.vars = all_nodes(c);
        if (file.all_outvars) file.vars = all_outvars(c);
    } else {
        for (int i = 1; i < w.size(); ++i)
            reading(b.variables, [&] {
                at_word(i);
                file.vars.push_back(find_variable(c, block, w[i]));
            });
    }
    if (!file.vars.empty() && file.vars[0].prefix <= prefix_mag && is_digital(file.vars[0].kind))
        file.data_type = out_digital;
    reading(b.variables, [&] { check_postproc(file, slv); });
    slv.out.files.push_back(std::move(file));
}

// ---- tests of the whole block ----
namespace {
void find_harmonics(out_file& file) {
    file.period_fourier = file.out_tend - file.out_tstart;
    for (int k = 0; k < file.n_fourier; ++k)
        file.omega_fourier[at(k)] = 2.0 * k * math_cnst_class{}.pi / file.period_fourier;
}

void check_fourier(out_file& file, const solve_class& slv) {
    if (!slv.trns && !slv.ssw) halt({"solve_class: Fourier is allowed only", "   for trns and SSW. Halting..."});
    if (file.data_type != out_analog || file.postproc)
        halt({"solve_class: wrong data type for Fourier", "   variable. Check output blocks. Halting..."});
    if (file.out_tend - file.out_tstart == 0.0)
        halt({"solve_class: period_fourier = 0?", "   Check Fourier variables. Halting..."});
    for (const out_var& v : file.vars)
        if (v.prefix != prefix_none)
            halt({"solve_class: cannot have a prefix", "   for an outvar in fourier analysis.", "   Halting..."});
    // A frequency for each harmonic, and two coefficients of each variable.
    const double n_numbers = double(file.n_fourier) * (1.0 + 2.0 * double(file.vars.size()));
    if (!fits_in_memory(n_numbers * sizeof(double)))
        halt({"solve_class: too many harmonics and variables", "   in a Fourier file. Halting..."});
    file.omega_fourier.resize(at(file.n_fourier));
    find_harmonics(file);
}

void check_nyquist(const out_file& file, const solve_class& slv) {
    constexpr const char* only = "solve_class: Nyquist is allowed only";
    constexpr const char* head = "solve_class (Nyquist):";
    if (!slv.ac) halt({only, "   for AC. Halting..."});
    if (file.vars.size() != 2) halt({head, "  more than two variables in the output file?"});
    if (file.data_type != out_analog) halt({only, "  when data type is ANLG. Halting..."});
    if (file.vars[0].i_ov != file.vars[1].i_ov) halt({head, "  i_ov1 is not equal to i_ov2 in the output file."});
    if (file.vars[0].prefix != prefix_phase) halt({head, "  first outvar is not of type phase in the output file."});
    if (file.vars[1].prefix != prefix_mag) halt({head, "  second outvar is not of type mag in the output file."});
}
}  // namespace

void check_files(solve_class& slv, const flags_class& flags) {
    for (out_file& file : slv.out.files) {
        if (file.out_tstart == not_given_time) file.out_tstart = flags.t_start;
        file.until_end = file.out_tend == not_given_time;
        if (file.until_end) file.out_tend = flags.t_end + slv.method.time_epsilon;
        reading(file.statement, [&] {
            if (slv.ac && file.flag_min_phase && file.flag_max_phase)
                halt({"solve_class: cannot specify both min-phase", "   and max-phase in output blocks. Halting..."});
            if (file.fourier) check_fourier(file, slv);
            if (file.nyquist) check_nyquist(file, slv);
        });
    }
}

void end_files_at(solve_class& slv, double t_end) {
    for (out_file& file : slv.out.files) {
        if (!file.until_end) continue;
        file.out_tend = t_end + slv.method.time_epsilon;
        if (file.fourier) find_harmonics(file);
    }
}

void add_output_words(std::vector<std::string_view>& list) {
    for (std::string_view word : {"begin_output", "end_output", "filename", "variables:", "control:", "sweep_format",
                                  "normal", "reverse", "n_fourier", "phase_of_", "mag_of_"})
        list.push_back(word);
    for (const reserved_word& r : reserved_words) list.push_back(r.word);
    for (const file_option& o : file_options) list.push_back(o.word);
    for (const control_key& k : control_keys) list.push_back(k.word);
}

std::vector<std::string_view> file_option_words() {
    std::vector<std::string_view> list = {"sweep_format"};
    for (const file_option& o : file_options) list.push_back(o.word);
    return list;
}

std::vector<std::string_view> control_words() {
    std::vector<std::string_view> list = {"n_fourier"};
    for (const control_key& k : control_keys) list.push_back(k.word);
    return list;
}

std::vector<std::string_view> reserved_output_words() {
    std::vector<std::string_view> list;
    for (const reserved_word& r : reserved_words) list.push_back(r.word);
    return list;
}
