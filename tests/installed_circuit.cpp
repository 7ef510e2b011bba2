#include "installed_circuit.h"

#include "base/text_file.h"
#include "library/composite/composite_form.h"
#include "library/composite/composite_reader.h"

libraries read_libraries_of(const std::string& folder) {
    const constants_class constants;
    libraries lib;
    read_library(folder + "/ebes.aux", ebes_form, int_F, constants, lib.ebes);
    read_library(folder + "/ebac.aux", ebac_form, int_F, constants, lib.ebac);
    read_library(folder + "/gbes.aux", gbes_form, int_F, constants, lib.gbes);
    read_library(folder + "/gbac.aux", gbac_form, int_F, constants, lib.gbac);
    read_eels_file(folder + "/eels.aux", lib.ebes, lib.ebac, lib.eels);
    text_file gels = open_text_file(folder + "/gels.aux", "gels_class");
    read_composites(gels, gels_form, lib.gbes, lib.gbac, lib.gels);
    return lib;
}

const libraries& installed_libraries() {
    static const libraries lib = read_libraries_of(TARNEL_SHARE);
    return lib;
}

circuit circuit_of(std::string_view deck, const libraries& lib) {
    circuit c;
    c.cf = circuit_file_of(file_chr_of(deck));
    c.lib = lib;
    c.gprm = read_gprm(c.cf);
    read_models_of_deck(c);
    c.ov = read_ov(c.cf, c.gprm);
    c.tmpdim = generous_tmpdim();
    return c;
}
