// response_pictures.h -- pictures of how blocks answer, for their pages.
#pragma once
#include <string>

#include "tnl/elements/element_sheet.h"
#include "tnl/run/run_deck.h"

namespace cli {

// An SVG file from a run of the deck that the element's comments describe; empty if they describe none. Throws
// deck_error when the deck does not run.
std::string response_picture(const element_sheet& sheet, const installation& where);

}  // namespace cli
