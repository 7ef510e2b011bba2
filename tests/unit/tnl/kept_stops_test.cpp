// The simulator's readers, gone on with behind their stops.
#include <gtest/gtest.h>

#include "base/halt.h"
#include "deck/gprm_class.h"
#include "deck/ov_class.h"
#include "tnl/common/halt.h"

using namespace cli;

namespace {

circuit_file deck(const std::string& circuit, const std::string& before) {
    return circuit_file_of(file_chr_of("title: t\n" + before + "begin_circuit\n" + circuit + "end_circuit\nend_cf\n"));
}

// "statement.word text" of each, up to the first line end.
std::vector<std::string> told(const kept_stops& kept) {
    std::vector<std::string> all;
    for (const kept_stop& s : kept.list)
        all.push_back(std::to_string(s.statement) + "." + std::to_string(s.word) + " " +
                      s.text.substr(0, s.text.find('\n')));
    return all;
}

}  // namespace

TEST(kept_stops, are_all_that_the_readers_of_constants_and_outputs_refuse) {
    circuit_file cf =
        deck("outvar: a=iR1 b=i_of_R1\noutvar: c=x\n", "greal a=1x q=2 c=3y\ngreal\nginteger n=1.5 m=4\n");
    kept_stops kept;
    const gprm_class gprm = read_gprm(cf);
    const ov_class ov = read_ov(cf, gprm);
    EXPECT_EQ(told(kept), (std::vector<std::string>{
                              "3.2 check integer string: <1.5>", "1.2 check double string: <1x>",
                              "1.6 check double string: <3y>", "2.0 gprm_class: check greal statement. Halting...",
                              "5.2 find_sub_word: _of_ was not found.", "6.2 find_sub_word: _of_ was not found."}));
    EXPECT_EQ(gprm.gint_name, (std::vector<std::string>{"m"})) << "what can be read is there";
    EXPECT_EQ(gprm.gprm_int_1("m"), 4);
    EXPECT_EQ(gprm.greal, (std::vector<double>{2}));
    EXPECT_EQ(ov.name, (std::vector<std::string>{"b"}));
}

TEST(kept_stops, are_thrown_where_nobody_keeps_them) {
    EXPECT_THROW(reading(3, [] { halt({"no"}); }), stop);
    const kept_stops kept;
    EXPECT_THROW(halt({"not inside of a statement"}), stop);
    EXPECT_TRUE(kept.list.empty());
}

TEST(kept_stops, go_to_the_last_one_made) {
    const kept_stops outer;
    {
        const kept_stops inner;
        EXPECT_FALSE(reading(1, [] { halt({"inner"}); }));
        EXPECT_EQ(told(inner), (std::vector<std::string>{"1.0 inner"}));
    }
    EXPECT_TRUE(reading(2, [] {}));
    EXPECT_FALSE(reading(3, [] {
        at_word(5);
        EXPECT_FALSE(reading(4, [] { halt({"first"}); }));
        halt({"second"});
    }));
    EXPECT_EQ(told(outer), (std::vector<std::string>{"4.0 first", "3.5 second"}));
}
