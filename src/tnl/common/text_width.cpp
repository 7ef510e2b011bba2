#include "tnl/common/text_width.h"

#include <algorithm>
#include <functional>

namespace cli {

namespace {

// Advance widths of the characters ' ' to '~' in thousandths of the font size.
constexpr short widths[] = {318,  401, 460, 838, 636, 950, 780, 275, 390, 390, 500, 838, 318, 361, 318, 337,
                            636,  636, 636, 636, 636, 636, 636, 636, 636, 636, 337, 337, 838, 838, 838, 531,
                            1000, 684, 686, 698, 770, 632, 575, 775, 752, 295, 295, 656, 557, 863, 748, 787,
                            603,  787, 695, 635, 611, 732, 684, 989, 685, 611, 685, 390, 337, 390, 838, 500,
                            500,  613, 635, 550, 635, 615, 352, 635, 634, 278, 278, 579, 278, 974, 634, 612,
                            635,  635, 411, 521, 392, 634, 592, 818, 592, 592, 525, 636, 337, 636, 838};

bool begins_character(char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }

// Longest prefix plus "..." plus as much of the end, in whole characters, that fits.
std::string cut_middle(std::string_view text, const std::function<bool(std::string_view)>& fits) {
    if (fits(text)) return std::string(text);
    std::vector<std::size_t> start;  // of each character
    for (std::size_t i = 0; i < text.size(); ++i)
        if (begins_character(text[i])) start.push_back(i);
    start.push_back(text.size());
    const std::size_t n = start.size() - 1;
    std::string best = "...";
    std::size_t lo = 0, hi = n;  // characters that stay
    while (lo < hi) {
        const std::size_t kept = (lo + hi + 1) / 2, front = (kept + 1) / 2, back = kept - front;
        std::string cut(text.substr(0, start[front]));
        cut += "...";
        cut += text.substr(start[n - back]);
        if (fits(cut)) {
            best = std::move(cut);
            lo = kept;
        } else {
            hi = kept - 1;
        }
    }
    return best;
}

}  // namespace

double text_width(std::string_view text) {
    int width = 0;
    for (const char c : text) {
        const auto u = static_cast<unsigned char>(c);
        if (u >= ' ' && u <= '~')
            width += widths[u - ' '];
        else if (u >= 0xe0)
            width += 1000;  // may be a wide script
        else if (u >= 0xc0)
            width += 700;
    }
    return width / 1000.0;
}

int n_characters(std::string_view text) {
    return static_cast<int>(std::count_if(text.begin(), text.end(), begins_character));
}

std::string shortened(std::string_view text, double most) {
    return cut_middle(text, [&](std::string_view t) { return text_width(t) <= most; });
}

std::string shortened_to(std::string_view text, int most_characters) {
    return cut_middle(text, [&](std::string_view t) { return n_characters(t) <= most_characters; });
}

std::vector<std::string> wrapped(std::string_view text, double most, int n_lines) {
    std::vector<std::string> lines;
    text = text.substr(0, 4000);
    while (!text.empty()) {
        if (static_cast<int>(lines.size()) + 1 == n_lines || text_width(text) <= most) {
            lines.push_back(shortened(text, most));
            break;
        }
        std::size_t end = 0;  // the last blank before which the line still fits
        for (std::size_t i = 0; i < text.size(); ++i)
            if (text[i] == ' ' && text_width(text.substr(0, i)) <= most) end = i;
        if (end == 0) {
            lines.push_back(shortened(text, most));
            break;
        }
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    return lines;
}

}  // namespace cli
