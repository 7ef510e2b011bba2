#include "tnl/cli/example_decks.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tnl/common/exit_status.h"
#include "tnl/common/output_file.h"
#include "tnl/deck/deck_view.h"
#include "tnl/run/run_folder.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view starting_text = R"(title: a capacitor is charged through a resistor
# A line that begins with # is a comment. Numbers may end in G M k m u n p f; everything is in V, A, ohm, F, H, s.
begin_circuit
# The node that is 0 V
refnode 0
# eelement name=ANY type=ELEMENT terminal=NODE ... parameter=VALUE ...   (tnl list, tnl describe ELEMENT)
eelement name=V1 type=vsrcdc p=in n=0 vdc=10
eelement name=R1 type=r p=in n=out r=1k
eelement name=C1 type=c p=out n=0 c=1u v0=0
# What can be written: nodev_of_NODE is a node's voltage; i_of_R1, v_of_C1 what elements offer
outvar: vout=nodev_of_out i=i_of_R1
end_circuit

# Start-up: capacitors stand at v0, inductors carry i0
begin_solve
solve_type startup
end_solve

# The run in time goes on from there, here for five time constants R1 C1 = 1 ms; event_restart keeps its accuracy when
# switches come
begin_solve
solve_type trns
initial_sol previous
method: trapezoidal=yes event_restart=yes t_end=5m delt_const=10u
begin_output
filename out.dat
variables: vout i
end_output
end_solve
end_cf
)";

// What stands behind the head mark of the first line that has one: "# Boost converter".
std::string title_of_story(std::string_view story) {
    while (!story.empty()) {
        const std::size_t end = std::min(story.find('\n'), story.size());
        std::string_view line = story.substr(0, end);
        story.remove_prefix(std::min(end + 1, story.size()));
        line.remove_prefix(std::min(line.find_first_not_of("# \t"), line.size()));
        while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.remove_suffix(1);
        if (!line.empty()) return std::string(line);
    }
    return {};
}

example_deck read_example(const std::string& name, const fs::path& deck, const fs::path& folder) {
    example_deck e;
    e.name = name;
    e.deck = deck;
    std::error_code error;
    if (!folder.empty()) {
        for (const fs::directory_entry& file : fs::directory_iterator(folder, error))
            if (file.is_regular_file(error) && file.path() != deck && file.path().filename() != "story.md")
                e.data.push_back(file.path());
        std::sort(e.data.begin(), e.data.end());
        if (fs::exists(folder / "story.md", error)) e.story = read_file(folder / "story.md");
    }
    e.title = title_of_story(e.story);
    if (e.title.empty()) e.title = title_of(view_deck(deck.string(), read_file(deck)));
    return e;
}

// The file must be new; what was written of it is taken away when the disk is full.
void write_new_file(const fs::path& path, const std::string& text) {
    std::FILE* file = std::fopen(path.c_str(), "wx");
    if (!file) {
        const bool exists = errno == EEXIST;
        throw file_error("cannot write " + path.string() + ": " +
                         (exists ? "it exists already, and a new deck replaces nothing" : std::strerror(errno)));
    }
    errno = 0;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    const int fault = errno;
    if (std::fclose(file) == 0 && written) return;
    const std::string why = std::strerror(written ? errno : fault);
    std::error_code error;
    fs::remove(path, error);
    throw file_error("cannot write " + path.string() + ": " + why);
}

}  // namespace

std::string_view starting_deck() { return starting_text; }

std::vector<example_deck> read_examples(const fs::path& share) {
    std::vector<example_deck> all;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(share / "examples", error)) {
        const fs::path& path = entry.path();
        std::error_code none;
        if (entry.is_directory(none) && fs::is_regular_file(path / "deck.in", none))
            all.push_back(read_example(path.filename().string(), path / "deck.in", path));
        else if (entry.is_regular_file(none) && path.extension() == ".in")
            all.push_back(read_example(path.stem().string(), path, {}));
    }
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return all;
}

std::string write_new_deck(const std::string& name, const example_deck* example) {
    const std::string text = example ? read_file(example->deck) : std::string(starting_text);
    if (name == "-") {
        write_output("-", text);
        return name;
    }
    const bool is_file_name = name.ends_with(".in");
    const fs::path path(name);
    const fs::path file_name = path.filename();
    if (file_name.empty() || file_name == "." || file_name == ".." || file_name == ".in" || name[0] == '-')
        throw usage_error("new: no name for a deck: '" + name + "'");
    if (!example || example->data.empty()) {
        const std::string deck = is_file_name ? name : name + ".in";
        write_new_file(deck, text);
        return deck;
    }
    if (is_file_name)
        throw usage_error("new: example " + example->name +
                          " has data files and becomes a folder; name it without .in");
    std::vector<std::pair<fs::path, std::string>> files{{"deck.in", text}};
    for (const fs::path& data : example->data) files.emplace_back(data.filename(), read_file(data));
    std::error_code error;
    if (!fs::create_directory(path, error))
        throw file_error("cannot make folder " + name + ": " +
                         (error ? error.message() : "it exists already, and a new deck replaces nothing"));
    for (const auto& [file, bytes] : files) write_new_file(path / file, bytes);
    return (path / "deck.in").string();
}

}  // namespace cli
