// composite_code.h -- functions of composites that compute parameters: from the text between C: and endC to source and
// registration.
#pragma once
#include <ostream>
#include <string>

#include "base/text_file.h"
#include "library/composite/composite_form.h"

// Where the section stands in the file of a composite; positions in lines, 0-based. Blank lines and lines that begin
// with "//" are no code. Halts for a section with code that lacks variables: or source:.
struct composite_code {
    bool has_code = false;
    std::size_t begin = 0, variables = 0, source = 0, end = 0;  // lines of C:, variables:, source:, endC
};
composite_code find_composite_code(const text_file& text, const composite_form& form);

// Halts unless the entry asks for a function (compute_rparms, compute_acp) just where its file has one.
void check_composite_code(const composite_code& code, const composite_library& lib, int e);

// The same file with "C: compiled" in place of its code, as working folders take it.
text_file without_code(const text_file& text, const composite_code& code);

// The function <name>_acpe (of blocks <name>_acpg) of entry e. Words of iparms:, sparms:, rparms: are variables, and
// ni_, nstr_, nr_ and nov_ (of outvar:) their positions. The compiler is told the lines of the file at `path`.
void write_composite_function(std::ostream& out, const text_file& text, const std::string& path,
                              const composite_code& code, const composite_form& form, const composite_library& lib,
                              int e);

// The row of entry e in the table from names to functions, and the table around its rows.
std::string composite_registration_row(const composite_form& form, const composite_library& lib, int e);
void write_composite_registration(std::ostream& out, const composite_form& form, const std::string& rows, int n_rows);
