#include "halt_throws.h"

#include <iostream>
#include <sstream>

#include "base/halt.h"

void halt(std::initializer_list<std::string> lines) {
    flush_all();
    halted stop;
    for (const std::string& text : lines) stop.text += text + '\n';
    throw stop;
}

bool read_or_keep(int, void (*f)(void*), void* object) {
    f(object);
    return true;
}

void at_word(int) {}

console_run run_and_listen(const std::function<void()>& f) {
    console_run heard;
    std::ostringstream caught;
    std::streambuf* old = std::cout.rdbuf(caught.rdbuf());
    try {
        f();
    } catch (const halted& stop) {
        heard.stopped = true;
        caught << stop.text;
    } catch (...) {
        std::cout.rdbuf(old);
        throw;
    }
    std::cout.rdbuf(old);
    heard.text = caught.str();
    return heard;
}
