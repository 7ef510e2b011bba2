// Circuits with mixed composites against the same circuits written flat: row files are equal to the last byte.
#include <gtest/gtest.h>

#include <map>

#include "../whole_run.h"

namespace {

// The lines of an entry in their order, with those of the test in place of the empty ones.
std::string gme(const std::string& first, const std::map<std::string, std::string>& lists, const std::string& body) {
    std::string text = "gme " + first + "\n";
    for (const char* keyword :
         {"mainnodes_anlg:", "auxnodes_anlg:", "stparms_anlg:", "igparms_anlg:", "main_var:", "aux_var:", "iparms:",
          "sparms:", "rparms:", "rparms_derived:", "mainnodes_dgtl:", "auxnodes_dgtl:", "stparms_dgtl:",
          "igparms_dgtl:", "outvar_anlg:", "outvar_dgtl:", "outvar_ac:"}) {
        const auto given = lists.find(keyword);
        text += std::string(keyword) + " " + (given == lists.end() ? "" : given->second) + "\n";
    }
    return text + body + "endgme\n";
}

struct files {
    std::string console;
    std::vector<std::string> rows;
};
files files_of(const std::string& deck, int n, const std::string& gmes) {
    const whole_run run(deck, "", "", gmes);
    files all{run.text, {}};
    EXPECT_FALSE(run.stopped) << run.text;
    for (int k = 1; k <= n; ++k) all.rows.push_back(run.file("out" + std::to_string(k) + ".dat"));
    return all;
}
// Both decks write out1.dat to out<n>.dat.
void expect_equal(const std::string& gmes, const std::string& mixed, const std::string& flat, int n) {
    const files a = files_of(mixed, n, gmes), b = files_of(flat, n, "");
    EXPECT_EQ(a.console, b.console);
    for (int k = 0; k < n; ++k) {
        EXPECT_GT(a.rows[static_cast<std::size_t>(k)].size(), 20U);
        EXPECT_EQ(a.rows[static_cast<std::size_t>(k)], b.rows[static_cast<std::size_t>(k)]) << "out" << k + 1;
    }
}

const std::string divider = gme("name=divider allow_ac=yes",
                                {{"mainnodes_anlg:", "a b"},
                                 {"auxnodes_anlg:", "m"},
                                 {"rparms:", "r=1k"},
                                 {"outvar_anlg:", "vm=nodev_of_m va=v_of_ra"},
                                 {"outvar_ac:", "vm_ac=nodev_of_m ia_ac=i_ac_of_ra"}},
                                "callece r name=ra p=a n=m r=r\ncallece r name=rb p=m n=b r=r\n");
const std::string twice =
    divider + gme("name=twice allow_ac=yes",
                  {{"mainnodes_anlg:", "a b"},
                   {"auxnodes_anlg:", "m"},
                   {"rparms:", "r=1k"},
                   {"rparms_derived:", "r3=$((r)*(3))"},
                   {"outvar_anlg:", "vm=vm_of_h v=nodev_of_m"},
                   {"outvar_ac:", "vm_ac=vm_ac_of_h i_ac=ia_ac_of_l"}},
                  "callgme divider name=h a=a b=m r=r\ncallgme divider name=l a=m b=b r=r3\ncallece c name=c p=m n=b "
                  "c=1u\n");
const std::string source =
    "eelement name=V1 type=vsrcac p=in n=0 vdc=10 a=1 f_hz=1k a_ac=1\neelement name=RL type=r p=in n=0 r=5k\n";

// Voltage held by a block that integrates the difference to a variable.
const std::string regulator = gme("name=regulator",
                                  {{"mainnodes_anlg:", "a g"},
                                   {"auxnodes_anlg:", "s"},
                                   {"main_var:", "ref"},
                                   {"aux_var:", "v e u"},
                                   {"rparms:", "k=500 r_out=1"},
                                   {"stparms_anlg:", "u0=0"},
                                   {"outvar_anlg:", "u=var_of_u e=var_of_e i=i_of_s v_ro=v_of_ro"}},
                                  "callece voltmeter_fb name=m p=a n=g y=v\ncallgce sub_2 name=d x1=ref x2=v y=e\n"
                                  "callgce intgrtr name=i x=e y=u k=k y0=u0\n"
                                  "callece vsrc_1 name=s p=s n=g x=u\ncallece r name=ro p=s n=a r=r_out\n");

}  // namespace

TEST(mixed_composite_runs, nested_dividers_over_a_sweep_in_time_and_over_frequencies) {
    const std::vector<std::string> blocks = {
        "solve_type dc\nvary_parm r_of_X from 1k to 2k type linear n_points 3\n",
        "solve_type trns\ninitial_sol initialize\nmethod: back_euler=yes delt_const=50u t_end=2m\n"};
    const auto frequencies = [](const std::string& outputs) {
        return "begin_solve\nsolve_type ac\nvary_freq from 10 to 10k type log n_points 4\nbegin_output\nfilename "
               "out3.dat\nvariables: " +
               outputs + "\nend_output\nend_solve\nend_cf\n";
    };
    const auto with_ac = [&](std::string deck, const std::string& outputs) {
        return deck.substr(0, deck.rfind("end_cf")) + frequencies(outputs);
    };
    const std::string out_ac = "mag_of_vma phase_of_vma mag_of_ia";
    const std::string mixed = deck_text{source +
                                            "gmelement name=X type=twice a=in b=0 r=1k\n"
                                            "outvar: vm=vm_of_X v=v_of_X vc=v_of_X.c vma=vm_ac_of_X ia=i_ac_of_X\n",
                                        "vm v vc", blocks}
                                  .str();
    std::vector<std::string> flat_blocks = blocks;
    flat_blocks[0] = "solve_type dc\nvary_parm glbl_of_g from 1k to 2k type linear n_points 3\n";
    const std::string flat =
        deck_text{source +
                      "eelement name=ha type=r p=in n=m1 r=g\neelement name=hb type=r p=m1 n=m r=g\n"
                      "eelement name=la type=r p=m n=m2 r=g3\neelement name=lb type=r p=m2 n=0 r=g3\n"
                      "eelement name=c type=c p=m n=0 c=1u\n"
                      "outvar: vm=nodev_of_m1 v=nodev_of_m vc=v_of_c vma=nodev_ac_of_m1 ia=i_ac_of_la\n",
                  "vm v vc", flat_blocks, "greal g=1k g3=$((g)*(3))\n"}
            .str();
    expect_equal(twice, with_ac(mixed, out_ac), with_ac(flat, out_ac), 3);
}

TEST(mixed_composite_runs, values_of_the_dividers_are_those_of_ohms_law) {
    const whole_run run(
        deck_text{"eelement name=V1 type=vsrcdc p=in n=0 vdc=8\ngmelement name=X type=twice a=in b=0 r=1k\n"
                  "outvar: vm=vm_of_X v=v_of_X p=pwr_elec_of_X.c\n",
                  "vm v p",
                  {"solve_type dc\n", "solve_type dc\nset_parm r_of_X=2k\n"}}
            .str(),
        "", "", twice);
    ASSERT_FALSE(run.stopped) << run.text;
    // Two of r and two of 3 r in line.
    for (const char* file : {"out1.dat", "out2.dat"}) {
        const table rows = run.rows(file);
        ASSERT_EQ(rows.size(), 1U);
        EXPECT_NEAR(rows[0][0], 7, 1e-6);
        EXPECT_NEAR(rows[0][1], 6, 1e-6);
        EXPECT_EQ(rows[0][2], 0);
    }
}

TEST(mixed_composite_runs, a_regulator_of_elements_and_blocks_from_start_up_and_in_time) {
    const std::vector<std::string> blocks = {
        "solve_type startup\nset_stparm y0_of_@i=3\n",
        "solve_type trns\ninitial_sol previous\nmethod: trapezoidal=yes delt_const=20u t_end=10m\n"};
    const auto deck = [&](const std::string& regulator_lines, const std::string& outputs, const std::string& prefix) {
        std::vector<std::string> own = blocks;
        own[0].replace(own[0].find('@'), 1, prefix);
        return deck_text{
            "gelement name=B1 type=const y=ref k=5\neelement name=RL type=r p=out n=0 r=100\n"
            "eelement name=C1 type=c p=out n=0 c=10u\n" +
                regulator_lines + outputs,
            "v u e i vr", own}
            .str();
    };
    const std::string mixed = deck("gmelement name=X type=regulator a=out g=0 ref=ref k=400\n",
                                   "outvar: v=nodev_of_out u=u_of_X e=e_of_X i=i_of_X vr=v_of_X.ro\n", "X.");
    const std::string flat = deck(
        "eelement name=m type=voltmeter_fb p=out n=0 y=v\neelement name=s type=vsrc_1 p=s n=0 x=u\n"
        "eelement name=ro type=r p=s n=out r=1\ngelement name=d type=sub_2 x1=ref x2=v y=e\n"
        "gelement name=i type=intgrtr x=e y=u k=400\n",
        "outvar: v=nodev_of_out u=var_of_u e=var_of_e i=i_of_s vr=v_of_ro\n", "");
    expect_equal(regulator, mixed, flat, 2);
    const table rows = [&] {
        const whole_run run(mixed, "", "", regulator);
        return run.rows("out2.dat");
    }();
    ASSERT_FALSE(rows.empty());
    EXPECT_NEAR(rows.back()[1], 5, 0.5);  // on its way to ref
}

TEST(mixed_composite_runs, blocks_write_and_read_a_parameter_of_a_mixed_element) {
    const std::vector<std::string> blocks = {
        "solve_type startup\n",
        "solve_type trns\ninitial_sol previous\nmethod: back_euler=yes delt_const=0.1 t_end=1\n"};
    const auto deck = [&](const std::string& circuit_block, const std::string& outputs) {
        return deck_text{
            "gelement name=B1 type=const y=one k=1\ngelement name=B2 type=intgrtr x=one y=u\n"
            "gelement name=B4 type=linear_1 x=u y=w c0=1000 c1=500\n" +
                source + circuit_block + outputs,
            "v w q", blocks}
            .str();
    };
    const std::string one =
        gme("name=one", {{"mainnodes_anlg:", "a b"}, {"rparms:", "r=1k"}}, "callece r name=r1 p=a n=b r=r\n");
    const std::string mixed = deck(
        "gelement name=S type=set_rparm x=w element=X parm=r\ngelement name=G type=get_rparm y=q element=X parm=r\n"
        "eelement name=R0 type=r p=in n=m r=1k\ngmelement name=X type=one a=m b=0\n",
        "outvar: v=nodev_of_m w=var_of_w q=var_of_q\n");
    const std::string flat = deck(
        "gelement name=S type=set_rparm x=w element=R1 parm=r\ngelement name=G type=get_rparm y=q element=R1 parm=r\n"
        "eelement name=R0 type=r p=in n=m r=1k\neelement name=R1 type=r p=m n=0 r=1k\n",
        "outvar: v=nodev_of_m w=var_of_w q=var_of_q\n");
    expect_equal(one, mixed, flat, 2);
}

TEST(mixed_composite_runs, a_half_bridge_leg_with_the_gates_of_its_dead_time) {
    const std::string load =
        "eelement name=V1 type=vsrcdc p=dc n=0 vdc=100\neelement name=V2 type=vsrcdc p=mid n=0 vdc=50\n"
        "delement name=CK type=clock y=gate t1=10u t2=10u\neelement name=R1 type=r p=sw n=a r=10\n"
        "eelement name=L1 type=l p=a n=mid l=100u\n";
    const auto deck = [&](const std::string& leg, const std::string& outputs) {
        std::string text = deck_text{load + leg + outputs,
                                     "vsw il v_up i_up i_low",
                                     {"solve_type trns\ninitial_sol initialize\n"
                                      "method: back_euler=yes delt_const=0.1u t_end=40u\n"
                                      "begin_output\nfilename out2.dat\nvariables: gate up low\nend_output\n"}}
                               .str();
        return text;
    };
    const std::string mixed =
        deck("gmelement name=LEG type=pwm_leg p=dc n=0 x=sw pwm=gate t_dead=1u r_on=20m\n",
             "outvar: vsw=nodev_of_sw il=i_of_L1 v_up=v_up_of_LEG i_up=i_up_of_LEG i_low=i_of_LEG.slow\n"
             "outvar: gate=dvar_of_gate up=g_up_of_LEG low=g_low_of_LEG\n");
    const std::string flat = deck(
        "delement name=wait type=and_2 a=gate b=gate y=late td_rise=1u td_fall=1u\n"
        "delement name=gup type=and_2 a=gate b=late y=up td_rise=1n td_fall=1n\n"
        "delement name=glow type=nor_2 a=gate b=late y=low td_rise=1n td_fall=1n\n"
        "eelement name=sup type=switch_d p=dc n=sw s=up r_on=20m\n"
        "eelement name=slow type=switch_d p=sw n=0 s=low r_on=20m\n"
        "eelement name=dup type=diode_r p=sw n=dc r_on=20m\neelement name=dlow type=diode_r p=0 n=sw r_on=20m\n",
        "outvar: vsw=nodev_of_sw il=i_of_L1 v_up=v_of_sup i_up=i_of_sup i_low=i_of_slow\n"
        "outvar: gate=dvar_of_gate up=dvar_of_up low=dvar_of_low\n");
    expect_equal("", mixed, flat, 2);

    // Beside the clock with edges at 10 us and 20 us: up from 11.001 us after a rise, low likewise after a fall.
    const whole_run run(mixed);
    for (const std::vector<double>& row : run.rows("out1.dat")) {
        const double t = row[0];
        if (t > 5e-6 && t < 9.9e-6) {
            EXPECT_NEAR(row[1], 100, 0.1) << t;
        }
        // The current of the load goes on through the lower diode, then through the lower switch and it.
        if (t > 10.2e-6 && t < 10.9e-6) {
            EXPECT_NEAR(row[1], -0.7 - 0.02 * row[2], 0.01) << t;
        }
        if (t > 17e-6 && t < 19.9e-6) {
            EXPECT_NEAR(row[1], 0, 0.1) << t;
        }
    }
}

TEST(mixed_composite_runs, small_signals_need_the_word_of_the_composite) {
    const std::string silent = gme("name=silent", {{"mainnodes_anlg:", "a b"}}, "callece r name=r1 p=a n=b r=1k\n");
    const whole_run run(deck_text{source + "gmelement name=X type=silent a=in b=0\noutvar: v=nodev_ac_of_in\n",
                                  "mag_of_v",
                                  {"solve_type ac\nset_freq 1k\n"}}
                            .str(),
                        "", "", silent);
    EXPECT_TRUE(run.stopped);
    EXPECT_NE(run.text.find("ccmain: There are no AC statements in this gme: silent\n  Halting..."), std::string::npos)
        << run.text;
}

TEST(mixed_composite_runs, dumps_of_libraries_and_models) {
    const whole_run run("title: t\nbegin_circuit\noutput gmes gmem\nrefnode 0\n" + source +
                            "gmmodel name=m type=divider r=2k\ngmelement name=X type=divider a=in b=0 model=m\n"
                            "end_circuit\nend_cf\n",
                        "", "", divider);
    ASSERT_FALSE(run.stopped) << run.text;
    EXPECT_NE(run.file("gmes.dat").find("name = divider, nnda = 2, ttlnda = 3"), std::string::npos);
    EXPECT_EQ(run.file("gmem.dat"), "gmem_class\nn = 1\n  i = 0, name = m, type = divider\n      rprm: 2000\n");
}
