// Files of results that are computed from other files: what the front end knows and says of them.
#include <gtest/gtest.h>

#include <ostream>

#include "installed_share.h"
#include "tnl/check/check_deck.h"
#include "tnl/check/locate.h"
#include "tnl/elements/planned_files.h"

using namespace cli;

namespace {

const installed_libraries& installed() {
    static const installed_libraries all = read_installed(installed_share());
    return all;
}

const std::string deck =
    "title: power of a lamp\n"                                // 1
    "begin_circuit\n"                                         // 2
    "refnode 0\n"                                             // 3
    "eelement name=V1 type=vsrcac p=a n=0 a=325 f_hz=50\n"    // 4
    "eelement name=A1 type=ammeter_fb p=a n=b y=i\n"          // 5
    "eelement name=M1 type=voltmeter_fb p=a n=0 y=v\n"        // 6
    "eelement name=M2 type=voltmeter_fb p=a n=0 y=w k=2\n"    // 7
    "eelement name=R1 type=r p=b n=0 r=100\n"                 // 8
    "gelement name=P1 type=calc_pf x1=v x2=i\n"               // 9
    "gelement name=P2 type=calc_thd x=i\n"                    // 10
    "gelement name=P3 type=calc_rms x=w\n"                    // 11
    "outvar: v=var_of_v i=var_of_i w=var_of_w pf=pf_of_P1\n"  // 12
    "outvar: p=pavg_of_P1 r1=rms1_of_P1 r2=rms2_of_P1\n"      // 13
    "outvar: ia=avg_of_P2 thd=thd_of_P2 wr=rms_of_P3\n"       // 14
    "end_circuit\n"                                           // 15
    "begin_solve\n"                                           // 16
    "solve_type trns\n"                                       // 17
    "method: back_euler=yes t_end=40m delt_const=10u\n"       // 18
    "begin_output\n"                                          // 19
    "filename rows.dat\n"                                     // 20
    "variables: v i w\n"                                      // 21
    "end_output\n"                                            // 22
    "begin_output\n"                                          // 23
    "filename power.dat limit_lines=1\n"                      // 24
    "variables: p r1 r2 pf\n"                                 // 25
    "control: out_tstart=20m out_tend=40m\n"                  // 26
    "end_output\n"                                            // 27
    "begin_output\n"                                          // 28
    "filename all.dat\n"                                      // 29
    "variables: all_outvars\n"                                // 30
    "control: fixed_interval=1m\n"                            // 31
    "end_output\n"                                            // 32
    "end_solve\n"                                             // 33
    "end_cf\n";

std::string changed(const std::string& from, const std::string& to) {
    std::string text = deck;
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

check_report check(const std::string& text) { return check_deck(view_deck("d.in", text), installed()); }

std::string faults_of(const check_report& report) {
    std::string out;
    for (const check_fault& f : report.faults) {
        const record_place p = place_of_fault(report, f);
        out += (out.empty() ? "" : ", ") + std::string(f.is_error ? "" : "~") + std::to_string(p.line) + ":" +
               std::to_string(p.column) + " " + f.code;
    }
    return out;
}

struct change {
    const char *name, *from, *to, *faults;
};
void PrintTo(const change& c, std::ostream* out) { *out << c.name; }

const change changes[] = {
    {"none", "lamp", "lamp", ""},
    {"append", "limit_lines=1", "append=yes", "24:10 missing-file, 24:20 bad-option"},
    {"no_length", "out_tend=40m", "out_tend=20m", "26:25 bad-option, ~26:34 no-rows"},
    {"no_such_column", "variables: v i w\n", "variables: v w\n", ""},  // all_outvars has it
    {"no_column", "variables: all_outvars", "variables: w", ""},
    {"beside_others", "pf\ncontrol", "pf v\ncontrol", "25:1 bad-variables"},
    {"magnitude", "p r1 r2 pf", "mag_of_pf", "25:1 bad-variables"},
    {"not_in_dc", "solve_type trns\nmethod: back_euler=yes t_end=40m delt_const=10u", "solve_type dc",
     "24:1 bad-variables, ~25:10 unknown-option, ~25:25 unknown-option, ~30:10 unknown-option"},
    {"begins_too_early", "variables: v i w\n", "variables: v i w\ncontrol: out_tstart=30m\n", "27:10 bad-span"},
    {"ends_too_late", "out_tend=40m", "out_tend=50m", "26:10 bad-span"},
    {"turned_round", "out_tend=40m", "out_tend=10m", "26:10 bad-span, ~26:34 no-rows"},
    {"within_a_step", "out_tend=40m", "out_tend=40.01m", ""},
    {"from_the_first_row", "out_tstart=20m ", "", "~26:10 guessed-row"},
    {"harmonics", "limit_lines=1", "fourier=yes", "23:1 refused, ~24:10 few-harmonics"},
};

}  // namespace

class result_decks : public testing::TestWithParam<change> {};
TEST_P(result_decks, have_the_faults_that_would_stop_the_run_when_it_is_over) {
    const check_report report = check(changed(GetParam().from, GetParam().to));
    EXPECT_EQ(faults_of(report), GetParam().faults) << report_text(report);
}
INSTANTIATE_TEST_SUITE_P(check_deck, result_decks, testing::ValuesIn(changes),
                         [](const auto& of) { return std::string(of.param.name); });

TEST(check_deck, tells_what_a_result_lacks_with_the_statement_to_write) {
    std::string text = changed("variables: all_outvars", "variables: v");
    text.replace(text.find("variables: v i w"), 16, "variables: v");
    check_report report = check(text);
    ASSERT_EQ(faults_of(report), "25:1 not-measured") << report_text(report);
    EXPECT_EQ(report.faults[0].message, "no file of this block shows var_of_i, which the result is computed from");
    EXPECT_EQ(report.faults[0].advice,
              "name an outvar of i in the variables: of another file of this block, without fourier");
    text = changed("i=var_of_i ", "");
    text.replace(text.find("variables: v i w"), 16, "variables: v");
    report = check(text);
    ASSERT_EQ(faults_of(report), "25:1 not-measured") << report_text(report);
    EXPECT_EQ(report.faults[0].advice, "outvar: i=var_of_i, and i in another file of this block");
}

TEST(check_deck, doubts_a_result_of_two_files_with_different_rows) {
    std::string text = changed("variables: all_outvars", "variables: i");
    text.replace(text.find("variables: v i w"), 16, "variables: v");
    EXPECT_EQ(faults_of(check(text)), "~26:10 not-measured");
}

TEST(planned_files, of_results_have_a_kind_of_their_own_and_no_time) {
    const std::vector<record_file> files = planned_files(view_deck("d.in", deck), installed());
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[1].kind, "postproc");
    EXPECT_TRUE(files[1].is_table());
    EXPECT_FALSE(files[1].begins_with_guess);
    std::string columns;
    for (const record_column& c : files[1].columns) columns += c.name + "[" + c.unit + "] ";
    EXPECT_EQ(columns, "p[W] r1[V] r2[A] pf[] ");
    columns.clear();
    for (const record_column& c : files[2].columns) columns += c.name + " ";
    EXPECT_EQ(columns, "time v i w ");  // results are left out
    EXPECT_EQ(files[0].kind, "trns");
}

TEST(units, of_results_are_those_of_what_a_meter_reads_and_of_products) {
    const auto unit = [](const std::string& word) {
        return unit_of_column(view_deck("d.in", deck), installed(), word);
    };
    EXPECT_EQ(unit("ia"), "A");
    EXPECT_EQ(unit("thd"), "");
    EXPECT_EQ(unit("wr"), "");  // its meter reads 2 for 1 V
}

TEST(find_statements, results_that_stop_a_run_are_found_in_the_deck) {
    const deck_view view = view_deck("d.in", deck);
    const auto lines = [&](const std::string& said) {
        std::vector<int> found;
        for (const int i : find_statements(said, view, {})) found.push_back(view.statements.where(i, 0).line + 1);
        return found;
    };
    using list = std::vector<int>;
    EXPECT_EQ(lines("postproc_1: could not find var_of_w in any output file. Halting...\n"), list{11});
    EXPECT_EQ(lines("postproc_1: could not find var_of_i in the outvar statement. Halting...\n"), (list{9, 10}));
    EXPECT_EQ(lines("postproc_1_ac: could not find mag_of_v in any output file. Halting...\n").front(), 6);
    EXPECT_EQ(lines("postproc_1: gels name = calc_rms? Halting...\n"), list{11});
    EXPECT_EQ(lines("check_trns_1: t[0] is too far from t_start.\n"), list{25});
    EXPECT_EQ(lines("postproc_1: append not allowed. Halting...\n"), list{25});
    EXPECT_EQ(lines("file_trns_get_col: file rows.dat has < 3 columns. Halting...\n"), list{20});
    EXPECT_EQ(lines("postproc_1_ac: expect rows.dat to have a single row. Halting...\n"), list{20});
}
