#include "tnl/elements/element_doc.h"

#include <algorithm>

#include "tnl/common/text.h"

namespace cli {

namespace {

// Cuts the first word off.
std::string next_word(std::string_view& line) {
    const std::size_t a = std::min(line.find_first_not_of(" \t"), line.size());
    line.remove_prefix(a);
    const std::size_t n = std::min(line.find_first_of(" \t"), line.size());
    std::string word(line.substr(0, n));
    line.remove_prefix(n);
    return word;
}

}  // namespace

element_doc doc_of(const library_entry& entry) {
    element_doc doc;
    for (const std::string& of_entry : split(entry.text, '\n')) {
        std::string_view line = of_entry;
        if (line.starts_with("#:")) {
            doc.description.emplace_back(trimmed(line.substr(2)));
        } else if (line.starts_with("#>")) {
            doc.examples.emplace_back(trimmed(line.substr(2)));
        } else if (line.starts_with("#~")) {
            doc.response.emplace_back(trimmed(line.substr(2)));
        } else if (line.starts_with("#@")) {
            doc.group = trimmed(line.substr(2));
        } else if (line.starts_with("#.")) {
            line.remove_prefix(2);
            word_doc w;
            w.word = next_word(line);
            w.unit = next_word(line);
            if (w.unit == "-") w.unit.clear();
            w.text = trimmed(line);
            doc.words.push_back(std::move(w));
        }
    }
    return doc;
}

const word_doc* find_word(const element_doc& doc, std::string_view word) {
    const auto found =
        std::find_if(doc.words.rbegin(), doc.words.rend(), [&](const auto& w) { return w.word == word; });
    return found == doc.words.rend() ? nullptr : &*found;
}

}  // namespace cli
