#include "tnl/deck/deck_source.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "base/words.h"
#include "tnl/common/exit_status.h"
#include "tnl/common/input_file.h"
#include "tnl/deck/library_split.h"

namespace cli {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> lines_of(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        if (lines.back().ends_with('\r')) lines.back().pop_back();
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

class resolver {
public:
    explicit resolver(deck_source& source) : source_(source) {}

    // included_at: of the statement that names the file; line 0 for the deck.
    void add(std::string text, const std::string& path, const record_place& included_at) {
        if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);  // the mark that some editors put before UTF-8
        count(text, path, included_at);
        const int i_file = static_cast<int>(source_.files.size());
        source_.files.push_back({path, lines_of(text)});
        open_.push_back(path);
        for (int i = 0; i < static_cast<int>(source_.files[at(i_file)].lines.size()); ++i) {
            const std::string& whole = source_.files[at(i_file)].lines[at(i)];
            if (has_ended_) {  // nobody reads it
                add_line(whole, {i_file, i});
                continue;
            }
            const std::string line(without_comment(whole));
            const words w = parse_line_2(line);
            const std::string_view w0 = w.size() > 0 ? w[0] : std::string_view();
            if (belongs_to_entry(line, w0)) {
                source_.blocks.back().lines.push_back({i_file, i});
                continue;
            }
            // What continues a statement goes where that is, also from one file into another.
            const bool continues = w0.starts_with('+'), comment = w0.empty() || w0[0] == '#';
            if (w0 == "include") {
                include(w, i_file, i);
                continue;
            }
            if (!comment && !continues) holds_models_ = is_early_model(w0);
            if (holds_models_ && !comment) {
                held_.emplace_back(line, deck_source::place{i_file, i});
            } else {
                add_line(line, {i_file, i});
                if (w0 == "begin_circuit") release_models();
                has_ended_ = w0 == "end_cf";
            }
        }
        if (entry_ == entry_state::inside) entry_ = entry_state::none;
        open_.pop_back();
    }

    // Models for which there is no circuit stand at the end, where they are told.
    void release_models() {
        circuit_begun_ = true;
        for (const auto& [line, place] : std::exchange(held_, {})) add_line(line, place);
    }

private:
    enum class entry_state { none, inside, behind };

    static std::size_t at(int i) { return static_cast<std::size_t>(i); }

    // Files that include the next one twice double at each level: what they come to is bounded before it is kept.
    void count(std::string_view text, const std::string& path, const record_place& included_at) {
        n_bytes_ += text.size();
        n_lines_ += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
        if (!text.empty() && text.back() != '\n') ++n_lines_;
        std::string what;
        if (n_bytes_ > most_deck_bytes) what = std::to_string(most_deck_bytes >> 20) + " MB";
        if (n_lines_ > most_deck_lines) what = std::to_string(most_deck_lines) + " lines";
        if (what.empty()) return;
        if (included_at.line == 0) throw source_error({path, 0, 0, ""}, "a deck has at most " + what);
        throw source_error(included_at, "a deck has at most " + what + " with all that it includes");
    }

    void include(const words& w, int i_file, int i_line) {
        const deck_source::file& by = source_.files[at(i_file)];
        const std::string& line = by.lines[at(i_line)];
        const record_place place{by.path, i_line + 1, static_cast<int>(line.find_first_not_of(" \t")) + 1, line};
        if (w.size() != 2) throw source_error(place, "include needs one file name");
        const fs::path name(w.str(1));
        const fs::path folder = fs::path(by.path).parent_path();
        const std::string path = (name.is_absolute() ? name : folder / name).lexically_normal().string();
        std::error_code error;
        for (const std::string& open : open_)
            if (open == path || fs::equivalent(open, path, error)) throw source_error(place, path + " includes itself");
        if (open_.size() > 50) throw source_error(place, "files include each other more than 50 deep");
        if (++n_includes_ > most_includes)
            throw source_error(place, "a deck includes at most " + std::to_string(most_includes) +
                                          " files, each time that one is named counted");
        std::string text;
        try {
            text = read_file(path, most_deck_bytes);
        } catch (const file_error& e) {
            throw source_error(place, e.what());
        }
        add(std::move(text), path, place);
    }

    void add_line(const std::string& line, const deck_source::place& place) {
        source_.text += line;
        source_.text += '\n';
        source_.origin.push_back(place);
    }

    bool is_early_model(std::string_view w0) const {
        return open_.size() > 1 && !circuit_begun_ && find_library(&library_form::model, w0) >= 0;
    }

    // Entries end with their last line and what continues it. One without it ends before what can stand in none.
    bool belongs_to_entry(std::string_view line, std::string_view w0) {
        const bool continues = w0.starts_with('+') && line.find_first_not_of(" \t") == line.find('+');
        if (entry_ == entry_state::behind && (continues || w0.empty() || w0[0] == '#' || w0 == "include"))
            return continues;
        const int library = find_library(&library_form::begin, w0);
        if (entry_ == entry_state::inside) {
            const library_form& form = library_forms[source_.blocks.back().library];
            const bool is_body = library >= 0 && library_forms[library].statement.empty() && !form.statement.empty();
            if ((library < 0 || is_body) && !is_section_word(w0)) {
                source_.blocks.back().ended = w0 == form.end;
                if (source_.blocks.back().ended) entry_ = entry_state::behind;
                return true;
            }
        }
        entry_ = library >= 0 ? entry_state::inside : entry_state::none;
        if (library >= 0) source_.blocks.push_back({library, {}, false});
        return library >= 0;
    }

    static bool is_section_word(std::string_view w) {
        for (const std::string_view s :
             {"title:", "begin_circuit", "end_circuit", "begin_solve", "end_solve", "end_cf"})
            if (s == w) return true;
        return false;
    }

    deck_source& source_;
    std::vector<std::pair<std::string, deck_source::place>> held_;  // models that wait for the circuit
    bool circuit_begun_ = false, has_ended_ = false;
    entry_state entry_ = entry_state::none;  // of the entry that the last line belongs to
    bool holds_models_ = false;              // the last statement is one of held_
    std::vector<std::string> open_;          // the files whose lines are being read
    std::uintmax_t n_bytes_ = 0;
    std::size_t n_lines_ = 0;
    int n_includes_ = 0;
};

}  // namespace

source_error::source_error(record_place place_, const std::string& why_)
    : deck_error(place_.file + (place_.line > 0 ? ":" + std::to_string(place_.line) : "") + ": " + why_),
      place(std::move(place_)),
      why(why_) {}

// Lines that are all comment stay, so that line numbers can.
std::string_view without_comment(std::string_view line) {
    for (std::size_t i = 1; i < line.size(); ++i)
        if (line[i] == '#' && (line[i - 1] == ' ' || line[i - 1] == '\t')) {
            const std::size_t last = line.substr(0, i).find_last_not_of(" \t");
            return last == std::string_view::npos ? line : line.substr(0, last + 1);
        }
    return line;
}

deck_source deck_source_of(std::string text, const std::string& path) {
    deck_source source;
    resolver r(source);
    r.add(std::move(text), path, {});
    r.release_models();
    return source;
}

deck_source read_deck_source(const std::string& path) {
    return deck_source_of(path == "-" ? read_standard_input(most_deck_bytes) : read_file(path, most_deck_bytes), path);
}

}  // namespace cli
