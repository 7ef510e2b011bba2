// The explicit library of this build as a whole, and what composites of explicit blocks say of their blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "explicit_unit.h"
#include "library/basic_form.h"
#include "library/composite/composite_reader.h"

namespace {

const xels_class& installed_xels() {
    static const xels_class lib = [] {
        xels_class l;
        text_file file = open_text_file(std::string(TARNEL_SHARE) + "/xels.aux", "xels_class");
        read_composites(file, xels_form, installed_xbes(), installed_xbac(), l);
        return l;
    }();
    return lib;
}

TEST(installed_explicit_blocks, leave_room_in_every_pool_of_their_library) {
    const xbes_class& lib = installed_xbes();
    EXPECT_LE(lib.n(), xbes_form.max_entries - 2);
    for (const function_table* t : {&lib.func, &lib.func_g, &lib.func_h})
        EXPECT_LE(t->n_ttlf(), xbes_form.max_functions);
    for (const list_line& l : xbes_form.lines)
        std::visit(
            [&](auto member) {
                int n = 0;
                if constexpr (requires { (lib.list.*member).count(0); })
                    for (int e = 0; e < lib.n(); ++e) n += (lib.list.*member).count(e);
                EXPECT_LE(n, l.max_words) << l.keyword;
            },
            l.member);
}

// Blocks inside of composites that consist of several.
const std::set<std::string> parts = {"bldc1_out", "indmc1_out", "indmc2a_out", "sum_filter_1"};

TEST(installed_explicit_blocks, are_each_known_to_decks_under_their_name) {
    for (int e = 0; e < installed_xbes().n(); ++e) {
        const std::string name = installed_xbes().list.entry.str(e);
        EXPECT_EQ(installed_xels().list.find(name) < 0, parts.contains(name)) << name;
    }
}

// Whether real parameter j of composite c goes to its small-signal half.
bool feeds_small_signals(const composite_library& lib, int c, int j) {
    for (int k = 0; k < lib.beac.n_be(c); ++k) {
        const int b = lib.beac.first_be[static_cast<std::size_t>(c)] + k;
        const int* link = lib.beac.rprm_flag.row(b);
        if (std::find(link, link + lib.beac.rprm_flag.size(b), j) != link + lib.beac.rprm_flag.size(b)) return true;
    }
    return false;
}

// Words of the statement that stand for others of the same name: a composite of one block adds nothing of its own but
// what small signals alone ask for.
TEST(installed_explicit_blocks, have_composites_with_their_variables_parameters_and_defaults) {
    const xels_class& xels = installed_xels();
    const library_lists& basic = installed_xbes().list;
    for (int c = 0; c < xels.n(); ++c) {
        const std::string name = xels.list.entry.str(c);
        if (xels.be.n_be(c) != 1) continue;
        const int e = basic.find(name), b = xels.be.first_be[static_cast<std::size_t>(c)];
        ASSERT_GE(e, 0) << name;
        ASSERT_EQ(xels.list.xvr.count(c), basic.xvr.count(e)) << name;
        for (int j = 0; j < basic.xvr.count(e); ++j) EXPECT_EQ(xels.list.xvr.word(c, j), basic.xvr.word(e, j)) << name;
        const auto same = [&](const auto& ours, const auto& theirs, const row_table<int>& flag) {
            for (int j = 0; j < ours.count(c); ++j) {
                const int k = theirs.find(e, ours.word(c, j));
                if (&flag == &xels.be.rprm_flag && k < 0 && feeds_small_signals(xels, c, j)) continue;
                ASSERT_GE(k, 0) << name << ' ' << ours.word(c, j);
                EXPECT_EQ(ours.value(c, j), theirs.value(e, k)) << name << ' ' << ours.word(c, j);
                EXPECT_EQ(flag.row(b)[k], j) << name << ' ' << ours.word(c, j);
            }
        };
        same(xels.list.iprm, basic.iprm, xels.be.iprm_flag);
        same(xels.list.sprm, basic.sprm, xels.be.sprm_flag);
        same(xels.list.rprm, basic.rprm, xels.be.rprm_flag);
        same(xels.list.ig, basic.ig, xels.be.ig_flag);
        EXPECT_EQ(xels.list.ig.count(c), basic.ig.count(e)) << name;
    }
}

TEST(installed_explicit_blocks, have_small_signal_halves_where_they_say_so) {
    const xels_class& xels = installed_xels();
    std::set<int> used;
    for (int c = 0; c < xels.n(); ++c) {
        const std::string name = xels.list.entry.str(c);
        EXPECT_EQ(xels.flag.allow_ac[static_cast<std::size_t>(c)] != 0, xels.beac.n_be(c) > 0) << name;
        for (int k = 0; k < xels.beac.n_be(c); ++k) {
            const int b = xels.beac.first_be[static_cast<std::size_t>(c)] + k;
            const int form = xels.beac.i_be[static_cast<std::size_t>(b)];
            used.insert(form);
            // What a deck gives goes to the parameter of the same name.
            for (int j = 0; j < installed_xbac().list.rprm.count(form); ++j)
                EXPECT_EQ(xels.beac.rprm_flag.row(b)[j],
                          xels.list.rprm.find(c, installed_xbac().list.rprm.word(form, j)))
                    << name;
        }
    }
    EXPECT_EQ(static_cast<int>(used.size()), installed_xbac().n());  // no form without a block
}

TEST(installed_explicit_blocks, offer_every_output_as_an_output_variable) {
    const xels_class& xels = installed_xels();
    for (int c = 0; c < xels.n(); ++c) {
        const std::string name = xels.list.entry.str(c);
        if (xels.be.n_be(c) != 1) continue;
        const explicit_unit u(name);
        std::set<int> offered;  // variables
        for (int j = 0; j < xels.ov.count(c); ++j)
            if (xels.ov.kind[static_cast<std::size_t>(xels.ov.at(c, j))] == ov_xvar)
                offered.insert(xels.ov.index[static_cast<std::size_t>(xels.ov.at(c, j))]);
        EXPECT_GE(static_cast<int>(offered.size()), u.n_outputs()) << name;
    }
}

}  // namespace
