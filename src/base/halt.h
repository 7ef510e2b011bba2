// halt.h -- the one way to fail, and the console.
#pragma once
#include <initializer_list>
#include <ostream>
#include <sstream>
#include <string>

// Prints the lines on the console, flushes the open row files, and ends the run with status 1.
[[noreturn]] void halt(std::initializer_list<std::string> lines);

// Joins words and numbers into one line; numbers with ten significant digits.
template <class... T>
std::string line(const T&... items) {
    std::ostringstream out;
    out.precision(10);
    (out << ... << items);
    return out.str();
}

// Prints one line on the console; numbers with ten significant digits.
void say(const std::string& text);

// An output whose data must be on the disk when the run stops early. Registers itself while it lives.
class flushed_at_halt {
public:
    flushed_at_halt();
    virtual ~flushed_at_halt();
    flushed_at_halt(const flushed_at_halt&) = delete;
    flushed_at_halt& operator=(const flushed_at_halt&) = delete;
    virtual void flush_now() = 0;
};

// Flushes every registered output and the console. Called by halt; safe to call at any time.
void flush_all();
