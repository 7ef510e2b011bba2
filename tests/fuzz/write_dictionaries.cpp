// Writes <target>.dict of every fuzz target into the folder that is its argument.
#include <fstream>
#include <iostream>

#include "targets.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: write_dictionaries FOLDER\n";
        return 2;
    }
    for (const fuzz_target& t : fuzz_targets()) {
        std::ofstream file(std::string(argv[1]) + "/" + t.name + ".dict");
        file << t.dictionary();
        if (!file.flush()) {
            std::cerr << "write_dictionaries: cannot write " << t.name << ".dict\n";
            return 1;
        }
    }
}
