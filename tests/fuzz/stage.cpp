// What every target stands on: a stop that throws, silence, and a folder for files.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <streambuf>

#include "base/halt.h"
#include "base/signals.h"
#include "targets.h"
#include "tnl/common/halt.h"

namespace {
std::string last_text;

// Points between iterations and steps that a text may pass. A step that TR-BDF2 rejects at its smallest size is tried
// again without end, so that counting steps alone would not bound a run.
constexpr int most_points = 20000;
int n_points = 0;

class nothing : public std::streambuf {
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

// The folder lasts as long as the process.
class scratch_folder {
public:
    scratch_folder() : outside_(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        std::string name = (std::filesystem::temp_directory_path() / "tarnel_fuzz_XXXXXX").string();
        if (outside_ < 0 || !mkdtemp(name.data())) std::abort();
        path_ = name;
        inside_ = open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (inside_ < 0) std::abort();
    }
    ~scratch_folder() {
        close(inside_);
        close(outside_);
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;
    void enter() const { go(inside_); }
    void leave() const { go(outside_); }
    void empty() const {
        for (const auto& entry : std::filesystem::directory_iterator(path_)) std::filesystem::remove_all(entry.path());
    }

private:
    static void go(int folder) {
        if (fchdir(folder) != 0) std::abort();
    }
    std::filesystem::path path_;
    int outside_, inside_ = -1;
};

const scratch_folder& scratch() {
    static const scratch_folder folder;
    return folder;
}
}  // namespace

void note_signals() {}
void heed_signals() {
    if (++n_points > most_points) halt({"fuzz: a long run. Halting..."});
}

bool runs_through(const std::function<void()>& f) {
    static nothing silence;
    scratch().enter();
    std::streambuf* console = std::cout.rdbuf(&silence);
    bool done = true;
    n_points = 0;
    try {
        f();
    } catch (const cli::stop& stop) {
        last_text = stop.what();
        if (last_text.empty()) std::abort();
        done = false;
    }
    std::cout.rdbuf(console);
    scratch().leave();
    return done;
}

const std::string& text_of_last_stop() { return last_text; }

void empty_scratch_folder() { scratch().empty(); }

std::string file_of(std::string_view text) {
    static const int file = memfd_create("text", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, 0) != 0) std::abort();
    for (std::size_t at = 0; at < text.size();) {
        const ssize_t n = pwrite(file, text.data() + at, text.size() - at, static_cast<off_t>(at));
        if (n <= 0) std::abort();
        at += static_cast<std::size_t>(n);
    }
    return "/proc/self/fd/" + std::to_string(file);
}
