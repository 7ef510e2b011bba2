#include "library/composite/empty_library.h"

#include "base/halt.h"

void check_empty_library(text_file file, const std::string& class_name) {
    words w;
    if (next_line(file, w))
        halt({line(class_name, ": this program has no reader for entries of ", file.path),
              line("  First word is: ", w[0]), "  Halting..."});
}
