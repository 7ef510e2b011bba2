// generate.h -- writing the sources of model functions and their dispatch from library entries.
#pragma once
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "base/text_file.h"
#include "library/basic_form.h"

// The model functions of a library as source text, in the making.
struct glue_text {
    std::ostringstream out;
};

// Copies the source sections of the newest entry of lib, behind its "C:" line, into the glue as one function. The
// position in the file is then behind endC.
void copy_code(text_file& file, const basic_form& form, glue_text& glue, basic_library& lib);

// One part of the function of entry e. flag_write 0: before the prototypes (the first function written also gets the
// includes); 1: the head, before the variables; 2: the names of the entry as variables and constants, before the
// source; 3: the end. Any other value halts.
void write_ebes_c(std::ostream& out, const basic_form& form, const basic_library& lib, int e, int flag_write);

// The dispatch routine: by library number (mode 1), or by the number in the list of all names (mode 2).
void write_ebes_c_1(std::ostream& out, const basic_form& form, const basic_library& lib, int mode);

// What the files of a family are called by: "ebe" of subebe.cpp, getebe.cpp and regebe.cpp, "ebac" of small-signal
// forms.
std::string file_word(const basic_form& form);

// The table from names to functions.
void write_registration(std::ostream& out, const basic_form& form, const basic_library& lib);

// Writes sub<family>.cpp and get<family>.cpp into the folder of the library file. A library that gave no function gets
// one empty one, so that the file always compiles.
void write_glue_files(const std::string& path, const basic_form& form, int mode, const glue_text& glue,
                      const basic_library& lib);

// head, the items with commas between, tail; lines wrapped at 80 columns. Nothing at all if there is no item.
void write_chr_array_2(std::ostream& out, const std::string& head, const std::vector<std::string>& items,
                       const std::string& indent, const std::string& tail);
// "   const int <prefix><word>=<index>;" for each word.
void write_list_3(std::ostream& out, const std::string& prefix, const std::vector<std::string>& items);
void write_list_4(std::ostream& out, const std::string& prefix, const function_table& func,
                  int e);  // functions of entry e
