#include "library/generate/generate.h"

#include <cctype>
#include <fstream>

#include "base/halt.h"
#include "library/check_limit.h"
#include "library/code_section.h"
#include "library/entry_counts.h"

namespace {

constexpr std::size_t columns = 80;

using L = library_lists;

std::vector<std::string> words_of(const basic_library& lib, const code_list& d, int e) {
    std::vector<std::string> items;
    std::visit(
        [&](auto member) {
            const auto& list = lib.list.*member;
            if constexpr (requires { list.count(e); })
                for (int j = 0; j < list.count(e); ++j) items.emplace_back(list.word(e, j));
        },
        d.member);
    return items;
}

// Digital elements have no derivatives, and name their nodes by two lists.
bool is_digital(const basic_form& form) { return form.functions.empty(); }

// Inputs and outputs are numbered from 0 on, each by themselves.
void write_digital_nodes(std::ostream& out, const basic_library& lib, int e) {
    const int n_input = lib.list.n_input[static_cast<std::size_t>(e)];
    std::vector<std::string> inputs, outputs;
    for (int j = 0; j < lib.list.dgtl.count(e); ++j)
        (j < n_input ? inputs : outputs).emplace_back(lib.list.dgtl.word(e, j));
    write_list_3(out, "nip_", inputs);
    write_list_3(out, "nop_", outputs);
}

bool is_small_signal(const basic_form& form) { return form.lib.kind == library_kind::small_signal; }

// "e_r", "e_ac_r"
std::string function_name(const basic_form& form, const basic_library& lib, int e) {
    return line(form.lib.begin[0], is_small_signal(form) ? "_ac_" : "_", lib.list.entry[e]);
}

std::vector<std::string> parameters(const basic_form& form) {
    std::vector<std::string> items;
    for (const argument& a : form.arguments) items.push_back(line(a.type, " ", a.name));
    return items;
}

void write_prototypes(std::ostream& out, const basic_form& form, const basic_library& lib,
                      std::string_view attributes = "") {
    for (int e = 0; e < lib.n(); ++e)
        write_chr_array_2(out, line(attributes, "void ", function_name(form, lib, e), "("), parameters(form), "   ",
                          ");");
}

// The object for derivatives, and for small-signal forms of elements that of the operating point.
void write_jac_includes(std::ostream& out, const basic_form& form) {
    bool bias = false;
    for (const argument& a : form.arguments) bias |= std::string_view(a.type) == "ebes1_class*";
    if (bias) out << "#include \"ebes1_class.h\"\n";
    if (form.lib.name != "ebes" && !is_digital(form)) out << "#include \"" << form.lib.name << "1_class.h\"\n";
}

void write_includes(std::ostream& out, const basic_form& form) {
    for (const char* system : {"math.h", "iostream", "cstring", "cstdlib", "fstream", "sstream"})
        out << "#include <" << system << ">\n";
    out << "#include \"enum1.h\"\n";
    write_jac_includes(out, form);
    for (const char* ours : {"math_cnst_class.h", "flags_class.h", "dp_class.h"})
        out << "#include \"" << ours << "\"\n";
}

std::string joined_counts(const std::vector<int>& counts) {
    std::string all;
    for (int n : counts) all += (all.empty() ? "" : ", ") + std::to_string(n);
    return all;
}

bool is_word_char(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// Whether a name stands in a text of code, comments included.
bool has_word(const std::string& text, const std::string& name) {
    for (std::size_t i = text.find(name); i != std::string::npos; i = text.find(name, i + 1)) {
        const std::size_t end = i + name.size();
        if ((i == 0 || !is_word_char(text[i - 1])) && (end == text.size() || !is_word_char(text[end]))) return true;
    }
    return false;
}

// An entry whose source is not there may ask for anything.
bool asks_frequency(const basic_library& lib, int e) {
    const auto i = static_cast<std::size_t>(e);
    return i >= lib.asks_frequency.size() || lib.asks_frequency[i];
}

// Of explicit blocks: how many variables a call gathers, and how many it writes back. States move otherwise.
std::string ports(const basic_form& form, const basic_library& lib, int e) {
    if (&form != &xbes_form) return "";
    const int n = lib.list.xvr.count(e), n_input = lib.list.n_input[static_cast<std::size_t>(e)];
    const auto i = static_cast<std::size_t>(e);
    const bool is_state = !lib.flag.evaluate[i] && lib.flag.integrate[i];
    return line(", ", n, ", ", is_state ? n : n_input);
}

void open_for_writing(std::ofstream& out, const std::string& path) {
    out.open(path);
    if (!out) halt({line("generate: cannot write ", path, ". Halting...")});
}

}  // namespace

std::string file_word(const basic_form& form) {
    return std::string(is_small_signal(form) ? form.lib.name : form.lib.begin);
}

void write_chr_array_2(std::ostream& out, const std::string& head, const std::vector<std::string>& items,
                       const std::string& indent, const std::string& tail) {
    if (items.empty()) return;
    std::string text = head;
    bool first_of_line = true;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::string item = items[i] + (i + 1 < items.size() ? "," : tail);
        if (!first_of_line && text.size() + 1 + item.size() > columns) {
            out << text << '\n';
            text = indent;
            first_of_line = true;
        }
        if (!first_of_line) text += ' ';
        text += item;
        first_of_line = false;
    }
    out << text << '\n';
}

void write_list_3(std::ostream& out, const std::string& prefix, const std::vector<std::string>& items) {
    for (std::size_t i = 0; i < items.size(); ++i) out << "   const int " << prefix << items[i] << '=' << i << ";\n";
}

void write_list_4(std::ostream& out, const std::string& prefix, const function_table& func, int e) {
    const int first = func.first_f[static_cast<std::size_t>(e)];
    for (int j = 0; j < func.n_func(e); ++j)
        out << "   const int " << prefix << func.name[first + j] << '=' << j << ";\n";
}

void write_ebes_c(std::ostream& out, const basic_form& form, const basic_library& lib, int e, int flag_write) {
    switch (flag_write) {
        case 0:
            if (lib.n_written == 0) write_includes(out, form);
            return;
        case 1:
            write_chr_array_2(out, line("void ", function_name(form, lib, e), "("), parameters(form), "   ", ") {");
            return;
        case 2:
            for (const code_list& d : form.declared)
                write_chr_array_2(out, line("   ", d.type, " "), words_of(lib, d, e), "     ", ";");
            for (const code_list& d : form.numbered) write_list_3(out, d.prefix, words_of(lib, d, e));
            if (is_digital(form)) write_digital_nodes(out, lib, e);
            for (const function_form& f : form.functions) write_list_4(out, f.code_prefix, lib.*f.table, e);
            return;
        case 3:
            out << "   return;\n}\n";
            return;
        default:
            halt({"write_ebes_c: wrong value for flag_write. Halting..."});
    }
}

void copy_code(text_file& file, const basic_form& form, glue_text& glue, basic_library& lib) {
    const int e = lib.n() - 1;
    std::string prototypes, variables, source;
    if (form.has_prototypes) {
        words w;
        next_line(file, w, form.rule);
        expect_word(w, 0, "prototypes:", "expect prototypes: here, check ", form.lib.begin, " library");
    }
    if (!pass_lines(file, "variables:", "variables:", &prototypes))
        halt({line(form.lib.class_name, ": variables: not found. Halting...")});
    if (!pass_lines(file, "source:", "source:", &variables))
        halt({line(form.lib.class_name, ": (source:) not found. Halting...")});
    if (!pass_lines(file, "endC", "endfortran", &source))
        halt({line(form.lib.class_name, ": endfortran/endC not found. Halting...")});
    lib.asks_frequency.resize(static_cast<std::size_t>(e) + 1, true);
    lib.asks_frequency.back() = has_word(variables + source, "freq");
    write_ebes_c(glue.out, form, lib, e, 0);
    if (form.has_prototypes) glue.out << prototypes;
    write_ebes_c(glue.out, form, lib, e, 1);
    glue.out << variables;
    write_ebes_c(glue.out, form, lib, e, 2);
    glue.out << source;
    write_ebes_c(glue.out, form, lib, e, 3);
    ++lib.n_written;
}

void write_ebes_c_1(std::ostream& out, const basic_form& form, const basic_library& lib, int mode) {
    if (lib.n() > form.max_entries) halt({"write_ebes_c_1: n is too large. Halting..."});
    for (const char* header : {"math_cnst_class.h", "flags_class.h", "dp_class.h"})
        out << "#include \"" << header << "\"\n";
    write_jac_includes(out, form);
    write_prototypes(out, form, lib);

    const bool through_list = mode == 2;
    const std::string selector = through_list ? "i_element" : line("i_", form.lib.name);
    out << "void get_" << form.lib.begin << "(const int " << selector << ",\n";
    write_chr_array_2(out, "   ", parameters(form), "   ", ") {");
    if (through_list) {
        out << "   int i_global;\n";
        out << "   i_global = flags->map_global_" << form.lib.suffix.substr(1) << "[i_element];\n";
    }
    out << "   switch (" << (through_list ? "i_global" : selector) << ") {\n";
    std::vector<std::string> names;
    for (const argument& a : form.arguments) names.emplace_back(a.name);
    for (int e = 0; e < lib.n(); ++e) {
        out << "     case " << e << ":\n";
        write_chr_array_2(out, line("       ", function_name(form, lib, e), "("), names, "         ", ");");
        out << "       break;\n";
    }
    out << "   }\n   return;\n}\n";
}

void write_registration(std::ostream& out, const basic_form& form, const basic_library& lib) {
    const std::string row = line(form.lib.begin, "_registration");
    out << "#include \"models/registration.h\"\n";
    if (&form == &ebes_form || &form == &ebac_form) out << "#include \"models/devices.h\"\n";
    // Where rows of units are called, a function's body stands in the loop over them.
    write_prototypes(out, form, lib, "inline __attribute__((always_inline)) ");
    out << "#include \"sub" << file_word(form) << ".cpp\"\n";
    out << "const " << row << ' ' << row << "s[] = {\n";
    for (int e = 0; e < lib.n(); ++e) {
        const std::string function = function_name(form, lib, e);
        out << "   {\"" << lib.list.entry[e] << "\", " << function << ", {" << joined_counts(entry_counts(form, lib, e))
            << '}';
        if (form.has_runs) out << ", run_" << form.lib.begin << '<' << function << ports(form, lib, e) << '>';
        if (is_small_signal(form)) out << ", " << (asks_frequency(lib, e) ? "true" : "false");
        out << "},\n";
    }
    if (lib.n() == 0) out << "   {\"\", nullptr, {}},\n";
    out << "};\nconst int n_" << row << "s = " << lib.n() << ";\n";
}

void write_glue_files(const std::string& path, const basic_form& form, int mode, const glue_text& glue,
                      const basic_library& lib) {
    const std::string folder = path.substr(0, path.find_last_of('/') + 1);
    std::ofstream sub, get;
    open_for_writing(sub, line(folder, "sub", file_word(form), ".cpp"));
    if (lib.n_written > 0)
        sub << glue.out.str();
    else
        sub << "void dummy_sub" << file_word(form) << "(){return;}\n";
    open_for_writing(get, line(folder, "get", file_word(form), ".cpp"));
    write_ebes_c_1(get, form, lib, mode);
}
