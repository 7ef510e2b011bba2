#include "models/partial_fractions.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/at.h"
#include "base/halt.h"

namespace {
using complex = std::complex<double>;

// x of a x = b by Gauss elimination with full pivoting, rows and then columns brought to a largest element of 1; a
// [n * n] row by row, column k belongs to x[k]. False for a singular a.
template <class T>
bool solve(int n, std::vector<T> a, std::vector<T> b, std::vector<T>& x) {
    const auto cell = [&a, n](int i, int j) -> T& { return a[at(i * n + j)]; };
    std::vector<int> column(at(n));
    std::vector<double> scale(at(n));
    for (int i = 0; i < n; ++i) {
        double size = 0;
        for (int j = 0; j < n; ++j) size = std::max(size, std::abs(cell(i, j)));
        if (!(size > 0)) return false;
        for (int j = 0; j < n; ++j) cell(i, j) /= size;
        b[at(i)] /= size;
    }
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) scale[at(j)] = std::max(scale[at(j)], std::abs(cell(i, j)));
        if (!(scale[at(j)] > 0)) return false;
        for (int i = 0; i < n; ++i) cell(i, j) /= scale[at(j)];
        column[at(j)] = j;
    }
    for (int k = 0; k < n; ++k) {
        int row = k, col = k;
        for (int i = k; i < n; ++i)
            for (int j = k; j < n; ++j)
                if (std::abs(cell(i, j)) > std::abs(cell(row, col))) {
                    row = i;
                    col = j;
                }
        if (!(std::abs(cell(row, col)) > 0)) return false;
        for (int j = 0; j < n; ++j) std::swap(cell(k, j), cell(row, j));
        std::swap(b[at(k)], b[at(row)]);
        for (int i = 0; i < n; ++i) std::swap(cell(i, k), cell(i, col));
        std::swap(column[at(k)], column[at(col)]);
        for (int i = k + 1; i < n; ++i) {
            const T factor = cell(i, k) / cell(k, k);
            for (int j = k; j < n; ++j) cell(i, j) -= factor * cell(k, j);
            b[at(i)] -= factor * b[at(k)];
        }
    }
    x.assign(at(n), T{});
    for (int k = n - 1; k >= 0; --k) {
        T sum = b[at(k)];
        for (int j = k + 1; j < n; ++j) sum -= cell(k, j) * x[at(column[at(j)])];
        x[at(column[at(k)])] = sum / cell(k, k);
    }
    for (int k = 0; k < n; ++k) x[at(k)] /= scale[at(k)];
    return true;
}

// A factor of D: s - root, or for a pair (s - root)(s - conjugate). Its term is (c + d s) over the product of all links
// of its chain up to itself; for a pole of multiplicity p these are the powers 1 to p.
struct link {
    complex root;
    bool is_pair;
    double c = 0.0, d = 0.0;
};
using chain = std::vector<link>;

std::vector<chain> chains_of(const root_groups& roots) {
    std::vector<chain> all;
    for (const root_group& g : roots.real) all.emplace_back(at(g.power), link{g.root, false});
    for (const root_group& g : roots.pair) all.emplace_back(at(g.power), link{g.root, true});
    return all;
}

// The product of all factors but `taken` links of chain k; of its pairs only these halves are taken.
complex_poly product_without(const std::vector<chain>& all, std::size_t k, int taken, bool upper, bool lower) {
    complex_poly c = initialise_coeff_1();
    for (std::size_t i = 0; i < all.size(); ++i)
        for (std::size_t j = 0; j < all[i].size(); ++j) {
            const bool is_taken = i == k && j < at(taken);
            const complex root = all[i][j].root;
            if (!is_taken || !upper) compute_coeff_1(c, root);
            if (all[i][j].is_pair && (!is_taken || !lower)) compute_coeff_1(c, std::conj(root));
        }
    return c;
}

// Adds a column: the term's polynomial, times s where shift is 1.
void add_column(const complex_poly& c, int shift, int n, int k, std::vector<complex>& a) {
    for (std::size_t i = 0; i < c.size() && static_cast<int>(i) + shift < n; ++i)
        a[at((static_cast<int>(i) + shift) * n + k)] = c[i];
}

// The terms over single roots; a chain is one root.
bool expand_complex(const poly_quotient& q, const std::vector<chain>& all, partial_fractions& p) {
    const int n = static_cast<int>(q.n.size());
    std::vector<complex> a(at(n * n)), b(q.n.begin(), q.n.end());
    int k = 0;
    for (std::size_t i = 0; i < all.size(); ++i)
        for (const bool upper : {true, false}) {
            const link& root = all[i].front();
            if (!upper && !root.is_pair) continue;
            for (int j = 1; j <= static_cast<int>(all[i].size()); ++j) {
                add_column(product_without(all, i, j, upper, !upper), 0, n, k++, a);
                p.pp_root.push_back(upper ? root.root : std::conj(root.root));
                p.pp_power.push_back(j);
            }
        }
    return k == n && solve(n, a, b, p.pp_coef);
}

// The terms of chains, with real coefficients.
bool expand_real(const poly_quotient& q, std::vector<chain>& all) {
    const int n = static_cast<int>(q.n.size());
    std::vector<complex> a(at(n * n));
    int k = 0;
    for (std::size_t i = 0; i < all.size(); ++i)
        for (std::size_t j = 0; j < all[i].size(); ++j) {
            if (k + (all[i][j].is_pair ? 2 : 1) > n) return false;
            const complex_poly c = product_without(all, i, static_cast<int>(j) + 1, true, true);
            add_column(c, 0, n, k++, a);
            if (all[i][j].is_pair) add_column(c, 1, n, k++, a);
        }
    std::vector<double> real, x;
    for (const complex& cell : a) real.push_back(cell.real());
    if (k != n || !solve(n, real, q.n, x)) return false;
    auto from = x.begin();
    for (chain& c : all)
        for (link& l : c) {
            l.c = *from++;
            if (l.is_pair) l.d = *from++;
        }
    return true;
}

double largest(const std::vector<complex>& roots) {
    double size = 0;
    for (const complex& r : roots) size = std::max(size, std::abs(r));
    return size;
}

complex_poly complex_of(const std::vector<double>& c) { return {c.begin(), c.end()}; }

// ---- sections ----

// s = unit w with unit a power of 2, near to the mean size of the roots of D that are not 0: in w coefficients and
// roots are numbers of ordinary size.
double unit_of(int degree_d, const double* d) {
    int lowest = 0;
    while (lowest < degree_d && d[lowest] == 0) ++lowest;
    if (lowest == degree_d || d[degree_d] == 0) return 1;
    const double log_size = (std::log2(std::fabs(d[lowest])) - std::log2(std::fabs(d[degree_d]))) / (degree_d - lowest);
    return std::exp2(std::round(log_size));
}

std::vector<double> in_unit(int degree, const double* c, double unit) {
    std::vector<double> scaled;
    double power = 1;
    for (int k = 0; k <= degree; ++k, power *= unit) scaled.push_back(c[k] * power);
    return scaled;
}

// A root of multiplicity p is a single one of the derivative of order p - 1, so it can be found to the last digits.
void refine(const complex_poly& d, double reach, root_group& g) {
    const complex_poly f = poly_derivative(d, g.power - 1), slope = poly_derivative(f, 1);
    complex x = g.root;
    for (int i = 0; i < 5; ++i) {
        const complex by = poly_value(slope, x);
        if (!(std::abs(by) > 0)) return;
        x -= poly_value(f, x) / by;
        if (!(std::abs(x - g.root) <= reach)) return;
    }
    g.root = x;
}

// One section for each link; s = unit w.
filter_sections sections_of(double a0, const std::vector<chain>& all, double unit) {
    filter_sections f;
    f.a0 = a0;
    for (const chain& links : all) {
        double to_s = 1;  // w^-k becomes unit^k s^-k
        for (const link& l : links) {
            filter_section s;
            (&l == &links.front() ? s.kx : s.kp) = 1;
            const complex root = unit * l.root;
            if (l.is_pair) {
                s.order = 2;
                s.b0 = std::norm(root);
                s.b1 = -2 * root.real();
                s.d = l.d * to_s * unit;
                to_s *= unit * unit;
            } else {
                s.r = root.real();
                to_s *= unit;
            }
            s.c = l.c * to_s;
            f.section.push_back(s);
        }
    }
    return f;
}

// The factors of a real polynomial, each divided out as it is found, so that their product is the polynomial to the
// last digits, however far the roots of a multiple one have moved apart.
std::vector<link> real_factors(std::vector<double> c) {
    constexpr double rounding = 1e-15;
    std::vector<link> all;
    while (c.size() > 1) {
        const int m = static_cast<int>(c.size()) - 1;
        int its = 0;
        complex x = 0.0;
        try_laguer(complex_of(c), m, x, its);  // near a multiple root the best that was seen will do
        double value = 0, size = 0;
        for (int k = m; k >= 0; --k) {
            value = value * x.real() + c[at(k)];
            size = size * std::fabs(x.real()) + std::fabs(c[at(k)]);
        }
        const bool is_pair = x.imag() != 0 && m > 1 && std::fabs(value) > rounding * size;
        const int power = is_pair ? 2 : 1;
        const double b1 = -power * x.real(), b0 = is_pair ? std::norm(x) : 0.0;
        // c = (s^power + ...) times what comes into the places from `power` on.
        for (int k = m - 1; k >= power; --k) {
            c[at(k)] -= b1 * c[at(k + 1)];
            if (k + 2 <= m) c[at(k)] -= b0 * c[at(k + 2)];
        }
        c.erase(c.begin(), c.begin() + power);
        all.push_back({{x.real(), is_pair ? std::fabs(x.imag()) : 0.0}, is_pair});
    }
    return all;
}

// Links of one chain where they are near to its first one, by their sizes.
std::vector<chain> close_chains(const std::vector<link>& factors, double tolerance) {
    std::vector<chain> all;
    for (const link& l : factors) {
        const auto c = std::find_if(all.begin(), all.end(), [&](const chain& other) {
            const complex r = other.front().root;
            return std::abs(r - l.root) <= tolerance * std::max(std::abs(r), std::abs(l.root));
        });
        if (c == all.end())
            all.push_back({l});
        else
            c->push_back(l);
    }
    return all;
}

// The last links of a chain whose terms are 0 are not needed.
void drop_idle(filter_sections& f) {
    for (std::size_t k = f.section.size(); k-- > 0;) {
        const bool feeds = k + 1 < f.section.size() && f.section[k + 1].kp != 0;
        if (!feeds && f.section[k].c == 0 && f.section[k].d == 0)
            f.section.erase(f.section.begin() + static_cast<std::ptrdiff_t>(k));
    }
}

// How far the sections are from N/D at points s = unit w of the right half plane and of its edge, at the size of each
// root of D: against the value there, and where that is small, against a thousandth of the largest one off the edge.
// Points at which rounding leaves D no ten digits, as next to a root, do not count. NaN where something is no number.
double distance(const filter_sections& f, double unit, const complex_poly& n, const complex_poly& d,
                const std::vector<complex>& roots) {
    constexpr double rounding = 1e-15, digits = 1e-10;
    complex_poly size_of_d;
    for (const complex& c : d) size_of_d.push_back(std::abs(c));
    struct point {
        complex w, value;
    };
    std::vector<point> points;
    double floor = 0;
    for (const complex& r : roots)
        for (const double size : {0.5, 1.0, 2.0})
            for (const double turn : {0.1, 0.25, 0.4, 0.5}) {
                const complex w = std::polar(size * (std::abs(r) > 0 ? std::abs(r) : 1.0), turn * std::numbers::pi);
                const complex below = poly_value(d, w);
                if (std::abs(below) * digits < poly_value(size_of_d, std::abs(w)).real() * rounding) continue;
                points.push_back({w, poly_value(n, w) / below});
                if (turn < 0.5) floor = std::max(floor, 1e-3 * std::abs(points.back().value));
            }
    double far = points.empty() ? std::nan("") : 0.0;
    for (const point& p : points) {
        const double by = std::abs(filter_response(f, unit * p.w) - p.value) / std::max(std::abs(p.value), floor);
        if (!std::isfinite(by)) return by;
        far = std::max(far, by);
    }
    return far;
}
}  // namespace

partial_fractions partial_fractions_1(int degree_n, int degree_d, const double* coef_n, const double* coef_d) {
    const poly_quotient q = n_by_d_1(degree_n, degree_d, coef_n, coef_d, "partial_fractions_1");
    const std::vector<complex> roots = zroots(complex_of(q.d), true);
    const root_groups groups = classify_roots(roots, 1e-5 * std::max(1.0, largest(roots)));
    partial_fractions p;
    p.gain = q.gain;
    p.a0 = q.a0;
    p.n_r_root_1 = static_cast<int>(groups.real.size());
    p.n_c_root_1 = static_cast<int>(groups.pair.size());
    std::vector<chain> chains = chains_of(groups);
    if (!expand_complex(q, chains, p) || !expand_real(q, chains)) halt({"invrs_c: singular matrix. Halting.."});
    for (const chain& c : chains)
        for (std::size_t k = 0; k < c.size(); ++k) {
            p.ppc_flag_real.push_back(c[k].is_pair ? 0 : 1);
            p.ppc_root.push_back(c[k].root);
            p.ppc_power.push_back(static_cast<int>(k) + 1);
            p.ppc_coef.emplace_back(c[k].c, c[k].d);
        }
    return p;
}

void print_partial_fractions_1(const partial_fractions& p) {
    const auto of = [](const complex& c) { return line(c.real(), " ", c.imag()); };
    say(line("partial_fractions_1: gain=", p.gain, ", a0=", p.a0));
    say("partial_fractions_1: pp_root, pp_power, pp_coef:");
    for (std::size_t k = 0; k < p.pp_root.size(); ++k)
        say(line("  ", of(p.pp_root[k]), " ", p.pp_power[k], " ", of(p.pp_coef[k])));
    say("partial_fractions_1: ppc_flag_real,ppc_root,ppc_power,ppc_coef:");
    for (std::size_t k = 0; k < p.ppc_root.size(); ++k)
        say(line("  ", p.ppc_flag_real[k], " ", of(p.ppc_root[k]), " ", p.ppc_power[k], " ", of(p.ppc_coef[k])));
}

std::complex<double> filter_response(const filter_sections& f, std::complex<double> s) {
    complex y = f.a0, z = 0.0;
    for (const filter_section& k : f.section) {
        z = (k.kx + k.kp * z) / (k.order == 1 ? s - k.r : s * s + k.b1 * s + k.b0);
        y += k.c * z + k.d * s * z;
    }
    return y;
}

filter_sections expand_filter(int degree_n, const double* n, int degree_d, const double* d) {
    constexpr double good = 1e-10, enough = 1e-6;
    if (degree_n < 0 || degree_n > max_filter_degree) halt({"dp_class::xce_filter_1: check degree_n. Halting..."});
    if (degree_d < 1 || degree_d > max_filter_degree) halt({"dp_class::xce_filter_1: check degree_d. Halting..."});
    if (degree_d < degree_n) halt({"dp_class::xce_filter_1: degree_d < degree_n. Halting..."});
    n_by_d_1(degree_n, degree_d, n, d, "partial_fractions_1");  // its stops

    const double unit = unit_of(degree_d, d);
    const std::vector<double> n_unit = in_unit(degree_n, n, unit), d_unit = in_unit(degree_d, d, unit);
    const poly_quotient q = n_by_d_1(degree_n, degree_d, n_unit.data(), d_unit.data(), "partial_fractions_1");
    const complex_poly monic = complex_of(q.d);
    const std::vector<link> factors = real_factors(q.d);
    std::vector<complex> polished, plain, around;
    for (const link& l : factors) around.push_back(l.root);
    const double size = largest(around);

    filter_sections best;
    double least = -1;
    const auto take = [&](std::vector<chain> chains) {
        if (!expand_real(q, chains)) return;
        filter_sections f = sections_of(q.a0, chains, unit);
        drop_idle(f);
        const double far = distance(f, unit, complex_of(n_unit), complex_of(d_unit), around);
        if (!std::isfinite(far) || (least >= 0 && far >= least)) return;
        least = far;
        best = f;
    };
    // The rule first. The roots of a multiple one are found the further apart the more they are, so where it does not
    // tell them well, wider and narrower groups are tried; for roots that are close, and not one, chains of unlike
    // links. What is nearest to N/D is taken.
    struct trial {
        const std::vector<complex>& roots;
        double tolerance, real_below;
    };
    std::vector<trial> trials;
    if (try_zroots(monic, true, polished))
        trials.push_back({polished, 1e-5 * std::max(1.0 / unit, size), least_imaginary / unit});
    const bool has_plain = try_zroots(monic, false, plain);
    for (const double t : {1e-5, 1e-4, 1e-3, 1e-2, 3e-2, 1e-6, 1e-8, 0.0})
        if (has_plain) trials.push_back({plain, t * size, std::max(t * size, 1e-300)});
    for (const trial& t : trials) {
        root_groups groups = group_roots(t.roots, t.tolerance, t.real_below);
        if (!groups.agree()) continue;
        for (std::vector<root_group>* list : {&groups.real, &groups.pair})
            for (root_group& g : *list) refine(monic, std::max(t.tolerance, 1e-5 * size), g);
        take(chains_of(groups));
        if (least >= 0 && least <= good) return best;
    }
    for (const double t : {0.0, 0.03, 0.1, 0.3, 0.9, 2.0}) {
        take(close_chains(factors, t));
        if (least >= 0 && least <= good) return best;
    }
    if (least >= 0 && least <= enough) return best;
    if (least < 0) halt({"dp_class::xce_filter_1: no partial fractions. Halting..."});
    halt({"dp_class::xce_filter_1: the sections differ from N(s)/D(s)", line("  by ", least, " of its size;"),
          "  roots of the denominator are too close together, or too far apart.", "  Halting..."});
}
