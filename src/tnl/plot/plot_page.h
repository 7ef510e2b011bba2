// plot_page.h -- where the parts of a picture stand.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tnl/common/text_width.h"
#include "tnl/plot/plot.h"

namespace cli {

// px; words in units of the font
constexpr double font = 13, title_font = 16, title_line = 22, legend_line = 19, sample = 30, edge = 12;

struct box {
    double left = 0, top = 0, width = 0, height = 0;
};
// Where a panel and the names above it stand.
struct panel_place {
    box frame;
    axis y;
    std::string label;                // beside the axis
    bool named = false;               // has a legend
    std::vector<std::size_t> shown;   // numbers of the series that are named
    std::vector<std::string> legend;  // their names, shortened
    std::string more;                 // "... and 30 more"
    int legend_lines = 0;
};
struct page {
    double width = 0, height = 0;
    std::vector<std::string> title;
    double title_x = 0;
    axis x;
    std::vector<panel_place> panels;
};

// The height of the whole follows from the panels unless the size has one. Throws usage_error when that is too small.
page layout_of(const plot& p, picture_size size);

// Bytes that are no UTF-8 would make the file unreadable: '?' stands for them.
std::string valid_utf8(std::string_view text);

inline double entry_width(std::string_view name) { return sample + 7 + font * text_width(name) + 22; }

// Calls at(x, line, i) for each legend entry, from 0, i = -1 for the words behind the last; gives the number of lines.
template <class F>
int flow_legend(const panel_place& p, double width, const F& at) {
    double x = 0;
    int line = 0;
    const auto put = [&](double w, int i) {
        if (x > 0 && x + w > width) x = 0, ++line;
        at(x, line, i);
        x += w;
    };
    for (std::size_t i = 0; i < p.legend.size(); ++i) put(entry_width(p.legend[i]), static_cast<int>(i));
    if (!p.more.empty()) put(font * text_width(p.more) + 22, -1);
    return line + 1;
}

}  // namespace cli
