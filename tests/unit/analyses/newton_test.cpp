#include "analyses/newton.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "dc_fixture.h"

namespace {
// One node and one nonlinear branch to the reference, whose current the test makes up.
const std::string one_branch = "eelement name=D1 type=diode p=a n=0\n";
struct one_node : dc_run {
    int n_calls = 0;  // evaluations for the residual

    one_node(const std::string& method, double start_value, std::function<void(const model_call&)> branch)
        : dc_run(one_branch, method.empty() ? "" : "method: " + method + "\n") {
        start();
        use_model(r, 0, [this, branch](const model_call& m) {
            if (m.evaluates()) {
                ++n_calls;
                branch(m);
            }
        });
        r.mat.svec[0] = start_value;
        dcmp_solvec(r);
    }
    std::string solve() {
        return run_and_listen([&] { solve_newton_dc(r); }).text;
    }
    double v() const { return r.mat.svec[0]; }
};

// F(v) = slope (v - root)
std::function<void(const model_call&)> line_through(double root, double slope = 1) {
    return [=](const model_call& m) { m.branch(slope * (m.v[0] - root), slope); };
}
// Newton on it overshoots more and more from beyond 1.39.
void arc_tangent(const model_call& m) { m.branch(std::atan(m.v[0]), 1 / (1 + m.v[0] * m.v[0])); }

const std::string only_rhs2 = "chk_only_rhs2=yes norm_2=1e-12 ";
}  // namespace

TEST(solve_newton_dc, a_straight_line_passes_the_residual_test_at_iteration_1) {
    one_node t(only_rhs2 + "write_rhs2=yes", 5, line_through(2));
    EXPECT_EQ(t.solve(), "0 norm_rhs_2= 3.0000e+00\n1 norm_rhs_2= 0.0000e+00\n");
    EXPECT_TRUE(t.r.slv.now.l_converged);
    EXPECT_EQ(t.r.slv.now.iter_newton, 1);
    EXPECT_EQ(t.v(), 2);
    EXPECT_EQ(t.node("a"), 2);
}

TEST(solve_newton_dc, from_the_solution_the_residual_test_passes_at_iteration_0) {
    one_node t(only_rhs2, 2, line_through(2));
    t.solve();
    EXPECT_TRUE(t.r.slv.now.l_converged);
    EXPECT_EQ(t.r.slv.now.iter_newton, 0);
    EXPECT_EQ(t.n_calls, 1);
}

TEST(solve_newton_dc, the_spice_test_needs_two_iterates) {
    one_node t("chk_only_spice=yes", 2, line_through(2));
    t.solve();
    EXPECT_TRUE(t.r.slv.now.l_converged);
    EXPECT_EQ(t.r.slv.now.iter_newton, 1);
}

TEST(solve_newton_dc, the_spice_test_compares_with_the_iterate_before) {
    // Newton for the root of v^2 = 2 from 1: 3/2, 17/12, 577/408, ...; changes 1/12, then 1/408. A test of 1e-6 + 0.01
    // of the value passes at the second change.
    one_node t("chk_only_spice=yes norm_spice_rel=0.01", 1,
               [](const model_call& m) { m.branch(m.v[0] * m.v[0] - 2, 2 * m.v[0]); });
    t.solve();
    EXPECT_EQ(t.r.slv.now.iter_newton, 2);
    EXPECT_EQ(t.r.mat.svec_old[0], 17.0 / 12);
    EXPECT_DOUBLE_EQ(t.v(), 577.0 / 408);
}

TEST(solve_newton_dc, with_chk_cnvrg_off_takes_one_step) {
    one_node t("chk_cnvrg=no", 1, [](const model_call& m) { m.branch(m.v[0] * m.v[0] - 2, 2 * m.v[0]); });
    t.solve();
    EXPECT_TRUE(t.r.slv.now.l_converged);
    EXPECT_EQ(t.v(), 1.5);
    EXPECT_EQ(t.n_calls, 1);
}

TEST(solve_newton_dc, the_iteration_limit_is_a_plain_failure) {
    one_node t(only_rhs2 + "itmax_newton_first=3 norm_2=1e-30", 1,
               [](const model_call& m) { m.branch(m.v[0] * m.v[0] - 2, 2 * m.v[0]); });
    EXPECT_EQ(t.solve(), "");
    EXPECT_FALSE(t.r.slv.now.l_converged);
    EXPECT_EQ(t.n_calls, 3);
}

TEST(solve_newton_dc, a_limit_below_1_does_not_even_look) {
    for (const char* limit : {"itmax_newton_first=0", "itmax_newton_first=-5"}) {
        one_node t(only_rhs2 + limit, 2, line_through(2));
        t.solve();
        EXPECT_FALSE(t.r.slv.now.l_converged);
        EXPECT_EQ(t.n_calls, 0);
    }
}

TEST(solve_newton_dc, newton_first_is_up_in_iteration_0_alone) {
    std::vector<int> seen;
    one_node t(only_rhs2, 5, [&](const model_call& m) {
        seen.push_back(m.flags->newton_first);
        line_through(2)(m);
    });
    t.solve();
    EXPECT_EQ(seen, (std::vector<int>{1, 0}));
    EXPECT_EQ(t.r.flags.newton_first, 0);
}

TEST(solve_newton_dc, counts_its_solves) {
    one_node t(only_rhs2, 5, line_through(2));
    t.solve();
    EXPECT_EQ(t.r.flags.n_solve_lin, 2);
}

// ---- damping

TEST(damping, its_bound_counts_iterations_from_0_and_is_inclusive) {
    // Half steps towards 0 from 8: with a bound of 0 one of them, then the full step.
    for (const int bound : {0, 1, 2}) {
        one_node t(only_rhs2 + "dmp_first=yes dmp_k_first=0.5 dmp_newt_max_first=" + std::to_string(bound), 8,
                   line_through(0));
        std::vector<double> steps;
        while (!t.r.slv.now.l_converged && steps.size() < 10) {
            t.r.slv.method.itmax_newton_first = static_cast<int>(steps.size()) + 1;
            t.r.mat.svec[0] = 8;
            dcmp_solvec(t.r);
            t.solve();
            steps.push_back(t.v());
        }
        std::vector<double> wanted;
        for (int k = 0; k <= bound; ++k) wanted.push_back(8 / std::pow(2, k + 1));
        wanted.push_back(0);  // the full step
        wanted.push_back(0);  // the residual seen
        EXPECT_EQ(steps, wanted) << bound;
    }
}

TEST(damping, a_start_from_a_solution_has_settings_of_its_own) {
    one_node t("dmp_first=yes dmp_k_first=0.5 dmp_k=0.25 dmp=yes itmax_newton=1 itmax_newton_first=1", 8,
               line_through(0));
    t.solve();
    EXPECT_EQ(t.v(), 4);
    t.r.slv.task.init_previous = int_T;
    t.solve();
    EXPECT_EQ(t.v(), 3);
}

// ---- line search

TEST(line_search, a_step_that_lowers_the_residual_stays_whole) {
    one_node t(only_rhs2 + "nr_line_search=yes itmax_newton_first=1", 8, line_through(3));
    t.solve();
    EXPECT_EQ(t.v(), 3);
    EXPECT_EQ(t.r.mat.delsvec[0], -5);
    EXPECT_EQ(t.n_calls, 2);  // iterate and one trial
}

TEST(line_search, an_equal_residual_is_accepted) {
    one_node t(only_rhs2 + "nr_line_search=yes itmax_newton_first=1", 1, [](const model_call& m) { m.branch(7, 1); });
    t.solve();
    EXPECT_EQ(t.v(), -6);
    EXPECT_EQ(t.n_calls, 2);
}

TEST(line_search, halves_until_the_residual_is_not_above_the_start) {
    // From 3 the full step leads to -9.5 and half of it to -3.2, both with a larger arc tangent; a quarter to -0.12.
    one_node t(only_rhs2 + "nr_line_search=yes itmax_newton_first=1", 3, arc_tangent);
    EXPECT_EQ(t.solve(), "");
    const double full = -std::atan(3.0) * 10;
    EXPECT_DOUBLE_EQ(t.v(), 3 + full / 4);
    EXPECT_DOUBLE_EQ(t.r.mat.delsvec[0], full / 4);
    EXPECT_EQ(t.n_calls, 4);
}

TEST(line_search, finds_what_plain_newton_runs_away_from) {
    one_node plain(only_rhs2, 3, arc_tangent), searching(only_rhs2 + "nr_line_search=yes", 3, arc_tangent);
    plain.solve();
    EXPECT_FALSE(plain.r.slv.now.l_converged);
    searching.solve();
    EXPECT_TRUE(searching.r.slv.now.l_converged);
    EXPECT_NEAR(searching.v(), 0, 1e-12);
}

TEST(line_search, without_an_acceptable_trial_the_iterate_stays_and_newton_gives_up_silently) {
    one_node t(only_rhs2 + "nr_line_search=yes itmax_line_search=2", 3, arc_tangent);
    EXPECT_EQ(t.solve(), "");
    EXPECT_FALSE(t.r.slv.now.l_converged);
    EXPECT_EQ(t.v(), 3);
    EXPECT_EQ(t.n_calls, 3);
}

TEST(line_search, without_any_trial_it_fails_at_once) {
    one_node t(only_rhs2 + "nr_line_search=yes itmax_line_search=0", 8, line_through(3));
    EXPECT_EQ(t.solve(), "");
    EXPECT_FALSE(t.r.slv.now.l_converged);
    EXPECT_EQ(t.v(), 8);
    EXPECT_EQ(t.n_calls, 1);
}

TEST(line_search, takes_the_place_of_damping) {
    one_node t(only_rhs2 + "nr_line_search=yes dmp_first=yes dmp_k_first=0.5", 8, line_through(3));
    t.solve();
    EXPECT_EQ(t.v(), 3);
    EXPECT_EQ(t.r.slv.now.iter_newton, 0);  // the accepted trial's residual is what the test sees
}

TEST(line_search, trials_ask_for_functions_only) {
    std::vector<int> jacobians;
    one_node t(only_rhs2 + "nr_line_search=yes itmax_newton_first=1", 3, [&](const model_call& m) {
        jacobians.push_back(m.flags->jacobian);
        arc_tangent(m);
    });
    t.solve();
    EXPECT_EQ(jacobians, (std::vector<int>{1, 0, 0, 0}));
}

// ---- leaving

TEST(solve_newton_dc, tells_nan_and_leaves) {
    one_node t(only_rhs2 + "write_rhs2=yes", 1,
               [](const model_call& m) { m.branch(std::numeric_limits<double>::quiet_NaN(), 1); });
    EXPECT_EQ(t.solve(), "solve_newton_dc: NaN found!\n");
    EXPECT_FALSE(t.r.slv.now.l_converged);
    EXPECT_EQ(t.n_calls, 1);
}

TEST(solve_newton_dc, without_a_test_of_convergence_accepts_no_infinity) {
    one_node t("chk_cnvrg=no", 0, [](const model_call& m) { m.branch(-1e300, 1e-30); });
    EXPECT_EQ(t.solve(), "solve_newton_dc: NaN found!\n");
    EXPECT_FALSE(t.r.slv.now.l_converged);
}

TEST(solve_newton_dc, tells_a_norm_that_is_too_large_and_leaves) {
    one_node t("chk_spice=no chk_delx_all=yes norm_large=100", 0, line_through(500));
    EXPECT_EQ(
        t.solve(),
        "check_convergence: norm too large.\n   slv->norm_delx_all=5.0000e+02\nsolve_newton_dc: norm too large.\n");
    EXPECT_FALSE(t.r.slv.now.l_converged);
    EXPECT_EQ(t.n_calls, 1);
}

TEST(solve_newton_dc, a_capped_exponential_keeps_the_iteration_going_in_silence) {
    int capped = 3;
    one_node t(only_rhs2 + "write_rhs2=yes", 2, [&](const model_call& m) {
        line_through(2)(m);
        if (capped-- > 0) ++m.flags->n_limit;
    });
    EXPECT_EQ(t.solve(), "3 norm_rhs_2= 0.0000e+00\n");
    EXPECT_TRUE(t.r.slv.now.l_converged);
}

TEST(solve_newton_dc, a_blow_up_of_an_earlier_solve_is_forgotten) {
    int capped = 1;
    one_node t("chk_spice=no chk_delx_all=yes norm_large=100", 0, line_through(500));
    t.solve();
    ASSERT_TRUE(t.r.slv.now.l_norm_too_large);
    use_model(t.r, 0, [&](const model_call& m) {
        if (!m.evaluates()) return;
        line_through(t.v() + 1)(m);
        if (capped-- > 0) ++m.flags->n_limit;
    });
    t.r.slv.method.chk_delx_all = int_F;
    t.r.slv.method.chk_rhs2 = int_T;
    t.r.slv.method.norm_2 = 10;
    EXPECT_EQ(t.solve(), "");
    EXPECT_TRUE(t.r.slv.now.l_converged);
}

// ---- models that limit

namespace {
// Lets each node of a unit move by no more than `most` an iteration.
made_up_model limited(double root, double most) {
    return [=](const model_call& m) {
        if (m.evaluates()) line_through(root)(m);
        if (m.flags->limit_newton && std::fabs(m.v_new[0] - m.v[0]) > most)
            m.v_new[0] = m.v[0] + std::copysign(most, m.v_new[0] - m.v[0]);
    };
}
void let_diodes_limit(dc_run& t) {
    t.c.lib.ebes.flag.limit_newton[static_cast<std::size_t>(t.c.lib.ebes.list.find("diode"))] = 1;
    t.c.cct.flag_lmtnewt = true;
}
}  // namespace

TEST(update_sol_1, a_limiting_model_pulls_the_iterate_back_and_not_the_step) {
    dc_run t(one_branch);
    t.start();
    let_diodes_limit(t);
    use_model(t.r, 0, limited(0, 0.25));
    t.r.mat.svec[0] = 1;
    t.r.mat.delsvec[0] = -5;
    update_sol_1(t.r);
    EXPECT_EQ(t.r.mat.svec[0], 0.75);
    EXPECT_EQ(t.r.mat.delsvec[0], -5);
    EXPECT_EQ(t.r.flags.limit_newton, 0);
}

TEST(update_sol_1, without_a_limiting_model_adds_the_step) {
    dc_run t(one_branch);
    t.start();
    use_model(t.r, 0, limited(0, 0.25));
    t.r.mat.svec[0] = 1;
    t.r.mat.delsvec[0] = -5;
    update_sol_1(t.r);
    EXPECT_EQ(t.r.mat.svec[0], -4);
}

TEST(update_sol_1, on_a_shared_node_the_last_limiting_unit_wins_and_both_see_the_whole_step) {
    for (const auto& [first, last] : {std::pair{0.25, 0.5}, std::pair{0.5, 0.25}}) {
        dc_run t(one_branch + "eelement name=D2 type=diode p=a n=0\n");
        t.start();
        let_diodes_limit(t);
        std::vector<double> seen;
        for (const auto& [u, most] : {std::pair{0, first}, std::pair{1, last}})
            use_model(t.r, u, [&seen, most = most](const model_call& m) {
                if (m.flags->limit_newton) seen.push_back(m.v_new[0]);
                limited(0, most)(m);
            });
        t.r.mat.svec[0] = 1;
        t.r.mat.delsvec[0] = 3;
        update_sol_1(t.r);
        EXPECT_EQ(seen, (std::vector<double>{4, 4}));
        EXPECT_EQ(t.r.mat.svec[0], 1 + last);
    }
}

TEST(update_sol_1, nodes_of_others_and_auxiliary_unknowns_move_freely_and_the_reference_stays) {
    dc_run t(
        "eelement name=V1 type=vsrcdc p=in n=0\neelement name=R1 type=r p=in n=a\neelement name=D1 type=diode p=0 "
        "n=a\n");
    t.start();
    let_diodes_limit(t);
    use_model(t.r, 2, [](const model_call& m) {
        if (!m.flags->limit_newton) return;
        m.v_new[0] = 99;  // the reference
        m.v_new[1] = 0.5;
    });
    t.r.mat.svec = {1, 2, 3};
    t.r.mat.delsvec = {10, 20, 30};
    update_sol_1(t.r);
    EXPECT_EQ(t.r.mat.svec, (std::vector<double>{11, 0.5, 33}));
    EXPECT_EQ(t.c.ebeu.val_nd_new[static_cast<std::size_t>(t.c.ebeu.ref_nd)], 0.0);
}

TEST(solve_newton_dc, walks_at_the_pace_that_a_limiting_model_allows) {
    // From 0 to 1 in steps of a quarter; the residual is 0 one iteration after arrival.
    dc_run t(one_branch, "method: " + only_rhs2 + "\n");
    t.start();
    let_diodes_limit(t);
    use_model(t.r, 0, limited(1, 0.25));
    t.r.mat.svec[0] = 0;
    dcmp_solvec(t.r);
    solve_newton_dc(t.r);
    EXPECT_TRUE(t.r.slv.now.l_converged);
    EXPECT_EQ(t.r.slv.now.iter_newton, 4);
    EXPECT_EQ(t.r.mat.svec[0], 1);
}

// ---- a linear circuit

TEST(solve_linear_dc, one_solve_is_exact) {
    // 1000 equal resistors: node k at 10 (1 - k/1000).
    std::string chain = "eelement name=V1 type=vsrcdc p=n0 n=0 vdc=10\n";
    for (int k = 0; k < 1000; ++k)
        chain += "eelement name=R" + std::to_string(k) + " type=r p=n" + std::to_string(k) +
                 " n=" + (k == 999 ? std::string("0") : "n" + std::to_string(k + 1)) + " r=1\n";
    dc_run t(chain);
    t.start();
    solve_linear_dc(t.r);
    EXPECT_EQ(t.r.flags.n_solve_lin, 1);
    for (int k = 1; k < 1000; ++k)
        EXPECT_NEAR(t.node("n" + std::to_string(k)) / (10 * (1 - k / 1000.0)), 1, 1e-12) << k;
}

TEST(solve_linear_dc, starts_from_anywhere) {
    dc_run t(
        "eelement name=V1 type=vsrcdc p=a n=0 vdc=3\neelement name=R1 type=r p=a n=b\neelement name=R2 type=r p=b n=0 "
        "r=2\n");
    t.start();
    t.r.mat.svec = {1e3, -1e3, 70};
    dcmp_solvec(t.r);
    solve_linear_dc(t.r);
    EXPECT_NEAR(t.node("a"), 3, 1e-12);
    EXPECT_NEAR(t.node("b"), 2, 1e-12);
    EXPECT_NEAR(t.r.mat.svec[2], -1, 1e-12);
}
