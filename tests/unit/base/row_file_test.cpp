#include "base/row_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>

#include "halt_throws.h"
#include "temp_folder.h"

namespace {
std::string formatted(const char* format, auto x) {
    char text[64];
    std::snprintf(text, sizeof text, format, x);
    return text;
}

std::vector<double> awkward_numbers() {
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> list = {0.0,
                                -0.0,
                                1.0,
                                -1.0,
                                1e-300,
                                -1e-300,
                                1e100,
                                -1e100,
                                1e308,
                                inf,
                                -inf,
                                nan,
                                -nan,
                                5e-324,
                                9.9999995,
                                9.9999994,
                                0.5,
                                1e99,
                                1e-99,
                                2.5e-7,
                                123456.75,
                                6.6666666666666,
                                1.0000005,
                                1.0000015,
                                std::numeric_limits<double>::max()};
    std::mt19937_64 rng(1);  // every bit pattern is a number of some kind
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = rng();
        double x;
        std::memcpy(&x, &bits, sizeof x);
        if (!std::isnan(x)) list.push_back(x);
    }
    return list;
}
}  // namespace

TEST(row_file, writes_numbers_with_the_bytes_of_printf) {
    const temp_folder folder;
    std::string expected;
    {
        row_file file;
        file.open("a.dat", false);
        for (double x : awkward_numbers()) {
            file.put(x);
            file.put(x, '\n');
            file.put_plain(x);
            file.end_row();
            expected += formatted("%13.6e ", x) + formatted("%13.6e", x) + "\n" + formatted("%e", x) + "\n";
        }
        file.close();
    }
    EXPECT_EQ(read_file("a.dat"), expected);
}

TEST(row_file, writes_integers_with_the_bytes_of_printf) {
    const temp_folder folder;
    std::string expected;
    row_file file;
    file.open("a.dat", false);
    for (int i : {0, 1, -1, 12, 999, -99, 1000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        file.put_field(i);
        file.put_int(i);
        file.end_row();
        expected += formatted("%3d ", i) + formatted("%d\n", i);
    }
    file.close();
    EXPECT_EQ(read_file("a.dat"), expected);
}

TEST(row_file, keeps_every_byte_of_texts_longer_than_its_buffer) {
    const temp_folder folder;
    std::string text;
    for (int i = 0; i < 300000; ++i) text += static_cast<char>('a' + i % 26);
    row_file file;
    file.open("a.dat", false);
    file.put_text("head ");
    file.put_text(text);
    file.put_text(text);
    file.close();
    EXPECT_EQ(read_file("a.dat"), "head " + text + text);
}

TEST(row_file, creates_or_continues) {
    const temp_folder folder;
    write_file("a.dat", "old\n");
    {
        row_file file;
        file.open("a.dat", true);
        file.put_text("new\n");
        file.close();
    }
    EXPECT_EQ(read_file("a.dat"), "old\nnew\n");
    row_file file;
    file.open("a.dat", false);
    file.close();
    EXPECT_EQ(read_file("a.dat"), "");
}

TEST(row_file, has_its_rows_on_the_disk_when_the_run_stops_early) {
    const temp_folder folder;
    row_file file;
    file.open("a.dat", false);
    file.put(1.0);
    file.end_row();
    EXPECT_EQ(read_file("a.dat"), "");
    EXPECT_TRUE(run_and_listen([] { halt({"stop"}); }).stopped);
    EXPECT_EQ(read_file("a.dat"), " 1.000000e+00 \n");
}

TEST(row_file, that_cannot_be_opened_halts_with_its_name) {
    const temp_folder folder;
    std::filesystem::create_directory("folder");
    for (const char* path : {"folder", "missing/a.dat"}) {
        row_file file;
        const char* const cause = std::filesystem::exists(path) ? "Is a directory" : "No such file or directory";
        const std::string text =
            line("row_file: output file ", path, " could not be opened.\n  ", cause, "\n  Halting...\n");
        EXPECT_HALT(file.open(path, false), text);
        EXPECT_HALT(file.open(path, true), text);
        EXPECT_FALSE(file.is_open());
    }
}

// /dev/full takes no byte.
TEST(row_file, tells_a_full_disk_when_it_shows) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP();
    const char* const text =
        "row_file: output file /dev/full could not be written.\n  No space left on device\n  Halting...\n";
    row_file few;
    few.open("/dev/full", false);
    few.put(1.0);
    EXPECT_HALT(few.close(), text);
    row_file many;
    many.open("/dev/full", false);
    int n = 0;
    const auto rows = [&] {
        for (; n < 100000; ++n) {
            many.put(1.0);
            many.end_row();
        }
    };
    EXPECT_HALT(rows(), text);
    EXPECT_LT(n, 10000) << "one buffer is 64 kB";
    many.flush_now();  // as the stop does: no second one
    row_file flushed;
    flushed.open("/dev/full", false);
    flushed.put(1.0);
    flushed.flush_now();
    flushed.put(1.0);
    EXPECT_HALT(flushed.end_row(), text);
    EXPECT_HALT(flushed.close(), text);
}

TEST(row_file, leaves_whole_rows_on_a_disk_that_is_full) {
    const temp_folder folder;
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small{100007, limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    int n = 0;
    const console_run heard = run_and_listen([&] {
        row_file file;
        file.open("a.dat", false);
        for (; n < 100000; ++n) {
            file.put(1.0);
            file.end_row();
        }
    });
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_TRUE(heard.stopped);
    EXPECT_EQ(heard.text, "row_file: output file a.dat could not be written.\n  File too large\n  Halting...\n");
    const std::string text = read_file("a.dat"), row = " 1.000000e+00 \n";
    EXPECT_EQ(text.size(), 100007 / row.size() * row.size());
    EXPECT_TRUE(text.ends_with("\n" + row));
}

TEST(row_file, leaves_whole_rows_where_the_disk_is_full_between_two_writes_within_a_row) {
    const temp_folder folder;
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const std::string row = " 1.000000e+00  1.000000e+00  1.000000e+00 \n";
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    // A write goes out when the next number has no room any more, seldom at the end of a row. A full disk at that byte
    // takes nothing of the write behind it.
    for (const rlim_t most : {rlim_t{65534}, rlim_t{65520}, rlim_t{131068}, rlim_t{65536}}) {
        const rlimit small{most, limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
        const console_run heard = run_and_listen([&] {
            row_file file;
            file.open("a.dat", false);
            for (int n = 0; n < 100000; ++n) {
                for (int k = 0; k < 3; ++k) file.put(1.0);
                file.end_row();
            }
        });
        setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_TRUE(heard.stopped);
        const std::string text = read_file("a.dat");
        EXPECT_TRUE(text.ends_with("\n" + row)) << most << ": ..." << text.substr(text.size() - 40);
        EXPECT_EQ(text.size() % row.size(), 0U) << most;
    }
    std::signal(SIGXFSZ, handler);
}

TEST(row_file, that_was_never_opened_closes_without_a_word) {
    row_file file;
    file.flush_now();
    file.close();
    EXPECT_FALSE(file.is_open());
}
