#include "library/composite/empty_library.h"

#include "base/halt.h"
#include "base/text_file.h"

void check_empty_library(const std::string& path, const std::string& class_name) {
    text_file file = open_text_file(path, class_name);
    words w;
    if (next_line(file, w))
        halt({line(class_name, ": this program has no reader for entries of ", path), line("  First word is: ", w[0]),
              "  Halting..."});
}
