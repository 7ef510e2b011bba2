#include "tnl/run/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/words.h"

namespace cli {

namespace {

constexpr double first_drawn = 0.04;  // s; shorter runs show nothing
constexpr double between_bars = 0.1;  // s
constexpr double lines_from = 1;      // s; shorter runs tell no tenths
constexpr double least_spent = 0.25;  // s in a block, before its pace is told
constexpr int widest_bar = 30;

std::optional<double> number_of(std::string_view word) {
    double x = 0;
    if (!is_double(word, x)) return {};
    return x;
}

// The number behind "time=" of a line of progress.
std::optional<double> time_in(std::string_view line) {
    if (!line.starts_with("iter_trns=") && !line.starts_with("iter_trns_1=")) return {};
    const std::size_t at = line.find(" time=");
    if (at == std::string_view::npos) return {};
    return number_of(line.substr(at + 6));
}

// "i=1000", which blocks print that are told not to give the time.
bool is_count(std::string_view line) {
    return line.starts_with("i=") && line.find_first_not_of("0123456789", 2) == std::string_view::npos;
}

std::string duration(double seconds) {
    char text[32];
    if (seconds < 99.95)
        std::snprintf(text, sizeof text, "%.1f s", seconds);
    else if (seconds < 5400)
        std::snprintf(text, sizeof text, "%.0f min", std::ceil(seconds / 60));
    else
        std::snprintf(text, sizeof text, "%.1f h", seconds / 3600);
    return text;
}

}  // namespace

std::string short_number(double x) {
    struct scale {
        double factor;
        const char* letter;
    };
    constexpr scale scales[] = {{1e9, "G"},  {1e6, "M"},  {1e3, "k"},   {1, ""},     {1e-3, "m"},
                                {1e-6, "u"}, {1e-9, "n"}, {1e-12, "p"}, {1e-15, "f"}};
    char text[40];
    const double size = std::fabs(x);
    const scale* s = std::find_if(std::begin(scales), std::end(scales) - 1,
                                  [&](const scale& one) { return size >= one.factor * 0.99995; });
    const bool fits = size >= 1e-16 && size < 1e13;
    const double scaled = fits ? x / s->factor : x;
    const std::to_chars_result end = std::to_chars(text, text + sizeof text - 2, scaled, std::chars_format::general, 4);
    return std::string(text, end.ptr) + (fits ? s->letter : "");
}

std::vector<time_block> time_blocks(const deck_view& deck) {
    std::vector<time_block> blocks;
    const file_chr& f = deck.statements;
    for (const statement_range& range : solve_ranges(deck)) {
        time_block block;
        bool in_time = false;
        for (int i = range.begin; i < range.end; ++i) {
            if (f.begins(i, "solve_type") && f.n_words(i) > 1) in_time = f.word(i, 1) == "trns";
            if (!f.begins(i, "method:")) continue;
            if (const std::string word = value_of(deck, i, "t_start"); !word.empty())
                block.t_start = number_of(word).value_or(0);
            if (const std::string word = value_of(deck, i, "t_end"); !word.empty()) block.t_end = number_of(word);
        }
        if (!in_time) continue;
        for (const written_file& file : written_files(deck))
            if (file.i_statement >= range.begin && file.i_statement < range.end && !file.columns.empty() &&
                file.columns[0] == "time" && file.rows)
                block.files.push_back(file.path);
        blocks.push_back(std::move(block));
    }
    return blocks;
}

progress_form form_for_standard_error() {
    if (isatty(STDERR_FILENO) == 0) return progress_form::lines;
    const char* kind = std::getenv("TERM");
    return kind != nullptr && std::strcmp(kind, "dumb") == 0 ? progress_form::lines : progress_form::bar;
}

int columns_of_standard_error() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

// ---- what is known

const time_block* progress::block() const {
    return n_begun_ >= 1 && n_begun_ <= static_cast<int>(blocks_.size())
               ? &blocks_[static_cast<std::size_t>(n_begun_ - 1)]
               : nullptr;
}

void progress::note_line(std::string_view line, double now) {
    if (line == "Transient simulation starts...") {
        ++n_begun_;
        tenths_ = 0;
        t_ = block() != nullptr ? block()->t_start : 0;
        // The text comes late, up to half a second.
        begun_at_ = noted_at_ = n_begun_ == 1 ? 0 : now;
    } else if (const std::optional<double> t = time_in(line)) {
        note_time(*t, now);
    }
}

void progress::note_time(double t, double now) {
    if (!(t > t_)) return;
    t_ = t;
    noted_at_ = now;
}

double progress::fraction() const {
    const time_block* b = block();
    if (b == nullptr || !b->t_end || !(*b->t_end > b->t_start)) return -1;
    return std::clamp((t_ - b->t_start) / (*b->t_end - b->t_start), 0.0, 1.0);
}

// As long as the block needs at the pace that it has had; below 0: unknown.
double progress::seconds_left(double now) const {
    const double done = fraction(), spent = noted_at_ - begun_at_;
    if (!(done > 0) || spent < least_spent) return -1;
    return std::max(0.0, spent / done - (now - begun_at_));
}

std::string progress::take(std::string_view text, double now) {
    std::string shown = form_ == progress_form::bar ? "" : std::string(text);
    waiting_ += text;
    std::size_t at = 0;
    for (std::size_t end = 0; (end = waiting_.find('\n', at)) != std::string::npos; at = end + 1) {
        const std::string_view line = std::string_view(waiting_).substr(at, end - at);
        note_line(line, now);
        if (form_ == progress_form::bar && !time_in(line) && !is_count(line)) {
            shown += line;
            shown += '\n';
        }
    }
    waiting_.erase(0, at);
    return shown;
}

std::string progress::rest() { return form_ == progress_form::bar ? std::exchange(waiting_, {}) : std::string(); }

// ---- what is drawn

// "t=3m of 10m", with the number of the block where there are several.
std::string progress::position() const {
    std::string text = "t=" + short_number(t_);
    if (block() != nullptr && block()->t_end) text += " of " + short_number(*block()->t_end);
    if (blocks_.size() > 1 && block() != nullptr)
        text += ", block " + std::to_string(n_begun_) + " of " + std::to_string(blocks_.size());
    return text;
}

std::string progress::bar(double now) const {
    if (n_begun_ == 0) return deck_ + " ...";
    std::string text;
    const double done = fraction();
    char percent[16];
    if (done >= 0) {
        std::snprintf(percent, sizeof percent, " %3d %%  ", static_cast<int>(done * 100));
        text = percent;
    }
    text += position();
    if (const double spent = noted_at_ - begun_at_; spent >= least_spent && block() != nullptr)
        text += "  " + short_number((t_ - block()->t_start) / spent) + "/s";
    if (const double left = seconds_left(now); left >= 0) text += "  " + duration(left) + " left";
    const int room = std::min(widest_bar, columns_ - 3 - static_cast<int>(text.size()));
    if (done >= 0 && room >= 8) {
        const int n = static_cast<int>(done * room);
        text.insert(0, "[" + std::string(static_cast<std::size_t>(n), '#') +
                           std::string(static_cast<std::size_t>(room - n), '-') + "]");
    }
    return text;
}

std::string progress::draw(double now) {
    if (form_ == progress_form::none || now < first_drawn) return {};
    if (form_ == progress_form::lines) {
        if (!std::exchange(announced_, true)) return "tnl: " + deck_ + " runs\n";
        const int tenths = static_cast<int>(fraction() * 10 + 1e-9);
        if (now < lines_from || tenths <= tenths_ || tenths >= 10) return {};
        tenths_ = tenths;
        const double left = seconds_left(now);
        return "tnl: " + std::to_string(tenths * 10) + " %  " + position() +
               (left >= 0 ? "  " + duration(left) + " left" : "") + "\n";
    }
    if (drawn_at_ >= 0 && on_line_ && now < drawn_at_ + between_bars) return {};
    drawn_at_ = now;
    on_line_ = true;
    std::string text = bar(now);
    if (static_cast<int>(text.size()) >= columns_) text.resize(static_cast<std::size_t>(std::max(0, columns_ - 1)));
    return "\r" + text + "\x1b[K";
}

std::string progress::wipe() { return std::exchange(on_line_, false) ? "\r\x1b[K" : ""; }

}  // namespace cli
