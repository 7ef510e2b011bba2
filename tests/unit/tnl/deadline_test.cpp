#include "tnl/run/deadline.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <new>
#include <thread>

using namespace cli;

namespace {

double seconds_of(const std::function<void()>& f) {
    const auto start = std::chrono::steady_clock::now();
    f();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

TEST(deadline, ends_the_program_with_status_6_and_its_text) {
    EXPECT_EXIT(
        {
            const deadline limit(0.05, "too late\n");
            std::this_thread::sleep_for(std::chrono::seconds(20));
        },
        testing::ExitedWithCode(6), "^too late\n$");
}

TEST(deadline, that_is_over_in_time_does_nothing) {
    { const deadline limit(0.05, "too late\n"); }
    { const deadline none(0, "too late\n"); }
    std::this_thread::sleep_for(std::chrono::milliseconds(120));
}

TEST(side_work, gives_its_answer_whole) {
    const std::string text(300000, 'a');
    side_work work([&] { return text; });
    EXPECT_EQ(work.answer(20), text);
    side_work silent([] { return std::string(); });
    EXPECT_EQ(silent.answer(20), "");
}

TEST(side_work, that_takes_too_long_or_fails_has_no_answer_and_leaves_no_process) {
    pid_t child = 0;
    EXPECT_LT(seconds_of([&] {
                  int ends[2];
                  ASSERT_EQ(pipe(ends), 0);
                  side_work slow([&] {
                      const pid_t own = getpid();
                      if (write(ends[1], &own, sizeof own) < 0) return std::string("no pipe");
                      std::this_thread::sleep_for(std::chrono::seconds(60));
                      return std::string("late");
                  });
                  ASSERT_EQ(read(ends[0], &child, sizeof child), static_cast<ssize_t>(sizeof child));
                  EXPECT_EQ(slow.answer(0.1), std::nullopt);
              }),
              30);
    EXPECT_NE(kill(child, 0), 0);
    side_work large([]() -> std::string { throw std::bad_alloc(); });
    EXPECT_EQ(large.answer(20), std::nullopt);
    side_work killed([]() -> std::string {
        raise(SIGKILL);
        return "";
    });
    EXPECT_EQ(killed.answer(20), std::nullopt);
}
