// halt_throws.h -- stops and console text, made visible to tests.
#pragma once
#include <gtest/gtest.h>

#include <functional>
#include <string>

// What the test body of halt throws: everything that the stop printed itself.
struct halted {
    std::string text;
};

// Runs f; gives what it printed on the console, and behind it the text of the stop if it halted.
struct console_run {
    std::string text;
    bool stopped = false;
};
console_run run_and_listen(const std::function<void()>& f);

// The statement must halt, and its whole console text must be this.
#define EXPECT_HALT(statement, expected)                                       \
    do {                                                                       \
        const console_run heard_ = run_and_listen([&] { (void)(statement); }); \
        EXPECT_TRUE(heard_.stopped) << "did not halt: " #statement;            \
        EXPECT_EQ(heard_.text, expected);                                      \
    } while (false)
