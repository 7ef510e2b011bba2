#include "base/list_file.h"

#include <gtest/gtest.h>

#include "halt_throws.h"
#include "temp_folder.h"

TEST(make_chrarray_5, gives_each_name_its_place_among_the_non_blank_lines) {
    const temp_folder here;
    write_file("f.lst", ".r\n\n  =\nebe.vsrcdc ignored words\n\t.c.x\r\n.unused");
    EXPECT_EQ(make_chrarray_5("f.lst", {"c.x", "r", "vsrcdc"}), (std::vector<int>{2, 0, 1}));
    EXPECT_EQ(make_chrarray_5("f.lst", {}), std::vector<int>{});
    EXPECT_EQ(joined(list_names("f.lst")), "r vsrcdc c.x unused");
}

TEST(make_chrarray_5, takes_an_empty_list_for_an_empty_library) {
    const temp_folder here;
    write_file("f.lst", "");
    EXPECT_TRUE(make_chrarray_5("f.lst", {}).empty());
    EXPECT_TRUE(list_names("f.lst").empty());
}

TEST(make_chrarray_5, halts_on_a_fault_of_the_list) {
    const temp_folder here;
    struct row {
        const char *list, *expected;
    };
    const row rows[] = {
        {".r\nvsrcdc\n",
         "make_chrarray_5: wrong format in the input file?\n  . (dot) not found. Check input file.\n"
         "  input file is: f.lst\n  Halting...\n"},
        {"# .r\n",
         "make_chrarray_5: wrong format in the input file?\n  . (dot) not found. Check input file.\n"
         "  input file is: f.lst\n  Halting...\n"},
        {".r\n.c\nebe.r\n", "make_chrarray_5: in file f.lst,\n  r is appearing more than once!\n"},
        {".c\n", "make_chrarray_5: r not found in input file.\n  word_r is: r\n  Halting...\n"},
    };
    for (const row& r : rows) {
        write_file("f.lst", r.list);
        EXPECT_HALT(make_chrarray_5("f.lst", {"r"}), r.expected);
    }
    EXPECT_HALT(make_chrarray_5("none.lst", {}), "make_chrarray_5: file none.lst does not exist. Halting...\n");
    EXPECT_HALT(list_names("none.lst"), "make_chrarray_5: file none.lst does not exist. Halting...\n");
}
