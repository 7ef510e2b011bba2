// composite_derived.cpp -- real parameters of composites that are computed from others.
#include "base/halt.h"
#include "library/composite/composite_entry.h"

namespace {

operand read_operand(const pair_list<double>& rprm, int e, std::string_view word) {
    operand a;
    a.index = rprm.find(e, word);
    a.from = a.index >= 0 ? operand::parameter : operand::literal;
    if (a.index < 0) a.value = chr_to_double(word);
    return a;
}

}  // namespace

void read_derived(composite_library& lib, int e, std::string_view class_name, bool tells_operands, const words& w) {
    pair_list<double>& rprm = lib.list.rprm;
    if (w.size() % 2 == 0) halt({line(class_name, ": k_rem is not zero (rprm_derived)."), "   Halting..."});
    for (int i = 1; i < w.size(); i += 2) {
        const expression_text text = expr_eval_1(w[i + 1]);
        if (tells_operands && (!text.is_expression || operation_code(text) < 0)) {
            say(line(class_name, ": sa=", w[i + 1], " flag_3=", text.is_function ? 1 : 0));
            say(line(class_name, ": sc=", text.op));
        }
        if (!text.is_expression)
            halt(
                {line(class_name, ": check this string: ", w[i + 1]), "  An expression was expected here. Halting..."});
        expression x;
        x.operation = operation_code(text);
        if (x.operation < 0)
            halt({line(class_name, ": unknown ", text.is_function ? "function" : "operation", " in"),
                  "   derived rparms.", line("   string is ", w[i + 1])});
        x.n_arg = text.is_function ? 1 : 2;
        x.arg1 = read_operand(rprm, e, text.arg1);
        if (x.n_arg == 2) x.arg2 = read_operand(rprm, e, text.arg2);
        lib.derived.row.add(x);
        rprm.name.pool.add(w[i]);
        rprm.name.first.back() = rprm.name.pool.size();
        rprm.dflt.push_back(0);
    }
    lib.derived.row.close_row();
}
