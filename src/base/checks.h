// checks.h -- size and completeness tests that halt with the caller's message.
#pragma once
#include <string>
#include <vector>

// The size test of a capacity: n items must fit into m. "Halting..." follows the message unless it holds one.
void compare_int_1(int n, int m, const std::string& message);
// Before appending to a table of capacity m that holds n: m must be above n.
void check_m_gt_n(int m, int n, const std::string& message);
// Every node 0 .. n_nd - 1 must occur in the list.
void check_nodes_1(int n_nd, const std::vector<int>& nd, const std::string& message);
// All entries must be on, or equal to value; only the caller's message is printed.
void check_all_true_1(const std::vector<int>& flag, const std::string& message);
void check_all_int_1(const std::vector<int>& v, int value, const std::string& message);
