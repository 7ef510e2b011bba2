#include "tnl/deck/library_split.h"

#include <algorithm>

namespace cli {

namespace {

// First word of a physical line, with the separators of all readers.
std::string_view first_word(std::string_view line) {
    const std::size_t a = line.find_first_not_of(" \t=\r\n");
    if (a == std::string_view::npos) return {};
    return line.substr(a, line.find_first_of(" \t=\r\n", a) - a);
}

bool is_basic(const library_form& form) { return form.kind != library_kind::composite; }

// The logical lines of an entry's text, as far as the first n of them are complete. A code section of a basic entry
// runs to the entry's end, that of a composite to endC, unless its text is compiled elsewhere.
entry_lines lines_until(std::string_view text, const library_form& form, std::size_t n) {
    entry_lines lines;
    bool code = false;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string line(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::string_view w0 = first_word(line);
        if (code) {
            if (w0 == "endC" || w0 == "endfortran") code = false;
            continue;
        }
        if (line.ends_with('\r')) line.pop_back();
        remove_space_pre(line);
        if (line.starts_with('#') || check_blank_line(line)) continue;
        if (line.starts_with('+') && !lines.empty()) {
            const words more = parse_line_2(std::string_view(line).substr(1));
            for (int i = 0; i < more.size(); ++i) lines.back().add(more[i]);
            continue;
        }
        if (lines.size() == n) break;
        words w = parse_line_2(line);
        if (w.empty()) continue;
        if (w[0] == "C:" || w[0] == "fortran:") code = is_basic(form) || !(w.size() > 1 && w[1] == "compiled");
        lines.push_back(std::move(w));
    }
    return lines;
}

// The value behind a key; keys stand at every second position from first on.
std::string value_of(const words& w, int first, std::string_view key) {
    for (int i = first; i + 1 < w.size(); i += 2)
        if (w[i] == key) return w.str(i + 1);
    return {};
}

// The type of the model statement of this name in the entry, e.g. "ebemodel name M type T ...".
std::string model_type(const entry_lines& lines, std::string_view keyword, std::string_view name) {
    for (const words& w : lines)
        if (w.size() > 4 && w[0] == keyword && w[2] == name) return w.str(4);
    return {};
}

}  // namespace

std::vector<library_entry> split_library(std::string_view text, const library_form& form) {
    std::vector<library_entry> entries;
    bool inside = false;
    while (!text.empty()) {
        const std::size_t n = std::min(text.find('\n'), text.size() - 1) + 1;
        const std::string_view line = text.substr(0, n);
        text.remove_prefix(n);
        const std::string_view w0 = first_word(line);
        if (!inside && w0 == form.begin) {
            entries.emplace_back();
            inside = true;
        }
        if (!inside) continue;
        entries.back().text += line;
        if (w0 == form.end) inside = false;
    }
    for (library_entry& entry : entries) {
        if (!entry.text.ends_with('\n')) entry.text += '\n';
        const entry_lines head = lines_until(entry.text, form, 1);
        if (!head.empty() && head[0].size() > 2 && head[0][1] == "name") entry.name = head[0].str(2);
    }
    return entries;
}

entry_lines lines_of(const library_entry& entry, const library_form& form) {
    return lines_until(entry.text, form, entry.text.size());
}

std::vector<entry_name> used_by(const entry_lines& lines) {
    std::vector<entry_name> used;
    for (std::size_t i = 1; i < lines.size(); ++i) {  // line 0 is the entry's own
        const words& w = lines[i];
        const int library = find_library(&library_form::call, w[0]);
        if (library < 0) continue;
        const library_form& form = library_forms[library];
        std::string name;
        if (!is_basic(form)) {
            name = w.size() > 1 ? w.str(1) : std::string();
        } else if (name = value_of(w, 1, "type"); name.empty()) {
            name = model_type(lines, form.submodel, value_of(w, 1, "model"));
        }
        const entry_name use{library, name};
        if (!name.empty() && std::find(used.begin(), used.end(), use) == used.end()) used.push_back(use);
    }
    return used;
}

std::vector<name_and_value> pairs_of(const entry_lines& lines, std::string_view keyword) {
    std::vector<name_and_value> pairs;
    for (const words& w : lines)
        if (w[0] == keyword)
            for (int i = 1; i + 1 < w.size(); i += 2) pairs.push_back({w.str(i), w.str(i + 1)});
    return pairs;
}

}  // namespace cli
