// installed_share.h -- the libraries that the tests of installed elements walk: those of this build, or of another
// folder.
#pragma once
#include <cstdlib>
#include <string>

inline std::string installed_share() {
    const char* other = std::getenv("TARNEL_SHARE");
    return other != nullptr ? other : TARNEL_SHARE;
}
