// Constants of the deck: greal, ginteger, gstring. What their values are is for the simulator's reader.
#include "tnl/check/check_stops.h"

namespace cli {

void check_globals(checked_deck& d) {
    const file_chr& f = d.text();
    const int end = d.sections.begin_circuit < 0 ? d.sections.end : d.sections.begin_circuit;
    for (int i = 0; i < end; ++i) {
        const std::string kind = f.n_words(i) > 0 ? d.word(i, 0) : std::string();
        if (kind != "greal" && kind != "ginteger" && kind != "gstring") continue;
        std::set<std::string>& names = kind == "greal"      ? d.globals.reals
                                       : kind == "ginteger" ? d.globals.ints
                                                            : d.globals.texts;
        for (int j = 1; j < f.n_words(i); j += 2) {
            if (j + 1 >= f.n_words(i)) {
                d.report.warning("no-value", {i, j}, d.word(i, j) + " has no value and is passed over");
                break;
            }
            if (!names.insert(d.word(i, j)).second)
                d.report.warning("named-twice", {i, j},
                                 "the constant " + d.word(i, j) + " is defined twice; the first counts");
        }
    }
}

}  // namespace cli
