// plan_test.cpp -- what is not called, not summed and not found again must give the rows that the plain way gives.
#include <gtest/gtest.h>

#include <cstring>

#include "analyses/evaluate.h"
#include "analyses/plan.h"
#include "dc_fixture.h"
#include "whole_run.h"

namespace {
const char* const methods[] = {"back_euler",      "trapezoidal",      "gear2", "gear2_fixed",
                               "back_euler_auto", "trapezoidal_auto", "trbdf2"};

const std::string linear_circuit =
    "eelement name=V1 type=vsrcac p=in n=0 a=10 f_hz=1k vdc=1\neelement name=A1 type=ammeter p=in n=i1\n"
    "eelement name=R1 type=r p=i1 n=a r=1k\neelement name=C1 type=c p=a n=0 c=0.1u v0=1\n"
    "eelement name=C2 type=c p=a n=b c=0.05u\neelement name=R2 type=r p=b n=0 r=2k\n"
    "eelement name=L1 type=l p=b n=c l=10m i0=1m\neelement name=R3 type=r p=c n=0 r=500\n"
    "eelement name=F1 type=cccs p=d n=0 br=A1\neelement name=R4 type=r p=d n=0 r=1k\n"
    "eelement name=C3 type=c p=d n=0 c=10n\neelement name=G1 type=vccs p=e n=0 cp=a cn=b\n"
    "eelement name=R5 type=r p=e n=0 r=1k\neelement name=T1 type=xfmr p1=e n1=0 p2=g n2=0 l1=1m l2=4m\n"
    "eelement name=R6 type=r p=g n=0 r=100\n"
    "outvar: va=nodev_of_a vb=nodev_of_b vg=nodev_of_g ic=i_of_C1 i2=i_of_C2 il=i_of_L1 ir=i_of_R1 it=i1_of_T1\n";
// With a break point, a switching instant, charges of junctions, and units that are not pure in front of and behind
// pure ones in the same entries.
const std::string diode_circuit =
    "eelement name=V1 type=vsrcac p=in n=0 a=10 f_hz=1k\neelement name=R1 type=r p=in n=a r=1k\n"
    "eelement name=D1 type=diode_spice_1 p=a n=b cj0=1n tt=1u\neelement name=D2 type=diode_r p=b n=c r_on=0.1\n"
    "eelement name=D3 type=diode p=0 n=a\neelement name=R2 type=r p=c n=0 r=2k\n"
    "eelement name=C1 type=c p=c n=0 c=0.1u v0=1\neelement name=C2 type=c p=b n=c c=10n\n"
    "eelement name=L1 type=l p=c n=e l=10m\neelement name=R3 type=r p=e n=0 r=500\n"
    "eelement name=R4 type=r p=b n=0 r=5k\n";
const std::string pulse_circuit =
    "eelement name=V2 type=vpulse p=h n=0 v2=3 td=0.1m pw=0.2m per=0.6m\neelement name=R7 type=r p=h n=a r=10k\n"
    "gelement name=S type=srcac y=s a=2 f_hz=2k\ngelement name=G type=lag_1 x=s y=t tau=0.1m\n"
    "gelement name=H type=cmprtr x1=t x2=s y=q\neelement name=W1 type=switch_g1 p=in n=c g=q r_on=10\n";
const std::string diode_outputs =
    "outvar: va=nodev_of_a vb=nodev_of_b vc=nodev_of_c ic=i_of_C1 i2=i_of_C2 il=i_of_L1 id=i_of_D1\n";

// Blocks that follow one another with parameters changed, the last but one cut off; each goes on from the one before.
std::string blocks(const std::string& method, const std::string& more, const std::string& shown,
                   const std::string& shown_at_last) {
    const auto block = [&](int k, const std::string& head, const std::string& cards, const std::string& variables) {
        return "begin_solve\n" + head + cards + "begin_output\nfilename out" + std::to_string(k) +
               ".dat\nvariables: " + variables + "\nend_output\nend_solve\n";
    };
    const std::string step = "solve_type trns\ninitial_sol previous\nmethod: " + method + "=yes " + more;
    return block(1, "solve_type startup\n", "", "va vb") + block(2, step + " t_end=0.4m delt_const=5u\n", "", shown) +
           block(3, step + " t_end=0.4m delt_const=8u\n", "set_parm r_of_R2 3k c_of_C1 0.2u\n", shown) +
           block(4, step + " t_end=1m delt_const=5u itmax_trns=30\n", "", shown) +
           block(5, step + " t_end=50u delt_const=5u\n", "", shown_at_last);
}
std::string deck(const std::string& circuit_block, const std::string& solve_blocks) {
    return "title: test\nbegin_circuit\nrefnode 0\n" + circuit_block + "end_circuit\n" + solve_blocks + "end_cf\n";
}

// All row files of a run, and whether it stopped.
struct outcome {
    std::string rows;
    bool stopped;
};
outcome outcome_of(const std::string& text, const std::string& without = "") {
    const whole_run run(text, without);
    outcome o{"", run.stopped};
    for (int k = 1; k <= 5; ++k) o.rows += read_file("out" + std::to_string(k) + ".dat");
    return o;
}

void expect_same_rows(const std::string& text, const std::string& what) {
    const outcome plain = outcome_of(text, " pure=yes");
    EXPECT_GT(plain.rows.size(), 1000u) << what;
    for (const char* without : {"", " timeless=yes"}) {
        const outcome quick = outcome_of(text, without);
        EXPECT_EQ(quick.stopped, plain.stopped) << what;
        EXPECT_EQ(quick.rows, plain.rows) << what << " without " << without;
    }
}
}  // namespace

TEST(plan, rows_are_the_same_as_without_pure_units_in_linear_circuits) {
    for (const std::string method : methods) {
        expect_same_rows(deck(linear_circuit, blocks(method, "", "va vb vg", "va vb vg ic i2 il ir it")), method);
        expect_same_rows(deck(linear_circuit, blocks(method, "", "va ic ir", "va vb vg ic i2 il ir it")), method);
    }
}

// Rejected steps of the auto rules and trbdf2; few iterations make steps fail, gmin steps and line searches begin.
TEST(plan, rows_are_the_same_as_without_pure_units_in_circuits_of_diodes) {
    for (const std::string method : methods)
        for (const std::string more : {"", "itmax_newton=4", "gmin_step=yes itmax_newton=3", "nr_line_search=yes",
                                       "nr_approx=yes iter_trns_nrapprox=20"}) {
            // A search that ends without success stops the run.
            if (more.starts_with("nr_line") && method != "back_euler") continue;
            if (more.starts_with("nr_approx") && method != "back_euler" && method != "trapezoidal") continue;
            expect_same_rows(
                deck(diode_circuit + diode_outputs, blocks(method, more, "va vb vc", "va vb vc ic i2 il id")),
                method + " " + more);
        }
}

TEST(plan, rows_are_the_same_as_without_pure_units_at_break_points_and_switches) {
    for (const std::string method : methods) {
        if (method == "gear2_fixed") continue;  // stops: it has no break points
        for (const std::string more : {"norm_2=1u", "norm_2=1u event_restart=yes"})
            expect_same_rows(deck(diode_circuit + pulse_circuit + diode_outputs,
                                  blocks(method, more, "va vb vc", "va vb vc ic i2 il id")),
                             method + " " + more);
    }
}

// The first row of a block that goes on shows the currents of the last point of the one before.
TEST(plan, currents_that_nobody_asked_for_are_those_that_a_file_would_have_shown) {
    for (const std::string method : methods) {
        const std::string all = "va vb ic i2 il";
        const outcome asked = outcome_of(deck(linear_circuit, blocks(method, "", all, all)));
        const table rows_asked = [&] {
            const whole_run run(deck(linear_circuit, blocks(method, "", all, all)));
            return run.rows("out5.dat");
        }();
        const whole_run run(deck(linear_circuit, blocks(method, "", "va vb", all)));
        EXPECT_EQ(run.stopped, asked.stopped) << method;
        EXPECT_GT(rows_asked.size(), 3u) << method;
        EXPECT_EQ(run.rows("out5.dat"), rows_asked) << method;
    }
}

// The order of additions: by unit, within a unit by its slots, to the bit.
TEST(plan, entries_and_rows_are_summed_in_the_order_of_the_units) {
    std::string circuit_block;
    for (int i = 0; i < 12; ++i) {
        const std::string k = std::to_string(i), a = "n" + std::to_string(i % 4), b = "n" + std::to_string((i + 1) % 4);
        circuit_block += "eelement name=R" + k + " type=r p=" + a + " n=" + b + " r=" + std::to_string(0.37 + 1.7 * i) +
                         "\neelement name=D" + k + " type=diode_r p=" + b +
                         " n=0 r_on=" + std::to_string(0.013 + 0.3 * i) + "\n";
    }
    dc_run t(circuit_block);
    t.start();
    t.r.mat.svec = {0.31, 1.47, 0.72, -0.4};
    dcmp_solvec(t.r);
    form_jac_rhs(t.r, false);
    std::vector<double> val(t.r.mat.val_m.size(), 0.0), rhs(at(t.r.mat.n_svec), 0.0);
    const slot_table& slot = t.r.mat.ebe;
    t.r.flags.dc = t.r.flags.function = t.r.flags.jacobian = 1;
    for (int u = 0; u < t.c.ebeu.n(); ++u) {
        get_unit(t.r, t.r.ebe, u);
        for (int k = slot.first_jac[at(u)]; k < slot.first_jac[at(u) + 1]; ++k)
            val[at(slot.to_val[at(k)])] += t.r.ebe.call[at(u)].jac->store[at(slot.from_jac[at(k)])];
    }
    t.r.flags.init_flags();
    for (std::size_t k = 0; k < slot.to_row.size(); ++k) rhs[at(slot.to_row[k])] += t.c.ebeu.f[at(slot.from_f[k])];
    EXPECT_EQ(std::memcmp(val.data(), t.r.mat.val_m.data(), val.size() * sizeof(double)), 0);
    EXPECT_EQ(std::memcmp(rhs.data(), t.r.mat.rhs_m.data(), rhs.size() * sizeof(double)), 0);
    EXPECT_GT(t.r.ebe.runs.left_out[0].n, 1);  // several units in one run
}

TEST(plan, a_model_put_in_the_place_of_another_is_called_unit_by_unit) {
    dc_run t(
        "eelement name=D1 type=diode_r p=a n=0\neelement name=D2 type=diode_r p=b n=0\n"
        "eelement name=R1 type=r p=a n=b r=1\n");
    t.start();
    std::vector<int> called;
    for (const char* name : {"D1", "D2"})
        use_model(t.r, t.unit_of(name), [&called, u = t.unit_of(name)](const model_call& m) {
            called.push_back(u);
            m.branch(0.0, 1.0);
        });
    form_jac_rhs(t.r, false);
    EXPECT_EQ(called, (std::vector<int>{t.unit_of("D1"), t.unit_of("D2")}));
    EXPECT_EQ(t.r.mat.val_m[0], 2.0);
}

TEST(ebce_form_arrays, forms_kept_arguments_again_when_any_variable_has_changed) {
    dc_run t(
        "eelement name=V1 type=vsrcdc p=a n=0 vdc=5\neelement name=F1 type=cccs p=b n=0 br=V1\n"
        "eelement name=R1 type=r p=a n=b r=1\n");
    t.start();
    t.r.formed.keep();
    ebeu_class& e = t.c.ebeu;
    ebce_form_arrays(t.r);
    const long version = t.r.formed.version();
    ebce_form_arrays(t.r);
    EXPECT_EQ(t.r.formed.version(), version);
    e.val_nd[at(e.nd.row(0)[0])] = 3.25;
    ebce_form_arrays(t.r);
    EXPECT_EQ(t.r.formed.version(), version + 1);
    EXPECT_EQ(e.nodev[at(e.nd.first[0])], 3.25);
    e.aux[at(e.ib_aux.data[0])] = -0.5;
    ebce_form_arrays(t.r);
    EXPECT_EQ(t.r.formed.version(), version + 2);
    EXPECT_EQ(e.curind[0], -0.5);
}

TEST(plan, a_curved_unit_is_called_again_for_other_variables_another_gmin_or_derivatives_that_it_did_not_give) {
    dc_run t("eelement name=D1 type=diode_r p=a n=0\neelement name=R1 type=r p=a n=0 r=1\n");
    t.start();
    std::vector<bool> with_derivatives;
    const auto count_calls = [&] {
        use_model(t.r, t.unit_of("D1"), [&](const model_call& m) {
            with_derivatives.push_back(m.flags->jacobian != 0);
            m.branch(0.0, 1.0);
        });
    };
    count_calls();
    make_plan(t.r);
    t.r.formed.keep();
    form_jac_rhs(t.r, true);
    form_jac_rhs(t.r, true);
    EXPECT_EQ(with_derivatives, (std::vector<bool>{false}));
    form_jac_rhs(t.r, false);
    form_jac_rhs(t.r, false);
    form_jac_rhs(t.r, true);
    EXPECT_EQ(with_derivatives, (std::vector<bool>{false, true}));
    t.r.flags.gmin = 1e-3;
    form_jac_rhs(t.r, false);
    EXPECT_EQ(with_derivatives.size(), 3u);
    t.r.mat.svec[0] += 1e-3;
    dcmp_solvec(t.r);
    form_jac_rhs(t.r, false);
    EXPECT_EQ(with_derivatives.size(), 4u);
    t.r.formed.forget_calls();
    form_jac_rhs(t.r, false);
    EXPECT_EQ(with_derivatives.size(), 5u);
}
