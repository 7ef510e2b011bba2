#include "installed_circuit.h"

#include "library/composite_form.h"
#include "library/composite_reader.h"
#include "run/text_file.h"

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
    c.ecem = read_models(c.cf, c.gprm, c.lib.eels, ecem_form);
    c.gcem = read_models(c.cf, c.gprm, c.lib.gels, gcem_form);
    c.dcem = read_models(c.cf, c.gprm, c.lib.dels, dcem_form);
    c.gmem = read_models(c.cf, c.gprm, c.lib.gmes, gmem_form);
    c.xcem = read_models(c.cf, c.gprm, c.lib.xels, xcem_form);
    c.ov = read_ov(c.cf, c.gprm);
    for (const tmpdim_word& w : tmpdim_words()) c.tmpdim.*w.member = w.generous;
    return c;
}
