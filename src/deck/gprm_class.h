// gprm_class.h -- the deck's named constants, and the small expressions of the real ones.
#pragma once
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "deck/circuit_file.h"

// One operand of an expression: absent, a literal, or another real parameter (always an earlier one).
struct operand {
    enum source : int { absent = 0, literal = 1, parameter = 2 } from = absent;
    int index = -1;    // of the parameter
    double value = 0;  // of the literal
};

// Operation codes: 0 none, 1 plus, 2 minus, 3 times, 4 divide, 5 power, 6 exp, 7 sin, 8 cos.
struct expression {
    int operation = 0;
    int n_arg = 0;  // 1 function, 2 binary operation
    operand arg1, arg2;
};
double evaluate(const expression& e, const double* parameter);

// The text of an expression, cut but not looked up: function(arg1), or (arg1)op(arg2).
struct expression_text {
    bool is_expression = false;  // begins with "$("
    bool is_function = false;
    std::string op, arg1, arg2;
};
// Halts when the closing bracket is missing, or a bracket inside is.
expression_text expr_eval_1(std::string_view word);
// Code of an operator or function word; -1 if there is no such.
int operation_code(const expression_text& text);

struct gprm_class {
    std::vector<std::string> gint_name, gstr_name, greal_name;
    std::vector<int> gint;                // [n_gint]
    std::vector<std::string> gstr;        // [n_gstr] at most 49 characters
    std::vector<double> greal_base;       // [n_greal] as read, and as set by set_parm
    std::vector<double> greal;            // [n_greal] current values
    std::vector<expression> expr;         // [n_greal]
    std::vector<std::string> greal_word;  // [n_greal] the expression as in the deck; of a number the parameter's name
    int n_expr = 0;
    bool flag_expr = false;                    // some parameter has an expression
    std::vector<std::vector<int>> dependents;  // [n_greal] parameters that depend on it, itself first
    std::unordered_map<std::string, int> gint_index, gstr_index, greal_index;  // first definition wins

    int find_greal(std::string_view name) const;  // -1 if none

    // Value words of a deck: a parameter's name of the same kind, else a number (a string: the word).
    int gprm_int_1(std::string_view word) const;
    double gprm_double_1(std::string_view word) const;
    std::string gprm_string_1(std::string_view word) const;

    void expr_1();  // evaluates all expressions once, in order of definition; no-expression ones keep their value
    void check_finite() const;  // halts at the first real parameter whose value is infinite or not a number
    // Halts with the framed message unless parameter i depends on no other.
    void expr_3(int i, const std::vector<std::string>& message) const;
};

// Value of a keyword-value pair if the keyword is the wanted one; else false, and value stays.
bool word_pair_int_1(const gprm_class& gprm, std::string_view keyword, std::string_view word, std::string_view wanted,
                     int& value);
bool word_pair_double_1(const gprm_class& gprm, std::string_view keyword, std::string_view word,
                        std::string_view wanted, double& value);

gprm_class read_gprm(const circuit_file& cf);
