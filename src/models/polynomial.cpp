#include "models/polynomial.h"

#include <algorithm>
#include <cmath>

#include "base/at.h"
#include "base/halt.h"

namespace {
using complex = std::complex<double>;

int degree_of(const complex_poly& c) { return static_cast<int>(c.size()) - 1; }

bool near(const complex& a, const complex& b, double tolerance) {
    return std::fabs(a.real() - b.real()) <= tolerance &&
           std::fabs(std::fabs(a.imag()) - std::fabs(b.imag())) <= tolerance;
}

// Roots that are near to the first of their group. first: as it stands; sum: with imaginary parts above 0.
struct group_sum {
    complex first, sum;
    int n = 0, n_above = 0;
};
std::vector<group_sum> group(const std::vector<complex>& roots, double tolerance) {
    std::vector<group_sum> groups;
    for (const complex& r : roots) {
        auto g = std::find_if(groups.begin(), groups.end(),
                              [&](const group_sum& other) { return near(other.first, r, tolerance); });
        if (g == groups.end()) g = groups.insert(g, {r, 0.0, 0, 0});
        g->sum += complex(r.real(), std::fabs(r.imag()));
        ++g->n;
        if (r.imag() > 0) ++g->n_above;
    }
    return groups;
}
}  // namespace

bool try_laguer(const complex_poly& a, int m, std::complex<double>& x, int& its) {
    constexpr int max_iterations = 80, steps_between = 10;
    constexpr double precision = 1e-15;
    constexpr double fractions[] = {0.5, 0.25, 0.75, 0.13, 0.38, 0.62, 0.88, 1.0};
    complex best = x;
    double least = -1;
    for (its = 1; its <= max_iterations; ++its) {
        // Value b, first derivative d and half the second f by Horner's scheme, and the error of b.
        complex b = a[at(m)], d = 0.0, f = 0.0;
        double error = std::abs(b);
        const double size = std::abs(x);
        for (int j = m - 1; j >= 0; --j) {
            f = x * f + d;
            d = x * d + b;
            b = x * b + a[at(j)];
            error = std::abs(b) + size * error;
        }
        if (std::abs(b) <= error * precision) return true;
        if (least < 0 || std::abs(b) < least * error) {
            least = std::abs(b) / error;
            best = x;
        }
        const complex g = d / b, g2 = g * g, h = g2 - 2.0 * f / b;
        const complex root = std::sqrt(static_cast<double>(m - 1) * (static_cast<double>(m) * h - g2));
        const complex plus = g + root, minus = g - root;
        const complex denominator = std::abs(plus) >= std::abs(minus) ? plus : minus;
        // Where both vanish, any way out of the point will do.
        const complex dx = std::abs(denominator) > 0 ? static_cast<double>(m) / denominator
                                                     : std::polar(1.0 + size, static_cast<double>(its));
        const complex next = x - dx;
        if (next == x) return true;
        if (its % steps_between == 0)
            x -= fractions[(its / steps_between - 1) % 8] * dx;
        else
            x = next;
    }
    x = best;
    return false;
}

std::complex<double> laguer(const complex_poly& a, int m, std::complex<double> x, int& its) {
    if (!try_laguer(a, m, x, its)) halt({"laguer: too many iterations in laguer", "  Halting..."});
    return x;
}

bool try_zroots(const complex_poly& a, bool polish, std::vector<std::complex<double>>& roots) {
    constexpr double least = 4e-6;
    const int m = degree_of(a);
    complex_poly left = a;
    roots.assign(at(m), 0.0);
    int its = 0;
    for (int j = m; j >= 1; --j) {
        complex x = 0.0;
        if (!try_laguer(left, j, x, its)) return false;
        if (std::fabs(x.imag()) <= least * std::fabs(x.real())) x = x.real();
        roots[at(j - 1)] = x;
        complex b = left[at(j)];
        for (int k = j - 1; k >= 0; --k) {
            const complex c = left[at(k)];
            left[at(k)] = b;
            b = x * b + c;
        }
    }
    if (polish)
        for (complex& r : roots)
            if (!try_laguer(a, m, r, its)) return false;
    std::stable_sort(roots.begin(), roots.end(),
                     [](const complex& p, const complex& q) { return p.real() < q.real(); });
    return true;
}

std::vector<std::complex<double>> zroots(const complex_poly& a, bool polish) {
    std::vector<complex> roots;
    if (!try_zroots(a, polish, roots)) halt({"laguer: too many iterations in laguer", "  Halting..."});
    return roots;
}

bool root_groups::agree() const {
    return n_root_real_check == static_cast<int>(real.size()) && n_root_imag_check == static_cast<int>(pair.size());
}

root_groups group_roots(const std::vector<std::complex<double>>& roots, double tolerance, double real_below) {
    std::vector<complex> real, other;
    for (const complex& r : roots)
        if (std::fabs(r.imag()) < real_below)
            real.emplace_back(r.real());
        else
            other.push_back(r);
    root_groups all;
    for (const group_sum& g : group(real, tolerance)) all.real.push_back({g.sum.real() / g.n, g.n});
    std::reverse(real.begin(), real.end());
    all.n_root_real_check = static_cast<int>(group(real, tolerance).size());
    for (const group_sum& g : group(other, tolerance)) {
        all.pair.push_back({g.sum / static_cast<double>(g.n), g.n / 2});
        if (2 * g.n_above == g.n) ++all.n_root_imag_check;
    }
    return all;
}

root_groups classify_roots(const std::vector<std::complex<double>>& roots, double tolerance) {
    root_groups all = group_roots(roots, tolerance, least_imaginary);
    const auto check = [](const std::string& check_name, int n_check, const std::string& name, std::size_t n) {
        if (n_check == static_cast<int>(n)) return;
        halt({line("classify_roots: ", check_name, " and ", name), "  are not equal!",
              line("  ", check_name, "=", n_check), line("  ", name, "=", n), "  Halting..."});
    };
    check("n_root_real_check", all.n_root_real_check, "n_r_root_1", all.real.size());
    check("n_root_imag_check", all.n_root_imag_check, "n_c_root_1", all.pair.size());
    return all;
}

complex_poly initialise_coeff_1() { return {1.0}; }

void compute_coeff_1(complex_poly& c, std::complex<double> root) {
    c.insert(c.begin(), 0.0);
    for (std::size_t k = 0; k + 1 < c.size(); ++k) c[k] -= root * c[k + 1];
}

int poly_degree_1(const complex_poly& c) {
    int degree = std::max(degree_of(c), 0);
    while (degree > 0 && c[at(degree)] == 0.0) --degree;
    return degree;
}

void print_poly_1(const complex_poly& c) {
    for (std::size_t k = 0; k < c.size(); ++k) say(line("  ", k, " ", c[k].real(), " ", c[k].imag()));
}

std::complex<double> poly_value(const complex_poly& c, std::complex<double> s) {
    complex y = 0.0;
    for (auto a = c.rbegin(); a != c.rend(); ++a) y = y * s + *a;
    return y;
}

complex_poly poly_derivative(complex_poly c, int k) {
    for (; k > 0 && !c.empty(); --k) {
        c.erase(c.begin());
        for (std::size_t i = 0; i < c.size(); ++i) c[i] *= static_cast<double>(i + 1);
    }
    return c;
}

poly_quotient n_by_d_1(int degree_n, int degree_d, const double* coef_n, const double* coef_d, const char* routine) {
    if (degree_n > degree_d)
        halt({line(routine, ": degree_n > degree_d not allowed."), line("  degree_n=", degree_n),
              line("  degree_d=", degree_d), "  Halting..."});
    if (coef_n[degree_n] == 0) halt({line(routine, ": coef_n[degree_n] is zero! Halting...")});
    if (coef_d[degree_d] == 0) halt({line(routine, ": coef_d[degree_d] is zero! Halting...")});
    poly_quotient q;
    const double lead = coef_d[degree_d];
    q.gain = 1 / lead;
    q.n.assign(at(degree_d), 0.0);
    if (degree_n == degree_d) q.a0 = coef_n[degree_n] / lead;
    for (int k = 0; k < degree_d; ++k) {
        q.d.push_back(coef_d[k] / lead);
        const double n = k <= degree_n ? coef_n[k] / lead : 0.0;
        q.n[at(k)] = n - q.a0 * q.d[at(k)];
    }
    q.d.push_back(1.0);
    return q;
}
