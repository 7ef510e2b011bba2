// plot_convert.h -- from an SVG picture to PNG and PDF, by the program rsvg-convert.
#pragma once
#include <string>
#include <string_view>

namespace cli {

enum class picture_format { svg, png, pdf };

// PNG has two dots for each pixel of the SVG. The same bytes for the same picture: a PDF's date is that of 1970. Throws
// file_error when the program is not installed or fails.
std::string convert_svg(std::string_view svg, picture_format format);

}  // namespace cli
