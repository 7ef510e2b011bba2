#include "library/generate/generate.h"

#include <fstream>

#include "base/halt.h"
#include "library/check_limit.h"
#include "library/code_section.h"
#include "library/entry_counts.h"

namespace {

constexpr std::size_t columns = 80;

std::vector<std::string> words_of(const basic_library& lib, const declared_list& d, int e) {
    std::vector<std::string> items;
    std::visit(
        [&](auto member) {
            const auto& list = lib.list.*member;
            for (int j = 0; j < list.count(e); ++j) items.emplace_back(list.word(e, j));
        },
        d.member);
    return items;
}

std::string function_name(const library_form& form, const basic_library& lib, int e) {
    return form.glue.prefix + lib.list.entry.str(e);
}

std::vector<std::string> parameters(const glue_form& glue) {
    std::vector<std::string> items;
    for (const argument& a : glue.arguments) items.push_back(line(a.type, " ", a.name));
    return items;
}

void write_prototypes(std::ostream& out, const library_form& form, const basic_library& lib,
                      std::string_view attributes = "") {
    for (int e = 0; e < lib.n(); ++e)
        write_chr_array_2(out, line(attributes, "void ", function_name(form, lib, e), "("), parameters(form.glue),
                          "   ", ");");
}

// The object for derivatives, and for small-signal forms of elements that of the operating point.
void write_jac_includes(std::ostream& out, const glue_form& glue) {
    bool bias = false;
    for (const argument& a : glue.arguments) bias |= std::string_view(a.type) == "ebes1_class*";
    if (bias) out << "#include \"ebes1_class.h\"\n";
    if (std::string_view(glue.jac_header) != "ebes1_class.h") out << "#include \"" << glue.jac_header << "\"\n";
}

void write_includes(std::ostream& out, const glue_form& glue) {
    for (const char* system : {"math.h", "iostream", "cstring", "cstdlib", "fstream", "sstream"})
        out << "#include <" << system << ">\n";
    out << "#include \"enum1.h\"\n";
    write_jac_includes(out, glue);
    for (const char* ours : {"math_cnst_class.h", "flags_class.h", "dp_class.h"})
        out << "#include \"" << ours << "\"\n";
}

std::string joined_counts(const std::vector<int>& counts) {
    std::string all;
    for (int n : counts) all += (all.empty() ? "" : ", ") + std::to_string(n);
    return all;
}

void open_for_writing(std::ofstream& out, const std::string& path) {
    out.open(path);
    if (!out) halt({line("generate: cannot write ", path, ". Halting...")});
}

}  // namespace

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

void write_list_4(std::ostream& out, const std::string& prefix, const basic_library& lib, int e) {
    const int first = lib.func.first_f[static_cast<std::size_t>(e)];
    for (int j = 0; j < lib.func.n_func(e); ++j)
        out << "   const int " << prefix << lib.func.name[first + j] << '=' << j << ";\n";
}

void write_ebes_c(std::ostream& out, const library_form& form, const basic_library& lib, int e, int flag_write) {
    const glue_form& glue = form.glue;
    switch (flag_write) {
        case 0:
            if (lib.n_written == 0) write_includes(out, glue);
            return;
        case 1:
            write_chr_array_2(out, line("void ", function_name(form, lib, e), "("), parameters(glue), "   ", ") {");
            return;
        case 2:
            for (const declared_list& d : glue.declared)
                write_chr_array_2(out, line("   ", d.type, " "), words_of(lib, d, e), "     ", ";");
            for (const declared_list& d : glue.numbered) write_list_3(out, d.prefix, words_of(lib, d, e));
            write_list_4(out, "ne_", lib, e);
            return;
        case 3:
            out << "   return;\n}\n";
            return;
        default:
            halt({"write_ebes_c: wrong value for flag_write. Halting..."});
    }
}

void copy_code(text_file& file, const library_form& form, glue_text& glue, basic_library& lib) {
    const int e = lib.n() - 1;
    std::string prototypes, variables, source;
    if (form.glue.has_prototypes) {
        words w;
        next_line(file, w, form.rule);
        expect_word(w, 0, "prototypes:", "expect prototypes: here, check ", form.keyword, " library");
    }
    if (!pass_lines(file, "variables:", "variables:", &prototypes))
        halt({line(form.class_name, ": variables: not found. Halting...")});
    if (!pass_lines(file, "source:", "source:", &variables))
        halt({line(form.class_name, ": (source:) not found. Halting...")});
    if (!pass_lines(file, "endC", "endfortran", &source))
        halt({line(form.class_name, ": endfortran/endC not found. Halting...")});
    write_ebes_c(glue.out, form, lib, e, 0);
    if (form.glue.has_prototypes) glue.out << prototypes;
    write_ebes_c(glue.out, form, lib, e, 1);
    glue.out << variables;
    write_ebes_c(glue.out, form, lib, e, 2);
    glue.out << source;
    write_ebes_c(glue.out, form, lib, e, 3);
    ++lib.n_written;
}

void write_ebes_c_1(std::ostream& out, const library_form& form, const basic_library& lib, int mode) {
    const glue_form& glue = form.glue;
    if (lib.n() > form.max_entries) halt({"write_ebes_c_1: n is too large. Halting..."});
    for (const char* header : {"math_cnst_class.h", "flags_class.h", "dp_class.h"})
        out << "#include \"" << header << "\"\n";
    write_jac_includes(out, glue);
    write_prototypes(out, form, lib);

    const bool through_list = mode == 2;
    out << "void " << glue.dispatcher << "(const int " << (through_list ? "i_element" : glue.selector) << ",\n";
    write_chr_array_2(out, "   ", parameters(glue), "   ", ") {");
    if (through_list) {
        out << "   int i_global;\n";
        out << "   i_global = flags->" << glue.map << "[i_element];\n";
    }
    out << "   switch (" << (through_list ? "i_global" : glue.selector) << ") {\n";
    std::vector<std::string> names;
    for (const argument& a : glue.arguments) names.emplace_back(a.name);
    for (int e = 0; e < lib.n(); ++e) {
        out << "     case " << e << ":\n";
        write_chr_array_2(out, line("       ", function_name(form, lib, e), "("), names, "         ", ");");
        out << "       break;\n";
    }
    out << "   }\n   return;\n}\n";
}

void write_registration(std::ostream& out, const library_form& form, const basic_library& lib) {
    const std::string row = form.glue.registration;
    out << "#include \"models/registration.h\"\n";
    // Where rows of units are called, a function's body stands in the loop over them.
    const char* run = form.glue.run;
    write_prototypes(out, form, lib, run ? "inline __attribute__((always_inline)) " : "");
    if (run) out << "#include \"sub" << form.glue.file_word << ".cpp\"\n";
    out << "const " << row << ' ' << row << "s[] = {\n";
    for (int e = 0; e < lib.n(); ++e) {
        const std::string function = function_name(form, lib, e);
        out << "   {\"" << lib.list.entry[e] << "\", " << function << ", {" << joined_counts(entry_counts(form, lib, e))
            << '}';
        if (run) out << ", " << run << '<' << function << '>';
        out << "},\n";
    }
    if (lib.n() == 0) out << "   {\"\", nullptr, {}},\n";
    out << "};\nconst int n_" << row << "s = " << lib.n() << ";\n";
}

void write_glue_files(const std::string& path, const library_form& form, int mode, const glue_text& glue,
                      const basic_library& lib) {
    const std::string folder = path.substr(0, path.find_last_of('/') + 1);
    std::ofstream sub, get;
    open_for_writing(sub, line(folder, "sub", form.glue.file_word, ".cpp"));
    if (lib.n_written > 0)
        sub << glue.out.str();
    else
        sub << "void dummy_sub" << form.glue.file_word << "(){return;}\n";
    open_for_writing(get, line(folder, "get", form.glue.file_word, ".cpp"));
    write_ebes_c_1(get, form, lib, mode);
}
