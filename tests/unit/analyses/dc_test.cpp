#include "analyses/dc.h"

#include <gtest/gtest.h>

#include <cmath>

#include "dc_fixture.h"
#include "output/row_writers.h"

namespace {
std::string lines_with(const std::string& text, const std::string& part) {
    std::istringstream in(text);
    std::string found;
    for (std::string l; std::getline(in, l);)
        if (l.find(part) != std::string::npos) found += l + '\n';
    return found;
}
int count(const std::string& text, const std::string& part) {
    int n = 0;
    for (std::size_t k = text.find(part); k != std::string::npos; k = text.find(part, k + 1)) ++n;
    return n;
}
std::string solve_block_of(const std::string& cards) { return "begin_solve\nsolve_type dc\n" + cards + "end_solve\n"; }
std::string output(const std::string& file, const std::string& variables) {
    return "begin_output\nfilename " + file + "\nvariables: " + variables + "\nend_output\n";
}
std::string deck(const std::string& circuit_block, const std::string& solve_blocks) {
    return "title: test\nbegin_circuit\nrefnode 0\n" + circuit_block + "end_circuit\n" + solve_blocks + "end_cf\n";
}

// 5 V, 1 kOhm and a junction that gmin stands across.
const std::string junction =
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=5\n"
    "eelement name=R1 type=r p=in n=a r=1k\n"
    "eelement name=D1 type=diode_spice_1 p=a n=0 is=1e-14\n"
    "outvar: v=nodev_of_a\n";

// The junction voltage, by bisection.
double junction_voltage(double gmin) {
    const double vt = 1.3806226e-23 * 300.15 / 1.6021918e-19;
    double low = 0, high = 1;
    for (int k = 0; k < 200; ++k) {
        const double v = 0.5 * (low + high);
        (v - 5 + 1e3 * (1e-14 * (std::exp(v / vt) - 1) + gmin * v) > 0 ? high : low) = v;
    }
    return low;
}

struct junction_run : dc_run {
    std::string said;
    explicit junction_run(const std::string& method) : dc_run(junction, "method: " + method + "\n") {
        start();
        listen([&] { solve_dc(r); });
        said = text;
    }
};
}  // namespace

TEST(gmin_step_dc_1, takes_over_when_newton_fails_and_ends_at_the_same_solution) {
    const junction_run t("itmax_newton_first=1 norm_spice_rel=1e-9");
    EXPECT_EQ(count(t.said, "gmin_step_dc_1: iter_gmin="), 50);
    EXPECT_EQ(t.r.slv.now.n_gmin_total, 1);
    EXPECT_TRUE(t.r.slv.now.l_converged);
    EXPECT_TRUE(t.r.slv.now.l_gmin_done);
    EXPECT_EQ(t.r.slv.now.iter_gmin, -1);
    EXPECT_EQ(t.r.flags.gmin, 1e-12);
    EXPECT_NEAR(t.node("a") / junction_voltage(1e-12), 1, 1e-6);
}

TEST(gmin_step_dc_1, damped_steps_take_237_solves_and_whole_ones_111) {
    // Counted with the three equations written out by hand in another language. One solve more is Newton's, which
    // fails.
    const junction_run damped("itmax_newton_first=1"), whole("itmax_newton_first=1 gmin_dmp=no");
    EXPECT_EQ(damped.r.flags.n_solve_lin, 1 + 237);
    EXPECT_EQ(whole.r.flags.n_solve_lin, 1 + 111);
}

TEST(gmin_step_dc_1, the_conductances_are_spread_evenly_in_their_logarithm_and_the_last_is_exact) {
    const junction_run t(
        "itmax_newton_first=1 gmin_npoints=5 gmin_start=1 gmin_end=1e-8 gmin_dmp=no norm_spice_rel=1e-9");
    EXPECT_EQ(t.said,
              "gmin_step_dc_1: iter_gmin=0, gmin_present=1\ngmin_step_dc_1: iter_gmin=1, gmin_present=0.01\n"
              "gmin_step_dc_1: iter_gmin=2, gmin_present=0.0001\ngmin_step_dc_1: iter_gmin=3, gmin_present=1e-06\n"
              "gmin_step_dc_1: iter_gmin=4, gmin_present=1e-08\n");
    EXPECT_NEAR(t.node("a") / junction_voltage(1e-8), 1, 1e-6);
}

TEST(gmin_step_dc_1, a_single_point_is_that_of_gmin_start) {
    const junction_run t("itmax_newton_first=1 gmin_npoints=1 gmin_start=1e-3 gmin_dmp=no norm_spice_rel=1e-9");
    EXPECT_EQ(t.said, "gmin_step_dc_1: iter_gmin=0, gmin_present=0.001\n");
    EXPECT_NEAR(t.node("a") / junction_voltage(1e-3), 1, 1e-6);
}

TEST(gmin_step_dc_1, without_points_it_is_done_at_once_from_0) {
    const junction_run t("itmax_newton_first=1 gmin_npoints=0");
    EXPECT_EQ(t.said, "");
    EXPECT_TRUE(t.r.slv.now.l_gmin_done);
    EXPECT_EQ(t.node("a"), 0);
    const junction_run kept("itmax_newton_first=1 gmin_npoints=0 gmin_init=no");
    EXPECT_NE(kept.node("a"), 0);
}

TEST(gmin_step_dc_1, a_failure_ends_the_run) {
    const console_run heard = run_and_listen([] { junction_run("itmax_newton_first=1 gmin_itmax_newton=2"); });
    EXPECT_TRUE(heard.stopped);
    EXPECT_EQ(heard.text.substr(heard.text.find('\n') + 1),
              "gmin_step_dc_1:\n   N-R iterations did not converge.\n   Halting...\n");
}

TEST(gmin_step_dc_1, tells_a_blow_up_under_its_own_name) {
    // With a limit of 1e-3 the step from nothing is too large already.
    const console_run heard =
        run_and_listen([] { junction_run("itmax_newton_first=0 chk_spice=no chk_delx_all=yes norm_large=1e-3"); });
    EXPECT_TRUE(heard.stopped);
    EXPECT_NE(heard.text.find("gmin_step_dc_1: norm too large.\ngmin_step_dc_1:\n"), std::string::npos) << heard.text;
}

TEST(solve_dc, without_gmin_stepping_a_failure_of_newton_ends_the_run) {
    const console_run heard = run_and_listen([] { junction_run("itmax_newton_first=1 gmin_step=no"); });
    EXPECT_TRUE(heard.stopped);
    EXPECT_EQ(heard.text, "solve_dc: N-R did not converge.\n   Halting...\n");
}

TEST(solve_dc, leaves_currents_output_parameters_and_no_switch) {
    const junction_run t("norm_spice_rel=1e-9");
    EXPECT_EQ(run_and_listen([&] { t.r.flags.write_all_true(); }).text, "");
    const int u = t.unit_of("R1");
    const int slot = t.c.lib.ebes.list.rprm.find(t.c.ebeu.unit.i_lib[static_cast<std::size_t>(u)], "v_o");
    EXPECT_DOUBLE_EQ(t.r.ebe.call[static_cast<std::size_t>(u)].rparm[slot], 5 - t.node("a"));
    EXPECT_NEAR(t.c.ebeu.cur_nd[static_cast<std::size_t>(t.c.ebeu.nd.first[static_cast<std::size_t>(u)])],
                (5 - t.node("a")) / 1e3, 1e-12);
}

TEST(init_sol, guesses_of_elements_reach_the_nodes_and_the_later_unit_wins) {
    dc_run t(
        "eelement name=D1 type=diode p=a n=0 vd_ig=0.25\neelement name=D2 type=diode p=a n=b vd_ig=0.5\n"
        "eelement name=R1 type=r p=b n=0\n");
    t.start();
    EXPECT_EQ(t.node("a"), 0.5);
    EXPECT_EQ(t.node("b"), 0);
    EXPECT_EQ(t.node("0"), 0);
    EXPECT_EQ(t.r.mat.svec, (std::vector<double>{0.5, 0}));
}

TEST(init_sol, a_guess_never_moves_the_reference) {
    dc_run t("eelement name=R1 type=r p=a n=0\neelement name=D1 type=diode p=0 n=a vd_ig=0.25\n");
    t.start();
    EXPECT_EQ(t.node("0"), 0);
    EXPECT_EQ(t.node("a"), 0);
}

// ---- sweeps

namespace {
// A source of p volts, read by a made-up branch that Newton solves in one step, but never while `fails` says so.
struct sweep_run : dc_run {
    std::vector<double> starts;  // node voltage of the first evaluation at each point

    sweep_run(const std::string& sweep, std::function<bool(double)> fails, const std::string& method = "")
        : dc_run("eelement name=D1 type=diode p=a n=0\noutvar: v=nodev_of_a is=is_of_D1\n",
                 "method: chk_only_rhs2=yes norm_2=1e-12 itmax_newton_first=5 " + method + "\nvary_parm is_of_D1 " +
                     sweep + "\n" + output("rows.dat", "is_of_D1 v")) {
        start();
        use_model(r, 0, [this, fails](const model_call& m) {
            if (!m.evaluates()) return;
            const double p = c.eelu.rprm.row(0)[c.lib.eels.list.rprm.find(c.eelu.i_lib[0], "is")];
            if (m.flags->newton_first) starts.push_back(m.v[0]);
            m.branch(m.v[0] - 10 * p, 1);
            if (fails(p)) ++m.flags->n_limit;
        });
    }
    // Rows written until the end, or until a stop.
    std::string rows() {
        open_out_files(r.slv, r.c);
        listen([&] {
            try {
                run_dc_sweeps(r);
            } catch (...) {
                close_out_files(r.slv);
                throw;
            }
        });
        close_out_files(r.slv);
        return read_file("rows.dat");
    }
};
const std::string automatic = "type=auto p_begin=0 p_end=1 step=0.25 step_max=0.25 step_min=0.1";
}  // namespace

TEST(automatic_sweep, a_failed_point_writes_no_row_and_shortens_the_way_on) {
    // 0, .25, .5 fails: .5 + .8 * .25 = .7, then .7 + 1.1 * .2 = .92, then beyond 1.
    sweep_run t(automatic, [](double p) { return p > 0.45 && p < 0.55; });
    EXPECT_EQ(t.rows(),
              " 0.000000e+00  0.000000e+00 \n 2.500000e-01  2.500000e+00 \n 7.000000e-01  7.000000e+00 \n"
              " 9.200000e-01  9.200000e+00 \n");
}

TEST(automatic_sweep, after_a_failed_point_the_last_good_solution_is_the_start) {
    sweep_run t(automatic, [](double p) { return p > 0.45 && p < 0.55; });
    t.rows();
    ASSERT_EQ(t.starts.size(), 5u);
    EXPECT_NEAR(t.starts[2], 2.5, 1e-12);  // at .5
    EXPECT_NEAR(t.starts[3], 2.5, 1e-12);  // at .7
    EXPECT_NEAR(t.starts[4], 7.0, 1e-12);
}

TEST(automatic_sweep, a_failure_at_the_smallest_step_ends_the_run_without_gmin_stepping) {
    // From .5 on nothing converges: steps .2, .16, .128, .1024, and with the smallest, .1, it is over.
    sweep_run t(
        "type=auto p_begin=0 p_end=9 step=0.25 step_max=0.25 step_min=0.1", [](double p) { return p > 0.45; },
        "gmin_step=no");
    const console_run heard = run_and_listen([&] { t.rows(); });
    EXPECT_TRUE(heard.stopped);
    EXPECT_EQ(heard.text, "solve_dc: did not converge even with the\n   smallest auto step.\n");
    EXPECT_EQ(t.starts.size(), 8u);  // 0, .25, .5, .7, .86, .988, 1.0904, 1.1904
    EXPECT_EQ(read_file("rows.dat"), " 0.000000e+00  0.000000e+00 \n 2.500000e-01  2.500000e+00 \n");
}

TEST(table_sweep, a_curve_of_a_grid_starts_where_the_curve_before_it_on_its_level_started) {
    // The root tells the point: 100 i + 10 j + k. Inside a curve each point starts at the one before.
    dc_run t("eelement name=D1 type=diode p=a n=0\n",
             "method: chk_only_rhs2=yes norm_2=1e-9\nvary_parm is_of_D1 type table 1 2 3\n"
             "vary_parm vt_of_D1 type table 1 2 3\nvary_parm n_em_of_D1 type table 1 2\n");
    t.start();
    std::vector<double> starts;
    use_model(t.r, 0, [&](const model_call& m) {
        if (!m.evaluates()) return;
        if (m.flags->newton_first) starts.push_back(std::round(m.v[0]));
        const double* p = t.c.eelu.rprm.row(0);
        auto value = [&](const char* word) { return p[t.c.lib.eels.list.rprm.find(t.c.eelu.i_lib[0], word)]; };
        m.branch(m.v[0] - 100 * value("is") - 10 * value("vt") - value("n_em"), 1);
    });
    t.r.mat.svec[0] = 7;
    dcmp_solvec(t.r);
    t.listen([&] { run_dc_sweeps(t.r); });
    EXPECT_EQ(starts, (std::vector<double>{7, 111, 111, 121, 121, 131,       // i = 1: curves 111, 121, 131
                                           111, 211, 211, 221, 221, 231,     // i = 2 starts at 111
                                           211, 311, 311, 321, 321, 331}));  // i = 3 at 211
}

TEST(table_sweep, a_single_statement_goes_on_from_point_to_point) {
    sweep_run t("type table 1 2 4", [](double) { return false; });
    t.rows();
    ASSERT_EQ(t.starts.size(), 3u);
    EXPECT_DOUBLE_EQ(t.starts[1], 10);
    EXPECT_DOUBLE_EQ(t.starts[2], 20);
}

TEST(linear_through_newton, prints_two_norms) {
    const temp_folder folder;
    const console_run heard = run_here(
        deck("eelement name=V1 type=vsrcdc p=in n=0 vdc=-10\neelement name=R1 type=r p=in n=a r=1k\n"
             "eelement name=R2 type=r p=a n=0 r=1G\neelement name=D1 type=diode p=a n=0 is=1e-14 vt=0.025852\n",
             solve_block_of("method: write_rhs2=yes\nset_igparm vd_ig_of_D1 -8\n")));
    EXPECT_EQ(count(heard.text, "norm_rhs_2="), 2);
    EXPECT_EQ(lines_with(heard.text, "norm_rhs_2=").substr(0, 13), "0 norm_rhs_2=");
}
