// Rows of digital files: what the record says of them, levels in tables, edges, bits of a number.
#include <gtest/gtest.h>

#include "temp_folder.h"
#include "tnl/common/exit_status.h"
#include "tnl/elements/planned_files.h"
#include "tnl/results/bit_bus.h"
#include "tnl/results/export.h"
#include "tnl/results/measure.h"
#include "tnl/results/open_run.h"

namespace {

using namespace cli;

installed_libraries libraries() {
    installed_libraries all;
    const auto add = [&](int library, const std::string& name, const std::string& text) {
        all.library[library].position[name] = static_cast<int>(all.library[library].entries.size());
        all.library[library].entries.push_back({name, text});
    };
    add(lib_dels, "counter",
        "dce name=counter\nmainnodes: clk q0 q1\nauxnodes:\nanalog_nodes:\noutvar: lsb=dvar_of_q0 st=dstate_of_c1\n"
        "iparms:\nsparms:\nrparms: td=1n\nrparms_derived:\nstparms:\nigparms:\n"
        "dbe type=counter_2 name=c1 clk=clk q0=q0 q1=q1\nenddce\n");
    add(lib_gmes, "pwm",
        "gme name=pwm\noutvar_anlg: v=nodev_of_m\noutvar_dgtl: s=dvar_of_g b=lsb_of_k st=st_of_k\n"
        "calldce counter name=k clk=a q0=b q1=c\nendgme\n");
    return all;
}

deck_view deck_of(const std::string& block, const std::string& more = "") {
    return view_deck("deck.in",
                     "title: t\nbegin_circuit\n" + more +
                         "delement name=K type=counter clk=c q0=q0 q1=q1\ngmelement name=X type=pwm\n"
                         "dmodel name=fast type=counter td=2n\ndelement name=L model=fast clk=c q0=r0 q1=r1\n"
                         "outvar: q0=dvar_of_q0 lsb=lsb_of_K st=st_of_K td=td_of_K ml=lsb_of_L\n"
                         "outvar: xv=v_of_X xs=s_of_X xb=b_of_X xst=st_of_X va=nodev_of_a\n"
                         "end_circuit\nbegin_solve\n" +
                         block + "end_solve\nend_cf\n");
}

std::string output(const std::string& variables, const std::string& method = "") {
    return "solve_type trns\nmethod: t_end=1u " + method + "\nbegin_output\nfilename d.dat\nvariables: " + variables +
           "\nend_output\n";
}
record_file planned(const std::string& block) { return planned_files(deck_of(block), libraries()).at(0); }

TEST(planned_files, tell_levels_states_and_numbers_apart) {
    const auto kind = [](const char* word) { return kind_of_column(deck_of(output("q0")), libraries(), word); };
    for (const char* word : {"q0", "lsb", "ml", "xs", "xb"}) EXPECT_EQ(kind(word), data_kind::level) << word;
    for (const char* word : {"st", "xst"}) EXPECT_EQ(kind(word), data_kind::state) << word;
    for (const char* word : {"td", "xv", "va", "nobody"}) EXPECT_EQ(kind(word), data_kind::number) << word;
}

TEST(planned_files, have_the_data_of_their_first_variable) {
    const record_file d = planned(output("q0 st"));
    EXPECT_TRUE(d.digital);
    EXPECT_EQ(d.offset, 2);
    ASSERT_EQ(d.columns.size(), 3u);
    EXPECT_FALSE(d.columns[0].level);
    EXPECT_TRUE(d.columns[1].level);
    EXPECT_FALSE(d.columns[2].level);
    EXPECT_FALSE(d.begins_with_guess);
    EXPECT_FALSE(planned(output("va")).digital);
    EXPECT_FALSE(planned(output("va q0")).digital);
    EXPECT_EQ(planned(output("q0", "offset_dgtl=0")).offset, 0);
    EXPECT_EQ(planned(output("q0", "offset_dgtl=1.5")).offset, 1.5);
}

TEST(planned_files, know_an_offset_that_is_a_global_parameter) {
    const deck_view deck = deck_of(output("q0", "offset_dgtl=off"), "greal off=3\n");
    EXPECT_EQ(planned_files(deck, libraries()).at(0).offset, 3);
}

TEST(planned_files, of_all_output_variables_have_the_numbers_where_there_are_any) {
    const record_file mixed = planned(output("all_outvars"));
    EXPECT_FALSE(mixed.digital);
    std::string names;
    for (const record_column& c : mixed.columns) names += c.name + " ";
    EXPECT_EQ(names, "time td xv va ");
    const deck_view digital =
        view_deck("d.in",
                  "title: t\nbegin_circuit\ndelement name=K type=counter clk=c q0=q0 q1=q1\noutvar: a=dvar_of_q0\n"
                  "end_circuit\nbegin_solve\n" +
                      output("all_outvars") + "end_solve\nend_cf\n");
    EXPECT_TRUE(planned_files(digital, libraries()).at(0).digital);
    const deck_view nodes = view_deck(
        "d.in", "title: t\nbegin_circuit\ndelement name=K type=counter clk=c q0=q0 q1=q1\nend_circuit\nbegin_solve\n" +
                    output("all_nodes") + "end_solve\nend_cf\n");
    const record_file all = planned_files(nodes, libraries()).at(0);
    EXPECT_TRUE(all.digital);
    std::string of_nodes;
    for (const record_column& c : all.columns) of_nodes += c.name + (c.level ? "* " : " ");
    EXPECT_EQ(of_nodes, "time c* q0* q1* ");
}

TEST(run_record, keeps_what_digital_files_are) {
    run_record r;
    r.files = {planned(output("q0 st", "offset_dgtl=0.5"))};
    const run_record read = record_of_json(to_json(r));
    EXPECT_TRUE(read.files[0].digital);
    EXPECT_EQ(read.files[0].offset, 0.5);
    EXPECT_EQ(read.files[0].columns, r.files[0].columns);
}

// ---- tables ----

// a: unknown until 1u, low, high from 2u, low from 3u; b: half a microsecond behind; st: a state.
constexpr const char* raised_rows =
    " 0.000000e+00  2.000000e+00  4.000000e+00  7.000000e+00 \n"
    " 1.000000e-06  2.000000e+00  4.000000e+00  7.000000e+00 \n"
    " 1.000000e-06  0.000000e+00  2.000000e+00  7.000000e+00 \n"
    " 2.000000e-06  0.000000e+00  2.000000e+00  7.000000e+00 \n"
    " 2.000000e-06  1.000000e+00  2.000000e+00  7.000000e+00 \n"
    " 2.500000e-06  1.000000e+00  2.000000e+00  7.000000e+00 \n"
    " 2.500000e-06  1.000000e+00  3.000000e+00  5.000000e+00 \n"
    " 3.000000e-06  1.000000e+00  3.000000e+00  5.000000e+00 \n"
    " 3.000000e-06  0.000000e+00  3.000000e+00  5.000000e+00 \n"
    " 4.000000e-06  0.000000e+00  3.000000e+00  5.000000e+00 \n";

record_file digital_file(double offset) {
    record_file f{"d.dat", "trns", {{"time", "s"}, {"a", "", true}, {"b", "", true}, {"st", ""}}, 0, 1};
    f.digital = true;
    f.offset = offset;
    return f;
}

result_table levels_of(const std::string& rows, const record_file& file) {
    result_table t = read_result_table(rows, "d.dat");
    t.kind = file.kind;
    t.columns = file.columns;
    take_off_offset(t, file);
    return t;
}
result_table levels() { return levels_of(raised_rows, digital_file(2)); }

TEST(digital_rows, lose_their_offsets) {
    const result_table t = levels();
    EXPECT_TRUE(t.digital);
    EXPECT_EQ(t.at(0, 1), 2);
    EXPECT_EQ(t.at(0, 2), 2);
    EXPECT_EQ(t.at(0, 3), 3);
    EXPECT_EQ(t.at(6, 2), 1);
    EXPECT_EQ(t.at(6, 3), 1);
    EXPECT_EQ(t.at(9, 0), 4e-6);
    // An offset that seven digits do not hold, and rows that have none.
    const result_table third = levels_of("0 1 0.3333333 2.666667 \n", digital_file(1.0 / 3));
    EXPECT_EQ(third.at(0, 2), 0);
    EXPECT_EQ(third.at(0, 3), 2);
    const result_table plain = levels_of("0   1   2   7 \n", digital_file(0));
    EXPECT_EQ(plain.at(0, 2), 2);
    EXPECT_EQ(plain.at(0, 3), 7);
}

TEST(digital_rows, of_a_start_have_no_time_in_front) {
    record_file file = digital_file(2);
    file.kind = "startup";
    file.columns.erase(file.columns.begin());
    const result_table t = levels_of("1 3 4 \n", file);
    EXPECT_EQ(t.at(0, 0), 1);
    EXPECT_EQ(t.at(0, 1), 1);
    EXPECT_EQ(t.at(0, 2), 0);
}

TEST(digital_rows, of_a_run_are_levels_wherever_they_are_opened) {
    const temp_folder inside;
    std::filesystem::create_directories("x.in.run");
    write_file("x.in.run/d.dat", raised_rows);
    run_record r;
    r.state = "complete";
    r.files = {digital_file(2)};
    write_file("x.in.run/run.json", to_json(r));
    for (const char* name : {"x.in", "x.in.run", "x.in.run/d.dat"}) {
        const opened_run run = open_run(name);
        EXPECT_EQ(load_table(run, run.record.files.at(0)).at(6, 2), 1) << name;
    }
}

// ---- edges ----

std::string result_of(const std::string& text, const result_table& t = levels()) {
    return text_of(evaluate(parse_expression(text), t, 0).sides.at(0));
}
std::string fault_of(const std::string& text, const result_table& t = levels()) {
    try {
        result_of(text, t);
    } catch (const measure_error& e) {
        return e.what();
    }
    return "";
}

TEST(digital_edges, have_the_time_of_their_row) {
    EXPECT_EQ(result_of("cross(a, 0.5)"), "2e-06 s");
    EXPECT_EQ(result_of("cross(a, 0.9, -1, fall)"), "3e-06 s");
    EXPECT_EQ(result_of("delay(a, b)"), "5e-07 s");
    EXPECT_EQ(fault_of("delay(a, b, fall)"), "the second wave does not cross its level after the first did");
}

TEST(digital_edges, are_counted_and_those_through_unknown_are_none) {
    EXPECT_EQ(result_of("count(a)"), "2");
    EXPECT_EQ(result_of("count(a, rise)"), "1");
    EXPECT_EQ(result_of("count(a, fall)"), "1");
    EXPECT_EQ(result_of("count(b)"), "1");
    EXPECT_EQ(result_of("count(a, 2.1u, 4u)"), "1");
    const result_table t =
        levels_of("0 0 0 0\n1 0 0 0\n1 2 0 0\n2 2 0 0\n2 1 0 0\n3 1 0 0\n3 0 0 0\n", digital_file(0));
    EXPECT_EQ(result_of("count(a)", t), "1");
    EXPECT_EQ(result_of("count(a, rise)", t), "0");
}

TEST(digital_edges, of_a_level_that_never_changes_are_none) {
    const result_table t = levels_of("0 1 0 0\n1 1 0 0\n", digital_file(0));
    EXPECT_EQ(result_of("count(a)", t), "0");
    EXPECT_EQ(result_of("count(b)", t), "0");
    EXPECT_NE(fault_of("frequency(a)", t), "");
}

// Three periods of 10 s, high for 3 s of each.
std::string clock_rows(const char* unknown = "") {
    std::string rows = "0 0 0 0\n";
    for (int k = 1; k <= 4; ++k) {
        const std::string up = std::to_string(10 * k), down = std::to_string(10 * k + 3);
        rows += up + " 0 0 0\n" + up + " 1 0 0\n" + down + " 1 0 0\n" + down + " 0 0 0\n";
        if (k == 2) rows += unknown;
    }
    return rows;
}

TEST(digital_edges, tell_frequency_and_duty) {
    const result_table t = levels_of(clock_rows(), digital_file(0));
    EXPECT_EQ(result_of("frequency(a)", t), "0.1 Hz");
    EXPECT_EQ(result_of("freq(a)", t), "0.1 Hz");
    EXPECT_EQ(result_of("period(a)", t), "10 s");
    EXPECT_EQ(result_of("duty(a)", t), "0.3");
    EXPECT_EQ(result_of("avg(a, 10, 40)", t), "0.3");
    EXPECT_EQ(result_of("duty(1 - a)", t), "0.7");
}

TEST(digital_edges, are_refused_for_periods_with_an_unknown_level_among_them) {
    const result_table t = levels_of(clock_rows("25 0 0 0\n25 2 0 0\n26 2 0 0\n26 0 0 0\n"), digital_file(0));
    EXPECT_NE(fault_of("frequency(a)", t).find("the wave is unknown at 25"), std::string::npos);
    EXPECT_EQ(result_of("frequency(a, 29, 43)", t), "0.1 Hz");
    EXPECT_EQ(result_of("count(a, rise)", t), "4");
    EXPECT_EQ(result_of("at(a, 25.5)", t), "nan");
}

TEST(digital_edges, of_a_level_that_is_never_known_are_refused) {
    const result_table t = levels_of("0 2 1 0\n1 2 1 0\n1 2 0 0\n2 2 0 0\n", digital_file(0));
    for (const char* text : {"count(a)", "frequency(a)", "duty(a, 0, 2)", "delay(a, b)", "delay(b, a)"})
        EXPECT_EQ(fault_of(text, t), "the wave is unknown throughout, so there is no middle that it could cross")
            << text;
    EXPECT_EQ(result_of("count(b)", t), "1");
}

// With a fixed interval the two rows of an event are not there: a level holds until the next row.
TEST(digital_edges, levels_hold_until_the_next_row) {
    const result_table t = levels_of("0 0 0 0\n1 1 0 0\n4 0 0 0\n5 0 0 0\n", digital_file(0));
    EXPECT_EQ(result_of("avg(a)", t), "0.6");
    EXPECT_EQ(result_of("cross(a, 0.2)", t), "1 s");
    EXPECT_EQ(result_of("at(a, 3.9)", t), "1");
}

TEST(measure, counts_crossings_of_analog_columns_too) {
    result_table t = read_result_table("0 0\n1 5\n2 0\n3 5\n", "f.dat");
    t.columns = {{"time", "s"}, {"v", "V"}};
    EXPECT_EQ(result_of("count(v, 1)", t), "3");
    EXPECT_EQ(result_of("count(v, 1, rise)", t), "2");
    EXPECT_EQ(result_of("count(v)", t), "3");
    EXPECT_EQ(result_of("delay(v, 1, v, 4)", t), "0.6 s");
    EXPECT_EQ(result_of("delay(v, 4, v, 1, fall)", t), "0.6 s");
}

// ---- bits of a number ----

result_table bits_table() {
    result_table t = read_result_table("0 1 0 1 1 0 0 0 1\n1 1 2 0 1 0 0 0 1\n", "d.dat");
    t.digital = true;
    t.columns = {{"time", "s"},    {"q0", "", true}, {"q1", "", true},  {"q2", "", true}, {"q4", "", true},
                 {"g1", "", true}, {"g2", "", true}, {"clk", "", true}, {"q3", ""}};
    return t;
}
std::vector<std::size_t> all_columns(const result_table& t) {
    std::vector<std::size_t> columns;
    for (std::size_t j = 1; j < t.n_columns(); ++j) columns.push_back(j);
    return columns;
}

TEST(bit_bus, is_made_of_consecutive_numbers) {
    const result_table t = bits_table();
    const std::vector<bit_bus> buses = buses_in(t, all_columns(t));
    ASSERT_EQ(buses.size(), 1u);
    EXPECT_EQ(buses[0].name, "q[2:0]");
    EXPECT_EQ(buses[0].columns, (std::vector<std::size_t>{1, 2, 3}));
    EXPECT_EQ(buses[0].at, 0u);
    EXPECT_EQ(bus_text(t, buses[0], 0), "5");
    EXPECT_EQ(bus_text(t, buses[0], 1), "x");
    EXPECT_TRUE(is_known(t, buses[0], 0));
    EXPECT_FALSE(is_known(t, buses[0], 1));
}

TEST(bit_bus, has_its_lowest_bit_first_in_any_order_of_columns) {
    result_table t = read_result_table("0 1 0 0 0 1\n", "d.dat");
    t.columns = {{"time", "s"},    {"d7", "", true}, {"d5", "", true},
                 {"d6", "", true}, {"x", "", true},  {"d8", "", true}};
    const std::vector<bit_bus> buses = buses_in(t, {2, 4, 1, 3, 5});
    ASSERT_EQ(buses.size(), 1u);
    EXPECT_EQ(buses[0].name, "d[8:5]");
    EXPECT_EQ(buses[0].columns, (std::vector<std::size_t>{2, 3, 1, 5}));
    EXPECT_EQ(bus_text(t, buses[0], 0), "c");
    EXPECT_TRUE(buses_in(t, {1, 3}).empty());  // two that do not begin at 0
}

TEST(bit_bus, has_a_digit_for_every_four_bits) {
    result_table t = read_result_table("0 1 0 0 0 1 1\n", "d.dat");
    for (std::size_t j = 1; j < 7; ++j) t.columns[j] = {"a" + std::to_string(j - 1), "", true};
    EXPECT_EQ(bus_text(t, buses_in(t, all_columns(t)).at(0), 0), "31");
}

// ---- exports ----

std::string dump_of(const result_table& t, bool buses) {
    const temp_folder here;
    output_file out("out");
    export_choice c{t, {}, 0, 1, "", "", false, false, buses};
    for (std::size_t j = 0; j < t.n_columns(); ++j) c.columns.push_back(j);
    write_vcd(c, out);
    out.commit();
    return read_file("out");
}

TEST(export_vcd, levels_are_wires_also_where_they_never_change) {
    EXPECT_EQ(dump_of(levels(), false),
              "$version tnl $end\n"
              "$comment st: 0 is 1, 1 is 3 $end\n"
              "$timescale 100 ns $end\n$scope module rows $end\n"
              "$var wire 1 ! a $end\n$var wire 1 \" b $end\n$var wire 1 # st $end\n"
              "$upscope $end\n$enddefinitions $end\n"
              "#0\n$dumpvars\nx!\nx\"\n1#\n$end\n#10\n0!\n0\"\n#20\n1!\n#25\n1\"\n0#\n#30\n0!\n#40\n");
}

TEST(export_vcd, bits_of_a_number_are_a_vector_if_wished) {
    const std::string text = dump_of(bits_table(), true);
    EXPECT_NE(text.find("$var wire 3 ! q [2:0] $end\n"), std::string::npos) << text;
    EXPECT_NE(text.find("b101 !\n"), std::string::npos) << text;
    EXPECT_NE(text.find("b0x1 !\n"), std::string::npos) << text;
    EXPECT_NE(text.find("$var wire 1 $ g2 $end\n"), std::string::npos) << text;
}

TEST(export_rows, levels_are_plain) {
    const temp_folder here;
    output_file out("out");
    const result_table t = levels();
    write_csv({t, {0, 2}, 0, 1, "", "", false, false, false}, out);
    out.commit();
    EXPECT_EQ(read_file("out").substr(0, 29), "time,b\r\n0,2\r\n1e-06,2\r\n1e-06,0");
}

}  // namespace
