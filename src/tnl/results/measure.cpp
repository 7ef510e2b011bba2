#include "tnl/results/measure.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <deque>

#include "tnl/common/exit_status.h"
#include "tnl/results/measure_functions.h"
#include "tnl/results/measure_operand.h"

namespace cli {

namespace {

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
        case unit_of::decibel:
            return "dB";
        case unit_of::degrees:
            return "deg";
        default:
            return "";
    }
}

constexpr const char* what_is_small_signal = " takes a small signal: X where the file has mag_of_X and phase_of_X";

// Values a row: those of a small signal are asked for by name.
void check_waves(const measure_function& f, const operand& o) {
    if (o.is_response)
        throw usage_error(std::string(f.name) +
                          " takes values a row; those of a small signal x are mag(x), db(x) and phase(x)");
}

wave wave_of(const operand& o, const curve_view& curve) {
    return {curve.axis, *o.x, {curve.log, curve.log && o.is_magnitude}};
}

// Levels, and what is made of them row by row, hold until the next row: a jump there instead of a slope to it.
samples held(const operand& o, const curve_view& curve) {
    samples s;
    for (std::size_t i = 0; i < curve.axis.size(); ++i) {
        const double x = (*o.x)[i];
        if (i > 0 && curve.axis[i] > curve.axis[i - 1] && !(x == s.x.back())) {
            s.t.push_back(curve.axis[i]);
            s.x.push_back(s.x.back());
        }
        s.t.push_back(curve.axis[i]);
        s.x.push_back(x);
    }
    return s;
}

// A small signal as functions see it, with what it points to.
struct owned_response {
    samples mag, phase;
    response view() const { return {mag, phase}; }
};

owned_response response_of(const measure_function& f, const operand& o, const curve_view& curve) {
    if (!o.is_response && !(o.is_magnitude && f.of == takes::magnitude))
        throw usage_error(std::string(f.name) + what_is_small_signal);
    if (!curve.ordered || !(curve.axis.front() > 0))
        throw measure_error("the first column, " + curve.table.columns[0].name +
                            ", is no frequency: it does not rise or fall throughout above 0");
    owned_response r;
    if (f.unit != unit_of::degrees || f.measure != nullptr) r.mag = {curve.axis, magnitude_of(o, curve), {true, true}};
    if (f.of == takes::phase) r.phase = {curve.axis, unwrapped(phase_of(o, curve)), {true, false}};
    return r;
}

// mag, db, phase ...: of each row, or between rows at a frequency.
operand sampled(const measure_function& f, const operand& o, bool by_row, double at, const curve_view& curve) {
    const bool is_wave = !o.is_response && f.of == takes::both;
    operand r;
    r.unit = unit_of_result(f, o.unit, "");
    if (is_wave) {  // at a frequency
        if (!curve.ordered) throw measure_error("the first column neither rises nor falls throughout");
        r.number = f.by_sample(value_at(wave_of(o, curve), at));
        return r;
    }
    const owned_response x = response_of(f, o, curve);
    if (!by_row) {
        r.number =
            f.of_sample(x.mag.x.empty() ? NAN : value_at(x.mag, at), x.phase.x.empty() ? NAN : value_at(x.phase, at));
        return r;
    }
    std::vector<double> values;
    for (std::size_t i = 0; i < curve.axis.size(); ++i)
        values.push_back(f.of_sample(x.mag.x.empty() ? NAN : x.mag.x[i], x.phase.x.empty() ? NAN : x.phase.x[i]));
    r.x = rows_of(std::move(values));
    return r;
}

operand call_by_sample(const measure_function& f, operand a, const curve_view& curve) {
    std::string unit = f.unit == unit_of::wave ? a.unit : "";
    if (f.unit == unit_of::decibel && !a.literal) unit = "dB";
    if (a.is_response) {
        if (f.of != takes::both) check_waves(f, a);
        magnitude_of(a, curve);
    }
    const operand zero{.literal = true};
    operand r = by_sample(std::move(a), zero, [&](double p, double) { return f.by_sample(p); });
    r.unit = unit;
    r.is_magnitude = f.of_sample != nullptr && f.unit == unit_of::wave;
    return r;
}

operand call(const measure_op& op, std::vector<operand>& stack, const curve_view& curve) {
    const measure_function& f = measure_functions()[static_cast<std::size_t>(op.index)];
    const std::size_t first = stack.size() - static_cast<std::size_t>(op.n_args);
    if (f.by_sample != nullptr && op.n_args == 1) {
        operand a = std::move(stack[first]);
        stack.pop_back();
        return call_by_sample(f, std::move(a), curve);
    }
    if (f.of_sample != nullptr) {
        operand r = sampled(f, stack[first], op.n_args == 1, stack.back().number, curve);
        stack.resize(first);
        return r;
    }
    call_arguments a;
    std::vector<owned_response> owned;
    std::deque<samples> levels;
    std::string letters;
    for (std::size_t i = first; i < stack.size(); ++i) {
        const operand& o = stack[i];
        if (!o.is_wave()) {
            if (o.is_word)
                a.word = static_cast<int>(o.number);
            else
                a.numbers.push_back(o.number);
        } else if (f.of == takes::waves) {
            check_waves(f, o);
            a.waves.push_back(curve.table.digital ? levels.emplace_back(held(o, curve)) : wave_of(o, curve));
        } else {
            owned.push_back(response_of(f, o, curve));
        }
        letters += o.is_wave() ? 'w' : o.is_word ? 'e' : 'n';
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
        for (owned_response& o : owned) {
            o.mag = clip(o.mag, from, to);
            if (!o.phase.x.empty()) o.phase = clip(o.phase, from, to);
        }
    }
    for (const owned_response& o : owned) a.responses.push_back(o.view());
    operand r;
    r.number = f.measure(a);
    r.unit = unit_of_result(f, stack[first].unit, curve.table.columns[0].unit);
    stack.resize(first);
    return r;
}

// Where the values of a name of the expression stand.
struct name_source {
    std::string name;
    int column = -1;         // or
    response_columns parts;  // of a small signal
};

operand operand_of(const name_source& from, const curve_view& curve) {
    const auto rows = [&](int column) { return rows_of(curve.column(static_cast<std::size_t>(column))); };
    const auto unit = [&](int column) { return curve.table.columns[static_cast<std::size_t>(column)].unit; };
    operand o;
    if (from.column >= 0) {
        o.x = rows(from.column);
        o.unit = unit(from.column);
        const record_column& column = curve.table.columns[static_cast<std::size_t>(from.column)];
        o.is_magnitude = column.name.starts_with("mag_of_");
        for (double& x : *o.x)
            if (column.level && x == unknown_level) x = NAN;
        return o;
    }
    o.is_response = true;
    const response_columns& c = from.parts;
    if (c.mag < 0 && c.phase < 0) {
        o.x = rows(c.real);
        o.phase = rows(c.imag);
        o.unit = unit(c.real);
        for (std::size_t i = 0; i < o.x->size(); ++i) {
            const double re = (*o.x)[i], im = (*o.phase)[i];
            (*o.x)[i] = std::hypot(re, im);
            (*o.phase)[i] = degrees * std::atan2(im, re);
        }
        return o;
    }
    if (c.mag < 0) {
        o.no_magnitude = "mag_of_" + from.name;
        o.x = rows_of(std::vector<double>(curve.end - curve.begin, NAN));
    } else {
        o.x = rows(c.mag);
        o.unit = unit(c.mag);
    }
    if (c.phase < 0)
        o.no_phase = "phase_of_" + from.name;
    else
        o.phase = rows(c.phase);
    return o;
}

operand run(const measure_side& side, const std::vector<name_source>& names, const curve_view& curve) {
    std::vector<operand> stack;
    for (const measure_op& op : side.ops) {
        switch (op.what) {
            case measure_op::number:
                stack.push_back({.number = op.value, .unit = op.percent ? "%" : "", .literal = true});
                break;
            case measure_op::own_word:
                stack.push_back({.number = static_cast<double>(op.index), .literal = true, .is_word = true});
                break;
            case measure_op::column:
                stack.push_back(operand_of(names[static_cast<std::size_t>(op.index)], curve));
                break;
            case measure_op::negate:
                stack.back() = negated(std::move(stack.back()));
                break;
            case measure_op::call: {
                operand r = call(op, stack, curve);
                stack.push_back(std::move(r));
                break;
            }
            default: {
                const operand b = std::move(stack.back());
                stack.pop_back();
                stack.back() = arithmetic(op.what, std::move(stack.back()), b, curve);
            }
        }
    }
    return std::move(stack.back());
}

quantity measured_side(const measure_side& side, const std::vector<name_source>& names, const curve_view& curve) {
    const operand o = run(side, names, curve);
    if (!o.is_wave()) return {o.number, o.unit};
    if (o.is_response)
        throw usage_error(side.text + " is a small signal, with magnitude and phase; measure it: db(" + side.text +
                          ", 1k), phase(" + side.text + ", 1k), bandwidth(" + side.text + ")");
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

std::vector<name_source> sources_of(const expression& e, const result_table& table) {
    std::vector<name_source> sources;
    for (const std::string& name : e.names) {
        sources.push_back({name, find_column(table, name), {}});
        if (sources.back().column < 0) sources.back().parts = find_response(table, name);
        if (sources.back().column < 0 && !sources.back().parts.any())
            throw usage_error("no column " + name + " in " + table.path);
    }
    return sources;
}

}  // namespace

bool is_by_row(const expression& e) {
    for (const measure_op& op : e.sides[0].ops)
        if (op.what == measure_op::call &&
            (measure_functions()[static_cast<std::size_t>(op.index)].by_sample == nullptr || op.n_args > 1))
            return false;
    return e.relations.empty() && !e.names.empty();
}

row_values evaluate_rows(const expression& e, const result_table& table, std::size_t i_curve) {
    if (i_curve >= table.n_curves()) throw measure_error("there are no rows");
    const curve_view curve(table, i_curve);
    const operand o = run(e.sides[0], sources_of(e, table), curve);
    row_values r{o.is_wave() ? *o.x : std::vector<double>(curve.end - curve.begin, o.number), o.unit, {}};
    if (o.is_response) {
        magnitude_of(o, curve);
        r.phase = phase_of(o, curve);
    }
    if (curve.backwards)
        for (std::vector<double>* values : {&r.value, &r.phase}) std::reverse(values->begin(), values->end());
    return r;
}

measured evaluate(const expression& e, const result_table& table, std::size_t i_curve) {
    if (i_curve >= table.n_curves()) throw measure_error("there are no rows");
    const std::vector<name_source> names = sources_of(e, table);
    const curve_view curve(table, i_curve);
    measured m;
    for (const measure_side& side : e.sides) m.sides.push_back(measured_side(side, names, curve));
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
