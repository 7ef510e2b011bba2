#include "installed_circuit.h"

#include <filesystem>

#include "elaborate/read_circuit.h"

libraries read_libraries_of(const std::string& folder) {
    libraries lib;
    read_libraries(lib, [&](const std::string& path, const std::string& who) {
        const std::string file = folder + path.substr(path.rfind('/'));
        return std::filesystem::exists(file) ? open_text_file(file, who) : text_file_of("");
    });
    return lib;
}

const libraries& installed_libraries() {
    static const libraries lib = read_libraries_of(TARNEL_SHARE);
    return lib;
}

circuit circuit_of(std::string_view deck, const libraries& lib) {
    circuit c;
    c.cf = circuit_file_of(file_chr_of(deck));
    c.lib = lib;
    read_circuit(c);
    c.tmpdim = generous_tmpdim();
    return c;
}
