#include "base/text_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>

#include "base/halt.h"

namespace {

constexpr std::size_t max_lines_of_a_call = 5000;
// Word arrays count characters in int, and a file of newlines alone must not fill the memory.
constexpr std::size_t max_bytes = 1000000000, max_newlines = 20000000;

struct closer {
    void operator()(std::FILE* f) const { std::fclose(f); }
};

// Hands the file to f block by block; false if it cannot be opened or read. A directory opens, but cannot be read.
template <class F>
bool for_each_block(const std::string& path, F f) {
    if (is_endless(path)) halt({line("text_file: file ", path, " is a device or a pipe. Halting...")});
    const std::unique_ptr<std::FILE, closer> in(std::fopen(path.c_str(), "rb"));
    if (!in) return false;
    std::setvbuf(in.get(), nullptr, _IONBF, 0);
    char block[32768];  // a run reads some thirty small files, so nothing is allocated or cleared for one
    while (const std::size_t n = std::fread(block, 1, sizeof block, in.get())) f(std::string_view(block, n));
    return std::ferror(in.get()) == 0;
}

[[noreturn]] void missing_file(const std::string& who, const std::string& path) {
    halt({line(who, ": file ", path, " does not exist. Halting...")});
}

// The line as the rule sees it: without leading blanks where they do not count.
std::string_view seen(const std::string& text, line_rule rule) {
    std::string_view s = text;
    if (rule != line_rule::guard_lines) s.remove_prefix(std::min(s.find_first_not_of(' '), s.size()));
    return s;
}

bool is_skipped(std::string_view s, line_rule rule) {
    if (s.empty() || check_blank_line(s)) return true;
    if (s[0] != '#') return false;
    if (rule != line_rule::guard_lines) return true;
    return !(s.starts_with("#ifndef") || s.starts_with("#define") || s.starts_with("#endif"));
}

}  // namespace

bool is_endless(const std::string& path) {
    struct stat there {};
    return stat(path.c_str(), &there) == 0 && !S_ISREG(there.st_mode) && !S_ISDIR(there.st_mode);
}

text_file text_file_of(std::string_view text) {
    text_file file;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view one = text.substr(0, end);
        if (!one.empty() && one.back() == '\r') one.remove_suffix(1);
        file.lines.emplace_back(one);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return file;
}

bool read_text_file(const std::string& path, text_file& file) {
    std::string all;
    std::size_t newlines = 0;
    const bool done = for_each_block(path, [&](std::string_view block) {
        all.append(block);
        newlines += static_cast<std::size_t>(std::count(block.begin(), block.end(), '\n'));
        if (all.size() > max_bytes || newlines > max_newlines)
            halt({line("text_file: file ", path, " is too large. Halting...")});
    });
    if (!done) return false;
    file = text_file_of(all);
    file.path = path;
    return true;
}

text_file open_text_file(const std::string& path, const std::string& who) {
    text_file file;
    if (!read_text_file(path, file)) missing_file(who, path);
    return file;
}

// The position is left right behind the last line that was joined, not behind the comments after it: what follows may
// be source text, where such lines count.
bool next_line(text_file& file, words& w, line_rule rule) {
    const bool joins = rule != line_rule::plain_lines;
    const std::size_t start = file.at;
    bool begun = false;
    w.clear();
    for (std::size_t i = start; i < file.lines.size(); ++i) {
        const std::string_view s = seen(file.lines[i], rule);
        const bool skipped = is_skipped(s, rule);
        const bool continues = !skipped && joins && s[0] == '+';
        if (begun && !skipped && !continues) break;
        if (i - start >= max_lines_of_a_call && (!begun || continues))
            halt({line(joins ? "next_line" : "next_line_1", ": eof not reached in MAXLINES? Halting...")});
        if (skipped) continue;
        if (continues && !begun) halt({"next_line: a new line cannot start with +. Halting..."});
        add_words(continues ? s.substr(1) : s, w);
        begun = true;
        file.at = i + 1;
        if (!joins) break;
    }
    if (!begun) file.at = file.lines.size();
    return begun;
}

int file_count_lines(const std::string& path) {
    std::int64_t n = 0;
    char last = '\n';
    const bool done = for_each_block(path, [&](std::string_view block) {
        n += std::count(block.begin(), block.end(), '\n');
        last = block.back();
    });
    if (!done) missing_file("file_count_lines", path);
    return static_cast<int>(std::min<std::int64_t>(n + (last != '\n'), std::numeric_limits<int>::max()));
}
