#include "small_runs.h"

#include <algorithm>
#include <numeric>

#include "analyses/ac.h"

bool keep_short(run_state& r) {
    constexpr int max_unknowns = 300, max_points = 60;
    solve_class& slv = r.slv;
    auto at_most = [](int& n, int most) { n = std::min(n, most); };
    at_most(slv.method.itmax_newton, 40);
    at_most(slv.method.itmax_newton_first, 40);
    at_most(slv.method.itmax_line_search, 5);
    at_most(slv.method.x_itmax_newton, 20);
    at_most(slv.method.x_itmax_newton_first, 20);
    at_most(slv.method.gmin_npoints, 5);
    at_most(slv.method.gmin_itmax_newton, 20);
    at_most(slv.task.automatic.itmax_sweep, 20);
    at_most(slv.method.itmax_trns, 200);
    at_most(slv.task.n_freq, 20);
    at_most(slv.method.ssw_itmax_newton, 4);
    return r.c.ebeu.n() <= max_unknowns && r.c.gbeu.n() <= max_unknowns && r.c.xbeu.n() <= max_unknowns &&
           r.mat.n_svec <= max_unknowns && slv.task.n_sweep <= max_points && slv.task.n_sync <= max_points;
}

void solve_one_frequency(run_state& r) {
    r.slv.task.freq_array = {1e3};
    r.slv.now.i_sweep = r.slv.now.i_freq = 0;
    r.slv.now.freq = r.slv.task.freq_array[0];
    set_mat_1_ac(r);
    calc_acparms(r);
    take_bias(r);
    solve_ac(r);
    std::vector<int> all(static_cast<std::size_t>(r.c.ebau.n()));
    std::iota(all.begin(), all.end(), 0);
    find_ebe_cur_ac(r, all);
}
