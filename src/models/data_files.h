// data_files.h -- the files that element types name in their string parameter `file`.
#pragma once
#include "base/row_table.h"
#include "library/basic_library.h"
#include "models/dp_class.h"

// Reads the files of all units of a family, kind of element by kind, in unit order within one, and numbers the units of
// clock_delay_2. i_lib [units]: template; sprm: string parameters of each unit. Halts for a unit without a file, and
// with what is wrong with a file; the texts begin with "dp_class::", "gbe" or "xbe", and the element type.
void read_gbe_data_files(const basic_library& gbes, const std::vector<int>& i_lib, const row_table<char*>& sprm,
                         dp_class& dp);
void read_xbe_data_files(const basic_library& xbes, const std::vector<int>& i_lib, const row_table<char*>& sprm,
                         dp_class& dp);
