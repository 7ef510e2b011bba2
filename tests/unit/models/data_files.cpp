// Files of points that elements name.
#include "models/data_files.h"

#include <gtest/gtest.h>

#include <cstring>

#include "halt_throws.h"
#include "library/basic/basic_reader.h"
#include "temp_folder.h"

namespace {

// A library of two types, and units of them with file names.
struct data_units {
    gbes_class lib;
    std::vector<int> i_lib;
    row_table<char*> sprm;
    std::vector<std::string> names;
    dp_class dp;

    explicit data_units(std::vector<std::pair<int, std::string>> units) {
        const auto entry = [](const std::string& name, const std::string& sparms) {
            return "gbe name=" + name + "\nJacobian: constant\nmain_vars: y\niparms:\nsparms: " + sparms +
                   "\nrparms:\naux_vars:\nxvar:\nstparms:\nigparms:\nno_functions 1\nf_1 y\nC: compiled\nendgbe\n";
        };
        text_file text = text_file_of(entry("const", "") + entry("pwl_file", "note=x file=none"));
        read_library_text(text, gbes_form, nullptr, lib);
        for (auto& [type, file] : units) names.push_back(file);
        for (std::size_t u = 0; u < units.size(); ++u) {
            i_lib.push_back(units[u].first);
            if (units[u].first == 1) {
                sprm.add(nullptr);
                sprm.add(names[u].data());
            }
            sprm.close_row();
        }
    }
    void read() { read_gbe_data_files(lib, i_lib, sprm, dp); }
};

void read_one(const std::string& path) { data_units({{1, path}}).read(); }

TEST(data_files, are_read_for_the_units_that_have_one) {
    const temp_folder folder;
    write_file("a.dat", "# time value\n\n0 1\n  # indented\n1m=2.5\n\t2m\t-3\n");
    write_file("b.dat", "-1 7\n1 8");
    data_units u({{1, "a.dat"}, {0, ""}, {1, "b.dat"}});
    u.read();
    EXPECT_EQ(u.dp.gbe.of_unit, (std::vector<int>{0, -1, 1}));
    EXPECT_EQ(u.dp.of_gbe(0).x, (std::vector<double>{0, 1e-3, 2e-3}));
    EXPECT_EQ(u.dp.of_gbe(0).y, (std::vector<double>{1, 2.5, -3}));
    EXPECT_EQ(u.dp.of_gbe(2).x, (std::vector<double>{-1, 1}));
}

TEST(data_files, that_are_not_named_or_not_there_stop_the_run) {
    const temp_folder folder;
    EXPECT_HALT(read_one("none"), "dp_class::gbe_pwl_file:\n  file name=none?\n  Halting...\n");
    EXPECT_HALT(read_one("no_such.dat"), "dp_class::gbe_pwl_file:\n  file no_such.dat does not exist.\n  Halting...\n");
}

TEST(data_files, with_too_few_or_wrong_lines_stop_the_run) {
    const temp_folder folder;
    const auto expect = [](const std::string& text, const std::string& told) {
        write_file("a.dat", text);
        EXPECT_HALT(read_one("a.dat"), told);
    };
    const std::string who = "dp_class::gbe_pwl_file:\n", tail = "  Check file: a.dat\n  Halting...\n";
    expect("", who + "  number of lines = 0 ?\n" + tail);
    expect("# nothing\n\n", who + "  number of lines = 0 ?\n" + tail);
    expect("0 1\n", who + "  number of lines = 1 ?\n" + tail);
    expect("0 1\n1\n", who + "  number of words is 1\n" + tail);
    expect("0 1\n1 2 3\n", who + "  number of words is 3\n" + tail);
    expect("0 1\n2 1\n1 1\n", who + "  time points not in ascending order?\n" + tail);
    expect(std::string("\0\1\2 x\n\377 y\n", 9), "check double string: <" + std::string("\0\1\2", 3) + ">\n" +
                                                     "  (brackets are not part of the string)\n  Halting...\n");
}

TEST(data_files, may_jump_at_a_time) {
    const temp_folder folder;
    write_file("a.dat", "0 1\n1 1\n1 2\n2 2\n");
    data_units u({{1, "a.dat"}});
    u.read();
    EXPECT_EQ(u.dp.of_gbe(0).x.size(), 4u);
}

}  // namespace
