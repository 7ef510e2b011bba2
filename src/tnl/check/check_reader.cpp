// The simulator's own readers as the last judge: what they refuse is a fault, whether another check knows it or not.
#include <exception>
#include <iostream>
#include <optional>
#include <sstream>
#include <streambuf>

#include "elaborate/circuit.h"
#include "library/basic/basic_reader.h"
#include "library/composite/composite_form.h"
#include "library/composite/composite_reader.h"
#include "settings/solve_class.h"
#include "tnl/check/check_deck.h"
#include "tnl/check/locate.h"

namespace cli {

namespace {

// The readers speak on standard output, which is the report's.
class silence {
public:
    silence() : old_(std::cout.rdbuf(&nothing_)) {}
    ~silence() { std::cout.rdbuf(old_); }
    silence(const silence&) = delete;
    silence& operator=(const silence&) = delete;

private:
    struct sink : std::streambuf {
        int_type overflow(int_type c) override { return traits_type::not_eof(c); }
        std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
    };
    sink nothing_;
    std::streambuf* old_;
};

// The part of a library that the deck needs, as a run folder would hold it.
text_file part_of(const installed_libraries& libraries, const deck_needs& needs, std::string_view file) {
    const int i = find_library(&library_form::file, file);
    std::string text;
    for (const int e : needs.entries[i]) text += libraries.library[i].entries[static_cast<std::size_t>(e)].text;
    return text_file_of(text);
}

void read_libraries(const installed_libraries& libraries, const deck_needs& needs, circuit& c) {
    const auto part = [&](const char* file) { return part_of(libraries, needs, file); };
    const auto basic = [&](const char* file, const basic_form& form, basic_library& lib) {
        text_file text = part(file);
        read_library_text(text, form, nullptr, lib);
    };
    basic("ebes.aux", ebes_form, c.lib.ebes);
    basic("gbes.aux", gbes_form, c.lib.gbes);
    basic("ebac.aux", ebac_form, c.lib.ebac);
    basic("gbac.aux", gbac_form, c.lib.gbac);
    text_file eels = part("eels.aux"), gels = part("gels.aux");
    read_composites(eels, eels_form, c.lib.ebes, c.lib.ebac, c.lib.eels);
    read_composites(gels, gels_form, c.lib.gbes, c.lib.gbac, c.lib.gels);
}

void read_all(const checked_deck& d, const deck_needs& needs) {
    circuit c;
    c.cf = circuit_file_of(d.text());
    read_libraries(d.types.libraries(), needs, c);
    c.gprm = read_gprm(c.cf);
    read_models_of_deck(c);
    c.ov = read_ov(c.cf, c.gprm);
    c.tmpdim = generous_tmpdim();
    elaborate(c);
    classify(c);
    check_linear(c);
    check_one_time(c);
    solve_class slv;
    flags_class flags;
    for (int block = 0; block < c.cf.n_solve; ++block) {
        method_default(slv, c, flags);
        set_values(slv, block, c, flags);
        delete_arrays(slv);
    }
}

// The lines of a stop as one sentence.
std::string in_one_line(const std::string& text) {
    std::istringstream in(text);
    std::string out;
    for (std::string line; std::getline(in, line);) {
        const std::size_t a = line.find_first_not_of(' ');
        if (a == std::string::npos || line.find("Halting") == a) continue;
        out += (out.empty() ? "" : " ") + line.substr(a);
    }
    for (const char* end : {" Halting...", " Halting..", " Halting ..."})
        if (out.ends_with(end)) out.erase(out.size() - std::string_view(end).size());
    return out;
}

// The text of the stop that f ends in; none if it ends well.
template <class F>
std::optional<std::string> stop_of(F f) {
    const silence quiet;
    try {
        f();
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {  // whatever this program's halt throws
        return std::string();
    }
    return {};
}

}  // namespace

std::optional<std::string> stop_of_libraries(const installed_libraries& libraries, const deck_needs& needs) {
    return stop_of([&] {
        circuit c;
        read_libraries(libraries, needs, c);
    });
}

std::string stop_in_one_line(const std::string& text) {
    return "the simulator refuses this: " + (text.empty() ? std::string("(no text)") : in_one_line(text));
}

void check_with_reader(checked_deck& d) {
    const deck_needs needs = needs_of(d.report.deck, d.types.libraries());
    const std::optional<std::string> text = stop_of([&] { read_all(d, needs); });
    if (!text) return;
    const std::vector<int> found = find_statements(*text, d.report.deck, needs);
    d.report.error("refused", {found.empty() ? -1 : found.front(), 0}, stop_in_one_line(*text));
}

}  // namespace cli
