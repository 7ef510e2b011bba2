#include "tnl/elements/method_pages.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

#include "tnl/elements/element_pages.h"

namespace cli {

namespace {

struct block_name {
    unsigned bit;
    std::string_view word;
};
constexpr block_name block_names[] = {
    {b_dc, "dc"}, {b_startup, "startup"}, {b_trns, "trns"}, {b_ac, "ac"}, {b_ssw, "ssw"}};

std::string blocks_text(unsigned bits) {
    if (bits == b_all) return "all";
    std::string text;
    for (const block_name& b : block_names)
        if (bits & b.bit) text += (text.empty() ? "" : " ") + std::string(b.word);
    return text;
}

std::string default_text(const method_word& m) {
    if (!m.if_not_given.empty()) return std::string(m.if_not_given);
    if (std::string_view(type_name(m)) == "flag") return m.dflt != 0 ? "yes" : "no";
    if (std::string_view(type_name(m)) == "int") return std::to_string(static_cast<long long>(m.dflt));
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, m.dflt).ptr};
}

std::string kind_text(const method_word& m) {
    const std::string_view type = type_name(m);
    return type == "flag" ? "yes, no" : type == "int" ? "whole number" : "number";
}

std::string acts_text(const method_word& m) { return m.acts != 0 ? blocks_text(m.acts) : "nowhere"; }

constexpr std::string_view table_head =
    "| Word | Value | If not given | Read in | Acts in | Meaning |\n|---|---|---|---|---|---|\n";

std::string table_row(const method_word& m) {
    return "| `" + std::string(m.word) + "` | " + kind_text(m) + " | " + markdown_escaped(default_text(m)) + " | " +
           blocks_text(m.blocks) + " | " + (m.acts != 0 ? blocks_text(m.acts) : "-") + " | " +
           markdown_escaped(std::string(m.text)) + " |\n";
}

// Words in their sections: head(section) before the first of each that is chosen, row(word) for each.
template <class H, class R>
void walk(std::string_view text, H head, R row) {
    const std::span<const method_section> sections = method_sections();
    const method_section* now = nullptr;
    const method_section* told = nullptr;
    for (const method_word& m : method_words()) {
        for (const method_section& s : sections)
            if (s.first == m.word) now = &s;
        if (!speaks_of(m, text)) continue;
        if (now != told && now != nullptr) head(*now);
        told = now;
        row(m);
    }
}

}  // namespace

std::vector<std::string> method_word_names() {
    std::vector<std::string> names;
    for (const method_word& m : method_words()) names.emplace_back(m.word);
    return names;
}

const method_word* find_word_of_method(std::string_view name) {
    constexpr std::string_view prefix = "method:";
    if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
    for (const method_word& m : method_words())
        if (m.word == name) return &m;
    return nullptr;
}

bool speaks_of(const method_word& m, std::string_view text) {
    const auto same = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    };
    const auto in = [&](std::string_view where) {
        return std::search(where.begin(), where.end(), text.begin(), text.end(), same) != where.end();
    };
    return in(m.word) || in(m.text);
}

std::string method_text(const method_word& m) {
    return std::string(m.word) + ": a word of method:\n\n  " + std::string(m.text) + "\n\n  value         " +
           kind_text(m) + "\n  if not given  " + default_text(m) + "\n  read in       " + blocks_text(m.blocks) +
           "\n  acts in       " + acts_text(m) + "\n";
}

std::string method_list(std::string_view text) {
    std::size_t width = 0;
    walk(
        text, [](const method_section&) {}, [&](const method_word& m) { width = std::max(width, m.word.size()); });
    std::string all;
    walk(
        text, [&](const method_section& s) { all += (all.empty() ? "" : "\n") + std::string(s.title) + "\n"; },
        [&](const method_word& m) {
            std::string name(m.word);
            name.resize(width, ' ');
            all += "  " + name + "  " + std::string(m.text) + " [" + default_text(m) + "]\n";
        });
    return all;
}

std::string method_json(const std::vector<const method_word*>& words) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const method_word* m : words) {
        nlohmann::ordered_json one;
        one["word"] = m->word;
        one["type"] = type_name(*m);
        one["default"] = default_text(*m);
        for (const auto& [key, bits] : {std::pair{"read_in", m->blocks}, std::pair{"acts_in", m->acts}}) {
            one[key] = nlohmann::ordered_json::array();
            for (const block_name& b : block_names)
                if (bits & b.bit) one[key].push_back(b.word);
        }
        one["meaning"] = m->text;
        list.push_back(std::move(one));
    }
    return list.dump(2) + "\n";
}

std::string method_markdown(const method_word& m) {
    return "# `" + std::string(m.word) + "`, a word of `method:`\n\n" + std::string(table_head) + table_row(m);
}

std::string method_markdown() {
    std::string text =
        "# Words of `method:`\n\nPairs of a word and a value in a solve block, as `method: trapezoidal=yes t_end=5m\n"
        "delt_const=1u`. `tnl list --methods` and `tnl describe WORD` show the same in the terminal; this page is "
        "written by\n`tnl describe --methods --md -o docs/method.md` from the table that reads the words. What one "
        "needs in most cases stands\nin [deck.md](deck.md) and, for runs in time, in [transient.md](transient.md).\n\n"
        "A flag is on for `yes` and off for any other word. A number may be the name of a `greal`. A word in a block "
        "that does not\nread it stops the run; one that is read where it does not act is passed over.\n";
    walk(
        "",
        [&](const method_section& s) {
            text += "\n## " + std::string(s.title) + "\n\n";
            if (!s.note.empty()) text += std::string(s.note) + "\n\n";
            text += table_head;
        },
        [&](const method_word& m) { text += table_row(m); });
    return text;
}

}  // namespace cli
