// check_limit.h -- tests of the fixed capacities; storage itself grows on demand.
#pragma once
#include <string>

// Halts when n is above m: with the message alone if it holds the word "Halting", else with the two numbers before it.
void check_limit(int n, int m, const std::string& message);
