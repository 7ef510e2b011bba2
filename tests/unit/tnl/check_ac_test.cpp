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
                file = "filename a.dat\nvariables: mag_of_vb phase_of_vb";
};

std::string faults_of(const ac_deck& a) {
    const std::string text = "title: t\ngreal amp=0\nbegin_circuit\nrefnode 0\neelement name=V1 p=a n=0 " + a.source +
                             "\neelement name=R1 type=r p=a n=b r=1k\n" + a.load +
                             "\noutvar: vb=nodev_ac_of_b va=nodev_ac_of_a\nend_circuit\n" + a.before +
                             "begin_solve\nsolve_type ac\n" + a.frequencies + "\n" + a.block + "begin_output\n" +
                             a.file + "\nend_output\nend_solve\nend_cf\n";
    const check_report report = check_deck(view_deck("d.in", text), installed());
    std::string out;
    for (const check_fault& f : report.faults) {
        const record_place p = place_of_fault(report, f);
        const std::string word = p.text.substr(static_cast<std::size_t>(p.column) - 1);
        out += (out.empty() ? "" : ", ") + std::string(f.is_error ? "" : "~") + f.code + " " +
               word.substr(0, word.find(' '));
    }
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
    EXPECT_EQ(faults_of({.load = diode, .block = "initial_sol file filename b.sol\n"}), "missing-file b.sol");
}

TEST(check_ac, knows_the_statements_of_the_block) {
    EXPECT_EQ(faults_of({.frequencies = "vary_freq from 0 to 1k type log n_points 10"}), "bad-sweep 0");
    EXPECT_EQ(faults_of({.frequencies = "vary_freq from 0 to 1k type linear n_points 10"}), "~bad-sweep 0");
    EXPECT_EQ(faults_of({.frequencies = "vary_freq from 1k to 1k type linear n_points 10"}), "~bad-sweep 1k");
    EXPECT_EQ(faults_of({.frequencies = "vary_freq type table 1 -10 100"}), "~bad-sweep -10");
    EXPECT_EQ(faults_of({.frequencies = "set_freq 0"}), "~bad-sweep 0");
    EXPECT_EQ(faults_of({.frequencies = ""}), "no-frequency solve_type");
    EXPECT_EQ(faults_of({.frequencies = "set_freq 1\nvary_freq type table 1 2"}), "no-frequency set_freq");
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
