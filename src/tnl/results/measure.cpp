#include "tnl/results/measure.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>

#include "tnl/common/exit_status.h"
#include "tnl/results/measure_functions.h"

namespace cli {

namespace {

// The samples of one curve, by rising first column.
struct curve_view {
    const result_table& table;
    std::size_t begin, end;  // rows
    bool backwards = false;  // the first column falls
    bool ordered = true;     // it rises or falls
    std::vector<double> axis;

    curve_view(const result_table& table_, std::size_t i_curve)
        : table(table_), begin(table_.first_row[i_curve]), end(table_.first_row[i_curve + 1]) {
        axis = column(0);
        backwards = axis.back() < axis.front();
        if (backwards) std::reverse(axis.begin(), axis.end());
        for (std::size_t i = 0; i < axis.size(); ++i)
            ordered = ordered && std::isfinite(axis[i]) && (i == 0 || axis[i] >= axis[i - 1]);
    }
    std::vector<double> column(std::size_t j) const {
        std::vector<double> x(end - begin);
        for (std::size_t i = 0; i < x.size(); ++i) x[i] = table.at(begin + i, j);
        if (backwards) std::reverse(x.begin(), x.end());
        return x;
    }
};

// What stands on the stack: a number, or a wave with one value a row.
struct operand {
    double number = 0;
    std::shared_ptr<std::vector<double>> x;  // not for numbers
    std::string unit;
    bool literal = false;  // made of numbers alone: takes any unit
    bool is_edge = false;  // number is an edge

    bool is_wave() const { return x != nullptr; }
};

std::string unit_of_sum(const operand& a, const operand& b) {
    if (a.unit == b.unit) return a.unit;
    if (a.literal) return b.unit;
    return b.literal ? a.unit : "";
}

std::string unit_of_product(const operand& a, const operand& b) {
    if (a.literal && b.literal) return a.unit.empty() ? b.unit : a.unit;
    if (a.literal || a.unit == "%") return b.unit;
    if (b.literal || b.unit == "%") return a.unit;
    if ((a.unit == "V" && b.unit == "A") || (a.unit == "A" && b.unit == "V")) return "W";
    return "";
}

std::string unit_of_quotient(const operand& a, const operand& b) {
    if (b.literal) return a.unit;
    if (a.unit == "V" && b.unit == "A") return "ohm";
    if (a.unit == "W" && b.unit == "V") return "A";
    if (a.unit == "W" && b.unit == "A") return "V";
    return "";
}

template <class F>
operand by_sample(operand a, const operand& b, F f) {
    operand r;
    r.literal = a.literal && b.literal;
    if (!a.is_wave() && !b.is_wave()) {
        r.number = f(a.number, b.number);
        return r;
    }
    const std::vector<double>*p = a.x.get(), *q = b.x.get();
    r.x = p != nullptr && a.x.use_count() == 1 ? a.x : std::make_shared<std::vector<double>>((p ? p : q)->size());
    std::vector<double>& out = *r.x;
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = f(p ? (*p)[i] : a.number, q ? (*q)[i] : b.number);
    return r;
}

operand arithmetic(measure_op::code what, operand a, const operand& b) {
    std::string unit;
    operand r;
    switch (what) {
        case measure_op::add:
            unit = unit_of_sum(a, b);
            r = by_sample(std::move(a), b, [](double p, double q) { return p + q; });
            break;
        case measure_op::subtract:
            unit = unit_of_sum(a, b);
            r = by_sample(std::move(a), b, [](double p, double q) { return p - q; });
            break;
        case measure_op::multiply:
            unit = unit_of_product(a, b);
            r = by_sample(std::move(a), b, [](double p, double q) { return p * q; });
            break;
        case measure_op::divide:
            unit = unit_of_quotient(a, b);
            r = by_sample(std::move(a), b, [](double p, double q) { return p / q; });
            break;
        default:
            r = by_sample(std::move(a), b, [](double p, double q) { return std::pow(p, q); });
    }
    r.unit = unit == "%" && !r.literal ? "" : unit;  // sums and multiples of ratios are numbers again
    return r;
}

std::string unit_of_result(const measure_function& f, const std::string& unit, const std::string& axis) {
    if (f.is_ratio) return "%";
    switch (f.unit) {
        case unit_of::wave:
            return unit;
        case unit_of::axis:
            return axis;
        case unit_of::per_axis:
            return axis == "s" ? "Hz" : "";
        case unit_of::wave_times_axis:
            return unit == "W" && axis == "s" ? "J" : unit.empty() || axis.empty() ? "" : unit + " " + axis;
        case unit_of::wave_per_axis:
            return unit.empty() || axis.empty() ? "" : unit + "/" + axis;
        default:
            return "";
    }
}

operand call(const measure_op& op, std::vector<operand>& stack, const curve_view& curve) {
    const measure_function& f = measure_functions()[static_cast<std::size_t>(op.index)];
    const std::size_t first = stack.size() - static_cast<std::size_t>(op.n_args);
    if (f.by_sample != nullptr) {
        operand a = std::move(stack[first]);
        stack.pop_back();
        const std::string unit = f.unit == unit_of::wave ? a.unit : "";
        const operand zero{0, nullptr, "", true};
        operand r = by_sample(std::move(a), zero, [&](double p, double) { return f.by_sample(p); });
        r.unit = unit;
        return r;
    }
    call_arguments a;
    std::string letters;
    for (std::size_t i = first; i < stack.size(); ++i) {
        const operand& o = stack[i];
        if (o.is_wave()) {
            a.waves.push_back({curve.axis, *o.x});
        } else if (o.is_edge) {
            a.which = static_cast<edge>(static_cast<int>(o.number));
        } else {
            a.numbers.push_back(o.number);
        }
        letters += o.is_wave() ? 'w' : o.is_edge ? 'e' : 'n';
    }
    const bool windowed = has_window(f, letters);
    if ((f.needs_axis || windowed) && !curve.ordered)
        throw measure_error("the first column, " + curve.table.columns[0].name +
                            ", neither rises nor falls throughout; only min, max and pp can do without");
    std::vector<samples> parts(a.waves.size());
    if (windowed) {
        const double from = a.numbers[a.numbers.size() - 2], to = a.numbers.back();
        a.numbers.resize(a.numbers.size() - 2);
        for (std::size_t i = 0; i < parts.size(); ++i) {
            parts[i] = clip(a.waves[i], from, to);
            a.waves[i] = parts[i];
        }
    }
    operand r;
    r.number = f.measure(a);
    r.unit = unit_of_result(f, stack[first].unit, curve.table.columns[0].unit);
    stack.resize(first);
    return r;
}

operand run(const measure_side& side, const std::vector<std::size_t>& columns, const curve_view& curve) {
    std::vector<operand> stack;
    for (const measure_op& op : side.ops) {
        switch (op.what) {
            case measure_op::number:
                stack.push_back({op.value, nullptr, op.percent ? "%" : "", true});
                break;
            case measure_op::edge_word:
                stack.push_back({static_cast<double>(op.index), nullptr, "", true, true});
                break;
            case measure_op::column: {
                const std::size_t j = columns[static_cast<std::size_t>(op.index)];
                stack.push_back(
                    {0, std::make_shared<std::vector<double>>(curve.column(j)), curve.table.columns[j].unit, false});
                break;
            }
            case measure_op::negate: {
                const std::string unit = stack.back().unit;
                const operand zero{0, nullptr, "", true};
                stack.back() = by_sample(std::move(stack.back()), zero, [](double p, double) { return -p; });
                stack.back().unit = unit;
                break;
            }
            case measure_op::call: {
                operand r = call(op, stack, curve);
                stack.push_back(std::move(r));
                break;
            }
            default: {
                const operand b = std::move(stack.back());
                stack.pop_back();
                stack.back() = arithmetic(op.what, std::move(stack.back()), b);
            }
        }
    }
    return std::move(stack.back());
}

quantity measured_side(const measure_side& side, const std::vector<std::size_t>& columns, const curve_view& curve) {
    const operand o = run(side, columns, curve);
    if (!o.is_wave()) return {o.number, o.unit};
    if (o.x->size() > 1)
        throw usage_error(side.text + " has a value in each of " + std::to_string(o.x->size()) +
                          " rows; measure it: avg(" + side.text + "), max(" + side.text + "), at(" + side.text +
                          ", 1m)");
    return {o.x->front(), o.unit};
}

bool holds(double a, relation r, double b) {
    if (std::isnan(a) || std::isnan(b)) return false;
    switch (r) {
        case relation::less:
            return a < b;
        case relation::less_equal:
            return a <= b;
        case relation::greater:
            return a > b;
        case relation::greater_equal:
            return a >= b;
        case relation::equal:
            return a == b;
        default:
            return a != b;
    }
}

}  // namespace

namespace {

std::vector<std::size_t> columns_of(const expression& e, const result_table& table) {
    std::vector<std::size_t> columns;
    for (const std::string& name : e.names) {
        const int j = find_column(table, name);
        if (j < 0) throw usage_error("no column " + name + " in " + table.path);
        columns.push_back(static_cast<std::size_t>(j));
    }
    return columns;
}

}  // namespace

bool is_by_row(const expression& e) {
    for (const measure_op& op : e.sides[0].ops)
        if (op.what == measure_op::call && measure_functions()[static_cast<std::size_t>(op.index)].by_sample == nullptr)
            return false;
    return e.relations.empty() && !e.names.empty();
}

row_values evaluate_rows(const expression& e, const result_table& table, std::size_t i_curve) {
    if (i_curve >= table.n_curves()) throw measure_error("there are no rows");
    const curve_view curve(table, i_curve);
    const operand o = run(e.sides[0], columns_of(e, table), curve);
    row_values r{o.is_wave() ? *o.x : std::vector<double>(curve.end - curve.begin, o.number), o.unit};
    if (curve.backwards) std::reverse(r.value.begin(), r.value.end());
    return r;
}

measured evaluate(const expression& e, const result_table& table, std::size_t i_curve) {
    if (i_curve >= table.n_curves()) throw measure_error("there are no rows");
    const std::vector<std::size_t> columns = columns_of(e, table);
    const curve_view curve(table, i_curve);
    measured m;
    for (const measure_side& side : e.sides) m.sides.push_back(measured_side(side, columns, curve));
    for (std::size_t i = 0; i < e.relations.size(); ++i)
        m.holds = m.holds && holds(m.sides[i].value, e.relations[i], m.sides[i + 1].value);
    return m;
}

double shown_value(const quantity& q) { return q.unit == "%" ? 100 * q.value : q.value; }

std::string text_of(const quantity& q) {
    char text[32];
    std::string all(text, std::to_chars(text, text + sizeof text, shown_value(q), std::chars_format::general, 7).ptr);
    if (!q.unit.empty()) all += " " + q.unit;
    return all;
}

}  // namespace cli
