// halt.h -- the one way to fail, and the console.
#pragma once
#include <initializer_list>
#include <ostream>
#include <sstream>
#include <string>

// Prints the lines on the console, flushes the open row files, and ends the run with status 1.
[[noreturn]] void halt(std::initializer_list<std::string> lines);

// Reads one statement of the deck with f. A stop inside ends the run like any other; a program that looks for all
// faults (the front end) keeps it with the statement instead, and who calls goes on behind it. True: f came to its end.
bool read_or_keep(int statement, void (*f)(void*), void* object);
template <class F>
bool reading(int statement, F f) {
    return read_or_keep(
        statement, [](void* object) { (*static_cast<F*>(object))(); }, &f);
}
// Tells which word of the statement is in hand, for who keeps stops.
void at_word(int word);

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
