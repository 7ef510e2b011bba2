// library_dumps.h -- libraries and models as text, for whoever wants to see what was read.
#pragma once
#include <ostream>
#include <string>

#include "library/composite/composite_library.h"
#include "library/composite/model_statements.h"

// Each writes one file in the current folder; the file is named by the word that asks for it ("ebes" -> ebes.dat).
void write_basic_dump(const std::string& word, const basic_library& lib);
void write_composite_dump(const std::string& word, const composite_library& lib);
// Names and default values of the real parameters of each entry: elements (hebes, hebes_ac), composites (heels).
void write_hebes_dump(const std::string& word, const basic_library& lib);
void write_heels_dump(const std::string& word, const composite_library& lib, const basic_library& basic);
void write_model_dump(const std::string& word, const model_class& models, const composite_library& lib);

// The same on a stream.
void write_basic_dump(std::ostream& out, const std::string& word, const basic_library& lib);
void write_composite_dump(std::ostream& out, const std::string& word, const composite_library& lib);
void write_hebes_dump(std::ostream& out, const std::string& word, const basic_library& lib);
void write_heels_dump(std::ostream& out, const std::string& word, const composite_library& lib,
                      const basic_library& basic);
void write_model_dump(std::ostream& out, const std::string& word, const model_class& models,
                      const composite_library& lib);
