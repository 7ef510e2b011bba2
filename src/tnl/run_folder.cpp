#include "tnl/run_folder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "deck/tmpdim_class.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t largest_copy = 64u << 20;  // bytes; larger data files are linked

[[noreturn]] void fail(const std::string& what, const fs::path& path, const std::string& why) {
    throw file_error(what + " " + path.string() + ": " + why);
}

std::string deck_identity(const deck_view& deck) {
    std::error_code none;
    const fs::path whole = fs::weakly_canonical(deck.path, none);
    return none ? deck.path : whole.string();
}

// First line: "deck " and the deck's path. Then one file of ours a line, relative to the folder.
struct marker {
    std::string deck;
    std::set<std::string> files;
};

bool read_marker(const fs::path& folder, marker& m) {
    std::ifstream in(folder / marker_name);
    std::string line;
    if (!in || !std::getline(in, line) || !line.starts_with("deck ")) return false;
    m.deck = line.substr(5);
    while (std::getline(in, line))
        if (!line.empty()) m.files.insert(line);
    return true;
}

void write_marker(const fs::path& folder, const marker& m) {
    std::string text = "deck " + m.deck + "\n";
    for (const std::string& file : m.files) text += file + "\n";
    write_file(folder / marker_name, text);
}

std::set<std::string> files_in(const fs::path& folder) {
    std::set<std::string> names;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
        if (entry.is_regular_file(error)) names.insert(entry.path().filename().string());
    return names;
}

// A name inside the folder that cannot lead out of it.
bool stays_inside(const fs::path& name) {
    if (name.empty() || name.is_absolute()) return false;
    return std::none_of(name.begin(), name.end(), [](const fs::path& part) { return part == ".."; });
}

// Removes the files of the last run of this deck. What somebody else put into the folder stays.
void clear_old_run(const fs::path& folder, const marker& m) {
    std::error_code ignored;
    for (const std::string& file : m.files)
        if (stays_inside(file)) fs::remove(folder / file, ignored);
    fs::remove(folder / marker_name, ignored);
    fs::remove(folder / ".tnlaux", ignored);  // goes only when empty
}

void take_folder(const fs::path& folder, const deck_view& deck) {
    std::error_code error;
    const fs::file_status status = fs::status(folder, error);
    if (fs::exists(status)) {
        if (!fs::is_directory(status)) fail("cannot use", folder, "it is not a folder");
        marker old;
        if (read_marker(folder, old)) {
            if (old.deck != deck_identity(deck))
                fail("cannot use", folder, "it holds the results of " + old.deck + "; choose another with -o");
            clear_old_run(folder, old);
        } else if (!fs::is_empty(folder, error) || error) {
            fail("cannot use", folder, "it exists and is no run folder; choose another with -o");
        }
    } else if (!fs::create_directories(folder, error) && error) {
        fail("cannot make", folder, error.message());
    }
}

void bring_data_files(const fs::path& folder, const deck_view& deck, const std::vector<std::string>& words, marker& m) {
    const fs::path home = fs::path(deck.path).parent_path();
    for (const std::string& word : words) {
        const fs::path from = home / word, to = folder / word;
        std::error_code error;
        if (!stays_inside(word) || !fs::is_regular_file(from, error) || fs::exists(to, error)) continue;
        if (to.has_parent_path()) fs::create_directories(to.parent_path(), error);
        // A copy, as a deck may write to a file that it reads.
        if (fs::file_size(from, error) <= largest_copy)
            fs::copy_file(from, to, error);
        else
            fs::create_symlink(fs::absolute(from), to, error);
        if (error) fail("cannot bring", from, error.message());
        m.files.insert(word);
    }
}

}  // namespace

std::string read_file(const fs::path& path) {
    std::error_code error;
    if (fs::is_directory(path, error)) fail("cannot read", path, "it is a folder");
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    if (!in) fail("cannot read", path, std::strerror(errno ? errno : EIO));
    std::ostringstream text;
    if (in.peek() != std::ifstream::traits_type::eof()) text << in.rdbuf();
    if (in.bad()) fail("cannot read", path, std::strerror(errno ? errno : EIO));
    return text.str();
}

void write_file(const fs::path& path, const std::string& text) {
    errno = 0;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out) fail("cannot write", path, std::strerror(errno ? errno : EIO));
}

std::set<std::string> make_run_folder(const fs::path& folder, const deck_view& deck,
                                      const installed_libraries& libraries, const deck_needs& needs) {
    take_folder(folder, deck);
    std::set<std::string> foreign = files_in(folder);
    marker m{deck_identity(deck), {".tnlaux/cct.in", "tmpdim.in"}};
    for (const library_form& form : library_forms) m.files.insert(".tnlaux/" + std::string(form.file));
    for (const std::string_view list : list_files) m.files.insert(".tnlaux/" + std::string(list));
    for (const row_file& file : row_files(deck)) m.files.insert(file.path);
    write_marker(folder, m);  // first, so that a folder left half made is known as ours

    std::error_code error;
    const fs::path aux = folder / ".tnlaux";
    if (!fs::create_directory(aux, error) && error) fail("cannot make", aux, error.message());
    write_file(aux / "cct.in", deck.text());
    for (int i = 0; i < n_libraries; ++i) {
        std::string text;
        for (const int e : needs.entries[i]) text += libraries.library[i].entries[static_cast<std::size_t>(e)].text;
        write_file(aux / library_forms[i].file, text);
    }
    for (std::size_t i = 0; i < std::size(list_files); ++i) write_file(aux / list_files[i], libraries.list[i]);

    std::string dimensions;
    for (const tmpdim_word& d : tmpdim_words())
        dimensions += std::string(d.word) + " " + std::to_string(d.generous) + "\n";
    write_file(folder / "tmpdim.in", dimensions);

    bring_data_files(folder, deck, needs.files, m);
    // A row file may lie in a folder below; the simulator does not make folders.
    for (const row_file& file : row_files(deck))
        if (stays_inside(file.path) && fs::path(file.path).has_parent_path())
            fs::create_directories((folder / file.path).parent_path(), error);
    write_marker(folder, m);
    return foreign;
}

void note_results(const fs::path& folder, const deck_view& deck, const std::set<std::string>& foreign) {
    marker m;
    if (!read_marker(folder, m)) m.deck = deck_identity(deck);
    for (const std::string& file : files_in(folder))
        if (file != marker_name && !foreign.contains(file)) m.files.insert(file);
    write_marker(folder, m);
}

}  // namespace cli
