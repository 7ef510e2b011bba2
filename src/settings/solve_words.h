// solve_words.h -- every word that solve blocks know.
#pragma once
#include <string_view>
#include <vector>

// Walks the tables that the readers walk. Some words stand in several tables and so more than once in the list.
std::vector<std::string_view> solve_block_words();

// Parts of that list, for those who check a deck without running it.
std::vector<std::string_view> solve_type_words();  // dc, trns ...
std::vector<std::string_view> solve_card_words();  // first words of statements that are neither type nor output
std::vector<std::string_view> time_rule_words();   // words of `method:` of which at most one may be on
std::vector<std::string_view> auto_sweep_words(bool required_only);
std::vector<std::string_view> file_option_words();  // behind the name in `filename`
std::vector<std::string_view> control_words();
std::vector<std::string_view> reserved_output_words();  // solution, parms ...
