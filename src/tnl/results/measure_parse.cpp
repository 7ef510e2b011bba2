// From the text of an expression to its stack machine words.
#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/words.h"
#include "tnl/common/exit_status.h"
#include "tnl/results/measure.h"
#include "tnl/results/measure_functions.h"

namespace cli {

namespace {

constexpr int deepest = 100;  // parentheses and signs within one another

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_continuation(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }
bool begins_name(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
bool continues_name(char c) { return begins_name(c) || is_digit(c) || c == '.' || c == '#' || c == '@'; }

// The complaint, the text around the place, and a caret below it.
[[noreturn]] void fault(std::string_view text, std::size_t at, const std::string& why) {
    constexpr std::size_t before = 60, shown = 110;  // bytes
    std::size_t begin = at > before ? at - before : 0;
    while (begin < at && is_continuation(text[begin])) ++begin;
    std::size_t end = std::min(text.size(), begin + shown);
    while (end < text.size() && is_continuation(text[end])) ++end;
    std::string line, gap;
    for (std::size_t i = begin; i < end; ++i) line += static_cast<unsigned char>(text[i]) < ' ' ? ' ' : text[i];
    for (std::size_t i = begin; i < at; ++i)
        if (!is_continuation(text[i])) gap += ' ';
    throw usage_error(why + "\n  " + line + "\n  " + gap + "^");
}

// What an expression is before any rows are known.
struct kind {
    bool is_wave = false;
    bool constant = false;  // numbers alone
    bool percent = false;   // a measurement that is shown in %, or a constant written with it
    bool zero = false;
};

struct parser {
    std::string_view text;
    expression& e;
    std::size_t at = 0;
    int depth = 0;

    char next() {
        while (at < text.size() && (text[at] == ' ' || text[at] == '\t')) ++at;
        return at < text.size() ? text[at] : '\0';
    }
    bool take(char c) {
        if (at >= text.size() || next() != c || at >= text.size()) return false;
        ++at;
        return true;
    }
    [[noreturn]] void fail(const std::string& why) { fault(text, std::min(at, text.size()), why); }
    void emit(const measure_op& op) { e.sides.back().ops.push_back(op); }
    void emit(measure_op::code what) { emit(measure_op{what, 0, false, 0, 0}); }

    struct level {  // of nesting
        parser& p;
        explicit level(parser& p_) : p(p_) {
            if (++p.depth > deepest) p.fail("too deeply nested");
        }
        ~level() { --p.depth; }
        level(const level&) = delete;
        level& operator=(const level&) = delete;
    };

    kind sum();
    kind product();
    kind signed_power();
    kind primary();
    kind number();
    kind column(std::string_view name);
    kind call(std::string_view name, std::size_t name_at);
    char argument(const measure_function& f, int i, kind& k);
    std::string_view name();
    bool relation_sign(relation& r);
    void label();
    void whole();
};

kind joined(const kind& a, const kind& b) {
    return {a.is_wave || b.is_wave, a.constant && b.constant, a.constant && b.constant && (a.percent || b.percent),
            false};
}

kind parser::sum() {
    const level here(*this);
    kind k = product();
    for (;;) {
        const measure_op::code what = take('+') ? measure_op::add : take('-') ? measure_op::subtract : measure_op::call;
        if (what == measure_op::call) return k;
        k = joined(k, product());
        emit(what);
    }
}

kind parser::product() {
    kind k = signed_power();
    for (;;) {
        const measure_op::code what = take('*')   ? measure_op::multiply
                                      : take('/') ? measure_op::divide
                                                  : measure_op::call;
        if (what == measure_op::call) return k;
        k = joined(k, signed_power());
        emit(what);
    }
}

kind parser::signed_power() {
    const level here(*this);
    if (take('+')) return signed_power();
    if (take('-')) {
        const kind k = signed_power();
        emit(measure_op::negate);
        return k;
    }
    kind k = primary();
    if (take('^')) {
        k = joined(k, signed_power());
        emit(measure_op::power);
    }
    return k;
}

kind parser::primary() {
    const char c = next();
    if (is_digit(c) || c == '.') return number();
    if (take('(')) {
        const kind k = sum();
        if (!take(')')) fail("')' is missing");
        return k;
    }
    if (take('$')) {
        const std::size_t begin = at;
        while (at < text.size() && is_digit(text[at])) ++at;
        if (at == begin) fail("the number of a column is missing");
        return column(text.substr(begin, at - begin));
    }
    if (c == '"' || c == '\'' || c == '`') {
        const std::size_t end = text.find(c, at + 1);
        if (end == std::string_view::npos) fail("the name has no end");
        const std::string_view quoted = text.substr(at + 1, end - at - 1);
        at = end + 1;
        return column(quoted);
    }
    if (begins_name(c)) {
        const std::size_t begin = at;
        const std::string_view word = name();
        return next() == '(' ? call(word, begin) : column(word);
    }
    fail(at >= text.size() ? "something is missing at the end" : "a number, a column or a function should stand here");
}

std::string_view parser::name() {
    const std::size_t begin = at;
    while (at < text.size() && continues_name(text[at])) ++at;
    return text.substr(begin, at - begin);
}

// As decks write numbers, one letter for the power of ten; or with %.
kind parser::number() {
    const std::size_t begin = at;
    double x = 0;
    const std::from_chars_result r = std::from_chars(text.data() + at, text.data() + text.size(), x);
    if (r.ec == std::errc::result_out_of_range) fail("a number beyond what can be counted");
    if (r.ec != std::errc()) fail("a number should stand here");
    at = static_cast<std::size_t>(r.ptr - text.data());
    if (at < text.size() && begins_name(text[at])) {
        const std::size_t digits_end = at;
        name();
        const std::string_view word = text.substr(begin, at - begin);
        if (at != digits_end + 1 || !is_double(word, x)) {
            at = digits_end;
            fail("behind a number stands one of G M k m u n p f, or %, and no unit");
        }
    }
    const bool percent = at < text.size() && text[at] == '%';
    if (percent) {
        ++at;
        x /= 100;
    }
    emit(measure_op{measure_op::number, x, percent, 0, 0});
    return {false, true, percent, x == 0};
}

kind parser::column(std::string_view word) {
    const auto known = std::find(e.names.begin(), e.names.end(), word);
    const int index = static_cast<int>(known - e.names.begin());
    if (known == e.names.end()) e.names.emplace_back(word);
    emit(measure_op{measure_op::column, 0, false, index, 0});
    return {true, false, false, false};
}

// Letter of what stands there: w a wave, n a number, e a word of the function's own.
char parser::argument(const measure_function& f, int i, kind& k) {
    next();
    const std::size_t begin = at;
    if (!f.words.empty() && i >= 1) {
        if (const int found = find_word_of(f, name()); found >= 0 && next() != '(') {
            emit(measure_op{measure_op::own_word, 0, false, found, 0});
            return 'e';
        }
        at = begin;
    }
    k = sum();
    return k.is_wave ? 'w' : 'n';
}

kind parser::call(std::string_view word, std::size_t word_at) {
    const int index = find_function(word);
    if (index < 0) {
        at = word_at;
        fail("there is no function " + std::string(word) + near_functions(word));
    }
    const measure_function& f = measure_functions()[static_cast<std::size_t>(index)];
    take('(');
    std::string letters;
    kind first;
    if (next() != ')' || at >= text.size()) do {
            kind k;
            letters += argument(f, static_cast<int>(letters.size()), k);
            if (letters.size() == 1) first = k;
        } while (take(','));
    if (!take(')')) fail("')' or ',' should stand here");
    if (!has_form(f, letters)) {
        at = word_at;
        if (letters[0] == 'n' && has_form(f, "w" + letters.substr(1)))
            fail(std::string(word) + " measures a column, and there is none in its first argument");
        fail("this is written " + std::string(f.usage));
    }
    emit(measure_op{measure_op::call, 0, false, index, static_cast<int>(letters.size())});
    if (f.of_sample && f.by_sample == nullptr && letters == "w") return {true, false, false, false};
    if (f.by_sample && letters.size() == 1)
        return {first.is_wave, first.constant, first.percent && f.unit == unit_of::wave, first.constant && first.zero};
    return {false, false, f.is_ratio, false};
}

bool parser::relation_sign(relation& r) {
    const char c = next();
    if (c != '<' && c != '>' && c != '=' && c != '!') return false;
    const bool with_equal = at + 1 < text.size() && text[at + 1] == '=';
    if ((c == '=' || c == '!') && !with_equal) fail("relations are < <= > >= == and !=");
    at += with_equal ? 2 : 1;
    r = c == '<'   ? (with_equal ? relation::less_equal : relation::less)
        : c == '>' ? (with_equal ? relation::greater_equal : relation::greater)
        : c == '=' ? relation::equal
                   : relation::not_equal;
    return true;
}

// "name = " before the expression.
void parser::label() {
    if (!begins_name(next())) return;
    const std::size_t begin = at;
    const std::string word(name());
    if (next() == '=' && !(at + 1 < text.size() && text[at + 1] == '=')) {
        ++at;
        e.label = word;
    } else {
        at = begin;
    }
}

void parser::whole() {
    label();
    std::vector<kind> kinds;
    for (;;) {
        next();
        const std::size_t begin = at;
        e.sides.emplace_back();
        kinds.push_back(sum());
        next();
        std::size_t end = at;
        while (end > begin && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
        e.sides.back().text = text.substr(begin, end - begin);
        e.sides.back().constant = kinds.back().constant;
        if (kinds.size() > 1) {
            const kind &a = kinds[kinds.size() - 2], &b = kinds.back();
            const auto misleads = [](const kind& m, const kind& c) {
                return m.percent && !m.constant && c.constant && !c.percent && !c.zero;
            };
            if (misleads(a, b) || misleads(b, a)) {
                at = begin;
                fail("one side is measured in %: write the number of the other with %");
            }
        }
        relation r{};
        if (!relation_sign(r)) break;
        e.relations.push_back(r);
    }
    if (at < text.size()) fail("this does not belong to the expression");
}

}  // namespace

expression parse_expression(std::string_view text) {
    expression e;
    e.text = text;
    parser p{text, e};
    p.whole();
    if (e.label.empty()) e.label = text;
    return e;
}

}  // namespace cli
