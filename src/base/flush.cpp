#include "base/halt.h"

#include <algorithm>
#include <iostream>
#include <vector>

namespace {
std::vector<flushed_at_halt*>& registered() {
    static std::vector<flushed_at_halt*> list;
    return list;
}
}  // namespace

flushed_at_halt::flushed_at_halt() { registered().push_back(this); }
flushed_at_halt::~flushed_at_halt() { std::erase(registered(), this); }

void flush_all() {
    for (flushed_at_halt* f : registered()) f->flush_now();
    std::cout.flush();
}

void say(const std::string& text) { std::cout << text << '\n'; }
