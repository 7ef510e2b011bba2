#include "base/line_stream.h"

#include <gtest/gtest.h>

#include "halt_throws.h"
#include "temp_folder.h"

namespace {
std::vector<std::string> lines_of(const std::string& text) {
    write_file("a.txt", text);
    line_stream in("a.txt", "test");
    std::vector<std::string> all;
    for (std::string_view line; in.next(line);) all.emplace_back(line);
    return all;
}
using list = std::vector<std::string>;
}  // namespace

TEST(line_stream, gives_lines_without_newlines_empty_ones_too) {
    const temp_folder folder;
    EXPECT_EQ(lines_of("a\n\nb c\n"), (list{"a", "", "b c"}));
    EXPECT_EQ(lines_of("a\nb"), (list{"a", "b"}));
    EXPECT_EQ(lines_of(""), list{});
    EXPECT_EQ(lines_of("\n"), list{""});
}

TEST(line_stream, gives_lines_across_the_ends_of_its_blocks_and_longer_ones_than_a_block) {
    const temp_folder folder;
    list wanted;
    std::string text;
    for (int i = 0; i < 40; ++i) {
        wanted.push_back(std::string(static_cast<std::size_t>(i * i * 137 % 150001), static_cast<char>('a' + i % 26)));
        text += wanted.back() + "\n";
    }
    EXPECT_EQ(lines_of(text), wanted);
}

TEST(line_stream, stops_at_what_is_no_file) {
    const temp_folder folder;
    EXPECT_HALT(line_stream("none.txt", "test"), "test: file none.txt does not exist. Halting...\n");
    EXPECT_HALT(line_stream("/dev/null", "test"), "test: file /dev/null is a device or a pipe. Halting...\n");
    std::filesystem::create_directory("sub");
    const auto read_folder = [] {
        line_stream in("sub", "test");
        std::string_view line;
        in.next(line);
    };
    EXPECT_HALT(read_folder(), "line_stream: file sub cannot be read. Halting...\n");
}
