#include "deck/gprm_class.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "deck/deck_dumps.h"
#include "halt_throws.h"
#include "temp_folder.h"

namespace {

gprm_class globals(const std::string& statements) {
    return read_gprm(circuit_file_of(
        file_chr_of("title: t\n" + statements + "\nbegin_circuit\ngreal late=1\nend_circuit\nend_cf\n")));
}

std::string bad_text(const std::string& kind, const std::string& word) {
    return "check " + kind + " string: <" + word + ">\n  (brackets are not part of the string)\n  Halting...\n";
}

double value_of(const gprm_class& g, const std::string& name) { return g.gprm_double_1(name); }

}  // namespace

TEST(globals, come_in_three_kinds_that_never_cross) {
    const gprm_class g = globals("ginteger n=3 m=-1\ngstring f=file.dat\ngreal n=1k f=2");
    EXPECT_EQ(g.gprm_int_1("n"), 3);
    EXPECT_EQ(g.gprm_int_1("m"), -1);
    EXPECT_EQ(g.gprm_double_1("n"), 1000.0);
    EXPECT_EQ(g.gprm_string_1("f"), "file.dat");
    EXPECT_EQ(g.gprm_string_1("n"), "n");
    EXPECT_HALT(g.gprm_int_1("f"), bad_text("integer", "f"));
    EXPECT_HALT(g.gprm_double_1("m"), bad_text("double", "m"));
}

TEST(globals, fall_through_to_plain_values) {
    const gprm_class g = globals("");
    EXPECT_EQ(g.gprm_int_1("-12"), -12);
    EXPECT_EQ(g.gprm_double_1("1.5k"), 1500.0);
    EXPECT_EQ(g.gprm_string_1("text"), "text");
    EXPECT_EQ(g.find_greal("late"), -1);  // statements of the circuit block are not read
    EXPECT_FALSE(g.flag_expr);
}

TEST(globals, take_the_first_of_two_definitions) {
    const gprm_class g = globals("greal a=1 a=2\ngreal b=$((a)*(10))\nginteger n=1\nginteger n=2\ngstring s=x s=y");
    EXPECT_EQ(value_of(g, "a"), 1.0);
    EXPECT_EQ(value_of(g, "b"), 10.0);
    EXPECT_EQ(g.gprm_int_1("n"), 1);
    EXPECT_EQ(g.gprm_string_1("s"), "x");
}

TEST(globals, ignore_an_odd_trailing_word_but_refuse_a_statement_without_pairs) {
    EXPECT_EQ(globals("greal a=1 b").greal_name, (std::vector<std::string>{"a"}));
    EXPECT_EQ(globals("greal a").greal_name.size(), 0u);
    for (const char* word : {"ginteger", "gstring", "greal"})
        EXPECT_HALT(globals(word), "gprm_class: check " + std::string(word) + " statement. Halting...\n");
}

TEST(globals, halt_on_bad_values) {
    EXPECT_HALT(globals("ginteger n=1.5"), bad_text("integer", "1.5"));
    EXPECT_HALT(globals("ginteger n=99999999999"), bad_text("integer", "99999999999"));
    EXPECT_HALT(globals("greal a=1x"), bad_text("double", "1x"));
    EXPECT_HALT(globals("greal a=1 b=a"), bad_text("double", "a"));  // a bare name is no expression
    EXPECT_EQ(globals("gstring s=" + std::string(49, 'x')).gstr[0].size(), 49u);
    EXPECT_HALT(globals("gstring s=" + std::string(50, 'x')), "strcpy_chk: M is too small. l=50\n");
}

TEST(word_pair, takes_the_value_of_the_wanted_keyword_only) {
    const gprm_class g = globals("ginteger n=3\ngreal a=2k");
    int i = -7;
    double x = -7;
    EXPECT_FALSE(word_pair_int_1(g, "k", "n", "other", i));
    EXPECT_FALSE(word_pair_double_1(g, "k", "a", "other", x));
    EXPECT_EQ(i, -7);
    EXPECT_EQ(x, -7);
    EXPECT_TRUE(word_pair_int_1(g, "k", "n", "k", i));
    EXPECT_TRUE(word_pair_double_1(g, "k", "a", "k", x));
    EXPECT_EQ(i, 3);
    EXPECT_EQ(x, 2000.0);
}

// ---- expressions

TEST(expressions, have_five_operations_and_three_functions) {
    const gprm_class g = globals(
        "greal a=6 b=1.5k p=$((a)+(b)) m=$((a)-(b)) t=$((a)*(b)) d=$((b)/(a)) w=$((a)**(3))\n"
        "greal e=$(exp(1)) s=$(sin(a)) c=$(cos(0.5)) l=$((1.5k)+(2m))");
    EXPECT_EQ(value_of(g, "p"), 1506.0);
    EXPECT_EQ(value_of(g, "m"), -1494.0);
    EXPECT_EQ(value_of(g, "t"), 9000.0);
    EXPECT_EQ(value_of(g, "d"), 250.0);
    EXPECT_DOUBLE_EQ(value_of(g, "w"), 216.0);
    EXPECT_DOUBLE_EQ(value_of(g, "e"), 2.718281828459045);
    EXPECT_DOUBLE_EQ(value_of(g, "s"), std::sin(6.0));
    EXPECT_DOUBLE_EQ(value_of(g, "c"), std::cos(0.5));
    EXPECT_DOUBLE_EQ(value_of(g, "l"), 1500.002);
    EXPECT_EQ(g.n_expr, 9);
    EXPECT_TRUE(g.flag_expr);
}

TEST(expressions, are_coded_by_operation_and_kind_of_operand) {
    const gprm_class g = globals("greal a=2 b=$((3)**(a)) c=$(cos(b))");
    EXPECT_EQ(g.expr[0].operation, 0);
    EXPECT_EQ(g.expr[1].operation, 5);
    EXPECT_EQ(g.expr[1].n_arg, 2);
    EXPECT_EQ(g.expr[1].arg1.from, operand::literal);
    EXPECT_EQ(g.expr[1].arg1.value, 3.0);
    EXPECT_EQ(g.expr[1].arg2.from, operand::parameter);
    EXPECT_EQ(g.expr[1].arg2.index, 0);
    EXPECT_EQ(g.expr[2].operation, 8);
    EXPECT_EQ(g.expr[2].n_arg, 1);
    EXPECT_EQ(g.expr[2].arg2.from, operand::absent);
}

TEST(expressions, follow_a_change_of_their_parameters) {
    gprm_class g = globals("greal a=1k b=$((a)*(2)) c=$((b)+(a))");
    EXPECT_EQ(value_of(g, "b"), 2000.0);
    g.greal_base[0] = g.greal[0] = 2e3;
    g.expr_1();
    EXPECT_EQ(value_of(g, "b"), 4000.0);
    EXPECT_EQ(value_of(g, "c"), 6000.0);
}

TEST(expressions, whose_value_is_no_finite_number_stop_the_run_with_it) {
    const auto text = [](const std::string& word, const std::string& value) {
        return "check double string: <" + word + ">\n  (brackets are not part of the string)\n  value = " + value +
               "\n  Halting...\n";
    };
    EXPECT_HALT(globals("greal z=0 q=$((1)/(z))"), text("$((1)/(z))", "inf"));
    EXPECT_HALT(globals("greal z=0 q=$((z)/(z))"), text("$((z)/(z))", "nan"));
    EXPECT_HALT(globals("greal q=$(exp(1e9))"), text("$(exp(1e9))", "inf"));
    EXPECT_HALT(globals("greal a=NaN"), text("NaN", "nan"));
}

TEST(expressions, know_earlier_parameters_only) {
    EXPECT_HALT(globals("greal b=$((a)+(1)) a=1"), bad_text("double", "a"));
    EXPECT_HALT(globals("greal a=$((a)+(1))"), bad_text("double", "a"));
    EXPECT_HALT(globals("greal b=$((1)+(a))\ngreal a=1"), bad_text("double", "a"));
    EXPECT_HALT(globals("greal b=$(exp())"), "chr_to_double: word_in is empty!\n");
    EXPECT_HALT(globals("greal b=$((1)+((2)*(3)))"), bad_text("double", "(2)*(3)"));  // no nesting
}

TEST(expressions, halt_on_faults_of_their_form) {
    struct row {
        const char *word, *expected;
    };
    const row rows[] = {
        {"$(", "expr_eval_1: $( was found, but closing bracket\n  was not found. Halting...\n"},
        {"$((a)+(b)",
         "expr_eval_2: closing bracket was not found.\n  input string is: (a)+(b\n  Error 3. Halting...\n"},
        {"$((a)+(b))x", "expr_eval_1: $( was found, but closing bracket\n  was not found. Halting...\n"},
        {"$((a)", "expr_eval_2: closing bracket was not found.\n  input string is: (a\n  Error 1. Halting...\n"},
        {"$((a))", "expr_eval_2: opening bracket was not found.\n  input string is: (a)\n  Error 2. Halting...\n"},
        {"$((a)+b)", "expr_eval_2: opening bracket was not found.\n  input string is: (a)+b\n  Error 2. Halting...\n"},
        {"$((a)+(b)c)",
         "expr_eval_2: closing bracket was not found.\n  input string is: (a)+(b)c\n"
         "  Error 3. Halting...\n"},
        {"$()", "expr_eval_2: opening bracket was not found.\n  input string is: \n  Error 4. Halting...\n"},
        {"$(exp)", "expr_eval_2: opening bracket was not found.\n  input string is: exp\n  Error 4. Halting...\n"},
        {"$(exp(1)", "expr_eval_2: closing bracket was not found.\n  input string is: exp(1\n  Error 5. Halting...\n"},
        {"$(tan(1))", "gprm_class: unknown function in\n   global string.\n   string is tan(1)\n"},
        {"$(Exp(1))", "gprm_class: unknown function in\n   global string.\n   string is Exp(1)\n"},
        {"$((1)^(2))", "gprm_class: unknown operation in\n   global string.\n   string is (1)^(2)\n"},
        {"$((1)(2))", "gprm_class: unknown operation in\n   global string.\n   string is (1)(2)\n"},
        {"$((1)exp(2))", "gprm_class: unknown operation in\n   global string.\n   string is (1)exp(2)\n"},
        {"$(+(2))", "gprm_class: unknown function in\n   global string.\n   string is +(2)\n"},
    };
    for (const row& r : rows) EXPECT_HALT(globals(std::string("greal x=") + r.word), r.expected);
}

TEST(expr_eval_1, refuses_separators_inside) {
    EXPECT_HALT(expr_eval_1("$((a) +(b))"), "expr_eval_1: a space was found in $(xxx).\n");
    EXPECT_HALT(expr_eval_1("$((a)\t+(b))"), "expr_eval_1: a tab was found in $(xxx).\n");
}

TEST(expr_eval_1, leaves_other_words_alone) {
    for (const char* word : {"", "$", "1k", "(a)+(b)", "a$((1)+(2))"}) EXPECT_FALSE(expr_eval_1(word).is_expression);
}

// ---- dependence

TEST(dependents, list_a_parameter_first_and_then_all_that_hang_on_it) {
    const gprm_class g = globals("greal a=1 b=$((a)*(2)) c=5 d=$((b)+(c)) e=$(exp(1))");
    EXPECT_EQ(g.dependents[0], (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(g.dependents[1], (std::vector<int>{1, 3}));
    EXPECT_EQ(g.dependents[2], (std::vector<int>{2, 3}));
    EXPECT_EQ(g.dependents[3], (std::vector<int>{3}));
    EXPECT_EQ(g.dependents[4], (std::vector<int>{4}));
}

TEST(dependents, are_the_transitive_closure) {
    std::mt19937 rng(5);
    for (int trial = 0; trial < 50; ++trial) {
        const int n = 1 + static_cast<int>(rng() % 20);
        std::vector<std::vector<int>> depends(static_cast<std::size_t>(n),
                                              std::vector<int>(static_cast<std::size_t>(n)));
        std::string statements;
        for (int i = 0; i < n; ++i) {
            const std::size_t row = static_cast<std::size_t>(i);
            depends[row][row] = 1;
            statements += "greal p" + std::to_string(i) + "=";
            if (i == 0 || rng() % 3 == 0) {
                statements += "1\n";
                continue;
            }
            const unsigned a = rng() % row, b = rng() % row;
            statements += "$((p" + std::to_string(a) + ")+(p" + std::to_string(b) + "))\n";
            for (std::size_t k = 0; k < row; ++k) depends[row][k] = depends[a][k] | depends[b][k];
        }
        const gprm_class g = globals(statements);
        for (int j = 0; j < n; ++j) {
            std::vector<int> expected;
            for (int i = j; i < n; ++i)
                if (depends[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)]) expected.push_back(i);
            EXPECT_EQ(g.dependents[static_cast<std::size_t>(j)], expected);
        }
    }
}

TEST(dependents, of_a_chain_are_limited_before_they_fill_the_memory) {
    std::string chain = "greal p0=1\n";
    for (int i = 1; i < 10000; ++i) {
        chain += i % 100 == 1 ? "greal" : "";
        chain += " p" + std::to_string(i) + "=$((p" + std::to_string(i - 1) + ")+(1))" + (i % 100 == 0 ? "\n" : "");
    }
    EXPECT_HALT(globals(chain),
                "gprm_class: the greal parameters depend on each other\n   in too many ways. Halting...\n");
}

TEST(expr_3, halts_on_a_parameter_that_depends_on_others) {
    const gprm_class g = globals("greal a=1 b=$((2)*(a)) c=$(exp(1))");
    const std::vector<std::string> message{"solve_class: trying to set a global parameter",
                                           "   which depends on others?"};
    g.expr_3(0, message);
    g.expr_3(2, message);
    EXPECT_HALT(g.expr_3(1, message),
                "greal parm no. 1 is not independent!\n  message from the calling routine:\n"
                "solve_class: trying to set a global parameter\n   which depends on others?\n  Halting...\n");
}

TEST(write_glbl_dat, writes_all_parameters) {
    const temp_folder here;
    write_glbl_dat(globals("ginteger n=3\ngstring f=x.dat\ngreal a=1k b=$((a)*(2))"));
    EXPECT_EQ(read_file("glbl.dat"),
              "gprm_class\nn_gint = 1\n  i = 0, name = n, value = 3\nn_gstr = 1\n  i = 0, name = f, value = x.dat\n"
              "n_greal = 2\nn_expr = 1\nflag_expr = 1\n"
              "  i = 0, name = a, base = 1000, value = 1000, operation = 0, n_arg = 0, dependents = 0 1\n"
              "  i = 1, name = b, base = 0, value = 2000, operation = 3, n_arg = 2, arg1 = a, arg2 = 2, "
              "dependents = 1\n");
}
