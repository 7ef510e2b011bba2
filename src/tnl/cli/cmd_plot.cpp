#include <cstdio>
#include <list>
#include <memory>

#include "base/words.h"
#include "tnl/cli/commands.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/output_file.h"
#include "tnl/plot/plot_convert.h"
#include "tnl/plot/plot_rows.h"
#include "tnl/plot/plot_runs.h"
#include "tnl/results/open_run.h"

namespace cli {

namespace {

struct plot_options {
    std::vector<std::string> words;  // runs and columns
    plot_wish wish;
    std::vector<std::string> y, panels;
    std::string output, size, from, to;
    bool ascii = false;
};

picture_format format_of(const std::string& path) {
    constexpr std::pair<const char*, picture_format> known[] = {
        {".svg", picture_format::svg}, {".png", picture_format::png}, {".pdf", picture_format::pdf}};
    if (path == "-") return picture_format::svg;
    for (const auto& [end, format] : known)
        if (path.ends_with(end)) return format;
    throw usage_error("-o " + path +
                      ": the name of a picture ends in .svg, .png or .pdf; - writes SVG to standard output");
}

picture_size size_of(const std::string& text) {
    picture_size size;
    char rest = 0;
    if (text.empty()) return size;
    if (std::sscanf(text.c_str(), "%5dx%5d%c", &size.width, &size.height, &rest) != 2 || size.width < least_picture ||
        size.height < least_picture || size.width > most_picture || size.height > most_picture)
        throw usage_error("--size " + text + ": width and height in pixels are wanted, as 720x440, from " +
                          std::to_string(least_picture) + " to " + std::to_string(most_picture));
    return size;
}

std::optional<double> number_of(const std::string& option, const std::string& word) {
    if (word.empty()) return {};
    double value = 0;
    if (!is_double(word, value)) throw usage_error(option + " " + word + ": not a number");
    return value;
}

// "MIN:MAX" or "COLUMN=MIN:MAX", either end may be missing.
plot_y_range y_range_of(const std::string& text) {
    plot_y_range range;
    const std::size_t colon = text.rfind(':'), sign = text.rfind('=', colon);
    const bool named = sign != std::string::npos && colon != std::string::npos;
    if (colon == std::string::npos || text.size() == (named ? sign + 2 : 1))
        throw usage_error("--y " + text +
                          ": the ends of the axis are wanted as MIN:MAX, MIN: or :MAX, for the panel of one "
                          "column as COLUMN=MIN:MAX");
    if (named) range.column = text.substr(0, sign);
    const std::size_t begin = named ? sign + 1 : 0;
    range.lo = number_of("--y", text.substr(begin, colon - begin));
    range.hi = number_of("--y", text.substr(colon + 1));
    if (range.lo && range.hi && !(*range.lo < *range.hi)) throw usage_error("--y " + text + ": the range is empty");
    return range;
}

// Words between commas; those inside of parentheses part arguments.
std::vector<std::string> panel_of(const std::string& text) {
    std::vector<std::string> words(1);
    int depth = 0;
    for (const char c : text) {
        depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        if (c == ',' && depth == 0)
            words.emplace_back();
        else
            words.back() += c;
    }
    for (const std::string& word : words)
        if (word.empty()) throw usage_error("--panel " + text + ": columns are wanted as A,B");
    return words;
}

// "one row is no curve: vout=5 at time=0.001": what a picture of points alone hardly tells.
std::string points_of(const plot& p) {
    std::string text;
    const auto shown = [](const std::string& name, double v) {
        char number[32];
        std::snprintf(number, sizeof number, "%.6g", v);
        return name + "=" + number;
    };
    for (const plot_panel& panel : p.panels)
        for (const plot_series& s : panel.series) {
            if (s.x.size() != 1) return {};
            text += (text.empty() ? "" : ", ") + shown(s.name, s.y[0]) + " at " + shown(p.x_quantity, s.x[0]);
        }
    return text.empty() ? text : "one row is no curve, but a point: " + text;
}

int plot_command(plot_options options) {
    const picture_format format = options.output.empty() ? picture_format::svg : format_of(options.output);
    const picture_size size = size_of(options.size);
    options.wish.choice.from = number_of("--from", options.from);
    options.wish.choice.to = number_of("--to", options.to);
    for (const std::string& text : options.y) options.wish.choice.y.push_back(y_range_of(text));
    for (const std::string& text : options.panels) options.wish.panels.push_back(panel_of(text));
    if (!options.from.empty() && !options.to.empty() && !(options.wish.choice.from < options.wish.choice.to))
        throw usage_error("the window from " + options.from + " to " + options.to + " is empty");
    if (options.wish.linear_x && options.wish.choice.log_x)
        throw usage_error("--linear-x and --log-x exclude each other");
    if (options.wish.linear_y && options.wish.choice.log_y)
        throw usage_error("--linear-y and --log-y exclude each other");
    if (options.wish.nyquist && !options.wish.x.empty())
        throw usage_error("--nyquist has the real part for x; leave out --x");
    const plotted_runs runs = open_plotted(options.words, options.wish);
    for (const std::string& note : runs.notes) std::fprintf(stderr, "tnl: %s\n", note.c_str());
    const plot p = plot_of_rows(runs.sources, runs.choice, std::max(1500, size.width));
    if (const std::string text = points_of(p); !text.empty()) std::fprintf(stderr, "tnl: %s\n", text.c_str());
    if (options.output.empty()) {
        terminal t = this_terminal();
        if (options.ascii) t.utf8 = false;
        const std::string text = draw_in_terminal(p, t);
        if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
            throw file_error("cannot write to standard output");
        return good;
    }
    write_output(options.output, convert_svg(draw_svg(p, size), format));
    return good;
}

}  // namespace

void add_plot(CLI::App& app, command_list& commands) {
    const auto o = std::make_shared<plot_options>();
    CLI::App* plot = app.add_subcommand("plot", "Draw columns of a run in the terminal or as a picture file");
    plot->add_option(
            "RUN", o->words,
            "Runs (a folder, the deck that was run, or a row file), then names or numbers of columns, or expressions "
            "of them as 'vin - vout'; no column: all. A small signal X is mag_of_X and phase_of_X")
        ->required();
    plot->add_option("-o,--output", o->output, "Picture file: .svg, .png or .pdf; - for SVG on standard output");
    plot->add_option("--file", o->wish.file, "Row file of the run, instead of the first that has the columns");
    plot->add_option("--x", o->wish.x, "Column for the x axis, instead of the first");
    plot->add_flag("--log-x", o->wish.choice.log_x, "Logarithmic x axis");
    plot->add_flag("--log-y", o->wish.choice.log_y, "Logarithmic y axes");
    plot->add_flag("--linear-x", o->wish.linear_x, "Small signals: the frequency on a linear axis");
    plot->add_flag("--linear-y", o->wish.linear_y, "Small signals: magnitudes as they are, not in dB");
    plot->add_flag("--nyquist", o->wish.nyquist, "Small signals: in the complex plane, with the point -1");
    plot->add_flag("--stack", o->wish.choice.stack, "A panel for each column, instead of one for each unit");
    plot->add_flag("--logic", o->wish.choice.logic, "Columns with two values as logic traces under one another");
    plot->add_flag("--bits", o->wish.choice.bits,
                   "Digital levels: a lane for each of q0 q1 q2, instead of one for the number that they are");
    plot->add_option("--panel", o->panels, "Columns or expressions that share a panel: A,B; once for each panel")
        ->allow_extra_args(false);
    plot->add_option("--y", o->y, "Ends of the y axes, MIN:MAX, or of the panel of a column, COLUMN=MIN:MAX")
        ->allow_extra_args(false);
    plot->add_option("--title", o->wish.choice.title, "Instead of the deck's title");
    plot->add_option("--from", o->from, "First x to show; scale letters as in decks: 4m");
    plot->add_option("--to", o->to, "Last x to show");
    plot->add_option("--size", o->size, "Of the picture, WIDTHxHEIGHT in pixels; a png has twice as many");
    plot->add_flag("--ascii", o->ascii, "Plain characters in the terminal");
    commands.push_back({plot, [o] { return plot_command(*o); }});
}

}  // namespace cli
