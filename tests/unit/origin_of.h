// origin_of.h -- where a line of the text that the simulator gets stands in the user's files.
#pragma once
#include <string>

#include "tnl/deck/deck_source.h"

// "file:line" of the simulator's line, counted from 1.
inline std::string origin_of(const cli::deck_source& source, int i_line) {
    const cli::deck_source::place& p = source.origin[static_cast<std::size_t>(i_line - 1)];
    return source.files[static_cast<std::size_t>(p.file)].path + ":" + std::to_string(p.line + 1);
}
