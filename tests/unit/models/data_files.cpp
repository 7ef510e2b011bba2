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

// ---- the other loaders ----

// One unit of any type of a family, which names a file.
dp_class read_as(const std::string& family, const std::string& type, const std::string& path) {
    gbes_class lib;
    text_file text = text_file_of("gbe name=" + type +
                                  "\nJacobian: constant\nmain_vars: y\niparms:\nsparms: file=none\nrparms:\naux_vars:\n"
                                  "xvar:\nstparms:\nigparms:\nno_functions 1\nf_1 y\nC: compiled\nendgbe\n");
    read_library_text(text, gbes_form, nullptr, lib);
    std::string name = path;
    row_table<char*> sprm;
    sprm.add(name.data());
    sprm.close_row();
    dp_class dp;
    (family == "gbe" ? read_gbe_data_files : read_xbe_data_files)(lib, {0}, sprm, dp);
    return dp;
}

struct file_type {
    const char *family, *type, *sound;
};
constexpr file_type file_types[] = {
    {"gbe", "src_table_1", "0 1\n1 2\n"},
    {"gbe", "pwl_file", "0 1\n1 2\n"},
    {"gbe", "pwl_file_xy_1", "0 1\n1 2\n"},
    {"gbe", "pwm_file_1", "2\n1m\n2\n"},
    {"gbe", "pwm_file_2", "2\n1m\n2\n"},
    {"gbe", "lut_file_1_to_3", "2 3\n1\n2\n3\n4\n5\n6\n"},
    {"gbe", "lut_file_2_to_1", "2 3\n1\n2\n3\n4\n5\n6\n"},
    {"gbe", "lut_file_3_to_1", "2 1 3\n1\n2\n3\n4\n5\n6\n"},
    {"gbe", "lut_file_4_to_1", "2 1 1 3\n1\n2\n3\n4\n5\n6\n"},
    {"xbe", "src_table_1", "0 1\n1 2\n"},
    {"xbe", "pwl_file", "0 1\n1 2\n"},
    {"xbe", "lut_file_1_to_3", "2 3\n1\n2\n3\n4\n5\n6\n"},
};

TEST(data_files, of_every_type_are_read_with_comments_between) {
    const temp_folder folder;
    for (const file_type& f : file_types) {
        std::string text = "# head\n\n";
        for (const char* c = f.sound; *c != 0; ++c)
            text += *c == '\n' ? std::string("\r\n  # between\n\n") : std::string(1, *c);
        write_file("a.dat", text);
        const dp_class dp = read_as(f.family, f.type, "a.dat");
        const bool is_g = std::string(f.family) == "gbe";
        EXPECT_EQ(dp.gbe.has(0), is_g) << f.type;
        EXPECT_EQ(dp.xbe.has(0), !is_g) << f.type;
        const data_table& t = is_g ? dp.of_gbe(0) : dp.of_xbe(0);
        const std::string type = f.type;
        if (type.starts_with("pwm")) {
            EXPECT_EQ(t.x, (std::vector<double>{1e-3, 2}));
        } else if (type.starts_with("lut")) {
            EXPECT_EQ(t.y, (std::vector<double>{1, 2, 3, 4, 5, 6}));
            EXPECT_EQ(t.n.size(), static_cast<std::size_t>(type[9] - '0'));
            EXPECT_EQ(t.n_y, type.back() - '0');
        } else {
            EXPECT_EQ(t.x, (std::vector<double>{0, 1}));
            EXPECT_EQ(t.y, (std::vector<double>{1, 2}));
        }
    }
}

TEST(data_files, of_every_type_stop_in_the_name_of_their_loader) {
    const temp_folder folder;
    std::string bytes;
    for (int i = 0; i < 4096; ++i) bytes += static_cast<char>((i * 167 + 13) % 256);
    for (const file_type& f : file_types) {
        const std::string who = "dp_class::" + std::string(f.family) + "_" + f.type + ":\n",
                          tail = "  Check file: a.dat\n  Halting...\n";
        const auto read = [&] { read_as(f.family, f.type, "a.dat"); };
        EXPECT_HALT(read_as(f.family, f.type, "none"), who + "  file name=none?\n  Halting...\n");
        EXPECT_HALT(read_as(f.family, f.type, "b.dat"), who + "  file b.dat does not exist.\n  Halting...\n");
        write_file("a.dat", "");
        EXPECT_HALT(read(), who + "  number of lines = 0 ?\n" + tail);
        write_file("a.dat", "1 2\n# end");
        EXPECT_HALT(read(), who + "  number of lines = 1 ?\n" + tail);
        write_file("a.dat", bytes);
        const console_run heard = run_and_listen(read);
        EXPECT_TRUE(heard.stopped) << f.type;
        EXPECT_NE(heard.text.find("Halting"), std::string::npos) << f.type;
        // The last number is none, or infinite.
        const std::string text = f.sound;
        for (const std::string word : {"nan", "inf", "1e999", "volt"}) {
            write_file("a.dat", text.substr(0, text.size() - 2) + word + "\n");
            EXPECT_NE(run_and_listen(read).text.find("check double string: <" + word + ">"), std::string::npos)
                << f.type;
        }
    }
}

TEST(data_files, of_switching_times_are_a_count_and_so_many_ascending_times) {
    const temp_folder folder;
    const std::string who = "dp_class::gbe_pwm_file_2:\n", tail = "  Check file: a.dat\n  Halting...\n";
    const std::pair<const char*, std::string> cases[] = {
        {"2 2\n1\n2\n", who + "  number of words is 2\n" + tail},
        {"2\n1 2\n2\n", who + "  number of words is 2\n" + tail},
        {"3\n1\n2\n", who + "  number of lines = 3 ?\n" + tail},
        {"2\n1\n1\n", who + "  time points not in ascending order?\n" + tail},
        {"2\n2\n1\n", who + "  time points not in ascending order?\n" + tail},
        {"1\n1\n2\n", who + "  more times than the first line says?\n" + tail},
        {"0\n1\n2\n", who + "  number of times is 0\n" + tail},
        {"-1\n1\n2\n", who + "  number of times is -1\n" + tail},
        {"2147483647\n1\n2\n", who + "  number of lines = 3 ?\n" + tail},
        {"2.0\n1\n2\n", "check integer string: <2.0>\n  (brackets are not part of the string)\n  Halting...\n"},
    };
    for (const auto& [text, told] : cases) {
        write_file("a.dat", text);
        EXPECT_HALT(read_as("gbe", "pwm_file_2", "a.dat"), told);
    }
}

TEST(data_files, of_tables_have_sizes_and_all_numbers) {
    const temp_folder folder;
    const std::string tail = "  Check file: a.dat\n  Halting...\n";
    struct faulty {
        const char *type, *text;
        std::string told;
    };
    const faulty cases[] = {
        {"lut_file_1_to_3", "2\n1\n", "  expecting n1 n2 here\n  number of words is 1\n  s2= 2\n"},
        {"lut_file_1_to_3", "2 2\n1\n2\n3\n4\n", "  n2 must be 3\n"},
        {"lut_file_2_to_1", "2 2 2\n1\n", "  expecting n1 n2 here\n  number of words is 3\n  s2= 2 2 2\n"},
        {"lut_file_3_to_1", "2 2\n1\n", "  expecting n1 n2 n3 here\n  number of words is 2\n  s2= 2 2\n"},
        {"lut_file_4_to_1", "2 2\n1\n", "  expecting n1 n2 n3 n4 here\n  number of words is 2\n  s2= 2 2\n"},
        {"lut_file_2_to_1", "2 2\n1\n2\n3\n", "  not enough numbers?\n"},
        {"lut_file_2_to_1", "2 2\n1\n2\n3\n4\n5\n", "  more numbers than the first line says?\n"},
        {"lut_file_2_to_1", "0 2\n1\n", "  n1= 0 ?\n"},
        {"lut_file_2_to_1", "2 -2\n1\n", "  n2= -2 ?\n"},
        {"lut_file_4_to_1", "65536 65536 65536 65536\n1\n", "  not enough numbers?\n"},
        {"lut_file_4_to_1", "2147483647 2147483647 2147483647 2147483647\n1\n", "  not enough numbers?\n"},
    };
    for (const faulty& f : cases) {
        write_file("a.dat", f.text);
        EXPECT_HALT(read_as("gbe", f.type, "a.dat"), "dp_class::gbe_" + std::string(f.type) + ":\n" + f.told + tail);
    }
    write_file("a.dat", "2 2\n1\n2 3\n4\n");
    EXPECT_HALT(read_as("gbe", "lut_file_2_to_1", "a.dat"),
                "dp_class::gbe_lut_file_2_to_1:\n  expecting n_words=1 here\n  n_words is 2\n" + tail);
    write_file("a.dat", "2 3.0\n1\n2\n");
    EXPECT_HALT(read_as("gbe", "lut_file_2_to_1", "a.dat"),
                "check integer string: <3.0>\n  (brackets are not part of the string)\n  Halting...\n");
}

TEST(clock_delay_2, has_a_running_number_for_each_unit_and_50_slots_for_all) {
    dp_class dp = read_as("gbe", "clock_delay_2", "none");
    EXPECT_EQ(dp.clock_delay_2.of_unit, (std::vector<int>{0}));
    ASSERT_EQ(dp.clock_delay_2.slots.size(), 50u);
    EXPECT_FALSE(dp.gbe.has(0));
    for (int k = 0; k < 50; ++k) {
        EXPECT_EQ(dp.clock_delay_2.free_slot(), k);
        dp.clock_delay_2.slots[static_cast<std::size_t>(k)] = {0, 0.5 * k, 0};
    }
    EXPECT_EQ(dp.clock_delay_2.free_slot(), -1);
    EXPECT_EQ(dp.clock_delay_2.find(0, 3.5), 7);
    EXPECT_EQ(dp.clock_delay_2.find(1, 3.5), -1);
    write_file("a.dat", "0 1\n1 2\n");
    EXPECT_TRUE(read_as("gbe", "pwl_file", "a.dat").clock_delay_2.slots.empty());
}

}  // namespace
