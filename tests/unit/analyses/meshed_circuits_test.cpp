// Whole runs of meshed circuits, whose system grows full while it is eliminated.
#include <gtest/gtest.h>

#include "dc_fixture.h"

namespace {

std::string deck(const std::string& circuit_block, const std::string& variables) {
    return "title: mesh\nbegin_circuit\nrefnode 0\n" + circuit_block +
           "end_circuit\nbegin_solve\nsolve_type dc\nbegin_output\nfilename v.dat\nvariables: " + variables +
           "\nend_output\nend_solve\nend_cf\n";
}
std::string resistor(const std::string& name, const std::string& p, const std::string& n) {
    return "eelement name=R" + name + " type=r p=" + p + " n=" + n + " r=1\n";
}

}  // namespace

TEST(meshed_circuits, corners_of_a_grid_beside_those_of_the_source_read_half_of_it) {
    for (const int side : {29, 34, 49}) {
        const auto node = [&](int i, int j) {
            return i + j == 0 ? std::string("0") : "n" + std::to_string(i) + "_" + std::to_string(j);
        };
        std::string text = "eelement name=V1 type=vsrcdc p=" + node(side - 1, side - 1) + " n=0 vdc=1\n";
        for (int i = 0; i < side; ++i)
            for (int j = 0; j < side; ++j) {
                const std::string at = std::to_string(i) + "_" + std::to_string(j);
                if (i > 0) text += resistor("a" + at, node(i, j), node(i - 1, j));
                if (j > 0) text += resistor("b" + at, node(i, j), node(i, j - 1));
            }
        text += "outvar: v1=nodev_of_" + node(0, side - 1) + " v2=nodev_of_" + node(side - 1, 0) + " v3=nodev_of_" +
                node(side - 1, side - 1) + "\n";
        const temp_folder folder;
        const console_run heard = run_here(deck(text, "v1 v2 v3"));
        EXPECT_FALSE(heard.stopped) << heard.text;
        EXPECT_EQ(read_file("v.dat"), " 5.000000e-01  5.000000e-01  1.000000e+00 \n") << side;
    }
}

TEST(meshed_circuits, nodes_of_a_full_mesh_read_half_of_its_source) {
    // 73 nodes with the reference: 71 of them hang on both ends of the source by 1 ohm. Its current is 71 times 0.5 A
    // and 1 A straight across.
    const int n_node = 73;
    const auto node = [](int i) { return i == 0 ? std::string("0") : "n" + std::to_string(i); };
    std::string text = "eelement name=V1 type=vsrcdc p=n1 n=0 vdc=1\n";
    for (int i = 0; i < n_node; ++i)
        for (int j = 0; j < i; ++j) text += resistor(std::to_string(i) + "_" + std::to_string(j), node(i), node(j));
    text += "outvar: v1=nodev_of_n1 v2=nodev_of_n2 v72=nodev_of_n72 i=i_of_V1\n";
    const temp_folder folder;
    const console_run heard = run_here(deck(text, "v1 v2 v72 i"));
    EXPECT_FALSE(heard.stopped) << heard.text;
    EXPECT_EQ(read_file("v.dat"), " 1.000000e+00  5.000000e-01  5.000000e-01 -3.650000e+01 \n");
}
