#include "tnl/results/measure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tnl/common/exit_status.h"

namespace {

using namespace cli;

// v: a ramp 0, 2, 4, 6 V; i: 1 A throughout; w: a pulse.
result_table small_table() {
    result_table t = read_result_table("0 0 1 0\n1e-3 2 1 5\n2e-3 4 1 5\n3e-3 6 1 0\n", "f.dat");
    t.columns = {{"time", "s"}, {"v", "V"}, {"i", "A"}, {"w-1", "V"}};
    return t;
}

std::string result_of(const std::string& text, const result_table& table = small_table(), std::size_t curve = 0) {
    return text_of(evaluate(parse_expression(text), table, curve).sides.at(0));
}
bool holds(const std::string& text) { return evaluate(parse_expression(text), small_table(), 0).holds; }

std::string usage_fault_of(const std::string& text) {
    try {
        result_of(text);
    } catch (const usage_error& e) {
        return e.what();
    }
    return "";
}
std::string measure_fault_of(const std::string& text, const result_table& table = small_table()) {
    try {
        result_of(text, table);
    } catch (const measure_error& e) {
        return e.what();
    }
    return "";
}

TEST(measure, numbers_are_written_as_in_decks_or_with_percent) {
    const std::pair<const char*, const char*> cases[] = {
        {"1", "1"},      {"1.5k", "1500"}, {"2K", "2000"},  {"3M", "3000000"}, {"3m", "0.003"}, {"4u", "4e-06"},
        {"5n", "5e-09"}, {"6p", "6e-12"},  {"7f", "7e-15"}, {"2G", "2e+09"},   {"1e3", "1000"}, {"1e-3k", "1"},
        {".5", "0.5"},   {"-2", "-2"},     {"--2", "2"},    {"+2", "2"},       {"2%", "2 %"},   {"2*10%", "20 %"}};
    for (const auto& [text, wanted] : cases) EXPECT_EQ(result_of(text), wanted) << text;
    for (const char* text : {"4ms", "1V", "1kk", "2x", "0x10", "1e999", "1e-999"}) EXPECT_NE(usage_fault_of(text), "");
}

TEST(measure, arithmetic_binds_as_usual) {
    const std::pair<const char*, const char*> cases[] = {
        {"1+2*3", "7"},  {"(1+2)*3", "9"}, {"2^3^2", "512"}, {"-2^2", "-4"},    {"2^-1", "0.5"},  {"8/4/2", "1"},
        {"1-2-3", "-4"}, {"2*-3", "-6"},   {"abs(-3)", "3"}, {"sqrt(16)", "4"}, {"db(10)", "20"}, {"ln(exp(2))", "2"}};
    for (const auto& [text, wanted] : cases) EXPECT_EQ(result_of(text), wanted) << text;
}

TEST(measure, columns_are_measured_in_their_units) {
    const std::pair<const char*, const char*> cases[] = {{"avg(v)", "3 V"},
                                                         {"avg(v, 1m, 2m)", "3 V"},
                                                         {"avg( v , 0.5m , 1m )", "1.5 V"},
                                                         {"rms(v)", "3.464102 V"},
                                                         {"max(v)", "6 V"},
                                                         {"min(v, 1m, 3m)", "2 V"},
                                                         {"pp(v)", "6 V"},
                                                         {"ripple_pct(v)", "200 %"},
                                                         {"avg(v*i)", "3 W"},
                                                         {"avg(v)*avg(i)", "3 W"},
                                                         {"integ(v*i)", "0.009 J"},
                                                         {"integ(v)", "0.009 V s"},
                                                         {"slope(v)", "2000 V/s"},
                                                         {"avg(v)/avg(i)", "3 ohm"},
                                                         {"max(v)/avg(v)", "2"},
                                                         {"rms(v-3)", "1.732051 V"},
                                                         {"max(abs(3-v))", "3 V"},
                                                         {"avg(v+i)", "4"},
                                                         {"avg(2*v)", "6 V"},
                                                         {"avg(v)*10%", "0.3 V"},
                                                         {"-avg(v)", "-3 V"},
                                                         {"at(v, 1.5m)", "3 V"},
                                                         {"at(time, 1.5m)", "0.0015 s"},
                                                         {"cross(v, 3)", "0.0015 s"},
                                                         {"cross(v, 3, -1, rise)", "0.0015 s"},
                                                         {"cross(v, 3, rise)", "0.0015 s"},
                                                         {"cross(`w-1`, 2.5, 2)", "0.0025 s"},
                                                         {"cross($4, 2.5, 1, fall, 1m, 3m)", "0.0025 s"},
                                                         {"delay(`w-1`, 2.5, v, 4.5)", "0.00175 s"},
                                                         {"rise(v)", "0.0024 s"},
                                                         {"at(v, cross(v, 3)) / 2", "1.5 V"},
                                                         {"label = max(v)", "6 V"}};
    for (const auto& [text, wanted] : cases) EXPECT_EQ(result_of(text), wanted) << text;
}

TEST(measure, periodic_waves) {
    result_table t;
    t.columns = {{"time", "s"}, {"v", "V"}};
    for (int k = 0; k < 4; ++k)
        for (const auto& [part, v] : {std::pair{0.0, 0.0}, {0.0, 5.0}, {0.3, 5.0}, {0.3, 0.0}})
            t.values.insert(t.values.end(), {k + part, v});
    t.first_row = {0, 16};
    EXPECT_EQ(result_of("freq(v)", t), "1 Hz");
    EXPECT_EQ(result_of("period(v, 2)", t), "1 s");
    EXPECT_EQ(result_of("duty(v)", t), "0.3");
    EXPECT_EQ(result_of("duty(v, 2, 0.5, 3.2)", t), "0.3");
    EXPECT_EQ(result_of("harm(v, 1, 0, 0, 3)", t), "1.5 V");
    // The first harmonic of a pulse of height 5 and duty d: 10 / pi sin(pi d) (Fourier).
    EXPECT_EQ(result_of("harm(v, 1, 1)", t), text_of({10 / M_PI * std::sin(0.3 * M_PI), "V"}));
    // All of it by Parseval: mean square 25 d, less the mean's.
    const double first = 10 / M_PI * std::sin(0.3 * M_PI);
    EXPECT_EQ(result_of("thd(v, 1)", t), text_of({std::sqrt(2 * 25 * 0.3 * 0.7 / (first * first) - 1), "%"}));
    EXPECT_EQ(measure_fault_of("thd(v, 0.1)", t), "the window of 3.3 is shorter than one period of frequency 0.1");
    EXPECT_EQ(measure_fault_of("thd(v, 1, 1.5)", t), "n must be a whole number from 2 to 10000");
    EXPECT_EQ(measure_fault_of("freq(v, 7)", t),
              "a period needs two rising crossings of level 7; there are 0 from 0 to 3.3");
}

TEST(measure, relations_hold_or_do_not) {
    EXPECT_TRUE(holds("avg(v) < 3.1"));
    EXPECT_FALSE(holds("avg(v) < 2.9"));
    EXPECT_TRUE(holds("max(v) <= 6"));
    EXPECT_TRUE(holds("2.9 < avg(v) < 3.1"));
    EXPECT_FALSE(holds("2.9 < avg(v) < 2.95"));
    EXPECT_TRUE(holds("max(v) == 6"));
    EXPECT_FALSE(holds("max(v) != 6"));
    EXPECT_TRUE(holds("ripple_pct(v) >= 199%"));
    EXPECT_TRUE(holds("ripple_pct(v) > 0"));
    EXPECT_TRUE(holds("max(v) > min(v)"));
}

TEST(measure, nothing_holds_for_what_is_no_number) {
    for (const char* r : {"<", "<=", ">", ">=", "==", "!="})
        EXPECT_FALSE(holds("sqrt(0-1) " + std::string(r) + " 1")) << r;
}

TEST(measure, a_ratio_is_not_held_against_a_plain_number) {
    for (const char* text : {"overshoot(v) < 20", "20 > overshoot(v)", "-ripple_pct(v) < 0.2", "abs(thd(v,1k)) < 2"})
        EXPECT_NE(usage_fault_of(text).find("write the number of the other with %"), std::string::npos) << text;
}

TEST(measure, faults_are_told_under_a_caret) {
    EXPECT_EQ(usage_fault_of("avg(v, 4m"), "')' or ',' should stand here\n  avg(v, 4m\n           ^");
    EXPECT_EQ(usage_fault_of("avg(v, 4m, 5ms)"),
              "behind a number stands one of G M k m u n p f, or %, and no unit\n"
              "  avg(v, 4m, 5ms)\n"
              "              ^");
    EXPECT_EQ(usage_fault_of("avrg(v)"), "there is no function avrg; near names: avg\n  avrg(v)\n  ^");
    EXPECT_EQ(usage_fault_of("1 + avg(v, 4m)"), "this is written avg(v[, from, to])\n  1 + avg(v, 4m)\n      ^");
    EXPECT_EQ(usage_fault_of("avg(3)"),
              "avg measures a column, and there is none in its first argument\n  avg(3)\n  ^");
    EXPECT_EQ(usage_fault_of("max(\xc3\xa4) +"), "something is missing at the end\n  max(\xc3\xa4) +\n          ^");
    EXPECT_EQ(usage_fault_of("max(v) = 3"), "relations are < <= > >= == and !=\n  max(v) = 3\n         ^");
    EXPECT_EQ(usage_fault_of(""), "something is missing at the end\n  \n  ^");
    for (const char* text : {"(",      ")",   "max()",    "max(v))",      "max(v) max(v)",
                             "1 +* 2", "\"v", "$",        "$x",           "cross(v, 1, up)",
                             "a b",    "< 3", "max(v) <", "max(v) < 3 <", "x = ",
                             "%",      "1%%", "max(v,)",  "max(,v)",      ","})
        EXPECT_NE(usage_fault_of(text), "") << text;
}

TEST(measure, columns_that_are_left_unmeasured_are_told) {
    EXPECT_EQ(usage_fault_of("v - 3"),
              "v - 3 has a value in each of 4 rows; measure it: avg(v - 3), max(v - 3), at(v - 3, 1m)");
    EXPECT_EQ(usage_fault_of("max(u)"), "no column u in f.dat");
    result_table one = read_result_table("1 2.5\n", "f");
    EXPECT_EQ(result_of("c2", one), "2.5");
    EXPECT_EQ(result_of("rms(c2)", one), "2.5");
    EXPECT_EQ(measure_fault_of("c2", read_result_table("", "f")), "there are no rows");
}

TEST(measure, rows_that_fall_are_read_backwards_and_others_only_for_their_extremes) {
    result_table falling = read_result_table("3 6\n2 4\n0 0\n", "f");
    EXPECT_EQ(result_of("avg(c2)", falling), "3");
    EXPECT_EQ(result_of("at(c2, 1)", falling), "2");
    result_table mixed = read_result_table("0 6\n2 4\n1 0\n", "f");
    EXPECT_EQ(result_of("max(c2)", mixed), "6");
    EXPECT_NE(measure_fault_of("avg(c2)", mixed), "");
    EXPECT_NE(measure_fault_of("max(c2, 0, 1)", mixed), "");
    EXPECT_NE(measure_fault_of("avg(c2)", read_result_table("0 6\nnan 4\n2 0\n", "f")), "");
}

TEST(measure, each_curve_is_measured_by_itself) {
    const result_table t = read_result_table("0 1\n1 3\n\n0 5\n1 9\n", "f");
    EXPECT_EQ(result_of("avg(c2)", t, 0), "2");
    EXPECT_EQ(result_of("avg(c2)", t, 1), "7");
}

TEST(measure, deep_and_long_texts_end_without_a_fault) {
    for (const char* piece : {"(", "-", "max(", "1^", "abs(", "+"}) {
        std::string text;
        for (int i = 0; i < 100000; ++i) text += piece;
        EXPECT_NE(usage_fault_of(text), "") << piece;
    }
    std::string sum = "1";
    for (int i = 0; i < 100000; ++i) sum += "+1";
    EXPECT_EQ(result_of(sum), "100001");
}

TEST(measure, random_texts_are_answered_or_refused) {
    const char* const pieces[] = {
        "avg", "cross", "thd", "(",    ")",     ",", "v",        "i",    "time", "1m",  "2%",
        "-",   "+",     "*",   "/",    "^",     "<", "==",       "rise", "any",  "$2",  "`w-1`",
        " ",   "0",     "1e9", "harm", "delay", "=", "settling", "\x01", "\xff", "abs", "'"};
    std::mt19937 rng(1);
    const result_table table = small_table();
    int n_good = 0;
    for (int trial = 0; trial < 200000; ++trial) {
        std::string text = rng() % 2 ? "cross(" : "avg(v)";
        for (unsigned k = rng() % 9; k-- > 0;) text += pieces[rng() % std::size(pieces)];
        try {
            n_good += evaluate(parse_expression(text), table, 0).holds;
        } catch (const usage_error&) {
        } catch (const measure_error&) {
        }
    }
    EXPECT_GT(n_good, 100);
}

TEST(measure, the_list_of_functions_names_each) {
    for (const char* name : {"avg", "rms", "thd", "settling", "cross", "delay", "ripple_pct"})
        EXPECT_NE(function_list().find(std::string("  ") + name + "("), std::string::npos) << name;
}

}  // namespace
