#include "tnl/deck/installed.h"

#include <gtest/gtest.h>

#include "temp_folder.h"

using namespace cli;

namespace {

// a calls b and c, b calls c; d stands alone. The file has the callers first, which a run folder must not have.
void write_share() {
    std::filesystem::create_directory("share");
    write_file("share/eels.aux",
               "ece name=a\ncallece b\ncallece c\nendece\n"
               "ece name=b\ncallece c\nebe type=eb\nendece\n"
               "ece name=c\nsparms: file=table.txt other=none\nebe type=ec\nebe_ac type=ac\nendece\n"
               "ece name=d\nebe type=ed\nendece\n");
    write_file("share/ebes.aux", "ebe name=ec\nendebe\nebe name=ed\nendebe\nebe name=eb\nendebe\n");
    write_file("share/ebac.aux", "ebe_ac name=ac\nendebe_ac\n");
    write_file("share/ece_all.lst", ".a\n.b\n.c\n.d\n");
}

std::string names(const installed_libraries& libraries, const deck_needs& needs, std::string_view file) {
    const int i = find_library(&library_form::file, file);
    std::string out;
    for (const int e : needs.entries[i])
        out += (out.empty() ? "" : " ") + libraries.library[i].entries[static_cast<std::size_t>(e)].name;
    return out;
}

deck_needs needs_of_text(const std::string& circuit, const installed_libraries& libraries) {
    return needs_of(view_deck("deck.in", "title: t\nbegin_circuit\n" + circuit + "end_circuit\nend_cf\n"), libraries);
}

}  // namespace

TEST(needs_of, takes_callees_first_and_leaves_out_what_is_not_used) {
    const temp_folder here;
    write_share();
    const installed_libraries libraries = read_installed("share");
    const deck_needs needs = needs_of_text("eelement name=X type=a\n", libraries);
    EXPECT_EQ(names(libraries, needs, "eels.aux"), "c b a");
    EXPECT_EQ(names(libraries, needs, "ebes.aux"), "ec eb");
    EXPECT_EQ(names(libraries, needs, "ebac.aux"), "ac");
    EXPECT_EQ(libraries.list[0], ".a\n.b\n.c\n.d\n");
}

TEST(needs_of, counts_model_statements_as_uses) {
    const temp_folder here;
    write_share();
    const installed_libraries libraries = read_installed("share");
    EXPECT_EQ(names(libraries, needs_of_text("emodel name M type d\n", libraries), "eels.aux"), "d");
}

TEST(needs_of, reports_unknown_types_but_not_placeholders) {
    const temp_folder here;
    write_share();
    const installed_libraries libraries = read_installed("share");
    const deck_needs needs = needs_of_text(
        "eelement type=ground_dummy c=x\neelement type=e name=E\ngelement name=G type=a\neelement name=noType\n",
        libraries);
    ASSERT_EQ(needs.unknown.size(), 2u);
    EXPECT_EQ(needs.unknown[0].type, "e");
    EXPECT_EQ(needs.unknown[0].i_statement, 3);
    EXPECT_EQ(needs.unknown[1].type, "a");
}

TEST(needs_of, composites_that_call_each_other_in_a_circle_end) {
    const temp_folder here;
    std::filesystem::create_directory("share");
    write_file("share/eels.aux", "ece name=a\ncallece b\nendece\nece name=b\ncallece a\nendece\n");
    const installed_libraries libraries = read_installed("share");
    EXPECT_EQ(names(libraries, needs_of_text("eelement type=a\n", libraries), "eels.aux"), "b a");
}

TEST(needs_of, gathers_words_that_may_name_files) {
    const temp_folder here;
    write_share();
    const deck_needs needs = needs_of(view_deck("deck.in",
                                                "title: t\ngstring s=global.txt\nbegin_circuit\n"
                                                "eelement name=C type=c p=node file=own.txt\nend_circuit\n"
                                                "begin_solve\nsolve_type dc\ninitial_sol file filename start.sol\n"
                                                "begin_output\nfilename rows.dat append=yes\nvariables: v\nend_output\n"
                                                "begin_output\nfilename new.dat\nvariables: v\nend_output\n"
                                                "end_solve\nend_cf\n"),
                                      read_installed("share"));
    for (const char* file : {"global.txt", "own.txt", "table.txt", "start.sol", "rows.dat"})
        EXPECT_NE(std::find(needs.files.begin(), needs.files.end(), file), needs.files.end()) << file;
    for (const char* file : {"new.dat", "none", "C", "node"})  // words of statements that are no text parameters
        EXPECT_EQ(std::find(needs.files.begin(), needs.files.end(), file), needs.files.end()) << file;
}

TEST(needs_of, a_deck_that_cannot_be_read_needs_nothing) {
    const deck_needs needs = needs_of(view_deck("deck.in", "+ begins with a plus\n"), installed_libraries{});
    for (const auto& entries : needs.entries) EXPECT_TRUE(entries.empty());
    EXPECT_TRUE(needs.unknown.empty());
}

TEST(near_names, give_the_nearest_first) {
    const temp_folder here;
    std::filesystem::create_directory("share");
    std::string text;
    for (const char* name : {"diode", "diode_r", "vsrcdc", "vsrcac", "r"})
        text += std::string("ece name=") + name + "\nendece\n";
    write_file("share/eels.aux", text);
    const installed_libraries libraries = read_installed("share");
    const installed_library& eels = libraries.library[find_library(&library_form::file, "eels.aux")];
    EXPECT_EQ(near_names(eels, "diod"), (std::vector<std::string>{"diode", "diode_r"}));
    EXPECT_EQ(near_names(eels, "vsrdc").at(0), "vsrcdc");
    EXPECT_TRUE(near_names(eels, "xyzzy").empty());
}
