// deadline.h -- what must be over in time although nothing in it looks at a clock.
#pragma once
#include <sys/types.h>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace cli {

// While it lives: when the seconds are over, the program prints the text on standard error and ends with status 6. For
// work that leaves nothing behind which a kill would not leave. Seconds of 0 or less: no limit. One at a time.
class deadline {
public:
    deadline(double seconds, std::string text);
    ~deadline();
    deadline(const deadline&) = delete;
    deadline& operator=(const deadline&) = delete;

private:
    std::string text_;
    bool set_;
};

// Work in a process of its own, beside this one: it may take long, or more memory than there is, and nothing is lost.
class side_work {
public:
    explicit side_work(const std::function<std::string()>& work);
    ~side_work();  // ends it
    side_work(const side_work&) = delete;
    side_work& operator=(const side_work&) = delete;

    // Its answer; nothing when it is not there after so many seconds, or the work failed.
    std::optional<std::string> answer(double seconds);

private:
    pid_t child_ = -1;
    int from_ = -1;
};

}  // namespace cli
