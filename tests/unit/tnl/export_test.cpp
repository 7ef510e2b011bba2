#include "tnl/results/export.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "temp_folder.h"
#include "tnl/common/exit_status.h"

namespace {

using namespace cli;

using writer = void (*)(const export_choice&, output_file&);

result_table table_of(const std::string& text, std::vector<record_column> columns = {}) {
    result_table t = read_result_table(text, "rows.dat");
    if (!columns.empty()) t.columns = std::move(columns);
    return t;
}

export_choice all_of(const result_table& t) {
    export_choice c{t, {}, 0, t.n_curves(), "", "", false, false};
    for (std::size_t j = 0; j < t.n_columns(); ++j) c.columns.push_back(j);
    return c;
}

std::string written(writer write, const export_choice& c) {
    const temp_folder here;
    output_file out("out");
    write(c, out);
    out.commit();
    return read_file("out");
}

// What a reader of change dumps sees: every signal's value at every time that it lists.
struct dump {
    std::string timescale;
    std::map<std::string, std::string> kind, name;                               // by identifier
    std::vector<std::pair<long long, std::map<std::string, std::string>>> rows;  // by name
};
dump read_dump(const std::string& text) {
    dump d;
    std::istringstream in(text);
    std::string word;
    while (in >> word && word != "$enddefinitions") {
        std::vector<std::string> section;
        for (std::string w; in >> w && w != "$end";) section.push_back(w);
        if (word == "$timescale") d.timescale = section.at(0) + section.at(1);
        if (word == "$var") {
            d.kind[section.at(2)] = section.at(0) + section.at(1);
            EXPECT_TRUE(d.name.emplace(section.at(2), section.at(3)).second);
        }
    }
    in >> word;
    std::map<std::string, std::string> now;
    while (in >> word) {
        if (word[0] == '#') {
            if (!d.rows.empty()) d.rows.back().second = now;
            d.rows.emplace_back(std::stoll(word.substr(1)), now);
        } else if (word[0] == 'r') {
            std::string id;
            in >> id;
            now[d.name.at(id)] = word.substr(1);
        } else if (word[0] == '0' || word[0] == '1' || word[0] == 'x') {
            now[d.name.at(word.substr(1))] = word[0];
        }
    }
    if (!d.rows.empty()) d.rows.back().second = now;
    return d;
}

std::string vcd_fault_of(const std::string& rows) {
    const result_table t = table_of(rows);
    try {
        written(write_vcd, all_of(t));
    } catch (const file_error& e) {
        return e.what();
    }
    return "";
}

TEST(export_rows, csv_has_quotes_where_need_be_and_ends_lines_with_both) {
    const result_table t = table_of("0 1.5\n1e-3 -2e300\n", {{"time", "s"}, {"a,\"b\"", "V"}});
    EXPECT_EQ(written(write_csv, all_of(t)), "time,\"a,\"\"b\"\"\"\r\n0,1.5\r\n0.001,-2e+300\r\n");
    export_choice c = all_of(t);
    c.with_units = true;
    c.columns = {1, 0};
    EXPECT_EQ(written(write_csv, c), "\"a,\"\"b\"\" [V]\",time [s]\r\n1.5,0\r\n-2e+300,0.001\r\n");
}

TEST(export_rows, tsv_has_neither_tabs_nor_line_ends_in_names) {
    const result_table t = table_of("0 nan\n1 -inf\n", {{"t\tx", ""}, {"a\nb", ""}});
    EXPECT_EQ(written(write_tsv, all_of(t)), "t x\ta b\n0\tnan\n1\t-inf\n");
}

TEST(export_rows, several_curves_are_numbered_in_front) {
    const result_table t = table_of("0 1\n1 2\n\n0 3\n");
    EXPECT_EQ(written(write_csv, all_of(t)), "curve,c1,c2\r\n1,0,1\r\n1,1,2\r\n2,0,3\r\n");
    export_choice one = all_of(t);
    one.first_curve = 1;
    EXPECT_EQ(written(write_csv, one), "c1,c2\r\n0,3\r\n");
}

TEST(export_rows, numbers_read_back_as_the_same) {
    std::mt19937_64 rng(1);
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t u = rng();
        double x = 0;
        std::memcpy(&x, &u, sizeof x);
        char text[32];
        const std::string s(text, put_number(text, x));
        if (std::isnan(x))
            EXPECT_EQ(s, "nan");
        else
            EXPECT_EQ(std::strtod(s.c_str(), nullptr), x);
    }
}

TEST(export_rows, names_are_made_unique) {
    EXPECT_EQ(unique_names({"a", "a", "a_2", "a", "b"}), (std::vector<std::string>{"a", "a_2", "a_2_2", "a_3", "b"}));
}

TEST(export_rows, npy_is_a_header_of_whole_64_bytes_and_the_numbers) {
    const result_table t = table_of("0 1.5\n1 2.5\n", {{"time", "s"}, {"it's \xc3\xa4", "V"}});
    const std::string bytes = written(write_npy, all_of(t));
    EXPECT_EQ(bytes.substr(0, 8), std::string("\x93NUMPY\x01\x00", 8));
    const std::size_t n = static_cast<unsigned char>(bytes[8]) + 256u * static_cast<unsigned char>(bytes[9]);
    EXPECT_EQ((10 + n) % 64, 0u);
    const std::string header = bytes.substr(10, n);
    EXPECT_EQ(header.substr(0, header.find_last_not_of(" \n") + 1),
              "{'descr': [('time', '<f8'), ('it\\'s \\u00e4', '<f8')], 'fortran_order': False, 'shape': (2,), }");
    EXPECT_EQ(header.back(), '\n');
    double x[4];
    ASSERT_EQ(bytes.size(), 10 + n + sizeof x);
    std::memcpy(x, bytes.data() + 10 + n, sizeof x);  // on a little-endian machine
    EXPECT_EQ(x[1], 1.5);
    EXPECT_EQ(x[2], 1);
}

TEST(export_rows, npy_with_many_names_has_the_longer_header) {
    std::string row;
    for (int i = 0; i < 5000; ++i) row += "1 ";
    const result_table t = table_of(row + "\n");
    const std::string bytes = written(write_npy, all_of(t));
    EXPECT_EQ(bytes.substr(0, 8), std::string("\x93NUMPY\x02\x00", 8));
    std::uint32_t n = 0;
    std::memcpy(&n, bytes.data() + 8, 4);
    EXPECT_EQ((12 + n) % 64, 0u);
    EXPECT_EQ(bytes.size(), 12 + n + 8 * 5000);
}

TEST(export_rows, a_rawfile_names_types_and_lists_values) {
    result_table t = table_of("0 1.5 2\n1e-6 nan 3\n", {{"time", "s"}, {"v out", "V"}, {"i", "A"}});
    t.kind = "trns";
    export_choice c = all_of(t);
    c.title = "a\nb";
    c.date = "2026-01-01T00:00:00Z";
    const std::string head =
        "Title: a b\nDate: 2026-01-01T00:00:00Z\nPlotname: Transient Analysis\nFlags: real\nNo. Variables: 3\n"
        "No. Points: 2\nVariables:\n\t0\ttime\ttime\n\t1\tv_out\tvoltage\n\t2\ti\tcurrent\n";
    EXPECT_EQ(written(write_raw, c), head + "Values:\n0\t0\n\t1.5\n\t2\n1\t1e-06\n\tnan\n\t3\n");
    c.binary = true;
    const std::string bytes = written(write_raw, c);
    EXPECT_EQ(bytes.substr(0, head.size() + 8), head + "Binary:\n");
    EXPECT_EQ(bytes.size(), head.size() + 8 + 6 * 8);
    double x = 0;
    std::memcpy(&x, bytes.data() + head.size() + 8 + 8, 8);
    EXPECT_EQ(x, 1.5);
}

// Rows of small signals: v = 1 V at 0, 60 and 180 degrees, p without parts.
result_table bode_table() {
    result_table t = table_of("1 1 0 5\n10 1 60 6\n\n1 2 180 7\n",
                              {{"frequency", "Hz"}, {"mag_of_v", "V"}, {"phase_of_v", "deg"}, {"p", "W"}});
    t.kind = "ac";
    return t;
}
std::string names_in(const result_table& t) {
    std::string text;
    for (const record_column& c : t.columns) text += c.name + "[" + c.unit + "] ";
    return text;
}

TEST(export_rows, small_signals_go_out_in_either_form) {
    const result_table t = bode_table();
    const result_table parts = chosen_columns(t, {}, small_signal_form::cartesian);
    EXPECT_EQ(names_in(parts), "frequency[Hz] real_of_v[V] imag_of_v[V] p[W] ");
    EXPECT_NEAR(parts.at(1, 1), 0.5, 1e-15);
    EXPECT_NEAR(parts.at(1, 2), std::sqrt(0.75), 1e-15);
    EXPECT_NEAR(parts.at(2, 1), -2, 1e-15);
    EXPECT_EQ(parts.first_row, t.first_row);
    EXPECT_EQ(names_in(chosen_columns(t, {"v"}, small_signal_form::cartesian)), "real_of_v[V] imag_of_v[V] ");
    EXPECT_EQ(names_in(chosen_columns(t, {"p", "mag_of_v", "1"}, small_signal_form::cartesian)),
              "p[W] real_of_v[V] imag_of_v[V] frequency[Hz] ");
    EXPECT_EQ(names_in(chosen_columns(t, {"p", "v"}, small_signal_form::as_it_is)),
              "p[W] mag_of_v[V] phase_of_v[deg] ");

    const result_table back = chosen_columns(parts, {}, small_signal_form::polar);
    EXPECT_EQ(names_in(back), "frequency[Hz] mag_of_v[V] phase_of_v[deg] p[W] ");
    for (std::size_t i = 0; i < t.values.size(); ++i) EXPECT_NEAR(back.values[i], t.values[i], 1e-12) << i;

    result_table half = t;
    half.columns[2].name = "phase_of_w";  // nothing to convert
    EXPECT_EQ(names_in(chosen_columns(half, {}, small_signal_form::cartesian)), names_in(half));
}

TEST(export_rows, a_rawfile_of_small_signals_is_complex) {
    result_table t = chosen_columns(bode_table(), {}, small_signal_form::cartesian);
    t.values = {1, 1, 0, 5, 10, 0.5, -0.25, 6, 1, -2, 0, 7};
    export_choice c = all_of(t);
    c.title = "t";
    c.date = "d";
    const auto head = [](const std::string& curve, int n) {
        return "Title: t\nDate: d\nPlotname: AC Analysis, curve " + curve +
               "\nFlags: complex\nNo. Variables: 3\nNo. Points: " + std::to_string(n) +
               "\nVariables:\n\t0\tfrequency\tfrequency\n\t1\tv\tvoltage\n\t2\tp\tnotype\n";
    };
    EXPECT_EQ(written(write_raw, c), head("1", 2) + "Values:\n0\t1,0\n\t1,0\n\t5,0\n1\t10,0\n\t0.5,-0.25\n\t6,0\n\n" +
                                         head("2", 1) + "Values:\n0\t1,0\n\t-2,0\n\t7,0\n");
    c.end_curve = 1;
    c.binary = true;
    const std::string bytes = written(write_raw, c);
    const std::size_t first = bytes.find("Binary:\n") + 8;
    ASSERT_EQ(bytes.size(), first + 2 * 3 * 16);
    double v[2] = {0, 0};
    std::memcpy(v, bytes.data() + first + 48 + 16, 16);
    EXPECT_EQ(v[0], 0.5);
    EXPECT_EQ(v[1], -0.25);

    t.columns[0].unit = "rad/s";  // the scale is in Hz
    const export_choice angular = all_of(t);
    EXPECT_NE(written(write_raw, angular).find("\t0\tfrequency\tfrequency\n"), std::string::npos);
    EXPECT_NE(written(write_raw, angular).find("\n1\t1.591549430918953"), std::string::npos);
}

TEST(export_vcd, columns_of_two_values_are_wires_and_others_real) {
    const result_table t = table_of("0 0 1.5 7\n1e-6 5 1.5 7\n2e-6 5 1.6 7\n3e-6 0 1.5 7\n4e-6 0 1.7 7\n",
                                    {{"time", "s"}, {"gate", "V"}, {"i", "A"}, {"rest", "V"}});
    const std::string text = written(write_vcd, all_of(t));
    const dump d = read_dump(text);
    EXPECT_EQ(d.timescale, "1us");
    EXPECT_EQ(d.kind.at("!"), "wire1");
    EXPECT_EQ(d.kind.at("\""), "real64");
    ASSERT_EQ(d.rows.size(), 5u);
    const char* const gate[] = {"0", "1", "1", "0", "0"};
    const char* const i[] = {"1.5", "1.5", "1.6", "1.5", "1.7"};
    for (std::size_t k = 0; k < 5; ++k) {
        EXPECT_EQ(d.rows[k].first, static_cast<long long>(k));
        EXPECT_EQ(d.rows[k].second.at("gate"), gate[k]);
        EXPECT_EQ(d.rows[k].second.at("i"), i[k]);
        EXPECT_EQ(d.rows[k].second.at("rest"), "7");
    }
    EXPECT_NE(text.find("$comment gate: 0 is 0 V, 1 is 5 V $end\n"), std::string::npos);
}

TEST(export_vcd, the_timescale_is_the_coarsest_that_keeps_the_times) {
    const std::pair<const char*, const char*> cases[] = {
        {"0 1\n1 2\n5 3\n", "1s"},           {"0 1\n0.1 2\n", "100ms"},
        {"0 1\n2.5e-4 2\n5e-4 3\n", "10us"}, {"0 1\n1.234e-3 2\n2e-3 1\n", "1us"},
        {"1e-9 1\n1.001e-9 2\n", "1ps"},     {"0 1\n1e-17 2\n3e-17 3\n", "1fs"},
        {"0 1\n1e-17 2\n1e5 2\n", "100fs"},  {"5 1\n", "1s"}};
    for (const auto& [rows, wanted] : cases) {
        const result_table t = table_of(rows);
        EXPECT_EQ(read_dump(written(write_vcd, all_of(t))).timescale, wanted) << rows;
    }
}

TEST(export_vcd, times_rise_strictly_and_stay_near_the_samples) {
    std::mt19937 rng(1);
    std::uniform_real_distribution<double> exponent(-9, -4);
    std::string rows;
    std::vector<double> times;
    double t = 0;
    for (int i = 0; i < 2000; ++i, t += std::pow(10, exponent(rng))) {
        char row[64];
        std::snprintf(row, sizeof row, "%.12e %d\n", t, i);
        rows += row;
        times.push_back(t);
    }
    const result_table table = table_of(rows);
    const dump d = read_dump(written(write_vcd, all_of(table)));
    ASSERT_EQ(d.rows.size(), times.size());
    const std::map<std::string, double> units = {
        {"1ps", 1e-12}, {"10ps", 1e-11}, {"100fs", 1e-13}, {"10fs", 1e-14}, {"1fs", 1e-15}};
    const double unit = units.at(d.timescale);
    for (std::size_t i = 0; i < times.size(); ++i) {
        EXPECT_NEAR(static_cast<double>(d.rows[i].first) * unit, times[i], 1.1e-12);
        EXPECT_TRUE(i == 0 || d.rows[i].first > d.rows[i - 1].first);
    }
}

TEST(export_vcd, of_samples_at_one_time_the_last_counts) {
    const result_table t = table_of("0 0\n0 1\n1 1\n1 5\n1 3\n2 3\n");
    const dump d = read_dump(written(write_vcd, all_of(t)));
    ASSERT_EQ(d.rows.size(), 3u);
    EXPECT_EQ(d.rows[0].second.at("c2"), "1");
    EXPECT_EQ(d.rows[1].second.at("c2"), "3");
}

TEST(export_vcd, a_wire_that_is_no_number_is_unknown) {
    const result_table t = table_of("0 0\n1 nan\n2 1\n3 1\n");
    const dump d = read_dump(written(write_vcd, all_of(t)));
    EXPECT_EQ(d.rows.at(1).second.at("c2"), "x");
}

TEST(export_vcd, names_are_identifiers_and_no_text_ends_a_section) {
    result_table t =
        table_of("0 1 2 3\n1 2 3 4\n2 5 6 7\n", {{"time", "s"}, {"$end", "$end"}, {"a b", ""}, {"a_b", ""}});
    export_choice c = all_of(t);
    c.title = "$end $enddefinitions";
    const dump d = read_dump(written(write_vcd, c));
    std::set<std::string> names;
    for (const auto& [id, name] : d.name) names.insert(name);
    EXPECT_EQ(names, (std::set<std::string>{"_$end", "a_b", "a_b_2"}));
    EXPECT_EQ(d.rows.size(), 3u);
}

TEST(export_vcd, many_signals_have_identifiers_of_their_own) {
    std::string row = "0 ", next = "1 ";
    for (int i = 0; i < 10000; ++i) {
        row += "1 ";
        next += "2 ";
    }
    const result_table t = table_of(row + "\n" + next + "\n");
    EXPECT_EQ(read_dump(written(write_vcd, all_of(t))).name.size(), 10000u);
}

TEST(export_vcd, rows_that_are_not_over_time_are_refused) {
    EXPECT_EQ(vcd_fault_of("0 1\n2 1\n1 1\n"), "rows.dat, row 3: the time goes back");
    EXPECT_EQ(vcd_fault_of("-1 1\n"), "rows.dat, row 1: a VCD file has no times below 0");
    EXPECT_EQ(vcd_fault_of("0 1\nnan 1\n"), "rows.dat, row 2: the time is no number");
    EXPECT_EQ(vcd_fault_of("0 1\n1e30 1\n"), "rows.dat: times beyond what a VCD file can count");
    EXPECT_EQ(vcd_fault_of("0 1\n1e18 1\n"), "");
}

}  // namespace
