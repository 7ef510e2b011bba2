#include "analyses/mat_class.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "dc_fixture.h"

namespace {

using dense = std::vector<std::vector<double>>;

dense jacobian_of(const run_state& r) {
    dense a(at(r.mat.n_svec), std::vector<double>(at(r.mat.n_svec), 0.0));
    for (int k = 0; k < r.mat.m.nnz(); ++k) a[at(r.mat.m.row[at(k)])][at(r.mat.m.col[at(k)])] += r.mat.val_m[at(k)];
    return a;
}

std::vector<double> residual_at(run_state& r, const std::vector<double>& x) {
    r.mat.svec = x;
    dcmp_solvec(r);
    form_jac_rhs(r, true);
    return r.mat.rhs_m;
}

const std::string everything =
    "eelement name=V1 type=vsrcdc p=in n=0 vdc=1\n"
    "eelement name=R1 type=r p=in n=a r=2\n"
    "eelement name=R2 type=r p=a n=in r=3\n"
    "eelement name=D1 type=diode p=a n=b is=1e-3 vt=0.5\n"
    "eelement name=D2 type=diode_spice_1 p=0 n=b is=1e-3 temp=3000 tnom=3000\n"
    "eelement name=P1 type=r_pot p=in w=b n=c r=5 a=0.25\n"
    "eelement name=A1 type=ammeter p=c n=d\n"
    "eelement name=L1 type=l p=d n=e l=2\n"
    "eelement name=C1 type=c p=e n=a c=1\n"
    "eelement name=E1 type=vcvs p=e n=0 cp=a cn=b k=0.5\n"
    "eelement name=G1 type=vccs p=c n=0 cp=in cn=0 gm=0.25\n"
    "eelement name=H1 type=ccvs p=f n=0 br=A1 rm=0.75\n"
    "eelement name=F1 type=cccs p=f n=b br=L1 k=1.5\n"
    "eelement name=I1 type=isrcac p=f n=a idc=0.125\n";

// A composite that holds one of its nodes with ground_dummy_1 and nothing else.
const std::string holding_ece =
    "ece name=holding\nbegin_dc\nmainnodes: p n\nauxnodes: m\noutvar:\nbias:\nstparms:\nigparms:\nind_nodes:\n"
    "ind_branches:\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\nrparms:\nrparms_derived:\n"
    "ebe type=ground_dummy_1 name=g g=m\nebe type=r name=r p=p n=n\nend_dc\nC:\nendC\n"
    "begin_ac\noutvar_ac:\nind_nodes_ac:\nind_branches_ac:\nend_ac\nendece\n";

// One function too many, or one unknown too many.
std::string crooked(const std::string& aux, const std::string& function) {
    const int n = function.empty() ? 2 : 3;
    return "ebe name=crooked\nJacobian: constant\nnodes: p n\nind_nodes:\nind_branches:\niparms:\nsparms:\nrparms:\n"
           "local_var:\naux_var: " +
           aux + "\naux_var_startup:\ndigital_nodes:\nmain_var:\nxvar:\nstparms:\nigparms:\nno_functions " +
           std::to_string(n) + "\nf_p v(p)\nf_n v(n)\n" + function + "C: compiled\nendebe\n";
}
const std::string crooked_ece =
    "ece name=crooked\nbegin_dc\nmainnodes: p n\nauxnodes:\noutvar:\nbias:\nstparms:\nigparms:\nind_nodes:\n"
    "ind_branches:\ndigital_nodes:\nmain_var:\nxvar:\niparms:\nsparms:\nrparms:\nrparms_derived:\n"
    "ebe type=crooked name=c p=p n=n\nend_dc\nC:\nendC\nbegin_ac\noutvar_ac:\nind_nodes_ac:\nind_branches_ac:\n"
    "end_ac\nendece\n";
}  // namespace

TEST(set_mat, numbers_rows_by_first_use_and_prints_the_size) {
    // R1: rows 0 (a), 1 (b). V1: b is known, 0 has no row, its own equation is row 2. R2: c is row 3.
    dc_run t(
        "eelement name=R1 type=r p=a n=b\neelement name=V1 type=vsrcdc p=b n=0\neelement name=R2 type=r p=c n=a\n");
    t.listen([&] { read_block(t.r, 0); });
    t.listen([&] { set_mat(t.r.mat, t.c, t.r.ebe.jac, t.r.gbe.jac); });
    EXPECT_EQ(t.text, "mat::set_mat_2: system matrix size is 4 x 4\n");
    const std::vector<int>& row = t.r.mat.ebce_row_of_func;
    const std::vector<int>& first = t.c.ebeu.unit.first_func;
    EXPECT_EQ(row[at(first[0])], 0);
    EXPECT_EQ(row[at(first[0] + 1)], 1);
    EXPECT_EQ(row[at(first[1])], 1);
    EXPECT_EQ(row[at(first[1] + 1)], -1);  // at the reference
    EXPECT_EQ(row[at(first[1] + 2)], 2);
    EXPECT_EQ(row[at(first[1] + 3)], -1);  // of start-up
    EXPECT_EQ(row[at(first[2])], 3);
    EXPECT_EQ(row[at(first[2] + 1)], 0);
}

TEST(set_mat, a_kcl_function_on_the_reference_has_no_row_and_terms_on_it_disappear) {
    dc_run t("eelement name=R1 type=r p=a n=0\n");
    t.start();
    const slot_table& s = t.r.mat.ebe;
    EXPECT_EQ(s.from_jac.size(), 1u);
    EXPECT_EQ(s.to_row, std::vector<int>{0});
    EXPECT_EQ(s.from_f, std::vector<int>{0});
    EXPECT_EQ(t.r.mat.m.nnz(), 1);
}

TEST(set_mat, two_elements_on_the_same_nodes_share_their_entries) {
    dc_run t(
        "eelement name=R1 type=r p=a n=b r=2\neelement name=R2 type=r p=a n=b r=4\neelement name=R3 type=r p=b n=0\n");
    t.start();
    const slot_table& s = t.r.mat.ebe;
    const std::vector<int> of_r1(s.to_val.begin() + s.first_jac[0], s.to_val.begin() + s.first_jac[1]);
    const std::vector<int> of_r2(s.to_val.begin() + s.first_jac[1], s.to_val.begin() + s.first_jac[2]);
    EXPECT_EQ(of_r1, of_r2);
    EXPECT_EQ(of_r1.size(), 4u);
    EXPECT_EQ(t.r.mat.m.nnz(), 4);
}

TEST(form_jac_rhs, adds_the_units_once_however_often_it_is_called) {
    dc_run t(
        "eelement name=R1 type=r p=a n=b r=2\neelement name=R2 type=r p=a n=b r=4\neelement name=R3 type=r p=b n=0\n");
    t.start();
    t.r.mat.svec = {3, 1};
    dcmp_solvec(t.r);
    for (int k = 0; k < 3; ++k) {
        form_jac_rhs(t.r, false);
        EXPECT_EQ(jacobian_of(t.r), (dense{{0.75, -0.75}, {-0.75, 1.75}}));
        EXPECT_EQ(t.r.mat.rhs_m, (std::vector<double>{1.5, -0.5}));
    }
}

TEST(form_jac_rhs, a_row_of_one_function_replaces_what_stood_there) {
    dc_run t("eelement name=V1 type=vsrcdc p=a n=0 vdc=5\neelement name=R1 type=r p=a n=0 r=1\n");
    t.start();
    t.r.mat.svec = {2, 0.5};
    dcmp_solvec(t.r);
    t.r.mat.rhs_m = {1e30, 1e30};
    form_jac_rhs(t.r, true);
    EXPECT_EQ(t.r.mat.rhs_m, (std::vector<double>{2.5, -3}));  // i_b + v/1, v - 5
}

TEST(form_jac_rhs, without_the_matrix_leaves_the_matrix_alone) {
    dc_run t("eelement name=R1 type=r p=a n=0 r=2\n");
    t.start();
    form_jac_rhs(t.r, false);
    t.r.mat.val_m[0] = 77;
    form_jac_rhs(t.r, true);
    EXPECT_EQ(t.r.mat.val_m[0], 77);
}

TEST(form_jac_rhs, clears_the_count_of_capped_exponentials_and_all_switches) {
    dc_run t("eelement name=R1 type=r p=a n=0 r=2\n");
    t.start();
    for (const bool only_function : {true, false}) {
        t.r.flags.n_limit = 5;
        form_jac_rhs(t.r, only_function);
        EXPECT_EQ(t.r.flags.n_limit, 0);
        EXPECT_EQ(run_and_listen([&] { t.r.flags.write_all_true(); }).text, "");
    }
}

TEST(form_jac_rhs, its_matrix_is_the_derivative_of_its_residual) {
    // Central differences of every element at random points; the reference is in the middle of the node order.
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> value(-1, 1);
    dc_run t(everything);
    t.start();
    const int n = t.r.mat.n_svec;
    constexpr double h = 1e-5;
    for (int trial = 0; trial < 20; ++trial) {
        std::vector<double> x(at(n));
        for (double& v : x) v = value(rng);
        t.r.mat.svec = x;
        dcmp_solvec(t.r);
        form_jac_rhs(t.r, false);
        const dense a = jacobian_of(t.r);
        EXPECT_EQ(t.r.mat.rhs_m, residual_at(t.r, x));
        for (int c = 0; c < n; ++c) {
            std::vector<double> up = x, down = x;
            up[at(c)] += h;
            down[at(c)] -= h;
            const std::vector<double> f_up = residual_at(t.r, up), f_down = residual_at(t.r, down);
            for (int row = 0; row < n; ++row)
                EXPECT_NEAR(a[at(row)][at(c)], (f_up[at(row)] - f_down[at(row)]) / (2 * h), 1e-7)
                    << "row " << row << ", column " << c;
        }
    }
}

TEST(set_mat, a_node_without_any_function_leaves_an_empty_row) {
    // Squareness holds, as the node's row is counted; elimination tells.
    dc_run t("eelement name=X1 type=holding p=a n=0\n", "", "", holding_ece);
    t.start();
    EXPECT_EQ(t.r.mat.n_svec, 2);
    EXPECT_EQ(t.r.mat.m.nnz(), 1);
    EXPECT_HALT(solve_linear_dc(t.r), "nnz_active_k_1: valmax_col=0. i_col=0\n  Singular matrix? Halting...\n");
}

TEST(set_mat, an_empty_row_is_told_as_such) {
    // `a` is reached by a function that does not depend on any node in dc.
    dc_run t("eelement name=C1 type=c p=a n=b\neelement name=R1 type=r p=b n=0\n");
    t.start();
    EXPECT_HALT(solve_linear_dc(t.r), "nnz_active_k_1: valmax_row=0. i_row=0\n  Singular matrix? Halting...\n");
}

TEST(set_mat, an_empty_last_row_has_a_text_of_its_own) {
    dc_run t("eelement name=C1 type=c p=a n=0\n");
    t.start();
    EXPECT_HALT(solve_linear_dc(t.r),
                "gauss_1a: last row: zero pivot?\n   Error in Gauss elimination routine\n   zero pivot\n");
}

TEST(set_mat, more_functions_than_unknowns_halts) {
    dc_run t("eelement name=X1 type=crooked p=a n=0\n", "", crooked("", "f_x v(p)\n"), crooked_ece);
    t.listen([&] { read_block(t.r, 0); });
    EXPECT_HALT(set_mat(t.r.mat, t.c, t.r.ebe.jac, t.r.gbe.jac),
                "mat::set_mat_2: system matrix is not square!\n  nrow_m = 2\n  ncol_m = 1\n  Halting...\n");
}

TEST(set_mat, fewer_functions_than_unknowns_halts) {
    dc_run t("eelement name=X1 type=crooked p=a n=0\n", "", crooked("i", ""), crooked_ece);
    t.listen([&] { read_block(t.r, 0); });
    EXPECT_HALT(set_mat(t.r.mat, t.c, t.r.ebe.jac, t.r.gbe.jac),
                "mat::set_mat_2: system matrix is not square!\n  nrow_m = 1\n  ncol_m = 2\n  Halting...\n");
}

TEST(allocate_system, the_number_of_entries_is_limited) {
    // a and b with two resistors: 4 entries; the limit itself passes.
    dc_run t("eelement name=R1 type=r p=a n=b\neelement name=R2 type=r p=b n=0\n");
    mat_class mat;
    t.c.tmpdim.mnz_ebce = 4;
    allocate_system(mat, t.c);
    t.c.tmpdim.mnz_ebce = 3;
    EXPECT_HALT(allocate_system(mat, t.c), "mat_class::ebce_mat_1_allocate:\n  nnz_ebce is too large. Halting...\n");
}

TEST(allocate_system, the_working_entries_are_a_multiple_of_those_of_all_blocks_terminal_currents_included) {
    // Terminals at a, b and b; those at the reference have no row.
    dc_run t("eelement name=R1 type=r p=a n=b\neelement name=R2 type=r p=b n=0\n");
    mat_class mat;
    t.c.tmpdim.mnz_ebce = 100;
    t.c.tmpdim.mnz_gbce = 1000;  // there are no blocks
    t.c.tmpdim.f_mnz_w = 5;
    allocate_system(mat, t.c);
    EXPECT_EQ(mat.e.limits.mnz_w, (100 + 3) * 5);
    EXPECT_EQ(mat.e.limits.m_matttlop1, (100 + 3) * 5);
}

TEST(bind_models, a_template_without_a_model_is_told_once_and_gives_zeros) {
    dc_run t("eelement name=X1 type=crooked p=a n=0\neelement name=X2 type=crooked p=a n=0\n", "", crooked("", ""),
             crooked_ece);
    EXPECT_EQ(t.text, "warning: no model function is registered for the element type crooked\n");
    t.start();
    form_jac_rhs(t.r, false);
    EXPECT_EQ(t.r.mat.rhs_m, std::vector<double>{0});
}

TEST(solution_vector, tables_and_vector_hold_the_same_and_the_reference_is_0) {
    dc_run t(everything);
    t.start();
    for (std::size_t i = 0; i < t.r.mat.svec.size(); ++i) t.r.mat.svec[i] = 1.0 + static_cast<double>(i);
    const std::vector<double> before = t.r.mat.svec;
    dcmp_solvec(t.r);
    EXPECT_EQ(t.node("0"), 0.0);
    EXPECT_EQ(t.node("in"), 1.0);
    EXPECT_EQ(t.node("a"), 2.0);
    t.r.mat.svec.assign(before.size(), 0.0);
    form_solvec(t.r);
    EXPECT_EQ(t.r.mat.svec, before);
    clear_solvec(t.r);
    EXPECT_EQ(t.r.mat.svec, std::vector<double>(before.size(), 0.0));
    EXPECT_EQ(t.node("a"), 0.0);
}

TEST(find_ebe_cur_dc, currents_into_the_terminals_of_a_node_sum_to_zero_at_a_solution) {
    dc_run t(everything, "method: chk_only_rhs2=yes norm_2=1e-13\n");
    t.start();
    t.listen([&] { solve_dc(t.r); });
    const ebeu_class& u = t.c.ebeu;
    std::vector<double> sum(at(u.n_nd), 0.0);
    for (std::size_t k = 0; k < u.nd.data.size(); ++k) sum[at(u.nd.data[k])] += u.cur_nd[k];
    for (double s : sum) EXPECT_NEAR(s, 0.0, 1e-12);
    EXPECT_NEAR(t.node("in"), 1.0, 1e-14);
}
