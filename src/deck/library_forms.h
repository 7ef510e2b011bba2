// library_forms.h -- the libraries of all families and the words that go with them. A family says itself here: readers,
// dumps, list files, the generator, working folders and the front end refer to these rows.
#pragma once
#include <algorithm>
#include <array>
#include <string_view>

// Words put together when the program is compiled: one_word<"end", "ebe"> is "endebe", with a 0 behind it.
template <std::size_t N>
struct word_text {
    char c[N] = {};
    consteval word_text(const char (&text)[N]) { std::copy(text, text + N, c); }
};
template <word_text... Part>
struct word_texts {
    static constexpr std::size_t size = (0 + ... + (sizeof Part.c - 1));
    static constexpr std::array<char, size + 1> text = [] {
        std::array<char, size + 1> all{};
        char* to = all.data();
        ((to = std::copy(Part.c, Part.c + sizeof Part.c - 1, to)), ...);
        return all;
    }();
};
template <word_text... Part>
inline constexpr std::string_view one_word{word_texts<Part...>::text.data(), word_texts<Part...>::size};

// Elements that are functions, their small-signal forms, or composites of these.
enum class library_kind { basic, small_signal, composite };

struct library_form {
    library_kind kind;
    std::string_view name;        // "ebes": `output` asks for its dump, ebes.dat
    std::string_view class_name;  // "ebes_class": in messages
    std::string_view file, path;  // "ebes.aux", and in a working folder
    std::string_view begin, end;  // first word of an entry and of its last line: "ebe", "endebe"
    std::string_view suffix;      // of an element file: ".ebe"
    std::string_view list;        // list file of all names: "ebe_all.lst"; empty: none
    std::string_view call;        // word of a composite's line that calls an entry of this library
    std::string_view submodel;    // word of a composite's line that gives such a call its values
    // of composites; else empty
    std::string_view statement;             // word of a deck that makes an instance of an entry
    std::string_view instances;             // "eelu": what instances are called in messages
    std::string_view model;                 // word of a deck's model statement
    std::string_view models, models_class;  // "ecem": its dump; and its class in messages
};

template <word_text Name, word_text Entry>
consteval library_form basic_library_form(library_kind kind, std::string_view suffix, std::string_view list) {
    const bool small_signal = kind == library_kind::small_signal;
    return {kind,
            one_word<Name>,
            one_word<Name, "_class">,
            one_word<Name, ".aux">,
            one_word<".tnlaux/", Name, ".aux">,
            one_word<Entry>,
            one_word<"end", Entry>,
            suffix,
            list,
            one_word<Entry>,
            small_signal ? std::string_view() : one_word<Entry, "model">,
            {},
            {},
            {},
            {},
            {}};
}
template <word_text Name, word_text Entry, word_text Models>
consteval library_form composite_library_form(std::string_view suffix, std::string_view list,
                                              std::string_view statement, std::string_view instances,
                                              std::string_view model) {
    return {library_kind::composite,
            one_word<Name>,
            one_word<Name, "_class">,
            one_word<Name, ".aux">,
            one_word<".tnlaux/", Name, ".aux">,
            one_word<Entry>,
            one_word<"end", Entry>,
            suffix,
            list,
            one_word<"call", Entry>,
            one_word<Entry, "model">,
            statement,
            instances,
            model,
            one_word<Models>,
            one_word<Models, "_class">};
}

// Positions in library_forms. Basic libraries stand before the composites that are made of them.
enum library_number : int {
    lib_ebes,
    lib_gbes,
    lib_ebac,
    lib_gbac,
    lib_dbes,
    lib_xbes,
    lib_xbac,
    lib_eels,
    lib_gels,
    lib_dels,
    lib_xels,
    lib_gmes,
    n_libraries
};
inline constexpr library_form library_forms[n_libraries] = {
    basic_library_form<"ebes", "ebe">(library_kind::basic, ".ebe", "ebe_all.lst"),
    basic_library_form<"gbes", "gbe">(library_kind::basic, ".gbe", "gbe_all.lst"),
    basic_library_form<"ebac", "ebe_ac">(library_kind::small_signal, ".sse", "sse_all.lst"),
    basic_library_form<"gbac", "gbe_ac">(library_kind::small_signal, ".ssg", "ssg_all.lst"),
    basic_library_form<"dbes", "dbe">(library_kind::basic, ".dbe", "dbe_all.lst"),
    basic_library_form<"xbes", "xbe">(library_kind::basic, ".xbe", "xbe_all.lst"),
    basic_library_form<"xbac", "xbe_ac">(library_kind::small_signal, ".ssx", "ssx_all.lst"),
    composite_library_form<"eels", "ece", "ecem">(".ece", "ece_all.lst", "eelement", "eelu", "emodel"),
    composite_library_form<"gels", "gce", "gcem">(".gce", "gce_all.lst", "gelement", "gelu", "gmodel"),
    composite_library_form<"dels", "dce", "dcem">(".dce", "", "delement", "delu", "dmodel"),
    composite_library_form<"xels", "xce", "xcem">(".xce", "xce_all.lst", "xelement", "xelu", "xmodel"),
    composite_library_form<"gmes", "gme", "gmem">(".gme", "", "gmelement", "gmeu", "gmmodel"),
};

constexpr int number_of(const library_form& form) { return static_cast<int>(&form - library_forms); }

// Libraries with a list file, in the order in which a faulty one is to show.
inline constexpr library_number listed_libraries[] = {lib_eels, lib_gels, lib_xels, lib_dbes, lib_ebes,
                                                      lib_gbes, lib_xbes, lib_ebac, lib_gbac, lib_xbac};

// The library of which a word tells (`&library_form::statement`, "eelement"); -1 if there is none.
constexpr int find_library(std::string_view library_form::*member, std::string_view word) {
    for (int i = 0; i < n_libraries && !word.empty(); ++i)
        if (library_forms[i].*member == word) return i;
    return -1;
}
