// What elements without terminals say to an output of power.
#include <gtest/gtest.h>

#include "whole_run.h"

namespace {
const std::string six_blocks =
    "gelement name=X1 type=const y=a k=1\ngelement name=X2 type=const y=b k=2\n"
    "gelement name=X3 type=sum_2 x1=a x2=b y=c\ngelement name=X4 type=multscl x=c y=d k=2\n"
    "gelement name=X5 type=multscl x=d y=e k=2\ngelement name=X6 type=multscl x=e y=f k=2\n";
const std::string resistor = "eelement name=V1 type=vsrcdc p=in n=0 vdc=10\neelement name=R1 type=r p=in n=0 r=1k\n";
}  // namespace

TEST(power_outputs, of_blocks_are_refused_as_unknown_with_and_without_a_circuit_beside_them) {
    for (const std::string& beside : {std::string(), resistor})
        for (const char* word : {"pwr_elec", "pwr_elec_ac"}) {
            const whole_run run(deck_text{
                beside + six_blocks + "outvar: p=" + std::string(word) + "_of_X6\n",
                "p",
                {"solve_type dc\n"}}.str());
            EXPECT_TRUE(run.stopped);
            EXPECT_EQ(run.text, "gelu_class: outvar not found\n   name is " + std::string(word) + "\n   Halting...\n");
        }
}

TEST(power_outputs, of_electrical_elements_stay) {
    const whole_run run(
        deck_text{resistor + six_blocks + "outvar: p=pwr_elec_of_R1\n", "p", {"solve_type dc\n"}}.str());
    EXPECT_FALSE(run.stopped) << run.text;
    EXPECT_EQ(run.rows("out1.dat"), (table{{0.1}}));
}
