#include "small_runs.h"

#include <algorithm>

bool keep_short(run_state& r) {
    constexpr int max_unknowns = 300, max_points = 60;
    solve_class& slv = r.slv;
    auto at_most = [](int& n, int most) { n = std::min(n, most); };
    at_most(slv.itmax_newton, 40);
    at_most(slv.itmax_newton_first, 40);
    at_most(slv.itmax_line_search, 5);
    at_most(slv.gmin_npoints, 5);
    at_most(slv.gmin_itmax_newton, 20);
    at_most(slv.automatic.itmax_sweep, 20);
    at_most(slv.itmax_trns, 200);
    return r.c.ebeu.n() <= max_unknowns && r.c.gbeu.n() <= max_unknowns && r.mat.n_svec <= max_unknowns &&
           slv.n_sweep <= max_points && slv.n_sync <= max_points;
}
