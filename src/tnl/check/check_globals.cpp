// Constants of the deck: greal, ginteger, gstring.
#include "base/words.h"
#include "deck/gprm_class.h"
#include "tnl/check/check_deck.h"
#include "tnl/common/near_words.h"

namespace cli {

namespace {

constexpr std::size_t longest_text = 49;  // characters of a gstring

// An operand of an expression: an earlier constant, or a number.
void check_operand(checked_deck& d, deck_word at, const std::string& word) {
    double x = 0;
    if (d.globals.reals.count(word) || is_double(word, x)) return;
    d.report.error("bad-expression", at,
                   "in an expression, " + word + " is neither a number nor an earlier greal" +
                       near_text({d.globals.reals.begin(), d.globals.reals.end()}, word));
}

void check_expression(checked_deck& d, deck_word at, const std::string& word) {
    expression_text text;
    try {
        text = expr_eval_1(word);
    } catch (...) {  // whatever this program's halt throws
        d.report.error(
            "bad-expression", at, "the brackets of " + word + " do not match",
            "an expression is $((a)op(b)) with op one of + - * / **, or $(f(a)) with exp, sin, cos; no blanks");
        return;
    }
    if (operation_code(text) < 0)
        d.report.error("bad-expression", at,
                       std::string(text.is_function ? "unknown function " : "unknown operation ") + text.op,
                       "an expression is $((a)op(b)) with op one of + - * / **, or $(f(a)) with exp, sin, cos");
    check_operand(d, at, text.arg1);
    if (!text.is_function) check_operand(d, at, text.arg2);
}

void check_value(checked_deck& d, const std::string& kind, deck_word at) {
    const std::string word = d.word(at.statement, at.word);
    if (kind == "greal") {
        if (word.starts_with("$("))
            check_expression(d, at, word);
        else
            check_real(d, at);
    } else if (kind == "ginteger") {
        const auto ints = std::move(d.globals.ints);  // its value is a literal
        d.globals.ints.clear();
        check_int(d, at);
        d.globals.ints = ints;
    } else if (word.size() > longest_text) {
        d.report.error("too-long", at, "a gstring has at most 49 characters");
    }
}

}  // namespace

void check_globals(checked_deck& d) {
    const file_chr& f = d.text();
    const int end = d.sections.begin_circuit < 0 ? d.sections.end : d.sections.begin_circuit;
    for (int i = 0; i < end; ++i) {
        const std::string kind = f.n_words(i) > 0 ? d.word(i, 0) : std::string();
        if (kind != "greal" && kind != "ginteger" && kind != "gstring") continue;
        std::set<std::string>& names = kind == "greal"      ? d.globals.reals
                                       : kind == "ginteger" ? d.globals.ints
                                                            : d.globals.texts;
        if (f.n_words(i) == 1) d.report.error("no-value", {i, 0}, kind + " needs a name and a value");
        for (int j = 1; j < f.n_words(i); j += 2) {
            if (j + 1 >= f.n_words(i)) {
                d.report.warning("no-value", {i, j}, d.word(i, j) + " has no value and is passed over");
                break;
            }
            check_value(d, kind, {i, j + 1});
            if (!names.insert(d.word(i, j)).second)
                d.report.warning("named-twice", {i, j},
                                 "the constant " + d.word(i, j) + " is defined twice; the first counts");
        }
    }
}

}  // namespace cli
