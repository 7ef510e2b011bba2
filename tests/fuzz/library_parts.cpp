#include "library_parts.h"

#include <algorithm>
#include <sstream>

#include "base/halt.h"
#include "library/basic/basic_reader.h"
#include "library/composite/composite_reader.h"

std::array<std::string_view, 3> cut_parts(std::string_view text) {
    constexpr std::string_view between_parts = "====\n";
    std::array<std::string_view, 3> parts;
    for (std::string_view& part : parts) {
        const std::size_t end = text.find(between_parts);
        part = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + between_parts.size());
    }
    return parts;
}

void read_elements(std::string_view text, const basic_form& form, const basic_library& otherwise, basic_library& lib) {
    if (text.empty()) {
        lib = otherwise;
        return;
    }
    text_file file = text_file_of(text);
    glue_text glue;
    read_library_text(file, form, &glue, lib);
    std::ostringstream out;
    for (const int mode : {1, 2}) write_ebes_c_1(out, form, lib, mode);
    write_registration(out, form, lib);
    file.at = 0;
    basic_library without_glue;
    read_library_text(file, form, nullptr, without_glue);
}

void read_composites_of(std::string_view text, const composite_form& form, const basic_library& basic,
                        const basic_library& basic_ac, composite_library& lib) {
    text_file file = text_file_of(text);
    read_composites(file, form, basic, basic_ac, lib);
}

void refuse_paths(const basic_library& basic, const composite_library& composites) {
    auto is_path = [](const std::string& s) { return s.find('/') != std::string::npos; };
    for (const std::vector<std::string>* all :
         {&basic.list.sprm.dflt, &composites.list.sprm.dflt, &composites.be.sprm.data})
        if (std::any_of(all->begin(), all->end(), is_path)) halt({"fuzz: a path. Halting..."});
}
