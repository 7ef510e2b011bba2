#include "tnl/check/advice.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "temp_folder.h"

using namespace cli;
namespace fs = std::filesystem;

namespace {

// The string literals of the halt call whose "halt({" ends at `at`, one behind another with a blank between.
std::string literals_of_call(const std::string& text, std::size_t at) {
    std::string all;
    int depth = 2;
    for (; at < text.size() && depth > 0; ++at) {
        const char c = text[at];
        if (c == '(' || c == '{') ++depth;
        if (c == ')' || c == '}') --depth;
        if (c == '\'') at += text[at + 1] == '\\' ? 3 : 2;  // a character
        if (c != '"') continue;
        std::string literal;
        for (++at; at < text.size() && text[at] != '"'; ++at) {
            if (text[at] == '\\') ++at;
            literal += text[at];
        }
        if (!all.empty()) all += ' ';
        all += literal;
    }
    return all;
}

bool holds_code(const fs::path& path) {
    const std::string e = path.extension().string();
    return e == ".cpp" || e == ".h" || e == ".ebe" || e == ".gbe" || e == ".sse" || e == ".ssg";
}

struct halt_call {
    std::string file, literals;
};
std::vector<halt_call> halt_calls() {
    std::vector<halt_call> calls;
    for (const char* folder : {"src", "models"})
        for (const auto& entry : fs::recursive_directory_iterator(fs::path(TARNEL_SOURCE) / folder)) {
            if (!holds_code(entry.path()) || entry.path().parent_path().filename() == "tnl") continue;
            const std::string text = ::read_file(entry.path().string());
            const std::string begin = "halt({";
            for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at + 1))
                calls.push_back({entry.path().string(), literals_of_call(text, at + begin.size())});
        }
    return calls;
}

// Calls that print lines made elsewhere: their literals say nothing by themselves.
bool says_nothing(const std::string& literals) {
    std::string letters;
    for (const char c : literals)
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) letters += c;
    return letters.empty() || letters == "Halting";
}

std::string_view id_of(const char* message) {
    const advice_text* t = find_advice(message);
    return t == nullptr ? "" : t->id;
}

}  // namespace

TEST(advice, tells_full_tables_of_blocks_from_their_values) {
    EXPECT_EQ(id_of("average_mv.gbe: index1 > M_AVERAGE_MV_GBE."), "capacity");
    EXPECT_EQ(id_of("rms_mv.gbe: index > M_RMS_MV_GBE."), "capacity");
    EXPECT_EQ(id_of("delay_2.gbe: more points within td than n_delay."), "delay-too-long");
    EXPECT_EQ(id_of("delay_2.gbe: n_delay is too small."), "delay-too-long");
    EXPECT_EQ(id_of("delay_2: dc not implemented. Halting..."), "not-in-dc");
}

TEST(advice, knows_a_pivot_that_is_exchanged_from_a_singular_matrix) {
    const std::string exchanged = "*** error in gauss_2: pivot too small ***\nsolve_jac: error in gauss_2.\n";
    EXPECT_EQ(id_of(exchanged.c_str()), "reordered");
    EXPECT_EQ(id_of((exchanged + "  Calling gauss_1a (to reorder)...\nsolve_jac: error in gauss_2 again!\n").c_str()),
              "singular");
}

// A new message belongs into the table, if only as one of a family.
TEST(advice, covers_the_text_of_every_halt_call) {
    int n = 0;
    for (const halt_call& call : halt_calls()) {
        if (says_nothing(call.literals)) continue;
        EXPECT_NE(find_advice(call.literals), nullptr) << call.file << ": " << call.literals;
        ++n;
    }
    EXPECT_GT(n, 250);
}

TEST(advice, has_a_text_for_each_pattern_and_a_pattern_for_each_text) {
    std::set<std::string_view> ids, used, patterns;
    for (const advice_text& t : advice_texts()) {
        EXPECT_TRUE(ids.insert(t.id).second) << t.id;
        EXPECT_FALSE(t.meaning.empty());
    }
    for (const advice_pattern& row : advice_patterns()) {
        EXPECT_NE(advice_of(row), nullptr) << row.pattern;
        EXPECT_TRUE(patterns.insert(row.pattern).second) << row.pattern;
        used.insert(row.id);
    }
    EXPECT_EQ(ids, used);
}

TEST(find_advice, reads_messages_as_the_simulator_prints_them) {
    for (const char* text :
         {"dff: cannot have set and reset = 1. Halting...\n", "rsff2.dbe: r = s = 1 is not allowed\n",
          "jkff: cannot have set and reset=1. Halting...\n"})
        EXPECT_EQ(id_of(text), "set-and-reset");
    for (const char* text : {"and_2: wrong condition in start-up\n", "mux_4_to_1: wrong condition 1. Halting...\n"})
        EXPECT_EQ(id_of(text), "digital-start");
    for (const char* text : {"and_2.dbe: dc not allowed.\n  Halting...\n", "counter_4: dc not allowed\n"})
        EXPECT_EQ(id_of(text), "not-in-dc");
    EXPECT_EQ(id_of("clock.dbe: check t1, t2. Halting...\n"), "value-of-element");
    for (const char* text : {"solve_startup: did not converge after\n   20 passes. Halting...\n",
                             "solve_startup: did not converger after 20\n    mixed passes.\n",
                             "solve_dc: digital passes did not converge.\n",
                             "solve_dc: all digital elements must be\n  in the stable state in DC (1). Halting...\n"})
        EXPECT_EQ(id_of(text), "digital-unstable");
    EXPECT_EQ(id_of("solve_class: digital node name not found\n   in set_sgtl statement.\n   Check this string: x\n"),
              "bad-item");
    EXPECT_EQ(id_of("counter_8_gnrl: q_sv must be gt state_begin. Halting...\n"), "value-of-element");
    EXPECT_EQ(id_of("clock.dbe: cannot be scheduled! Halting...\n"), "library-file");
    EXPECT_EQ(id_of("solve_dc: N-R did not converge.\n   Halting...\n"), "dc-no-convergence");
    EXPECT_EQ(id_of("gmin_step_dc_1:\n   N-R iterations did not converge.\n   Halting...\n"), "gmin-failed");
    EXPECT_EQ(id_of("solve_trns: no convergence even with\n  the smallest time step.\n"), "time-no-convergence");
    EXPECT_EQ(id_of("nnz_active_k_1: valmax_row=0. i_row=0\n  Singular matrix? Halting...\n"), "singular");
    EXPECT_EQ(id_of("gauss_2: zero pivot in the last row!\nsolve_jac: error in gauss_2 again!\n"), "singular");
    EXPECT_EQ(id_of("mat::set_mat_2: system matrix is not square!\n  nrow_m = 2\n"), "not-square");
    EXPECT_EQ(id_of("cct_class: cct_ov_flag = IGL_CLEAR\n   for i_ov = 1\n"), "unknown-instance");
    EXPECT_EQ(id_of("ect_to_ebeu_nd: i_eelu_nd = -1\n   for i_ect_nd = 0\ncct_class: problem in assigning "
                    "gct_to_gbeu\n"),
              "variable-alone");
    EXPECT_EQ(id_of("ect_to_ebeu_nd: i_eelu_nd = -1\n   for i_ect_nd = 3\ncct_class: problem in assigning "
                    "ect_to_ebeu\n"),
              "sensed-only");
    EXPECT_EQ(id_of("check double string: <$((1)/(a))>\n  (brackets are not part of the string)\n  value = inf\n"),
              "not-finite");
    EXPECT_EQ(id_of("check double string: <10V>\n  (brackets are not part of the string)\n  Halting...\n"),
              "bad-number");
    EXPECT_EQ(id_of("solve_linear: NaN found!\n   Halting...\n"), "nan");
    EXPECT_EQ(id_of("pick_word_1: index_word is too large! Halting..\n  chr_in = abc\n  index_word = 12\n"),
              "word-missing");
    EXPECT_EQ(id_of("eelu:set_values_1: some word has not been ticked.\n   word: wrong\n"), "unknown-word");
    EXPECT_EQ(id_of("find_word_3: word not found.\n   word is: vsrdc\n   message from calling routine:\n"
                    "   cct_class: eels_name not found\n   Halting...\n"),
              "unknown-type");
    EXPECT_EQ(id_of("find_word_3: word not found.\n   word is: gnd\n   message from calling routine:\n"
                    "   cct_class: something wrong with refnode statement.\n   Halting...\n"),
              "reference");
    EXPECT_EQ(id_of("solve_class: t_end for transient simulation\n   has not been specified. Halting...\n"),
              "no-t-end");
    EXPECT_EQ(id_of("solve_class: delt_const for transient/SSW simulation\n   has not been specified. Halting...\n"),
              "no-delt");
    EXPECT_EQ(id_of("solve_class: more then one method specified for\n   transient simulation? Halting...\n"),
              "two-rules");
    EXPECT_EQ(id_of("solve_class: <to> not found in\n   vary_parm statement. Halting..\n"), "bad-sweep");
    EXPECT_EQ(id_of("solve_class: filename not found in\n  the initial_sol card. Halting...\n"), "initial-sol");
    EXPECT_EQ(id_of("solve_class: filename not found in\n  an output block. Halting...\n"), "no-filename");
    EXPECT_EQ(id_of("circuit_file: end_solve not found. Halting...\n"), "no-end-solve");
    EXPECT_EQ(id_of("check double string: <1x>\n  (brackets are not part of the string)\n  Halting...\n"),
              "bad-number");
    EXPECT_EQ(id_of("write_trns: limit_lines is exceeded.\n  index_solve = 1, i_file = 0\n"), "limit-lines");
    EXPECT_EQ(id_of("write_ac: limit_lines is exceeded.\n  index_solve = 1, i_file = 0\n"), "limit-lines-of-sweep");
    EXPECT_EQ(id_of("write_dc: limit_lines is exceeded.\n  index_solve = 1, i_file = 0\n"), "limit-lines-of-sweep");
    EXPECT_EQ(id_of("row_file: output file a/b.dat could not be opened.\n  Halting...\n"), "cannot-write");
    EXPECT_EQ(id_of("dp_class::gbe_pwl_file:\n  file x.txt does not exist.\n  Halting...\n"), "missing-file");
    EXPECT_EQ(id_of("thyristor_g: DC not allowed.\n   Halting...\n"), "not-in-dc");
    EXPECT_EQ(id_of("r.ebe: r too small!\nr.ebe: r=0\nr.ebe: k_scale=1\n"), "value-of-element");
    EXPECT_EQ(id_of("circuit_file: title: not found. Halting...\n"), "no-title");
    EXPECT_EQ(id_of("solve_class: An unknown keyword is found\n  in the method card.\n  The word is: x\n"),
              "unknown-method");
    EXPECT_EQ(id_of("init_sol: previous solution does not exist?\n   check initial_sol statement. Halting...\n"),
              "no-previous");
    EXPECT_EQ(id_of("cct_class::set_rparm_1: parameter not identified in\n   one of the set_rparm type gbe.\n"
                    "   parameter name is: q\n"),
              "rparm-link");
    EXPECT_EQ(id_of("get_rparm_2 (gbe): multiple parameters? nttl=2\n  Halting..\n"), "rparm-source");
    EXPECT_EQ(id_of("main: post-processing is not available in this version.\n   Check this outvar: m\n"),
              "no-post-processing");
    EXPECT_EQ(id_of("a text that no program has ever printed"), "");
    EXPECT_EQ(id_of(""), "");
}

// A newcomer asks for what the first page shows.
TEST(find_advice, knows_every_message_that_the_readme_shows) {
    std::istringstream readme(::read_file(std::string(TARNEL_SOURCE) + "/README.md"));
    std::string text, all;
    int n = 0;
    bool shown = false;
    while (std::getline(readme, text)) {
        if (!text.starts_with("    ")) shown = false;
        if (shown && text.find(".in.run/") == std::string::npos) {  // not the list of files
            EXPECT_TRUE(text.starts_with("     ") || find_advice(text) != nullptr)
                << text;  // continued: with its first
            all += text + "\n";
            ++n;
        }
        if (text.starts_with("    $ "))
            shown = text.find("run") != std::string::npos && text.find("cat") == std::string::npos;
    }
    EXPECT_GE(n, 10);
    EXPECT_EQ(id_of(all.c_str()), "unknown-type");
    EXPECT_EQ(id_of("mat::set_mat_2: system matrix size is 3 x 3\n"), "goes-well");
    EXPECT_EQ(id_of("find_word_3: word not found.\n"), "word-not-found");
    EXPECT_EQ(id_of("no element type vsrdc is installed for eelement; near names: vsrcdc"), "unknown-type");
    EXPECT_EQ(id_of("mine.in:7:3: warning: node a has this one connection only"), "finding");
}

TEST(similar_patterns, find_a_misspelt_piece_of_a_message) {
    const auto first_id = [](const char* text) {
        const auto rows = similar_patterns(text, 3);
        return rows.empty() ? std::string() : std::string(rows[0]->id);
    };
    EXPECT_EQ(first_id("singular matrx"), "singular");
    EXPECT_EQ(first_id("word not ticked"), "unknown-word");
    EXPECT_EQ(first_id("the limit_lines was exceded"), "limit-lines");
    EXPECT_EQ(first_id("zebra crossing ahead"), "");
    EXPECT_EQ(first_id(""), "");
}

// The literals behind "error(", "warning_at(" ... and the codes of tables in the checks.
TEST(advice_of_code, knows_every_code_of_the_check) {
    int n = 0;
    for (const char* folder : {"src/tnl/check", "src/tnl/deck"})
        for (const auto& entry : fs::directory_iterator(fs::path(TARNEL_SOURCE) / folder)) {
            const std::string text = ::read_file(entry.path().string());
            for (const std::regex& form :
                 {std::regex("(?:error|warning)(?:_at)?\\(\\s*\"([a-z-]+)\""), std::regex("\", \"([a-z]+-[a-z-]+)\",")})
                for (std::sregex_iterator at(text.begin(), text.end(), form), end; at != end; ++at, ++n)
                    EXPECT_NE(advice_of_code((*at)[1].str()), nullptr) << (*at)[1] << " in " << entry.path();
        }
    EXPECT_GT(n, 100);
    EXPECT_EQ(advice_of_code("no-such-code"), nullptr);
}
