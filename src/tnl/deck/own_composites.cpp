#include "tnl/deck/own_composites.h"

#include <algorithm>
#include <map>

#include "library/composite/mixed_form.h"

namespace cli {

namespace {

constexpr std::size_t most_entries = 1000;  // calls nest no deeper

std::size_t at(int i) { return static_cast<std::size_t>(i); }

// Words of a physical line behind those that are there, each with its place.
void add_line(std::string_view text, std::size_t from, const deck_source::place& p, own_line& line) {
    for_each_word(text.substr(from), [&](std::string_view word) {
        line.w.add(word);
        line.at.push_back({p.file, p.line, static_cast<int>(word.data() - text.data())});
    });
}

struct block_text {
    std::vector<own_line> lines;
    std::string docs;             // comment lines for people, as they stand
    std::vector<own_place> code;  // lines of text in a code section
};

block_text read_block(const deck_source& source, const library_block& block) {
    block_text text;
    bool in_code = false;
    for (const deck_source::place& p : block.lines) {
        const std::string& whole = source.files[at(p.file)].lines[at(p.line)];
        const std::string_view line = without_comment(whole);
        const std::size_t first = line.find_first_not_of(" \t");
        if (first == std::string_view::npos) continue;
        const std::string_view w0 = word_first_1(line);
        if (in_code) {
            in_code = w0 != "endC" && w0 != "endfortran";
            if (in_code && line[first] != '#') text.code.push_back({p.file, p.line, static_cast<int>(first)});
            continue;
        }
        if (line[first] == '#') {
            if (first + 1 < line.size() && std::string_view(":>.").find(line[first + 1]) != std::string_view::npos)
                text.docs += std::string(whole, first) + "\n";
            continue;
        }
        if (line[first] == '+' && !text.lines.empty()) {
            add_line(line, first + 1, p, text.lines.back());
            continue;
        }
        own_line next;
        add_line(line, first, p, next);
        if (next.w.empty()) continue;
        in_code = w0 == "C:" || w0 == "fortran:";
        if (in_code && next.w.size() > 1) {
            text.code.push_back(next.at[1]);
            in_code = next.w[1] != "compiled";
        }
        text.lines.push_back(std::move(next));
    }
    return text;
}

// Where the lines of an entry belong.
struct sorted_lines {
    std::map<std::string_view, std::vector<const own_line*>> head;  // by keyword
    std::vector<const own_line*> models, body;
};

class builder {
public:
    builder(const deck_source& source, own_composites& own) : source_(source), own_(own) {}

    void add(const library_block& block) {
        const library_form& names = library_forms[block.library];
        const block_text text = read_block(source_, block);
        const own_line& first = text.lines.front();
        const std::string begin(names.begin), end(names.end);
        if (names.statement.empty()) {
            fault(first.at[0], "basic-element",
                  "a basic element (" + begin + ") cannot be brought by a deck: its function is compiled",
                  "add it to the program as a file in models/, or build a composite of the elements that there are");
            return;
        }
        const std::optional<entry_shape> shape = shape_of(block.library);
        if (!shape) {
            fault(first.at[0], "composite", "this version has no composites of the kind " + begin);
            return;
        }
        if (!block.ended) {
            fault(first.at[0], "composite", "this " + begin + " has no " + end,
                  "an entry goes from " + begin + " name=NAME to " + end);
            return;
        }
        if (first.w.size() < 3 || first.w[1] != "name") {
            fault(first.at[0], "composite", "a composite needs its name", begin + " name=NAME");
            return;
        }
        own_entry entry{block.library, {first.w.str(2), {}}, text.lines};
        const auto same = [&](const own_entry& e) {
            return e.library == block.library && e.entry.name == entry.entry.name;
        };
        if (const auto other = std::find_if(own_.entries.begin(), own_.entries.end(), same);
            other != own_.entries.end()) {
            const record_place before = place_of(source_, other->lines[0].at[0]);
            fault(first.at[2], "named-twice",
                  "the " + begin + " " + entry.entry.name + " is there already: " + before.file + ":" +
                      std::to_string(before.line));
            return;
        }
        if (!text.code.empty())
            fault(text.code.front(), "code", "a composite of a deck has no code of its own: nobody compiles it",
                  "leave C: and endC empty, or away; rparms_derived: computes one parameter from others");
        for (int j = 3; j + 1 < first.w.size(); ++j)
            for (const std::string_view flag : {"compute_rparms", "compute_acp", "compute_noisep"})
                if (first.w[j] == flag && first.w[j + 1] == "yes")
                    fault(first.at[at(j)], "code",
                          std::string(flag) + " needs a function that is compiled with the program");
        entry.entry.text = complete(entry, *shape, text.docs);
        own_.entries.push_back(std::move(entry));
    }

private:
    void fault(const own_place& where, const char* code, std::string message, std::string advice = {}) {
        own_.faults.push_back({where, code, std::move(message), std::move(advice)});
    }

    std::string complete(const own_entry& entry, const entry_shape& shape, const std::string& docs) {
        sorted_lines dc, ac;
        bool in_ac = false;
        for (std::size_t i = 1; i < entry.lines.size(); ++i) {
            const own_line& l = entry.lines[i];
            const std::string_view w0 = l.w[0];
            if (w0 == library_forms[entry.library].end) {
                if (l.w.size() > 1) fault(l.at[1], "composite", "nothing stands behind " + std::string(w0));
                continue;
            }
            if (w0 == "begin_ac" || w0 == "end_ac") in_ac = w0 == "begin_ac";
            if (w0 == "begin_ac" || w0 == "end_ac" || w0 == "begin_dc" || w0 == "end_dc" || w0 == "C:" ||
                w0 == "fortran:")
                continue;
            sorted_lines& half = in_ac ? ac : dc;
            const auto is_head = [&](std::span<const header_line> lines) {
                return std::any_of(lines.begin(), lines.end(), [&](const header_line& h) { return w0 == h.keyword; });
            };
            if (is_head(in_ac ? shape.ac_lines : shape.dc_lines))
                half.head[w0].push_back(&l);
            else if (has_word(shape.models, w0))
                half.models.push_back(&l);
            else if (has_word(in_ac ? shape.body_ac : shape.body, w0))
                half.body.push_back(&l);
            else
                unknown_line(l, entry.library, shape, in_ac);
        }
        std::string text = joined(entry.lines[0].w) + "\n" + docs;
        write_half(dc, shape.dc_lines, shape.has_halves ? "end_dc" : "", text);
        if (shape.has_code) text += "C:\nendC\n";
        if (shape.has_halves) write_half(ac, shape.ac_lines, "end_ac", text);
        return text + std::string(library_forms[entry.library].end) + "\n";
    }

    static bool has_word(const std::vector<std::string>& list, std::string_view word) {
        return std::find(list.begin(), list.end(), word) != list.end();
    }

    static void write_half(const sorted_lines& half, std::span<const header_line> lines, const char* end,
                           std::string& text) {
        for (const header_line& h : lines) {
            text += h.keyword;
            if (const auto given = half.head.find(h.keyword); given != half.head.end())
                for (const own_line* l : given->second)  // a list may be given in several lines
                    for (int j = 1; j < l->w.size(); ++j) text += " " + l->w.str(j);
            text += "\n";
        }
        for (const auto& part : {half.models, half.body})
            for (const own_line* l : part) text += joined(l->w) + "\n";
        if (*end) text += std::string(end) + "\n";
    }

    void unknown_line(const own_line& l, int library, const entry_shape& shape, bool in_ac) {
        const std::string word = l.w.str(0);
        std::string all;
        for (const header_line& h : in_ac ? shape.ac_lines : shape.dc_lines) all += h.keyword + std::string(" ");
        for (const std::string& b : in_ac ? shape.body_ac : shape.body) all += b + " ";
        all.pop_back();
        const bool of_ac = std::any_of(shape.ac_lines.begin(), shape.ac_lines.end(),
                                       [&](const header_line& h) { return word == h.keyword; }) ||
                           has_word(shape.body_ac, word);
        fault(l.at[0], "composite",
              "no line of this " + std::string(library_forms[library].begin) + " begins with " + word,
              of_ac && !in_ac ? word + " stands between begin_ac and end_ac" : "lines begin with: " + all);
    }

    const deck_source& source_;
    own_composites& own_;
};

// A call that leads back to its caller, told once for each ring.
class ring_search {
public:
    explicit ring_search(own_composites& own) : own_(own), state_(own.entries.size(), unseen) {}
    void run() {
        for (std::size_t i = 0; i < own_.entries.size(); ++i) visit(i);
    }

private:
    enum state : char { unseen, open, done };

    void visit(std::size_t i) {
        if (state_[i] != unseen) return;
        state_[i] = open;
        path_.push_back(i);
        for (const own_line& l : own_.entries[i].lines) {
            const int library = find_library(&library_form::call, l.w[0]);
            if (library < 0 || library_forms[library].statement.empty() || l.w.size() < 2) continue;
            for (std::size_t k = 0; k < own_.entries.size(); ++k) {
                if (own_.entries[k].library != library || l.w[1] != own_.entries[k].entry.name) continue;
                if (state_[k] == open) tell(l, k);
                visit(k);
            }
        }
        path_.pop_back();
        state_[i] = done;
    }
    void tell(const own_line& l, std::size_t k) {
        std::string ring;
        for (auto p = std::find(path_.begin(), path_.end(), k); p != path_.end(); ++p)
            ring += own_.entries[*p].entry.name + " calls ";
        own_.faults.push_back(
            {l.at[1], "ring", "a composite cannot contain itself: " + ring + own_.entries[k].entry.name, {}});
    }

    own_composites& own_;
    std::vector<state> state_;
    std::vector<std::size_t> path_;
};

}  // namespace

std::optional<entry_shape> shape_of(int library) {
    entry_shape shape;
    if (library == lib_gmes) {
        shape.dc_lines = gmes_lines;
        shape.has_halves = shape.has_code = false;
        shape.flags = {"allow_ac"};
        for (const mixed_domain& d : mixed_domains) {
            shape.models.emplace_back(d.lib.submodel);
            shape.body.emplace_back(d.lib.call);
        }
        return shape;
    }
    const composite_form* form = composite_form_of(library);
    if (form == nullptr) return {};
    shape.dc_lines = form->dc_lines;
    shape.ac_lines = form->ac_lines;
    shape.has_halves = form->has_halves;
    shape.has_code = form->has_code;
    const std::string element(form->basic.begin), call(form->lib.call);
    shape.models = {std::string(form->basic.submodel), std::string(form->lib.submodel)};
    shape.body = {element, call};
    if (form->has_halves) {
        shape.body_ac = {element + "_ac", call, "acparm_map:"};
        shape.flags = {"allow_ac", "compute_acp", "compute_noisep", "compute_rparms"};
    }
    if (form->may_postprocess) shape.flags.insert(shape.flags.end(), {"postprocessor", "postprocessor_ac"});
    return shape;
}

own_composites own_composites_of(const deck_source& source) {
    own_composites own;
    builder b(source, own);
    for (const library_block& block : source.blocks) {
        if (own.entries.size() == most_entries) {
            const deck_source::place& p = block.lines.front();
            own.faults.push_back({{p.file, p.line, 0},
                                  "too-long",
                                  "a deck has at most " + std::to_string(most_entries) + " composites of its own",
                                  {}});
            break;
        }
        b.add(block);
    }
    ring_search(own).run();
    return own;
}

record_place place_of(const deck_source& source, const own_place& where) {
    const deck_source::file& file = source.files[at(where.file)];
    return {file.path, where.line + 1, where.column + 1, file.lines[at(where.line)]};
}

}  // namespace cli
