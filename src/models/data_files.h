// data_files.h -- the files that element types name in their string parameter `file`.
#pragma once
#include "base/row_table.h"
#include "library/basic_library.h"
#include "models/dp_class.h"

// Reads the files of all general units, kind of element by kind, in unit order within one. i_lib [units]: template;
// sprm: string parameters of each unit. Halts for a unit without a file, and with what is wrong with a file.
void read_gbe_data_files(const gbes_class& gbes, const std::vector<int>& i_lib, const row_table<char*>& sprm,
                         dp_class& dp);
