// working_folder.h -- a folder as the simulator works in: installed libraries, sizes beyond need, a deck.
#pragma once
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "composite_room.h"
#include "deck/tmpdim_class.h"

// Changes the text of a library or list before it is written.
using library_change = std::function<void(const std::string& file, std::string& text)>;

inline void fill_working_folder(const std::filesystem::path& folder, const std::string& deck,
                                const library_change& change = {}) {
    namespace fs = std::filesystem;
    const auto write = [&](const std::string& name, const std::string& text) {
        std::ofstream(folder / name, std::ios::binary) << text;
    };
    const auto mixed = [] {
        std::ostringstream text;
        text << std::ifstream(fs::path(TARNEL_SHARE) / "gmes.aux", std::ios::binary).rdbuf();
        return '\n' + text.str();
    };
    fs::create_directories(folder / ".tnlaux");
    for (const fs::directory_entry& entry : fs::directory_iterator(TARNEL_SHARE)) {
        const std::string file = entry.path().filename();
        if (!file.ends_with(".aux") && !file.ends_with(".lst")) continue;
        std::ostringstream text;
        text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
        std::string changed = file == "eels.aux" ? composites_with_room(text.str(), deck + mixed()) : text.str();
        if (change) change(file, changed);
        write(".tnlaux/" + file, changed);
    }
    std::string dimensions;
    for (const tmpdim_word& w : tmpdim_words())
        dimensions += std::string(w.word) + " " + std::to_string(w.generous) + "\n";
    write("tmpdim.in", dimensions);
    write(".tnlaux/cct.in", deck);
}

// Entries of a test's own behind those of a library, and their names in its list.
inline library_change more_entries(const std::string& library, const std::string& list, const std::string& entries) {
    return [=](const std::string& file, std::string& text) {
        if (file == library) text += entries;
        if (file != list) return;
        std::istringstream lines(entries);
        for (std::string one; std::getline(lines, one);)
            if (const std::size_t name = one.find("ce name="); name == 1)
                text += "." + one.substr(9, one.find(' ', 9) - 9) + "\n";
    };
}
