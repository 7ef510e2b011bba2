#include "deck/gprm_class.h"

#include <algorithm>
#include <cmath>

#include "base/halt.h"

namespace {

// A chain of n parameters has n^2/2 dependents in all; a deck beyond this is refused before it fills the memory.
constexpr std::size_t max_dependents = 20000000;

struct operation_word {
    std::string_view word;
    bool is_function;
    int code;
};
constexpr operation_word operation_words[] = {
    {"+", false, 1},  {"-", false, 2},  {"*", false, 3},  {"/", false, 4},
    {"**", false, 5}, {"exp", true, 6}, {"sin", true, 7}, {"cos", true, 8},
};

[[noreturn]] void bad_bracket(const char* which, std::string_view inner, int number) {
    halt({line("expr_eval_2: ", which, " bracket was not found."), line("  input string is: ", inner),
          line("  Error ", number, ". Halting...")});
}

// Cuts the text between the outer brackets of "$(...)". A form ends with its last closing bracket; there is no nesting,
// so whatever stands between an opening bracket and that one is an operand.
void expr_eval_2(std::string_view inner, expression_text& text) {
    constexpr auto none = std::string_view::npos;
    text.is_function = inner.empty() || inner[0] != '(';
    if (text.is_function) {
        const std::size_t open = inner.find('(');
        if (open == none) bad_bracket("opening", inner, 4);
        if (inner.back() != ')') bad_bracket("closing", inner, 5);
        text.op = inner.substr(0, open);
        text.arg1 = inner.substr(open + 1, inner.size() - open - 2);
        return;
    }
    const std::size_t close = inner.find(')');
    if (close == none) bad_bracket("closing", inner, 1);
    const std::size_t open = inner.find('(', close);
    if (open == none) bad_bracket("opening", inner, 2);
    if (inner.back() != ')') bad_bracket("closing", inner, 3);
    text.arg1 = inner.substr(1, close - 1);
    text.op = inner.substr(close + 1, open - close - 1);
    text.arg2 = inner.substr(open + 1, inner.size() - open - 2);
}

double operand_value(const operand& a, const double* parameter) {
    return a.from == operand::parameter ? parameter[a.index] : a.value;
}

// A parameter that stands earlier in the deck, or a number.
operand read_operand(const gprm_class& gprm, std::string_view word) {
    operand a;
    a.index = gprm.find_greal(word);
    a.from = a.index == -1 ? operand::literal : operand::parameter;
    if (a.from == operand::literal) a.value = chr_to_double(word);
    return a;
}

expression read_expression(const gprm_class& gprm, std::string_view word, const expression_text& text) {
    expression e;
    e.operation = operation_code(text);
    if (e.operation == -1)
        halt({text.is_function ? "gprm_class: unknown function in" : "gprm_class: unknown operation in",
              "   global string.", line("   string is ", word.substr(2, word.size() - 3))});
    e.n_arg = text.is_function ? 1 : 2;
    e.arg1 = read_operand(gprm, text.arg1);
    if (!text.is_function) e.arg2 = read_operand(gprm, text.arg2);
    return e;
}

void add_gint(gprm_class& g, const std::string& name, std::string_view word) {
    g.gint.push_back(chr_to_int(word));
    g.gint_index.try_emplace(name, static_cast<int>(g.gint.size()) - 1);
    g.gint_name.push_back(name);
}

void add_gstr(gprm_class& g, const std::string& name, std::string_view word) {
    g.gstr.push_back(strcpy_chk(word, 50));
    g.gstr_index.try_emplace(name, static_cast<int>(g.gstr.size()) - 1);
    g.gstr_name.push_back(name);
}

// The name is entered behind its expression, which can therefore name earlier parameters only.
void add_greal(gprm_class& g, const std::string& name, std::string_view word) {
    const expression_text text = expr_eval_1(word);
    expression e;
    double value = 0;
    if (text.is_expression) {
        e = read_expression(g, word, text);
        ++g.n_expr;
    } else {
        value = chr_to_double(word);
    }
    g.greal_index.try_emplace(name, static_cast<int>(g.greal.size()));
    g.greal_name.push_back(name);
    g.greal_base.push_back(value);
    g.greal.push_back(value);
    g.expr.push_back(e);
    g.greal_word.push_back(text.is_expression ? std::string(word) : name);
}

struct global_statement {
    std::string_view keyword;
    void (*add)(gprm_class&, const std::string& name, std::string_view word);
};
constexpr global_statement global_statements[] = {{"ginteger", add_gint}, {"gstring", add_gstr}, {"greal", add_greal}};

// Up to begin_circuit, and in that place, where a deck under examination lacks it.
void read_statements(gprm_class& g, const circuit_file& cf, const global_statement& kind) {
    for (int i = 0; i <= cf.n_begin_cct; ++i) {
        if (!cf.text.begins(i, kind.keyword)) continue;
        reading(i, [&] {
            const words w = circuit_line(cf.text, i);
            if (w.size() == 1) halt({line("gprm_class: check ", kind.keyword, " statement. Halting...")});
            for (int j = 1; j + 1 < w.size(); j += 2)
                reading(i, [&] {
                    at_word(j + 1);
                    kind.add(g, w.str(j), w[j + 1]);
                });
        });
    }
}

// Every parameter that can be reached from one along "stands in the expression of".
void find_dependents(gprm_class& g) {
    const std::size_t n = g.greal.size();
    std::vector<std::vector<int>> direct(n);
    for (std::size_t i = 0; i < n; ++i)
        for (const operand& a : {g.expr[i].arg1, g.expr[i].arg2})
            if (a.from == operand::parameter) direct[static_cast<std::size_t>(a.index)].push_back(static_cast<int>(i));

    g.dependents.assign(n, {});
    std::vector<std::size_t> seen_for(n, n);  // the parameter whose list it was last entered in
    std::size_t total = 0;
    for (std::size_t i = 0; i < n; ++i) {
        std::vector<int>& list = g.dependents[i];
        list.push_back(static_cast<int>(i));
        for (std::size_t k = 0; k < list.size(); ++k)
            for (const int d : direct[static_cast<std::size_t>(list[k])]) {
                if (seen_for[static_cast<std::size_t>(d)] == i) continue;
                seen_for[static_cast<std::size_t>(d)] = i;
                list.push_back(d);
                if (++total > max_dependents)
                    halt({"gprm_class: the greal parameters depend on each other", "   in too many ways. Halting..."});
            }
        std::sort(list.begin(), list.end());
    }
}

}  // namespace

double evaluate(const expression& e, const double* parameter) {
    const double a = operand_value(e.arg1, parameter), b = operand_value(e.arg2, parameter);
    switch (e.operation) {
        case 1:
            return a + b;
        case 2:
            return a - b;
        case 3:
            return a * b;
        case 4:
            return a / b;
        case 5:
            return std::pow(a, b);
        case 6:
            return std::exp(a);
        case 7:
            return std::sin(a);
        case 8:
            return std::cos(a);
        default:
            return 0;
    }
}

expression_text expr_eval_1(std::string_view word) {
    expression_text text;
    if (!word.starts_with("$(")) return text;
    text.is_expression = true;
    if (word.back() != ')') halt({"expr_eval_1: $( was found, but closing bracket", "  was not found. Halting..."});
    if (word.find(' ') != std::string_view::npos) halt({"expr_eval_1: a space was found in $(xxx)."});
    if (word.find('\t') != std::string_view::npos) halt({"expr_eval_1: a tab was found in $(xxx)."});
    expr_eval_2(word.substr(2, word.size() - 3), text);
    return text;
}

int operation_code(const expression_text& text) {
    for (const operation_word& o : operation_words)
        if (o.is_function == text.is_function && o.word == text.op) return o.code;
    return -1;
}

int gprm_class::find_greal(std::string_view name) const {
    const auto found = greal_index.find(std::string(name));
    return found == greal_index.end() ? -1 : found->second;
}

int gprm_class::gprm_int_1(std::string_view word) const {
    const auto found = gint_index.find(std::string(word));
    return found == gint_index.end() ? chr_to_int(word) : gint[static_cast<std::size_t>(found->second)];
}

double gprm_class::gprm_double_1(std::string_view word) const {
    const int i = find_greal(word);
    return i == -1 ? chr_to_double(word) : greal[static_cast<std::size_t>(i)];
}

std::string gprm_class::gprm_string_1(std::string_view word) const {
    const auto found = gstr_index.find(std::string(word));
    return found == gstr_index.end() ? std::string(word) : gstr[static_cast<std::size_t>(found->second)];
}

bool word_pair_int_1(const gprm_class& gprm, std::string_view keyword, std::string_view word, std::string_view wanted,
                     int& value) {
    if (keyword != wanted) return false;
    value = gprm.gprm_int_1(word);
    return true;
}

bool word_pair_double_1(const gprm_class& gprm, std::string_view keyword, std::string_view word,
                        std::string_view wanted, double& value) {
    if (keyword != wanted) return false;
    value = gprm.gprm_double_1(word);
    return true;
}

void gprm_class::expr_1() {
    for (std::size_t i = 0; i < expr.size(); ++i)
        if (expr[i].operation != 0) greal[i] = evaluate(expr[i], greal.data());
}

void gprm_class::check_finite() const {
    for (std::size_t i = 0; i < greal.size(); ++i) finite_number(greal[i], greal_word[i]);
}

void gprm_class::expr_3(int i, const std::vector<std::string>& message) const {
    const expression& e = expr[static_cast<std::size_t>(i)];
    if (e.arg1.from != operand::parameter && e.arg2.from != operand::parameter) return;
    std::string lines;
    for (const std::string& m : message) lines += m + '\n';
    halt({line("greal parm no. ", i, " is not independent!"),
          "  message from the calling routine:", lines + "  Halting..."});
}

gprm_class read_gprm(const circuit_file& cf) {
    gprm_class g;
    for (const global_statement& kind : global_statements) read_statements(g, cf, kind);
    g.flag_expr = g.n_expr > 0;
    find_dependents(g);
    g.expr_1();
    reading(-1, [&] { g.check_finite(); });
    return g;
}
