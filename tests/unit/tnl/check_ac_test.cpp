// What the check says of small-signal blocks.
#include <gtest/gtest.h>

#include "installed_share.h"
#include "tnl/check/check_deck.h"

using namespace cli;

namespace {

const installed_libraries& installed() {
    static const installed_libraries all = read_installed(installed_share());
    return all;
}

struct ac_deck {
    std::string source = "type=vsrcdc vdc=1 a_ac=1", load = "eelement name=C1 type=c p=b n=0 c=1u", before = "",
                frequencies = "vary_freq from 1 to 1k type log n_points 10", block = "",
                file = "filename a.dat\nvariables: mag_of_vb phase_of_vb", outputs = "", solve_type = "ac";
};

std::string text_of(const ac_deck& a) {
    return "title: t\ngreal amp=0\nbegin_circuit\nrefnode 0\neelement name=V1 p=a n=0 " + a.source +
           "\neelement name=R1 type=r p=a n=b r=1k\n" + a.load + "\noutvar: vb=nodev_ac_of_b va=nodev_ac_of_a\n" +
           a.outputs + "end_circuit\n" + a.before + "begin_solve\nsolve_type " + a.solve_type + "\n" + a.frequencies +
           "\n" + a.block + "begin_output\n" + a.file + "\nend_output\nend_solve\nend_cf\n";
}

check_report report_of(const ac_deck& a) { return check_deck(view_deck("d.in", text_of(a)), installed()); }

std::string faults_of(const ac_deck& a) {
    const check_report report = report_of(a);
    std::string out;
    for (const check_fault& f : report.faults) {
        const record_place p = place_of_fault(report, f);
        const std::string word = p.text.substr(static_cast<std::size_t>(p.column) - 1);
        out += (out.empty() ? "" : ", ") + std::string(f.is_error ? "" : "~") + f.code + " " +
               word.substr(0, word.find(' '));
    }
    return out;
}

// Messages and advice, line by line.
std::string words_of(const ac_deck& a) {
    std::string out;
    for (const check_fault& f : report_of(a).faults) out += f.message + "; " + f.advice + "\n";
    return out;
}

const std::string dc_block = "begin_solve\nsolve_type dc\nend_solve\n";
const std::string diode = "eelement name=D1 type=diode_spice_1 p=b n=0";

}  // namespace

TEST(check_ac, finds_nothing_in_a_good_block) {
    EXPECT_EQ(faults_of({}), "");
    EXPECT_EQ(faults_of({.frequencies = "set_freq 1k"}), "");
    EXPECT_EQ(faults_of({.frequencies = "vary_freq type table 1 10 100"}), "");
    EXPECT_EQ(faults_of({.load = diode, .before = dc_block}), "");
    EXPECT_EQ(faults_of({.file = "filename a.dat nyquist=yes output_hz=no\nvariables: phase_of_vb mag_of_vb"}), "");
    EXPECT_EQ(faults_of({.file = "filename a.dat\nvariables: mag_of_vb\ncontrol: max_phase=0"}), "");
}

TEST(check_ac, doubts_a_block_without_a_source_that_is_on) {
    EXPECT_EQ(faults_of({.source = "type=vsrcdc vdc=1"}), "~no-ac-source ac");
    EXPECT_EQ(faults_of({.source = "type=vsrcac a=1 f_hz=50 a_ac=0"}), "~no-ac-source ac");
    EXPECT_EQ(faults_of({.source = "type=isrcac a_ac=1m"}), "");
    EXPECT_EQ(faults_of({.source = "type=r r=1"}), "~no-ac-source ac");
    EXPECT_EQ(faults_of({.source = "type=vsrcdc", .load = "gelement name=K1 type=const y=x k=1 a_ac=1\n"}),
              "~not-read x");
    // Where a directive may turn it on.
    EXPECT_EQ(faults_of({.source = "type=vsrcdc", .block = "set_parm a_ac_of_V1 1\n"}), "");
    EXPECT_EQ(faults_of({.source = "type=vsrcdc", .block = "vary_parm a_ac_of_V1 type table 1 2\n"}), "");
    EXPECT_EQ(faults_of({.source = "type=vsrcdc a_ac=amp"}), "~no-ac-source ac");
    EXPECT_EQ(faults_of({.source = "type=vsrcdc a_ac=amp", .block = "set_parm glbl_of_amp 1\n"}), "");
    EXPECT_EQ(faults_of({.source = "type=vsrcdc", .block = "set_parm r_of_R1 1\n"}), "~no-ac-source ac");
}

TEST(check_ac, doubts_a_phase_without_its_magnitude) {
    EXPECT_EQ(faults_of({.file = "filename a.dat\nvariables: phase_of_vb"}), "~phase-alone phase_of_vb");
    EXPECT_EQ(faults_of({.file = "filename a.dat\nvariables: mag_of_va phase_of_vb"}), "~phase-alone phase_of_vb");
    EXPECT_EQ(faults_of({.file = "filename a.dat\nvariables: mag_of_vb"}), "");
    EXPECT_EQ(faults_of({.file = "filename a.dat\nvariables: mag_of_vb\nend_output\nbegin_output\nfilename b.dat\n"
                                 "variables: phase_of_vb"}),
              "");
}

TEST(check_ac, doubts_a_nonlinear_circuit_without_a_bias) {
    EXPECT_EQ(faults_of({.load = diode}), "~no-bias ac");
    EXPECT_EQ(faults_of({.load = diode, .block = "initial_sol file filename b.sol\n"}), "~no-bias ac, ~misplaced file");
}

TEST(check_ac, knows_the_statements_of_the_block) {
    EXPECT_EQ(faults_of({.frequencies = "vary_freq from 0 to 1k type log n_points 10"}), "bad-sweep 0");
    EXPECT_EQ(faults_of({.frequencies = "vary_freq from 0 to 1k type linear n_points 10"}), "");
    EXPECT_EQ(faults_of({.frequencies = "vary_freq from -1 to 1k type linear n_points 10"}), "~bad-sweep -1");
    EXPECT_EQ(faults_of({.frequencies = "vary_freq from 1k to 0 type linear n_points 10"}), "~bad-sweep 0");
    EXPECT_EQ(faults_of({.frequencies = "vary_freq from 1k to 1k type linear n_points 10"}), "~bad-sweep 1k");
    EXPECT_EQ(faults_of({.frequencies = "vary_freq type table 1 -10 100"}), "~bad-sweep -10");
    EXPECT_EQ(faults_of({.frequencies = "set_freq 0"}), "~bad-sweep 0");
    EXPECT_EQ(faults_of({.frequencies = ""}), "no-frequency solve_type");
    EXPECT_EQ(faults_of({.frequencies = "set_freq 1\nvary_freq type table 1 2"}), "no-frequency set_freq");
    EXPECT_EQ(faults_of({.frequencies = "vary_freq from 1 to 1k type log n_points 1"}), "bad-sweep 1");
    EXPECT_EQ(faults_of({.frequencies = "set_freq 1x"}), "bad-number 1x");
    EXPECT_EQ(faults_of({.frequencies = "set_freq 1\nset_freq 2"}), "given-twice set_freq");
    EXPECT_EQ(faults_of({.file = "filename a.dat nyquist=yes\nvariables: mag_of_vb phase_of_vb"}),
              "bad-variables nyquist=yes");
    EXPECT_EQ(faults_of({.file = "filename a.dat\nvariables: mag_of_vb phase_of_vb\ncontrol: min_phase=0 max_phase=1"}),
              "bad-option max_phase=1");
    EXPECT_EQ(faults_of({.file = "filename a.dat limit_lines=9\nvariables: mag_of_vb"}), "too-many-rows limit_lines=9");
    EXPECT_EQ(faults_of({.block = "vary_parm r_of_R1 type table 1 2\n",
                         .file = "filename a.dat limit_lines=19\nvariables: mag_of_vb"}),
              "too-many-rows limit_lines=19");
    EXPECT_EQ(faults_of({.file = "filename a.dat\nvariables: mag_of_vb\ncontrol: fixed_interval=1"}),
              "~unknown-option fixed_interval=1");
    EXPECT_EQ(faults_of({.file = "filename a.dat nyquist=yes\nvariables: phase_of_vb mag_of_vb\ncontrol: min_phase=0"}),
              "~unknown-option min_phase=0");
}

TEST(check_ac, refuses_columns_that_an_ac_block_cannot_show) {
    const auto faults = [](const std::string& variables, const std::string& block = "") {
        return faults_of({.block = block,
                          .file = "filename a.dat\nvariables: " + variables,
                          .outputs = "outvar: v=nodev_of_b i=i_of_R1 j=i_ac_of_R1 r=r_of_R1 p=pwr_elec_of_R1 "
                                     "q=pwr_elec_ac_of_R1\n"});
    };
    EXPECT_EQ(faults("mag_of_vb phase_of_vb mag_of_j q amp"), "");
    EXPECT_EQ(faults("mag_of_vb vb"), "output-kind vb");
    EXPECT_EQ(faults("mag_of_vb j phase_of_vb"), "output-kind j");
    EXPECT_EQ(faults("mag_of_vb v i"), "output-kind v, output-kind i");
    EXPECT_EQ(faults("mag_of_v phase_of_v"), "output-kind mag_of_v, output-kind phase_of_v");
    EXPECT_EQ(faults("phase_of_i"), "output-kind phase_of_i");
    EXPECT_EQ(faults("mag_of_vb p mag_of_q"), "output-kind p, output-kind mag_of_q");
    EXPECT_EQ(faults("mag_of_vb r"), "output-kind r");
    EXPECT_EQ(faults("mag_of_vb c_of_C1", "vary_parm c_of_C1 type table 1u 2u\n"), "output-kind c_of_C1");
    EXPECT_EQ(faults("glbl_of_amp mag_of_vb", "vary_parm glbl_of_amp type table 1 2\n"), "output-kind glbl_of_amp");
    EXPECT_EQ(faults("amp mag_of_vb", "vary_parm glbl_of_amp type table 1 2\n"), "");
    EXPECT_EQ(faults("all_nodes"), "output-kind all_nodes");
    EXPECT_EQ(faults("all_outvars"), "output-kind all_outvars");
    EXPECT_EQ(faults_of({.file = "filename a.dat\nvariables: all_outvars"}), "~no-rows all_outvars");
    EXPECT_EQ(faults_of({.file = "filename a.dat\nvariables: solution"}), "");
    EXPECT_EQ(faults_of({.file = "filename a.dat nyquist=yes\nvariables: vb mag_of_vb"}), "bad-variables nyquist=yes");
}

TEST(check_ac, tells_what_to_write_for_a_column_that_cannot_be_shown) {
    const auto words = [](const std::string& variables) {
        return words_of({.file = "filename a.dat\nvariables: " + variables,
                         .outputs = "outvar: i=i_of_R1 p=pwr_elec_of_R1 r=r_of_R1\n"});
    };
    EXPECT_EQ(words("vb"),
              "vb (nodev_ac_of_b) is an amplitude: it needs mag_of_ or phase_of_ before it; "
              "variables: mag_of_vb phase_of_vb\n");
    EXPECT_EQ(words("mag_of_i"),
              "i (i_of_R1) is no amplitude, and an ac block shows these alone; "
              "outvar: i_ac=i_ac_of_R1, and here mag_of_i_ac phase_of_i_ac\n");
    EXPECT_EQ(words("p"),
              "p (pwr_elec_of_R1) is no amplitude, and an ac block shows these alone; "
              "outvar: p_ac=pwr_elec_ac_of_R1, and here p_ac\n");
    EXPECT_EQ(words("r"),
              "r (r_of_R1) is no amplitude, and an ac block shows these alone; "
              "leave it out; of parameters, a greal can stand here by its name\n");
}

TEST(check_ac, refuses_small_signals_in_other_blocks) {
    for (const char* type : {"dc", "startup", "trns"}) {
        const auto faults = [&](const std::string& variables) {
            return faults_of({.frequencies = type == std::string("trns") ? "method: t_end=1m delt_const=1u" : "",
                              .file = "filename a.dat\nvariables: " + variables,
                              .outputs = "outvar: v=nodev_of_b r=r_of_R1 q=pwr_elec_ac_of_R1\n",
                              .solve_type = type});
        };
        EXPECT_EQ(faults("v r amp"), "") << type;
        EXPECT_EQ(faults("all_outvars"), "") << type;
        EXPECT_EQ(faults("mag_of_vb"), "output-kind mag_of_vb") << type;
        EXPECT_EQ(faults("vb v q"), "output-kind vb, output-kind q") << type;
        EXPECT_EQ(faults("phase_of_v"), "output-kind phase_of_v") << type;
    }
    EXPECT_EQ(words_of({.frequencies = "", .solve_type = "dc"}),
              "vb (nodev_ac_of_b) is a small signal, which a dc block does not have; "
              "outvar: NAME=nodev_of_b and NAME here, or an output block of an ac block\n"
              "vb (nodev_ac_of_b) is a small signal, which a dc block does not have; "
              "outvar: NAME=nodev_of_b and NAME here, or an output block of an ac block\n");
}

TEST(check_ac, speaks_of_an_ac_block) {
    EXPECT_EQ(words_of({.block = "method: t_end=1\n"}),
              "t_end means nothing in an ac block; it belongs to: trns, ssw; \n");
    EXPECT_EQ(words_of({.file = "filename a.dat\nvariables: mag_of_vb\ncontrol: out_tend=1"}),
              "out_tend means nothing in an ac block; \n");
    EXPECT_EQ(
        words_of({.file = "filename a.dat\nvariables: v", .outputs = "outvar: v=nodev_of_b\n", .solve_type = "dc"}),
        "vary_freq means nothing in a dc block; \n");
}

TEST(check_ac, doubts_an_initial_sol_which_has_no_effect) {
    EXPECT_EQ(faults_of({.block = "initial_sol previous\n"}), "~misplaced previous");
    EXPECT_EQ(faults_of({.before = dc_block, .block = "initial_sol previous\n"}), "");
    EXPECT_EQ(faults_of({.before = dc_block, .block = "initial_sol file filename b.sol\n"}), "~misplaced file");
    EXPECT_EQ(faults_of({.before = dc_block, .block = "initial_sol initialize\n"}), "~misplaced initialize");
}

TEST(check_ac, doubts_amplitudes_of_a_block_that_has_none) {
    const std::string file = "filename a.dat\nvariables: solution_ac";
    EXPECT_EQ(faults_of({.file = file}), "");
    EXPECT_EQ(faults_of({.frequencies = "", .file = file, .solve_type = "dc"}), "~misplaced solution_ac");
    EXPECT_EQ(faults_of({.frequencies = "method: t_end=1m delt_const=1u", .file = file, .solve_type = "trns"}),
              "~misplaced solution_ac");
}

TEST(check_ac, doubts_a_delta_phase_by_which_phases_climb) {
    const auto faults = [](const std::string& control) {
        return faults_of({.file = "filename a.dat\nvariables: mag_of_vb phase_of_vb\ncontrol: " + control});
    };
    EXPECT_EQ(faults("delta_phase=180"), "");
    EXPECT_EQ(faults("delta_phase=90"), "~bad-option delta_phase=90");
    EXPECT_EQ(faults("delta_phase=90 max_phase=0"), "") << "has no effect there";
}

TEST(check_ac, tells_of_a_node_without_small_signals_that_its_elements_have_none) {
    const std::string composite = "ece name=mute\nmainnodes: p n\nrparms: v=1k\ncallece r p=p n=n r=v\nendece\n",
                      element = "eelement name=F1 type=mute p=c n=0\n",
                      outputs = "outvar: vc=nodev_ac_of_c w=nodev_ac_of_b\n";
    const auto faults = [&](const std::string& text) {
        std::string out;
        for (const check_fault& f : check_deck(view_deck("d.in", text), installed()).faults) {
            if (!f.is_error) continue;
            out += f.code + ": " + f.message + "\n";
        }
        return out;
    };
    std::string text = text_of({.file = "filename a.dat\nvariables: mag_of_vc mag_of_w", .outputs = element + outputs});
    const std::string lost = "no-ac-half: no element at c has a small-signal form\n";
    EXPECT_EQ(faults(composite + text),
              "no-ac-half: an ac block cannot stand with F1 (mute), which has no small-signal form\n" + lost);
    text = text_of({.frequencies = "",
                    .file = "filename a.dat\nvariables: x",
                    .outputs = element + outputs + "outvar: x=nodev_of_b\n",
                    .solve_type = "dc"});
    EXPECT_EQ(faults(composite + text), lost);
}

TEST(check_ac, doubts_a_sweep_of_what_acts_on_the_bias_alone) {
    const std::string points = " type table 1 2\n";
    EXPECT_EQ(faults_of({.load = diode, .before = dc_block, .block = "vary_parm vdc_of_V1" + points}),
              "~no-effect vdc_of_V1");
    EXPECT_EQ(faults_of({.block = "vary_parm_sync vdc_of_V1" + points}), "~no-effect vdc_of_V1");
    for (const char* item : {"a_ac_of_V1", "r_of_R1", "is_of_D1", "temp_of_D1"})
        EXPECT_EQ(faults_of({.load = diode, .before = dc_block, .block = "vary_parm " + (item + points)}), "") << item;
    EXPECT_EQ(faults_of({.block = "vary_parm c_of_C1" + points}), "");
}

TEST(check_ac, an_outvar_of_small_signals_reads_a_variable) {
    const std::string blocks = "gelement name=K1 type=const y=x k=1 a_ac=1\ngelement name=F1 type=lag_1 x=x y=y\n";
    EXPECT_EQ(faults_of({.load = blocks}), "~not-read y");
    EXPECT_EQ(faults_of({.load = blocks + "outvar: w=var_ac_of_y"}), "");
}
