// Every text of the corpus goes through its target once. Faults that the fuzzer found stay in the corpus, so that the
// sanitizer build sees them again.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "targets.h"

namespace {
std::vector<std::filesystem::path> seeds(const fuzz_target& t) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(FUZZ_CORPUS) / t.name))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::string read_bytes(const std::filesystem::path& path) {
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

bool is_good(const std::filesystem::path& path) { return path.filename().string().starts_with("good_"); }
}  // namespace

void PrintTo(const fuzz_target& target, std::ostream* out) { *out << target.name; }

class fuzz_corpus : public testing::TestWithParam<fuzz_target> {};
INSTANTIATE_TEST_SUITE_P(targets, fuzz_corpus, testing::ValuesIn(fuzz_targets().begin(), fuzz_targets().end()),
                         [](const auto& target) { return std::string(target.param.name); });

// A seed named good_ is read to its end; every other one stops with a message.
TEST_P(fuzz_corpus, texts_named_good_are_read_and_the_others_are_refused) {
    int n_good = 0;
    for (const std::filesystem::path& path : seeds(GetParam())) {
        EXPECT_EQ(GetParam().run(read_bytes(path)), is_good(path)) << path << '\n' << text_of_last_stop();
        n_good += is_good(path);
    }
    EXPECT_GT(n_good, 0);
}

// Texts that begin alike are cut once where they are the same; of many cuts a share, spread over all texts.
TEST_P(fuzz_corpus, texts_cut_short_at_line_ends_end_without_a_fault) {
    constexpr std::size_t most = 1200;
    std::set<std::string> cuts;
    for (const std::filesystem::path& path : seeds(GetParam())) {
        const std::string text = read_bytes(path);
        if (!is_good(path) || text.size() > 5000) continue;
        for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', end + 1))
            cuts.insert(text.substr(0, end + 1));
    }
    const std::size_t stride = 1 + cuts.size() / most;
    std::size_t n = 0;
    for (const std::string& cut : cuts)
        if (n++ % stride == 0) GetParam().run(cut);
}

TEST_P(fuzz_corpus, an_empty_text_and_bytes_of_all_values_end_without_a_fault) {
    std::string bytes;
    for (int i = 0; i < 1024; ++i) bytes += static_cast<char>(i);
    GetParam().run("");
    GetParam().run(bytes);
}
