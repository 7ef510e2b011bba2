#include "library/composite/composite_code.h"

#include <utility>
#include <vector>

#include "base/halt.h"
#include "library/generate/generate.h"

namespace {
bool is_electrical(const composite_form& form) { return number_of(form.lib) == lib_eels; }

std::string function_name(const composite_form& form, const composite_library& lib, int e) {
    return line(lib.list.entry[e], "_acp", form.lib.begin[0]);
}

std::vector<std::string> names_of(const word_list& list, int e) {
    std::vector<std::string> names;
    for (int j = 0; j < list.count(e); ++j) names.emplace_back(list.word(e, j));
    return names;
}

void write_lines(std::ostream& out, const text_file& text, const std::string& path, std::size_t from, std::size_t to) {
    if (from < to) out << "#line " << from + 1 << " \"" << path << "\"\n";
    for (std::size_t i = from; i < to; ++i) out << text.lines[i] << '\n';
}
}  // namespace

composite_code find_composite_code(const text_file& text, const composite_form& form) {
    composite_code code;
    const std::size_t n = text.lines.size();
    const auto word = [&](std::size_t i) { return word_first_1(text.lines[i]); };
    std::size_t i = 0;
    while (i < n && word(i) != "C:" && word(i) != "fortran:") ++i;
    if (i == n || parse_line_2(text.lines[i]).size() > 1) return code;
    code.begin = i;
    for (++i; i < n && word(i) != "endC" && word(i) != "endfortran"; ++i) {
        if (word(i) == "variables:") code.variables = i;
        if (word(i) == "source:") code.source = i;
        code.has_code |= !word(i).empty() && !word(i).starts_with("//");
    }
    code.end = i;
    if (!code.has_code) return code;
    if (code.variables == 0) halt({line(form.lib.class_name, ": variables: not found. Halting...")});
    if (code.source < code.variables) halt({line(form.lib.class_name, ": (source:) not found. Halting...")});
    return code;
}

void check_composite_code(const composite_code& code, const composite_library& lib, int e) {
    const auto k = static_cast<std::size_t>(e);
    const bool asks = lib.flag.compute_rparms[k] || lib.flag.compute_acp[k];
    if (asks && !code.has_code)
        halt({line("tarnel_generate: ", lib.list.entry[e], " has no source for its parameters between C: and endC."),
              "  Halting..."});
    if (!asks && code.has_code)
        halt({line("tarnel_generate: nothing calls the source of ", lib.list.entry[e], ":"),
              "  compute_rparms=yes or compute_acp=yes is missing. Halting..."});
}

text_file without_code(const text_file& text, const composite_code& code) {
    if (!code.has_code) return text;
    text_file short_text = text;
    const auto first = short_text.lines.begin();
    short_text.lines.erase(first + static_cast<std::ptrdiff_t>(code.begin) + 1,
                           first + static_cast<std::ptrdiff_t>(code.end) + 1);
    short_text.lines[code.begin] = "C: compiled";
    return short_text;
}

void write_composite_function(std::ostream& out, const text_file& text, const std::string& path,
                              const composite_code& code, const composite_form& form, const composite_library& lib,
                              int e) {
    std::vector<std::string> arguments = {"int* iparm", "char** sparm", "double* rparm", "double* rparm_ac"};
    if (is_electrical(form)) arguments.push_back("double* outvar");
    arguments.push_back("flags_class* flags");
    arguments.push_back("double time_given");
    const library_lists& list = lib.list;
    const std::string marked_names = line("#line 1 \"names of ", path, "\"\n");
    write_chr_array_2(out, line("void ", function_name(form, lib, e), "("), arguments, "   ", ") {");
    write_lines(out, text, path, code.variables + 1, code.source);
    out << marked_names;
    for (const auto& [type, names] :
         {std::pair{"int", &list.iprm.name}, std::pair{"char*", &list.sprm.name}, std::pair{"double", &list.rprm.name}})
        write_chr_array_2(out, line("   ", type, " "), names_of(*names, e), "     ", ";");
    write_list_3(out, "ni_", names_of(list.iprm.name, e));
    write_list_3(out, "nstr_", names_of(list.sprm.name, e));
    write_list_3(out, "nr_", names_of(list.rprm.name, e));
    if (is_electrical(form)) write_list_3(out, "nov_", names_of(lib.ov.name, e));
    write_lines(out, text, path, code.source + 1, code.end);
    out << marked_names << "   return;\n}\n";
}

std::string composite_registration_row(const composite_form& form, const composite_library& lib, int e) {
    const std::string name = function_name(form, lib, e);
    return line("   {\"", lib.list.entry[e], "\", ", is_electrical(form) ? name : line("without_outvar<", name, ">"),
                ", ", lib.list.iprm.count(e), ", ", lib.list.sprm.count(e), ", ", lib.list.rprm.count(e), ", ",
                is_electrical(form) ? lib.ov.count(e) : 0, "},\n");
}

void write_composite_registration(std::ostream& out, const composite_form& form, const std::string& rows, int n_rows) {
    out << "extern const composite_registration " << form.lib.begin << "_functions[] = {\n"
        << (n_rows > 0 ? rows : std::string("   {\"\", nullptr, 0, 0, 0, 0},\n")) << "};\nextern const int n_"
        << form.lib.begin << "_functions = " << n_rows << ";\n";
}
