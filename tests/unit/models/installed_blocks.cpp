// The general libraries of this build as a whole, and what composites of blocks say of their blocks.
#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "block_unit.h"
#include "library/basic_form.h"
#include "library/composite/composite_reader.h"

namespace {

void expect_room(const basic_library& lib, const basic_form& form) {
    EXPECT_LE(lib.n(), form.max_entries - 2);
    EXPECT_LE(lib.func.n_ttlf(), form.max_functions);
    for (const list_line& l : form.lines)
        std::visit(
            [&](auto member) {
                int n = 0;
                if constexpr (requires { (lib.list.*member).count(0); })
                    for (int e = 0; e < lib.n(); ++e) n += (lib.list.*member).count(e);
                EXPECT_LE(n, l.max_words) << l.keyword;
            },
            l.member);
}

TEST(installed_blocks, leave_room_in_every_pool_of_their_library) {
    expect_room(installed_gbes(), gbes_form);
    expect_room(installed_gbac(), gbac_form);
}

TEST(installed_blocks, have_first_guesses_only_where_they_are_planned) {
    std::set<std::string> with;
    for (int e = 0; e < installed_gbes().n(); ++e)
        if (installed_gbes().list.ig.count(e) > 0) with.insert(installed_gbes().list.entry.str(e));
    EXPECT_EQ(with, (std::set<std::string>{"intgrtr", "intgrtr2", "intgrtr_reset_1", "lag_1", "pll_1a"}));
}

gels_class installed_gels() {
    gels_class lib;
    text_file file = open_text_file(std::string(TARNEL_SHARE) + "/gels.aux", "gels_class");
    read_composites(file, gels_form, installed_gbes(), installed_gbac(), lib);
    return lib;
}

// Composites of post-processing have names of their own: they hold a block that only reads.
bool is_postprocessor(const gels_class& gels, int c) {
    const auto i = static_cast<std::size_t>(c);
    return gels.flag.postprocessor[i] || gels.flag.postprocessor_ac[i];
}

// A controller or modulator, whose body has more than one block: it has words of its own.
bool is_assembly(const gels_class& gels, int c) { return gels.be.n_be(c) > 1; }

// Words of the statement that stand for others of the same name: the composite adds nothing of its own.
TEST(installed_blocks, have_composites_of_their_name_with_their_variables_parameters_and_defaults) {
    const gels_class gels = installed_gels();
    int n_blocks = 0;
    for (int c = 0; c < gels.n(); ++c) n_blocks += !is_postprocessor(gels, c) && !is_assembly(gels, c);
    ASSERT_EQ(n_blocks, installed_gbes().n());
    const library_lists& basic = installed_gbes().list;
    for (int c = 0; c < gels.n(); ++c) {
        if (is_postprocessor(gels, c) || is_assembly(gels, c)) continue;
        const std::string name = gels.list.entry.str(c);
        const int e = basic.find(name);
        ASSERT_GE(e, 0) << name;
        const int b = gels.be.first_be[static_cast<std::size_t>(c)];
        ASSERT_EQ(gels.be.n_be(c), 1) << name;
        EXPECT_EQ(gels.be.name[static_cast<std::size_t>(b)], name);
        ASSERT_EQ(gels.list.vr.count(c), basic.vr.count(e)) << name;
        for (int j = 0; j < basic.vr.count(e); ++j) {
            EXPECT_EQ(gels.list.vr.word(c, j), basic.vr.word(e, j)) << name;
            EXPECT_EQ(gels.be.vr.row(b)[j], j) << name;
        }
        // A word that the block does not have is one of its small-signal form, a_ac of a source.
        const auto feeds_small_signals = [&](std::string_view word) {
            const int j = gels.list.rprm.find(c, word), row = gels.beac.first_be[static_cast<std::size_t>(c)];
            const int* flag = gels.beac.n_be(c) > 0 ? gels.beac.rprm_flag.row(row) : nullptr;
            return flag && j >= 0 &&
                   std::find(flag, flag + gels.beac.rprm_flag.size(row), j) != flag + gels.beac.rprm_flag.size(row);
        };
        const auto same = [&](const auto& ours, const auto& theirs, const row_table<int>& flag) {
            for (int j = 0; j < ours.count(c); ++j) {
                const int k = theirs.find(e, ours.word(c, j));
                if (k < 0 && feeds_small_signals(ours.word(c, j))) continue;
                ASSERT_GE(k, 0) << name << ' ' << ours.word(c, j);
                EXPECT_EQ(ours.value(c, j), theirs.value(e, k)) << name << ' ' << ours.word(c, j);
                EXPECT_EQ(flag.row(b)[k], j) << name << ' ' << ours.word(c, j);
            }
        };
        same(gels.list.iprm, basic.iprm, gels.be.iprm_flag);
        same(gels.list.sprm, basic.sprm, gels.be.sprm_flag);
        same(gels.list.rprm, basic.rprm, gels.be.rprm_flag);
        same(gels.list.sv, basic.sv, gels.be.sv_flag);
        same(gels.list.ig, basic.ig, gels.be.ig_flag);
        EXPECT_EQ(gels.list.iprm.count(c), basic.iprm.count(e)) << name;
        EXPECT_EQ(gels.list.sv.count(c), basic.sv.count(e)) << name;
        EXPECT_EQ(gels.list.ig.count(c), basic.ig.count(e)) << name;
    }
}

// Every function of a block is the row of one output or auxiliary variable, so the composite shows as many variables.
TEST(installed_blocks, offer_their_outputs_and_states_as_output_variables) {
    const gels_class gels = installed_gels();
    for (int c = 0; c < gels.n(); ++c) {
        if (is_postprocessor(gels, c) || is_assembly(gels, c)) continue;
        const std::string name = gels.list.entry.str(c);
        int n_shown = 0;
        for (int j = 0; j < gels.ov.count(c); ++j) {
            const int kind = gels.ov.kind[static_cast<std::size_t>(gels.ov.at(c, j))];
            n_shown += kind == ov_var || kind == ov_gaux;
        }
        const int e = installed_gbes().list.find(name);
        const bool only_reads = name == "pp_in_1" || name == "pp_in_2" || name == "set_rparm";
        const int n_read = installed_gbes().list.vr.count(e);
        EXPECT_EQ(n_shown, only_reads ? n_read : installed_gbes().func.n_func(e)) << name;
    }
}

}  // namespace
