#include "elaborate/read_circuit.h"

#include "base/halt.h"
#include "library/basic/basic_reader.h"
#include "library/composite/composite_form.h"
#include "library/composite/composite_reader.h"
#include "library/composite/empty_library.h"
#include "library/composite/mixed_reader.h"

const library_place library_places[n_libraries] = {
    {&libraries::ebes, nullptr, &flags_class::map_global_ebe},
    {&libraries::gbes, nullptr, &flags_class::map_global_gbe},
    {&libraries::ebac, nullptr, &flags_class::map_global_sse},
    {&libraries::gbac, nullptr, &flags_class::map_global_ssg},
    {&libraries::dbes, nullptr, &flags_class::map_global_dbe},
    {&libraries::xbes, nullptr, &flags_class::map_global_xbe},
    {&libraries::xbac, nullptr, &flags_class::map_global_ssx},
    {nullptr, &libraries::eels, &flags_class::map_global_ece},
    {nullptr, &libraries::gels, &flags_class::map_global_gce},
    {nullptr, &libraries::dels, nullptr},
    {nullptr, &libraries::xels, &flags_class::map_global_xce},
    {nullptr, &libraries::gmes, nullptr},
};

void read_libraries(libraries& lib, const library_source& source) {
    const auto basic = [&](const library_form& form) -> basic_library& {
        return lib.*library_places[number_of(form)].basic;
    };
    for (int i = 0; i < n_libraries; ++i) {
        const std::string class_name(library_forms[i].class_name);
        text_file text = source(std::string(library_forms[i].path), class_name);
        if (const basic_form* form = basic_form_of(i))
            read_library_text(text, *form, nullptr, basic(form->lib));
        else if (const composite_form* composites = composite_form_of(i))
            read_composites(text, *composites, basic(composites->basic), basic(composites->basic_ac),
                            lib.*library_places[i].composites);
        else if (i == lib_gmes)
            read_mixed_composites(text, {&lib.eels, &lib.dels, &lib.gels}, lib.gmes);
        else
            check_empty_library(text, class_name);
    }
}

void read_circuit(circuit& c, const reading_steps& done) {
    c.gprm = read_gprm(c.cf);
    if (done.constants) done.constants();
    read_models_of_deck(c);
    if (done.models) done.models();
    c.ov = read_ov(c.cf, c.gprm);
}
