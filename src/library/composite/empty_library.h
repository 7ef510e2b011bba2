// empty_library.h -- families of which a working folder can hold only empty libraries.
#pragma once
#include <string>

// The file must exist, and hold nothing but blank and comment lines: the family has no reader.
void check_empty_library(const std::string& path, const std::string& class_name);
