// solve_words.h -- every word that solve blocks know.
#pragma once
#include <string_view>
#include <vector>

// Walks the tables that the readers walk. Some words stand in several tables and so more than once in the list.
std::vector<std::string_view> solve_block_words();
