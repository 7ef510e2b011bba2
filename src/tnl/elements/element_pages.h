// element_pages.h -- sheets of elements as text, as Markdown and as JSON.
#pragma once
#include <string>
#include <vector>

#include "tnl/elements/element_sheet.h"

namespace cli {

// Names and summaries under their families and groups, a line each.
std::string list_text(const std::vector<element_sheet>& sheets);
std::string list_json(const std::vector<element_sheet>& sheets);

std::string sheet_text(const element_sheet& sheet);
std::string sheet_json(const std::vector<const element_sheet*>& sheets);  // an array

// One page each, and the index that links them; what docs/elements holds. The same libraries give the same bytes.
std::string sheet_markdown(const element_sheet& sheet);
std::string index_markdown(const std::vector<element_sheet>& sheets);
std::string page_name(const element_sheet& sheet);     // "e_r.md"
std::string picture_name(const element_sheet& sheet);  // of its response: "g_lag_1.svg"
std::string markdown_escaped(std::string_view text);   // as it stands in a cell of a table

}  // namespace cli
