#include "tnl/run/run_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

#include "deck/tmpdim_class.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t largest_copy = 64u << 20;  // bytes; larger data files are linked
[[noreturn]] void fail(const std::string& what, const fs::path& path, const std::string& why) {
    throw file_error(what + " " + path.string() + ": " + why);
}

bool has_record(const fs::path& folder, run_record& record) {
    std::error_code error;
    if (!fs::is_regular_file(folder / record_name, error)) return false;
    try {
        record = read_record(folder / record_name);
        return true;
    } catch (const file_error&) {
        return false;  // some other program's
    }
}

// No file in the folder but .partial, and in that, at most a record that was being written: a run was killed in its
// first moments.
bool is_barely_begun(const fs::path& folder) {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
        if (entry.path().filename() != partial_name || !entry.is_directory(error)) return false;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder / partial_name, error))
        if (entry.path().filename() != new_record_name()) return false;
    return true;
}

std::set<std::string> files_of(const run_record& record) {
    std::set<std::string> files(record.other_files.begin(), record.other_files.end());
    for (const record_file& file : record.files) files.insert(file.path);
    return files;
}

void make_parents(const fs::path& path) {
    std::error_code error;
    fs::create_directories(path.parent_path(), error);
    if (error) fail("cannot make", path.parent_path(), error.message());
}

std::vector<std::string> bring_data_files(const run_folder& folder, const deck_view& deck,
                                          const std::vector<std::string>& words) {
    std::vector<std::string> brought;
    const fs::path home = deck.path == "-" ? fs::path() : fs::path(deck.path).parent_path();
    const std::set<std::string> old = files_of(folder.old);
    std::set<fs::path> written;
    for (const written_file& file : written_files(deck)) written.insert(fs::path(file.path).lexically_normal());
    for (const std::string& word : words) {
        if (!stays_inside(word)) continue;
        std::error_code error;
        // The user may also have put it into the run's folder.
        const bool placed = !old.contains(word) && fs::is_regular_file(folder.path / word, error);
        const fs::path from = placed ? folder.path / word : home / word, to = folder.partial / word;
        if (!fs::is_regular_file(from, error) || fs::exists(to, error)) continue;
        make_parents(to);
        // A copy of what the deck also writes, that a run never writes through the link.
        if (fs::file_size(from, error) <= largest_copy || written.contains(fs::path(word).lexically_normal()))
            fs::copy_file(from, to, error);
        else
            fs::create_symlink(fs::absolute(from), to, error);
        if (error) fail("cannot bring", from, error.message());
        if (!placed) brought.push_back(word);
    }
    return brought;
}

// All files below the folder, with paths relative to it.
std::vector<std::string> files_below(const fs::path& folder) {
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_symlink() || !entry.is_directory())
            files.push_back(entry.path().lexically_relative(folder).string());
    std::sort(files.begin(), files.end());
    return files;
}

void give_place(const fs::path& from, const fs::path& to) {
    std::error_code error;
    make_parents(to);
    fs::remove(to, error);
    // The name in .partial stays while others follow, where the file system can give a file two names.
    if (::link(from.c_str(), to.c_str()) == 0) return;
    fs::rename(from, to, error);
    if (error) fail("cannot write", to, error.message() + "; the rows are in " + from.parent_path().string());
}

// All but the record goes: where no results stand, it is what tells whose folder this is.
void clear_partial(const fs::path& partial) {
    std::error_code error;
    if (!fs::exists(partial, error)) return;
    for (const fs::directory_entry& entry : fs::directory_iterator(partial, error)) {
        if (entry.path().filename() == record_name) continue;
        fs::remove_all(entry.path(), error);
        if (error) fail("cannot remove", entry.path(), error.message());
    }
}

// Appears as a whole: written under another name in one folder, then moved to its place.
void put_record(const run_record& record, const fs::path& written_in, const fs::path& place) {
    const fs::path beside = written_in / new_record_name();
    std::error_code error;
    try {
        write_file(beside, to_json(record));
    } catch (const file_error&) {
        fs::remove(beside, error);
        throw;
    }
    fs::rename(beside, place / record_name, error);
    if (error) fail("cannot write", place / record_name, error.message());
}

}  // namespace

void write_file(const fs::path& path, const std::string& text) {
    errno = 0;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out) fail("cannot write", path, std::strerror(errno ? errno : EIO));
}

// ---- taking a folder

folder_claim::folder_claim(const fs::path& folder) : fd_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY)) {
    if (fd_ < 0) fail("cannot use", folder, std::strerror(errno));
    // A simulator whose front end was killed ends by itself within moments.
    for (int tries = 0; ::flock(fd_, LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (errno != EWOULDBLOCK && errno != EINTR) break;  // a file system without locks
        if (tries == 50) {
            ::close(fd_);
            fail("cannot use", folder, "another run goes on in it");
        }
        ::usleep(20000);
    }
}

folder_claim::~folder_claim() {
    if (fd_ >= 0) ::close(fd_);
}

folder_claim& folder_claim::operator=(folder_claim&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
}

std::string deck_identity(const std::string& path) {
    if (path == "-") return path;
    std::error_code none;
    const fs::path whole = fs::weakly_canonical(path, none);
    return none ? path : whole.string();
}

bool stays_aside(const run_record& record) {
    const int s = record.signal;
    return (s != 0 && s != SIGINT && s != SIGTERM && s != SIGHUP) || record.status == file_fault;
}

run_folder take_run_folder(const fs::path& path, const std::string& deck, bool force) {
    run_folder folder{path, path / partial_name, {}, {}};
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        fs::create_directories(path, error);
        if (error) fail("cannot make", path, error.message());
    } else if (!fs::is_directory(status)) {
        fail("cannot use", path, "it is not a folder");
    }
    folder.claim = folder_claim(path);
    run_record begun;
    const bool done = has_record(path, folder.old), killed = has_record(folder.partial, begun);
    if (!done && !killed && !is_barely_begun(path))
        fail("cannot use", path, "it holds other files, and none of a run; choose another folder with -o");
    const std::string& owner = done ? folder.old.deck : begun.deck;
    if ((done || killed) && owner != deck && !force)
        fail("cannot use", path,
             "it holds the results of " + owner + "; choose another with -o, or replace them with --force");
    if (!done && killed && begun.state != "running" && !stays_aside(begun)) {
        folder.old = begun;
        publish(folder, begun);
        folder.old = begun;
    }
    clear_partial(folder.partial);
    return folder;
}

void check_output_places(const run_folder& folder, const deck_view& deck, bool force) {
    const std::set<std::string> old = files_of(folder.old);
    for (const written_file& file : written_files(deck)) {
        std::error_code error;
        const fs::path path(file.path), target = folder.path / path;  // a whole path as it is
        const fs::file_status status = fs::status(target, error);
        if (!fs::exists(status)) continue;
        if (fs::is_directory(status)) fail("cannot write", target, "it is a folder");
        if (!fs::is_regular_file(status)) fail("cannot write", target, "it is a device");
        if (!old.contains(file.path) && !(force && path.is_absolute()))
            fail("cannot write", target,
                 "it exists and is not from a run of this deck; move it away" +
                     std::string(path.is_absolute() ? ", or replace it with --force" : ""));
    }
}

// ---- the run's own place

void write_partial_record(const run_folder& folder, const run_record& record) {
    put_record(record, folder.partial, folder.partial);
}

void fill_partial(const run_folder& folder, const deck_view& deck, const installed_libraries& libraries,
                  const deck_needs& needs, run_record& record) {
    std::string text[n_libraries], all;
    for (int i = 0; i < n_libraries; ++i) {
        for (const int e : needs.entries[i]) text[i] += libraries.library[i].entries[static_cast<std::size_t>(e)].text;
        all += text[i];
    }
    record.library_hash = hash_of(all);

    std::error_code error;
    const fs::path aux = folder.partial / aux_name;
    fs::create_directory(folder.partial, error);
    if (error) fail("cannot make", folder.partial, error.message());
    write_partial_record(folder, record);  // first, so that a run killed now is known as this deck's
    fs::create_directory(aux, error);
    if (error) fail("cannot make", aux, error.message());
    write_file(aux / "cct.in", deck.text());
    for (int i = 0; i < n_libraries; ++i) write_file(aux / library_forms[i].file, text[i]);
    for (std::size_t i = 0; i < std::size(listed_libraries); ++i)
        write_file(aux / library_forms[listed_libraries[i]].list, libraries.list[i]);

    std::string dimensions;
    for (const tmpdim_word& d : tmpdim_words())
        if (d.needed) dimensions += std::string(d.word) + " " + std::to_string(d.generous) + "\n";
    if (const std::size_t n = deck.source.origin.size(); n > static_cast<std::size_t>(usual_deck_lines))
        dimensions += std::string(deck_lines_word) + " " + std::to_string(n) + "\n";
    write_file(folder.partial / dimensions_name, dimensions);

    record.other_files = bring_data_files(folder, deck, needs.files);
    // A row file may lie in a folder below; the simulator does not make folders.
    for (const record_file& file : record.files)
        if (stays_inside(file.path) && fs::path(file.path).has_parent_path()) make_parents(folder.partial / file.path);
}

void drop_partial(const run_folder& folder) {
    std::error_code error;
    fs::remove_all(folder.partial, error);
    fs::remove(folder.path, error);  // goes only when empty
}

void publish(const run_folder& folder, run_record& record) {
    std::error_code error;
    const std::set<std::string> old = files_of(folder.old), brought = files_of(record);
    std::vector<std::string> files;
    for (const std::string& file : files_below(folder.partial)) {
        // What somebody has put into the folder stays, as a data file may that was read from there.
        const bool foreign = !old.contains(file) && !brought.contains(file) && fs::exists(folder.path / file, error);
        if (file != record_name && !foreign) files.push_back(file);
    }
    std::set<std::string> others(files.begin(), files.end()), now = others;
    for (const record_file& file : record.files) {
        others.erase(file.path);
        now.insert(file.path);
    }
    // If this is cut short, the next run must know all that is ours.
    record.other_files.assign(others.begin(), others.end());
    run_record both = record;
    both.other_files.insert(both.other_files.end(), old.begin(), old.end());
    write_partial_record(folder, both);

    fs::remove(folder.path / record_name, error);
    if (error) fail("cannot remove", folder.path / record_name, error.message());
    for (const std::string& file : old) {
        if (!leads_inside(file, folder.path) || now.contains(file)) continue;
        const fs::path path = folder.path / file;
        fs::remove(path, error);
        if (path.parent_path() != folder.path) fs::remove(path.parent_path(), error);  // goes only when empty
    }
    for (const std::string& file : files) give_place(folder.partial / file, folder.path / file);
    put_record(record, folder.partial, folder.path);
    fs::remove_all(folder.partial, error);
}

}  // namespace cli
