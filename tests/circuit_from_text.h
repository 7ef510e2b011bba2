// circuit_from_text.h -- a circuit from the text of a deck, on libraries from texts or on those that the build
// installs; for unit tests, fuzz targets and measurements.
#pragma once
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "base/text_file.h"
#include "composite_room.h"
#include "elaborate/read_circuit.h"

// Texts of libraries; those of an empty one are empty.
struct library_texts {
    std::string ebes{}, ebac{}, gbes{}, gbac{}, eels{}, gels{}, dbes{}, dels{}, gmes{}, xbes{}, xbac{}, xels{};
};

inline libraries libraries_of(const library_texts& texts) {
    const std::pair<std::string_view, const std::string*> named[] = {
        {"ebes.aux", &texts.ebes}, {"ebac.aux", &texts.ebac}, {"gbes.aux", &texts.gbes}, {"gbac.aux", &texts.gbac},
        {"eels.aux", &texts.eels}, {"gels.aux", &texts.gels}, {"dbes.aux", &texts.dbes}, {"dels.aux", &texts.dels},
        {"gmes.aux", &texts.gmes}, {"xbes.aux", &texts.xbes}, {"xbac.aux", &texts.xbac}, {"xels.aux", &texts.xels},
    };
    libraries lib;
    read_libraries(lib, [&](const std::string& path, const std::string&) {
        for (const auto& [name, text] : named)
            if (path.ends_with(name)) return text_file_of(*text);
        return text_file_of("");
    });
    return lib;
}

#ifdef TARNEL_SHARE
inline const std::string& installed_text(const std::string& file) {
    static std::map<std::string, std::string> read;
    const auto [text, is_new] = read.try_emplace(file);
    if (is_new) {
        std::ostringstream all;
        all << std::ifstream(std::string(TARNEL_SHARE) + "/" + file, std::ios::binary).rdbuf();
        text->second = all.str();
    }
    return text->second;
}
// Electrical composites as many as a library holds, those of the deck among them.
inline library_texts installed_texts(std::string_view deck = "") {
    const std::string mixed = installed_text("gmes.aux");
    return {installed_text("ebes.aux"),
            installed_text("ebac.aux"),
            installed_text("gbes.aux"),
            installed_text("gbac.aux"),
            composites_with_room(installed_text("eels.aux"), std::string(deck) + '\n' + mixed),
            installed_text("gels.aux"),
            installed_text("dbes.aux"),
            installed_text("dels.aux"),
            mixed,
            installed_text("xbes.aux"),
            installed_text("xbac.aux"),
            installed_text("xels.aux")};
}
// Read once for each set of composites.
inline const libraries& installed_libraries(std::string_view deck = "") {
    static std::map<std::string, libraries> all;
    const library_texts texts = installed_texts(deck);
    const auto known = all.find(texts.eels);
    return known != all.end() ? known->second : all.emplace(texts.eels, libraries_of(texts)).first->second;
}
#endif

// Everything of a deck that is read before the elaboration. The sizes are generous.
inline circuit circuit_of(std::string_view deck, libraries lib, int max_lines = usual_deck_lines) {
    circuit c;
    c.cf = circuit_file_of(file_chr_of(deck, max_lines));
    c.lib = std::move(lib);
    read_circuit(c);
    c.tmpdim = generous_tmpdim();
    return c;
}
