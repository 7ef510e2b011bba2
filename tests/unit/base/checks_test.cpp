#include "base/checks.h"

#include <gtest/gtest.h>

#include "halt_throws.h"

TEST(compare_int_1, lets_exactly_the_limit_pass) {
    compare_int_1(500, 500, "ebes_class: n_ttlnd is too large!");
    EXPECT_HALT(compare_int_1(501, 500, "ebes_class: n_ttlnd is too large!"),
                "compare_int_1: n > m. n = 501, m = 500\nebes_class: n_ttlnd is too large!\nHalting...\n");
    EXPECT_HALT(compare_int_1(2, 1, "too large. Halting..."),
                "compare_int_1: n > m. n = 2, m = 1\ntoo large. Halting...\n");
}

TEST(check_m_gt_n, needs_room_for_one_more) {
    check_m_gt_n(3, 2, "m");
    EXPECT_HALT(check_m_gt_n(3, 3, "cct_class: n_ect_nd is too large!"),
                "check_m_gt_n: m <= n. m = 3, n = 3\ncct_class: n_ect_nd is too large!\nHalting...\n");
}

TEST(check_nodes_1, names_the_first_node_that_no_terminal_has) {
    check_nodes_1(3, {2, 0, 1, 1}, "m");
    check_nodes_1(0, {}, "m");
    EXPECT_HALT(check_nodes_1(4, {3, 0, -1, 9}, "cct_class: check ebeu nodes."),
                "check_nodes_1: mark_1 is F for i = 1\ncct_class: check ebeu nodes.\n");
}

TEST(check_all, halts_with_the_message_alone) {
    check_all_true_1({1, 1}, "m");
    check_all_int_1({4, 4}, 4, "m");
    EXPECT_HALT(check_all_true_1({1, 0}, "not all. Halting..."), "not all. Halting...\n");
    EXPECT_HALT(check_all_int_1({4, 5}, 4, "not all. Halting..."), "not all. Halting...\n");
}
