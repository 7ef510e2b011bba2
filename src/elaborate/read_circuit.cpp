#include "elaborate/read_circuit.h"

#include "base/halt.h"
#include "library/basic/basic_reader.h"
#include "library/composite/composite_form.h"
#include "library/composite/composite_reader.h"
#include "library/composite/empty_library.h"

void read_libraries(libraries& lib, const library_source& source) {
    const auto basic = [&](const library_form& form, basic_library& to) {
        text_file text = source(form.path, form.class_name);
        read_library_text(text, form, nullptr, to);
    };
    const auto composite = [&](const composite_form& form, const basic_library& be, const basic_library& be_ac,
                               composite_library& to) {
        text_file text = source(form.path, form.class_name);
        read_composites(text, form, be, be_ac, to);
    };
    const auto pending = [&](const char* name) {
        check_empty_library(source(line(".tnlaux/", name, ".aux"), line(name, "_class")), line(name, "_class"));
    };
    basic(ebes_form, lib.ebes);
    basic(gbes_form, lib.gbes);
    basic(ebac_form, lib.ebac);
    basic(gbac_form, lib.gbac);
    for (const char* name : {"dbes", "xbes", "xbac"}) pending(name);
    composite(eels_form, lib.ebes, lib.ebac, lib.eels);
    composite(gels_form, lib.gbes, lib.gbac, lib.gels);
    for (const char* name : {"dels", "xels", "gmes"}) pending(name);
}

void read_circuit(circuit& c, const reading_steps& done) {
    c.gprm = read_gprm(c.cf);
    if (done.constants) done.constants();
    read_models_of_deck(c);
    if (done.models) done.models();
    c.ov = read_ov(c.cf, c.gprm);
}
