#include "base/line_stream.h"

#include <cstring>

#include "base/halt.h"
#include "base/text_file.h"

namespace {
constexpr std::size_t block_size = std::size_t{1} << 16;
}

line_stream::line_stream(const std::string& path, const std::string& who) : path_(path), block_(block_size) {
    if (is_endless(path)) halt({line(who, ": file ", path, " is a device or a pipe. Halting...")});
    file_.reset(std::fopen(path.c_str(), "rb"));
    if (!file_) halt({line(who, ": file ", path, " does not exist. Halting...")});
    std::setvbuf(file_.get(), nullptr, _IONBF, 0);
}

bool line_stream::fill() {
    // The line at work moves to the front of the block; one that fills the block gets a larger one.
    if (from_ > 0) std::memmove(block_.data(), block_.data() + from_, to_ - from_);
    to_ -= from_;
    from_ = 0;
    if (to_ == block_.size()) block_.resize(2 * block_.size());
    const std::size_t n = std::fread(block_.data() + to_, 1, block_.size() - to_, file_.get());
    if (n == 0 && std::ferror(file_.get()) != 0)
        halt({line("line_stream: file ", path_, " cannot be read. Halting...")});
    to_ += n;
    return n > 0;
}

bool line_stream::next(std::string_view& line) {
    for (std::size_t looked = 0;;) {
        const char* begin = block_.data() + from_;
        if (const void* end = std::memchr(begin + looked, '\n', to_ - from_ - looked)) {
            line = {begin, static_cast<std::size_t>(static_cast<const char*>(end) - begin)};
            from_ += line.size() + 1;
            return true;
        }
        looked = to_ - from_;
        if (fill()) continue;
        line = {block_.data() + from_, to_ - from_};
        from_ = to_;
        return !line.empty();
    }
}
