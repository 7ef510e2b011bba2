#include "tnl/cli/command_tree.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <set>

#include "tnl/common/exit_status.h"

namespace {

using namespace cli;

// Two commands with options of every kind.
struct some_app {
    CLI::App app{"tnl brews tea."};
    std::string leaf, cup, secret;
    int minutes = 3;
    bool sugar = false;
    some_app() {
        app.name("tnl");
        app.footer("statuses of all");
        CLI::App* brew = app.add_subcommand("brew", "Brew: it's [hot]");
        brew->add_option("LEAF", leaf, "What to brew")->required();
        brew->add_option("-c,--cup", cup, "Where to")->check(CLI::IsMember({"small", "large"}));
        brew->add_option("--minutes", minutes, "How long")->capture_default_str();
        brew->add_option("--plan", secret, "Not for people")->group("");
        brew->add_flag("--sugar", sugar, "Sweet");
        CLI::App* drink = app.add_subcommand("drink", "Drink");
        drink->add_option("ELEMENT", leaf, "What");
        drink->footer("Slowly.\n.Then stop.");
    }
};

TEST(command_tree, has_commands_options_and_what_their_values_are) {
    const some_app some;
    const command_node root = tree_of(some.app);
    EXPECT_EQ(root.name, "tnl");
    ASSERT_EQ(root.commands.size(), 2U);
    const command_node& brew = root.commands[0];
    EXPECT_EQ(brew.more, "");            // the footer of the root is not its own
    ASSERT_EQ(brew.options.size(), 5U);  // help first; hidden ones are left out
    const command_option& cup = brew.options[2];
    EXPECT_EQ(cup.names, (std::vector<std::string>{"-c", "--cup"}));
    EXPECT_EQ(cup.value, "TEXT");
    EXPECT_EQ(std::set<std::string>(cup.choices.begin(), cup.choices.end()), (std::set<std::string>{"small", "large"}));
    EXPECT_TRUE(brew.options[1].positional);
    EXPECT_TRUE(brew.options[1].required);
    EXPECT_EQ(brew.options[1].value, "LEAF");
    EXPECT_EQ(brew.options[3].value, "INT");
    EXPECT_EQ(brew.options[3].dflt, "3");
    EXPECT_EQ(brew.options[4].value, "");
    EXPECT_EQ(root.commands[1].more, "Slowly.\n.Then stop.");
    EXPECT_EQ(find_command(root, "drink"), &root.commands[1]);
    EXPECT_EQ(find_command(root, "spill"), nullptr);
}

TEST(completion, of_each_shell_names_commands_options_and_choices) {
    const some_app some;
    const command_node root = tree_of(some.app);
    for (const std::string& shell : known_shells) {
        const std::string text = completion_text(root, shell);
        for (const char* word : {"brew", "drink", "cup", "minutes", "sugar", "small", "large", "list --names"})
            EXPECT_NE(text.find(word), std::string::npos) << shell << " " << word;
        EXPECT_EQ(text.find("plan"), std::string::npos) << shell;
    }
    EXPECT_THROW(completion_text(root, "csh"), usage_error);
}

TEST(completion, takes_no_files_where_a_number_or_nothing_is_wanted) {
    const some_app some;
    const std::string text = completion_text(tree_of(some.app), "bash");
    EXPECT_NE(text.find("'brew --minutes') kind=none"), std::string::npos);
    EXPECT_NE(text.find("'brew -c' | 'brew --cup') kind=words"), std::string::npos);
    EXPECT_EQ(text.find("'brew --sugar'"), std::string::npos);
}

TEST(manual_page, has_every_option_and_no_line_that_begins_as_a_macro_by_accident) {
    const some_app some;
    const command_node root = tree_of(some.app);
    const std::string brew = manual_page(root, root.commands[0], "tnl 1");
    EXPECT_TRUE(brew.starts_with(".TH TNL\\-BREW 1 \"\" \"tnl 1\""));
    EXPECT_NE(brew.find("\n.B tnl brew\n[\\fIOPTION\\fR]...\n\\fILEAF\\fR\n"), std::string::npos);
    EXPECT_NE(brew.find("\\fB\\-c\\fR, \\fB\\-\\-cup\\fR \\fB"), std::string::npos);
    EXPECT_NE(brew.find("\\fB\\-\\-minutes\\fR \\fIINT\\fR\nHow long. If not given: 3.\n"), std::string::npos);
    EXPECT_EQ(brew.find("plan"), std::string::npos);
    EXPECT_EQ(brew.find("statuses of all"), std::string::npos);
    const std::string drink = manual_page(root, root.commands[1], "tnl 1");
    EXPECT_NE(drink.find("\nSlowly.\n.br\n\\&.Then stop.\n"), std::string::npos);
}

TEST(manual_page, of_the_program_names_its_commands_and_their_pages) {
    const some_app some;
    const command_node root = tree_of(some.app);
    const std::string page = manual_page(root, root, "tnl 1");
    EXPECT_NE(page.find("\ntnl \\- brews tea\n"), std::string::npos);
    EXPECT_NE(page.find("\\fBdrink\\fR\nDrink.\n"), std::string::npos);
    EXPECT_NE(page.find(".BR tnl\\-brew (1)"), std::string::npos);
    EXPECT_EQ(page_title(root, root.commands[1]), "tnl-drink");
}

}  // namespace
