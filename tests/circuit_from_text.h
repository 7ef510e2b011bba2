// circuit_from_text.h -- a circuit from the text of a deck, on libraries from texts or on those that the build
// installs; for unit tests, fuzz targets and measurements.
#pragma once
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "base/text_file.h"
#include "elaborate/circuit.h"
#include "library/basic/basic_reader.h"
#include "library/composite/composite_form.h"
#include "library/composite/composite_reader.h"

// Texts of libraries; those of an empty one are empty.
struct library_texts {
    std::string ebes{}, ebac{}, gbes{}, gbac{}, eels{}, gels{};
};

inline libraries libraries_of(const library_texts& texts) {
    libraries lib;
    const auto read_basic = [](const std::string& text, const library_form& form, basic_library& to) {
        text_file file = text_file_of(text);
        if (!text.empty()) read_library_text(file, form, nullptr, to);
    };
    const auto read_composite = [](const std::string& text, const composite_form& form, const basic_library& basic,
                                   const basic_library& basic_ac, composite_library& to) {
        text_file file = text_file_of(text);
        if (!text.empty()) read_composites(file, form, basic, basic_ac, to);
    };
    read_basic(texts.ebes, ebes_form, lib.ebes);
    read_basic(texts.ebac, ebac_form, lib.ebac);
    read_basic(texts.gbes, gbes_form, lib.gbes);
    read_basic(texts.gbac, gbac_form, lib.gbac);
    read_composite(texts.eels, eels_form, lib.ebes, lib.ebac, lib.eels);
    read_composite(texts.gels, gels_form, lib.gbes, lib.gbac, lib.gels);
    return lib;
}

#ifdef TARNEL_SHARE
inline std::string installed_text(const std::string& file) {
    std::ostringstream all;
    all << std::ifstream(std::string(TARNEL_SHARE) + "/" + file, std::ios::binary).rdbuf();
    return all.str();
}
inline library_texts installed_texts() {
    return {installed_text("ebes.aux"), installed_text("ebac.aux"), installed_text("gbes.aux"),
            installed_text("gbac.aux"), installed_text("eels.aux"), installed_text("gels.aux")};
}
inline const libraries& installed_libraries() {
    static const libraries lib = libraries_of(installed_texts());
    return lib;
}
#endif

// Everything of a deck that is read before the elaboration. The sizes are generous.
inline circuit circuit_of(std::string_view deck, libraries lib) {
    circuit c;
    c.cf = circuit_file_of(file_chr_of(deck));
    c.lib = std::move(lib);
    c.gprm = read_gprm(c.cf);
    read_models_of_deck(c);
    c.ov = read_ov(c.cf, c.gprm);
    c.tmpdim = generous_tmpdim();
    return c;
}
