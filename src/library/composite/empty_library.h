// empty_library.h -- families of which a working folder can hold only empty libraries.
#pragma once
#include <string>

#include "base/text_file.h"

// The file must hold nothing but blank and comment lines: the family has no reader.
void check_empty_library(text_file file, const std::string& class_name);
