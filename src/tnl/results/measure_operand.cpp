#include "tnl/results/measure_operand.h"

#include "tnl/common/exit_status.h"

namespace cli {

curve_view::curve_view(const result_table& table_, std::size_t i_curve)
    : table(table_), begin(table_.first_row[i_curve]), end(table_.first_row[i_curve + 1]) {
    axis = column(0);
    backwards = axis.back() < axis.front();
    if (backwards) std::reverse(axis.begin(), axis.end());
    for (std::size_t i = 0; i < axis.size(); ++i)
        ordered = ordered && std::isfinite(axis[i]) && (i == 0 || axis[i] >= axis[i - 1]);
    log = ordered && is_over_frequency(table) && axis.front() > 0;
}

std::vector<double> curve_view::column(std::size_t j) const {
    std::vector<double> x(end - begin);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = table.at(begin + i, j);
    if (backwards) std::reverse(x.begin(), x.end());
    return x;
}

namespace {

[[noreturn]] void fail_missing(const std::string& column, const curve_view& curve) {
    throw usage_error("this needs " + column + ", and " + curve.table.path + " does not have it");
}
}  // namespace

const std::vector<double>& magnitude_of(const operand& o, const curve_view& curve) {
    if (!o.no_magnitude.empty()) fail_missing(o.no_magnitude, curve);
    return *o.x;
}
const std::vector<double>& phase_of(const operand& o, const curve_view& curve) {
    if (!o.no_phase.empty()) fail_missing(o.no_phase, curve);
    return *o.phase;
}

row_list rows_of(std::vector<double> values) { return std::make_shared<std::vector<double>>(std::move(values)); }

namespace {

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

// One sample of an operand as magnitude and phase.
struct polar {
    double mag, phase;
};
polar sample_of(const operand& o, std::size_t i) {
    if (o.is_response) return {(*o.x)[i], o.phase ? (*o.phase)[i] : NAN};
    const double v = o.x ? (*o.x)[i] : o.number;
    return {std::fabs(v), v < 0 ? 180.0 : 0.0};
}

polar combined(measure_op::code what, polar p, polar q) {
    switch (what) {
        case measure_op::multiply:
            return {p.mag * q.mag, p.phase + q.phase};
        case measure_op::divide:
            return {p.mag / q.mag, p.phase - q.phase};
        case measure_op::power:  // a positive number, q.phase = 0, or its inverse
            return q.phase == 0 ? polar{std::pow(p.mag, q.mag), p.phase * q.mag}
                                : polar{std::pow(p.mag, -q.mag), -p.phase * q.mag};
        default:
            break;
    }
    const double sign = what == measure_op::add ? 1 : -1;
    const double re = p.mag * std::cos(p.phase / degrees) + sign * q.mag * std::cos(q.phase / degrees);
    const double im = p.mag * std::sin(p.phase / degrees) + sign * q.mag * std::sin(q.phase / degrees);
    return {std::hypot(re, im), degrees * std::atan2(im, re)};
}

// Sums need both parts of both sides; products and quotients may be known by half.
operand of_responses(measure_op::code what, const operand& a, const operand& b, const curve_view& curve) {
    if (what == measure_op::power && b.is_wave()) throw usage_error("a small signal is raised to numbers only");
    if (what == measure_op::add || what == measure_op::subtract)
        for (const operand* o : {&a, &b})
            if (o->is_response) magnitude_of(*o, curve), phase_of(*o, curve);
    operand r;
    r.is_response = true;
    r.no_magnitude = a.no_magnitude.empty() ? b.no_magnitude : a.no_magnitude;
    r.no_phase = a.no_phase.empty() ? b.no_phase : a.no_phase;
    std::vector<double> mag, phase;
    for (std::size_t i = 0; i < curve.axis.size(); ++i) {
        const polar p = combined(what, sample_of(a, i), sample_of(b, i));
        mag.push_back(p.mag);
        phase.push_back(p.phase);
    }
    r.x = rows_of(std::move(mag));
    r.phase = rows_of(std::move(phase));
    return r;
}

}  // namespace

operand negated(operand a) {
    if (a.is_response) {
        if (a.phase) {
            a.phase = rows_of(*a.phase);
            for (double& p : *a.phase) p += p > 0 ? -180 : 180;
        }
        return a;
    }
    const std::string unit = a.unit;
    const operand zero{.literal = true};
    operand r = by_sample(std::move(a), zero, [](double p, double) { return -p; });
    r.unit = unit;
    return r;
}

namespace {

std::string unit_of_arithmetic(measure_op::code what, const operand& a, const operand& b) {
    switch (what) {
        case measure_op::add:
        case measure_op::subtract:
            return unit_of_sum(a, b);
        case measure_op::multiply:
            return unit_of_product(a, b);
        case measure_op::divide:
            return unit_of_quotient(a, b);
        default:
            return "";
    }
}

}  // namespace

operand arithmetic(measure_op::code what, operand a, const operand& b, const curve_view& curve) {
    const auto keeps_magnitude = [](const operand& o) { return o.is_magnitude || (!o.is_wave() && o.number > 0); };
    const bool is_magnitude = (what == measure_op::multiply || what == measure_op::divide) && keeps_magnitude(a) &&
                              keeps_magnitude(b) && (a.is_wave() || b.is_wave());
    const std::string unit = unit_of_arithmetic(what, a, b);
    operand r;
    if (a.is_response || b.is_response) {
        r = of_responses(what, a, b, curve);
    } else {
        switch (what) {
            case measure_op::add:
                r = by_sample(std::move(a), b, [](double p, double q) { return p + q; });
                break;
            case measure_op::subtract:
                r = by_sample(std::move(a), b, [](double p, double q) { return p - q; });
                break;
            case measure_op::multiply:
                r = by_sample(std::move(a), b, [](double p, double q) { return p * q; });
                break;
            case measure_op::divide:
                r = by_sample(std::move(a), b, [](double p, double q) { return p / q; });
                break;
            default:
                r = by_sample(std::move(a), b, [](double p, double q) { return std::pow(p, q); });
        }
        r.is_magnitude = is_magnitude;
    }
    r.unit = unit == "%" && !r.literal ? "" : unit;  // sums and multiples of ratios are numbers again
    return r;
}

}  // namespace cli
