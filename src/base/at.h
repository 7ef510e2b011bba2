// at.h -- the place in an array that a number of the tables means.
#pragma once
#include <cstddef>

inline std::size_t at(int i) { return static_cast<std::size_t>(i); }
