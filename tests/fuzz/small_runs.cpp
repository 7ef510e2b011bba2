#include "small_runs.h"

#include <algorithm>

#include "library/basic_reader.h"
#include "library/composite_reader.h"

namespace {
constexpr int max_unknowns = 300, max_points = 60;

libraries read_installed() {
    const std::string folder = TARNEL_SHARE;
    const constants_class constants;
    libraries lib;
    read_library(folder + "/ebes.aux", ebes_form, int_F, constants, lib.ebes);
    read_library(folder + "/ebac.aux", ebac_form, int_F, constants, lib.ebac);
    read_eels_file(folder + "/eels.aux", lib.ebes, lib.ebac, lib.eels);
    return lib;
}
}  // namespace

const libraries& installed_libraries() {
    static const libraries lib = read_installed();
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
    for (const tmpdim_word& w : tmpdim_words()) c.tmpdim.*w.member = 100000;
    return c;
}

bool keep_short(run_state& r) {
    solve_class& slv = r.slv;
    auto at_most = [](int& n, int most) { n = std::min(n, most); };
    at_most(slv.itmax_newton, 8);
    at_most(slv.itmax_newton_first, 8);
    at_most(slv.itmax_line_search, 5);
    at_most(slv.gmin_npoints, 4);
    at_most(slv.gmin_itmax_newton, 5);
    at_most(slv.automatic.itmax_sweep, 20);
    return r.c.ebeu.n() <= max_unknowns && r.mat.n_svec <= max_unknowns && slv.n_sweep <= max_points &&
           slv.n_sync <= max_points;
}
