// generate_main.cpp -- the build program behind the models: joins element files into libraries, and lets the library
// reader write the sources of the model functions and their registration.
//   tarnel_generate [--by-number] <source folder> <library folder> <element file>...
// The source folder gets .tnlaux/ with the libraries as written, and sub*.cpp, get*.cpp, reg*.cpp beside them. The
// library folder gets the libraries of the program: the same entries with their source sections replaced by
// "C: compiled", and the list files. Dispatch goes through the list of all names, or with --by-number by the numbers of
// the library alone.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>

#include "base/halt.h"
#include "library/basic/basic_reader.h"
#include "library/code_section.h"
#include "library/composite/composite_code.h"
#include "library/composite/composite_reader.h"
#include "library/generate/generate.h"

namespace {

namespace fs = std::filesystem;

// One element file: a single entry of the name of the file.
struct element_file {
    std::string name, group, path;  // group: the folder that holds the file; path: as given
    text_file text;
    std::vector<std::string> calls;  // composites that it calls
};

element_file read_element_file(const fs::path& path, const library_form& f) {
    element_file file;
    file.name = path.stem();
    file.group = path.parent_path().filename();
    file.path = path;
    file.text = open_text_file(path, "tarnel_generate");
    words w;
    text_file text = file.text;
    const bool begun = next_line(text, w);
    if (!begun || w.size() < 3 || w[0] != f.begin || w[2] != file.name)
        halt({line("tarnel_generate: file ", path.string()), line("  must begin with ", f.begin, " name=", file.name),
              "  Halting..."});
    for (const std::string& l : file.text.lines) {
        const words one = parse_line_2(l);
        if (one.size() > 1 && one[0].starts_with("call")) file.calls.push_back(one.str(1));
    }
    return file;
}

// By name, but every composite behind those that it calls.
void order(std::vector<element_file>& files) {
    std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    std::map<std::string, std::size_t> by_name;
    for (std::size_t i = 0; i < files.size(); ++i)
        if (!by_name.emplace(files[i].name, i).second)
            halt({line("tarnel_generate: element ", files[i].name, " has two files. Halting...")});
    std::vector<std::size_t> sequence;
    std::vector<char> state(files.size(), 0);  // 1: being entered, 2: entered
    const auto enter = [&](const auto& self, std::size_t i) -> void {
        if (state[i] == 2) return;
        if (state[i] == 1) halt({line("tarnel_generate: ", files[i].name, " calls itself. Halting...")});
        state[i] = 1;
        for (const std::string& c : files[i].calls)
            if (const auto found = by_name.find(c); found != by_name.end()) self(self, found->second);
        state[i] = 2;
        sequence.push_back(i);
    };
    for (std::size_t i = 0; i < files.size(); ++i) enter(enter, i);
    std::vector<element_file> ordered;
    for (const std::size_t i : sequence) ordered.push_back(std::move(files[i]));
    files = std::move(ordered);
}

// The file that is being read, told behind the text of a stop.
class file_in_work final : public flushed_at_halt {
public:
    std::string path;
    void flush_now() override {
        if (!path.empty()) std::cout << "  in " << path << '\n';
    }
};

// Tells the compiler where the lines of the source sections come from, so that its messages name the element file. The
// copying of sections drops blank lines and comments, so what follows one is told anew.
class line_marks {
public:
    line_marks(std::ostream& out, const std::string& path) : out_(out), path_(path) {}
    void before(std::string_view text, std::string_view word, std::size_t number) {
        if (word == "source:" || word == "endC" || word == "endfortran")
            out_ << "#line 1 \"names of " << path_ << "\"\n";
        const bool is_code = !word.empty() && !word.starts_with("//");
        if (inside_ && is_code && number != next_ && !continues_)
            out_ << "#line " << number << " \"" << path_ << "\"\n";
        if (is_code) next_ = number + 1;
        continues_ = is_code && text.ends_with('\\');
        if (word == "prototypes:" || word == "variables:" || word == "source:") inside_ = true, next_ = 0;
    }

private:
    std::ostream& out_;
    const std::string& path_;
    std::size_t next_ = 0;  // line that the compiler believes to be at
    bool inside_ = false, continues_ = false;
};

// The text as lines; with `strip` the source sections of basic entries are left out, else they are marked. A group that
// is not empty goes behind the entry's first line, as a comment for readers that show what there is.
void write_text(std::ostream& out, const element_file& element, const std::string& end_word, bool strip,
                const std::string& group) {
    bool in_code = false, told = group.empty(), marked = false;
    line_marks marks(out, element.path);
    for (std::size_t i = 0; i < element.text.lines.size(); ++i) {
        const std::string& l = element.text.lines[i];
        const std::string_view word = word_first_1(l);
        if (in_code && word != end_word) continue;
        if (marked) marks.before(l, word, i + 1);
        marked = !strip && (word == "C:" || (marked && word != "endC" && word != "endfortran"));
        in_code = strip && (word == "C:" || word == "fortran:");
        out << (in_code ? std::string("C: compiled") : l) << '\n';
        if (!told && !word.empty() && !word.starts_with('#')) {
            out << "#@ " << group << '\n';
            told = true;
        }
    }
    out << '\n';
}

std::ofstream open_output(const fs::path& path) {
    std::ofstream out(path);
    if (!out) halt({line("tarnel_generate: cannot write ", path.string(), ". Halting...")});
    return out;
}

void write_library(const fs::path& path, const library_form& f, const std::vector<element_file>& files, bool strip) {
    std::ofstream out = open_output(path);
    const composite_form* composites = composite_form_of(number_of(f));
    for (const element_file& file : files)
        if (f.kind != library_kind::composite) {
            write_text(out, file, std::string(f.end), strip, "");
        } else {
            element_file shown = file;
            if (strip && composites != nullptr)
                shown.text = without_code(file.text, find_composite_code(file.text, *composites));
            write_text(out, shown, std::string(f.end), false, file.group);
        }
}

// The functions of the composites that compute parameters, and their table.
class composite_sources {
public:
    composite_sources(const fs::path& path, const composite_form& form) : out_(open_output(path)), form_(form) {
        out_ << "#include <math.h>\n#include <cstring>\n#include \"flags_class.h\"\n#include \"halt.h\"\n"
                "#include \"models/composite_functions.h\"\n";
    }
    // The newest entry of lib, which was read from the file.
    void add(const element_file& file, const composite_library& lib) {
        const int e = lib.n() - 1;
        const composite_code code = find_composite_code(file.text, form_);
        check_composite_code(code, lib, e);
        if (!code.has_code) return;
        write_composite_function(out_, file.text, file.path, code, form_, lib, e);
        rows_ += composite_registration_row(form_, lib, e);
        ++n_;
    }
    void finish() { write_composite_registration(out_, form_, rows_, n_); }

private:
    std::ofstream out_;
    const composite_form& form_;
    std::string rows_;
    int n_ = 0;
};

// A composite and all that it calls, callees first.
text_file with_callees(const std::vector<element_file>& files, std::size_t i) {
    std::set<std::string> wanted{files[i].name};
    text_file text;
    std::vector<const element_file*> list;
    for (std::size_t k = i + 1; k-- > 0;)
        if (wanted.contains(files[k].name)) {
            wanted.insert(files[k].calls.begin(), files[k].calls.end());
            list.push_back(&files[k]);
        }
    for (auto f = list.rbegin(); f != list.rend(); ++f)
        text.lines.insert(text.lines.end(), (*f)->text.lines.begin(), (*f)->text.lines.end());
    return text;
}

}  // namespace

int main(int n_arg, char** arg) {
    const bool by_number = n_arg > 1 && std::string_view(arg[1]) == "--by-number";
    if (by_number) {
        --n_arg;
        ++arg;
    }
    if (n_arg < 3) {
        std::cout << "usage: tarnel_generate [--by-number] <source folder> <library folder> <element file>...\n";
        return 1;
    }
    const fs::path sources = fs::path(arg[1]) / ".tnlaux", libraries = arg[2];
    fs::create_directories(sources);
    fs::create_directories(libraries);

    file_in_work now;
    std::map<int, basic_library> basic;  // by number of the library
    for (int library = 0; library < n_libraries; ++library) {
        const library_form& f = library_forms[library];
        const basic_form* form = basic_form_of(library);
        const composite_form* composites = composite_form_of(library);
        std::vector<element_file> files;
        for (int i = 3; i < n_arg; ++i)
            if (fs::path(arg[i]).extension() == f.suffix) {
                now.path = arg[i];
                files.push_back(read_element_file(arg[i], f));
            }
        now.path.clear();
        order(files);
        if (form)  // each by itself first: a fault of the whole library has no name
            for (const element_file& file : files) {
                now.path = file.path;
                text_file text = file.text;
                glue_text glue;
                basic_library lib;
                read_library_text(text, *form, &glue, lib);
            }
        if (composites)
            for (const element_file& file : files) {
                now.path = file.path;
                find_composite_code(file.text, *composites);
            }
        now.path.clear();
        write_library(sources / f.file, f, files, false);
        write_library(libraries / f.file, f, files, true);
        if (!f.list.empty()) {
            std::ofstream list = open_output(libraries / f.list);
            for (const element_file& file : files) list << '.' << file.name << '\n';
        }
        if (form) {
            basic_library lib;
            read_library(sources / f.file, *form, int_T, constants_class{1, by_number ? 1 : 2}, lib);
            std::ofstream reg = open_output(sources / line("reg", file_word(*form), ".cpp"));
            write_registration(reg, *form, lib);
            basic[library] = std::move(lib);
        }
        // A library of all composites would be larger than a working folder may hold: each is read by itself.
        if (composites && !composites->has_code)
            for (std::size_t i = 0; i < files.size(); ++i) {
                now.path = files[i].path;
                text_file text = with_callees(files, i);
                composite_library lib;
                const basic_library& elements = basic[find_library(&library_form::name, composites->basic.name)];
                read_composites(text, *composites, elements, elements, lib);
                now.path.clear();
            }
        if (composites && composites->has_code) {
            composite_sources made(sources / line("reg", composites->lib.begin, ".cpp"), *composites);
            for (std::size_t i = 0; i < files.size(); ++i) {
                now.path = files[i].path;
                text_file text = with_callees(files, i);
                composite_library lib;
                read_composites(text, *composites, basic[find_library(&library_form::name, composites->basic.name)],
                                basic[find_library(&library_form::name, composites->basic_ac.name)], lib);
                made.add(files[i], lib);
                now.path.clear();
            }
            made.finish();
        }
    }
    return 0;
}
