// run_case.cpp -- runs one folder of tests/decks/ or examples/ and compares what comes out with what is expected.
//
//   <case>/deck.in   a deck, run with `tnl run`; other files beside it are its data files
//   <case>/by_hand/  instead: a whole working folder, in which the simulator is run as it is
//   <case>/why.md    where the expected numbers come from; an example tells it in its story.md
//   <case>/expect/   console.txt       the whole text of the run
//                    console_has.txt   lines of it that must appear, in this order
//                    status            exit status, 0 without this file
//                    tolerance         relative, and if wanted absolute, difference of numbers that is allowed
//                    any other file    the row file of that name: equal byte for byte, with a tolerance number by
//                    number
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace fs = std::filesystem;

namespace {

int n_faults = 0;
void fault(const std::string& text) {
    std::cout << text << '\n';
    ++n_faults;
}

std::string text_of(const fs::path& path) {
    std::ostringstream text;
    std::ifstream in(path, std::ios::binary);
    if (in.peek() != std::ifstream::traits_type::eof()) text << in.rdbuf();
    return text.str();
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> words_of(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string w; in >> w;) words.push_back(w);
    return words;
}

std::string shell_word(const fs::path& path) {
    std::string out = "'";
    for (const char c : path.string()) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

struct tolerance {
    double relative = 0, absolute = 0;
    bool exact = true;
};

bool is_number(const std::string& word, double& value) {
    char* end = nullptr;
    value = std::strtod(word.c_str(), &end);
    return end != word.c_str() && *end == '\0';
}

bool agree(const std::string& got, const std::string& wanted, const tolerance& t) {
    double a = 0, b = 0;
    if (got == wanted) return true;
    if (!is_number(got, a) || !is_number(wanted, b)) return false;
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return std::abs(a - b) <= t.absolute + t.relative * std::max(std::abs(a), std::abs(b));
}

bool agree_line(const std::string& got, const std::string& wanted, const tolerance& t) {
    if (t.exact) return got == wanted;
    const std::vector<std::string> a = words_of(got), b = words_of(wanted);
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (!agree(a[i], b[i], t)) return false;
    return true;
}

void compare(const std::string& name, const std::string& got_text, const std::string& wanted_text, const tolerance& t) {
    const std::vector<std::string> got = lines_of(got_text), wanted = lines_of(wanted_text);
    constexpr int most = 5;
    int shown = 0;
    for (std::size_t i = 0; i < std::max(got.size(), wanted.size()) && shown < most; ++i) {
        const bool missing = i >= got.size(), extra = i >= wanted.size();
        if (!missing && !extra && agree_line(got[i], wanted[i], t)) continue;
        fault(name + ":" + std::to_string(i + 1) + "\n  got      " + (missing ? "(end of file)" : got[i]) +
              "\n  expected " + (extra ? "(end of file)" : wanted[i]));
        ++shown;
    }
    if (shown == 0 && t.exact && got_text != wanted_text) fault(name + ": line ends differ");
}

void compare_some(const std::string& got_text, const std::string& wanted_text) {
    const std::vector<std::string> got = lines_of(got_text);
    std::size_t at = 0;
    for (const std::string& wanted : lines_of(wanted_text)) {
        if (wanted.empty()) continue;
        const auto found = std::find(got.begin() + static_cast<std::ptrdiff_t>(at), got.end(), wanted);
        if (found == got.end()) {
            fault("console: this line does not appear, or not in this order:\n  " + wanted);
            return;
        }
        at = static_cast<std::size_t>(found - got.begin()) + 1;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cout << "usage: run_case TNL TARNEL CASE SCRATCH\n";
        return 2;
    }
    const fs::path tnl = argv[1], tarnel = argv[2], folder = argv[3], scratch = argv[4], expect = folder / "expect";
    const bool whole = fs::is_directory(folder / "by_hand");
    if (whole == fs::exists(folder / "deck.in")) fault("a case has either deck.in or work/");
    if (!fs::exists(folder / "why.md") && !fs::exists(folder / "story.md"))
        fault("why.md is missing: where do the expected numbers come from?");
    if (n_faults) return 1;

    fs::remove_all(scratch);
    fs::create_directories(scratch.parent_path());
    fs::copy(whole ? folder / "by_hand" : folder, scratch, fs::copy_options::recursive);
    if (!whole) {
        fs::remove_all(scratch / "expect");
        fs::remove(scratch / "why.md");
    }
    const fs::path console = scratch.string() + ".console";
    const std::string command =
        "cd " + shell_word(scratch) + " && " + (whole ? shell_word(tarnel) : shell_word(tnl) + " run deck.in") + " >" +
        shell_word(console) + " 2>" + shell_word(scratch.string() + ".messages") + " </dev/null";
    const int ended = std::system(command.c_str());
    const int status = WIFEXITED(ended) ? WEXITSTATUS(ended) : 128 + WTERMSIG(ended);

    int wanted_status = 0;
    tolerance t;
    if (fs::exists(expect / "status")) std::istringstream(text_of(expect / "status")) >> wanted_status;
    if (fs::exists(expect / "tolerance")) {
        std::istringstream in(text_of(expect / "tolerance"));
        t.exact = false;
        if (!(in >> t.relative)) fault("tolerance holds no number");
        in >> t.absolute;
    }
    const std::string said = text_of(console);
    if (status != wanted_status)
        fault("exit status " + std::to_string(status) + ", expected " + std::to_string(wanted_status) + "\n" + said +
              text_of(scratch.string() + ".messages"));

    int n_compared = 0;
    const fs::path results = whole ? scratch : scratch / "deck.in.run";
    if (fs::is_directory(expect))
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(expect)) {
            if (!entry.is_regular_file()) continue;
            const std::string name = fs::relative(entry.path(), expect).string();
            if (name == "status" || name == "tolerance") continue;
            ++n_compared;
            if (name == "console.txt")
                compare("console", said, text_of(entry.path()), {});
            else if (name == "console_has.txt")
                compare_some(said, text_of(entry.path()));
            else if (!fs::exists(results / name))
                fault(name + ": the run has not written it");
            else
                compare(name, text_of(results / name), text_of(entry.path()), t);
        }
    if (n_compared == 0) fault("expect/ holds nothing to compare");
    return n_faults == 0 ? 0 : 1;
}
